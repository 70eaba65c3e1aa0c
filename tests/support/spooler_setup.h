// Drivers, monitors and printers for tests, put on the machine through its own spooler and past the shims.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "machine/base/info_buffer.h"
#include "machine/operations.h"
#include "machine/spooler/spooler.h"
#include "support/machine_test.h"

namespace pikel::testing_support {

/// A driver with its files. The defaults are those of a driver that a system loads itself.
struct DriverSetup {
    std::string name = "Aurora 500";
    std::string environment{};  ///< empty: the machine's own
    DWORD version = 0;          ///< 0: the one that the system loads itself, unless the environment is named
    std::string driver = "aurora.dll";
    std::string config = "auroraui.dll";
    std::string data = "aurora.gpd";
    std::string help{};
    std::vector<std::string> dependents{};
    std::string monitor{};
};

/// The driver version that a system loads itself, as its spooler tells it.
inline DWORD OwnDriverVersion(simulated::Machine& machine) {
    return machine.Is9x() ? 0x400 : machine.Generation() == simulated::Generation::Nt4 ? 2 : 3;
}

/// The same as a DriverVersionCode.
inline DWORD OwnVersionCode(simulated::Machine& machine) {
    return machine.Is9x() ? 0 : OwnDriverVersion(machine);
}

/// A ProcessorCode: 0 x86, 1 IA64, 2 x64.
inline DWORD OwnProcessorCode(simulated::Machine& machine) {
    return machine.Environment() == "Windows IA64" ? 1 : machine.Environment() == "Windows x64" ? 2 : 0;
}

/// Folder of an environment's drivers; empty: the machine's own.
inline std::string DriverFolderOf(const std::string& environment = {}) {
    std::string name = environment;
    char folder[MAX_PATH] = "";
    DWORD needed = 0;
    EXPECT_TRUE(simulated::GetPrinterDriverDirectoryA(nullptr, name.empty() ? nullptr : name.data(), 1,
                                                      reinterpret_cast<LPBYTE>(folder), sizeof folder, &needed))
        << simulated::lastError;
    return folder;
}

/// Writes the driver's files into its folder and has the spooler take it.
inline void PutDriver(simulated::Machine& machine, DriverSetup setup) {
    std::vector<std::string> files = setup.dependents;
    files.insert(files.end(), {setup.driver, setup.config, setup.data});
    if (!setup.help.empty()) {
        files.push_back(setup.help);
    }
    for (const std::string& file : files) {
        WriteFileOn(machine, DriverFolderOf(setup.environment) + "\\" + file, "bytes of " + file);
    }
    if (setup.environment.empty() && setup.version == 0) {
        setup.version = OwnDriverVersion(machine);
    }
    std::string dependents = simulated::JoinMultiString(setup.dependents);
    auto text = [](std::string& value) { return value.empty() ? nullptr : value.data(); };
    DRIVER_INFO_3A info{};
    info.cVersion = setup.version;
    info.pName = setup.name.data();
    info.pEnvironment = text(setup.environment);
    info.pDriverPath = setup.driver.data();
    info.pConfigFile = setup.config.data();
    info.pDataFile = setup.data.data();
    info.pHelpFile = text(setup.help);
    info.pDependentFiles = setup.dependents.empty() ? nullptr : dependents.data();
    info.pMonitorName = text(setup.monitor);
    ASSERT_TRUE(simulated::AddPrinterDriverA(nullptr, 3, reinterpret_cast<LPBYTE>(&info)))
        << setup.name << ": " << simulated::lastError;
}

/// Registers a language monitor, with its DLL in the system folder.
inline void PutMonitor(simulated::Machine& machine, std::string name, std::string file) {
    WriteFileOn(machine, machine.System().systemDirectory + "\\" + file, "monitor");
    MONITOR_INFO_2A info{};
    info.pName = name.data();
    info.pDLLName = file.data();
    ASSERT_TRUE(simulated::AddMonitorA(nullptr, 2, reinterpret_cast<LPBYTE>(&info))) << simulated::lastError;
}

/// Adds a printer on the first parallel port.
inline void PutPrinter(std::string name, std::string driver) {
    std::string port = "LPT1:";
    std::string processor = "winprint";
    std::string dataType = "RAW";
    PRINTER_INFO_2A info{};
    info.pPrinterName = name.data();
    info.pDriverName = driver.data();
    info.pPortName = port.data();
    info.pPrintProcessor = processor.data();
    info.pDatatype = dataType.data();
    const HANDLE printer = simulated::AddPrinterA(nullptr, 2, reinterpret_cast<LPBYTE>(&info));
    ASSERT_NE(printer, nullptr) << simulated::lastError;
    simulated::ClosePrinter(printer);
}

inline bool IsMonitorRegistered(simulated::Machine& machine, const std::string& name) {
    return machine.Registry().KeyExists(simulated::PrintKey("Monitors\\") + name);
}

/// True when any environment and version has a driver of that name.
inline bool IsDriverRegistered(simulated::Machine& machine, const std::string& name) {
    return machine.Registry().Text().find("\\" + name + "]") != std::string::npos;
}

}  // namespace pikel::testing_support
