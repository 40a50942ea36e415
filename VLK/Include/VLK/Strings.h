#ifndef VLK_STRINGS_H
#define VLK_STRINGS_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "VLK/Export.h"

/// The foundation's strings. Views (CSubStringRef, CStringRef) own nothing; CStringVar owns its text, and TString<N>
/// is one with room for N + 7 characters inside the object. One object belongs to one thread at a time.
namespace VLK {

namespace Misc {
/// Marker: assigning it empties a string and makes a handle forget.
struct CNull {};
} // namespace Misc
namespace Language_Support {
class CLanguageStrg;
}
namespace Output_Streams {
class CFormatStream;
}
namespace Internals {
class CFormatResortBuffer;
class CStringStreamBuffer;
} // namespace Internals

namespace Strings {

class CStringRef;
class CStringVar;
class CStringRefPtr;
class CStringVarPtr;
class CSubStringVar;

/// Read-only view of characters that others own; not necessarily terminated, but the byte behind the last one must be
/// readable (of any literal, any C string, any slice of one, it is). The universal text argument of the foundation.
class VLK_API CSubStringRef {
public:
    static constexpr std::size_t POSERR = ~std::size_t{0}; ///< what every search returns that finds nothing
    static constexpr int IGNORE_CASE = 1;                  ///< for the last argument of Compare
    static constexpr char const * PATH_SLASH = "\\";
    static constexpr char const * PATH_SEPARATOR = ";";

    constexpr CSubStringRef() noexcept : m_pData(""), m_uLength(0) {}
    /// text may be null: an empty view.
    constexpr CSubStringRef(char const * text) noexcept
        : m_pData(text != nullptr ? text : ""), m_uLength(text != nullptr ? std::string_view(text).size() : 0)
    {
    }
    constexpr CSubStringRef(char const * text, std::size_t length) noexcept
        : m_pData(text != nullptr ? text : ""), m_uLength(text != nullptr ? length : 0)
    {
    }
    CSubStringRef(std::string const & text) noexcept : m_pData(text.c_str()), m_uLength(text.size()) {}
    constexpr CSubStringRef(CSubStringRef const &) noexcept = default;
    CSubStringRef & operator=(CSubStringRef const &) noexcept = default;
    constexpr virtual ~CSubStringRef() = default;

    char const * data() const noexcept { return m_pData; }
    std::size_t size() const noexcept { return m_uLength; }
    std::size_t Length() const noexcept { return m_uLength; }
    std::string_view View() const noexcept { return {m_pData, m_uLength}; }
    /// No check of the position.
    char const & operator[](std::size_t pos) const noexcept { return m_pData[pos]; }

    /// Slice, clamped: a pos beyond the length gives an empty slice at the start, len is cut to what remains.
    CSubStringRef operator()(std::size_t pos) const noexcept { return (*this)(pos, POSERR); }
    CSubStringRef operator()(std::size_t pos, std::size_t len) const noexcept;

    /// Below 0, 0, above 0. By lengths: where all is equal so far the longer is greater. Letter case of the C locale.
    int Compare(CSubStringRef const & other, int ignoreCase = 0) const noexcept;
    /// Over this length; then 1 if the other text goes on (this one is the shorter!), else 0.
    int Compare(char const * other, int ignoreCase = 0) const noexcept;
    /// At most n characters, no more than either has; n of 0 or above this length means this length.
    int Compare(std::size_t n, CSubStringRef const & other, int ignoreCase = 0) const noexcept;
    int Compare(std::size_t n, char const * other, int ignoreCase = 0) const noexcept;

    /// Up to the NUL in both, whatever the lengths say. With spans that end elsewhere this and != may both be false.
    bool operator==(CSubStringRef const & other) const noexcept { return std::strcmp(m_pData, other.m_pData) == 0; }
    /// By lengths and bytes.
    bool operator!=(CSubStringRef const & other) const noexcept
    {
        return m_uLength != other.m_uLength || std::memcmp(m_pData, other.m_pData, m_uLength) != 0;
    }
    bool operator==(char const * other) const noexcept;
    bool operator!=(char const * other) const noexcept { return !(*this == other); }
    bool operator==(char c) const noexcept { return m_uLength == 1 && m_pData[0] == c; }
    bool operator!=(char c) const noexcept { return !(*this == c); }
    bool operator<(CSubStringRef const & other) const noexcept { return Compare(other) < 0; }
    bool operator<=(CSubStringRef const & other) const noexcept { return Compare(other) <= 0; }
    bool operator>(CSubStringRef const & other) const noexcept { return Compare(other) > 0; }
    bool operator>=(CSubStringRef const & other) const noexcept { return Compare(other) >= 0; }

    /// Offset of the first occurrence at or behind `from`, or POSERR. Where both texts are terminated at their
    /// lengths the search ends at the first NUL.
    std::size_t Find(CSubStringRef const & text, std::size_t from = 0) const noexcept;
    std::size_t Find(char const * text, std::size_t from = 0) const noexcept;
    /// from must not be beyond the length.
    std::size_t Find(int c, std::size_t from = 0) const noexcept;
    /// From the last character back to `from` inclusive.
    std::size_t FindLast(int c, std::size_t from = 0) const noexcept;
    /// Offset of the first character that is not in set; POSERR if there is none, or text or set are empty.
    std::size_t SpanExcluding(char const * set) const noexcept;
    /// Offset of the first character that is in set; POSERR as above.
    std::size_t SpanIncluding(char const * set) const noexcept;

    /// Characters of UTF-8 text, POSERR if it is none. Only the form of the sequences is looked at.
    std::size_t UTF8Length() const noexcept;
    /// Bytes that this native text needs at most as UTF-8, by the ANSI code page.
    std::size_t UTF8BufferSize() const noexcept;

    /// Copy in one heap block; the caller owns it. Raises "Out of memory".
    CStringRefPtr Dup() const;
    /// Copy with room for max(room, length) characters before it grows. Raises "Out of memory".
    CStringVarPtr Dup(std::size_t room) const;

protected:
    bool IsTerminated() const noexcept { return m_pData[m_uLength] == '\0'; }

    char const * m_pData; ///< never null
    std::size_t m_uLength;
};

/// View of a NUL-terminated text, such as a literal. Its comparisons and Find go by the NUL.
class VLK_API CStringRef : public CSubStringRef {
public:
    constexpr CStringRef(char const * text, std::size_t length) noexcept : CSubStringRef(text, length) {}
    constexpr CStringRef(CStringRef const &) noexcept = default;
    CStringRef & operator=(CStringRef const &) noexcept = default;
    constexpr ~CStringRef() override = default;

    operator char const *() const noexcept { return m_pData; }
    char const * C_Str() const noexcept { return m_pData; }

    using CSubStringRef::Compare;
    /// -1, 0 or 1 by unsigned bytes up to the NUL; with ignoreCase the difference of the folded letters.
    int Compare(CStringRef const & other, int ignoreCase = 0) const noexcept
    {
        return Compare(other.m_pData, ignoreCase);
    }
    int Compare(char const * other, int ignoreCase = 0) const noexcept;
    /// n of 0 or above the length means the length.
    int Compare(std::size_t n, CStringRef const & other, int ignoreCase = 0) const noexcept
    {
        return Compare(n, other.m_pData, ignoreCase);
    }
    int Compare(std::size_t n, char const * other, int ignoreCase = 0) const noexcept;

    using CSubStringRef::Find;
    std::size_t Find(CStringRef const & text, std::size_t from = 0) const noexcept { return Find(text.m_pData, from); }
    std::size_t Find(char const * text, std::size_t from = 0) const noexcept;

    using CSubStringRef::operator<;
    using CSubStringRef::operator<=;
    using CSubStringRef::operator>;
    using CSubStringRef::operator>=;
    bool operator<(CStringRef const & other) const noexcept { return std::strcmp(m_pData, other.m_pData) < 0; }
    bool operator<=(CStringRef const & other) const noexcept { return std::strcmp(m_pData, other.m_pData) <= 0; }
    bool operator>(CStringRef const & other) const noexcept { return std::strcmp(m_pData, other.m_pData) > 0; }
    bool operator>=(CStringRef const & other) const noexcept { return std::strcmp(m_pData, other.m_pData) >= 0; }
    bool operator<(char const * other) const noexcept { return Compare(other) < 0; }
    bool operator<=(char const * other) const noexcept { return Compare(other) <= 0; }
    bool operator>(char const * other) const noexcept { return Compare(other) > 0; }
    bool operator>=(char const * other) const noexcept { return Compare(other) >= 0; }
};

extern VLK_API CStringRef const _TEmpty; ///< ""
extern VLK_API CStringRef const _TBlank; ///< " "
extern VLK_API CStringRef const _TNL;    ///< "\n"
extern VLK_API CStringRef const _TFNL;   ///< "\r\n"

/// Text that owns its storage and grows. A text is in one of four states: inside the object; in a heap block; a
/// reference to somebody's constant text (capacity 0; appending drops the text, assigning replaces it); or, for
/// CStringAlias only, in the storage of another string. Terminated in all states, except between Lock and Unlock and
/// after FreeExtra. The operations that grow raise "Out of memory", or "Max count reached" for a string that has
/// outgrown 64 MiB; the text is unchanged then, or empty if it was a heap block that couldn't be enlarged.
class VLK_API CStringVar : public CStringRef {
public:
    CStringVar() noexcept : CStringVar(BaseRoom) {}
    CStringVar(CStringVar const &) = delete;
    ~CStringVar() override
    {
        if (m_uCapacity != 0 && m_pData != m_Inline) FreeBlock();
    }

    /// Replace the content. The source may lie inside this string.
    CStringVar & operator=(CStringVar const & text) { return Assign(text.data(), text.size()); }
    CStringVar & operator=(CStringRef const & text) { return Assign(text.data(), text.size()); }
    CStringVar & operator=(CSubStringRef const & text) { return Assign(text.data(), text.size()); }
    CStringVar & operator=(char const * text);
    CStringVar & operator=(std::string const & text) { return Assign(text.data(), text.size()); }
    CStringVar & operator=(char c); ///< NUL empties
    CStringVar & operator=(Misc::CNull);
    CStringVar & operator=(Language_Support::CLanguageStrg const & text);
    /// The resorted text, see CFormatResortBuffer::PutInOrder.
    CStringVar & operator=(Internals::CFormatResortBuffer & text);

    /// Append. A text that is too long for the room and holds a NUL is appended up to that NUL.
    CStringVar & operator+=(CSubStringRef const & text);
    CStringVar & operator+=(char const * text);
    CStringVar & operator+=(char c);
    CStringVar & operator+=(Language_Support::CLanguageStrg const & text);
    CStringVar & operator+=(Internals::CFormatResortBuffer & text);
    CStringVar & operator<<(CSubStringRef const & text) { return *this += text; }
    CStringVar & operator<<(char const * text); ///< null is ignored
    CStringVar & operator<<(char c) { return *this += c; }
    CStringVar & operator<<(std::string const & text) { return *this += CSubStringRef(text); }
    CStringVar & operator<<(Language_Support::CLanguageStrg const & text) { return *this += text; }
    CStringVar & operator<<(Internals::CFormatResortBuffer & text) { return *this += text; }
    /// At most n characters of a C string; 0 means all.
    CStringVar & Cat(char const * text, std::size_t n);

    /// Shortens to n characters. Nothing happens in the reference state or if the text is shorter.
    void Cut(std::size_t n) noexcept;

    using CStringRef::operator();
    /// Writable spans, not clamped: the caller keeps them inside the text.
    CSubStringVar operator()(std::size_t pos) noexcept;
    CSubStringVar operator()(std::size_t pos, std::size_t len) noexcept;
    using CStringRef::operator[];
    /// No check of the position. Not for writing in the reference state.
    char & operator[](int pos) noexcept { return Data()[pos]; }
    char & operator[](unsigned int pos) noexcept { return Data()[pos]; }
    char & operator[](long long pos) noexcept { return Data()[pos]; }
    char & operator[](std::size_t pos) noexcept { return Data()[pos]; }

    /// For direct writing: the place behind the text, with room for at least n characters; clear not 0 empties the
    /// text first. Follow it with Unlock. Null if the room can't be had on a thread with throwing disabled.
    char * Lock(std::size_t n, unsigned int clear);
    /// Sets the length to n, 0 for "measure it". Neither Lock nor Unlock terminates.
    void Unlock(std::size_t n) noexcept;

    /// Characters that fit without growing; 0 in the reference state.
    std::size_t Capacity() const noexcept { return m_uCapacity; }
    /// Gives back heap room of more than 15 characters, or the whole block where the text fits into the object; in
    /// that last case the text isn't terminated afterwards.
    void FreeExtra();
    /// Overwrites the first n characters with c; the text grows to n if it was shorter, and never shrinks. POSERR: all.
    void Set(char c, std::size_t n = POSERR);
    /// From the offset to the end; letters of the C locale.
    void ToLower(std::size_t from = 0);
    void ToUpper(std::size_t from = 0);
    /// Every "/" becomes "\\".
    void FixSlashes();

    /// Replace the content by the UTF-8 encoding, up to the first NUL. Bytes from 0x80 on are taken with their sign
    /// and come out as four bytes that begin with 0xF7, 0xBF: only 7-bit text survives unchanged. A source inside this
    /// string is appended.
    CStringVar & CopyAsUTF8(CSubStringRef const & text);
    /// Surrogate pairs aren't combined: the high one vanishes, the low one is encoded as its ten bits.
    CStringVar & CopyAsUTF8(wchar_t const * text);
    /// Replaces the content by the decoded text; the caller provides the room, text.size() characters at most. Only
    /// code points up to U+00FF come through: anything else raises "String is not UTF8 encoded", and the content stays.
    unsigned int CopyFromUTF8(CSubStringRef const & text);

    /// Appends formatted output. The format text is copied. See CFormatStream (include VLK/FormatStream.h).
    Output_Streams::CFormatStream Format(char const * format);

    /// Hands the text out: a heap block itself, this string being empty then; else a copy. The receiver frees it with
    /// free(). Null if memory can't be had on a thread with throwing disabled.
    void operator>>(char *& out);
    /// A heap block moves over, this string being empty then; else the target gets a copy.
    void operator>>(CStringVar & target);

protected:
    static constexpr std::size_t BaseRoom = 7; ///< inline capacity of the smallest string
    static constexpr std::size_t BlockStep = 16;

    /// Empty, inside the object; the object has room for that many characters and the NUL.
    explicit CStringVar(std::size_t inlineCapacity) noexcept : CStringRef(m_Inline, 0), m_uCapacity(inlineCapacity)
    {
        m_Inline[0] = '\0';
    }

    /// Constructor's work for an object with `extra` bytes of room behind the inline buffer: a terminated text is
    /// taken by reference, another one is copied.
    void InitWith(CSubStringRef const & text, std::size_t extra);
    void InitWith(Language_Support::CLanguageStrg const & text, std::size_t extra);

    /// Makes room for `need` more characters. The only place where a string grows. URET_OK, or URET_Error on a
    /// thread with throwing disabled.
    unsigned int Alloc(std::size_t need) { return HasRoom(need) ? 1 : Grow(need); }
    /// Whether Alloc has nothing to do.
    bool HasRoom(std::size_t need) const noexcept
    {
        return m_uCapacity - 1 < MaxCapacity && need <= m_uCapacity - m_uLength && !MayFallBack(need);
    }
    /// Appends a C string, at most n characters; n = 0 means all. src may lie inside this string.
    unsigned int AllocCopy(char const * src, std::size_t n);
    /// Appends exactly n bytes. src may lie inside this string.
    unsigned int Append(char const * src, std::size_t n);
    CStringVar & Assign(char const * src, std::size_t n);

    bool IsReference() const noexcept { return m_uCapacity == 0; }
    bool IsHeap() const noexcept { return m_uCapacity != 0 && m_pData != m_Inline && SavedCapacity() != 0; }
    bool IsOwn(char const * p) const noexcept { return !IsReference() && p >= m_pData && p <= m_pData + m_uCapacity; }
    char * Data() noexcept { return const_cast<char *>(m_pData); }
    void SetLength(std::size_t n) noexcept
    {
        m_uLength = n;
        Data()[n] = '\0';
    }

    friend class CStringAlias;
    friend class CSubStringVar;
    friend class Internals::CStringStreamBuffer;

    std::size_t SavedCapacity() const noexcept
    {
        std::size_t saved;
        std::memcpy(&saved, m_Inline, sizeof saved);
        return saved;
    }
    void SaveCapacity(std::size_t inlineCapacity) noexcept
    {
        std::memcpy(m_Inline, &inlineCapacity, sizeof inlineCapacity);
    }

    static constexpr std::size_t MaxCapacity = 0x4000000;

    std::size_t m_uCapacity;
    char m_Inline[8]; ///< goes on in the derived object's room; holds the inline capacity in the other states

private:
    bool MayFallBack(std::size_t need) const noexcept
    {
        return m_uLength == 0 && m_pData != m_Inline && need <= SavedCapacity();
    }
    unsigned int Grow(std::size_t need);
    unsigned int GrowFromInline(std::size_t newSize);
    unsigned int GrowBlock(std::size_t newSize);
    unsigned int GrowTarget(std::size_t need);
    std::size_t NewSize(std::size_t need) const noexcept;
    void ReturnInline() noexcept;
    void DropReference() noexcept;
    /// Leaves the reference state with the text kept.
    unsigned int OwnText();
    void ResetToInline(std::size_t inlineCapacity) noexcept;
    void FreeBlock() noexcept;
};

/// String with room for N + 7 characters inside the object.
template <unsigned int N>
class TString : public CStringVar {
public:
    TString() noexcept : CStringVar(N + BaseRoom) { EndRoom(); }
    /// A terminated text is taken by reference and must outlive this string or its next change.
    TString(CSubStringRef const & text) : CStringVar(N + BaseRoom)
    {
        EndRoom();
        InitWith(text, N);
    }
    TString(char const * text) : TString(CSubStringRef(text)) {}
    TString(Language_Support::CLanguageStrg const & text) : CStringVar(N + BaseRoom)
    {
        EndRoom();
        InitWith(text, N);
    }
    /// Copies own their text.
    TString(TString const & other) : TString() { Assign(other.data(), other.size()); }
    ~TString() override = default;

    CStringVar & operator=(TString const & text) { return Assign(text.data(), text.size()); }
    CStringVar & operator=(CStringVar const & text) { return CStringVar::operator=(text); }
    CStringVar & operator=(CStringRef const & text) { return CStringVar::operator=(text); }
    CStringVar & operator=(CSubStringRef const & text) { return CStringVar::operator=(text); }
    CStringVar & operator=(char const * text) { return CStringVar::operator=(text); }
    CStringVar & operator=(std::string const & text) { return CStringVar::operator=(text); }
    CStringVar & operator=(char c) { return CStringVar::operator=(c); }
    CStringVar & operator=(Misc::CNull none) { return CStringVar::operator=(none); }
    CStringVar & operator=(Language_Support::CLanguageStrg const & text) { return CStringVar::operator=(text); }
    CStringVar & operator=(Internals::CFormatResortBuffer & text) { return CStringVar::operator=(text); }

private:
    // The last byte only ever holds a terminator, so that a reader of an unterminated text stops inside the object.
    void EndRoom() noexcept { m_Room[N - 1] = '\0'; }

    char m_Room[N];
};

/// A CStringVar that can be constructed from a text and copied.
class VLK_API CStringEx : public CStringVar {
public:
    CStringEx() noexcept = default;
    /// Copies own their text.
    CStringEx(CStringEx const & other) : CStringVar() { Assign(other.data(), other.size()); }
    /// A terminated text is taken by reference and must outlive this string or its next change.
    CStringEx(CSubStringRef const & text) { InitWith(text, 0); }
    CStringEx(char const * text) : CStringEx(CSubStringRef(text)) {}
    ~CStringEx() override = default;
    CStringEx & operator=(CStringEx const & text)
    {
        Assign(text.data(), text.size());
        return *this;
    }
    using CStringVar::operator=;
    using CStringVar::operator+=;
};

/// Stands for another string: works on its storage, and gives the text back at its end. The target is empty meanwhile
/// and must not be used; it must outlive the alias.
class VLK_API CStringAlias : public CStringVar {
public:
    explicit CStringAlias(CStringVar & target);
    ~CStringAlias() override;
    CStringAlias(CStringAlias const &) = delete;

private:
    CStringAlias & operator=(CStringAlias const &) = delete;
    friend class CStringVar;

    CStringVar * m_pTarget;
};

/// Writable span of a CStringVar: assigning to it replaces that part of the owner. Its own length stays what it was,
/// so after an assignment of another length it covers another part. The owner must outlive it, and must not change
/// by other means while the span is used.
class VLK_API CSubStringVar : public CSubStringRef {
public:
    CSubStringVar(CStringVar & owner, char const * start, std::size_t length) noexcept
        : CSubStringRef(start, length), m_pOwner(&owner)
    {
    }
    CSubStringVar(CSubStringVar const &) noexcept = default;
    ~CSubStringVar() override = default;

    CSubStringVar & operator=(CSubStringVar const & text) { return Replace(text); }
    CSubStringVar & operator=(CStringRef const & text) { return Replace(text); }
    CSubStringVar & operator=(CStringVar const & text) { return Replace(text); }
    CSubStringVar & operator=(CSubStringRef const & text) { return Replace(text); }
    CSubStringVar & operator=(char const * text) { return Replace(CSubStringRef(text)); }
    CSubStringVar & operator=(char c) { return Replace(CSubStringRef(&c, 1)); }
    CSubStringVar & operator=(Misc::CNull) { return Replace(CSubStringRef()); }

    /// Resizes this part of the owner to n characters, POSERR for the span's length, and fills it with c.
    unsigned int Set(char c, std::size_t n = POSERR);
    /// Up to the first NUL in the span; letters of the C locale.
    void ToLower();
    void ToUpper();
    void FixSlashes();

private:
    CSubStringVar & Replace(CSubStringRef const & text)
    {
        InsertReplace(text.data(), text.size());
        return *this;
    }
    unsigned int InsertReplace(char const * src, std::size_t n);
    /// Makes the part n characters long, content undefined. Null if that fails with throwing disabled.
    char * Resize(std::size_t n);
    unsigned int OwnText();

    CStringVar * m_pOwner;
};

/// Owns a string on the heap; its destructor deletes it.
template <class TStringType>
class TStringPtr {
public:
    TStringPtr() noexcept = default;
    explicit TStringPtr(TStringType * string) noexcept : m_pString(string) {}
    TStringPtr(TStringPtr && other) noexcept : m_pString(other.m_pString) { other.m_pString = nullptr; }
    TStringPtr & operator=(TStringPtr && other) noexcept
    {
        TStringType * const string = other.m_pString;
        other.m_pString = nullptr;
        Delete();
        m_pString = string;
        return *this;
    }
    TStringPtr(TStringPtr const &) = delete;
    TStringPtr & operator=(TStringPtr const &) = delete;
    ~TStringPtr() { Delete(); }
    /// Forgets the string without deleting it.
    TStringPtr & operator=(Misc::CNull) noexcept
    {
        m_pString = nullptr;
        return *this;
    }

    void Delete() noexcept
    {
        delete m_pString;
        m_pString = nullptr;
    }
    /// Gives the string away; the caller deletes it. Not on an empty handle.
    TStringType & Release() noexcept
    {
        TStringType & string = *m_pString;
        m_pString = nullptr;
        return string;
    }
    bool IsValid() const noexcept { return m_pString != nullptr; }
    operator TStringType *() const noexcept { return m_pString; }
    TStringType * operator->() const noexcept { return m_pString; }

private:
    TStringType * m_pString = nullptr;
};

class VLK_API CStringRefPtr : public TStringPtr<CStringRef> {
public:
    using TStringPtr::TStringPtr;
    using TStringPtr::operator=;
};

class VLK_API CStringVarPtr : public TStringPtr<CStringVar> {
public:
    using TStringPtr::TStringPtr;
    using TStringPtr::operator=;
};

inline CSubStringVar CStringVar::operator()(std::size_t pos) noexcept
{
    return {*this, m_pData + pos, m_uLength - pos};
}
inline CSubStringVar CStringVar::operator()(std::size_t pos, std::size_t len) noexcept
{
    return {*this, m_pData + pos, len};
}

/// Replace out by the UTF-8 encoding of the text, by the rules of CStringVar::CopyAsUTF8. Raise "Out of memory".
VLK_API void ToUTF8(std::string const & text, std::string & out);
VLK_API void ToUTF8(wchar_t const * text, std::string & out);
/// Characters of UTF-8 text, or CSubStringRef::POSERR.
VLK_API std::size_t UTF8length(std::string const & text) noexcept;

/// The elements from `first` on, one behind the other. Raises "Out of memory".
VLK_API std::string joinString(std::vector<std::string> const & parts, std::size_t first);
/// The parts between the separator characters; several separators in a row count as one. Raise "Out of memory".
VLK_API std::vector<std::string> tokenizeString(std::string const & text, char const * separators);
VLK_API std::vector<std::string> tokenizeString(char const * text, char const * separators);

/// Appends a hexadecimal dump, two digits a byte. Where it takes more than one line, each begins with its offsets.
/// bytesPerLine 0: all on one line.
VLK_API void ByteStreamAppend(char const * data, std::size_t size, std::stringstream & out, std::size_t bytesPerLine);

} // namespace Strings
} // namespace VLK

#endif
