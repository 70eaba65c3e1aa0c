// The spooler's calls about printer drivers and their folders.
#include <cstring>
#include <optional>

#include "machine/base/info_buffer.h"
#include "machine/base/last_error.h"
#include "machine/base/names.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/operations.h"
#include "machine/security/rights.h"
#include "machine/spooler/driver_records.h"
#include "machine/spooler/drivers.h"
#include "machine/spooler/environments.h"
#include "machine/spooler/handles.h"
#include "machine/spooler/removal.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

DWORD AddDriver(Machine& machine, DWORD level, LPBYTE bytes, FileTransfer transfer) {
    if (!IsDriverAddLevel(machine, level)) {
        return ERROR_INVALID_LEVEL;
    }
    if (bytes == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    if (const DWORD code = RequireAdministrator(machine); code != ERROR_SUCCESS) {
        return code;
    }
    Driver driver = TakeDriver(level, bytes);
    const std::optional<Environment> environment = Environments(machine).Find(driver.environment);
    return environment ? Drivers(machine).Add(*environment, std::move(driver), transfer)
                       : static_cast<DWORD>(ERROR_INVALID_ENVIRONMENT);
}

/// What AddPrinterDriverA does with the files.
FileTransfer OwnTransfer(const Machine& machine) {
    if (machine.Is9x()) {
        return FileTransfer::None;
    }
    return machine.Generation() <= Generation::Nt4 ? FileTransfer::Move : FileTransfer::CopyNew;
}

/// @return false for flags that aren't one way of copying
bool TransferFromFlags(DWORD flags, FileTransfer* transfer) {
    switch (flags & ~APD_COPY_FROM_DIRECTORY) {
        case APD_STRICT_UPGRADE:
            *transfer = FileTransfer::StrictUpgrade;
            return true;
        case APD_STRICT_DOWNGRADE:
            *transfer = FileTransfer::StrictDowngrade;
            return true;
        case APD_COPY_ALL_FILES:
            *transfer = FileTransfer::CopyAll;
            return true;
        case APD_COPY_NEW_FILES:
            *transfer = FileTransfer::CopyNew;
            return true;
        default:
            return false;
    }
}

}  // namespace

// ---- operations -----------------------------------------------------------------------------------------------------

BOOL WINAPI GetPrinterDriverDirectoryA(LPSTR pName, LPSTR pEnvironment, DWORD Level, LPBYTE pDriverDirectory,
                                       DWORD cbBuf, LPDWORD pcbNeeded) {
    return Outcome(CallSpooler(pName, [&](Machine& machine) -> DWORD {
        if (Level != 1) {
            return ERROR_INVALID_LEVEL;
        }
        const InfoBuffer buffer{pDriverDirectory, cbBuf, pcbNeeded};
        if (const DWORD code = CheckInfoBuffer(buffer, !machine.Is9x()); code != ERROR_SUCCESS) {
            return code;
        }
        const std::optional<Environment> environment = Environments(machine).Find(TextOf(pEnvironment));
        return environment ? AnswerWithText(buffer, environment->directory)
                           : static_cast<DWORD>(ERROR_INVALID_ENVIRONMENT);
    }));
}

BOOL WINAPI AddPrinterDriverA(LPSTR pName, DWORD Level, LPBYTE pDriverInfo) {
    return Outcome(CallSpooler(
        pName, [&](Machine& machine) { return AddDriver(machine, Level, pDriverInfo, OwnTransfer(machine)); }));
}

BOOL WINAPI AddPrinterDriverExA(LPSTR pName, DWORD Level, PBYTE pDriverInfo, DWORD dwFileCopyFlags) {
    return Outcome(CallSpooler(pName, [&](Machine& machine) -> DWORD {
        FileTransfer transfer{};
        if (!TransferFromFlags(dwFileCopyFlags, &transfer)) {
            return ERROR_INVALID_PARAMETER;
        }
        return AddDriver(machine, Level, pDriverInfo, transfer);
    }));
}

BOOL WINAPI EnumPrinterDriversA(LPSTR pName, LPSTR pEnvironment, DWORD Level, LPBYTE pDriverInfo, DWORD cbBuf,
                                LPDWORD pcbNeeded, LPDWORD pcReturned) {
    return Outcome(CallSpooler(pName, [&](Machine& machine) -> DWORD {
        if (pcReturned == nullptr) {
            return machine.Is9x() ? ERROR_INVALID_PARAMETER : RPC_X_NULL_REF_POINTER;
        }
        const InfoBuffer buffer{pDriverInfo, cbBuf, pcbNeeded, pcReturned};
        if (const DWORD code = CheckInfoBuffer(buffer, !machine.Is9x()); code != ERROR_SUCCESS) {
            return code;
        }
        if (!IsDriverReadLevel(machine, Level)) {
            return ERROR_INVALID_LEVEL;
        }
        const std::optional<Environment> environment = Environments(machine).Find(TextOf(pEnvironment));
        return environment ? AnswerWithDrivers(buffer, Level, *environment, Drivers(machine).List(*environment))
                           : static_cast<DWORD>(ERROR_INVALID_ENVIRONMENT);
    }));
}

BOOL WINAPI GetPrinterDriverA(HANDLE hPrinter, LPSTR pEnvironment, DWORD Level, LPBYTE pDriverInfo, DWORD cbBuf,
                              LPDWORD pcbNeeded) {
    return Outcome(CallSpooler(nullptr, [&](Machine& machine) -> DWORD {
        const PrinterCall call = BeginPrinterCall(machine, hPrinter, 0);
        if (call.code != ERROR_SUCCESS) {
            return call.code;
        }
        if (!IsDriverReadLevel(machine, Level)) {
            return ERROR_INVALID_LEVEL;
        }
        const InfoBuffer buffer{pDriverInfo, cbBuf, pcbNeeded};
        if (const DWORD code = CheckInfoBuffer(buffer, !machine.Is9x()); code != ERROR_SUCCESS) {
            return code;
        }
        const std::optional<Environment> environment = Environments(machine).Find(TextOf(pEnvironment));
        if (!environment) {
            return ERROR_INVALID_ENVIRONMENT;
        }
        std::optional<Driver> driver = Drivers(machine).Find(*environment, call.printer.driverName);
        if (!driver) {
            return ERROR_UNKNOWN_PRINTER_DRIVER;
        }
        return AnswerWithDrivers(buffer, Level, *environment, {std::move(*driver)});
    }));
}

BOOL WINAPI DeletePrinterDriverA(LPSTR pName, LPSTR pEnvironment, LPSTR pDriverName) {
    return Outcome(CallSpooler(pName, [&](Machine& machine) -> DWORD {
        return TextOf(pDriverName).empty() ? static_cast<DWORD>(ERROR_INVALID_PARAMETER)
                                           : DeleteDriver(machine, pEnvironment, pDriverName, {});
    }));
}

BOOL WINAPI DeletePrinterDriverExA(LPSTR pName, LPSTR pEnvironment, LPSTR pDriverName, DWORD dwDeleteFlag,
                                   DWORD dwVersionFlag) {
    constexpr DWORD kDeleteAllFiles = 4;
    constexpr DWORD kKnownFlags = DPD_DELETE_UNUSED_FILES | DPD_DELETE_SPECIFIC_VERSION | kDeleteAllFiles;
    return Outcome(CallSpooler(pName, [&](Machine& machine) -> DWORD {
        if (TextOf(pDriverName).empty() || (dwDeleteFlag & ~kKnownFlags) != 0) {
            return ERROR_INVALID_PARAMETER;
        }
        DriverDeletion deletion;
        deletion.deletesUnusedFiles = (dwDeleteFlag & DPD_DELETE_UNUSED_FILES) != 0;
        deletion.deletesAllFiles = (dwDeleteFlag & kDeleteAllFiles) != 0;
        if ((dwDeleteFlag & DPD_DELETE_SPECIFIC_VERSION) != 0) {
            deletion.version = dwVersionFlag;
        }
        return DeleteDriver(machine, pEnvironment, pDriverName, deletion);
    }));
}

}  // namespace pikel::simulated
