#ifndef SNMP_MIB_OID_H
#define SNMP_MIB_OID_H

#include <cstdint>
#include <string>

#include "Platform/SnmpExtension.h"

/// An index that isn't given.
inline constexpr std::uint32_t kNoOidIndex = 0xFFFFFFFFu;

// Object identifiers as text and in parts. The arcs of an OID come from SnmpUtilMemAlloc and are freed by
// SnmpUtilOidFree. All functions: any thread, no lock; the caller alone has the OID at that time.

/// Reads dotted numbers, and text in double quotes as a string index: its length and one arc for each byte.
/// Blanks at the start and one leading dot are passed over; arcs that an empty place between dots leaves open
/// are 0. A number is taken as atoi takes it, by its low 32 bits. Bytes of quoted text are signed.
/// oid: replaced (its old arcs are freed); the caller frees it.
/// Returns 1. 0 for a text that is no OID of at least 2 arcs: the OID is empty then. 0 for null or empty text or
/// a null target: nothing is touched.
int StrToOid(char const * text, AsnObjectIdentifier * oid) noexcept;

/// Replaces `out` by the arcs in signed decimal, joined by dots; so arcs from 2147483648 on print negative.
/// A null OID leaves it unchanged. Returns the text of `out`, valid as long as that.
char const * OidToStr(std::string & out, AsnObjectIdentifier const * oid);

/// Appends one arc. Returns 1; 0 if oid is null or memory is out, which leaves it unchanged.
int OidAppendNumber(AsnObjectIdentifier * oid, std::uint32_t number) noexcept;

/// Appends the length of `text` in bytes and each byte as an unsigned arc. Returns 1; 0 if text or oid is null
/// or memory is out, which leaves it unchanged.
int OidAppendString(AsnObjectIdentifier * oid, char const * text) noexcept;

/// Writes the given indexes over the last arcs: index5 rightmost, each one further left of it, an absent index
/// (kNoOidIndex) taking no place. What doesn't fit is dropped.
void OverwriteOidIndexes(AsnObjectIdentifier * oid, std::uint32_t index1, std::uint32_t index2, std::uint32_t index3,
                         std::uint32_t index4, std::uint32_t index5) noexcept;

/// Appends the given indexes as arcs, index1 first, up to the first absent one.
void AppendOidIndexes(AsnObjectIdentifier * oid, std::uint32_t index1, std::uint32_t index2, std::uint32_t index3,
                      std::uint32_t index4, std::uint32_t index5) noexcept;

/// Owns the arcs of one OID and frees them. One thread.
class COid {
public:
    COid() noexcept = default;
    explicit COid(char const * text) noexcept { StrToOid(text, &m_oid); }
    explicit COid(AsnObjectIdentifier const & source) noexcept;
    COid(COid const &) = delete;
    COid & operator=(COid const &) = delete;
    ~COid();

    AsnObjectIdentifier * Get() noexcept { return &m_oid; }
    AsnObjectIdentifier const * Get() const noexcept { return &m_oid; }

private:
    AsnObjectIdentifier m_oid{};
};

#endif
