// Names and kinds of a model's files, and the registry part of its section.
#include "deploy/inf_queries.h"

#include "printer_inf.h"
#include "support/calls.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class InfQueries : public MachineTest {
  protected:
    InfQueries() {
        PutAuroraPackage(Machine());
        ForgetCalls(Test());
    }
    static const PI_KEL_Interface& Table() { return *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION); }
    std::string NameOf(const char* model, bool wantDriverFile) {
        char name[64] = "untouched";
        DWORD size = sizeof name;
        EXPECT_EQ(DoGetDriverFileNameFromInf(kAuroraPath, model, 3, 5, 1, wantDriverFile, name, &size), 0u);
        EXPECT_EQ(size, std::string(name).size() + 1);
        return name;
    }
    std::vector<std::string> Enumerate(const char* model) {
        DriverFileRecord* records = nullptr;
        DWORD count = 0;
        EXPECT_EQ(DoEnumDriverFiles(kAuroraPath, model, 3, 5, 1, &records, &count), 0u);
        std::vector<std::string> files;
        for (DWORD i = 0; i < count; ++i) {
            files.push_back(std::to_string(records[i].dwKind) + " " + records[i].lpszName);
        }
        Platform().HeapFree(Platform().GetProcessHeap(), 0, records);
        return files;
    }
};

TEST_F(InfQueries, MainFileHasItsNameOrThatOfTheMedium) {
    EXPECT_EQ(NameOf("Aurora 500", true), "NLAURORA.DLL");
    EXPECT_EQ(NameOf("Aurora 500", false), "NLAURORA.DLL") << "the medium has it under the same name";
    ChangeAuroraInf(Machine(), "NLAURORA.DLL\nA500.GPD", "nlaurora.dll,NLAUR_RT.DLL\nA500.GPD");
    EXPECT_EQ(NameOf("Aurora 500", false), "NLAUR_RT.DLL");
    ChangeAuroraInf(Machine(), "NLAURORA.DLL\nA500.GPD", "OTHER.DLL\nA500.GPD");
    EXPECT_EQ(NameOf("Aurora 500", false), "") << "no copy section names it";
}

TEST_F(InfQueries, SizeIsToldForAnyBuffer) {
    DWORD size = 0;
    EXPECT_EQ(DoGetDriverFileNameFromInf(kAuroraPath, "Aurora 500", 3, 5, 1, true, nullptr, &size), 0u);
    EXPECT_EQ(size, 13u);
    char name[13] = "old";
    size = 12;
    EXPECT_EQ(DoGetDriverFileNameFromInf(kAuroraPath, "Aurora 500", 3, 5, 1, true, name, &size), 0u);
    EXPECT_STREQ(name, "old");
    EXPECT_EQ(DoGetDriverFileNameFromInf(kAuroraPath, "Aurora 500", 3, 5, 1, true, name, &size), 0u);
    EXPECT_STREQ(name, "NLAURORA.DLL");
}

TEST_F(InfQueries, NameNeedsItsArguments) {
    DWORD size = 0;
    Test().TurnLogOn();
    EXPECT_EQ(Table().PI_KEL_GetDriverFileNameFromInf(kAuroraPath, nullptr, 3, 5, 1, 1, nullptr, &size), 0x90120057u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("PI_KEL_GetDriverFileNameFromInf Start",
                                              "DoGetDriverFileNameFromInf Start", "DoGetDriverFileNameFromInf End(87)",
                                              "PI_KEL_GetDriverFileNameFromInf End:(0x90120057)", ""));
    EXPECT_EQ(Table().PI_KEL_GetDriverFileNameFromInf(nullptr, "x", 3, 5, 1, 1, nullptr, &size), 0x90120057u);
    EXPECT_EQ(Table().PI_KEL_GetDriverFileNameFromInf(kAuroraPath, "x", 3, 5, 1, 1, nullptr, nullptr), 0x90120057u);
    EXPECT_EQ(Table().PI_KEL_GetDriverFileNameFromInf("C:\\none.inf", "x", 3, 5, 1, 1, nullptr, &size), 0x90120002u);
    EXPECT_EQ(Table().PI_KEL_GetDriverFileNameFromInf(kAuroraPath, "Nobody", 3, 5, 1, 1, nullptr, &size),
              0x90120000u | 1359u);
    EXPECT_EQ(size, 0u);
}

TEST_F(InfQueries, FilesAreListedByKindUnderTheirSourceNames) {
    EXPECT_THAT(Enumerate("Aurora 500"),
                ElementsAre("1 NLAURORA.DLL", "3 A500.GPD", "6 NLAURUI.DLL", "6 NLAURORA.HLP", "6 NLRES_DE.DLL",
                            "6 NLA500A.ICC", "6 NLDISP.ICC", "6 NLRES_EN.DLL"));
}

TEST_F(InfQueries, KindGoesByTheDestinationNameInAnyCase) {
    ChangeAuroraInf(Machine(), "NLAURORA.DLL\nA500.GPD\nNLAURUI.DLL",
                    "nlaurora.dll,NLAUR_RT.DLL\na500.gpd,A500_RT.GPD\nNLAURUI.DLL,A500.GPD");
    const std::vector<std::string> files = Enumerate("Aurora 500");
    ASSERT_GE(files.size(), 3u);
    EXPECT_EQ(files[0], "1 NLAUR_RT.DLL");
    EXPECT_EQ(files[1], "3 A500_RT.GPD");
    EXPECT_EQ(files[2], "6 A500.GPD") << "the source's name says nothing";
}

TEST_F(InfQueries, CatalogIsAFileLikeAnyOther) {
    ChangeAuroraInf(Machine(), "Class=Printer", "Class=Printer\nCatalogFile=aurora.cat");
    EXPECT_THAT(Enumerate("Aurora Plain"), ElementsAre("6 NLPLAIN.DLL", "6 aurora.cat"));
}

TEST_F(InfQueries, ModelWithoutFilesIsAFailure) {
    ChangeAuroraInf(Machine(), "CopyFiles=PLAIN.Files", "CopyFiles=");
    DriverFileRecord* records = reinterpret_cast<DriverFileRecord*>(1);
    DWORD count = 9;
    EXPECT_EQ(Table().PI_KEL_EnumDriverFiles(kAuroraPath, "Aurora Plain", 3, 5, 1, &records, &count), 0x90010008u);
    EXPECT_EQ(records, nullptr);
    EXPECT_EQ(count, 0u);
}

TEST_F(InfQueries, ListNeedsMemory) {
    const std::size_t before = Machine().Heap().AllocationCount();
    Enumerate("Aurora 500");
    const std::size_t count = Machine().Heap().AllocationCount() - before;
    DriverFileRecord* records = reinterpret_cast<DriverFileRecord*>(1);
    DWORD files = 9;
    Machine().Heap().FailAllocation(count - 1, false);  // the last one is the list's own
    EXPECT_EQ(DoEnumDriverFiles(kAuroraPath, "Aurora 500", 3, 5, 1, &records, &files), DWORD{ERROR_NOT_ENOUGH_MEMORY});
    Machine().Heap().StopFailing();
    EXPECT_EQ(records, nullptr);
    EXPECT_EQ(files, 0u);
}

TEST_F(InfQueries, PlainLogHasTheFramesOfTheSlotsAlone) {
    DriverFileRecord* records = nullptr;
    DWORD size = 0;
    Test().TurnLogOn(1);
    Table().PI_KEL_GetDriverFileNameFromInf(kAuroraPath, nullptr, 3, 5, 1, 1, nullptr, &size);
    Table().PI_KEL_EnumDriverFiles("C:\\none.inf", "x", 3, 5, 1, &records, &size);
    Table().PI_KEL_ControlRegistory(nullptr, "x", 3, 5, 1);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_KEL_GetDriverFileNameFromInf Start", "PI_KEL_GetDriverFileNameFromInf End:(0x90120057)",
                            "", "PI_KEL_EnumDriverFiles Start", "PI_KEL_EnumDriverFiles End:(0x90010002)", "",
                            "PI_KEL_ControlRegistory Start", "PI_KEL_ControlRegistory End:(0x90010057)", ""));
}

TEST_F(InfQueries, ListNeedsItsArguments) {
    DriverFileRecord* records = nullptr;
    DWORD count = 0;
    Test().TurnLogOn();
    EXPECT_EQ(DoEnumDriverFiles(nullptr, "x", 3, 5, 1, &records, &count), 87u);
    EXPECT_EQ(DoEnumDriverFiles(kAuroraPath, nullptr, 3, 5, 1, &records, &count), 87u);
    EXPECT_EQ(DoEnumDriverFiles(kAuroraPath, "x", 3, 5, 1, nullptr, &count), 87u);
    EXPECT_EQ(DoEnumDriverFiles(kAuroraPath, "x", 3, 5, 1, &records, nullptr), 87u);
    EXPECT_THAT(Test().TakeLog(), ::testing::Each("DoEnumDriverFiles Start")) << "no end line";
    EXPECT_EQ(DoEnumDriverFiles("C:\\none.inf", "x", 3, 5, 1, &records, &count), 2u);
    EXPECT_EQ(Test().TakeLog().back(), "DoEnumDriverFiles End(2)");
}

// ---- the registry part ----------------------------------------------------------------------------------------------

constexpr char kKey[] = "HKLM\\SOFTWARE\\Nordlicht\\Aurora";

TEST_F(InfQueries, RegistryPartIsAppliedAlone) {
    Test().TurnLogOn();
    EXPECT_EQ(Table().PI_KEL_ControlRegistory(kAuroraPath, "Aurora 500", 3, 5, 1), 0u);
    EXPECT_EQ(Machine().Registry().Text(kKey, "Model"), "A500");
    const std::vector<std::string> log = Test().TakeLog();
    EXPECT_EQ(log[0], "PI_KEL_ControlRegistory Start");
    EXPECT_EQ(log[1], "DoControlRegistory Start");
    EXPECT_THAT(log, Contains("DoControlRegistory End(0)"));
    EXPECT_EQ(log[log.size() - 2], "PI_KEL_ControlRegistory End:(0x00000000)");
    EXPECT_FALSE(Machine().Files().Exists("C:\\WINDOWS\\system32\\spool\\drivers\\w32x86\\NLAURORA.DLL"));
}

TEST_F(InfQueries, RegistryPartOfAMissingInfSucceeds) {
    EXPECT_EQ(DoControlRegistory("C:\\none.inf", "Aurora 500", 3, 5, 1), 0u);
    EXPECT_EQ(DoControlRegistory("C:\\none.inf", nullptr, 3, 5, 1), 0u);
}

TEST_F(InfQueries, RegistryPartOfANullHandleIsRefused) {
    ReplacedOperations replaced;
    replaced.table.SetupOpenInfFileA = [](PCSTR, PCSTR, DWORD, PUINT) -> HINF { return nullptr; };
    EXPECT_EQ(DoControlRegistory(kAuroraPath, "Aurora 500", 3, 5, 1), DWORD{ERROR_INVALID_PARAMETER});
}

TEST_F(InfQueries, RegistryPartNeedsItsArguments) {
    Test().TurnLogOn();
    EXPECT_EQ(Table().PI_KEL_ControlRegistory(nullptr, "Aurora 500", 3, 5, 1), 0x90010057u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_KEL_ControlRegistory Start", "DoControlRegistory Start", "DoControlRegistory End(87)",
                            "PI_KEL_ControlRegistory End:(0x90010057)", ""));
    EXPECT_EQ(DoControlRegistory(kAuroraPath, nullptr, 3, 5, 1), 87u);
    EXPECT_EQ(DoControlRegistory(kAuroraPath, "Nobody", 3, 5, 1), 1359u);
    faults::FailCall("SetupInstallFromInfSectionA", 1, 4242);
    EXPECT_EQ(DoControlRegistory(kAuroraPath, "Aurora 500", 3, 5, 1), 4242u);
    EXPECT_FALSE(Machine().Registry().KeyExists(kKey));
}

}  // namespace
}  // namespace pikel
