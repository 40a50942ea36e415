#include "Platform/Process.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Module.h"
#include "Support/ChildProcess.h"
#include "Support/Deadline.h"

using namespace Platform;

namespace {

constexpr char ChildProgram[] = KXRA_CHILD;

std::string NameOf(ProcessHandle process)
{
    std::string name;
    return ProcessName(process, name) == Success ? name : std::string();
}

CProcessHandle Open(std::uint32_t id)
{
    ProcessHandle handle = nullptr;
    EXPECT_EQ(Success, OpenProcess(handle, id));
    return CProcessHandle(handle);
}

std::vector<std::uint32_t> AllIds()
{
    std::vector<std::uint32_t> ids(100000);
    std::uint32_t count = 0;
    EXPECT_EQ(Success, EnumProcesses(ids.data(), static_cast<std::uint32_t>(ids.size()), count));
    ids.resize(count);
    return ids;
}

} // namespace

TEST(ProcessTest, ListsThisProcessAndOthersEachOnce)
{
    CChildProcess child(ChildProgram);
    ASSERT_EQ("running", child.ReadLine());
    const std::uint32_t id = child.Id();
    std::vector<std::uint32_t> ids = AllIds();
    EXPECT_EQ(1, std::count(ids.begin(), ids.end(), CurrentProcessId()));
    EXPECT_EQ(1, std::count(ids.begin(), ids.end(), id));
    EXPECT_NE(id, CurrentProcessId());
    EXPECT_EQ(0, child.End());
    ids = AllIds();
    EXPECT_EQ(0, std::count(ids.begin(), ids.end(), id));
}

TEST(ProcessTest, TheListKeepsToItsRoom)
{
    std::uint32_t guarded[3] = {7, 7, 7};
    std::uint32_t count = 9;
    ASSERT_EQ(Success, EnumProcesses(guarded, 1, count));
    EXPECT_EQ(1u, count);
    EXPECT_EQ(7u, guarded[1]);
    ASSERT_EQ(Success, EnumProcesses(guarded, 0, count));
    EXPECT_EQ(0u, count);
}

TEST(ProcessTest, NamesItsOwnProgram)
{
    const CProcessHandle process = Open(CurrentProcessId());
    EXPECT_EQ(Success, HasModules(process.Get()));
    std::string path;
    ASSERT_EQ(Success, ProgramPath(path));
    EXPECT_EQ(std::filesystem::path(path).filename().string(), NameOf(process.Get()));
}

TEST(ProcessTest, NamesTheProgramOfAnother)
{
    CChildProcess child(ChildProgram);
    ASSERT_EQ("running", child.ReadLine());
    const CProcessHandle process = Open(child.Id());
    EXPECT_EQ(Success, HasModules(process.Get()));
    EXPECT_EQ(std::filesystem::path(ChildProgram).filename().string(), NameOf(process.Get()));
}

TEST(ProcessTest, AnEndedProcessHasNoName)
{
    CChildProcess child(ChildProgram);
    ASSERT_EQ("running", child.ReadLine());
    CProcessHandle process = Open(child.Id());
    const std::uint32_t id = child.Id();
    child.Kill();
    std::string name = "kept";
    EXPECT_NE(Success, ProcessName(process.Get(), name));
    EXPECT_NE(Success, HasModules(process.Get()));
    EXPECT_EQ("kept", name);
    process.Reset();
    // The system may have handles of its own for a moment.
    EXPECT_TRUE(HoldsWithin(kDeadline, [&] {
        ProcessHandle handle = nullptr;
        const ErrorCode error = OpenProcess(handle, id);
        const CProcessHandle again(handle);
        return error != Success && !again;
    }));
}

TEST(ProcessTest, TellsMemoryHandlesAndProcessor)
{
    std::uint64_t privateBytes = 0;
    std::uint64_t workingSet = 0;
    ASSERT_TRUE(MemoryUse(privateBytes, workingSet));
    EXPECT_GT(workingSet, 4096u);
    std::uint32_t number = 0;
    EXPECT_TRUE(HandleCount(number));
    number = 0xFFFFFFFF;
    ASSERT_TRUE(CurrentProcessor(number));
    EXPECT_NE(0xFFFFFFFF, number);
}
