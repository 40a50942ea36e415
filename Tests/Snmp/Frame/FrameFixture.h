#ifndef TESTS_SNMP_FRAME_FRAME_FIXTURE_H
#define TESTS_SNMP_FRAME_FRAME_FIXTURE_H

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "Fake/Debug.h"
#include "PlatformFakes.h"
#include "Snmp/Frame/SnmpAgent.h"
#include "Support/RegistryFixture.h"

inline constexpr std::uint32_t kReadOnly = static_cast<std::uint32_t>(MibAccess::ReadOnly);
inline constexpr std::uint32_t kReadWrite = static_cast<std::uint32_t>(MibAccess::ReadWrite);

/// An agent whose hooks are functions of the test, and whose fields the test may see.
class CAgentUnderTest : public CSnmpAgent {
public:
    using RequestHook =
        std::function<std::int32_t(std::uint8_t, RFC1157VarBindList *, std::uint32_t *, std::uint32_t *)>;

    ~CAgentUnderTest() override
    {
        if (atDestruction) atDestruction();
    }
    void InitializeMib() override
    {
        ++initializations;
        if (atInitializeMib) atInitializeMib();
    }
    void CloseMib() override
    {
        ++closings;
        if (atCloseMib) atCloseMib();
    }
    std::int32_t OnPreSnmpQuery(std::uint8_t type, RFC1157VarBindList * list, std::uint32_t * status,
                                std::uint32_t * index) override
    {
        ++preQueries;
        return atPreQuery ? atPreQuery(type, list, status, index)
                          : CSnmpAgent::OnPreSnmpQuery(type, list, status, index);
    }
    void OnPostSnmpQuery(std::uint8_t type, RFC1157VarBindList * list, std::uint32_t * status,
                         std::uint32_t * index) override
    {
        ++postQueries;
        if (atPostQuery) atPostQuery(type, list, status, index);
        CSnmpAgent::OnPostSnmpQuery(type, list, status, index);
    }
    std::int32_t InitSupportedRegions() override
    {
        ++regionCalls;
        return atRegions ? atRegions() : CSnmpAgent::InitSupportedRegions();
    }

    std::function<void()> atInitializeMib, atCloseMib, atDestruction;
    std::function<std::int32_t()> atRegions;
    RequestHook atPreQuery, atPostQuery;
    std::atomic<int> initializations{0}, closings{0}, preQueries{0}, postQueries{0}, regionCalls{0};

    using CSnmpAgent::m_agentRoot;
    using CSnmpAgent::m_commonRoot;
    using CSnmpAgent::m_computerName;
    using CSnmpAgent::m_dataRoot;
    using CSnmpAgent::m_fileRoot;
    using CSnmpAgent::m_indexAppendMode;
    using CSnmpAgent::m_modulePath;
    using CSnmpAgent::m_nextRegion;
    using CSnmpAgent::m_regions;
    using CSnmpAgent::m_registryName;
    using CSnmpAgent::m_requestLock;
    using CSnmpAgent::m_requestsEnabled;
    using CSnmpAgent::m_restartAbortEvent;
    using CSnmpAgent::m_restartAbortEventError;
    using CSnmpAgent::m_restartDelay;
    using CSnmpAgent::m_shutdownEvent;
    using CSnmpAgent::m_shutdownEventError;
    using CSnmpAgent::m_startTime;
    using CSnmpAgent::m_thread;
    using CSnmpAgent::m_trapEvent;
    using CSnmpAgent::m_trapEventError;
    using CSnmpAgent::m_trapsUsed;
};

/// What the library under test supplies to the frame.
struct SExtensionHooks {
    std::function<CSnmpAgent *()> newAgent;
    char const * registryName = nullptr;
    char const * region = nullptr;
};
extern SExtensionHooks g_extension;

using Lines = std::vector<Fake::STraceLine>;

/// A line of the frame with the module name ahead.
Fake::STraceLine Frame(unsigned level, std::string const & text);
/// The lines of the trace, without the tree's own.
Lines Traced();
bool Traced(Fake::STraceLine const & line);
std::size_t CountTraced(std::string const & part);
/// Whether the lines stand in the trace in this order, others between them or not; a failure names the first missing.
testing::AssertionResult TracedInOrder(Lines const & lines);

/// A registry of the test's own. The keys lie below HKEY_LOCAL_MACHINE.
class CTestRegistry {
public:
    /// text: with backslashes as they are.
    void Text(std::string const & key, std::string const & name, std::string const & text);
    void Number(std::string const & key, std::string const & name, std::uint32_t number);
    /// A line as it stands in the file.
    void Raw(std::string const & key, std::string const & line);

private:
    CRegistryFixture m_registry;
    std::string m_lines;
};

/// The frame with nothing attached, the trace on and empty, an empty registry, and short intervals.
class FrameTest : public testing::Test {
protected:
    FrameTest();
    ~FrameTest() override;

    CTestRegistry m_registry;
};

/// Something that one thread waits for and another gives, for good. It is none of the platform's objects, in which
/// a thread that was ended by force would stay.
class CGate {
public:
    void Open() { m_open = true; }
    // Nor is it a wait of the C++ library, which a thread that is killed may leave in disorder.
    void Pass()
    {
        while (!m_open)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

private:
    std::atomic<bool> m_open{false};
};

/// A path of this system from one with slashes.
std::string NativePath(std::string path);

/// OIDs and bindings by text.
std::string Text(AsnObjectIdentifier const & oid);

/// A list of bindings that a request works on.
class CBindings {
public:
    explicit CBindings(std::vector<std::string> const & oids);
    ~CBindings();
    CBindings(CBindings const &) = delete;
    CBindings & operator=(CBindings const &) = delete;

    RFC1157VarBindList * List() { return &m_list; }
    std::string Oid(std::size_t i) const { return Text(m_list.list[i].name); }
    std::uint8_t Type(std::size_t i) const { return m_list.list[i].value.asnType; }
    std::int32_t Number(std::size_t i) const { return m_list.list[i].value.asnValue.number; }
    void SetNumber(std::size_t i, std::int32_t number);

private:
    RFC1157VarBindList m_list{};
};

#endif
