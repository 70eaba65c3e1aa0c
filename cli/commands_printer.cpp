// pikel port create, pikel printer add|list|delete|uninstall, pikel default get|set.
#include <cstdio>

#include "commands.h"
#include "platform/platform.h"
#include "steps.h"
#include "system_view.h"

namespace pikel::cli {

namespace {

void CreatePortCommand(Session& session, const NewPort& port) {
    session.RequireMachine();
    NewPort located = port;
    if (!located.sdk.empty()) {
        located.sdk = session.PathFor(located.sdk);
    }
    std::string created = CreatePortStep(session, located);
    session.Print({{"port", Utf8(created.c_str())}}, [&] { std::printf("created port %s\n", created.c_str()); });
}

void AddPrinterCommand(Session& session, const NewPrinter& printer) {
    session.RequireMachine();
    AddPrinterStep(session, printer);
    session.Print({{"printer", Utf8(printer.name.c_str())}},
                  [&] { std::printf("added printer %s\n", printer.name.c_str()); });
}

void ListPrintersCommand(Session& session) {
    session.RequireMachine();
    std::vector<PrinterView> printers = ListPrinters();
    nlohmann::json json = nlohmann::json::array();
    for (const PrinterView& printer : printers) {
        json.push_back(JsonObject({{"name", Utf8(printer.name.c_str())},
                                   {"driver", Utf8(printer.driver.c_str())},
                                   {"port", Utf8(printer.port.c_str())},
                                   {"comment", Utf8(printer.comment.c_str())},
                                   {"attributes", printer.attributes}}));
    }
    session.Print(json, [&] {
        for (const PrinterView& printer : printers) {
            std::printf("%s  (driver %s, port %s)\n", Utf8(printer.name.c_str()).c_str(),
                        Utf8(printer.driver.c_str()).c_str(), Utf8(printer.port.c_str()).c_str());
        }
    });
}

struct RemovalOptions {
    std::string name;
    std::vector<std::string> profiles;
    bool keepShare = false;
    bool keepFiles = false;
    bool printUi = false;
};

/// The profiles of a removal: those named, else those that the printer reports.
class RemovedProfiles {
  public:
    RemovedProfiles(Session& session, RemovalOptions& options) : m_record(session.Table()) {
        for (std::string& profile : options.profiles) {
            m_profiles.push_back(profile.data());
        }
        // A printer that can't be read whole is removed all the same, without profiles.
        if (m_profiles.empty() && session.Table().PI_KEL_GetPrinter(options.name.c_str(), m_record.Out()) == 0) {
            m_profiles.assign(m_record->ColorProfiles, m_record->ColorProfiles + m_record->ColorProfileCount);
        }
    }
    DWORD Count() const { return static_cast<DWORD>(m_profiles.size()); }
    LPSTR* List() { return m_profiles.empty() ? nullptr : m_profiles.data(); }

  private:
    TableBlock<PrinterRecord> m_record;
    std::vector<LPSTR> m_profiles;
};

void DeletePrinterCommand(Session& session, RemovalOptions options) {
    session.RequireMachine();
    const PI_KEL_Interface& table = session.Table();
    if (options.keepShare) {
        Session::Check("PI_KEL_DeletePrinterWithoutShareReg",
                       table.PI_KEL_DeletePrinterWithoutShareReg(options.name.c_str()), PIKEL_PREFIX_PRINTER_DELETE);
    } else {
        RemovedProfiles profiles(session, options);
        Session::Check("PI_KEL_DeletePrinter",
                       table.PI_KEL_DeletePrinter(options.name.c_str(), profiles.Count(), profiles.List(),
                                                  options.printUi ? 1 : 0),
                       PIKEL_PREFIX_PRINTER_DELETE);
    }
    session.Print({{"printer", Utf8(options.name.c_str())}},
                  [&] { std::printf("deleted printer %s\n", options.name.c_str()); });
}

/// Name of a printer's driver; empty for a printer that isn't there.
std::string DriverOf(const std::string& printer) {
    for (const PrinterView& view : ListPrinters()) {
        if (Platform().lstrcmpiA(view.name.c_str(), printer.c_str()) == 0) {
            return view.driver;
        }
    }
    return "";
}

bool IsDriverThere(const std::string& driver) {
    for (const DriverView& view : ListDrivers()) {
        if (view.name == driver) {
            return true;
        }
    }
    return false;
}

void UninstallPrinterCommand(Session& session, RemovalOptions options) {
    session.RequireMachine();
    const DriverGeneration generation = GenerationOf(session.TargetSystem());
    const std::string driver = DriverOf(options.name);
    RemovedProfiles profiles(session, options);
    Session::Check("PI_KEL_UninstallPrinter",
                   session.Table().PI_KEL_UninstallPrinter(options.name.c_str(), driver.c_str(), generation.version,
                                                           generation.processor, profiles.Count(), profiles.List(),
                                                           options.keepFiles ? 0 : 1, options.printUi ? 1 : 0),
                   PIKEL_PREFIX_DRIVER_ADD);
    session.LookAgain();
    const bool driverStays = IsDriverThere(driver);
    session.Print(
        {{"printer", Utf8(options.name.c_str())}, {"driver", Utf8(driver.c_str())}, {"driverStays", driverStays}}, [&] {
            std::printf("uninstalled printer %s; driver %s %s\n", options.name.c_str(), driver.c_str(),
                        driverStays ? "stays, another printer uses it" : "is gone");
        });
}

void GetDefault(Session& session) {
    session.RequireMachine();
    char name[MAX_PATH] = {};
    DWORD status = session.Table().PI_KEL_GetDefaultPrinter(name, sizeof name);
    // Where the default is kept as text, having none shows as "not found"; to a person the two are the same.
    if (status != (PIKEL_PREFIX_GENERAL | ERROR_FILE_NOT_FOUND)) {
        Session::Check("PI_KEL_GetDefaultPrinter", status, PIKEL_PREFIX_GENERAL);
    }
    session.Print({{"default", *name == '\0' ? nlohmann::json(nullptr) : JsonText(name)}},
                  [&] { std::printf("%s\n", *name == '\0' ? "no default printer" : Utf8(name).c_str()); });
}

void SetDefault(Session& session, const std::string& printer) {
    session.RequireMachine();
    SetDefaultStep(session, printer);
    session.Print({{"default", Utf8(printer.c_str())}},
                  [&] { std::printf("default printer is %s\n", printer.c_str()); });
}

Command AddVerb(Session& session) {
    auto printer = std::make_shared<NewPrinter>();
    return {"add",
            "Add a printer, or connect to \\\\SERVER\\PRINTER",
            {{"NAME", &printer->name, "Name of the printer", Need::Required},
             {"--driver", &printer->driver, "Driver, as `pikel driver list` shows it"},
             {"--port", &printer->port, "Port"},
             {"--comment", &printer->comment, "Comment"},
             {"--location", &printer->location, "Location"},
             {"--profile", &printer->profiles, "Colour profile to associate; may be given several times"}},
            [&session, printer] { AddPrinterCommand(session, *printer); }};
}

/// The options of both removals, with the one that a verb has besides.
std::vector<Option> RemovalOptionTable(RemovalOptions& removal, Option own) {
    return {{"NAME", &removal.name, "Name of the printer", Need::Required},
            {"--profile", &removal.profiles,
             "Colour profile that goes as well; without any those that the printer reports"},
            {"--print-ui", &removal.printUi, "Through the system's Print UI, before Vista"},
            std::move(own)};
}

}  // namespace

Command PortCommands(Session& session) {
    auto port = std::make_shared<NewPort>();
    return {"port",
            "Printer ports",
            {},
            nullptr,
            {{"create",
              "Create a network port through a port SDK library",
              {{"NAME", &port->name, "Name or address, at most 20 characters", Need::Required},
               {"--sdk", &port->sdk, "The port SDK library; a simulated machine has one of its own"},
               {"--lpr", &port->lpr, "An LPR port instead of a raw one"},
               {"--queue", &port->queue, "Queue of an LPR port"},
               {"--byte-count", &port->byteCount, "Count bytes before sending (LPR)"}},
              [&session, port] { CreatePortCommand(session, *port); }}}};
}

Command PrinterCommands(Session& session) {
    auto removal = std::make_shared<RemovalOptions>();
    Command noun = {"printer",
                    "Printers",
                    {},
                    nullptr,
                    {AddVerb(session),
                     {"list", "List the printers", {}, [&session] { ListPrintersCommand(session); }},
                     {"delete", "Delete a printer, or the connection to \\\\SERVER\\PRINTER",
                      RemovalOptionTable(*removal, {"--keep-share", &removal->keepShare,
                                                    "Leave profiles, and the share of Windows 95, 98 and Me"}),
                      [&session, removal] { DeletePrinterCommand(session, *removal); }},
                     {"uninstall", "Delete a printer, and its driver when nobody else uses it",
                      RemovalOptionTable(*removal, {"--keep-files", &removal->keepFiles,
                                                    "With --print-ui: leave the language monitor's files"}),
                      [&session, removal] { UninstallPrinterCommand(session, *removal); }}}};
    for (Command& verb : PrinterRecordVerbs(session)) {
        noun.verbs.push_back(std::move(verb));
    }
    return noun;
}

Command DefaultCommands(Session& session) {
    auto name = std::make_shared<std::string>();
    return {"default",
            "The default printer",
            {},
            nullptr,
            {{"get", "Show the default printer", {}, [&session] { GetDefault(session); }},
             {"set",
              "Make a printer the default",
              {{"NAME", name.get(), "Name of the printer", Need::Required}},
              [&session, name] { SetDefault(session, *name); }}}};
}

}  // namespace pikel::cli
