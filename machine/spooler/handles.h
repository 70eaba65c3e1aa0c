// Printer handles: what OpenPrinterA and AddPrinterA give out.
#pragma once

#include <optional>
#include <string>

#include "machine/base/machine.h"
#include "machine/spooler/printers.h"

namespace pikel::simulated {

/// The object behind a printer handle.
struct OpenedPrinter {
    enum class Kind { Server, Local, Remote };
    Kind kind = Kind::Local;
    std::string name;  ///< of the printer; follows a new name that is given through this handle
    ACCESS_MASK access = 0;

    bool Has(ACCESS_MASK rights) const { return (access & rights) == rights; }
};

/// Opens the spooler's server, a local printer or a shared one.
/// @param name      null: the server
/// @param defaults  null: the right to print alone; on the 9x family every handle may do everything
/// @param handle    [out] set on success alone
/// @return 87 for an empty name; 1801 for an unknown one; 5 for rights that the user lacks
DWORD OpenPrinterHandle(Machine& machine, const char* name, const PRINTER_DEFAULTSA* defaults, HANDLE* handle);
/// A handle of a local printer with all rights.
HANDLE MakePrinterHandle(Machine& machine, const std::string& printer);

/// Null for a handle that isn't open.
OpenedPrinter* FindOpened(Machine& machine, HANDLE handle);

/// A handle's printer, checked for a call.
struct PrinterCall {
    OpenedPrinter* opened = nullptr;
    Printer printer;
    DWORD code = 0;  ///< 6 for no handle or a server's; 5 without the rights on the NT family; 1905 for a printer gone
};
PrinterCall BeginPrinterCall(Machine& machine, HANDLE handle, ACCESS_MASK rights);

}  // namespace pikel::simulated
