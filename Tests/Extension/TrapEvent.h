#ifndef TESTS_EXTENSION_TRAP_EVENT_H
#define TESTS_EXTENSION_TRAP_EVENT_H

#include "Platform/SnmpExtension.h"

/// Waits for the event that an extension handed out, as the system's own means do, and takes its signal. ms 0 only
/// looks. False when no signal came in time.
bool AwaitAndTake(SnmpHandle event, int ms);

#endif
