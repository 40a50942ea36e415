#ifndef SNMP_MIB_MIB_STORE_H
#define SNMP_MIB_MIB_STORE_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Snmp/Mib/MibEntry.h"
#include "Snmp/Mib/MibNames.h"
#include "Snmp/Mib/MibSlab.h"
#include "Snmp/Mib/OidView.h"

/// A MibEntry of the store. What a running callback may still look at after it has left the tree is kept in a
/// list until the callback is back.
struct SMibObject {
    MibEntry entry;
    SMibObject * nextRetired = nullptr;
};

/// One key of the store with what it leads to: a plain constant, which nobody ever sees by address, or an
/// object. The arcs follow the header in memory, and behind them the bytes of a constant's octets.
struct SMibCell {
    enum class EKind : std::uint8_t { Separator, Constant, Object };

    union {
        SMibName const * name; // of a constant; null: empty
        SMibObject * object;
    };
    std::uint32_t length; // arcs
    std::uint16_t place;  // in its slab
    std::uint8_t asnType; // of a constant
    EKind kind;
    std::uint32_t content; // of a constant: the number, or the count of octets

    std::uint32_t * Arcs() noexcept { return &content + 1; }
    std::uint32_t const * Arcs() const noexcept { return &content + 1; }
    std::uint8_t const * Octets() const noexcept { return reinterpret_cast<std::uint8_t const *>(Arcs() + length); }
    SOidView Key() const noexcept { return {Arcs(), length}; }
    bool IsObject() const noexcept { return kind == EKind::Object; }
    /// The value of a constant. A stream stays the cell's.
    AsnAny Value() const noexcept;
    /// The name of what the key leads to.
    std::string_view Name() const noexcept;
};

/// The ordered container of the MIB tree: OIDs lead to entries, in the order of SnmpUtilOidCmp, each once.
///
/// A B+ tree. A node keeps the arcs that all its keys have in common, and of each key the next arcs as one
/// number, so a search rarely looks at the keys themselves. Constants without callbacks that cannot be
/// written are stored in the compact form of SMibCell; all others as MibEntry, whose address is stable.
///
/// One thread at a time. What raises std::bad_alloc leaves the store as it was.
class CMibStore {
public:
    enum class EVerdict { Keep, Erase, Stop };

    CMibStore() noexcept = default;
    ~CMibStore() { Clear(); }
    CMibStore(CMibStore const &) = delete;
    CMibStore & operator=(CMibStore const &) = delete;

    std::uint64_t Size() const noexcept { return m_size; }
    /// The cell of this key; null: none. Cells are valid until the next change of the store.
    SMibCell * Find(SOidView key) const noexcept;
    /// The cell of the first key above; null: none.
    SMibCell * FindAbove(SOidView key) const noexcept;

    /// Whether a value has a compact form.
    static bool IsCompact(AsnAny const & value) noexcept;
    /// Stores a constant in compact form, in the place of one that is there already. name: null keeps the name of
    /// one that is there. False: the key leads to an object, and nothing was done.
    bool PutConstant(SOidView key, char const * name, AsnAny const & value);
    /// The object of this key. It is made from the constant that is there, or fresh if there is none: then
    /// it has nothing but its key yet.
    MibEntry & PutObject(SOidView key);

    /// Asks `decide(SMibCell const &)` about each cell from the first key not below `first` on, in order, until it
    /// says Stop. It must not throw or touch the store. Returns how many were erased.
    template <class TDecide>
    std::uint32_t EraseFrom(SOidView first, TDecide decide) noexcept;
    void Clear() noexcept;

    /// While one of these lives, entries and contexts that leave the store are kept. One for each callback.
    class CHold {
    public:
        explicit CHold(CMibStore & store) noexcept : m_store(store) { ++m_store.m_holds; }
        ~CHold() { m_store.EndHold(); }
        CHold(CHold const &) = delete;
        CHold & operator=(CHold const &) = delete;

    private:
        CMibStore & m_store;
    };
    /// Gives `entry` the context of `source`, which gets the old one unless that is kept as told above.
    void ExchangeContext(MibEntry & entry, MibEntry & source);

private:
    friend struct SMibStoreAudit; // the tests' look at the structure

    static constexpr std::uint32_t kNodeKeys = 64;
    static constexpr std::uint32_t kPrefixArcs = 20;
    static constexpr std::uint64_t kNoHead = UINT64_MAX;

    struct SInner;
    struct SNode {
        SInner * parent = nullptr;
        std::uint16_t count = 0;        // keys
        std::uint16_t prefixLength = 0; // arcs common to all keys, kPrefixArcs at most
        bool isLeaf;
        std::uint16_t lastInsert = 0; // slot of the key that came last, to see rising sequences
        std::uint32_t longest = 0;    // arcs that no key exceeds
        std::uint32_t prefix[kPrefixArcs];
        std::uint64_t heads[kNodeKeys]; // the arcs behind the prefix, see Head; kNoHead if unused
        SMibCell * keys[kNodeKeys];

        explicit SNode(bool leaf) noexcept : isLeaf(leaf) { std::fill(heads, heads + kNodeKeys, kNoHead); }
    };
    struct SLeaf : SNode {
        SLeaf * previous = nullptr;
        SLeaf * next = nullptr;
        SLeaf() noexcept : SNode(true) {}
    };
    /// keys[i] separates children[i], whose keys are below, from children[i + 1], whose keys aren't.
    struct SInner : SNode {
        SNode * children[kNodeKeys + 1];
        SInner() noexcept : SNode(false) {}
    };
    /// A search on its way down.
    struct SSearch {
        SOidView key;
        std::uint32_t shared = 0; // arcs, at least, that the key has in common with all keys of the node
        bool exact = false;       // the key itself was found

        /// Slot of the first key not below.
        std::uint32_t In(SNode const & node) noexcept;
        std::uint32_t AmongTies(SNode const & node, std::uint32_t low) noexcept;
    };
    struct SPlace {
        SLeaf * leaf;
        std::uint32_t slot;
        bool exact;
    };

    static void Reindex(SNode & node) noexcept;
    static void InsertKey(SNode & node, std::uint32_t slot, SMibCell * cell) noexcept;
    static void Shrink(SNode & node, std::uint32_t count) noexcept;
    static void MoveTail(SNode & from, std::uint32_t slot, SNode & to) noexcept;
    static std::uint32_t ChildIndex(SInner const & parent, SNode const & child) noexcept;

    SPlace Locate(SOidView key) const noexcept;
    void InsertCell(SPlace place, SMibCell * cell);
    void SplitLeaf(SLeaf & leaf, std::uint32_t slot, SOidView key);
    void SplitInner(SInner & inner);
    SInner & ParentWithRoom(SNode & node);
    static void InsertChild(SInner & parent, SNode & left, SMibCell * separator, SNode & right) noexcept;
    void RemoveChild(SNode & node) noexcept;
    void SettleLeaf(SLeaf & leaf) noexcept;
    void DeleteNode(SNode & node) noexcept;
    void ClearNode(SNode & node) noexcept;

    SMibCell * NewCell(SOidView key, SMibCell::EKind kind, std::size_t octets = 0);
    SMibCell * NewConstant(SOidView key, AsnAny const & value);
    void FreeBlock(SMibCell * cell) noexcept { m_slab.Free(cell, cell->place); }
    void FreeCell(SMibCell * cell) noexcept;
    void Retire(SMibObject * object) noexcept;
    void EndHold() noexcept;
    void KeepContext(MibEntry & entry);

    SNode * m_root = nullptr;
    std::uint64_t m_size = 0;
    CMibSlab m_slab;
    CMibNames m_names;
    std::uint32_t m_holds = 0;
    SMibObject * m_retired = nullptr;
};

template <class TDecide>
std::uint32_t CMibStore::EraseFrom(SOidView first, TDecide decide) noexcept
{
    std::uint32_t erased = 0;
    SPlace place = Locate(first);
    bool goesOn = true;
    for (SLeaf * leaf = place.leaf; leaf != nullptr && goesOn; place.slot = 0) {
        SLeaf * const next = leaf->next;
        std::uint32_t kept = place.slot;
        std::uint32_t slot = place.slot;
        for (; slot < leaf->count; ++slot) {
            const EVerdict verdict = decide(static_cast<SMibCell const &>(*leaf->keys[slot]));
            goesOn = verdict != EVerdict::Stop;
            if (!goesOn) break;
            if (verdict == EVerdict::Erase) {
                FreeCell(leaf->keys[slot]);
                ++erased;
            } else {
                leaf->heads[kept] = leaf->heads[slot];
                leaf->keys[kept++] = leaf->keys[slot];
            }
        }
        if (kept != slot) {
            m_size -= slot - kept;
            std::copy(leaf->heads + slot, leaf->heads + leaf->count, leaf->heads + kept);
            std::copy(leaf->keys + slot, leaf->keys + leaf->count, leaf->keys + kept);
            Shrink(*leaf, leaf->count - (slot - kept));
            SettleLeaf(*leaf);
        }
        leaf = next;
    }
    return erased;
}

#endif
