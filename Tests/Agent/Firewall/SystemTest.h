#ifndef TESTS_AGENT_FIREWALL_SYSTEM_TEST_H
#define TESTS_AGENT_FIREWALL_SYSTEM_TEST_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Agent/Src/ORBA_MIB.h"
#include "Tests/Fake/Debug.h"

/// Agents with the firewall of the host that runs the test.
class CFirewallSystemTest : public testing::Test {
protected:
    CFirewallSystemTest()
    {
        Fake::ClearTrace();
        Fake::EnableTrace(true);
    }
    ~CFirewallSystemTest() override
    {
        Fake::EnableTrace(false);
        Fake::ClearTrace();
    }

    /// What was traced about the hardening.
    static std::vector<std::string> Traced()
    {
        std::vector<std::string> texts;
        for (Fake::STraceLine const & line : Fake::TraceLines())
            if (line.text.find("ManageWSH") != std::string::npos || line.text.find("Hardening") != std::string::npos)
                texts.push_back(line.text);
        return texts;
    }
};

#endif
