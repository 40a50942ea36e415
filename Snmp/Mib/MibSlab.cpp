#include "Snmp/Mib/MibSlab.h"

#include <algorithm>
#include <new>

struct CMibSlab::SPage {
    SPage * previous; // among the open pages of the class
    SPage * next;
    std::uint16_t units;  // of one block
    std::uint16_t live;   // blocks handed out
    std::uint16_t freed;  // place of the block freed last; 0: none. A free block begins with the next place.
    std::uint16_t carved; // place of the first block never used
    std::uint16_t end;    // place behind the last block

    std::uint16_t * At(std::uint16_t place) noexcept
    {
        return reinterpret_cast<std::uint16_t *>(reinterpret_cast<unsigned char *>(this) + place * kUnit);
    }
    bool IsFull() const noexcept { return freed == 0 && carved == end; }
};

CMibSlab::SBlock CMibSlab::Allocate(std::size_t bytes)
{
    const std::size_t units = std::max<std::size_t>((bytes + kUnit - 1) / kUnit, 1);
    if (units * kUnit > kLargest) return {::operator new(bytes), 0};

    SClass & blocks = m_classes[units];
    if (blocks.open == nullptr) Link(blocks, *NewPage(blocks, units)), ++blocks.pages;
    SPage & page = *blocks.open;
    std::uint16_t place = page.freed;
    if (place != 0) {
        page.freed = *page.At(place);
    } else {
        place = page.carved;
        page.carved = static_cast<std::uint16_t>(place + page.units);
    }
    ++page.live;
    if (page.IsFull()) Unlink(blocks, page);
    return {page.At(place), place};
}

void CMibSlab::Free(void * memory, std::uint16_t place) noexcept
{
    if (place == 0) {
        ::operator delete(memory);
        return;
    }
    SPage & page = *reinterpret_cast<SPage *>(static_cast<unsigned char *>(memory) - place * kUnit);
    SClass & blocks = m_classes[page.units];
    if (page.IsFull()) Link(blocks, page);
    new (memory) std::uint16_t(page.freed);
    page.freed = place;
    if (--page.live != 0) return;
    Unlink(blocks, page);
    --blocks.pages;
    ::operator delete(&page);
}

/// Pages begin small, since most trees are.
CMibSlab::SPage * CMibSlab::NewPage(SClass const & blocks, std::size_t units)
{
    constexpr std::array<std::size_t, 3> sizes{1024, 4096, 16352};
    const std::size_t bytes = sizes[std::min<std::size_t>(blocks.pages, sizes.size() - 1)];
    constexpr std::size_t first = (sizeof(SPage) + kUnit - 1) / kUnit;
    const std::size_t count = (bytes / kUnit - first) / units;
    auto * const page = new (::operator new(bytes)) SPage{};
    page->units = static_cast<std::uint16_t>(units);
    page->carved = static_cast<std::uint16_t>(first);
    page->end = static_cast<std::uint16_t>(first + count * units);
    return page;
}

void CMibSlab::Link(SClass & blocks, SPage & page) noexcept
{
    page.previous = nullptr;
    page.next = blocks.open;
    if (blocks.open != nullptr) blocks.open->previous = &page;
    blocks.open = &page;
}

void CMibSlab::Unlink(SClass & blocks, SPage & page) noexcept
{
    (page.previous != nullptr ? page.previous->next : blocks.open) = page.next;
    if (page.next != nullptr) page.next->previous = page.previous;
}
