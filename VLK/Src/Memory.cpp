#include "Memory.h"

#include "VLK/Exceptions.h"
#include "VLK/ThrowState.h"

unsigned int VLK::Internals::RaiseOutOfMemory()
{
    Exceptions::CThrowState state;
    try {
        VLK_RAISE(state, Errors::OutOfMemory);
    }
    VLK_THROW_NEXT(state)
}
