// The DEVMODEs that the user has chosen for printers.
#include "machine/spooler/user_dev_modes.h"

#include "machine/registry/registry.h"

namespace pikel::simulated {

namespace {

constexpr char kKey[] = "HKCU\\Printers\\DevModePerUser";

}  // namespace

std::string UserDevMode(Machine& machine, std::string_view printer) {
    const RegistryValue* value = machine.Registry().Find(kKey, printer);
    return value == nullptr ? std::string() : value->data;
}

void SetUserDevMode(Machine& machine, std::string_view printer, std::string_view devMode) {
    if (devMode.empty()) {
        machine.Registry().DeleteValue(kKey, printer);
    } else {
        machine.Registry().SetBytes(kKey, printer, devMode);
    }
}

}  // namespace pikel::simulated
