#include "Platform/RegistryEditor.h"

#include <stdexcept>

#include "Platform/Process.h"
#include "Support/ChildProcess.h"
#include "Support/TempDirectory.h"

struct CRegistryEditor::SImpl {
    CTempDirectory directory;
};

CRegistryEditor::CRegistryEditor()
    : m_impl(std::make_unique<SImpl>()),
      m_key("SOFTWARE\\Kestrix tests " + std::to_string(Platform::CurrentProcessId()))
{
}

CRegistryEditor::~CRegistryEditor()
{
    Import("[-HKEY_LOCAL_MACHINE\\" + m_key + "]\r\n");
}

void CRegistryEditor::Import(std::string const & lines)
{
    const std::string file = m_impl->directory.Write("import.reg", RegistryFileBytes(lines));
    if (CChildProcess("regedit.exe", {"/S", file}).End() != 0) throw std::runtime_error("regedit /S " + file);
}
