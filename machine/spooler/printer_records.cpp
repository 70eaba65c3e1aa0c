// The records in which the spooler's calls tell of printers and take their settings.
#include "machine/spooler/printer_records.h"

#include <cstddef>
#include <cstring>

#include "machine/base/info_buffer.h"
#include "machine/base/text.h"
#include "machine/spooler/printer_security.h"
#include "machine/spooler/publishing.h"
#include "machine/spooler/spooler.h"
#include "machine/spooler/user_dev_modes.h"

namespace pikel::simulated {

namespace {

bool IsFrom2000(const Machine& machine) {
    return !machine.Is9x() && machine.Generation() >= Generation::Windows2000;
}

// ---- records for the caller -----------------------------------------------------------------------------------------

/// PRINTER_INFO_8A and 9A are one structure; this one stands for level 9.
struct UserRecord : PRINTER_INFO_8A {};

/// Fills the records of printers.
class PrinterRecords {
  public:
    explicit PrinterRecords(Machine& machine) : m_machine(machine), m_is9x(machine.Is9x()) {}

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
        info.pDevMode = DevModeOrNull(space, printer.devMode);
        info.pSepFile = OptionalText(space, printer.separatorFile);
        info.pPrintProcessor = space.Text(printer.printProcessor);
        info.pDatatype = space.Text(printer.datatype);
        info.pParameters = OptionalText(space, printer.parameters);
        info.pSecurityDescriptor = space.BytesOrNull(printer.security);
        info.Attributes = AttributesOf(printer);
        info.Priority = printer.priority;
        info.DefaultPriority = printer.defaultPriority;
        info.StartTime = printer.startTime;
        info.UntilTime = printer.untilTime;
        info.Status = printer.status;
    }
    void operator()(InfoSpace& space, PRINTER_INFO_3& info, const Printer& printer) const {
        info.pSecurityDescriptor = space.BytesOrNull(printer.security);
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
    void operator()(InfoSpace& space, PRINTER_INFO_7A& info, const Printer& printer) const {
        const Publication publication = PublicationOf(m_machine, printer.name);
        info.pszObjectGUID = space.TextOrNull(publication.objectGuid);
        info.dwAction = publication.action;
    }
    void operator()(InfoSpace& space, PRINTER_INFO_8A& info, const Printer& printer) const {
        info.pDevMode = DevModeOrNull(space, printer.devMode);
    }
    void operator()(InfoSpace& space, UserRecord& info, const Printer& printer) const {
        info.pDevMode = DevModeOrNull(space, UserDevMode(m_machine, printer.name));
    }

  private:
    /// The NT family gives an empty text for one that isn't set, the 9x family none.
    LPSTR OptionalText(InfoSpace& space, const std::string& text) const {
        return m_is9x ? space.TextOrNull(text) : space.Text(text);
    }
    static LPDEVMODEA DevModeOrNull(InfoSpace& space, std::string_view bytes) {
        return static_cast<LPDEVMODEA>(space.BytesOrNull(bytes));
    }
    /// The NT family tells local printers from shared ones of other computers; the default printer has no bit there.
    DWORD AttributesOf(const Printer& printer) const {
        const bool isLocal = !m_is9x && printer.serverName.empty();
        return printer.attributes | (isLocal ? static_cast<DWORD>(PRINTER_ATTRIBUTE_LOCAL) : 0);
    }

    Machine& m_machine;
    bool m_is9x;
};

// ---- records of the caller ------------------------------------------------------------------------------------------

/// The bytes of a DEVMODE with those that the driver keeps behind it.
std::string DevModeBytes(LPDEVMODEA mode) {
    return mode == nullptr ? std::string()
                           : std::string(reinterpret_cast<const char*>(mode),
                                         std::size_t{mode->dmSize} + std::size_t{mode->dmDriverExtra});
}

/// A DEVMODE of levels 8 and 9: none, or one that has at least what every version of the structure has.
bool IsDevModeOrNull(const std::string& bytes) {
    return bytes.empty() || bytes.size() >= offsetof(DEVMODEA, dmOrientation);
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

/// Levels 2 and 5, which give a printer other settings and maybe another name.
DWORD ChangeSettings(Machine& machine, const PrinterCall& call, DWORD level, LPBYTE record) {
    Printer printer = call.printer;
    DWORD code = ERROR_SUCCESS;
    if (level == 2) {
        code = TakeLevel2(machine, call.opened->access, record, &printer);
    } else {
        TakeLevel5(Load<PRINTER_INFO_5A>(record), &printer);
    }
    if (code == ERROR_SUCCESS) {
        code = Printers(machine).Change(call.opened->name, printer);
    }
    if (code == ERROR_SUCCESS) {
        call.opened->name = printer.name;
    }
    return code;
}

DWORD ChangeSecurity(Machine& machine, const PrinterCall& call, const PRINTER_INFO_3& info) {
    std::string security = call.printer.security;
    const DWORD code = ReplacePrinterSecurity(machine, call.opened->access, info.pSecurityDescriptor, &security);
    if (code == ERROR_SUCCESS) {
        Printers(machine).SetSecurity(call.printer.name, security);
    }
    return code;
}

DWORD ChangePublication(Machine& machine, const PrinterCall& call, const PRINTER_INFO_7A& info) {
    // The directory gives the name.
    return info.pszObjectGUID == nullptr ? Publish(machine, call.printer.name, info.dwAction)
                                         : static_cast<DWORD>(ERROR_INVALID_PARAMETER);
}

/// @param isUsers  level 9
DWORD ChangeDevMode(Machine& machine, const PrinterCall& call, const PRINTER_INFO_8A& info, bool isUsers) {
    const std::string mode = DevModeBytes(info.pDevMode);
    if (!IsDevModeOrNull(mode)) {
        return ERROR_INVALID_PARAMETER;
    }
    if (isUsers) {
        SetUserDevMode(machine, call.printer.name, mode);
    } else {
        Printers(machine).SetDevMode(call.printer.name, mode);
    }
    return ERROR_SUCCESS;
}

}  // namespace

// ---- levels ---------------------------------------------------------------------------------------------------------

bool IsListLevel(const Machine& machine, DWORD level) {
    return level == 1 || level == 2 || level == 5 || (level == 4 && !machine.Is9x());
}

bool IsReadLevel(const Machine& machine, DWORD level) {
    return IsListLevel(machine, level) || (level == 3 && !machine.Is9x()) ||
           (level >= 7 && level <= 9 && IsFrom2000(machine));
}

bool IsChangeLevel(const Machine& machine, DWORD level) {
    return level != 1 && level != 4 && IsReadLevel(machine, level);
}

ACCESS_MASK RightsToRead(DWORD level) {
    return level == 3 ? static_cast<ACCESS_MASK>(READ_CONTROL) : 0;
}

ACCESS_MASK RightsToChange(DWORD level) {
    switch (level) {
        case 3:
            return 0;
        case 9:
            return PRINTER_ACCESS_USE;
        default:
            return PRINTER_ACCESS_ADMINISTER;
    }
}

// ---- reading and changing -------------------------------------------------------------------------------------------

DWORD AnswerWithPrinters(Machine& machine, const InfoBuffer& buffer, DWORD level,
                         const std::vector<Printer>& printers) {
    const PrinterRecords records(machine);
    switch (level) {
        case 1:
            return AnswerWith<PRINTER_INFO_1A>(buffer, printers, records);
        case 2:
            return AnswerWith<PRINTER_INFO_2A>(buffer, printers, records);
        case 3:
            return AnswerWith<PRINTER_INFO_3>(buffer, printers, records);
        case 4:
            return AnswerWith<PRINTER_INFO_4A>(buffer, printers, records);
        case 7:
            return AnswerWith<PRINTER_INFO_7A>(buffer, printers, records);
        case 8:
            return AnswerWith<PRINTER_INFO_8A>(buffer, printers, records);
        case 9:
            return AnswerWith<UserRecord>(buffer, printers, records);
        default:
            return AnswerWith<PRINTER_INFO_5A>(buffer, printers, records);
    }
}

Printer NewPrinter(const Machine& machine) {
    Printer printer;
    if (!machine.Is9x()) {
        printer.security = DefaultPrinterSecurity(machine);
    }
    return printer;
}

DWORD TakeLevel2(Machine& machine, ACCESS_MASK granted, LPBYTE record, Printer* printer) {
    const auto info = Load<PRINTER_INFO_2A>(record);
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
    const bool givesSecurity = info.pSecurityDescriptor != nullptr && !machine.Is9x();
    return givesSecurity ? ReplacePrinterSecurity(machine, granted, info.pSecurityDescriptor, &printer->security)
                         : static_cast<DWORD>(ERROR_SUCCESS);
}

DWORD ChangePrinter(Machine& machine, const PrinterCall& call, DWORD level, LPBYTE record) {
    switch (level) {
        case 3:
            return ChangeSecurity(machine, call, Load<PRINTER_INFO_3>(record));
        case 7:
            return ChangePublication(machine, call, Load<PRINTER_INFO_7A>(record));
        case 8:
        case 9:
            return ChangeDevMode(machine, call, Load<PRINTER_INFO_8A>(record), level == 9);
        default:
            return ChangeSettings(machine, call, level, record);
    }
}

}  // namespace pikel::simulated
