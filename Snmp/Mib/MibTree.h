#ifndef SNMP_MIB_MIB_TREE_H
#define SNMP_MIB_MIB_TREE_H

#include <cstdint>
#include <string>

#include "Platform/CriticalSection.h"
#include "Snmp/Mib/MibEntry.h"
#include "Snmp/Mib/MibStore.h"
#include "Snmp/Mib/Oid.h"
#include "Snmp/Mib/VarBind.h"

/// The ordered store of MIB objects and the evaluation of one variable against it. Used through
/// CSnmpMibTree<TAgent>, which tells it where its agent is.
///
/// Threads: any, each operation by itself. The tree lock is taken around each of them, callbacks included, and is
/// recursive, so a callback may use any operation. Entries that a callback can see keep their addresses as
/// long as they are in the tree, and an entry that goes while a callback runs is kept until the last one is back.
/// A group of inserts that must look atomic is held together by a lock of the agent outside the tree lock.
///
/// Inserts take OIDs as text and copy all they are given, except a context pointer, which stays the caller's and
/// must outlive the entry. An insert at an OID that exists replaces what it stores and leaves the rest. A text
/// that is no OID makes an entry under the empty OID. Errors: none reported; allocations of values that fail leave
/// the value out, those of the tree itself are std::bad_alloc with the tree unchanged. The names are:
///     name        object name, copied; null: the name of an entry that exists stays
///     type        ASN.1 type (ASN_...)
///     access      MibAccess; only ReadWrite (2) makes an object writable
///     index1..5   row indexes, kNoOidIndex: absent; see ApplyOidIndexes
///     {}          an empty callback
class CMibTree {
public:
    CMibTree(CMibTree const &) = delete;
    CMibTree & operator=(CMibTree const &) = delete;

    /// Scalar constants: value from text (SetVarBindFromText, if the OID parsed) or a number (SetVarBindNumber).
    void MibInsertConstOid(char const * oid, char const * name, char const * value, std::uint32_t type,
                           std::uint32_t access);
    void MibInsertConstOid(char const * oid, char const * name, std::uint32_t value, std::uint32_t type,
                           std::uint32_t access);
    /// Scalar variable with plain callbacks; its stored value is empty, of `type`.
    void MibInsertVarOid(char const * oid, char const * name, std::uint32_t type, MibCallback getFunc,
                         MibCallback setFunc, MibCallback getSetFunc, MibCallback checkGetFunc, std::uint32_t access,
                         void * context);
    /// Scalar variable with the extended callback; read-only.
    void MibInsertVarOidEx(char const * oid, char const * name, std::uint32_t type, MibCallback getSetChecksetFuncEx,
                           void * context);

    /// Cells of a table with a text as index: OidAppendString, then extraIndex as one more arc unless absent.
    void MibInsertConstStringIndexOid(char const * oid, char const * name, char const * value, std::uint32_t type,
                                      char const * index, std::uint32_t extraIndex);
    void MibInsertConstStringIndexOid(char const * oid, char const * name, std::uint32_t value, std::uint32_t type,
                                      char const * index, std::uint32_t extraIndex);
    void MibInsertVarStringIndexOid(char const * oid, char const * name, std::uint32_t type, MibCallback getFunc,
                                    MibCallback setFunc, MibCallback getSetFunc, MibCallback checkGetFunc,
                                    std::uint32_t access, char const * index);

    /// Constant table cells, read-only. The third form stores `count` bytes under any type.
    void MibInsertConstTableOid(char const * oid, char const * name, char const * value, std::uint32_t type,
                                std::uint32_t index1 = kNoOidIndex, std::uint32_t index2 = kNoOidIndex,
                                std::uint32_t index3 = kNoOidIndex, std::uint32_t index4 = kNoOidIndex,
                                std::uint32_t index5 = kNoOidIndex);
    void MibInsertConstTableOid(char const * oid, char const * name, std::uint32_t value, std::uint32_t type,
                                std::uint32_t index1 = kNoOidIndex, std::uint32_t index2 = kNoOidIndex,
                                std::uint32_t index3 = kNoOidIndex, std::uint32_t index4 = kNoOidIndex,
                                std::uint32_t index5 = kNoOidIndex);
    void MibInsertConstTableOid(char const * oid, char const * name, std::uint8_t const * bytes, std::uint32_t count,
                                std::uint32_t type, std::uint32_t index1 = kNoOidIndex,
                                std::uint32_t index2 = kNoOidIndex, std::uint32_t index3 = kNoOidIndex,
                                std::uint32_t index4 = kNoOidIndex, std::uint32_t index5 = kNoOidIndex);

    /// Variable table cells with plain callbacks; the type isn't used. The first form has no context.
    void MibInsertVarTableOid(char const * oid, char const * name, std::uint32_t type, MibCallback getFunc,
                              MibCallback setFunc, MibCallback getSetFunc, MibCallback checkGetFunc,
                              std::uint32_t access, std::uint32_t index1, std::uint32_t index2, std::uint32_t index3,
                              std::uint32_t index4, std::uint32_t index5);
    void MibInsertVarTableOid(char const * oid, char const * name, std::uint32_t type, MibCallback getFunc,
                              MibCallback setFunc, MibCallback getSetFunc, MibCallback checkGetFunc,
                              std::uint32_t access, void * context, std::uint32_t index1, std::uint32_t index2,
                              std::uint32_t index3, std::uint32_t index4, std::uint32_t index5);
    /// Variable table cells with the extended callback; read-only. The first form has no context.
    void MibInsertVarTableOidEx(char const * oid, char const * name, std::uint32_t type,
                                MibCallback getSetChecksetFuncEx, std::uint32_t index1, std::uint32_t index2,
                                std::uint32_t index3, std::uint32_t index4, std::uint32_t index5);
    void MibInsertVarTableOidEx(char const * oid, char const * name, std::uint32_t type,
                                MibCallback getSetChecksetFuncEx, void * context, std::uint32_t index1,
                                std::uint32_t index2, std::uint32_t index3, std::uint32_t index4, std::uint32_t index5);
    /// As MibInsertVarTableOid; the entry owns a copy of the text with its terminator as its context.
    void MibInsertOidWithStringContext(char const * oid, char const * name, std::uint32_t type, MibCallback getFunc,
                                       MibCallback setFunc, MibCallback getSetFunc, MibCallback checkGetFunc,
                                       std::uint32_t access, char const * context, std::uint32_t index1,
                                       std::uint32_t index2, std::uint32_t index3, std::uint32_t index4,
                                       std::uint32_t index5);

    /// What the constant inserts and MibInsertVarOid come down to: stores a copy of the binding (its name is the
    /// OID), the access, four callbacks, the context pointer and the name. The extended callback stays.
    void MibInsertEntry(RFC1157VarBind const * varbind, char const * name, std::uint32_t access, MibCallback getFunc,
                        MibCallback setFunc, MibCallback getSetFunc, MibCallback checkGetFunc, void * context);
    /// What the ...Ex inserts come down to: stores access, type, the extended callback, the context pointer and
    /// the name. The stored value and the four callbacks stay.
    void MibInsertEntryEx(AsnObjectIdentifier const * oid, char const * name, MibCallback callback, std::uint32_t type,
                          void * context, std::uint32_t access);

    /// Drops all entries.
    void MibClear();
    /// Drops the entries at and below rootOid whose OID ends in the given indexes: index1 is the last arc, index2
    /// the one before it, and so on (the reverse of ApplyOidIndexes); an arc that the OID doesn't have counts
    /// as 0; an absent index fits all. rootOid stays the caller's. Returns how many went.
    std::uint32_t MibDeleteOids(AsnObjectIdentifier const * rootOid, std::uint32_t index1 = kNoOidIndex,
                                std::uint32_t index2 = kNoOidIndex, std::uint32_t index3 = kNoOidIndex,
                                std::uint32_t index4 = kNoOidIndex, std::uint32_t index5 = kNoOidIndex);

    /// Answers one binding of a GET (requestType 160) or GETNEXT (161): looks the object up, runs its callbacks on
    /// a copy, and replaces OID and value of `binding` by the result, also where a callback failed.
    /// status: 0, the status of the callback that failed, or 2 with `binding` unchanged if there is no object.
    /// objectName: receives the object's name if one was found; null: not wanted.
    /// Returns 1 if an object was found, else 0.
    int MibGetVarbind(RFC1157VarBind * binding, std::uint32_t requestType, std::uint32_t * status,
                      std::string * objectName);
    /// Checks whether a SET of this binding may be committed. status: 0, 2 no object, 4 read-only, or that of
    /// the callback that failed. objectName as above. Returns 1 if the object exists, else 0.
    int MibCheckSetVarbind(RFC1157VarBind * binding, std::uint32_t * status, std::string * objectName);
    /// Commits a SET; with status 0 the binding is now the object's stored one. Status and result as in the check.
    int MibSetVarbind(RFC1157VarBind * binding, std::uint32_t * status);

    /// Puts the row indexes into the OID of a column: over its last arcs (OverwriteOidIndexes), or, for an agent
    /// whose m_indexAppendMode isn't 0, behind them (AppendOidIndexes).
    void ApplyOidIndexes(AsnObjectIdentifier * oid, std::uint32_t index1, std::uint32_t index2, std::uint32_t index3,
                         std::uint32_t index4, std::uint32_t index5);

    // The helpers of Oid.h and VarBind.h, for agents that call them as members.
    static int StrToOid(char const * text, AsnObjectIdentifier * oid) noexcept { return ::StrToOid(text, oid); }
    static char const * OidToStr(std::string & out, AsnObjectIdentifier const * oid) { return ::OidToStr(out, oid); }
    static int OidAppendNumber(AsnObjectIdentifier * oid, std::uint32_t number) noexcept
    {
        return ::OidAppendNumber(oid, number);
    }
    static int OidAppendString(AsnObjectIdentifier * oid, char const * text) noexcept
    {
        return ::OidAppendString(oid, text);
    }
    static int SetVarBindNumber(RFC1157VarBind * binding, std::uint32_t value, std::uint32_t type) noexcept
    {
        return ::SetVarBindNumber(binding, value, type);
    }
    static int SetVarBindFromText(RFC1157VarBind * binding, char const * text, std::uint32_t type) noexcept
    {
        return ::SetVarBindFromText(binding, text, type);
    }
    static int SetVarBindOctets(RFC1157VarBind * binding, void const * bytes, std::uint32_t count,
                                std::uint32_t type) noexcept
    {
        return ::SetVarBindOctets(binding, bytes, count, type);
    }
    static void ClearVarBindValue(RFC1157VarBind * binding) noexcept { ::ClearVarBindValue(binding); }
    static char const * VarBindValueToText(std::string & out, AsnAny const * value)
    {
        return ::VarBindValueToText(out, value);
    }

    /// Number of objects.
    std::uint64_t MibSize();

protected:
    /// The way from the tree to what its agent has.
    struct SAgentAccess {
        void * (*agent)(CMibTree & tree) noexcept;
        bool (*appendsIndexes)(CMibTree & tree) noexcept;
    };

    explicit CMibTree(SAgentAccess const & access) noexcept;
    ~CMibTree();

private:
    class CLock;
    class CColumn;
    struct SCallbacks;
    struct SContext;
    struct SIndexes;
    enum class EKind : std::uint8_t;

    void InsertConstant(EKind kind, char const * name, SOidView key, AsnAny const & value, std::uint32_t access);
    void InsertText(EKind kind, char const * name, SOidView key, char const * value, std::uint32_t type,
                    std::uint32_t access);
    void InsertNumber(EKind kind, char const * name, SOidView key, std::uint32_t value, std::uint32_t type,
                      std::uint32_t access);
    void StoreConstant(char const * name, SOidView key, AsnAny const & value, std::uint32_t access);
    MibEntry & PutEntry(SOidView key, char const * name, SContext const & context);
    MibEntry & StoreVariable(SOidView key, char const * name, SCallbacks const & callbacks, std::uint32_t access,
                             SContext const & context);
    std::uint32_t CallBack(MibCallback const & callback, MibEntry & entry, RFC1157VarBind & binding, MibMode mode);
    std::uint32_t EvaluateGet(MibEntry const & stored, RFC1157VarBind & binding);
    std::uint32_t CheckSet(MibEntry & entry, RFC1157VarBind & binding);
    std::uint32_t CommitSet(MibEntry & entry, RFC1157VarBind & binding);

    Platform::CCriticalSection m_treeLock; // around everything below
    CMibStore m_objects;

protected:
    /// Extended callback that checks the SET of a writable object without a check of its own. Empty after
    /// construction; an agent that needs one assigns it before requests come.
    MibCallback m_globalCheckSetFunc;

private:
    SAgentAccess const & m_access;
};

#endif
