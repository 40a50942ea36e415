#include "Support/HostFixture.h"

#include "Platform/Posix/UnitName.h"
#include "Support/ScopedVariable.h"
#include "Support/TempDirectory.h"

struct CHostFixture::SImpl {
    CTempDirectory system;
    CTempDirectory units;
    CScopedVariable systemVariable{"KXRA_SYSTEM_DIRECTORY", system.File("")};
    CScopedVariable unitsVariable{"SYSTEMD_UNIT_PATH", units.File("")};
};

CHostFixture::CHostFixture() : m_impl(std::make_unique<SImpl>()) {}

CHostFixture::~CHostFixture() = default;

std::filesystem::path CHostFixture::SystemFile(std::string const & name) const
{
    return m_impl->system.File(name);
}

void CHostFixture::WriteSystemFile(std::string const & name, std::string const & text)
{
    m_impl->system.Write(name, text);
}

void CHostFixture::MakeSystemFolder(std::string const & name)
{
    std::filesystem::create_directory(SystemFile(name));
}

void CHostFixture::InstallService(std::string const & name, std::size_t configurationBytes)
{
    m_impl->units.Write(Platform::ServiceUnitName(name.c_str()),
                        "[Service]\nExecStart=/bin/true\n#" + std::string(configurationBytes, '#'));
}
