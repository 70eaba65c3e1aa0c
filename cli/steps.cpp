#include "steps.h"

#include "failure.h"

namespace pikel::cli {

namespace {

Session* g_copying = nullptr;

/// Tells of each file, and gives up at the first that can't be copied: nobody is there to put in another disk.
UINT CALLBACK OnQueueEvent(PVOID /*context*/, UINT notification, UINT_PTR param1, UINT_PTR /*param2*/) {
    switch (notification) {
        case SPFILENOTIFY_STARTCOPY:
            g_copying->Progress(std::string("copying ") + reinterpret_cast<const FILEPATHS_A*>(param1)->Target);
            return FILEOP_DOIT;
        case SPFILENOTIFY_COPYERROR:
        case SPFILENOTIFY_DELETEERROR:
        case SPFILENOTIFY_RENAMEERROR:
            return FILEOP_ABORT;
        default:
            // 1 is FILEOP_DOIT, and TRUE for the notifications that ask whether to go on.
            return FILEOP_DOIT;
    }
}

/// A text for a record's field, which isn't const though nobody writes to it; null for an empty one.
LPSTR Field(const std::string& text) {
    return text.empty() ? nullptr : const_cast<LPSTR>(text.c_str());
}

}  // namespace

DriverGeneration GenerationOf(const Target& target) {
    switch (target.architecture) {
        case PIKEL_ARCHITECTURE_WINDOWS_9X:
            return {PIKEL_DRIVER_VERSION_9X, PIKEL_PROCESSOR_X86};
        case PIKEL_ARCHITECTURE_NT4_X86:
            return {PIKEL_DRIVER_VERSION_NT4, PIKEL_PROCESSOR_X86};
        case PIKEL_ARCHITECTURE_IA64:
            return {PIKEL_DRIVER_VERSION_2000, PIKEL_PROCESSOR_IA64};
        case PIKEL_ARCHITECTURE_X64:
            return {PIKEL_DRIVER_VERSION_2000, PIKEL_PROCESSOR_X64};
        default:
            return {};
    }
}

void ReadDriverRecord(Session& session, const std::string& inf, const std::string& model, const Target& target,
                      TableBlock<DriverAddRecord>& record) {
    Session::Check("PI_KEL_GetInfInfo",
                   session.Table().PI_KEL_GetInfInfo(inf.c_str(), model.c_str(), target.architecture, target.major,
                                                     target.minor, record.Out()),
                   PIKEL_PREFIX_INF_READ);
}

void CopyDriverFiles(Session& session, const std::string& inf, const std::string& model, const Target& target) {
    g_copying = &session;
    Session::Check(
        "PI_KEL_CopyInfDriverFiles",
        session.Table().PI_KEL_CopyInfDriverFiles(inf.c_str(), model.c_str(), &OnQueueEvent, target.architecture,
                                                  static_cast<INT>(target.major), target.minor, nullptr, nullptr),
        PIKEL_PREFIX_FILE_COPY);
}

void AddDriverThroughPrintUi(Session& session, const std::string& inf, const std::string& model, const Target& target) {
    const DriverGeneration generation = GenerationOf(target);
    session.Progress("adding driver " + model);
    Session::Check("PI_KEL_AddPrinterDriver",
                   session.Table().PI_KEL_AddPrinterDriver(inf.c_str(), model.c_str(), generation.version,
                                                           generation.processor, nullptr, 1),
                   PIKEL_PREFIX_DRIVER_ADD);
}

void AddDriver(Session& session, const DriverAddRecord& record) {
    session.Progress(std::string("adding driver ") + record.DriverInfo.pName);
    Session::Check("PI_KEL_AddPrinterDriver",
                   session.Table().PI_KEL_AddPrinterDriver(nullptr, nullptr, 0, 0, &record, 0),
                   PIKEL_PREFIX_DRIVER_ADD);
}

std::string CreatePortStep(Session& session, const NewPort& port) {
    session.Progress("creating port " + port.name);
    std::string sdk = port.sdk.empty() ? "C:\\Program Files\\pikel\\portsdk.dll" : port.sdk;
    char created[MAX_PATH] = {};
    Session::Check(
        "PI_KEL_CreatePort",
        session.Table().PI_KEL_CreatePort(sdk.c_str(), port.name.c_str(), port.lpr ? 1 : 0, Field(port.queue),
                                          port.byteCount ? 1 : 0, created, sizeof created),
        PIKEL_PREFIX_PORT);
    return *created == '\0' ? port.name : created;
}

void AddPrinterStep(Session& session, const NewPrinter& printer) {
    session.Progress("adding printer " + printer.name);
    static char processor[] = "winprint";
    static char datatype[] = "RAW";
    PrinterRecord record{};
    record.pPrinterName = Field(printer.name);
    record.pDriverName = Field(printer.driver);
    record.pPortName = Field(printer.port);
    record.pComment = Field(printer.comment);
    record.pLocation = Field(printer.location);
    record.pPrintProcessor = processor;
    record.pDatatype = datatype;

    std::vector<LPSTR> profiles;
    for (const std::string& profile : printer.profiles) {
        profiles.push_back(Field(profile));
    }
    AddPrinterOptions options{};
    options.DeviceNotSelectedTimeout = printer.notSelectedTimeout;
    options.TransmissionRetryTimeout = printer.retryTimeout;
    options.ColorProfileCount = static_cast<DWORD>(profiles.size());
    options.ColorProfiles = profiles.empty() ? nullptr : profiles.data();
    Session::Check("PI_KEL_AddPrinter", session.Table().PI_KEL_AddPrinter(&record, &options), PIKEL_PREFIX_PRINTER_ADD);
}

void ReadPrinter(Session& session, const std::string& printer, TableBlock<PrinterRecord>& record) {
    Session::Check("PI_KEL_GetPrinter", session.Table().PI_KEL_GetPrinter(printer.c_str(), record.Out()),
                   PIKEL_PREFIX_GENERAL);
}

void SetDefaultStep(Session& session, const std::string& printer) {
    Session::Check("PI_KEL_SetDefaultPrinter", session.Table().PI_KEL_SetDefaultPrinter(printer.c_str()),
                   PIKEL_PREFIX_GENERAL);
}

}  // namespace pikel::cli
