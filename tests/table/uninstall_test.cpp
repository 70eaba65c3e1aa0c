// An installation and its removal, by the direct route and through the Print UI: nothing stays on the machine but what
// no operation takes away, and every call of a removal comes in its order.
#include <algorithm>
#include <map>
#include <sstream>

#include "machine/operations.h"
#include "machine/system/machine_ini.h"
#include "support/sample_road.h"
#include "support/spooler_setup.h"

namespace pikel::testing_support {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// ---- what is on a machine -------------------------------------------------------------------------------------------

/// Files by path with their bytes, registry values by key and name with their text, keys alone.
using Inventory = std::map<std::string, std::string>;

/// "[KEY]" and "[KEY] "name"" for each key and value of a .reg text.
void TakeRegistry(const std::string& text, Inventory& inventory) {
    std::istringstream lines(text);
    std::string line, key, name;
    while (std::getline(lines, line)) {
        while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) {
            line.pop_back();
        }
        if (line.starts_with('[')) {
            key = line;
            inventory[key];
            name.clear();
        } else if (line.starts_with('"') || line.starts_with('@')) {
            const std::size_t equals = line.find("=");
            name = key + " " + line.substr(0, equals);
            inventory[name] = line.substr(equals);
        } else if (!name.empty()) {
            inventory[name] += line;  // bytes that go on
        }
    }
}

/// "C/Windows/win.ini" and its like, below a folder of the machine.
void TakeFiles(simulated::Machine& machine, const std::string& folder, const std::string& below, Inventory& inventory) {
    for (const simulated::FileEntry& entry : machine.Files().List(folder + "\\")) {
        const std::string path = folder + "\\" + entry.name;
        const bool isFolder = (entry.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        inventory[below + "/" + entry.name] = isFolder ? "folder" : ReadFileOn(machine, path);
        if (isFolder) {
            TakeFiles(machine, path, below + "/" + entry.name, inventory);
        }
    }
}

Inventory Take(simulated::Machine& machine) {
    machine.Commit();
    Inventory inventory;
    TakeRegistry(machine.Registry().Text(), inventory);
    inventory["machine.ini"] = simulated::WriteMachineIni(machine.System());
    TakeFiles(machine, "C:", "C", inventory);
    return inventory;
}

/// "+ x" for what came, "- x" for what went, "* x" for what changed.
std::vector<std::string> Differences(const Inventory& before, const Inventory& after) {
    std::vector<std::string> differences;
    for (const auto& [name, value] : before) {
        const auto now = after.find(name);
        if (now == after.end()) {
            differences.push_back("- " + name);
        } else if (now->second != value) {
            differences.push_back("* " + name);
        }
    }
    for (const auto& [name, value] : after) {
        if (!before.contains(name)) {
            differences.push_back("+ " + name);
        }
    }
    return differences;
}

// ---- removal --------------------------------------------------------------------------------------------------------

bool Is9x(std::string_view system) {
    return system.starts_with("win9") || system == "winme";
}
bool HasPrintUi(std::string_view system) {
    return !Is9x(system) && system != "nt4";
}

/// Deletes the printer and its driver, with the profiles that the printer reports.
PiStatus Uninstall(Road& road, bool printUi, DWORD fileRemovalFlag = 1) {
    PrinterRecord* record = nullptr;
    EXPECT_EQ(InterfaceTable().PI_KEL_GetPrinter(kPrinter, &record), 0u);
    if (record == nullptr) {
        return ERROR_INVALID_DATA;
    }
    road.Test().TakeCalls();
    const PiStatus status = InterfaceTable().PI_KEL_UninstallPrinter(
        kPrinter, kModel, road.From().version, road.From().processor, record->ColorProfileCount, record->ColorProfiles,
        fileRemovalFlag, printUi ? 1 : 0);
    InterfaceTable().PI_KEL_FreeMemory(record);
    return status;
}

void InstallDirectly(Road& road) {
    ASSERT_EQ(road.ReadInf(), 0u);
    ASSERT_EQ(road.CopyFiles(), 0u);
    ASSERT_EQ(road.AddDriver(), 0u);
    ASSERT_EQ(road.AddPrinter(), 0u);
}

void InstallThroughPrintUi(Road& road) {
    ASSERT_EQ(InterfaceTable().PI_KEL_InstallPrinterToPrintUI(road.Inf().c_str(), kPrinter, kModel, road.Port().c_str(),
                                                              "", nullptr, 0),
              0u);
}

class UninstallOnEverySystem : public ::testing::TestWithParam<std::string> {
  protected:
    UninstallOnEverySystem() : m_road(GetParam()) { m_road.UsePort("LPT1:"); }
    Road m_road;
};
INSTANTIATE_ON_EVERY_SYSTEM(UninstallOnEverySystem);

// ---- what rightly stays ---------------------------------------------------------------------------------------------

/// A difference that a removal leaves: how its line begins, on which systems, and why.
struct Stays {
    const char* line;
    bool (*on)(std::string_view system);
    const char* reason;
};

bool HasColourLibrary(std::string_view system) {
    return system != "win95" && system != "nt4";
}
bool Is98OrMe(std::string_view system) {
    return HasColourLibrary(system) && Is9x(system);
}
bool Is2000OrLater(std::string_view system) {
    return HasColourLibrary(system) && !Is9x(system);
}
bool Is95(std::string_view system) {
    return system == "win95";
}

const Stays kStays[] = {
    {"+ C/WINDOWS/SYSTEM/Color/NL", Is95, "Windows 95 has no routine that takes profiles away"},
    {"+ [HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\ICM\\", Is95, "likewise"},
    {"+ [HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\ICM\\mntr]", Is98OrMe,
     "the colour library keeps the key of a device class, empty"},
    {"+ [HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\ICM\\prtr]", Is98OrMe, "likewise"},
    {"+ [HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows NT\\CurrentVersion\\ICM\\mntr]", Is2000OrLater, "likewise"},
    {"+ [HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows NT\\CurrentVersion\\ICM\\prtr]", Is2000OrLater, "likewise"},
    {"+ [HKEY_LOCAL_MACHINE\\Software\\Northlight", Is2000OrLater,
     "the INF's own values, which its AddReg part enters and no operation takes away"},
};

/// Takes the differences that rightly stay out. A rule that finds none on a system of its own has gone stale.
std::vector<std::string> Unexplained(std::vector<std::string> differences, std::string_view system) {
    for (const Stays& stays : kStays) {
        if (stays.on(system)) {
            const auto count = std::erase_if(
                differences, [&](const std::string& difference) { return difference.starts_with(stays.line); });
            EXPECT_GT(count, 0u) << stays.line << " is gone: " << stays.reason;
        }
    }
    return differences;
}

TEST_P(UninstallOnEverySystem, DirectRouteLeavesTheMachineAsItWas) {
    const Inventory before = Take(*m_road.Test());
    InstallDirectly(m_road);
    EXPECT_FALSE(Differences(before, Take(*m_road.Test())).empty());
    EXPECT_EQ(Uninstall(m_road, false), 0u);
    EXPECT_THAT(Unexplained(Differences(before, Take(*m_road.Test())), GetParam()), IsEmpty());
}

TEST_P(UninstallOnEverySystem, PrintUiRouteLeavesTheMachineAsItWas) {
    if (!HasPrintUi(GetParam())) {
        return;
    }
    const Inventory before = Take(*m_road.Test());
    InstallThroughPrintUi(m_road);
    EXPECT_FALSE(Differences(before, Take(*m_road.Test())).empty());
    EXPECT_EQ(Uninstall(m_road, true), 0u);
    std::vector<std::string> left = Unexplained(Differences(before, Take(*m_road.Test())), GetParam());
    // The Print UI puts the INF among the system's own, and leaves it there when driver and printer go.
    const std::string inf = GetParam() == "win2000" ? "+ C/WINNT/inf/oem0.inf" : "+ C/WINDOWS/inf/oem0.inf";
    EXPECT_THAT(left, ElementsAre(inf));
}

TEST_P(UninstallOnEverySystem, DriverStaysWhileAnotherPrinterUsesIt) {
    InstallDirectly(m_road);
    const auto rename = [](std::string_view from, std::string_view to) {
        PrinterRecord* record = nullptr;
        ASSERT_EQ(InterfaceTable().PI_KEL_GetPrinter(std::string(from).c_str(), &record), 0u);
        std::string name(to);
        record->pPrinterName = name.data();
        // What belongs to the printer goes with its name, and would be written under the old one.
        record->RegistryEntryCount = 0;
        record->SecurityRecord = nullptr;
        record->ShareRecord = nullptr;
        EXPECT_EQ(InterfaceTable().PI_KEL_SetPrinter(std::string(from).c_str(), record), 0u);
        InterfaceTable().PI_KEL_FreeMemory(record);
    };
    rename(kPrinter, "Other");
    ASSERT_EQ(m_road.AddPrinter(), 0u);
    const auto drivers = [&] {
        DWORD needed = 0;
        DWORD count = 0;
        simulated::EnumPrinterDriversA(nullptr, nullptr, 3, nullptr, 0, &needed, &count);
        std::vector<BYTE> bytes(needed);
        simulated::EnumPrinterDriversA(nullptr, nullptr, 3, bytes.data(), needed, &needed, &count);
        return count;
    };
    EXPECT_EQ(Uninstall(m_road, false), 0u);
    EXPECT_EQ(drivers(), 1u);
    rename("Other", kPrinter);
    EXPECT_EQ(Uninstall(m_road, false), 0u);
    EXPECT_EQ(drivers(), 0u);
}

// ---- the order of a removal -----------------------------------------------------------------------------------------

/// The calls that tell the order; a run of the same one counts once.
const std::vector<std::string> kRemovalCalls = {"EnumPrintersA",
                                                "OpenPrinterA",
                                                "ClosePrinter",
                                                "DisassociateColorProfileFromDeviceA",
                                                "WcsDisassociateColorProfileFromDevice",
                                                "DeletePrinter",
                                                "EnumPrinterDriversA",
                                                "ControlService",
                                                "StartServiceA",
                                                "PrintUIEntryW",
                                                "DeletePrinterDriverA",
                                                "DeletePrinterDriverExA",
                                                "DeleteMonitorA",
                                                "DeleteFileA",
                                                "UninstallColorProfileA"};

std::vector<std::string> OrderOfCalls(TestMachine& test) {
    std::vector<std::string> names = test.TakeCallNames(kRemovalCalls);
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

struct OrderCase {
    const char* system;
    bool printUi;
    std::vector<std::string> printer;   ///< calls until the printer is gone
    std::vector<std::string> driver;    ///< calls until driver, monitor and files are gone
    std::vector<std::string> profiles;  ///< calls that take the profiles away, which the Print UI route does earlier
};

const std::vector<OrderCase> kOrders = {
    {"win98",
     false,
     {"OpenPrinterA", "DisassociateColorProfileFromDeviceA", "DeletePrinter", "ClosePrinter"},
     {"EnumPrinterDriversA", "DeletePrinterDriverA", "EnumPrinterDriversA", "DeleteMonitorA", "DeleteFileA"},
     {"EnumPrintersA", "UninstallColorProfileA"}},
    {"nt4",
     false,
     {"EnumPrintersA", "OpenPrinterA", "DeletePrinter", "ClosePrinter"},
     {"EnumPrinterDriversA", "ControlService", "StartServiceA", "DeletePrinterDriverA", "EnumPrinterDriversA",
      "DeleteMonitorA", "DeleteFileA"},
     {}},
    {"win2000",
     false,
     {"EnumPrintersA", "OpenPrinterA", "DisassociateColorProfileFromDeviceA", "DeletePrinter", "ClosePrinter"},
     {"EnumPrinterDriversA", "ControlService", "StartServiceA", "DeletePrinterDriverExA", "EnumPrinterDriversA",
      "DeleteMonitorA", "DeleteFileA"},
     {"EnumPrintersA", "UninstallColorProfileA"}},
    {"xp",
     false,
     {"EnumPrintersA", "OpenPrinterA", "DisassociateColorProfileFromDeviceA", "DeletePrinter", "ClosePrinter"},
     {"EnumPrinterDriversA", "ControlService", "StartServiceA", "DeletePrinterDriverExA", "EnumPrinterDriversA",
      "DeleteMonitorA", "DeleteFileA"},
     {"EnumPrintersA", "UninstallColorProfileA"}},
    // The monitor's routine of the Vista generation restarts the spooler once more.
    {"vista",
     false,
     {"EnumPrintersA", "OpenPrinterA", "WcsDisassociateColorProfileFromDevice", "DeletePrinter", "ClosePrinter"},
     {"EnumPrinterDriversA", "ControlService", "StartServiceA", "DeletePrinterDriverExA", "ControlService",
      "StartServiceA", "EnumPrinterDriversA", "DeleteMonitorA", "DeleteFileA"},
     {"EnumPrintersA", "UninstallColorProfileA"}},
    {"win2000",
     true,
     {"DisassociateColorProfileFromDeviceA", "OpenPrinterA", "ClosePrinter", "PrintUIEntryW"},
     {"EnumPrinterDriversA", "DeleteMonitorA", "DeleteFileA"},
     {"EnumPrintersA", "UninstallColorProfileA"}},
    {"xp",
     true,
     {"DisassociateColorProfileFromDeviceA", "OpenPrinterA", "ClosePrinter", "PrintUIEntryW"},
     {"EnumPrinterDriversA", "DeleteMonitorA", "DeleteFileA"},
     {"EnumPrintersA", "UninstallColorProfileA"}},
    // The Vista generation takes the direct route all the same.
    {"vista",
     true,
     {"EnumPrintersA", "OpenPrinterA", "WcsDisassociateColorProfileFromDevice", "DeletePrinter", "ClosePrinter"},
     {"EnumPrinterDriversA", "ControlService", "StartServiceA", "DeletePrinterDriverExA", "ControlService",
      "StartServiceA", "EnumPrinterDriversA", "DeleteMonitorA", "DeleteFileA"},
     {"EnumPrintersA", "UninstallColorProfileA"}},
};

/// How the calls of an uninstall follow one another, by the route that it really takes.
std::vector<std::string> UninstallOrder(const OrderCase& order) {
    std::vector<std::string> calls = order.printer;
    const auto append = [&](const std::vector<std::string>& more) {
        calls.insert(calls.end(), more.begin(), more.end());
    };
    append({"EnumPrintersA"});  // does another printer use the driver?
    if (std::find(calls.begin(), calls.end(), "PrintUIEntryW") == calls.end()) {
        append(order.driver);
        append(order.profiles);
    } else {
        // The lists, the restart and the driver first, then the profiles, and monitor and files last.
        append({"EnumPrinterDriversA", "ControlService", "StartServiceA", "PrintUIEntryW"});
        append(order.profiles);
        append(order.driver);
    }
    calls.erase(std::unique(calls.begin(), calls.end()), calls.end());
    return calls;
}

TEST(UninstallOrder, IsThatOfItsSystemAndRoute) {
    for (const OrderCase& order : kOrders) {
        SCOPED_TRACE(std::string(order.system) + (order.printUi ? ", Print UI" : ", direct"));
        Road road(order.system);
        road.UsePort("LPT1:");
        InstallDirectly(road);
        EXPECT_EQ(Uninstall(road, order.printUi), 0u);
        EXPECT_EQ(OrderOfCalls(road.Test()), UninstallOrder(order));
    }
}

TEST(UninstallWithoutFileRemoval, KeepsTheMonitorOnThePrintUiRouteAlone) {
    for (const OrderCase& order : kOrders) {
        if (std::string_view(order.system) != "xp") {
            continue;
        }
        SCOPED_TRACE(order.printUi ? "Print UI" : "direct");
        Road road(order.system);
        road.UsePort("LPT1:");
        InstallDirectly(road);
        const std::string monitor = road.Record()->MonitorInfo.pName;
        const std::string file = road.Test()->System().systemDirectory + "\\" + road.Record()->MonitorInfo.pDLLName;
        ASSERT_TRUE(IsMonitorRegistered(*road.Test(), monitor));
        ASSERT_TRUE(road.Test()->Files().Exists(file));
        EXPECT_EQ(Uninstall(road, order.printUi, 0), 0u);
        // Restart and profiles don't go by the flag.
        std::vector<std::string> expected = UninstallOrder(order);
        std::vector<std::string> calls = OrderOfCalls(road.Test());
        if (order.printUi) {
            for (const char* left : {"EnumPrinterDriversA", "DeleteMonitorA", "DeleteFileA"}) {
                std::erase(expected, left);
            }
            std::erase(calls, "DeleteFileA");  // of a file without a name, which the system refuses
        }
        EXPECT_EQ(calls, expected);
        EXPECT_FALSE(IsDriverRegistered(*road.Test(), kModel));
        EXPECT_EQ(IsMonitorRegistered(*road.Test(), monitor), order.printUi);
        EXPECT_EQ(road.Test()->Files().Exists(file), order.printUi);
    }
}

TEST(RemovalOrder, OfAPrinterAlone) {
    for (const OrderCase& order : kOrders) {
        SCOPED_TRACE(std::string(order.system) + (order.printUi ? ", Print UI" : ", direct"));
        Road road(order.system);
        road.UsePort("LPT1:");
        InstallDirectly(road);
        PrinterRecord* record = nullptr;
        ASSERT_EQ(InterfaceTable().PI_KEL_GetPrinter(kPrinter, &record), 0u);
        road.Test().TakeCalls();
        EXPECT_EQ(InterfaceTable().PI_KEL_DeletePrinter(kPrinter, record->ColorProfileCount, record->ColorProfiles,
                                                        order.printUi ? 1 : 0),
                  0u);
        InterfaceTable().PI_KEL_FreeMemory(record);
        EXPECT_EQ(OrderOfCalls(road.Test()), order.printer);
    }
}

TEST(RemovalOrder, OfADriverAlone) {
    for (const OrderCase& order : kOrders) {
        SCOPED_TRACE(std::string(order.system) + (order.printUi ? ", Print UI" : ", direct"));
        Road road(order.system);
        ASSERT_EQ(road.ReadInf(), 0u);
        ASSERT_EQ(road.CopyFiles(), 0u);
        ASSERT_EQ(road.AddDriver(), 0u);
        road.Test().TakeCalls();
        EXPECT_EQ(InterfaceTable().PI_KEL_DeletePrinterDriver(road.From().version, kModel, road.From().processor, 0,
                                                              nullptr, 1, order.printUi ? 1 : 0),
                  0u);
        // Other than an uninstall this restarts no spooler ahead of the driver; drivers obey the flag on Vista too.
        std::vector<std::string> expected;
        if (order.printUi) {
            expected = {"EnumPrinterDriversA", "PrintUIEntryW"};
            if (std::string_view(order.system) == "vista") {
                expected.insert(expected.end(), {"ControlService", "StartServiceA"});
            }
            expected.insert(expected.end(), {"EnumPrinterDriversA", "DeleteMonitorA", "DeleteFileA"});
        } else {
            expected = order.driver;
            if (const auto restart = std::find(expected.begin(), expected.end(), "ControlService");
                restart != expected.end()) {
                expected.erase(restart, restart + 2);
            }
        }
        EXPECT_EQ(OrderOfCalls(road.Test()), expected);
    }
}

}  // namespace
}  // namespace pikel::testing_support
