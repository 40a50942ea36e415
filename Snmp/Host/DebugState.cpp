#include "Snmp/Host/DebugState.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "Platform/Clock.h"
#include "Platform/Console.h"
#include "Snmp/Host/Debug.h"
#include "Snmp/Host/TraceFile.h"

/// The one place from which the trace is switched.
class CDebugSetup {
public:
    static void Enable(bool enabled) noexcept { CDebug::m_enabled.store(enabled ? 1 : 0, std::memory_order_relaxed); }
};

namespace {

constexpr std::size_t DebuggerLineBytes = 65634;

std::uint64_t NowSeconds() noexcept
{
    return Platform::TickCountMs() / 1000;
}

/// Ends one use. The last one closes the mutex, released if this thread should hold it.
void Drop(SFileMutex * mutex) noexcept
{
    if (mutex == nullptr || --mutex->uses != 0) return;
    if (Platform::TakeNamedMutex(mutex->handle.Get(), 0)) Platform::ReleaseNamedMutex(mutex->handle.Get());
    delete mutex;
}

SFileMutex * NewFileMutex(std::string const & path)
{
    Platform::NamedMutexHandle handle = nullptr;
    if (Platform::NewNamedMutex(handle, TraceMutexName(path).c_str()) != Platform::Success) return nullptr;
    Platform::CNamedMutexHandle owner(handle);
    auto * const mutex = new SFileMutex(handle);
    [[maybe_unused]] const Platform::NamedMutexHandle given = owner.Release();
    return mutex;
}

/// One use of a mutex, or of none, for a scope.
class CMutexUse {
public:
    explicit CMutexUse(SFileMutex * counted) noexcept : m_mutex(counted) {}
    ~CMutexUse() { Drop(m_mutex); }
    CMutexUse(CMutexUse const &) = delete;
    CMutexUse & operator=(CMutexUse const &) = delete;
    Platform::NamedMutexHandle Handle() const noexcept { return m_mutex != nullptr ? m_mutex->handle.Get() : nullptr; }

private:
    SFileMutex * m_mutex;
};

/// Copies as much of the text as fits, with a NUL.
template <std::size_t Room>
void CopyText(char (&target)[Room], std::string_view text) noexcept
{
    const std::size_t size = std::min(text.size(), Room - 1);
    std::memcpy(target, text.data(), size);
    target[size] = '\0';
}

} // namespace

void CDebugState::Reset(char const * appName)
{
    CDebugSetup::Enable(false);
    for (CWord & word : m_switches)
        Store(word, 0);
    Store(m_dynamicUpdate, 0);
    m_lastUpdate.store(0, std::memory_order_relaxed);
    const std::lock_guard lock(m_textLock);
    CopyText(m_appName, appName != nullptr ? appName : "");
}

void CDebugState::ReadRegistry()
{
    const std::lock_guard lock(m_setupLock);
    ReadRegistryLocked();
}

void CDebugState::Refresh()
{
    if (!IsDue()) return;
    const std::unique_lock lock(m_setupLock, std::try_to_lock);
    // Looked at again, for another thread may have been at it until now.
    if (lock && IsDue()) ReadRegistryLocked();
}

/// A clock that went backwards makes a reading due as well.
bool CDebugState::IsDue() const noexcept
{
    const std::uint32_t period = Load(m_dynamicUpdate);
    if (period == 0) return false;
    const std::uint64_t now = NowSeconds();
    const std::uint64_t last = m_lastUpdate.load(std::memory_order_relaxed);
    return now < last || now >= last + period;
}

void CDebugState::ReadRegistryLocked()
{
    TakeOver(ReadDebugSettings(AppName().c_str()));
    m_lastUpdate.store(NowSeconds(), std::memory_order_relaxed);
}

void CDebugState::TakeOver(SDebugSettings const & settings)
{
    if (settings.hasApplication) TakeOverFile(settings);
    for (std::size_t i = 0; i < DebugSwitchCount; ++i)
        Store(m_switches[i], settings.switches[i]);
    Store(m_dynamicUpdate, settings.dynamicUpdate);
    bool enabled = settings.dynamicUpdate != 0;
    if (settings.hasApplication) { // without its key the levels keep their old values
        enabled |= settings.fileLevel != 0 && !settings.traceFile.empty();
        enabled |= settings.conLevel != 0 || settings.winLevel != 0;
        Store(m_fileLevel, settings.fileLevel);
        Store(m_traceFileLimit, settings.traceFileLimit << 20);
        if (settings.conLevel != 0 && !m_consoleOpen.load(std::memory_order_relaxed))
            m_consoleOpen.store(Platform::OpenConsole(), std::memory_order_relaxed);
        Store(m_conLevel, settings.conLevel);
        Store(m_winLevel, settings.winLevel);
    }
    CDebugSetup::Enable(enabled);
}

void CDebugState::TakeOverFile(SDebugSettings const & settings)
{
    // Only set-up, which runs on one thread at a time, changes the path, so reading it needs no lock here.
    if (settings.fileLevel == 0 || settings.traceFile == m_traceFilePath) return;
    ReplaceFile(settings.traceFile, settings.traceFile.empty() ? nullptr : NewFileMutex(settings.traceFile));
}

void CDebugState::ReplaceFile(std::string const & path, SFileMutex * mutex)
{
    SFileMutex * old = nullptr;
    {
        const std::lock_guard lock(m_textLock);
        old = std::exchange(m_fileMutex, mutex);
        CopyText(m_traceFilePath, path);
    }
    Drop(old);
}

void CDebugState::Shutdown() noexcept
{
    SFileMutex * old = nullptr;
    {
        const std::lock_guard lock(m_textLock);
        old = std::exchange(m_fileMutex, nullptr);
    }
    Drop(old);
}

bool CDebugState::Wants(std::uint32_t level) const noexcept
{
    return Load(m_fileLevel) >= level || Load(m_conLevel) >= level || Load(m_winLevel) >= level;
}

std::string CDebugState::AppName()
{
    const std::lock_guard lock(m_textLock);
    return m_appName;
}

void CDebugState::Write(std::uint32_t level, char const * text, std::size_t size)
{
    if (Load(m_fileLevel) >= level) WriteFile({text, size});
    if (Load(m_conLevel) >= level && m_consoleOpen.load(std::memory_order_relaxed)) Platform::WriteConsole(text, size);
    if (Load(m_winLevel) >= level) WriteDebuggerLines({text, size});
}

void CDebugState::WriteWhatGoes(std::uint32_t level, std::string_view text) noexcept
{
    if (Load(m_fileLevel) >= level) {
        try {
            WriteFile(text);
        } catch (...) {
            // The other outputs still get it.
        }
    }
    if (Load(m_conLevel) >= level && m_consoleOpen.load(std::memory_order_relaxed))
        Platform::WriteConsole(text.data(), text.size());
    if (Load(m_winLevel) >= level) WriteDebuggerLines(text);
}

void CDebugState::WriteFile(std::string_view text)
{
    char path[TraceFilePathRoom];
    SFileMutex * mutex = nullptr;
    {
        const std::lock_guard lock(m_textLock);
        if (m_traceFilePath[0] == '\0') return;
        CopyText(path, m_traceFilePath);
        mutex = m_fileMutex;
        if (mutex != nullptr) ++mutex->uses;
    }
    const CMutexUse use(mutex);
    WriteTraceFile(path, Load(m_traceFileLimit), use.Handle(), text);
}

void WriteDebuggerLines(std::string_view text) noexcept
{
    const std::unique_ptr<char[]> line(new (std::nothrow) char[TraceBufferRoom]);
    if (!line) return;
    if (!text.empty() && text.front() == '\n') text.remove_prefix(1);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::size_t size = std::min(end, DebuggerLineBytes);
        std::memcpy(line.get(), text.data(), size);
        line[size] = '\n';
        line[size + 1] = '\0';
        Platform::WriteDebugger(line.get());
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}
