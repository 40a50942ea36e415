// What the foundation's helpers make of what the system says.

#include <gtest/gtest.h>

#include <boost/filesystem/path.hpp>
#include <string>
#include <utility>
#include <vector>

#include "../../../VLK/Src/HeapReport.h"
#include "Foundation.h"
#include "Platform/Console.h"
#include "Platform/Host.h"
#include "Platform/Runtime.h"
#include "Support/KeptTrace.h"
#include "VLK/Application.h"
#include "VLK/Functions.h"
#include "VLK/InvalidParameterHandler.h"

using namespace VLK;
using Platform::HeapState;

namespace {

constexpr Platform::ErrorCode Refused = 13;

/// What the system says, and what it was told.
struct SSystem {
    Platform::ErrorCode error = Platform::Success; ///< of whatever is asked
    std::string computer = "tower";
    std::string host = "tower";
    std::string domain = "example.org";
    std::string directory = "/system";
    HeapState heap = HeapState::Good;
    Platform::ParameterHandler handler = nullptr;
    std::vector<std::string> debugger; ///< lines, and "break" for a stop in it
};
SSystem g_system;

void SilentHandler() {}
void OwnHandler() {}

Platform::ErrorCode Tell(std::string & out, std::string const & text)
{
    if (g_system.error == Platform::Success) out = text;
    return g_system.error;
}

} // namespace

// In the place of the real ones.

namespace Platform {

ErrorCode ComputerNameUtf8(std::string & out)
{
    return Tell(out, g_system.computer);
}
ErrorCode DnsName(std::string & host, std::string & domain)
{
    Tell(host, g_system.host);
    return Tell(domain, g_system.domain);
}
ErrorCode SystemDirectory(std::string & out)
{
    return Tell(out, g_system.directory);
}
char PathSeparator() noexcept
{
    return '/';
}
ErrorCode OsVersion(SOsVersion &) noexcept
{
    return g_system.error;
}
std::uint32_t Architecture() noexcept
{
    return 9;
}
bool HasManagedFirewall() noexcept
{
    return false;
}

bool OpenConsole() noexcept
{
    return false;
}
void WriteConsole(char const *, std::size_t) noexcept {}
void WriteDebugger(char const * text) noexcept
{
    g_system.debugger.push_back(text);
}

HeapState CheckHeap() noexcept
{
    return g_system.heap;
}
void BreakIntoDebugger() noexcept
{
    g_system.debugger.push_back("break");
}
ParameterHandler SilenceParameterChecks() noexcept
{
    return std::exchange(g_system.handler, &SilentHandler);
}
void RestoreParameterChecks(ParameterHandler former) noexcept
{
    g_system.handler = former;
}

} // namespace Platform

extern "C" {

Platform::ErrorCode
__wrap__ZN8Platform11ProgramPathERNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE(std::string & out)
{
    return Tell(out, "/bin/program");
}
Platform::ErrorCode
__wrap__ZN8Platform16CurrentDirectoryERNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE(std::string & out)
{
    return Tell(out, "/here");
}
}

namespace {

using Texts = std::vector<std::string>;

class SystemHelpersTest : public CFoundationTest {
protected:
    SystemHelpersTest()
    {
        g_system = {};
        g_lines.clear();
        Misc::VLK_MODULE_INFO_VlkLib.SetTrcPoints(TraceErrors);
    }
    ~SystemHelpersTest() override { Misc::VLK_MODULE_INFO_VlkLib.SetTrcPoints(0); }

    static Texts Traced()
    {
        Texts texts;
        for (SLine const & line : g_lines) {
            EXPECT_EQ(TraceErrors, line.flag);
            texts.push_back(line.text);
        }
        return texts;
    }
    static std::string Text(Strings::CSubStringRef const & text) { return std::string(text.View()); }
    /// What the work raises, which has the system's error in its record.
    template <class TWork>
    static std::uint32_t RaisedOfSystem(TWork && work)
    {
        Exceptions::CErrorLog log;
        std::uint32_t const raised = RaisedBy(std::forward<TWork>(work), log);
        Exceptions::NATIVE_ERROR native{};
        log.GetError(native);
        EXPECT_EQ(static_cast<std::uint32_t>(Exceptions::NativeOs), native.kind);
        EXPECT_EQ(Refused, native.value);
        return raised;
    }
};

TEST_F(SystemHelpersTest, ADamagedHeapIsTraced)
{
    Functions::HeapCheck();
    EXPECT_EQ(Texts{}, Traced());
    g_system.heap = HeapState::BadBegin;
    Functions::HeapCheck();
    g_system.heap = HeapState::BadNode;
    Functions::HeapCheck();
    EXPECT_EQ((Texts{"HeapCheck: bad start of heap", "HeapCheck: bad node in heap"}), Traced());
    EXPECT_EQ(Texts{}, g_system.debugger);
}

TEST_F(SystemHelpersTest, WithTheSwitchOffADamagedHeapStopsInTheDebugger)
{
    for (HeapState const heap : {HeapState::Good, HeapState::BadBegin, HeapState::BadNode})
        VLK::Internals::ReportHeap(heap, /*toTrace=*/0);
    EXPECT_EQ((Texts{"ERROR - bad start of heap\n", "break", "ERROR - bad node in heap\n", "break"}),
              g_system.debugger);
    EXPECT_EQ(Texts{}, Traced());
}

TEST_F(SystemHelpersTest, TheChecksOfArgumentsAreSilentForAScopeAndThenAsTheyWere)
{
    g_system.handler = &OwnHandler;
    {
        Misc::RAII_RuntimeInvalidParameterHandler const outer;
        EXPECT_EQ(&SilentHandler, g_system.handler);
        {
            Misc::RAII_RuntimeInvalidParameterHandler const inner;
        }
        EXPECT_EQ(&SilentHandler, g_system.handler);
    }
    EXPECT_EQ(&OwnHandler, g_system.handler);
}

TEST_F(SystemHelpersTest, TheHostIsNamedShortlyOrNotAtAll)
{
    std::string name = "old";
    EXPECT_EQ(1u, Misc::hostname(name));
    EXPECT_EQ("tower", name);
    g_system.computer.clear();
    EXPECT_EQ(0u, Misc::hostname(name));
    EXPECT_EQ("", name);
    name = "old";
    g_system.error = Refused;
    EXPECT_EQ(0u, Misc::hostname(name));
    EXPECT_EQ("", name);
}

TEST_F(SystemHelpersTest, TheNameServicesNamesComeAsEitherKindOfText)
{
    std::string host;
    std::string domain;
    EXPECT_EQ(URET_OK, Functions::GetDnsName(host, domain));
    EXPECT_EQ("tower", host);
    EXPECT_EQ("example.org", domain);
    Strings::TString<32> hostText;
    Strings::TString<32> domainText;
    EXPECT_EQ(URET_OK, Functions::GetDnsName(hostText, domainText));
    EXPECT_EQ("tower", Text(hostText));
    EXPECT_EQ("example.org", Text(domainText));
}

TEST_F(SystemHelpersTest, WithoutTheNameServicesNamesItRaisesWithTheSystemsError)
{
    g_system.error = Refused;
    std::string text;
    Strings::TString<32> kept;
    kept = "kept";
    EXPECT_EQ(Errors::DnsName, RaisedOfSystem([&] { Functions::GetDnsName(text, text); }));
    EXPECT_EQ(Errors::DnsName, RaisedOfSystem([&] { Functions::GetDnsName(kept, kept); }));
    EXPECT_EQ("kept", Text(kept));
}

TEST_F(SystemHelpersTest, TheSystemsDirectoryIsThereOrEmpty)
{
    boost::filesystem::path path;
    EXPECT_EQ(1u, Misc::CVlkApplication::GetWindowsPath(path));
    EXPECT_EQ("/system", path.string());
    g_system.error = Refused;
    EXPECT_EQ(0u, Misc::CVlkApplication::GetWindowsPath(path));
    EXPECT_TRUE(path.empty());
}

TEST_F(SystemHelpersTest, ACurrentDirectoryThatHasGoneRaisesWithTheSystemsError)
{
    Strings::TString<32> text;
    EXPECT_EQ(URET_OK, Functions::GetCurrentDirectoryA(text));
    EXPECT_EQ("/here", Text(text));
    g_system.error = Refused;
    EXPECT_EQ(Errors::OperatingSystem, RaisedOfSystem([&] { Functions::GetCurrentDirectoryA(text); }));
}

TEST_F(SystemHelpersTest, TheProgramsPathIsAskedForUntilItIsKnownAndNeverAgain)
{
    boost::filesystem::path path;
    g_system.error = Refused;
    EXPECT_EQ(Errors::CallingPath, RaisedOfSystem([&] { Misc::CVlkApplication::GetProcessPath(path); }));
    g_system.error = Platform::Success;
    EXPECT_EQ(URET_OK, Misc::CVlkApplication::GetProcessPath(path));
    EXPECT_EQ("/bin/program", path.string());
    g_system.error = Refused;
    Strings::TString<32> text;
    EXPECT_EQ(URET_OK, Misc::CVlkApplication::GetProcessPath(text));
    EXPECT_EQ("/bin/program", Text(text));
}

} // namespace
