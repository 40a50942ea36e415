#include <atomic>
#include <thread>

#include "MibFixture.h"

namespace {

constexpr std::uint32_t kNone = kNoOidIndex;

/// Callbacks for many threads: they keep nothing.
class CSharedAgent : public CPlainAgent {
public:
    std::uint32_t fGet(RFC1157VarBind * binding, std::uint8_t)
    {
        ++m_inside; // not atomic: the tree lock is held
        SetVarBindNumber(binding, m_inside, ASN_GAUGE32);
        return 0;
    }
    std::uint32_t fEx(MibEntry * entry, RFC1157VarBind *, std::uint8_t) { return entry->name == "kxrShared" ? 0 : 5; }

    std::uint32_t m_inside = 0;
};

TEST(MibThreadsTest, ReadersWritersAndSettersDoNotDisturbEachOther)
{
    CSharedAgent agent;
    agent.MibInsertVarOid("1.2.0", "kxrShared", 2, CPlainAgent::Callback<&CSharedAgent::fGet>(), {}, {}, {}, 2,
                          nullptr);
    const COid fixed("1.2.0");
    agent.MibInsertEntryEx(fixed.Get(), nullptr, CPlainAgent::Callback<&CSharedAgent::fEx>(), 2, nullptr, 2);
    constexpr std::uint32_t rounds = 60;
    std::atomic<bool> goesOn{true};
    std::atomic<std::uint32_t> failures{0};

    std::vector<std::thread> threads;
    for (std::uint32_t writer = 0; writer < 2; ++writer) {
        threads.emplace_back([&agent, writer] {
            const COid root(("1.3." + std::to_string(writer)).c_str());
            const std::string column = "1.3." + std::to_string(writer) + ".0.0";
            for (std::uint32_t round = 0; round < rounds; ++round) {
                for (std::uint32_t row = 0; row < 100; ++row) {
                    agent.MibInsertConstTableOid(column.c_str(), "kxrCell", row, ASN_INTEGER, 1, row, kNone, kNone,
                                                 kNone);
                    agent.MibInsertConstTableOid(column.c_str(), "kxrText", "text", ASN_OCTETSTRING, 2, row, kNone,
                                                 kNone, kNone);
                }
                agent.MibDeleteOids(root.Get(), round % 2 == 0 ? kNone : 7u);
            }
        });
    }
    for (int reader = 0; reader < 3; ++reader) {
        threads.emplace_back([&] {
            while (goesOn.load()) {
                for (SReply reply = GetNext(agent, "1.1"); reply.found != 0; reply = GetNext(agent, reply.oid)) {
                    if (reply.status != 0) ++failures;
                }
            }
        });
    }
    threads.emplace_back([&] {
        while (goesOn.load()) {
            if (CheckSet(agent, "1.2.0").status != 0) ++failures;
            if (Commit(agent, "1.2.0").status != 0) ++failures;
        }
    });
    threads[0].join();
    threads[1].join();
    goesOn = false;
    for (std::size_t i = 2; i < threads.size(); ++i)
        threads[i].join();
    EXPECT_EQ(0u, failures.load());
    EXPECT_GT(agent.m_inside, 0u);
    agent.MibClear();
    EXPECT_EQ(0u, agent.MibSize());
}

} // namespace
