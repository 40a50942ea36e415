#include "Module.h"

#include <VLK/ErrorLog.h>
#include <VLK/Exceptions.h>
#include <VLK/FormatStream.h>
#include <VLK/Threads.h>
#include <VLK/ThrowState.h>
#include <cstdio>
#include <string_view>

#include "Uses.h"

using namespace VLK;
using namespace VLK::Exceptions;

namespace {

/// A function of this module, made like those of the foundation.
unsigned int Measure(int milliKelvin)
{
    CThrowState state;
    try {
        if (milliKelvin > 400000) VLK_RAISE_TEXT(state, kOutOfBand, " measured %d mK", milliKelvin);
        return URET_OK;
    }
    VLK_THROW_NEXT(state)
}

unsigned int MeasureAll()
{
    CThrowState state;
    try {
        Measure(293150);
        return Measure(500000);
    } catch (...) {
        VLK_CONTINUE(state, log);
        log.Format("sensor %s") << "outlet";
        return log.tryThrow();
    }
}

/// The record with its stack of places, as an administrator gets it.
void PrintRecord(CErrorLog const & record)
{
    Output_Streams::CChrStreamBuffer text(/*step=*/256);
    text.Format("%S") << record;
    std::string_view const printed = text.GetBuffer();
    std::printf("%s\n", text.GetBuffer());
    for (char const * part : {"Temperature out of band", "CONSUMER::ErrorUse.cpp@", "sensor outlet"})
        REQUIRE(printed.find(part) != std::string_view::npos);
}

} // namespace

void UseErrorRecord()
{
    CThrowState state;
    CErrorLog record;
    try {
        MeasureAll();
        REQUIRE(!"MeasureAll raises");
    } catch (...) {
        VLK_CONTINUE(state, log);
        log >> record;
    }
    REQUIRE(record.GetError() == kOutOfBand);
    REQUIRE(record.GetLogCount() == 4);
    PrintRecord(record);

    // The same without exceptions.
    CThrowState quiet;
    quiet.DisableThrow();
    REQUIRE(MeasureAll() == URET_Error);
    REQUIRE(Threading::CCurrentThread().GetErrorLog().GetError() == kOutOfBand);
}
