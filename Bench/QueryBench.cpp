#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "Platform/Environment.h"
#include "Platform/SnmpUtil.h"
#include "Ratio.h"
#include "Snmp/Frame/Extension.h"
#include "Snmp/Frame/Globals.h"
#include "Snmp/Frame/SnmpAgent.h"
#include "Snmp/Host/Debug.h"

// What the frame adds to the tree, and what a trace site costs that is off. The agent is the real one of the
// frame, with its main thread, and a table of 31,000 cells.

extern "C" {
std::int32_t DllMain(void * module, std::uint32_t reason, void * reserved);
std::int32_t SnmpExtensionInit(std::uint32_t uptimeReference, SnmpHandle * trapEvent,
                               AsnObjectIdentifier * firstRegion);
std::int32_t SnmpExtensionQuery(std::uint8_t pduType, RFC1157VarBindList * bindings, std::uint32_t * errorStatus,
                                std::uint32_t * errorIndex);
void SnmpExtensionClose();
}

namespace {

constexpr std::uint32_t kColumns = 31;
constexpr std::uint32_t kRows = 1000;
constexpr std::size_t kRequests = 200000; // of a batch
constexpr std::size_t kTraces = 20000000; // of a batch
constexpr char const * kColumn = "1.3.6.1.4.1.88417.2.49.1.5.2.1.0.0.0.0";
constexpr char const * kCell = "1.3.6.1.4.1.88417.2.49.1.5.2.1.17.5.5.5";

class CBenchAgent : public CSnmpAgent {
public:
    void InitializeMib() override
    {
        for (std::uint32_t row = 0; row < kRows; ++row) {
            for (std::uint32_t column = 1; column <= kColumns; ++column) {
                MibInsertConstTableOid(kColumn, "kxrPhysicalDeviceCapacity", row, ASN_INTEGER, column, row / 100,
                                       row / 10 % 10, row % 10);
            }
        }
    }
};

/// The extension between load and unload.
class CRunningAgent {
public:
    CRunningAgent()
    {
        DllMain(nullptr, DLL_PROCESS_ATTACH, nullptr);
        SnmpHandle trapEvent = nullptr;
        COid region;
        SnmpExtensionInit(0, &trapEvent, region.Get());
    }
    ~CRunningAgent()
    {
        SnmpExtensionClose();
        DllMain(nullptr, DLL_PROCESS_DETACH, nullptr);
    }
    CRunningAgent(CRunningAgent const &) = delete;
    CRunningAgent & operator=(CRunningAgent const &) = delete;

    /// Waits at most 10 seconds for the main thread to enable requests.
    static bool IsReady();
};

std::uint32_t ByExtension(RFC1157VarBind & binding, std::uint8_t pduType)
{
    RFC1157VarBindList list{&binding, 1};
    std::uint32_t status = 0;
    std::uint32_t index = 0;
    SnmpExtensionQuery(pduType, &list, &status, &index);
    return status;
}

std::uint32_t ByTree(RFC1157VarBind & binding, std::uint8_t pduType)
{
    std::uint32_t status = 0;
    g_pAgent->MibGetVarbind(&binding, pduType, &status, nullptr);
    return status;
}

bool CRunningAgent::IsReady()
{
    CVarBind binding;
    StrToOid(kCell, &binding->name);
    for (int i = 0; i < 10000; ++i) {
        if (ByExtension(*binding.Get(), SNMP_PDU_GET) == SNMP_ERRORSTATUS_NOERROR) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
}

using TAsk = std::uint32_t (*)(RFC1157VarBind & binding, std::uint8_t pduType);

/// Inside: the caller's copy of the OID, one request of one binding, and freeing the answer. The tree alone takes
/// its own lock; the extension also the request lock, the hooks and the walk over the list.
double AskWithACopy(TAsk ask, std::uint8_t pduType)
{
    const COid oid(kCell);
    std::uint32_t failures = 0;
    const double time = Bench::NanosecondsEach(kRequests, [&] {
        for (std::size_t i = 0; i < kRequests; ++i) {
            CVarBind binding;
            SnmpUtilOidCpy(&binding->name, oid.Get());
            failures += ask(*binding.Get(), pduType);
        }
    });
    benchmark::DoNotOptimize(failures);
    return time;
}

/// The same without copy and freeing: one binding is used again and again.
double AskInPlace(TAsk ask, std::uint8_t pduType)
{
    CVarBind binding;
    StrToOid(kCell, &binding->name);
    const std::uint32_t last = binding->name.idLength - 1;
    std::uint32_t failures = 0;
    const double time = Bench::NanosecondsEach(kRequests, [&] {
        for (std::size_t i = 0; i < kRequests; ++i) {
            failures += ask(*binding.Get(), pduType);
            binding->name.ids[last] = 5; // back to where a GETNEXT began
        }
    });
    benchmark::DoNotOptimize(failures);
    return time;
}

template <class TRun>
Bench::SPair Query(TRun run, std::uint8_t pduType)
{
    return {[=] { return run(ByTree, pduType); }, [=] { return run(ByExtension, pduType); }};
}

double EmptyLoop()
{
    return Bench::NanosecondsEach(kTraces, [] {
        for (std::size_t i = 0; i < kTraces; ++i)
            benchmark::DoNotOptimize(i);
    });
}

double LoopWithTraceSite()
{
    return Bench::NanosecondsEach(kTraces, [] {
        for (std::size_t i = 0; i < kTraces; ++i) {
            benchmark::DoNotOptimize(i);
            if (CDebug::Enabled()) CDebug::Trace(6, "\n%-20s: request %zu", g_moduleName, i);
        }
    });
}

} // namespace

CSnmpAgent * NewExtensionAgent()
{
    return new CBenchAgent;
}

char const * ExtensionRegistryName()
{
    return "Bench";
}

char const * ExtensionRegion()
{
    return "1.3.6.1.4.1.88417.2.49";
}

int main(int argc, char ** argv)
{
    Platform::SetEnvironmentText("KXRA_REGISTRY", "none.reg"); // so the trace is off
    const CRunningAgent agent;
    if (!CRunningAgent::IsReady()) {
        std::puts("The agent didn't start.");
        return 1;
    }
    Bench::AddRatio("QueryOfOneBinding/Get", 1.3, [] { return Query(AskWithACopy, SNMP_PDU_GET); });
    Bench::AddRatio("QueryOfOneBinding/GetNext", 1.3, [] { return Query(AskWithACopy, SNMP_PDU_GETNEXT); });
    Bench::AddRatio("QueryOfOneBindingInPlace/Get", 1.3, [] { return Query(AskInPlace, SNMP_PDU_GET); });
    Bench::AddRatio("QueryOfOneBindingInPlace/GetNext", 1.3, [] { return Query(AskInPlace, SNMP_PDU_GETNEXT); });
    Bench::AddRatio("TraceSiteThatIsOff", 1.2, [] { return Bench::SPair{EmptyLoop, LoopWithTraceSite}; });
    return Bench::Main(argc, argv);
}
