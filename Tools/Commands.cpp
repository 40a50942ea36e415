#include "Tools/Commands.h"

#include <algorithm>
#include <array>
#include <vector>

#include "Tools/BadInput.h"
#include "Tools/Names.h"
#include "Tools/Timeline.h"

namespace Coresim {

namespace {

using Words = std::vector<std::string>;

/// The words of a line, separated by blanks; double quotes keep blanks together, a backslash in them keeps the
/// next character.
Words SplitWords(std::string const & line)
{
    Words words;
    bool inWord = false;
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        char const c = line[i];
        if (!quoted && (c == ' ' || c == '\t' || c == '\r')) {
            inWord = false;
            continue;
        }
        if (!inWord) {
            words.emplace_back();
            inWord = true;
        }
        if (c == '"') {
            quoted = !quoted;
        } else {
            words.back() += quoted && c == '\\' && i + 1 < line.size() ? line[++i] : c;
        }
    }
    if (quoted) throw CBadInput("the closing quote is missing");
    return words;
}

SChange EventOf(Words const & words)
{
    SChange change;
    change.kind = SChange::Kind::Event;
    change.event.TrapId = ParseInt32(words[1]);
    using SNMP::ORBA_EVENTINFO;
    constexpr std::array texts{&ORBA_EVENTINFO::Param1,    &ORBA_EVENTINFO::Param2, &ORBA_EVENTINFO::Param3,
                               &ORBA_EVENTINFO::Param4,    &ORBA_EVENTINFO::Param5, &ORBA_EVENTINFO::Param6,
                               &ORBA_EVENTINFO::ServerName};
    for (std::size_t i = 2; i < words.size(); ++i)
        change.event.*texts[i - 2] = words[i];
    return change;
}

/// What was asked for, with the event's name.
std::string TextOf(SNMP::ORBA_EVENTINFO const & event, Words const & words)
{
    std::string const text = "event " + EventText(event.TrapId);
    return words.size() == 2 ? text : text + " with " + std::to_string(words.size() - 2) + " text(s)";
}

SChange SetOf(Words const & words)
{
    SChange change;
    change.kind = SChange::Kind::Set;
    change.object = words[1];
    change.field = words[2];
    change.text = words[3];
    return change;
}

SChange ProgressOf(Words const & words)
{
    SChange change;
    change.kind = SChange::Kind::Progress;
    change.controller = ParseInt32(words[1]);
    change.drive = ParseInt32(words[2]);
    change.value = ParseInt32(words[3]);
    return change;
}

SChange FlagOf(Words const & words)
{
    SChange change;
    change.kind = SChange::Kind::Flag;
    change.mask = ParseUnsigned64(words[1]);
    return change;
}

struct SCommand {
    char const * name;
    std::size_t leastArguments, mostArguments;
    char const * usage;
    SChange (*change)(Words const &); ///< null: a command of another kind
};

constexpr SCommand kCommands[] = {
    {"help", 0, 0, "help", nullptr},
    {"event", 1, 8, "event ID [text]...", &EventOf},
    {"set", 3, 3, "set OBJECT FIELD VALUE", &SetOf},
    {"progress", 3, 3, "progress CTRL DRIVE VALUE", &ProgressOf},
    {"flag", 1, 1, "flag MASK", &FlagOf},
    {"drop", 0, 0, "drop", nullptr},
    {"refuse", 0, 1, "refuse [on|off]", nullptr},
    {"quit", 0, 0, "quit", nullptr},
};

SCommand const & FindCommand(Words const & words)
{
    auto const found = std::find_if(std::begin(kCommands), std::end(kCommands),
                                    [&](SCommand const & command) { return words[0] == command.name; });
    if (found == std::end(kCommands)) throw CBadInput("'" + words[0] + "' is no command; try 'help'");
    std::size_t const arguments = words.size() - 1;
    if (arguments < found->leastArguments || arguments > found->mostArguments)
        throw CBadInput(std::string("usage: ") + found->usage);
    return *found;
}

bool RefuseOf(Words const & words, bool now)
{
    if (words.size() == 1) return !now;
    if (words[1] != "on" && words[1] != "off") throw CBadInput("usage: refuse [on|off]");
    return words[1] == "on";
}

} // namespace

char const * CCommands::Help() noexcept
{
    return "help                        this text\n"
           "event ID [text]...          send an event: six parameters, then the server's name; quotes keep blanks\n"
           "set OBJECT FIELD VALUE      change a field of: status, numbers, controller:C, drive:C.N, member:C.L.N.I,\n"
           "                            device:C.CH.T.L\n"
           "progress CTRL DRIVE VALUE   set a progress counter\n"
           "flag MASK                   tell the agents that the requests of these bits have news\n"
           "drop                        let all connections vanish\n"
           "refuse [on|off]             refuse agents that connect from now on, or accept them again\n"
           "quit                        end";
}

bool CCommands::Execute(std::string const & line)
{
    try {
        Words const words = SplitWords(line);
        if (words.empty()) return true;
        SCommand const & command = FindCommand(words);
        std::string const name = command.name;
        if (command.change != nullptr) {
            SChange const change = command.change(words);
            Apply(change, m_estate, m_server);
            m_report.Say("done: " + (change.kind == SChange::Kind::Event ? TextOf(change.event, words) : line));
        } else if (name == "help") {
            m_report.Say(Help());
        } else if (name == "drop") {
            m_report.Say("dropped " + std::to_string(m_server.DropAll()) + " connection(s)");
        } else if (name == "refuse") {
            m_server.SetRefusing(RefuseOf(words, m_server.IsRefusing()));
            m_report.Say(m_server.IsRefusing() ? "agents are refused from now on" : "agents are accepted from now on");
        } else {
            return false;
        }
    } catch (CBadInput const & bad) {
        m_report.Complain(bad.what());
    }
    return true;
}

bool CCommands::ExecuteAll(std::istream & input)
{
    std::string line;
    while (std::getline(input, line)) {
        if (!Execute(line)) return true;
    }
    return false;
}

} // namespace Coresim
