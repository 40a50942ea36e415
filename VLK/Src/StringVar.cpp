#include <algorithm>

#include "CaseRules.h"
#include "Memory.h"
#include "StringStreamBuffer.h"
#include "VLK/Exceptions.h"
#include "VLK/FormatStream.h"
#include "VLK/Language.h"
#include "VLK/Strings.h"
#include "VLK/ThrowState.h"
#include "VLK/Trace.h"

namespace VLK::Strings {

namespace {

constexpr std::size_t LargeText = 0x2000; ///< from here on a block grows by pages instead of doubling
constexpr std::size_t PageStep = 0x1000;
constexpr std::size_t WorthFreeing = 15; ///< spare characters that aren't given back

unsigned int RaiseMaxCount(std::size_t capacity)
{
    Exceptions::CThrowState state;
    try {
        VLK_TRACE(TraceErrors, "Maximum buff size (%d) already reached", capacity);
        VLK_RAISE(state, Errors::MaxCount);
    }
    VLK_THROW_NEXT(state)
}

} // namespace

void CStringVar::InitWith(CSubStringRef const & text, std::size_t extra)
{
    if (text.data()[text.size()] != '\0') {
        Append(text.data(), text.size());
        return;
    }
    m_pData = text.data();
    m_uLength = text.size();
    m_uCapacity = 0;
    SaveCapacity(extra + BaseRoom);
}

void CStringVar::InitWith(Language_Support::CLanguageStrg const & text, std::size_t extra)
{
    char const * const native = text.Native();
    if (text.IsUTF8() == Language_Support::CLanguageSupport::EncodingNative && native != nullptr)
        InitWith(CSubStringRef(native), extra);
    else
        text.UTF8ToChar(*this, 0);
}

std::size_t CStringVar::NewSize(std::size_t need) const noexcept
{
    std::size_t const least = m_uLength + need;
    std::size_t size = 0;
    if (m_uLength == 0)
        size = need + 1;
    else if (m_uLength < LargeText)
        size = 2 * m_uCapacity + 1;
    else
        size = Internals::RoundUp(m_uCapacity + PageStep, PageStep);
    if (least >= size) size = least + 1;
    return Internals::RoundUp(size, BlockStep);
}

unsigned int CStringVar::Grow(std::size_t need)
{
    if (IsReference()) DropReference();
    if (m_uCapacity > MaxCapacity) return RaiseMaxCount(m_uCapacity);
    // An emptied string whose next text fits into the object doesn't keep its block.
    if (IsHeap() && MayFallBack(need)) {
        ReturnInline();
        return URET_OK;
    }
    if (need <= m_uCapacity - m_uLength) return URET_OK;
    if (need > Internals::MaxBlock - m_uLength - PageStep) return Internals::RaiseOutOfMemory();
    if (m_pData == m_Inline) return GrowFromInline(NewSize(need));
    if (SavedCapacity() == 0) return GrowTarget(need);
    if (m_uLength + need <= SavedCapacity()) {
        ReturnInline();
        return URET_OK;
    }
    return GrowBlock(NewSize(need));
}

unsigned int CStringVar::GrowFromInline(std::size_t newSize)
{
    char * const block = static_cast<char *>(Internals::TryAllocate(newSize));
    if (block == nullptr) return Internals::RaiseOutOfMemory();
    std::memcpy(block, m_pData, m_uLength);
    block[m_uLength] = '\0';
    SaveCapacity(m_uCapacity);
    m_pData = block;
    m_uCapacity = newSize - 1;
    return URET_OK;
}

unsigned int CStringVar::GrowBlock(std::size_t newSize)
{
    void * block = nullptr;
    if (m_uLength == 0) {
        FreeBlock();
        block = Internals::TryAllocate(newSize);
        if (block != nullptr) *static_cast<char *>(block) = '\0';
    } else {
        block = Internals::TryReallocate(Data(), newSize);
        if (block == nullptr) FreeBlock();
    }
    if (block == nullptr) {
        ResetToInline(SavedCapacity());
        return Internals::RaiseOutOfMemory();
    }
    m_pData = static_cast<char *>(block);
    m_uCapacity = newSize - 1;
    return URET_OK;
}

unsigned int CStringVar::GrowTarget(std::size_t need)
{
    // Also a growth that raises may have changed the target: its text can be gone, and the block with it.
    struct SFollow {
        ~SFollow()
        {
            alias.m_pData = target.m_pData;
            alias.m_uCapacity = target.m_uCapacity;
            alias.m_uLength = target.m_uLength;
        }
        CStringVar & alias;
        CStringVar & target;
    } const follow{*this, *static_cast<CStringAlias *>(this)->m_pTarget};
    follow.target.m_uLength = m_uLength;
    return follow.target.Alloc(need);
}

void CStringVar::ReturnInline() noexcept
{
    char * const block = Data();
    std::size_t const capacity = SavedCapacity();
    std::memcpy(m_Inline, block, m_uLength + 1);
    std::free(block);
    m_pData = m_Inline;
    m_uCapacity = capacity;
}

void CStringVar::DropReference() noexcept
{
    ResetToInline(BaseRoom);
}

void CStringVar::ResetToInline(std::size_t inlineCapacity) noexcept
{
    m_pData = m_Inline;
    m_uCapacity = inlineCapacity;
    SetLength(0);
}

void CStringVar::FreeBlock() noexcept
{
    std::free(Data());
}

unsigned int CStringVar::OwnText()
{
    return IsReference() ? AllocCopy(m_pData, 0) : URET_OK;
}

unsigned int CStringVar::AllocCopy(char const * src, std::size_t n)
{
    if (src == nullptr) {
        if (!IsReference()) Data()[m_uLength] = '\0';
        return URET_OK;
    }
    return Append(src, n != 0 ? ::strnlen(src, n) : std::strlen(src));
}

unsigned int CStringVar::Append(char const * src, std::size_t n)
{
    if (n == 0) return URET_OK;
    std::size_t const offset = IsOwn(src) ? static_cast<std::size_t>(src - m_pData) : POSERR;
    // What an emptied string still holds must not go with its block.
    if (offset != POSERR && m_uLength == 0) {
        n = std::min(n, m_uCapacity - offset);
        std::memmove(Data(), src, n);
    } else {
        if (Alloc(n) == URET_Error) return URET_Error;
        std::memmove(Data() + m_uLength, offset != POSERR ? m_pData + offset : src, n);
    }
    SetLength(m_uLength + n);
    return URET_OK;
}

CStringVar & CStringVar::Assign(char const * src, std::size_t n)
{
    if (IsReference()) {
        // The reference may be the source itself.
        DropReference();
    } else if (IsOwn(src)) {
        n = std::min(n, m_uCapacity - static_cast<std::size_t>(src - m_pData));
        std::memmove(Data(), src, n);
        SetLength(n);
        return *this;
    } else {
        SetLength(0);
    }
    Append(src, n);
    return *this;
}

CStringVar & CStringVar::operator=(char const * text)
{
    return text != nullptr ? Assign(text, std::strlen(text)) : *this = Misc::CNull();
}

CStringVar & CStringVar::operator=(char c)
{
    if (IsReference() && Alloc(1) == URET_Error) return *this;
    Data()[0] = c;
    SetLength(c != '\0' ? 1 : 0);
    return *this;
}

CStringVar & CStringVar::operator=(Misc::CNull)
{
    if (IsReference())
        DropReference();
    else
        SetLength(0);
    return *this;
}

CStringVar & CStringVar::operator=(Language_Support::CLanguageStrg const & text)
{
    if (IsReference()) DropReference();
    text.UTF8ToChar(*this, 1);
    return *this;
}

CStringVar & CStringVar::operator=(Internals::CFormatResortBuffer & text)
{
    *this = Misc::CNull();
    text.PutInOrder(*this);
    return *this;
}

CStringVar & CStringVar::operator+=(CSubStringRef const & text)
{
    if (!IsReference() && text.size() <= m_uCapacity - m_uLength) {
        // Where the room does, nothing is asked of Alloc: neither its limit nor its way back into the object counts.
        std::memmove(Data() + m_uLength, text.data(), text.size());
        SetLength(m_uLength + text.size());
    } else if (text.size() != 0) {
        AllocCopy(text.data(), text.size());
    }
    return *this;
}

CStringVar & CStringVar::operator+=(char const * text)
{
    AllocCopy(text, 0);
    return *this;
}

CStringVar & CStringVar::operator+=(char c)
{
    if ((IsReference() || m_uLength == m_uCapacity) && Alloc(m_uCapacity + 1) == URET_Error) return *this;
    Data()[m_uLength] = c;
    SetLength(m_uLength + 1);
    return *this;
}

CStringVar & CStringVar::operator+=(Language_Support::CLanguageStrg const & text)
{
    text.UTF8ToChar(*this, 0);
    return *this;
}

CStringVar & CStringVar::operator+=(Internals::CFormatResortBuffer & text)
{
    text.PutInOrder(*this);
    return *this;
}

CStringVar & CStringVar::operator<<(char const * text)
{
    if (text != nullptr) AllocCopy(text, 0);
    return *this;
}

CStringVar & CStringVar::Cat(char const * text, std::size_t n)
{
    AllocCopy(text, n);
    return *this;
}

void CStringVar::Cut(std::size_t n) noexcept
{
    if (!IsReference() && n <= m_uLength) SetLength(n);
}

char * CStringVar::Lock(std::size_t n, unsigned int clear)
{
    if (clear != 0 && !IsReference()) SetLength(0);
    if (Alloc(Internals::SaturatedSum(n, m_uLength)) == URET_Error) return nullptr;
    return Data() + m_uLength;
}

void CStringVar::Unlock(std::size_t n) noexcept
{
    m_uLength = n != 0 ? n : std::strlen(m_pData);
}

void CStringVar::FreeExtra()
{
    if (!IsHeap() || m_uCapacity - m_uLength <= WorthFreeing) return;
    if (m_uLength > SavedCapacity()) {
        GrowBlock(Internals::RoundUp(m_uLength + 1, BlockStep));
        return;
    }
    char * const block = Data();
    std::size_t const capacity = SavedCapacity();
    std::memcpy(m_Inline, block, m_uLength);
    std::free(block);
    m_pData = m_Inline;
    m_uCapacity = capacity;
}

void CStringVar::Set(char c, std::size_t n)
{
    if (n == POSERR) n = m_uLength;
    if (n == 0) return;
    if (n > m_uCapacity && Alloc(n) == URET_Error) return;
    std::memset(Data(), c, n);
    if (n > m_uLength) SetLength(n);
}

void CStringVar::ToLower(std::size_t from)
{
    if (from < m_uLength && OwnText() != URET_Error) Internals::LowerText(Data() + from, m_uLength - from);
}

void CStringVar::ToUpper(std::size_t from)
{
    if (from < m_uLength && OwnText() != URET_Error) Internals::UpperText(Data() + from, m_uLength - from);
}

void CStringVar::FixSlashes()
{
    if (OwnText() == URET_Error) return;
    for (char * p = Data(); *p != '\0'; ++p)
        if (*p == '/') *p = '\\';
}

Output_Streams::CFormatStream CStringVar::Format(char const * format)
{
    return Internals::CStringStreamBuffer::Open(*this, format);
}

void CStringVar::operator>>(char *& out)
{
    if (IsHeap()) {
        out = Data();
        ResetToInline(SavedCapacity());
        return;
    }
    out = static_cast<char *>(Internals::TryAllocate(m_uLength + 1));
    if (out == nullptr) {
        Internals::RaiseOutOfMemory();
        return;
    }
    std::memcpy(out, m_pData, m_uLength);
    out[m_uLength] = '\0';
}

void CStringVar::operator>>(CStringVar & target)
{
    if (&target == this) return;
    bool const targetIsAlias = !target.IsReference() && target.m_pData != target.m_Inline && !target.IsHeap();
    if (!IsHeap() || targetIsAlias) {
        target.Assign(m_pData, m_uLength);
        return;
    }
    if (target.IsHeap())
        target.FreeBlock();
    else if (!target.IsReference())
        target.SaveCapacity(target.m_uCapacity);
    target.m_pData = m_pData;
    target.m_uLength = m_uLength;
    target.m_uCapacity = m_uCapacity;
    ResetToInline(SavedCapacity());
}

CStringAlias::CStringAlias(CStringVar & target) : m_pTarget(&target)
{
    // A reference has no storage to lend.
    if (target.IsReference()) {
        CSubStringRef const text = target;
        target.DropReference();
        target.Append(text.data(), text.size());
    }
    m_pData = target.m_pData;
    m_uCapacity = target.m_uCapacity;
    m_uLength = target.m_uLength;
    target.m_uLength = 0;
    SaveCapacity(0);
}

CStringAlias::~CStringAlias()
{
    m_pTarget->m_uLength = m_uLength;
    m_uCapacity = 0;
}

} // namespace VLK::Strings
