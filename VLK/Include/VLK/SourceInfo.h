#ifndef VLK_SOURCE_INFO_H
#define VLK_SOURCE_INFO_H

#include <cstdint>

#include "VLK/Export.h"

namespace VLK::Misc {
class CModuleInfo;
/// The descriptor of the foundation's own module (id 1), defined with the module registry.
extern VLK_API CModuleInfo VLK_MODULE_INFO_VlkLib;
} // namespace VLK::Misc

namespace VLK::Exceptions {

/// A place in the source. Instances are static data of the module that raises, so a pointer to one goes stale
/// when that module is unloaded; error records notice that.
struct SOURCE_INFO {
    Misc::CModuleInfo * module; ///< null: not known
    char const * file;          ///< name without directories
    std::uint32_t line;
};

/// Kinds of NATIVE_ERROR: the ids of the modules that know the texts.
inline constexpr std::uint32_t NativeNone = 0;
inline constexpr std::uint32_t NativeOs = 2;  ///< the system's error number
inline constexpr std::uint32_t NativeCrt = 3; ///< errno of the C library

/// The error of the system or of the C library that stands behind an error of the foundation.
struct NATIVE_ERROR {
    std::uint32_t kind;
    std::uint32_t value;
};

/// An error number of the system, as the functions of the platform layer return it.
constexpr NATIVE_ERROR OsError(std::uint32_t value) noexcept
{
    return NATIVE_ERROR{NativeOs, value};
}

} // namespace VLK::Exceptions

/// The module whose code is being compiled. A module other than the foundation defines its own before it
/// includes a header of the foundation.
#ifndef VLK_THIS_MODULE
#define VLK_THIS_MODULE ::VLK::Misc::VLK_MODULE_INFO_VlkLib
#endif

/// This source file's name without directories.
#ifdef __FILE_NAME__
#define VLK_SOURCE_FILE __FILE_NAME__
#else
#define VLK_SOURCE_FILE __FILE__
#endif

/// Defines a static SOURCE_INFO of that name for this place.
#define VLK_SOURCE(name)                                                                                               \
    static constexpr ::VLK::Exceptions::SOURCE_INFO name                                                               \
    {                                                                                                                  \
        &VLK_THIS_MODULE, VLK_SOURCE_FILE, __LINE__                                                                    \
    }

#endif
