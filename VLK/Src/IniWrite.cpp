#include <algorithm>
#include <cstring>

#include "IniEntries.h"
#include "IniWait.h"
#include "Memory.h"
#include "VLK/Exceptions.h"
#include "VLK/FormatStream.h"
#include "VLK/IniFile.h"
#include "VLK/ThrowState.h"

namespace VLK::Internals {

using Exceptions::CThrowState;
using Output_Streams::CChrStreamBuffer;
using Strings::CStringVar;
using Strings::CSubStringRef;
using Strings::TString;

namespace {

constexpr std::size_t BufferStep = 4096;
constexpr std::size_t WrapAfter = 50;     ///< characters of values on one line
constexpr std::size_t CommentColumn = 50; ///< behind the "=", where a short value allows it
constexpr std::size_t LongestLineComment = 55;
constexpr char const * LineEnd = "\r\n";
constexpr char const * Continuation = "\r\n+";

CSubStringRef UpTo(char const * text, char end) noexcept
{
    char const stop[] = {end, '\0'};
    return {text, std::strcspn(text, stop)};
}

} // namespace

std::size_t CIniFile_::AusgabeLaengeErmitteln(char const * text, std::size_t n) noexcept
{
    std::size_t length = n;
    std::size_t quotes = 2; // around the whole, once there is a reason
    for (std::size_t i = 0; i < n; ++i) {
        char const c = text[i];
        if (c == ' ' || c == '"') {
            length += quotes + (c == '"' ? 1 : 0);
            quotes = 0;
        } else if (static_cast<unsigned char>(c) < ' ' && c != '\t') {
            ++i;
        }
    }
    return length;
}

void CIniFile_::ConvertString(CStringVar & out, char const * text, std::size_t n)
{
    std::size_t const start = out.size();
    bool quoted = false;
    for (std::size_t i = 0; i != n; ++i) {
        char const c = text[i];
        quoted = quoted || c == ' ' || c == '"';
        if (c == '"') out += '"';
        out += c == '\t' ? ' ' : c;
    }
    if (!quoted) return;
    out(start, 0) = '"';
    out += '"';
}

void CIniFile_::KommentarSchreiben(CChrStreamBuffer & buffer, char const * text)
{
    std::size_t const column = buffer.GetColumn();
    if (*text == '\t') ++text;
    for (CSubStringRef part = UpTo(text, '\t');; part = UpTo(text, '\t')) {
        text += part.size();
        if (*text == '\0') {
            buffer.Format(";%s%s") << part << LineEnd;
            return;
        }
        ++text;
        buffer.Format(";%s%s%+ *s") << part << LineEnd << column << "";
    }
}

/// The values in the form of the file, wrapped at element boundaries.
void CIniFile_::WertZusammenstellen(CStringVar & line, CSubStringRef const & values)
{
    line = '=';
    std::size_t lineStart = 0;   // of the last line of it
    std::size_t lastElement = 0; // where the element written last begins
    bool wrapped = false;
    char const * const end = values.data() + values.size();
    for (char const * p = values.data();;) {
        if (line.size() - lineStart > WrapAfter) {
            // The element that made the line too long moves down with its comma, unless it's alone there.
            std::size_t const at = wrapped && lastElement > lineStart ? lastElement : line.size();
            line(at, 0) = Continuation;
            lineStart = at + std::strlen(Continuation);
            wrapped = true;
        }
        lastElement = line.size();
        char const * const elementEnd = std::find(p, end, '\n');
        if (elementEnd != p) {
            line += ' ';
            ConvertString(line, p, static_cast<std::size_t>(elementEnd - p));
        }
        if (elementEnd == end) return;
        line += ',';
        p = elementEnd + 1;
    }
}

void CIniFile_::DatenSchreiben(CChrStreamBuffer & buffer, CStringVar & line, char const * text)
{
    std::size_t const column = buffer.GetColumn();
    CSubStringRef const values = UpTo(text, '\t');
    WertZusammenstellen(line, values);
    char const * const comment = text + values.size();
    if (*comment == '\0') {
        buffer.Format("%!s%s") << line << LineEnd;
        return;
    }
    buffer.Format("%!s ") << line;
    std::size_t const newline = line.FindLast('\n');
    std::size_t const last = newline == CSubStringRef::POSERR ? line.size() : line.size() - newline - 1;
    if (last <= CommentColumn && UpTo(comment + 1, '\t').size() <= LongestLineComment)
        buffer.Format("%+ *s") << CommentColumn - last << "";
    else
        buffer.Format("%s%+ *s") << LineEnd << column << "";
    KommentarSchreiben(buffer, comment);
}

void CIniFile_::SektionSchreiben(CChrStreamBuffer & buffer, INI_SECTION const & section)
{
    TString<512> line;
    if (section.length != 0) {
        ConvertString(line, section.text, section.length);
        buffer.Format("[%s]%s") << line << LineEnd;
    }
    INI_KEYLIST const & keys = *section.keys;
    if (keys.comment != nullptr) {
        buffer.Format(" ");
        KommentarSchreiben(buffer, keys.comment);
        buffer.Format("%s") << LineEnd;
    }
    std::size_t width = 0;
    for (INI_KEY const * key = keys.head; key != nullptr; key = key->next)
        if (key->count != 0) width = std::max(width, AusgabeLaengeErmitteln(key->text, key->length));
    for (INI_KEY const * key = keys.head; key != nullptr; key = key->next) {
        if (key->count == 0) continue;
        line = Misc::CNull();
        ConvertString(line, key->text, key->length);
        buffer.Format(" %+ *s ") << width << line;
        DatenSchreiben(buffer, line, key->text + key->length + 1);
    }
    buffer.Format("%s") << LineEnd;
}

void CIniFile_::Write()
{
    CThrowState state;
    if (!m_LockFile) VLK_RAISE(state, Errors::IniNotOpenForWriting);
    if (m_nSections == 0) {
        // An empty file isn't written. That the removal of the lock is reported, and its failure isn't, is settled.
        m_LockFile.Reset();
        m_FileName += ".lck";
        if (Platform::DeleteFile(std::string(m_FileName.View())) == Platform::Success) RaiseIo(Platform::LastError());
        return;
    }
    try {
        WriteSections();
        ReplaceFile();
    } catch (...) {
        // What was written so far must not become the beginning of a later attempt.
        ReleaseLock();
        throw;
    }
}

/// Into the lock file.
void CIniFile_::WriteSections()
{
    CChrStreamBuffer buffer(BufferStep);
    for (INI_SECTION const * section = m_pSections; section != nullptr; section = section->next) {
        if (section->keys->count == 0 && section->keys->comment == nullptr) continue;
        SektionSchreiben(buffer, *section);
        if (buffer.HasDropped()) RaiseOutOfMemory();
        Platform::ErrorCode error = Platform::Success;
        std::size_t const written =
            Platform::WriteFile(m_LockFile.Get(), buffer.GetBuffer(), buffer.GetLength(), error);
        if (written != buffer.GetLength()) RaiseIo(error);
        buffer.Reset();
    }
}

/// The lock file takes the place of the file, and the lock is gone with it.
void CIniFile_::ReplaceFile()
{
    std::string const name(m_FileName.View());
    std::string const lockName = LockName();
    // Ends when nobody has the file open any more; on systems where that counts.
    CFileWait const wait(CFileWait::Infinite);
    for (;;) {
        Platform::ErrorCode const error = Platform::DeleteFile(name);
        if (error == Platform::Success || error == Platform::ErrorNotFound()) break;
        wait.Again();
    }
    m_LockFile.Reset();
    if (Platform::ErrorCode const error = Platform::PutInPlace(lockName, name); error != Platform::Success)
        RaiseIo(error);
    Platform::MakePrivate(name);
}

} // namespace VLK::Internals
