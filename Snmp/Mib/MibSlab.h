#ifndef SNMP_MIB_MIB_SLAB_H
#define SNMP_MIB_MIB_SLAB_H

#include <array>
#include <cstddef>
#include <cstdint>

/// Memory for many small blocks of a few sizes: blocks of one size share pages, and a page whose last block is
/// freed goes back. Blocks are aligned to 8 bytes. One thread at a time.
class CMibSlab {
public:
    /// A block, and what the slab must be told to free it.
    struct SBlock {
        void * memory;
        std::uint16_t place;
    };

    CMibSlab() noexcept = default;
    CMibSlab(CMibSlab const &) = delete;
    CMibSlab & operator=(CMibSlab const &) = delete;
    /// All blocks must have been freed.
    ~CMibSlab() = default;

    /// Raises std::bad_alloc.
    SBlock Allocate(std::size_t bytes);
    void Free(void * memory, std::uint16_t place) noexcept;

private:
    struct SPage;
    /// Blocks of one size.
    struct SClass {
        SPage * open = nullptr; // pages with room
        std::uint32_t pages = 0;
    };

    static constexpr std::size_t kUnit = 8;
    static constexpr std::size_t kLargest = 512; // larger blocks stand alone, at place 0

    static SPage * NewPage(SClass const & blocks, std::size_t units);
    static void Link(SClass & blocks, SPage & page) noexcept;
    static void Unlink(SClass & blocks, SPage & page) noexcept;

    std::array<SClass, kLargest / kUnit + 1> m_classes; // by units
};

#endif
