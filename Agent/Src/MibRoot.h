#ifndef AGENT_MIB_ROOT_H
#define AGENT_MIB_ROOT_H

/// Root of everything that this agent serves. A macro, so that longer OIDs are made by joining literals.
#define KXRA_MIB_ROOT "1.3.6.1.4.1.88417.2.49"

#endif
