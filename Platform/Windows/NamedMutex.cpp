#include "Platform/NamedMutex.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "../NameHash.h"
#include "../SharedByName.h"
#include "System.h"

namespace Platform {

namespace {

constexpr std::size_t MaxNameBytes = 512;
constexpr std::size_t MaxObjectBytes = MAX_PATH - 1; // that the system takes
constexpr std::size_t MaxPlainBytes = 230;           // of a longer name; a hash of it follows

struct SShared;
constinit TSharedByName<SShared> g_mutexes;

/// One mutex in this process; the name is that of the system's object.
struct SShared : TSharedByName<SShared>::SNamed {
    CSystemHandle mutex;
    std::atomic<DWORD> owner{0}; ///< thread of this process that took it; written by the owner of the mutex
    CSystemHandle ownerThread;   ///< as long as it is open no other thread gets the id; belongs to the same

    ~SShared()
    {
        if (IsMine()) Release();
    }
    SShared() = default;
    SShared(SShared const &) = delete;
    SShared & operator=(SShared const &) = delete;

    ErrorCode Open() noexcept;
    bool IsMine() const noexcept { return owner.load(std::memory_order_relaxed) == ::GetCurrentThreadId(); }
    void NoteOwner() noexcept;
    void Release() noexcept;
};

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

ErrorCode SShared::Open() noexcept
{
    mutex.Reset(::CreateMutexA(nullptr, /*bInitialOwner=*/FALSE, name.c_str()));
    return mutex ? Success : LastError();
}

/// By the thread that has just taken the mutex. The thread before it may have ended as its owner.
void SShared::NoteOwner() noexcept
{
    HANDLE thread = nullptr;
    const HANDLE process = ::GetCurrentProcess();
    ::DuplicateHandle(process, ::GetCurrentThread(), process, &thread, SYNCHRONIZE, /*bInheritHandle=*/FALSE, 0);
    owner.store(::GetCurrentThreadId(), std::memory_order_relaxed); // ahead of the end of the former handle
    ownerThread.Reset(thread);
}

void SShared::Release() noexcept
{
    owner.store(0, std::memory_order_relaxed);
    ownerThread.Reset();
    ::ReleaseMutex(mutex.Get());
}

} // namespace

struct SNamedMutex {
    SShared * shared = nullptr;
};

ErrorCode NewNamedMutex(NamedMutexHandle & out, char const * name) noexcept
try {
    if (name == nullptr || *name == '\0') return ERROR_INVALID_PARAMETER;
    auto handle = std::make_unique<SNamedMutex>();
    const ErrorCode error = g_mutexes.Acquire(handle->shared, ObjectName(name));
    if (error != Success) return error;
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
    shared.NoteOwner();
    return true;
}

void ReleaseNamedMutex(NamedMutexHandle mutex) noexcept
{
    if (mutex != nullptr && mutex->shared->IsMine()) mutex->shared->Release();
}

void CloseNamedMutex(NamedMutexHandle mutex) noexcept
{
    if (mutex == nullptr) return;
    g_mutexes.Release(*mutex->shared);
    delete mutex;
}

} // namespace Platform
