#ifndef VLK_FILE_DESCRIPTOR_SET_H
#define VLK_FILE_DESCRIPTOR_SET_H

#include <cstddef>
#include <cstdint>

#include "VLK/Export.h"

namespace VLK::Misc {

/// A list of sockets without duplicates, in the layout of a Winsock fd_set, so that a select there can take more
/// than 64. One thread.
class VLK_API CFileDescriptorSet {
public:
    static constexpr unsigned int InlineCapacity = 64;

    /// Room for 64 sockets inside the object.
    CFileDescriptorSet() noexcept;
    ~CFileDescriptorSet();
    CFileDescriptorSet(CFileDescriptorSet const &) = delete;
    CFileDescriptorSet & operator=(CFileDescriptorSet const &) = delete;

    /// Adds a socket; -1, and one that is in already, change nothing. A full set grows to twice its capacity and two.
    /// Raises "Out of memory". URET_OK.
    unsigned int Set(std::size_t socket);
    /// Takes a socket out; the ones behind it keep their order.
    void Clear(std::size_t socket) noexcept;
    bool IsSet(std::size_t socket) const noexcept;
    void Zero() noexcept { m_pSet->count = 0; }
    /// Number of sockets, and the one at a place below it.
    std::size_t Size() const noexcept { return m_pSet->count; }
    std::size_t Get(std::size_t place) const noexcept { return static_cast<std::size_t>(Entries()[place]); }
    unsigned int Capacity() const noexcept { return m_uCapacity; }
    /// Empties the set and gives back its heap room.
    void Free() noexcept;
    /// Room for n sockets; nothing if that is less than there is now and not 0. 0 goes back inside the object, as far
    /// as the sockets fit there. Raises "Out of memory".
    unsigned int Resize(unsigned int n);

private:
    struct SHeader {
        std::uint32_t count;
        std::uint32_t padding;
    };
    struct SInlineSet {
        SHeader header;
        std::uint64_t entries[InlineCapacity];
    };
    std::uint64_t * Entries() noexcept { return reinterpret_cast<std::uint64_t *>(m_pSet + 1); }
    std::uint64_t const * Entries() const noexcept { return reinterpret_cast<std::uint64_t const *>(m_pSet + 1); }
    bool IsInline() const noexcept { return m_pSet == &m_Inline.header; }
    std::size_t Place(std::size_t socket) const noexcept;

    std::uint32_t m_uCapacity;
    SHeader * m_pSet; ///< followed by the entries
    SInlineSet m_Inline;
};

} // namespace VLK::Misc

#endif
