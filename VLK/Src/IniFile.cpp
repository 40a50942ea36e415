#include "VLK/IniFile.h"

#include <algorithm>
#include <boost/filesystem/path.hpp>
#include <boost/format.hpp>
#include <cstring>
#include <new>

#include "FileStream.h"
#include "IniEntries.h"
#include "IniWait.h"
#include "Memory.h"
#include "VLK/Exceptions.h"
#include "VLK/ThrowState.h"

namespace VLK::Internals {

using Exceptions::CThrowState;
using Strings::CStringVar;
using Strings::CSubStringRef;

// Storage, the lock protocol and the public face; parsing lies in IniScan.cpp, writing in IniWrite.cpp.

namespace {

constexpr std::size_t BlockEntries = 128;
constexpr std::size_t WriteRoom = 16384; ///< in front of the text of a file that will be changed
constexpr std::size_t ReadRoom = 1;
constexpr std::size_t ArenaStep = 4096;
} // namespace

struct CIniFile_::SBlock {
    SBlock * next;
    INI_ENTRY entries[BlockEntries];
};

CIniFile_::CIniFile_() noexcept
    : m_pArena(nullptr),
      m_pArenaNext(nullptr),
      m_pArenaLimit(nullptr),
      m_uArenaSize(0),
      m_pSections(nullptr),
      m_pLastSection(nullptr),
      m_pFreeEntries(nullptr),
      m_pBlocks(nullptr),
      m_nSections(0)
{
}

CIniFile_::~CIniFile_()
{
    CleanUp();
}

std::string CIniFile_::LockName() const
{
    return std::string(m_FileName.View()) + ".lck";
}

void CIniFile_::RaiseIo(std::uint32_t error)
{
    CThrowState state;
    VLK_RAISE_NATIVE_TEXT(state, Errors::IniIo, Exceptions::OsError(error), "File=%s", m_FileName);
}

void CIniFile_::RaiseNotFound()
{
    CThrowState state;
    VLK_RAISE_TEXT(state, Errors::IniNotFound, "File=%s", m_FileName);
}

bool CIniFile_::TakeLock()
{
    Platform::FileHandle handle = Platform::NoFile;
    Platform::ErrorCode const error = Platform::OpenFile(handle, LockName(), Platform::FileMode::CreateExclusive);
    if (error == Platform::ErrorAlreadyExists()) return false;
    if (error != Platform::Success) RaiseIo(error);
    m_LockFile.Reset(handle);
    return true;
}

/// Attempts until one comes through, as long as another process stands in the way.
template <class TAttempt>
void CIniFile_::Await(CSubStringRef const & file, unsigned int timeoutMs, TAttempt const & attempt)
{
    CThrowState state;
    CleanUp();
    CFileWait const wait(timeoutMs);
    m_FileName = file;
    std::string const name(m_FileName.View());
    do {
        if (attempt(name)) return;
    } while (wait.Again());
    Exceptions::Raise(state.StartException(__LINE__).prepareThrow(Errors::IniTimeout, boost::format("File=%s") % name));
}

void CIniFile_::Open(CSubStringRef const & file, unsigned int timeoutMs)
{
    Await(file, timeoutMs, [this](std::string const & name) {
        CFile stream(Platform::OpenStream(name, "rb"));
        if (stream == nullptr) {
            if (Platform::ErrorCode const error = Platform::LastError(); error != Platform::ErrorNotFound())
                RaiseIo(error);
            // A writer may be replacing the file: the lock file tells. Whoever can make it knows that there is none.
            if (!TakeLock()) return false;
            stream.reset(Platform::OpenStream(name, "rb"));
            ReleaseLock();
            if (stream == nullptr) RaiseNotFound();
        }
        ScanFile(stream.get(), /*keepComments=*/false);
        return true;
    });
}

void CIniFile_::OpenLocked(CSubStringRef const & file, unsigned int timeoutMs)
{
    Await(file, timeoutMs, [this](std::string const & name) {
        if (!TakeLock()) return false;
        CFile const stream(Platform::OpenStream(name, "rb"));
        if (stream == nullptr) RaiseNotFound();
        ScanFile(stream.get(), /*keepComments=*/true);
        return true;
    });
}

void CIniFile_::New(CSubStringRef const & file)
{
    CleanUp();
    m_FileName = file;
    if (!TakeLock()) RaiseIo(Platform::ErrorAlreadyExists());
    NewArena(WriteRoom, 0);
}

void CIniFile_::ScanFile(std::FILE * file, bool keepComments)
{
    std::size_t const room = keepComments ? WriteRoom : ReadRoom;
    if (std::fseek(file, 0, SEEK_END) != 0) RaiseIo(Platform::LastError());
    long const end = std::ftell(file);
    if (end < 0 || std::fseek(file, 0, SEEK_SET) != 0) RaiseIo(Platform::LastError());
    std::size_t const size = static_cast<std::size_t>(end);
    NewArena(room, size);
    char * const text = m_pArena + room;
    if (std::fread(text, 1, size, file) != size) RaiseIo(Platform::LastError());
    text[size] = '\0';
    ParseLines(text, keepComments);
    m_pArenaLimit = m_pArena + m_uArenaSize;
}

/// One block of memory for entries and for the texts.
void CIniFile_::NewArena(std::size_t room, std::size_t textSize)
{
    std::size_t const need = SaturatedSum(SaturatedSum(textSize, room), 1);
    if (need > MaxBlock - ArenaStep - sizeof(SBlock)) RaiseOutOfMemory();
    std::size_t const size = RoundUp(need, ArenaStep);
    SBlock * const block = static_cast<SBlock *>(TryAllocate(sizeof(SBlock) + size));
    if (block == nullptr) {
        RaiseOutOfMemory();
        return;
    }
    AddFreeEntries(*block);
    m_pArena = reinterpret_cast<char *>(block + 1);
    m_pArenaNext = m_pArena;
    m_pArenaLimit = m_pArena + size;
    m_uArenaSize = size;
}

void CIniFile_::AddFreeEntries(SBlock & block) noexcept
{
    block.next = m_pBlocks;
    m_pBlocks = &block;
    for (INI_ENTRY & entry : block.entries) {
        entry.nextFree = m_pFreeEntries;
        m_pFreeEntries = &entry;
    }
}

void CIniFile_::EnsureEntries(std::size_t n)
{
    for (INI_ENTRY const * entry = m_pFreeEntries; entry != nullptr && n != 0; entry = entry->nextFree)
        --n;
    if (n == 0) return;
    SBlock * const block = static_cast<SBlock *>(TryAllocate(sizeof(SBlock)));
    if (block == nullptr) RaiseOutOfMemory();
    AddFreeEntries(*block);
}

INI_ENTRY * CIniFile_::AllocIniEntry() noexcept
{
    INI_ENTRY * const entry = m_pFreeEntries;
    m_pFreeEntries = entry->nextFree;
    return entry;
}

void CIniFile_::FreeIniEntry(void * entry) noexcept
{
    INI_ENTRY * const freed = static_cast<INI_ENTRY *>(entry);
    freed->nextFree = m_pFreeEntries;
    m_pFreeEntries = freed;
}

char * CIniFile_::AllocText(std::size_t size)
{
    if (size <= static_cast<std::size_t>(m_pArenaLimit - m_pArenaNext)) {
        char * const text = m_pArenaNext;
        m_pArenaNext += size;
        return text;
    }
    char * const text = static_cast<char *>(TryAllocate(size));
    if (text == nullptr) RaiseOutOfMemory();
    return text;
}

void CIniFile_::FreeText(char * text) noexcept
{
    bool const isInArena = text >= m_pArena && text < m_pArena + m_uArenaSize;
    if (!isInArena) std::free(text);
}

void CIniFile_::CleanUp() noexcept
{
    ReleaseLock();
    while (m_pSections != nullptr)
        RemoveSection(m_pSections);
    while (m_pBlocks != nullptr) {
        SBlock * const block = m_pBlocks;
        m_pBlocks = block->next;
        std::free(block);
    }
    m_pFreeEntries = nullptr;
    m_pArena = m_pArenaNext = m_pArenaLimit = nullptr;
    m_uArenaSize = 0;
}

void CIniFile_::ReleaseLock() noexcept
{
    if (!m_LockFile) return;
    m_LockFile.Reset();
    try {
        Platform::DeleteFile(LockName());
    } catch (std::bad_alloc const &) {
        // The name can't be put together: the lock file stays, and the next writer's timeout tells of it.
    }
}

INI_SECTION * CIniFile_::FindExisting(CSubStringRef const & name) const noexcept
{
    INI_SECTION * section = m_pSections;
    while (section != nullptr && (section->length != name.size() ||
                                  CSubStringRef(section->text, section->length).Compare(name, /*ignoreCase=*/1) != 0))
        section = section->next;
    return section;
}

INI_KEY * CIniFile_::FindKey(INI_SECTION const & section, CSubStringRef const & name) noexcept
{
    INI_KEY * key = section.keys->head;
    while (key != nullptr &&
           (key->length != name.size() || CSubStringRef(key->text, key->length).Compare(name, /*ignoreCase=*/1) != 0))
        key = key->next;
    return key;
}

INI_SECTION * CIniFile_::Find(CSubStringRef const & name, CSubStringRef const & comment)
{
    INI_SECTION * section = FindExisting(name);
    if (section == nullptr) {
        EnsureEntries(2);
        char * const text = AllocText(name.size() + 1);
        std::memcpy(text, name.data(), name.size());
        text[name.size()] = '\0';
        INI_KEYLIST * const keys = ::new (AllocIniEntry()) INI_KEYLIST{nullptr, nullptr, nullptr, 0};
        section = ::new (AllocIniEntry()) INI_SECTION{nullptr, text, name.size(), keys};
        (m_pSections != nullptr ? m_pLastSection->next : m_pSections) = section;
        m_pLastSection = section;
        ++m_nSections;
    }
    if (comment.size() != 0) KommentarErweitern(section->keys->comment, 0, comment);
    return section;
}

INI_KEY * CIniFile_::AddKey(INI_SECTION & section, std::size_t textSize, std::size_t nameLength, std::size_t count)
{
    EnsureEntries(1);
    char * const text = AllocText(textSize);
    INI_KEY * const key = ::new (AllocIniEntry()) INI_KEY{nullptr, text, nameLength, count};
    INI_KEYLIST & keys = *section.keys;
    (keys.head != nullptr ? keys.tail->next : keys.head) = key;
    keys.tail = key;
    ++keys.count;
    return key;
}

void CIniFile_::RemoveKey(INI_SECTION & section, INI_KEY * key) noexcept
{
    INI_KEYLIST & keys = *section.keys;
    INI_KEY * previous = nullptr;
    for (INI_KEY * k = keys.head; k != key; k = k->next)
        previous = k;
    (previous != nullptr ? previous->next : keys.head) = key->next;
    if (keys.tail == key) keys.tail = previous;
    --keys.count;
    FreeText(key->text);
    FreeIniEntry(key);
}

void CIniFile_::RemoveSection(INI_SECTION * section) noexcept
{
    while (section->keys->head != nullptr)
        RemoveKey(*section, section->keys->head);
    INI_SECTION * previous = nullptr;
    for (INI_SECTION * s = m_pSections; s != section; s = s->next)
        previous = s;
    (previous != nullptr ? previous->next : m_pSections) = section->next;
    if (m_pLastSection == section) m_pLastSection = previous;
    --m_nSections;
    FreeText(section->text);
    FreeText(section->keys->comment);
    FreeIniEntry(section->keys);
    FreeIniEntry(section);
}

void CIniFile_::ReplaceValue(INI_KEY & key, CSubStringRef const & value, std::size_t count)
{
    char * const text = AllocText(key.length + value.size() + 2);
    std::memcpy(text, key.text, key.length + 1);
    std::memcpy(text + key.length + 1, value.data(), value.size());
    text[key.length + 1 + value.size()] = '\0';
    FreeText(key.text);
    key.text = text;
    key.count = count;
}

void CIniFile_::KommentarErweitern(char *& text, std::size_t length, CSubStringRef const & comment)
{
    // length: of what stands in front of the terminated part, the key's name and its NUL.
    std::size_t const present = text != nullptr ? length + std::strlen(text + length) : 0;
    char * const extended = AllocText(present + comment.size() + 1);
    if (present != 0) std::memcpy(extended, text, present);
    std::memcpy(extended + present, comment.data(), comment.size());
    extended[present + comment.size()] = '\0';
    FreeText(text);
    text = extended;
}

} // namespace VLK::Internals

namespace VLK::INI_Files {

using Exceptions::CThrowState;
using Strings::CSubStringRef;

/// What fails leaves nothing open.
template <class TWork>
unsigned int CIniFile::Begin(TWork const & work)
{
    CThrowState state;
    try {
        work();
        return URET_OK;
    } catch (...) {
        VLK_CONTINUE(state, log);
        CleanUp();
        return log.tryThrow();
    }
}

unsigned int CIniFile::Read(CSubStringRef const & file, unsigned int timeoutMs)
{
    return Begin([&] { Open(file, timeoutMs); });
}

unsigned int CIniFile::Read(boost::filesystem::path const & file, unsigned int timeoutMs)
{
    return Begin([&] { Open(file.string(), timeoutMs); });
}

unsigned int CIniFile::Lock(CSubStringRef const & file, unsigned int timeoutMs)
{
    return Begin([&] { OpenLocked(file, timeoutMs); });
}

unsigned int CIniFile::Lock(boost::filesystem::path const & file, unsigned int timeoutMs)
{
    return Begin([&] { OpenLocked(file.string(), timeoutMs); });
}

unsigned int CIniFile::Create(CSubStringRef const & file)
{
    return Begin([&] { New(file); });
}

unsigned int CIniFile::Create(boost::filesystem::path const & file)
{
    return Begin([&] { New(file.string()); });
}

unsigned int CIniFile::Flush(unsigned int)
{
    CThrowState state;
    try {
        Write();
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

CIniSection CIniFile::operator[](CSubStringRef const & name)
{
    CThrowState state;
    try {
        return CIniSection(this, Find(name, CSubStringRef()));
    }
    VLK_THROW_NEXT_AS(state, CIniSection())
}

CIniSection CIniFile::operator[](boost::filesystem::path const & name)
{
    CThrowState state;
    try {
        return (*this)[name.string()];
    }
    VLK_THROW_NEXT_AS(state, CIniSection())
}

} // namespace VLK::INI_Files
