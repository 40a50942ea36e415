#ifndef VLK_APPLICATION_H
#define VLK_APPLICATION_H

#include <atomic>
#include <string>

#include "VLK/Export.h"
#include "VLK/Strings.h"

namespace boost::filesystem {
class path;
}

namespace VLK::Misc {

/// What the foundation knows of the process. Constructing one (of a derived class) makes it the current one, its end
/// brings the default back. Set it up before other threads use it.
class VLK_API CVlkApplication {
public:
    CVlkApplication();
    virtual ~CVlkApplication();
    /// Empties the text; 129. For derived applications that know more.
    virtual unsigned int GetErrorMessage(Strings::CStringVar & out, unsigned int code);
    CVlkApplication(CVlkApplication const &) = delete;
    CVlkApplication & operator=(CVlkApplication const &) = delete;

    /// Whether a failing thread shall wait for a debugger.
    bool GetDebugWait() const noexcept { return m_bDebugWait.load(std::memory_order_relaxed); }
    void SetDebugWait(bool wait) noexcept { m_bDebugWait.store(wait, std::memory_order_relaxed); }

    /// Directories of language files, separated by ";". Empty at first: no files are looked for.
    unsigned int GetNlsSearchPath(Strings::CStringVar & out) const;
    unsigned int SetNlsSearchPath(Strings::CSubStringRef const & path);
    unsigned int SetNlsSearchPath(char const * path) { return SetNlsSearchPath(Strings::CSubStringRef(path)); }
    unsigned int SetNlsSearchPath(boost::filesystem::path const & path);

    /// Path of the running program; asked for once in a process. Raise "Can't determine the programs calling path".
    static unsigned int GetProcessPath(Strings::CStringVar & out);
    static unsigned int GetProcessPath(boost::filesystem::path & out);
    /// Directory of the system-wide files. 1 if there is one.
    static unsigned int GetWindowsPath(boost::filesystem::path & out);
    /// Always 0.
    static unsigned int GetCommandPath(std::string const & name, ...);

private:
    Strings::CStringVar m_NlsSearchPath;
    std::atomic<bool> m_bDebugWait;
};

/// The current application; null before the foundation's static objects exist and after their end.
extern VLK_API CVlkApplication * pVlkApp;

} // namespace VLK::Misc

namespace VLK::Internals {

/// The default application; the foundation has one static object of it.
class VLK_API CMyApplication : public Misc::CVlkApplication {};

} // namespace VLK::Internals

#endif
