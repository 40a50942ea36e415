#include "LocalTimeText.h"

#include "Platform/Clock.h"
#include "VLK/FormatStream.h"

namespace VLK::Internals {

namespace {

constexpr char const * Days[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr char const * Months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

/// 0 for Sunday; the year begins with March for this purpose.
unsigned int WeekDay(Platform::SLocalTime const & time) noexcept
{
    unsigned int const year = time.month < 3 ? time.year - 1 : time.year;
    unsigned int const month = time.month < 3 ? time.month + 10 : time.month - 2;
    return (time.day + (13 * month - 1) / 5 + year + year / 4 - year / 100 + year / 400) % 7;
}

} // namespace

Strings::TString<32> LocalTimeText()
{
    Platform::SLocalTime const now = Platform::LocalTime();
    Strings::TString<32> text;
    text.Format("%s %s %+ 2d %02d:%02d:%02d %d") << Days[WeekDay(now)] << Months[(now.month + 11) % 12] << now.day
                                                 << now.hour << now.minute << now.second << now.year;
    return text;
}

} // namespace VLK::Internals
