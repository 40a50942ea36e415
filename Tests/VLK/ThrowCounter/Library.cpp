#include "VLK/ThrowState.h"

// The library that all modules of a process share: it exports the counter and nothing else.

constinit VLK::Threading::CSyncCounter VLK::Exceptions::CThrowStateData::m_DisableCnt{0};

extern "C" VLK_API int SharedCount()
{
    return VLK::Exceptions::CThrowStateData::m_DisableCnt.Count();
}
