// The spooler's monitors.
#include "machine/spooler/monitors.h"

#include <algorithm>

#include "machine/base/names.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/registry/registry.h"
#include "machine/services/services.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

bool IsMonitorName(std::string_view name) {
    return !name.empty() && name.size() <= Registry::kMaxKeyName && name.find('\\') == std::string_view::npos;
}

}  // namespace

std::string Monitors::KeyOf(std::string_view name) {
    return PrintKey("Monitors\\") + std::string(name);
}

std::vector<Monitor> Monitors::List() const {
    const Registry& registry = m_machine.Registry();
    std::vector<Monitor> monitors;
    for (std::string& name : registry.SubKeys(PrintKey("Monitors"))) {
        std::string library = registry.Text(KeyOf(name), "Driver");
        if (!library.empty()) {
            monitors.push_back({std::move(name), std::move(library)});
        }
    }
    return monitors;
}

std::optional<Monitor> Monitors::Find(std::string_view name) const {
    if (!IsMonitorName(name)) {
        return std::nullopt;
    }
    std::string library = m_machine.Registry().Text(KeyOf(name), "Driver");
    return library.empty() ? std::nullopt : std::optional(Monitor{std::string(name), std::move(library)});
}

DWORD Monitors::Add(std::string_view name, std::string_view environment, std::string_view library) {
    if (!IsMonitorName(name) || library.empty()) {
        return ERROR_INVALID_PARAMETER;
    }
    if (!environment.empty() && !EqualNoCase(environment, m_machine.Environment())) {
        return ERROR_INVALID_ENVIRONMENT;
    }
    if (Find(name)) {
        return ERROR_PRINT_MONITOR_ALREADY_INSTALLED;
    }
    const std::string path = m_machine.System().systemDirectory + "\\" + std::string(library);
    if (!m_machine.Files().Exists(path) || m_machine.Files().IsDirectory(path)) {
        return ERROR_MOD_NOT_FOUND;
    }
    m_machine.Registry().SetText(KeyOf(name), "Driver", library);
    return ERROR_SUCCESS;
}

void Monitors::Remove(std::string_view name) {
    m_machine.Registry().DeleteKey(KeyOf(name));
}

bool Monitors::IsLoaded(std::string_view path) const {
    const UINT codePage = m_machine.System().codePage;
    if (!IsSameName(m_machine, FolderOf(path, codePage), m_machine.System().systemDirectory) ||
        !m_machine.Services().IsSpoolerUp()) {
        return false;
    }
    const std::vector<Monitor> monitors = List();
    return std::ranges::any_of(monitors, [&](const Monitor& monitor) {
        return IsSameName(m_machine, monitor.library, FileName(path, codePage));
    });
}

void HoldLoadedMonitors(Machine& machine) {
    machine.Files().SetLoadedTest([&machine](std::string_view path) { return Monitors(machine).IsLoaded(path); });
}

}  // namespace pikel::simulated
