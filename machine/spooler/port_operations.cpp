// The spooler's call about ports, and the port SDK's.
#include <string>
#include <vector>

#include "machine/base/info_buffer.h"
#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/operations.h"
#include "machine/spooler/port_sdk.h"
#include "machine/spooler/ports.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

std::string NarrowText(const Machine& machine, BSTR text) {
    return text == nullptr ? std::string()
                           : FromWide(machine.System().codePage, std::u16string_view(text, SysStringLen(text)));
}

}  // namespace

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

/// Makes a port and hands out its name.
DWORD WINAPI CreatePort(BSTR monitor, LPSTR portName, BSTR queueName, BSTR configuration, BSTR* result) {
    Machine& machine = Current();
    if (monitor == nullptr || portName == nullptr || result == nullptr) {
        return kPortBadArgument;
    }
    *result = nullptr;
    const DWORD code = MakePort(machine, NarrowText(machine, monitor), portName, NarrowText(machine, queueName),
                                NarrowText(machine, configuration));
    if (code == kPortCreated) {
        const std::u16string name = ToWide(machine.System().codePage, portName);
        *result = SysAllocStringLen(name.data(), static_cast<UINT>(name.size()));
    }
    return code;
}

}  // namespace pikel::simulated
