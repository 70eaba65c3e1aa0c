#include "machine/system/restart.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/network/shares.h"
#include "machine/registry/profiles.h"
#include "machine/registry/registry.h"
#include "machine/services/services.h"

namespace pikel::simulated {

namespace {

constexpr char kSessionManager[] = "HKLM\\SYSTEM\\CurrentControlSet\\Control\\Session Manager";
constexpr char kPendingRenames[] = "PendingFileRenameOperations";
constexpr std::string_view kNtPrefix = "\\??\\";

/// Pairs of source and target. An empty target deletes; "!" ahead of one lets it be replaced.
std::vector<RestartStep> TakePendingRenames(Machine& machine) {
    std::vector<RestartStep> steps;
    const RegistryValue* pending = machine.Registry().Find(kSessionManager, kPendingRenames);
    if (pending == nullptr) {
        return steps;
    }
    const std::string data = pending->data;
    std::string_view rest = data;
    auto next = [&rest] {
        const std::size_t end = std::min(rest.find('\0'), rest.size());
        const std::string_view text = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        return text;
    };
    auto withoutPrefix = [](std::string_view path) {
        if (path.starts_with('!')) {
            path.remove_prefix(1);
        }
        if (path.starts_with(kNtPrefix)) {
            path.remove_prefix(kNtPrefix.size());
        }
        return std::string(path);
    };
    while (!rest.empty()) {
        const std::string source = withoutPrefix(next());
        const std::string target = withoutPrefix(next());
        if (!source.empty()) {
            steps.push_back({source, target});
        }
    }
    machine.Registry().DeleteValue(kSessionManager, kPendingRenames);
    machine.Commit();
    return steps;
}

/// Lines target=source; "NUL" as the target deletes.
std::vector<RestartStep> TakeWininit(Machine& machine) {
    std::vector<RestartStep> steps;
    const std::string path = machine.System().windowsDirectory + "\\wininit.ini";
    const std::optional<std::string> bytes = machine.Files().Read(path);
    if (!bytes) {
        return steps;
    }
    ProfileText profile(machine.System().codePage, *bytes);
    for (const std::string& entry : profile.Entries("rename")) {
        const std::size_t equals = entry.find('=');
        if (equals == std::string::npos) {
            continue;
        }
        std::string target = entry.substr(0, equals);
        if (EqualNoCase(target, "NUL")) {
            target.clear();
        }
        steps.push_back({entry.substr(equals + 1), target});
    }
    // Windows keeps what was done under another name.
    machine.Files().Move(path, machine.System().windowsDirectory + "\\wininit.bak", true);
    return steps;
}

DWORD Carry(Files& files, const RestartStep& step) {
    if (step.target.empty()) {
        return files.Delete(step.source);
    }
    return files.Move(step.source, step.target, true);
}

}  // namespace

std::vector<RestartStep> Restart(Machine& machine) {
    std::vector<RestartStep> steps = machine.Is9x() ? TakeWininit(machine) : TakePendingRenames(machine);
    // The spooler holds files of its own, and comes up again when all is done.
    if (!machine.Is9x()) {
        machine.Services().SetState("Spooler", SERVICE_STOPPED);
    }
    for (RestartStep& step : steps) {
        step.code = Carry(machine.Files(), step);
    }
    machine.Services().StartAutomaticOnes();
    Shares(machine).StartAnew();
    machine.Commit();
    if (machine.System().restartPending) {
        SystemDescription system = machine.System();
        system.restartPending = false;
        machine.SetSystem(system);
    }
    return steps;
}

}  // namespace pikel::simulated
