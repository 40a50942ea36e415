#include "Platform/DynamicLibrary.h"

#include "NoQuestions.h"
#include "Platform/Error.h"
#include "System.h"

namespace Platform {

namespace {

/// The file's full path, from the current directory if need be; empty when the name is none.
std::string FullPath(std::string const & file)
{
    std::string path(::GetFullPathNameA(file.c_str(), 0, nullptr, nullptr), '\0');
    if (path.empty()) return path;
    path.resize(::GetFullPathNameA(file.c_str(), static_cast<DWORD>(path.size()), path.data(), nullptr));
    return path;
}

/// The library's handle, or null with the system's error.
HMODULE Load(std::string const & path, ErrorCode & error) noexcept
{
    CNoQuestions const quiet;
    HMODULE const module = ::LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    error = LastError();
    return module;
}

/// One line, though the system's text ends with a line's end.
std::string Reason(std::string const & file, ErrorCode error)
{
    std::string text = ErrorText(error);
    text.resize(text.find_last_not_of("\r\n ") + 1);
    return file + ": " + text + " (" + std::to_string(error) + ")";
}

} // namespace

ModuleHandle LoadModule(std::string const & file, std::string & reason)
{
    // A name without a directory would be looked up on the loader's search path instead of where it was named. What
    // the library itself asks for is looked up beside it first.
    const std::string path = FullPath(file);
    ErrorCode error = Success;
    HMODULE const module = Load(path, error);
    if (module == nullptr) reason = Reason(file, error);
    return module;
}

void UnloadModule(ModuleHandle module) noexcept
{
    if (module != nullptr) ::FreeLibrary(static_cast<HMODULE>(module));
}

void * ModuleSymbol(ModuleHandle module, char const * name) noexcept
{
    return reinterpret_cast<void *>(::GetProcAddress(static_cast<HMODULE>(module), name));
}

char const * ModuleFileSuffix() noexcept
{
    return ".dll";
}

} // namespace Platform
