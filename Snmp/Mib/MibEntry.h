#ifndef SNMP_MIB_MIB_ENTRY_H
#define SNMP_MIB_MIB_ENTRY_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include "Platform/SnmpExtension.h"

/// Who may write an object. Any value but ReadWrite counts as read-only.
enum class MibAccess : std::uint32_t {
    ReadOnly = 0,
    ReadWrite = 2,
};

/// What a callback is called for.
enum class MibMode : std::uint8_t {
    Get = 0,      ///< GET and GETNEXT
    Set = 1,      ///< the commit of a SET
    CheckSet = 2, ///< the check of a SET
    CheckGet = 3, ///< ahead of a GET
};

struct MibEntry;

/// A member function of an agent that takes part in answering a request, in the form of a pointer to a member
/// function: three words. Made by CSnmpMibTree<TAgent>::Callback or MakeMibCallback, called by the tree alone.
///
/// The code pointer is an ordinary function made for that one member function; it gets the agent's address
/// after `adjustment` was added. So both forms of members are called in the same way.
struct MibCallback {
    /// Signature behind `code`. The entry is what the extended form gets; the plain form does without it.
    using TCode = std::uint32_t (*)(void * object, MibEntry * entry, RFC1157VarBind * binding, std::uint8_t mode);

    std::uint64_t code = 0;      ///< address of a TCode; 0: empty
    std::int32_t adjustment = 0; ///< bytes from the agent to the object whose member is called
    std::int32_t extra = -1;     ///< -1 when empty, else 0

    bool IsSet() const noexcept { return code != 0; }

    /// Calls the member on `agent` and returns its SNMP error status; 5 if it let an exception out.
    /// Only when IsSet(). The caller keeps agent, entry and binding alive during the call.
    std::uint32_t Call(void * agent, MibEntry * entry, RFC1157VarBind * binding, MibMode mode) const noexcept;
};

namespace MibCallbackDetail {

template <class TMember>
struct TOwnerOf;
template <class TFunction, class TClass>
struct TOwnerOf<TFunction TClass::*> {
    using Type = TClass;
};

template <auto Member, class TOwner>
std::uint32_t Run(void * object, [[maybe_unused]] MibEntry * entry, RFC1157VarBind * binding, std::uint8_t mode)
{
    TOwner & owner = *static_cast<TOwner *>(object);
    if constexpr (std::is_invocable_r_v<std::uint32_t, decltype(Member), TOwner &, RFC1157VarBind *, std::uint8_t>) {
        return (owner.*Member)(binding, mode);
    } else {
        return (owner.*Member)(entry, binding, mode);
    }
}

/// Bytes from a TAgent to the TOwner that contains it. Only the distance counts, so any aligned address will do.
template <class TAgent, class TOwner>
std::int32_t Adjustment() noexcept
{
    constexpr std::uintptr_t somewhere = std::uintptr_t{1} << 20;
    const auto agent = reinterpret_cast<std::uintptr_t>(static_cast<TAgent *>(reinterpret_cast<TOwner *>(somewhere)));
    return static_cast<std::int32_t>(static_cast<std::intptr_t>(somewhere) - static_cast<std::intptr_t>(agent));
}

} // namespace MibCallbackDetail

/// Makes a callback of a member function of TAgent or of a class derived from it, virtual ones included:
///     std::uint32_t fn(RFC1157VarBind * binding, std::uint8_t mode)                       the plain form
///     std::uint32_t fn(MibEntry * entry, RFC1157VarBind * binding, std::uint8_t mode)     the extended form
/// Any other signature doesn't compile. TOwner is given where the member comes from another base of an agent:
/// MakeMibCallback<CSnmpAgent, &CMixin::fn, CMyAgent>(). It must be what the agent really is.
template <class TAgent, auto Member, class TOwner = typename MibCallbackDetail::TOwnerOf<decltype(Member)>::Type>
MibCallback MakeMibCallback() noexcept
{
    static_assert(std::is_base_of_v<TAgent, TOwner>, "the member's class must be the agent or derived from it");
    const MibCallback::TCode code = &MibCallbackDetail::Run<Member, TOwner>;
    return {reinterpret_cast<std::uintptr_t>(code), MibCallbackDetail::Adjustment<TAgent, TOwner>(), 0};
}

/// One object of the MIB: a constant carries its value, a variable has callbacks that make it.
///
/// A copy is deep: binding, name, and the context when it is owned. One thread at a time; inside the tree, the
/// tree lock. Failed allocations leave the part in question empty.
struct MibEntry {
    MibCallback GetFunc;              ///< plain: produces the value on GET and GETNEXT
    MibCallback SetFunc;              ///< plain: commits a SET
    MibCallback GetSetFunc;           ///< plain: checks a SET
    MibCallback CheckGetFunc;         ///< plain: checks before a GET
    MibCallback GetSetChecksetFuncEx; ///< extended: for all phases
    RFC1157VarBind varbind{};         ///< the object's OID and its stored value; owned
    void * context = nullptr;         ///< free for the callbacks; owned if contextSize isn't 0
    std::string name;                 ///< such as kxrStatusOverall
    std::uint32_t access = 0;         ///< MibAccess in the low byte
    std::uint32_t type = ASN_NULL;    ///< ASN.1 type of an entry made by a ...Ex insert, else Null
    std::uint64_t contextSize = 0;    ///< 0: context is borrowed; else its bytes, owned

    MibEntry() noexcept { varbind.value.asnType = ASN_NULL; }
    MibEntry(MibEntry const & other);
    MibEntry & operator=(MibEntry const & other);
    ~MibEntry();

    bool IsReadWrite() const noexcept { return (access & 0xFFu) == static_cast<std::uint32_t>(MibAccess::ReadWrite); }

    /// Replaces the binding by a deep copy of `source`. False: out of memory, and the binding is as it was.
    bool SetBinding(RFC1157VarBind const & source) noexcept;
    /// Replaces the binding's value by a deep copy of `source`; by Null where that finds no memory.
    void SetValue(AsnAny const & source) noexcept;
    /// Replaces the context by a borrowed pointer; an owned one is freed.
    void BorrowContext(void * pointer) noexcept;
    /// Replaces the context by an owned copy of `bytes` bytes; an owned one is freed. False: out of memory, and
    /// the context is null.
    bool OwnContext(void const * source, std::size_t bytes) noexcept;
};

#endif
