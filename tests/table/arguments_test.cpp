// What the slots hand to their workers: texts as they came, the INF's own architecture, no server, and the lines that
// close a slot whose worker threw.
#include <new>
#include <string>
#include <vector>

#include "frame/pikel.h"
#include "support/calls.h"
#include "support/spooler_setup.h"

namespace pikel::testing_support {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

const PI_KEL_Interface& Table() {
    return *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
}

constexpr char kInf[] = "C:\\Package\\aurora.inf";
constexpr char kStaging[] = "C:\\staging";

/// An INF with one model of one file, for the processor that its models section is marked with.
std::string InfFor(const std::string& mark) {
    return "[Version]\r\nSignature=\"$Windows NT$\"\r\nProvider=\"Northlight\"\r\nClass=Printer\r\n"
           "[OEM URLS]\r\nN=\"http://northlight.example\"\r\n[Manufacturer]\r\nN=NL" +
           (mark.empty() ? "" : "," + mark) + "\r\n[NL" + (mark.empty() ? "" : "." + mark) +
           "]\r\n\"Aurora\"=AURORA,AuroraId\r\n[AURORA]\r\nCopyFiles=FILES\r\nDriverFile=AURORA.DLL\r\n"
           "[FILES]\r\nAURORA.DLL\r\n[DestinationDirs]\r\nDefaultDestDir=66000\r\n";
}

class SlotArguments : public MachineTest {
  protected:
    void PutPackage(const std::string& mark) {
        WriteFileOn(Machine(), kInf, InfFor(mark));
        WriteFileOn(Machine(), "C:\\Package\\AURORA.DLL", "bytes");
    }
};

// ---- the INF's architecture -----------------------------------------------------------------------------------------

// The caller's architecture is 3 each time; the INF is one for another processor.
const std::pair<const char*, const char*> kMarks[] = {{"", "W32X86"}, {"NTia64", "IA64"}, {"NTamd64", "x64"}};

TEST_F(SlotArguments, LocalCopyGoesByTheArchitectureOfTheInf) {
    for (const auto& [mark, folder] : kMarks) {
        SCOPED_TRACE(mark);
        PutPackage(mark);
        Machine().Files().MakeFolder("C:\\local");
        LocalFileRecord* records = nullptr;
        DWORD size = 0;
        DWORD count = 0;
        ASSERT_EQ(
            Table().PI_KEL_CopyInfDriverFilesToLocal(kInf, "Aurora", "C:\\local", &size, 2, &count, &records, 3, 5, 1),
            0u);
        ASSERT_EQ(count, 1u);
        EXPECT_TRUE(simulated::EqualNoCase(records[0].szDirectory,
                                           std::string("C:\\WINDOWS\\system32\\spool\\drivers\\") + folder))
            << records[0].szDirectory;
        Table().PI_KEL_FreeMemory(records);
    }
}

TEST_F(SlotArguments, StagedCopyGoesByTheArchitectureOfTheInf) {
    for (const auto& [mark, folder] : kMarks) {
        SCOPED_TRACE(mark);
        PutPackage(mark);
        DWORD restart = 0;
        Test().TakeCalls();
        ASSERT_EQ(Table().PI_KEL_CopyInfDriverFilesEx(kInf, "Aurora", 2, &restart, kStaging, 3, 5, 1), 0u);
        const std::vector<std::string> copies = TakeCallsOf(Test(), {"CopyFileA"});
        ASSERT_FALSE(copies.empty());
        EXPECT_THAT(copies.back(), HasSubstr(std::string("drivers\\\\") + folder + "\\\\AURORA.DLL"));
    }
}

TEST_F(SlotArguments, ModelsAreChosenByTheVersionOfTheCaller) {
    PutPackage("NTamd64");
    DWORD restart = 0;
    // A version before 5.1 sees no decoration, and the plain section isn't there.
    EXPECT_NE(Table().PI_KEL_CopyInfDriverFilesEx(kInf, "Aurora", 2, &restart, kStaging, 3, 5, 0), 0u);
    EXPECT_NE(Table().PI_KEL_CopyInfDriverFilesEx(kInf, "Aurora", 2, &restart, kStaging, 3, 4, 1), 0u);
    EXPECT_EQ(Table().PI_KEL_CopyInfDriverFilesEx(kInf, "Aurora", 2, &restart, kStaging, 3, 6, 0), 0u);
}

// ---- empty texts ----------------------------------------------------------------------------------------------------

TEST_F(SlotArguments, EmptyInfPathIsAFileThatCannotBeOpened) {
    struct {
        const char* slot;
        DWORD (*call)(LPCSTR infPath);
        DWORD prefix;
    } const slots[] = {
        {"PI_KEL_GetInfInfo",
         [](LPCSTR infPath) -> DWORD {
             DriverAddRecord* record = nullptr;
             return Table().PI_KEL_GetInfInfo(infPath, "Aurora", 3, 5, 1, &record);
         },
         0x90120000},
        {"PI_KEL_GetDriverFileNameFromInf",
         [](LPCSTR infPath) -> DWORD {
             char name[16] = {};
             DWORD size = sizeof name;
             return Table().PI_KEL_GetDriverFileNameFromInf(infPath, "Aurora", 3, 5, 1, 1, name, &size);
         },
         0x90120000},
        {"PI_KEL_CopyInfDriverFiles",
         [](LPCSTR infPath) -> DWORD {
             return Table().PI_KEL_CopyInfDriverFiles(infPath, "Aurora", nullptr, 3, 5, 1, nullptr, nullptr);
         },
         0x901b0000},
        {"PI_KEL_CopyInfDriverFilesToLocal",
         [](LPCSTR infPath) -> DWORD {
             LocalFileRecord* records = nullptr;
             DWORD size = 0;
             DWORD count = 0;
             return Table().PI_KEL_CopyInfDriverFilesToLocal(infPath, "Aurora", "C:\\local", &size, 2, &count, &records,
                                                             3, 5, 1);
         },
         0x901b0000},
        {"PI_KEL_CopyInfDriverFilesEx",
         [](LPCSTR infPath) -> DWORD {
             DWORD restart = 0;
             return Table().PI_KEL_CopyInfDriverFilesEx(infPath, "Aurora", 2, &restart, kStaging, 3, 5, 1);
         },
         0x901b0000},
    };
    for (const auto& slot : slots) {
        SCOPED_TRACE(slot.slot);
        Test().TakeCalls();
        EXPECT_EQ(slot.call(nullptr), slot.prefix | ERROR_INVALID_PARAMETER);
        EXPECT_THAT(TakeCallsOf(Test(), {"SetupOpenInfFileA"}), SizeIs(0));
        const DWORD status = slot.call("");
        EXPECT_EQ(status & slot.prefix, slot.prefix);
        EXPECT_NE(status, slot.prefix | ERROR_INVALID_PARAMETER);
        EXPECT_THAT(TakeCallsOf(Test(), {"SetupOpenInfFileA"}), ElementsAre(StartsWith("SetupOpenInfFileA(\"\", ")));
    }
}

TEST_F(SlotArguments, EmptyPathOfAVersionIsAFileThatCannotBeRead) {
    EXPECT_EQ(Table().PI_KEL_CheckDriverFileVersion(nullptr, "1.0", nullptr, 0), 87u);
    EXPECT_EQ(Table().PI_KEL_CheckDriverFileVersion("", "1.0", nullptr, 0), 3u);
}

TEST_F(SlotArguments, EmptyFolderOfInfsIsNotTheSystemsOwn) {
    char name[MAX_PATH] = {};
    Test().TakeCalls();
    Table().PI_KEL_GetInstalledInfName("Aurora", 3, 5, 1, "", "Northlight", "Printer", name, sizeof name);
    EXPECT_THAT(TakeCallsOf(Test(), {"SetupGetInfFileListA"}), Each(StartsWith("SetupGetInfFileListA(\"\", ")));
    Table().PI_KEL_GetInstalledInfName("Aurora", 3, 5, 1, nullptr, "Northlight", "Printer", name, sizeof name);
    EXPECT_THAT(TakeCallsOf(Test(), {"SetupGetInfFileListA"}), Each(StartsWith("SetupGetInfFileListA(null, ")));
}

TEST_F(SlotArguments, EmptyDriverNameIsADriverThatIsNotThere) {
    PutDriver(Machine(), {});
    Test().TurnLogOn(1);
    EXPECT_EQ(Table().PI_KEL_DeletePrinterDriver(3, nullptr, 0, 0, nullptr, 1, 0), 0x900f0057u);
    EXPECT_THAT(Test().TakeLog(), Not(Contains(StartsWith("DoDeletePrinterDriver("))));
    EXPECT_NE(Table().PI_KEL_DeletePrinterDriver(3, "", 0, 0, nullptr, 1, 0), 0u);
    EXPECT_THAT(Test().TakeLog(), Contains("DoDeletePrinterDriver() Start"));

    PutPrinter("P1", "Aurora 500");
    EXPECT_EQ(Table().PI_KEL_UninstallPrinter("P1", nullptr, 3, 0, 0, nullptr, 1, 0), 0x900d0057u);
    EXPECT_THAT(Test().TakeLog(), Not(Contains(StartsWith("DoDeletePrinterDriver("))));
    PutPrinter("P1", "Aurora 500");
    EXPECT_NE(Table().PI_KEL_UninstallPrinter("P1", "", 3, 0, 0, nullptr, 1, 0), 0u);
    EXPECT_THAT(Test().TakeLog(), Contains("DoDeletePrinterDriver() Start"));
}

// ---- no server ------------------------------------------------------------------------------------------------------

class DirectDriverAdd : public EverySystemTest {};

TEST_P(DirectDriverAdd, IsForThisMachineWhateverElseTheCallerPasses) {
    char name[] = "Aurora";
    char driver[] = "aurora.dll";
    char config[] = "auroraui.dll";
    char data[] = "aurora.gpd";
    for (const char* file : {driver, config, data}) {
        WriteFileOn(Machine(), DriverFolderOf() + "\\" + file, "bytes");
    }
    DriverAddRecord record{};
    record.DriverInfo.cVersion = OwnVersionCode(Machine());
    record.DriverInfo.pName = name;
    record.DriverInfo.pDriverPath = driver;
    record.DriverInfo.pConfigFile = config;
    record.DriverInfo.pDataFile = data;
    std::string environment(Machine().Environment());
    record.DriverInfo.pEnvironment = environment.data();
    Test().TakeCalls();
    EXPECT_EQ(Table().PI_KEL_AddPrinterDriver(kInf, "Another Model", 77, 77, &record, 0), 0u);
    const std::vector<std::string> calls = TakeCallsOf(Test(), {"AddPrinterDriverA", "AddPrinterDriverExA"});
    EXPECT_THAT(calls, Not(SizeIs(0)));
    EXPECT_THAT(calls, Each(HasSubstr("(null, ")));
    EXPECT_TRUE(IsDriverRegistered(Machine(), name));
    EXPECT_FALSE(IsDriverRegistered(Machine(), "Another Model"));
}

INSTANTIATE_ON_EVERY_SYSTEM(DirectDriverAdd);

// ---- a worker that throws -------------------------------------------------------------------------------------------

TEST_F(SlotArguments, SlotWhoseWorkerThrewClosesItsFrameAndServesTheNextCall) {
    PutPackage("");
    LPSTR* list = nullptr;
    DWORD count = 0;
    const auto call = [&] { return Table().PI_KEL_GetDriverListFromInf(kInf, 3, 5, 1, &list, &count); };
    Test().TurnLogOn(1);
    {
        ReplacedOperations replaced;
        // Behind the opening, so that the INF's handle is open when the worker leaves.
        replaced.table.SetupFindFirstLineA = [](HINF, PCSTR, PCSTR, PINFCONTEXT) -> BOOL { throw std::bad_alloc(); };
        EXPECT_EQ(call(), 0x90120008u);
        replaced.table.SetupFindFirstLineA = [](HINF, PCSTR, PCSTR, PINFCONTEXT) -> BOOL { throw 1; };
        EXPECT_EQ(call(), 0x90120000u | ERROR_INTERNAL_ERROR);
    }
    EXPECT_EQ(Machine().Handles().OpenCount(), 0u);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(count, 0u);
    std::vector<std::string> frames;
    for (const std::string& line : Test().TakeLog()) {
        if (line.starts_with("PI_KEL_")) {
            frames.push_back(line);
        }
    }
    EXPECT_THAT(frames,
                ElementsAre("PI_KEL_GetDriverListFromInf Start", "PI_KEL_GetDriverListFromInf End:(0x90120008)",
                            "PI_KEL_GetDriverListFromInf Start", "PI_KEL_GetDriverListFromInf End:(0x9012054f)"));

    EXPECT_EQ(call(), 0u);
    EXPECT_EQ(count, 1u);
    Table().PI_KEL_FreeMemory(list);
    const std::vector<std::string> log = Test().TakeLog();
    ASSERT_GE(log.size(), 3u);
    EXPECT_EQ(log.front(), "PI_KEL_GetDriverListFromInf Start");
    EXPECT_EQ(log[log.size() - 2], "PI_KEL_GetDriverListFromInf End:(0x00000000)");
    EXPECT_EQ(log.back(), "");
}

TEST_F(SlotArguments, BlankLineClosesTheFrameOfAWorkerThatThrew) {
    ReplacedOperations replaced;
    replaced.table.SetupOpenInfFileA = [](PCSTR, PCSTR, DWORD, PUINT) -> HINF { throw std::bad_alloc(); };
    Test().TurnLogOn(1);
    LPSTR* list = nullptr;
    DWORD count = 0;
    EXPECT_EQ(Table().PI_KEL_GetDriverListFromInf(kInf, 3, 5, 1, &list, &count), 0x90120008u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_KEL_GetDriverListFromInf Start", "PI_KEL_GetDriverListFromInf End:(0x90120008)", ""));
}

}  // namespace
}  // namespace pikel::testing_support
