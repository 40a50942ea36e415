#include "Commands.h"

#include <map>
#include <stdexcept>

#include "BindingWords.h"
#include "Platform/Module.h"
#include "Platform/Process.h"
#include "Platform/SnmpUtil.h"
#include "Tests/Extension/TrapEvent.h"

/// A list of bindings in memory of SnmpUtil, as the SNMP service hands it out and gets it back.
class CBindings {
public:
    CBindings() = default;
    ~CBindings() { SnmpUtilVarBindListFree(&list); }
    CBindings(CBindings const &) = delete;
    CBindings & operator=(CBindings const &) = delete;

    /// A further binding, with the value Null.
    RFC1157VarBind & Append(std::string const & oid)
    {
        const auto bytes = static_cast<std::uint32_t>((list.len + 1) * sizeof(RFC1157VarBind));
        void * const grown = list.list == nullptr ? SnmpUtilMemAlloc(bytes) : SnmpUtilMemReAlloc(list.list, bytes);
        if (grown == nullptr) throw std::bad_alloc();
        list.list = static_cast<RFC1157VarBind *>(grown);
        RFC1157VarBind & added = list.list[list.len];
        added = {};
        added.value.asnType = ASN_NULL;
        ++list.len;
        added.name = ParseOidWord(oid);
        return added;
    }

    RFC1157VarBindList list{};
};

namespace {

/// An OID in memory of SnmpUtil.
struct SOid {
    SOid() = default;
    ~SOid() { SnmpUtilOidFree(&oid); }
    SOid(SOid const &) = delete;
    SOid & operator=(SOid const &) = delete;

    AsnObjectIdentifier oid{};
};

template <class TValue>
TValue Word(std::istringstream & words, char const * what)
{
    TValue value{};
    if (!(words >> value)) throw std::invalid_argument(std::string(what) + " is missing");
    return value;
}

} // namespace

CCommands::~CCommands()
{
    if (m_library && m_library->trapEvent != nullptr) m_library->close();
}

std::string CCommands::Do(std::string const & line)
try {
    static std::map<std::string, void (CCommands::*)(Words &)> const commands{
        {"load", &CCommands::Load},     {"init", &CCommands::Init},     {"more", &CCommands::More},
        {"get", &CCommands::Get},       {"next", &CCommands::Next},     {"set", &CCommands::Set},
        {"wait", &CCommands::Wait},     {"trap", &CCommands::Trap},     {"close", &CCommands::Close},
        {"unload", &CCommands::Unload}, {"loaded", &CCommands::Loaded}, {"handles", &CCommands::Handles}};
    Words words(line);
    auto const command = commands.find(Word<std::string>(words, "command"));
    if (command == commands.end()) throw std::invalid_argument("no such command");
    m_answer.str("");
    (this->*command->second)(words);
    m_answer << '\n';
    return m_answer.str();
} catch (std::exception const & failure) {
    return "error " + std::string(failure.what()) + "\n";
}

CHostedLibrary & CCommands::Library()
{
    if (!m_library) throw std::logic_error("no library is loaded");
    return *m_library;
}

void CCommands::Load(Words & words)
{
    if (m_library) throw std::logic_error("a library is loaded");
    std::string file;
    std::getline(words >> std::ws, file);
    m_library = std::make_unique<CHostedLibrary>(file);
    m_answer << "ok";
}

void CCommands::Init(Words & words)
{
    std::uint32_t uptimeReference = 0;
    words >> uptimeReference;
    CHostedLibrary & library = Library();
    SOid region;
    const std::int32_t result = library.init(uptimeReference, &library.trapEvent, &region.oid);
    m_answer << "ok " << result << ' ' << OidWord(region.oid);
}

void CCommands::More(Words &)
{
    SOid region;
    const std::int32_t result = Library().initEx(&region.oid);
    m_answer << "ok " << result << ' ' << OidWord(region.oid);
}

void CCommands::Get(Words & words)
{
    Ask(SNMP_PDU_GET, words);
}

void CCommands::Next(Words & words)
{
    Ask(SNMP_PDU_GETNEXT, words);
}

void CCommands::Ask(unsigned char pdu, Words & words)
{
    CBindings bindings;
    std::string oid;
    while (words >> oid)
        bindings.Append(oid);
    Query(pdu, bindings);
}

void CCommands::Set(Words & words)
{
    CBindings bindings;
    std::string oid;
    while (words >> oid) {
        RFC1157VarBind & binding = bindings.Append(oid);
        const auto type = static_cast<unsigned char>(std::stoul(Word<std::string>(words, "type"), nullptr, 16));
        binding.value = ParseValueWord(type, Word<std::string>(words, "value"));
    }
    Query(SNMP_PDU_SET, bindings);
}

void CCommands::Query(unsigned char pdu, CBindings & bindings)
{
    std::uint32_t status = 0;
    std::uint32_t index = 0;
    const std::int32_t result = Library().query(pdu, &bindings.list, &status, &index);
    Show(bindings.list);
    m_answer << "ok " << result << ' ' << status << ' ' << index;
}

void CCommands::Show(RFC1157VarBindList const & bindings)
{
    for (std::uint32_t i = 0; i < bindings.len; ++i) {
        RFC1157VarBind const & binding = bindings.list[i];
        m_answer << "binding " << OidWord(binding.name) << ' ' << std::hex << unsigned{binding.value.asnType}
                 << std::dec << ' ' << ValueWord(binding.value) << '\n';
    }
}

void CCommands::Wait(Words & words)
{
    const int timeoutMs = Word<int>(words, "time");
    if (Library().trapEvent == nullptr) throw std::logic_error("there is no trap event");
    m_answer << "ok " << AwaitAndTake(Library().trapEvent, timeoutMs);
}

void CCommands::Trap(Words &)
{
    SOid enterprise;
    CBindings bindings;
    std::int32_t generic = 0;
    std::int32_t specific = 0;
    std::uint32_t timeStamp = 0;
    if (Library().trap(&enterprise.oid, &generic, &specific, &timeStamp, &bindings.list) == 0) {
        m_answer << "ok 0";
        return;
    }
    Show(bindings.list);
    m_answer << "ok 1 " << OidWord(enterprise.oid) << ' ' << generic << ' ' << specific << ' ' << timeStamp;
}

void CCommands::Close(Words &)
{
    Library().close();
    m_answer << "ok";
}

void CCommands::Unload(Words &)
{
    Library();
    m_library.reset();
    m_answer << "ok";
}

void CCommands::Loaded(Words & words)
{
    std::map<std::string, void *> modules;
    if (Platform::LoadedModules(modules) != Platform::Success) throw std::runtime_error("the modules can't be listed");
    m_answer << "ok " << modules.contains(Word<std::string>(words, "name"));
}

void CCommands::Handles(Words &)
{
    std::uint32_t count = 0;
    if (!Platform::HandleCount(count)) throw std::runtime_error("the handles can't be counted");
    m_answer << "ok " << count;
}
