#include "VLK/Trace.h"

#include <gtest/gtest.h>

#include <atomic>
#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <fstream>
#include <regex>
#include <string>
#include <thread>

#include "Foundation.h"
#include "VLK/Application.h"

using namespace VLK;
using VLK::Internals::CTraceStreamBuffer;
using VLK::Misc::CModuleInfo;
using VLK::Trace::CTrace;

namespace {

constexpr std::uint32_t SecondTrace = 0x20010007;
constexpr std::uint32_t DoesNotExist = 0x2001000D;

/// A trace can be opened once in a process. The tests of an opened one therefore take the process's only chance back.
class TraceTest : public CFoundationTest {
protected:
    TraceTest() : m_Directory(boost::filesystem::temp_directory_path() / boost::filesystem::unique_path())
    {
        boost::filesystem::create_directory(m_Directory);
        CTrace::m_pVlkTrace = nullptr;
    }
    ~TraceTest() override
    {
        CTrace::m_pVlkTrace = nullptr;
        Misc::pVlkApp->SetDebugWait(false);
        boost::filesystem::remove_all(m_Directory);
    }
    boost::filesystem::path Config(std::string const & text) const
    {
        boost::filesystem::path const file = m_Directory / "trace.ini";
        std::ofstream(file.string()) << text;
        return file;
    }

    boost::filesystem::path m_Directory;
};

int g_nEvaluated = 0;

int Evaluate()
{
    return ++g_nEvaluated;
}

TEST_F(TraceTest, WithoutATraceARecordTakesNothing)
{
    CTraceStreamBuffer record(1, Misc::VLK_MODULE_INFO_VlkLib, "file", "function", 7);
    record.Format("%d %s\n") << 1 << "text";
    EXPECT_EQ(0u, record.GetRecord().size());
    EXPECT_EQ(1u, record.Write("x", 1, 0));
    EXPECT_EQ(1u, record.Fill('x', 3));
    EXPECT_EQ(0u, record.GetRecord().size());
}

TEST_F(TraceTest, ASiteWhoseBitIsClearDoesNotEvaluateItsValues)
{
    g_nEvaluated = 0;
    VLK_TRACE(TraceGeneral, "%d", Evaluate());
    VLK_TRACE_STREAM(TraceGeneral, "%d") << Evaluate();
    EXPECT_EQ(0, g_nEvaluated);
    Misc::VLK_MODULE_INFO_VlkLib.SetTrcPoints(TraceGeneral);
    VLK_TRACE(TraceErrors, "%d", Evaluate());
    EXPECT_EQ(0, g_nEvaluated);
    VLK_TRACE(TraceGeneral, "%d", Evaluate());
    VLK_TRACE_STREAM(TraceGeneral, "%d") << Evaluate();
    EXPECT_EQ(2, g_nEvaluated);
    Misc::VLK_MODULE_INFO_VlkLib.SetTrcPoints(0);
}

TEST_F(TraceTest, OpenSetsTheMasksOfTheModulesByName)
{
    CModuleInfo named(4001, "KXRA-TEST", "P:1 F:1", nullptr, nullptr);
    CModuleInfo other(4002, "other", "P:1 F:1", nullptr, nullptr);
    CModuleInfo hidden(4003, "_FileTrace", "P:1 F:1", nullptr, nullptr);
    {
        CTrace trace;
        EXPECT_EQ(1u, trace.Open(Config("[t]\nkxra-test=0x60000001\n_DebugWait=1\n_FileTrace=0\n"), "t"));
        EXPECT_EQ(&trace, CTrace::m_pVlkTrace);
        EXPECT_EQ(0x60000001u, named.GetTrcPoints());
        EXPECT_EQ(0x6fffffffu, other.GetTrcPoints());
        EXPECT_EQ(0x6fffffffu, hidden.GetTrcPoints());
        EXPECT_TRUE(Misc::pVlkApp->GetDebugWait());
        CModuleInfo const later(4004, "kxra-TEST", "P:1 F:1", nullptr, nullptr);
        EXPECT_EQ(0x60000001u, later.GetTrcPoints());
        EXPECT_EQ(1u, trace.Close());
        EXPECT_EQ(0u, named.GetTrcPoints());
        EXPECT_EQ(0u, other.GetTrcPoints());
        EXPECT_EQ(&trace, CTrace::m_pVlkTrace);
        EXPECT_EQ(SecondTrace, RaisedBy([&] { trace.Open(Config("[t]\n"), "t"); }));
    }
    // The pointer stays behind; a module that comes now must not touch what it pointed to.
    EXPECT_NE(nullptr, CTrace::m_pVlkTrace);
    CModuleInfo const last(4005, "last", "P:1 F:1", nullptr, nullptr);
    EXPECT_EQ(0u, last.GetTrcPoints());
}

TEST_F(TraceTest, WithFileTraceOtherModulesHaveTheTwoGeneralBits)
{
    CModuleInfo other(4002, "other", "P:1 F:1", nullptr, nullptr);
    CTrace trace;
    trace.Open(Config("[t]\n_FileTrace=1\n"), "t");
    EXPECT_EQ(0x60000000u, other.GetTrcPoints());
}

TEST_F(TraceTest, AFailedOpenLeavesTheTraceUnset)
{
    CTrace trace;
    EXPECT_EQ(DoesNotExist, RaisedBy([&] { trace.Open(m_Directory / "none.ini", "t"); }));
    EXPECT_EQ(nullptr, CTrace::m_pVlkTrace);
    EXPECT_EQ(0u, Misc::VLK_MODULE_INFO_VlkLib.GetTrcPoints());
    EXPECT_EQ(1u, trace.Open(Config("[t]\n"), "t"));
}

TEST_F(TraceTest, AModuleThatComesAndGoesMeanwhileIsNoHarmToClose)
{
    std::atomic<bool> stop{false};
    std::thread modules([&] {
        Threading::CCallBackGuard const guard;
        while (!stop)
            CModuleInfo const shortLived(4006, "short-lived", "P:1 F:1", nullptr, nullptr);
    });
    for (int i = 0; i != 50; ++i) {
        CTrace::m_pVlkTrace = nullptr;
        CTrace trace;
        EXPECT_EQ(1u, trace.Open(Config("[t]\n_FileTrace=1\n"), "t"));
        EXPECT_EQ(1u, trace.Close());
    }
    stop = true;
    modules.join();
    EXPECT_EQ(0u, Misc::VLK_MODULE_INFO_VlkLib.GetTrcPoints());
}

struct SHeader {
    char const * name;
    std::uint32_t flag;
    char const * function;
    char const * pattern;
};

class TraceHeaderTest : public TraceTest, public testing::WithParamInterface<SHeader> {};

TEST_P(TraceHeaderTest, TellsTimeThreadAndPlace)
{
    CTrace trace;
    trace.Open(Config("[t]\n"), "t");
    SHeader const & header = GetParam();
    std::string record;
    auto const write = [&](CTraceStreamBuffer && buffer) {
        buffer.Format("a\n%s") << "b";
        record = std::string(buffer.GetRecord().View());
    };
    if (header.function != nullptr)
        write(CTraceStreamBuffer(header.flag, Misc::VLK_MODULE_INFO_VlkLib, "file.cpp", header.function, 12));
    else
        write(CTraceStreamBuffer(header.flag, Misc::VLK_MODULE_INFO_VlkLib, "file.cpp", 12));
    EXPECT_TRUE(std::regex_match(record, std::regex(header.pattern))) << record;
}

INSTANTIATE_TEST_SUITE_P(
    Edges, TraceHeaderTest,
    testing::Values(
        SHeader{"Short", 0x8000, "Do",
                "\n\\*\\*F8000\\*\\* \\d\\d:\\d\\d:\\d\\d\\.\\d{4} \\[TID=[^\\]]*\\] orVLK::file\\.cpp:Do@12\n a\n b"},
        SHeader{"Long", 0x20000000, nullptr,
                "\n\\*\\*F20000000\\*\\* \\d\\d:\\d\\d:\\d\\d\\.\\d{4} \\[TID=[^\\]]*\\] orVLK::file\\.cpp@12\n a\n b"},
        SHeader{"Padded", 0x1, nullptr,
                "\n\\*\\*F0001\\*\\* \\d\\d:\\d\\d:\\d\\d\\.\\d{4} \\[TID=[^\\]]*\\] orVLK::file\\.cpp@12\n a\n b"},
        SHeader{"Unlocated", 0x80000001, "Do",
                "\\*\\*F80000001\\*\\* \\d\\d:\\d\\d:\\d\\d\\.\\d{4} \\[TID=[^\\]]*\\]: a\n {30,}b"}),
    [](auto const & test) { return std::string(test.param.name); });

TEST_F(TraceTest, AFormatErrorInARecordIsSilent)
{
    CTrace trace;
    trace.Open(Config("[t]\n"), "t");
    CTraceStreamBuffer record(1, Misc::VLK_MODULE_INFO_VlkLib, "f", 1);
    std::size_t const header = record.GetRecord().size();
    record.Format("x%u") << 1;
    EXPECT_EQ(header + 2, record.GetRecord().size()); // the margin and what stood in front
}

} // namespace
