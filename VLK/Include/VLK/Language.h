#ifndef VLK_LANGUAGE_H
#define VLK_LANGUAGE_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "Platform/CriticalSection.h"
#include "VLK/Export.h"
#include "VLK/Strings.h"

/// Translatable texts of a module: a compiled-in table, and a language file that may hold the same table in other
/// languages. The language is the calling thread's (CCurrentThread::SetLngId).
namespace VLK::Language_Support {

struct LNGDATA;

/// Base of what has to do with languages.
class VLK_API CLanguageSupport {
public:
    class CLngFile;

    static constexpr unsigned int Default_Language_ID = 25966; ///< "en", two characters packed

    enum EEncoding : unsigned int {
        EncodingNative = 0,
        EncodingUtf8 = 1,
        EncodingAbsent = 2 ///< the language lacks these texts: the default's are used
    };

    virtual ~CLanguageSupport() = default;
};

/// The texts of one language. Of plain data; owned by its CLngFile.
struct LNGDATA {
    std::uint32_t languageId;
    std::uint32_t fileOffset;                  ///< of the first text in the file
    std::uint32_t size;                        ///< bytes of all texts
    std::uint32_t encoding;                    ///< CLanguageSupport::EEncoding
    std::atomic<char const * const *> strings; ///< table in the order of the indexes; null until loaded
    CLanguageSupport::CLngFile * owner;
    char name[33]; ///< language or encoding
};

/// A module's texts in all languages. Static data of the module. Any thread.
class VLK_API CLanguageSupport::CLngFile {
public:
    /// fileName  name of the language file, looked for in each directory of the application's search path
    /// strings   the compiled-in table of `count` texts, static data, in the language and encoding given; it is
    ///           addressed by `langId`, and serves wherever the file doesn't
    /// Raises "Out of memory".
    CLngFile(char const * fileName, unsigned int langId, char const * name, unsigned int encoding,
             char const * const * strings, std::size_t count);
    ~CLngFile();
    CLngFile(CLngFile const &) = delete;
    CLngFile & operator=(CLngFile const &) = delete;

    /// The texts for the calling thread's language; the default's, if there is no file or it lacks the language.
    /// The first call with a search path looks for the file. Raises "Language file is corrupted", "Out of memory".
    LNGDATA & GetLngData();
    /// The compiled-in texts.
    LNGDATA & GetDefaultLngData() noexcept;
    std::size_t GetStringCount() const noexcept { return m_nStrings; }

private:
    enum EState : unsigned int { FileOpen = 0, NotSearched = 1, NotFound = 2, Searching = 3 };

    void Search();
    bool Open(Strings::CSubStringRef const & path);
    void ReadTable(std::FILE * file);
    void ReadHeader(std::FILE * file, LNGDATA & entry);
    void LoadStrings(LNGDATA & entry);
    LNGDATA * Find(std::uint32_t languageId) noexcept;

    Platform::CCriticalSection m_Lock; ///< guards search and loading
    Strings::CStringVar m_FileName;
    std::FILE * m_pFile;
    std::size_t m_nLanguages;
    std::size_t m_nStrings;
    std::atomic<unsigned int> m_uState; ///< the table may be read without the lock once this is FileOpen
    LNGDATA m_Default;                  ///< entry 0; stays in its place, since references to it are handed out
    LNGDATA * m_pTable;                 ///< entries 1 to m_nLanguages - 1
};

/// One text by its index. A small value; the module's language data must outlive it. One thread.
class VLK_API CLanguageStrg : public CLanguageSupport {
public:
    CLanguageStrg(LNGDATA & data, std::size_t index) noexcept : m_pData(&data), m_uIndex(index) {}

    /// The text as it is stored, without conversion; null if the language lacks it.
    operator char const *() const noexcept { return Native(); }
    char const * Native() const noexcept;
    /// The encoding: 0 native, 1 UTF-8, 2 not there.
    unsigned int IsUTF8() const noexcept { return m_pData->encoding; }
    /// Appends the text in the native character set, code points up to U+00FF; replace not 0 empties `out` first.
    /// 0, or 1 if the text came from the default language.
    unsigned int UTF8ToChar(Strings::CStringVar & out, unsigned int replace) const;

private:
    LNGDATA * m_pData;
    std::size_t m_uIndex;
};

} // namespace VLK::Language_Support

#endif
