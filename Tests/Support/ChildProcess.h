#ifndef TESTS_SUPPORT_CHILD_PROCESS_H
#define TESTS_SUPPORT_CHILD_PROCESS_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// Another process, which runs until its input ends or it is killed. For one thread. In Posix/ and Windows/.
class CChildProcess {
public:
    /// program: its path, or a name to be looked for as the shell does. Raises std::runtime_error when it can't run.
    explicit CChildProcess(std::string const & program, std::vector<std::string> const & arguments = {});
    /// Kills it if it still runs.
    ~CChildProcess();
    CChildProcess(CChildProcess const &) = delete;
    CChildProcess & operator=(CChildProcess const &) = delete;

    std::uint32_t Id() const noexcept;
    /// The next line of its output, waiting for it, without the line's end; empty behind the last.
    std::string ReadLine();
    /// Ends its input and waits for its end; what it said as its result, or -1 after Kill.
    int End();
    void Kill();

private:
    struct SImpl;
    std::unique_ptr<SImpl> m_impl;
};

#endif
