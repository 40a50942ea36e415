#include "FakeFunctions.h"

#include <algorithm>

#include "Platform/SnmpUtil.h"

namespace {

SFakeFunctions * g_fake = nullptr;

std::int32_t Query(std::uint8_t type, RFC1157VarBindList * list, std::uint32_t * status, std::uint32_t * index)
{
    g_fake->asked.emplace_back();
    for (std::uint32_t i = 0; i < list->len; ++i)
        g_fake->asked.back().push_back(NameOf(list->list[i]));
    *status = 0;
    *index = 0;
    return g_fake->query(type, *list, *status, *index);
}

} // namespace

SFakeFunctions::SFakeFunctions(Query answer) : query(std::move(answer))
{
    g_fake = this;
    functions.query = ::Query;
}

SFakeFunctions::~SFakeFunctions()
{
    g_fake = nullptr;
}

void FakeName(RFC1157VarBind & binding, Service::CArcs const & name)
{
    SnmpUtilMemFree(binding.name.ids);
    auto * ids = static_cast<std::uint32_t *>(SnmpUtilMemAlloc(static_cast<std::uint32_t>(name.size() * 4)));
    std::copy(name.begin(), name.end(), ids);
    binding.name.ids = ids;
    binding.name.idLength = static_cast<std::uint32_t>(name.size());
}

void FakeInteger(RFC1157VarBind & binding, std::int32_t value)
{
    SnmpUtilAsnAnyFree(&binding.value);
    binding.value.asnType = ASN_INTEGER;
    binding.value.asnValue.number = value;
}

Service::CArcs NameOf(RFC1157VarBind const & binding)
{
    std::uint32_t const * ids = binding.name.ids;
    return Service::CArcs(ids, ids + binding.name.idLength);
}
