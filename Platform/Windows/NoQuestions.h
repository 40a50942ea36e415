#ifndef PLATFORM_WINDOWS_NO_QUESTIONS_H
#define PLATFORM_WINDOWS_NO_QUESTIONS_H

#include "System.h"

namespace Platform {

/// Keeps the system from asking the user about a file that is no library; the caller gets the reason. One
/// thread, for a scope.
class CNoQuestions {
public:
    CNoQuestions() noexcept
    {
        ::SetThreadErrorMode(::GetThreadErrorMode() | SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &m_former);
    }
    ~CNoQuestions() { ::SetThreadErrorMode(m_former, nullptr); }
    CNoQuestions(CNoQuestions const &) = delete;
    CNoQuestions & operator=(CNoQuestions const &) = delete;

private:
    DWORD m_former = 0;
};

} // namespace Platform

#endif
