#include "FailingLock.h"

#include <pthread.h>

#include <cerrno>
#include <cstdint>

#include "Support/ThreadNumber.h"

namespace {

/// Locks of this thread until one fails; 0: none will.
constinit CThreadNumber g_untilFailure;
const bool g_made = g_untilFailure.Make();

} // namespace

CFailingLock::CFailingLock(unsigned int n) noexcept
{
    g_untilFailure.Set(n);
}

CFailingLock::~CFailingLock()
{
    g_untilFailure.Set(0);
}

bool CFailingLock::Fired() const noexcept
{
    return g_untilFailure.Get() == 0;
}

// The linker puts this in the place of the function behind the underscores (--wrap, see CMakeLists.txt).
extern "C" {

int __real_pthread_mutex_lock(pthread_mutex_t * mutex);

int __wrap_pthread_mutex_lock(pthread_mutex_t * mutex)
{
    if (const std::uintptr_t left = g_untilFailure.Get(); left != 0) {
        g_untilFailure.Set(left - 1);
        if (left == 1) return EAGAIN;
    }
    return __real_pthread_mutex_lock(mutex);
}
}
