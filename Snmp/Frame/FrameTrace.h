#ifndef SNMP_FRAME_FRAME_TRACE_H
#define SNMP_FRAME_FRAME_TRACE_H

#include "Snmp/Frame/Globals.h"
#include "Snmp/Host/Debug.h"

/// Trace sites of the frame. They are macros so that a site that is switched off evaluates no argument.

/// A complete text, newlines included.
#define PLAIN_TRACE(level, ...)                                                                                        \
    do {                                                                                                               \
        if (CDebug::Enabled()) CDebug::Trace(level, __VA_ARGS__);                                                      \
    } while (false)

/// A line of the frame: the module name, padded, then the text, a string literal.
#define FRAME_TRACE(level, text, ...) PLAIN_TRACE(level, "\n%-20s: " text, g_moduleName __VA_OPT__(, ) __VA_ARGS__)

#define FRAME_HASH_LINE_75 "###########################################################################"
#define FRAME_HASH_LINE_78 FRAME_HASH_LINE_75 "###"

/// What a catch-all says: a text between two lines of hash signs.
#define EXCEPTION_TRACE(hashLine, ...)                                                                                 \
    do {                                                                                                               \
        PLAIN_TRACE(1, "\n\n" hashLine);                                                                               \
        PLAIN_TRACE(1, __VA_ARGS__);                                                                                   \
        PLAIN_TRACE(1, "\n" hashLine);                                                                                 \
    } while (false)

#endif
