#include "Platform/Module.h"

#include <cerrno>
#include <cstring>

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include "Platform/File.h"

namespace {

using Platform::ErrorCode;

constexpr std::size_t MaxModules = 256;
constexpr char LibraryDirectory[] = "/usr/lib";

std::string BaseName(std::string const & path)
{
    const std::size_t slash = path.rfind('/');
    return slash != std::string::npos ? path.substr(slash + 1) : path;
}

/// A path that begins at the root. A library keeps the relative path that it was loaded by.
ErrorCode MakeAbsolute(std::string & path)
{
    if (!path.empty() && path.front() == '/') return Platform::Success;
    std::string directory;
    const ErrorCode error = Platform::CurrentDirectory(directory);
    if (error == Platform::Success) path = directory + '/' + path;
    return error;
}

/// Calls visit(path, base address) for every loaded module until it returns false. The program's path is empty.
/// visit must not throw: the loader's frames lie in between.
template <class TVisit>
void VisitModules(TVisit & visit) noexcept
{
    ::dl_iterate_phdr(
        [](dl_phdr_info * module, std::size_t, void * argument) noexcept {
            void * const base = reinterpret_cast<void *>(module->dlpi_addr);
            return (*static_cast<TVisit *>(argument))(module->dlpi_name, base) ? 0 : 1;
        },
        &visit);
}

/// The path of a loaded module by its base name; empty when it isn't loaded.
std::string LoadedPath(char const * name)
{
    std::string found;
    bool failed = false;
    auto visit = [&](char const * path, void *) noexcept {
        try {
            if (BaseName(path) == name) found = path;
        } catch (...) {
            failed = true;
        }
        return found.empty() && !failed;
    };
    VisitModules(visit);
    return found;
}

} // namespace

Platform::ErrorCode Platform::ModulePath(void const * addressInside, std::string & out)
{
    Dl_info info{};
    link_map * module = nullptr;
    void ** const moduleOut = reinterpret_cast<void **>(&module);
    if (::dladdr1(addressInside, &info, moduleOut, RTLD_DL_LINKMAP) == 0 || module == nullptr) return ENOENT;
    if (module->l_name == nullptr || module->l_name[0] == '\0') return ProgramPath(out);
    std::string path = module->l_name;
    const ErrorCode error = MakeAbsolute(path);
    if (error == Success) out = std::move(path);
    return error;
}

Platform::ErrorCode Platform::ProgramPath(std::string & out)
{
    std::string path(256, '\0');
    for (;;) {
        const ssize_t size = ::readlink("/proc/self/exe", path.data(), path.size());
        if (size < 0) return static_cast<ErrorCode>(errno);
        if (static_cast<std::size_t>(size) < path.size()) {
            path.resize(static_cast<std::size_t>(size));
            out = std::move(path);
            return Success;
        }
        path.resize(path.size() * 2);
    }
}

Platform::ErrorCode Platform::LoadedModules(std::map<std::string, void *> & out)
{
    std::string program;
    const ErrorCode error = ProgramPath(program);
    if (error != Success) return error;
    std::map<std::string, void *> modules;
    std::size_t count = 0;
    bool failed = false;
    auto visit = [&](char const * path, void * base) noexcept {
        try {
            modules.emplace(BaseName(*path != '\0' ? path : program.c_str()), base);
        } catch (...) {
            failed = true;
        }
        return !failed && ++count < MaxModules;
    };
    VisitModules(visit);
    if (failed) return ENOMEM;
    out = std::move(modules);
    return Success;
}

void * Platform::PinModule(char const * name) noexcept
{
    try {
        const std::string path = std::strchr(name, '/') != nullptr ? name : LoadedPath(name);
        if (path.empty()) return nullptr;
        return ::dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
    } catch (...) {
        return nullptr;
    }
}

bool Platform::RunsInCompatibilityLayer() noexcept
{
    return false;
}

bool Platform::SystemLibraryDirectory(std::string & out)
{
    out = LibraryDirectory;
    return true;
}

bool Platform::OtherWordSizeDirectory(std::string &)
{
    return false;
}

bool Platform::SystemVersionFile(std::string &)
{
    return false;
}
