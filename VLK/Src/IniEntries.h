#ifndef VLK_SRC_INI_ENTRIES_H
#define VLK_SRC_INI_ENTRIES_H

#include <cstddef>

namespace VLK::Internals {

/// A key. Its text is name, NUL, values separated by LF, and, if there is a comment, the comment with a tab in front of
/// each of its lines; then NUL.
struct INI_KEY {
    INI_KEY * next;
    char * text;
    std::size_t length; ///< of the name
    std::size_t count;  ///< values: 0 none, 1 single, more: a list
};

/// The keys of a section in file order, and its comment (null, or a tab in front of each line).
struct INI_KEYLIST {
    INI_KEY * head;
    INI_KEY * tail;
    char * comment;
    std::size_t count;
};

struct INI_SECTION {
    INI_SECTION * next;
    char * text; ///< name, NUL
    std::size_t length;
    INI_KEYLIST * keys;
};

/// All three come from the same blocks.
union INI_ENTRY {
    INI_ENTRY * nextFree;
    INI_KEY key;
    INI_KEYLIST list;
    INI_SECTION section;
};

} // namespace VLK::Internals

#endif
