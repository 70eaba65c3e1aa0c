// Monitors and the service: whose outcome the result is, the level of the verdict, and the version that two files are
// held against each other by.
#include <algorithm>
#include <string>
#include <vector>

#include "driver/file_use.h"
#include "driver/language_monitor.h"
#include "driver/monitor_file.h"
#include "support/calls.h"
#include "support/pe_file.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;

class MonitorOutcome : public MachineTest {
  protected:
    std::string Target() { return Machine().System().systemDirectory + "\\a.dll"; }
    void Begin() {
        Start("xp");
        WriteFileOn(Machine(), "C:\\new\\a.dll", MakePeFile("2.0"));
        WriteFileOn(Machine(), Target(), MakePeFile("1.0"));
        faults::Reset();
        Test().TurnLogOn(1);
    }
    DWORD Copy() {
        DWORD reboot = 7;
        const DWORD code = DoCopyMointorFile("C:\\new", "a.dll/", &reboot);
        EXPECT_EQ(reboot, 0u);
        return code;
    }
};

TEST_F(MonitorOutcome, FailedStartLeavesTheCodeOfTheCopy) {
    Begin();
    const auto held = Machine().Files().HoldOpen(Target(), FILE_SHARE_READ);
    faults::FailCall("StartServiceA", 1, 1058);
    EXPECT_EQ(Copy(), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_THAT(Test().TakeLog(), Contains("Service(Spooler).Start Error(1058)"));
}

TEST_F(MonitorOutcome, FailedOpeningForTheStartLeavesTheCodeOfTheCopy) {
    Begin();
    Test().TakeCalls();
    EXPECT_EQ(Copy(), 0u);
    // How often the manager is opened for the stop, that is before the copy.
    const std::vector<std::string> calls = Test().TakeCallNames({"OpenSCManagerA", "CopyFileA"});
    const auto opened = static_cast<std::size_t>(std::ranges::find(calls, "CopyFileA") - calls.begin());
    Begin();
    const auto held = Machine().Files().HoldOpen(Target(), FILE_SHARE_READ);
    faults::FailCall("OpenSCManagerA", opened + 1, 5, true);
    EXPECT_EQ(Copy(), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_THAT(Test().TakeLog(), Contains("Service(Spooler).Open Error(5)"));
}

TEST_F(MonitorOutcome, FailedStopLeavesTheOutcomeToTheCopy) {
    Begin();
    faults::FailCall("ControlService", 1, 1052, true);
    EXPECT_EQ(Copy(), 0u);
    EXPECT_THAT(Test().TakeLog(), Contains("Service(Spooler).Stop Error(1052)"));
    EXPECT_EQ(Machine().Files().Read(Target()), MakePeFile("2.0"));
    EXPECT_THAT(Test().TakeCallNames({"StartServiceA"}), ::testing::IsEmpty()) << "what wasn't stopped isn't started";
}

// ---- the verdict ----------------------------------------------------------------------------------------------------

TEST_F(MonitorOutcome, VerdictOfAMonitorStandsInThePlainLog) {
    char name[] = "Aurora Monitor";
    char dll[] = "nlmon.dll";
    MONITOR_INFO_2A info = {name, nullptr, dll};
    const std::string path = Machine().System().systemDirectory + "\\nlmon.dll";
    WriteFileOn(Machine(), path, MakePeFile("1.0"));
    Test().TurnLogOn(1);
    {
        const auto held = Machine().Files().HoldOpen(path, FILE_SHARE_READ);
        EXPECT_EQ(AddLanguageMonitor(&info), 0u);
    }
    EXPECT_THAT(Test().TakeLog(), ElementsAre("...Monitor(" + path + ") is used"));
}

// ---- versions -------------------------------------------------------------------------------------------------------

TEST_F(MonitorOutcome, ComparisonTakesTheFileVersionOfBothFiles) {
    PeVersion version;
    const auto put = [&](const char* path, const char* fileVersion, const char* productVersion) {
        version.texts = {{"FileVersion", fileVersion}, {"ProductVersion", productVersion}};
        WriteFileOn(Machine(), path, MakePeFile(version));
        Machine().Files().SetWrittenAt(path, {0, 29000000});
    };
    const struct {
        const char* source[2];
        const char* target[2];
        INT result;
    } cases[] = {{{"1.5", "1.5"}, {"2.0", "1.0"}, -1},
                 {{"1.5", "1.5"}, {"1.0", "2.0"}, 1},
                 {{"2.0", "1.0"}, {"1.5", "1.5"}, 1},
                 {{"1.0", "2.0"}, {"1.5", "1.5"}, -1},
                 {{"1.5", "1.0"}, {"1.5", "2.0"}, 0}};
    for (const auto& one : cases) {
        put("C:\\source.dll", one.source[0], one.source[1]);
        put("C:\\target.dll", one.target[0], one.target[1]);
        INT result = 99;
        EXPECT_EQ(CompareFileVersion("C:\\source.dll", "C:\\target.dll", result), 0u);
        EXPECT_EQ(result, one.result) << one.source[0] << " and " << one.target[0];
    }
}

}  // namespace
}  // namespace pikel
