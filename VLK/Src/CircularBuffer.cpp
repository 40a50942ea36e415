#include "VLK/CircularBuffer.h"

#include <algorithm>
#include <cstring>

void VLK::Internals::CCircularBuffer::Write(Strings::CStringRef const & text) noexcept
{
    if (text.size() == 0) return;
    Threading::CSyncGuard guard;
    m_Lock.Enter(guard);
    char(&slot)[SlotSize] = m_Slots[m_uIndex];
    std::memset(slot, 0, SlotSize);
    std::memcpy(slot, text.data(), std::min<std::size_t>(text.size(), SlotSize));
    slot[SlotSize - 1] = '\0';
    m_uIndex = (m_uIndex + 1) & SlotMask;
}
