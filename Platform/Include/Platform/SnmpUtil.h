#ifndef PLATFORM_SNMP_UTIL_H
#define PLATFORM_SNMP_UTIL_H

#include <cstdint>

#include "Platform/SnmpExtension.h"

/// The SNMP utility functions, with the names and the meaning that the platform's SNMP extension interface
/// publishes. All of them: any thread, no lock, no exception. Results of `int` are 1 for success and 0 for
/// failure unless a comment says otherwise. Memory comes from SnmpUtilMemAlloc, which is malloc on POSIX. On Windows
/// the three functions of memory are the system's own (snmpapi), so that service and extension may free what the other
/// made; the rest is built on them, since the system doesn't say what its own do with null, Null and empty arguments.
extern "C" {
void * SnmpUtilMemAlloc(std::uint32_t bytes) noexcept;
/// block: not null, since no system says what it does then. The content up to the lesser size stays.
void * SnmpUtilMemReAlloc(void * block, std::uint32_t bytes) noexcept;
void SnmpUtilMemFree(void * block) noexcept;

/// Deep copy of `source` to `target`, whose old content is overwritten without being freed. An empty source
/// gives an empty target.
int SnmpUtilOidCpy(AsnObjectIdentifier * target, AsnObjectIdentifier const * source) noexcept;
/// Appends the arcs of `tail` to `target`, which owns its arcs.
int SnmpUtilOidAppend(AsnObjectIdentifier * target, AsnObjectIdentifier const * tail) noexcept;
/// Compares at most `arcs` arcs of each. Below 0, 0, above 0; the shorter one comes first on a tie.
int SnmpUtilOidNCmp(AsnObjectIdentifier const * left, AsnObjectIdentifier const * right, std::uint32_t arcs) noexcept;
/// Arc by arc, unsigned; the shorter one comes first on a tie.
int SnmpUtilOidCmp(AsnObjectIdentifier const * left, AsnObjectIdentifier const * right) noexcept;
/// Frees the arcs and leaves an empty OID.
void SnmpUtilOidFree(AsnObjectIdentifier * oid) noexcept;

/// Deep copy of a value; streams become dynamic. The target's old content is overwritten without being freed.
int SnmpUtilAsnAnyCpy(AsnAny * target, AsnAny const * source) noexcept;
/// Frees what the value owns (an OID always, a stream when it is dynamic) and leaves Null.
void SnmpUtilAsnAnyFree(AsnAny * value) noexcept;

int SnmpUtilVarBindCpy(RFC1157VarBind * target, RFC1157VarBind const * source) noexcept;
void SnmpUtilVarBindFree(RFC1157VarBind * binding) noexcept;
int SnmpUtilVarBindListCpy(RFC1157VarBindList * target, RFC1157VarBindList const * source) noexcept;
/// Frees every binding and the array, and leaves an empty list.
void SnmpUtilVarBindListFree(RFC1157VarBindList * list) noexcept;
}

#endif
