// The machine's port SDK.
#include "machine/spooler/port_sdk.h"

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

#include "machine/base/text.h"
#include "machine/modules/modules.h"
#include "machine/operations.h"
#include "machine/registry/registry.h"
#include "machine/security/rights.h"
#include "machine/spooler/monitors.h"
#include "machine/spooler/ports.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kRaw = 1;
constexpr DWORD kLpr = 2;
constexpr DWORD kLprPort = 515;

/// What a configuration text asks for. An empty one is an LPR port that counts no bytes.
struct PortSettings {
    DWORD protocol = kLpr;
    DWORD portNumber = kLprPort;
    bool countsBytes = false;
};

/// Takes one "key=value". @return false for one that means nothing
bool TakeSetting(std::string_view setting, PortSettings* settings) {
    const std::size_t equals = setting.find('=');
    const std::string_view key = setting.substr(0, equals);
    const std::string_view value = equals == std::string_view::npos ? std::string_view() : setting.substr(equals + 1);
    if (EqualNoCase(key, "porttype")) {
        DWORD number = 0;
        const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
        settings->protocol = kRaw;
        settings->portNumber = number;
        return error == std::errc() && end == value.data() + value.size() && number >= 1 && number <= 0xffff;
    }
    settings->countsBytes = EqualNoCase(value, "true");
    return EqualNoCase(key, "bytecount") && (settings->countsBytes || EqualNoCase(value, "false"));
}

/// Settings are separated by commas or semicolons.
std::optional<PortSettings> ParseConfiguration(std::string_view text) {
    PortSettings settings;
    while (!text.empty()) {
        const std::size_t end = text.find_first_of(",;");
        if (!TakeSetting(text.substr(0, end), &settings)) {
            return std::nullopt;
        }
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return settings;
}

bool IsPortName(std::string_view name) {
    return !name.empty() && name.size() <= Registry::kMaxKeyName && name.find_first_of("\\,") == std::string_view::npos;
}

/// The 9x family gets the vendor's own monitor with the SDK; elsewhere the system's is there or not.
bool PrepareMonitor(Machine& machine, const std::string& monitor) {
    if (Monitors(machine).Find(monitor)) {
        return true;
    }
    const bool canMake = machine.Is9x() && !monitor.empty() && monitor.find('\\') == std::string::npos;
    if (canMake) {
        machine.Registry().CreateKey(Monitors::KeyOf(monitor) + "\\Ports");
    }
    return canMake;
}

void WritePort(Machine& machine, const std::string& key, std::string_view name, const std::string& queue,
               const PortSettings& settings) {
    Registry& registry = machine.Registry();
    registry.SetText(key, "HostName", name);
    registry.SetNumber(key, "Protocol", settings.protocol);
    registry.SetNumber(key, "PortNumber", settings.portNumber);
    registry.SetText(key, "Queue", queue);
    registry.SetNumber(key, "Double Spool", settings.countsBytes ? 1 : 0);
    registry.SetNumber(key, "SNMP Enabled", 0);
}

}  // namespace

DWORD MakePort(Machine& machine, const std::string& monitor, std::string_view name, const std::string& queue,
               const std::string& configuration) {
    const std::optional<PortSettings> settings = ParseConfiguration(configuration);
    if (!settings || !IsPortName(name)) {
        return kPortBadArgument;
    }
    if (ReachSpooler(machine, nullptr) != ERROR_SUCCESS || RequireAdministrator(machine) != ERROR_SUCCESS) {
        return kPortNotPossible;
    }
    if (Ports(machine).Find(name)) {
        return kPortExists;
    }
    if (!PrepareMonitor(machine, monitor)) {
        return kPortBadArgument;
    }
    WritePort(machine, Ports::KeyOf(monitor, name), name, queue, *settings);
    machine.Commit();
    return kPortCreated;
}

void RegisterPortSdk(Machine& machine) {
    // By way of the one function type that every other may be cast to without a warning.
    const auto entry = reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&simulated::CreatePort));
    machine.Modules().Register(kPortSdkPath, {{"CreatePort", entry}});
}

}  // namespace pikel::simulated
