#include "Platform/Console.h"

#include <string>

#include <fcntl.h>
#include <sys/uio.h>
#include <syslog.h>
#include <systemd/sd-journal.h>
#include <unistd.h>

#include "Platform/Error.h"
#include "QuietWrite.h"

namespace {

constexpr char JournalSocket[] = "/run/systemd/journal/socket";

} // namespace

bool Platform::OpenConsole() noexcept
{
    const CLastErrorKeeper keeper;
    return ::fcntl(STDOUT_FILENO, F_GETFD) != -1;
}

void Platform::WriteConsole(char const * text, std::size_t size) noexcept
{
    WriteQuietly(STDOUT_FILENO, text, size);
}

void Platform::WriteDebugger(char const * text) noexcept
{
    const CLastErrorKeeper keeper;
    if (::access(JournalSocket, W_OK) != 0) return;
    try {
        std::string message = "MESSAGE=";
        message += text;
        if (message.back() == '\n') message.pop_back();
        std::string priority = "PRIORITY=" + std::to_string(LOG_DEBUG);
        const iovec fields[] = {{message.data(), message.size()}, {priority.data(), priority.size()}};
        ::sd_journal_sendv(fields, 2);
    } catch (...) {
        // Without memory the line is lost; whoever traces must not be disturbed.
    }
}
