#ifndef TESTS_EXTENSION_OID_TEXT_H
#define TESTS_EXTENSION_OID_TEXT_H

#include <charconv>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "Platform/SnmpUtil.h"

/// The arcs with dots between them; empty for an empty OID.
inline std::string OidText(AsnObjectIdentifier const & oid)
{
    std::string text;
    for (std::uint32_t i = 0; i < oid.idLength; ++i)
        text += (i == 0 ? "" : ".") + std::to_string(oid.ids[i]);
    return text;
}

/// The other way, in memory of SnmpUtil that is the caller's. Raises std::invalid_argument for what is no OID.
inline AsnObjectIdentifier ParseOid(std::string const & text)
{
    std::vector<std::uint32_t> arcs;
    char const * at = text.data();
    char const * const end = at + text.size();
    while (at != end) {
        const std::from_chars_result read = std::from_chars(at, end, arcs.emplace_back());
        const bool atDot = read.ptr != end && *read.ptr == '.' && read.ptr + 1 != end;
        if (read.ec != std::errc() || (read.ptr != end && !atDot)) throw std::invalid_argument("no OID: " + text);
        at = read.ptr + (atDot ? 1 : 0);
    }
    const AsnObjectIdentifier borrowed{static_cast<std::uint32_t>(arcs.size()), arcs.data()};
    AsnObjectIdentifier oid{};
    if (SnmpUtilOidCpy(&oid, &borrowed) == 0) throw std::bad_alloc();
    return oid;
}

#endif
