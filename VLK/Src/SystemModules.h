#ifndef VLK_SRC_SYSTEM_MODULES_H
#define VLK_SRC_SYSTEM_MODULES_H

#include <cstdint>

#include "VLK/ModuleInfo.h"

namespace VLK::Internals {

/// What the foundation's clock starts from.
struct STickStart {
    std::uint64_t frequency; ///< steps of the performance counter in a second; 0: there is none
    std::uint64_t start;     ///< counter, or tick count in milliseconds
};

/// Time since the start, in the units that the clock of the record gives, by the rules of GetTickTime.
std::uint64_t TickTime(STickStart const & clock, std::uint64_t present, unsigned int unitsPerSecond) noexcept;

namespace Windows {

/// The system's errors as a module, id 2. Its construction starts the foundation's clock.
class CModuleInfo_Win final : public Misc::CModuleInfo {
public:
    CModuleInfo_Win();
    /// The system's text; `out` stays as it is when there is none.
    void GetErrorMsg(Strings::CStringVar & out, unsigned int code, unsigned int direct) override;

    static STickStart const & TickStart() noexcept { return m_TickStart; }

private:
    static STickStart m_TickStart;
};

} // namespace Windows

/// The C library's errors as a module, id 3.
class CCRtlModuleInfo final : public Misc::CModuleInfo {
public:
    CCRtlModuleInfo();
    void GetErrorMsg(Strings::CStringVar & out, unsigned int code, unsigned int direct) override;
};

} // namespace VLK::Internals

#endif
