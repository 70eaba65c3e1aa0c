// The spooler's calls about the default printer.
#include <cstring>

#include "machine/base/last_error.h"
#include "machine/base/text.h"
#include "machine/operations.h"
#include "machine/spooler/connections.h"
#include "machine/spooler/default_printer.h"
#include "machine/spooler/printers.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

/// The printer that becomes the default when the caller names none: the one that is, or else the first.
DWORD ChooseDefault(Machine& machine) {
    DefaultPrinter current(machine);
    if (!current.Name().empty()) {
        return ERROR_SUCCESS;
    }
    std::vector<Printer> printers = Printers(machine).List();
    if (printers.empty()) {
        printers = Connections(machine).List();
    }
    if (printers.empty()) {
        return ERROR_INVALID_PRINTER_NAME;
    }
    current.Set(printers.front());
    return ERROR_SUCCESS;
}

}  // namespace

BOOL WINAPI GetDefaultPrinterA(LPSTR pszBuffer, LPDWORD pcchBuffer) {
    // The user's settings tell it, so that it works without the spooler.
    if (pcchBuffer == nullptr) {
        return Outcome(ERROR_INVALID_PARAMETER);
    }
    const std::string name = DefaultPrinter(Current()).Name();
    if (name.empty()) {
        return Outcome(ERROR_FILE_NOT_FOUND);
    }
    const DWORD size = static_cast<DWORD>(name.size() + 1);
    const bool fits = pszBuffer != nullptr && *pcchBuffer >= size;
    *pcchBuffer = size;
    if (!fits) {
        return Outcome(ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(pszBuffer, name.c_str(), size);
    return TRUE;
}

BOOL WINAPI SetDefaultPrinterA(LPCSTR pszPrinter) {
    return Outcome(CallSpooler(nullptr, [&](Machine& machine) -> DWORD {
        const std::string_view name = TextOf(pszPrinter);
        if (name.empty()) {
            return ChooseDefault(machine);
        }
        std::optional<Printer> printer = Printers(machine).Find(name);
        if (!printer && Connections(machine).IsConnected(name)) {
            printer = Connections(machine).Find(name);
        }
        if (!printer) {
            return ERROR_INVALID_PRINTER_NAME;
        }
        DefaultPrinter(machine).Set(*printer);
        return ERROR_SUCCESS;
    }));
}

}  // namespace pikel::simulated
