#include "Tests/Agent/Support/AgentUnderTest.h"

#include <cstdlib>
#include <fstream>

#include "Platform/CriticalSection.h"
#include "Platform/SnmpUtil.h"
#include "Snmp/Frame/Globals.h"
#include "Snmp/Mib/Oid.h"
#include "Snmp/Mib/VarBind.h"

namespace {

std::string const kRoot = KXRA_MIB_ROOT;

/// OID text with unsigned arcs.
std::string OidText(AsnObjectIdentifier const & oid)
{
    std::string text;
    std::uint32_t const * const arcs = oid.ids;
    for (std::uint32_t i = 0; i < oid.idLength; ++i)
        text += (i == 0 ? "" : ".") + std::to_string(arcs[i]);
    return text;
}

std::string ValueText(AsnAny const & value)
{
    if (value.asnType == ASN_INTEGER) return std::to_string(value.asnValue.number);
    if (value.asnType == ASN_OCTETSTRING) {
        std::uint8_t const * const stream = value.asnValue.string.stream;
        return {reinterpret_cast<char const *>(stream), value.asnValue.string.length};
    }
    return "?";
}

SShownObject Shown(CVarBind const & binding, std::string const & name)
{
    std::string oid = OidText(binding->name);
    if (oid.starts_with(kRoot + ".")) oid.erase(0, kRoot.size() + 1);
    return {oid, name, binding->value.asnType, ValueText(binding->value)};
}

void SetOid(CVarBind & binding, std::string oid)
{
    if (oid.ends_with('.')) oid.pop_back(); // of a subtree
    StrToOid((oid.empty() ? kRoot : kRoot + "." + oid).c_str(), &binding->name);
}

constexpr char kFirstDriveColumn[] = "1.6.2.1.1.";
constexpr char kColumnBeforeProgress[] = "1.6.2.1.8.";
constexpr char kBehindProgress[] = "1.6.2.1.9.2147483647";

std::filesystem::path NewFolder()
{
    static int number = 0;
    std::filesystem::path folder =
        std::filesystem::temp_directory_path() /
        ("kxra_agent_" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) + "_" +
         std::to_string(++number));
    std::filesystem::create_directories(folder);
    return folder;
}

} // namespace

CAgentUnderTest::CAgentUnderTest()
{
    SetRegistryName("Kestrix RAID");
    AddMibRegion(KXRA_MIB_ROOT, nullptr);
    static char const inside = 0;
    InitializeModule(&inside);
}

std::vector<SShownObject> CAgentUnderTest::Walk(std::string const & root)
{
    Platform::CCriticalLock const lock(m_requestLock); // as a request does
    std::vector<SShownObject> objects;
    std::size_t rows = 0;       // of the logical drive table
    std::size_t beforeLast = 0; // objects of the column ahead of the progress
    CVarBind binding;
    SetOid(binding, root);
    for (;;) {
        std::uint32_t status = 0;
        std::string name;
        if (MibGetVarbind(binding.Get(), SNMP_PDU_GETNEXT, &status, &name) == 0) return objects;
        SShownObject object = Shown(binding, name);
        if (!object.oid.starts_with(root)) return objects;
        if (object.oid.starts_with(kFirstDriveColumn)) ++rows;
        // The progress objects ask the core service when they are read, so the walk steps over them.
        if (object.oid.starts_with(kColumnBeforeProgress) && ++beforeLast == rows) SetOid(binding, kBehindProgress);
        objects.push_back(std::move(object));
    }
}

std::optional<SShownObject> CAgentUnderTest::Get(std::string const & oid)
{
    Platform::CCriticalLock const request(m_requestLock); // as every request holds it
    CVarBind binding;
    SetOid(binding, oid);
    std::uint32_t status = 0;
    std::string name;
    if (MibGetVarbind(binding.Get(), SNMP_PDU_GET, &status, &name) == 0) return std::nullopt;
    return Shown(binding, name);
}

std::uint32_t CAgentUnderTest::GetStatus(std::string const & oid)
{
    Platform::CCriticalLock const request(m_requestLock); // as every request holds it
    CVarBind binding;
    SetOid(binding, oid);
    std::uint32_t status = 0;
    MibGetVarbind(binding.Get(), SNMP_PDU_GET, &status, nullptr);
    return status;
}

std::uint32_t CAgentUnderTest::CheckSet(std::string const & oid)
{
    Platform::CCriticalLock const request(m_requestLock);
    CVarBind binding;
    SetOid(binding, oid);
    SetVarBindNumber(binding.Get(), 5, ASN_INTEGER);
    std::uint32_t status = 0;
    MibCheckSetVarbind(binding.Get(), &status, nullptr);
    return status;
}

std::uint32_t CAgentUnderTest::Set(std::string const & oid)
{
    Platform::CCriticalLock const request(m_requestLock);
    CVarBind binding;
    SetOid(binding, oid);
    SetVarBindNumber(binding.Get(), 5, ASN_INTEGER);
    std::uint32_t status = 0;
    MibSetVarbind(binding.Get(), &status);
    return status;
}

std::optional<STrap> CAgentUnderTest::NextTrap()
{
    AsnObjectIdentifier enterprise{};
    RFC1157VarBindList list{};
    std::int32_t specific = 0;
    if (ResolveTrap(&enterprise, &specific, &list) == 0) return std::nullopt;
    STrap trap{specific, OidText(enterprise), {}, {}, {}};
    RFC1157VarBind const * const bindings = list.list;
    for (std::uint32_t i = 0; i < list.len; ++i) {
        trap.oids.push_back(OidText(bindings[i].name));
        trap.types.push_back(bindings[i].value.asnType);
        trap.values.push_back(ValueText(bindings[i].value));
    }
    SnmpUtilOidFree(&enterprise);
    SnmpUtilVarBindListFree(&list);
    return trap;
}

STrap CAgentUnderTest::AwaitTrap()
{
    std::optional<STrap> trap;
    HoldsWithin(kDeadline, [&] { return (trap = NextTrap()).has_value(); });
    if (!trap) {
        ADD_FAILURE() << "no trap comes";
        return {};
    }
    return *trap;
}

std::vector<int> CAgentUnderTest::TrapNumbers()
{
    std::vector<int> numbers;
    while (std::optional<STrap> const trap = NextTrap())
        numbers.push_back(trap->specific);
    return numbers;
}

CAgentTest::CAgentTest() : folder(NewFolder()), productIntervals(g_agentIntervals)
{
    g_agentIntervals.firstWaitMs = 1;
    g_agentIntervals.intervalMs = 30000; // no tick, no second attempt, unless a test wants one
    g_agentIntervals.closeLookMs = 2;
    Fake::ClearTrace();
    Fake::EnableTrace(true);
}

CAgentTest::~CAgentTest()
{
    if (agent != nullptr) Stop();
    Fake::EnableTrace(false);
    Fake::ClearTrace();
    g_agentIntervals = productIntervals;
    g_agentShutdown = 0;
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
}

void CAgentTest::Make()
{
    agent = std::make_unique<CAgentUnderTest>();
}

void CAgentTest::Start()
{
    if (agent == nullptr) {
        Make();
        agent->m_PortNumber = peer.Port();
    }
    agent->InitializeMib();
}

CRawConnection CAgentTest::StartConnected()
{
    Start();
    CRawConnection connection = peer.AcceptAgent();
    if (agent->m_StartTime == 0) {
        EXPECT_EQ(2, agent->AwaitTrap().specific);
    }
    return connection;
}

void CAgentTest::Stop()
{
    agent->CloseMib();
    agent.reset();
}

void CAgentTest::SignalShutdown()
{
    g_agentShutdown = 1;
}

void CAgentTest::WriteFile(std::filesystem::path const & path, std::string const & text)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

void CAgentTest::InstallServices()
{
    host.WriteSystemFile("ksVendor.ini", "ServiceName=Raid Manager\n");
    host.InstallService("Raid Manager");
}

std::vector<std::string> CAgentTest::Trace(unsigned int level) const
{
    std::vector<std::string> lines;
    for (Fake::STraceLine const & line : Fake::TraceLines())
        if (line.level <= level) lines.push_back(line.text);
    return lines;
}

std::size_t CAgentTest::TimesTraced(std::string const & line) const
{
    std::size_t times = 0;
    for (std::string const & traced : Trace())
        if (traced == line) ++times;
    return times;
}

bool CAgentTest::Traced(std::string const & line) const
{
    return TimesTraced(line) != 0;
}

void CAgentTest::ExpectTraced(std::vector<std::string> const & lines) const
{
    std::string missing;
    auto const areTraced = [&] {
        std::vector<std::string> const traced = Trace();
        auto position = traced.begin();
        for (std::string const & line : lines) {
            position = std::find(position, traced.end(), line);
            if (position == traced.end()) {
                missing = line;
                return false;
            }
            ++position;
        }
        return true;
    };
    if (!HoldsWithin(kDeadline, areTraced)) ADD_FAILURE() << "not traced, or not in its place: " << missing;
}
