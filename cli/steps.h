// The steps of an installation, each one operation of the table.
#pragma once

#include <string>
#include <vector>

#include "session.h"

namespace pikel::cli {

/// What a new printer is made of.
struct NewPrinter {
    std::string name;
    std::string driver;
    std::string port;
    std::string comment;
    std::string location;
    std::vector<std::string> profiles;
    DWORD notSelectedTimeout = 0;  ///< milliseconds, 9x family
    DWORD retryTimeout = 0;
};

/// DriverVersionCode and ProcessorCode of the drivers of a system.
struct DriverGeneration {
    DWORD version = PIKEL_DRIVER_VERSION_2000;
    DWORD processor = PIKEL_PROCESSOR_X86;
};
DriverGeneration GenerationOf(const Target& target);

/// What a new port is made of.
struct NewPort {
    std::string name;
    std::string sdk;  ///< empty: the machine's own port SDK
    bool lpr = false;
    std::string queue;
    bool byteCount = false;
};

/// Reads a model's record. Throws OperationFailed.
void ReadDriverRecord(Session& session, const std::string& inf, const std::string& model, const Target& target,
                      TableBlock<DriverAddRecord>& record);
/// Copies the files that the INF names.
void CopyDriverFiles(Session& session, const std::string& inf, const std::string& model, const Target& target);
/// Copies the files and adds the driver, all by the system's Print UI.
void AddDriverThroughPrintUi(Session& session, const std::string& inf, const std::string& model, const Target& target);
void AddDriver(Session& session, const DriverAddRecord& record);
/// @return the name that the port SDK gave the port
std::string CreatePortStep(Session& session, const NewPort& port);
void AddPrinterStep(Session& session, const NewPrinter& printer);
/// Reads all that is known of a printer.
void ReadPrinter(Session& session, const std::string& printer, TableBlock<PrinterRecord>& record);
void SetDefaultStep(Session& session, const std::string& printer);

}  // namespace pikel::cli
