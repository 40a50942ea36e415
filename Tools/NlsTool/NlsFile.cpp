#include "Tools/NlsTool/NlsFile.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <limits>
#include <map>
#include <utility>

#include "Tools/NlsTool/Encoding.h"
#include "Tools/NlsTool/Placeholders.h"
#include "Tools/NlsTool/Problems.h"

namespace NlsTool {

namespace {

constexpr std::uint32_t Magic = 0x25031961;
constexpr std::size_t FileHead = 12;
constexpr std::size_t LanguageHead = 16 + LongestName;
/// The foundation seeks with a signed number of 32 bits on some systems.
constexpr std::size_t LongestFile = std::numeric_limits<std::int32_t>::max();

std::string BytesOf(std::u32string_view text, EEncoding encoding)
{
    return encoding == EEncoding::EncodingNative ? ToNative(text) : ToUtf8(text);
}

std::string NumberBytes(std::size_t value)
{
    auto const byte = [value](unsigned int shift) { return static_cast<char>(value >> shift & 0xFF); };
    return {byte(24), byte(16), byte(8), byte(0)};
}

std::uint32_t NumberAt(std::string_view bytes, std::size_t offset) noexcept
{
    std::uint32_t number = 0;
    for (char const c : bytes.substr(offset, 4))
        number = number << 8 | static_cast<unsigned char>(c);
    return number;
}

std::string Hexadecimal(std::uint32_t number)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", number);
    return text;
}

std::string BlockOf(SLanguage const & language, std::size_t count)
{
    if (language.texts.empty()) return std::string(count, '\0');
    std::string block;
    for (std::u32string const & text : language.texts)
        block += BytesOf(text, language.encoding) + '\0';
    return block;
}

/// Raises CBadFile when an id comes twice: who reads the file never finds the second.
void RefuseRepeated(std::vector<SLanguage> const & languages)
{
    CProblems problems;
    std::map<std::uint32_t, std::string> places;
    for (SLanguage const & language : languages) {
        auto const [first, isNew] = places.try_emplace(language.id, language.place);
        if (!isNew) problems.Add(language.place, LettersOf(language.id) + " is there already, " + first->second);
    }
    problems.RaiseIfAny();
}

/// Where a language's block lies.
struct SBlock {
    std::size_t offset;
    std::size_t size;
};

class CNlsReader {
public:
    CNlsReader(std::string path, std::string_view bytes, SDefaults const & defaults)
        : m_path(std::move(path)), m_bytes(bytes), m_defaults(defaults)
    {
    }

    std::vector<SLanguage> Read()
    {
        ReadFileHead();
        for (std::size_t i = 0; i != m_count; ++i)
            ReadLanguageHead(FileHead + i * LanguageHead);
        m_problems.RaiseIfAny();
        CheckBlocks();
        for (std::size_t i = 0; i != m_count; ++i)
            ReadTexts(m_languages[i], m_blocks[i]);
        m_problems.RaiseIfAny();
        RefuseRepeated(m_languages);
        return std::move(m_languages);
    }

private:
    std::string Place(std::size_t offset) const { return m_path + ": byte " + std::to_string(offset); }
    void Add(std::size_t offset, std::string const & reason) { m_problems.Add(Place(offset), reason); }
    [[noreturn]] void Fail(std::size_t offset, std::string const & reason) const
    {
        throw CBadFile(Place(offset) + ": " + reason);
    }

    /// What decides whether the rest can be read at all.
    void ReadFileHead()
    {
        if (m_bytes.size() >= 4 && NumberAt(m_bytes, 0) != Magic)
            Fail(0, Hexadecimal(NumberAt(m_bytes, 0)) + " is not the mark of a language file, " + Hexadecimal(Magic));
        if (m_bytes.size() < FileHead)
            Fail(m_bytes.size(), "the file ends in its head of " + std::to_string(FileHead) + " bytes");
        if (NumberAt(m_bytes, 4) != m_defaults.texts.size())
            Fail(4, "the file has " + std::to_string(NumberAt(m_bytes, 4)) + " texts for a language, the module has " +
                        std::to_string(m_defaults.texts.size()));
        m_count = NumberAt(m_bytes, 8);
        if (m_count > (m_bytes.size() - FileHead) / LanguageHead)
            Fail(m_bytes.size(), "the file ends in the heads of its " + std::to_string(m_count) + " languages");
    }

    void ReadLanguageHead(std::size_t offset)
    {
        SLanguage language;
        language.place = Place(offset);
        language.id = NumberAt(m_bytes, offset);
        if (LettersOf(language.id).empty())
            Add(offset, Hexadecimal(language.id) + " is no language: two small letters");
        else if (language.id == m_defaults.language)
            Add(offset,
                LettersOf(language.id) + " is the language of the compiled-in texts, which a file can't replace");
        m_blocks.push_back({NumberAt(m_bytes, offset + 4), NumberAt(m_bytes, offset + 8)});
        std::uint32_t const encoding = NumberAt(m_bytes, offset + 12);
        if (encoding > EEncoding::EncodingAbsent) Add(offset + 12, std::to_string(encoding) + " is no encoding");
        language.encoding = static_cast<EEncoding>(std::min<std::uint32_t>(encoding, EEncoding::EncodingAbsent));
        std::string_view const field = m_bytes.substr(offset + 16, LongestName);
        std::string_view const name = field.substr(0, field.find('\0'));
        if (name.empty())
            language.name = FromUtf8(NameOf(language.encoding));
        else
            Decode(offset + 16, name, language.encoding, "the name", language.name);
        m_languages.push_back(std::move(language));
    }

    /// The blocks must fill the file behind the heads, each for itself.
    void CheckBlocks()
    {
        std::size_t const start = FileHead + m_count * LanguageHead;
        std::size_t length = start;
        for (std::size_t i = 0; i != m_count; ++i) {
            length += m_blocks[i].size;
            if (m_blocks[i].offset < start || m_blocks[i].offset > m_bytes.size() ||
                m_blocks[i].size > m_bytes.size() - m_blocks[i].offset)
                Add(HeadOf(i) + 4, "the block of " + std::to_string(m_blocks[i].size) + " bytes at " +
                                       std::to_string(m_blocks[i].offset) + " is not inside of the file");
        }
        if (length != m_bytes.size())
            Add(m_bytes.size(),
                "the file has " + std::to_string(m_bytes.size()) + " bytes, its heads say " + std::to_string(length));
        m_problems.RaiseIfAny();
        CheckOverlaps();
    }

    void CheckOverlaps()
    {
        std::map<std::size_t, std::size_t> ends; // by start
        for (std::size_t i = 0; i != m_count; ++i) {
            if (m_blocks[i].size == 0) continue;
            std::size_t const end = m_blocks[i].offset + m_blocks[i].size;
            auto const next = ends.lower_bound(m_blocks[i].offset);
            bool const overlaps = (next != ends.end() && next->first < end) ||
                                  (next != ends.begin() && std::prev(next)->second > m_blocks[i].offset);
            if (overlaps) Add(HeadOf(i) + 4, "the block lies in another one");
            ends.emplace(m_blocks[i].offset, end);
        }
        m_problems.RaiseIfAny();
    }

    void ReadTexts(SLanguage & language, SBlock const & block)
    {
        bool const isAbsent = language.encoding == EEncoding::EncodingAbsent;
        if (isAbsent && block.size == 0) return;
        std::string_view const bytes = m_bytes.substr(block.offset, block.size);
        std::size_t offset = 0;
        for (std::size_t i = 0; i != m_defaults.texts.size(); ++i) {
            std::size_t const end = bytes.find('\0', offset);
            if (end == bytes.npos)
                return Add(block.offset + block.size, "the block of " + LettersOf(language.id) + " ends in text " +
                                                          std::to_string(i) + " of " +
                                                          std::to_string(m_defaults.texts.size()));
            if (!isAbsent) ReadText(language, block.offset + offset, bytes.substr(offset, end - offset));
            offset = end + 1;
        }
        if (offset != bytes.size())
            Add(block.offset + offset, "the block of " + LettersOf(language.id) + " goes on behind its last text");
    }

    void ReadText(SLanguage & language, std::size_t offset, std::string_view bytes)
    {
        std::size_t const index = language.texts.size();
        std::string const what = "text " + std::to_string(index) + " of " + LettersOf(language.id);
        language.texts.emplace_back();
        if (!Decode(offset, bytes, language.encoding, what, language.texts.back())) return;
        std::string const fault = FaultOfPlaceholders(m_defaults.texts[index], language.texts.back());
        if (!fault.empty()) Add(offset, what + ": " + fault);
    }

    bool Decode(std::size_t offset, std::string_view bytes, EEncoding encoding, std::string const & what,
                std::u32string & out)
    {
        if (encoding == EEncoding::EncodingNative) {
            out = FromNative(bytes);
        } else if (std::size_t const bad = FindBadUtf8(bytes); bad != bytes.npos) {
            Add(offset + bad, what + " is no UTF-8");
            return false;
        } else {
            out = FromUtf8(bytes);
        }
        std::string const fault = FaultOf(out);
        if (!fault.empty()) Add(offset, what + ": " + fault);
        return fault.empty();
    }

    static std::size_t HeadOf(std::size_t index) noexcept { return FileHead + index * LanguageHead; }

    std::string m_path;
    std::string_view m_bytes;
    SDefaults const & m_defaults;
    CProblems m_problems;
    std::size_t m_count = 0; // of the languages
    std::vector<SLanguage> m_languages;
    std::vector<SBlock> m_blocks;
};

} // namespace

std::string NameBytes(SLanguage const & language)
{
    return BytesOf(language.name, language.encoding);
}

std::string PrintNlsFile(std::vector<SLanguage> const & languages, std::size_t count)
{
    RefuseRepeated(languages);
    std::size_t const start = FileHead + LanguageHead * languages.size();
    std::string heads = NumberBytes(Magic) + NumberBytes(count) + NumberBytes(languages.size());
    std::string blocks;
    for (SLanguage const & language : languages) {
        std::string name = NameBytes(language);
        name.resize(LongestName);
        std::string const block = BlockOf(language, count);
        heads += NumberBytes(language.id) + NumberBytes(start + blocks.size()) + NumberBytes(block.size()) +
                 NumberBytes(language.encoding) + name;
        blocks += block;
        if (start + blocks.size() > LongestFile)
            throw CBadFile(language.place + ": the file would be longer than 2 GiB");
    }
    return heads + blocks;
}

std::vector<SLanguage> ReadNlsFile(std::string const & path, std::string_view bytes, SDefaults const & defaults)
{
    return CNlsReader(path, bytes, defaults).Read();
}

} // namespace NlsTool
