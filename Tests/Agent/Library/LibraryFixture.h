#ifndef TESTS_AGENT_LIBRARY_LIBRARY_FIXTURE_H
#define TESTS_AGENT_LIBRARY_LIBRARY_FIXTURE_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "Platform/Process.h"
#include "Tests/Agent/Support/Estate.h"
#include "Tests/Agent/Support/RawPeer.h"
#include "Tests/Extension/LoadedExtension.h"
#include "Tests/Support/Deadline.h"
#include "Tests/Support/HostFixture.h"
#include "Tests/Support/RegistryFixture.h"

/// What tests of KXRA_MIB as a host loads it need again and again.

inline constexpr char kRoot[] = "1.3.6.1.4.1.88417.2.49";

inline std::uint32_t Handles()
{
    std::uint32_t count = 0;
    EXPECT_TRUE(Platform::HandleCount(count));
    return count;
}

/// A host with an installed product and a core service that the test plays.
class LibraryTest : public testing::Test {
protected:
    LibraryTest()
        : folder(std::filesystem::temp_directory_path() /
                 ("kxra_library_" + std::to_string(::rand()) + "_" + std::to_string(Platform::CurrentProcessId())))
    {
        std::filesystem::create_directories(folder / "bin");
        registry.Write("[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norvane\\Kestrix RAID]\n\"Path\"=" +
                       CRegistryFixture::Quoted(folder.string()) + "\n");
        WriteFile("bin/orDPatch.ini", "[orDPatch]\nPort=" + std::to_string(peer.Port()) + "\n");
    }
    ~LibraryTest() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    void WriteFile(std::string const & name, std::string const & text)
    {
        std::ofstream(folder / name, std::ios::binary) << text;
    }

    std::filesystem::path const folder;
    CRegistryFixture registry;
    CHostFixture host;
    CRawPeer peer;
};

#endif
