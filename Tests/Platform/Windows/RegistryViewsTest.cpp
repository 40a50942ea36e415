#include "Platform/Registry.h"

#include <gtest/gtest.h>

#include "Platform/RegistryEditor.h"
#include "Support/Windows/SystemHandle.h"

#include <sddl.h>

using namespace Platform;

namespace {

class RegistryViewsTest : public testing::Test {
protected:
    std::string Text(RegistryView view) const
    {
        CRegistryKey key;
        SRegistryValue value;
        if (key.Open(m_editor.Key(), view, RegistryAccess::Read) != Success) return "<no key>";
        return key.Query("a", value) == Success ? value.data : "<no value>";
    }
    /// What the key lets everyone do, as a descriptor in the security language.
    void Permit(char const * descriptor) const
    {
        HKEY raw = nullptr;
        ASSERT_EQ(ERROR_SUCCESS,
                  ::RegOpenKeyExA(HKEY_LOCAL_MACHINE, m_editor.Key().c_str(), 0, READ_CONTROL | WRITE_DAC, &raw));
        const CNativeKey key(raw);
        PSECURITY_DESCRIPTOR security = nullptr;
        ASSERT_NE(FALSE, ::ConvertStringSecurityDescriptorToSecurityDescriptorA(descriptor, SDDL_REVISION_1, &security,
                                                                                nullptr));
        EXPECT_EQ(ERROR_SUCCESS, ::RegSetKeySecurity(raw, DACL_SECURITY_INFORMATION, security));
        ::LocalFree(security);
    }
    ErrorCode Open(RegistryAccess access) const
    {
        CRegistryKey key;
        return key.Open(m_editor.Key(), RegistryView::Default, access);
    }

    CRegistryEditor m_editor;
};

/// The same key as programs of 32 bits see it.
std::string Of32Bits(std::string const & key)
{
    return "SOFTWARE\\Wow6432Node\\" + key.substr(std::string("SOFTWARE\\").size());
}

} // namespace

TEST_F(RegistryViewsTest, BothViewsHaveTheirOwnValuesAndTheDefaultIsThatOf64Bits)
{
    m_editor.Import("[HKEY_LOCAL_MACHINE\\" + m_editor.Key() + "]\r\n\"a\"=\"64\"\r\n");
    EXPECT_EQ("64", Text(RegistryView::Default));
    EXPECT_EQ("64", Text(RegistryView::View64));
    EXPECT_EQ("<no key>", Text(RegistryView::View32));
    m_editor.Import("[HKEY_LOCAL_MACHINE\\" + Of32Bits(m_editor.Key()) + "]\r\n\"a\"=\"32\"\r\n");
    EXPECT_EQ("64", Text(RegistryView::Default));
    EXPECT_EQ("32", Text(RegistryView::View32));
    m_editor.Import("[-HKEY_LOCAL_MACHINE\\" + Of32Bits(m_editor.Key()) + "]\r\n");
}

TEST_F(RegistryViewsTest, FullAccessIsDeniedWhereReadingAloneIsPermitted)
{
    m_editor.Import("[HKEY_LOCAL_MACHINE\\" + m_editor.Key() + "]\r\n\"a\"=\"1\"\r\n");
    EXPECT_EQ(Success, Open(RegistryAccess::Full));
    Permit("D:P(A;;KRSDWDWO;;;WD)");
    EXPECT_EQ(ErrorAccessDenied(), Open(RegistryAccess::Full));
    EXPECT_EQ(Success, Open(RegistryAccess::Read));
    EXPECT_EQ("1", Text(RegistryView::Default));
    Permit("D:P(A;;WDSD;;;WD)");
    EXPECT_EQ(ErrorAccessDenied(), Open(RegistryAccess::Read));
    Permit("D:P(A;;KA;;;WD)");
}

TEST_F(RegistryViewsTest, AnOpenKeyShowsEachChangeAtOnce)
{
    m_editor.Import("[HKEY_LOCAL_MACHINE\\" + m_editor.Key() + "]\r\n\"a\"=\"1\"\r\n");
    CRegistryKey key;
    SRegistryValue value;
    ASSERT_EQ(Success, key.Open(m_editor.Key(), RegistryView::Default, RegistryAccess::Read));
    m_editor.Import("[HKEY_LOCAL_MACHINE\\" + m_editor.Key() + "]\r\n\"a\"=\"2\"\r\n");
    ASSERT_EQ(Success, key.Query("a", value));
    EXPECT_EQ("2", value.data);
    m_editor.Import("[-HKEY_LOCAL_MACHINE\\" + m_editor.Key() + "]\r\n");
    EXPECT_NE(Success, key.Query("a", value));
    EXPECT_EQ("2", value.data) << "a failure leaves it as it was";
}
