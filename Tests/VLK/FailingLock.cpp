#include "FailingLock.h"

#include <pthread.h>

#include <cerrno>

namespace {

/// Locks of this thread until one fails; 0: none will.
thread_local unsigned int g_uUntilFailure = 0;

} // namespace

CFailingLock::CFailingLock(unsigned int n) noexcept
{
    g_uUntilFailure = n;
}

CFailingLock::~CFailingLock()
{
    g_uUntilFailure = 0;
}

bool CFailingLock::Fired() const noexcept
{
    return g_uUntilFailure == 0;
}

// The linker puts this in the place of the function behind the underscores (--wrap, see CMakeLists.txt).
extern "C" {

int __real_pthread_mutex_lock(pthread_mutex_t * mutex);

int __wrap_pthread_mutex_lock(pthread_mutex_t * mutex)
{
    if (g_uUntilFailure != 0 && --g_uUntilFailure == 0) return EAGAIN;
    return __real_pthread_mutex_lock(mutex);
}
}
