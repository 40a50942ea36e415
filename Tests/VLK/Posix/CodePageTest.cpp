#include "Foundation.h"
#include "Platform/Text.h"

using namespace VLK;
using namespace VLK::Strings;

namespace {

using CodePageTest = CFoundationTest;

TEST_F(CodePageTest, BufferSizeGoesByTheCodePage)
{
    EXPECT_EQ(3u, CSubStringRef("a\xE4").UTF8BufferSize());
    Platform::SetAnsiCodePage(932);
    EXPECT_EQ(4u, CSubStringRef("a\xB1").UTF8BufferSize());
    EXPECT_EQ(4u, CSubStringRef("a\x83\x41").UTF8BufferSize());
    EXPECT_EQ(4u, CSubStringRef("a\x83").UTF8BufferSize());
    Platform::SetAnsiCodePage(1252);
}

} // namespace
