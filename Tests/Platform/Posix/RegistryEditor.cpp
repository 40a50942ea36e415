#include "Platform/RegistryEditor.h"

#include "Support/ScopedVariable.h"
#include "Support/TempDirectory.h"

struct CRegistryEditor::SImpl {
    CTempDirectory directory;
    CScopedVariable variable{"KXRA_REGISTRY", directory.File("registry.reg")};
    std::string lines;
};

CRegistryEditor::CRegistryEditor() : m_impl(std::make_unique<SImpl>()), m_key("SOFTWARE\\Kestrix tests") {}

CRegistryEditor::~CRegistryEditor() = default;

void CRegistryEditor::Import(std::string const & lines)
{
    m_impl->lines += lines;
    m_impl->directory.Write("registry.reg", RegistryFileBytes(m_impl->lines));
}
