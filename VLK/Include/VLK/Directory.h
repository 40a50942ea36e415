#ifndef VLK_DIRECTORY_H
#define VLK_DIRECTORY_H

#include <memory>
#include <string>

#include "VLK/Export.h"

namespace VLK::FileSystem {

/// What a walk through a directory holds. Copies share it, a moved-from one is empty. One thread.
class VLK_API CDirectory {
public:
    CDirectory() noexcept;
    CDirectory(CDirectory const & other);
    CDirectory(CDirectory && other) noexcept;
    CDirectory & operator=(CDirectory const & other);
    CDirectory & operator=(CDirectory && other) noexcept;
    ~CDirectory();

private:
    // Three pointers; the walk itself is no part of this library.
    std::shared_ptr<std::string> m_pPath;
    void const * m_pEntry;
};
static_assert(sizeof(CDirectory) == 3 * sizeof(void *));

} // namespace VLK::FileSystem

#endif
