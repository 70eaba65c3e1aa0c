// The spooler's calls about monitors and ports.
#include <cstring>

#include "machine/base/info_buffer.h"
#include "machine/operations.h"
#include "machine/spooler/spooler.h"
#include "machine/spooler/monitors.h"
#include "machine/spooler/ports.h"

namespace pikel::simulated {

namespace {

/// What an enumeration at levels 1 and 2 checks first.
DWORD CheckEnumeration(const Machine& machine, DWORD level, const InfoBuffer& buffer) {
    if (buffer.returned == nullptr) {
        return machine.Is9x() ? ERROR_INVALID_PARAMETER : RPC_X_NULL_REF_POINTER;
    }
    const DWORD code = CheckInfoBuffer(buffer, !machine.Is9x());
    return code == ERROR_SUCCESS && level != 1 && level != 2 ? static_cast<DWORD>(ERROR_INVALID_LEVEL) : code;
}

}  // namespace

BOOL WINAPI EnumMonitorsA(LPSTR pName, DWORD Level, LPBYTE pMonitors, DWORD cbBuf, LPDWORD pcbNeeded,
                          LPDWORD pcReturned) {
    return Outcome(CallSpooler(pName, [&](Machine& machine) -> DWORD {
        const InfoBuffer buffer{pMonitors, cbBuf, pcbNeeded, pcReturned};
        if (const DWORD code = CheckEnumeration(machine, Level, buffer); code != ERROR_SUCCESS) {
            return code;
        }
        const std::vector<Monitor> monitors = Monitors(machine).List();
        if (Level == 1) {
            return AnswerWith<MONITOR_INFO_1A>(buffer, monitors,
                                               [](InfoSpace& space, MONITOR_INFO_1A& info, const Monitor& monitor) {
                                                   info.pName = space.Text(monitor.name);
                                               });
        }
        return AnswerWith<MONITOR_INFO_2A>(buffer, monitors,
                                           [&machine](InfoSpace& space, MONITOR_INFO_2A& info, const Monitor& monitor) {
                                               info.pName = space.Text(monitor.name);
                                               info.pEnvironment = space.Text(machine.Environment());
                                               info.pDLLName = space.Text(monitor.library);
                                           });
    }));
}

BOOL WINAPI AddMonitorA(LPSTR pName, DWORD Level, LPBYTE pMonitors) {
    return Outcome(CallSpooler(pName, [&](Machine& machine) -> DWORD {
        if (Level != 2) {
            return ERROR_INVALID_LEVEL;
        }
        if (pMonitors == nullptr) {
            return ERROR_INVALID_PARAMETER;
        }
        if (const DWORD code = RequireAdministrator(machine); code != ERROR_SUCCESS) {
            return code;
        }
        MONITOR_INFO_2A info;
        std::memcpy(&info, pMonitors, sizeof info);
        return Monitors(machine).Add(TextOf(info.pName), TextOf(info.pEnvironment), TextOf(info.pDLLName));
    }));
}

BOOL WINAPI DeleteMonitorA(LPSTR pName, LPSTR pEnvironment, LPSTR pMonitorName) {
    return Outcome(CallSpooler(pName, [&](Machine& machine) -> DWORD {
        if (const DWORD code = RequireAdministrator(machine); code != ERROR_SUCCESS) {
            return code;
        }
        const std::string_view environment = TextOf(pEnvironment);
        if (!environment.empty() && !EqualNoCase(environment, machine.Environment())) {
            return ERROR_INVALID_ENVIRONMENT;
        }
        return Monitors(machine).Remove(TextOf(pMonitorName));
    }));
}

BOOL WINAPI EnumPortsA(LPSTR pName, DWORD Level, LPBYTE pPorts, DWORD cbBuf, LPDWORD pcbNeeded, LPDWORD pcReturned) {
    return Outcome(CallSpooler(pName, [&](Machine& machine) -> DWORD {
        const InfoBuffer buffer{pPorts, cbBuf, pcbNeeded, pcReturned};
        if (const DWORD code = CheckEnumeration(machine, Level, buffer); code != ERROR_SUCCESS) {
            return code;
        }
        const std::vector<Port> ports = Ports(machine).List();
        if (Level == 1) {
            return AnswerWith<PORT_INFO_1A>(buffer, ports, [](InfoSpace& space, PORT_INFO_1A& info, const Port& port) {
                info.pName = space.Text(port.name);
            });
        }
        return AnswerWith<PORT_INFO_2A>(buffer, ports, [](InfoSpace& space, PORT_INFO_2A& info, const Port& port) {
            info.pPortName = space.Text(port.name);
            info.pMonitorName = space.Text(port.monitor);
            info.pDescription = space.Text(port.monitor);
            info.fPortType = port.type;
        });
    }));
}

}  // namespace pikel::simulated
