#include <stdexcept>

#include "MibFixture.h"

namespace {

struct SMixin {
    virtual ~SMixin() = default;
    std::uint32_t fMixed(RFC1157VarBind *, std::uint8_t mode) { return m_base + mode; }
    std::uint32_t m_base = 100;
};

/// An agent that isn't the first base of its class, so that its address differs.
class CSecondBaseAgent : public SMixin, public CPlainAgent {
public:
    std::uint32_t fOwn(RFC1157VarBind *, std::uint8_t) { return this == m_self ? 7 : 8; }
    std::uint32_t fConst(RFC1157VarBind *, std::uint8_t) const noexcept { return 9; }
    std::uint32_t fEntry(MibEntry * entry, RFC1157VarBind *, std::uint8_t) { return entry->type; }
    virtual std::uint32_t fVirtual(RFC1157VarBind *, std::uint8_t) { return 10; }
    virtual std::uint32_t fVirtualEx(MibEntry *, RFC1157VarBind *, std::uint8_t) { return 11; }

    CSecondBaseAgent * m_self = this;
};

class CLastAgent : public CSecondBaseAgent {
public:
    std::uint32_t fVirtual(RFC1157VarBind *, std::uint8_t) override { return 20; }
    std::uint32_t fVirtualEx(MibEntry *, RFC1157VarBind *, std::uint8_t) override { return 21; }
    std::uint32_t fThrowsNumber(RFC1157VarBind *, std::uint8_t) { throw 17u; }
    std::uint32_t fThrowsError(RFC1157VarBind *, std::uint8_t) { throw std::runtime_error("x"); }
};

std::uint32_t CallIt(CPlainAgent & agent, MibCallback const & callback, MibMode mode = MibMode::Get)
{
    MibEntry entry;
    entry.type = 66;
    CVarBind binding;
    return callback.Call(&agent, &entry, binding.Get(), mode);
}

TEST(MibCallbackTest, AnEmptyOneHasNoCodeAndMinusOneAsItsThirdWord)
{
    const MibCallback empty{};
    EXPECT_FALSE(empty.IsSet());
    EXPECT_EQ(0u, empty.code);
    EXPECT_EQ(0, empty.adjustment);
    EXPECT_EQ(-1, empty.extra);
    EXPECT_EQ(16u, sizeof(MibCallback));
}

TEST(MibCallbackTest, CallsMembersOfAnAgentThatLiesBehindAnotherBase)
{
    CSecondBaseAgent agent;
    const MibCallback own = CPlainAgent::Callback<&CSecondBaseAgent::fOwn>();
    EXPECT_TRUE(own.IsSet());
    EXPECT_NE(-1, own.extra);
    EXPECT_LT(own.adjustment, 0);
    EXPECT_EQ(7u, CallIt(agent, own));
    EXPECT_EQ(9u, CallIt(agent, CPlainAgent::Callback<&CSecondBaseAgent::fConst>()));
}

TEST(MibCallbackTest, CallsMembersOfAnotherBaseWithTheirOwner)
{
    CSecondBaseAgent agent;
    agent.m_base = 200;
    const MibCallback mixed = CPlainAgent::Callback<&SMixin::fMixed, CSecondBaseAgent>();
    EXPECT_EQ(202u, CallIt(agent, mixed, MibMode::CheckSet));
}

TEST(MibCallbackTest, GivesTheEntryToTheExtendedForm)
{
    CSecondBaseAgent agent;
    EXPECT_EQ(66u, CallIt(agent, CPlainAgent::Callback<&CSecondBaseAgent::fEntry>()));
}

TEST(MibCallbackTest, CallsTheOverrideOfAVirtualMember)
{
    CLastAgent agent;
    EXPECT_EQ(20u, CallIt(agent, CPlainAgent::Callback<&CSecondBaseAgent::fVirtual>()));
    EXPECT_EQ(21u, CallIt(agent, CPlainAgent::Callback<&CSecondBaseAgent::fVirtualEx>()));
}

TEST(MibCallbackTest, AnyExceptionGivesStatus5)
{
    CLastAgent agent;
    EXPECT_EQ(5u, CallIt(agent, CPlainAgent::Callback<&CLastAgent::fThrowsNumber>()));
    EXPECT_EQ(5u, CallIt(agent, CPlainAgent::Callback<&CLastAgent::fThrowsError>()));
}

TEST(MibEntryTest, AFreshOneIsEmptyWithTypeNull)
{
    const MibEntry entry;
    EXPECT_FALSE(entry.GetFunc.IsSet() || entry.SetFunc.IsSet() || entry.GetSetFunc.IsSet() ||
                 entry.CheckGetFunc.IsSet() || entry.GetSetChecksetFuncEx.IsSet());
    EXPECT_EQ("", entry.name);
    EXPECT_EQ(0u, entry.varbind.name.idLength);
    EXPECT_EQ(ASN_NULL, entry.varbind.value.asnType);
    EXPECT_EQ(nullptr, entry.context);
    EXPECT_EQ(0u, entry.access);
    EXPECT_EQ(5u, entry.type);
    EXPECT_EQ(0u, entry.contextSize);
}

TEST(MibEntryTest, ACopyOwnsBindingNameAndAnOwnedContext)
{
    MibEntry entry;
    CVarBind binding;
    FillBinding(binding, "1.3.6");
    SetVarBindFromText(binding.Get(), "abc", ASN_OCTETSTRING);
    entry.SetBinding(*binding.Get());
    entry.name = "a name that is longer than a short one";
    entry.access = 2;
    ASSERT_TRUE(entry.OwnContext("text", 5));

    MibEntry assigned;
    assigned.OwnContext("other", 6);
    assigned = entry;
    for (MibEntry const & copy : {MibEntry(entry), assigned}) {
        EXPECT_EQ("1.3.6", TextOf(copy.varbind.name));
        EXPECT_EQ("abc", Octets(copy.varbind.value));
        std::uint32_t const * const ids = copy.varbind.name.ids;
        std::uint32_t const * const originals = entry.varbind.name.ids;
        EXPECT_NE(originals, ids);
        EXPECT_EQ(entry.name, copy.name);
        EXPECT_EQ(2u, copy.access);
        EXPECT_NE(entry.context, copy.context);
        EXPECT_STREQ("text", static_cast<char const *>(copy.context));
        EXPECT_EQ(5u, copy.contextSize);
    }
}

TEST(MibEntryTest, ACopySharesABorrowedContext)
{
    int borrowed = 0;
    MibEntry entry;
    entry.BorrowContext(&borrowed);
    const MibEntry copy(entry);
    EXPECT_EQ(&borrowed, copy.context);
    EXPECT_EQ(0u, copy.contextSize);
    MibEntry assigned;
    assigned.OwnContext("x", 2);
    assigned = entry;
    EXPECT_EQ(&borrowed, assigned.context);
    EXPECT_EQ(0u, assigned.contextSize);
}

TEST(MibEntryTest, OnlyTheLowByteOfTheAccessCounts)
{
    MibEntry entry;
    for (auto const & [access, writable] :
         {std::pair{0u, false}, {1u, false}, {2u, true}, {3u, false}, {0x102u, true}}) {
        entry.access = access;
        EXPECT_EQ(writable, entry.IsReadWrite()) << access;
    }
}

} // namespace
