#include "Platform/Registry.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <mutex>
#include <new>
#include <set>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/File.h"
#include "QuietWrite.h"
#include "RegistryStore.h"

namespace {

using Platform::CRegistryNode;
using Platform::ErrorCode;

constexpr char DefaultFile[] = "/etc/kestrix/registry.reg";
constexpr std::size_t MaxFileBytes = 16U << 20;
constexpr std::size_t MaxRememberedReports = 10000;
constexpr std::int64_t SettledNs = 1'000'000'000;

/// What tells one state of a file from another.
struct SFileState {
    ErrorCode error = Platform::Success; ///< why there is no file
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec changed{};
    bool operator==(SFileState const & other) const noexcept
    {
        return error == other.error && device == other.device && inode == other.inode && size == other.size &&
               changed.tv_sec == other.changed.tv_sec && changed.tv_nsec == other.changed.tv_nsec;
    }
};

SFileState StateOf(struct stat const & status) noexcept
{
    return {Platform::Success, status.st_dev, status.st_ino, status.st_size, status.st_mtim};
}

SFileState StateOfError(int error) noexcept
{
    SFileState state;
    state.error = static_cast<ErrorCode>(error);
    return state;
}

SFileState LookAt(std::string const & path) noexcept
{
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 ? StateOf(status) : StateOfError(errno);
}

/// Whether the file's time stamp is so old that a later change must alter it, however coarse the clock is.
bool IsSettled(SFileState const & state) noexcept
{
    if (state.error != Platform::Success) return true;
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const std::int64_t age = (static_cast<std::int64_t>(now.tv_sec) - state.changed.tv_sec) * 1'000'000'000 +
                             (now.tv_nsec - state.changed.tv_nsec);
    return age > SettledNs;
}

std::string RegistryFile()
{
    char const * const path = std::getenv("KXRA_REGISTRY");
    return path != nullptr && *path != '\0' ? path : DefaultFile;
}

/// Everything that one reading of the file gave.
struct SReading {
    std::string path;
    SFileState state;
    bool settled = false;
    bool cut = false; ///< longer than MaxFileBytes
    std::string bytes;
};

SReading ReadRegistryFile(std::string const & path)
{
    SReading reading;
    reading.path = path;
    Platform::FileHandle handle = Platform::NoFile;
    const ErrorCode error = Platform::OpenFile(handle, path, Platform::FileMode::ReadExisting);
    const Platform::CFileHandle file(handle);
    struct stat status;
    if (error != Platform::Success) {
        reading.state = StateOfError(static_cast<int>(error));
    } else if (::fstat(static_cast<int>(handle), &status) != 0) {
        reading.state = StateOfError(errno);
    } else {
        reading.state = StateOf(status);
        reading.bytes.resize(MaxFileBytes + 1 < static_cast<std::size_t>(status.st_size)
                                 ? MaxFileBytes + 1
                                 : static_cast<std::size_t>(status.st_size));
        ErrorCode readError = Platform::Success;
        reading.bytes.resize(Platform::ReadFile(handle, reading.bytes.data(), reading.bytes.size(), readError));
        if (readError != Platform::Success) reading.state = StateOfError(static_cast<int>(readError));
        reading.cut = reading.bytes.size() > MaxFileBytes;
        if (reading.cut) reading.bytes.resize(MaxFileBytes);
    }
    reading.settled = IsSettled(reading.state);
    return reading;
}

/// The last reading of the file, for all keys of the process.
/// Lock: m_lock, for everything. After End, when the library goes, every key reads the file anew.
class CRegistryCache {
public:
    constexpr CRegistryCache() noexcept = default;
    CRegistryCache(CRegistryCache const &) = delete;
    CRegistryCache & operator=(CRegistryCache const &) = delete;

    void End() noexcept
    {
        const std::lock_guard lock(m_lock);
        delete m_content;
        m_content = nullptr;
        m_ended = true;
    }

    /// The root key of the file as it is now.
    ErrorCode Root(std::shared_ptr<CRegistryNode const> & out)
    {
        const std::string path = RegistryFile();
        const std::lock_guard lock(m_lock);
        if (m_ended) return Read(path, out);
        if (m_content == nullptr) m_content = new SContent;
        SContent & content = *m_content;
        if (!content.root || content.path != path || !content.settled || !(content.state == LookAt(path)))
            Refresh(content, path);
        out = content.root;
        return ErrorOf(content.state);
    }

private:
    struct SContent {
        std::string path;
        SFileState state;
        bool settled = false;
        std::size_t hash = 0;
        std::shared_ptr<CRegistryNode const> root;
        std::set<std::string> reported; ///< lines of report that went out
    };

    /// A registry that may not be read is told from an empty one.
    static ErrorCode ErrorOf(SFileState const & state) noexcept
    {
        return state.error == ENOENT || state.error == ENOTDIR ? Platform::Success : state.error;
    }

    static ErrorCode Read(std::string const & path, std::shared_ptr<CRegistryNode const> & out)
    {
        SContent content;
        Refresh(content, path);
        out = content.root;
        return ErrorOf(content.state);
    }

    static void Refresh(SContent & content, std::string const & path)
    {
        const SReading reading = ReadRegistryFile(path);
        const std::size_t hash = std::hash<std::string>()(reading.bytes);
        const bool same = content.root && content.path == path && content.hash == hash &&
                          content.state.error == reading.state.error && content.state.size == reading.state.size;
        if (!same) {
            Platform::SRegistryFaults faults;
            auto root = std::make_shared<CRegistryNode>();
            Platform::ParseRegistry(reading.bytes, *root, faults);
            ReportFaults(content, reading, faults);
            content.root = std::move(root);
        }
        content.path = path;
        content.state = reading.state;
        content.settled = reading.settled;
        content.hash = hash;
    }

    static void ReportFaults(SContent & content, SReading const & reading, Platform::SRegistryFaults const & faults)
    {
        if (ErrorOf(reading.state) != Platform::Success)
            ReportOnce(content, reading.path + ": can't be read: " +
                                    Platform::CrtErrorText(static_cast<int>(reading.state.error)));
        if (reading.cut)
            ReportOnce(content, reading.path + ": longer than " + std::to_string(MaxFileBytes) +
                                    " bytes, the rest is passed over");
        for (Platform::SRegistryFault const & fault : faults.kept)
            ReportOnce(content, reading.path + ":" + std::to_string(fault.line) + ": " + fault.reason +
                                    ", the line is passed over");
        if (faults.count > faults.kept.size())
            ReportOnce(content, reading.path + ": " + std::to_string(faults.count - faults.kept.size()) +
                                    " more lines can't be read");
    }

    static void ReportOnce(SContent & content, std::string const & text)
    {
        if (content.reported.size() >= MaxRememberedReports) content.reported.clear();
        if (content.reported.insert(text).second) {
            const std::string line = text + '\n';
            Platform::WriteQuietly(STDERR_FILENO, line.data(), line.size());
        }
    }

    std::mutex m_lock;
    SContent * m_content = nullptr;
    bool m_ended = false;
};

// Ready before any static initialiser and usable behind any static destructor; its end is an object of its own.
constinit CRegistryCache g_cache;

struct SCacheEnd {
    ~SCacheEnd() { g_cache.End(); }
};
const SCacheEnd g_cacheEnd;

} // namespace

struct Platform::CRegistryKey::SImpl {
    std::shared_ptr<CRegistryNode const> root; ///< keeps `node` alive
    CRegistryNode const * node;
};

Platform::CRegistryKey::CRegistryKey() noexcept = default;
Platform::CRegistryKey::~CRegistryKey() = default;
Platform::CRegistryKey::CRegistryKey(CRegistryKey && other) noexcept = default;
Platform::CRegistryKey & Platform::CRegistryKey::operator=(CRegistryKey && other) noexcept = default;

Platform::ErrorCode Platform::CRegistryKey::Open(std::string const & path, RegistryView, RegistryAccess)
{
    Close();
    try {
        std::shared_ptr<CRegistryNode const> root;
        const ErrorCode error = g_cache.Root(root);
        if (error != Success) return error;
        CRegistryNode const * const node = root->Find(path);
        if (node == nullptr) return ErrorNotFound();
        m_impl = std::make_unique<SImpl>(SImpl{std::move(root), node});
        return Success;
    } catch (std::bad_alloc const &) {
        return ENOMEM;
    }
}

void Platform::CRegistryKey::Close() noexcept
{
    m_impl.reset();
}

bool Platform::CRegistryKey::IsOpen() const noexcept
{
    return m_impl != nullptr;
}

Platform::ErrorCode Platform::CRegistryKey::Query(std::string const & name, SRegistryValue & out) const
{
    SRegistryValue const * const value = m_impl ? m_impl->node->FindValue(name) : nullptr;
    if (value == nullptr) return ErrorNotFound();
    out = *value;
    return Success;
}

Platform::ErrorCode Platform::CRegistryKey::EnumValue(std::uint32_t index, std::string & name,
                                                      SRegistryValue & out) const
{
    CRegistryNode::SValue const * const value = m_impl ? m_impl->node->ValueAt(index) : nullptr;
    if (value == nullptr) return ErrorNotFound();
    name = value->name;
    out = value->value;
    return Success;
}

bool Platform::ReadDword(CRegistryKey const & key, std::string const & name, std::uint32_t & out)
{
    SRegistryValue value;
    if (key.Query(name, value) != Success || value.type != RegDword || value.data.size() != 4) return false;
    std::uint32_t number = 0;
    for (unsigned i = 0; i < 4; ++i)
        number |= static_cast<std::uint32_t>(static_cast<unsigned char>(value.data[i])) << (8 * i);
    out = number;
    return true;
}

std::string Platform::ExpandEnvironment(std::string const & text)
{
    std::string out;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t open = text.find('%', at);
        const std::size_t close = open != std::string::npos ? text.find('%', open + 1) : open;
        if (close == std::string::npos) break;
        char const * const value = std::getenv(text.substr(open + 1, close - open - 1).c_str());
        out.append(text, at, open - at);
        if (value != nullptr) {
            out += value;
            at = close + 1;
        } else {
            out.append(text, open, close - open); // the second sign may open the next name
            at = close;
        }
    }
    return out.append(text, at);
}
