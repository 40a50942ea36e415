#include "Module.h"

#include <VLK/Trace.h>
#include <boost/filesystem/path.hpp>
#include <fstream>

#include "Uses.h"

using namespace VLK;

void UseTrace(std::string const & directory)
{
    int evaluated = 0;
    VLK_TRACE_STREAM(TraceGeneral, "%d") << ++evaluated;
    REQUIRE(evaluated == 0); // no trace yet: the site costs nothing

    std::string const path = directory + "/trace.ini";
    std::ofstream(path) << "[Trace]\nCONSUMER = 0x1\n";
    Trace::CTrace trace;
    REQUIRE(trace.Open(boost::filesystem::path(path), "Trace") == URET_OK);
    REQUIRE(g_consumerModule.GetTrcPoints() == TraceGeneral);
    VLK_TRACE_STREAM(TraceGeneral, "%d") << ++evaluated;
    VLK_TRACE(TraceEvents, "%d", ++evaluated);
    REQUIRE(evaluated == 1);

    Internals::CTraceStreamBuffer record(TraceGeneral, g_consumerModule, "TraceUse.cpp", 1);
    record.Format("%s is %d mK warm\n") << "intake" << 293150;
    REQUIRE(std::string(record.GetRecord().C_Str()).find("intake is 293150 mK warm") != std::string::npos);
    trace.Close();
    REQUIRE(g_consumerModule.GetTrcPoints() == 0);
}
