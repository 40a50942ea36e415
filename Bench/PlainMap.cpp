#include "PlainMap.h"

#include <algorithm>

namespace {

AsnObjectIdentifier Parse(char const * text)
{
    std::uint32_t count = 1;
    for (char const * at = text; *at != '\0'; ++at)
        count += *at == '.' ? 1u : 0u;
    const auto bytes = static_cast<std::uint32_t>(count * sizeof(std::uint32_t));
    AsnObjectIdentifier oid{count, static_cast<std::uint32_t *>(SnmpUtilMemAlloc(bytes))};
    std::uint32_t * arc = oid.ids;
    *arc = 0;
    for (char const * at = text; *at != '\0'; ++at) {
        if (*at == '.') {
            *++arc = 0;
        } else {
            *arc = *arc * 10 + static_cast<std::uint32_t>(*at - '0');
        }
    }
    return oid;
}

} // namespace

void CPlainMap::InsertCell(char const * oid, char const * name, std::uint32_t value, std::uint32_t index1,
                           std::uint32_t index2, std::uint32_t index3)
{
    SKey key{Parse(oid)};
    const std::uint32_t length = key.oid.idLength;
    key.oid.ids[length - 3] = index1;
    key.oid.ids[length - 2] = index2;
    key.oid.ids[length - 1] = index3;
    auto entry = std::make_unique<SEntry>();
    entry->name = name;
    entry->varbind.value.asnType = ASN_INTEGER;
    entry->varbind.value.asnValue.number = static_cast<std::int32_t>(value);
    const auto [at, isNew] = m_objects.try_emplace(key);
    entry->varbind.name = at->first.oid;
    at->second = std::move(entry);
    if (!isNew) SnmpUtilOidFree(&key.oid);
}

int CPlainMap::GetNext(RFC1157VarBind * binding)
{
    const auto at = m_objects.upper_bound(SKey{binding->name});
    if (at == m_objects.end()) return 0;
    SEntry local = *at->second;
    SnmpUtilVarBindCpy(&local.varbind, &at->second->varbind);
    SnmpUtilVarBindFree(binding);
    SnmpUtilVarBindCpy(binding, &local.varbind);
    SnmpUtilVarBindFree(&local.varbind);
    return 1;
}

void CPlainMap::Erase(AsnObjectIdentifier const & root)
{
    auto at = m_objects.lower_bound(SKey{root});
    while (at != m_objects.end() && SnmpUtilOidNCmp(&at->first.oid, &root, root.idLength) == 0) {
        AsnObjectIdentifier oid = at->first.oid;
        at = m_objects.erase(at);
        SnmpUtilOidFree(&oid);
    }
}

void CPlainMap::Clear()
{
    for (auto const & [key, entry] : m_objects) {
        AsnObjectIdentifier oid = key.oid;
        SnmpUtilOidFree(&oid);
    }
    m_objects.clear();
}
