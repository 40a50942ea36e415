#include "Tests/Snmp/Host/DebugFixture.h"

// A set of single bytes has a character for each of them; UTF-8 has not.
TEST_F(DebugTest, AWideRunThatIsNoTextIsReplaced)
{
    Configure(File("1"));
    CDebug::Trace(1, "a\xFF\nb");
    EXPECT_EQ("\xFF\xFE" + Wide("### MBCS-to-UNICODE conversion failed ###\n\r\nb"), Trace());
}
