#ifndef SERVICE_EXTENSION_LIBRARY_H
#define SERVICE_EXTENSION_LIBRARY_H

#include <memory>
#include <string>
#include <vector>

#include "Arcs.h"
#include "EntryPoints.h"
#include "Platform/DynamicLibrary.h"

namespace Service {

/// An extension library in this process: loaded and told so by DllMain, then started, and the reverse at the
/// end. Threads: one at a time.
class CExtensionLibrary {
public:
    /// Loads the file and finds its five functions. Null with one line in `error` when there is no such
    /// library, it isn't one, it lacks a function, or its DllMain refuses.
    static std::unique_ptr<CExtensionLibrary> Load(std::string const & file, std::string & error);
    /// Stops the extension if it runs, and unloads it.
    ~CExtensionLibrary();
    CExtensionLibrary(CExtensionLibrary const &) = delete;
    CExtensionLibrary & operator=(CExtensionLibrary const &) = delete;

    /// Starts the extension. uptimeReference: hundredths of a second on the clock of the agent's tick count.
    /// False with one line in `error` when it doesn't start or serves nothing.
    bool Start(std::uint32_t uptimeReference, std::string & error);
    void Stop() noexcept;
    /// Leaves the library running and in memory for the rest of the process: a call is still inside it.
    void Abandon() noexcept;

    std::string const & File() const noexcept { return m_file; }
    SEntryPoints const & Functions() const noexcept { return m_functions; }
    /// Roots of what it serves, at least one once started.
    std::vector<CArcs> const & Regions() const noexcept { return m_regions; }
    /// Descriptor of its trap event, -1 for none.
    int TrapDescriptor() const noexcept { return m_trapDescriptor; }

private:
    explicit CExtensionLibrary(std::string file) : m_file(std::move(file)) {}
    bool FindFunctions(std::string & error);
    /// Keeps a region and frees it. False when it is no region.
    bool TakeRegion(AsnObjectIdentifier & region);

    std::string m_file;
    Platform::CModuleHandle m_module;
    SEntryPoints m_functions;
    std::vector<CArcs> m_regions;
    int m_trapDescriptor = -1;
    bool m_attached = false;
    bool m_started = false;
};

} // namespace Service

#endif
