#include <atomic>
#include <cstdint>
#include <cstdio>
#include <memory>

#include "Ratio.h"
#include "VLK/FormatStream.h"
#include "VLK/Threads.h"
#include "VLK/Trace.h"

// Formatted output of the foundation against the C library's, and what an idle trace site costs.

namespace {

using VLK::Strings::TString;
using VLK::Threading::CCallBackGuard;

constexpr std::size_t kLines = 50000;
constexpr std::size_t kSites = 2000000;

/// Keeps the compiler from leaving out what nobody reads.
template <class T>
void Use(T const & value)
{
    asm volatile("" : : "r"(&value) : "memory");
}

/// Keeps the loop of a counter, without touching memory.
void Keep(std::size_t & counter)
{
    asm volatile("" : "+r"(counter));
}

/// A line of five fields: text, number, padded number, hexadecimal, padded text.
Bench::SPair FiveFields()
{
    const auto guard = std::make_shared<CCallBackGuard>(); // a full thread of the foundation
    return {[guard] {
                return Bench::NanosecondsEach(kLines, [] {
                    for (std::size_t i = 0; i < kLines; ++i) {
                        const unsigned int n = static_cast<unsigned int>(i);
                        char line[128];
                        std::snprintf(line, sizeof line, "Ctrl %s: drive %d of %04d, state 0x%X, name %-16s|", "alpha",
                                      static_cast<int>(n), static_cast<int>(n & 0xFFF), n * 7919u, "logical");
                        Use(line);
                    }
                });
            },
            [guard] {
                return Bench::NanosecondsEach(kLines, [] {
                    for (std::size_t i = 0; i < kLines; ++i) {
                        const unsigned int n = static_cast<unsigned int>(i);
                        TString<128> line;
                        line.Format("Ctrl %s: drive %d of %04d, state 0x%X, name %- 16s|")
                            << "alpha" << static_cast<int>(n) << static_cast<int>(n & 0xFFF) << n * 7919u << "logical";
                        Use(line);
                    }
                });
            }};
}

/// A trace site whose bit is clear, in a loop that does nothing else.
Bench::SPair IdleTraceSite()
{
    return {[] {
                return Bench::NanosecondsEach(kSites, [] {
                    for (std::size_t i = 0; i < kSites; ++i)
                        Keep(i);
                });
            },
            [] {
                return Bench::NanosecondsEach(kSites, [] {
                    for (std::size_t i = 0; i < kSites; ++i) {
                        VLK_TRACE(VLK::TraceGeneral, "step %d", static_cast<int>(i));
                        Keep(i);
                    }
                });
            }};
}

} // namespace

int main(int argc, char ** argv)
{
    Bench::AddRatio("Format/FiveFields", 1.5, FiveFields);
    Bench::AddRatio("Trace/IdleSite", 1.2, IdleTraceSite);
    return Bench::Main(argc, argv);
}
