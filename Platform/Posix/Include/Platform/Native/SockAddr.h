#ifndef PLATFORM_NATIVE_SOCK_ADDR_H
#define PLATFORM_NATIVE_SOCK_ADDR_H

#include <netinet/in.h>
#include <sys/socket.h>

#endif
