#include "QuietWrite.h"

#include <cerrno>
#include <csignal>
#include <ctime>

#include <pthread.h>
#include <unistd.h>

#include "Platform/Error.h"

namespace {

/// Keeps a write to a pipe without reader from raising SIGPIPE in this thread. The host's handling of the signal
/// stays untouched: the thread alone blocks it, and takes the one that its write made.
class CPipeSignalGuard {
public:
    CPipeSignalGuard() noexcept
    {
        ::sigemptyset(&m_pipe);
        ::sigaddset(&m_pipe, SIGPIPE);
        sigset_t pending;
        ::sigpending(&pending);
        m_wasPending = ::sigismember(&pending, SIGPIPE) == 1;
        if (!m_wasPending) ::pthread_sigmask(SIG_BLOCK, &m_pipe, &m_oldMask);
    }
    ~CPipeSignalGuard()
    {
        if (m_wasPending) return;
        if (m_raised) {
            const timespec now{0, 0};
            while (::sigtimedwait(&m_pipe, nullptr, &now) == -1 && errno == EINTR) {
            }
        }
        ::pthread_sigmask(SIG_SETMASK, &m_oldMask, nullptr);
    }
    CPipeSignalGuard(CPipeSignalGuard const &) = delete;
    CPipeSignalGuard & operator=(CPipeSignalGuard const &) = delete;
    void NoteRaised() noexcept { m_raised = true; }

private:
    sigset_t m_pipe{}, m_oldMask{};
    bool m_wasPending = false;
    bool m_raised = false;
};

} // namespace

void Platform::WriteQuietly(int descriptor, char const * text, std::size_t size) noexcept
{
    const CLastErrorKeeper keeper;
    CPipeSignalGuard guard;
    while (size != 0) {
        const ssize_t written = ::write(descriptor, text, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) {
            if (errno == EPIPE) guard.NoteRaised();
            return;
        }
        text += written;
        size -= static_cast<std::size_t>(written);
    }
}
