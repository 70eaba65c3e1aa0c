// The default printer, and the list of devices.
#include "machine/spooler/default_printer.h"

#include <cstdio>
#include <optional>
#include <set>
#include <vector>

#include "machine/base/last_error.h"
#include "machine/base/names.h"
#include "machine/base/text.h"
#include "machine/operations.h"
#include "machine/registry/registry.h"
#include "machine/spooler/connection_store.h"
#include "machine/spooler/drivers.h"
#include "machine/spooler/ports.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

constexpr char kWindowsKey[] = "HKCU\\Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows";
constexpr char kDevicesKey[] = "HKCU\\Software\\Microsoft\\Windows NT\\CurrentVersion\\Devices";
constexpr char kPrinterPortsKey[] = "HKCU\\Software\\Microsoft\\Windows NT\\CurrentVersion\\PrinterPorts";
constexpr char kTimeouts[] = ",15,45";

/// An entry of win.ini; a null text takes it away. The last error stays.
void WriteWinIni(const char* section, const char* key, const char* text) {
    const DWORD before = lastError;
    WriteProfileStringA(section, key, text);
    lastError = before;
}

/// A file's name without its extension.
std::string StemOf(const std::string& file) {
    return file.substr(0, file.rfind('.'));
}

std::string_view UpToComma(std::string_view text) {
    return text.substr(0, text.find(','));
}

}  // namespace

// ---- the default printer --------------------------------------------------------------------------------------------

std::string DefaultPrinter::Name() const {
    if (!m_machine.Is9x()) {
        return std::string(UpToComma(m_machine.Registry().Text(kWindowsKey, "Device")));
    }
    for (const Printer& printer : PrinterStore(m_machine).List()) {
        if ((printer.attributes & PRINTER_ATTRIBUTE_DEFAULT) != 0) {
            return printer.name;
        }
    }
    return {};
}

bool DefaultPrinter::Is(std::string_view name) const {
    return !name.empty() && IsSameName(m_machine, Name(), name);
}

void DefaultPrinter::Set(const Printer& printer) {
    if (m_machine.Is9x()) {
        MarkIn9xAttributes(printer.name);
    }
    ListDevice(printer);
    SetDeviceText(printer.name + "," + DeviceOf(printer));
}

void DefaultPrinter::SetDeviceText(std::string_view text) {
    if (m_machine.Is9x()) {
        WriteWinIni("windows", "device", text.empty() ? nullptr : std::string(text).c_str());
    } else if (text.empty()) {
        m_machine.Registry().DeleteValue(kWindowsKey, "Device");
    } else {
        m_machine.Registry().SetText(kWindowsKey, "Device", text);
    }
}

/// Moves the bit to a printer; an empty name takes it from all.
void DefaultPrinter::MarkIn9xAttributes(std::string_view name) {
    for (const Printer& printer : PrinterStore(m_machine).List()) {
        const bool isIt = IsSameName(m_machine, printer.name, name);
        const DWORD others = printer.attributes & ~PRINTER_ATTRIBUTE_DEFAULT;
        const DWORD attributes = isIt ? others | PRINTER_ATTRIBUTE_DEFAULT : others;
        if (attributes != printer.attributes) {
            m_machine.Registry().SetNumber(PrinterStore::KeyOf(printer.name), "Attributes", attributes);
        }
    }
}

// ---- devices --------------------------------------------------------------------------------------------------------

/// The first free one of "Ne00:", "Ne01:", ...: such a port stands for any that no program of old could open.
std::string DefaultPrinter::FreeNetworkPort() const {
    std::set<std::string> taken;
    for (const RegistryValue& value : m_machine.Registry().Values(kDevicesKey)) {
        const std::size_t comma = value.data.find(',');
        if (comma != std::string::npos) {
            taken.insert(LowerAscii(value.data.c_str() + comma + 1));
        }
    }
    for (unsigned number = 0;; ++number) {
        char port[16];
        std::snprintf(port, sizeof port, "Ne%02u:", number);
        if (!taken.contains(LowerAscii(port))) {
            return port;
        }
    }
}

std::string DefaultPrinter::DevicePort(const Printer& printer) const {
    const std::string first(UpToComma(printer.portName));
    const std::optional<Port> port = printer.serverName.empty() ? Ports(m_machine).Find(first) : std::nullopt;
    if (m_machine.Is9x() || (port && (port->type & PORT_TYPE_NET_ATTACHED) == 0)) {
        return first;
    }
    // A printer keeps the port that stands for its own.
    const std::string listed = m_machine.Registry().Text(kDevicesKey, printer.name);
    const std::size_t comma = listed.find(',');
    const bool isListed = comma != std::string::npos && LowerAscii(listed).find(",ne", comma) == comma;
    return isListed ? listed.substr(comma + 1) : FreeNetworkPort();
}

/// What follows the printer's name in the default device: driver and port.
std::string DefaultPrinter::DeviceOf(const Printer& printer) const {
    std::string driver = "winspool";
    if (m_machine.Is9x()) {
        const std::optional<Driver> known = Drivers(m_machine).Find(Environments(m_machine).Own(), printer.driverName);
        driver = known ? StemOf(known->driverFile) : std::string();
    }
    return driver + "," + DevicePort(printer);
}

void DefaultPrinter::ListDevice(const Printer& printer) {
    const std::string device = DeviceOf(printer);
    if (m_machine.Is9x()) {
        WriteWinIni("devices", printer.name.c_str(), device.c_str());
        WriteWinIni("PrinterPorts", printer.name.c_str(), (device + kTimeouts).c_str());
    } else {
        m_machine.Registry().SetText(kDevicesKey, printer.name, device);
        m_machine.Registry().SetText(kPrinterPortsKey, printer.name, device + kTimeouts);
    }
}

void DefaultPrinter::UnlistDevice(const Printer& printer) {
    if (m_machine.Is9x()) {
        WriteWinIni("devices", printer.name.c_str(), nullptr);
        WriteWinIni("PrinterPorts", printer.name.c_str(), nullptr);
    } else {
        m_machine.Registry().DeleteValue(kDevicesKey, printer.name);
        m_machine.Registry().DeleteValue(kPrinterPortsKey, printer.name);
    }
}

// ---- printers come and go -------------------------------------------------------------------------------------------

void DefaultPrinter::Added(const Printer& printer, bool wantsDefault) {
    const bool isByItself = m_machine.Is9x() || m_machine.Generation() >= Generation::Windows2000;
    if (wantsDefault || (isByItself && Name().empty())) {
        Set(printer);
    } else {
        ListDevice(printer);
    }
}

void DefaultPrinter::Changed(const Printer& before, const Printer& after, bool wantsDefault) {
    // On the 9x family the attributes have moved to the new name already.
    const bool was = Is(before.name) || (m_machine.Is9x() && Is(after.name));
    if (!IsSameName(m_machine, before.name, after.name)) {
        UnlistDevice(before);
    } else if (before.portName != after.portName) {
        UnlistDevice(before);  // so that a new network port gets a number of its own
    }
    // The attribute works on the 9x family alone: there a printer is made the default by it.
    if (was || (wantsDefault && m_machine.Is9x())) {
        Set(after);
    } else {
        ListDevice(after);
    }
}

void DefaultPrinter::Removed(const Printer& printer) {
    UnlistDevice(printer);
    // On the 9x family the bit went with the printer.
    const std::string name = Name();
    const bool wasDefault = m_machine.Is9x() ? (printer.attributes & PRINTER_ATTRIBUTE_DEFAULT) != 0
                                             : IsSameName(m_machine, name, printer.name);
    if (!wasDefault) {
        return;
    }
    SetDeviceText({});
    if (!m_machine.Is9x() && m_machine.Generation() < Generation::Windows2000) {
        return;
    }
    const std::vector<Printer> others = PrinterStore(m_machine).List();
    if (!others.empty()) {
        Set(others.front());
        return;
    }
    const std::vector<Printer> connections = ConnectionStore(m_machine).List();
    if (!connections.empty()) {
        Set(connections.front());
    }
}

}  // namespace pikel::simulated
