// pikel driver add|list|delete|copy|stage|local|loaded|hwid|registry.
#include <cstdio>

#include "commands.h"
#include "steps.h"
#include "system_view.h"

namespace pikel::cli {

namespace {

struct DriverOptions {
    std::string inf;
    std::string model;
    std::string folder;
    std::string processor;              ///< of a removal; empty: the system's own
    std::vector<std::string> profiles;  ///< of a removal
    bool keepFiles = false;
    bool printUi = false;
};

void AddFromInf(Session& session, const DriverOptions& options) {
    session.RequireMachine();
    std::string inf = options.printUi ? session.PathInFolderFor(options.inf) : session.PathFor(options.inf);
    Target target = session.TargetSystem();
    if (options.printUi) {
        AddDriverThroughPrintUi(session, inf, options.model, target);
    } else {
        TableBlock<DriverAddRecord> record(session.Table());
        ReadDriverRecord(session, inf, options.model, target, record);
        CopyDriverFiles(session, inf, options.model, target);
        AddDriver(session, *record.Get());
    }
    session.Print({{"driver", Utf8(options.model.c_str())}},
                  [&] { std::printf("added driver %s\n", options.model.c_str()); });
}

void List(Session& session) {
    session.RequireMachine();
    std::vector<DriverView> drivers = ListDrivers();
    nlohmann::json json = nlohmann::json::array();
    for (const DriverView& driver : drivers) {
        nlohmann::json dependents = nlohmann::json::array();
        for (const std::string& file : driver.dependentFiles) {
            dependents.push_back(Utf8(file.c_str()));
        }
        json.push_back(JsonObject({{"name", Utf8(driver.name.c_str())},
                                   {"version", driver.version},
                                   {"environment", driver.environment},
                                   {"driverPath", Utf8(driver.driverPath.c_str())},
                                   {"dataFile", Utf8(driver.dataFile.c_str())},
                                   {"configFile", Utf8(driver.configFile.c_str())},
                                   {"helpFile", Utf8(driver.helpFile.c_str())},
                                   {"dependentFiles", dependents},
                                   {"monitor", Utf8(driver.monitor.c_str())}}));
    }
    session.Print(json, [&] {
        for (const DriverView& driver : drivers) {
            std::printf("%s  (%s, version %u)\n", Utf8(driver.name.c_str()).c_str(), driver.environment.c_str(),
                        static_cast<unsigned>(driver.version));
        }
    });
}

void Delete(Session& session, DriverOptions options) {
    session.RequireMachine();
    DriverGeneration generation = GenerationOf(session.TargetSystem());
    if (!options.processor.empty()) {
        generation = {PIKEL_DRIVER_VERSION_2000, options.processor == "x64"    ? PIKEL_PROCESSOR_X64
                                                 : options.processor == "ia64" ? PIKEL_PROCESSOR_IA64
                                                                               : PIKEL_PROCESSOR_X86};
    }
    std::vector<LPSTR> profiles;
    for (std::string& profile : options.profiles) {
        profiles.push_back(profile.data());
    }
    const DWORD status = session.Table().PI_KEL_DeletePrinterDriver(
        generation.version, options.model.c_str(), generation.processor, static_cast<DWORD>(profiles.size()),
        profiles.data(), options.keepFiles ? 0 : 1, options.printUi ? 1 : 0);
    Session::Check("PI_KEL_DeletePrinterDriver", status, PIKEL_PREFIX_DRIVER_DELETE);
    session.Print({{"driver", Utf8(options.model.c_str())}},
                  [&] { std::printf("deleted driver %s\n", options.model.c_str()); });
}

void Copy(Session& session, const DriverOptions& options) {
    const std::string inf = session.PathFor(options.inf);
    session.RequireMachine();
    CopyDriverFiles(session, inf, options.model, session.TargetSystem());
    session.Print({{"driver", options.model}}, [&] { std::printf("copied the files of %s\n", options.model.c_str()); });
}

void Stage(Session& session, const DriverOptions& options) {
    const std::string inf = session.PathFor(options.inf);
    session.RequireMachine();
    const Target target = session.TargetSystem();
    DWORD restart = 0;
    const DWORD status = session.Table().PI_KEL_CopyInfDriverFilesEx(
        inf.c_str(), options.model.c_str(), PIKEL_COPY_AS_DESTINATION_NAME, &restart, options.folder.c_str(),
        target.architecture, target.major, target.minor);
    Session::Check("PI_KEL_CopyInfDriverFilesEx", status, PIKEL_PREFIX_FILE_COPY);
    if (restart != 0) {
        session.NoteRestart();
    }
    session.Print({{"driver", options.model}, {"restartNeeded", restart != 0}}, [&] {
        std::printf("replaced the files of %s%s\n", options.model.c_str(),
                    restart != 0 ? "; files in use follow at the next restart" : "");
    });
}

void CopyToLocal(Session& session, const DriverOptions& options) {
    const std::string inf = session.PathFor(options.inf);
    session.RequireMachine();
    const Target target = session.TargetSystem();
    TableBlock<LocalFileRecord> records(session.Table());
    DWORD count = 0;
    DWORD size = 0;
    const DWORD status = session.Table().PI_KEL_CopyInfDriverFilesToLocal(
        inf.c_str(), options.model.c_str(), options.folder.c_str(), &size, PIKEL_COPY_AS_DESTINATION_NAME, &count,
        records.Out(), target.architecture, target.major, target.minor);
    Session::Check("PI_KEL_CopyInfDriverFilesToLocal", status, PIKEL_PREFIX_FILE_COPY);
    nlohmann::json files = nlohmann::json::array();
    for (DWORD i = 0; i < count; ++i) {
        files.push_back(JsonObject(
            {{"name", Utf8(records.Get()[i].szFileName)}, {"directory", Utf8(records.Get()[i].szDirectory)}}));
    }
    session.Print({{"files", files}, {"expandedSize", size}}, [&] {
        for (const nlohmann::json& file : files) {
            std::printf("%s  belongs in %s\n", file["name"].get<std::string>().c_str(),
                        file["directory"].get<std::string>().c_str());
        }
    });
}

void ShowLoaded(Session& session, const DriverOptions& options) {
    session.RequireMachine();
    const bool isLoaded = session.Table().PI_KEL_IsDriverFileLoaded(options.model.c_str()) != 0;
    session.Print({{"loaded", isLoaded}}, [&] {
        std::printf("%s\n", isLoaded ? "a file of the driver is in use" : "no file of the driver is in use");
    });
}

void CopyToHardwareIdFolder(Session& session, const DriverOptions& options) {
    session.RequireMachine();
    Session::Check("PI_KEL_CopyDriverFileToHWIDFolder",
                   session.Table().PI_KEL_CopyDriverFileToHWIDFolder(options.model.c_str()), PIKEL_PREFIX_GENERAL);
    session.Print({{"driver", options.model}}, [&] {
        std::printf("the files of %s are kept under its hardware id, where the system does that\n",
                    options.model.c_str());
    });
}

void ApplyRegistry(Session& session, const DriverOptions& options) {
    const std::string inf = session.PathFor(options.inf);
    session.RequireMachine();
    const Target target = session.TargetSystem();
    const DWORD status = session.Table().PI_KEL_ControlRegistory(inf.c_str(), options.model.c_str(),
                                                                 target.architecture, target.major, target.minor);
    Session::Check("PI_KEL_ControlRegistory", status, PIKEL_PREFIX_GENERAL);
    session.Print({{"driver", options.model}},
                  [&] { std::printf("applied the registry part of %s\n", options.model.c_str()); });
}

/// --inf and --model, with what a verb takes besides.
std::vector<Option> InfAndModel(DriverOptions& options, std::vector<Option> more = {}) {
    std::vector<Option> all = {
        {"--inf", &options.inf, "The INF", Need::Required},
        {"--model", &options.model, "Model, as `pikel inf models` lists it", Need::Required},
    };
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

Option DriverName(DriverOptions& options) {
    return {"DRIVER", &options.model, "The driver's name", Need::Required};
}

Command DeleteVerb(Session& session, const std::shared_ptr<DriverOptions>& options) {
    return {"delete",
            "Delete a driver with what belongs to it alone",
            {DriverName(*options),
             {.name = "--processor",
              .value = &options->processor,
              .help = "Of a driver for another processor than the system's",
              .choices = {"x86", "ia64", "x64"}},
             {"--profile", &options->profiles, "Colour profile to uninstall; may be given several times"},
             {"--print-ui", &options->printUi, "Through the system's Print UI: Windows 2000 and later"},
             {"--keep-files", &options->keepFiles, "With --print-ui: leave the language monitor's files"}},
            [&session, options] { Delete(session, *options); }};
}

}  // namespace

Command DriverCommands(Session& session) {
    auto options = std::make_shared<DriverOptions>();
    return {"driver",
            "Printer drivers of the system",
            {},
            nullptr,
            {{"add", "Copy a model's files and add its driver",
              InfAndModel(*options,
                          {{"--print-ui", &options->printUi, "Through the system's Print UI: Windows 2000 and later"}}),
              [&session, options] { AddFromInf(session, *options); }},
             DeleteVerb(session, options),
             {"list", "List the drivers", {}, [&session] { List(session); }},
             {"copy", "Copy a model's files to where its INF says", InfAndModel(*options),
              [&session, options] { Copy(session, *options); }},
             {"stage", "Replace an installed driver's files, also those in use",
              InfAndModel(*options, {{"--staging", &options->folder,
                                      "Folder of the machine for the work; its files are deleted", Need::Required}}),
              [&session, options] { Stage(session, *options); }},
             {"local", "Expand a model's files into a folder of the machine",
              InfAndModel(*options, {{"--to", &options->folder, "The folder, which exists", Need::Required}}),
              [&session, options] { CopyToLocal(session, *options); }},
             {"registry", "Apply the registry part of a model's install section", InfAndModel(*options),
              [&session, options] { ApplyRegistry(session, *options); }},
             {"loaded",
              "Tell whether a file of a 9x driver is in use",
              {DriverName(*options)},
              [&session, options] { ShowLoaded(session, *options); }},
             {"hwid",
              "Windows XP: keep a driver's files under its hardware id",
              {DriverName(*options)},
              [&session, options] { CopyToHardwareIdFolder(session, *options); }}}};
}

}  // namespace pikel::cli
