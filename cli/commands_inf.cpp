// pikel inf models|show: what an INF offers.
#include <cstdio>
#include <cstring>

#include "commands.h"
#include "steps.h"

namespace pikel::cli {

namespace {

struct InfOptions {
    std::string file;
    std::string model;
};

/// The names that the table hands out, and its status: a list can come with a failure.
std::vector<std::string> ReadModels(Session& session, const std::string& path, const Target& target, DWORD& status) {
    const PI_KEL_Interface& table = session.Table();
    TableBlock<LPSTR> list(table);
    DWORD count = 0;
    status = table.PI_KEL_GetDriverListFromInf(path.c_str(), target.architecture, target.major, target.minor,
                                               list.Out(), &count);
    std::vector<std::string> models;
    for (DWORD i = 0; i < count; ++i) {
        models.emplace_back(list.Get()[i]);
    }
    return models;
}

void ShowModels(Session& session, const InfOptions& options) {
    DWORD status = 0;
    std::vector<std::string> models =
        ReadModels(session, session.PathFor(options.file), session.TargetSystem(), status);
    nlohmann::json json = nlohmann::json::array();
    for (const std::string& model : models) {
        json.push_back(Utf8(model.c_str()));
    }
    session.Print(json, [&] {
        for (const std::string& model : models) {
            std::printf("%s\n", Utf8(model.c_str()).c_str());
        }
    });
    Session::Check("PI_KEL_GetDriverListFromInf", status, PIKEL_PREFIX_INF_READ);
}

nlohmann::json RecordJson(const DriverAddRecord& record) {
    const DRIVER_INFO_6A& driver = record.DriverInfo;
    nlohmann::json dependents = nlohmann::json::array();
    for (LPCSTR file = driver.pDependentFiles; file != nullptr && *file != '\0'; file += std::strlen(file) + 1) {
        dependents.push_back(Utf8(file));
    }
    nlohmann::json profiles = nlohmann::json::array();
    for (DWORD i = 0; i < record.ColorProfileCount; ++i) {
        profiles.push_back(Utf8(record.ColorProfileList[i]));
    }
    return {
        {"name", JsonText(driver.pName)},
        {"version", driver.cVersion},
        {"environment", JsonText(driver.pEnvironment)},
        {"driverPath", JsonText(driver.pDriverPath)},
        {"dataFile", JsonText(driver.pDataFile)},
        {"configFile", JsonText(driver.pConfigFile)},
        {"helpFile", JsonText(driver.pHelpFile)},
        {"dependentFiles", dependents},
        {"defaultDataType", JsonText(driver.pDefaultDataType)},
        {"manufacturer", JsonText(driver.pszMfgName)},
        {"oemUrl", JsonText(driver.pszOEMUrl)},
        {"hardwareId", JsonText(driver.pszHardwareID)},
        {"provider", JsonText(driver.pszProvider)},
        {"driverVersion", driver.dwlDriverVersion},
        {"monitor", {{"name", JsonText(record.MonitorInfo.pName)}, {"file", JsonText(record.MonitorInfo.pDLLName)}}},
        {"colourProfiles", profiles},
        {"notSelectedTimeout", record.NotSelectedTimeout},
        {"retryTimeout", record.RetryTimeout}};
}

void PrintField(const char* label, const nlohmann::json& value) {
    if (value.is_string()) {
        std::printf("  %-18s %s\n", label, value.get<std::string>().c_str());
    } else if (value.is_number()) {
        std::printf("  %-18s %s\n", label, value.dump().c_str());
    } else if (value.is_array()) {
        for (const nlohmann::json& item : value) {
            std::printf("  %-18s %s\n", label, item.get<std::string>().c_str());
            label = "";
        }
    }
}

void ShowRecord(const nlohmann::json& record) {
    std::printf("%s\n", record["name"].get<std::string>().c_str());
    PrintField("environment", record["environment"]);
    PrintField("driver version", record["version"]);
    PrintField("driver file", record["driverPath"]);
    PrintField("data file", record["dataFile"]);
    PrintField("configuration file", record["configFile"]);
    PrintField("help file", record["helpFile"]);
    PrintField("dependent files", record["dependentFiles"]);
    PrintField("language monitor", record["monitor"]["name"]);
    PrintField("monitor file", record["monitor"]["file"]);
    PrintField("colour profiles", record["colourProfiles"]);
    PrintField("default data type", record["defaultDataType"]);
    PrintField("manufacturer", record["manufacturer"]);
    PrintField("hardware id", record["hardwareId"]);
    PrintField("provider", record["provider"]);
}

void ShowInf(Session& session, const InfOptions& options) {
    std::string path = session.PathFor(options.file);
    Target target = session.TargetSystem();
    std::vector<std::string> models;
    DWORD status = 0;
    if (options.model.empty()) {
        models = ReadModels(session, path, target, status);
    } else {
        models = {options.model};
    }
    nlohmann::json json = nlohmann::json::array();
    for (const std::string& model : models) {
        TableBlock<DriverAddRecord> record(session.Table());
        ReadDriverRecord(session, path, model, target, record);
        json.push_back(RecordJson(*record.Get()));
    }
    session.Print(json, [&] {
        for (const nlohmann::json& record : json) {
            ShowRecord(record);
        }
    });
    Session::Check("PI_KEL_GetDriverListFromInf", status, PIKEL_PREFIX_INF_READ);
}

}  // namespace

void AddInfCommands(CLI::App& app, Session& session) {
    CLI::App* noun = AddNoun(app, "inf", "Read a printer INF");
    auto options = std::make_shared<InfOptions>();

    CLI::App* models = noun->add_subcommand("models", "List the models that an INF offers to a system");
    models->add_option("FILE", options->file, "The INF")->required();
    models->callback([&session, options] { ShowModels(session, *options); });

    CLI::App* show = noun->add_subcommand("show", "Show what a driver add would get from an INF");
    show->add_option("FILE", options->file, "The INF")->required();
    show->add_option("--model", options->model, "One model; all of them without this");
    show->callback([&session, options] { ShowInf(session, *options); });

    for (CLI::App* command : {models, show}) {
        command->add_option("--for", session.targetSystem,
                            "Read for this system, such as xp-x64, in place of the one at hand");
    }
}

}  // namespace pikel::cli
