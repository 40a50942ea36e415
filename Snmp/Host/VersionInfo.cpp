#include "Snmp/Host/VersionInfo.h"

#include <cstdio>
#include <cstring>
#include <string_view>

#include "Snmp/Host/Debug.h"
#include "Snmp/Host/VersionText.h"

namespace {

constexpr std::size_t QueryRoom = 260;
constexpr char Replacement = '?';

struct STranslation {
    std::uint16_t langId, codePage;
};

/// The place where a 64-bit system keeps the files that a program of the other word size finds in the system's
/// directory. Empty when there is no such place for the path.
std::string OtherWordSizePath(std::string const & path)
{
    std::string system;
    if (!Platform::SystemLibraryDirectory(system)) return {};
    if (CDebug::Enabled()) CDebug::Trace(3, "\nCFileVersionInfo    : System dir is: \"%s\"", system.c_str());
    std::string other;
    if (path.find(system) == std::string::npos || !Platform::OtherWordSizeDirectory(other)) return {};
    if (CDebug::Enabled()) CDebug::Trace(3, "\nCFileVersionInfo    : Module system location is: \"%s\"", other.c_str());
    // What follows the length of the directory's name, wherever in the path the name was found.
    other += path.substr(system.size());
    if (CDebug::Enabled()) CDebug::Trace(3, "\nCFileVersionInfo    : Check WOW64 system path: \"%s\"", other.c_str());
    return other;
}

std::uint32_t SizeOf(std::string const & path)
{
    Platform::ErrorCode error = Platform::Success;
    std::uint32_t size = Platform::VersionBlockSize(path, error);
    if (size == 0 && error == Platform::ErrorNotFound()) {
        const std::string other = OtherWordSizePath(path);
        if (!other.empty()) size = Platform::VersionBlockSize(other, error);
    }
    if (size == 0 && CDebug::Enabled())
        CDebug::Trace(1, "\nCFileVersionInfo    : ERROR 0x%X! GetFileVersionInfoSize() (\"%s\") FAILED!", error,
                      path.c_str());
    return size;
}

std::string ReadBlock(std::string const & path, std::uint32_t size)
{
    std::string block;
    if (Platform::ReadVersionBlock(path, size, block) == Platform::ErrorNotFound()) {
        const std::string other = OtherWordSizePath(path);
        if (!other.empty()) Platform::ReadVersionBlock(other, size, block);
    }
    block.resize(size);
    return block;
}

} // namespace

void CFileVersionInfo::Load(char const * path) noexcept
{
    if (path == nullptr || *path == '\0') return;
    try {
        const std::string file = path;
        const std::uint32_t size = SizeOf(file);
        if (size == 0) return;
        std::string block = ReadBlock(file, size);
        m_path = file;
        m_block = std::move(block);
    } catch (...) {
        // Without memory the object stays as it was.
    }
}

std::uint32_t CFileVersionInfo::GetSize(char const * path) noexcept
{
    if (path == nullptr) return 0;
    try {
        return SizeOf(path);
    } catch (...) {
        return 0;
    }
}

bool CFileVersionInfo::GetFixed(Platform::SFixedVersion & out) const noexcept
{
    void const * data = nullptr;
    std::uint32_t size = 0;
    if (m_block.empty() || !Platform::QueryVersionBlock(m_block, "\\", data, size) || size < sizeof out) return false;
    std::memcpy(&out, data, sizeof out);
    return true;
}

int CVersionResource::GetString(std::string & out, char const * key, std::uint16_t langId,
                                std::uint16_t codePage) const noexcept
try {
    if (m_block.empty() || key == nullptr) return 0;
    if (!ContainsLangId(langId, codePage)) {
        if (CDebug::Enabled())
            CDebug::Trace(1, "\nCVersionResource    : ERROR 0x%X! ContainsLangId() FAILED!", Platform::ErrorNotFound());
        return 0;
    }
    char query[QueryRoom];
    std::snprintf(query, sizeof query, "\\StringFileInfo\\%04X%04X\\%s", langId, codePage, key);
    if (CDebug::Enabled()) CDebug::Trace(5, "\nCFileVersionInfo    : Query version info string \"%s\"", query);
    void const * data = nullptr;
    std::uint32_t size = 0;
    if (!Platform::QueryVersionBlock(m_block, query, data, size)) {
        if (CDebug::Enabled())
            CDebug::Trace(1, "\nCVersionResource    : ERROR 0x%X! VerQueryValue() FAILED!", Platform::ErrorNotFound());
        return 0;
    }
    const std::string_view found(static_cast<char const *>(data), size);
    std::string text(found.substr(0, found.find('\0')));
    CleanVersionText(text, Replacement);
    out = std::move(text);
    if (CDebug::Enabled())
        CDebug::Trace(4, "\nCVersionResource    : Version info string for \"%s\": \"%s\"", key, out.c_str());
    return 1;
} catch (...) {
    return 0;
}

/// Replaces the arguments by the language and code page of the entry that fits.
bool CVersionResource::ContainsLangId(std::uint16_t & langId, std::uint16_t & codePage) const noexcept
{
    const std::uint16_t wanted = langId;
    if (CDebug::Enabled())
        CDebug::Trace(4, "\nCVersionResource    : Search version info entry for lang ID 0x%04X and code page %d ...",
                      langId, codePage);
    void const * data = nullptr;
    std::uint32_t size = 0;
    std::size_t count = 0;
    if (Platform::QueryVersionBlock(m_block, "\\VarFileInfo\\Translation", data, size)) {
        count = size / sizeof(STranslation);
        if (CDebug::Enabled())
            CDebug::Trace(5,
                          "\nCVersionResource    : Version resource contains %d language(s):", static_cast<int>(count));
    }
    bool found = false;
    for (std::size_t i = 0; i < count && !found; ++i) {
        STranslation entry;
        std::memcpy(&entry, static_cast<char const *>(data) + i * sizeof entry, sizeof entry);
        if (CDebug::Enabled())
            CDebug::Trace(5, "\nCVersionResource    : Check version resource entry with lang ID 0x%04X", entry.langId);
        found = wanted == 0 || entry.langId == wanted;
        if (!found) continue;
        langId = entry.langId;
        codePage = entry.codePage;
    }
    if (CDebug::Enabled())
        CDebug::Trace(4,
                      "\nCVersionResource    : ... version info entry for lang ID 0x%04X %sfound (Return: Lang ID "
                      "0x%04X, Code page %d)!",
                      wanted, found ? "" : "NOT ", langId, codePage);
    return found;
}

unsigned CVersionResource::GetProductMajor() const noexcept
{
    Platform::SFixedVersion version{};
    return GetFixed(version) ? version.productVersionMS >> 16 : 0;
}

unsigned CVersionResource::GetProductMinor() const noexcept
{
    Platform::SFixedVersion version{};
    return GetFixed(version) ? version.productVersionMS & 0xFFFF : 0;
}
