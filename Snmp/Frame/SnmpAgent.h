#ifndef SNMP_FRAME_SNMP_AGENT_H
#define SNMP_FRAME_SNMP_AGENT_H

#include <cstdint>
#include <string>

#include "Platform/CriticalSection.h"
#include "Platform/SnmpExtension.h"
#include "Platform/Wait.h"
#include "Snmp/Frame/Globals.h"
#include "Snmp/Frame/Relaxed.h"
#include "Snmp/Frame/Thread.h"
#include "Snmp/Frame/TrapQueue.h"
#include "Snmp/Host/VersionInfo.h"
#include "Snmp/Mib/SnmpMibTree.h"

/// An SNMP extension agent: the MIB tree, the request lock, the main thread, the trap queue and what the agent
/// knows of its environment. A concrete agent derives from it and fills the tree in InitializeMib.
///
/// Life: constructed and destroyed inside DllMain. The main thread calls InitializeMib, sleeps until shutdown,
/// calls CloseMib and clears the tree; on an internal restart the same object goes through that again.
///
/// Locks, from outer to inner: m_requestLock (a whole request, a whole rebuild of a group), the tree lock (one
/// tree operation). Both are recursive for their owner. The trap queue's lock is independent of both.
class CSnmpAgent : public CSnmpMibTree<CSnmpAgent> {
public:
    CSnmpAgent();

    /// Waits for the main thread as CThread says.
    virtual ~CSnmpAgent();
    CSnmpAgent(CSnmpAgent const &) = delete;
    CSnmpAgent & operator=(CSnmpAgent const &) = delete;

    /// Builds the MIB; returns when the first build is done. On the main thread, with an empty tree. An
    /// exception ends the main thread for good, and requests stay refused.
    virtual void InitializeMib() = 0;
    /// Stops what InitializeMib started. On the main thread.
    virtual void CloseMib();
    virtual char const * GetAgentName();
    virtual bool QueryAgentEnabled();
    /// Looks at a request before the tree does. 0: the hook has answered it itself, status and index included.
    /// On the host's thread, outside m_requestLock.
    virtual std::int32_t OnPreSnmpQuery(std::uint8_t requestType, RFC1157VarBindList * pVarBindList,
                                        std::uint32_t * pErrorStatus, std::uint32_t * pErrorIndex);
    /// Looks at a request last, with its answer. On the host's thread, outside m_requestLock.
    virtual void OnPostSnmpQuery(std::uint8_t requestType, RFC1157VarBindList * pVarBindList,
                                 std::uint32_t * pErrorStatus, std::uint32_t * pErrorIndex);
    /// Adds the regions with AddMibRegion. Called at the start when there is none yet. Returns non-zero on
    /// success; 0 makes the start fail.
    virtual std::int32_t InitSupportedRegions();

    // What a derived agent calls.

    /// Appends a MIB region. oidText: dotted text; valueText: a remark for traces, may be null. A text that is
    /// no OID gives a region with an empty root. Before the host asks for regions, on one thread.
    void AddMibRegion(char const * oidText, char const * valueText);

    /// Names the value under which the shared registry root is looked up. Null and empty are ignored.
    void SetRegistryName(char const * text);

    /// Queues a trap and signals the trap event. enterpriseOidText: dotted text, a text that is no OID gives
    /// an empty enterprise. varBindList: copied, may be null. Any thread, also while requests are refused.
    /// Returns non-zero when the event was signalled, 0 when there is no event; the trap is queued all the
    /// same. Raises std::bad_alloc when there is no memory for it; nothing is queued then.
    std::int32_t CreateTrap(char const * enterpriseOidText, std::uint32_t specificTrap,
                            RFC1157VarBindList const * varBindList);

    /// Shuts the agent down and starts it again after `delayMs` milliseconds (0: it doesn't start again). From
    /// any thread of the agent. Returns 1, or 0 when the main thread doesn't run; nothing changes then.
    std::int32_t RestartAgent(std::uint32_t delayMs);

    /// Path of a file of the agent from the registry: the value `valueName` of the key FILE below the module's
    /// own key (moduleName null: this library's). A relative path is put behind the data root. Returns 1 with
    /// a path, else 0, and outPath keeps its value.
    std::int32_t GetAgentRegFilePath(char const * valueName, std::string & outPath, char const * moduleName = nullptr);

    /// Reads a parameter of the agent from the registry, as a text or as a number. Returns 1 if it was read;
    /// else 0, the argument keeps its value, and with `traceError` a trace tells it.
    std::int32_t GetAgentRegParam(char const * valueName, std::string & outText, bool traceError);
    std::int32_t GetAgentRegParam(char const * valueName, std::uint32_t * outNumber, bool traceError);

    /// Hooks for a status that an agent keeps for itself. They do nothing and return 0.
    std::int32_t SetAgentStatusCode(std::int32_t code);
    std::int32_t SetAgentStatusText(char const * text);

    /// Get callbacks for objects without a source: Integer 1, the usual unknown(1), and Integer 0.
    std::uint32_t fGetUnknownEnumValue(RFC1157VarBind * binding, std::uint8_t mode);
    std::uint32_t fGetNullValue(RFC1157VarBind * binding, std::uint8_t mode);

    // What the entry points call, on the host's threads. None of them lets an exception out.

    /// Starts the agent. Returns 1, or 0 after an exception. phTrapEvent gets the host's form of the trap
    /// event, which stays the agent's; pFirstRegion gets a copy of the first region's root.
    std::int32_t SnmpInit(std::uint32_t uptimeReference, SnmpHandle * phTrapEvent, AsnObjectIdentifier * pFirstRegion);
    /// Hands out a copy of the next region's root. Returns 1 with a region, else 0.
    std::int32_t SnmpInitEx(AsnObjectIdentifier * pNextRegion);
    /// Answers one request in place. Returns 1, or 0 for a SET that found no object, for an unknown request
    /// type and after an exception. An exception raised while m_requestLock was held leaves it held.
    std::int32_t SnmpQuery(std::uint8_t requestType, RFC1157VarBindList * pVarBindList, std::uint32_t * pErrorStatus,
                           std::uint32_t * pErrorIndex);
    /// Hands out the oldest trap. Returns 1 with a trap, else 0. enterprise and varBindList are in and out:
    /// their old content is freed, the new one is the caller's.
    std::int32_t SnmpTrap(AsnObjectIdentifier * enterprise, std::int32_t * genericTrap, std::int32_t * specificTrap,
                          std::uint32_t * timeStamp, RFC1157VarBindList * varBindList);
    /// Takes the oldest trap out of the queue. 1, or 0 if the queue is empty.
    std::int32_t ResolveTrap(AsnObjectIdentifier * enterprise, std::int32_t * specificTrap,
                             RFC1157VarBindList * varBindList);

    /// Starts the main thread, unless one runs already. Returns 1 whether it started or not, 0 after an exception.
    std::int32_t StartAgent();
    /// Stops the main thread; kills it when it doesn't end within 30 seconds. Returns 1, or 0 after an exception.
    std::int32_t StopAgent();
    /// Wakes the main thread out of its sleep for shutdown. Any thread.
    void SignalAgentShutdown();

    /// Finds out where the agent stands: its file, version, registry roots and host; prints that as a banner,
    /// and pins the modules of the registry's list. addressInside: any address inside the library's module; an
    /// address in no module ends it at once, before the banner. Once, at process attach.
    void InitializeModule(void const * addressInside);

    /// Names a change of status in a trace; nothing is stored.
    static void SetAgentStatus(std::uint32_t code);

protected:
    friend class CSnmpMibTree<CSnmpAgent>;

    Platform::CWaitableHandle m_shutdownEvent; ///< manual reset; wakes the main thread
    Platform::ErrorCode m_shutdownEventError;
    CTrapQueue m_trapQueue;
    TRelaxed<std::int32_t> m_trapsUsed; ///< 1 from the first CreateTrap on
    CVersionResource m_version;         ///< of the library's file
    std::string m_modulePath;
    std::string m_commonRoot; ///< registry key that the agents of the suite share
    std::string m_agentRoot;  ///< registry key of this agent
    std::string m_dataRoot;
    std::string m_fileRoot;
    std::int32_t m_indexAppendMode; ///< branch of ApplyOidIndexes; always 0
    Platform::CCriticalSection m_requestLock;
    CThread m_thread;                      ///< the main thread
    RFC1157VarBindList m_regions;          ///< owned; roots in the names
    Platform::CWaitableHandle m_trapEvent; ///< auto reset; the host waits for it
    Platform::ErrorCode m_trapEventError;
    TRelaxed<std::int32_t> m_requestsEnabled;      ///< from the end of InitializeMib until CloseMib has returned
    TRelaxed<std::uint32_t> m_startTime;           ///< uptime reference of the host, hundredths of a second
    std::int32_t m_nextRegion;                     ///< index of the region that SnmpInitEx hands out next
    Platform::CWaitableHandle m_restartAbortEvent; ///< manual reset; ends the wait before an internal restart
    Platform::ErrorCode m_restartAbortEventError;
    TRelaxed<std::uint32_t> m_restartDelay; ///< milliseconds; 0: no internal restart after this shutdown
    std::string m_computerName;
    std::string m_registryName;

private:
    static std::uint32_t Thread_AgentMain(void * agent) noexcept;
    /// Passes until shutdown. False: the thread was killed meanwhile and must touch nothing any more.
    bool RunPasses();
    bool RunPass();
    /// Whether another pass follows after the delay.
    bool AwaitRestart();
    /// Makes sure that there is a region; raises an int when there can be none.
    void DefineRegions();

    std::int32_t AnswerRequest(std::uint8_t requestType, RFC1157VarBindList & list, std::uint32_t & status,
                               std::uint32_t & index, std::string * names);
    // The loops over the bindings. Each that returns a position means the number of bindings it handled. names:
    // one for each binding, or null.
    std::uint32_t AnswerGet(RFC1157VarBindList & list, std::uint32_t & status, std::string * names);
    std::uint32_t AnswerGetNext(RFC1157VarBindList & list, std::uint32_t & status, std::string * names);
    void FindNext(RFC1157VarBind & binding, std::uint32_t number, std::uint32_t & status, std::string * name);
    /// Puts the first OID behind the binding's region into the binding; outside all regions it stays.
    void LeaveRegion(RFC1157VarBind & binding);
    /// Returns 1 if any object was found.
    std::int32_t CheckSet(RFC1157VarBindList & list, std::uint32_t & status, std::string * names);
    std::uint32_t CommitSet(RFC1157VarBindList & list, std::uint32_t & status, std::int32_t & anyFound);

    void ReadRoots();
    void PrintBanner();
    void PrintVersion();
    void LockDirtyModules();
};

/// Stops the agent, once: later calls do nothing until an agent is attached or started anew.
void SnmpClose();

/// Makes a list at least `count` bindings long; new ones are empty with a Null value. A list that is long
/// enough stays as it is. Returns 1; or 0 when there is no memory, and then the list is empty.
std::int32_t GrowVarBindList(RFC1157VarBindList & list, std::uint32_t count);

#endif
