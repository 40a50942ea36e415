#ifndef PLATFORM_POSIX_THREAD_RECORD_H
#define PLATFORM_POSIX_THREAD_RECORD_H

#include <atomic>
#include <cstdint>
#include <mutex>

#include "Descriptor.h"
#include "Platform/Wait.h"

namespace Platform {

struct SMutex;

/// What this room keeps of one thread that used it: the wake-up descriptor, made when somebody first wants to
/// wake the thread, and the mutexes that the thread owns. It is the target of wake-ups, so it is counted: one
/// reference is the thread's, the others are the wakers'.
struct SThreadWaker {
    std::atomic<std::uint32_t> references{1};
    std::atomic<int> wakeDescriptor{-1};  ///< written by the thread itself, once
    std::atomic<bool> wakePending{false}; ///< a wake-up not yet answered by a wait
    std::atomic<bool> abandoned{false};   ///< counts as ended; every wait of it stays for good
    std::atomic<bool> blocked{false};     ///< inside a wait that uses this record
    SMutex * ownedMutexes = nullptr;      ///< guarded by OwnershipLock
    SThreadWaker * previous = nullptr;    ///< guarded by the lock of the list of records
    SThreadWaker * next = nullptr;
};

/// Guards the owner's list and the owner of every mutex. A leaf: nothing is locked inside.
std::mutex & OwnershipLock() noexcept;

/// The calling thread's record; null when there is none yet, or none to be had.
SThreadWaker * ExistingThreadRecord() noexcept;
SThreadWaker * ThreadRecord() noexcept;

/// The calling thread ends: mutexes that it still owns count as abandoned, its record goes. Threads that were
/// not started here come to it by themselves.
void EndThreadRecord() noexcept;

/// Declares another thread ended (see TerminateThread). The caller keeps the record from going meanwhile.
void AbandonThread(SThreadWaker & record) noexcept;

void DropThreadRecord(SThreadWaker * record) noexcept;

extern std::atomic<std::uint32_t> g_abandonedThreads;
void ParkAbandonedThread() noexcept;
/// A thread that was declared ended goes no further than this.
inline void ParkIfAbandoned() noexcept
{
    if (g_abandonedThreads.load(std::memory_order_relaxed) != 0) ParkAbandonedThread();
}

/// Takes the wake-up of the calling thread, if there is one.
bool TakeWakeUp(SThreadWaker & self) noexcept;

} // namespace Platform

#endif
