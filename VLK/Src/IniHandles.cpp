#include <algorithm>
#include <boost/format.hpp>
#include <cstring>

#include "IniEntries.h"
#include "IniNumber.h"
#include "VLK/Exceptions.h"
#include "VLK/IniFile.h"
#include "VLK/ThrowState.h"
#include "VLK/Trace.h"

namespace VLK::INI_Files {

using Exceptions::CThrowState;
using Internals::FormatNumber;
using Internals::ParseNumber;
using Strings::CStringVar;
using Strings::CSubStringRef;

namespace {

void RaiseBadHandle()
{
    CThrowState state;
    VLK_RAISE(state, Errors::PreviousCall);
}

std::string KeyText(CSubStringRef const & name)
{
    return "Key=" + std::string(name.View());
}

/// These raises give the message only: their form of prepareThrow doesn't store the code.
[[noreturn]] void RaiseBadCharacter(CSubStringRef const & name)
{
    CThrowState state;
    Exceptions::Raise(
        state.StartException(__LINE__).prepareThrow(Errors::BadCharacter, boost::format("%s") % KeyText(name)));
}

void AssignText(CStringVar & target, CSubStringRef const & text)
{
    target = text;
}

void AssignText(std::string & target, CSubStringRef const & text)
{
    target.assign(text.data(), text.size());
}

template <class T>
void ClearTarget(T & target)
{
    target = T();
}

void ClearTarget(CStringVar & target)
{
    target = Misc::CNull();
}

void ClearTarget(CIniList & target)
{
    target.Clear();
}

} // namespace

// Sections

void CIniSection::CheckHandle() const
{
    if (m_pSection == nullptr) RaiseBadHandle();
}

unsigned int CIniSection::Name(CStringVar & out) const
{
    CThrowState state;
    try {
        CheckHandle();
        out = CSubStringRef(m_pSection->text, m_pSection->length);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CIniSection::Name(std::string & out) const
{
    CThrowState state;
    try {
        CheckHandle();
        out.assign(m_pSection->text, m_pSection->length);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

std::size_t CIniSection::Count() const
{
    CThrowState state;
    try {
        CheckHandle();
        return m_pSection->keys->count;
    }
    VLK_THROW_NEXT(state)
}

CIniKey CIniSection::First() const
{
    CThrowState state;
    try {
        CheckHandle();
        return CIniKey(m_pFile, m_pSection, m_pSection->keys->head);
    }
    VLK_THROW_NEXT_AS(state, CIniKey())
}

CIniKey CIniSection::End() const
{
    CThrowState state;
    try {
        CheckHandle();
        return CIniKey(m_pFile, m_pSection, nullptr);
    }
    VLK_THROW_NEXT_AS(state, CIniKey())
}

CIniSection CIniSection::operator++(int)
{
    CThrowState state;
    try {
        CheckHandle();
        CIniSection const former = *this;
        m_pSection = m_pSection->next;
        return former;
    }
    VLK_THROW_NEXT_AS(state, CIniSection())
}

unsigned int CIniSection::Remove()
{
    CThrowState state;
    try {
        CheckHandle();
        m_pFile->RemoveSection(m_pSection);
        m_pSection = nullptr;
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

CIniKey CIniSection::operator[](CSubStringRef const & name) const
{
    CThrowState state;
    try {
        CheckHandle();
        Internals::INI_KEY * key = Internals::CIniFile_::FindKey(*m_pSection, name);
        if (key == nullptr) {
            key = m_pFile->AddKey(*m_pSection, name.size() + 2, name.size(), 0);
            std::memcpy(key->text, name.data(), name.size());
            key->text[name.size()] = key->text[name.size() + 1] = '\0';
        }
        return CIniKey(m_pFile, m_pSection, key);
    }
    VLK_THROW_NEXT_AS(state, CIniKey())
}

// Keys

void CIniKey::CheckHandle() const
{
    if (m_pKey == nullptr) RaiseBadHandle();
}

CSubStringRef CIniKey::NameView() const noexcept
{
    return {m_pKey->text, m_pKey->length};
}

CSubStringRef CIniKey::Values() const noexcept
{
    char const * const values = m_pKey->text + m_pKey->length + 1;
    return {values, std::strcspn(values, "\t")};
}

unsigned int CIniKey::Name(CStringVar & out) const
{
    CThrowState state;
    try {
        CheckHandle();
        out = NameView();
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CIniKey::Name(std::string & out) const
{
    CThrowState state;
    try {
        CheckHandle();
        AssignText(out, NameView());
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

std::size_t CIniKey::Count() const
{
    CThrowState state;
    try {
        CheckHandle();
        return m_pKey->count;
    }
    VLK_THROW_NEXT(state)
}

CIniKey CIniKey::operator++(int)
{
    CThrowState state;
    try {
        CheckHandle();
        CIniKey const former = *this;
        m_pKey = m_pKey->next;
        return former;
    }
    VLK_THROW_NEXT_AS(state, CIniKey())
}

CIniKey & CIniKey::Hex()
{
    CThrowState state;
    try {
        CheckHandle();
        m_uRadix = 16;
        return *this;
    }
    VLK_THROW_NEXT_AS(state, *this)
}

CIniKey & CIniKey::ImpSet()
{
    CThrowState state;
    try {
        CheckHandle();
        m_bImpSet = true;
        return *this;
    }
    VLK_THROW_NEXT_AS(state, *this)
}

unsigned int CIniKey::Remove()
{
    CThrowState state;
    try {
        CheckHandle();
        m_pFile->RemoveKey(*m_pSection, m_pKey);
        m_pKey = nullptr;
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

void CIniKey::CheckScalar() const
{
    if (m_pKey->count <= 1) return;
    VLK_TRACE(TraceErrors, "Key=%s is a list ini file", NameView());
    CThrowState state;
    Exceptions::Raise(
        state.StartException(__LINE__).prepareThrow(Errors::IniKeyIsList, boost::format("%s") % KeyText(NameView())));
}

template <class T, class TRead>
unsigned int CIniKey::Get(T & value, TRead const & read) const
{
    CThrowState state;
    try {
        CheckHandle();
        if (m_pKey->count == 0) {
            VLK_TRACE(TraceErrors, "Key=%s was not found in ini file", NameView());
            ClearTarget(value);
            VLK_RAISE_TEXT(state, Errors::IniKeyNotFound, "Key=%s", NameView());
        }
        read();
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

template <class T, class TDefault, class TRead>
unsigned int CIniKey::GetOr(T & value, TDefault const & standard, TRead const & read)
{
    CThrowState state;
    try {
        CheckHandle();
        if (m_pKey->count != 0) {
            read();
            return URET_OK;
        }
        value = standard;
        return m_bImpSet ? SetValue(standard) : URET_OK;
    }
    VLK_THROW_NEXT(state)
}

template <class T>
unsigned int CIniKey::GetNumber(T & value) const
{
    return Get(value, [&] {
        CheckScalar();
        T number{};
        if (!ParseNumber(Values(), number)) RaiseBadCharacter(NameView());
        value = number;
    });
}

template <class T>
unsigned int CIniKey::SetNumber(T value)
{
    CThrowState state;
    try {
        CheckHandle();
        m_pFile->ReplaceValue(*m_pKey, FormatNumber(value, m_uRadix), 1);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CIniKey::GetValue(int & value) const
{
    return GetNumber(value);
}

unsigned int CIniKey::GetValue(unsigned int & value) const
{
    return GetNumber(value);
}

unsigned int CIniKey::GetValue(long long & value) const
{
    return GetNumber(value);
}

unsigned int CIniKey::GetValue(unsigned long long & value) const
{
    return GetNumber(value);
}

unsigned int CIniKey::GetValue(CStringVar & value) const
{
    return Get(value, [&] {
        CheckScalar();
        AssignText(value, Values());
    });
}

unsigned int CIniKey::GetValue(std::string & value) const
{
    return Get(value, [&] {
        CheckScalar();
        AssignText(value, Values());
    });
}

unsigned int CIniKey::GetValue(CIniList & value) const
{
    return Get(value, [&] { ReadList(value); });
}

void CIniKey::ReadList(CIniList & value) const
{
    value.Assign(Values(), m_pKey->count);
}

unsigned int CIniKey::GetValue(int & value, int standard)
{
    return GetOr(value, standard, [&] { GetNumber(value); });
}

unsigned int CIniKey::GetValue(unsigned int & value, unsigned int standard)
{
    return GetOr(value, standard, [&] { GetNumber(value); });
}

unsigned int CIniKey::GetValue(long long & value, long long standard)
{
    return GetOr(value, standard, [&] { GetNumber(value); });
}

unsigned int CIniKey::GetValue(unsigned long long & value, unsigned long long standard)
{
    return GetOr(value, standard, [&] { GetNumber(value); });
}

unsigned int CIniKey::GetValue(CStringVar & value, CSubStringRef const & standard)
{
    return GetOr(value, standard, [&] { GetValue(value); });
}

unsigned int CIniKey::GetValue(std::string & value, std::string const & standard)
{
    return GetOr(value, standard, [&] { GetValue(value); });
}

unsigned int CIniKey::GetValue(CIniList & value, CIniList const & standard)
{
    return GetOr(value, standard, [&] { GetValue(value); });
}

unsigned int CIniKey::SetValue(int value)
{
    return SetNumber(value);
}

unsigned int CIniKey::SetValue(unsigned int value)
{
    return SetNumber(value);
}

unsigned int CIniKey::SetValue(long long value)
{
    return SetNumber(value);
}

unsigned int CIniKey::SetValue(unsigned long long value)
{
    return SetNumber(value);
}

unsigned int CIniKey::SetValue(CSubStringRef const & value)
{
    CThrowState state;
    try {
        CheckHandle();
        m_pFile->ReplaceValue(*m_pKey, value, 1);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CIniKey::SetValue(CIniList const & value)
{
    CThrowState state;
    try {
        CheckHandle();
        m_pFile->ReplaceValue(*m_pKey, value.m_Values, value.Count());
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

// Lists

void CIniList::Clear() noexcept
{
    m_nValues = 0;
    m_uIndex = 0;
    m_uOffset = NoOffset;
    m_Values.Cut(0);
}

void CIniList::Assign(CSubStringRef const & values, std::size_t count)
{
    m_Values = values;
    m_nValues = count;
    m_uIndex = 0;
    m_uOffset = 0;
}

void CIniList::Append(CSubStringRef const & value)
{
    if (m_nValues != 0) m_Values += '\n';
    m_Values += value;
    ++m_nValues;
    m_uIndex = m_nValues;
    m_uOffset = NoOffset;
}

/// Appends the text that `make` gives.
template <class TMake>
CIniList & CIniList::Add(TMake const & make)
{
    CThrowState state;
    std::size_t const former = m_Values.size();
    try {
        Append(make());
        return *this;
    } catch (...) {
        VLK_CONTINUE(state, log);
        // A text that couldn't be enlarged may be gone.
        if (m_Values.size() >= former)
            m_Values.Cut(former);
        else
            Clear();
        log.tryThrow();
        return *this;
    }
}

CIniList & CIniList::AddValue(CSubStringRef const & value)
{
    return Add([&] { return value; });
}

CIniList & CIniList::AddValue(int value)
{
    return Add([&] { return FormatNumber(value, m_uRadix); });
}

CIniList & CIniList::AddValue(unsigned int value)
{
    return Add([&] { return FormatNumber(value, m_uRadix); });
}

CIniList & CIniList::AddValue(long long value)
{
    return Add([&] { return FormatNumber(value, m_uRadix); });
}

CIniList & CIniList::AddValue(unsigned long long value)
{
    return Add([&] { return FormatNumber(value, m_uRadix); });
}

CIniList & CIniList::operator[](std::size_t index)
{
    CThrowState state;
    try {
        if (index >= m_nValues) VLK_RAISE(state, Errors::IndexOutOfBounds);
        if (m_uOffset == NoOffset || index < m_uIndex) {
            m_uIndex = 0;
            m_uOffset = 0;
        }
        for (; m_uIndex != index; ++m_uIndex) {
            std::size_t const end = m_Values.CSubStringRef::Find(static_cast<int>('\n'), m_uOffset);
            if (end == CSubStringRef::POSERR) VLK_RAISE(state, Errors::IndexOutOfBounds);
            m_uOffset = end + 1;
        }
        return *this;
    }
    VLK_THROW_NEXT_AS(state, *this)
}

/// The value at the cursor, which goes behind it.
CSubStringRef CIniList::Take()
{
    CThrowState state;
    if (m_uOffset == NoOffset) VLK_RAISE(state, Errors::IndexOutOfBounds);
    CSubStringRef const all = m_Values;
    std::size_t const start = m_uOffset;
    std::size_t const end = all.Find(static_cast<int>('\n'), start);
    ++m_uIndex;
    m_uOffset = end != CSubStringRef::POSERR ? end + 1 : NoOffset;
    return {all.data() + start, std::min(end, all.size()) - start};
}

template <class T>
unsigned int CIniList::GetNumber(T & value)
{
    CThrowState state;
    try {
        CSubStringRef const text = Take();
        T number{};
        if (!ParseNumber(text, number)) RaiseBadCharacter(text);
        value = number;
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CIniList::GetValue(int & value)
{
    return GetNumber(value);
}

unsigned int CIniList::GetValue(unsigned int & value)
{
    return GetNumber(value);
}

unsigned int CIniList::GetValue(long long & value)
{
    return GetNumber(value);
}

unsigned int CIniList::GetValue(unsigned long long & value)
{
    return GetNumber(value);
}

unsigned int CIniList::GetValue(CStringVar & value)
{
    CThrowState state;
    try {
        AssignText(value, Take());
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CIniList::GetValue(std::string & value)
{
    CThrowState state;
    try {
        AssignText(value, Take());
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

} // namespace VLK::INI_Files
