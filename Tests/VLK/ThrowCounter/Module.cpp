#include "VLK/Exceptions.h"
#include "VLK/Threads.h"

// A module of a product, with a foundation of its own.

using namespace VLK;
using Exceptions::CThrowState;
using Exceptions::CThrowStateData;

namespace {

unsigned int Fail()
{
    CThrowState state;
    try {
        VLK_RAISE(state, Errors::IndexOutOfBounds);
    }
    VLK_THROW_NEXT(state)
}

} // namespace

/// The counter in use, and the module's own.
extern "C" VLK_API int CountInUse()
{
    return CThrowStateData::Counter().Count();
}
extern "C" VLK_API int OwnCount()
{
    return CThrowStateData::m_DisableCnt.Count();
}

/// Calls on a thread that has throwing disabled. Returns what a failing function of the foundation returns there.
extern "C" VLK_API unsigned int WithThrowDisabled(void (*call)(void *), void * argument)
{
    Threading::CCallBackGuard const guard;
    CThrowState state;
    state.DisableThrow();
    call(argument);
    return Fail();
}

/// Whether a failing function throws.
extern "C" VLK_API bool Throws()
{
    Threading::CCallBackGuard const guard;
    try {
        Fail();
        return false;
    } catch (unsigned int) {
        return true;
    }
}
