// The commands of the tool, a file a noun: each gives the noun with its verbs and options as a table.
#pragma once

#include <vector>

#include "arguments.h"
#include "session.h"

namespace pikel::cli {

// The tables keep a reference to the session, and own what their options' values are read into.
Command InstallCommand(Session& session);
Command InfCommands(Session& session);
Command DriverCommands(Session& session);
Command PortCommands(Session& session);
Command PrinterCommands(Session& session);
/// The verbs show, set, export and import of the noun "printer".
std::vector<Command> PrinterRecordVerbs(Session& session);
Command DefaultCommands(Session& session);
Command FileCommands(Session& session);
Command CabinetCommands(Session& session);
Command MonitorCommands(Session& session);
Command PrintUiCommands(Session& session);
Command NetworkCommands(Session& session);
Command ShortcutCommands(Session& session);
Command WhoAmICommand(Session& session);
#ifndef _WIN32
/// On Windows the system itself is the machine.
Command MachineCommands(Session& session);
#endif

/// All of the above, in the order in which the help lists them.
CommandLine ToolCommandLine(Session& session);

}  // namespace pikel::cli
