// Files that wait for the machine's next start.
#include "machine/system/restart.h"

#include "support/machine_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class RestartTest : public MachineTest {};

TEST_F(RestartTest, WithNothingThatWaitsDoesNothing) {
    for (const char* system : {"win98", "xp"}) {
        Start(system);
        EXPECT_THAT(simulated::Restart(Machine()), IsEmpty());
    }
}

TEST_F(RestartTest, PlacesWhatTheSetupApiLeftOnBothFamilies) {
    for (const char* system : {"win98", "xp"}) {
        Start(system);
        WriteFileOn(Machine(), "C:\\new.dll", "new");
        WriteFileOn(Machine(), "C:\\old.dll", "old");
        {
            const auto held = Machine().Files().HoldOpen("C:\\old.dll", FILE_SHARE_READ);
            BOOL wasInUse = FALSE;
            EXPECT_TRUE(Platform().SetupInstallFileExA(nullptr, nullptr, "C:\\new.dll", nullptr, "C:\\old.dll",
                                                       SP_COPY_SOURCE_ABSOLUTE | SP_COPY_FORCE_IN_USE, nullptr, nullptr,
                                                       &wasInUse));
            EXPECT_TRUE(wasInUse);
        }
        EXPECT_TRUE(Machine().System().restartPending);
        EXPECT_EQ(ReadFileOn(Machine(), "C:\\old.dll"), "old");
        const std::vector<simulated::RestartStep> steps = simulated::Restart(Machine());
        ASSERT_THAT(steps, SizeIs(1)) << system;
        EXPECT_EQ(steps[0].code, 0u);
        EXPECT_EQ(steps[0].target, "C:\\old.dll");
        EXPECT_EQ(ReadFileOn(Machine(), "C:\\old.dll"), "new");
        EXPECT_FALSE(Machine().System().restartPending);
        EXPECT_THAT(simulated::Restart(Machine()), IsEmpty());
        Test().Reopen();
        EXPECT_FALSE(Machine().System().restartPending);
    }
}

TEST_F(RestartTest, DeletesByNulInAnyCaseAndByTheWholeNameAlone) {
    for (const char* target : {"NUL", "nul", "Nul"}) {
        Start("win98");
        WriteFileOn(Machine(), "C:\\b", "b");
        WriteFileOn(Machine(), "C:\\WINDOWS\\wininit.ini", std::string("[Rename]\r\n") + target + "=C:\\b\r\n");
        const std::vector<simulated::RestartStep> steps = simulated::Restart(Machine());
        ASSERT_THAT(steps, SizeIs(1)) << target;
        EXPECT_EQ(steps[0].target, "") << target;
        EXPECT_EQ(steps[0].code, 0u) << target;
        EXPECT_FALSE(Machine().Files().Exists("C:\\b")) << target;
    }
    WriteFileOn(Machine(), "C:\\b", "b");
    WriteFileOn(Machine(), "C:\\WINDOWS\\wininit.ini", "[rename]\r\nC:\\nul2=C:\\b\r\n");
    EXPECT_EQ(simulated::Restart(Machine())[0].target, "C:\\nul2");
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\nul2"), "b");
}

TEST_F(RestartTest, TellsAStepThatFailsAndForgetsIt) {
    Start("win98");
    WriteFileOn(Machine(), "C:\\WINDOWS\\wininit.ini",
                "[rename]\r\nC:\\a.dll=C:\\missing.dll\r\nnonsense\r\nNUL=C:\\b\r\n");
    WriteFileOn(Machine(), "C:\\b", "b");
    const std::vector<simulated::RestartStep> steps = simulated::Restart(Machine());
    ASSERT_THAT(steps, SizeIs(2));
    EXPECT_EQ(steps[0].code, DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(steps[1].code, 0u);
    EXPECT_FALSE(Machine().Files().Exists("C:\\b"));
    EXPECT_THAT(simulated::Restart(Machine()), IsEmpty());
}

}  // namespace
}  // namespace pikel
