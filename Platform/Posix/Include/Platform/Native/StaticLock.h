#ifndef PLATFORM_NATIVE_STATIC_LOCK_H
#define PLATFORM_NATIVE_STATIC_LOCK_H

#include <mutex>

namespace Platform {

using CStaticLock = std::mutex;

} // namespace Platform

#endif
