// What printers keep beside their settings.
#include "machine/spooler/printer_data.h"

#include "machine/spooler/printer_store.h"

namespace pikel::simulated {

std::string PrinterData::KeyOf(std::string_view key) const {
    return PrinterStore::KeyOf(m_printer) + "\\" + std::string(key);
}

DWORD PrinterData::Set(std::string_view key, std::string_view value, DWORD type, std::string_view data) {
    const bool isKey =
        !key.empty() && !key.starts_with('\\') && !key.ends_with('\\') && key.find("\\\\") == std::string_view::npos;
    if (!isKey || value.empty()) {
        return ERROR_INVALID_PARAMETER;
    }
    // A key whose name is too long can't be made.
    Registry& registry = m_machine.Registry();
    registry.CreateKey(KeyOf(key));
    if (!registry.KeyExists(KeyOf(key))) {
        return ERROR_INVALID_PARAMETER;
    }
    registry.Set(KeyOf(key), value, type, data);
    return ERROR_SUCCESS;
}

const RegistryValue* PrinterData::Get(std::string_view key, std::string_view value) const {
    return key.empty() ? nullptr : m_machine.Registry().Find(KeyOf(key), value);
}

}  // namespace pikel::simulated
