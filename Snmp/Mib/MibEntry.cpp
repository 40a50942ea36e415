#include "Snmp/Mib/MibEntry.h"

#include <cstring>
#include <new>

#include "Platform/SnmpUtil.h"

std::uint32_t MibCallback::Call(void * agent, MibEntry * entry, RFC1157VarBind * binding, MibMode mode) const noexcept
try {
    const auto function = reinterpret_cast<TCode>(static_cast<std::uintptr_t>(code));
    void * const object = reinterpret_cast<void *>(reinterpret_cast<std::uintptr_t>(agent) +
                                                   static_cast<std::uintptr_t>(std::intptr_t{adjustment}));
    return function(object, entry, binding, static_cast<std::uint8_t>(mode));
} catch (...) {
    return SNMP_ERRORSTATUS_GENERR;
}

MibEntry::MibEntry(MibEntry const & other)
    : GetFunc(other.GetFunc),
      SetFunc(other.SetFunc),
      GetSetFunc(other.GetSetFunc),
      CheckGetFunc(other.CheckGetFunc),
      GetSetChecksetFuncEx(other.GetSetChecksetFuncEx),
      name(other.name),
      access(other.access),
      type(other.type)
{
    varbind.value.asnType = ASN_NULL;
    SetBinding(other.varbind);
    if (other.contextSize != 0) {
        OwnContext(other.context, other.contextSize);
    } else {
        context = other.context;
    }
}

MibEntry & MibEntry::operator=(MibEntry const & other)
{
    if (this == &other) return *this;
    name = other.name;
    GetFunc = other.GetFunc;
    SetFunc = other.SetFunc;
    GetSetFunc = other.GetSetFunc;
    CheckGetFunc = other.CheckGetFunc;
    GetSetChecksetFuncEx = other.GetSetChecksetFuncEx;
    SetBinding(other.varbind);
    access = other.access;
    type = other.type;
    if (other.contextSize != 0) {
        OwnContext(other.context, other.contextSize);
    } else {
        BorrowContext(other.context);
    }
    return *this;
}

MibEntry::~MibEntry()
{
    BorrowContext(nullptr);
    SnmpUtilVarBindFree(&varbind);
}

bool MibEntry::SetBinding(RFC1157VarBind const & source) noexcept
{
    // The copy comes first: the source may be the binding itself, or made of parts of it.
    RFC1157VarBind copy{};
    copy.value.asnType = ASN_NULL;
    if (SnmpUtilVarBindCpy(&copy, &source) == 0) return false;
    SnmpUtilVarBindFree(&varbind);
    varbind = copy;
    return true;
}

void MibEntry::SetValue(AsnAny const & source) noexcept
{
    AsnAny copy{};
    copy.asnType = ASN_NULL;
    SnmpUtilAsnAnyCpy(&copy, &source);
    SnmpUtilAsnAnyFree(&varbind.value);
    varbind.value = copy;
}

void MibEntry::BorrowContext(void * pointer) noexcept
{
    if (contextSize != 0) ::operator delete(context);
    context = pointer;
    contextSize = 0;
}

bool MibEntry::OwnContext(void const * source, std::size_t bytes) noexcept
{
    void * const copy = bytes != 0 ? ::operator new(bytes, std::nothrow) : nullptr;
    if (copy != nullptr) std::memcpy(copy, source, bytes);
    BorrowContext(copy);
    contextSize = copy != nullptr ? bytes : 0;
    return copy != nullptr || bytes == 0;
}
