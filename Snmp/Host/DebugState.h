#ifndef SNMP_HOST_DEBUG_STATE_H
#define SNMP_HOST_DEBUG_STATE_H

#include <array>
#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

#include "Platform/NamedMutex.h"
#include "Platform/StaticLock.h"
#include "Snmp/Host/DebugSettings.h"

inline constexpr std::size_t TraceBufferRoom = 65636; ///< bytes of one trace text with its NUL

/// The named mutex of a trace file, which a thread may still use when the configuration has gone on to another.
struct SFileMutex {
    explicit SFileMutex(Platform::NamedMutexHandle owned) noexcept : handle(owned) {}
    Platform::CNamedMutexHandle handle;
    std::atomic<unsigned> uses{1}; ///< whoever takes it to 0 deletes
};

/// The configuration of the trace and its outputs.
///
/// Exists from the start of the process to its end, before any static initialiser and behind any static
/// destructor, therefore without constructor code and without destructor.
/// Threads: any. The words are read without a lock and without order: each of them alone decides something, and a
/// change may show a few calls late. Locks: m_setupLock, one reading of the registry at a time; below it
/// m_textLock, for the texts and the mutex, held for a copy only.
class CDebugState {
public:
    /// First half of the set-up: everything off, the name kept when it isn't null.
    void Reset(char const * appName);
    /// Reads the registry and takes over what it says. May raise out of memory; the old settings stay then.
    void ReadRegistry();
    /// Reads the registry again when its time has come. Threads that meet another one at it go on.
    void Refresh();
    /// Gives the trace file's mutex up.
    void Shutdown() noexcept;

    /// Whether an output writes texts of that level.
    bool Wants(std::uint32_t level) const noexcept;
    bool IsOn(DebugSwitch which) const noexcept { return Load(m_switches[static_cast<std::size_t>(which)]) != 0; }
    std::string AppName();
    /// Writes to each output whose level is at least `level`. May raise out of memory.
    void Write(std::uint32_t level, char const * text, std::size_t size);
    /// The same, where an output that is out of memory loses the text.
    void WriteWhatGoes(std::uint32_t level, std::string_view text) noexcept;

private:
    using CWord = std::atomic<std::uint32_t>;
    static std::uint32_t Load(CWord const & word) noexcept { return word.load(std::memory_order_relaxed); }
    static void Store(CWord & word, std::uint32_t value) noexcept { word.store(value, std::memory_order_relaxed); }

    bool IsDue() const noexcept;
    void ReadRegistryLocked();
    void TakeOver(SDebugSettings const & settings);
    void TakeOverFile(SDebugSettings const & settings);
    void ReplaceFile(std::string const & path, SFileMutex * mutex);
    void WriteFile(std::string_view text);

    Platform::CStaticLock m_setupLock;
    Platform::CStaticLock m_textLock;
    SFileMutex * m_fileMutex = nullptr;           ///< guarded by m_textLock
    char m_traceFilePath[TraceFilePathRoom] = {}; ///< guarded by m_textLock; empty: no file output
    char m_appName[48] = {};                      ///< guarded by m_textLock
    CWord m_traceFileLimit{0};                    ///< bytes
    CWord m_fileLevel{0}, m_conLevel{0}, m_winLevel{0};
    std::atomic<bool> m_consoleOpen{false};
    std::array<CWord, DebugSwitchCount> m_switches{};
    CWord m_dynamicUpdate{0};                   ///< seconds
    std::atomic<std::uint64_t> m_lastUpdate{0}; ///< seconds
};

/// Gives the debugger a text line by line: the lines of a text, but for a newline at its start, each at most 65634
/// bytes. Without memory nothing is sent.
void WriteDebuggerLines(std::string_view text) noexcept;

#endif
