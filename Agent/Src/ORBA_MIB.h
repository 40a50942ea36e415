#ifndef AGENT_ORBA_MIB_H
#define AGENT_ORBA_MIB_H

#include <atomic>
#include <cstdint>
#include <vector>

#include "Snmp/Frame/SnmpAgent.h"
#include "Snmp/Include/Structure.h"
#include "VLK/WaitObjects.h"

namespace SNMP {

class CPollHandler;

template <class TEntry>
struct STableLayout;

/// The RAID agent: keeps what the core service reports, shows it as MIB objects and turns its events into traps.
///
/// Threads: the host's threads come in through requests (fGetProgress among them), the main thread through
/// InitializeMib and CloseMib, and the poll thread, which alone fills the records, rebuilds the groups and sends
/// traps. m_requestLock is held for a whole rebuild, so a request sees a table entirely old or entirely new.
///
/// One object at a time: what the poll thread and a progress query share is class-wide, and so is the delayed
/// start. A new object starts all of it anew. An object isn't made for a second InitializeMib.
class CKestrixRAIDAgent : public CSnmpAgent {
public:
    /// Reads the configuration. Raises when the system has no handles left for the events; nothing else that is
    /// missing or broken makes it fail.
    CKestrixRAIDAgent();
    ~CKestrixRAIDAgent() override;

    /// Shows the agent's own group and starts the poll thread, which fills the others as the core service flags
    /// them. Lets no exception out: a failure is traced and leaves the agent in state 3.
    void InitializeMib() override;
    /// Ends the poll thread; kills it when it doesn't end within five seconds.
    void CloseMib() override;

    /// Callbacks of kxrLogicalDriveProgress. fGetProgress asks the core service through the poll thread and waits
    /// for the answer without a time limit, with m_requestLock held; always returns 0. The other two refuse a SET.
    std::uint32_t fGetProgress(RFC1157VarBind * varbind, std::uint8_t mode);
    std::uint32_t fSetReadOnly(RFC1157VarBind * varbind, std::uint8_t mode);
    std::uint32_t fCheckSetReadOnly(RFC1157VarBind * varbind, std::uint8_t mode);

protected:
    friend class CPollHandler;

    /// What m_AgentState holds besides 0.
    static constexpr int kStateStarted = 1;
    static constexpr int kStateBroken = 3;     ///< an exception ended a connection or the thread
    static constexpr int kStateNotStarted = 4; ///< the poll thread could not be started

    // Each replaces one group or table by what its record holds, under m_requestLock. True always.
    bool InsertAgentInfoGroup();
    bool RebuildStatusGroup();
    bool RebuildCtrlTable();
    bool RebuildControllerInfoGroup();
    bool RebuildLogicalDriveContentsTable();
    bool RebuildLogicalDriveInfoGroup();
    bool RebuildLogicalDriveTable();
    bool RebuildPhysicalDeviceInfoGroup();
    void RebuildPhysicalDeviceTable();

    /// Adds an outbound and an inbound rule for the SNMP service to the firewall's service hardening, so that the
    /// agent inside it reaches the core service. Always adds, without a look for rules of an earlier start. What
    /// fails is traced and keeps nobody from anything; the first failure leaves out what would follow, so that
    /// the outbound rule may stand alone. Waits some seconds once both are added.
    void ManageWSH();

    /// Holds a trap back until the delayed start is over. Poll thread only.
    void QueueTrap(ORBA_EVENTINFO const & trap);
    /// Hands a trap with its eight variables to the frame. Poll thread only. Raises std::bad_alloc.
    void SendTrap(ORBA_EVENTINFO const & trap);

    ORBA_STATUS m_Status;
    ORBA_ADAPTERTABLE m_AdapterTable;
    ORBA_CONTROLLERINFO m_ControllerInfo;
    ORBA_LOGICALDRIVETABLE m_LogicalDriveTable;
    ORBA_LOGICALDRIVEINFO m_LogicalDriveInfo;
    ORBA_PHYSICALDEVICETABLE m_PhysicalDeviceTable;
    ORBA_PHYSICALDEVICEINFO m_PhysicalDeviceInfo;
    ORBA_LOGICALDRIVECONTENTSTABLE m_ContentsTable;
    CThread m_PollThread; ///< Thread_PollHandler

    // Set by the constructor, then the poll thread's alone.
    static std::uint64_t m_StartTime; ///< milliseconds since 1970 while in the delayed start, else 0
    static std::int32_t m_ASRunning;  ///< milliseconds after m_StartTime in which the trap listener is looked for
    static std::int32_t m_ASIniting;  ///< milliseconds that the trap listener is given still
    static std::uint32_t m_PortNumber;
    static std::vector<ORBA_EVENTINFO> m_TrapQueue;

    // Read and written without a lock; the two mailboxes are handed over by the two events.
    static std::atomic<std::int32_t> m_AgentState;
    static std::atomic<std::int32_t> m_AdapterNr; ///< the controller on the way in, the counter on the way back
    static std::atomic<std::int32_t> m_LogicalDrive;

    static VLK::Threading::CEvent m_ProgressRequest;  ///< auto reset; wakes the poll thread
    static VLK::Threading::CEvent m_ProgressReply;    ///< auto reset; wakes fGetProgress
    static VLK::Threading::CEvent m_Terminate;        ///< manual reset; stays set once set
    static VLK::Threading::CWaitInterrupt m_BreakOff; ///< makes the poll thread leave any wait

private:
    static std::uint32_t Thread_PollHandler(void * agent) noexcept;
    static void StartAnew();
    static void ReadConfiguration();
    bool BuildAndStart();

    template <class TEntry>
    void RebuildTable(std::vector<TEntry> const & entries, STableLayout<TEntry> const & layout);
    void DeleteRows(char const * tableOid);
    template <class TEntry>
    void InsertRows(std::vector<TEntry> const & entries, STableLayout<TEntry> const & layout);
    void RebuildScalarGroup(char const * group, struct SScalar const * scalars, std::size_t count);
};

} // namespace SNMP

#endif
