#ifndef TESTS_SERVICE_FAKE_FUNCTIONS_H
#define TESTS_SERVICE_FAKE_FUNCTIONS_H

#include <functional>
#include <vector>

#include "Arcs.h"
#include "EntryPoints.h"

/// The functions of an extension, played by what the test puts in. One test at a time.
struct SFakeFunctions {
    using Query = std::function<int(std::uint8_t, RFC1157VarBindList &, std::uint32_t &, std::uint32_t &)>;

    explicit SFakeFunctions(Query answer);
    ~SFakeFunctions();

    Service::SEntryPoints functions;
    Query query;
    std::vector<std::vector<Service::CArcs>> asked; ///< the names of each call
};

/// Puts a name or an INTEGER into a binding as an extension does.
void FakeName(RFC1157VarBind & binding, Service::CArcs const & name);
void FakeInteger(RFC1157VarBind & binding, std::int32_t value);
Service::CArcs NameOf(RFC1157VarBind const & binding);

#endif
