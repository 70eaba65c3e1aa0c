// pikel printui run|resource|install: the system's own Print UI.
#include <cstdio>

#include "commands.h"
#include "failure.h"

namespace pikel::cli {

namespace {

struct PrintUiInstallOptions {
    std::string inf;
    std::string model;
    std::string printer;
    std::string port;
    std::string share;
};

void RunPrintUi(Session& session, const std::string& commandLine) {
    session.RequireMachine();
    Session::Check("PI_KEL_RunPrintUI", session.Table().PI_KEL_RunPrintUI(commandLine.c_str()), PIKEL_PREFIX_GENERAL);
    session.Print({{"commandLine", commandLine}}, [&] { std::printf("ran %s\n", commandLine.c_str()); });
}

void ShowResource(Session& session, DWORD id) {
    session.RequireMachine();
    char text[1024] = {};
    Session::Check("PI_KEL_GetResourceStrFromPrintUI",
                   session.Table().PI_KEL_GetResourceStrFromPrintUI(id, text, sizeof text), PIKEL_PREFIX_GENERAL);
    session.Print({{"id", id}, {"text", Utf8(text)}}, [&] { std::printf("%s\n", Utf8(text).c_str()); });
}

void InstallByPrintUi(Session& session, const PrintUiInstallOptions& options) {
    const std::string inf = session.PathFor(options.inf);
    session.RequireMachine();
    const DWORD status = session.Table().PI_KEL_InstallPrinterToPrintUI(
        inf.c_str(), options.printer.c_str(), options.model.c_str(), options.port.c_str(), options.share.c_str(),
        nullptr, options.share.empty() ? 0 : 1);
    Session::Check("PI_KEL_InstallPrinterToPrintUI", status, PIKEL_PREFIX_DRIVER_ADD);
    session.Print({{"printer", options.printer}, {"driver", options.model}, {"port", options.port}}, [&] {
        std::printf("installed %s as printer %s on port %s\n", options.model.c_str(), options.printer.c_str(),
                    options.port.c_str());
    });
}

}  // namespace

Command PrintUiCommands(Session& session) {
    auto line = std::make_shared<std::string>();
    auto id = std::make_shared<DWORD>(0);
    auto options = std::make_shared<PrintUiInstallOptions>();
    return {"printui",
            "The system's Print UI: Windows 2000 and later",
            {},
            nullptr,
            {{"run",
              "Run a command line of the Print UI",
              {{"COMMANDLINE", line.get(), "One argument, as in '/dl /n\"Printer\" /q'", Need::Required}},
              [&session, line] { RunPrintUi(session, *line); }},
             {"resource",
              "Show a text of the Print UI's string table",
              {{"ID", id.get(), "Number of the text", Need::Required}},
              [&session, id] { ShowResource(session, *id); }},
             {"install",
              "Install a printer with its driver through the Print UI",
              {{"--inf", &options->inf, "The INF", Need::Required},
               {"--model", &options->model, "Model, as `pikel inf models` lists it", Need::Required},
               {"--printer", &options->printer, "Name of the new printer", Need::Required},
               {"--port", &options->port, "A port that is there", Need::Required},
               {"--share", &options->share, "Share it under this name"}},
              [&session, options] { InstallByPrintUi(session, *options); }}}};
}

}  // namespace pikel::cli
