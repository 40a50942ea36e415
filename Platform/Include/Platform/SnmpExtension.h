/* The SNMP extension interface: structures and entry points by which an SNMP service talks to an
 * extension library. Plain C, so that a host needs nothing else of this project.
 *
 * Structures are packed on 4-byte boundaries. All memory inside them is allocated and released by the
 * SnmpUtil functions (Platform/SnmpUtil.h), which are malloc and its family on POSIX systems, so host and
 * extension may be built apart. */
#ifndef PLATFORM_SNMP_EXTENSION_H
#define PLATFORM_SNMP_EXTENSION_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ASN.1 types of a value (AsnAny::asnType). */
#define ASN_INTEGER 0x02
#define ASN_BITS 0x03
#define ASN_OCTETSTRING 0x04
#define ASN_NULL 0x05
#define ASN_OBJECTIDENTIFIER 0x06
#define ASN_IPADDRESS 0x40
#define ASN_COUNTER32 0x41
#define ASN_GAUGE32 0x42
#define ASN_TIMETICKS 0x43
#define ASN_OPAQUE 0x44
#define ASN_COUNTER64 0x46
#define ASN_UINTEGER32 0x47

/* PDU codes of SnmpExtensionQuery. */
#define SNMP_PDU_GET 0xA0
#define SNMP_PDU_GETNEXT 0xA1
#define SNMP_PDU_SET 0xA3

/* Error status, RFC 3416 section 3. */
#define SNMP_ERRORSTATUS_NOERROR 0
#define SNMP_ERRORSTATUS_TOOBIG 1
#define SNMP_ERRORSTATUS_NOSUCHNAME 2
#define SNMP_ERRORSTATUS_BADVALUE 3
#define SNMP_ERRORSTATUS_READONLY 4
#define SNMP_ERRORSTATUS_GENERR 5
#define SNMP_ERRORSTATUS_NOACCESS 6
#define SNMP_ERRORSTATUS_WRONGTYPE 7
#define SNMP_ERRORSTATUS_WRONGLENGTH 8
#define SNMP_ERRORSTATUS_WRONGENCODING 9
#define SNMP_ERRORSTATUS_WRONGVALUE 10
#define SNMP_ERRORSTATUS_NOCREATION 11
#define SNMP_ERRORSTATUS_INCONSISTENTVALUE 12
#define SNMP_ERRORSTATUS_RESOURCEUNAVAILABLE 13
#define SNMP_ERRORSTATUS_COMMITFAILED 14
#define SNMP_ERRORSTATUS_UNDOFAILED 15
#define SNMP_ERRORSTATUS_AUTHORIZATIONERROR 16
#define SNMP_ERRORSTATUS_NOTWRITABLE 17
#define SNMP_ERRORSTATUS_INCONSISTENTNAME 18

#define SNMP_GENERICTRAP_ENTERSPECIFIC 6

/* Reasons of DllMain. */
#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1
#define DLL_THREAD_ATTACH 2
#define DLL_THREAD_DETACH 3

#pragma pack(push, 4)

typedef struct AsnOctetString {
    uint8_t * stream;
    uint32_t length;
    int32_t dynamic; /* non-zero: stream was allocated and is freed with the value */
} AsnOctetString;

typedef struct AsnObjectIdentifier {
    uint32_t idLength; /* number of arcs */
    uint32_t * ids;
} AsnObjectIdentifier;

typedef struct AsnCounter64 {
    uint64_t quadPart;
} AsnCounter64;

typedef struct AsnAny {
    uint8_t asnType;
    union {
        int32_t number;      /* ASN_INTEGER */
        uint32_t unsigned32; /* ASN_UINTEGER32 */
        AsnCounter64 counter64;
        AsnOctetString string;      /* ASN_OCTETSTRING */
        AsnOctetString bits;        /* ASN_BITS */
        AsnObjectIdentifier object; /* ASN_OBJECTIDENTIFIER */
        AsnOctetString address;     /* ASN_IPADDRESS */
        uint32_t counter;           /* ASN_COUNTER32 */
        uint32_t gauge;             /* ASN_GAUGE32 */
        uint32_t ticks;             /* ASN_TIMETICKS */
        AsnOctetString arbitrary;   /* ASN_OPAQUE */
    } asnValue;
} AsnAny;

typedef struct RFC1157VarBind {
    AsnObjectIdentifier name;
    AsnAny value;
} RFC1157VarBind;

typedef struct RFC1157VarBindList {
    RFC1157VarBind * list;
    uint32_t len;
} RFC1157VarBindList;

#pragma pack(pop)

/* A handle of the system. The trap event on POSIX: a file descriptor, carried in the pointer. */
typedef void * SnmpHandle;

/* Starts the agent. uptimeReference: clock of the agent's tick count in hundredths of a second at which the
 * service counts as started. *trapEvent: signalled when traps wait; on POSIX a descriptor that is readable
 * while signalled and whose eight bytes, once read, take the signal. *firstRegion: root of the agent's first
 * MIB region, the caller's afterwards. Returns 1, or 0 when the agent could not start. */
typedef int32_t (*SnmpExtensionInitFn)(uint32_t uptimeReference, SnmpHandle * trapEvent,
                                       AsnObjectIdentifier * firstRegion);
/* Hands out the next region of an agent that serves more than one. Returns 1 with a region, else 0. */
typedef int32_t (*SnmpExtensionInitExFn)(AsnObjectIdentifier * nextRegion);
/* Answers one request in place. Returns 0 when the extension failed as a whole. */
typedef int32_t (*SnmpExtensionQueryFn)(uint8_t pduType, RFC1157VarBindList * bindings, uint32_t * errorStatus,
                                        uint32_t * errorIndex);
/* Hands out the oldest waiting trap. Returns 1 with a trap, else 0. All memory is the caller's afterwards. */
typedef int32_t (*SnmpExtensionTrapFn)(AsnObjectIdentifier * enterprise, int32_t * genericTrap, int32_t * specificTrap,
                                       uint32_t * timeStamp, RFC1157VarBindList * bindings);
/* Stops the agent. */
typedef void (*SnmpExtensionCloseFn)(void);
/* Called by the host once after loading (reason 1) and once before unloading (reason 0). */
typedef int32_t (*DllMainFn)(void * module, uint32_t reason, void * reserved);

#ifdef __cplusplus
}
#endif
#endif
