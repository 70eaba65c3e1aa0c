// The spooler's calls about printer drivers and their folders.
#include <cstring>
#include <optional>
#include <set>

#include "machine/base/info_buffer.h"
#include "machine/operations.h"
#include "machine/spooler/spooler.h"
#include "machine/spooler/drivers.h"
#include "machine/spooler/environments.h"
#include "machine/spooler/handles.h"

namespace pikel::simulated {

namespace {

/// Level 6 came with Windows Me and 2000.
bool HasLevel6(const Machine& machine) {
    return machine.Generation() == Generation::WindowsMe ||
           (!machine.Is9x() && machine.Generation() >= Generation::Windows2000);
}

bool IsAddLevel(const Machine& machine, DWORD level) {
    return level == 2 || level == 3 || (level == 6 && HasLevel6(machine));
}

bool IsReadLevel(const Machine& machine, DWORD level) {
    return level == 1 || IsAddLevel(machine, level);
}

// ---- records of the caller ------------------------------------------------------------------------------------------

/// The caller's record, which need not be aligned.
template <class Info>
Info Load(LPBYTE bytes) {
    Info info;
    std::memcpy(&info, bytes, sizeof info);
    return info;
}

/// The fields of level 2, which the other levels begin with.
template <class Info>
void TakeLevel2(const Info& info, Driver* driver) {
    driver->version = info.cVersion;
    driver->name = TextOf(info.pName);
    driver->environment = TextOf(info.pEnvironment);
    driver->driverFile = TextOf(info.pDriverPath);
    driver->dataFile = TextOf(info.pDataFile);
    driver->configFile = TextOf(info.pConfigFile);
}

template <class Info>
void TakeLevel3(const Info& info, Driver* driver) {
    TakeLevel2(info, driver);
    driver->helpFile = TextOf(info.pHelpFile);
    driver->dependentFiles = SplitMultiString(info.pDependentFiles);
    driver->monitorName = TextOf(info.pMonitorName);
    driver->defaultDatatype = TextOf(info.pDefaultDataType);
}

void TakeLevel6(const DRIVER_INFO_6A& info, Driver* driver) {
    TakeLevel3(info, driver);
    driver->previousNames = SplitMultiString(info.pszzPreviousNames);
    driver->date = info.ftDriverDate;
    driver->driverVersion = info.dwlDriverVersion;
    driver->manufacturer = TextOf(info.pszMfgName);
    driver->oemUrl = TextOf(info.pszOEMUrl);
    driver->hardwareId = TextOf(info.pszHardwareID);
    driver->provider = TextOf(info.pszProvider);
}

Driver TakeDriver(DWORD level, LPBYTE bytes) {
    Driver driver;
    if (level == 2) {
        TakeLevel2(Load<DRIVER_INFO_2A>(bytes), &driver);
    } else if (level == 3) {
        TakeLevel3(Load<DRIVER_INFO_3A>(bytes), &driver);
    } else {
        TakeLevel6(Load<DRIVER_INFO_6A>(bytes), &driver);
    }
    return driver;
}

DWORD AddDriver(Machine& machine, DWORD level, LPBYTE bytes, FileTransfer transfer) {
    if (!IsAddLevel(machine, level)) {
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

// ---- records for the caller -----------------------------------------------------------------------------------------

/// Fills the records of drivers with the full paths of their files.
class DriverRecords {
  public:
    explicit DriverRecords(const Environment& environment) : m_environment(environment) {}

    void operator()(InfoSpace& space, DRIVER_INFO_1A& info, const Driver& driver) const {
        info.pName = space.Text(driver.name);
    }
    void operator()(InfoSpace& space, DRIVER_INFO_2A& info, const Driver& driver) const {
        FillLevel2(space, info, driver);
    }
    void operator()(InfoSpace& space, DRIVER_INFO_3A& info, const Driver& driver) const {
        FillLevel3(space, info, driver);
    }
    void operator()(InfoSpace& space, DRIVER_INFO_6A& info, const Driver& driver) const {
        FillLevel3(space, info, driver);
        info.pszzPreviousNames = space.MultiTextOrNull(driver.previousNames);
        info.ftDriverDate = driver.date;
        info.dwlDriverVersion = driver.driverVersion;
        info.pszMfgName = space.TextOrNull(driver.manufacturer);
        info.pszOEMUrl = space.TextOrNull(driver.oemUrl);
        info.pszHardwareID = space.TextOrNull(driver.hardwareId);
        info.pszProvider = space.TextOrNull(driver.provider);
    }

  private:
    template <class Info>
    void FillLevel2(InfoSpace& space, Info& info, const Driver& driver) const {
        info.cVersion = driver.version;
        info.pName = space.Text(driver.name);
        info.pEnvironment = space.Text(driver.environment);
        info.pDriverPath = space.TextOrNull(PathOf(driver, driver.driverFile));
        info.pDataFile = space.TextOrNull(PathOf(driver, driver.dataFile));
        info.pConfigFile = space.TextOrNull(PathOf(driver, driver.configFile));
    }
    template <class Info>
    void FillLevel3(InfoSpace& space, Info& info, const Driver& driver) const {
        FillLevel2(space, info, driver);
        std::vector<std::string> dependentFiles;
        for (const std::string& file : driver.dependentFiles) {
            // The 9x family tells them as they were named when the driver was added.
            dependentFiles.push_back(m_environment.hasVersionFolders ? PathOf(driver, file) : file);
        }
        info.pHelpFile = space.TextOrNull(PathOf(driver, driver.helpFile));
        info.pDependentFiles = space.MultiTextOrNull(dependentFiles);
        info.pMonitorName = space.TextOrNull(driver.monitorName);
        info.pDefaultDataType = space.TextOrNull(driver.defaultDatatype);
    }
    std::string PathOf(const Driver& driver, const std::string& file) const {
        return file.empty() ? file : Environments::VersionDirectory(m_environment, driver.version) + "\\" + file;
    }

    const Environment& m_environment;
};

/// @param level  one that IsReadLevel knows
DWORD AnswerWithDrivers(const InfoBuffer& buffer, DWORD level, const Environment& environment,
                        const std::vector<Driver>& drivers) {
    const DriverRecords records(environment);
    switch (level) {
        case 1:
            return AnswerWith<DRIVER_INFO_1A>(buffer, drivers, records);
        case 2:
            return AnswerWith<DRIVER_INFO_2A>(buffer, drivers, records);
        case 3:
            return AnswerWith<DRIVER_INFO_3A>(buffer, drivers, records);
        default:
            return AnswerWith<DRIVER_INFO_6A>(buffer, drivers, records);
    }
}

// ---- deletion -------------------------------------------------------------------------------------------------------

/// What DeletePrinterDriverExA is told.
struct DriverDeletion {
    std::optional<DWORD> version;  ///< none: all of them
    bool deletesUnusedFiles = false;
    bool deletesAllFiles = false;  ///< refused when another driver uses one
};

bool IsUsedByPrinter(Machine& machine, const std::string& driver) {
    for (const Printer& printer : Printers(machine).List()) {
        if (IsSameName(machine, printer.driverName, driver)) {
            return true;
        }
    }
    return false;
}

/// Files of a driver that no other one of its version names.
std::vector<std::string> UnusedFilesOf(const Machine& machine, const std::vector<Driver>& drivers,
                                       const Driver& driver) {
    const UINT codePage = machine.System().codePage;
    std::set<std::string> used;
    for (const Driver& other : drivers) {
        if (other.version == driver.version && !IsSameName(machine, other.name, driver.name)) {
            for (const std::string& file : Drivers::FilesOf(other)) {
                used.insert(FoldCase(codePage, file));
            }
        }
    }
    std::vector<std::string> unused;
    for (std::string& file : Drivers::FilesOf(driver)) {
        if (used.insert(FoldCase(codePage, file)).second) {
            unused.push_back(std::move(file));
        }
    }
    return unused;
}

DWORD DeleteDriver(Machine& machine, const char* environmentName, const char* name, const DriverDeletion& deletion) {
    if (const DWORD code = RequireAdministrator(machine); code != ERROR_SUCCESS) {
        return code;
    }
    Environments environments(machine);
    const std::optional<Environment> environment = environments.Find(TextOf(environmentName));
    if (!environment) {
        return ERROR_INVALID_ENVIRONMENT;
    }
    Drivers drivers(machine);
    const std::vector<Driver> all = drivers.List(*environment);
    std::vector<Driver> going;
    bool isOneLeft = false;
    for (const Driver& driver : all) {
        if (IsSameName(machine, driver.name, TextOf(name))) {
            const bool goes = !deletion.version || driver.version == *deletion.version;
            goes ? going.push_back(driver) : void(isOneLeft = true);
        }
    }
    if (going.empty()) {
        return ERROR_UNKNOWN_PRINTER_DRIVER;
    }
    if (environments.IsOwn(*environment) && !isOneLeft && IsUsedByPrinter(machine, going.front().name)) {
        return ERROR_PRINTER_DRIVER_IN_USE;
    }
    for (const Driver& driver : going) {
        const std::vector<std::string> unused = UnusedFilesOf(machine, all, driver);
        if (deletion.deletesAllFiles && unused.size() != Drivers::FilesOf(driver).size()) {
            return ERROR_PRINTER_DRIVER_IN_USE;
        }
        drivers.Remove(*environment, driver.name, driver.version);
        if (deletion.deletesUnusedFiles || deletion.deletesAllFiles) {
            for (const std::string& file : unused) {
                // A file that is held open stays.
                machine.Files().Delete(Environments::VersionDirectory(*environment, driver.version) + "\\" + file);
            }
        }
    }
    return ERROR_SUCCESS;
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
        if (!IsReadLevel(machine, Level)) {
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
        if (!IsReadLevel(machine, Level)) {
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
