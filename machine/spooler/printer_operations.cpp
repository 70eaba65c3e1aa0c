// The spooler's calls about printers.
#include "machine/base/info_buffer.h"
#include "machine/base/last_error.h"
#include "machine/base/names.h"
#include "machine/base/text.h"
#include "machine/operations.h"
#include "machine/security/rights.h"
#include "machine/spooler/browse.h"
#include "machine/spooler/connections.h"
#include "machine/spooler/default_printer.h"
#include "machine/spooler/handles.h"
#include "machine/spooler/printer_records.h"
#include "machine/spooler/printers.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

/// The printers that flags and name of an enumeration ask for.
DWORD CollectPrinters(Machine& machine, DWORD flags, const char* name, std::vector<Printer>* found) {
    constexpr DWORD kKinds =
        PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS | PRINTER_ENUM_NAME | PRINTER_ENUM_REMOTE | PRINTER_ENUM_NETWORK;
    if (machine.Is9x() && (flags & PRINTER_ENUM_DEFAULT) != 0) {
        if (const std::optional<Printer> printer = Printers(machine).Find(DefaultPrinter(machine).Name())) {
            found->push_back(*printer);
        }
        return ERROR_SUCCESS;
    }
    if ((flags & kKinds) == 0) {
        return ERROR_INVALID_FLAGS;
    }
    const bool namesOther = (flags & PRINTER_ENUM_NAME) != 0 && !IsThisComputer(machine, TextOf(name));
    if (namesOther) {
        return ERROR_INVALID_NAME;
    }
    if ((flags & (PRINTER_ENUM_LOCAL | PRINTER_ENUM_NAME)) != 0) {
        *found = Printers(machine).List();
    }
    if ((flags & PRINTER_ENUM_CONNECTIONS) != 0 && !machine.Is9x()) {
        std::vector<Printer> connections = Connections(machine).List();
        found->insert(found->end(), connections.begin(), connections.end());
    }
    if ((flags & PRINTER_ENUM_SHARED) != 0) {
        std::erase_if(*found,
                      [](const Printer& printer) { return (printer.attributes & PRINTER_ATTRIBUTE_SHARED) == 0; });
    }
    return ERROR_SUCCESS;
}

// ---- changes --------------------------------------------------------------------------------------------------------

/// Level 0: a command for the queue.
DWORD ControlPrinter(Machine& machine, const Printer& printer, LPBYTE record, DWORD command) {
    switch (command) {
        case PRINTER_CONTROL_PAUSE:
            Printers(machine).SetStatus(printer.name, printer.status | PRINTER_STATUS_PAUSED);
            return ERROR_SUCCESS;
        case PRINTER_CONTROL_RESUME:
            Printers(machine).SetStatus(printer.name, printer.status & ~PRINTER_STATUS_PAUSED);
            return ERROR_SUCCESS;
        case PRINTER_CONTROL_PURGE:
            return ERROR_SUCCESS;  // the queues of the machine are empty
        case PRINTER_CONTROL_SET_STATUS:
            // The record is the status itself.
            Printers(machine).SetStatus(printer.name, static_cast<DWORD>(reinterpret_cast<std::uintptr_t>(record)));
            return ERROR_SUCCESS;
        default:
            return ERROR_INVALID_PRINTER_COMMAND;
    }
}

DWORD AddPrinterAtLevel2(Machine& machine, LPBYTE record, HANDLE* handle) {
    if (const DWORD code = RequireAdministrator(machine); code != ERROR_SUCCESS) {
        return code;
    }
    Printer printer = NewPrinter(machine);
    DWORD code = TakeLevel2(machine, PRINTER_ALL_ACCESS, record, &printer);
    if (code == ERROR_SUCCESS) {
        code = Printers(machine).Add(printer);
    }
    if (code == ERROR_SUCCESS) {
        *handle = MakePrinterHandle(machine, printer.name);
    }
    return code;
}

}  // namespace

// ---- operations -----------------------------------------------------------------------------------------------------

BOOL WINAPI OpenPrinterA(LPSTR pPrinterName, LPHANDLE phPrinter, LPPRINTER_DEFAULTSA pDefault) {
    return Outcome(CallSpooler(nullptr, [&](Machine& machine) -> DWORD {
        if (phPrinter == nullptr) {
            return ERROR_INVALID_PARAMETER;
        }
        *phPrinter = nullptr;
        return OpenPrinterHandle(machine, pPrinterName, pDefault, phPrinter);
    }));
}

BOOL WINAPI ClosePrinter(HANDLE hPrinter) {
    // A handle is the caller's own and closes without the spooler.
    return Outcome(Current().Handles().Close(HandleKind::Printer, hPrinter) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE);
}

HANDLE WINAPI AddPrinterA(LPSTR pName, DWORD Level, LPBYTE pPrinter) {
    HANDLE handle = nullptr;
    const DWORD code = CallSpooler(pName, [&](Machine& machine) -> DWORD {
        if (Level != 2) {
            return ERROR_INVALID_LEVEL;
        }
        return pPrinter == nullptr ? static_cast<DWORD>(ERROR_INVALID_PARAMETER)
                                   : AddPrinterAtLevel2(machine, pPrinter, &handle);
    });
    return code == ERROR_SUCCESS ? handle : Fail<HANDLE>(code, nullptr);
}

BOOL WINAPI SetPrinterA(HANDLE hPrinter, DWORD Level, LPBYTE pPrinter, DWORD Command) {
    return Outcome(CallSpooler(nullptr, [&](Machine& machine) -> DWORD {
        const PrinterCall call = BeginPrinterCall(machine, hPrinter, RightsToChange(Level));
        if (call.code != ERROR_SUCCESS) {
            return call.code;
        }
        if (Level == 0) {
            return ControlPrinter(machine, call.printer, pPrinter, Command);
        }
        if (!IsChangeLevel(machine, Level)) {
            return ERROR_INVALID_LEVEL;
        }
        if (pPrinter == nullptr || Command != 0) {
            return ERROR_INVALID_PARAMETER;
        }
        return ChangePrinter(machine, call, Level, pPrinter);
    }));
}

BOOL WINAPI GetPrinterA(HANDLE hPrinter, DWORD Level, LPBYTE pPrinter, DWORD cbBuf, LPDWORD pcbNeeded) {
    return Outcome(CallSpooler(nullptr, [&](Machine& machine) -> DWORD {
        const PrinterCall call = BeginPrinterCall(machine, hPrinter, RightsToRead(Level));
        if (call.code != ERROR_SUCCESS) {
            return call.code;
        }
        if (!IsReadLevel(machine, Level)) {
            return ERROR_INVALID_LEVEL;
        }
        const InfoBuffer buffer{pPrinter, cbBuf, pcbNeeded};
        const DWORD code = CheckInfoBuffer(buffer, !machine.Is9x());
        return code == ERROR_SUCCESS ? AnswerWithPrinters(machine, buffer, Level, {call.printer}) : code;
    }));
}

BOOL WINAPI EnumPrintersA(DWORD Flags, LPSTR Name, DWORD Level, LPBYTE pPrinterEnum, DWORD cbBuf, LPDWORD pcbNeeded,
                          LPDWORD pcReturned) {
    return Outcome(CallSpooler(nullptr, [&](Machine& machine) -> DWORD {
        if (pcReturned == nullptr) {
            return machine.Is9x() ? ERROR_INVALID_PARAMETER : RPC_X_NULL_REF_POINTER;
        }
        const InfoBuffer buffer{pPrinterEnum, cbBuf, pcbNeeded, pcReturned};
        if (const DWORD code = CheckInfoBuffer(buffer, !machine.Is9x()); code != ERROR_SUCCESS) {
            return code;
        }
        if (!IsListLevel(machine, Level)) {
            return ERROR_INVALID_LEVEL;
        }
        if (const auto code = AnswerWithBrowseList(machine, Flags, TextOf(Name), Level, buffer)) {
            return *code;
        }
        std::vector<Printer> printers;
        const DWORD code = CollectPrinters(machine, Flags, Name, &printers);
        return code == ERROR_SUCCESS ? AnswerWithPrinters(machine, buffer, Level, printers) : code;
    }));
}

BOOL WINAPI DeletePrinter(HANDLE hPrinter) {
    return Outcome(CallSpooler(nullptr, [&](Machine& machine) -> DWORD {
        const PrinterCall call = BeginPrinterCall(machine, hPrinter, DELETE);
        if (call.code == ERROR_SUCCESS) {
            Printers(machine).Remove(call.opened->name);
        }
        return call.code;
    }));
}

}  // namespace pikel::simulated
