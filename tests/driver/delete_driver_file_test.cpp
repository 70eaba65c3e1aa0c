// What installed drivers use, and the deletion of the files that only one used.
#include "driver/delete_driver_file.h"

#include "driver/delete_file_routines.h"

#include <algorithm>
#include <string>
#include <vector>

#include "machine/system/restart.h"
#include "support/calls.h"
#include "support/spooler_setup.h"

namespace pikel {

namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

using Lines = std::vector<std::string>;

constexpr char kX86[] = "Windows NT x86";

Lines operator+(Lines left, const Lines& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

/// What GetFileList tells.
struct FileList {
    DWORD code = 99;
    StringList deleteFiles;
    StringList otherFiles;
    std::string monitorName = "left over";
    std::string monitorFile = "left over";
    StringList otherMonitorFiles;
};

FileList ListFiles(DWORD version, LPCSTR environment, LPCSTR name) {
    FileList list;
    list.deleteFiles.Append("left over");
    list.otherFiles.Append("left over");
    list.otherMonitorFiles.Append("left over");
    list.code = CDeleteDriverFile().GetFileList(version, environment, name, &list.deleteFiles, &list.otherFiles,
                                                &list.monitorName, &list.monitorFile, &list.otherMonitorFiles);
    return list;
}

// ---- GetFileList ----------------------------------------------------------------------------------------------------

class DriverFileList : public MachineTest {
  protected:
    void PutBoth() {
        PutMonitor(Machine(), "Aurora Monitor", "aurmon.dll");
        PutMonitor(Machine(), "Borealis Monitor", "bormon.dll");
        PutDriver(Machine(), {.help = "aurora.hlp",
                              .dependents = {"shared.dll", "aurora.hlp", "aurres.dll"},
                              .monitor = "Aurora Monitor"});
        PutDriver(Machine(), {.name = "Borealis 9",
                              .driver = "boreal.dll",
                              .config = "borealui.dll",
                              .data = "boreal.gpd",
                              .dependents = {"SHARED.DLL"},
                              .monitor = "Borealis Monitor"});
        ForgetCalls(Test());
    }
};

TEST_F(DriverFileList, HasBareNamesInUpperCaseSortedOnceEach) {
    PutBoth();
    const FileList list = ListFiles(3, kX86, "AURORA 500");
    EXPECT_EQ(list.code, 0u);
    EXPECT_THAT(list.deleteFiles,
                ElementsAre("AURORA.DLL", "AURORA.GPD", "AURORA.HLP", "AURORAUI.DLL", "AURRES.DLL", "SHARED.DLL"));
    EXPECT_THAT(list.otherFiles, ElementsAre("BOREAL.DLL", "BOREAL.GPD", "BOREALUI.DLL", "SHARED.DLL"));
    EXPECT_EQ(list.monitorName, "Aurora Monitor");
    EXPECT_EQ(list.monitorFile, "AURMON.DLL");
    EXPECT_THAT(list.otherMonitorFiles, ElementsAre("BORMON.DLL"));
}

TEST_F(DriverFileList, AsksForTheDriversOfTheEnvironmentAtLevel3) {
    PutBoth();
    ListFiles(3, kX86, "Aurora 500");
    const Lines calls = TakeCallsOf(Test(), {"EnumPrinterDriversA"});
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_THAT(calls[0], StartsWith("EnumPrinterDriversA(null, \"Windows NT x86\", 0x3, null, 0x0, "));
    EXPECT_THAT(calls[1], StartsWith("EnumPrinterDriversA(null, \"Windows NT x86\", 0x3, &, "));
}

TEST_F(DriverFileList, LogsEveryNameAndWhatBecomesOfIt) {
    PutBoth();
    const Lines monitorLines = {"GetMonitorFile() Start", "GetMonitorFile() End(0)", "GetMonitorFile() Start",
                                "GetMonitorFile() End(0)"};
    Test().TurnLogOn();
    ListFiles(3, kX86, "Aurora 500");
    EXPECT_THAT(Test().TakeLog(),
                ElementsAreArray(Lines{"CDeleteDriverFile::GetFileList() Start"} + monitorLines +
                                 Lines{"AURORA.DLL -> Delete", "AURORA.GPD -> Delete", "AURORA.HLP -> Delete",
                                       "AURORAUI.DLL -> Delete", "AURRES.DLL -> Delete", "SHARED.DLL -> Delete",
                                       "BOREAL.DLL -> Other Driver Used", "BOREAL.GPD -> Other Driver Used",
                                       "BOREALUI.DLL -> Other Driver Used", "SHARED.DLL -> Other Driver Used",
                                       "AURMON.DLL(Monitor) -> Delete", "BORMON.DLL(Monitor) -> Other Driver Used",
                                       "CDeleteDriverFile::GetFileList() End(0)"}));
    Test().TurnLogOn(1);
    ListFiles(3, kX86, "Aurora 500");
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(monitorLines));
}

TEST_F(DriverFileList, OfAnUnknownDriverHasTheOthersAlone) {
    PutBoth();
    const FileList list = ListFiles(3, kX86, "Nobody");
    EXPECT_EQ(list.code, 0u);
    EXPECT_THAT(list.deleteFiles, IsEmpty());
    EXPECT_EQ(list.otherFiles.size(), 9u);
    EXPECT_EQ(list.monitorName, "");
    EXPECT_EQ(list.monitorFile, "");
    EXPECT_THAT(list.otherMonitorFiles, ElementsAre("AURMON.DLL", "BORMON.DLL"));
}

TEST_F(DriverFileList, OfANullNameIsThatOfAnUnknownDriver) {
    PutBoth();
    EXPECT_EQ(ListFiles(3, kX86, nullptr).otherFiles.size(), 9u);
}

TEST_F(DriverFileList, LeavesDriversOfAnotherVersionOut) {
    PutMonitor(Machine(), "Aurora Monitor", "aurmon.dll");
    PutDriver(Machine(), {.name = "Old", .environment = kX86, .version = 2, .data = "old.gpd"});
    PutDriver(Machine(), {.environment = kX86, .version = 3, .monitor = "Aurora Monitor"});
    PutDriver(Machine(), {.environment = kX86, .version = 2, .data = "aurora2.gpd"});
    const FileList list = ListFiles(3, kX86, "Aurora 500");
    EXPECT_THAT(list.deleteFiles, ElementsAre("AURORA.DLL", "AURORA.GPD", "AURORAUI.DLL"));
    EXPECT_THAT(list.otherFiles, IsEmpty());
    const FileList old = ListFiles(2, kX86, "Aurora 500");
    EXPECT_THAT(old.deleteFiles, ElementsAre("AURORA.DLL", "AURORA2.GPD", "AURORAUI.DLL"));
    EXPECT_THAT(old.otherFiles, ElementsAre("AURORA.DLL", "AURORAUI.DLL", "OLD.GPD"));
    EXPECT_EQ(old.monitorName, "");
    EXPECT_THAT(ListFiles(1, kX86, "Aurora 500").deleteFiles, IsEmpty());
}

TEST_F(DriverFileList, Takes9xDriversAsVersion0) {
    for (const char* system : {"win95", "win98", "winme"}) {
        SCOPED_TRACE(system);
        Start(system);
        PutDriver(Machine(), {.dependents = {"COLOR\\AUR.ICM", "aurres.dll"}});
        const FileList list = ListFiles(0, "Windows 4.0", "Aurora 500");
        EXPECT_THAT(list.deleteFiles, ElementsAre("AUR.ICM", "AURORA.DLL", "AURORA.GPD", "AURORAUI.DLL", "AURRES.DLL"));
        EXPECT_THAT(ListFiles(0x400, "Windows 4.0", "Aurora 500").deleteFiles, IsEmpty());
    }
}

TEST_F(DriverFileList, PassesOverAMonitorWhoseFileCanNotBeTold) {
    PutBoth();
    Machine().Registry().DeleteKey(simulated::PrintKey("Monitors\\Aurora Monitor"));
    Machine().Registry().SetNumber(simulated::PrintKey("Monitors\\Borealis Monitor"), "Driver", 1);
    Test().TurnLogOn(1);
    const FileList list = ListFiles(3, kX86, "Aurora 500");
    EXPECT_EQ(list.code, 0u);
    EXPECT_EQ(list.monitorName, "");
    EXPECT_EQ(list.monitorFile, "");
    EXPECT_THAT(list.otherMonitorFiles, IsEmpty());
    EXPECT_THAT(Test().TakeLog(), ElementsAre("GetMonitorFile() Start", "GetMonitorFile() End(2)",
                                              "GetMonitorFile() Start", "GetMonitorFile() End(13)"));
}

TEST_F(DriverFileList, NamesASharedMonitorOfTwoDriversOnce) {
    PutMonitor(Machine(), "Aurora Monitor", "aurmon.dll");
    for (const char* name : {"A", "B", "C"}) {
        PutDriver(Machine(), {.name = name, .monitor = "Aurora Monitor"});
    }
    const FileList list = ListFiles(3, kX86, "B");
    EXPECT_EQ(list.monitorFile, "AURMON.DLL");
    EXPECT_THAT(list.otherMonitorFiles, ElementsAre("AURMON.DLL"));
}

TEST_F(DriverFileList, FillsWhatIsWantedAlone) {
    PutBoth();
    Test().TurnLogOn();
    EXPECT_EQ(CDeleteDriverFile().GetFileList(3, kX86, "Aurora 500", nullptr, nullptr, nullptr, nullptr, nullptr), 0u);
    EXPECT_THAT(Test().TakeLog(), Not(Contains(HasSubstr(" -> "))));
    std::string name;
    std::string file;
    StringList others;
    EXPECT_EQ(CDeleteDriverFile().GetFileList(3, kX86, "Aurora 500", nullptr, nullptr, &name, &file, &others), 0u);
    EXPECT_EQ(name, "Aurora Monitor");
    EXPECT_EQ(file, "AURMON.DLL");
    EXPECT_THAT(others, ElementsAre("BORMON.DLL"));
    EXPECT_THAT(
        Test().TakeLog(),
        ElementsAre("CDeleteDriverFile::GetFileList() Start", "GetMonitorFile() Start", "GetMonitorFile() End(0)",
                    "GetMonitorFile() Start", "GetMonitorFile() End(0)", "AURMON.DLL(Monitor) -> Delete",
                    "BORMON.DLL(Monitor) -> Other Driver Used", "CDeleteDriverFile::GetFileList() End(0)"));
}

TEST_F(DriverFileList, FailsWithTheCodeOfTheEnumeration) {
    PutBoth();
    for (std::size_t nth : {1u, 2u}) {
        faults::Reset();
        faults::FailCall("EnumPrinterDriversA", nth, 1722);
        Test().TurnLogOn();
        const FileList list = ListFiles(3, kX86, "Aurora 500");
        EXPECT_EQ(list.code, 1722u);
        EXPECT_THAT(list.deleteFiles, IsEmpty());
        EXPECT_THAT(list.otherFiles, IsEmpty());
        EXPECT_EQ(list.monitorName, "");
        EXPECT_THAT(Test().TakeLog(), ElementsAre("CDeleteDriverFile::GetFileList() Start",
                                                  "CDeleteDriverFile::GetFileList() End(1722)"));
    }
    faults::Reset();
    EXPECT_EQ(ListFiles(3, "Windows 5.0", "Aurora 500").code, DWORD{ERROR_INVALID_ENVIRONMENT});
    faults::FailCall("HeapAlloc", 1, 8);
    EXPECT_EQ(ListFiles(3, kX86, "Aurora 500").code, DWORD{ERROR_NOT_ENOUGH_MEMORY});
}

TEST_F(DriverFileList, OfAFirstCallThatSucceedsIsEmpty) {
    const FileList list = ListFiles(3, kX86, "Aurora 500");  // no drivers at all
    EXPECT_EQ(list.code, 0u);
    EXPECT_THAT(list.otherFiles, IsEmpty());
}

/// Records that the spooler tells, of a kind that a machine of the simulation would not give.
std::vector<DRIVER_INFO_3A> g_records;

BOOL WINAPI EnumTheRecords(LPSTR, LPSTR, DWORD, LPBYTE bytes, DWORD size, LPDWORD needed, LPDWORD count) {
    *needed = static_cast<DWORD>(g_records.size() * sizeof(DRIVER_INFO_3A));
    if (size < *needed) {
        simulated::lastError = ERROR_INSUFFICIENT_BUFFER;
        return FALSE;
    }
    std::copy_n(reinterpret_cast<const BYTE*>(g_records.data()), *needed, bytes);
    *count = static_cast<DWORD>(g_records.size());
    return TRUE;
}

TEST_F(DriverFileList, PassesOverNullAndEmptyTextsAndCutsFoldersOff) {
    char name[] = "Aurora 500";
    char config[] = "";
    char data[] = "C:\\x\\y\\aurora.gpd";
    char dependents[] = "\\\\server\\share\\Aur.Dll\0folder\\\0D:aur2.dll\0";
    char monitor[] = "";
    g_records.assign(1, {});
    DRIVER_INFO_3A& record = g_records.front();
    record.cVersion = 0x400;
    record.pName = name;
    record.pConfigFile = config;
    record.pDataFile = data;
    record.pDependentFiles = dependents;
    record.pMonitorName = monitor;
    ReplacedOperations replaced;
    replaced.table.EnumPrinterDriversA = &EnumTheRecords;
    const FileList list = ListFiles(0, nullptr, "aurora 500");
    EXPECT_EQ(list.code, 0u);
    EXPECT_THAT(list.deleteFiles, ElementsAre("", "AUR.DLL", "AURORA.GPD", "D:AUR2.DLL"));
    record.pName = nullptr;
    EXPECT_EQ(ListFiles(0, nullptr, "").deleteFiles.size(), 4u) << "a null name counts as empty";
    EXPECT_EQ(ListFiles(0, nullptr, "x").otherFiles.size(), 4u);
}

TEST_F(DriverFileList, LeavesTrailBytesOfDoubleByteNamesAsTheyAre) {
    simulated::SystemDescription system = Machine().System();
    system.codePage = 932;
    Machine().SetSystem(system);
    char name[] = "A";
    char data[] = "c:\\\x83\x61\x61.dll";  // a lead byte, a trail byte that looks like "a", and an "a"
    g_records.assign(1, {});
    DRIVER_INFO_3A& record = g_records.front();
    record.cVersion = 3;
    record.pName = name;
    record.pDataFile = data;
    ReplacedOperations replaced;
    replaced.table.EnumPrinterDriversA = &EnumTheRecords;
    EXPECT_THAT(ListFiles(3, nullptr, "A").deleteFiles, ElementsAre("\x83\x61"
                                                                    "A.DLL"));
}

TEST_F(DriverFileList, OfAnotherVersionSavesNoFile) {
    Start("win98");
    for (const char* file : {"SHARED.DLL", "KEPT.DLL"}) {
        WriteFileOn(Machine(), DriverFolderOf() + "\\" + file, file);
    }
    char names[3][8] = {"Target", "Other", "Old"};
    char files[3][24] = {"shared.dll", "kept.dll", "C:\\x\\Shared.DLL"};
    char dependents[] = "Kept.dll\0";
    g_records.assign(3, {});
    for (std::size_t i = 0; i < g_records.size(); ++i) {
        g_records[i].pName = names[i];
        g_records[i].pDriverPath = files[i];
    }
    g_records[0].pDependentFiles = dependents;
    g_records[2].cVersion = 2;
    ReplacedOperations replaced;
    replaced.table.EnumPrinterDriversA = &EnumTheRecords;
    const FileList list = ListFiles(0, "Windows 4.0", "target");
    EXPECT_EQ(
        CDeleteDriverFile().DeleteDriverFiles(0, "Windows 4.0", &list.deleteFiles, &list.otherFiles, nullptr, nullptr),
        0u);
    EXPECT_FALSE(Machine().Files().Exists(DriverFolderOf() + "\\SHARED.DLL"));
    EXPECT_TRUE(Machine().Files().Exists(DriverFolderOf() + "\\KEPT.DLL"));
}

// ---- DeleteDriverFiles ----------------------------------------------------------------------------------------------

StringList Texts(const Lines& texts) {
    StringList list;
    for (const std::string& text : texts) {
        list.Append(text);
    }
    return list;
}

class DriverFilesDeletion : public MachineTest {
  protected:
    DriverFilesDeletion() { Begin("nt4"); }
    void Begin(std::string_view system) {
        Start(system);
        for (const char* file : {"A.DLL", "B.DLL", "C.DLL", "MON.DLL"}) {
            WriteFileOn(Machine(), DriverFolderOf() + "\\" + file, file);
        }
        WriteFileOn(Machine(), InSystem("MON.DLL"), "MON.DLL");
        ForgetCalls(Test());
    }
    std::string InSystem(const std::string& file) { return Machine().System().systemDirectory + "\\" + file; }
    bool IsThere(const std::string& file) { return Machine().Files().Exists(DriverFolderOf() + "\\" + file); }
    DWORD Delete(const StringList* files, const StringList* others, const StringList* otherMonitors,
                 const std::string* monitor) {
        const std::string environment(Machine().Environment());
        return CDeleteDriverFile().DeleteDriverFiles(2, environment.c_str(), files, others, otherMonitors, monitor);
    }

    const StringList m_files = Texts({"A.DLL", "B.DLL", "C.DLL"});
    const StringList m_others = Texts({"B.DLL", "X.DLL"});
    const StringList m_none;
    const std::string m_monitor = "MON.DLL";
};

TEST_F(DriverFilesDeletion, LeavesWhatOthersUse) {
    EXPECT_EQ(Delete(&m_files, &m_others, &m_none, &m_monitor), 0u);
    EXPECT_FALSE(IsThere("A.DLL"));
    EXPECT_TRUE(IsThere("B.DLL"));
    EXPECT_FALSE(IsThere("C.DLL"));
    EXPECT_FALSE(IsThere("MON.DLL"));
    EXPECT_FALSE(Machine().Files().Exists(InSystem("MON.DLL")));
    EXPECT_THAT(TakeCallsOf(Test(), {"DeleteFileA"}), Not(Contains(HasSubstr("B.DLL"))));
}

TEST_F(DriverFilesDeletion, LogsTheFateOfEveryFile) {
    Begin("xp");
    const StringList monitors = Texts({"MON.DLL"});
    Test().TurnLogOn();
    EXPECT_EQ(Delete(&m_files, &m_others, &monitors, &m_monitor), 0u);
    EXPECT_THAT(
        Test().TakeLog(),
        ElementsAre("CDeleteDriverFile::DeleteDriverFiles() Start", "DeleteDriverFiles - (A.DLL) is deleted",
                    "DeleteDriverFiles - (B.DLL) is in use", "DeleteDriverFiles - (C.DLL) is deleted",
                    "DeleteMonitorFile - (MON.DLL) is in use", "CDeleteDriverFile::DeleteDriverFiles() End(0)"));
    EXPECT_TRUE(Machine().Files().Exists(InSystem("MON.DLL")));
    Test().TurnLogOn(1);
    EXPECT_EQ(Delete(&m_files, &m_others, &monitors, &m_monitor), 0u);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_F(DriverFilesDeletion, TestsAMonitorAgainstOtherMonitorsAlone) {
    const StringList others = Texts({"A.DLL", "MON.DLL"});
    EXPECT_EQ(Delete(&m_files, &others, &m_none, &m_monitor), 0u);
    EXPECT_TRUE(IsThere("A.DLL"));
    EXPECT_FALSE(IsThere("MON.DLL"));
}

TEST_F(DriverFilesDeletion, LooksAtWhatIsGivenAlone) {
    EXPECT_EQ(Delete(&m_files, nullptr, &m_none, nullptr), 0u);
    EXPECT_EQ(Delete(nullptr, &m_others, nullptr, &m_monitor), 0u);
    EXPECT_EQ(Delete(nullptr, nullptr, nullptr, nullptr), 0u);
    EXPECT_THAT(Test().TakeCallNames({"DeleteFileA"}), IsEmpty());
    Test().TurnLogOn();
    EXPECT_EQ(Delete(nullptr, nullptr, nullptr, nullptr), 0u);
    EXPECT_EQ(Delete(nullptr, nullptr, nullptr, &m_monitor), 0u);
    EXPECT_THAT(
        Test().TakeLog(),
        ElementsAre("CDeleteDriverFile::DeleteDriverFiles() Start", "DeleteMonitorFile - () is in use",
                    "CDeleteDriverFile::DeleteDriverFiles() End(0)", "CDeleteDriverFile::DeleteDriverFiles() Start",
                    "DeleteMonitorFile - (MON.DLL) is in use", "CDeleteDriverFile::DeleteDriverFiles() End(0)"));
}

TEST_F(DriverFilesDeletion, DeletesNothingWithoutTheDriverDirectory) {
    for (const char* system : {"win98", "nt4", "xp", "vista"}) {
        SCOPED_TRACE(system);
        Begin(system);
        faults::FailCall("GetPrinterDriverDirectoryA", 1, 1722);
        Test().TurnLogOn();
        EXPECT_EQ(Delete(&m_files, &m_none, &m_none, &m_monitor), 1722u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre("CDeleteDriverFile::DeleteDriverFiles() Start",
                                                  "CDeleteDriverFile::DeleteDriverFiles() End(1722)"));
        EXPECT_THAT(Test().TakeCallNames({"DeleteFileA"}), IsEmpty());
    }
}

TEST_F(DriverFilesDeletion, DropsTheCodesOfTheRoutines) {
    faults::FailCall("GetPrinterDriverDirectoryA", 2, 1722, true);
    EXPECT_EQ(Delete(&m_files, &m_none, &m_none, &m_monitor), 0u);
    EXPECT_TRUE(IsThere("A.DLL"));
    EXPECT_TRUE(IsThere("MON.DLL"));
}

// ---- the routes -----------------------------------------------------------------------------------------------------

class DeletionRoutes : public EverySystemTest {
  protected:
    Lines Delete(const char* environment) {
        const StringList files = Texts({"A.DLL"});
        const std::string monitor = "MON.DLL";
        const StringList none;
        ForgetCalls(Test());
        EXPECT_EQ(CDeleteDriverFile().DeleteDriverFiles(3, environment, &files, &none, &none, &monitor), 0u);
        Lines deleted;
        for (const std::string& call : TakeCallsOf(Test(), {"DeleteFileA"})) {
            deleted.push_back(call.substr(0, call.find(')')));
        }
        return deleted;
    }
    static std::string Quoted(const std::string& path) {
        std::string text;
        for (char character : path) {
            text += character == '\\' ? "\\\\" : std::string(1, character);
        }
        return "DeleteFileA(\"" + text + "\"";
    }
};
INSTANTIATE_ON_EVERY_SYSTEM(DeletionRoutes);

TEST_P(DeletionRoutes, DeleteFilesByTheRoutinesOfTheSystem) {
    const std::string folder = DriverFolderOf();
    const std::string system = Machine().System().systemDirectory;
    Lines expected;
    if (Machine().Is9x()) {
        expected = {Quoted(folder + "\\A.DLL"), Quoted(folder + "\\MON.DLL")};
    } else if (GetParam() == "nt4") {
        expected = {Quoted(folder + "\\A.DLL"), Quoted(folder + "\\3\\A.DLL"), Quoted(system + "\\MON.DLL"),
                    Quoted(folder + "\\MON.DLL")};
    } else {
        expected = {Quoted(system + "\\MON.DLL"), Quoted(folder + "\\MON.DLL")};
    }
    EXPECT_THAT(Delete(nullptr), ElementsAreArray(expected));
}

TEST_P(DeletionRoutes, LogADeletionAlsoWhereTheSpoolerDoesIt) {
    const StringList files = Texts({"A.DLL"});
    const StringList monitors = Texts({"MON.DLL"});
    const StringList none;
    const std::string monitor = "MON.DLL";
    Test().TurnLogOn();
    EXPECT_EQ(CDeleteDriverFile().DeleteDriverFiles(3, nullptr, &files, &none, &monitors, &monitor), 0u);
    const std::string folder = DriverFolderOf();
    Lines expected = {"CDeleteDriverFile::DeleteDriverFiles() Start"};
    if (Machine().Is9x()) {
        expected = expected + Lines{"DeleteDriverFile9x() - A.DLL Start", "(" + folder + "\\A.DLL) is not delete(2)",
                                    "DeleteDriverFile9x() End(0)"};
    } else if (GetParam() == "nt4") {
        expected = expected + Lines{"DeleteDriverFileNT - (A.DLL) Start", "(" + folder + "\\A.DLL) is not delete(2)",
                                    "(" + folder + "\\3\\A.DLL) is not delete(3)", "DeleteDriverFileNT() End(0)"};
    }
    expected = expected + Lines{"DeleteDriverFiles - (A.DLL) is deleted", "DeleteMonitorFile - (MON.DLL) is in use",
                                "CDeleteDriverFile::DeleteDriverFiles() End(0)"};
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(expected));
}

// ---- the routines ---------------------------------------------------------------------------------------------------

TEST_F(DriverFilesDeletion, EveryRoutineRequiresAFile) {
    Test().TurnLogOn();
    EXPECT_EQ(DeleteDriverFile9x(0, nullptr, nullptr), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(DeleteDriverFileNT(2, nullptr, nullptr), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(DeleteMonitorFile9x(nullptr), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(DeleteMonitorFileNT(nullptr), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_F(DriverFilesDeletion, EveryRoutineGivesTheCodeOfTheDriverDirectory) {
    struct Case {
        DWORD (*call)();
        const char* start;
        const char* end;
    };
    const Case cases[] = {
        {[] { return DeleteDriverFile9x(0, nullptr, "A.DLL"); }, "DeleteDriverFile9x() - A.DLL Start",
         "DeleteDriverFile9x() End(1722)"},
        {[] { return DeleteDriverFileNT(2, nullptr, "A.DLL"); }, "DeleteDriverFileNT - (A.DLL) Start",
         "DeleteDriverFileNT() End(1722)"},
        {[] { return DeleteMonitorFile9x("A.DLL"); }, "DeleteMonitorFile9x() - A.DLL Start",
         "DeleteMonitorFile9x() End(1722)"},
        {[] { return DeleteMonitorFileNT("MON.DLL"); }, "DeleteMonitorFileNT() - MON.DLL Start",
         "DeleteMonitorFileNT() End(1722)"},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.start);
        faults::Reset();
        faults::FailCall("GetPrinterDriverDirectoryA", 1, 1722);
        Test().TurnLogOn();
        EXPECT_EQ(one.call(), 1722u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(one.start, one.end));
    }
    EXPECT_TRUE(IsThere("A.DLL"));
    EXPECT_FALSE(Machine().Files().Exists(InSystem("MON.DLL"))) << "the system folder comes first";
}

TEST_F(DriverFilesDeletion, DriverRoutinesLogEachDeletion) {
    Begin("win98");
    const std::string folder = DriverFolderOf();
    Test().TurnLogOn();
    EXPECT_EQ(DeleteDriverFile9x(0, "Windows 4.0", "A.DLL"), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DeleteDriverFile9x() - A.DLL Start",
                                              "(" + folder + "\\A.DLL) is deleted", "DeleteDriverFile9x() End(0)"));
    Begin("nt4");
    const std::string nt = DriverFolderOf();
    WriteFileOn(Machine(), nt + "\\2\\A.DLL", "in its place");
    Test().TurnLogOn();
    EXPECT_EQ(DeleteDriverFileNT(2, kX86, "A.DLL"), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DeleteDriverFileNT - (A.DLL) Start", "(" + nt + "\\A.DLL) is deleted",
                                              "(" + nt + "\\2\\A.DLL) is deleted", "DeleteDriverFileNT() End(0)"));
    Test().TurnLogOn(1);
    EXPECT_EQ(DeleteDriverFileNT(2, kX86, "A.DLL"), 0u);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_F(DriverFilesDeletion, DriverFileThatCanNotBeDeletedStaysAndTheResultIs0) {
    for (const char* system : {"win98", "nt4"}) {
        Begin(system);
        const std::string path = DriverFolderOf() + "\\A.DLL";
        const simulated::Files::Held held = Machine().Files().HoldOpen(path);
        Test().TurnLogOn();
        EXPECT_EQ(Machine().Is9x() ? DeleteDriverFile9x(0, nullptr, "A.DLL") : DeleteDriverFileNT(2, nullptr, "A.DLL"),
                  0u);
        EXPECT_THAT(Test().TakeLog(), Contains("(" + path + ") is not delete(32)"));
        EXPECT_TRUE(IsThere("A.DLL"));
    }
}

TEST_F(DriverFilesDeletion, VersionFolderIsASignedDecimalNumber) {
    DeleteDriverFileNT(0xffffffff, nullptr, "A.DLL");
    EXPECT_THAT(TakeCallsOf(Test(), {"DeleteFileA"}), Contains(HasSubstr("\\\\-1\\\\A.DLL")));
}

TEST_F(DriverFilesDeletion, MonitorFileGoesFromTheSystemAndTheDriverFolder) {
    Test().TurnLogOn();
    EXPECT_EQ(DeleteMonitorFileNT("MON.DLL"), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DeleteMonitorFileNT() - MON.DLL Start", "DeleteMonitorFileNT() End(0)"));
    EXPECT_FALSE(Machine().Files().Exists(InSystem("MON.DLL")));
    EXPECT_FALSE(IsThere("MON.DLL"));
    EXPECT_EQ(DeleteMonitorFileNT("MON.DLL"), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DeleteMonitorFileNT() - MON.DLL Start", "DeleteFile(" + InSystem("MON.DLL") + ") - (2)",
                            "DeleteFile(" + DriverFolderOf() + "\\MON.DLL) - (2)", "DeleteMonitorFileNT() End(0)"));
}

TEST_F(DriverFilesDeletion, EmptyMonitorNameMeetsTheFoldersThemselves) {
    Test().TurnLogOn();
    EXPECT_EQ(DeleteMonitorFileNT(""), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DeleteMonitorFileNT() -  Start", "DeleteFile(" + InSystem("") + ") - (5)",
                            "DeleteFile(" + DriverFolderOf() + "\\) - (5)", "DeleteMonitorFileNT() End(0)"));
    EXPECT_TRUE(IsThere("A.DLL"));
}

// ---- monitor files of the 9x family ---------------------------------------------------------------------------------

constexpr char kWininit[] = "C:\\WINDOWS\\wininit.ini";

TEST_F(DriverFilesDeletion, MonitorFileOf9xGoesAtOnceWhenItIsFree) {
    Begin("win98");
    Test().TurnLogOn();
    EXPECT_EQ(DeleteMonitorFile9x("MON.DLL"), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DeleteMonitorFile9x() - MON.DLL Start", "DeleteMonitorFile9x() End(0)"));
    EXPECT_FALSE(IsThere("MON.DLL"));
    EXPECT_EQ(DeleteMonitorFile9x("MON.DLL"), 0u) << "a missing file is no failure";
    EXPECT_EQ(DeleteMonitorFile9x("none\\MON.DLL"), 0u) << "nor is a missing folder";
    EXPECT_FALSE(Machine().Files().Exists(kWininit));
}

TEST_F(DriverFilesDeletion, MonitorFileOf9xThatIsHeldGoesAtTheNextStart) {
    Begin("win98");
    const std::string path = DriverFolderOf() + "\\MON.DLL";
    const simulated::Files::Held held = Machine().Files().HoldOpen(path);
    Test().TurnLogOn();
    EXPECT_EQ(DeleteMonitorFile9x("MON.DLL"), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DeleteMonitorFile9x() - MON.DLL Start", "WriteWininit() - NUL Start",
                                              "WriteWininit() End(0)", "DeleteMonitorFile9x() End(0)"));
    EXPECT_TRUE(IsThere("MON.DLL"));
    EXPECT_THAT(ReadFileOn(Machine(), kWininit), HasSubstr("NUL=" + path));
}

TEST_F(DriverFilesDeletion, EmptyMonitorNameOn9xSchedulesWhatTheNextStartCanNotDo) {
    // A folder is refused like a held file. The entry does no harm: no start deletes a folder.
    Begin("win98");
    Test().TurnLogOn();
    EXPECT_EQ(DeleteMonitorFile9x(""), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DeleteMonitorFile9x() -  Start", "WriteWininit() - NUL Start",
                                              "WriteWininit() End(0)", "DeleteMonitorFile9x() End(0)"));
    const std::vector<simulated::RestartStep> steps = simulated::Restart(Machine());
    ASSERT_EQ(steps.size(), 1u);
    EXPECT_EQ(steps.front().source, DriverFolderOf() + "\\");
    EXPECT_EQ(steps.front().code, DWORD{ERROR_ACCESS_DENIED});
    EXPECT_TRUE(IsThere("A.DLL"));
}

TEST_F(DriverFilesDeletion, MonitorFileOf9xGivesTheCodeOfItsSchedule) {
    Begin("win98");
    faults::FailCall("DeleteFileA", 1, 32);
    faults::FailCall("WritePrivateProfileStringA", 1, 112);
    Test().TurnLogOn();
    EXPECT_EQ(DeleteMonitorFile9x("MON.DLL"), 112u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DeleteMonitorFile9x() - MON.DLL Start", "WriteWininit() - NUL Start",
                                              "WriteWininit() End(112)", "DeleteMonitorFile9x() End(112)"));
}

}  // namespace

}  // namespace pikel
