#include "Platform/Thread.h"

bool Platform::TerminatedThreadsGoOn() noexcept
{
    return false;
}
