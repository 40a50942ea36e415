#ifndef BENCH_PLAIN_MAP_H
#define BENCH_PLAIN_MAP_H

#include <cstdint>
#include <map>
#include <memory>

#include "Platform/SnmpExtension.h"
#include "Platform/SnmpUtil.h"

/// The baseline of the MIB tree: a std::map from OIDs to entries, as one would write it at first. Node, arcs of
/// the key and entry are allocated one by one, keys are compared arc by arc, and an entry found is copied out as
/// a whole and from the copy to the caller. Without a lock.
class CPlainMap {
public:
    CPlainMap() = default;
    CPlainMap(CPlainMap const &) = delete;
    CPlainMap & operator=(CPlainMap const &) = delete;
    ~CPlainMap() { Clear(); }

    /// Parses the OID, writes the three indexes over its last arcs and stores an integer there.
    void InsertCell(char const * oid, char const * name, std::uint32_t value, std::uint32_t index1,
                    std::uint32_t index2, std::uint32_t index3);
    /// Replaces OID and value of the binding by those of the first key above. 1 if there is one.
    int GetNext(RFC1157VarBind * binding);
    /// Erases all keys below, one after the other.
    void Erase(AsnObjectIdentifier const & root);
    void Clear();
    std::size_t Size() const { return m_objects.size(); }

private:
    struct SKey {
        AsnObjectIdentifier oid; // owned by the map
    };
    struct SLess {
        bool operator()(SKey const & left, SKey const & right) const
        {
            std::uint32_t const * const leftArcs = left.oid.ids;
            std::uint32_t const * const rightArcs = right.oid.ids;
            const std::uint32_t leftLength = left.oid.idLength;
            const std::uint32_t rightLength = right.oid.idLength;
            for (std::uint32_t i = 0; i < leftLength && i < rightLength; ++i) {
                if (leftArcs[i] != rightArcs[i]) return leftArcs[i] < rightArcs[i];
            }
            return leftLength < rightLength;
        }
    };
    /// As much as an entry of the tree holds.
    struct SEntry {
        std::uint64_t callbacks[10] = {};
        RFC1157VarBind varbind{}; // the name is the key's
        void * context = nullptr;
        char const * name = nullptr;
        std::uint32_t access = 0;
        std::uint32_t type = ASN_NULL;
        std::uint64_t contextSize = 0;
    };

    std::map<SKey, std::unique_ptr<SEntry>, SLess> m_objects;
};

#endif
