// pikel port create, pikel printer add|list, pikel default get|set.
#include <cstdio>

#include "commands.h"
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
        json.push_back({{"name", Utf8(printer.name.c_str())},
                        {"driver", Utf8(printer.driver.c_str())},
                        {"port", Utf8(printer.port.c_str())},
                        {"comment", Utf8(printer.comment.c_str())},
                        {"attributes", printer.attributes}});
    }
    session.Print(json, [&] {
        for (const PrinterView& printer : printers) {
            std::printf("%s  (driver %s, port %s)\n", Utf8(printer.name.c_str()).c_str(),
                        Utf8(printer.driver.c_str()).c_str(), Utf8(printer.port.c_str()).c_str());
        }
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

}  // namespace

void AddPortCommands(CLI::App& app, Session& session) {
    CLI::App* noun = AddNoun(app, "port", "Printer ports");
    auto port = std::make_shared<NewPort>();
    CLI::App* create = noun->add_subcommand("create", "Create a network port through a port SDK library");
    create->add_option("NAME", port->name, "Name or address, at most 20 characters")->required();
    create->add_option("--sdk", port->sdk, "The port SDK library; a simulated machine has one of its own");
    create->add_flag("--lpr", port->lpr, "An LPR port instead of a raw one");
    create->add_option("--queue", port->queue, "Queue of an LPR port");
    create->add_flag("--byte-count", port->byteCount, "Count bytes before sending (LPR)");
    create->callback([&session, port] { CreatePortCommand(session, *port); });
}

void AddPrinterCommands(CLI::App& app, Session& session) {
    CLI::App* noun = AddNoun(app, "printer", "Printers");
    auto printer = std::make_shared<NewPrinter>();
    CLI::App* add = noun->add_subcommand("add", "Add a printer, or connect to \\\\SERVER\\PRINTER");
    add->add_option("NAME", printer->name, "Name of the printer")->required();
    add->add_option("--driver", printer->driver, "Driver, as `pikel driver list` shows it");
    add->add_option("--port", printer->port, "Port");
    add->add_option("--comment", printer->comment, "Comment");
    add->add_option("--location", printer->location, "Location");
    add->add_option("--profile", printer->profiles, "Colour profile to associate; may be given several times");
    add->callback([&session, printer] { AddPrinterCommand(session, *printer); });

    noun->add_subcommand("list", "List the printers")->callback([&session] { ListPrintersCommand(session); });
}

void AddDefaultCommands(CLI::App& app, Session& session) {
    CLI::App* noun = AddNoun(app, "default", "The default printer");
    noun->add_subcommand("get", "Show the default printer")->callback([&session] { GetDefault(session); });
    auto name = std::make_shared<std::string>();
    CLI::App* set = noun->add_subcommand("set", "Make a printer the default");
    set->add_option("NAME", *name, "Name of the printer")->required();
    set->callback([&session, name] { SetDefault(session, *name); });
}

}  // namespace pikel::cli
