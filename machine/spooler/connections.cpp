// Connections come and go.
#include "machine/spooler/connections.h"

#include "machine/base/machine.h"
#include "machine/registry/registry.h"
#include "machine/spooler/default_printer.h"

namespace pikel::simulated {

DWORD Connections::Add(std::string_view name) {
    if (name.empty()) {
        return ERROR_INVALID_PARAMETER;
    }
    Registry& registry = m_machine.Registry();
    const std::string share = ShareKeyOf(name);
    if (share.empty() || !registry.KeyExists(share)) {
        return ERROR_INVALID_PRINTER_NAME;
    }
    if (const DWORD code = registry.Number(share, "ConnectCode"); code != ERROR_SUCCESS) {
        return code;
    }
    if (!IsConnected(name)) {
        const Printer printer = Describe(name);
        registry.SetText(KeyOf(name), "Server", printer.serverName);
        registry.SetText(KeyOf(name), "Provider", "win32spl.dll");
        DefaultPrinter(m_machine).Added(printer, false);
    }
    return ERROR_SUCCESS;
}

DWORD Connections::Remove(std::string_view name) {
    if (name.empty()) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!IsConnected(name)) {
        return ERROR_INVALID_PRINTER_NAME;
    }
    const Printer printer = Describe(name);
    m_machine.Registry().DeleteKey(KeyOf(name));
    DefaultPrinter(m_machine).Removed(printer);
    return ERROR_SUCCESS;
}

}  // namespace pikel::simulated
