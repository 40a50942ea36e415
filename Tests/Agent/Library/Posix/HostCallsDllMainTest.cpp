// Here the host calls DllMain, and may do so again while the library stays loaded.

#include "Tests/Agent/Library/LibraryFixture.h"

namespace {

TEST_F(LibraryTest, AttachAndDetachWithoutAStartLeaveNothing)
{
    std::uint32_t handles = 0;
    for (int i = 0; i < 5; ++i) {
        {
            CLoadedExtension extension(KXRA_LIBRARY);
            EXPECT_EQ(1, extension.dllMain(nullptr, DLL_PROCESS_ATTACH, nullptr));
            EXPECT_EQ(1, extension.dllMain(nullptr, DLL_PROCESS_DETACH, nullptr));
        }
        EXPECT_FALSE(IsLoaded(KXRA_LIBRARY));
        if (i == 0) handles = Handles();
    }
    EXPECT_EQ(handles, Handles());
}

TEST_F(LibraryTest, ALibraryThatStaysLoadedIsAttachedAgain)
{
    CLoadedExtension extension(KXRA_FAST_LIBRARY);
    for (int i = 0; i < 3; ++i) {
        CSession session(extension);
        CRawConnection connection = peer.AcceptAgent();
        ASSERT_TRUE(Flag(connection, 0x2));
        ASSERT_TRUE(Serve(connection, 1, AnswerOf(1, 0)));
        EXPECT_TRUE(HoldsWithin(kDeadline, [&] { return session.Get(std::string(kRoot) + ".1.3.1.0").status == 0; }));
        connection.ShutdownSend();
    }
}

} // namespace
