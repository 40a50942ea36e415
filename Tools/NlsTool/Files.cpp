#include "Tools/NlsTool/Files.h"

#include <cstdio>
#include <filesystem>
#include <utility>

#include "Platform/File.h"
#include "Platform/Process.h"
#include "Tools/NlsTool/Problems.h"

namespace NlsTool {

namespace {

constexpr std::size_t Longest = 64u << 20; // no language has that much to say
constexpr std::size_t Piece = 64u << 10;

[[noreturn]] void Fail(char const * tried, std::string const & path, Platform::ErrorCode error)
{
    throw CBadFile(std::string(tried) + " " + path + ": " + Platform::ErrorText(error) + " (" + std::to_string(error) +
                   ")");
}

/// A new file that goes unless it gets its final name.
class CNewFile {
public:
    explicit CNewFile(std::string const & target)
        : m_target(target), m_path(target + "." + std::to_string(Platform::CurrentProcessId()) + ".new")
    {
        m_stream = Platform::OpenStream(m_path, "wbx");
        if (m_stream == nullptr) Fail("write", m_path, Platform::LastError());
    }
    ~CNewFile()
    {
        if (m_stream != nullptr) std::fclose(m_stream);
        if (!m_isMoved) Platform::DeleteFile(m_path);
    }
    CNewFile(CNewFile const &) = delete;
    CNewFile & operator=(CNewFile const &) = delete;

    void Write(std::string_view bytes)
    {
        if (std::fwrite(bytes.data(), 1, bytes.size(), m_stream) != bytes.size() || std::fflush(m_stream) != 0)
            Fail("write", m_path, Platform::LastError());
    }
    void Move()
    {
        if (std::fclose(std::exchange(m_stream, nullptr)) != 0) Fail("write", m_path, Platform::LastError());
        if (Platform::ErrorCode const error = Platform::MoveFile(m_path, m_target); error != Platform::Success)
            Fail("write", m_target, error);
        m_isMoved = true;
    }

private:
    std::string const m_target;
    std::string const m_path;
    std::FILE * m_stream = nullptr;
    bool m_isMoved = false;
};

/// Where the file lies that the path leads to: a link to it stays a link.
std::string PlaceOf(std::string const & path)
{
    std::error_code ignored; // as in WriteWhole
    if (!std::filesystem::is_symlink(path, ignored)) return path;
    std::filesystem::path const place = std::filesystem::canonical(path, ignored);
    return ignored ? path : place.string();
}

} // namespace

std::string ReadWhole(std::string const & path)
{
    Platform::FileHandle handle = Platform::NoFile;
    if (Platform::ErrorCode const error = Platform::OpenFile(handle, path, Platform::FileMode::ReadExisting);
        error != Platform::Success)
        Fail("read", path, error);
    Platform::CFileHandle const file(handle);
    std::string bytes;
    for (std::size_t got = Piece; got == Piece;) {
        std::size_t const before = bytes.size();
        bytes.resize(before + Piece);
        Platform::ErrorCode error = Platform::Success;
        got = Platform::ReadFile(file.Get(), bytes.data() + before, Piece, error);
        if (error != Platform::Success) Fail("read", path, error);
        bytes.resize(before + got);
        if (bytes.size() > Longest) throw CBadFile("read " + path + ": the file is longer than 64 MiB");
    }
    return bytes;
}

void WriteWhole(std::string const & path, std::string_view bytes)
{
    std::error_code ignored; // what can't be looked at can't be written either, and that tells why
    std::filesystem::file_status const present = std::filesystem::status(path, ignored);
    if (std::filesystem::exists(present) && !std::filesystem::is_regular_file(present))
        throw CBadFile("write " + path + ": not an ordinary file");
    CNewFile file(PlaceOf(path));
    file.Write(bytes);
    file.Move();
}

} // namespace NlsTool
