// The service control manager: states on the machine's clock, dependencies, and program files in use.
#include "machine/services/services.h"

#include <algorithm>
#include <set>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/registry/registry.h"

namespace pikel::simulated {

namespace {

constexpr std::string_view kServices = "HKLM\\SYSTEM\\CurrentControlSet\\Services";
constexpr DWORD kCannotAcceptControl = 1061;
constexpr DWORD kCircularDependency = 1059;
constexpr DWORD kDependencyFailed = 1068;
constexpr DWORD kDependencyMissing = 1075;
constexpr DWORD kAcceptStop = 1;

std::string KeyOf(std::string_view name) {
    return std::string(kServices) + "\\" + std::string(name);
}

ULONGLONG Later(ULONGLONG now, ULONGLONG time) {
    return time > kNever - now ? kNever : now + time;
}

/// The program of a command line: what stands in quotes, or all up to the first ".exe".
std::string_view ProgramOf(std::string_view commandLine) {
    if (commandLine.starts_with('"')) {
        commandLine.remove_prefix(1);
        return commandLine.substr(0, commandLine.find('"'));
    }
    std::size_t extension = LowerAscii(commandLine).find(".exe");
    return extension == std::string::npos ? commandLine : commandLine.substr(0, extension + 4);
}

}  // namespace

Services::Services(Machine& machine) : m_machine(machine) {}

bool Services::Exists(std::string_view name) const {
    bool isName = !name.empty() && name.find('\\') == std::string_view::npos;
    return isName && m_machine.Registry().Find(KeyOf(name), "ImagePath") != nullptr;
}

void Services::Define(std::string_view name, std::string_view displayName, std::string_view binaryPath,
                      const std::vector<std::string>& dependencies, DWORD startType) {
    Registry& registry = m_machine.Registry();
    const std::string key = KeyOf(name);
    bool isNew = !Exists(name);
    registry.SetText(key, "DisplayName", displayName);
    std::string path(binaryPath);
    registry.Set(key, "ImagePath", REG_EXPAND_SZ, std::string_view(path.c_str(), path.size() + 1));
    registry.SetNumber(key, "Type", SERVICE_WIN32_OWN_PROCESS);
    registry.SetNumber(key, "Start", startType);
    registry.SetNumber(key, "ErrorControl", 1);
    registry.SetText(key, "ObjectName", "LocalSystem");
    if (dependencies.empty()) {
        registry.DeleteValue(key, "DependOnService");
    } else {
        registry.SetTexts(key, "DependOnService", dependencies);
    }
    m_machine.Commit();
    if (isNew) {
        SetState(name, startType == SERVICE_AUTO_START ? SERVICE_RUNNING : SERVICE_STOPPED);
    }
}

// ---- states ---------------------------------------------------------------------------------------------------------

Services::Runtime& Services::At(std::string_view name) {
    return m_runtime[LowerAscii(name)];
}

void Services::StartAutomaticOnes() {
    if (m_machine.Is9x()) {
        return;
    }
    for (const std::string& name : m_machine.Registry().SubKeys(kServices)) {
        if (Exists(name) && m_machine.Registry().Number(KeyOf(name), "Start") == SERVICE_AUTO_START) {
            SetState(name, SERVICE_RUNNING);
        }
    }
}

void Services::Settle() {
    for (auto& [name, service] : m_runtime) {
        Settle(name, service);
    }
}

void Services::Settle(std::string_view name, Runtime& service) {
    if (service.state != service.target && m_machine.Clock() >= service.settlesAt) {
        service.state = service.target;
        if (service.state == SERVICE_STOPPED) {
            service.heldUntil = Later(service.settlesAt, service.holdAfterStop);
        }
    }
    UpdateHold(name, service);
}

void Services::UpdateHold(std::string_view name, Runtime& service) {
    bool isHeld = service.state != SERVICE_STOPPED || m_machine.Clock() < service.heldUntil;
    if (!isHeld) {
        service.program.reset();
    } else if (service.program == nullptr) {
        std::string path(ProgramOf(BinaryPath(name)));
        service.program = std::make_unique<Files::Held>(m_machine.Files().HoldOpen(path, FILE_SHARE_READ));
    }
}

DWORD Services::State(std::string_view name) {
    if (!Exists(name)) {
        return SERVICE_STOPPED;
    }
    Runtime& service = At(name);
    Settle(name, service);
    return service.state;
}

void Services::SetState(std::string_view name, DWORD state) {
    Runtime& service = At(name);
    service.state = state;
    service.target = state;
    service.heldUntil = 0;
    UpdateHold(name, service);
}

void Services::SetTimes(std::string_view name, ULONGLONG stopMilliseconds, ULONGLONG startMilliseconds) {
    At(name).stopTime = stopMilliseconds;
    At(name).startTime = startMilliseconds;
}

void Services::HoldProgramAfterStop(std::string_view name, ULONGLONG milliseconds) {
    At(name).holdAfterStop = milliseconds;
}

DWORD Services::Stop(std::string_view name) {
    if (!Exists(name)) {
        return ERROR_SERVICE_DOES_NOT_EXIST;
    }
    DWORD state = State(name);
    if (state == SERVICE_STOPPED) {
        return ERROR_SERVICE_NOT_ACTIVE;
    }
    if (state != SERVICE_RUNNING) {
        return kCannotAcceptControl;
    }
    for (const std::string& dependent : Dependents(name)) {
        if (State(dependent) != SERVICE_STOPPED) {
            return ERROR_DEPENDENT_SERVICES_RUNNING;
        }
    }
    Runtime& service = At(name);
    service.state = SERVICE_STOP_PENDING;
    service.target = SERVICE_STOPPED;
    service.settlesAt = Later(m_machine.Clock(), service.stopTime);
    return ERROR_SUCCESS;
}

DWORD Services::Start(std::string_view name) {
    std::vector<std::string> starting;
    return StartWithNeeded(std::string(name), starting);
}

DWORD Services::StartWithNeeded(const std::string& name, std::vector<std::string>& starting) {
    if (!Exists(name)) {
        return starting.empty() ? ERROR_SERVICE_DOES_NOT_EXIST : kDependencyMissing;
    }
    if (std::find(starting.begin(), starting.end(), LowerAscii(name)) != starting.end()) {
        return kCircularDependency;
    }
    if (State(name) != SERVICE_STOPPED) {
        return ERROR_SERVICE_ALREADY_RUNNING;
    }
    if (m_machine.Registry().Number(KeyOf(name), "Start") == SERVICE_DISABLED) {
        return ERROR_SERVICE_DISABLED;
    }
    starting.push_back(LowerAscii(name));
    for (const std::string& needed : m_machine.Registry().Texts(KeyOf(name), "DependOnService")) {
        DWORD code = StartWithNeeded(needed, starting);
        if (code == kDependencyMissing || code == kCircularDependency) {
            return code;
        }
        if (code != ERROR_SUCCESS && code != ERROR_SERVICE_ALREADY_RUNNING) {
            return kDependencyFailed;
        }
    }
    starting.pop_back();
    Runtime& service = At(name);
    service.state = SERVICE_START_PENDING;
    service.target = SERVICE_RUNNING;
    service.settlesAt = Later(m_machine.Clock(), service.startTime);
    UpdateHold(name, service);
    return ERROR_SUCCESS;
}

bool Services::IsSpoolerUp() {
    return m_machine.Is9x() || State("Spooler") == SERVICE_RUNNING;
}

SERVICE_STATUS Services::Status(std::string_view name) {
    const Runtime& service = At(name);
    SERVICE_STATUS status{};
    status.dwServiceType = m_machine.Registry().Number(KeyOf(name), "Type", SERVICE_WIN32_OWN_PROCESS);
    status.dwCurrentState = service.state;
    status.dwControlsAccepted = service.state == SERVICE_RUNNING ? kAcceptStop : 0;
    if (service.state != service.target) {
        ULONGLONG left = service.settlesAt > m_machine.Clock() ? service.settlesAt - m_machine.Clock() : 0;
        status.dwWaitHint = static_cast<DWORD>(std::min<ULONGLONG>(left, 0xffffffff));
    }
    return status;
}

// ---- what the registry tells ----------------------------------------------------------------------------------------

std::string Services::BinaryPath(std::string_view name) const {
    constexpr std::string_view root = "%SystemRoot%";
    std::string path = m_machine.Registry().Text(KeyOf(name), "ImagePath");
    if (EqualNoCase(std::string_view(path).substr(0, root.size()), root)) {
        path.replace(0, root.size(), m_machine.System().windowsDirectory);
    }
    return path;
}

Services::Graph Services::DependentsByService() const {
    Graph graph;
    for (const std::string& name : m_machine.Registry().SubKeys(kServices)) {
        for (const std::string& needed : m_machine.Registry().Texts(KeyOf(name), "DependOnService")) {
            graph[LowerAscii(needed)].push_back(name);
        }
    }
    return graph;
}

std::vector<std::string> Services::Dependents(std::string_view name) const {
    const Graph graph = DependentsByService();
    std::vector<std::string> ordered;
    std::set<std::string> seen = {LowerAscii(name)};
    // Depth first: a service comes behind all that need it. Among equals the later in the list goes first, as the order
    // is that of a start turned round.
    auto visit = [&](auto& self, const std::string& service) -> void {
        auto found = graph.find(LowerAscii(service));
        if (found == graph.end()) {
            return;
        }
        for (auto dependent = found->second.rbegin(); dependent != found->second.rend(); ++dependent) {
            if (seen.insert(LowerAscii(*dependent)).second) {
                self(self, *dependent);
                ordered.push_back(*dependent);
            }
        }
    };
    visit(visit, std::string(name));
    return ordered;
}

}  // namespace pikel::simulated
