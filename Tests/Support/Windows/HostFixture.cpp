#include "Support/HostFixture.h"

#include <fstream>
#include <stdexcept>
#include <vector>

#include "SystemHandle.h"

namespace {

/// Held as long as the host is a test's.
class CHostLock {
public:
    CHostLock() : m_mutex(::CreateMutexA(nullptr, FALSE, "Kestrix tests host"))
    {
        ::WaitForSingleObject(m_mutex.Get(), INFINITE); // ends at the latest when the other program is killed
    }
    ~CHostLock() { ::ReleaseMutex(m_mutex.Get()); }
    CHostLock(CHostLock const &) = delete;
    CHostLock & operator=(CHostLock const &) = delete;

private:
    CSystemHandle m_mutex;
};

std::filesystem::path WindowsDirectory()
{
    char path[MAX_PATH] = {};
    ::GetWindowsDirectoryA(path, MAX_PATH);
    return path;
}

} // namespace

struct CHostFixture::SImpl {
    CHostLock lock;
    std::vector<std::filesystem::path> files;
    std::vector<CNativeService> services;
};

CHostFixture::CHostFixture() : m_impl(std::make_unique<SImpl>()) {}

CHostFixture::~CHostFixture()
{
    std::error_code ignored;
    for (std::filesystem::path const & file : m_impl->files)
        std::filesystem::remove(file, ignored);
    for (CNativeService const & service : m_impl->services)
        ::DeleteService(service.Get());
}

std::filesystem::path CHostFixture::SystemFile(std::string const & name) const
{
    return WindowsDirectory() / name;
}

void CHostFixture::WriteSystemFile(std::string const & name, std::string const & text)
{
    m_impl->files.push_back(SystemFile(name));
    std::ofstream(m_impl->files.back(), std::ios::binary) << text;
}

void CHostFixture::MakeSystemFolder(std::string const & name)
{
    m_impl->files.push_back(SystemFile(name));
    std::filesystem::create_directory(m_impl->files.back());
}

void CHostFixture::InstallService(std::string const & name, std::size_t configurationBytes)
{
    const CNativeService manager(::OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CREATE_SERVICE));
    const std::string program = SystemFile("kestrix-test.exe ").string() + std::string(configurationBytes, 'x');
    CNativeService service(::CreateServiceA(manager.Get(), name.c_str(), nullptr, DELETE, SERVICE_WIN32_OWN_PROCESS,
                                            SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL, program.c_str(), nullptr,
                                            nullptr, nullptr, nullptr, nullptr));
    if (!service) throw std::runtime_error("no service " + name + ": " + std::to_string(::GetLastError()));
    m_impl->services.push_back(std::move(service));
}
