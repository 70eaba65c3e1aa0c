// pikel printer show|set|export|import: a printer's record.
#include <cstdio>
#include <fstream>
#include <iterator>
#include <optional>

#include "commands.h"
#include "failure.h"
#include "printer_json.h"
#include "steps.h"

namespace pikel::cli {

namespace {

struct SetOptions {
    std::string name;
    std::optional<std::string> newName;
    std::optional<std::string> driver;
    std::optional<std::string> port;
    std::optional<std::string> comment;
    std::optional<std::string> location;
    std::optional<std::string> share;
    std::optional<DWORD> priority;
    bool keepDevMode = true;
};

struct RecordFileOptions {
    std::string name;
    std::string file;
};

void Write(Session& session, const std::string& name, PrinterRecord& record) {
    Session::Check("PI_KEL_SetPrinter", session.Table().PI_KEL_SetPrinter(name.c_str(), &record), PIKEL_PREFIX_GENERAL);
}

// ---- show -----------------------------------------------------------------------------------------------------------

void PrintRecordField(const char* name, const nlohmann::json& value) {
    if (value.is_string() && !value.get<std::string>().empty()) {
        std::printf("%-16s %s\n", name, value.get<std::string>().c_str());
    }
}

void PrintRecord(const nlohmann::json& printer) {
    PrintRecordField("printer", printer["printerName"]);
    PrintRecordField("server", printer["serverName"]);
    PrintRecordField("driver", printer["driverName"]);
    PrintRecordField("port", printer["portName"]);
    PrintRecordField("share", printer["shareName"]);
    PrintRecordField("comment", printer["comment"]);
    PrintRecordField("location", printer["location"]);
    PrintRecordField("print processor", printer["printProcessor"]);
    PrintRecordField("data type", printer["datatype"]);
    std::printf("%-16s 0x%x\n", "attributes", static_cast<unsigned>(printer["attributes"].get<DWORD>()));
    std::printf("%-16s 0x%x\n", "status", static_cast<unsigned>(printer["status"].get<DWORD>()));
    std::printf("%-16s %u\n", "priority", static_cast<unsigned>(printer["priority"].get<DWORD>()));
    if (printer["security"].is_object()) {
        PrintRecordField("descriptor", printer["security"].value("descriptor", ""));
    }
    for (const nlohmann::json& profile : printer["colourProfiles"]) {
        PrintRecordField("colour profile", profile);
    }
    for (const nlohmann::json& value : printer["values"]) {
        std::printf("%-16s %s\\%s, %zu bytes\n", "value",
                    value["key"].is_null() ? "PrinterDriverData" : value["key"].get<std::string>().c_str(),
                    value["name"].get<std::string>().c_str(), value["data"].get<std::string>().size() / 2);
    }
}

void Show(Session& session, const std::string& name) {
    session.RequireMachine();
    TableBlock<PrinterRecord> record(session.Table());
    ReadPrinter(session, name, record);
    const nlohmann::json printer = PrinterJson(*record.Get());
    session.Print(printer, [&] { PrintRecord(printer); });
}

// ---- set ------------------------------------------------------------------------------------------------------------

/// The share of Windows 95, 98 and Me, where it is to be made; else it stays as it is.
void TakeShare(const SetOptions& options, PrinterRecord& record) {
    constexpr BYTE kPrinterShare = 1;  // STYPE_PRINTQ
    PrinterShareRecord* share = record.ShareRecord;
    if (share == nullptr || !options.share || options.share->empty()) {
        record.ShareRecord = nullptr;
        return;
    }
    std::snprintf(share->NetName, sizeof share->NetName, "%s", options.share->c_str());
    std::snprintf(share->Path, sizeof share->Path, "%s", record.pPrinterName);
    share->ShareType = kPrinterShare;
}

void Set(Session& session, SetOptions options) {
    session.RequireMachine();
    TableBlock<PrinterRecord> record(session.Table());
    ReadPrinter(session, options.name, record);
    auto take = [](std::optional<std::string>& text, LPSTR& field) {
        if (text) {
            field = text->data();
        }
    };
    take(options.newName, record->pPrinterName);
    take(options.driver, record->pDriverName);
    take(options.port, record->pPortName);
    take(options.comment, record->pComment);
    take(options.location, record->pLocation);
    take(options.share, record->pShareName);
    if (options.share) {
        record->Attributes = options.share->empty() ? record->Attributes & ~DWORD{PRINTER_ATTRIBUTE_SHARED}
                                                    : record->Attributes | DWORD{PRINTER_ATTRIBUTE_SHARED};
    }
    if (options.priority) {
        record->Priority = *options.priority;
    }
    // Values and descriptor stay with the printer; written back they would go to the name that it had.
    record->RegistryEntryCount = 0;
    record->SecurityRecord = nullptr;
    TakeShare(options, *record.Get());
    if (!options.keepDevMode) {
        session.Table().PI_KEL_SetEffectiveDevMode(0);
    }
    Write(session, options.name, *record.Get());
    const std::string name = options.newName.value_or(options.name);
    // The operation tells only whether the printer could be opened: what is there now tells the rest.
    TableBlock<PrinterRecord> now(session.Table());
    ReadPrinter(session, name, now);
    session.Print(PrinterJson(*now.Get()), [&] { std::printf("set printer %s\n", name.c_str()); });
}

// ---- export and import ----------------------------------------------------------------------------------------------

void Export(Session& session, const RecordFileOptions& options) {
    session.RequireMachine();
    TableBlock<PrinterRecord> record(session.Table());
    ReadPrinter(session, options.name, record);
    const std::string text = PrinterJson(*record.Get()).dump(2) + "\n";
    if (options.file.empty()) {
        std::fputs(text.c_str(), stdout);
        return;
    }
    std::ofstream file(options.file, std::ios::binary | std::ios::trunc);
    file << text << std::flush;
    if (!file) {
        throw ToolError(options.file + ": can't be written");
    }
    session.Print({{"printer", options.name}, {"file", options.file}},
                  [&] { std::printf("exported %s to %s\n", options.name.c_str(), options.file.c_str()); });
}

nlohmann::json ReadJson(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    if (!file) {
        throw ToolError(name + ": no such file");
    }
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    try {
        return nlohmann::json::parse(text);
    } catch (const nlohmann::json::parse_error& problem) {
        throw ToolError(name + ": not JSON: " + problem.what());
    }
}

void Import(Session& session, const RecordFileOptions& options) {
    session.RequireMachine();
    ImportedPrinter printer(ReadJson(options.file));
    const std::string name = !options.name.empty()                      ? options.name
                             : printer.Record().pPrinterName != nullptr ? printer.Record().pPrinterName
                                                                        : "";
    if (name.empty()) {
        throw ToolError(options.file + " names no printer; name it on the command line");
    }
    std::string own = name;
    printer.Record().pPrinterName = own.data();  // the file may come from a printer of another name
    Write(session, name, printer.Record());
    session.Print({{"printer", name}, {"file", options.file}},
                  [&] { std::printf("imported %s into %s\n", options.file.c_str(), name.c_str()); });
}

Command SetVerb(Session& session) {
    auto options = std::make_shared<SetOptions>();
    return {"set",
            "Change a printer's settings",
            {{"NAME", &options->name, "Name of the printer", Need::Required},
             {"--name", &options->newName, "New name"},
             {"--driver", &options->driver, "Driver, as `pikel driver list` shows it"},
             {"--port", &options->port, "Port"},
             {"--comment", &options->comment, "Comment"},
             {"--location", &options->location, "Location"},
             {"--share", &options->share, "Share name; an empty one ends the sharing"},
             {"--priority", &options->priority, "Priority, 1 to 99"},
             {.name = "--default-devmode",
              .value = &options->keepDevMode,
              .help = "Let the driver choose the device settings",
              .clears = true}},
            [&session, options] { Set(session, *options); }};
}

}  // namespace

std::vector<Command> PrinterRecordVerbs(Session& session) {
    auto name = std::make_shared<std::string>();
    auto files = std::make_shared<RecordFileOptions>();
    return {{"show",
             "Show all that is known of a printer",
             {{"NAME", name.get(), "Name of the printer", Need::Required}},
             [&session, name] { Show(session, *name); }},
            SetVerb(session),
            {"export",
             "Write all that is known of a printer as JSON",
             {{"NAME", &files->name, "Name of the printer", Need::Required},
              {"--to", &files->file, "File; without it to standard output"}},
             [&session, files] { Export(session, *files); }},
            {"import",
             "Write an exported record back to a printer that is there",
             {{"FILE", &files->file, "File that `pikel printer export` wrote", Need::Required},
              {"--printer", &files->name, "Printer; without it the one that the file names"}},
             [&session, files] { Import(session, *files); }}};
}

}  // namespace pikel::cli
