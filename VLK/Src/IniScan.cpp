#include <algorithm>
#include <cstring>

#include "IniEntries.h"
#include "VLK/IniFile.h"

namespace VLK::Internals {

using Strings::CStringVar;
using Strings::CSubStringRef;
using Strings::TString;

namespace {

// What divides a logical line; none of them can come from the file itself, where control characters are dropped.
constexpr char KeyEnd = '\r';
constexpr char ElementEnd = '\n';

bool IsBlank(char c) noexcept
{
    return c != '\0' && static_cast<unsigned char>(c) <= ' ';
}

char const * EndOfLine(char const * p) noexcept
{
    return p + std::strcspn(p, "\n");
}

} // namespace

/// Appends a tab and the text to the end of the line; without a comment wanted only goes there.
char const * CIniFile_::LeseKommentar(char const * p, CStringVar * comment)
{
    char const * const end = EndOfLine(p);
    if (comment == nullptr) return end;
    *comment += '\t';
    for (; p != end; ++p)
        if (*p == '\t' || static_cast<unsigned char>(*p) >= ' ') *comment += *p;
    return end;
}

/// From behind the opening quote to behind the closing one, or, where there is none, to the end of the line.
char const * CIniFile_::ReadQuoted(CStringVar & line, char const * p, bool & closed)
{
    closed = true;
    for (; *p != '\0' && *p != '\n'; ++p) {
        if (*p == '"') {
            if (p[1] != '"') return p + 1;
            // A doubled quote stores one, and its second half closes.
            line += '"';
            return p + 2;
        }
        if (*p == '\t' || static_cast<unsigned char>(*p) >= ' ') line += *p;
    }
    closed = false;
    return p;
}

/// Looks behind the end of a line whether the next one continues it; takes the comment lines between.
char const * CIniFile_::SkipToContinuation(char const * p, CStringVar * comment, bool & continued)
{
    for (;;) {
        while (IsBlank(*p))
            ++p;
        if (*p != ';' || comment == nullptr) break;
        p = LeseKommentar(p + 1, comment);
    }
    continued = *p == '+';
    return continued ? p + 1 : p;
}

char const * CIniFile_::ReadLn(CStringVar & line, char const * p, CStringVar * comment)
{
    while (IsBlank(*p))
        ++p;
    bool hasKey = false;
    while (*p != '\0') {
        char const c = *p++;
        if (c == '\n') {
            bool continued = false;
            p = SkipToContinuation(p, comment, continued);
            if (!continued) return p;
        } else if (c == ';') {
            p = LeseKommentar(p, comment);
        } else if (c == '"') {
            bool closed = false;
            p = ReadQuoted(line, p, closed);
            if (!closed) return p;
        } else if (c == '=' && !hasKey) {
            hasKey = true;
            line += KeyEnd;
        } else if (c == ',' && hasKey) {
            line += ElementEnd;
        } else if (!IsBlank(c)) {
            line += c;
        }
    }
    return p;
}

void CIniFile_::ParseLines(char * text, bool keepComments)
{
    TString<512> line;
    TString<2048> comment;
    INI_SECTION * section = nullptr;
    char const * p = text;
    while (*p != '\0') {
        line = Misc::CNull();
        comment = Misc::CNull();
        p = ReadLn(line, p, keepComments ? &comment : nullptr);
        // What is behind p hasn't been read yet; the room in front of it is free for the texts.
        m_pArenaLimit = const_cast<char *>(p);
        std::size_t const separator = line.CSubStringRef::Find(KeyEnd);
        if (line.size() != 0 && line.data()[0] == '[') {
            ParseSection(line, comment, section);
        } else if (separator == CSubStringRef::POSERR) {
            if (comment.size() != 0) AddComment(comment, section);
        } else {
            if (section == nullptr) section = Find(CSubStringRef(), CSubStringRef());
            ParseKey(line, separator, comment, *section);
        }
    }
}

void CIniFile_::ParseSection(CStringVar & line, CStringVar const & comment, INI_SECTION *& section)
{
    CSubStringRef const text(line.data() + 1, line.size() - 1);
    section = Find(text(0, text.Find(static_cast<int>(']'))), comment);
}

void CIniFile_::ParseKey(CStringVar const & line, std::size_t separator, CStringVar const & comment,
                         INI_SECTION & section)
{
    char const * const end = line.data() + line.size();
    std::size_t const count = 1 + static_cast<std::size_t>(std::count(line.data() + separator + 1, end, ElementEnd));
    char * const text = AddKey(section, line.size() + comment.size() + 1, separator, count)->text;
    std::memcpy(text, line.data(), line.size());
    text[separator] = '\0';
    std::memcpy(text + line.size(), comment.data(), comment.size());
    text[line.size() + comment.size()] = '\0';
}

/// A comment on its own belongs to what was read last: the section's last key, or the section.
void CIniFile_::AddComment(CStringVar const & comment, INI_SECTION *& section)
{
    if (section == nullptr) {
        section = Find(CSubStringRef(), comment);
        return;
    }
    if (INI_KEY * const key = section->keys->tail; key != nullptr)
        KommentarErweitern(key->text, key->length + 1, comment);
    else
        KommentarErweitern(section->keys->comment, 0, comment);
}

} // namespace VLK::Internals
