// The records in which the spooler's calls tell of printers and take their settings, by level:
//
//   1, 2, 5     every system
//   3           security descriptor, NT family
//   4           names alone, NT family
//   7, 8, 9     state in the directory, DEVMODE of the printer, DEVMODE of the user: Windows 2000 and later
#pragma once

#include <vector>

#include "machine/base/info_buffer.h"
#include "machine/spooler/handles.h"
#include "machine/spooler/printers.h"

namespace pikel::simulated {

/// Levels of enumerations.
bool IsListLevel(const Machine& machine, DWORD level);
/// Levels in which one printer can be read.
bool IsReadLevel(const Machine& machine, DWORD level);
/// Levels in which a printer can be changed; a command, level 0, is no change.
bool IsChangeLevel(const Machine& machine, DWORD level);

/// Rights that a handle needs.
ACCESS_MASK RightsToRead(DWORD level);
/// For level 3 the descriptor's parts tell more.
ACCESS_MASK RightsToChange(DWORD level);

/// @param level  one that IsReadLevel knows
/// @return 0, or 122
DWORD AnswerWithPrinters(Machine& machine, const InfoBuffer& buffer, DWORD level, const std::vector<Printer>& printers);

/// A printer to be filled by TakeLevel2: with the descriptor that the machine gives new ones.
Printer NewPrinter(const Machine& machine);
/// Takes what a level 2 record says. A null name of something that every printer has leaves it as it is.
/// @param granted  rights for the record's descriptor
/// @param record   PRINTER_INFO_2A, aligned or not
/// @return 0, or a code of ReplacePrinterSecurity
DWORD TakeLevel2(Machine& machine, ACCESS_MASK granted, LPBYTE record, Printer* printer);

/// Changes a handle's printer.
/// @param level   one that IsChangeLevel knows
/// @param record  of that level
/// @return 0; 87 for a DEVMODE that is too short, an object's name, or an unknown action; a code of
///         Printers::Change or ReplacePrinterSecurity
DWORD ChangePrinter(Machine& machine, const PrinterCall& call, DWORD level, LPBYTE record);

}  // namespace pikel::simulated
