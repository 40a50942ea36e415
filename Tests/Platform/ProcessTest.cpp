#include "Platform/Process.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Platform/Module.h"
#include "Support/Deadline.h"
#include "Support/TempDirectory.h"

using namespace Platform;

namespace {

/// A child that does nothing until it is told to go.
class CChild {
public:
    explicit CChild(char const * program) : m_id(::fork())
    {
        if (m_id != 0) return;
        ::execl(program, program, "600", nullptr);
        ::_exit(1);
    }
    ~CChild() { End(); }
    void End()
    {
        if (m_id <= 0) return;
        ::kill(m_id, SIGKILL);
        ::waitpid(m_id, nullptr, 0);
        m_id = 0;
    }
    std::uint32_t Id() const { return static_cast<std::uint32_t>(m_id); }

private:
    pid_t m_id;
};

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

} // namespace

TEST(ProcessTest, ListsThisProcessAndKeepsToItsRoom)
{
    std::vector<std::uint32_t> ids(100000);
    std::uint32_t count = 0;
    ASSERT_EQ(Success, EnumProcesses(ids.data(), static_cast<std::uint32_t>(ids.size()), count));
    EXPECT_NE(ids.begin() + count, std::find(ids.begin(), ids.begin() + count, CurrentProcessId()));
    std::uint32_t guarded[3] = {7, 7, 7};
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
    EXPECT_EQ(path.substr(path.rfind('/') + 1), NameOf(process.Get()));
}

TEST(ProcessTest, AProgramWhoseFileIsGoneKeepsItsName)
{
    const CTempDirectory directory;
    const std::string program = directory.File("sleeper (deleted)");
    std::filesystem::copy_file(std::filesystem::canonical("/bin/sleep"), program);
    const CChild child(program.c_str());
    const CProcessHandle process = Open(child.Id());
    ASSERT_TRUE(HoldsWithin(kDeadline, [&] { return NameOf(process.Get()) == "sleeper (deleted)"; }));
    std::filesystem::remove(program);
    EXPECT_EQ("sleeper (deleted)", NameOf(process.Get()));
}

TEST(ProcessTest, AnEndedProcessHasNoName)
{
    CChild child("/bin/sleep");
    const CProcessHandle process = Open(child.Id());
    const std::uint32_t id = child.Id();
    child.End();
    std::string name = "kept";
    EXPECT_NE(Success, ProcessName(process.Get(), name));
    EXPECT_NE(Success, HasModules(process.Get()));
    EXPECT_EQ("kept", name);
    ProcessHandle handle = nullptr;
    EXPECT_EQ(ErrorNotFound(), OpenProcess(handle, id));
    EXPECT_EQ(nullptr, handle);
}

TEST(ProcessTest, TellsMemoryHandlesAndProcessor)
{
    std::uint64_t privateBytes = 0;
    std::uint64_t workingSet = 0;
    ASSERT_TRUE(MemoryUse(privateBytes, workingSet));
    EXPECT_GT(privateBytes, 4096u);
    EXPECT_GT(workingSet, 4096u);
    std::uint32_t before = 0;
    std::uint32_t after = 0;
    ASSERT_TRUE(HandleCount(before));
    const int descriptor = ::open("/dev/null", O_RDONLY);
    ASSERT_TRUE(HandleCount(after));
    ::close(descriptor);
    EXPECT_EQ(before + 1, after);
    std::uint32_t processor = 0xFFFFFFFF;
    ASSERT_TRUE(CurrentProcessor(processor));
    EXPECT_LT(processor, static_cast<std::uint32_t>(::sysconf(_SC_NPROCESSORS_CONF)));
}
