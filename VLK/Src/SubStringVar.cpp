#include <algorithm>

#include "CaseRules.h"
#include "Memory.h"
#include "VLK/ResultCodes.h"
#include "VLK/Strings.h"

namespace VLK::Strings {

unsigned int CSubStringVar::OwnText()
{
    if (!m_pOwner->IsReference()) return URET_OK;
    std::size_t const offset = static_cast<std::size_t>(m_pData - m_pOwner->m_pData);
    unsigned int const result = m_pOwner->OwnText();
    m_pData = m_pOwner->m_pData + std::min(offset, m_pOwner->m_uLength);
    return result;
}

char * CSubStringVar::Resize(std::size_t n)
{
    CStringVar & owner = *m_pOwner;
    if (OwnText() == URET_Error) return nullptr;
    // A span that was made for another text of the owner must not reach beyond the present one.
    std::size_t const offset = std::min(static_cast<std::size_t>(m_pData - owner.m_pData), owner.m_uLength);
    std::size_t const present = std::min(m_uLength, owner.m_uLength - offset);
    if (n > present && n - present > owner.m_uCapacity - owner.m_uLength) {
        std::size_t const need = Internals::SaturatedSum(owner.m_uLength, n - present);
        if (owner.Alloc(need) == URET_Error) return nullptr;
    }
    char * const start = owner.Data() + offset;
    std::memmove(start + n, start + present, owner.m_uLength - offset - present + 1);
    owner.m_uLength = owner.m_uLength - present + n;
    m_pData = start;
    return start;
}

unsigned int CSubStringVar::InsertReplace(char const * src, std::size_t n)
{
    if (n != 0 && m_pOwner->IsOwn(src)) {
        TString<256> copy;
        if (copy.Append(src, n) == URET_Error) return URET_Error;
        return InsertReplace(copy.data(), n);
    }
    char * const start = Resize(n);
    if (start == nullptr) return URET_Error;
    std::memcpy(start, src, n);
    return URET_OK;
}

unsigned int CSubStringVar::Set(char c, std::size_t n)
{
    if (n == POSERR) n = m_uLength;
    char * const start = Resize(n);
    if (start == nullptr) return URET_Error;
    std::memset(start, c, n);
    return URET_OK;
}

void CSubStringVar::ToLower()
{
    if (OwnText() != URET_Error) Internals::LowerText(const_cast<char *>(m_pData), m_uLength);
}

void CSubStringVar::ToUpper()
{
    if (OwnText() != URET_Error) Internals::UpperText(const_cast<char *>(m_pData), m_uLength);
}

void CSubStringVar::FixSlashes()
{
    if (OwnText() == URET_Error) return;
    char * const text = const_cast<char *>(m_pData);
    std::replace(text, text + m_uLength, '/', '\\');
}

} // namespace VLK::Strings
