#ifndef VLK_CIRCULAR_BUFFER_H
#define VLK_CIRCULAR_BUFFER_H

#include <cstdint>

#include "VLK/CriticalSection.h"
#include "VLK/Export.h"
#include "VLK/Strings.h"

namespace VLK::Internals {

/// The last 65536 texts written, of at most 255 characters each, for whoever looks at the memory of the process. 16
/// MiB; not for the stack. Any thread.
class VLK_API CCircularBuffer {
public:
    static constexpr std::uint32_t SlotCount = 65536;
    static constexpr std::uint32_t SlotMask = SlotCount - 1;
    static constexpr std::uint32_t SlotSize = 256;

    CCircularBuffer() noexcept : m_uIndex(0), m_Slots{} {}
    CCircularBuffer(CCircularBuffer const &) = delete;
    CCircularBuffer & operator=(CCircularBuffer const &) = delete;

    /// Puts a text into the next slot; what doesn't fit is cut off. An empty text is ignored.
    void Write(Strings::CStringRef const & text) noexcept;
    /// The text in a slot. Not synchronised with writers.
    char const * Slot(std::uint32_t index) const noexcept { return m_Slots[index & SlotMask]; }
    std::uint32_t GetIndex() const noexcept { return m_uIndex; }

private:
    Threading::Native_OS::CCriticalSection m_Lock; ///< guards the rest
    std::uint32_t m_uIndex;
    char m_Slots[SlotCount][SlotSize];
};

} // namespace VLK::Internals

#endif
