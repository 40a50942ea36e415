#include "Support/RegistryFixture.h"

#include "Support/ScopedVariable.h"
#include "Support/TempDirectory.h"

struct CRegistryFixture::SImpl {
    CTempDirectory directory;
    CScopedVariable variable{"KXRA_REGISTRY", directory.File("registry.reg")};
};

CRegistryFixture::CRegistryFixture() : m_impl(std::make_unique<SImpl>()) {}

CRegistryFixture::~CRegistryFixture() = default;

void CRegistryFixture::Write(std::string const & lines)
{
    CTempDirectory const & directory = m_impl->directory;
    std::filesystem::rename(directory.Write("new.reg", "Windows Registry Editor Version 5.00\n" + lines),
                            directory.File("registry.reg"));
}
