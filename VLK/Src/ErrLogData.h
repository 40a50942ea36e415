#ifndef VLK_SRC_ERR_LOG_DATA_H
#define VLK_SRC_ERR_LOG_DATA_H

#include <cstddef>
#include <cstdint>

#include "VLK/SourceInfo.h"

namespace VLK::Exceptions {

/// A place that an error passed.
struct SErrLogEntry {
    SOURCE_INFO const * source;
    std::uint64_t textOffset; ///< into the text; 0: no message
};

/// One error record, a malloc block: this head, the text area, the table of places. A new one is 1024 bytes and holds
/// 808 characters and 8 places; it grows by being reallocated.
struct ERRLOG_DATA {
    std::uint32_t error;
    NATIVE_ERROR native;
    std::uint32_t entryCount;
    std::uint32_t entryCapacity;
    std::uint32_t header;
    std::uint32_t unloadCounter; ///< of the module list, when the record was made
    SOURCE_INFO firstSource;     ///< where the error arose
    ERRLOG_DATA * next;          ///< older record on the thread's pending chain
    SErrLogEntry * entries;      ///< behind the text area
    std::uint64_t textCapacity;
    std::uint64_t textLength;

    static constexpr std::uint32_t EntryStep = 8;

    /// An empty record of the origin `line`; null without memory.
    static ERRLOG_DATA * New(unsigned int line) noexcept;
    static void Free(ERRLOG_DATA * data) noexcept;
    /// Frees the record and all older ones.
    static void FreeChain(ERRLOG_DATA * newest) noexcept;

    /// Makes room for `extraText` more bytes of text, and for `extraEntries` more places. The record may move. False
    /// when memory can't be had: all is as it was.
    static bool Grow(ERRLOG_DATA *& data, std::size_t extraText, std::uint32_t extraEntries) noexcept;

    /// The text area: textCapacity bytes, messages with a NUL behind each, and a NUL at textLength.
    char * Text() noexcept { return reinterpret_cast<char *>(this + 1); }
    char const * Text() const noexcept { return reinterpret_cast<char const *>(this + 1); }

    /// Counts the origin as the first place.
    void CountOrigin() noexcept;
    /// Whether the pointers to places may still be followed: no module was unloaded since.
    bool SourcesAreValid() const noexcept;
    /// The message of a place, "" when it has none. index: below entryCount.
    char const * TextOf(unsigned int index) const noexcept;
};

} // namespace VLK::Exceptions

#endif
