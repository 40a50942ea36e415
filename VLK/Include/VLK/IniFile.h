#ifndef VLK_INI_FILE_H
#define VLK_INI_FILE_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "Platform/File.h"
#include "VLK/Export.h"
#include "VLK/Strings.h"

namespace boost::filesystem {
class path;
}
namespace VLK::Output_Streams {
class CChrStreamBuffer;
}
namespace VLK::INI_Files {
class CIniKey;
class CIniSection;
} // namespace VLK::INI_Files

/// INI files. One CIniFile and its handles belong to one thread; processes meet in the lock file, the INI file's name
/// with ".lck" behind it, which is also the file in which the new version is built.
///
///     ; comment                 kept by Lock, dropped by Read
///     [section]                 repeated sections are one; letter case doesn't matter
///     key = a, b                a list of two
///     + c                       ... that goes on
///     key = "a, b"              a single value with its blank; outside quotes blanks vanish
namespace VLK::Internals {

struct INI_KEY;
struct INI_SECTION;
struct INI_KEYLIST;
union INI_ENTRY;

/// What CIniFile is made of: the text in an arena, entries for sections and keys from blocks.
class VLK_API CIniFile_ {
public:
    CIniFile_(CIniFile_ const &) = delete;
    CIniFile_ & operator=(CIniFile_ const &) = delete;

protected:
    CIniFile_() noexcept;
    virtual ~CIniFile_();

    friend class INI_Files::CIniKey;
    friend class INI_Files::CIniSection;
    struct SBlock;

    void Open(Strings::CSubStringRef const & file, unsigned int timeoutMs);
    void OpenLocked(Strings::CSubStringRef const & file, unsigned int timeoutMs);
    void New(Strings::CSubStringRef const & file);
    template <class TAttempt>
    void Await(Strings::CSubStringRef const & file, unsigned int timeoutMs, TAttempt const & attempt);
    /// Makes the lock file. False when another process has it.
    bool TakeLock();
    void Write();
    void WriteSections();
    void ReplaceFile();

    void ScanFile(std::FILE * file, bool keepComments);
    void ParseLines(char * text, bool keepComments);
    void ParseSection(Strings::CStringVar & line, Strings::CStringVar const & comment, INI_SECTION *& section);
    void ParseKey(Strings::CStringVar const & line, std::size_t separator, Strings::CStringVar const & comment,
                  INI_SECTION & section);
    void AddComment(Strings::CStringVar const & comment, INI_SECTION *& section);
    /// Read one logical line: key, CR, value, with LF between list elements. Return where the next begins.
    static char const * ReadLn(Strings::CStringVar & line, char const * p, Strings::CStringVar * comment);
    static char const * ReadQuoted(Strings::CStringVar & line, char const * p, bool & closed);
    static char const * LeseKommentar(char const * p, Strings::CStringVar * comment);
    static char const * SkipToContinuation(char const * p, Strings::CStringVar * comment, bool & continued);

    /// The section of that name, made if there is none; gets the comment in addition to its own.
    INI_SECTION * Find(Strings::CSubStringRef const & name, Strings::CSubStringRef const & comment);
    INI_SECTION * FindExisting(Strings::CSubStringRef const & name) const noexcept;
    static INI_KEY * FindKey(INI_SECTION const & section, Strings::CSubStringRef const & name) noexcept;
    /// A key at the end of the section, with room for its text, which the caller fills in.
    INI_KEY * AddKey(INI_SECTION & section, std::size_t textSize, std::size_t nameLength, std::size_t count);
    void RemoveKey(INI_SECTION & section, INI_KEY * key) noexcept;
    void RemoveSection(INI_SECTION * section) noexcept;
    void ReplaceValue(INI_KEY & key, Strings::CSubStringRef const & value, std::size_t count);
    /// Appends to a text of the file; the result replaces it.
    void KommentarErweitern(char *& text, std::size_t length, Strings::CSubStringRef const & comment);

    static std::size_t AusgabeLaengeErmitteln(char const * text, std::size_t n) noexcept;
    static void ConvertString(Strings::CStringVar & out, char const * text, std::size_t n);
    void SektionSchreiben(Output_Streams::CChrStreamBuffer & buffer, INI_SECTION const & section);
    static void DatenSchreiben(Output_Streams::CChrStreamBuffer & buffer, Strings::CStringVar & line,
                               char const * text);
    static void KommentarSchreiben(Output_Streams::CChrStreamBuffer & buffer, char const * text);
    static void WertZusammenstellen(Strings::CStringVar & line, Strings::CSubStringRef const & values);

    void NewArena(std::size_t room, std::size_t textSize);
    /// Makes sure that n entries can be had without failure, so that what is made with them needn't be taken back.
    void EnsureEntries(std::size_t n);
    INI_ENTRY * AllocIniEntry() noexcept;
    void FreeIniEntry(void * entry) noexcept;
    void AddFreeEntries(SBlock & block) noexcept;
    char * AllocText(std::size_t size);
    void FreeText(char * text) noexcept;
    /// Releases the lock, and everything that was read.
    void CleanUp() noexcept;
    void ReleaseLock() noexcept;
    std::string LockName() const;
    [[noreturn]] void RaiseIo(std::uint32_t error);
    [[noreturn]] void RaiseNotFound();

    char * m_pArena;
    char * m_pArenaNext;  ///< texts are put here ...
    char * m_pArenaLimit; ///< ... and up to here: the arena's end, or while parsing the text that isn't parsed yet
    std::size_t m_uArenaSize;
    INI_SECTION * m_pSections;
    INI_SECTION * m_pLastSection;
    INI_ENTRY * m_pFreeEntries;
    SBlock * m_pBlocks;
    Platform::CFileHandle m_LockFile;
    std::uint32_t m_nSections;
    Strings::TString<128> m_FileName;
};

} // namespace VLK::Internals

namespace VLK::INI_Files {

/// The values of a key. Its cursor says which one GetValue reads.
class VLK_API CIniList {
public:
    CIniList() noexcept : m_nValues(0), m_uIndex(0), m_uOffset(NoOffset), m_uRadix(10) {}

    /// Append. The list must be positioned before it is read again. Raise "Out of memory"; the list is unchanged
    /// then, or empty if it was long.
    CIniList & AddValue(int value);
    CIniList & AddValue(unsigned int value);
    CIniList & AddValue(long long value);
    CIniList & AddValue(unsigned long long value);
    CIniList & AddValue(Strings::CSubStringRef const & value);
    CIniList & AddValue(std::string const & value) { return AddValue(Strings::CSubStringRef(value)); }
    CIniList & AddValue(char const * value) { return AddValue(Strings::CSubStringRef(value)); }

    /// Read the value at the cursor and step on. Raise "Index out of bounds" behind the last one and after AddValue,
    /// "Bad character (conversation string -> number)".
    unsigned int GetValue(int & value);
    unsigned int GetValue(unsigned int & value);
    unsigned int GetValue(long long & value);
    unsigned int GetValue(unsigned long long & value);
    unsigned int GetValue(Strings::CStringVar & value);
    unsigned int GetValue(std::string & value);

    /// Moves the cursor to a value. Raises "Index out of bounds".
    CIniList & operator[](std::size_t index);
    void Clear() noexcept;
    std::size_t Count() const noexcept { return m_nValues; }
    /// Numbers are added in hexadecimal from now on.
    CIniList & Hex() noexcept
    {
        m_uRadix = 16;
        return *this;
    }

private:
    friend class CIniKey;
    static constexpr std::size_t NoOffset = ~std::size_t{0};

    Strings::CSubStringRef Take();
    template <class TMake>
    CIniList & Add(TMake const & make);
    void Append(Strings::CSubStringRef const & value);
    template <class T>
    unsigned int GetNumber(T & value);
    void Assign(Strings::CSubStringRef const & values, std::size_t count);

    std::uint64_t m_nValues;
    std::size_t m_uIndex;
    std::size_t m_uOffset;
    unsigned int m_uRadix;
    Strings::TString<512> m_Values; ///< separated by newlines
};

/// Handle of a key, with or without a value. Valid while its file is open and the key isn't removed. On a handle
/// without a key every operation raises "An error occurred in a previous function call".
class VLK_API CIniKey {
public:
    CIniKey() noexcept = default;

    unsigned int Name(Strings::CStringVar & out) const;
    unsigned int Name(std::string & out) const;
    /// Number of values.
    std::size_t Count() const;
    /// Goes to the next key of the section; returns the handle as it was.
    CIniKey operator++(int);
    bool operator==(CIniKey const & other) const noexcept { return m_pFile == other.m_pFile && m_pKey == other.m_pKey; }
    bool operator!=(CIniKey const & other) const noexcept { return !(*this == other); }
    /// Numbers are set in hexadecimal from now on.
    CIniKey & Hex();
    /// A default that GetValue uses is also set.
    CIniKey & ImpSet();
    /// Takes the key out of the section; the handle is empty then.
    unsigned int Remove();

    /// Without a value: clear the target and raise "Could not find key in INI-file". A list where one value is asked
    /// for raises "INI-key is a comma separated list", a text that is no number "Bad character (conversation string ->
    /// number)"; those two with an error code of 0 in their records. Numbers: "0x" hexadecimal, leading "0" octal; what
    /// is too large for the type becomes its limit.
    unsigned int GetValue(int & value) const;
    unsigned int GetValue(unsigned int & value) const;
    unsigned int GetValue(long long & value) const;
    unsigned int GetValue(unsigned long long & value) const;
    unsigned int GetValue(Strings::CStringVar & value) const;
    unsigned int GetValue(std::string & value) const;
    unsigned int GetValue(CIniList & value) const;
    /// The same; without a value the target gets the default.
    unsigned int GetValue(int & value, int standard);
    unsigned int GetValue(unsigned int & value, unsigned int standard);
    unsigned int GetValue(long long & value, long long standard);
    unsigned int GetValue(unsigned long long & value, unsigned long long standard);
    unsigned int GetValue(Strings::CStringVar & value, Strings::CSubStringRef const & standard);
    unsigned int GetValue(std::string & value, std::string const & standard);
    unsigned int GetValue(CIniList & value, CIniList const & standard);

    /// Replace the value; a comment of the key goes with the old one.
    unsigned int SetValue(int value);
    unsigned int SetValue(unsigned int value);
    unsigned int SetValue(long long value);
    unsigned int SetValue(unsigned long long value);
    unsigned int SetValue(Strings::CSubStringRef const & value);
    unsigned int SetValue(std::string const & value) { return SetValue(Strings::CSubStringRef(value)); }
    unsigned int SetValue(char const * value) { return SetValue(Strings::CSubStringRef(value)); }
    unsigned int SetValue(CIniList const & value);

private:
    friend class CIniSection;
    CIniKey(Internals::CIniFile_ * file, Internals::INI_SECTION * section, Internals::INI_KEY * key) noexcept
        : m_pFile(file), m_pSection(section), m_pKey(key)
    {
    }
    Strings::CSubStringRef NameView() const noexcept;
    Strings::CSubStringRef Values() const noexcept;
    void CheckHandle() const;
    void CheckScalar() const;
    template <class T, class TRead>
    unsigned int Get(T & value, TRead const & read) const;
    template <class T, class TDefault, class TRead>
    unsigned int GetOr(T & value, TDefault const & standard, TRead const & read);
    template <class T>
    unsigned int GetNumber(T & value) const;
    template <class T>
    unsigned int SetNumber(T value);
    void ReadList(CIniList & value) const;

    Internals::CIniFile_ * m_pFile = nullptr;
    Internals::INI_SECTION * m_pSection = nullptr;
    Internals::INI_KEY * m_pKey = nullptr;
    unsigned int m_uRadix = 10;
    bool m_bImpSet = false;
};

/// Handle of a section. Valid while its file is open and the section isn't removed. On a handle without a section
/// every operation raises "An error occurred in a previous function call".
class VLK_API CIniSection {
public:
    CIniSection() noexcept = default;

    unsigned int Name(Strings::CStringVar & out) const;
    unsigned int Name(std::string & out) const;
    /// Number of keys, with and without values.
    std::size_t Count() const;
    /// Keys in file order; End() is behind the last.
    CIniKey First() const;
    CIniKey End() const;
    /// Goes to the next section; returns the handle as it was.
    CIniSection operator++(int);
    bool operator==(CIniSection const & other) const noexcept
    {
        return m_pFile == other.m_pFile && m_pSection == other.m_pSection;
    }
    bool operator!=(CIniSection const & other) const noexcept { return !(*this == other); }
    /// Takes the section and all its keys out of the file; the handle is empty then.
    unsigned int Remove();
    /// Finds a key; appends one without a value if there is none. Raises "Out of memory".
    CIniKey operator[](Strings::CSubStringRef const & name) const;
    CIniKey operator[](std::string const & name) const { return (*this)[Strings::CSubStringRef(name)]; }
    CIniKey operator[](char const * name) const { return (*this)[Strings::CSubStringRef(name)]; }

private:
    friend class CIniFile;
    CIniSection(Internals::CIniFile_ * file, Internals::INI_SECTION * section) noexcept
        : m_pFile(file), m_pSection(section)
    {
    }
    void CheckHandle() const;

    Internals::CIniFile_ * m_pFile = nullptr;
    Internals::INI_SECTION * m_pSection = nullptr;
};

/// An INI file in memory. Opening one drops what was open before; a lock that is held is released without writing.
class VLK_API CIniFile : public Internals::CIniFile_ {
public:
    CIniFile() noexcept = default;
    ~CIniFile() override = default;

    /// Loads a file for reading; comments are dropped. While a writer replaces the file, waits at most timeoutMs
    /// (0: one look; 0xFFFFFFFF: for ever). Raises "INI-File does not exist", "Can't access INI-file due to an
    /// I/O-error", "Timeout during INI-file access" (error code 0 in the record), "Out of memory".
    unsigned int Read(Strings::CSubStringRef const & file, unsigned int timeoutMs);
    unsigned int Read(boost::filesystem::path const & file, unsigned int timeoutMs);
    unsigned int Read(std::string const & file, unsigned int timeoutMs)
    {
        return Read(Strings::CSubStringRef(file), timeoutMs);
    }
    unsigned int Read(char const * file, unsigned int timeoutMs)
    {
        return Read(Strings::CSubStringRef(file), timeoutMs);
    }
    /// Loads a file for writing, with its comments, and keeps others from writing until Flush or the object's end.
    /// Raises the same; the timeout is for another's lock.
    unsigned int Lock(Strings::CSubStringRef const & file, unsigned int timeoutMs);
    unsigned int Lock(boost::filesystem::path const & file, unsigned int timeoutMs);
    unsigned int Lock(std::string const & file, unsigned int timeoutMs)
    {
        return Lock(Strings::CSubStringRef(file), timeoutMs);
    }
    unsigned int Lock(char const * file, unsigned int timeoutMs)
    {
        return Lock(Strings::CSubStringRef(file), timeoutMs);
    }
    /// Begins an empty file for writing. Raises "Can't access INI-file due to an I/O-error" also when it is locked.
    unsigned int Create(Strings::CSubStringRef const & file);
    unsigned int Create(boost::filesystem::path const & file);
    unsigned int Create(std::string const & file) { return Create(Strings::CSubStringRef(file)); }
    unsigned int Create(char const * file) { return Create(Strings::CSubStringRef(file)); }
    /// Writes the file anew, readable by its owner alone, and releases the lock. Waits without limit while the former
    /// file can't be removed, as long as somebody has it open where that counts; CThread::Cancel ends the wait. Raises
    /// "INI-file is not opened for writing"; "Out of memory"; "Can't access INI-file due to an I/O-error", also when
    /// there is no section at all. Behind a failure the lock is gone and the former file is as it was, but for a
    /// failure of the renaming itself: the new version is left in the lock file then. The number is of no meaning.
    unsigned int Flush(unsigned int);

    /// Number of sections.
    unsigned int Count() const noexcept { return m_nSections; }
    /// Sections in file order; End() is behind the last.
    CIniSection First() noexcept { return CIniSection(this, m_pSections); }
    CIniSection End() noexcept { return CIniSection(this, nullptr); }
    /// Finds a section, or adds an empty one, also to a file that was only read. Raises "Out of memory".
    CIniSection operator[](Strings::CSubStringRef const & name);
    CIniSection operator[](boost::filesystem::path const & name);
    CIniSection operator[](std::string const & name) { return (*this)[Strings::CSubStringRef(name)]; }
    CIniSection operator[](char const * name) { return (*this)[Strings::CSubStringRef(name)]; }

private:
    template <class TWork>
    unsigned int Begin(TWork const & work);
};

} // namespace VLK::INI_Files

#endif
