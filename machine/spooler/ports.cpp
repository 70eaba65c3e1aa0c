// The spooler's ports.
#include "machine/spooler/ports.h"

#include <algorithm>

#include "machine/base/names.h"
#include "machine/base/text.h"
#include "machine/operations.h"
#include "machine/registry/registry.h"
#include "machine/spooler/monitors.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

constexpr char kLocalMonitor[] = "Local Port";
constexpr char kPortsKey[] = "HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Ports";

/// The keys of a section of win.ini.
std::vector<std::string> KeysOfWinIni(const char* section) {
    const DWORD before = lastError;
    std::string buffer(4096, '\0');
    DWORD length = GetProfileStringA(section, nullptr, "", buffer.data(), static_cast<DWORD>(buffer.size()));
    // A section that doesn't fit is cut two characters before the end.
    while (length == buffer.size() - 2 && buffer.size() < (1u << 20)) {
        buffer.assign(buffer.size() * 2, '\0');
        length = GetProfileStringA(section, nullptr, "", buffer.data(), static_cast<DWORD>(buffer.size()));
    }
    lastError = before;
    return length == 0 ? std::vector<std::string>() : SplitMultiString(buffer.c_str());
}

}  // namespace

std::string Ports::KeyOf(std::string_view monitor, std::string_view name) {
    return Monitors::KeyOf(monitor) + "\\Ports\\" + std::string(name);
}

std::vector<std::string> Ports::LocalNames() const {
    if (m_machine.Is9x()) {
        return KeysOfWinIni("ports");
    }
    std::vector<std::string> names;
    for (RegistryValue& value : m_machine.Registry().Values(kPortsKey)) {
        if (!value.name.empty()) {
            names.push_back(std::move(value.name));
        }
    }
    return names;
}

std::vector<Port> Ports::List() const {
    std::vector<Port> ports;
    for (std::string& name : LocalNames()) {
        ports.push_back({std::move(name), kLocalMonitor, PORT_TYPE_WRITE});
    }
    const Registry& registry = m_machine.Registry();
    for (const std::string& monitor : registry.SubKeys(PrintKey("Monitors"))) {
        for (std::string& name : registry.SubKeys(Monitors::KeyOf(monitor) + "\\Ports")) {
            ports.push_back({std::move(name), monitor, PORT_TYPE_WRITE | PORT_TYPE_NET_ATTACHED});
        }
    }
    return ports;
}

bool Ports::IsLocal(std::string_view name) const {
    if (!m_machine.Is9x()) {
        return m_machine.Registry().Find(kPortsKey, name) != nullptr;
    }
    const std::vector<std::string> names = LocalNames();
    return std::ranges::any_of(names, [&](const std::string& local) { return IsSameName(m_machine, local, name); });
}

std::optional<Port> Ports::Find(std::string_view name) const {
    if (name.empty()) {
        return std::nullopt;
    }
    if (IsLocal(name)) {
        return Port{std::string(name), kLocalMonitor, PORT_TYPE_WRITE};
    }
    const Registry& registry = m_machine.Registry();
    for (const std::string& monitor : registry.SubKeys(PrintKey("Monitors"))) {
        if (registry.KeyExists(KeyOf(monitor, name))) {
            return Port{std::string(name), monitor, PORT_TYPE_WRITE | PORT_TYPE_NET_ATTACHED};
        }
    }
    return std::nullopt;
}

bool Ports::AreKnown(std::string_view names) const {
    if (m_machine.Is9x() && names.starts_with("\\\\")) {
        return true;
    }
    while (true) {
        const std::size_t comma = names.find(',');
        std::string_view name = names.substr(0, comma);
        while (name.starts_with(' ')) {
            name.remove_prefix(1);
        }
        if (!Find(name)) {
            return false;
        }
        if (comma == std::string_view::npos) {
            return true;
        }
        names.remove_prefix(comma + 1);
    }
}

}  // namespace pikel::simulated
