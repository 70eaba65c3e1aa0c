// Printer handles.
#include "machine/spooler/handles.h"

#include "machine/spooler/connections.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

constexpr ACCESS_MASK kEveryUser = ACCESS_MASK{PRINTER_ACCESS_USE} | READ_CONTROL;
constexpr ACCESS_MASK kGenericUse = GENERIC_READ | GENERIC_WRITE | GENERIC_EXECUTE;
constexpr ACCESS_MASK kMaximumAllowed = 0x02000000;

/// Turns general rights into a printer's own.
ACCESS_MASK Granted(ACCESS_MASK asked, bool mayAdminister) {
    ACCESS_MASK granted = asked & PRINTER_ALL_ACCESS;
    if (asked == 0 || (asked & kGenericUse) != 0) {
        granted |= kEveryUser;
    }
    if ((asked & GENERIC_ALL) != 0) {
        granted |= PRINTER_ALL_ACCESS;
    }
    if ((asked & kMaximumAllowed) != 0) {
        granted |= mayAdminister ? static_cast<ACCESS_MASK>(PRINTER_ALL_ACCESS) : kEveryUser;
    }
    return granted;
}

HANDLE Open(Machine& machine, OpenedPrinter opened) {
    const std::string description = opened.name.empty() ? "print server" : opened.name;
    return machine.Handles().Open(HandleKind::Printer, std::make_shared<OpenedPrinter>(std::move(opened)), description);
}

}  // namespace

DWORD OpenPrinterHandle(Machine& machine, const char* name, const PRINTER_DEFAULTSA* defaults, HANDLE* handle) {
    OpenedPrinter opened;
    if (name == nullptr) {
        opened.kind = OpenedPrinter::Kind::Server;
    } else if (*name == '\0') {
        return ERROR_INVALID_PARAMETER;
    } else if (const std::optional<Printer> local = Printers(machine).Find(name)) {
        opened.name = local->name;
    } else if (!machine.Is9x() && Connections(machine).Find(name)) {
        opened.kind = OpenedPrinter::Kind::Remote;
        opened.name = name;
    } else {
        return ERROR_INVALID_PRINTER_NAME;
    }
    if (machine.Is9x()) {
        opened.access = PRINTER_ALL_ACCESS;
    } else {
        const bool mayAdminister = machine.System().administrator && opened.kind != OpenedPrinter::Kind::Remote;
        opened.access = Granted(defaults == nullptr ? 0 : defaults->DesiredAccess, mayAdminister);
        if (!mayAdminister && (opened.access & ~kEveryUser) != 0) {
            return ERROR_ACCESS_DENIED;
        }
    }
    *handle = Open(machine, std::move(opened));
    return ERROR_SUCCESS;
}

HANDLE MakePrinterHandle(Machine& machine, const std::string& printer) {
    return Open(machine, {OpenedPrinter::Kind::Local, printer, PRINTER_ALL_ACCESS});
}

OpenedPrinter* FindOpened(Machine& machine, HANDLE handle) {
    return machine.Handles().Find<OpenedPrinter>(HandleKind::Printer, handle);
}

PrinterCall BeginPrinterCall(Machine& machine, HANDLE handle, ACCESS_MASK rights) {
    PrinterCall call;
    call.opened = FindOpened(machine, handle);
    if (call.opened == nullptr || call.opened->kind == OpenedPrinter::Kind::Server) {
        call.code = ERROR_INVALID_HANDLE;
        return call;
    }
    if (!call.opened->Has(rights)) {
        call.code = ERROR_ACCESS_DENIED;
        return call;
    }
    std::optional<Printer> printer = call.opened->kind == OpenedPrinter::Kind::Local
                                         ? Printers(machine).Find(call.opened->name)
                                         : Connections(machine).Find(call.opened->name);
    if (printer) {
        call.printer = std::move(*printer);
    } else {
        call.code = ERROR_PRINTER_DELETED;
    }
    return call;
}

}  // namespace pikel::simulated
