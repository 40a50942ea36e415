#include "Platform/Process.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include "Platform/File.h"
#include "Support/ChildProcess.h"
#include "Support/Deadline.h"
#include "Support/TempDirectory.h"

using namespace Platform;

namespace {

std::string NameOf(ProcessHandle process)
{
    std::string name;
    return ProcessName(process, name) == Success ? name : std::string();
}

} // namespace

TEST(ProcessEndsTest, AProgramWhoseFileIsGoneKeepsItsName)
{
    const CTempDirectory directory;
    const std::string program = directory.File("sleeper (deleted)");
    std::filesystem::copy_file(std::filesystem::canonical("/bin/sleep"), program);
    const CChildProcess child(program, {"600"});
    ProcessHandle handle = nullptr;
    ASSERT_EQ(Success, OpenProcess(handle, child.Id()));
    const CProcessHandle process(handle);
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return NameOf(process.Get()) == "sleeper (deleted)"; }));
    std::filesystem::remove(program);
    EXPECT_EQ("sleeper (deleted)", NameOf(process.Get()));
}

TEST(ProcessEndsTest, AnEndedProcessIsNotFound)
{
    CChildProcess child("/bin/sleep", {"600"});
    const std::uint32_t id = child.Id();
    child.Kill();
    ProcessHandle handle = nullptr;
    EXPECT_EQ(ErrorNotFound(), OpenProcess(handle, id));
}

TEST(ProcessUseTest, PrivateMemoryIsTold)
{
    std::uint64_t privateBytes = 0;
    std::uint64_t workingSet = 0;
    ASSERT_TRUE(MemoryUse(privateBytes, workingSet));
    EXPECT_GT(privateBytes, 4096u);
}

TEST(ProcessUseTest, AnOpenFileIsOneHandle)
{
    std::uint32_t before = 0;
    std::uint32_t after = 0;
    FileHandle file = NoFile;
    ASSERT_TRUE(HandleCount(before));
    ASSERT_EQ(Success, OpenFile(file, "/bin/sleep", FileMode::ReadExisting));
    ASSERT_TRUE(HandleCount(after));
    EXPECT_EQ(before + 1, after);
    CloseFile(file);
    ASSERT_TRUE(HandleCount(after));
    EXPECT_EQ(before, after);
}

TEST(ProcessUseTest, TheProcessorIsOneOfTheConfiguredOnes)
{
    std::uint32_t processor = 0xFFFFFFFF;
    ASSERT_TRUE(CurrentProcessor(processor));
    EXPECT_LT(processor, static_cast<std::uint32_t>(::sysconf(_SC_NPROCESSORS_CONF)));
}
