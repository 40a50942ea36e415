#ifndef TESTS_AGENT_SUPPORT_ESTATE_H
#define TESTS_AGENT_SUPPORT_ESTATE_H

#include <map>
#include <string>
#include <vector>

#include "Tests/Agent/Support/RawPeer.h"

/// What the agent shows, as a manager sees it: OID (below the root), object name, type and value as text.
struct SShownObject {
    std::string oid;
    std::string name;
    unsigned int type;
    std::string value;

    bool operator==(SShownObject const &) const = default;
};
void PrintTo(SShownObject const & object, std::ostream * out);

/// The answer of a core service to request `number`, 1 to 9, without the frames around it. Every field has a value that
/// tells it from all others, and another one for each `variant`. Every record ends in a frame of one byte.
Wire::CBytes AnswerOf(unsigned int number, unsigned int variant);
/// What the agent shows after that answer, in the order of a walk; without the progress object.
std::vector<SShownObject> ShownAfter(unsigned int number, unsigned int variant);

/// Where that is shown: below the root, with a dot at the end.
char const * RootOf(unsigned int number);

/// The requests whose answers are shown, 1 to 8, with all their flags, and with that of the events.
inline constexpr unsigned int kShownRequests = 8;
inline constexpr std::uint64_t kAllShown = 0x1FE;
inline constexpr std::uint64_t kAllFlags = 0x3FE;

/// Tells the agent that events are pending, and gives it the mask.
bool Flag(CRawConnection & agent, std::uint64_t mask);
/// Serves one data request: expects its frames and answers with `answer` behind the peer's MIB version.
bool Serve(CRawConnection & agent, unsigned int number, Wire::CBytes const & answer);
/// One event as the event request delivers it.
Wire::CBytes EventBytes(int trapId, std::vector<std::string> const & params, std::string const & server);

#endif
