#include "Bindings.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "Platform/SnmpUtil.h"

namespace Service {

namespace {

/// Longest value of octets that fits into any message.
constexpr std::uint32_t kMaxOctets = 65535;

bool IsUsableString(AsnOctetString const & octets) noexcept
{
    return octets.length <= kMaxOctets && (octets.length == 0 || octets.stream != nullptr);
}

bool IsUsableOid(AsnObjectIdentifier const & oid) noexcept
{
    return oid.idLength <= kMaxArcs && (oid.idLength == 0 || oid.ids != nullptr);
}

} // namespace

CValue & CValue::operator=(CValue && other) noexcept
{
    std::swap(m_any, other.m_any);
    return *this;
}

void CValue::Free() noexcept
{
    SnmpUtilAsnAnyFree(&m_any);
}

bool CValue::IsUsable() const noexcept
{
    switch (m_any.asnType) {
    case ASN_INTEGER:
    case ASN_COUNTER32:
    case ASN_GAUGE32:
    case ASN_TIMETICKS:
    case ASN_UINTEGER32:
    case ASN_COUNTER64:
        return true;
    case ASN_OCTETSTRING:
    case ASN_BITS:
    case ASN_OPAQUE:
        return IsUsableString(m_any.asnValue.string);
    case ASN_IPADDRESS:
        return m_any.asnValue.address.length == 4 && IsUsableString(m_any.asnValue.address);
    case ASN_OBJECTIDENTIFIER:
        return IsUsableOid(m_any.asnValue.object);
    default:
        return false;
    }
}

CBindings::CBindings(CBindings && other) noexcept
    : m_list(other.m_list), m_array(other.m_array), m_count(other.m_count), m_capacity(other.m_capacity)
{
    other.m_list = {};
    other.m_array = nullptr;
    other.m_count = 0;
    other.m_capacity = 0;
}

bool CBindings::Prepare(std::uint32_t count) noexcept
{
    if (m_array != nullptr && m_list.list == m_array && m_capacity >= count) {
        FreeBindings();
        m_count = 0;
        return true;
    }
    Clear();
    m_array = static_cast<RFC1157VarBind *>(
        SnmpUtilMemAlloc(static_cast<std::uint32_t>(std::max(count, 1u) * sizeof(RFC1157VarBind))));
    if (m_array == nullptr) return false;
    m_list.list = m_array;
    m_capacity = count;
    return true;
}

bool CBindings::Add(ArcView name) noexcept
{
    if (m_count >= m_capacity) return false;
    auto * ids = static_cast<Arc *>(SnmpUtilMemAlloc(static_cast<std::uint32_t>(name.size_bytes())));
    if (ids == nullptr) return false;
    std::copy(name.begin(), name.end(), ids);
    RFC1157VarBind & binding = m_list.list[m_count];
    std::memset(&binding, 0, sizeof binding);
    binding.name.idLength = static_cast<std::uint32_t>(name.size());
    binding.name.ids = ids;
    binding.value.asnType = ASN_NULL;
    m_list.len = ++m_count;
    return true;
}

void CBindings::FreeBindings() noexcept
{
    // A length that changed in the extension's hands says nothing about the array, which only we allocate.
    const std::uint32_t count = m_array != nullptr ? m_count : m_list.len;
    for (std::uint32_t i = 0; m_list.list != nullptr && i < count; ++i)
        SnmpUtilVarBindFree(&m_list.list[i]);
    m_list.len = 0;
}

void CBindings::Clear() noexcept
{
    FreeBindings();
    SnmpUtilMemFree(m_list.list);
    m_list = {};
    m_array = nullptr;
    m_count = 0;
    m_capacity = 0;
}

} // namespace Service
