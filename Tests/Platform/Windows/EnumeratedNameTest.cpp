#include "Platform/Registry.h"

#include <gtest/gtest.h>

#include <cstring>

#include "Platform/Windows/ReplacedImport.h"

namespace {

constexpr char Name[] = "a name that needs its room";
constexpr DWORD DataSize = 1000;

bool g_tellsSize = true;
int g_calls = 0;

/// A value with more data than a first call has room for. The system may say then that the name has no length, and cuts
/// off what doesn't fit into the next call's.
LSTATUS WINAPI EnumLargeValue(HKEY, DWORD, LPSTR name, LPDWORD nameSize, LPDWORD, LPDWORD type, LPBYTE data,
                              LPDWORD dataSize)
{
    const DWORD room = *dataSize;
    if (++g_calls > 10) return ERROR_OUTOFMEMORY; // or it would go on for ever
    if (g_tellsSize || room >= DataSize) *dataSize = DataSize;
    const DWORD nameRoom = *nameSize;
    *nameSize = 0;
    if (room < DataSize) return ERROR_MORE_DATA;
    if (nameRoom < sizeof Name) return ERROR_INSUFFICIENT_BUFFER;
    *type = REG_BINARY;
    std::memset(data, 'x', DataSize);
    std::memcpy(name, Name, sizeof Name);
    *nameSize = sizeof Name - 1;
    return ERROR_SUCCESS;
}

/// Whether the system says how much room the data need, which it doesn't for every kind of key.
class EnumeratedNameTest : public testing::TestWithParam<bool> {};

} // namespace

TEST_P(EnumeratedNameTest, ANameHasItsWholeRoomAgainWhenItsDataDidNotFit)
{
    Platform::CRegistryKey key;
    ASSERT_EQ(Platform::Success, key.Open("SOFTWARE", Platform::RegistryView::Default, Platform::RegistryAccess::Read));
    const TReplacedImport<decltype(::RegEnumValueA)> large("RegEnumValueA", &EnumLargeValue);
    g_tellsSize = GetParam();
    g_calls = 0;
    std::string name;
    Platform::SRegistryValue value;
    ASSERT_EQ(Platform::Success, key.EnumValue(0, name, value));
    EXPECT_EQ(Name, name);
    EXPECT_EQ(DataSize, value.data.size());
}

INSTANTIATE_TEST_SUITE_P(Systems, EnumeratedNameTest, testing::Bool());
