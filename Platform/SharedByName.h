#ifndef PLATFORM_SHARED_BY_NAME_H
#define PLATFORM_SHARED_BY_NAME_H

#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "Platform/Error.h"
#include "Platform/StaticLock.h"

namespace Platform {

/// What this process has open under names: one object for all handles on a name, which goes with the last of them.
/// TShared derives from SNamed and opens what stands for its name in `ErrorCode Open()`. Static storage; any thread.
template <class TShared>
class TSharedByName {
public:
    struct SNamed {
        std::string name;
        unsigned handles = 0; ///< this and the next: guarded by the lock of the names
        TShared * next = nullptr;
    };

    /// One handle more on the name. Raises std::bad_alloc; nothing has changed behind a failure.
    ErrorCode Acquire(TShared *& out, std::string name)
    {
        const std::lock_guard lock(m_lock);
        TShared * shared = Find(name);
        if (shared == nullptr) {
            auto opened = std::make_unique<TShared>();
            opened->name = std::move(name);
            if (ErrorCode const error = opened->Open(); error != Success) return error;
            opened->next = m_first;
            shared = m_first = opened.release();
        }
        ++shared->handles;
        out = shared;
        return Success;
    }
    /// One handle less.
    void Release(TShared & shared) noexcept
    {
        const std::lock_guard lock(m_lock);
        if (--shared.handles != 0) return;
        TShared ** link = &m_first;
        while (*link != &shared)
            link = &(*link)->next;
        *link = shared.next;
        delete &shared;
    }

private:
    TShared * Find(std::string const & name) const noexcept
    {
        TShared * shared = m_first;
        while (shared != nullptr && shared->name != name)
            shared = shared->next;
        return shared;
    }

    CStaticLock m_lock;
    TShared * m_first = nullptr;
};

} // namespace Platform

#endif
