// pikel machine new|show|restart|systems: simulated machines.
#include <cstdio>

#include "commands.h"
#include "failure.h"

// The simulated machine is part of the native build alone; on Windows the system itself is the machine.
#ifndef _WIN32

#include "platform/platform.h"
#include "machine/base/machine.h"
#include "machine/files/files.h"
#include "machine/system/restart.h"
#include "machine/system/systems.h"
#include "system_view.h"

namespace pikel::cli {

namespace {

using simulated::MachineError;
using simulated::SystemDescription;

struct MachineOptions {
    std::string folder;
    std::string system = "xp";
};

std::string VersionText(const SystemDescription& system) {
    return std::to_string(system.major) + "." + std::to_string(system.minor) + "." +
           std::to_string(system.build & 0xFFFF);
}

const char* ProcessorText(const SystemDescription& system) {
    return system.processorType == 8664 ? "x64" : system.processorType == 2200 ? "IA64" : "x86";
}

void ListSystems(Session& session) {
    nlohmann::json json = nlohmann::json::array();
    for (const SystemDescription& system : simulated::Systems()) {
        json.push_back(JsonObject({{"name", system.name},
                                   {"version", VersionText(system)},
                                   {"processor", ProcessorText(system)},
                                   {"servicePack", system.servicePack}}));
    }
    session.Print(json, [&] {
        for (const SystemDescription& system : simulated::Systems()) {
            std::printf("%-12s %-10s %-5s %s\n", system.name.c_str(), VersionText(system).c_str(),
                        ProcessorText(system), system.servicePack.c_str());
        }
    });
}

void New(Session& session, const MachineOptions& options) {
    const SystemDescription* system = simulated::FindSystem(options.system);
    if (system == nullptr) {
        throw ToolError("--system " + options.system + ": no such system; `pikel machine systems` lists them");
    }
    try {
        simulated::Machine::Create(options.folder, *system);
    } catch (const MachineError& problem) {
        throw ToolError(problem.what());
    }
    session.Print({{"machine", options.folder}, {"system", system->name}}, [&] {
        std::printf("made a fresh %s machine in %s\n", system->name.c_str(), options.folder.c_str());
    });
}

std::string DefaultPrinter(simulated::Machine& machine, const std::vector<PrinterView>& printers);

nlohmann::json FilesJson(simulated::Machine& machine, const DriverView& driver) {
    nlohmann::json files = nlohmann::json::array();
    std::vector<std::string> paths = {driver.driverPath, driver.configFile, driver.dataFile, driver.helpFile};
    paths.insert(paths.end(), driver.dependentFiles.begin(), driver.dependentFiles.end());
    for (const std::string& path : paths) {
        if (!path.empty()) {
            files.push_back(JsonObject({{"path", Utf8(path.c_str())}, {"present", machine.Files().Exists(path)}}));
        }
    }
    return files;
}

/// Names of the files in the machine's colour directory; none where the system has no such directory.
nlohmann::json ProfilesJson(simulated::Machine& machine) {
    nlohmann::json profiles = nlohmann::json::array();
    for (const char* folder : {"\\spool\\drivers\\color", "\\Color"}) {
        std::string path = machine.System().systemDirectory + folder;
        for (const simulated::FileEntry& entry : machine.Files().List(path)) {
            profiles.push_back(Utf8((path + "\\" + entry.name).c_str()));
        }
    }
    return profiles;
}

nlohmann::json MachineJson(simulated::Machine& machine) {
    const SystemDescription& system = machine.System();
    nlohmann::json drivers = nlohmann::json::array();
    for (const DriverView& driver : ListDrivers()) {
        drivers.push_back(JsonObject({{"name", Utf8(driver.name.c_str())},
                                      {"environment", driver.environment},
                                      {"version", driver.version},
                                      {"monitor", Utf8(driver.monitor.c_str())},
                                      {"files", FilesJson(machine, driver)}}));
    }
    nlohmann::json monitors = nlohmann::json::array();
    for (const MonitorView& monitor : ListMonitors()) {
        monitors.push_back(JsonObject({{"name", Utf8(monitor.name.c_str())}, {"file", Utf8(monitor.file.c_str())}}));
    }
    nlohmann::json ports = nlohmann::json::array();
    for (const PortView& port : ListPorts()) {
        ports.push_back(JsonObject({{"name", Utf8(port.name.c_str())}, {"monitor", Utf8(port.monitor.c_str())}}));
    }
    std::vector<PrinterView> printerViews = ListPrinters();
    nlohmann::json printers = nlohmann::json::array();
    for (const PrinterView& printer : printerViews) {
        printers.push_back(JsonObject({{"name", Utf8(printer.name.c_str())},
                                       {"driver", Utf8(printer.driver.c_str())},
                                       {"port", Utf8(printer.port.c_str())}}));
    }
    std::string byDefault = DefaultPrinter(machine, printerViews);
    return JsonObject(
        {{"folder", machine.Folder().string()},
         {"system",
          JsonObject({{"name", system.name}, {"version", VersionText(system)}, {"processor", ProcessorText(system)}})},
         {"computerName", system.computerName},
         {"restartPending", system.restartPending},
         {"drivers", drivers},
         {"monitors", monitors},
         {"colourProfiles", ProfilesJson(machine)},
         {"ports", ports},
         {"printers", printers},
         {"defaultPrinter", byDefault.empty() ? nlohmann::json(nullptr) : nlohmann::json(Utf8(byDefault.c_str()))}});
}

/// Where the machine's family keeps it.
std::string DefaultPrinter(simulated::Machine& machine, const std::vector<PrinterView>& printers) {
    if (machine.Is9x()) {
        for (const PrinterView& printer : printers) {
            if ((printer.attributes & PRINTER_ATTRIBUTE_DEFAULT) != 0) {
                return printer.name;
            }
        }
        return "";
    }
    char device[520] = {};
    Platform().GetProfileStringA("windows", "device", "", device, sizeof device);
    std::string text = device;
    return text.substr(0, text.find(','));
}

std::string Field(const nlohmann::json& object, const char* name) {
    return object[name].get<std::string>();
}

void PrintMachine(const nlohmann::json& machine) {
    std::printf("machine   %s: %s, %s, %s%s\n", Field(machine, "folder").c_str(),
                Field(machine["system"], "name").c_str(), Field(machine["system"], "version").c_str(),
                Field(machine["system"], "processor").c_str(),
                machine["restartPending"].get<bool>() ? ", restart pending" : "");
    for (const nlohmann::json& driver : machine["drivers"]) {
        std::printf("driver    %s (%s, version %s)\n", Field(driver, "name").c_str(),
                    Field(driver, "environment").c_str(), driver["version"].dump().c_str());
        for (const nlohmann::json& file : driver["files"]) {
            std::printf("  file    %s%s\n", Field(file, "path").c_str(),
                        file["present"].get<bool>() ? "" : "  (missing)");
        }
    }
    for (const nlohmann::json& monitor : machine["monitors"]) {
        std::printf("monitor   %s (%s)\n", Field(monitor, "name").c_str(), Field(monitor, "file").c_str());
    }
    for (const nlohmann::json& profile : machine["colourProfiles"]) {
        std::printf("profile   %s\n", profile.get<std::string>().c_str());
    }
    for (const nlohmann::json& port : machine["ports"]) {
        std::printf("port      %s (%s)\n", Field(port, "name").c_str(), Field(port, "monitor").c_str());
    }
    for (const nlohmann::json& printer : machine["printers"]) {
        std::printf("printer   %s (driver %s, port %s)\n", Field(printer, "name").c_str(),
                    Field(printer, "driver").c_str(), Field(printer, "port").c_str());
    }
    std::printf("default   %s\n",
                machine["defaultPrinter"].is_null() ? "none" : Field(machine, "defaultPrinter").c_str());
}

void Show(Session& session, const MachineOptions& options) {
    if (!options.folder.empty()) {
        session.machineFolder = options.folder;
    }
    session.RequireMachine();
    nlohmann::json machine = MachineJson(simulated::Current());
    session.Print(machine, [&] { PrintMachine(machine); });
}

void RestartMachine(Session& session, const MachineOptions& options) {
    if (!options.folder.empty()) {
        session.machineFolder = options.folder;
    }
    session.RequireMachine();
    nlohmann::json json = nlohmann::json::array();
    for (const simulated::RestartStep& step : simulated::Restart(simulated::Current())) {
        json.push_back(JsonObject(
            {{"source", Utf8(step.source.c_str())},
             {"target", step.target.empty() ? nlohmann::json(nullptr) : nlohmann::json(Utf8(step.target.c_str()))},
             {"code", step.code}}));
    }
    session.Print(json, [&] {
        for (const nlohmann::json& step : json) {
            const std::string source = step["source"];
            const DWORD code = step["code"];
            std::printf("%s%s", step["target"].is_null() ? "deleted " : "placed ", source.c_str());
            if (!step["target"].is_null()) {
                std::printf(" as %s", step["target"].get<std::string>().c_str());
            }
            std::printf(code == 0 ? "\n" : ": failed, %u\n", static_cast<unsigned>(code));
        }
        std::printf("restarted\n");
    });
}

}  // namespace

Command MachineCommands(Session& session) {
    auto options = std::make_shared<MachineOptions>();
    const Option place = {"DIR", &options->folder, "Folder; without it --machine or PIKEL_MACHINE"};
    return {"machine",
            "Simulated machines",
            {},
            nullptr,
            {{"new",
              "Make a fresh machine in a folder",
              {{"DIR", &options->folder, "Folder; must be missing or empty", Need::Required},
               {.name = "--system",
                .value = &options->system,
                .help = "System, as `pikel machine systems` lists it",
                .showsDefault = true}},
              [&session, options] { New(session, *options); }},
             {"show", "Show what is on a machine", {place}, [&session, options] { Show(session, *options); }},
             {"restart",
              "Carry out what waits for the machine's next start",
              {place},
              [&session, options] { RestartMachine(session, *options); }},
             {"systems", "List the systems that a machine can be made for", {}, [&session] { ListSystems(session); }}}};
}

}  // namespace pikel::cli

#endif
