// pikel driver add|list.
#include <cstdio>

#include "commands.h"
#include "steps.h"
#include "system_view.h"

namespace pikel::cli {

namespace {

struct DriverOptions {
    std::string inf;
    std::string model;
};

void AddFromInf(Session& session, const DriverOptions& options) {
    session.RequireMachine();
    std::string inf = session.PathFor(options.inf);
    Target target = session.TargetSystem();
    TableBlock<DriverAddRecord> record(session.Table());
    ReadDriverRecord(session, inf, options.model, target, record);
    CopyDriverFiles(session, inf, options.model, target);
    AddDriver(session, *record.Get());
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

}  // namespace

void AddDriverCommands(CLI::App& app, Session& session) {
    CLI::App* noun = AddNoun(app, "driver", "Printer drivers of the system");
    auto options = std::make_shared<DriverOptions>();

    CLI::App* add = noun->add_subcommand("add", "Copy a model's files and add its driver");
    add->add_option("--inf", options->inf, "The INF")->required();
    add->add_option("--model", options->model, "Model, as `pikel inf models` lists it")->required();
    add->callback([&session, options] { AddFromInf(session, *options); });

    noun->add_subcommand("list", "List the drivers")->callback([&session] { List(session); });
}

}  // namespace pikel::cli
