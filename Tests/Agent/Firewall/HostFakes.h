#ifndef TESTS_AGENT_FIREWALL_HOST_FAKES_H
#define TESTS_AGENT_FIREWALL_HOST_FAKES_H

#include "Platform/Host.h"

/// The host as a test wants it. A sleep is noted by the recorder and takes no time.
struct SHostFakes {
    bool hasManagedFirewall = true;
    Platform::SOsVersion version{10, 0, 19045};
    Platform::ErrorCode versionError = Platform::Success;
};

extern SHostFakes g_hostFakes;

#endif
