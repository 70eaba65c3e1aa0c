// The spooler's calls about monitors.
#include <cstring>

#include "machine/base/info_buffer.h"
#include "machine/base/last_error.h"
#include "machine/base/text.h"
#include "machine/operations.h"
#include "machine/security/rights.h"
#include "machine/spooler/monitors.h"
#include "machine/spooler/removal.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

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
        return RemoveMonitor(machine, TextOf(pMonitorName));
    }));
}

}  // namespace pikel::simulated
