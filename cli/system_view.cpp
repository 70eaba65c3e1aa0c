#include "system_view.h"

#include <cstring>

#include "failure.h"
#include "platform/owned.h"

namespace pikel::cli {

namespace {

std::string Text(LPCSTR text) {
    return text == nullptr ? std::string() : text;
}

/// The two-step enumeration: asks for the size, then reads. Call is given buffer, size, needed and count.
template <class Record, class Call>
std::vector<Record> Enumerate(const char* what, HeapBlock& block, Call call) {
    DWORD needed = 0;
    DWORD count = 0;
    if (!call(nullptr, 0, &needed, &count)) {
        DWORD code = Platform().GetLastError();
        if (code == ERROR_INSUFFICIENT_BUFFER) {
            block = AllocateHeap(needed);
            if (!block) {
                code = ERROR_NOT_ENOUGH_MEMORY;
            } else {
                code = call(static_cast<LPBYTE>(block.Get()), needed, &needed, &count) ? 0 : Platform().GetLastError();
            }
        }
        if (code != 0) {
            throw ToolError(std::string("can't list the ") + what + ": " + ErrorName(code) + ", " + ErrorText(code));
        }
    }
    const Record* first = static_cast<const Record*>(block.Get());
    return first == nullptr ? std::vector<Record>() : std::vector<Record>(first, first + count);
}

}  // namespace

std::vector<DriverView> ListDrivers() {
    HeapBlock block;
    std::vector<DriverView> drivers;
    for (const DRIVER_INFO_3A& info :
         Enumerate<DRIVER_INFO_3A>("drivers", block, [](LPBYTE buffer, DWORD size, LPDWORD needed, LPDWORD count) {
             return Platform().EnumPrinterDriversA(nullptr, nullptr, 3, buffer, size, needed, count);
         })) {
        DriverView driver;
        driver.name = Text(info.pName);
        driver.version = info.cVersion;
        driver.environment = Text(info.pEnvironment);
        driver.driverPath = Text(info.pDriverPath);
        driver.dataFile = Text(info.pDataFile);
        driver.configFile = Text(info.pConfigFile);
        driver.helpFile = Text(info.pHelpFile);
        driver.monitor = Text(info.pMonitorName);
        for (LPCSTR file = info.pDependentFiles; file != nullptr && *file != '\0'; file += std::strlen(file) + 1) {
            // The 9x family tells names; they start at the folder of the driver itself.
            const bool isPath = std::strchr(file, ':') != nullptr || *file == '\\';
            const std::size_t folder = driver.driverPath.rfind('\\') + 1;
            driver.dependentFiles.push_back(isPath ? file : driver.driverPath.substr(0, folder) + file);
        }
        drivers.push_back(std::move(driver));
    }
    return drivers;
}

std::vector<MonitorView> ListMonitors() {
    HeapBlock block;
    std::vector<MonitorView> monitors;
    for (const MONITOR_INFO_2A& info :
         Enumerate<MONITOR_INFO_2A>("monitors", block, [](LPBYTE buffer, DWORD size, LPDWORD needed, LPDWORD count) {
             return Platform().EnumMonitorsA(nullptr, 2, buffer, size, needed, count);
         })) {
        monitors.push_back({Text(info.pName), Text(info.pEnvironment), Text(info.pDLLName)});
    }
    return monitors;
}

std::vector<PortView> ListPorts() {
    HeapBlock block;
    std::vector<PortView> ports;
    for (const PORT_INFO_2A& info :
         Enumerate<PORT_INFO_2A>("ports", block, [](LPBYTE buffer, DWORD size, LPDWORD needed, LPDWORD count) {
             return Platform().EnumPortsA(nullptr, 2, buffer, size, needed, count);
         })) {
        ports.push_back({Text(info.pPortName), Text(info.pMonitorName)});
    }
    return ports;
}

std::vector<PrinterView> ListPrinters() {
    HeapBlock block;
    std::vector<PrinterView> printers;
    for (const PRINTER_INFO_2A& info :
         Enumerate<PRINTER_INFO_2A>("printers", block, [](LPBYTE buffer, DWORD size, LPDWORD needed, LPDWORD count) {
             return Platform().EnumPrintersA(PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS, nullptr, 2, buffer, size,
                                             needed, count);
         })) {
        printers.push_back({Text(info.pPrinterName), Text(info.pDriverName), Text(info.pPortName), Text(info.pComment),
                            info.Attributes});
    }
    return printers;
}

bool PortExists(const std::string& name) {
    for (const PortView& port : ListPorts()) {
        if (Platform().lstrcmpiA(port.name.c_str(), name.c_str()) == 0) {
            return true;
        }
    }
    return false;
}

}  // namespace pikel::cli
