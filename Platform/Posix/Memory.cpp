#include "Platform/Memory.h"

#include <malloc.h>

namespace Platform {

void TuneMemoryForShortRequests() noexcept
{
#ifdef M_MXFAST
    ::mallopt(M_MXFAST, 0);
#endif
}

} // namespace Platform
