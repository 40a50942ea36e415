#include "VLK/InvalidParameterHandler.h"

namespace VLK::Misc {

Threading::Native_OS::CCriticalSection RAII_RuntimeInvalidParameterHandler::m_InvalidParameterHandlerMutex;

RAII_RuntimeInvalidParameterHandler::RAII_RuntimeInvalidParameterHandler() noexcept
{
    m_InvalidParameterHandlerMutex.Enter();
    m_origHandler = Platform::SilenceParameterChecks();
}

RAII_RuntimeInvalidParameterHandler::~RAII_RuntimeInvalidParameterHandler()
{
    Platform::RestoreParameterChecks(m_origHandler);
    m_InvalidParameterHandlerMutex.Leave();
}

} // namespace VLK::Misc
