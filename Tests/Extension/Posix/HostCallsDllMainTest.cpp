// Here the host calls DllMain, and may do so again while the library stays loaded.

#include <gmock/gmock.h>

#include <cstdio>
#include <memory>
#include <set>
#include <sstream>
#include <thread>

#include "Support/ProcessThreads.h"
#include "Tests/Extension/ExtensionFixture.h"

TEST_F(ExtensionTest, ExportsExactlyTheFiveFunctionsAndDllMain)
{
    const std::string command = std::string(NM_PROGRAM) + " -D --defined-only '" + kFile + "'";
    const std::unique_ptr<FILE, int (*)(FILE *)> output(::popen(command.c_str(), "r"), &::pclose);
    ASSERT_TRUE(output);
    std::set<std::string> names;
    char line[1024];
    while (std::fgets(line, sizeof line, output.get()) != nullptr) {
        std::istringstream words(line);
        std::string address, kind, name;
        words >> address >> kind >> name;
        names.insert(name);
    }
    EXPECT_EQ((std::set<std::string>{"DllMain", "SnmpExtensionClose", "SnmpExtensionInit", "SnmpExtensionInitEx",
                                     "SnmpExtensionQuery", "SnmpExtensionTrap"}),
              names);
}

TEST_F(ExtensionTest, AttachingAgainWithoutUnloadingStartsAndClosesAnew)
{
    CLoadedExtension extension(kFile);
    std::thread([] {}).join(); // what watches a program may start a thread of its own with the first one
    for (int round = 0; round < 3; ++round) {
        const std::size_t threads = ProcessThreads();
        CSession session(extension);
        ASSERT_TRUE(session.IsReady()) << round;
        EXPECT_EQ("7", session.Get(kA + ".2.2.0").value);
        EXPECT_EQ(0u, session.SetNumber(kA + ".2.2.0", 8).status);
        session.Close();
        EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return ProcessThreads() == threads; })) << round;
    }
}
