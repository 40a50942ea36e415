#ifndef TESTS_AGENT_SUPPORT_AGENT_UNDER_TEST_H
#define TESTS_AGENT_SUPPORT_AGENT_UNDER_TEST_H

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Agent/Src/Intervals.h"
#include "Agent/Src/MibRoot.h"
#include "Agent/Src/ORBA_MIB.h"
#include "Tests/Agent/Support/Estate.h"
#include "Tests/Agent/Support/RawPeer.h"
#include "Tests/Fake/Debug.h"
#include "Tests/Support/Deadline.h"
#include "Tests/Support/HostFixture.h"
#include "Tests/Support/RegistryFixture.h"

/// One trap as the host gets it.
struct STrap {
    int specific;
    std::string enterprise;
    std::vector<std::string> oids;
    std::vector<unsigned int> types;
    std::vector<std::string> values;
};

/// The product's agent, with its insides open.
class CAgentUnderTest : public SNMP::CKestrixRAIDAgent {
public:
    CAgentUnderTest();

    using CKestrixRAIDAgent::m_AdapterNr;
    using CKestrixRAIDAgent::m_AdapterTable;
    using CKestrixRAIDAgent::m_AgentState;
    using CKestrixRAIDAgent::m_ASIniting;
    using CKestrixRAIDAgent::m_ASRunning;
    using CKestrixRAIDAgent::m_LogicalDrive;
    using CKestrixRAIDAgent::m_PollThread;
    using CKestrixRAIDAgent::m_PortNumber;
    using CKestrixRAIDAgent::m_StartTime;
    using CKestrixRAIDAgent::m_Status;
    using CKestrixRAIDAgent::m_Terminate;
    using CKestrixRAIDAgent::m_TrapQueue;
    using CKestrixRAIDAgent::QueueTrap;
    using CKestrixRAIDAgent::SendTrap;
    using CSnmpAgent::m_computerName;
    using CSnmpAgent::m_requestLock;

    /// All objects that a manager finds below `root` (below the MIB's own root) without the progress objects.
    std::vector<SShownObject> Walk(std::string const & root = "");
    /// One object; nothing if there is none. Runs the callbacks.
    std::optional<SShownObject> Get(std::string const & oid);
    /// The status of a GET, a SET's check, and a SET's commit.
    std::uint32_t GetStatus(std::string const & oid);
    std::uint32_t CheckSet(std::string const & oid);
    std::uint32_t Set(std::string const & oid);

    std::optional<STrap> NextTrap();
    /// Waits for the next trap; a failure of the test if none comes.
    STrap AwaitTrap();
    /// The traps that wait now.
    std::vector<int> TrapNumbers();
};

/// An agent with a peer that plays its core service. Directories, registry and service list of its own.
class CAgentTest : public testing::Test {
protected:
    CAgentTest();
    ~CAgentTest() override;

    /// Makes the agent. Its configuration is read here.
    void Make();
    /// Makes the agent, if there is none, lets it talk to the peer, and runs InitializeMib.
    void Start();
    /// Start, and the connection to the peer with its CONNECTED trap taken.
    CRawConnection StartConnected();
    /// CloseMib and the end of the agent.
    void Stop();
    /// As if the SNMP service stopped the agent.
    void SignalShutdown();

    void WriteFile(std::filesystem::path const & path, std::string const & text);
    /// A host with the management services: their file, and a service of that name.
    void InstallServices();

    /// The lines of the trace at up to `level`.
    std::vector<std::string> Trace(unsigned int level = 6) const;
    bool Traced(std::string const & line) const;
    std::size_t TimesTraced(std::string const & line) const;
    /// Waits for the lines in this order, others between them: the agent may be on its way to the last ones.
    void ExpectTraced(std::vector<std::string> const & lines) const;
    bool HasEnded() const { return !agent->m_PollThread.IsRunning(); }

    std::filesystem::path const folder;     ///< goes with the test
    SAgentIntervals const productIntervals; ///< put back at the end
    CRegistryFixture registry;
    CHostFixture host;
    CRawPeer peer;
    std::unique_ptr<CAgentUnderTest> agent;
};

#endif
