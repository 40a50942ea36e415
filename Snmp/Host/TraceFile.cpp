#include "Snmp/Host/TraceFile.h"

#include <algorithm>

#include "Platform/File.h"
#include "Platform/Host.h"
#include "Platform/Text.h"

namespace {

constexpr std::uint32_t MutexWaitMs = 20;
constexpr char WideMark[] = {'\xFF', '\xFE'};
constexpr std::string_view ConversionFailed = "### MBCS-to-UNICODE conversion failed ###\n";

class CMutexHold {
public:
    explicit CMutexHold(Platform::NamedMutexHandle mutex) noexcept
        : m_mutex(mutex != nullptr && Platform::TakeNamedMutex(mutex, MutexWaitMs) ? mutex : nullptr)
    {
    }
    ~CMutexHold()
    {
        if (m_mutex != nullptr) Platform::ReleaseNamedMutex(m_mutex);
    }
    CMutexHold(CMutexHold const &) = delete;
    CMutexHold & operator=(CMutexHold const &) = delete;

private:
    Platform::NamedMutexHandle m_mutex;
};

struct SFileForm {
    bool wide;
    bool sized; ///< whether the size could be read
    std::uint64_t size;
};

/// A file that isn't there counts as an empty one, and an empty one is written wide.
SFileForm LookAtFile(std::string const & path)
{
    Platform::FileHandle handle = Platform::NoFile;
    if (Platform::OpenFile(handle, path, Platform::FileMode::ReadExisting) != Platform::Success)
        return {/*wide=*/true, /*sized=*/true, 0};
    const Platform::CFileHandle file(handle);
    SFileForm form{/*wide=*/false, /*sized=*/true, 0};
    form.sized = Platform::FileSize(handle, form.size) == Platform::Success;
    if (form.sized && form.size < 2) {
        form.wide = form.size == 0;
        return form;
    }
    char start[2] = {};
    Platform::ErrorCode error = Platform::Success;
    form.wide = Platform::ReadFile(handle, start, sizeof start, error) == sizeof start &&
                std::equal(start, start + 2, WideMark);
    return form;
}

void AppendWide(std::string_view ascii, std::string & out)
{
    for (const char character : ascii) {
        out += character;
        out += '\0';
    }
}

/// As many UTF-16 units as the run has bytes; a character of several bytes leaves NULs at the end.
void AppendWideRun(std::string_view run, std::string & out)
{
    const bool ascii = std::all_of(run.begin(), run.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (ascii) return AppendWide(run, out);
    std::u16string units;
    if (!Platform::ToUtf16(run.data(), run.size(), units)) return AppendWide(ConversionFailed, out);
    units.resize(run.size());
    for (const char16_t unit : units) {
        out += static_cast<char>(unit & 0xFF);
        out += static_cast<char>(unit >> 8);
    }
}

void AppendPiece(std::string_view piece, bool wide, bool isText, std::string & out)
{
    if (!wide)
        out += piece;
    else if (isText)
        AppendWideRun(piece, out);
    else
        AppendWide(piece, out);
}

/// The bytes that the text becomes in the file.
std::string Encode(std::string_view text, bool wide)
{
    std::string out;
    out.reserve((text.size() + 16) * (wide ? 2 : 1));
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        AppendPiece(text.substr(0, end), wide, /*isText=*/true, out);
        if (end < text.size()) AppendPiece("\r\n", wide, /*isText=*/false, out);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return out;
}

/// Moves a file that has reached the limit out of the way; it counts as empty from then on.
void Roll(std::string const & path, std::uint32_t limit, SFileForm & form)
{
    if (limit == 0 || !form.sized || form.size < limit) return;
    const std::string old = path + ".txt";
    Platform::DeleteFile(old);
    Platform::MoveFile(path, old);
    form.size = 0;
}

} // namespace

std::string TraceMutexName(std::string const & path)
{
    std::string name = "CFileDebug_" + path;
    for (char * at = name.data(); *at != '\0'; at += Platform::CharSize(at))
        if (*at == '\\' || *at == ':' || *at == Platform::PathSeparator()) *at = '_';
    return name;
}

void WriteTraceFile(std::string const & path, std::uint32_t limit, Platform::NamedMutexHandle mutex,
                    std::string_view text)
{
    const CMutexHold hold(mutex);
    SFileForm form = LookAtFile(path);
    Roll(path, limit, form);
    std::string bytes = Encode(text, form.wide);
    if (form.wide && form.sized && form.size == 0) bytes.insert(0, WideMark, sizeof WideMark);
    Platform::FileHandle handle = Platform::NoFile;
    if (Platform::OpenFile(handle, path, Platform::FileMode::WriteOrCreate) != Platform::Success) return;
    const Platform::CFileHandle file(handle);
    Platform::SeekToEnd(handle);
    Platform::ErrorCode error = Platform::Success;
    Platform::WriteFile(handle, bytes.data(), bytes.size(), error);
}
