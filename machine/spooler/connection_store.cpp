// Connections to shared printers of other computers.
#include "machine/spooler/connection_store.h"

#include <algorithm>

#include "machine/registry/registry.h"
#include "machine/spooler/printer_security.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

constexpr char kConnectionsKey[] = "HKCU\\Printers\\Connections";
constexpr char kServersKey[] = "HKLM\\SOFTWARE\\Simulated Network\\Servers";

/// The place of the backslash between server and printer; npos for a name of another form.
std::size_t SeparatorOf(std::string_view name) {
    if (!name.starts_with("\\\\")) {
        return std::string_view::npos;
    }
    const std::size_t separator = name.find('\\', 2);
    const bool isShared = separator != std::string_view::npos && separator > 2 && separator + 1 < name.size() &&
                          name.find('\\', separator + 1) == std::string_view::npos;
    return isShared ? separator : std::string_view::npos;
}

}  // namespace

std::string ConnectionStore::ShareKeyOf(std::string_view name) {
    return SeparatorOf(name) == std::string_view::npos ? std::string() : kServersKey + std::string(name.substr(1));
}

std::string ConnectionStore::KeyOf(std::string_view name) {
    std::string key(name);
    std::ranges::replace(key, '\\', ',');
    return kConnectionsKey + ("\\" + key);
}

bool ConnectionStore::IsConnected(std::string_view name) const {
    return SeparatorOf(name) != std::string_view::npos && m_machine.Registry().KeyExists(KeyOf(name));
}

Printer ConnectionStore::Describe(std::string_view name) const {
    const Registry& registry = m_machine.Registry();
    const std::string key = ShareKeyOf(name);
    Printer printer;
    printer.name = name;
    printer.serverName = name.substr(0, SeparatorOf(name));
    printer.shareName = name.substr(SeparatorOf(name) + 1);
    printer.portName = registry.Text(key, "Port", name);
    printer.driverName = registry.Text(key, "Driver");
    printer.comment = registry.Text(key, "Comment");
    printer.location = registry.Text(key, "Location");
    printer.printProcessor = "winprint";
    printer.datatype = "RAW";
    printer.attributes = PRINTER_ATTRIBUTE_NETWORK | PRINTER_ATTRIBUTE_SHARED;
    printer.devMode = PrinterStore(m_machine).DefaultDevMode(printer);
    printer.security = DefaultPrinterSecurity(m_machine);
    return printer;
}

std::vector<Printer> ConnectionStore::List() const {
    std::vector<Printer> printers;
    for (std::string& name : m_machine.Registry().SubKeys(kConnectionsKey)) {
        std::ranges::replace(name, ',', '\\');
        if (SeparatorOf(name) != std::string::npos) {
            printers.push_back(Describe(name));
        }
    }
    return printers;
}

std::optional<Printer> ConnectionStore::Find(std::string_view name) const {
    const std::string key = ShareKeyOf(name);
    const bool isThere = !key.empty() && (m_machine.Registry().KeyExists(key) || IsConnected(name));
    return isThere ? std::optional(Describe(name)) : std::nullopt;
}

}  // namespace pikel::simulated
