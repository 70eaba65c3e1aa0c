// pikel inf models|show|files|place|find: what an INF offers, and where the system has it.
#include <cstdio>
#include <cstring>
#include <map>

#include "commands.h"
#include "failure.h"
#include "models_choice.h"
#include "platform/owned.h"
#include "steps.h"

namespace pikel::cli {

namespace {

struct InfOptions {
    std::string file;
    std::string model;
    std::string folder;
    std::string provider;
    std::string infClass = "Printer";
    bool plainCopy = false;
};

const char* OrNull(const std::string& text) {
    return text.empty() ? nullptr : text.c_str();
}

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
    return JsonObject({{"name", JsonText(driver.pName)},
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
                       {"monitor", JsonObject({{"name", JsonText(record.MonitorInfo.pName)},
                                               {"file", JsonText(record.MonitorInfo.pDLLName)}})},
                       {"colourProfiles", profiles},
                       {"notSelectedTimeout", record.NotSelectedTimeout},
                       {"retryTimeout", record.RetryTimeout}});
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

void ShowModel(Session& session, const InfOptions& options) {
    const std::string path = session.PathFor(options.file);
    TableBlock<DriverAddRecord> record(session.Table());
    ReadDriverRecord(session, path, options.model, session.TargetSystem(), record);
    const nlohmann::json json = nlohmann::json::array({RecordJson(*record.Get())});
    session.Print(json, [&] { ShowRecord(json[0]); });
}

// ---- the whole INF --------------------------------------------------------------------------------------------------

const char* ArchitectureText(DWORD architecture) {
    switch (architecture) {
        case PIKEL_ARCHITECTURE_WINDOWS_9X:
            return "Windows 95, 98 and Me";
        case PIKEL_ARCHITECTURE_NT4_X86:
        case PIKEL_ARCHITECTURE_NT_X86:
            return "Windows NT x86";
        case PIKEL_ARCHITECTURE_IA64:
            return "Windows IA64";
        case PIKEL_ARCHITECTURE_X64:
            return "Windows x64";
        default:
            return "neither family";
    }
}

nlohmann::json CustomisationJson(Session& session, const std::string& path) {
    DWORD customised = 0;
    char code[64] = "";
    char comment[128] = "";
    Session::Check("PI_KEL_GetCustomizeInfo",
                   session.Table().PI_KEL_GetCustomizeInfo(path.c_str(), &customised, code, comment),
                   PIKEL_PREFIX_GENERAL);
    return customised == 0 ? nlohmann::json(nullptr) : JsonObject({{"code", Utf8(code)}, {"comment", Utf8(comment)}});
}

nlohmann::json CatalogJson(Session& session, const std::string& path) {
    DWORD exists = 0;
    char name[4096] = "";  // a line of an INF is never longer
    Session::Check("PI_KEL_GetCATFileInfo", session.Table().PI_KEL_GetCATFileInfo(path.c_str(), &exists, name),
                   PIKEL_PREFIX_GENERAL);
    return exists == 0 ? nlohmann::json(nullptr) : nlohmann::json(Utf8(name));
}

nlohmann::json ChoiceJson(const std::string& path, const Target& target) {
    nlohmann::json choice = nlohmann::json::array();
    for (const ModelsCandidate& candidate : ExplainModelsChoice(path, target.major, target.minor)) {
        choice.push_back(JsonObject({{"section", Utf8(candidate.section.c_str())},
                                     {"chosen", candidate.isChosen},
                                     {"reason", candidate.reason}}));
    }
    return choice;
}

void PrintInf(const nlohmann::json& json) {
    PrintField("printer class", json["isPrinterClass"].get<bool>() ? "yes" : "no");
    PrintField("written for", json["architecture"]);
    PrintField("catalog", json["catalog"]);
    if (!json["customisation"].is_null()) {
        PrintField("customised", json["customisation"]["code"]);
        PrintField("", json["customisation"]["comment"]);
    }
    for (const nlohmann::json& section : json["modelsSections"]) {
        std::printf("  %-18s %s%s: %s\n", "models section", section["section"].get<std::string>().c_str(),
                    section["chosen"].get<bool>() ? " (chosen)" : "", section["reason"].get<std::string>().c_str());
    }
    PrintField("models", json["models"]);
}

void ShowInf(Session& session, const InfOptions& options) {
    if (!options.model.empty()) {
        ShowModel(session, options);
        return;
    }
    const std::string path = session.PathFor(options.file);
    session.UseSomeMachine();
    const Target target = session.TargetSystem();
    const PI_KEL_Interface& table = session.Table();
    DWORD architecture = 0;
    Session::Check("PI_KEL_GetInfOsVersion", table.PI_KEL_GetInfOsVersion(path.c_str(), &architecture),
                   PIKEL_PREFIX_GENERAL);
    DWORD status = 0;
    nlohmann::json models = nlohmann::json::array();
    for (const std::string& model : ReadModels(session, path, target, status)) {
        models.push_back(Utf8(model.c_str()));
    }
    const nlohmann::json json =
        JsonObject({{"isPrinterClass", table.PI_KEL_IsValidInfFile(path.c_str(), nullptr, "Printer") != 0},
                    {"architecture", ArchitectureText(architecture)},
                    {"catalog", CatalogJson(session, path)},
                    {"customisation", CustomisationJson(session, path)},
                    {"modelsSections", ChoiceJson(path, target)},
                    {"models", models}});
    session.Print(json, [&] { PrintInf(json); });
    Session::Check("PI_KEL_GetDriverListFromInf", status, PIKEL_PREFIX_INF_READ);
}

// ---- the files of a model -------------------------------------------------------------------------------------------

/// A folder of the system's temporary folder that goes with its files.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        char folder[MAX_PATH + 1] = "";
        Platform().GetTempPathA(sizeof folder, folder);
        m_path = std::string(folder) + "pikelinf";
        if (!Platform().CreateDirectoryA(m_path.c_str(), nullptr)) {
            throw ToolError(m_path + ": can't be made, or is there already; delete it and try again");
        }
    }
    ~TemporaryFolder() {
        for (const auto& [name, size] : Files()) {
            Platform().SetFileAttributesA((m_path + "\\" + name).c_str(), FILE_ATTRIBUTE_NORMAL);
            Platform().DeleteFileA((m_path + "\\" + name).c_str());
        }
        Platform().RemoveDirectoryA(m_path.c_str());
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& Path() const { return m_path; }
    /// Names and sizes of what is in it.
    std::vector<std::pair<std::string, DWORD>> Files() const {
        std::vector<std::pair<std::string, DWORD>> files;
        WIN32_FIND_DATAA data{};
        const FindHandle find(Platform().FindFirstFileA((m_path + "\\*").c_str(), &data));
        if (find) {
            do {
                if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
                    files.emplace_back(data.cFileName, data.nFileSizeLow);
                }
            } while (Platform().FindNextFileA(find.Get(), &data));
        }
        return files;
    }

  private:
    std::string m_path;
};

const char* KindText(DWORD kind) {
    return kind == 1 ? "driver" : kind == 3 ? "data" : "other";
}

/// Kinds and source names from one list, targets and sizes from another: both come in the INF's order.
nlohmann::json FilesJson(Session& session, const std::string& path, const std::string& model, const Target& target) {
    const PI_KEL_Interface& table = session.Table();
    TableBlock<DriverFileRecord> kinds(table);
    DWORD count = 0;
    Session::Check("PI_KEL_EnumDriverFiles",
                   table.PI_KEL_EnumDriverFiles(path.c_str(), model.c_str(), target.architecture, target.major,
                                                target.minor, kinds.Out(), &count),
                   PIKEL_PREFIX_GENERAL);
    const TemporaryFolder folder;
    TableBlock<LocalFileRecord> places(table);
    DWORD placed = 0;
    DWORD total = 0;
    Session::Check("PI_KEL_CopyInfDriverFilesToLocal",
                   table.PI_KEL_CopyInfDriverFilesToLocal(path.c_str(), model.c_str(), folder.Path().c_str(), &total,
                                                          PIKEL_COPY_AS_DESTINATION_NAME, &placed, places.Out(),
                                                          target.architecture, target.major, target.minor),
                   PIKEL_PREFIX_FILE_COPY);
    std::map<std::string, DWORD> sizes;
    for (const auto& [name, size] : folder.Files()) {
        sizes[name] = size;
    }
    nlohmann::json files = nlohmann::json::array();
    for (DWORD i = 0; i < count && i < placed; ++i) {
        const LocalFileRecord& place = places.Get()[i];
        files.push_back(JsonObject({{"kind", KindText(kinds.Get()[i].dwKind)},
                                    {"source", Utf8(kinds.Get()[i].lpszName)},
                                    {"name", Utf8(place.szFileName)},
                                    {"directory", Utf8(place.szDirectory)},
                                    {"size", sizes[place.szFileName]}}));
    }
    return JsonObject({{"files", files}, {"totalSize", total}});
}

void ShowFiles(Session& session, const InfOptions& options) {
    const std::string path = session.PathFor(options.file);
    session.UseSomeMachine();
    const nlohmann::json json = FilesJson(session, path, options.model, session.TargetSystem());
    session.Print(json, [&] {
        for (const nlohmann::json& file : json["files"]) {
            std::printf("%-7s %9u  %s -> %s\n", file["kind"].get<std::string>().c_str(), file["size"].get<unsigned>(),
                        file["source"].get<std::string>().c_str(),
                        (file["directory"].get<std::string>() + "\\" + file["name"].get<std::string>()).c_str());
        }
        std::printf("%-7s %9u\n", "total", json["totalSize"].get<unsigned>());
    });
}

// ---- the system's INF folder ----------------------------------------------------------------------------------------

void Place(Session& session, const InfOptions& options) {
    const std::string path = session.PathFor(options.file);
    session.RequireMachine();
    const Target target = session.TargetSystem();
    const DWORD status = session.Table().PI_KEL_InfFileCopy(
        path.c_str(), target.architecture, target.major, target.minor, OrNull(options.folder), options.provider.c_str(),
        options.infClass.c_str(), options.plainCopy ? 1 : 0);
    Session::Check("PI_KEL_InfFileCopy", status, PIKEL_PREFIX_FILE_COPY);
    session.Print({{"inf", options.file}}, [&] { std::printf("the system has %s now\n", options.file.c_str()); });
}

void Find(Session& session, const InfOptions& options) {
    session.RequireMachine();
    const Target target = session.TargetSystem();
    char name[MAX_PATH] = "";
    const DWORD status = session.Table().PI_KEL_GetInstalledInfName(
        options.model.c_str(), target.architecture, target.major, target.minor, OrNull(options.folder),
        options.provider.c_str(), options.infClass.c_str(), name, sizeof name);
    // The status speaks of the last INF looked at, so the name tells whether one was found.
    if (*name == '\0') {
        Session::Check("PI_KEL_GetInstalledInfName", status, PIKEL_PREFIX_INSTALLED_INF);
        throw ToolError("no installed INF lists " + options.model);
    }
    session.Print({{"inf", Utf8(name)}}, [&] { std::printf("%s\n", Utf8(name).c_str()); });
}

Option InfFile(InfOptions& options) {
    return {"FILE", &options.file, "The INF", Need::Required};
}

Option ForSystem(Session& session) {
    return {"--for", &session.targetSystem, "Read for this system, such as xp-x64, in place of the one at hand"};
}

/// The argument of a verb, then what says where INFs lie and which count.
std::vector<Option> PlaceOptions(InfOptions& options, Option argument, std::vector<Option> more = {}) {
    std::vector<Option> all = {
        std::move(argument),
        {"--dir", &options.folder, "Folder of the machine, in place of the system's INF folder"},
        {"--provider", &options.provider, "Provider of the INFs to look at", Need::Required},
        {.name = "--class", .value = &options.infClass, .help = "Their class", .showsDefault = true},
    };
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

}  // namespace

Command InfCommands(Session& session) {
    auto options = std::make_shared<InfOptions>();
    return {"inf",
            "Read a printer INF",
            {},
            nullptr,
            {{"models",
              "List the models that an INF offers to a system",
              {InfFile(*options), ForSystem(session)},
              [&session, options] { ShowModels(session, *options); }},
             {"show",
              "Show what an INF is, or with --model what a driver add would get from it",
              {InfFile(*options),
               {"--model", &options->model, "One model, as `pikel inf models` lists it"},
               ForSystem(session)},
              [&session, options] { ShowInf(session, *options); }},
             {"files",
              "List a model's files: kind, size, source and target",
              {InfFile(*options),
               {"--model", &options->model, "Model, as `pikel inf models` lists it", Need::Required},
               ForSystem(session)},
              [&session, options] { ShowFiles(session, *options); }},
             {"place", "Place an INF in the system's INF folder unless one there covers it",
              PlaceOptions(
                  *options, InfFile(*options),
                  {{"--copy", &options->plainCopy, "Windows 2000 and later: copy it plainly, not through the system"}}),
              [&session, options] { Place(session, *options); }},
             {"find", "Find the newest installed INF that lists a model",
              PlaceOptions(*options, {"MODEL", &options->model, "The model's name", Need::Required}),
              [&session, options] { Find(session, *options); }}}};
}

}  // namespace pikel::cli
