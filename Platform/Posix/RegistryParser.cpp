#include <algorithm>
#include <charconv>
#include <optional>

#include "AsciiCase.h"
#include "Platform/Text.h"
#include "RegistryStore.h"

// The reader of the registry editor's text format. What is wrong with a line is told by SFault, which never leaves
// this file.

namespace {

using Platform::CRegistryNode;
using Platform::EqualIgnoringCase;
using Platform::SRegistryValue;
using Platform::StartsIgnoringCase;

constexpr std::string_view Header = "Windows Registry Editor Version 5.00";
constexpr std::size_t MaxPartBytes = 255 * 3; ///< 255 characters of a key's name
constexpr std::size_t MaxDepth = 512;

struct SFault {
    char const * reason;
};

std::string_view Trim(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\v\f";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool IsBlankOrComment(std::string_view text)
{
    const std::string_view rest = Trim(text);
    return rest.empty() || rest.front() == ';';
}

/// The file's text as UTF-8 without a byte order mark.
std::string DecodeFile(std::string const & bytes)
{
    if (bytes.compare(0, 2, "\xFF\xFE") == 0) {
        std::u16string units((bytes.size() - 2) / 2, u'\0');
        for (std::size_t i = 0; i < units.size(); ++i)
            units[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 + 2 * i]) |
                                             static_cast<unsigned char>(bytes[3 + 2 * i]) << 8);
        return Platform::FromUtf16(units.data(), units.size());
    }
    return bytes.compare(0, 3, "\xEF\xBB\xBF") == 0 ? bytes.substr(3) : bytes;
}

/// Reads a quoted text at the start of `line`, with \\ and \" in it, and takes it off the line.
std::string TakeQuoted(std::string_view & line)
{
    std::string text;
    for (std::size_t i = 1; i < line.size(); ++i) {
        if (line[i] == '"') {
            line.remove_prefix(i + 1);
            return text;
        }
        if (line[i] == '\\' && i + 1 < line.size() && (line[i + 1] == '\\' || line[i + 1] == '"')) ++i;
        text += line[i];
    }
    throw SFault{"the closing quote is missing"};
}

/// 1 to 8 hexadecimal digits, all of `text`.
std::uint32_t ReadHex(std::string_view text, char const * reason)
{
    std::uint32_t number = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number, 16);
    if (text.empty() || text.size() > 8 || error != std::errc() || stop != text.data() + text.size())
        throw SFault{reason};
    return number;
}

std::string ReadHexBytes(std::string_view list)
{
    std::string bytes;
    list = Trim(list);
    while (!list.empty()) {
        const std::size_t comma = std::min(list.find(','), list.size());
        const std::string_view item = Trim(list.substr(0, comma));
        if (item.size() > 2) throw SFault{"a byte has one or two hexadecimal digits"};
        bytes += static_cast<char>(ReadHex(item, "the list of bytes holds something else"));
        list = comma < list.size() ? Trim(list.substr(comma + 1)) : std::string_view();
    }
    return bytes;
}

bool IsTextType(std::uint32_t type)
{
    return type == Platform::RegString || type == Platform::RegExpandString || type == Platform::RegMultiString;
}

/// Text from its UTF-16 bytes, without the NULs at its end.
std::string TextOfUnits(std::string const & bytes)
{
    if (bytes.size() % 2 != 0) throw SFault{"a text in bytes has an odd number of them"};
    std::u16string units(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < units.size(); ++i)
        units[i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * i]) |
                                         static_cast<unsigned char>(bytes[2 * i + 1]) << 8);
    while (!units.empty() && units.back() == u'\0')
        units.pop_back();
    return Platform::FromUtf16(units.data(), units.size());
}

SRegistryValue ReadDwordData(std::string_view digits)
{
    const std::uint32_t number = ReadHex(Trim(digits), "a dword has 1 to 8 hexadecimal digits");
    SRegistryValue value{Platform::RegDword, {}};
    for (unsigned shift = 0; shift < 32; shift += 8)
        value.data += static_cast<char>(number >> shift & 0xFF);
    return value;
}

/// data: behind "hex".
SRegistryValue ReadHexData(std::string_view data)
{
    SRegistryValue value{Platform::RegBinary, {}};
    if (!data.empty() && data.front() == '(') {
        const std::size_t close = data.find(')');
        if (close == std::string_view::npos) throw SFault{"the type's closing bracket is missing"};
        value.type = ReadHex(data.substr(1, close - 1), "the type is no hexadecimal number");
        data.remove_prefix(close + 1);
    }
    if (data.empty() || data.front() != ':') throw SFault{"a colon must stand ahead of the bytes"};
    value.data = ReadHexBytes(data.substr(1));
    if (IsTextType(value.type)) value.data = TextOfUnits(value.data);
    return value;
}

/// The data of a value; nothing for "-", which deletes the value.
std::optional<SRegistryValue> ReadData(std::string_view data)
{
    if (!data.empty() && data.front() == '"') {
        SRegistryValue value{Platform::RegString, TakeQuoted(data)};
        if (!IsBlankOrComment(data)) throw SFault{"something follows the closing quote"};
        return value;
    }
    data = Trim(data.substr(0, data.find(';')));
    if (data == "-") return std::nullopt;
    if (StartsIgnoringCase(data, "dword:")) return ReadDwordData(data.substr(6));
    if (StartsIgnoringCase(data, "hex")) return ReadHexData(data.substr(3));
    throw SFault{"the data is of no known kind"};
}

/// What stands between the brackets of a key's line, without the brackets.
std::string_view TakeKeyName(std::string_view line)
{
    for (std::size_t close = line.find(']'); close != std::string_view::npos; close = line.find(']', close + 1))
        if (IsBlankOrComment(line.substr(close + 1))) return line.substr(1, close - 1);
    throw SFault{"the key's closing bracket is missing"};
}

void CheckKeyPath(std::string_view path)
{
    std::size_t depth = 1;
    for (std::size_t start = 0;; ++depth) {
        const std::size_t end = std::min(path.find('\\', start), path.size());
        if (end == start) throw SFault{"a part of the key's name is empty"};
        if (end - start > MaxPartBytes) throw SFault{"a part of the key's name is too long"};
        if (depth > MaxDepth) throw SFault{"the key lies too deep"};
        if (end == path.size()) return;
        start = end + 1;
    }
}

enum class Hive : std::uint8_t { LocalMachine, Other, None };

Hive HiveOf(std::string_view name)
{
    static constexpr std::string_view others[] = {"HKEY_CURRENT_USER",    "HKCU", "HKEY_CLASSES_ROOT",   "HKCR",
                                                  "HKEY_USERS",           "HKU",  "HKEY_CURRENT_CONFIG", "HKCC",
                                                  "HKEY_PERFORMANCE_DATA"};
    if (EqualIgnoringCase(name, "HKEY_LOCAL_MACHINE") || EqualIgnoringCase(name, "HKLM")) return Hive::LocalMachine;
    for (const std::string_view other : others)
        if (EqualIgnoringCase(name, other)) return Hive::Other;
    return Hive::None;
}

/// Reads the lines of one file, top down.
class CParser {
public:
    CParser(std::string_view text, CRegistryNode & root, Platform::SRegistryFaults & faults)
        : m_rest(text), m_root(root), m_faults(faults)
    {
    }

    void Run()
    {
        while (TakeLine()) {
            const std::size_t line = m_line;
            try {
                ReadLine();
            } catch (SFault const & fault) {
                m_faults.Add(line, fault.reason);
            }
        }
    }

private:
    enum class Section : std::uint8_t { None, Key, Ignored };

    bool TakeLine()
    {
        if (m_rest.empty()) return false;
        m_current = Trim(PeekLine());
        const std::size_t end = m_rest.find('\n');
        m_rest.remove_prefix(end != std::string_view::npos ? end + 1 : m_rest.size());
        ++m_line;
        return true;
    }

    std::string_view PeekLine() const { return m_rest.substr(0, m_rest.find('\n')); }

    void ReadLine()
    {
        if (m_current.empty() || m_current.front() == ';') return;
        const bool first = !m_headerSeen;
        m_headerSeen = true;
        if (first && m_current == Header) return;
        if (first) m_faults.Add(m_line, "the file doesn't begin with \"" + std::string(Header) + '"');
        if (m_current.find('\0') != std::string_view::npos) throw SFault{"the line holds a NUL"};
        if (m_current.front() == '[')
            ReadKey();
        else if (m_current.front() == '"' || m_current.front() == '@')
            ReadValue();
        else if (!first)
            throw SFault{"neither a key nor a value nor a comment"};
    }

    void ReadKey()
    {
        m_section = Section::Ignored; // so that the values of a faulty key don't fall to the one before
        m_key = nullptr;
        std::string_view name = TakeKeyName(m_current);
        const bool removes = !name.empty() && name.front() == '-';
        if (removes) name.remove_prefix(1);
        if (!name.empty() && name.back() == '\\') name.remove_suffix(1);
        const std::size_t hiveEnd = std::min(name.find('\\'), name.size());
        const Hive hive = HiveOf(name.substr(0, hiveEnd));
        if (hive == Hive::None) throw SFault{"the key lies in no known hive"};
        if (hive == Hive::Other) return;
        const std::string_view path = name.substr(std::min(hiveEnd + 1, name.size()));
        if (!path.empty()) CheckKeyPath(path);
        if (removes) {
            if (path.empty()) throw SFault{"a hive can't be removed"};
            m_root.Remove(path);
            return;
        }
        m_key = &m_root.Make(path);
        m_section = Section::Key;
    }

    void ReadValue()
    {
        std::string_view line = m_current;
        std::string name;
        if (line.front() == '@')
            line.remove_prefix(1);
        else
            name = TakeQuoted(line);
        line = Trim(line);
        if (line.empty() || line.front() != '=') throw SFault{"an equals sign must follow the value's name"};
        std::string joined;
        const std::string_view data = JoinContinued(Trim(line.substr(1)), joined);
        if (m_section == Section::None) throw SFault{"the value stands ahead of the first key"};
        std::optional<SRegistryValue> value = ReadData(data);
        if (m_section == Section::Ignored) return;
        if (value)
            m_key->SetValue(std::move(name), std::move(*value));
        else
            m_key->RemoveValue(name);
    }

    /// The whole data of a value whose bytes go on behind a backslash at the line's end.
    std::string_view JoinContinued(std::string_view data, std::string & joined)
    {
        if (!IsContinued(data)) return data;
        joined = data;
        do {
            joined.pop_back();
            const std::string_view next = Trim(PeekLine());
            // A line that begins something new was not meant as a continuation, and is not to be lost.
            const bool goesOn = !m_rest.empty() && !next.empty() && next.find_first_of("[\"@;") != 0;
            if (!goesOn) throw SFault{"the continued line is missing"};
            TakeLine();
            joined += m_current;
        } while (IsContinued(m_current));
        return joined;
    }

    /// line: the data's first line, or one that continues it.
    static bool IsContinued(std::string_view line)
    {
        return !line.empty() && line.back() == '\\' && line.front() != '"' && line.find(';') == std::string_view::npos;
    }

    std::string_view m_rest, m_current;
    std::size_t m_line = 0;
    bool m_headerSeen = false;
    CRegistryNode & m_root;
    CRegistryNode * m_key = nullptr; ///< set while m_section is Key
    Section m_section = Section::None;
    Platform::SRegistryFaults & m_faults;
};

} // namespace

void Platform::ParseRegistry(std::string const & bytes, CRegistryNode & root, SRegistryFaults & faults)
{
    const std::string text = DecodeFile(bytes);
    CParser(text, root, faults).Run();
    root.Compact();
}
