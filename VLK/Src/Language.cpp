#include "VLK/Language.h"

#include <cstring>
#include <limits>
#include <memory>
#include <new>

#include "FileStream.h"
#include "Memory.h"
#include "Platform/Error.h"
#include "Platform/File.h"
#include "Platform/Host.h"
#include "VLK/Application.h"
#include "VLK/Exceptions.h"
#include "VLK/ThreadCB.h"
#include "VLK/ThrowState.h"

namespace VLK::Language_Support {

using Internals::CFile;
using Strings::CStringVar;
using Strings::CSubStringRef;
using Strings::TString;

namespace {

constexpr std::uint32_t Magic = 0x25031961;
constexpr std::size_t FileHeaderSize = 12;
constexpr std::size_t LanguageHeaderSize = 48;
constexpr std::size_t NameSize = 32;

/// Turns one state into another at the end of a scope, unless it has become a third one.
struct SStateEnd {
    std::atomic<unsigned int> & state;
    unsigned int const from;
    unsigned int const to;
    ~SStateEnd()
    {
        unsigned int expected = from;
        state.compare_exchange_strong(expected, to, std::memory_order_release, std::memory_order_relaxed);
    }
};

[[noreturn]] void RaiseCorrupted(Exceptions::CThrowState & state)
{
    VLK_RAISE(state, Errors::CorruptedLanguageFile);
}

void ReadBytes(Exceptions::CThrowState & state, std::FILE * file, char * out, std::size_t size)
{
    if (std::fread(out, 1, size, file) == size) return;
    Platform::ErrorCode const error = Platform::LastError();
    VLK_RAISE_OS(state, Errors::CorruptedLanguageFile, error);
}

/// 32 bits, the most significant byte first.
std::uint32_t ReadNumber(Exceptions::CThrowState & state, std::FILE * file)
{
    unsigned char bytes[4];
    if (std::fread(bytes, 1, sizeof bytes, file) != sizeof bytes) RaiseCorrupted(state);
    std::uint32_t number = 0;
    for (unsigned char const byte : bytes)
        number = number << 8 | byte;
    return number;
}

std::uint64_t SizeOf(Exceptions::CThrowState & state, std::FILE * file)
{
    long const position = std::ftell(file);
    if (position < 0 || std::fseek(file, 0, SEEK_END) != 0) RaiseCorrupted(state);
    long const size = std::ftell(file);
    if (size < 0 || std::fseek(file, position, SEEK_SET) != 0) RaiseCorrupted(state);
    return static_cast<std::uint64_t>(size);
}

std::uint32_t CurrentLanguage() noexcept
{
    Internals::CThreadCB const * const thread = Internals::CThreadCB::Current();
    std::uint32_t const id = thread != nullptr ? thread->m_uLngId : 0;
    return id != 0 ? id : CLanguageSupport::Default_Language_ID;
}

} // namespace

CLanguageSupport::CLngFile::CLngFile(char const * fileName, unsigned int langId, char const * name,
                                     unsigned int encoding, char const * const * strings, std::size_t count)
    : m_pFile(nullptr), m_nLanguages(1), m_nStrings(count), m_uState(NotSearched), m_Default{}, m_pTable(nullptr)
{
    m_FileName = fileName;
    m_Default.languageId = langId;
    m_Default.encoding = encoding;
    m_Default.strings.store(strings, std::memory_order_relaxed);
    m_Default.owner = this;
    std::strncpy(m_Default.name, name, sizeof m_Default.name - 1);
}

CLanguageSupport::CLngFile::~CLngFile()
{
    for (std::size_t i = 0; i + 1 < m_nLanguages; ++i)
        std::free(const_cast<char const **>(m_pTable[i].strings.load(std::memory_order_relaxed)));
    delete[] m_pTable;
    if (m_pFile != nullptr) std::fclose(m_pFile);
}

LNGDATA & CLanguageSupport::CLngFile::GetDefaultLngData() noexcept
{
    return m_Default;
}

LNGDATA & CLanguageSupport::CLngFile::GetLngData()
{
    Exceptions::CThrowState state;
    try {
        unsigned int const known = m_uState.load(std::memory_order_acquire);
        if (known == NotSearched || known == Searching) Search();
        std::uint32_t const language = CurrentLanguage();
        // The default comes first in the table, so a file can't replace it.
        if (language == m_Default.languageId || m_uState.load(std::memory_order_acquire) != FileOpen) return m_Default;
        LNGDATA * const entry = Find(language);
        if (entry == nullptr) return m_Default;
        if (entry->strings.load(std::memory_order_acquire) == nullptr) LoadStrings(*entry);
        return *entry;
    }
    VLK_THROW_NEXT_AS(state, m_Default)
}

LNGDATA * CLanguageSupport::CLngFile::Find(std::uint32_t languageId) noexcept
{
    for (std::size_t i = 0; i + 1 < m_nLanguages; ++i)
        if (m_pTable[i].languageId == languageId) return &m_pTable[i];
    return nullptr;
}

void CLanguageSupport::CLngFile::Search()
{
    Platform::CCriticalLock const lock(m_Lock);
    // Another thread has searched meanwhile; or this one does, and asks for the text of an error of its search.
    if (m_uState.load(std::memory_order_relaxed) != NotSearched) return;
    TString<512> path;
    if (Misc::pVlkApp != nullptr) Misc::pVlkApp->GetNlsSearchPath(path);
    if (path.size() == 0) return;
    m_uState.store(Searching, std::memory_order_release);
    SStateEnd const searchEnd{m_uState, Searching, NotFound};
    TString<256> base;
    base = m_FileName;
    path += CSubStringRef::PATH_SEPARATOR;
    for (std::size_t start = 0, end; (end = path.Find(*CSubStringRef::PATH_SEPARATOR, start)) != CSubStringRef::POSERR;
         start = end + 1) {
        if (end == start) continue;
        m_FileName = CSubStringRef(path.data() + start, end - start);
        m_FileName << Platform::PathSeparator() << base;
        if (Open(m_FileName)) return;
    }
}

bool CLanguageSupport::CLngFile::Open(CSubStringRef const & path)
{
    CFile file(Platform::OpenStream(std::string(path.View()), "rb"));
    if (file == nullptr) return false;
    ReadTable(file.get());
    m_pFile = file.release();
    m_uState.store(FileOpen, std::memory_order_release);
    return true;
}

void CLanguageSupport::CLngFile::ReadTable(std::FILE * file)
{
    Exceptions::CThrowState state;
    try {
        if (ReadNumber(state, file) != Magic) RaiseCorrupted(state);
        if (ReadNumber(state, file) != m_nStrings) RaiseCorrupted(state);
        std::uint64_t const languages = ReadNumber(state, file);
        std::uint64_t const fileSize = SizeOf(state, file);
        std::uint64_t expected = FileHeaderSize + LanguageHeaderSize * languages;
        // Before any memory is taken for a number that the file made up.
        if (expected > fileSize) RaiseCorrupted(state);
        std::unique_ptr<LNGDATA[]> table(new (std::nothrow) LNGDATA[languages]{});
        if (table == nullptr) VLK_RAISE(state, Errors::OutOfMemory);
        for (std::uint64_t i = 0; i != languages; ++i) {
            ReadHeader(file, table[i]);
            expected += table[i].size;
        }
        if (expected != fileSize) RaiseCorrupted(state);
        m_pTable = table.release();
        m_nLanguages = languages + 1;
        return;
    }
    VLK_THROW_NEXT_VOID(state)
}

void CLanguageSupport::CLngFile::ReadHeader(std::FILE * file, LNGDATA & entry)
{
    Exceptions::CThrowState state;
    try {
        entry.languageId = ReadNumber(state, file);
        entry.fileOffset = ReadNumber(state, file);
        entry.size = ReadNumber(state, file);
        entry.encoding = ReadNumber(state, file);
        ReadBytes(state, file, entry.name, NameSize);
        entry.name[NameSize] = '\0';
        entry.owner = this;
        return;
    }
    VLK_THROW_NEXT_VOID(state)
}

void CLanguageSupport::CLngFile::LoadStrings(LNGDATA & entry)
{
    // Two threads may ask for the same language first.
    Platform::CCriticalLock const lock(m_Lock);
    if (entry.strings.load(std::memory_order_relaxed) != nullptr) return;
    Exceptions::CThrowState state;
    try {
        std::size_t const tableSize = m_nStrings * sizeof(char const *);
        struct SBlockFree {
            void operator()(char const ** block) const noexcept { std::free(block); }
        };
        std::unique_ptr<char const *, SBlockFree> block(
            static_cast<char const **>(Internals::TryAllocate(tableSize + entry.size + 1)));
        if (block == nullptr) VLK_RAISE(state, Errors::OutOfMemory);
        char * text = reinterpret_cast<char *>(block.get()) + tableSize;
        char * const end = text + entry.size;
        if (entry.fileOffset > static_cast<unsigned long>(std::numeric_limits<long>::max()) ||
            std::fseek(m_pFile, static_cast<long>(entry.fileOffset), SEEK_SET) != 0)
            RaiseCorrupted(state);
        ReadBytes(state, m_pFile, text, entry.size);
        // A file may hold fewer texts than it says: the ones that are missing are empty.
        *end = '\0';
        for (std::size_t i = 0; i != m_nStrings; ++i) {
            block.get()[i] = text;
            text += std::strlen(text);
            if (text != end) ++text;
        }
        entry.strings.store(block.release(), std::memory_order_release);
        return;
    }
    VLK_THROW_NEXT_VOID(state)
}

char const * CLanguageStrg::Native() const noexcept
{
    char const * const * const strings = m_pData->strings.load(std::memory_order_acquire);
    if (strings == nullptr || (m_pData->owner != nullptr && m_uIndex >= m_pData->owner->GetStringCount()))
        return nullptr;
    return strings[m_uIndex];
}

namespace {

void AppendNative(CStringVar & out, char const * text, unsigned int replace)
{
    if (replace != 0) out = Misc::CNull();
    out << text;
}

void AppendDecoded(CStringVar & out, char const * text, unsigned int replace)
{
    if (text == nullptr) text = "";
    char * const start = out.Lock(std::strlen(text), replace);
    if (start == nullptr) return;
    std::size_t const before = out.size();
    char * end = start;
    for (; *text != '\0'; ++text) {
        unsigned int const byte = static_cast<unsigned char>(*text);
        if (byte < 0xC0) {
            *end++ = *text;
            continue;
        }
        if (*++text == '\0') break;
        *end++ = static_cast<char>((*text & 0x3F) | byte << 6);
    }
    *end = '\0';
    out.Unlock(before + static_cast<std::size_t>(end - start));
}

void AppendConverted(CStringVar & out, char const * text, unsigned int encoding, unsigned int replace)
{
    if (encoding == CLanguageSupport::EncodingUtf8)
        AppendDecoded(out, text, replace);
    else
        AppendNative(out, text, replace);
}

} // namespace

unsigned int CLanguageStrg::UTF8ToChar(CStringVar & out, unsigned int replace) const
{
    if (m_pData->encoding != EncodingAbsent) {
        AppendConverted(out, Native(), m_pData->encoding, replace);
        return 0;
    }
    if (m_pData->owner == nullptr) return 1;
    CLanguageStrg const text(m_pData->owner->GetDefaultLngData(), m_uIndex);
    AppendConverted(out, text.Native(), text.IsUTF8(), replace);
    return 1;
}

} // namespace VLK::Language_Support
