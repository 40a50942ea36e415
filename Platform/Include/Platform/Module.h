#ifndef PLATFORM_MODULE_H
#define PLATFORM_MODULE_H

#include <cstdint>
#include <map>
#include <string>

#include "Platform/Error.h"

/// The modules of this process and the version blocks of files. Any thread unless told otherwise. Outputs keep their
/// values on failure; what fills a text or a map may raise std::bad_alloc.
namespace Platform {

/// Full path of the module (library or program) that holds the address.
ErrorCode ModulePath(void const * addressInside, std::string & out);
/// Full path of the running program.
ErrorCode ProgramPath(std::string & out);

/// The modules that are loaded in this process, at most 256: base name with extension, and the system's handle
/// (POSIX: the address that the module was loaded at).
ErrorCode LoadedModules(std::map<std::string, void *> & out);
/// Keeps a module that is loaded for good; loads none. name: base name with extension, or a path.
/// Returns the system's handle, or null when no such module is loaded.
void * PinModule(char const * name) noexcept;
/// Tells the system that a library needs no call for threads that begin and end. module: the system's handle, as
/// the library got it at its attach. POSIX: there are no such calls. Windows: they go on all the same for a library
/// that has thread-local data of its own.
void DisableThreadNotifications(void * module) noexcept;
/// Whether the process runs in a compatibility layer for programs of another word size.
bool RunsInCompatibilityLayer() noexcept;

/// Version block of a file: fixed numbers and texts by language, put into a file of ours by kxra_version_block() of the
/// build. On Windows the version resource, on POSIX a section of an ELF file.

/// Size of the block, or 0 with the reason in `error` (ErrorNotFound: no such file).
std::uint32_t VersionBlockSize(std::string const & path, ErrorCode & error);
/// Reads the block; `out` gets `size` bytes at most.
ErrorCode ReadVersionBlock(std::string const & path, std::uint32_t size, std::string & out);
/// Looks something up in a block, with the query syntax of the platform's version resources:
/// "\\" the fixed file information (SFixedVersion), "\\VarFileInfo\\Translation" an array of 16-bit pairs
/// (language, code page), "\\StringFileInfo\\LLLLCCCC\\Key" a text. `out` points into the block; on Windows the system
/// converts texts into a room at the block's end, so a block is for one thread at a time. False if absent.
bool QueryVersionBlock(std::string const & block, char const * query, void const *& out, std::uint32_t & size) noexcept;

/// The part of the fixed file information that is read here, as the platform publishes it.
struct SFixedVersion {
    std::uint32_t signature; ///< 0xFEEF04BD
    std::uint32_t structVersion;
    std::uint32_t fileVersionMS, fileVersionLS;
    std::uint32_t productVersionMS, productVersionLS;
    std::uint32_t fileFlagsMask, fileFlags, fileOS, fileType, fileSubtype;
    std::uint32_t fileDateMS, fileDateLS;
};

/// Directory of the system's libraries, and the one for programs of the other word size; false where there is
/// no such directory (POSIX: the second never exists).
bool SystemLibraryDirectory(std::string & out);
bool OtherWordSizeDirectory(std::string & out);
/// File of the system's kernel interface, whose version block tells the true system version; false where
/// there is none (POSIX).
bool SystemVersionFile(std::string & out);

} // namespace Platform

#endif
