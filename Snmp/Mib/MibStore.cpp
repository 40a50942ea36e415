#include "Snmp/Mib/MibStore.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr std::uint32_t kHeadArcs = 4;

/// The four arcs of a key behind a prefix as one number of the same order, 16 bits for each: 0 for a missing arc,
/// else the arc and 1. An arc that is too large ends the number, so such keys may have the same head.
std::uint64_t Head(SOidView key, std::uint32_t prefix) noexcept
{
    constexpr std::uint32_t largest = 0xFFFF;
    std::uint64_t head = 0;
    const std::uint32_t end = std::min(prefix + kHeadArcs, key.length);
    int shift = 64;
    for (std::uint32_t i = prefix; i < end; ++i) {
        shift -= 16;
        const std::uint32_t arc = key.arcs[i];
        if (arc >= largest - 1) return head | std::uint64_t{largest} << shift;
        head |= std::uint64_t{arc + 1} << shift;
    }
    return head;
}

/// Whether a head holds all arcs of a key of this length.
bool IsWhole(std::uint64_t head, std::uint32_t prefix, std::uint32_t length) noexcept
{
    if (length > prefix + kHeadArcs) return false;
    if (length <= prefix) return true;
    const std::uint32_t last = static_cast<std::uint32_t>(head >> 16 * (prefix + kHeadArcs - length)) & 0xFFFF;
    return last != 0 && last != 0xFFFF; // 0: an arc before it was too large
}

/// How many of some heads, `Stride` apart, are below. Without a branch.
template <std::size_t Stride, std::size_t... Index>
std::uint32_t CountBelow(std::uint64_t const * heads, std::uint64_t head, std::index_sequence<Index...>) noexcept
{
    return ((heads[Index * Stride] < head ? 1u : 0u) + ...);
}

/// First of a node's heads that isn't below. Unused places hold the largest number, so all nodes take the same few
/// comparisons: the group by its last head, then the place in the group.
template <std::size_t Count>
std::uint32_t LowerBound(std::uint64_t const (&heads)[Count], std::uint64_t head) noexcept
{
    constexpr std::size_t group = 8;
    static_assert(Count % group == 0);
    const std::uint32_t first =
        group * CountBelow<group>(heads + group - 1, head, std::make_index_sequence<Count / group - 1>());
    return first + CountBelow<1>(heads + first, head, std::make_index_sequence<group>());
}

/// Number of arcs, `count` at most, in which both agree, of which the first `from` are known.
std::uint32_t Agree(std::uint32_t const * left, std::uint32_t const * right, std::uint32_t from,
                    std::uint32_t count) noexcept
{
    for (std::uint64_t pairs[2]; from + 2 <= count; from += 2) {
        std::memcpy(pairs, left + from, sizeof(pairs[0]));
        std::memcpy(pairs + 1, right + from, sizeof(pairs[1]));
        if (pairs[0] != pairs[1]) break;
    }
    while (from < count && left[from] == right[from])
        ++from;
    return from;
}

/// Has memory fetched that will be read soon.
void Prefetch([[maybe_unused]] SMibCell const * cell) noexcept
{
#if defined(__GNUC__)
    __builtin_prefetch(cell);
    __builtin_prefetch(reinterpret_cast<unsigned char const *>(cell) + 64);
    __builtin_prefetch(reinterpret_cast<unsigned char const *>(cell) + 96); // a cell may touch three lines
#endif
}

bool IsOctets(std::uint8_t type) noexcept
{
    return type == ASN_OCTETSTRING || type == ASN_IPADDRESS || type == ASN_OPAQUE;
}

} // namespace

AsnAny SMibCell::Value() const noexcept
{
    AsnAny value{};
    value.asnType = asnType;
    if (!IsOctets(asnType)) {
        value.asnValue.unsigned32 = content;
    } else if (content != 0) {
        value.asnValue.string = {const_cast<std::uint8_t *>(Octets()), content, 0};
    }
    return value;
}

std::string_view SMibCell::Name() const noexcept
{
    if (IsObject()) return object->entry.name;
    return name != nullptr ? std::string_view(name->text) : std::string_view();
}

// Searching

/// One node's part of a search.
inline std::uint32_t CMibStore::SSearch::In(SNode const & node) noexcept
{
    const std::uint32_t prefix = node.prefixLength;
    const std::uint32_t compared = std::min(prefix, key.length);
    const std::uint32_t agree = Agree(key.arcs, node.prefix, shared, compared);
    shared = std::max(shared, agree);
    if (agree < compared) return key.arcs[agree] < node.prefix[agree] ? 0u : node.count;
    if (key.length < prefix) return 0;

    const std::uint64_t head = Head(key, prefix);
    const std::uint32_t low = std::min<std::uint32_t>(LowerBound(node.heads, head), node.count);
    if (low == node.count || node.heads[low] != head) return low;
    // Where heads hold whole keys, only one has this head.
    if (node.longest <= prefix + kHeadArcs && IsWhole(head, prefix, key.length)) {
        exact = true;
        return low;
    }
    return AmongTies(node, low);
}

/// Among keys with the same head, from `low` on.
std::uint32_t CMibStore::SSearch::AmongTies(SNode const & node, std::uint32_t low) noexcept
{
    std::uint32_t high = low + 1;
    while (high < node.count && node.heads[high] == node.heads[low])
        ++high;
    while (low < high) {
        const std::uint32_t middle = (low + high) / 2;
        const int order = CompareOids(node.keys[middle]->Key(), key, node.prefixLength);
        exact = order == 0;
        if (exact) return middle;
        if (order < 0) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

CMibStore::SPlace CMibStore::Locate(SOidView key) const noexcept
{
    SNode * node = m_root;
    if (node == nullptr) return {nullptr, 0, false};
    // Arcs that the key shares with the separators next to it, from below and from above: so do all keys between.
    std::uint32_t below = 0;
    std::uint32_t above = 0;
    for (SSearch search{key};; search.exact = false) {
        search.shared = std::min(below, above);
        const std::uint32_t slot = search.In(*node);
        if (node->isLeaf) return {static_cast<SLeaf *>(node), slot, search.exact};
        const std::uint32_t child = search.exact ? slot + 1 : slot;
        if (child != 0) below = search.shared;
        if (child != node->count) above = search.shared;
        node = static_cast<SInner *>(node)->children[child];
    }
}

SMibCell * CMibStore::Find(SOidView key) const noexcept
{
    const SPlace place = Locate(key);
    return place.exact ? place.leaf->keys[place.slot] : nullptr;
}

SMibCell * CMibStore::FindAbove(SOidView key) const noexcept
{
    SPlace place = Locate(key);
    if (place.leaf == nullptr) return nullptr;
    if (place.exact) ++place.slot;
    if (place.slot < place.leaf->count) {
        // A walk asks for the keys behind it soon. The next one is on its way already.
        if (place.slot + 2u < place.leaf->count) Prefetch(place.leaf->keys[place.slot + 2]);
        return place.leaf->keys[place.slot];
    }
    return place.leaf->next != nullptr ? place.leaf->next->keys[0] : nullptr;
}

// Nodes

/// Takes prefix and heads anew from the keys.
void CMibStore::Reindex(SNode & node) noexcept
{
    if (node.count == 0) return;
    const SOidView first = node.keys[0]->Key();
    const std::uint32_t common = CommonArcs(first, node.keys[node.count - 1]->Key());
    const std::uint32_t prefix = std::min(common, kPrefixArcs);
    node.prefixLength = static_cast<std::uint16_t>(prefix);
    std::copy(first.arcs, first.arcs + prefix, node.prefix);
    node.longest = 0;
    for (std::uint32_t i = 0; i < node.count; ++i) {
        const SOidView key = node.keys[i]->Key();
        node.heads[i] = Head(key, prefix);
        node.longest = std::max(node.longest, key.length);
    }
}

/// For a node with room.
void CMibStore::InsertKey(SNode & node, std::uint32_t slot, SMibCell * cell) noexcept
{
    std::copy_backward(node.heads + slot, node.heads + node.count, node.heads + node.count + 1);
    std::copy_backward(node.keys + slot, node.keys + node.count, node.keys + node.count + 1);
    node.keys[slot] = cell;
    node.lastInsert = static_cast<std::uint16_t>(slot);
    ++node.count;

    const SOidView key = cell->Key();
    const SOidView prefix(node.prefix, node.prefixLength);
    if (node.count == 1 || CommonArcs(prefix, key) < prefix.length) {
        Reindex(node);
        return;
    }
    node.heads[slot] = Head(key, prefix.length);
    node.longest = std::max(node.longest, key.length);
}

/// Moves the keys from `slot` on to an empty node.
void CMibStore::MoveTail(SNode & from, std::uint32_t slot, SNode & to) noexcept
{
    std::copy(from.keys + slot, from.keys + from.count, to.keys);
    to.count = static_cast<std::uint16_t>(from.count - slot);
    Shrink(from, slot);
}

/// Drops the keys from `count` on.
void CMibStore::Shrink(SNode & node, std::uint32_t count) noexcept
{
    std::fill(node.heads + count, node.heads + node.count, kNoHead);
    node.count = static_cast<std::uint16_t>(count);
}

std::uint32_t CMibStore::ChildIndex(SInner const & parent, SNode const & child) noexcept
{
    return static_cast<std::uint32_t>(std::find(parent.children, parent.children + parent.count, &child) -
                                      parent.children);
}

void CMibStore::InsertCell(SPlace place, SMibCell * cell)
{
    if (m_root == nullptr) m_root = place.leaf = new SLeaf;
    if (place.leaf->count == kNodeKeys) {
        SplitLeaf(*place.leaf, place.slot, cell->Key());
        place = Locate(cell->Key());
    }
    InsertKey(*place.leaf, place.slot, cell);
    ++m_size;
}

/// Halves a full leaf into which `key` is to go at `slot`. Where keys come in rising order the split is made behind
/// the last one, so that such leaves become full.
void CMibStore::SplitLeaf(SLeaf & leaf, std::uint32_t slot, SOidView key)
{
    const bool rises = slot == leaf.lastInsert + 1u;
    const std::uint32_t middle = rises ? slot : kNodeKeys / 2;
    const SOidView left = rises && middle != kNodeKeys ? key : leaf.keys[middle - 1]->Key();
    const SOidView right = middle == kNodeKeys ? key : leaf.keys[middle]->Key();
    const std::uint32_t distinct = CommonArcs(left, right) + 1;

    SInner & parent = ParentWithRoom(leaf);
    SMibCell * const separator = NewCell({right.arcs, distinct}, SMibCell::EKind::Separator);
    SLeaf * next = nullptr;
    try {
        next = new SLeaf;
    } catch (...) {
        FreeBlock(separator);
        throw;
    }
    MoveTail(leaf, middle, *next);
    Reindex(leaf);
    Reindex(*next);
    next->previous = &leaf;
    next->next = leaf.next;
    if (leaf.next != nullptr) leaf.next->previous = next;
    leaf.next = next;
    InsertChild(parent, leaf, separator, *next);
}

void CMibStore::SplitInner(SInner & inner)
{
    SInner & parent = ParentWithRoom(inner);
    auto * const next = new SInner;
    constexpr std::uint32_t middle = kNodeKeys / 2;
    SMibCell * const separator = inner.keys[middle];
    std::copy(inner.children + middle + 1, inner.children + inner.count + 1, next->children);
    MoveTail(inner, middle + 1, *next);
    Shrink(inner, middle);
    for (std::uint32_t i = 0; i <= next->count; ++i)
        next->children[i]->parent = next;
    Reindex(inner);
    Reindex(*next);
    InsertChild(parent, inner, separator, *next);
}

/// The parent of a node that is about to be split, itself split or made before if need be.
CMibStore::SInner & CMibStore::ParentWithRoom(SNode & node)
{
    if (node.parent == nullptr) {
        auto * const root = new SInner;
        root->children[0] = &node;
        node.parent = root;
        m_root = root;
    } else if (node.parent->count == kNodeKeys) {
        SplitInner(*node.parent);
    }
    return *node.parent;
}

void CMibStore::InsertChild(SInner & parent, SNode & left, SMibCell * separator, SNode & right) noexcept
{
    const std::uint32_t slot = ChildIndex(parent, left);
    std::copy_backward(parent.children + slot + 1, parent.children + parent.count + 1,
                       parent.children + parent.count + 2);
    parent.children[slot + 1] = &right;
    right.parent = &parent;
    InsertKey(parent, slot, separator);
}

/// Takes a node out of its parent and deletes it; so goes a parent that has no child left.
void CMibStore::RemoveChild(SNode & node) noexcept
{
    SInner * const parent = node.parent;
    if (parent == nullptr) {
        m_root = nullptr;
    } else if (parent->count == 0) {
        RemoveChild(*parent);
    } else {
        const std::uint32_t child = ChildIndex(*parent, node);
        const std::uint32_t key = child != 0 ? child - 1 : 0;
        FreeBlock(parent->keys[key]);
        std::copy(parent->children + child + 1, parent->children + parent->count + 1, parent->children + child);
        std::copy(parent->keys + key + 1, parent->keys + parent->count, parent->keys + key);
        std::copy(parent->heads + key + 1, parent->heads + parent->count, parent->heads + key);
        Shrink(*parent, parent->count - 1u);
    }
    DeleteNode(node);
    while (m_root != nullptr && !m_root->isLeaf && m_root->count == 0) {
        auto * const old = static_cast<SInner *>(m_root);
        m_root = old->children[0];
        m_root->parent = nullptr;
        delete old;
    }
}

/// After keys were erased: an empty leaf goes, a sparse one joins the leaf before it.
void CMibStore::SettleLeaf(SLeaf & leaf) noexcept
{
    SLeaf * const previous = leaf.previous;
    const bool joins = leaf.count != 0 && leaf.count < kNodeKeys / 2 && previous != nullptr &&
                       previous->parent == leaf.parent && previous->count + leaf.count <= kNodeKeys * 3 / 4;
    if (joins) {
        std::copy(leaf.keys, leaf.keys + leaf.count, previous->keys + previous->count);
        previous->count = static_cast<std::uint16_t>(previous->count + leaf.count);
        Reindex(*previous);
    } else if (leaf.count != 0) {
        return;
    }
    if (previous != nullptr) previous->next = leaf.next;
    if (leaf.next != nullptr) leaf.next->previous = previous;
    RemoveChild(leaf);
}

void CMibStore::DeleteNode(SNode & node) noexcept
{
    if (node.isLeaf) {
        delete static_cast<SLeaf *>(&node);
    } else {
        delete static_cast<SInner *>(&node);
    }
}

void CMibStore::ClearNode(SNode & node) noexcept
{
    for (std::uint32_t i = 0; i < node.count; ++i)
        FreeCell(node.keys[i]);
    if (!node.isLeaf) {
        auto & inner = static_cast<SInner &>(node);
        for (std::uint32_t i = 0; i <= inner.count; ++i)
            ClearNode(*inner.children[i]);
    }
    DeleteNode(node);
}

void CMibStore::Clear() noexcept
{
    SNode * const root = std::exchange(m_root, nullptr);
    m_size = 0;
    if (root != nullptr) ClearNode(*root);
}

// Cells

SMibCell * CMibStore::NewCell(SOidView key, SMibCell::EKind kind, std::size_t octets)
{
    const std::size_t header = offsetof(SMibCell, content) + sizeof(SMibCell::content);
    const std::size_t bytes = header + std::size_t{key.length} * sizeof(std::uint32_t) + octets;
    const CMibSlab::SBlock block = m_slab.Allocate(std::max(bytes, sizeof(SMibCell)));
    auto * const cell = new (block.memory) SMibCell;
    cell->name = nullptr;
    cell->length = key.length;
    cell->place = block.place;
    cell->asnType = ASN_NULL;
    cell->kind = kind;
    cell->content = 0;
    std::copy(key.arcs, key.arcs + key.length, cell->Arcs());
    return cell;
}

bool CMibStore::IsCompact(AsnAny const & value) noexcept
{
    switch (value.asnType) {
    case ASN_INTEGER:
    case ASN_COUNTER32:
    case ASN_GAUGE32:
    case ASN_TIMETICKS:
    case ASN_UINTEGER32:
    case ASN_NULL:
        return true;
    default:
        return IsOctets(value.asnType);
    }
}

SMibCell * CMibStore::NewConstant(SOidView key, AsnAny const & value)
{
    const bool octets = IsOctets(value.asnType);
    std::uint8_t const * const stream = octets ? value.asnValue.string.stream : nullptr;
    const std::uint32_t count = stream != nullptr ? value.asnValue.string.length : 0;
    SMibCell * const cell = NewCell(key, SMibCell::EKind::Constant, count);
    cell->asnType = value.asnType;
    cell->content = octets ? count : value.asnValue.unsigned32;
    if (count != 0) std::memcpy(const_cast<std::uint8_t *>(cell->Octets()), stream, count);
    return cell;
}

bool CMibStore::PutConstant(SOidView key, char const * name, AsnAny const & value)
{
    const SPlace place = Locate(key);
    SMibCell * const old = place.exact ? place.leaf->keys[place.slot] : nullptr;
    if (old != nullptr && old->IsObject()) return false;
    if (old != nullptr && !IsOctets(old->asnType) && !IsOctets(value.asnType) &&
        (name == nullptr || old->Name() == name)) {
        old->asnType = value.asnType;
        old->content = value.asnValue.unsigned32;
        return true;
    }
    SMibCell * const cell = NewConstant(key, value);
    try {
        cell->name = m_names.Acquire(name != nullptr ? std::string_view(name)
                                                     : (old != nullptr ? old->Name() : std::string_view()));
        if (old == nullptr) InsertCell(place, cell);
    } catch (...) {
        FreeCell(cell);
        throw;
    }
    if (old != nullptr) {
        place.leaf->keys[place.slot] = cell;
        FreeCell(old);
    }
    return true;
}

MibEntry & CMibStore::PutObject(SOidView key)
{
    const SPlace place = Locate(key);
    SMibCell * const old = place.exact ? place.leaf->keys[place.slot] : nullptr;
    if (old != nullptr && old->IsObject()) return old->object->entry;

    SMibCell * const cell = NewCell(key, SMibCell::EKind::Object);
    cell->object = nullptr;
    try {
        cell->object = new SMibObject;
        if (old == nullptr) {
            InsertCell(place, cell);
            return cell->object->entry;
        }
        cell->object->entry.name = old->Name();
    } catch (...) {
        delete cell->object;
        FreeBlock(cell);
        throw;
    }
    cell->object->entry.SetValue(old->Value());
    place.leaf->keys[place.slot] = cell;
    FreeCell(old);
    return cell->object->entry;
}

void CMibStore::FreeCell(SMibCell * cell) noexcept
{
    if (cell->IsObject()) {
        Retire(cell->object);
    } else {
        m_names.Release(cell->name);
    }
    FreeBlock(cell);
}

// What callbacks may still look at

void CMibStore::Retire(SMibObject * object) noexcept
{
    if (m_holds == 0) {
        delete object;
        return;
    }
    object->nextRetired = m_retired;
    m_retired = object;
}

void CMibStore::EndHold() noexcept
{
    if (--m_holds != 0) return;
    for (SMibObject * object = std::exchange(m_retired, nullptr); object != nullptr;) {
        delete std::exchange(object, object->nextRetired);
    }
}

/// Saves an owned context that is about to be replaced, as long as a callback runs.
void CMibStore::KeepContext(MibEntry & entry)
{
    if (m_holds == 0 || entry.contextSize == 0) return;
    auto * const keeper = new SMibObject;
    keeper->entry.context = std::exchange(entry.context, nullptr);
    keeper->entry.contextSize = std::exchange(entry.contextSize, 0);
    Retire(keeper);
}

void CMibStore::ExchangeContext(MibEntry & entry, MibEntry & source)
{
    KeepContext(entry);
    std::swap(entry.context, source.context);
    std::swap(entry.contextSize, source.contextSize);
}
