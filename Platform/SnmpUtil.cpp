#include "Platform/SnmpUtil.h"

#include <algorithm>
#include <cstring>
#include <limits>

// The structures are packed on 4 bytes, so their pointers and 64-bit members may lie unaligned: they are read and
// written by value only, and whole structures are copied by assignment.

namespace {

constexpr std::uint32_t MaxArcs = std::numeric_limits<std::uint32_t>::max() / sizeof(std::uint32_t);
constexpr std::uint32_t MaxBindings = std::numeric_limits<std::uint32_t>::max() / sizeof(RFC1157VarBind);

constexpr AsnObjectIdentifier EmptyOid{0, nullptr};

/// A copy of `bytes` bytes, at least 1, in memory of the utility functions; null without memory.
void * CopyBlock(void const * source, std::uint32_t bytes) noexcept
{
    void * const copy = SnmpUtilMemAlloc(bytes);
    if (copy != nullptr) std::memcpy(copy, source, bytes);
    return copy;
}

bool HoldsArcs(AsnObjectIdentifier const * oid) noexcept
{
    return oid != nullptr && oid->idLength != 0 && oid->ids != nullptr;
}

std::uint32_t ArcCount(AsnObjectIdentifier const * oid) noexcept
{
    return HoldsArcs(oid) ? oid->idLength : 0;
}

int CompareLengths(std::uint32_t left, std::uint32_t right) noexcept
{
    return left < right ? -1 : left > right ? 1 : 0;
}

bool IsStream(std::uint8_t type) noexcept
{
    return type == ASN_OCTETSTRING || type == ASN_BITS || type == ASN_IPADDRESS || type == ASN_OPAQUE;
}

void SetNull(AsnAny * value) noexcept
{
    *value = AsnAny{};
    value->asnType = ASN_NULL;
}

bool CopyStream(AsnOctetString & target, AsnOctetString const & source) noexcept
{
    AsnOctetString copy{nullptr, 0, 0};
    std::uint8_t const * const bytes = source.stream;
    if (bytes != nullptr && source.length != 0) {
        copy.stream = static_cast<std::uint8_t *>(CopyBlock(bytes, source.length));
        if (copy.stream == nullptr) return false;
        copy.length = source.length;
        copy.dynamic = 1;
    }
    target = copy;
    return true;
}

} // namespace

extern "C" int SnmpUtilOidCpy(AsnObjectIdentifier * target, AsnObjectIdentifier const * source) noexcept
{
    if (target == nullptr) return 0;
    const std::uint32_t arcs = ArcCount(source);
    AsnObjectIdentifier copy = EmptyOid;
    bool copied = source != nullptr && arcs <= MaxArcs;
    if (copied && arcs != 0) {
        copy.ids = static_cast<std::uint32_t *>(
            CopyBlock(source->ids, static_cast<std::uint32_t>(arcs * sizeof(std::uint32_t))));
        copied = copy.ids != nullptr;
        copy.idLength = copied ? arcs : 0;
    }
    *target = copy;
    return copied ? 1 : 0;
}

extern "C" int SnmpUtilOidAppend(AsnObjectIdentifier * target, AsnObjectIdentifier const * tail) noexcept
{
    if (target == nullptr || tail == nullptr) return 0;
    const std::uint32_t oldArcs = ArcCount(target);
    const std::uint32_t tailArcs = ArcCount(tail);
    if (tailArcs == 0) return 1;
    if (oldArcs > MaxArcs || tailArcs > MaxArcs - oldArcs) return 0;
    const bool ontoItself = target->ids == tail->ids;
    const auto bytes = static_cast<std::uint32_t>((oldArcs + tailArcs) * sizeof(std::uint32_t));
    std::uint32_t * const oldIds = target->ids;
    void * const block = oldIds != nullptr ? SnmpUtilMemReAlloc(oldIds, bytes) : SnmpUtilMemAlloc(bytes);
    auto * const ids = static_cast<std::uint32_t *>(block);
    if (ids == nullptr) return 0;
    std::uint32_t const * const tailIds = ontoItself ? ids : tail->ids;
    std::memmove(ids + oldArcs, tailIds, tailArcs * sizeof(std::uint32_t));
    target->ids = ids;
    target->idLength = oldArcs + tailArcs;
    return 1;
}

extern "C" int SnmpUtilOidNCmp(AsnObjectIdentifier const * left, AsnObjectIdentifier const * right,
                               std::uint32_t arcs) noexcept
{
    const std::uint32_t leftArcs = std::min(ArcCount(left), arcs);
    const std::uint32_t rightArcs = std::min(ArcCount(right), arcs);
    const std::uint32_t common = std::min(leftArcs, rightArcs);
    if (common != 0) {
        std::uint32_t const * const leftIds = left->ids;
        std::uint32_t const * const rightIds = right->ids;
        for (std::uint32_t i = 0; i < common; ++i)
            if (leftIds[i] != rightIds[i]) return leftIds[i] < rightIds[i] ? -1 : 1;
    }
    return CompareLengths(leftArcs, rightArcs);
}

extern "C" int SnmpUtilOidCmp(AsnObjectIdentifier const * left, AsnObjectIdentifier const * right) noexcept
{
    return SnmpUtilOidNCmp(left, right, std::numeric_limits<std::uint32_t>::max());
}

extern "C" void SnmpUtilOidFree(AsnObjectIdentifier * oid) noexcept
{
    if (oid == nullptr) return;
    SnmpUtilMemFree(oid->ids);
    *oid = EmptyOid;
}

extern "C" int SnmpUtilAsnAnyCpy(AsnAny * target, AsnAny const * source) noexcept
{
    if (target == nullptr) return 0;
    AsnAny copy{};
    bool copied = source != nullptr;
    if (copied) {
        copy = *source;
        if (copy.asnType == ASN_OBJECTIDENTIFIER) {
            const AsnObjectIdentifier oid = copy.asnValue.object;
            copied = SnmpUtilOidCpy(&copy.asnValue.object, &oid) != 0;
        } else if (IsStream(copy.asnType)) {
            const AsnOctetString stream = copy.asnValue.string;
            copied = CopyStream(copy.asnValue.string, stream);
        }
    }
    if (!copied) SetNull(&copy);
    *target = copy;
    return copied ? 1 : 0;
}

extern "C" void SnmpUtilAsnAnyFree(AsnAny * value) noexcept
{
    if (value == nullptr) return;
    if (value->asnType == ASN_OBJECTIDENTIFIER)
        SnmpUtilOidFree(&value->asnValue.object);
    else if (IsStream(value->asnType) && value->asnValue.string.dynamic != 0)
        SnmpUtilMemFree(value->asnValue.string.stream);
    SetNull(value);
}

extern "C" int SnmpUtilVarBindCpy(RFC1157VarBind * target, RFC1157VarBind const * source) noexcept
{
    if (target == nullptr) return 0;
    RFC1157VarBind copy{};
    SetNull(&copy.value);
    bool copied = source != nullptr && SnmpUtilOidCpy(&copy.name, &source->name) != 0;
    if (copied && SnmpUtilAsnAnyCpy(&copy.value, &source->value) == 0) {
        SnmpUtilOidFree(&copy.name);
        copied = false;
    }
    *target = copy;
    return copied ? 1 : 0;
}

extern "C" void SnmpUtilVarBindFree(RFC1157VarBind * binding) noexcept
{
    if (binding == nullptr) return;
    SnmpUtilOidFree(&binding->name);
    SnmpUtilAsnAnyFree(&binding->value);
}

extern "C" int SnmpUtilVarBindListCpy(RFC1157VarBindList * target, RFC1157VarBindList const * source) noexcept
{
    if (target == nullptr) return 0;
    RFC1157VarBindList copy{nullptr, 0};
    RFC1157VarBind const * const bindings = source != nullptr ? source->list : nullptr;
    const std::uint32_t count = bindings != nullptr ? source->len : 0;
    bool copied = source != nullptr && count <= MaxBindings;
    if (copied && count != 0) {
        copy.list =
            static_cast<RFC1157VarBind *>(SnmpUtilMemAlloc(static_cast<std::uint32_t>(count * sizeof(RFC1157VarBind))));
        copied = copy.list != nullptr;
        while (copied && copy.len != count) {
            copied = SnmpUtilVarBindCpy(copy.list + copy.len, bindings + copy.len) != 0;
            if (copied) ++copy.len;
        }
        if (!copied) SnmpUtilVarBindListFree(&copy);
    }
    *target = copy;
    return copied ? 1 : 0;
}

extern "C" void SnmpUtilVarBindListFree(RFC1157VarBindList * list) noexcept
{
    if (list == nullptr) return;
    RFC1157VarBind * const bindings = list->list;
    for (std::uint32_t i = 0; bindings != nullptr && i < list->len; ++i)
        SnmpUtilVarBindFree(bindings + i);
    SnmpUtilMemFree(bindings);
    *list = RFC1157VarBindList{nullptr, 0};
}
