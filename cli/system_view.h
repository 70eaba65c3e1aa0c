// What the system at hand holds: drivers, monitors, ports, printers. Read through the platform layer, as any program
// would ask the system; the library's table has no lists of these.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/types.h"

namespace pikel::cli {

struct DriverView {
    std::string name;
    DWORD version = 0;
    std::string environment;
    std::string driverPath;
    std::string dataFile;
    std::string configFile;
    std::string helpFile;
    std::vector<std::string> dependentFiles;
    std::string monitor;
};
struct MonitorView {
    std::string name;
    std::string environment;
    std::string file;
};
struct PortView {
    std::string name;
    std::string monitor;
};
struct PrinterView {
    std::string name;
    std::string driver;
    std::string port;
    std::string comment;
    DWORD attributes = 0;
};

// Each throws ToolError with the system's text when it can't be read.
std::vector<DriverView> ListDrivers();
std::vector<MonitorView> ListMonitors();
std::vector<PortView> ListPorts();
std::vector<PrinterView> ListPrinters();
bool PortExists(const std::string& name);

}  // namespace pikel::cli
