#include "Module.h"

#include <atomic>
#include <cstdio>

namespace {

constexpr char const * kTexts[] = {"Temperature out of band", "Good morning"};
constexpr VLK::Misc::ERROR_MSG_LIST kErrors[] = {{kOutOfBand, TextOutOfBand}, {0, 0}};

std::atomic<bool> g_failed{false};

} // namespace

VLK::Language_Support::CLanguageSupport::CLngFile
    g_texts("consumer.nls", VLK::Language_Support::CLanguageSupport::Default_Language_ID, "utf-8",
            VLK::Language_Support::CLanguageSupport::EncodingUtf8, kTexts, 2);
VLK::Misc::CModuleInfo g_consumerModule(kModuleId, "CONSUMER", "P:1.0 F:1.0", &g_texts, kErrors);

bool Require(bool holds, char const * condition, char const * file, int line)
{
    if (!holds) {
        std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, condition);
        g_failed = true;
    }
    return holds;
}

bool AllHeld()
{
    return !g_failed;
}
