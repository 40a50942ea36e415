#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "Memory.h"
#include "VLK/Exceptions.h"
#include "VLK/FormatStream.h"

namespace VLK::Output_Streams {

CChrStreamBuffer::CChrStreamBuffer(std::size_t step, std::size_t maximum) noexcept
    : CFormatStreamBuffer(0),
      m_uLength(0),
      m_uCapacity(0),
      m_uStep(step),
      m_uMaximum(maximum),
      m_pBlock(nullptr),
      m_bDropped(false)
{
}

CChrStreamBuffer::~CChrStreamBuffer()
{
    Release();
}

unsigned int CChrStreamBuffer::Reset()
{
    m_uLength = 0;
    m_bDropped = false;
    if (m_uCapacity != 0) *m_pBlock = '\0';
    return CFormatStreamBuffer::Reset();
}

void CChrStreamBuffer::ResizeBuffer(std::size_t need)
{
    VLK_SOURCE(source);
    if (m_uStep == 0 || (m_uMaximum != 0 && need > m_uMaximum)) doThrow(source);
    if (need > Internals::MaxBlock - m_uStep) return;
    std::size_t size = Internals::RoundUp(need, m_uStep);
    if (m_uMaximum != 0) size = std::min(size, m_uMaximum);
    char * const block = static_cast<char *>(Internals::TryReallocate(m_pBlock, size));
    if (block == nullptr) return;
    m_pBlock = block;
    m_uCapacity = size;
}

/// The place for n more characters, with the terminator set behind them; null if they don't fit.
char * CChrStreamBuffer::Room(std::size_t n)
{
    std::size_t const need = Internals::SaturatedSum(Internals::SaturatedSum(m_uLength, n), 1);
    if (need > m_uCapacity) ResizeBuffer(need);
    if (need > m_uCapacity) {
        m_bDropped = true;
        return nullptr;
    }
    char * const room = m_pBlock + m_uLength;
    room[n] = '\0';
    m_uLength += n;
    return room;
}

unsigned int CChrStreamBuffer::Write(char const * text, std::size_t n, unsigned int upper)
{
    char * const room = Room(n);
    if (room == nullptr) return 1;
    std::memcpy(room, text, n);
    if (upper != 0) UpperCase(room, n);
    return 1;
}

unsigned int CChrStreamBuffer::Fill(int c, std::size_t n)
{
    if (char * const room = Room(n); room != nullptr) std::memset(room, c, n);
    return 1;
}

void CChrStreamBuffer::SetBuffer(char * block, std::size_t size) noexcept
{
    if (block != m_pBlock) Release();
    m_pBlock = block;
    m_uLength = 0;
    m_uCapacity = size;
    m_uMaximum = size;
    if (size != 0) *block = '\0';
}

void CChrStreamBuffer::Release() noexcept
{
    if (m_uStep != 0) std::free(m_pBlock);
    m_pBlock = nullptr;
    m_uLength = 0;
    m_uCapacity = 0;
}

void CChrStreamBuffer::operator>>(char *& out) noexcept
{
    out = m_pBlock;
    m_pBlock = nullptr;
    m_uLength = 0;
    m_uCapacity = 0;
}

} // namespace VLK::Output_Streams
