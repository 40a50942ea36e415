#include "Support/ChildProcess.h"

#include <stdexcept>

#include "SystemHandle.h"

namespace {

/// The two ends of a pipe, of which the child's alone is inherited.
struct SPipe {
    CSystemHandle read, write;
};

SPipe NewPipe(bool childReads)
{
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE read = nullptr;
    HANDLE write = nullptr;
    if (::CreatePipe(&read, &write, &inherited, 0) == FALSE) throw std::runtime_error("no pipe");
    ::SetHandleInformation(childReads ? write : read, HANDLE_FLAG_INHERIT, 0);
    return {CSystemHandle(read), CSystemHandle(write)};
}

/// None of the tests' arguments holds a quote or ends in a backslash.
std::string CommandLine(std::string const & program, std::vector<std::string> const & arguments)
{
    std::string line = '"' + program + '"';
    for (std::string const & argument : arguments)
        line += " \"" + argument + '"';
    return line;
}

} // namespace

struct CChildProcess::SImpl {
    CSystemHandle process, input, output;
    DWORD id = 0;
};

CChildProcess::CChildProcess(std::string const & program, std::vector<std::string> const & arguments)
    : m_impl(std::make_unique<SImpl>())
{
    SPipe toChild = NewPipe(/*childReads=*/true);
    SPipe toParent = NewPipe(/*childReads=*/false);
    STARTUPINFOA start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = toChild.read.Get();
    start.hStdOutput = toParent.write.Get();
    start.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION process{};
    std::string line = CommandLine(program, arguments);
    if (::CreateProcessA(nullptr, line.data(), nullptr, nullptr, /*bInheritHandles=*/TRUE, 0, nullptr, nullptr, &start,
                         &process) == FALSE)
        throw std::runtime_error(program + ": " + std::to_string(::GetLastError()));
    ::CloseHandle(process.hThread);
    m_impl->process.Reset(process.hProcess);
    m_impl->id = process.dwProcessId;
    m_impl->input = std::move(toChild.write);
    m_impl->output = std::move(toParent.read);
}

CChildProcess::~CChildProcess()
{
    Kill();
}

std::uint32_t CChildProcess::Id() const noexcept
{
    return m_impl->id;
}

std::string CChildProcess::ReadLine()
{
    std::string line;
    char c = 0;
    DWORD read = 0;
    while (::ReadFile(m_impl->output.Get(), &c, 1, &read, nullptr) != FALSE && read == 1 && c != '\n')
        if (c != '\r') line += c;
    return line;
}

int CChildProcess::End()
{
    m_impl->input.Reset();
    if (!m_impl->process) return -1;
    ::WaitForSingleObject(m_impl->process.Get(), INFINITE);
    DWORD result = 0;
    ::GetExitCodeProcess(m_impl->process.Get(), &result);
    m_impl->process.Reset();
    return static_cast<int>(result);
}

void CChildProcess::Kill()
{
    if (!m_impl->process) return;
    ::TerminateProcess(m_impl->process.Get(), 1);
    ::WaitForSingleObject(m_impl->process.Get(), INFINITE);
    m_impl->process.Reset();
}
