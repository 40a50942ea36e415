#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "ExtensionFixture.h"
#include "Support/ProcessThreads.h"

namespace {

class StartedExtensionTest : public ExtensionTest {
protected:
    void SetUp() override { ASSERT_TRUE(m_session.IsReady()); }
    CLoadedExtension m_extension{kFile};
    CSession m_session{m_extension, 100};
};

} // namespace

TEST_F(ExtensionTest, LoadingAloneStartsNothing)
{
    const std::size_t threads = ProcessThreads();
    const CLoadedExtension extension(kFile);
    EXPECT_EQ(threads, ProcessThreads());
}

TEST_F(ExtensionTest, HandsOutItsRegionsInOrder)
{
    CLoadedExtension extension(kFile);
    const CSession session(extension);
    EXPECT_EQ((std::vector<std::string>{kA, kB}), session.Regions());
}

TEST_F(ExtensionTest, WithoutARegionTheStartFailsAndNoThreadRuns)
{
    const CScopedVariable none("TEST_EXTENSION_NO_REGION", "1");
    CLoadedExtension extension(kFile);
    const std::size_t threads = ProcessThreads();
    const CSession session(extension);
    EXPECT_FALSE(session.Started());
    EXPECT_EQ(threads, ProcessThreads());
}

TEST_F(ExtensionTest, RefusesRequestsUntilTheMibIsBuilt)
{
    const CScopedVariable slowStart("TEST_EXTENSION_INIT_MS", "600000");
    CLoadedExtension extension(kFile);
    CSession session(extension);
    const SAnswer answer = session.Get(kA + ".1.1.0");
    EXPECT_EQ(1, answer.result);
    EXPECT_EQ(2u, answer.status);
    EXPECT_EQ(1u, answer.index);
}

TEST_F(ExtensionTest, RefusesRequestsAfterClose)
{
    CLoadedExtension extension(kFile);
    CSession session(extension);
    ASSERT_TRUE(session.IsReady());
    session.Close();
    EXPECT_EQ(2u, session.Get(kA + ".1.1.0").status);
}

TEST_F(ExtensionTest, ClosingTwiceIsHarmless)
{
    CLoadedExtension extension(kFile);
    CSession session(extension);
    ASSERT_TRUE(session.IsReady());
    session.Close();
    session.Close();
    EXPECT_EQ(2u, session.Get(kA + ".1.1.0").status);
}

TEST_F(ExtensionTest, ClosingEndsAnObjectThatWaits)
{
    const CScopedVariable slow("TEST_EXTENSION_SLOW_MS", "600000");
    CLoadedExtension extension(kFile);
    CSession session(extension);
    ASSERT_TRUE(session.IsReady());
    SAnswer answer;
    std::thread manager([&] { answer = session.Get(kA + ".3.1.0"); });
    session.Close();
    manager.join();
    // The request came before or after the shutdown began.
    EXPECT_TRUE(answer.status == 0 ? answer.value == "1" : answer.status == 2) << answer.status;
}

TEST_F(ExtensionTest, TwentyLoadsLeaveNothingBehind)
{
    std::size_t threads = 0;
    std::uint32_t handles = 0;
    for (int round = 0; round < 20; ++round) {
        {
            CLoadedExtension extension(kFile);
            CSession session(extension);
            ASSERT_TRUE(session.IsReady()) << round;
            EXPECT_EQ("test extension", session.Get(kA + ".1.1.0").value);
            EXPECT_EQ(0u, session.SetNumber(kA + ".4.1.0", 3).status);
            EXPECT_TRUE(session.AwaitTrapEvent(kDeadlineMs));
            STrap trap;
            EXPECT_TRUE(session.TakeTrap(trap)); // two more stay in the queue
        }
        ASSERT_FALSE(IsLoaded(kFile)) << round;
        if (round == 0) {
            threads = ProcessThreads();
            handles = Handles();
        }
        ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return ProcessThreads() == threads; })) << round;
        ASSERT_EQ(handles, Handles()) << round;
    }
}

TEST_F(StartedExtensionTest, AWalkFindsEveryObjectInOrderAndEndsBehindTheLastRegion)
{
    std::vector<std::string> found;
    std::string oid = kA;
    for (;;) {
        const SAnswer answer = m_session.GetNext(oid);
        ASSERT_EQ(0u, answer.status);
        ASSERT_EQ(1, answer.result);
        oid = answer.oid;
        if (oid == "1.3.6.1.4.1.88417.99.3") break;
        found.push_back(oid);
        ASSERT_LT(found.size(), 1000u);
    }
    // 13 constants, 8 readable variables, the slow one, 2 for traps, 3 columns of 10 rows, 2 of the second region.
    EXPECT_EQ(56u, found.size());
    EXPECT_EQ(kA + ".1.1.0", found.front());
    EXPECT_EQ(kB + ".1.2.0", found.back());
    EXPECT_EQ(0, std::count(found.begin(), found.end(), kA + ".2.9.0")) << "an object that throws is passed over";
    EXPECT_EQ(1, std::count(found.begin(), found.end(), kA + ".5.1.2.10"));
}

namespace {

struct SConstant {
    char const * name;
    char const * tail;
    std::uint8_t type;
    std::string value;
};

class ConstantTest : public ExtensionTest, public testing::WithParamInterface<SConstant> {};

} // namespace

TEST_P(ConstantTest, GetGivesTypeAndValue)
{
    CLoadedExtension extension(kFile);
    CSession session(extension);
    ASSERT_TRUE(session.IsReady());
    const SAnswer answer = session.Get(kA + GetParam().tail);
    EXPECT_EQ(0u, answer.status);
    EXPECT_EQ(GetParam().type, answer.type);
    EXPECT_EQ(GetParam().value, answer.value);
}

INSTANTIATE_TEST_SUITE_P(
    All, ConstantTest,
    testing::Values(SConstant{"Name", ".1.1.0", ASN_OCTETSTRING, "test extension"},
                    SConstant{"Number", ".1.2.0", ASN_INTEGER, "-42"},
                    SConstant{"Counter32", ".1.3.0", ASN_COUNTER32, "4000000000"},
                    SConstant{"Gauge", ".1.4.0", ASN_GAUGE32, "4294967295"},
                    SConstant{"Ticks", ".1.5.0", ASN_TIMETICKS, "123456"},
                    SConstant{"Address", ".1.6.0", ASN_IPADDRESS, "192.0.2.17"},
                    SConstant{"ObjectId", ".1.7.0", ASN_OBJECTIDENTIFIER, "1.3.6.1.4.1.88417.99.2"},
                    SConstant{"Counter64", ".1.8.0", ASN_COUNTER64, "18446744073709551557"},
                    SConstant{"Empty", ".1.9.0", ASN_OCTETSTRING, ""},
                    SConstant{"Binary", ".1.10.0", ASN_OCTETSTRING, std::string("\x00\x01\x80\xFF", 4)},
                    SConstant{"Opaque", ".1.11.0", ASN_OPAQUE, std::string("\x9F\x78\x04\x42\xF6\x00\x00", 7)},
                    SConstant{"Null", ".1.12.0", ASN_NULL, ""},
                    SConstant{"UInteger32", ".1.13.0", ASN_UINTEGER32, "3000000000"}),
    [](auto const & test) { return std::string(test.param.name); });

TEST_F(StartedExtensionTest, WritableObjectsKeepWhatIsSetAndRefuseTheRest)
{
    for (char const * const tail : {".2.2.0", ".2.4.0"}) {
        const std::string oid = kA + tail;
        EXPECT_EQ(0u, m_session.SetNumber(oid, 1000).status) << oid;
        EXPECT_EQ("1000", m_session.Get(oid).value) << oid;
        EXPECT_EQ(10u, m_session.SetNumber(oid, 1001).status) << oid;
        EXPECT_EQ(7u, m_session.SetText(oid, "text").status) << oid;
        EXPECT_EQ("1000", m_session.Get(oid).value) << oid;
    }
    EXPECT_EQ(0u, m_session.SetText(kA + ".2.3.0", "new").status);
    EXPECT_EQ("new", m_session.Get(kA + ".2.3.0").value);
    EXPECT_EQ(4u, m_session.SetText(kA + ".1.1.0", "new").status) << "read-only";
}

TEST_F(StartedExtensionTest, EveryErrorStatusOfACallbackPassesAsItIs)
{
    for (std::int32_t status = 0; status <= 18; ++status) {
        const std::uint32_t expected = static_cast<std::uint32_t>(status);
        EXPECT_EQ(expected, m_session.SetNumber(kA + ".2.8.0", status).status) << "check";
        EXPECT_EQ(expected, m_session.SetNumber(kA + ".2.7.0", status).status) << "commit";
        EXPECT_EQ(0u, m_session.SetNumber(kA + ".2.6.0", status).status);
        EXPECT_EQ(expected, m_session.Get(kA + ".2.5.0").status) << "get";
    }
    EXPECT_EQ(5u, m_session.Get(kA + ".2.9.0").status) << "throwing";
}

TEST_F(StartedExtensionTest, TrapsArriveInOrderWithTheirBindings)
{
    EXPECT_FALSE(m_session.AwaitTrapEvent(0));
    ASSERT_EQ(0u, m_session.SetNumber(kA + ".4.1.0", 3).status);
    ASSERT_TRUE(m_session.AwaitTrapEvent(kDeadlineMs));
    EXPECT_FALSE(m_session.AwaitTrapEvent(0)) << "several traps leave one signal";
    STrap trap;
    for (std::int32_t number = 1; number <= 3; ++number) {
        ASSERT_TRUE(m_session.TakeTrap(trap));
        EXPECT_EQ(kA + ".4", trap.enterprise);
        EXPECT_EQ(6, trap.generic);
        EXPECT_EQ(number, trap.specific);
        ASSERT_EQ(2u, trap.bindings.size());
        EXPECT_EQ(kA + ".4.3.0", trap.bindings[0].oid);
        EXPECT_EQ(std::to_string(number), trap.bindings[0].value);
        EXPECT_EQ(kA + ".4.4.0", trap.bindings[1].oid);
        EXPECT_EQ("trap " + std::to_string(number), trap.bindings[1].value);
    }
    EXPECT_FALSE(m_session.TakeTrap(trap));
    EXPECT_EQ("3", m_session.Get(kA + ".4.2.0").value);
}

TEST_F(StartedExtensionTest, TenThousandTrapsLoseNone)
{
    constexpr std::int32_t kTraps = 10000;
    ASSERT_EQ(0u, m_session.SetNumber(kA + ".4.1.0", kTraps).status);
    ASSERT_TRUE(m_session.AwaitTrapEvent(kDeadlineMs));
    STrap trap;
    for (std::int32_t number = 1; number <= kTraps; ++number) {
        ASSERT_TRUE(m_session.TakeTrap(trap)) << number;
        ASSERT_EQ(number, trap.specific);
    }
    EXPECT_FALSE(m_session.TakeTrap(trap));
}

TEST_F(StartedExtensionTest, AVariableMakesItsValueAtEachRead)
{
    for (int reads = 1; reads <= 5; ++reads)
        EXPECT_EQ(std::to_string(reads), m_session.Get(kA + ".2.1.0").value);
}
