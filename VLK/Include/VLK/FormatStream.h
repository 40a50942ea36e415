#ifndef VLK_FORMAT_STREAM_H
#define VLK_FORMAT_STREAM_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "VLK/Export.h"
#include "VLK/Strings.h"

/// Formatted output. A buffer hands out a CFormatStream for a format text, each << fills the next placeholder, and the
/// stream's end writes what is left of the format: buffer.Format("%d of %d\n") << a << b;
///
/// Placeholder: "%", optional "!", optional alignment, optional width, up to five parameters, conversion character.
///   "%%"               one "%"
///   "!"                the field's further lines begin at the present column
///   "-c" "=c" "+c"     left, centred, right with fill character c; "0" right with zeros. Left and centre truncate.
///   width              digits, or "*": the next integer inserted
///   ".digits" ".*"     parameter
///   c C                character, upper case        d D   signed decimal, with "+"
///   x X o b            hexadecimal, octal, binary   s S   text, upper case
///   p P                pointer                      h H   hexadecimal dump; the width is the number of bytes at the
///   head
/// Values behind the last placeholder are appended. A wrong kind of value or a broken placeholder raises "Error during
/// stream output", except for buffers that keep silent (flag 1); the stream is dead from then on.
/// A stream and its buffer belong to one thread.
namespace VLK {

namespace Exceptions {
struct SOURCE_INFO;
class CErrorLog;
} // namespace Exceptions
namespace Language_Support {
class CLanguageStrg;
}
namespace Internals {
class CFormatResortBuffer;
}

namespace Output_Streams {

class CFormatStream;

namespace Base_Classes {

/// Where formatted text goes. Keeps the column on behalf of its streams.
class VLK_API CFormatStreamBuffer {
public:
    enum EFlags : unsigned int {
        FlagSilent = 1,    ///< a format error raises nothing
        FlagEndSignal = 2, ///< SignalFormatEnd is called when a stream ends
        FlagTrace = 4,
        FlagFieldSignal = 8 ///< SignalNewFormatField is called when a placeholder begins
    };

    virtual unsigned int Flush(unsigned int); ///< 1
    /// A stream on this buffer. The format text is copied; null is an empty one.
    virtual CFormatStream Format(char const * format);
    virtual ~CFormatStreamBuffer();
    /// Clears column, left margin and pending error. 1.
    virtual unsigned int Reset();
    /// Appends n bytes; upper not 0 turns what was appended to upper case.
    virtual unsigned int Write(char const * text, std::size_t n, unsigned int upper) = 0;
    virtual unsigned int Fill(int c, std::size_t n) = 0;
    virtual void SignalFormatEnd();
    virtual void SignalNewFormatField();
    /// A stream on this buffer was copied: one more end will be signalled.
    virtual void SignalFormatCopy();

    /// The column of the next character, the left margin at the start of a line.
    std::size_t GetColumn() const noexcept { return m_uColumn != 0 ? m_uColumn : m_uLeftMargin; }
    std::size_t GetLeftMargin() const noexcept { return m_uLeftMargin; }
    /// Returns the old one.
    std::size_t SetLeftMargin(std::size_t margin) noexcept;

    /// Records where the first format error was found, and leaves the inserter by a private exception. For sinks and
    /// streams. source: static data.
    [[noreturn]] void doThrow(Exceptions::SOURCE_INFO const & source);
    /// What becomes of a format error: raises "Error during stream output", or nothing with FlagSilent (or on a
    /// thread with throwing disabled). The stream stays dead until Reset.
    void Catch();

protected:
    explicit CFormatStreamBuffer(unsigned int flags) noexcept
        : m_uColumn(0), m_uLeftMargin(0), m_uFlags(flags), m_pError(nullptr)
    {
    }
    CFormatStreamBuffer(CFormatStreamBuffer const &) = default;
    CFormatStreamBuffer & operator=(CFormatStreamBuffer const &) = default;

    /// Upper-cases text in place, letters of the C locale. For Write.
    static void UpperCase(char * text, std::size_t n) noexcept;

    friend class Output_Streams::CFormatStream;

    std::size_t m_uColumn; ///< kept by the streams
    std::size_t m_uLeftMargin;
    unsigned int m_uFlags;
    Exceptions::SOURCE_INFO const * m_pError; ///< null while healthy
};

} // namespace Base_Classes

/// One format text on its way into a buffer. The buffer must outlive it. Copies write to the same buffer and begin
/// with the format anew.
class VLK_API CFormatStream {
public:
    using CBuffer = Base_Classes::CFormatStreamBuffer;

    CFormatStream(CBuffer & buffer, char const * format);
    CFormatStream(CFormatStream const & other);
    /// The former buffer sees this stream's end, without the rest of its format. Raises "Out of memory"; both streams
    /// are dead then.
    CFormatStream & operator=(CFormatStream const & other);
    /// Writes the rest of the format. Raises what writing raises, unless an exception is under way.
    virtual ~CFormatStream() noexcept(false);

    CFormatStream & operator<<(short value) { return Insert(static_cast<int>(value)); }
    CFormatStream & operator<<(unsigned short value) { return Insert(static_cast<unsigned int>(value)); }
    CFormatStream & operator<<(int value) { return Insert(value); }
    CFormatStream & operator<<(unsigned int value) { return Insert(value); }
    CFormatStream & operator<<(long value);
    CFormatStream & operator<<(unsigned long value);
    CFormatStream & operator<<(long long value) { return Insert(value); }
    CFormatStream & operator<<(unsigned long long value) { return Insert(value); }
    CFormatStream & operator<<(char const * text);
    CFormatStream & operator<<(void const * pointer);
    CFormatStream & operator<<(Strings::CSubStringRef const & text);
    CFormatStream & operator<<(std::string const & text);
    CFormatStream & operator<<(Language_Support::CLanguageStrg const & text);
    CFormatStream & operator<<(Internals::CFormatResortBuffer & text);
    /// Prints a record; defined beside CErrorLog.
    CFormatStream & operator<<(Exceptions::CErrorLog const & log);

    /// Chains: writes what is left of the present format as plain text and goes on with the next, which is not
    /// copied and must outlive the stream. An error in the middle of a placeholder.
    CFormatStream & operator>>(char const * nextFormat);

    /// See CFormatStreamBuffer.
    void Catch();
    [[noreturn]] void doThrow(Exceptions::SOURCE_INFO const & source);

    enum EParse : unsigned int {
        ValueConsumed = 2,    ///< it was a width or parameter; give the next value
        PlaceholderReady = 3, ///< print the value by the placeholder's fields
        NoPlaceholder = 4     ///< the format has run out: append the value
    };
    /// Parses up to and including the next placeholder; called by each inserter, with the value if it's an integer.
    unsigned int GetFormatParameters(unsigned int value, unsigned int isInteger);
    /// Places a value by the current field: margin, alignment, truncation. splitLines 0: newlines are ordinary. 1.
    unsigned int FormatedWrite(char const * text, std::size_t n, unsigned int splitLines);

protected:
    enum EType : unsigned int { TypeChar, TypeSigned, TypeUnsigned, TypePointer, TypeString, TypeHexDump };
    enum EAlignment : unsigned int { AlignNone, AlignLeft, AlignCentre, AlignRight };
    static constexpr unsigned int MaxParameters = 5;
    static constexpr std::size_t DigitRoom = 66;

    void FormatInt(int value) { PrintInt(value); }
    void FormatInt(unsigned int value) { PrintInt(value); }
    void FormatInt(long long value) { PrintInt(value); }
    void FormatInt(unsigned long long value) { PrintInt(value); }
    void FormatPointer(void const * pointer);
    void HexDump(unsigned char const * data, std::size_t size);
    /// Digits of a value by type, radix, sign and upper, from the end of the buffer; returns where they begin.
    char * UIntToString(std::uint32_t value, char (&buffer)[DigitRoom]);
    char * UIntToString(std::uint64_t value, char (&buffer)[DigitRoom]);
    void assignFields(CFormatStream const & other);

    /// Runs an inserter's work; a format error inside ends in Catch.
    template <class TWork>
    CFormatStream & Guarded(TWork const & work)
    {
        try {
            work();
        } catch (Exceptions::SOURCE_INFO const *) {
            Catch();
        }
        return *this;
    }

private:
    // The owned copy of the format text: nearly all formats fit into the object.
    class VLK_API CFormatText {
    public:
        CFormatText() noexcept = default;
        CFormatText(CFormatText const &) = delete;
        CFormatText & operator=(CFormatText const &) = delete;
        ~CFormatText() { Clear(); }
        /// False when memory can't be had; the text is empty then.
        bool Assign(char const * text) noexcept;
        char const * Get() const noexcept { return m_pText; }

    private:
        void Clear() noexcept;
        char const * m_pText = "";
        char m_Inline[112];
    };

    template <class TValue>
    CFormatStream & Insert(TValue value);
    template <class TValue>
    void PrintInt(TValue value);
    template <class TUnsigned>
    char * Digits(TUnsigned value, char (&buffer)[DigitRoom]);
    void InsertPlaced(char const * text, std::size_t n, unsigned int maxParameters);
    template <class TWork>
    void Construct(TWork const & work);
    void OwnFormat(char const * format);
    void SignalEnd();
    void Close();
    void WriteRest();
    void BeginPlaceholder();
    bool FindPlaceholder();
    void ParseAlignment();
    /// These two return true when they consumed the value.
    bool ParseWidth(unsigned int value, unsigned int isInteger);
    bool ParseParameters(unsigned int value, unsigned int isInteger);
    void ParseConversion(unsigned int isInteger);
    unsigned int ParseNumber() noexcept;
    unsigned int WriteLines(char const * text, std::size_t n, unsigned int splitLines);
    void WriteField(char const * text, std::size_t n);
    void DumpRows(unsigned char const * data, std::size_t from, std::size_t to, int digits);
    void DumpRow(unsigned char const * row, std::size_t n, std::size_t offset, int digits);

protected:
    CFormatText m_Text;
    std::size_t m_uMargin;
    unsigned int m_uAlignment;
    unsigned int m_uWidth;
    unsigned int m_uSign; ///< 0: none
    unsigned int m_uFill;
    unsigned int m_uRadix;
    unsigned int m_uUpper;
    unsigned int m_uParameterCount;
    unsigned int m_uType;
    unsigned int m_uParameter[MaxParameters];
    CBuffer * m_pBuffer;
    unsigned int m_uState;  ///< 0 between placeholders, 4 within one
    char const * m_pCursor; ///< null when the format has run out
};

/// Text in a block of its own, or in the caller's. A block grows by steps up to a maximum; text beyond it is a format
/// error. Always NUL-terminated once something was written.
class VLK_API CChrStreamBuffer : public Base_Classes::CFormatStreamBuffer {
public:
    /// Can't grow: give it a block with SetBuffer.
    CChrStreamBuffer() noexcept : CChrStreamBuffer(0, 0) {}
    /// step: bytes the block grows by; maximum: its largest size, 0 for any.
    explicit CChrStreamBuffer(std::size_t step, std::size_t maximum = 0) noexcept;
    ~CChrStreamBuffer() override;
    CChrStreamBuffer(CChrStreamBuffer const &) = delete;
    CChrStreamBuffer & operator=(CChrStreamBuffer const &) = delete;

    unsigned int Reset() override; ///< also empties the text; the block stays
    unsigned int Write(char const * text, std::size_t n, unsigned int upper) override;
    unsigned int Fill(int c, std::size_t n) override;

    /// Uses an external block of `size` bytes, that stays the caller's if the step is 0; otherwise it must come from
    /// malloc and becomes this object's. A block of its own is freed.
    void SetBuffer(char * block, std::size_t size) noexcept;
    /// Null before the first text.
    char * GetBuffer() const noexcept { return m_pBlock; }
    std::size_t GetLength() const noexcept { return m_uLength; }
    /// Whether text is missing for want of memory; until Reset.
    bool HasDropped() const noexcept { return m_bDropped; }
    /// Frees a block of its own and forgets an external one.
    void Release() noexcept;
    /// Hands the block out; the receiver frees it with free().
    void operator>>(char *& out) noexcept;

protected:
    /// Room for `need` bytes in all. A failed allocation isn't reported: the block stays as it is.
    void ResizeBuffer(std::size_t need);

private:
    char * Room(std::size_t n);

    std::size_t m_uLength;
    std::size_t m_uCapacity;
    std::size_t m_uStep;
    std::size_t m_uMaximum;
    char * m_pBlock;
    bool m_bDropped;
};

} // namespace Output_Streams

namespace Internals {

/// Collects the values of a format as separate fields, and puts them together in the order of a mask.
class VLK_API CFormatResortBuffer : public Output_Streams::Base_Classes::CFormatStreamBuffer {
public:
    CFormatResortBuffer() noexcept;
    ~CFormatResortBuffer() override;

    Output_Streams::CFormatStream Format(char const * format) override;
    unsigned int Write(char const * text, std::size_t n, unsigned int upper) override;
    unsigned int Fill(int c, std::size_t n) override;
    void SignalFormatEnd() override;
    void SignalNewFormatField() override;
    void SignalFormatCopy() override;

    /// Appends the fields in the mask's order: "%1" to "%9" a field with the literal text before its placeholder,
    /// the last one also the format's end; "%%" a "%". A field that isn't there raises "Bad format of resort mask".
    void PutInOrder(Strings::CStringVar & out);

protected:
    static constexpr unsigned int MaxFields = 9;

    bool IsMaskGood() const noexcept;

    unsigned int m_uNesting;
    unsigned int m_uFields;
    std::size_t m_uMaskLength;
    std::size_t m_uOffset[MaxFields + 1];
    Strings::TString<512> m_Text; ///< mask, blank, fields
};

} // namespace Internals

namespace Output_Streams {

class VLK_API CFormatResortBuffer : public Internals::CFormatResortBuffer {
public:
    using Internals::CFormatResortBuffer::Format;
    /// Begins anew: values go into `format` and come out, by PutInOrder or by assigning to a CStringVar, as `mask`
    /// says. For texts whose translation has another order of the values.
    CFormatStream Format(char const * mask, char const * format);
};

} // namespace Output_Streams
} // namespace VLK

#endif
