#include "VLK/Application.h"

#include <boost/filesystem/path.hpp>
#include <string>

#include "Platform/CriticalSection.h"
#include "Platform/Host.h"
#include "Platform/Module.h"
#include "VLK/Exceptions.h"
#include "VLK/ThrowState.h"

namespace VLK::Misc {

constinit CVlkApplication * pVlkApp = nullptr;

namespace {

constexpr unsigned int NoMessage = 129;

Internals::CMyApplication g_DefaultApplication;

/// The program's path, asked for once.
class CProcessPath {
public:
    std::string const & Get(Platform::ErrorCode & error)
    {
        Platform::CCriticalLock const lock(m_Lock);
        error = m_Path.empty() ? Platform::ProgramPath(m_Path) : Platform::Success;
        return m_Path;
    }

private:
    Platform::CCriticalSection m_Lock;
    std::string m_Path;
};

CProcessPath g_ProcessPath;

} // namespace

CVlkApplication::CVlkApplication() : m_bDebugWait(false)
{
    pVlkApp = this;
}

CVlkApplication::~CVlkApplication()
{
    CVlkApplication * const standard = &g_DefaultApplication;
    pVlkApp = this != standard ? standard : nullptr;
}

unsigned int CVlkApplication::GetErrorMessage(Strings::CStringVar & out, unsigned int)
{
    out = CNull();
    return NoMessage;
}

unsigned int CVlkApplication::GetNlsSearchPath(Strings::CStringVar & out) const
{
    out = m_NlsSearchPath;
    return URET_OK;
}

unsigned int CVlkApplication::SetNlsSearchPath(Strings::CSubStringRef const & path)
{
    m_NlsSearchPath = path;
    return URET_OK;
}

unsigned int CVlkApplication::SetNlsSearchPath(boost::filesystem::path const & path)
{
    Exceptions::CThrowState state;
    try {
        m_NlsSearchPath = path.string();
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CVlkApplication::GetProcessPath(Strings::CStringVar & out)
{
    Exceptions::CThrowState state;
    try {
        boost::filesystem::path path;
        GetProcessPath(path);
        out = path.string();
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CVlkApplication::GetProcessPath(boost::filesystem::path & out)
{
    Exceptions::CThrowState state;
    try {
        Platform::ErrorCode error = Platform::Success;
        std::string const & path = g_ProcessPath.Get(error);
        if (error != Platform::Success) VLK_RAISE_OS(state, Errors::CallingPath, error);
        out = path;
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CVlkApplication::GetWindowsPath(boost::filesystem::path & out)
{
    Exceptions::CThrowState state;
    try {
        std::string directory;
        if (Platform::SystemDirectory(directory) != Platform::Success) directory.clear();
        out = directory;
        return directory.empty() ? URET_Error : URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int CVlkApplication::GetCommandPath(std::string const &, ...)
{
    return 0;
}

} // namespace VLK::Misc
