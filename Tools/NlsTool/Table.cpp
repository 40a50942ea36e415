#include "Tools/NlsTool/Table.h"

#include <charconv>
#include <map>
#include <optional>
#include <utility>

#include "Tools/NlsTool/Encoding.h"
#include "Tools/NlsTool/NlsFile.h"
#include "Tools/NlsTool/Placeholders.h"
#include "Tools/NlsTool/Problems.h"

namespace NlsTool {

namespace {

constexpr std::string_view ByteOrderMark = "\xEF\xBB\xBF";

struct SLine {
    std::size_t number = 0;
    bool isGood = false; ///< otherwise there is no text, and why has been said
    std::u32string text;
};

/// A table's lines taken apart, before anything is known of what ought to be in it.
class CTableReader {
public:
    explicit CTableReader(std::string path) : m_path(std::move(path)) {}

    void Read(std::string_view bytes)
    {
        if (bytes.starts_with(ByteOrderMark)) bytes.remove_prefix(ByteOrderMark.size());
        while (!bytes.empty()) {
            std::size_t const end = bytes.find('\n');
            ReadLine(bytes.substr(0, end));
            bytes.remove_prefix(end == bytes.npos ? bytes.size() : end + 1);
        }
        if (m_languageLine == 0) Fail(LastLine(), "there is no line 'language' with two letters");
        if (NameBytes(Head()).size() > LongestName)
            Fail(m_nameLine, "the name is too long: at most " + std::to_string(LongestName) + " bytes are allowed");
    }

    /// The table without its texts.
    SLanguage Head() const
    {
        SLanguage language;
        language.id = m_language;
        language.place = Place(m_languageLine);
        language.encoding = m_encoding.value_or(EEncoding::EncodingUtf8);
        language.name = m_name.value_or(FromUtf8(NlsTool::NameOf(language.encoding)));
        return language;
    }
    std::map<std::uint32_t, SLine> const & Texts() const noexcept { return m_texts; }
    std::size_t LastLine() const noexcept { return m_line != 0 ? m_line : 1; }

    void Fail(std::size_t line, std::string const & reason) { m_problems.Add(Place(line), reason); }
    void RaiseIfAny() const { m_problems.RaiseIfAny(); }

private:
    std::string Place(std::size_t line) const { return m_path + ":" + std::to_string(line); }
    void FailHere(std::string const & reason) { Fail(m_line, reason); }

    void ReadLine(std::string_view line)
    {
        ++m_line;
        if (line.ends_with('\r')) line.remove_suffix(1);
        std::size_t const bad = FindBadUtf8(line);
        if (bad != line.npos) FailHere("byte " + std::to_string(bad + 1) + " of the line is no UTF-8");
        if (line.find_first_not_of(" \t") == line.npos || line.starts_with('#')) return;
        std::size_t const tab = line.find('\t');
        if (tab == line.npos) return FailHere("there is no tab behind the text's number");
        std::u32string text;
        bool const isGood = bad == line.npos && Unescape(line.substr(tab + 1), text) && IsAllowed(text);
        ReadEntry(line.substr(0, tab), isGood, text);
    }

    /// An entry is known to be there even if its text isn't good, so that nobody hears of it as missing, too.
    void ReadEntry(std::string_view key, bool isGood, std::u32string const & text)
    {
        if (key == "language") {
            if (!IsRepeated("language", m_languageLine) && isGood) ReadLanguage(ToUtf8(text));
        } else if (key == "name") {
            if (!IsRepeated("name", m_nameLine) && isGood) m_name = text;
        } else if (key == "encoding") {
            if (!IsRepeated("encoding", m_encodingLine) && isGood) ReadEncoding(ToUtf8(text));
        } else {
            ReadText(key, isGood, text);
        }
    }

    bool IsAllowed(std::u32string const & text)
    {
        std::string const fault = FaultOf(text);
        if (!fault.empty()) FailHere(fault);
        return fault.empty();
    }

    bool Unescape(std::string_view value, std::u32string & out)
    {
        std::u32string const text = FromUtf8(value);
        for (std::size_t i = 0; i != text.size(); ++i) {
            if (text[i] == U'\t') {
                FailHere("a tab in a text is written \\t");
                return false;
            }
            if (text[i] != U'\\') {
                out += text[i];
                continue;
            }
            constexpr std::u32string_view letters = U"nt\\";
            constexpr std::u32string_view meanings = U"\n\t\\";
            std::size_t const which = ++i != text.size() ? letters.find(text[i]) : letters.npos;
            if (which == letters.npos) {
                FailHere("a backslash is followed by n, t or another backslash");
                return false;
            }
            out += meanings[which];
        }
        return true;
    }

    void ReadLanguage(std::string const & letters)
    {
        m_language = LanguageId(letters);
        if (m_language == 0) FailHere("'" + letters + "' is no language: two small letters, such as de");
    }

    void ReadEncoding(std::string const & name)
    {
        for (EEncoding const encoding : {EEncoding::EncodingNative, EEncoding::EncodingUtf8, EEncoding::EncodingAbsent})
            if (name == NlsTool::NameOf(encoding)) m_encoding = encoding;
        if (!m_encoding) FailHere("'" + name + "' is no encoding: native, utf-8 or absent");
    }

    bool IsRepeated(std::string const & key, std::size_t & line)
    {
        if (line != 0) {
            FailHere("'" + key + "' stands in line " + std::to_string(line) + " already");
            return true;
        }
        line = m_line;
        return false;
    }

    void ReadText(std::string_view key, bool isGood, std::u32string const & text)
    {
        std::uint32_t id = 0;
        auto const [end, error] = std::from_chars(key.data(), key.data() + key.size(), id);
        if (error != std::errc() || end != key.data() + key.size())
            return FailHere("a line begins with a text's number, or with language, name or encoding");
        auto const [place, isNew] = m_texts.try_emplace(id);
        if (!isNew)
            return FailHere("text " + std::to_string(id) + " stands in line " + std::to_string(place->second.number) +
                            " already");
        place->second = {m_line, isGood, text};
    }

    std::string m_path;
    CProblems m_problems;
    std::size_t m_line = 0;
    std::uint32_t m_language = 0;
    std::size_t m_languageLine = 0; // 0: not there, as in the two below
    std::size_t m_nameLine = 0;
    std::size_t m_encodingLine = 0;
    std::optional<std::u32string> m_name;
    std::optional<EEncoding> m_encoding;
    std::map<std::uint32_t, SLine> m_texts;
};

std::string Escaped(std::u32string_view text)
{
    std::string out;
    for (char const c : ToUtf8(text)) {
        if (c == '\n')
            out += "\\n";
        else if (c == '\t')
            out += "\\t";
        else
            (c == '\\' ? out += '\\' : out) += c;
    }
    return out;
}

std::string EntryOf(std::size_t id, std::u32string_view text)
{
    return std::to_string(id) + "\t" + Escaped(text) + "\n";
}

void CheckTexts(CTableReader & table, SDefaults const & defaults)
{
    for (auto const & [id, line] : table.Texts()) {
        if (id >= defaults.texts.size()) {
            table.Fail(line.number, "there is no text " + std::to_string(id) + ": they go from 0 to " +
                                        std::to_string(defaults.texts.size() - 1));
        } else if (line.isGood) {
            std::string const fault = FaultOfPlaceholders(defaults.texts[id], line.text);
            if (!fault.empty()) table.Fail(line.number, fault);
        }
    }
    for (std::size_t id = 0; id != defaults.texts.size(); ++id)
        if (!table.Texts().contains(static_cast<std::uint32_t>(id)))
            table.Fail(table.LastLine(), "text " + std::to_string(id) + " is missing: " + Escaped(defaults.texts[id]));
}

} // namespace

SLanguage ReadTable(std::string const & path, std::string_view bytes, SDefaults const & defaults)
{
    CTableReader table(path);
    table.Read(bytes);
    SLanguage language = table.Head();
    if (language.encoding != EEncoding::EncodingAbsent)
        CheckTexts(table, defaults);
    else
        for (auto const & [id, line] : table.Texts())
            table.Fail(line.number, "a table of the encoding absent has no texts");
    table.RaiseIfAny();
    if (language.id == defaults.language)
        throw CBadFile(language.place + ": " + LettersOf(language.id) +
                       " is the language of the compiled-in texts, which a file can't replace");
    for (auto const & [id, line] : table.Texts())
        language.texts.push_back(line.text);
    return language;
}

SDefaults ReadDefaults(std::string const & path, std::string_view bytes)
{
    CTableReader table(path);
    table.Read(bytes);
    SDefaults defaults{table.Head().id, {}};
    for (auto const & [id, line] : table.Texts()) {
        if (id != defaults.texts.size()) {
            table.Fail(line.number, "text " + std::to_string(defaults.texts.size()) + " is missing before this one");
            break;
        }
        defaults.texts.push_back(line.text);
    }
    if (table.Texts().empty()) table.Fail(table.LastLine(), "there are no texts");
    table.RaiseIfAny();
    return defaults;
}

std::string PrintTable(SLanguage const & language)
{
    std::string out = "language\t" + LettersOf(language.id) + "\nname\t" + Escaped(language.name) + "\nencoding\t" +
                      std::string(NameOf(language.encoding)) + "\n\n";
    for (std::size_t i = 0; i != language.texts.size(); ++i)
        out += EntryOf(i, language.texts[i]);
    return out;
}

std::string PrintTemplate(SDefaults const & defaults)
{
    std::string out = "# A table of texts in UTF-8: number, tab, text. Inside of a text \\n is the end of a line, \\t "
                      "a tab, \\\\ one\n"
                      "# backslash. Placeholders keep their conversions and their order.\n"
                      "language\t" +
                      LettersOf(defaults.language) + "\nname\t" + LettersOf(defaults.language) + "\nencoding\tutf-8\n";
    for (std::size_t i = 0; i != defaults.texts.size(); ++i)
        out += "\n# " + Escaped(defaults.texts[i]) + "\n" + EntryOf(i, defaults.texts[i]);
    return out;
}

} // namespace NlsTool
