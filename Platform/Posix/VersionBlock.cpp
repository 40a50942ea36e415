#include "VersionBlock.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>
#include <vector>

#include <elf.h>

#include "AsciiCase.h"
#include "Platform/File.h"
#include "Platform/Module.h"

namespace {

using Platform::ErrorCode;

constexpr std::uint32_t MaxBlockBytes = 64U << 10;
constexpr std::uint64_t MaxSections = 65536;
constexpr std::uint64_t MaxNameBytes = 1U << 20;
constexpr ErrorCode NoVersionData = ENODATA;

/// Random access to a file's bytes, every range checked against its size. One thread at a time.
class CFileBytes {
public:
    ErrorCode Open(std::string const & path)
    {
        Platform::FileHandle handle = Platform::NoFile;
        const ErrorCode error = Platform::OpenFile(handle, path, Platform::FileMode::ReadExisting);
        if (error != Platform::Success) return error;
        m_stream.Reset(handle);
        return Platform::FileSize(handle, m_size);
    }
    /// False when the range doesn't lie within the file.
    bool Read(std::uint64_t offset, void * out, std::uint64_t size) const
    {
        if (offset > m_size || size > m_size - offset) return false;
        ErrorCode error = Platform::Success;
        return Platform::SeekTo(m_stream.Get(), offset) == Platform::Success &&
               Platform::ReadFile(m_stream.Get(), out, size, error) == size;
    }

private:
    Platform::CFileHandle m_stream;
    std::uint64_t m_size = 0;
};

bool ReadHeader(CFileBytes const & file, Elf64_Ehdr & out)
{
    return file.Read(0, &out, sizeof out) && std::memcmp(out.e_ident, ELFMAG, SELFMAG) == 0 &&
           out.e_ident[EI_CLASS] == ELFCLASS64 && out.e_ident[EI_DATA] == ELFDATA2LSB && out.e_shoff != 0 &&
           out.e_shentsize == sizeof(Elf64_Shdr);
}

/// All section headers, and which of them holds the names. Empty when the file is none or a broken one.
std::vector<Elf64_Shdr> ReadSections(CFileBytes const & file, std::size_t & nameSection)
{
    Elf64_Ehdr header;
    Elf64_Shdr first;
    if (!ReadHeader(file, header) || !file.Read(header.e_shoff, &first, sizeof first)) return {};
    // Numbers too large for the header stand in the otherwise empty first section.
    const std::uint64_t count = header.e_shnum != 0 ? header.e_shnum : first.sh_size;
    nameSection = header.e_shstrndx != SHN_XINDEX ? header.e_shstrndx : first.sh_link;
    if (count > MaxSections || nameSection >= count) return {};
    std::vector<Elf64_Shdr> sections(static_cast<std::size_t>(count));
    if (!file.Read(header.e_shoff, sections.data(), count * sizeof(Elf64_Shdr))) return {};
    return sections;
}

std::optional<Elf64_Shdr> FindVersionSection(CFileBytes const & file)
{
    std::size_t nameSection = 0;
    const std::vector<Elf64_Shdr> sections = ReadSections(file, nameSection);
    if (sections.empty() || sections[nameSection].sh_size > MaxNameBytes) return std::nullopt;
    std::string names(static_cast<std::size_t>(sections[nameSection].sh_size), '\0');
    if (!file.Read(sections[nameSection].sh_offset, names.data(), names.size())) return std::nullopt;
    for (Elf64_Shdr const & section : sections) {
        if (section.sh_type != SHT_PROGBITS || section.sh_name >= names.size()) continue;
        if (std::strcmp(names.c_str() + section.sh_name, KXRA_VERSION_SECTION) == 0) return section;
    }
    return std::nullopt;
}

ErrorCode LoadBlock(std::string const & path, std::string & out)
{
    CFileBytes file;
    const ErrorCode error = file.Open(path);
    if (error != Platform::Success) return error;
    const std::optional<Elf64_Shdr> section = FindVersionSection(file);
    if (!section || section->sh_size == 0 || section->sh_size > MaxBlockBytes) return NoVersionData;
    std::string block(static_cast<std::size_t>(section->sh_size), '\0');
    if (!file.Read(section->sh_offset, block.data(), block.size())) return NoVersionData;
    out = std::move(block);
    return Platform::Success;
}

/// Takes `start` off the text, without regard to case.
bool TakeStart(std::string_view & text, std::string_view start) noexcept
{
    if (!Platform::StartsIgnoringCase(text, start)) return false;
    text.remove_prefix(start.size());
    return true;
}

/// A NUL-terminated text off the front of `rest`; nothing when the NUL is missing.
std::optional<std::string_view> TakeText(std::string_view & rest) noexcept
{
    const std::size_t end = rest.find('\0');
    if (end == std::string_view::npos) return std::nullopt;
    const std::string_view text = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    return text;
}

/// The parts of a block, each checked against its size.
struct SBlock {
    std::string_view fixed, translations, texts;
};

std::optional<SBlock> SplitBlock(std::string_view block) noexcept
{
    constexpr std::size_t fixedBytes = KXRA_VERSION_FIXED_WORDS * sizeof(std::uint32_t);
    constexpr std::size_t headBytes = KXRA_VERSION_MAGIC_SIZE + fixedBytes + sizeof(std::uint32_t);
    if (block.size() < headBytes || block.compare(0, KXRA_VERSION_MAGIC_SIZE, KXRA_VERSION_MAGIC) != 0)
        return std::nullopt;
    std::uint32_t count = 0;
    std::memcpy(&count, block.data() + headBytes - sizeof count, sizeof count);
    const std::string_view rest = block.substr(headBytes);
    if (count > rest.size() / 4) return std::nullopt;
    return SBlock{block.substr(KXRA_VERSION_MAGIC_SIZE, fixedBytes), rest.substr(0, count * std::size_t{4}),
                  rest.substr(count * std::size_t{4})};
}

/// The number of the translation that "LLLLCCCC" names; the count of them when there is no such translation.
std::size_t TranslationIndex(std::string_view translations, std::string_view name) noexcept
{
    std::size_t index = 0;
    for (; index < translations.size() / 4; ++index) {
        std::uint16_t pair[2];
        std::memcpy(pair, translations.data() + index * 4, sizeof pair);
        char text[9];
        std::snprintf(text, sizeof text, "%04X%04X", pair[0], pair[1]);
        if (Platform::EqualIgnoringCase(text, name)) break;
    }
    return index;
}

std::optional<std::string_view> FindText(SBlock const & block, std::size_t translation, std::string_view key) noexcept
{
    std::string_view rest = block.texts;
    for (std::size_t index = 0; index <= translation;) {
        const std::optional<std::string_view> name = TakeText(rest);
        if (!name) return std::nullopt;
        if (name->empty()) {
            ++index;
            continue;
        }
        const std::optional<std::string_view> text = TakeText(rest);
        if (!text) return std::nullopt;
        if (index == translation && Platform::EqualIgnoringCase(*name, key)) return text;
    }
    return std::nullopt;
}

bool Give(std::string_view found, void const *& out, std::uint32_t & size) noexcept
{
    out = found.data();
    size = static_cast<std::uint32_t>(found.size());
    return true;
}

bool QueryText(SBlock const & block, std::string_view query, void const *& out, std::uint32_t & size) noexcept
{
    constexpr std::size_t nameSize = 8;
    if (query.size() < nameSize + 2 || query[nameSize] != '\\') return false;
    const std::size_t translation = TranslationIndex(block.translations, query.substr(0, nameSize));
    if (translation == block.translations.size() / 4) return false;
    const std::optional<std::string_view> text = FindText(block, translation, query.substr(nameSize + 1));
    if (!text) return false;
    return Give({text->data(), text->size() + 1}, out, size); // the NUL counts
}

} // namespace

std::uint32_t Platform::VersionBlockSize(std::string const & path, ErrorCode & error)
{
    std::string block;
    error = LoadBlock(path, block);
    return static_cast<std::uint32_t>(block.size());
}

Platform::ErrorCode Platform::ReadVersionBlock(std::string const & path, std::uint32_t size, std::string & out)
{
    std::string block;
    const ErrorCode error = LoadBlock(path, block);
    if (error != Success) return error;
    if (block.size() > size) block.resize(size);
    out = std::move(block);
    return Success;
}

bool Platform::QueryVersionBlock(std::string const & block, char const * query, void const *& out,
                                 std::uint32_t & size) noexcept
{
    const std::optional<SBlock> parts = SplitBlock(block);
    if (!parts || query == nullptr) return false;
    std::string_view name = query;
    if (name == "\\") return Give(parts->fixed, out, size);
    if (EqualIgnoringCase(name, "\\VarFileInfo\\Translation"))
        return !parts->translations.empty() && Give(parts->translations, out, size);
    return TakeStart(name, "\\StringFileInfo\\") && QueryText(*parts, name, out, size);
}
