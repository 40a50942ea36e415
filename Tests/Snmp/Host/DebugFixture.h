#ifndef TESTS_SNMP_HOST_DEBUG_FIXTURE_H
#define TESTS_SNMP_HOST_DEBUG_FIXTURE_H

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "DebugFakes.h"
#include "Snmp/Host/Debug.h"
#include "Support/RegistryFixture.h"
#include "Support/TempDirectory.h"

/// A text as it stands in a wide file, without the mark at its start.
inline std::string Wide(std::string const & ascii)
{
    std::string bytes;
    for (const char c : ascii)
        bytes += {c, '\0'};
    return bytes;
}

/// The trace of an application with a registry and a folder of its own.
class DebugTest : public testing::Test {
protected:
    DebugTest() { DebugFakes::SetLocalTime({2024, 3, 9, 7, 5, 4, 12}); }
    ~DebugTest() override
    {
        Configure("\"FileDebugLevel\"=dword:0\n"); // the levels of a test must not outlive it
        DebugFakes::AllowConsole(true);
    }

    /// The values of the application, one line each in the registry's form; dynamicUpdate in seconds.
    void WriteRegistry(std::string const & values, unsigned dynamicUpdate = 0)
    {
        m_registry.Write("[HKLM\\SOFTWARE\\Debug]\n\"DynamicUpdate\"=dword:" + std::to_string(dynamicUpdate) +
                         "\n[HKLM\\SOFTWARE\\Debug\\" + m_app + "]\n" + values);
    }
    void Configure(std::string const & values, unsigned dynamicUpdate = 0)
    {
        WriteRegistry(values, dynamicUpdate);
        CDebug::Init(m_app.c_str(), /*writeBanner=*/false);
        DebugFakes::ClearOutputs();
    }
    std::string File(char const * level, std::string const & more = "")
    {
        return std::string("\"FileDebugLevel\"=dword:") + level + '\n' + TraceFile(Path()) + more;
    }
    static std::string TraceFile(std::string const & path)
    {
        return "\"TraceFile\"=" + CRegistryFixture::Quoted(path) + '\n';
    }
    std::string Path() const { return m_directory.File("trace.log"); }
    std::string Trace() const { return m_directory.Read("trace.log"); }
    /// A file that makes all further output narrow; what is traced stands behind its first byte.
    void StartNarrow() const { m_directory.Write("trace.log", "#"); }
    static std::vector<std::string> Lines() { return DebugFakes::DebuggerLines(); }

    std::string m_app = "TESTAPP";
    CTempDirectory m_directory;
    CRegistryFixture m_registry;
};

#endif
