// Printers in the directory.
#include "machine/spooler/publishing.h"

#include <cstdint>
#include <cstdio>

#include "machine/registry/registry.h"
#include "machine/spooler/printer_store.h"

namespace pikel::simulated {

namespace {

constexpr char kObject[] = "ObjectGUID";
constexpr char kAction[] = "Action";

/// FNV-1a.
std::uint64_t HashOf(std::string_view text, std::uint64_t seed) {
    std::uint64_t hash = 14695981039346656037u ^ seed;
    for (const char character : text) {
        hash = (hash ^ static_cast<BYTE>(character)) * 1099511628211u;
    }
    return hash;
}

/// An object's name, which goes by a text: two runs on the same machine give the same.
std::string MakeGuid(std::string_view seed) {
    const std::uint64_t high = HashOf(seed, 1);
    const std::uint64_t low = HashOf(seed, 2);
    char text[40];
    std::snprintf(text, sizeof text, "{%08x-%04x-%04x-%04x-%012llx}", static_cast<unsigned>(high >> 32),
                  static_cast<unsigned>(high >> 16 & 0xFFFF), static_cast<unsigned>(high & 0xFFFF),
                  static_cast<unsigned>(low >> 48), static_cast<unsigned long long>(low & 0xFFFF'FFFF'FFFF));
    return text;
}

}  // namespace

Publication PublicationOf(Machine& machine, std::string_view printer) {
    const Registry& registry = machine.Registry();
    const std::string key = PrinterStore::KeyOf(printer);
    return {registry.Text(key, kObject), registry.Number(key, kAction, DSPRINT_UNPUBLISH)};
}

DWORD Publish(Machine& machine, std::string_view printer, DWORD action) {
    Registry& registry = machine.Registry();
    const std::string key = PrinterStore::KeyOf(printer);
    const Publication before = PublicationOf(machine, printer);
    switch (action) {
        case DSPRINT_PUBLISH:
        case DSPRINT_REPUBLISH:
            if (before.objectGuid.empty() || action == DSPRINT_REPUBLISH) {
                registry.SetText(key, kObject, MakeGuid(std::string(printer) + before.objectGuid));
            }
            registry.SetNumber(key, kAction, DSPRINT_PUBLISH);
            return ERROR_SUCCESS;
        case DSPRINT_UPDATE:
            return ERROR_SUCCESS;
        case DSPRINT_UNPUBLISH:
            registry.DeleteValue(key, kObject);
            registry.SetNumber(key, kAction, DSPRINT_UNPUBLISH);
            return ERROR_SUCCESS;
        default:
            return ERROR_INVALID_PARAMETER;
    }
}

}  // namespace pikel::simulated
