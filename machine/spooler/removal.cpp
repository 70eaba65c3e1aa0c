// Taking away what something else may need.
#include "machine/spooler/removal.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "machine/base/machine.h"
#include "machine/base/names.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/security/rights.h"
#include "machine/spooler/drivers.h"
#include "machine/spooler/environments.h"
#include "machine/spooler/monitors.h"
#include "machine/spooler/ports.h"
#include "machine/spooler/printer_store.h"

namespace pikel::simulated {

namespace {

bool IsMonitorNeeded(Machine& machine, std::string_view name) {
    const std::vector<Port> ports = Ports(machine).List();
    const std::vector<Driver> drivers = Drivers(machine).List(Environments(machine).Own());
    return std::ranges::any_of(ports, [&](const Port& port) { return IsSameName(machine, port.monitor, name); }) ||
           std::ranges::any_of(drivers,
                               [&](const Driver& driver) { return IsSameName(machine, driver.monitorName, name); });
}

bool IsUsedByPrinter(Machine& machine, const std::string& driver) {
    for (const Printer& printer : PrinterStore(machine).List()) {
        if (IsSameName(machine, printer.driverName, driver)) {
            return true;
        }
    }
    return false;
}

/// Files of a driver that no other one of its version names.
std::vector<std::string> UnusedFilesOf(const Machine& machine, const std::vector<Driver>& drivers,
                                       const Driver& driver) {
    const UINT codePage = machine.System().codePage;
    std::set<std::string> used;
    for (const Driver& other : drivers) {
        if (other.version == driver.version && !IsSameName(machine, other.name, driver.name)) {
            for (const std::string& file : Drivers::FilesOf(other)) {
                used.insert(FoldCase(codePage, file));
            }
        }
    }
    std::vector<std::string> unused;
    for (std::string& file : Drivers::FilesOf(driver)) {
        if (used.insert(FoldCase(codePage, file)).second) {
            unused.push_back(std::move(file));
        }
    }
    return unused;
}

}  // namespace

DWORD DeleteDriver(Machine& machine, const char* environmentName, const char* name, const DriverDeletion& deletion) {
    if (const DWORD code = RequireAdministrator(machine); code != ERROR_SUCCESS) {
        return code;
    }
    Environments environments(machine);
    const std::optional<Environment> environment = environments.Find(TextOf(environmentName));
    if (!environment) {
        return ERROR_INVALID_ENVIRONMENT;
    }
    Drivers drivers(machine);
    const std::vector<Driver> all = drivers.List(*environment);
    std::vector<Driver> going;
    bool isOneLeft = false;
    for (const Driver& driver : all) {
        if (IsSameName(machine, driver.name, TextOf(name))) {
            const bool goes = !deletion.version || driver.version == *deletion.version;
            goes ? going.push_back(driver) : void(isOneLeft = true);
        }
    }
    if (going.empty()) {
        return ERROR_UNKNOWN_PRINTER_DRIVER;
    }
    if (environments.IsOwn(*environment) && !isOneLeft && IsUsedByPrinter(machine, going.front().name)) {
        return ERROR_PRINTER_DRIVER_IN_USE;
    }
    for (const Driver& driver : going) {
        const std::vector<std::string> unused = UnusedFilesOf(machine, all, driver);
        if (deletion.deletesAllFiles && unused.size() != Drivers::FilesOf(driver).size()) {
            return ERROR_PRINTER_DRIVER_IN_USE;
        }
        drivers.Remove(*environment, driver.name, driver.version);
        if (deletion.deletesUnusedFiles || deletion.deletesAllFiles) {
            for (const std::string& file : unused) {
                // A file that is held open stays.
                machine.Files().Delete(Environments::VersionDirectory(*environment, driver.version) + "\\" + file);
            }
        }
    }
    return ERROR_SUCCESS;
}

DWORD RemoveMonitor(Machine& machine, std::string_view name) {
    if (name.empty()) {
        return ERROR_INVALID_PARAMETER;
    }
    Monitors monitors(machine);
    if (!monitors.Find(name)) {
        return ERROR_UNKNOWN_PRINT_MONITOR;
    }
    if (IsMonitorNeeded(machine, name)) {
        return ERROR_PRINT_MONITOR_IN_USE;
    }
    monitors.Remove(name);
    return ERROR_SUCCESS;
}

}  // namespace pikel::simulated
