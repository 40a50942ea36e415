#ifndef SNMP_MIB_MIB_TREE_LOCK_H
#define SNMP_MIB_MIB_TREE_LOCK_H

#include "Snmp/Host/Debug.h"
#include "Snmp/Mib/MibTree.h"

/// Holds the tree lock for a scope and tells the trace of it.
class CMibTree::CLock {
public:
    explicit CLock(Platform::CCriticalSection & section) noexcept : m_section(section)
    {
        if (CDebug::Enabled()) CDebug::Trace(6, "\nCSnmpMibTree        : Locking MIB tree ...");
        m_section.Enter();
        if (CDebug::Enabled()) CDebug::Trace(6, "\nCSnmpMibTree        : ...MIB tree locked");
    }
    ~CLock()
    {
        if (CDebug::Enabled()) CDebug::Trace(6, "\nCSnmpMibTree        : Unlocking MIB tree ...");
        m_section.Leave();
        if (CDebug::Enabled()) CDebug::Trace(6, "\nCSnmpMibTree        : ...MIB tree unlocked");
    }
    CLock(CLock const &) = delete;
    CLock & operator=(CLock const &) = delete;

private:
    Platform::CCriticalSection & m_section;
};

#endif
