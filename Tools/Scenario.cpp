#include "Tools/Scenario.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>

#include "Tools/BadInput.h"
#include "VLK/Xml.h"

namespace Coresim {

namespace {

using VLK::XML::xml_attribute;
using VLK::XML::xml_document;
using VLK::XML::xml_node;

/// Bad input whose text names file and line.
class CPlacedInput : public CBadInput {
public:
    using CBadInput::CBadInput;
};

/// Raises CBadInput when the node has an attribute twice, which the parser lets pass.
void ExpectNoRepetition(xml_node node)
{
    for (xml_attribute const attribute : node.attributes()) {
        if (node.attribute(attribute.name()) != attribute)
            throw CBadInput(std::string("the attribute '") + attribute.name() + "' is there twice");
    }
}

/// One file being read: knows where a node stands.
class CReader {
public:
    explicit CReader(std::string path) : m_path(std::move(path)) {}

    SScenario Read();

private:
    [[noreturn]] void Fail(std::ptrdiff_t offset, std::string const & reason) const
    {
        std::size_t const end = std::min(m_text.size(), static_cast<std::size_t>(std::max<std::ptrdiff_t>(offset, 0)));
        auto const line = 1 + std::count(m_text.begin(), m_text.begin() + static_cast<std::ptrdiff_t>(end), '\n');
        throw CPlacedInput(m_path + ":" + std::to_string(line) + ": " + reason);
    }
    /// Runs a step that may raise CBadInput, and adds where it was.
    template <class TStep>
    void At(xml_node node, TStep step) const
    {
        try {
            step();
        } catch (CPlacedInput const &) {
            throw; // knows its place already
        } catch (CBadInput const & bad) {
            Fail(node.offset_debug(), std::string("<") + node.name() + ">: " + bad.what());
        }
    }
    [[noreturn]] void FailUnknown(xml_node node) const
    {
        if (node.type() != pugi::node_element) {
            auto const blanks = std::string_view(node.value()).find_first_not_of(" \t\r\n");
            Fail(node.offset_debug() + static_cast<std::ptrdiff_t>(blanks), "text is out of place here");
        }
        Fail(node.offset_debug(), std::string("<") + node.name() + "> is out of place here");
    }

    void LoadText();
    xml_node Root(xml_document const & document) const;
    void ReadEstate(xml_node node);
    void ReadController(xml_node node);
    void ReadDrive(xml_node node, int controller);
    void ReadProgress(xml_node node);
    void ReadTimeline(xml_node node);
    SStep ReadStep(xml_node node);
    SChange ReadChange(xml_node node);
    SChange ReadEvent(xml_node node);
    std::string TextOf(xml_node node) const;

    /// Fills a record's fields from the node's attributes; keys were given by the surrounding nodes.
    template <class TRecord>
    void Fill(TRecord & record, xml_node node) const
    {
        At(node, [&] {
            ExpectNoRepetition(node);
            for (xml_attribute const attribute : node.attributes())
                SetField(record, attribute.name(), attribute.value());
        });
    }
    void ExpectNoChildren(xml_node node) const
    {
        for (xml_node const child : node.children())
            FailUnknown(child);
    }

    std::string const m_path;
    std::string m_text;
    SScenario m_scenario;
};

std::string Required(xml_node node, char const * name)
{
    xml_attribute const attribute = node.attribute(name);
    if (!attribute) throw CBadInput(std::string("the attribute '") + name + "' is missing");
    return attribute.value();
}

/// Raises CBadInput when the node has an attribute that isn't in the list.
template <std::size_t COUNT>
void ExpectAttributes(xml_node node, std::array<std::string_view, COUNT> const & known)
{
    ExpectNoRepetition(node);
    for (xml_attribute const attribute : node.attributes()) {
        if (std::find(known.begin(), known.end(), attribute.name()) == known.end())
            throw CBadInput(std::string("there is no attribute '") + attribute.name() + "' here");
    }
}

double ParseReal(std::string const & text)
{
    bool const negative = !text.empty() && text[0] == '-';
    double const value = ParseSeconds(negative ? text.substr(1) : text);
    return negative ? -value : value;
}

bool ParseYesNo(std::string const & text)
{
    if (text != "yes" && text != "no") throw CBadInput("'" + text + "' is neither yes nor no");
    return text == "yes";
}

void CReader::LoadText()
{
    std::ifstream file(m_path, std::ios::binary);
    if (!file) throw CBadInput(m_path + ": can't be opened");
    std::ostringstream text;
    text << file.rdbuf(); // leaves a failure in the state, where an iterator over the buffer raises it
    if (file.peek() != std::ifstream::traits_type::eof() || file.bad()) throw CBadInput(m_path + ": can't be read");
    m_text = std::move(text).str();
}

SScenario CReader::Read()
{
    LoadText();
    xml_document document;
    // As a fragment, so that text around the root isn't passed over.
    auto const result = document.load_buffer(m_text.data(), m_text.size(), pugi::parse_default | pugi::parse_fragment,
                                             pugi::encoding_utf8);
    if (!result) Fail(result.offset, result.description());
    xml_node const root = Root(document);
    At(root, [&] { ExpectAttributes(root, std::array<std::string_view, 0>{}); });
    ReadEstate(root);
    return std::move(m_scenario);
}

xml_node CReader::Root(xml_document const & document) const
{
    xml_node const root = document.document_element();
    if (!root) Fail(0, "<estate> was expected, and there is no element");
    if (std::string_view(root.name()) != "estate")
        Fail(root.offset_debug(), std::string("<estate> was expected, not <") + root.name() + ">");
    for (xml_node const node : document.children()) {
        if (node != root) FailUnknown(node);
    }
    return root;
}

void CReader::ReadEstate(xml_node node)
{
    for (xml_node const child : node.children()) {
        std::string_view const name = child.name();
        if (name == "status") {
            Fill(m_scenario.estate.status, child);
            ExpectNoChildren(child);
        } else if (name == "numbers") {
            Fill(m_scenario.estate.numbers, child);
            ExpectNoChildren(child);
        } else if (name == "controller") {
            ReadController(child);
        } else if (name == "progress") {
            ReadProgress(child);
        } else if (name == "timeline") {
            ReadTimeline(child);
        } else {
            FailUnknown(child);
        }
    }
}

void CReader::ReadController(xml_node node)
{
    SNMP::ORBA_ADAPTERENTRY & controller = m_scenario.estate.controllers.emplace_back();
    Fill(controller, node);
    int const nr = controller.Nr;
    for (xml_node const child : node.children()) {
        std::string_view const name = child.name();
        if (name == "drive") {
            ReadDrive(child, nr);
        } else if (name == "device") {
            SNMP::ORBA_PHYSICALDEVICEENTRY & device = m_scenario.estate.devices.emplace_back();
            device.CtrlNr = nr;
            Fill(device, child);
            ExpectNoChildren(child);
        } else {
            FailUnknown(child);
        }
    }
}

void CReader::ReadDrive(xml_node node, int controller)
{
    SNMP::ORBA_LOGICALDRIVEENTRY & drive = m_scenario.estate.drives.emplace_back();
    drive.CtrlNr = controller;
    Fill(drive, node);
    for (xml_node const child : node.children()) {
        if (std::string_view(child.name()) != "member") FailUnknown(child);
        SNMP::ORBA_LOGICALDRIVECONTENTSENTRY & member = m_scenario.estate.contents.emplace_back();
        member.CtrlNr = drive.CtrlNr;
        member.LogicalDriveNr = drive.Nr;
        Fill(member, child);
        ExpectNoChildren(child);
    }
}

void CReader::ReadProgress(xml_node node)
{
    At(node, [&] {
        ExpectAttributes(node,
                         std::array<std::string_view, 5>{"CtrlNr", "LogicalDriveNr", "value", "perSecond", "limit"});
        SProgress & progress =
            m_scenario.estate
                .progress[{ParseInt32(Required(node, "CtrlNr")), ParseInt32(Required(node, "LogicalDriveNr"))}];
        progress.start = ParseInt32(node.attribute("value").as_string("0"));
        progress.perSecond = ParseReal(node.attribute("perSecond").as_string("0"));
        progress.limit = ParseInt32(node.attribute("limit").as_string("100"));
    });
    ExpectNoChildren(node);
}

void CReader::ReadTimeline(xml_node node)
{
    At(node, [&] {
        ExpectAttributes(node, std::array<std::string_view, 1>{"repeat"});
        m_scenario.timeline.repeat = ParseYesNo(node.attribute("repeat").as_string("no"));
    });
    for (xml_node const child : node.children()) {
        if (std::string_view(child.name()) != "at") FailUnknown(child);
        m_scenario.timeline.steps.push_back(ReadStep(child));
    }
    std::stable_sort(m_scenario.timeline.steps.begin(), m_scenario.timeline.steps.end(),
                     [](SStep const & left, SStep const & right) { return left.seconds < right.seconds; });
    auto const & steps = m_scenario.timeline.steps;
    At(node, [&] {
        if (m_scenario.timeline.repeat && !steps.empty() && steps.back().seconds <= 0)
            throw CBadInput("a timeline that repeats must take some time");
    });
}

SStep CReader::ReadStep(xml_node node)
{
    SStep step;
    At(node, [&] {
        ExpectAttributes(node, std::array<std::string_view, 1>{"seconds"});
        step.seconds = ParseSeconds(Required(node, "seconds"));
    });
    for (xml_node const child : node.children())
        step.changes.push_back(ReadChange(child));
    return step;
}

SChange CReader::ReadChange(xml_node node)
{
    std::string_view const name = node.name();
    if (name == "event") return ReadEvent(node);
    SChange change;
    At(node, [&] {
        if (name == "set") {
            ExpectAttributes(node, std::array<std::string_view, 3>{"object", "field", "value"});
            change.object = Required(node, "object");
            change.field = Required(node, "field");
            change.text = Required(node, "value");
        } else if (name == "progress") {
            ExpectAttributes(node, std::array<std::string_view, 3>{"CtrlNr", "LogicalDriveNr", "value"});
            change.kind = SChange::Kind::Progress;
            change.controller = ParseInt32(Required(node, "CtrlNr"));
            change.drive = ParseInt32(Required(node, "LogicalDriveNr"));
            change.value = ParseInt32(Required(node, "value"));
        } else if (name == "flag") {
            ExpectAttributes(node, std::array<std::string_view, 1>{"mask"});
            change.kind = SChange::Kind::Flag;
            change.mask = ParseUnsigned64(Required(node, "mask"));
        } else {
            FailUnknown(node);
        }
    });
    if (change.kind == SChange::Kind::Set) {
        // Tried on a copy, so that a mistake is found when the file is read and not when its time has come.
        At(node, [&] { CEstate(m_scenario.estate).Set(change.object, change.field, change.text); });
    }
    ExpectNoChildren(node);
    return change;
}

std::string CReader::TextOf(xml_node node) const
{
    std::string text;
    At(node, [&] { ExpectAttributes(node, std::array<std::string_view, 0>{}); });
    for (xml_node const piece : node.children()) {
        if (piece.type() == pugi::node_element) FailUnknown(piece);
        text += piece.value();
    }
    return text;
}

SChange CReader::ReadEvent(xml_node node)
{
    using SNMP::ORBA_EVENTINFO;
    constexpr std::array texts{&ORBA_EVENTINFO::Param1, &ORBA_EVENTINFO::Param2, &ORBA_EVENTINFO::Param3,
                               &ORBA_EVENTINFO::Param4, &ORBA_EVENTINFO::Param5, &ORBA_EVENTINFO::Param6};
    SChange change;
    change.kind = SChange::Kind::Event;
    At(node, [&] {
        ExpectAttributes(node, std::array<std::string_view, 2>{"id", "server"});
        change.event.TrapId = ParseInt32(Required(node, "id"));
        change.event.ServerName = node.attribute("server").as_string();
        std::size_t count = 0;
        for (xml_node const child : node.children()) {
            if (std::string_view(child.name()) != "text") FailUnknown(child);
            if (count == texts.size()) throw CBadInput("an event has six texts at the most");
            change.event.*texts[count++] = TextOf(child);
        }
    });
    return change;
}

} // namespace

SScenario ReadScenario(std::string const & path)
{
    return CReader(path).Read();
}

} // namespace Coresim
