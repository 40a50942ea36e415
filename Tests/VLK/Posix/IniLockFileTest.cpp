// What POSIX alone lets others see of an INI file, or do to it.

#include <filesystem>
#include <string>

#include "Foundation.h"
#include "Support/TempDirectory.h"
#include "VLK/IniFile.h"

using namespace VLK;
using VLK::INI_Files::CIniFile;

namespace {

class IniLockFileTest : public CFoundationTest {
protected:
    std::string Name() const { return m_directory.File("test.ini"); }

    CTempDirectory m_directory;
};

TEST_F(IniLockFileTest, AFlushedFileIsTheOwnersAlone)
{
    CIniFile file;
    file.Create(Name());
    file["s"]["a"].SetValue(1);
    EXPECT_EQ(1u, file.Flush(0));
    EXPECT_EQ(std::filesystem::perms::owner_read | std::filesystem::perms::owner_write,
              std::filesystem::status(Name()).permissions());
}

TEST_F(IniLockFileTest, FlushWithoutSectionsIgnoresThatTheLockIsGone)
{
    CIniFile file;
    file.Create(Name());
    std::filesystem::remove(Name() + ".lck");
    EXPECT_EQ(1u, file.Flush(0));
}

} // namespace
