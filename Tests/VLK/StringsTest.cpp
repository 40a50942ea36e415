#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "Foundation.h"
#include "Platform/Text.h"
#include "VLK/FormatStream.h"
#include "VLK/Strings.h"

using namespace VLK;
using namespace VLK::Strings;

namespace {

class StringsTest : public CFoundationTest {};

constexpr std::size_t POSERR = CSubStringRef::POSERR;

std::string Text(CSubStringRef const & text)
{
    return std::string(text.View());
}

template <unsigned int N>
TString<N> Filled(std::size_t n)
{
    TString<N> text;
    text.Set('x', n);
    return text;
}

// Capacities

template <unsigned int N>
void ExpectInlineCapacity(std::size_t capacity)
{
    TString<N> text;
    EXPECT_EQ(capacity, text.Capacity());
    text.Set('x', capacity);
    EXPECT_EQ(capacity, text.Capacity());
    text += 'y';
    EXPECT_GT(text.Capacity(), capacity);
    EXPECT_EQ(std::string(capacity, 'x') + "y", Text(text));
}

TEST_F(StringsTest, InlineCapacityIsTheNumberAndSeven)
{
    EXPECT_EQ(7u, CStringVar().Capacity());
    ExpectInlineCapacity<32>(39);
    ExpectInlineCapacity<64>(71);
    ExpectInlineCapacity<128>(135);
    ExpectInlineCapacity<256>(263);
    ExpectInlineCapacity<512>(519);
    ExpectInlineCapacity<1024>(1031);
    ExpectInlineCapacity<2048>(2055);
}

TEST_F(StringsTest, TheFortiethCharacterMovesToTheHeapAndAnEmptiedTextComesBack)
{
    TString<32> text;
    for (int i = 0; i != 39; ++i)
        text += 'x';
    EXPECT_EQ(39u, text.Capacity());
    text += 'x';
    EXPECT_EQ(79u, text.Capacity());
    text = Misc::CNull();
    text = "short again";
    EXPECT_EQ(39u, text.Capacity());
    EXPECT_EQ("short again", Text(text));
}

struct SGrowth {
    char const * name;
    std::size_t length;
    std::size_t need;
    std::size_t capacity;
};

class StringGrowthTest : public CFoundationTest, public testing::WithParamInterface<SGrowth> {};

TEST_P(StringGrowthTest, GivesTheCapacity)
{
    CStringVar text;
    text.Set('a', GetParam().length);
    std::string const more(GetParam().need, 'b');
    text += more.c_str();
    EXPECT_EQ(GetParam().capacity, text.Capacity());
    EXPECT_EQ(std::string(GetParam().length, 'a') + more, Text(text));
}

INSTANTIATE_TEST_SUITE_P(Edges, StringGrowthTest,
                         testing::Values(SGrowth{"Fits", 3, 4, 7}, SGrowth{"Doubles", 7, 1, 15},
                                         SGrowth{"ByNeed", 7, 30, 47}, SGrowth{"EmptyByNeed", 0, 20, 31},
                                         SGrowth{"LastDoubling", 8191, 1, 16383}, SGrowth{"ByPages", 8192, 16, 16383}),
                         [](auto const & test) { return std::string(test.param.name); });

// States

TEST_F(StringsTest, ATerminatedTextIsTakenByReferenceAndASliceIsCopied)
{
    char const source[] = "source text";
    TString<32> const reference{CSubStringRef(source)};
    EXPECT_EQ(source, reference.data());
    EXPECT_EQ(0u, reference.Capacity());
    TString<32> const copy{CSubStringRef(source, 6)};
    EXPECT_NE(source, copy.data());
    EXPECT_EQ(39u, copy.Capacity());
    EXPECT_EQ("source", Text(copy));
    CStringEx const shortCopy{CSubStringRef(source, 6)};
    EXPECT_EQ(7u, shortCopy.Capacity());
    CStringEx const longCopy{CSubStringRef(source, 8)};
    EXPECT_EQ(15u, longCopy.Capacity());
    EXPECT_EQ("source t", Text(longCopy));
}

TEST_F(StringsTest, AppendingToAReferenceLosesItsTextAndItsRoom)
{
    TString<32> text("lost");
    text += "kept";
    EXPECT_EQ("kept", Text(text));
    EXPECT_EQ(7u, text.Capacity());
    TString<32> byCharacter("lost");
    byCharacter += 'c';
    EXPECT_EQ("c", Text(byCharacter));
    TString<32> replaced("lost");
    replaced = "new";
    EXPECT_EQ("new", Text(replaced));
    TString<32> emptied("lost");
    emptied = Misc::CNull();
    EXPECT_EQ("", Text(emptied));
}

TEST_F(StringsTest, ASpanKeepsTheTextOfAReference)
{
    char const source[] = "abc";
    CStringEx text{CSubStringRef(source)};
    text(1, 1) = "XY";
    EXPECT_EQ("aXYc", Text(text));
    EXPECT_STREQ("abc", source);
    CStringEx lower{CSubStringRef("ABC")};
    lower.ToLower();
    EXPECT_EQ("abc", Text(lower));
}

TEST_F(StringsTest, CopiesOwnTheirText)
{
    CStringEx original{CSubStringRef("text")};
    CStringEx const copy(original);
    EXPECT_NE(original.data(), copy.data());
    EXPECT_EQ("text", Text(copy));
    TString<32> const first("other");
    TString<32> const second(first);
    EXPECT_EQ(39u, second.Capacity());
}

TEST_F(StringsTest, AnAliasWorksOnTheTargetsStorageAndGivesTheTextBack)
{
    TString<32> target;
    target = "begin";
    {
        CStringAlias alias(target);
        EXPECT_EQ(target.data(), alias.data());
        EXPECT_EQ(0u, target.size());
        alias += " end";
        EXPECT_EQ(39u, alias.Capacity());
        alias += std::string(100, '.').c_str();
        EXPECT_EQ(target.data(), alias.data());
        EXPECT_EQ(target.Capacity(), alias.Capacity());
    }
    EXPECT_EQ("begin end" + std::string(100, '.'), Text(target));
    EXPECT_GT(target.Capacity(), 39u);
}

TEST_F(StringsTest, AnAliasOfAReferenceOwnsTheText)
{
    char const source[] = "text";
    CStringEx target{CSubStringRef(source)};
    {
        CStringAlias alias(target);
        alias += "!";
    }
    EXPECT_EQ("text!", Text(target));
    EXPECT_STREQ("text", source);
}

TEST_F(StringsTest, AHeapBlockIsHandedOutAndTheStringIsEmptyInside)
{
    TString<32> text = Filled<32>(50);
    char const * const block = text.data();
    char * out = nullptr;
    text >> out;
    EXPECT_EQ(block, out);
    EXPECT_EQ(0u, text.size());
    EXPECT_EQ(39u, text.Capacity());
    std::free(out);
    text = "inside";
    text >> out;
    EXPECT_NE(text.data(), out);
    EXPECT_STREQ("inside", out);
    EXPECT_EQ("inside", Text(text));
    std::free(out);
}

TEST_F(StringsTest, AHeapBlockMovesToAnotherString)
{
    TString<32> source = Filled<32>(50);
    TString<64> heapTarget = Filled<64>(100);
    char const * const block = source.data();
    source >> heapTarget;
    EXPECT_EQ(block, heapTarget.data());
    EXPECT_EQ(50u, heapTarget.size());
    EXPECT_EQ(0u, source.size());
    EXPECT_EQ(39u, source.Capacity());

    CStringVar small;
    small.Set('s', 10);
    TString<64> inlineTarget;
    small >> inlineTarget;
    EXPECT_EQ(15u, inlineTarget.Capacity());
    // The block is smaller than the object's own room, so the next growth goes back there.
    inlineTarget += "123456789";
    EXPECT_EQ(71u, inlineTarget.Capacity());
    EXPECT_EQ("ssssssssss123456789", Text(inlineTarget));

    TString<32> insideSource;
    insideSource = "abc";
    insideSource >> heapTarget;
    EXPECT_EQ("abc", Text(heapTarget));
    EXPECT_EQ("abc", Text(insideSource));
}

TEST_F(StringsTest, FreeExtraGivesBackWhatIsWorthIt)
{
    CStringVar text;
    text.Set('x', 100);
    text.FreeExtra();
    EXPECT_EQ(111u, text.Capacity());
    text.Cut(96);
    text.FreeExtra();
    EXPECT_EQ(111u, text.Capacity()); // 15 characters aren't
    text.Cut(95);
    text.FreeExtra();
    EXPECT_EQ(95u, text.Capacity());
    text.Cut(4);
    text.FreeExtra();
    EXPECT_EQ(7u, text.Capacity());
    EXPECT_EQ("xxxx", Text(text));
}

TEST_F(StringsTest, FreeExtraIntoTheObjectDoesNotTerminate)
{
    TString<32> text = Filled<32>(39); // fills the object's room
    text += 'x';
    text.Cut(20);
    text.FreeExtra();
    EXPECT_EQ(39u, text.Capacity());
    EXPECT_EQ('x', text.data()[20]);
}

// Editing

TEST_F(StringsTest, AppendingATextToItselfDoublesIt)
{
    CStringVar text;
    text = "abcdefg";
    text += text;
    EXPECT_EQ("abcdefgabcdefg", Text(text));
    text += text(7, 3);
    EXPECT_EQ("abcdefgabcdefgabc", Text(text));
    text = text(1, 4);
    EXPECT_EQ("bcde", Text(text));
}

TEST_F(StringsTest, AHeapTextCanBeReplacedByAPartOfItself)
{
    CStringVar text;
    text.Set('x', 100);
    text += "tail";
    text = CSubStringRef(text.data() + 98, 4);
    EXPECT_EQ("xxta", Text(text));
}

TEST_F(StringsTest, ALongTextIsAppendedUpToItsNul)
{
    CSubStringRef const withNul("ab\0cd", 5);
    CStringVar fits;
    fits += withNul;
    EXPECT_EQ(5u, fits.size());
    CStringVar grows;
    grows = "123456";
    grows += withNul;
    EXPECT_EQ("123456ab", Text(grows));
}

TEST_F(StringsTest, NullAndNulAreEmptyTexts)
{
    CStringVar text;
    text = "x";
    text << static_cast<char const *>(nullptr);
    text += static_cast<char const *>(nullptr);
    EXPECT_EQ("x", Text(text));
    text = '\0';
    EXPECT_EQ("", Text(text));
    text = 'c';
    EXPECT_EQ("c", Text(text));
    TString<32> reference("r");
    reference = 'q';
    EXPECT_EQ("q", Text(reference));
}

TEST_F(StringsTest, EveryFormOfAppendingReachesTheEnd)
{
    CStringVar text;
    text << CSubStringRef("ab", 1) << "b" << 'c' << std::string("d");
    text.Cat("efgh", 2);
    text.Cat("i", 0);
    EXPECT_EQ("abcdefi", Text(text));
}

TEST_F(StringsTest, CutOnlyShortens)
{
    CStringVar text;
    text = "abc";
    text.Cut(4);
    EXPECT_EQ("abc", Text(text));
    text.Cut(1);
    EXPECT_EQ("a", Text(text));
    CStringEx reference{CSubStringRef("abc")};
    reference.Cut(1);
    EXPECT_EQ("abc", Text(reference));
}

TEST_F(StringsTest, LockGivesThePlaceBehindTheText)
{
    TString<32> text;
    text = "ab";
    char * const end = text.Lock(3, 0);
    EXPECT_EQ(text.data() + 2, end);
    std::memcpy(end, "cde", 4);
    text.Unlock(0);
    EXPECT_EQ("abcde", Text(text));
    text.Lock(1, 1)[0] = 'z';
    text.Unlock(1);
    EXPECT_EQ(1u, text.size());
    EXPECT_EQ('z', text[0]);
}

TEST_F(StringsTest, LockGrowsByTheLengthToo)
{
    CStringVar text;
    text = "abcd";
    EXPECT_NE(nullptr, text.Lock(4, 0)); // 4 and 4 for the text that is there
    EXPECT_EQ(15u, text.Capacity());
}

TEST_F(StringsTest, SetOverwritesAndNeverShrinks)
{
    CStringVar text;
    text = "abcd";
    text.Set('x', 2);
    EXPECT_EQ("xxcd", Text(text));
    text.Set('y');
    EXPECT_EQ("yyyy", Text(text));
    text.Set('z', 0);
    EXPECT_EQ("yyyy", Text(text));
    text.Set('z', 9);
    EXPECT_EQ("zzzzzzzzz", Text(text));
}

TEST_F(StringsTest, CaseAndSlashesChangeInPlace)
{
    CStringVar text;
    text = "AbC/d";
    text.ToUpper(4);
    EXPECT_EQ("AbC/D", Text(text));
    text.ToLower(1);
    EXPECT_EQ("Abc/d", Text(text));
    text.FixSlashes();
    EXPECT_EQ("Abc\\d", Text(text));
    text.ToLower(17);
    text = "A/B/C/D";
    text(2, 3).FixSlashes();
    EXPECT_EQ("A/B\\C/D", Text(text));
    text(0, 3).ToLower();
    EXPECT_EQ("a/b\\C/D", Text(text));
    text(0, 1).ToUpper();
    EXPECT_EQ("A/b\\C/D", Text(text));
}

struct SReplace {
    char const * name;
    std::size_t pos, len;
    char const * with;
    char const * result;
};

class SubStringReplaceTest : public CFoundationTest, public testing::WithParamInterface<SReplace> {};

TEST_P(SubStringReplaceTest, EditsTheOwner)
{
    CStringVar text;
    text = "abcdef";
    CSubStringVar span = text(GetParam().pos, GetParam().len);
    span = GetParam().with;
    EXPECT_EQ(GetParam().result, Text(text));
    EXPECT_EQ('\0', text.data()[text.size()]);
    EXPECT_EQ(GetParam().len, span.size());
}

INSTANTIATE_TEST_SUITE_P(Edges, SubStringReplaceTest,
                         testing::Values(SReplace{"Same", 1, 2, "XY", "aXYdef"}, SReplace{"Shorter", 1, 3, "X", "aXef"},
                                         SReplace{"Longer", 1, 1, "XYZ", "aXYZcdef"},
                                         SReplace{"LongerThanTheRoom", 2, 1, "0123456789", "ab0123456789def"},
                                         SReplace{"Insert", 3, 0, "-", "abc-def"},
                                         SReplace{"Append", 6, 0, "ghij", "abcdefghij"},
                                         SReplace{"Remove", 1, 2, "", "adef"}, SReplace{"RemoveAll", 0, 6, "", ""},
                                         SReplace{"RemoveTail", 4, 2, "", "abcd"}),
                         [](auto const & test) { return std::string(test.param.name); });

TEST_F(StringsTest, ASpanKeepsItsOldLengthAfterAnAssignment)
{
    CStringVar text;
    text = "abcdef";
    CSubStringVar span = text(1, 1);
    span = "XYZ";
    EXPECT_EQ("aXYZcdef", Text(text));
    span = "-"; // still one character long
    EXPECT_EQ("a-YZcdef", Text(text));
}

TEST_F(StringsTest, ASpanTakesAPartOfItsOwner)
{
    CStringVar text;
    text = "abcdef";
    text(0, 1) = text(2, 4);
    EXPECT_EQ("cdefbcdef", Text(text));
    text(0, 2) = Misc::CNull();
    EXPECT_EQ("efbcdef", Text(text));
    text(0, 1) = 'X';
    EXPECT_EQ("Xfbcdef", Text(text));
}

TEST_F(StringsTest, SpanSetResizesTheOwner)
{
    CStringVar text;
    text = "abcd";
    text(1, 2).Set('-');
    EXPECT_EQ("a--d", Text(text));
    text(1, 2).Set('+', 20);
    EXPECT_EQ("a" + std::string(20, '+') + "d", Text(text));
    text(1, 20).Set('x', 0);
    EXPECT_EQ("ad", Text(text));
}

TEST_F(StringsTest, ASpanBeyondTheTextChangesNothingElse)
{
    CStringVar text;
    text = "abc";
    CSubStringVar span = text(2, 40);
    span = "Z";
    EXPECT_EQ("abZ", Text(text));
}

// Comparison and search

TEST_F(StringsTest, EqualAndUnequalAreNotComplementaryForSpans)
{
    EXPECT_FALSE(CSubStringRef("abc", 2) == CSubStringRef("ab", 2));
    EXPECT_FALSE(CSubStringRef("abc", 2) != CSubStringRef("ab", 2));
    EXPECT_TRUE(CSubStringRef("abc", 2) == CSubStringRef("abc", 3));
    EXPECT_TRUE(CSubStringRef("abc", 2) != CSubStringRef("abc", 3));
}

TEST_F(StringsTest, EqualityWithTextAndCharacter)
{
    CSubStringRef const ab("abc", 2);
    EXPECT_TRUE(ab == "ab");
    EXPECT_FALSE(ab != "ab");
    EXPECT_FALSE(ab == "abc");
    EXPECT_FALSE(ab == "a");
    EXPECT_TRUE(ab != "ax");
    EXPECT_TRUE(ab(0, 1) == 'a');
    EXPECT_TRUE(ab != 'a');
    EXPECT_FALSE(CSubStringRef("a\0b", 3) == "a");
}

TEST_F(StringsTest, SubStringsCompareByLengths)
{
    CSubStringRef const abc("abcX", 3);
    EXPECT_EQ(0, abc.Compare(CSubStringRef("abcY", 3)));
    EXPECT_EQ(1, abc.Compare(CSubStringRef("ab", 2)));
    EXPECT_EQ(-1, CSubStringRef("ab", 2).Compare(abc));
    EXPECT_GT(CSubStringRef("b").Compare(abc), 0);
    EXPECT_GT(CSubStringRef("\xE4").Compare(CSubStringRef("z")), 0);
    EXPECT_EQ(0, CSubStringRef("ABC").Compare(abc, CSubStringRef::IGNORE_CASE));
    EXPECT_NE(0, CSubStringRef("ABC").Compare(abc));
    EXPECT_TRUE(CSubStringRef("ab", 2) < abc);
    EXPECT_TRUE(abc <= abc);
    EXPECT_TRUE(abc > CSubStringRef("ab", 2));
    EXPECT_TRUE(abc >= abc);
}

TEST_F(StringsTest, AgainstATextTheShorterSubStringIsTheGreater)
{
    EXPECT_EQ(1, CSubStringRef("abc", 2).Compare("abc"));
    EXPECT_EQ(0, CSubStringRef("abc", 2).Compare("ab"));
    EXPECT_LT(CSubStringRef("abc", 2).Compare("ax"), 0);
    EXPECT_GT(CSubStringRef("abc", 3).Compare("ab"), 0);
    EXPECT_EQ(0, CSubStringRef("AB").Compare("ab", 1));
}

TEST_F(StringsTest, ComparesOfAFewCharacters)
{
    CSubStringRef const text("abcdef", 4);
    EXPECT_EQ(0, text.Compare(2, "abX"));
    EXPECT_NE(0, text.Compare(3, "abX"));
    EXPECT_EQ(0, text.Compare(0, "abcdX"));  // 0 is all of it
    EXPECT_EQ(0, text.Compare(99, "abcdX")); // and so is too many
    EXPECT_EQ(0, text.Compare(4, CSubStringRef("abX", 2)));
    EXPECT_EQ(0, text.Compare(2, CSubStringRef("ABX"), 1));
    CStringRef const whole("abcdef", 6);
    EXPECT_EQ(0, whole.Compare(3, "abcX"));
    EXPECT_EQ(0, whole.Compare(3, "ABCX", 1));
    EXPECT_NE(0, whole.Compare(0, "abcX"));
}

TEST_F(StringsTest, StringsCompareUpToTheNul)
{
    CStringRef const a("a\0x", 3);
    CStringRef const b("a\0y", 3);
    EXPECT_EQ(0, a.Compare(b));
    EXPECT_FALSE(a < b);
    EXPECT_TRUE(a <= b);
    EXPECT_TRUE(a >= b);
    EXPECT_EQ(-1, CStringRef("abc", 3).Compare("x"));
    EXPECT_EQ(1, CStringRef("\xE4", 1).Compare("z"));
    EXPECT_EQ(0, CStringRef("ABC", 3).Compare("abc", 1));
    EXPECT_TRUE(CStringRef("abc", 3) < "abd");
    EXPECT_TRUE(CStringRef("abc", 3) > "abb");
}

TEST_F(StringsTest, FindGivesTheOffsetOrPoserr)
{
    CStringRef const text("abcabc", 6);
    EXPECT_EQ(1u, text.Find("bc"));
    EXPECT_EQ(4u, text.Find("bc", 2));
    EXPECT_EQ(POSERR, text.Find("bc", 5));
    EXPECT_EQ(POSERR, text.Find("bc", 77));
    EXPECT_EQ(2u, text.Find(static_cast<int>('c')));
    CSubStringRef const slice("abcabc", 4);
    EXPECT_EQ(1u, slice.Find("bc"));
    EXPECT_EQ(POSERR, slice.Find("bc", 2)); // the second one reaches beyond the slice
    EXPECT_EQ(POSERR, slice.Find("a", 4));
    EXPECT_EQ(3u, slice.Find(CSubStringRef("ax", 1), 1));
    EXPECT_EQ(POSERR, slice.Find(CSubStringRef("abcab", 5)));
    EXPECT_EQ(POSERR, slice.Find(static_cast<int>('c'), 3));
    EXPECT_EQ(3u, slice.FindLast('a'));
    EXPECT_EQ(0u, CSubStringRef("a").FindLast('a'));
    EXPECT_EQ(POSERR, slice.FindLast('a', 4));
    EXPECT_EQ(3u, slice.FindLast('a', 3));
    EXPECT_EQ(POSERR, slice.FindLast('x'));
}

TEST_F(StringsTest, SpansFindTheFirstQualifyingCharacter)
{
    CSubStringRef const text("aab1");
    EXPECT_EQ(2u, text.SpanExcluding("a"));
    EXPECT_EQ(0u, text.SpanExcluding("xyz"));
    EXPECT_EQ(POSERR, text.SpanExcluding("ab1"));
    EXPECT_EQ(3u, text.SpanIncluding("123"));
    EXPECT_EQ(0u, text.SpanIncluding("a"));
    EXPECT_EQ(POSERR, text.SpanIncluding("xyz"));
    EXPECT_EQ(POSERR, text.SpanIncluding(""));
    EXPECT_EQ(POSERR, text.SpanExcluding(nullptr));
    EXPECT_EQ(POSERR, CSubStringRef("").SpanExcluding("a"));
}

TEST_F(StringsTest, SlicesOfViewsAreClamped)
{
    CSubStringRef const text("abcdef");
    EXPECT_EQ("cd", Text(text(2, 2)));
    EXPECT_EQ("ef", Text(text(4, 99)));
    EXPECT_EQ("ef", Text(text(4)));
    EXPECT_EQ("", Text(text(6)));
    EXPECT_EQ("", Text(text(7)));
    EXPECT_EQ(text.data(), text(7).data());
}

TEST_F(StringsTest, Constants)
{
    EXPECT_EQ(0u, _TEmpty.size());
    EXPECT_STREQ(" ", _TBlank);
    EXPECT_STREQ("\n", _TNL);
    EXPECT_STREQ("\r\n", _TFNL);
    EXPECT_EQ(1u, _TBlank.size());
    EXPECT_EQ(1u, _TNL.size());
    EXPECT_EQ(2u, _TFNL.size());
    EXPECT_EQ(~std::uint64_t{0}, CSubStringRef::POSERR);
    EXPECT_STREQ("\\", CSubStringRef::PATH_SLASH);
    EXPECT_STREQ(";", CSubStringRef::PATH_SEPARATOR);
}

// UTF-8

TEST_F(StringsTest, BytesAboveSevenBitsTakeTheFourByteForm)
{
    std::string out = "old";
    ToUTF8(std::string("A\xE4"), out);
    EXPECT_EQ("A\xF7\xBF\xBF\xA4", out);
    CStringVar text;
    text.CopyAsUTF8(CSubStringRef("\x80z"));
    EXPECT_EQ("\xF7\xBF\xBE\x80z", Text(text));
    ToUTF8(std::string("a\0b", 3), out);
    EXPECT_EQ("a", out);
}

TEST_F(StringsTest, WideTextIsEncodedWithoutCombiningSurrogates)
{
    std::string out;
    wchar_t const text[] = {L'A', 0x7F, 0x80, 0x7FF, 0x800, 0xFFFF, 0xD83D, 0xDE00, 0};
    ToUTF8(text, out);
    EXPECT_EQ("A\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xC8\x80", out);
    CStringVar copy;
    copy.CopyAsUTF8(L"\u00E4");
    EXPECT_EQ("\xC3\xA4", Text(copy));
    copy.CopyAsUTF8(L"");
    EXPECT_EQ("", Text(copy));
}

TEST_F(StringsTest, AnEmptySourceOfCopyAsUtf8LeavesAReferenceAlone)
{
    CStringEx text{CSubStringRef("abc")};
    text.CopyAsUTF8(CSubStringRef(""));
    EXPECT_EQ("abc", Text(text));
}

TEST_F(StringsTest, CopyAsUtf8OfTheTextItselfAppends)
{
    CStringVar text;
    text = "ab";
    text.CopyAsUTF8(text);
    EXPECT_EQ("abab", Text(text));
}

TEST_F(StringsTest, CopyFromUtf8DecodesOneByteCharacters)
{
    TString<32> text;
    EXPECT_EQ(1u, text.CopyFromUTF8("a\xC3\xA4z"));
    EXPECT_EQ("a\xE4z", Text(text));
    EXPECT_EQ(39u, text.Capacity());
    EXPECT_EQ(1u, text.CopyFromUTF8(""));
    EXPECT_EQ("", Text(text));
}

TEST_F(StringsTest, CopyFromUtf8RaisesAndKeepsTheContent)
{
    TString<32> text;
    text = "kept";
    EXPECT_EQ(4u, CSubStringRef("a\xE2\x82\xAC").UTF8Length() + 2);
    for (char const * bad : {"a\xE2\x82\xAC", "\xC3", "\x80", "\xFC\x80\x80\x80\x80\x80"})
        EXPECT_EQ(0x20010060u, RaisedBy([&] { text.CopyFromUTF8(bad); })) << bad;
    EXPECT_EQ("kept", Text(text));
}

TEST_F(StringsTest, CopyFromUtf8NeverWritesBeyondItsRoom)
{
    CStringVar small;
    std::string const text(50, 'x');
    EXPECT_EQ(1u, small.CopyFromUTF8(text));
    EXPECT_EQ(text, Text(small));
}

struct SUtf8Length {
    char const * name;
    std::string text;
    std::size_t length;
};

class Utf8LengthTest : public CFoundationTest, public testing::WithParamInterface<SUtf8Length> {};

TEST_P(Utf8LengthTest, CountsCharacters)
{
    EXPECT_EQ(GetParam().length, CSubStringRef(GetParam().text).UTF8Length());
    EXPECT_EQ(GetParam().length, UTF8length(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(Edges, Utf8LengthTest,
                         testing::Values(SUtf8Length{"Empty", "", 0}, SUtf8Length{"Ascii", "abc", 3},
                                         SUtf8Length{"Two", "\xC3\xA4", 1}, SUtf8Length{"Three", "\xE2\x82\xAC", 1},
                                         SUtf8Length{"Four", "\xF0\x9F\x98\x80", 1},
                                         SUtf8Length{"Five", "\xF8\x80\x80\x80\x80", 1},
                                         SUtf8Length{"InvalidLead", "\xFC\x80\x80\x80\x80\x80", POSERR},
                                         SUtf8Length{"StrayTakesFiveMore", "\x80\x80\x80\x80\x80\x80", 1},
                                         SUtf8Length{"FeTakesFiveMore", "\xFE\x80\x80\x80\x80\x80", 1},
                                         SUtf8Length{"Stray", "\x80", POSERR}, SUtf8Length{"Cut", "a\xE2\x82", POSERR},
                                         SUtf8Length{"BadContinuation", "\xC3z", POSERR}),
                         [](auto const & test) { return std::string(test.param.name); });

TEST_F(StringsTest, BufferSizeOfATextOfSingleBytesIsItsLengthAndOneForTheEnd)
{
    EXPECT_EQ(3u, CSubStringRef("a\xE4").UTF8BufferSize());
}

// Failures

TEST_F(StringsTest, GrowthThatCannotBeHadRaisesOutOfMemoryAndKeepsTheText)
{
    CStringVar text;
    text = "kept";
    EXPECT_EQ(0x2001000Fu, RaisedBy([&] { text.Lock(POSERR - 2, 0); }));
    EXPECT_EQ(0x2001000Fu, RaisedBy([&] { text.Lock(POSERR / 2 + 1, 0); }));
    EXPECT_EQ("kept", Text(text));
    EXPECT_EQ(0x2001000Fu, RaisedBy([] { CSubStringRef("a").Dup(POSERR - 3); }));
}

TEST_F(StringsTest, WithThrowingDisabledAFailedGrowthIsReturned)
{
    Exceptions::CThrowState state;
    state.DisableThrow();
    CStringVar text;
    text = "kept";
    EXPECT_EQ(nullptr, text.Lock(POSERR - 2, 0));
    EXPECT_EQ("kept", Text(text));
    EXPECT_EQ(0x2001000Fu, Threading::CCurrentThread().GetErrorLog().GetError());
    EXPECT_FALSE(CSubStringRef("a").Dup(POSERR - 3).IsValid());
    state.EnableThrow();
}

TEST_F(StringsTest, AboveSixtyFourMebibytesEveryGrowthRaisesEvenWithRoomLeft)
{
    CStringVar text;
    ASSERT_NE(nullptr, text.Lock(0x4000001, 0));
    ASSERT_GT(text.Capacity(), 0x4000000u);
    EXPECT_EQ(0x20010036u, RaisedBy([&] { text.Lock(1, 0); }));
    EXPECT_EQ(0x20010036u, RaisedBy([&] { text += "C string"; }));
}

TEST_F(StringsTest, AppendingAViewOrACharacterThatFitsAsksNothingOfTheLimit)
{
    CStringVar text;
    ASSERT_NE(nullptr, text.Lock(0x4000001, 0));
    text.Unlock(0);
    text += CSubStringRef("abc", 2);
    text += 'c';
    EXPECT_EQ("abc", Text(text));
}

TEST_F(StringsTest, AppendingAViewThatFitsKeepsTheHeapBlockOfAnEmptiedText)
{
    TString<32> text = Filled<32>(40);
    char const * const block = text.data();
    text = Misc::CNull();
    text += CSubStringRef("abc");
    EXPECT_EQ(block, text.data());
    EXPECT_EQ("abc", Text(text));
}

// Handles and functions

TEST_F(StringsTest, DupCopiesIntoOneBlock)
{
    CStringRefPtr copy = CSubStringRef("abcdef", 3).Dup();
    ASSERT_TRUE(copy.IsValid());
    EXPECT_EQ("abc", Text(*copy));
    EXPECT_EQ('\0', copy->data()[3]);
    copy.Delete();
    EXPECT_FALSE(copy.IsValid());
    copy.Delete();
}

TEST_F(StringsTest, DupWithRoomGrowsLikeAnyString)
{
    CStringVarPtr copy = CSubStringRef("abc").Dup(20);
    ASSERT_TRUE(copy.IsValid());
    EXPECT_GE(copy->Capacity(), 20u);
    EXPECT_LT(copy->Capacity(), 36u);
    *copy += std::string(100, 'x').c_str();
    EXPECT_EQ(103u, copy->size());
    CStringVar & released = copy.Release();
    EXPECT_FALSE(copy.IsValid());
    delete &released;
    CStringVar * const raw = CSubStringRef("q").Dup(0).operator->();
    EXPECT_NE(nullptr, raw);
}

TEST_F(StringsTest, AssigningNullForgetsWithoutFreeing)
{
    CStringRefPtr handle = CSubStringRef("abc").Dup();
    CStringRef * const raw = handle;
    handle = Misc::CNull();
    EXPECT_FALSE(handle.IsValid());
    EXPECT_EQ("abc", Text(*raw));
    delete raw;
}

TEST_F(StringsTest, JoinAndTokenize)
{
    std::vector<std::string> const parts{"a", "b", "c"};
    EXPECT_EQ("abc", joinString(parts, 0));
    EXPECT_EQ("c", joinString(parts, 2));
    EXPECT_EQ("", joinString(parts, 3));
    EXPECT_EQ((std::vector<std::string>{"a", "b", "c"}), tokenizeString(std::string("a,;b,c"), ",;"));
    EXPECT_EQ((std::vector<std::string>{"", "a", ""}), tokenizeString(",,a,", ","));
}

TEST_F(StringsTest, ByteStreamsOnOneLineHaveNoOffsets)
{
    std::stringstream out;
    ByteStreamAppend("\x01\xFF", 2, out, 2);
    EXPECT_EQ("01ff", out.str());
}

TEST_F(StringsTest, ByteStreamsOnSeveralLinesBeginWithOffsets)
{
    std::stringstream out;
    ByteStreamAppend("\x01\x02\x03", 3, out, 2);
    EXPECT_EQ("0x00 - 0x02: 0102\n0x02 - 0x04: 03", out.str());
    std::stringstream all;
    ByteStreamAppend("abc", 3, all, 0);
    EXPECT_EQ("616263", all.str());
}

} // namespace
