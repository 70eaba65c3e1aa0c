// pikel install: the whole road from an INF to a default printer.
#include <cstdio>

#include "commands.h"
#include "failure.h"
#include "steps.h"
#include "system_view.h"

namespace pikel::cli {

namespace {

struct InstallOptions {
    std::string inf;
    std::string model;
    NewPrinter printer;
    NewPort port;
};

void Install(Session& session, InstallOptions options) {
    session.RequireMachine();
    std::string inf = session.PathFor(options.inf);
    Target target = session.TargetSystem();
    bool portIsThere = PortExists(options.port.name);

    TableBlock<DriverAddRecord> record(session.Table());
    ReadDriverRecord(session, inf, options.model, target, record);
    CopyDriverFiles(session, inf, options.model, target);
    AddDriver(session, *record.Get());
    if (!portIsThere) {
        options.port.name = CreatePortStep(session, options.port);
    }
    options.printer.driver = options.model;
    options.printer.port = options.port.name;
    options.printer.notSelectedTimeout = record->NotSelectedTimeout;
    options.printer.retryTimeout = record->RetryTimeout;
    for (DWORD i = 0; i < record->ColorProfileCount; ++i) {
        options.printer.profiles.emplace_back(record->ColorProfileList[i]);
    }
    AddPrinterStep(session, options.printer);
    SetDefaultStep(session, options.printer.name);

    session.Print({{"driver", Utf8(options.model.c_str())},
                   {"port", Utf8(options.port.name.c_str())},
                   {"portCreated", !portIsThere},
                   {"printer", Utf8(options.printer.name.c_str())},
                   {"default", Utf8(options.printer.name.c_str())}},
                  [&] {
                      std::printf("installed %s as printer %s on port %s%s; it is the default printer now\n",
                                  options.model.c_str(), options.printer.name.c_str(), options.port.name.c_str(),
                                  portIsThere ? "" : " (created)");
                  });
}

}  // namespace

Command InstallCommand(Session& session) {
    auto options = std::make_shared<InstallOptions>();
    return {"install",
            "From an INF to a default printer: files, driver, port, printer",
            {{"--inf", &options->inf, "The INF", Need::Required},
             {"--model", &options->model, "Model, as `pikel inf models` lists it", Need::Required},
             {"--printer", &options->printer.name, "Name of the new printer", Need::Required},
             {"--port", &options->port.name, "Port or address; created unless it is there", Need::Required},
             {"--sdk", &options->port.sdk, "The port SDK library; a simulated machine has one of its own"}},
            [&session, options] { Install(session, *options); }};
}

}  // namespace pikel::cli
