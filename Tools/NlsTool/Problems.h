#ifndef TOOLS_NLS_TOOL_PROBLEMS_H
#define TOOLS_NLS_TOOL_PROBLEMS_H

#include <cstddef>
#include <stdexcept>
#include <string>

namespace NlsTool {

/// A file can't be used. what() holds a line for each thing that is wrong, ready to be shown.
class CBadFile : public std::runtime_error {
public:
    explicit CBadFile(std::string const & reasons) : std::runtime_error(reasons) {}
};

/// Collects what is wrong in a file, so that its author learns all of it at once.
class CProblems {
public:
    /// place: where a person has to look, as "file:line".
    void Add(std::string const & place, std::string const & reason)
    {
        if (++m_count > MostShown) return;
        m_lines += (m_lines.empty() ? "" : "\n") + place + ": " + reason;
    }
    /// Raises CBadFile when there is anything.
    void RaiseIfAny() const
    {
        if (m_count == 0) return;
        throw CBadFile(m_count <= MostShown ? m_lines
                                            : m_lines + "\nand " + std::to_string(m_count - MostShown) + " more");
    }

private:
    static constexpr std::size_t MostShown = 20; // a file of another kind is wrong in every line

    std::string m_lines;
    std::size_t m_count = 0;
};

} // namespace NlsTool

#endif
