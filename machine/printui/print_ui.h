// The print UI room: Windows' own installation of drivers and printers. It stands on setup, INF, spooler and colour.
//
// PRINTUI.DLL of the machine: its entry installs and removes drivers and printers from one command line each, and its
// string table names the versions of drivers.
//
// Nobody sits at the machine to be asked: with or without /q a command does its work or fails. The outcome is the
// thread's last error, 0 after success.
#pragma once

#include "machine/base/machine.h"
#include "machine/printui/command.h"

namespace pikel::simulated {

/// Does what a command asks for.
/// @return 0; 87 for something that the command lacks; 1722 while the spooler doesn't run; 5 without administrative
///         rights, which everything but a connection needs; else:
///           drivers     1805 for an unknown processor or environment; 1797 for a model that the INF lacks; 3001 for a
///                       driver in use; what an INF, its files or the spooler gave
///           printers    1796 unknown port; 1802 name taken; 1801 no such printer
DWORD RunPrintUICommand(Machine& machine, const PrintUICommand& command);

}  // namespace pikel::simulated
