// The commands of the tool, a file a noun. Each adds its verbs to the command line; a verb runs as its callback.
#pragma once

#include <CLI/CLI.hpp>

#include "session.h"

namespace pikel::cli {

void AddMachineCommands(CLI::App& app, Session& session);
void AddInfCommands(CLI::App& app, Session& session);
void AddDriverCommands(CLI::App& app, Session& session);
void AddPortCommands(CLI::App& app, Session& session);
void AddPrinterCommands(CLI::App& app, Session& session);
/// The verbs show, set, export and import of the noun "printer".
void AddPrinterRecordCommands(CLI::App& noun, Session& session);
void AddDefaultCommands(CLI::App& app, Session& session);
void AddFileCommands(CLI::App& app, Session& session);
void AddCabinetCommands(CLI::App& app, Session& session);
void AddMonitorCommands(CLI::App& app, Session& session);
void AddPrintUiCommands(CLI::App& app, Session& session);
void AddNetworkCommands(CLI::App& app, Session& session);
void AddShellCommands(CLI::App& app, Session& session);
void AddInstallCommand(CLI::App& app, Session& session);

/// A noun that needs a verb behind it.
CLI::App* AddNoun(CLI::App& app, const char* name, const char* description);

}  // namespace pikel::cli
