// pikel: drives the library from a command line. Results go to standard output, diagnostics to standard error.
// Exit codes: 0 done, 1 failed, 2 wrong usage, 3 done but a restart is needed.
#include <cstdio>
#include <exception>

#include "commands.h"
#include "failure.h"

namespace pikel::cli {

CLI::App* AddNoun(CLI::App& app, const char* name, const char* description) {
    CLI::App* noun = app.add_subcommand(name, description);
    noun->require_subcommand(1);
    return noun;
}

namespace {

void AddGlobalOptions(CLI::App& app, Session& session) {
    app.set_version_flag("--version", "pikel " PIKEL_VERSION);
    app.add_flag("--json", session.asJson, "Results as JSON");
#ifndef _WIN32
    app.add_option("--machine", session.machineFolder,
                   "Folder of the simulated machine to work on; without it PIKEL_MACHINE");
    app.add_option("--trace", session.traceFile,
                   "Append every platform call that the library makes to this file; JSON lines when its name ends in"
                   " .jsonl. What the tool looks up itself, as in lists, is not in it");
#endif
    app.require_subcommand(1);
    app.fallthrough();
    app.footer(
        "Exit codes: 0 done, 1 failed, 2 wrong usage, 3 done but a restart is needed.\n"
        "`pikel NOUN --help` lists a noun's verbs, `pikel NOUN VERB --help` their options.");
}

int Report(const OperationFailed& failure, const Session& session) {
    std::string hint = ErrorHint(failure.Operation(), failure.Code());
    if (session.asJson) {
        nlohmann::json json = {{"error",
                                {{"operation", failure.Operation()},
                                 {"status", failure.Status()},
                                 {"code", failure.Code()},
                                 {"name", ErrorName(failure.Code())},
                                 {"text", ErrorText(failure.Code())},
                                 {"hint", hint}}}};
        std::printf("%s\n", json.dump(2).c_str());
    }
    std::fprintf(stderr, "pikel: %s failed: 0x%08x, %s (%u): %s\n", failure.Operation().c_str(),
                 static_cast<unsigned>(failure.Status()), ErrorName(failure.Code()).c_str(),
                 static_cast<unsigned>(failure.Code()), ErrorText(failure.Code()).c_str());
    if (!hint.empty()) {
        std::fprintf(stderr, "pikel: %s\n", hint.c_str());
    }
    return 1;
}

int Main(int argc, char** argv) {
    Session session;
    CLI::App app{"Installs printer drivers and printers, on Windows or on a simulated machine", "pikel"};
    AddGlobalOptions(app, session);
    AddInstallCommand(app, session);
    AddInfCommands(app, session);
    AddDriverCommands(app, session);
    AddPortCommands(app, session);
    AddPrinterCommands(app, session);
    AddDefaultCommands(app, session);
    AddFileCommands(app, session);
    AddCabinetCommands(app, session);
    AddMonitorCommands(app, session);
    AddPrintUiCommands(app, session);
    AddNetworkCommands(app, session);
    AddShellCommands(app, session);
    AddMachineCommands(app, session);
    try {
        app.parse(argc, argv);
        return session.ExitCode();
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    } catch (const OperationFailed& failure) {
        return Report(failure, session);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pikel: %s\n", error.what());
        return 1;
    }
}

}  // namespace
}  // namespace pikel::cli

int main(int argc, char** argv) {
    return pikel::cli::Main(argc, argv);
}
