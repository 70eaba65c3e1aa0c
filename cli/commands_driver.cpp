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
        json.push_back({{"name", Utf8(driver.name.c_str())},
                        {"version", driver.version},
                        {"environment", driver.environment},
                        {"driverPath", Utf8(driver.driverPath.c_str())},
                        {"dataFile", Utf8(driver.dataFile.c_str())},
                        {"configFile", Utf8(driver.configFile.c_str())},
                        {"helpFile", Utf8(driver.helpFile.c_str())},
                        {"dependentFiles", dependents},
                        {"monitor", Utf8(driver.monitor.c_str())}});
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
        files.push_back(
            {{"name", Utf8(records.Get()[i].szFileName)}, {"directory", Utf8(records.Get()[i].szDirectory)}});
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

void AddInfAndModel(CLI::App& command, DriverOptions& options) {
    command.add_option("--inf", options.inf, "The INF")->required();
    command.add_option("--model", options.model, "Model, as `pikel inf models` lists it")->required();
}

}  // namespace

void AddDriverCommands(CLI::App& app, Session& session) {
    CLI::App* noun = AddNoun(app, "driver", "Printer drivers of the system");
    auto options = std::make_shared<DriverOptions>();

    CLI::App* add = noun->add_subcommand("add", "Copy a model's files and add its driver");
    AddInfAndModel(*add, *options);
    add->add_flag("--print-ui", options->printUi, "Through the system's Print UI: Windows 2000 and later");
    add->callback([&session, options] { AddFromInf(session, *options); });

    CLI::App* remove = noun->add_subcommand("delete", "Delete a driver with what belongs to it alone");
    remove->add_option("DRIVER", options->model, "The driver's name")->required();
    remove->add_option("--processor", options->processor, "Of a driver for another processor than the system's")
        ->check(CLI::IsMember({"x86", "ia64", "x64"}));
    remove->add_option("--profile", options->profiles, "Colour profile to uninstall; may be given several times");
    remove->add_flag("--print-ui", options->printUi, "Through the system's Print UI: Windows 2000 and later");
    remove->add_flag("--keep-files", options->keepFiles, "With --print-ui: leave the language monitor's files");
    remove->callback([&session, options] { Delete(session, *options); });

    noun->add_subcommand("list", "List the drivers")->callback([&session] { List(session); });

    CLI::App* copy = noun->add_subcommand("copy", "Copy a model's files to where its INF says");
    AddInfAndModel(*copy, *options);
    copy->callback([&session, options] { Copy(session, *options); });

    CLI::App* stage = noun->add_subcommand("stage", "Replace an installed driver's files, also those in use");
    AddInfAndModel(*stage, *options);
    stage->add_option("--staging", options->folder, "Folder of the machine for the work; its files are deleted")
        ->required();
    stage->callback([&session, options] { Stage(session, *options); });

    CLI::App* local = noun->add_subcommand("local", "Expand a model's files into a folder of the machine");
    AddInfAndModel(*local, *options);
    local->add_option("--to", options->folder, "The folder, which exists")->required();
    local->callback([&session, options] { CopyToLocal(session, *options); });

    CLI::App* registry = noun->add_subcommand("registry", "Apply the registry part of a model's install section");
    AddInfAndModel(*registry, *options);
    registry->callback([&session, options] { ApplyRegistry(session, *options); });

    CLI::App* loaded = noun->add_subcommand("loaded", "Tell whether a file of a 9x driver is in use");
    loaded->add_option("DRIVER", options->model, "The driver's name")->required();
    loaded->callback([&session, options] { ShowLoaded(session, *options); });

    CLI::App* hwid = noun->add_subcommand("hwid", "Windows XP: keep a driver's files under its hardware id");
    hwid->add_option("DRIVER", options->model, "The driver's name")->required();
    hwid->callback([&session, options] { CopyToHardwareIdFolder(session, *options); });
}

}  // namespace pikel::cli
