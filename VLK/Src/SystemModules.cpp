#include "SystemModules.h"

#include <string>

#include "Platform/Clock.h"
#include "Platform/Error.h"
#include "VLK/Exceptions.h"
#include "VLK/ThrowState.h"

namespace VLK::Internals {

namespace {

constexpr std::size_t CrtTextRoom = 256; ///< of the C library's text, with its terminator

std::uint64_t MultiplyDivide(std::uint64_t value, std::uint64_t factor, std::uint64_t divisor) noexcept
{
    // In two steps, since the product of a long uptime and a fine counter needs more than 64 bits.
    return value / divisor * factor + value % divisor * factor / divisor;
}

} // namespace

std::uint64_t TickTime(STickStart const & clock, std::uint64_t present, unsigned int unitsPerSecond) noexcept
{
    constexpr std::uint64_t WithoutCounter = 1000000; // of milliseconds: a thousand times too slow, as it always was
    return MultiplyDivide(present - clock.start, unitsPerSecond,
                          clock.frequency != 0 ? clock.frequency : WithoutCounter);
}

namespace Windows {

STickStart CModuleInfo_Win::m_TickStart{};

CModuleInfo_Win::CModuleInfo_Win() : CModuleInfo(2, "OS", "", nullptr, nullptr)
{
    std::uint64_t const frequency = Platform::PerformanceFrequency();
    m_TickStart = {frequency, frequency != 0 ? Platform::PerformanceCounter() : Platform::TickCountMs()};
}

void CModuleInfo_Win::GetErrorMsg(Strings::CStringVar & out, unsigned int code, unsigned int)
{
    Exceptions::CThrowState state;
    try {
        std::string const text = Platform::ErrorText(code);
        if (!text.empty()) out = text;
        return;
    }
    VLK_THROW_NEXT_VOID(state)
}

} // namespace Windows

CCRtlModuleInfo::CCRtlModuleInfo() : CModuleInfo(3, "C-LIB", "", nullptr, nullptr) {}

void CCRtlModuleInfo::GetErrorMsg(Strings::CStringVar & out, unsigned int code, unsigned int)
{
    Exceptions::CThrowState state;
    try {
        std::string const text = Platform::CrtErrorText(static_cast<int>(code));
        out = Strings::CSubStringRef(text)(0, CrtTextRoom - 1);
        return;
    }
    VLK_THROW_NEXT_VOID(state)
}

} // namespace VLK::Internals
