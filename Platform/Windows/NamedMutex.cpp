#include "Platform/NamedMutex.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <string_view>

#include "../NameHash.h"
#include "Platform/StaticLock.h"
#include "System.h"

namespace Platform {

namespace {

constexpr std::size_t MaxNameBytes = 512;
constexpr std::size_t MaxObjectBytes = MAX_PATH - 1; // that the system takes
constexpr std::size_t MaxPlainBytes = 230;           // of a longer name; a hash of it follows

/// One name in this process.
struct SShared {
    std::string name;
    CSystemHandle mutex;
    std::atomic<DWORD> owner{0}; ///< thread of this process that took it; written by the owner of the mutex
    CSystemHandle ownerThread;   ///< as long as it is open no other thread gets the id; belongs to the same
    unsigned handles = 0;        ///< guarded by g_lock
    SShared * next = nullptr;    ///< guarded by g_lock

    bool IsMine() const noexcept { return owner.load(std::memory_order_relaxed) == ::GetCurrentThreadId(); }
};

constinit CStaticLock g_lock;
constinit SShared * g_first = nullptr;

/// The name of the system's object.
std::string ObjectName(char const * name)
{
    const std::string_view used(name, ::strnlen(name, MaxNameBytes));
    std::string object(used);
    if (used.size() > MaxObjectBytes)
        object.replace(MaxPlainBytes, std::string::npos, '-' + std::to_string(NameHash(used)));
    std::replace(object.begin(), object.end(), '\\', '_');
    return object;
}

SShared * Find(std::string const & name) noexcept
{
    SShared * shared = g_first;
    while (shared != nullptr && shared->name != name)
        shared = shared->next;
    return shared;
}

/// Called with g_lock held.
ErrorCode NewShared(SShared *& out, std::string name)
{
    auto shared = std::make_unique<SShared>();
    shared->mutex.Reset(::CreateMutexA(nullptr, /*bInitialOwner=*/FALSE, name.c_str()));
    if (!shared->mutex) return LastError();
    shared->name = std::move(name);
    shared->next = g_first;
    out = g_first = shared.release();
    return Success;
}

/// Called with g_lock held.
void Unlink(SShared const & shared) noexcept
{
    SShared ** link = &g_first;
    while (*link != &shared)
        link = &(*link)->next;
    *link = shared.next;
}

/// By the thread that has just taken the mutex. The thread before it may have ended as its owner.
void NoteOwner(SShared & shared) noexcept
{
    HANDLE thread = nullptr;
    const HANDLE process = ::GetCurrentProcess();
    ::DuplicateHandle(process, ::GetCurrentThread(), process, &thread, SYNCHRONIZE, /*bInheritHandle=*/FALSE, 0);
    shared.owner.store(::GetCurrentThreadId(), std::memory_order_relaxed); // ahead of the end of the former handle
    shared.ownerThread.Reset(thread);
}

void Release(SShared & shared) noexcept
{
    shared.owner.store(0, std::memory_order_relaxed);
    shared.ownerThread.Reset();
    ::ReleaseMutex(shared.mutex.Get());
}

} // namespace

struct SNamedMutex {
    SShared * shared = nullptr;
};

ErrorCode NewNamedMutex(NamedMutexHandle & out, char const * name) noexcept
try {
    if (name == nullptr || *name == '\0') return ERROR_INVALID_PARAMETER;
    std::string object = ObjectName(name);
    auto handle = std::make_unique<SNamedMutex>();
    const std::lock_guard lock(g_lock);
    handle->shared = Find(object);
    const ErrorCode error = handle->shared != nullptr ? Success : NewShared(handle->shared, std::move(object));
    if (error != Success) return error;
    ++handle->shared->handles;
    out = handle.release();
    return Success;
} catch (std::bad_alloc const &) {
    return ERROR_NOT_ENOUGH_MEMORY;
}

bool TakeNamedMutex(NamedMutexHandle mutex, std::uint32_t timeoutMs) noexcept
{
    if (mutex == nullptr) return false;
    SShared & shared = *mutex->shared;
    if (shared.IsMine()) {
        ::Sleep(timeoutMs); // the system's mutex would let its owner in again
        return false;
    }
    const DWORD result = ::WaitForSingleObject(shared.mutex.Get(), timeoutMs);
    if (result != WAIT_OBJECT_0 && result != WAIT_ABANDONED) return false;
    NoteOwner(shared);
    return true;
}

void ReleaseNamedMutex(NamedMutexHandle mutex) noexcept
{
    if (mutex != nullptr && mutex->shared->IsMine()) Release(*mutex->shared);
}

void CloseNamedMutex(NamedMutexHandle mutex) noexcept
{
    if (mutex == nullptr) return;
    SShared & shared = *mutex->shared;
    delete mutex;
    const std::lock_guard lock(g_lock);
    if (--shared.handles != 0) return;
    if (shared.IsMine()) Release(shared);
    Unlink(shared);
    delete &shared;
}

} // namespace Platform
