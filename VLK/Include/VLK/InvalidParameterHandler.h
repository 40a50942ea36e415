#ifndef VLK_INVALID_PARAMETER_HANDLER_H
#define VLK_INVALID_PARAMETER_HANDLER_H

#include "Platform/Runtime.h"
#include "VLK/CriticalSection.h"
#include "VLK/Export.h"

namespace VLK::Misc {

/// Silences the C runtime's checks of its arguments for a scope, for calls such as closing a stale descriptor. One
/// scope at a time in the process: another thread's waits. Nothing to silence on systems without such checks.
class VLK_API RAII_RuntimeInvalidParameterHandler {
public:
    RAII_RuntimeInvalidParameterHandler() noexcept;
    ~RAII_RuntimeInvalidParameterHandler();
    RAII_RuntimeInvalidParameterHandler(RAII_RuntimeInvalidParameterHandler const &) = delete;
    RAII_RuntimeInvalidParameterHandler & operator=(RAII_RuntimeInvalidParameterHandler const &) = delete;

private:
    // Comes into being at its first use, which can't fail here.
    static Threading::Native_OS::CCriticalSection m_InvalidParameterHandlerMutex;

    Platform::ParameterHandler m_origHandler;
};

} // namespace VLK::Misc

#endif
