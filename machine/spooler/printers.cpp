// The spooler's local printers.
#include "machine/spooler/printers.h"

#include <algorithm>

#include "machine/base/names.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/registry/registry.h"
#include "machine/spooler/default_printer.h"
#include "machine/spooler/drivers.h"
#include "machine/spooler/ports.h"
#include "machine/spooler/printer_security.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kMinutesOfDay = 24 * 60;
constexpr DWORD kHighestPriority = 99;

void CopyTree(Registry& registry, const std::string& from, const std::string& to) {
    registry.CreateKey(to);
    for (const RegistryValue& value : registry.Values(from)) {
        registry.Set(to, value.name, value.type, value.data);
    }
    for (const std::string& name : registry.SubKeys(from)) {
        CopyTree(registry, from + "\\" + name, to + "\\" + name);
    }
}

}  // namespace

// ---- rules ----------------------------------------------------------------------------------------------------------

std::size_t Printers::LongestName() const {
    return m_machine.Is9x() ? CCHDEVICENAME - 1 : 220;
}

/// A name may begin with a server's, and has neither backslashes, commas nor exclamation marks besides.
DWORD Printers::CheckName(std::string_view name) const {
    if (name.empty()) {
        return ERROR_INVALID_PARAMETER;
    }
    if (name.starts_with("\\\\")) {
        const std::size_t separator = name.find('\\', 2);
        if (separator == std::string_view::npos || separator == 2 || separator + 1 == name.size()) {
            return ERROR_INVALID_PRINTER_NAME;
        }
        return CheckName(name.substr(separator + 1));
    }
    const bool isValid = name.size() <= LongestName() && name.find_first_of("\\,!") == std::string_view::npos;
    return isValid ? ERROR_SUCCESS : ERROR_INVALID_PRINTER_NAME;
}

bool Printers::IsPrintProcessor(std::string_view name) const {
    const std::string key =
        PrintKey("Environments\\") + std::string(m_machine.Environment()) + "\\Print Processors\\" + std::string(name);
    return !name.empty() && name.find('\\') == std::string_view::npos && m_machine.Registry().KeyExists(key);
}

/// The data types of the system's print processor.
bool Printers::TakesDatatype(std::string_view datatype) const {
    static constexpr std::string_view kNt[] = {
        "RAW",          "RAW [FF appended]", "RAW [FF auto]", "NT EMF 1.003",
        "NT EMF 1.006", "NT EMF 1.007",      "NT EMF 1.008",  "TEXT",
    };
    static constexpr std::string_view k9x[] = {"RAW", "EMF"};
    auto isOne = [datatype](std::string_view known) { return EqualNoCase(known, datatype); };
    return m_machine.Is9x() ? std::ranges::any_of(k9x, isOne) : std::ranges::any_of(kNt, isOne);
}

DWORD Printers::Check(const Printer& printer) const {
    const Environments environments(m_machine);
    if (!Drivers(m_machine).Find(environments.Own(), printer.driverName)) {
        return ERROR_UNKNOWN_PRINTER_DRIVER;
    }
    if (!Ports(m_machine).AreKnown(printer.portName)) {
        return ERROR_UNKNOWN_PORT;
    }
    if (!IsPrintProcessor(printer.printProcessor)) {
        return ERROR_UNKNOWN_PRINTPROCESSOR;
    }
    if (!TakesDatatype(printer.datatype)) {
        return ERROR_INVALID_DATATYPE;
    }
    if (!printer.separatorFile.empty() && !m_machine.Files().Exists(printer.separatorFile)) {
        return ERROR_INVALID_SEPARATOR_FILE;
    }
    if (printer.priority > kHighestPriority || printer.defaultPriority > kHighestPriority) {
        return ERROR_INVALID_PRIORITY;
    }
    if (printer.startTime >= kMinutesOfDay || printer.untilTime >= kMinutesOfDay) {
        return ERROR_INVALID_TIME;
    }
    const bool isSharedNameless = (printer.attributes & PRINTER_ATTRIBUTE_SHARED) != 0 && printer.shareName.empty();
    return isSharedNameless ? ERROR_INVALID_SHARENAME : ERROR_SUCCESS;
}

/// What the spooler and the driver add to a new printer.
void Printers::CompleteNew(Printer& printer) const {
    if (printer.datatype.empty()) {
        printer.datatype = "RAW";
    }
    if (printer.printProcessor.empty() && m_machine.Is9x()) {
        printer.printProcessor = "WinPrint";
    }
    if (printer.priority == 0) {
        printer.priority = 1;
    }
    if (printer.devMode.empty()) {
        printer.devMode = DefaultDevMode(printer);
    }
    if (printer.security.empty() && !m_machine.Is9x()) {
        printer.security = DefaultPrinterSecurity(m_machine);
    }
}

// ---- changes --------------------------------------------------------------------------------------------------------

DWORD Printers::Add(Printer printer) {
    if (const DWORD code = CheckName(printer.name); code != ERROR_SUCCESS) {
        return code;
    }
    printer.name = std::string(WithoutThisComputer(printer.name));
    const std::string key = KeyOf(printer.name);
    if (m_machine.Registry().KeyExists(key)) {
        return ERROR_PRINTER_ALREADY_EXISTS;
    }
    CompleteNew(printer);
    if (const DWORD code = Check(printer); code != ERROR_SUCCESS) {
        return code;
    }
    const bool wantsDefault = (printer.attributes & PRINTER_ATTRIBUTE_DEFAULT) != 0;
    printer.attributes &= ~(PRINTER_ATTRIBUTE_DEFAULT | PRINTER_ATTRIBUTE_LOCAL | PRINTER_ATTRIBUTE_NETWORK);
    Write(key, printer);
    m_machine.Registry().CreateKey(key + "\\PrinterDriverData");
    DefaultPrinter(m_machine).Added(printer, wantsDefault);
    return ERROR_SUCCESS;
}

DWORD Printers::Change(std::string_view name, Printer printer) {
    const std::optional<Printer> before = Find(name);
    if (!before) {
        return ERROR_PRINTER_DELETED;
    }
    if (const DWORD code = CheckName(printer.name); code != ERROR_SUCCESS) {
        return code;
    }
    printer.name = std::string(WithoutThisComputer(printer.name));
    const std::string oldKey = KeyOf(before->name);
    const std::string key = KeyOf(printer.name);
    const bool isRenamed = !IsSameName(m_machine, oldKey, key);
    if (isRenamed && m_machine.Registry().KeyExists(key)) {
        return ERROR_PRINTER_ALREADY_EXISTS;
    }
    if (const DWORD code = Check(printer); code != ERROR_SUCCESS) {
        return code;
    }
    const bool wantsDefault = (printer.attributes & PRINTER_ATTRIBUTE_DEFAULT) != 0;
    printer.attributes &= ~(PRINTER_ATTRIBUTE_LOCAL | PRINTER_ATTRIBUTE_NETWORK);
    // Leaving the bit out takes nothing away: there is always a default printer.
    printer.attributes =
        (printer.attributes & ~PRINTER_ATTRIBUTE_DEFAULT) | (before->attributes & PRINTER_ATTRIBUTE_DEFAULT);
    printer.status = before->status;
    if (isRenamed) {
        CopyTree(m_machine.Registry(), oldKey, key);
        m_machine.Registry().DeleteKey(oldKey);
    }
    Write(key, printer);
    DefaultPrinter(m_machine).Changed(*before, printer, wantsDefault);
    return ERROR_SUCCESS;
}

bool Printers::Remove(std::string_view name) {
    const std::optional<Printer> printer = Find(name);
    if (!printer) {
        return false;
    }
    m_machine.Registry().DeleteKey(KeyOf(printer->name));
    DefaultPrinter(m_machine).Removed(*printer);
    return true;
}

void Printers::SetStatus(std::string_view name, DWORD status) {
    if (const std::optional<Printer> printer = Find(name)) {
        m_machine.Registry().SetNumber(KeyOf(printer->name), "Status", status);
    }
}

void Printers::SetSecurity(std::string_view name, std::string_view security) {
    if (const std::optional<Printer> printer = Find(name)) {
        m_machine.Registry().SetBytes(KeyOf(printer->name), "Security", security);
    }
}

void Printers::SetDevMode(std::string_view name, std::string_view devMode) {
    if (const std::optional<Printer> printer = Find(name)) {
        const std::string bytes = devMode.empty() ? DefaultDevMode(*printer) : std::string(devMode);
        m_machine.Registry().SetBytes(KeyOf(printer->name), "Default DevMode", bytes);
    }
}

}  // namespace pikel::simulated
