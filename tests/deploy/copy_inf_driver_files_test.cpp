#include "deploy/copy_inf_driver_files.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "printer_inf.h"
#include "support/calls.h"

namespace pikel {

namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::Ge;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::StartsWith;

using Lines = std::vector<std::string>;

const HWND kOwner = reinterpret_cast<HWND>(0x11);
const HWND kProgress = reinterpret_cast<HWND>(0x22);

/// The steps of the copy, in the order of their platform calls.
const Lines kSteps = {"SetupOpenInfFileA",
                      "SetupSetDirectoryIdA",
                      "SetupOpenFileQueue",
                      "SetupInitDefaultQueueCallbackEx",
                      "SetupInstallFilesFromInfSectionA",
                      "SetupCommitFileQueueA",
                      "SetupInstallFileExA",
                      "SetupInstallFromInfSectionA",
                      "SetupTermDefaultQueueCallback",
                      "SetupCloseFileQueue",
                      "SetupCloseInfFile"};

/// A callback of the caller: counts, and leaves the work to the system's own.
int g_notifications = 0;
UINT CALLBACK CountNotifications(PVOID context, UINT notification, UINT_PTR param1, UINT_PTR param2) {
    ++g_notifications;
    EXPECT_NE(context, nullptr);
    return Platform().SetupDefaultQueueCallbackA(context, notification, param1, param2);
}

class CopyTest : public MachineTest {
  protected:
    CopyTest() { Begin("xp"); }
    void Begin(const std::string& system) {
        Start(system);
        PutAuroraPackage(Machine());
        ForgetCalls(Test());
        g_notifications = 0;
    }
    DWORD Copy(LPCSTR model = "Aurora 500") {
        const bool is9x = Machine().Is9x();
        return CopyFor(is9x ? 1 : 3, model);
    }
    DWORD CopyFor(DWORD architecture, LPCSTR model = "Aurora 500", LPCSTR path = kAuroraPath,
                  PSP_FILE_CALLBACK_A callback = &CountNotifications) {
        return PI_CopyInfDriverFiles(path, model, callback, architecture, 5, 1, kOwner, kProgress);
    }
    bool Exists(const std::string& path) { return Machine().Files().Exists(path); }
    std::string InSystem(const std::string& name) { return Machine().System().systemDirectory + "\\" + name; }
    std::string InDrivers(const std::string& rest) { return InSystem("spool\\drivers\\" + rest); }
    std::string Model() { return Machine().Registry().Text("HKLM\\SOFTWARE\\Nordlicht\\Aurora", "Model"); }
};

class CopyInf : public CopyTest {};

class CopyInfOnEverySystem : public CopyTest, public ::testing::WithParamInterface<std::string> {
  protected:
    CopyInfOnEverySystem() { Begin(GetParam()); }
};
INSTANTIATE_ON_EVERY_SYSTEM(CopyInfOnEverySystem);

// ---- the whole road -------------------------------------------------------------------------------------------------

TEST_P(CopyInfOnEverySystem, GoesThroughItsStepsInOrder) {
    EXPECT_EQ(Copy(), 0u);
    Lines expected = {"SetupOpenInfFileA"};
    // One for each identifier: 11 and 23 on 9x; 23, 12345, 66000 and 66003 elsewhere.
    for (int i = 0; i < (Machine().Is9x() ? 2 : 4); ++i) {
        expected.push_back("SetupSetDirectoryIdA");
    }
    for (const char* step : {"SetupOpenFileQueue", "SetupInitDefaultQueueCallbackEx",
                             "SetupInstallFilesFromInfSectionA", "SetupCommitFileQueueA"}) {
        expected.push_back(step);
    }
    if (!Machine().Is9x() && GetParam() != "other") {
        expected.push_back("SetupInstallFileExA");  // the monitor's file, on the NT family alone
    }
    for (const char* step :
         {"SetupInstallFromInfSectionA", "SetupTermDefaultQueueCallback", "SetupCloseFileQueue", "SetupCloseInfFile"}) {
        expected.push_back(step);
    }
    EXPECT_THAT(Test().TakeCallNames(kSteps), ElementsAreArray(expected));
}

TEST_P(CopyInfOnEverySystem, PutsTheFilesWhereTheInfSays) {
    EXPECT_EQ(Copy(), 0u);
    EXPECT_THAT(g_notifications, Ge(1));
    EXPECT_EQ(Model(), "A500");
    if (Machine().Is9x()) {
        EXPECT_TRUE(Exists(InSystem("NLAUR9X.DRV")));
        EXPECT_TRUE(Exists(InSystem("A500.DAT")));
        EXPECT_TRUE(Exists(InSystem("Color\\NLA500A.ICC")));
        return;
    }
    EXPECT_EQ(ReadFileOn(Machine(), InDrivers("W32X86\\NLAURORA.DLL")), "NLAURORA.DLL");
    EXPECT_EQ(ReadFileOn(Machine(), InDrivers("W32X86\\NLLOCAL.DLL")), "NLRES_DE.DLL") << "copied under another name";
    EXPECT_TRUE(Exists(InDrivers("W32X86\\NLRES_EN.DLL")));
    // The Setup API keeps the identifiers below 32768 to itself.
    EXPECT_TRUE(Exists(InDrivers("color\\NLDISP.ICC")));
    EXPECT_EQ(Exists(InSystem("NLMON.DLL")), GetParam() != "other");
}

TEST_F(CopyInf, CallsTheSetupApiWithTheseArguments) {
    EXPECT_EQ(Copy(), 0u);
    const std::string drivers = "\"C:\\\\WINDOWS\\\\system32\\\\spool\\\\drivers\\\\W32X86";
    Lines calls = TakeCallsOf(Test(), kSteps);
    ASSERT_EQ(calls.size(), 14u);
    EXPECT_THAT(calls[0], StartsWith("SetupOpenInfFileA(\"C:\\\\Package\\\\aurora.inf\", null, 0x2, &) = 0x"));
    EXPECT_THAT(calls[1], HasSubstr(", 0x17, " + drivers + "\\\\0\\\\Color\")"));
    EXPECT_THAT(calls[2], HasSubstr(", 0x3039, \"\")"));
    EXPECT_THAT(calls[3], HasSubstr(", 0x101d0, " + drivers + "\")"));
    EXPECT_THAT(calls[4], HasSubstr(", 0x101d3, \"C:\\\\WINDOWS\\\\system32\\\\spool\\\\drivers\\\\color\")"));
    EXPECT_THAT(calls[5], StartsWith("SetupOpenFileQueue() = 0x"));
    EXPECT_THAT(calls[6], StartsWith("SetupInitDefaultQueueCallbackEx(0x11, 0x22, 0x0, 0x0, null) = "));
    EXPECT_THAT(calls[7], MatchesRegex("SetupInstallFilesFromInfSectionA\\(0x[0-9a-f]+, null, 0x[0-9a-f]+, \"A500\", "
                                       "\"C:\\\\+Package\", 0x2000\\) = 0x1"));
    EXPECT_THAT(calls[8], StartsWith("SetupCommitFileQueueA(0x11, 0x"));
    EXPECT_THAT(calls[9], MatchesRegex("SetupInstallFileExA\\(0x[0-9a-f]+, null, \"NLMON.DLL\", \"C:\\\\+Package\", "
                                       "\"C:\\\\+WINDOWS\\\\+system32\\\\+NLMON.DLL\", 0x4, &, .*, &\\) = 0x1"));
    EXPECT_THAT(calls[10], MatchesRegex("SetupInstallFromInfSectionA\\(null, 0x[0-9a-f]+, \"A500\", 0x4, null, null, "
                                        "0x0, null, null, null, null\\) = 0x1"));
}

TEST_F(CopyInf, HandsCallbackAndContextToTheQueueAndToTheMonitorsFile) {
    struct Given {
        PSP_FILE_CALLBACK_A callback;
        PVOID context;
    };
    static Given queue, file;
    static PlatformTable before;
    before = Platform();
    ReplacedOperations replaced;
    replaced.table.SetupCommitFileQueueA = [](HWND owner, HSPFILEQ handle, PSP_FILE_CALLBACK_A callback,
                                              PVOID context) -> BOOL {
        queue = {callback, context};
        return before.SetupCommitFileQueueA(owner, handle, callback, context);
    };
    replaced.table.SetupInstallFileExA = [](HINF, PINFCONTEXT, PCSTR, PCSTR, PCSTR, DWORD, PSP_FILE_CALLBACK_A callback,
                                            PVOID context, PBOOL) -> BOOL {
        file = {callback, context};
        return TRUE;
    };
    for (PSP_FILE_CALLBACK_A callback : {&CountNotifications, static_cast<PSP_FILE_CALLBACK_A>(nullptr)}) {
        queue = file = {};
        EXPECT_EQ(CopyFor(3, "Aurora 500", kAuroraPath, callback), 0u);
        EXPECT_EQ(queue.callback, callback != nullptr ? callback : replaced.table.SetupDefaultQueueCallbackA)
            << "the queue needs some callback";
        EXPECT_EQ(file.callback, callback);
        EXPECT_NE(queue.context, nullptr);
        EXPECT_EQ(queue.context, file.context);
    }
}

TEST_F(CopyInf, WithoutACallbackUsesTheSystemsOwn) {
    EXPECT_EQ(CopyFor(3, "Aurora 500", kAuroraPath, nullptr), 0u);
    EXPECT_TRUE(Exists(InDrivers("W32X86\\NLAURORA.DLL")));
    EXPECT_TRUE(Exists(InSystem("NLMON.DLL")));
}

// ---- directories ----------------------------------------------------------------------------------------------------

TEST_F(CopyInf, FilesGoToTheDriverDirectoryOfTheChosenArchitecture) {
    struct Case {
        DWORD architecture;
        const char* folder;
    };
    for (const Case& c : {Case{1, "WIN40"}, Case{2, "W32X86"}, Case{3, "W32X86"}, Case{4, "IA64"}, Case{5, "x64"}}) {
        SCOPED_TRACE(c.architecture);
        Begin("xp");
        EXPECT_EQ(CopyFor(c.architecture), 0u);
        EXPECT_TRUE(Exists(InDrivers(c.folder + std::string("\\NLAURORA.DLL"))));
    }
}

TEST_F(CopyInf, UnknownArchitectureIsNotRefusedAndMeansTheRunningSystem) {
    EXPECT_EQ(CopyFor(7), 0u);
    EXPECT_THAT(TakeCallsOf(Test(), {"GetPrinterDriverDirectoryA"}), Not(IsEmpty()));
    EXPECT_TRUE(Exists(InDrivers("W32X86\\NLAURORA.DLL")));
    EXPECT_EQ(CopyFor(7), 0u);
    EXPECT_THAT(TakeCallsOf(Test(), {"GetPrinterDriverDirectoryA"}),
                testing::Each(StartsWith("GetPrinterDriverDirectoryA(null, null, 0x1, ")));
}

TEST_F(CopyInf, DirectoryThatCannotBeToldIsSetAsAnEmptyPath) {
    faults::FailCall("GetPrinterDriverDirectoryA", 1, 1722, true);
    faults::FailCall("GetColorDirectoryA", 1, 2);
    faults::FailCall("SetupSetDirectoryIdA", 2, 87);
    Copy();
    Lines calls = TakeCallsOf(Test(), {"SetupSetDirectoryIdA", "SetupOpenFileQueue"});
    ASSERT_EQ(calls.size(), 5u);
    EXPECT_THAT(calls[0], HasSubstr(", 0x17, \"\")"));
    EXPECT_THAT(calls[1], HasSubstr(", 0x3039, \"\") = 0x0 failed, last error 87"));
    EXPECT_THAT(calls[2], HasSubstr(", 0x101d0, \"\")"));
    EXPECT_THAT(calls[3], HasSubstr(", 0x101d3, \"\")"));
}

TEST_F(CopyInf, SourceIsWhatStandsBeforeTheLastBackslash) {
    struct Case {
        const char* path;
        const char* source;
    };
    WriteFileOn(Machine(), "C:\\WINDOWS\\inf\\aurora.inf", kAuroraInf);
    WriteFileOn(Machine(), "C:\\root.inf", kAuroraInf);
    for (const Case& c :
         {Case{"C:\\Package\\aurora.inf", "\"C:\\\\Package\""}, Case{"C:\\root.inf", "\"C:\""},
          Case{"aurora.inf", "\"aurora.inf\""}, Case{"C:/Package/aurora.inf", "\"C:/Package/aurora.inf\""}}) {
        SCOPED_TRACE(c.path);
        CopyFor(3, "Aurora 500", c.path);
        Lines calls = TakeCallsOf(Test(), {"SetupInstallFilesFromInfSectionA"});
        ASSERT_EQ(calls.size(), 1u);
        EXPECT_THAT(calls[0], HasSubstr(std::string("\"A500\", ") + c.source + ", 0x2000)"));
    }
}

// ---- the monitor's file ---------------------------------------------------------------------------------------------

TEST_F(CopyInf, MonitorsFileThatFailsIsLoggedAndEndsNothing) {
    faults::FailCall("SetupInstallFileExA", 1, 32);
    Test().TurnLogOn(1);
    EXPECT_EQ(Copy(), 0u);
    EXPECT_THAT(Test().TakeLog(), Contains("SetupInstallFileEx Error:32"));
    EXPECT_EQ(Model(), "A500") << "the registry part comes all the same";
}

TEST_F(CopyInf, MonitorsFileThatIsNewerIsKeptWithoutALine) {
    faults::FailCall("SetupInstallFileExA", 1, 0);
    Test().TurnLogOn(1);
    EXPECT_EQ(Copy(), 0u);
    EXPECT_THAT(Test().TakeLog(), Not(Contains(StartsWith("SetupInstallFileEx"))));
}

TEST_F(CopyInf, ModelWithoutAMonitorSkipsItsFile) {
    EXPECT_EQ(Copy("Aurora Plain"), 0u);
    EXPECT_THAT(Test().TakeCallNames({"SetupInstallFileExA", "SetupInstallFromInfSectionA"}),
                ElementsAre("SetupInstallFromInfSectionA"));
    EXPECT_TRUE(Exists(InDrivers("W32X86\\NLPLAIN.DLL")));
}

// ---- failures -------------------------------------------------------------------------------------------------------

TEST_F(CopyInf, RequiresPathAndModel) {
    Test().TurnLogOn();
    EXPECT_EQ(CopyFor(3, "Aurora 500", nullptr), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(CopyFor(3, nullptr), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_F(CopyInf, ObjectRequiresTheModelAfterTheInfIsOpen) {
    InfHelper::CInfPrinter printer;
    EXPECT_EQ(printer.CopyInfDriverFiles(kAuroraPath, nullptr, &CountNotifications, 3, 5, 1, kOwner, kProgress),
              DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_THAT(Test().TakeCallNames(kSteps), ElementsAre("SetupOpenInfFileA", "SetupCloseInfFile"));
}

TEST_F(CopyInf, InfThatCannotBeOpenedGivesItsCodeAndNothingElseIsDone) {
    Test().TurnLogOn();
    EXPECT_EQ(CopyFor(3, "Aurora 500", "C:\\Package\\missing.inf"), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_CopyInfDriverFiles Start", "InfHelper::CInfPrinter::CopyInfDriverFiles() - Start",
                            "InfHelper::CInfPrinter::CopyInfDriverFiles() - End(2)", "PI_CopyInfDriverFiles End(2)"));
    EXPECT_THAT(Test().TakeCallNames(kSteps), ElementsAre("SetupOpenInfFileA"));
}

TEST_F(CopyInf, NullHandleOfTheInfIsRefused) {
    ReplacedOperations replaced;
    replaced.table.SetupOpenInfFileA = [](PCSTR, PCSTR, DWORD, PUINT) -> HINF { return nullptr; };
    EXPECT_EQ(Copy(), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_THAT(Test().TakeCallNames(kSteps), IsEmpty());
}

TEST_F(CopyInf, SectionsThatCannotBeReadGiveTheirCode) {
    struct Case {
        const char* text;
        const char* model;
        DWORD code;
    };
    const std::string version = "[Version]\nSignature=\"$Windows NT$\"\n";
    const std::string noManufacturer = version + "[NORD]\n\"Aurora 500\"=A500\n[DestinationDirs]\nA=66000\n";
    const std::string noDirectories = version + "[Manufacturer]\nN=NORD\n[NORD]\n\"Aurora 500\"=A500\n[A500]\n";
    for (const Case& c : {Case{noManufacturer.c_str(), "Aurora 500", ERROR_LINE_NOT_FOUND},
                          Case{noDirectories.c_str(), "Aurora 900", ERROR_INTERNAL_ERROR},
                          Case{noDirectories.c_str(), "Aurora 500", ERROR_LINE_NOT_FOUND}}) {
        SCOPED_TRACE(c.text);
        WriteFileOn(Machine(), "C:\\Package\\other.inf", c.text);
        ForgetCalls(Test());
        EXPECT_EQ(CopyFor(3, c.model, "C:\\Package\\other.inf"), c.code);
        EXPECT_THAT(Test().TakeCallNames(kSteps), ElementsAre("SetupOpenInfFileA", "SetupCloseInfFile"));
    }
}

TEST_F(CopyInf, StepThatFailsGivesItsCodeAndWhatExistsIsReleasedInReverseOrder) {
    struct Case {
        const char* step;
        Lines after;  ///< what still comes behind the failed call
    };
    const Lines closeInf = {"SetupCloseInfFile"};
    const Lines closeQueue = {"SetupCloseFileQueue", "SetupCloseInfFile"};
    const Lines closeAll = {"SetupTermDefaultQueueCallback", "SetupCloseFileQueue", "SetupCloseInfFile"};
    for (const Case& c : {Case{"SetupOpenFileQueue", closeInf}, Case{"SetupInitDefaultQueueCallbackEx", closeQueue},
                          Case{"SetupInstallFilesFromInfSectionA", closeAll}, Case{"SetupCommitFileQueueA", closeAll},
                          Case{"SetupInstallFromInfSectionA", closeAll}}) {
        SCOPED_TRACE(c.step);
        Begin("xp");
        faults::FailCall(c.step, 1, 1167);
        EXPECT_EQ(Copy(), 1167u);
        Lines calls = Test().TakeCallNames(kSteps);
        auto failed = std::find(calls.begin(), calls.end(), c.step);
        ASSERT_NE(failed, calls.end());
        EXPECT_THAT(Lines(failed + 1, calls.end()), ElementsAreArray(c.after));
    }
}

TEST_F(CopyInf, StepThatFailsIsToldByTheEndLines) {
    faults::FailCall("SetupCommitFileQueueA", 1, 1223);
    Test().TurnLogOn();
    EXPECT_EQ(Copy(), 1223u);
    Lines log = Test().TakeLog();
    ASSERT_GE(log.size(), 4u);
    EXPECT_EQ(log[0], "PI_CopyInfDriverFiles Start");
    EXPECT_EQ(log[1], "InfHelper::CInfPrinter::CopyInfDriverFiles() - Start");
    EXPECT_EQ(log[log.size() - 2], "InfHelper::CInfPrinter::CopyInfDriverFiles() - End(1223)");
    EXPECT_EQ(log.back(), "PI_CopyInfDriverFiles End(1223)");
}

TEST_F(CopyInf, PlainLogHasNothingToTellOfASuccess) {
    Test().TurnLogOn(1);
    EXPECT_EQ(Copy("Aurora Plain"), 0u);
    for (const std::string& line : Test().TakeLog()) {
        EXPECT_THAT(line, Not(HasSubstr("CopyInfDriverFiles")));
    }
}

TEST_F(CopyInf, FilesCopiedBeforeAFailureStay) {
    faults::FailCall("SetupInstallFromInfSectionA", 1, 1010);
    EXPECT_EQ(Copy(), 1010u);
    EXPECT_TRUE(Exists(InDrivers("W32X86\\NLAURORA.DLL")));
    EXPECT_TRUE(Exists(InSystem("NLMON.DLL")));
    EXPECT_EQ(Model(), "");
}

TEST_F(CopyInf, SurvivesTheFailureOfAnyCall) {
    std::size_t before = faults::CallCount();
    ASSERT_EQ(Copy(), 0u);
    std::size_t count = faults::CallCount() - before;
    for (std::size_t nth = 1; nth <= count; ++nth) {
        faults::Reset();
        faults::FailNth(nth, 31);
        Copy();
        EXPECT_EQ(Machine().Handles().OpenCount(), 0u) << nth;
        EXPECT_EQ(Machine().Heap().OpenCount(), 0u) << nth;
    }
}

}  // namespace

}  // namespace pikel
