// Finding the installed INF of a driver.
#include "deploy/installed_inf.h"

#include "frame/pikel.h"
#include "support/inf_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace std::string_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

std::string InfOf(const LogLines& models) {
    std::string text = "[Version]\r\nSignature=\"$Windows NT$\"\r\nProvider=\"Northlight\"\r\nClass=Printer\r\n";
    if (models.empty()) {
        return text + "[Manufacturer]\r\nM=\r\n";
    }
    text += "[Manufacturer]\r\nM=M\r\n[M]\r\n";
    for (const std::string& model : models) {
        text += "\"" + model + "\"=I\r\n";
    }
    return text;
}

struct Result {
    DWORD status = 0;
    std::string name;
    bool operator==(const Result&) const = default;
};
void PrintTo(const Result& result, std::ostream* out) {
    *out << result.status << " \"" << result.name << '"';
}

class InstalledInf : public MachineTest {
  protected:
    Result Find(LPCSTR driver = "Laser", LPCSTR folder = "C:\\Infs\\", DWORD size = MAX_PATH) {
        char name[MAX_PATH] = "before";
        const DWORD status = DoGetInstalledInfName(driver, 3, 5, 1, folder, "Northlight", "Printer", name, size);
        return {status, name};
    }
    /// @param minute  of its last write
    void Write(const std::string& path, const LogLines& models, DWORD minute = 0) {
        WriteFileOn(Machine(), path, InfOf(models));
        Date(path, minute);
    }
    void Date(const std::string& path, DWORD minute) {
        EXPECT_EQ(Machine().Files().SetWrittenAt(path, FILETIME{minute * 600000000u, 0x01c80000}), 0u);
    }
    /// The lines that this operation writes itself.
    LogLines OwnLines() {
        LogLines own;
        for (const std::string& line : Test().TakeLog()) {
            for (const char* start : {"DoGetInstalledInfName", "DriverName:", "aDestINFList", "DriverList is",
                                      "Model:", "Installed InfFile:"}) {
                if (line.starts_with(start)) {
                    own.push_back(line);
                }
            }
        }
        return own;
    }
};

TEST_F(InstalledInf, IsTheNewestThatListsTheDriver) {
    Write("C:\\Infs\\a.inf", {"Laser"}, 1);
    Write("C:\\Infs\\b.inf", {"Ink", "Laser"}, 3);
    Write("C:\\Infs\\c.inf", {"Laser"}, 2);
    Write("C:\\Infs\\d.inf", {"Ink"}, 9);
    Test().TurnLogOn(2);
    EXPECT_EQ(Find(), (Result{0, "C:\\Infs\\b.inf"}));
    EXPECT_THAT(OwnLines(), ElementsAre("DoGetInstalledInfName Start", "DriverName:Laser", "Model:Laser", "Model:Ink",
                                        "Model:Laser", "Model:Laser", "Model:Ink", "Installed InfFile:C:\\Infs\\b.inf",
                                        "DoGetInstalledInfName End:0"));
}

TEST_F(InstalledInf, TheFirstOfTwoWithOneTimeStays) {
    Write("C:\\Infs\\a.inf", {"Laser"}, 2);
    Write("C:\\Infs\\b.inf", {"Laser"}, 2);
    EXPECT_EQ(Find(), (Result{0, "C:\\Infs\\a.inf"}));
}

TEST_F(InstalledInf, DriverNameMatchesInAnyCase) {
    Write("C:\\Infs\\a.inf", {"Ink", "LASER", "Zebra"});
    Test().TurnLogOn(2);
    EXPECT_EQ(Find("laser"), (Result{0, "C:\\Infs\\a.inf"}));
    const LogLines log = OwnLines();
    EXPECT_THAT(log, Contains("Model:LASER"));
    EXPECT_THAT(log, Not(Contains("Model:Zebra"))) << "the walk stops at the match";
}

TEST_F(InstalledInf, LogsAtDetailLevelAlone) {
    Write("C:\\Infs\\a.inf", {"Laser"});
    Test().TurnLogOn(1);
    Find();
    EXPECT_THAT(OwnLines(), IsEmpty());
}

TEST_F(InstalledInf, NoCandidateGives2AndLeavesTheNameAlone) {
    Test().TurnLogOn(2);
    EXPECT_EQ(Find(), (Result{2, "before"}));
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoGetInstalledInfName Start", "DriverName:Laser", "--- SearchINFFile start  ---",
                            "SetupGetInfFileList Success", "--- SearchINFFile End:0  ---", "aDestINFList is empty",
                            "DoGetInstalledInfName End:2"));
    faults::FailCall("SetupGetInfFileListA", 1, 1234);
    EXPECT_EQ(Find(), (Result{2, "before"})) << "the search's code is dropped";
}

TEST_F(InstalledInf, DriverInNoCandidateGivesAnEmptyName) {
    Write("C:\\Infs\\a.inf", {"Ink"});
    Test().TurnLogOn(2);
    EXPECT_EQ(Find(), (Result{0, ""}));
    EXPECT_THAT(OwnLines(), ElementsAre("DoGetInstalledInfName Start", "DriverName:Laser", "Model:Ink",
                                        "Installed InfFile:", "DoGetInstalledInfName End:0"));
    EXPECT_EQ(Find("Laser", "C:\\Infs\\", 1), (Result{0, ""}));
    EXPECT_EQ(Find("Laser", "C:\\Infs\\", 0), (Result{0, "before"}));
}

TEST_F(InstalledInf, CodeIsThatOfTheLastCandidate) {
    Write("C:\\Infs\\a.inf", {"Laser"});
    Write("C:\\Infs\\b.inf", {});
    Test().TurnLogOn(2);
    EXPECT_EQ(Find(), (Result{2, "C:\\Infs\\a.inf"})) << "found, all the same";
    EXPECT_THAT(OwnLines(),
                ElementsAre("DoGetInstalledInfName Start", "DriverName:Laser", "Model:Laser", "DriverList is empty",
                            "Installed InfFile:C:\\Infs\\a.inf", "DoGetInstalledInfName End:2"));
    Write("C:\\Infs\\c.inf", {"Ink"});
    EXPECT_EQ(Find(), (Result{0, "C:\\Infs\\a.inf"}));
    Write("C:\\Infs\\a.inf", {"Other"});
    EXPECT_EQ(Find(), (Result{0, ""})) << "not found, all the same";
}

TEST_F(InstalledInf, NamesOfAReadThatStoppedHalfWayCount) {
    Write("C:\\Infs\\a.inf", {"Laser", "Ink"});
    ReplacedOperations replaced;
    static PlatformTable before;
    before = Platform();
    replaced.table.SetupGetStringFieldA = [](PINFCONTEXT context, DWORD index, PSTR buffer, DWORD size,
                                             PDWORD required) -> BOOL {
        // Of the models' keys, which are read in two steps each, the second one fails.
        char key[16] = {};
        before.SetupGetStringFieldA(context, index, key, sizeof key, nullptr);
        if (key == "Ink"s && buffer != nullptr) {
            Platform().SetLastError(1234);
            return FALSE;
        }
        return before.SetupGetStringFieldA(context, index, buffer, size, required);
    };
    EXPECT_EQ(Find(), (Result{1234, "C:\\Infs\\a.inf"}));
}

TEST_F(InstalledInf, CandidateThatCantBeOpenedIsPassedOver) {
    Write("C:\\Infs\\a.inf", {"Laser"}, 1);
    Write("C:\\Infs\\b.inf", {"Laser"}, 2);
    {
        // Others may read it: it is opened without sharing here.
        auto held = Machine().Files().HoldOpen("C:\\Infs\\b.inf", FILE_SHARE_READ);
        EXPECT_EQ(Find(), (Result{0, "C:\\Infs\\a.inf"}));
    }
    EXPECT_EQ(Find(), (Result{0, "C:\\Infs\\b.inf"}));
}

TEST_F(InstalledInf, FileIsOpenedWithoutSharingAndClosed) {
    Write("C:\\Infs\\a.inf", {"Laser"});
    Test().TakeCalls();
    Find();
    EXPECT_THAT(Test().TakeCallNames({"CreateFileA", "GetFileTime", "CloseHandle", "CompareFileTime"}),
                ElementsAre("CreateFileA", "GetFileTime", "CloseHandle"));
    Write("C:\\Infs\\b.inf", {"Laser"});
    Test().TakeCalls();
    Find();
    EXPECT_THAT(Test().TakeCallNames({"CreateFileA", "GetFileTime", "CloseHandle", "CompareFileTime"}),
                ElementsAre("CreateFileA", "GetFileTime", "CloseHandle", "CreateFileA", "GetFileTime", "CloseHandle",
                            "CompareFileTime"));
}

TEST_F(InstalledInf, BareNameIsLookedUpOnTheSearchPath) {
    Write("C:\\WINDOWS\\inf\\oem7.inf", {"Laser"});
    EXPECT_EQ(Find("Laser", nullptr), (Result{0, "C:\\WINDOWS\\inf\\oem7.inf"}));
    faults::FailCall("SetupGetInfInformationA", 1, 1234);
    EXPECT_EQ(Find("Laser", nullptr), (Result{0, ""})) << "one whose path isn't known is passed over";
}

TEST_F(InstalledInf, BufferOneByteTooSmallStaysUntouched) {
    Write("C:\\Infs\\a.inf", {"Laser"});
    const DWORD needed = sizeof "C:\\Infs\\a.inf";
    EXPECT_EQ(Find("Laser", "C:\\Infs\\", needed), (Result{0, "C:\\Infs\\a.inf"}));
    Test().TurnLogOn(2);
    EXPECT_EQ(Find("Laser", "C:\\Infs\\", needed - 1), (Result{0, "before"}));
    EXPECT_THAT(OwnLines(), Not(Contains("Installed InfFile:C:\\Infs\\a.inf")));
}

TEST_F(InstalledInf, NullArgumentsGive87WithoutALogLine) {
    char name[8] = "before";
    Test().TurnLogOn(2);
    EXPECT_EQ(DoGetInstalledInfName(nullptr, 3, 5, 1, "C:\\Infs\\", "P", "C", name, sizeof name), 87u);
    EXPECT_EQ(DoGetInstalledInfName("Laser", 3, 5, 1, "C:\\Infs\\", "P", "C", nullptr, 260), 87u);
    EXPECT_STREQ(name, "before");
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
    EXPECT_EQ(DoGetInstalledInfName("Laser", 3, 5, 1, "C:\\Infs\\", nullptr, nullptr, name, sizeof name), 2u);
}

class InstalledInfOnEverySystem : public EverySystemTest {};

TEST_P(InstalledInfOnEverySystem, OtherFolderIsSearchedOnThe9xFamilyAlone) {
    const std::string other = Machine().System().windowsDirectory + "\\inf\\Other\\x.inf";
    WriteFileOn(Machine(), other, InfOf({"Laser"}));
    WriteFileOn(Machine(), "C:\\Infs\\a.inf", InfOf({"Laser"}));
    EXPECT_EQ(Machine().Files().SetWrittenAt(other, FILETIME{5, 0x01c80000}), 0u);
    EXPECT_EQ(Machine().Files().SetWrittenAt("C:\\Infs\\a.inf", FILETIME{4, 0x01c00000}), 0u);
    char name[MAX_PATH] = {};
    EXPECT_EQ(DoGetInstalledInfName("Laser", 3, 5, 1, "C:\\Infs\\", "Northlight", "Printer", name, sizeof name), 0u);
    EXPECT_EQ(name, Machine().Is9x() ? other : "C:\\Infs\\a.inf");
    EXPECT_EQ(DoGetInstalledInfName("Laser", 3, 5, 1, "C:\\None\\", "Northlight", "Printer", name, sizeof name),
              Machine().Is9x() ? 0u : 2u);
}

INSTANTIATE_ON_EVERY_SYSTEM(InstalledInfOnEverySystem);

TEST_F(InstalledInf, IsSlot13) {
    const PI_KEL_Interface& table = *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
    char name[MAX_PATH] = {};
    Test().TurnLogOn(1);
    EXPECT_EQ(table.PI_KEL_GetInstalledInfName(nullptr, 3, 5, 1, nullptr, "Northlight", "Printer", name, sizeof name),
              0x90130057u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_KEL_GetInstalledInfName Start", "PI_KEL_GetInstalledInfName End:(0x90130057)", ""));
    Write("C:\\WINDOWS\\inf\\oem0.inf", {"Laser"});
    EXPECT_EQ(table.PI_KEL_GetInstalledInfName("Laser", 3, 5, 1, nullptr, "Northlight", "Printer", name, sizeof name),
              0u);
    EXPECT_STREQ(name, "C:\\WINDOWS\\inf\\oem0.inf") << "null stays null";
    EXPECT_EQ(
        table.PI_KEL_GetInstalledInfName("Laser", 3, 5, 1, "C:\\Infs\\", "Northlight", "Printer", name, sizeof name),
        0x90130002u);
}

}  // namespace
}  // namespace pikel
