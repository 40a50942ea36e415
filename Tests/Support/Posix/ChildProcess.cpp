#include "Support/ChildProcess.h"

#include <cstdio>
#include <stdexcept>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

struct CChildProcess::SImpl {
    pid_t id = 0;
    int input = -1;
    std::FILE * output = nullptr;

    ~SImpl()
    {
        CloseInput();
        if (output != nullptr) std::fclose(output);
    }
    void CloseInput()
    {
        if (input != -1) ::close(input);
        input = -1;
    }
    int Wait()
    {
        int status = 0;
        if (id != 0) ::waitpid(id, &status, 0);
        id = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
};

CChildProcess::CChildProcess(std::string const & program, std::vector<std::string> const & arguments)
    : m_impl(std::make_unique<SImpl>())
{
    std::vector<char *> words{const_cast<char *>(program.c_str())};
    for (std::string const & argument : arguments)
        words.push_back(const_cast<char *>(argument.c_str()));
    words.push_back(nullptr);
    int toChild[2];
    int toParent[2];
    if (::pipe2(toChild, O_CLOEXEC) != 0 || ::pipe2(toParent, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    m_impl->id = ::fork();
    if (m_impl->id == 0) {
        ::dup2(toChild[0], STDIN_FILENO);
        ::dup2(toParent[1], STDOUT_FILENO);
        ::execvp(words[0], words.data());
        ::_exit(127);
    }
    ::close(toChild[0]);
    ::close(toParent[1]);
    m_impl->input = toChild[1];
    m_impl->output = ::fdopen(toParent[0], "r");
}

CChildProcess::~CChildProcess()
{
    Kill();
}

std::uint32_t CChildProcess::Id() const noexcept
{
    return static_cast<std::uint32_t>(m_impl->id);
}

std::string CChildProcess::ReadLine()
{
    std::string line;
    for (int c = std::fgetc(m_impl->output); c != EOF && c != '\n'; c = std::fgetc(m_impl->output))
        line += static_cast<char>(c);
    return line;
}

int CChildProcess::End()
{
    m_impl->CloseInput();
    return m_impl->Wait();
}

void CChildProcess::Kill()
{
    if (m_impl->id != 0) ::kill(m_impl->id, SIGKILL);
    m_impl->Wait();
}
