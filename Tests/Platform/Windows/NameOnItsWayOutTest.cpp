#include "Platform/File.h"

#include <gtest/gtest.h>

#include "Platform/Windows/ReplacedImport.h"
#include "Support/TempDirectory.h"

// A file that is being deleted denies its name to everybody until it is gone, which a file system may take its time
// for.

namespace {

using Platform::CFileHandle;
using Platform::ErrorCode;
using Platform::FileHandle;
using Platform::FileMode;
using Platform::NoFile;
using Platform::Success;

using CreateFn = decltype(::CreateFileA);
using AttributesFn = decltype(::GetFileAttributesA);

CreateFn * g_create = nullptr;
int g_denials = 0;      ///< opens that are still denied
int g_opens = 0;        ///< that were tried
DWORD g_look = Success; ///< the error that a look at the name meets

HANDLE WINAPI CreateUnlessDenied(LPCSTR path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                                 DWORD disposition, DWORD flags, HANDLE like)
{
    ++g_opens;
    if (g_denials-- <= 0) return g_create(path, access, sharing, security, disposition, flags, like);
    ::SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}
DWORD WINAPI LookInVain(LPCSTR)
{
    ::SetLastError(g_look);
    return INVALID_FILE_ATTRIBUTES;
}

class NameOnItsWayOutTest : public testing::Test {
protected:
    /// What an open gets to which the name is denied so often, with this error for whoever looks at it meanwhile.
    ErrorCode Open(FileMode mode, int denials, DWORD look) const
    {
        const TReplacedImport<CreateFn> create("CreateFileA", &CreateUnlessDenied);
        const TReplacedImport<AttributesFn> attributes("GetFileAttributesA", &LookInVain);
        g_create = create.System();
        g_denials = denials;
        g_opens = 0;
        g_look = look;
        FileHandle handle = NoFile;
        const ErrorCode error = Platform::OpenFile(handle, m_directory.File("a"), mode);
        const CFileHandle owner(handle);
        return error;
    }

private:
    const CTempDirectory m_directory;
};

constexpr int Ever = 1 << 30;

} // namespace

TEST_F(NameOnItsWayOutTest, ANewFileIsMadeAsSoonAsTheNameIsFree)
{
    EXPECT_EQ(Success, Open(FileMode::CreateExclusive, 1, ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(2, g_opens);
}

TEST_F(NameOnItsWayOutTest, ToWhoWantsANewFileATakenNameIsThatAtOnce)
{
    EXPECT_EQ(Platform::ErrorAlreadyExists(), Open(FileMode::CreateExclusive, Ever, ERROR_ACCESS_DENIED));
    EXPECT_EQ(1, g_opens);
}

TEST_F(NameOnItsWayOutTest, ToWhoIsDeniedAFreeNameForGoodItIsDenied)
{
    EXPECT_EQ(Platform::ErrorAccessDenied(), Open(FileMode::CreateExclusive, Ever, ERROR_FILE_NOT_FOUND));
    EXPECT_GT(g_opens, 1);
}
