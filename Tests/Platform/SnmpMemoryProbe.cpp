#include <cstring>

#include "Platform/SnmpUtil.h"

// A program of its own, since the test of the utility functions puts its own memory in their place.
int main()
{
    auto * block = static_cast<char *>(SnmpUtilMemAlloc(4));
    if (block == nullptr) return 1;
    std::memcpy(block, "abc", 4);
    block = static_cast<char *>(SnmpUtilMemReAlloc(block, 1000));
    if (block == nullptr || std::strcmp(block, "abc") != 0) return 2;
    void * const kept = SnmpUtilMemReAlloc(block, 0); // still a block, to be freed
    if (kept == nullptr) return 3;
    SnmpUtilMemFree(kept);
    void * const empty = SnmpUtilMemAlloc(0);
    if (empty == nullptr) return 4;
    SnmpUtilMemFree(empty);
    SnmpUtilMemFree(nullptr);
    return 0;
}
