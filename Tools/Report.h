#ifndef TOOLS_REPORT_H
#define TOOLS_REPORT_H

#include <mutex>
#include <string>

namespace Coresim {

/// Says what the simulation does, a line each, on standard output. Any thread.
class CReport {
public:
    explicit CReport(bool quiet) noexcept : m_quiet(quiet) {}

    /// One line; nothing when quiet.
    void Say(std::string const & line);
    /// Something is wrong; goes to standard error, quiet or not.
    void Complain(std::string const & line);

private:
    bool const m_quiet;
    std::mutex m_lock; // lines of different threads stay whole
};

} // namespace Coresim

#endif
