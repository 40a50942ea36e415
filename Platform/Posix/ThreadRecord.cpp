#include "ThreadRecord.h"

#include <dlfcn.h>
#include <link.h>
#include <poll.h>
#include <pthread.h>

#include <new>

#include "Mutex.h"

namespace Platform {

namespace {

extern "C" void EndOfForeignThread(void * record);

/// Whether this code belongs to the program itself, which is never unloaded.
bool BelongsToProgram() noexcept
{
    Dl_info info{};
    void * map = nullptr;
    if (::dladdr1(reinterpret_cast<void const *>(&BelongsToProgram), &info, &map, RTLD_DL_LINKMAP) == 0) return false;
    return map != nullptr && static_cast<link_map const *>(map)->l_prev == nullptr;
}

/// All records, and the key that leads a thread to its own. Going away, when the library is unloaded, it takes
/// the key along, so that no ending thread calls code that isn't there any more, and the records of threads
/// that live on outside.
class CThreadRecords {
public:
    CThreadRecords() noexcept : m_usable(::pthread_key_create(&m_key, &EndOfForeignThread) == 0) {}
    ~CThreadRecords();
    CThreadRecords(CThreadRecords const &) = delete;
    CThreadRecords & operator=(CThreadRecords const &) = delete;

    SThreadWaker * Existing() const noexcept
    {
        return m_usable.load(std::memory_order_relaxed) ? static_cast<SThreadWaker *>(::pthread_getspecific(m_key))
                                                        : nullptr;
    }
    SThreadWaker * New() noexcept;
    void Forget(SThreadWaker & record) noexcept;
    void ClearSlot() noexcept { ::pthread_setspecific(m_key, nullptr); }

private:
    pthread_key_t m_key{};
    std::atomic<bool> m_usable;
    std::mutex m_lock; // guards the list
    SThreadWaker * m_first = nullptr;
};

// Built before and destroyed behind every other static object of the library: those may still wait and lock.
[[gnu::init_priority(101)]] CThreadRecords g_records;
constinit std::mutex g_ownershipLock;

void AbandonMutexes(SThreadWaker & record) noexcept
{
    const std::lock_guard lock(g_ownershipLock);
    while (record.ownedMutexes != nullptr)
        record.ownedMutexes->Abandon();
}

SThreadWaker * CThreadRecords::New() noexcept
{
    if (!m_usable.load(std::memory_order_relaxed)) return nullptr;
    auto * const record = new (std::nothrow) SThreadWaker;
    if (record == nullptr) return nullptr;
    if (::pthread_setspecific(m_key, record) != 0) {
        delete record;
        return nullptr;
    }
    const std::lock_guard lock(m_lock);
    record->next = m_first;
    if (m_first != nullptr) m_first->previous = record;
    m_first = record;
    return record;
}

void CThreadRecords::Forget(SThreadWaker & record) noexcept
{
    const std::lock_guard lock(m_lock);
    (record.previous != nullptr ? record.previous->next : m_first) = record.next;
    if (record.next != nullptr) record.next->previous = record.previous;
    record.previous = record.next = nullptr;
}

CThreadRecords::~CThreadRecords()
{
    // At the end of a program its threads may still run; their records end with the process.
    if (!m_usable.load(std::memory_order_relaxed) || BelongsToProgram()) return;
    m_usable.store(false, std::memory_order_relaxed);
    ::pthread_key_delete(m_key);
    const std::lock_guard lock(m_lock);
    for (SThreadWaker * record = m_first; record != nullptr;) {
        SThreadWaker * const next = record->next;
        if (!record->blocked.load(std::memory_order_relaxed) && !record->abandoned.load(std::memory_order_relaxed)) {
            AbandonMutexes(*record);
            DropThreadRecord(record);
        }
        record = next;
    }
    m_first = nullptr;
}

void EndRecord(SThreadWaker & record) noexcept
{
    AbandonMutexes(record);
    g_records.Forget(record);
    if (record.abandoned.load(std::memory_order_relaxed)) g_abandonedThreads.fetch_sub(1, std::memory_order_relaxed);
    DropThreadRecord(&record);
}

extern "C" void EndOfForeignThread(void * record)
{
    EndRecord(*static_cast<SThreadWaker *>(record));
}

} // namespace

std::atomic<std::uint32_t> g_abandonedThreads{0};

std::mutex & OwnershipLock() noexcept
{
    return g_ownershipLock;
}

SThreadWaker * ExistingThreadRecord() noexcept
{
    return g_records.Existing();
}

SThreadWaker * ThreadRecord() noexcept
{
    SThreadWaker * const record = g_records.Existing();
    return record != nullptr ? record : g_records.New();
}

void EndThreadRecord() noexcept
{
    SThreadWaker * const record = g_records.Existing();
    if (record == nullptr) return;
    g_records.ClearSlot();
    EndRecord(*record);
}

void AbandonThread(SThreadWaker & record) noexcept
{
    if (!record.abandoned.exchange(true, std::memory_order_relaxed))
        g_abandonedThreads.fetch_add(1, std::memory_order_relaxed);
    AbandonMutexes(record);
    WakeThread(&record);
}

void ParkAbandonedThread() noexcept
{
    SThreadWaker const * const self = ExistingThreadRecord();
    if (self == nullptr || !self->abandoned.load(std::memory_order_relaxed)) return;
    for (;;)
        ::poll(nullptr, 0, -1);
}

bool TakeWakeUp(SThreadWaker & self) noexcept
{
    // Emptied before the mark is taken back: a wake-up in between leaves a readable descriptor without a mark,
    // which the next wait empties, never a mark that no wait sees.
    ErrorCode error = Success;
    ConsumeDescriptor(self.wakeDescriptor.load(std::memory_order_relaxed), error);
    return self.wakePending.exchange(false, std::memory_order_acq_rel);
}

void DropThreadRecord(SThreadWaker * record) noexcept
{
    if (record == nullptr || record->references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    const CDescriptor wake(record->wakeDescriptor.load(std::memory_order_relaxed));
    delete record;
}

WakerHandle CurrentThreadWaker() noexcept
{
    SThreadWaker * const record = ThreadRecord();
    if (record == nullptr) return nullptr;
    if (record->wakeDescriptor.load(std::memory_order_relaxed) < 0)
        record->wakeDescriptor.store(NewEventDescriptor(0, /*countDown=*/false), std::memory_order_release);
    if (record->wakeDescriptor.load(std::memory_order_relaxed) < 0) return nullptr;
    record->references.fetch_add(1, std::memory_order_relaxed);
    return record;
}

void CloseWaker(WakerHandle waker) noexcept
{
    DropThreadRecord(waker);
}

void WakeThread(WakerHandle waker) noexcept
{
    if (waker == nullptr) return;
    const int descriptor = waker->wakeDescriptor.load(std::memory_order_acquire);
    if (descriptor < 0) return;
    if (!waker->wakePending.exchange(true, std::memory_order_acq_rel)) SignalDescriptor(descriptor);
}

} // namespace Platform
