#include "VLK/ModuleInfo.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "../../VLK/Src/SystemModules.h"
#include "Foundation.h"
#include "Platform/Error.h"
#include "VLK/Application.h"
#include "VLK/Functions.h"

using namespace VLK;
using VLK::Functions::GetModuleInfo;
using VLK::Misc::CModuleInfo;
using VLK::Strings::TString;

namespace {

class ModuleInfoTest : public CFoundationTest {};

std::string ErrorText(unsigned int code, unsigned int direct = 0)
{
    TString<256> text;
    Misc::VLK_MODULE_INFO_VlkLib.GetErrorMsg(text, code, direct);
    return text.C_Str();
}

TEST_F(ModuleInfoTest, TheFoundationsModulesAreRegistered)
{
    struct SModule {
        unsigned int id;
        char const * name;
        char const * version;
    };
    for (SModule const & expected :
         {SModule{1, "orVLK", "P:7.10.2 F:7.10.2"}, SModule{2, "OS", ""}, SModule{3, "C-LIB", ""}}) {
        CModuleInfo const * const module = GetModuleInfo(expected.id);
        ASSERT_NE(nullptr, module);
        EXPECT_EQ(expected.id, module->GetModuleId());
        EXPECT_STREQ(expected.name, module->GetModuleName());
        EXPECT_STREQ(expected.version, module->GetVersionInfo());
        EXPECT_EQ(0u, module->GetTrcPoints());
    }
}

TEST_F(ModuleInfoTest, AnErrorCodeFindsItsModuleAndAnUnknownIdNone)
{
    EXPECT_EQ(&Misc::VLK_MODULE_INFO_VlkLib, GetModuleInfo(0x20010005));
    EXPECT_EQ(nullptr, GetModuleInfo(0x20070003));
    EXPECT_EQ(nullptr, GetModuleInfo(77));
    EXPECT_EQ(nullptr, GetModuleInfo(0));
}

TEST_F(ModuleInfoTest, NewModulesComeToTheHeadAndLeaveTheListAtTheirEnd)
{
    unsigned int const unloaded = CModuleInfo::GetUnloadCounter();
    unsigned int const count = CModuleInfo::GetModuleCount();
    {
        CModuleInfo const first(4001, "first", "P:1 F:1", nullptr, nullptr);
        CModuleInfo const second(4002, "second", "P:1 F:1", nullptr, nullptr);
        EXPECT_EQ(&second, CModuleInfo::Enum(nullptr));
        EXPECT_EQ(&first, CModuleInfo::Enum(&second));
        EXPECT_EQ(&first, GetModuleInfo(4001));
        EXPECT_EQ(count + 2, CModuleInfo::GetModuleCount());
    }
    EXPECT_EQ(nullptr, GetModuleInfo(4001));
    EXPECT_EQ(unloaded + 2, CModuleInfo::GetUnloadCounter());
    EXPECT_EQ(count, CModuleInfo::GetModuleCount());
}

TEST_F(ModuleInfoTest, TracePointsAreTestedByMask)
{
    CModuleInfo module(4001, "m", "", nullptr, nullptr);
    EXPECT_EQ(0u, module.CheckTrcPoint(0xFFFFFFFF, 1));
    module.SetTrcPoints(0x21);
    EXPECT_EQ(1u, module.CheckTrcPoint(0x20, 1));
    EXPECT_EQ(0u, module.CheckTrcPoint(0x20, 0));
    EXPECT_EQ(0u, module.CheckTrcPoint(0x40, 1));
    EXPECT_EQ(0x21u, module.GetTrcPoints());
}

TEST_F(ModuleInfoTest, MessagesAreFoundThroughTheWholeList)
{
    std::string const unknown = "No information available for this error!";
    EXPECT_EQ(unknown, ErrorText(0x20010063));
    EXPECT_EQ(unknown, ErrorText(0x20010000));
    EXPECT_EQ("Can't resolve error message because there's no module information available", ErrorText(0x20070003));
    CModuleInfo without(4001, "without", "", nullptr, nullptr);
    TString<256> text;
    without.GetErrorMsg(text, 0x20000001 | 4001u << 16, 0);
    EXPECT_EQ(unknown, text.C_Str());
    without.GetErrorMsg(text, 0x2001000F, 1);
    EXPECT_STREQ("Out of memory", text.C_Str());
}

TEST_F(ModuleInfoTest, TheSystemAndTheCLibraryKnowTheirErrors)
{
    TString<256> text;
    GetModuleInfo(3)->GetErrorMsg(text, ENOENT, 0);
    EXPECT_EQ(Platform::CrtErrorText(ENOENT), text.C_Str());
    GetModuleInfo(2)->GetErrorMsg(text, Platform::ErrorAccessDenied(), 0);
    EXPECT_EQ(Platform::ErrorText(Platform::ErrorAccessDenied()), text.C_Str());
}

struct SErrorRow {
    unsigned int code;
    char const * text;
};

class ErrorTableTest : public CFoundationTest, public testing::WithParamInterface<SErrorRow> {};

TEST_P(ErrorTableTest, HasTheText)
{
    EXPECT_EQ(GetParam().text, ErrorText(GetParam().code));
    EXPECT_EQ(GetParam().text, ErrorText(GetParam().code, 1));
}

constexpr SErrorRow ErrorTable[] = {
    SErrorRow{0x20010001, "General error in RW-library"},
    SErrorRow{0x20010002, "Error during stream output"},
    SErrorRow{0x20010003, "Can't load dynamic library"},
    SErrorRow{0x20010004, "Can't locate function in dynamic library"},
    SErrorRow{0x20010005, "Can't release dynamic library"},
    SErrorRow{0x20010006, "Attempt to load a new dynamic library over an already loaded library"},
    SErrorRow{0x20010007, "Attempt to start a second trace instance"},
    SErrorRow{0x20010008, "Can't determine the programs calling path"},
    SErrorRow{0x20010009, "Can't open the language file"},
    SErrorRow{0x2001000a, "Language file is corrupted"},
    SErrorRow{0x2001000b, "Bad language identifier"},
    SErrorRow{0x2001000c, "Can't access INI-file due to an I/O-error"},
    SErrorRow{0x2001000d, "INI-File does not exist"},
    SErrorRow{0x2001000e, "Timeout during INI-file access"},
    SErrorRow{0x2001000f, "Out of memory"},
    SErrorRow{0x20010010, "An error occurred in a previous function call"},
    SErrorRow{0x20010011, "Could not find key in INI-file"},
    SErrorRow{0x20010012, "INI-key is a comma separated list"},
    SErrorRow{0x20010013, "Bad character (conversation string -> number)"},
    SErrorRow{0x20010014, "Index out of bounds"},
    SErrorRow{0x20010015, "INI-file is not opened for writing"},
    SErrorRow{0x20010016, "Can't initalize a synchronization object"},
    SErrorRow{0x20010017, "General operating system error"},
    SErrorRow{0x20010018, "Synchronization object not initialized"},
    SErrorRow{0x20010019, "Error while wating on synchronization object"},
    SErrorRow{0x2001001a, "General synchronization object error"},
    SErrorRow{0x2001001b, "Bad format of resort mask"},
    SErrorRow{0x2001001c, "Can't resolve host address"},
    SErrorRow{0x2001001d, "No address information available"},
    SErrorRow{0x2001001e, "Socket is not connected"},
    SErrorRow{0x2001001f, "Error in socket function"},
    SErrorRow{0x20010020, "Socket already connected"},
    SErrorRow{0x20010021, "Can't establish socket connection"},
    SErrorRow{0x20010022, "Socket timeout"},
    SErrorRow{0x20010023, "Bad socket timeout value"},
    SErrorRow{0x20010024, "Socket connection closed by peer"},
    SErrorRow{0x20010025, "Socket is not listening"},
    SErrorRow{0x20010026, "Socket protocol error - bad command"},
    SErrorRow{0x20010027, "Wrong socket state"},
    SErrorRow{0x20010028, "Socket out of sync"},
    SErrorRow{0x20010029, "Integer out of range"},
    SErrorRow{0x2001002a, "Socket already in error state"},
    SErrorRow{0x2001002b, "Socket already attached"},
    SErrorRow{0x2001002c, "Protocol error"},
    SErrorRow{0x2001002d, "Connection rejected"},
    SErrorRow{0x2001002e, "Connection refused"},
    SErrorRow{0x2001002f, "Data missing"},
    SErrorRow{0x20010030, "Can't allocated thread local storage"},
    SErrorRow{0x20010031, "Thread is still running"},
    SErrorRow{0x20010032, "Can't start thread"},
    SErrorRow{0x20010033, "No thread started"},
    SErrorRow{0x20010034, "Thread already stopped"},
    SErrorRow{0x20010035, "Object already in error state"},
    SErrorRow{0x20010036, "Max count reached"},
    SErrorRow{0x20010037, "Invalid handle"},
    SErrorRow{0x20010038, "Synchronization object already initialized"},
    SErrorRow{0x20010039, "Can't create synchronization object"},
    SErrorRow{0x2001003a, "Thread interrupt"},
    SErrorRow{0x2001003b, "Wait interrupt"},
    SErrorRow{0x2001003c, "Pool already initialized"},
    SErrorRow{0x2001003d, "Pool not initialized"},
    SErrorRow{0x2001003e, "Unexpected return code"},
    SErrorRow{0x2001003f, "Not supported"},
    SErrorRow{0x20010040, "Semaphore count of ouf range"},
    SErrorRow{0x20010041, "Can't resolve error message because there's no module information available"},
    SErrorRow{0x20010042, "Can't determine DNS name"},
    SErrorRow{0x20010043, "Can't allocate SSL key"},
    SErrorRow{0x20010044, "Can't assign RSA key"},
    SErrorRow{0x20010045, "Can't generate RSA key"},
    SErrorRow{0x20010046, "Can't allocate BIO"},
    SErrorRow{0x20010047, "Bad SSL key data"},
    SErrorRow{0x20010048, "Can't export SSL key"},
    SErrorRow{0x20010049, "Can't initialize SSL library"},
    SErrorRow{0x2001004a, "Can't allocate SSL CA"},
    SErrorRow{0x2001004b, "Can't sign certificate"},
    SErrorRow{0x2001004c, "Can't set issuer name"},
    SErrorRow{0x2001004d, "Can't export SSL certificate"},
    SErrorRow{0x2001004e, "Bad SSL certification data"},
    SErrorRow{0x2001004f, "Can't get certification info"},
    SErrorRow{0x20010050, "No session context"},
    SErrorRow{0x20010051, "Can't add SSL session"},
    SErrorRow{0x20010052, "Can't create session context"},
    SErrorRow{0x20010053, "Can't set certficate"},
    SErrorRow{0x20010054, "Can't set private key"},
    SErrorRow{0x20010055, "Socket is not secure"},
    SErrorRow{0x20010056, "Bad shutdown moad"},
    SErrorRow{0x20010057, "SSL can't accept"},
    SErrorRow{0x20010058, "SSL can't connect"},
    SErrorRow{0x20010059, "SSL can't read"},
    SErrorRow{0x2001005a, "SSL can't shutdown"},
    SErrorRow{0x2001005b, "SSL can't write"},
    SErrorRow{0x2001005c, "SSL error"},
    SErrorRow{0x2001005d, "Socket is already secure"},
    SErrorRow{0x2001005e, "Can't allocate SSL handle"},
    SErrorRow{0x2001005f, "Can't reuse SSL session"},
    SErrorRow{0x20010060, "String is not UTF8 encoded"},
    SErrorRow{0x20010061, "Attempt to reference NULL pointer"},
    SErrorRow{0x20010062, "System time function failed"},
};

INSTANTIATE_TEST_SUITE_P(All, ErrorTableTest, testing::ValuesIn(ErrorTable),
                         [](auto const & test) { return "Error" + std::to_string(test.param.code & 0xFFFF); });

TEST_F(ModuleInfoTest, TickTimeCountsFromTheStart)
{
    using VLK::Internals::TickTime;
    EXPECT_EQ(1500u, TickTime({1000000, 500}, 1500500, 1000));
    EXPECT_EQ(10000u, TickTime({1000000000, 0}, 1000000000, 10000));
    // Sixty years of a counter of nanoseconds don't overflow.
    EXPECT_EQ(1892160000000u, TickTime({1000000000, 0}, 1892160000ull * 1000000000, 1000));
    std::uint64_t const before = Functions::GetTickTime(1000);
    EXPECT_GE(Functions::GetTickTime(1000), before);
    EXPECT_LE(Functions::GetTickTime(1), Functions::GetTickTime());
}

TEST_F(ModuleInfoTest, WithoutACounterTickTimeRunsAThousandTimesTooSlow)
{
    EXPECT_EQ(2u, VLK::Internals::TickTime({0, 1000}, 3000, 1000)); // two seconds
}

class ApplicationTest : public CFoundationTest {};

TEST_F(ApplicationTest, ADerivedApplicationReplacesTheDefaultForItsLife)
{
    Misc::CVlkApplication * const standard = Misc::pVlkApp;
    ASSERT_NE(nullptr, standard);
    {
        VLK::Internals::CMyApplication other;
        EXPECT_EQ(&other, Misc::pVlkApp);
        TString<32> text;
        text = "x";
        EXPECT_EQ(129u, other.GetErrorMessage(text, 1));
        EXPECT_EQ(0u, text.size());
        EXPECT_FALSE(other.GetDebugWait());
        other.SetDebugWait(true);
        EXPECT_TRUE(other.GetDebugWait());
    }
    EXPECT_EQ(standard, Misc::pVlkApp);
}

TEST_F(ApplicationTest, PathsOfTheProcess)
{
    TString<512> path;
    EXPECT_EQ(1u, Misc::CVlkApplication::GetProcessPath(path));
    EXPECT_NE(nullptr, std::strstr(path.C_Str(), "kxra_vlk_tests"));
    EXPECT_EQ(0u, Misc::CVlkApplication::GetCommandPath("x", 1, 2));
    TString<512> directory;
    directory = "old";
    EXPECT_EQ(1u, Functions::GetCurrentDirectoryA(directory));
    EXPECT_NE("old", std::string(directory.C_Str()));
}

TEST_F(ApplicationTest, ErrorsOfTheSystemAreTakenWithTheirKind)
{
    errno = EINTR;
    Exceptions::NATIVE_ERROR const error = Functions::GetErrno();
    EXPECT_EQ(3u, error.kind);
    EXPECT_EQ(static_cast<std::uint32_t>(EINTR), error.value);
    Platform::SetLastError(5);
    EXPECT_EQ(2u, Functions::GetOsError().kind);
    EXPECT_EQ(5u, Functions::GetOsError().value);
}

TEST_F(ApplicationTest, ClocksAndNames)
{
    using namespace std::chrono_literals;
    EXPECT_EQ(2, Misc::timeDiffAsMS(std::chrono::nanoseconds(1000), std::chrono::nanoseconds(2001000)));
    EXPECT_EQ(-3, Misc::timeDiffAsMS(5ms, 2ms));
    std::chrono::nanoseconds const before = Misc::nowNS();
    EXPECT_LE(before, Misc::nowNS());
    EXPECT_LE(std::chrono::duration_cast<std::chrono::milliseconds>(before), Misc::nowMS());
    EXPECT_GT(Misc::now(), 1500000000000);
    std::string name;
    EXPECT_EQ(1u, Misc::hostname(name));
    EXPECT_FALSE(name.empty());
}

} // namespace
