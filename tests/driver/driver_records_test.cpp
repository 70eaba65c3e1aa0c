// Which records count where the spooler lists several of one name, and by how much of a name a file is known.
#include <cstring>
#include <string>
#include <vector>

#include "driver/delete_driver_file.h"
#include "driver/file_use.h"
#include "support/calls.h"
#include "support/changed_drivers.h"
#include "support/spooler_setup.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kX86[] = "Windows NT x86";

char* Text(const char* text) {
    return const_cast<char*>(text);
}

// ---- the lists of a deletion ----------------------------------------------------------------------------------------

/// What GetFileList tells of the driver "Aurora".
struct Lists {
    DWORD code = 99;
    StringList files;
    StringList otherFiles;
    std::string monitorName;
    std::string monitorFile;
    StringList otherMonitorFiles;
};

class RecordsOfOneName : public MachineTest {
  protected:
    RecordsOfOneName() {
        PutMonitor(Machine(), "First Monitor", "first.dll");
        PutMonitor(Machine(), "Second Monitor", "second.dll");
        PutDriver(Machine(), {.name = "A",
                              .driver = "a.dll",
                              .config = "a.dll",
                              .data = "a.dll",
                              .dependents = {"one.dll"},
                              .monitor = "First Monitor"});
        PutDriver(Machine(), {.name = "B",
                              .driver = "b.dll",
                              .config = "b.dll",
                              .data = "b.dll",
                              .dependents = {"two.dll"},
                              .monitor = "Second Monitor"});
    }
    /// Both records under one name, with the second one's monitor.
    Lists ListWith(const char* secondMonitor) {
        ChangedDrivers<DRIVER_INFO_3A> changed([&](DRIVER_INFO_3A* records, DWORD count) {
            ASSERT_EQ(count, 2u);
            EXPECT_STREQ(records[0].pName, "A");
            records[0].pName = Text("Aurora");
            records[1].pName = Text("AURORA");
            records[1].pMonitorName = Text(secondMonitor);
        });
        Lists lists;
        lists.code = CDeleteDriverFile().GetFileList(3, kX86, "Aurora", &lists.files, &lists.otherFiles,
                                                     &lists.monitorName, &lists.monitorFile, &lists.otherMonitorFiles);
        return lists;
    }
};

TEST_F(RecordsOfOneName, LaterOnesMonitorIsTheDriversAndAllFilesAre) {
    const Lists lists = ListWith("Second Monitor");
    EXPECT_EQ(lists.code, 0u);
    EXPECT_THAT(lists.files, ElementsAre("A.DLL", "B.DLL", "ONE.DLL", "TWO.DLL"));
    EXPECT_THAT(lists.otherFiles, IsEmpty());
    EXPECT_EQ(lists.monitorName, "Second Monitor");
    EXPECT_EQ(lists.monitorFile, "SECOND.DLL");
    EXPECT_THAT(lists.otherMonitorFiles, IsEmpty());
}

TEST_F(RecordsOfOneName, LaterOneWithoutAMonitorThatCanBeToldLeavesTheEarliersOne) {
    for (const char* second : {"", "Nobody's Monitor", static_cast<const char*>(nullptr)}) {
        const Lists lists = ListWith(second);
        EXPECT_EQ(lists.monitorName, "First Monitor");
        EXPECT_EQ(lists.monitorFile, "FIRST.DLL");
    }
}

// ---- whether a driver's file is loaded ------------------------------------------------------------------------------

class LoadedDriver : public MachineTest {
  protected:
    LoadedDriver() : MachineTest("win98") {}
    std::string Path(const std::string& file) { return Machine().System().systemDirectory + "\\" + file; }
    /// Adds a driver with one dependent file.
    void Put(const std::string& name, const std::string& dependent) {
        PutDriver(Machine(), {.name = name,
                              .driver = "aurora.drv",
                              .config = "aurora.drv",
                              .data = "aurora.drv",
                              .dependents = {dependent}});
    }
    /// Whether a driver counts as loaded while its one dependent file is held.
    DWORD IsLoadedWith(const std::string& dependent) {
        if (!Machine().Files().Exists(Path(dependent))) {
            WriteFileOn(Machine(), Path(dependent), "x");
        }
        std::string list = dependent + '\0' + '\0';
        ChangedDrivers<DRIVER_INFO_3A> changed([&](DRIVER_INFO_3A* records, DWORD count) {
            ASSERT_EQ(count, 1u);
            records[0].pDependentFiles = list.data();
            records[0].pMonitorName = Text("Aurora Monitor");
        });
        const auto held = Machine().Files().HoldOpen(Path(dependent), 0);
        return IsDriverFileLoaded("Aurora");
    }
};

TEST_F(LoadedDriver, IsTheFirstOfItsNameAlone) {
    Put("A", "one.dll");
    Put("B", "two.dll");
    ChangedDrivers<DRIVER_INFO_3A> changed([](DRIVER_INFO_3A* records, DWORD count) {
        ASSERT_EQ(count, 2u);
        EXPECT_STREQ(records[0].pName, "A");
        records[0].pName = Text("Aurora");
        records[1].pName = Text("aurora");
    });
    {
        const auto held = Machine().Files().HoldOpen(Path("two.dll"), 0);
        EXPECT_EQ(IsDriverFileLoaded("Aurora"), 0u);
    }
    const auto held = Machine().Files().HoldOpen(Path("one.dll"), 0);
    EXPECT_EQ(IsDriverFileLoaded("Aurora"), 1u);
}

TEST_F(LoadedDriver, EndOfAStemCountsAndNotItsStartOrMiddle) {
    Put("Aurora", "one.dll");
    EXPECT_EQ(IsLoadedWith("aurora9x.dll"), 0u);
    EXPECT_EQ(IsLoadedWith("9xaurora.dll"), 1u);
    EXPECT_EQ(IsLoadedWith("aur9xora.dll"), 1u);
    EXPECT_EQ(IsLoadedWith("9xaur9x.dll"), 1u) << "the first place alone is looked at";
    EXPECT_EQ(IsLoadedWith("aurora9.dll"), 1u);
    EXPECT_EQ(IsLoadedWith("aurora_x.dll"), 1u);
}

TEST_F(LoadedDriver, PortMonitorOfUsbIsKnownByItsWholeName) {
    Put("Aurora", "one.dll");
    EXPECT_EQ(IsLoadedWith("usbmon.dll"), 0u);
    EXPECT_EQ(IsLoadedWith("usbmon.drv"), 1u);
    EXPECT_EQ(IsLoadedWith("usbmon2.dll"), 1u);
    EXPECT_EQ(IsLoadedWith("xusbmon.dll"), 1u);
    EXPECT_EQ(IsLoadedWith("usbmo.dll"), 1u);
}

TEST_F(LoadedDriver, OwnMonitorIsKnownByItsWholeName) {
    PutMonitor(Machine(), "Aurora Monitor", "aurmon.dll");
    Put("Aurora", "one.dll");
    EXPECT_EQ(IsLoadedWith("AURMON.dll"), 0u);
    EXPECT_EQ(IsLoadedWith("aurmon.drv"), 1u);
    EXPECT_EQ(IsLoadedWith("aurmon2.dll"), 1u);
    EXPECT_EQ(IsLoadedWith("xaurmon.dll"), 1u);
}

}  // namespace
}  // namespace pikel
