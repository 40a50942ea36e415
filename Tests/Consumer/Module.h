#ifndef CONSUMER_MODULE_H
#define CONSUMER_MODULE_H

// This module's name for what it traces and raises. It stands in front of the foundation's headers, so this header is
// the first one of every source.
namespace VLK::Misc {
class CModuleInfo;
}
extern VLK::Misc::CModuleInfo g_consumerModule;
#define VLK_THIS_MODULE ::g_consumerModule

#include <VLK/Language.h>
#include <VLK/ModuleInfo.h>
#include <VLK/ResultCodes.h>

inline constexpr unsigned int kModuleId = 4242;

/// The module's own error.
inline constexpr std::uint32_t kOutOfBand = VLK::MakeErrorCode(kModuleId, 1);

/// The module's texts, by their place in the table.
enum EText : std::size_t { TextOutOfBand = 0, TextGreeting = 1 };
extern VLK::Language_Support::CLanguageSupport::CLngFile g_texts;

/// Reports on standard error where a condition doesn't hold, and remembers it.
#define REQUIRE(condition) Require((condition), #condition, __FILE__, __LINE__)
bool Require(bool holds, char const * condition, char const * file, int line);
/// Whether all held so far.
bool AllHeld();

#endif
