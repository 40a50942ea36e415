#include "VLK/FileDescriptorSet.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "Memory.h"
#include "VLK/ResultCodes.h"

namespace VLK::Misc {

namespace {

constexpr std::size_t NoSocket = ~std::size_t{0};

} // namespace

CFileDescriptorSet::CFileDescriptorSet() noexcept : m_uCapacity(InlineCapacity), m_pSet(&m_Inline.header), m_Inline{} {}

CFileDescriptorSet::~CFileDescriptorSet()
{
    Free();
}

void CFileDescriptorSet::Free() noexcept
{
    if (!IsInline()) std::free(m_pSet);
    m_pSet = &m_Inline.header;
    m_uCapacity = InlineCapacity;
    Zero();
}

std::size_t CFileDescriptorSet::Place(std::size_t socket) const noexcept
{
    std::uint64_t const * const first = Entries();
    return static_cast<std::size_t>(std::find(first, first + Size(), socket) - first);
}

unsigned int CFileDescriptorSet::Set(std::size_t socket)
{
    if (socket == NoSocket || Place(socket) != Size()) return URET_OK;
    if (Size() == m_uCapacity && Resize(2 * m_uCapacity + 2) == URET_Error) return URET_Error;
    Entries()[m_pSet->count++] = socket;
    return URET_OK;
}

void CFileDescriptorSet::Clear(std::size_t socket) noexcept
{
    std::size_t const place = socket != NoSocket ? Place(socket) : Size();
    if (place == Size()) return;
    std::uint64_t * const entry = Entries() + place;
    std::copy(entry + 1, Entries() + Size(), entry);
    --m_pSet->count;
}

bool CFileDescriptorSet::IsSet(std::size_t socket) const noexcept
{
    return socket != NoSocket && Place(socket) != Size();
}

unsigned int CFileDescriptorSet::Resize(unsigned int n)
{
    if (n == m_uCapacity || (n != 0 && n < m_uCapacity)) return URET_OK;
    std::size_t const kept = n == 0 ? std::min<std::size_t>(Size(), InlineCapacity) : Size();
    SHeader * set = &m_Inline.header;
    if (n > InlineCapacity) {
        set = static_cast<SHeader *>(Internals::TryAllocate(sizeof(SHeader) + n * sizeof(std::uint64_t)));
        if (set == nullptr) return Internals::RaiseOutOfMemory();
    }
    if (set == m_pSet) return URET_OK;
    std::memcpy(set + 1, Entries(), kept * sizeof(std::uint64_t));
    *set = {static_cast<std::uint32_t>(kept), 0};
    if (!IsInline()) std::free(m_pSet);
    m_pSet = set;
    m_uCapacity = std::max(n, InlineCapacity);
    return URET_OK;
}

} // namespace VLK::Misc
