#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "FailingMemory.h"
#include "Foundation.h"
#include "Support/TempDirectory.h"
#include "VLK/Application.h"
#include "VLK/FileDescriptorSet.h"
#include "VLK/FormatStream.h"
#include "VLK/IniFile.h"
#include "VLK/Language.h"
#include "VLK/ThreadCB.h"
#include "VLK/WaitableCall.h"

/// What the foundation does when memory can't be had.

using namespace VLK;
using namespace VLK::Exceptions;
using namespace VLK::Output_Streams;
using namespace VLK::Strings;
using Internals::CThreadCB;
using Threading::CCurrentThread;

namespace {

class MemoryFaultTest : public CFoundationTest {
protected:
    void SetUp() override { CCurrentThread().GetErrorLog().Clear(); }

    CErrorLog m_Log;
};

std::string Text(CSubStringRef const & text)
{
    return std::string(text.View());
}

unsigned int Fail(char const * text = "")
{
    CThrowState state;
    try {
        VLK_RAISE_TEXT(state, Errors::IndexOutOfBounds, "%s", text);
    }
    VLK_THROW_NEXT(state)
}

// Records

TEST_F(MemoryFaultTest, WithoutMemoryForItsRecordAnErrorIsThrownAllTheSame)
{
    unsigned int places = 0;
    CThrowState state;
    try {
        CFailingMemory const noMemory;
        try {
            Fail();
        } catch (unsigned int object) {
            EXPECT_EQ(0u, object);
            ++places;
            throw;
        }
    } catch (unsigned int) {
        ++places;
        VLK_CONTINUE(state, log);
        EXPECT_EQ(0u, log.GetError());
        log.Format("%s") << "goes nowhere";
        log >> m_Log;
    }
    EXPECT_EQ(2u, places);
    EXPECT_EQ(0u, m_Log.GetLogCount());
}

TEST_F(MemoryFaultTest, WithThrowingDisabledAnErrorWithoutARecordIsReturnedAndTheFormerLogStays)
{
    CThrowState state;
    state.DisableThrow();
    Fail("xformer");
    {
        CFailingMemory const noMemory;
        EXPECT_EQ(URET_Error, Fail("xlater"));
        EXPECT_TRUE(noMemory.Fired());
    }
    EXPECT_STREQ("former\n", CCurrentThread().GetErrorLog().GetErrorMsg(0));
}

TEST_F(MemoryFaultTest, AnErrorWithoutARecordDoesNotTakeOneThatNoHandlerAskedFor)
{
    EXPECT_THROW(Fail("xold"), unsigned int);
    ASSERT_NE(nullptr, CThreadCB::Current()->m_pPending);
    std::uint32_t error = 1;
    {
        CFailingMemory const noMemory;
        error = RaisedBy([] { Fail("xnew"); }, m_Log);
    }
    EXPECT_EQ(0u, error);
    EXPECT_EQ(0u, m_Log.GetLogCount());
    EXPECT_EQ(nullptr, CThreadCB::Current()->m_pPending);
}

TEST_F(MemoryFaultTest, AnExceptionOfTheLibraryWithoutARecordDoesNotTakeAnothers)
{
    auto const throwForeign = [] {
        CThrowState state;
        try {
            throw std::bad_alloc();
        }
        VLK_THROW_NEXT_VOID(state)
    };
    CThrowState state;
    try {
        Fail("xmine");
    } catch (unsigned int) {
        {
            CFailingMemory const noMemory;
            EXPECT_THROW(throwForeign(), unsigned int);
        }
        VLK_CONTINUE(state, log);
        EXPECT_EQ(Errors::IndexOutOfBounds, log.GetError());
        log >> m_Log;
    }
    EXPECT_STREQ("mine\n", m_Log.GetErrorMsg(0));
    EXPECT_EQ(3u, m_Log.GetLogCount()); // the other exception's way is no part of it
}

TEST_F(MemoryFaultTest, AMessageThatOutgrowsItsRecordIsLeftOut)
{
    std::string const longText(2000, 'x');
    std::uint32_t error = 0;
    {
        CFailingMemory const noGrowth(2); // the record itself is the first
        error = RaisedBy([&] { Fail(longText.c_str()); }, m_Log);
        EXPECT_TRUE(noGrowth.Fired());
    }
    EXPECT_EQ(Errors::IndexOutOfBounds, error);
    EXPECT_STREQ("", m_Log.GetErrorMsg(0));
    EXPECT_EQ(3u, m_Log.GetLogCount());
}

TEST_F(MemoryFaultTest, AMessageWhoseFormatCannotBeCopiedIsLeftOut)
{
    std::string const longFormat = std::string(200, 'x') + "%d";
    std::uint32_t error = 0;
    {
        CFailingMemory const noFormat(2);
        error = RaisedBy(
            [&] {
                CThrowState state;
                try {
                    VLK_RAISE_TEXT(state, Errors::MaxCount, longFormat.c_str(), 7);
                }
                VLK_THROW_NEXT_VOID(state)
            },
            m_Log);
        EXPECT_TRUE(noFormat.Fired());
    }
    EXPECT_EQ(Errors::MaxCount, error);
    EXPECT_STREQ("", m_Log.GetErrorMsg(0));
}

void FailThroughStages(unsigned int stages)
{
    CThrowState state;
    try {
        if (stages == 1) VLK_RAISE_TEXT(state, Errors::MaxCount, "%s", "xorigin");
        FailThroughStages(stages - 1);
    } catch (...) {
        VLK_CONTINUE(state, log);
        log.Format("stage %d") << stages;
        log.tryThrow();
    }
}

TEST_F(MemoryFaultTest, APlaceForWhichTheTableCannotGrowIsLeftOut)
{
    std::uint32_t error = 0;
    {
        CFailingMemory const noGrowth(2);
        error = RaisedBy([] { FailThroughStages(9); }, m_Log);
        EXPECT_TRUE(noGrowth.Fired());
    }
    EXPECT_EQ(Errors::MaxCount, error);
    EXPECT_EQ(8u, m_Log.GetLogCount()); // the origin and seven stages
    EXPECT_STREQ("origin\n", m_Log.GetErrorMsg(0));
    EXPECT_STREQ("stage 7\n", m_Log.GetErrorMsg(7));
}

// Strings

TEST_F(MemoryFaultTest, AStringThatCannotLeaveItsObjectKeepsItsText)
{
    TString<32> text;
    text = "kept";
    std::string const more(100, 'x');
    EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] {
                  CFailingMemory const noMemory(1, CFailingMemory::FailOne);
                  text += more.c_str();
              }));
    EXPECT_EQ("kept", Text(text));
    EXPECT_EQ(39u, text.Capacity());
}

TEST_F(MemoryFaultTest, AHeapTextThatCannotBeEnlargedIsLostAndTheStringIsEmptyInside)
{
    TString<32> text;
    text.Set('x', 100);
    std::string const more(1000, 'y');
    EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] {
                  CFailingMemory const noMemory(1, CFailingMemory::FailOne);
                  text += more.c_str();
              }));
    EXPECT_EQ("", Text(text));
    EXPECT_EQ(39u, text.Capacity());
    text = "again";
    EXPECT_EQ("again", Text(text));
}

TEST_F(MemoryFaultTest, AnAliasFollowsItsTargetIntoTheFailure)
{
    TString<32> target;
    target.Set('x', 100);
    {
        CStringAlias alias(target);
        std::string const more(1000, 'y');
        EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] {
                      CFailingMemory const noMemory(1, CFailingMemory::FailOne);
                      alias += more.c_str();
                  }));
        EXPECT_EQ("", Text(alias));
        alias += "again";
    }
    EXPECT_EQ("again", Text(target));
}

TEST_F(MemoryFaultTest, GivingBackRoomThatFailsLosesTheText)
{
    CStringVar text;
    text.Set('x', 100);
    text.Cut(50);
    EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] {
                  CFailingMemory const noMemory(1, CFailingMemory::FailOne);
                  text.FreeExtra();
              }));
    EXPECT_EQ("", Text(text));
}

TEST_F(MemoryFaultTest, CopiesThatCannotBeMadeRaise)
{
    for (bool const withRoom : {false, true})
        EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] {
                      CFailingMemory const noMemory(1, CFailingMemory::FailOne);
                      withRoom ? static_cast<void>(CSubStringRef("a").Dup(9))
                               : static_cast<void>(CSubStringRef("a").Dup());
                  }));
    TString<32> text;
    text = "inside";
    char * out = nullptr;
    EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] {
                  CFailingMemory const noMemory(1, CFailingMemory::FailOne);
                  text >> out;
              }));
    EXPECT_EQ(nullptr, out);
}

// Streams

TEST_F(MemoryFaultTest, AStringsStreamWithoutABufferRaises)
{
    RunToItsEnd([] { // whose pool of buffers is empty
        TString<32> text;
        text = "kept";
        EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] {
                      CFailingMemory const noMemory(1, CFailingMemory::FailOne);
                      text.Format("%d") << 1;
                  }));
        EXPECT_EQ("kept", Text(text));
    });
}

TEST_F(MemoryFaultTest, AStringsStreamWithoutABufferIsDeadWithThrowingDisabled)
{
    RunToItsEnd([] {
        CThrowState state;
        state.DisableThrow();
        TString<32> text;
        {
            CFailingMemory const noMemory(1, CFailingMemory::FailOne);
            text.Format("%d") << 1;
        }
        EXPECT_EQ("", Text(text));
        EXPECT_EQ(Errors::OutOfMemory, CCurrentThread().GetErrorLog().GetError());
        text.Format("%d") << 2;
        EXPECT_EQ("2", Text(text));
    });
}

TEST_F(MemoryFaultTest, AStreamWhoseFormatCannotBeCopiedRaisesAndGivesItsBufferBack)
{
    TString<32> text;
    text.Format("%d") << 1;
    void * const buffer = CThreadCB::Current()->m_StreamPool.pFirst;
    std::string const longFormat(200, 'x');
    EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] {
                  CFailingMemory const noMemory(1, CFailingMemory::FailOne);
                  text.Format(longFormat.c_str());
              }));
    EXPECT_EQ("1", Text(text));
    EXPECT_EQ(buffer, CThreadCB::Current()->m_StreamPool.pFirst);
    {
        CFormatStream const stream = text.Format(longFormat.c_str());
        EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] {
                      CFailingMemory const noMemory(1, CFailingMemory::FailOne);
                      CFormatStream const copy(stream);
                  }));
        EXPECT_NE(buffer, CThreadCB::Current()->m_StreamPool.pFirst);
    }
    EXPECT_EQ(buffer, CThreadCB::Current()->m_StreamPool.pFirst);
}

TEST_F(MemoryFaultTest, AFailedAssignmentOfAStreamLeavesTheBufferToTheStreamThatHasIt)
{
    TString<64> first;
    TString<64> second;
    TString<64> third;
    {
        CFormatStream open = first.Format((std::string(200, ' ') + "%d").c_str());
        {
            CFormatStream target = second.Format("plain");
            EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] {
                          CFailingMemory const noMemory(1, CFailingMemory::FailOne);
                          target = open;
                      }));
        }
        CFormatStream other = third.Format("%d");
        EXPECT_EQ(0x20010002u, RaisedBy([&] { open << 1; })); // dead since the failure
        other << 2;
    }
    EXPECT_EQ("2", Text(third));
    EXPECT_EQ("", Text(first));
}

TEST_F(MemoryFaultTest, ABlockBufferThatCannotGrowStaysAsItIsWithoutAnError)
{
    CChrStreamBuffer buffer(16);
    buffer.Format("%s") << "kept";
    EXPECT_FALSE(buffer.HasDropped());
    {
        CFailingMemory const noMemory;
        buffer.Format("%s") << "0123456789ABCDEF";
        EXPECT_TRUE(noMemory.Fired());
    }
    EXPECT_STREQ("kept", buffer.GetBuffer());
    EXPECT_TRUE(buffer.HasDropped());
    buffer.Reset();
    EXPECT_FALSE(buffer.HasDropped());
    buffer.Format("%s") << "0123456789ABCDEF";
    EXPECT_STREQ("0123456789ABCDEF", buffer.GetBuffer());
}

// Delegates

TEST_F(MemoryFaultTest, ADelegateWithoutABlockRaises)
{
    Delegates_and_Calls::CDelegate call;
    EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] {
                  CFailingMemory const noMemory(1, CFailingMemory::FailOne);
                  call = DelegateOf([] {});
              }));
    EXPECT_FALSE(call.IsValid());
}

TEST_F(MemoryFaultTest, AWaitableCallWithoutABlockRaises)
{
    Delegates_and_Calls::TDelegate<Delegates_and_Calls::CWaitableCall> call;
    EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] {
                  CFailingMemory const noMemory(1, CFailingMemory::FailOne);
                  call = Delegates_and_Calls::TDelegate<Delegates_and_Calls::CWaitableCall>([] {});
              }));
    EXPECT_FALSE(call.IsValid());
}

// Sets of sockets

TEST_F(MemoryFaultTest, ASetOfSocketsThatCannotGrowStaysAsItIs)
{
    Misc::CFileDescriptorSet set;
    for (std::size_t socket = 0; socket != 64; ++socket)
        set.Set(socket);
    auto const grow = [&] {
        CFailingMemory const noMemory(1, CFailingMemory::FailOne);
        return set.Set(64);
    };
    EXPECT_EQ(Errors::OutOfMemory, RaisedBy(grow));
    {
        CThrowState state;
        state.DisableThrow();
        EXPECT_EQ(URET_Error, grow());
    }
    EXPECT_EQ(64u, set.Size());
    EXPECT_EQ(64u, set.Capacity());
    EXPECT_FALSE(set.IsSet(64));
    EXPECT_EQ(URET_OK, set.Set(64));
    EXPECT_TRUE(set.IsSet(64));
}

// INI files

/// Runs the work with each of its allocations failing in turn, until it needs no more of them.
template <class TWork>
void SweepFailures(TWork const & work)
{
    unsigned int n = 1;
    for (bool fired = true; fired; ++n) {
        SCOPED_TRACE("allocation " + std::to_string(n));
        fired = work(n);
        ASSERT_LT(n, 10000u);
    }
    EXPECT_GT(n, 2u); // something has failed
}

/// What the work raises with its n-th allocation failing alone; `fired` tells whether there was one.
template <class TWork>
std::uint32_t RaisedWithFailure(unsigned int n, bool & fired, TWork const & work)
{
    return RaisedBy([&] {
        CFailingMemory const oneFailure(n, CFailingMemory::FailOne);
        struct SFired {
            ~SFired() { fired = memory.Fired(); }
            CFailingMemory const & memory;
            bool & fired;
        } const tell{oneFailure, fired};
        work();
    });
}

std::string LargeIni()
{
    std::string text = "; head\n";
    for (int i = 0; i != 60; ++i)
        text += "[s" + std::to_string(i) + "]\n;about\na=" + std::to_string(i) + ";more\nb=" + std::string(40, 'x') +
                ",y\n;behind\n";
    return text + "[long]\nc=" + std::string(3000, 'z') + " ;" + std::string(3000, 'w') + "\n";
}

class IniMemoryFaultTest : public MemoryFaultTest {
protected:
    bool IsLocked() const { return m_Directory.Exists("test.ini.lck"); }

    CTempDirectory m_Directory;
    std::string const m_Name = m_Directory.File("test.ini"); ///< made before allocations fail
};

TEST_F(IniMemoryFaultTest, AFileThatCannotBeReadWholeIsNotOpen)
{
    m_Directory.Write("test.ini", LargeIni());
    for (bool const forWriting : {false, true})
        SweepFailures([&](unsigned int n) {
            INI_Files::CIniFile file;
            bool fired = false;
            std::uint32_t const error =
                RaisedWithFailure(n, fired, [&] { forWriting ? file.Lock(m_Name, 0) : file.Read(m_Name, 0); });
            EXPECT_EQ(fired ? Errors::OutOfMemory : 0, error);
            EXPECT_EQ(fired ? 0u : forWriting ? 62u : 61u, file.Count());
            EXPECT_EQ(!fired && forWriting, IsLocked());
            return fired;
        });
}

TEST_F(IniMemoryFaultTest, AKeyThatCannotBeAddedOrSetLeavesTheOthers)
{
    std::vector<std::string> sections;
    for (int i = 0; i != 200; ++i)
        sections.push_back(std::to_string(i) + std::string(100, 's'));
    std::string const value(20000, 'v');
    m_Directory.Write("test.ini", "[s]\na=1\n");
    SweepFailures([&](unsigned int n) {
        INI_Files::CIniFile file;
        file.Lock(m_Name, 0);
        bool fired = false;
        std::uint32_t const error = RaisedWithFailure(n, fired, [&] {
            file["s"]["a"].SetValue(value);
            for (std::string const & section : sections)
                file[section]["b"].SetValue(value);
        });
        EXPECT_EQ(fired ? Errors::OutOfMemory : 0, error);
        EXPECT_EQ(1u, file["s"].Count());
        std::string text;
        file["s"]["a"].GetValue(text);
        EXPECT_TRUE(text == "1" || text == value);
        return fired;
    });
}

TEST_F(IniMemoryFaultTest, AFileIsWrittenWholeOrNotAtAll)
{
    std::string const before = LargeIni();
    m_Directory.Write("test.ini", before);
    SweepFailures([&](unsigned int n) {
        INI_Files::CIniFile file;
        file.Lock(m_Name, 0);
        file["new"]["key"].SetValue("value");
        bool fired = false;
        std::uint32_t const error = RaisedWithFailure(n, fired, [&] { file.Flush(0); });
        EXPECT_EQ(fired ? Errors::OutOfMemory : 0, error);
        EXPECT_FALSE(IsLocked());
        std::string const after = m_Directory.Read("test.ini");
        if (fired)
            EXPECT_EQ(before, after);
        else
            EXPECT_NE(std::string::npos, after.find("[new]\r\n key = value\r\n"));
        return fired;
    });
}

TEST_F(IniMemoryFaultTest, AListThatCannotGrowKeepsItsValuesOrIsEmpty)
{
    std::string const value(300, 'v');
    std::string const longValue(2000, 'w');
    for (bool const onHeap : {false, true}) {
        INI_Files::CIniList list;
        list.AddValue(value);
        if (onHeap) list.AddValue(value);
        std::size_t const count = list.Count();
        EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] {
                      CFailingMemory const noMemory(1, CFailingMemory::FailOne);
                      list.AddValue(longValue);
                  }));
        EXPECT_EQ(onHeap ? 0u : count, list.Count());
        list.AddValue("last");
        std::string last;
        list[list.Count() - 1].GetValue(last);
        EXPECT_EQ("last", last);
        EXPECT_EQ(onHeap ? 1u : count + 1, list.Count());
    }
}

// Language files

class LanguageMemoryFaultTest : public MemoryFaultTest {
protected:
    LanguageMemoryFaultTest() { Misc::pVlkApp->SetNlsSearchPath(m_Directory.File("")); }
    ~LanguageMemoryFaultTest() override
    {
        Misc::pVlkApp->SetNlsSearchPath("");
        CCurrentThread().SetLngId(0);
    }

    CTempDirectory m_Directory;
};

std::string Number(std::uint32_t value)
{
    return {static_cast<char>(value >> 24), static_cast<char>(value >> 16), static_cast<char>(value >> 8),
            static_cast<char>(value)};
}

TEST_F(LanguageMemoryFaultTest, TextsThatCannotBeLoadedAreLoadedWhenTheyAreAskedForAgain)
{
    constexpr unsigned int german = 0x6465;
    static constexpr char const * standard[] = {"one"};
    m_Directory.Write("test.nls", Number(0x25031961) + Number(1) + Number(1) + Number(german) + Number(60) + Number(5) +
                                      Number(0) + std::string(32, 'n') + std::string("eins\0", 5));
    using Language_Support::CLanguageStrg;
    using Language_Support::CLanguageSupport;
    CLanguageSupport::CLngFile file("test.nls", CLanguageSupport::Default_Language_ID, "utf-8", 1, standard, 1);
    EXPECT_STREQ("one", CLanguageStrg(file.GetLngData(), 0).Native());
    CCurrentThread().SetLngId(german);
    EXPECT_EQ(Errors::OutOfMemory, RaisedBy([&] {
                  CFailingMemory const noMemory(1, CFailingMemory::FailOne);
                  file.GetLngData();
              }));
    EXPECT_STREQ("eins", CLanguageStrg(file.GetLngData(), 0).Native());
}

} // namespace
