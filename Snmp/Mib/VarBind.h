#ifndef SNMP_MIB_VAR_BIND_H
#define SNMP_MIB_VAR_BIND_H

#include <cstdint>
#include <string>

#include "Platform/SnmpExtension.h"

// Values of variable bindings. Memory inside a value comes from SnmpUtilMemAlloc and is owned by the binding.
// All functions: any thread, no lock; the caller alone has the binding at that time. Results are 1 for success
// and 0 for failure.

/// Replaces the value by a number of type Integer, Counter32, Gauge32, Timeticks or UInteger32, or by the four
/// bytes of `value` as an IpAddress. Any other type leaves the value Null and returns 0, and so does an address
/// for which there is no memory.
int SetVarBindNumber(RFC1157VarBind * binding, std::uint32_t value, std::uint32_t type) noexcept;

/// Replaces the value by what the text says: numbers as atoi reads them, an OctetString by its bytes without a
/// terminator, an ObjectIdentifier as StrToOid reads it (empty if it can't), an IpAddress from four arcs (fewer
/// leave the value as it is). Null text counts as empty. Other types do nothing and return 0.
int SetVarBindFromText(RFC1157VarBind * binding, char const * text, std::uint32_t type) noexcept;

/// Replaces the value by a copy of the bytes, under any type tag. Null or no bytes: an empty value of that type.
/// Returns 0 with the value left Null if memory is out.
int SetVarBindOctets(RFC1157VarBind * binding, void const * bytes, std::uint32_t count, std::uint32_t type) noexcept;

/// Frees what the value owns and leaves Null.
void ClearVarBindValue(RFC1157VarBind * binding) noexcept;

/// Replaces `out` by the name of the value's type and the value, as traces show it: "Integer: 5 (0x5)".
/// Bits, Null, ObjectIdentifier, Counter64 and UInteger32 show the name alone. Returns the text of `out`.
char const * VarBindValueToText(std::string & out, AsnAny const * value);

/// Replaces `out` by "Oid=<OID>, Value=<value>". Returns the text of `out`.
char const * VarBindToText(std::string & out, RFC1157VarBind const * binding);

/// Owns one binding and frees it. A fresh one has an empty OID and the value Null. One thread.
class CVarBind {
public:
    CVarBind() noexcept { m_binding.value.asnType = ASN_NULL; }
    CVarBind(CVarBind const &) = delete;
    CVarBind & operator=(CVarBind const &) = delete;
    ~CVarBind();

    RFC1157VarBind * Get() noexcept { return &m_binding; }
    RFC1157VarBind const * Get() const noexcept { return &m_binding; }
    RFC1157VarBind * operator->() noexcept { return &m_binding; }
    RFC1157VarBind const * operator->() const noexcept { return &m_binding; }

private:
    RFC1157VarBind m_binding{};
};

#endif
