#ifndef PLATFORM_NATIVE_SOCK_ADDR_H
#define PLATFORM_NATIVE_SOCK_ADDR_H

#include <winsock2.h>
#include <ws2tcpip.h>

// The system's headers turn these words into others, which end in A or W, also where they are names of ours. Whoever
// means the system's function writes the name with its letter.
#undef DeleteFile
#undef LoadLibrary
#undef MoveFile
#undef OpenService
#undef QueryServiceConfig
#undef ReplaceFile
#undef WriteConsole

#endif
