// The spooler's calls about printers.
#include <cstring>

#include "platform/simulated/info_buffer.h"
#include "platform/simulated/operations.h"
#include "platform/simulated/spooler.h"
#include "platform/simulated/spooler_connections.h"
#include "platform/simulated/spooler_default_printer.h"
#include "platform/simulated/spooler_handles.h"
#include "platform/simulated/spooler_printers.h"

namespace pikel::simulated {

namespace {

template <class Info>
Info Load(LPBYTE bytes) {
    Info info;
    std::memcpy(&info, bytes, sizeof info);
    return info;
}

// ---- records for the caller -----------------------------------------------------------------------------------------

/// Fills the records of printers.
class PrinterRecords {
  public:
    explicit PrinterRecords(const Machine& machine) : m_is9x(machine.Is9x()) {}

    void operator()(InfoSpace& space, PRINTER_INFO_1A& info, const Printer& printer) const {
        info.Flags = PRINTER_ENUM_ICON8;
        info.pDescription = space.Text(printer.name + "," + printer.driverName + "," + printer.location);
        info.pName = space.Text(printer.name);
        info.pComment = OptionalText(space, printer.comment);
    }
    void operator()(InfoSpace& space, PRINTER_INFO_2A& info, const Printer& printer) const {
        info.pServerName = space.TextOrNull(printer.serverName);
        info.pPrinterName = space.Text(printer.name);
        info.pShareName = OptionalText(space, printer.shareName);
        info.pPortName = space.Text(printer.portName);
        info.pDriverName = space.Text(printer.driverName);
        info.pComment = OptionalText(space, printer.comment);
        info.pLocation = OptionalText(space, printer.location);
        info.pDevMode = static_cast<LPDEVMODEA>(space.BytesOrNull(printer.devMode));
        info.pSepFile = OptionalText(space, printer.separatorFile);
        info.pPrintProcessor = space.Text(printer.printProcessor);
        info.pDatatype = space.Text(printer.datatype);
        info.pParameters = OptionalText(space, printer.parameters);
        info.Attributes = AttributesOf(printer);
        info.Priority = printer.priority;
        info.DefaultPriority = printer.defaultPriority;
        info.StartTime = printer.startTime;
        info.UntilTime = printer.untilTime;
        info.Status = printer.status;
    }
    void operator()(InfoSpace& space, PRINTER_INFO_4A& info, const Printer& printer) const {
        info.pPrinterName = space.Text(printer.name);
        info.pServerName = space.TextOrNull(printer.serverName);
        info.Attributes = AttributesOf(printer);
    }
    void operator()(InfoSpace& space, PRINTER_INFO_5A& info, const Printer& printer) const {
        info.pPrinterName = space.Text(printer.name);
        info.pPortName = space.Text(printer.portName);
        info.Attributes = AttributesOf(printer);
        info.DeviceNotSelectedTimeout = printer.notSelectedTimeout;
        info.TransmissionRetryTimeout = printer.retryTimeout;
    }

  private:
    /// The NT family gives an empty text for one that isn't set, the 9x family none.
    LPSTR OptionalText(InfoSpace& space, const std::string& text) const {
        return m_is9x ? space.TextOrNull(text) : space.Text(text);
    }
    /// The NT family tells local printers from shared ones of other computers; the default printer has no bit there.
    DWORD AttributesOf(const Printer& printer) const {
        const bool isLocal = !m_is9x && printer.serverName.empty();
        return printer.attributes | (isLocal ? static_cast<DWORD>(PRINTER_ATTRIBUTE_LOCAL) : 0);
    }

    bool m_is9x;
};

/// Level 4 is the NT family's.
bool IsReadLevel(const Machine& machine, DWORD level) {
    return level == 1 || level == 2 || level == 5 || (level == 4 && !machine.Is9x());
}

/// @param level  one that IsReadLevel knows
DWORD AnswerWithPrinters(const Machine& machine, const InfoBuffer& buffer, DWORD level,
                         const std::vector<Printer>& printers) {
    const PrinterRecords records(machine);
    switch (level) {
        case 1:
            return AnswerWith<PRINTER_INFO_1A>(buffer, printers, records);
        case 2:
            return AnswerWith<PRINTER_INFO_2A>(buffer, printers, records);
        case 4:
            return AnswerWith<PRINTER_INFO_4A>(buffer, printers, records);
        default:
            return AnswerWith<PRINTER_INFO_5A>(buffer, printers, records);
    }
}

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

// ---- records of the caller ------------------------------------------------------------------------------------------

/// The bytes of a DEVMODE with those that the driver keeps behind it.
std::string DevModeBytes(LPDEVMODEA mode) {
    return mode == nullptr ? std::string()
                           : std::string(reinterpret_cast<const char*>(mode),
                                         std::size_t{mode->dmSize} + std::size_t{mode->dmDriverExtra});
}

/// Takes what a level 2 record says. A null name of something that every printer has leaves it as it is.
void TakeLevel2(const PRINTER_INFO_2A& info, Printer* printer) {
    auto takeRequired = [](LPSTR text, std::string* field) {
        if (text != nullptr) {
            *field = text;
        }
    };
    takeRequired(info.pPrinterName, &printer->name);
    takeRequired(info.pPortName, &printer->portName);
    takeRequired(info.pDriverName, &printer->driverName);
    takeRequired(info.pPrintProcessor, &printer->printProcessor);
    takeRequired(info.pDatatype, &printer->datatype);
    printer->shareName = TextOf(info.pShareName);
    printer->comment = TextOf(info.pComment);
    printer->location = TextOf(info.pLocation);
    printer->separatorFile = TextOf(info.pSepFile);
    printer->parameters = TextOf(info.pParameters);
    printer->attributes = info.Attributes;
    printer->priority = info.Priority;
    printer->defaultPriority = info.DefaultPriority;
    printer->startTime = info.StartTime;
    printer->untilTime = info.UntilTime;
    if (std::string mode = DevModeBytes(info.pDevMode); !mode.empty()) {
        printer->devMode = std::move(mode);
    }
}

void TakeLevel5(const PRINTER_INFO_5A& info, Printer* printer) {
    if (info.pPrinterName != nullptr) {
        printer->name = info.pPrinterName;
    }
    if (info.pPortName != nullptr) {
        printer->portName = info.pPortName;
    }
    printer->attributes = info.Attributes;
    printer->notSelectedTimeout = info.DeviceNotSelectedTimeout;
    printer->retryTimeout = info.TransmissionRetryTimeout;
}

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

DWORD ChangePrinter(Machine& machine, const PrinterCall& call, DWORD level, LPBYTE record) {
    Printer printer = call.printer;
    if (level == 2) {
        TakeLevel2(Load<PRINTER_INFO_2A>(record), &printer);
    } else {
        TakeLevel5(Load<PRINTER_INFO_5A>(record), &printer);
    }
    const DWORD code = Printers(machine).Change(call.opened->name, printer);
    if (code == ERROR_SUCCESS) {
        call.opened->name = printer.name;
    }
    return code;
}

DWORD AddPrinterAtLevel2(Machine& machine, LPBYTE record, HANDLE* handle) {
    if (const DWORD code = RequireAdministrator(machine); code != ERROR_SUCCESS) {
        return code;
    }
    Printer printer;
    TakeLevel2(Load<PRINTER_INFO_2A>(record), &printer);
    const DWORD code = Printers(machine).Add(printer);
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
        const PrinterCall call = BeginPrinterCall(machine, hPrinter, PRINTER_ACCESS_ADMINISTER);
        if (call.code != ERROR_SUCCESS) {
            return call.code;
        }
        if (Level == 0) {
            return ControlPrinter(machine, call.printer, pPrinter, Command);
        }
        if (Level != 2 && Level != 5) {
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
        const PrinterCall call = BeginPrinterCall(machine, hPrinter, 0);
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
        if (!IsReadLevel(machine, Level)) {
            return ERROR_INVALID_LEVEL;
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
