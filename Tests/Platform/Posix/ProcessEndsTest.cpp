#include "Platform/Process.h"

#include <gtest/gtest.h>

#include <unistd.h>

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

TEST(ProcessEndsTest, TheProcessorIsOneOfTheConfiguredOnes)
{
    std::uint32_t processor = 0xFFFFFFFF;
    ASSERT_TRUE(CurrentProcessor(processor));
    EXPECT_LT(processor, static_cast<std::uint32_t>(::sysconf(_SC_NPROCESSORS_CONF)));
}
