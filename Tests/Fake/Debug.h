#ifndef TESTS_FAKE_DEBUG_H
#define TESTS_FAKE_DEBUG_H

#include <ostream>
#include <string>
#include <vector>

/// The trace of a test program in the place of the real one: link Tests/Fake/Debug.cpp into the program. It is
/// off and empty at first. Any thread.
namespace FakeDebug {

struct SLine {
    unsigned level;
    std::string text;

    bool operator==(SLine const & other) const = default;
};

inline std::ostream & operator<<(std::ostream & out, SLine const & line)
{
    return out << '{' << line.level << ", \"" << line.text << "\"}";
}

/// Switches the trace, as CDebug::Enabled() tells it.
void Enable(bool enabled);
/// Takes all lines out, in the order in which they came. Those above `highestLevel` are dropped.
std::vector<SLine> Take(unsigned highestLevel = 5);
/// The texts of all lines of one level, without taking them out.
std::vector<std::string> Texts(unsigned level);

/// Records for a scope: empty at its start, off and empty at its end.
class CRecording {
public:
    CRecording()
    {
        Take();
        Enable(true);
    }
    ~CRecording()
    {
        Enable(false);
        Take();
    }
    CRecording(CRecording const &) = delete;
    CRecording & operator=(CRecording const &) = delete;
};

} // namespace FakeDebug

#endif
