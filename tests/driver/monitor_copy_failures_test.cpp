// Copies of monitors' DLLs that run into something: a copy and its delay that both fail, paths that are too long, a
// source that is missing, a spooler that doesn't run.
#include <algorithm>
#include <string>
#include <vector>

#include "driver/monitor_file.h"
#include "machine/services/services.h"
#include "support/calls.h"
#include "support/pe_file.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;

class MonitorCopy : public MachineTest {
  protected:
    void Put(const std::string& name, const std::string& version) {
        WriteFileOn(Machine(), "C:\\new\\" + name, MakePeFile(version));
    }
    void PutOnSystem(const std::string& name, const std::string& version) {
        WriteFileOn(Machine(), Target(name), MakePeFile(version));
    }
    std::string Target(const std::string& name) { return Machine().System().systemDirectory + "\\" + name; }
    DWORD Copy(const std::string& list) { return DoCopyMointorFile("C:\\new", list.c_str(), &m_reboot); }
    /// A name whose path in the system directory has this length.
    std::string NameOfPath(std::size_t length) { return std::string(length - Target("").size(), 'x'); }

    DWORD m_reboot = 7;
};

TEST_F(MonitorCopy, On9xThatFailsAndCannotBeDelayedEitherEndsTheWalkWithTheDelaysCode) {
    Start("win98");
    for (const char* name : {"a.dll", "b.dll"}) {
        Put(name, "2.0");
        PutOnSystem(name, "1.0");
    }
    faults::FailCall("CopyFileA", 1, 5);
    faults::FailCall("CopyFileA", 2, 112);  // to the file that waits
    Test().TurnLogOn();
    EXPECT_EQ(Copy("a.dll/b.dll/"), 112u);
    EXPECT_EQ(m_reboot, 1u);
    const std::vector<std::string> log = Test().TakeLog();
    EXPECT_THAT(
        log,
        IsSupersetOf({"CopyMonitorFile9x Monitor is not use", "CopyMonitorFile9x CopyFile() Error Code is 5",
                      "CopyMonitorFile9x RenameFileAndRegister9x() Error Code is 112", "CopyMonitorFile9x End(112)"}));
    EXPECT_THAT(log, Not(Contains("CopyMonitorFile9x Monitor is b.dll")));
    EXPECT_EQ(ReadFileOn(Machine(), Target("b.dll")), MakePeFile("1.0"));
    EXPECT_FALSE(Machine().Files().Exists("C:\\WINDOWS\\wininit.ini"));
}

TEST_F(MonitorCopy, On9xOfAMissingSourceCountsAsNewerAndEndsWithTheDelaysCode) {
    Start("win98");
    Put("b.dll", "2.0");
    PutOnSystem("a.dll", "1.0");
    Test().TurnLogOn();
    EXPECT_EQ(Copy("a.dll/b.dll/"), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(m_reboot, 1u) << "the flag is set before the delay is tried";
    const std::vector<std::string> log = Test().TakeLog();
    EXPECT_THAT(log, IsSupersetOf({"CopyMonitorFile9x CopyFile() Error Code is 2",
                                   "CopyMonitorFile9x RenameFileAndRegister9x() Error Code is 2"}));
    EXPECT_THAT(log, Not(Contains("CopyMonitorFile9x Next File")));
    EXPECT_EQ(ReadFileOn(Machine(), Target("a.dll")), MakePeFile("1.0"));
    EXPECT_FALSE(Machine().Files().Exists(Target("b.dll")));
}

TEST_F(MonitorCopy, OnNtPassesOverAPathThatIsTooLongAndGoesOnBehindIt) {
    const std::string longest = NameOfPath(259);
    const std::string tooLong = NameOfPath(260);
    Put("a.dll", "2.0");
    Put("c.dll", "2.0");
    ForgetCalls(Test());
    EXPECT_EQ(Copy("a.dll/" + tooLong + "/c.dll/"), DWORD{ERROR_FILENAME_EXCED_RANGE})
        << "a file that is merely copied leaves the code alone";
    EXPECT_EQ(ReadFileOn(Machine(), Target("a.dll")), MakePeFile("2.0"));
    EXPECT_EQ(ReadFileOn(Machine(), Target("c.dll")), MakePeFile("2.0"));
    EXPECT_THAT(Test().TakeCallNames({"CopyFileA"}), ElementsAre("CopyFileA", "CopyFileA"));
    EXPECT_EQ(Copy(tooLong + "/c.dll/"), 0u) << "one that is compared clears it";
    EXPECT_EQ(Copy(longest + "/"), DWORD{ERROR_FILE_NOT_FOUND}) << "still a path, of a file that isn't there";
}

TEST_F(MonitorCopy, OnNtTakesTheSourcesLengthToo) {
    const std::string folder = "C:\\" + std::string(250, 'f');  // 253; a backslash and the name come behind it
    PutOnSystem("a.dll", "1.0");
    ForgetCalls(Test());
    EXPECT_EQ(DoCopyMointorFile(folder.c_str(), "a.dll/", &m_reboot), DWORD{ERROR_PATH_NOT_FOUND})
        << "259 bytes: a source that is missing";
    EXPECT_EQ(DoCopyMointorFile((folder + "f").c_str(), "a.dll/", &m_reboot), DWORD{ERROR_FILENAME_EXCED_RANGE});
}

TEST_F(MonitorCopy, OnNtSendsAStoppedSpoolerNoControlAndStartsItBehindTheCopies) {
    Put("a.dll", "2.0");
    PutOnSystem("a.dll", "1.0");
    for (const std::string& dependent : Machine().Services().Dependents("Spooler")) {
        Machine().Services().SetState(dependent, SERVICE_STOPPED);
    }
    Machine().Services().SetState("Spooler", SERVICE_STOPPED);
    ForgetCalls(Test());
    Test().TurnLogOn(1);
    EXPECT_EQ(Copy("a.dll/"), 0u);
    EXPECT_THAT(Test().TakeLog(), Not(Contains(::testing::StartsWith("Service("))));
    const std::vector<std::string> calls = Test().TakeCallNames({"ControlService", "StartServiceA", "CopyFileA"});
    EXPECT_THAT(calls, Not(Contains("ControlService")));
    ASSERT_GE(calls.size(), 2u);
    EXPECT_EQ(calls[0], "CopyFileA");
    EXPECT_EQ(calls[1], "StartServiceA");
    EXPECT_EQ(Machine().Services().State("Spooler"), SERVICE_RUNNING);
    EXPECT_EQ(ReadFileOn(Machine(), Target("a.dll")), MakePeFile("2.0"));
}

}  // namespace
}  // namespace pikel
