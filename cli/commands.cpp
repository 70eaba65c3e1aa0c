#include "commands.h"

namespace pikel::cli {

CommandLine ToolCommandLine(Session& session) {
    CommandLine line = {
        "pikel",
        "Installs printer drivers and printers, on Windows or on a simulated machine",
        "pikel " PIKEL_VERSION,
        "Exit codes: 0 done, 1 failed, 2 wrong usage, 3 done but a restart is needed.\n"
        "`pikel NOUN --help` lists a noun's verbs, `pikel NOUN VERB --help` their options.",
        {{"--json", &session.asJson, "Results as JSON"}},
        {InstallCommand(session), InfCommands(session), DriverCommands(session), PortCommands(session),
         PrinterCommands(session), DefaultCommands(session), FileCommands(session), CabinetCommands(session),
         MonitorCommands(session), PrintUiCommands(session), NetworkCommands(session), ShortcutCommands(session),
         WhoAmICommand(session)},
    };
#ifndef _WIN32
    line.options.push_back(
        {"--machine", &session.machineFolder, "Folder of the simulated machine to work on; without it PIKEL_MACHINE"});
    line.options.push_back(
        {"--trace", &session.traceFile,
         "Append every platform call that the library makes to this file; JSON lines when its name ends in"
         " .jsonl. What the tool looks up itself, as in lists, is not in it"});
    line.commands.push_back(MachineCommands(session));
#endif
    return line;
}

}  // namespace pikel::cli
