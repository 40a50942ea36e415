#include <cstdio>

#include "VLK/Threads.h"
#include "VLK/ThrowState.h"

// Tells the counts of a program that has one thread with throwing disabled.

int main()
{
    using VLK::Exceptions::CThrowStateData;
    VLK::Threading::CCallBackGuard const guard;
    VLK::Exceptions::CThrowState state;
    state.DisableThrow();
    std::printf("own %d, in use %d\n", CThrowStateData::m_DisableCnt.Count(), CThrowStateData::Counter().Count());
    return 0;
}
