// PRINTUI.DLL of the machine: what its commands do.
#include "machine/printui/print_ui.h"

#include <algorithm>
#include <set>
#include <string>

#include "machine/base/text.h"
#include "machine/colour/colour.h"
#include "machine/operations.h"
#include "machine/printui/driver.h"
#include "machine/security/rights.h"
#include "machine/spooler/connections.h"
#include "machine/spooler/ports.h"
#include "machine/spooler/printers.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

constexpr std::size_t kShareNameLength = 8;  // that every client can see

// ---- drivers --------------------------------------------------------------------------------------------------------

DWORD AddDriver(Machine& machine, const PrintUICommand& command) {
    if (!command.model || !command.inf) {
        return ERROR_INVALID_PARAMETER;
    }
    DriverTarget target;
    if (const DWORD code = FindTarget(machine, command, &target); code != ERROR_SUCCESS) {
        return code;
    }
    return InstallDriver(machine, target, NarrowText(machine, command.inf), NarrowText(machine, command.folder),
                         NarrowText(machine, command.model));
}

/// The driver goes with those of its files that no other one of its version uses.
DWORD DeleteDriver(Machine& machine, const PrintUICommand& command) {
    if (!command.model) {
        return ERROR_INVALID_PARAMETER;
    }
    DriverTarget target;
    if (const DWORD code = FindTarget(machine, command, &target); code != ERROR_SUCCESS) {
        return code;
    }
    std::string model = NarrowText(machine, command.model);
    std::string environment = target.environment.name;
    const bool isDeleted =
        DeletePrinterDriverExA(nullptr, environment.data(), model.data(),
                               DPD_DELETE_UNUSED_FILES | DPD_DELETE_SPECIFIC_VERSION, target.version) != FALSE;
    return isDeleted ? static_cast<DWORD>(ERROR_SUCCESS) : lastError;
}

// ---- printers -------------------------------------------------------------------------------------------------------

/// Share names of all printers, folded.
std::set<std::string> TakenShareNames(Machine& machine) {
    std::set<std::string> names;
    for (const Printer& printer : Printers(machine).List()) {
        names.insert(FoldCase(machine.System().codePage, printer.shareName));
    }
    return names;
}

/// A share name that is free: the letters and digits of a printer's name, cut, and with a number where it is taken.
std::string MakeShareName(Machine& machine, std::string_view printer) {
    std::string base;
    for (const char character : printer) {
        const bool isPlain = (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
                             (character >= 'a' && character <= 'z');
        if (isPlain && base.size() < kShareNameLength) {
            base += character;
        }
    }
    base = base.empty() ? "Printer" : base;
    const std::set<std::string> taken = TakenShareNames(machine);
    std::string name = base;
    for (unsigned number = 2; taken.contains(FoldCase(machine.System().codePage, name)); ++number) {
        const std::string digits = std::to_string(number);
        name = base.substr(0, kShareNameLength - std::min(kShareNameLength, digits.size())) + digits;
    }
    return name;
}

/// Installs the driver of a new printer unless the machine has it.
DWORD ProvideDriver(Machine& machine, const PrintUICommand& command, Driver* driver) {
    const Environments environments(machine);
    const DriverTarget target{environments.Own(), environments.OwnVersion()};
    const std::string model = NarrowText(machine, command.model);
    std::optional<Driver> found = Drivers(machine).Find(target.environment, model, target.version);
    if (!found) {
        if (!command.inf) {
            return ERROR_INVALID_PARAMETER;
        }
        const DWORD code = InstallDriver(machine, target, NarrowText(machine, command.inf),
                                         NarrowText(machine, command.folder), model);
        if (code != ERROR_SUCCESS) {
            return code;
        }
        found = Drivers(machine).Find(target.environment, model, target.version);
    }
    *driver = found.value_or(Driver{});
    return ERROR_SUCCESS;
}

/// A new printer uses the profiles that its INF brings along. One that isn't installed is passed over.
void LinkProfiles(Machine& machine, const PrintUICommand& command, const std::string& printer) {
    if (!command.inf) {
        return;
    }
    const Environments environments(machine);
    const DriverTarget target{environments.Own(), environments.OwnVersion()};
    for (const std::string& profile :
         ProfilesOfPackage(machine, target, NarrowText(machine, command.inf), NarrowText(machine, command.model))) {
        ColourProfiles(machine).Link(profile, printer);
    }
}

DWORD InstallPrinter(Machine& machine, const PrintUICommand& command) {
    if (!command.printer || !command.port || !command.model) {
        return ERROR_INVALID_PARAMETER;
    }
    Printer printer;
    printer.name = NarrowText(machine, command.printer);
    printer.portName = NarrowText(machine, command.port);
    if (Printers(machine).Find(printer.name)) {
        return ERROR_PRINTER_ALREADY_EXISTS;
    }
    if (!Ports(machine).AreKnown(printer.portName)) {
        return ERROR_UNKNOWN_PORT;
    }
    Driver driver;
    if (const DWORD code = ProvideDriver(machine, command, &driver); code != ERROR_SUCCESS) {
        return code;
    }
    printer.driverName = driver.name;
    printer.datatype = driver.defaultDatatype.empty() ? "RAW" : driver.defaultDatatype;
    printer.printProcessor = "winprint";
    if (command.isShared) {
        printer.shareName = MakeShareName(machine, printer.name);
        printer.attributes |= PRINTER_ATTRIBUTE_SHARED;
    }
    const DWORD code = Printers(machine).Add(printer);
    if (code == ERROR_SUCCESS) {
        LinkProfiles(machine, command, printer.name);
    }
    return code;
}

DWORD DeletePrinterNamed(Machine& machine, const PrintUICommand& command) {
    if (!command.name) {
        return ERROR_INVALID_PARAMETER;
    }
    return Printers(machine).Remove(NarrowText(machine, command.name)) ? ERROR_SUCCESS : ERROR_INVALID_PRINTER_NAME;
}

DWORD DeleteConnection(Machine& machine, const PrintUICommand& command) {
    return command.name ? Connections(machine).Remove(NarrowText(machine, command.name))
                        : static_cast<DWORD>(ERROR_INVALID_PARAMETER);
}

// ---- properties -----------------------------------------------------------------------------------------------------

struct TextProperty {
    std::string_view key;
    std::string Printer::*member;
};
constexpr TextProperty kTextProperties[] = {
    {"PrinterName", &Printer::name},      {"ShareName", &Printer::shareName},
    {"PortName", &Printer::portName},     {"DriverName", &Printer::driverName},
    {"Comment", &Printer::comment},       {"Location", &Printer::location},
    {"SepFile", &Printer::separatorFile}, {"PrintProcessor", &Printer::printProcessor},
    {"DataType", &Printer::datatype},     {"Parameters", &Printer::parameters},
};

/// @return false for an unknown key
bool TakeProperty(Machine& machine, std::u16string_view key, std::u16string_view value, Printer* printer) {
    const std::string narrowKey = FromWide(machine.System().codePage, key);
    const auto* property =
        std::ranges::find_if(kTextProperties, [&](const TextProperty& its) { return EqualNoCase(its.key, narrowKey); });
    if (property == std::end(kTextProperties)) {
        return false;
    }
    printer->*(property->member) = FromWide(machine.System().codePage, value);
    if (property->member == &Printer::shareName) {
        // A name shares the printer, an empty one ends that.
        printer->attributes = printer->shareName.empty() ? printer->attributes & ~PRINTER_ATTRIBUTE_SHARED
                                                         : printer->attributes | PRINTER_ATTRIBUTE_SHARED;
    }
    return true;
}

DWORD SetProperties(Machine& machine, const PrintUICommand& command) {
    if (!command.name || command.properties.empty()) {
        return ERROR_INVALID_PARAMETER;
    }
    const std::string name = NarrowText(machine, command.name);
    std::optional<Printer> printer = Printers(machine).Find(name);
    if (!printer) {
        return ERROR_INVALID_PRINTER_NAME;
    }
    for (const auto& [key, value] : command.properties) {
        if (!TakeProperty(machine, key, value, &*printer)) {
            return ERROR_INVALID_PARAMETER;
        }
    }
    return Printers(machine).Change(name, *std::move(printer));
}

DWORD DoWork(Machine& machine, const PrintUICommand& command) {
    switch (command.work) {
        case PrintUICommand::Work::AddDriver:
            return AddDriver(machine, command);
        case PrintUICommand::Work::InstallPrinter:
            return InstallPrinter(machine, command);
        case PrintUICommand::Work::DeletePrinter:
            return DeletePrinterNamed(machine, command);
        case PrintUICommand::Work::DeleteConnection:
            return DeleteConnection(machine, command);
        case PrintUICommand::Work::DeleteDriver:
            return DeleteDriver(machine, command);
        case PrintUICommand::Work::SetProperties:
            return SetProperties(machine, command);
    }
    return ERROR_INVALID_PARAMETER;
}

}  // namespace

DWORD RunPrintUICommand(Machine& machine, const PrintUICommand& command) {
    DWORD code = ReachSpooler(machine, nullptr);
    if (code == ERROR_SUCCESS && command.work != PrintUICommand::Work::DeleteConnection) {
        code = RequireAdministrator(machine);
    }
    if (code == ERROR_SUCCESS) {
        code = DoWork(machine, command);
    }
    machine.Commit();
    return code;
}

}  // namespace pikel::simulated
