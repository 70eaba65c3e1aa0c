// The spooler's printer drivers.
#include "machine/spooler/drivers.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>

#include "machine/base/names.h"
#include "machine/base/text.h"
#include "machine/files/files.h"
#include "machine/registry/registry.h"
#include "machine/spooler/monitors.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

/// The text fields of a driver and their values in the registry.
struct TextField {
    const char* value;
    std::string Driver::*member;
    bool always;  ///< stored when empty as well
};
constexpr TextField kTextFields[] = {
    {"Driver", &Driver::driverFile, true},
    {"Data File", &Driver::dataFile, true},
    {"Configuration File", &Driver::configFile, true},
    {"Help File", &Driver::helpFile, true},
    {"Monitor", &Driver::monitorName, true},
    {"Datatype", &Driver::defaultDatatype, true},
    {"Manufacturer", &Driver::manufacturer, false},
    {"OEM URL", &Driver::oemUrl, false},
    {"HardwareID", &Driver::hardwareId, false},
    {"Provider", &Driver::provider, false},
};

/// The fields that name a file, in the order in which the spooler takes them.
constexpr std::string Driver::*kFileFields[] = {&Driver::driverFile, &Driver::dataFile, &Driver::configFile,
                                                &Driver::helpFile};

template <class Number>
void ReadBytes(const Registry& registry, const std::string& key, const char* name, Number* number) {
    const RegistryValue* value = registry.Find(key, name);
    if (value != nullptr && value->type == REG_BINARY && value->data.size() == sizeof *number) {
        std::memcpy(number, value->data.data(), sizeof *number);
    }
}

template <class Number>
void WriteBytes(Registry& registry, const std::string& key, const char* name, const Number& number) {
    registry.SetBytes(key, name, std::string_view(reinterpret_cast<const char*>(&number), sizeof number));
}

/// A driver's name is that of a registry key.
bool IsDriverName(std::string_view name) {
    return !name.empty() && name.size() <= Registry::kMaxKeyName && name.find('\\') == std::string_view::npos;
}

bool HasFolder(std::string_view path) {
    return path.find_first_of("\\/:") != std::string_view::npos;
}

/// A drive or a leading separator: the path doesn't start at a folder that somebody else chooses.
bool IsFullPath(std::string_view path) {
    return path.starts_with('\\') || path.starts_with('/') || path.find(':') != std::string_view::npos;
}

bool IsLater(const FILETIME& left, const FILETIME& right) {
    return left.dwHighDateTime != right.dwHighDateTime ? left.dwHighDateTime > right.dwHighDateTime
                                                       : left.dwLowDateTime > right.dwLowDateTime;
}

}  // namespace

// ---- reading --------------------------------------------------------------------------------------------------------

std::string Drivers::KeyOf(const Environment& environment, std::string_view name, DWORD version) {
    return Environments::DriversKey(environment, version) + "\\" + std::string(name);
}

Driver Drivers::Read(const std::string& key, const Environment& environment, std::string_view name,
                     DWORD version) const {
    const Registry& registry = m_machine.Registry();
    Driver driver;
    driver.name = name;
    driver.environment = environment.name;
    driver.version = registry.Number(key, "Version", version);
    for (const TextField& field : kTextFields) {
        driver.*field.member = registry.Text(key, field.value);
    }
    driver.dependentFiles = registry.Texts(key, "Dependent Files");
    driver.previousNames = registry.Texts(key, "Previous Names");
    ReadBytes(registry, key, "DriverDate", &driver.date);
    ReadBytes(registry, key, "DriverVersion", &driver.driverVersion);
    return driver;
}

std::vector<Driver> Drivers::List(const Environment& environment) const {
    std::vector<Driver> drivers;
    std::string last;
    for (DWORD version : environment.versions) {
        const std::string above = Environments::DriversKey(environment, version);
        if (above == last) {
            continue;  // the 9x family has one key for all versions
        }
        last = above;
        for (const std::string& name : m_machine.Registry().SubKeys(above)) {
            drivers.push_back(Read(above + "\\" + name, environment, name, version));
        }
    }
    return drivers;
}

std::optional<Driver> Drivers::Find(const Environment& environment, std::string_view name) const {
    for (auto version = environment.versions.rbegin(); version != environment.versions.rend(); ++version) {
        if (std::optional<Driver> driver = Find(environment, name, *version)) {
            return driver;
        }
    }
    return std::nullopt;
}

std::optional<Driver> Drivers::Find(const Environment& environment, std::string_view name, DWORD version) const {
    const std::string key = KeyOf(environment, name, version);
    if (!IsDriverName(name) || !m_machine.Registry().KeyExists(key)) {
        return std::nullopt;
    }
    return Read(key, environment, name, version);
}

std::vector<std::string> Drivers::FilesOf(const Driver& driver) {
    std::vector<std::string> files;
    for (std::string Driver::*field : kFileFields) {
        if (!(driver.*field).empty()) {
            files.push_back(driver.*field);
        }
    }
    files.insert(files.end(), driver.dependentFiles.begin(), driver.dependentFiles.end());
    return files;
}

// ---- adding ---------------------------------------------------------------------------------------------------------

DWORD Drivers::Add(const Environment& environment, Driver driver, FileTransfer transfer) {
    DWORD code = Check(environment, driver);
    if (code != ERROR_SUCCESS) {
        return code;
    }
    const std::vector<Transfer> transfers = PlanTransfers(environment, driver);
    code = CheckTransfers(transfers, transfer);
    if (code == ERROR_SUCCESS) {
        code = m_environments.Prepare(environment, driver.version);
    }
    if (code == ERROR_SUCCESS) {
        code = RunTransfers(transfers, transfer);
    }
    if (code == ERROR_SUCCESS) {
        StripFolders(environment, driver);
        Write(environment, driver);
    }
    return code;
}

DWORD Drivers::Check(const Environment& environment, const Driver& driver) const {
    const bool isNt = !m_machine.Is9x();
    if (!IsDriverName(driver.name) || driver.driverFile.empty() ||
        (isNt && (driver.dataFile.empty() || driver.configFile.empty())) ||
        !Environments::Takes(environment, driver.version)) {
        return ERROR_INVALID_PARAMETER;
    }
    // A driver for another system keeps its monitor's name, and its monitor is that system's matter.
    const bool isLoadedHere =
        m_environments.IsOwn(environment) && (!isNt || driver.version == m_environments.OwnVersion());
    if (isLoadedHere && !driver.monitorName.empty() && !Monitors(m_machine).Find(driver.monitorName)) {
        return ERROR_UNKNOWN_PRINT_MONITOR;
    }
    return ERROR_SUCCESS;
}

std::vector<Drivers::Transfer> Drivers::PlanTransfers(const Environment& environment, const Driver& driver) const {
    const UINT codePage = m_machine.System().codePage;
    const std::string folder = Environments::VersionDirectory(environment, driver.version);
    std::vector<Transfer> transfers;
    std::unordered_set<std::string> seen;
    for (const std::string& file : FilesOf(driver)) {
        const std::string name(FileName(file, codePage));
        if (!seen.insert(FoldCase(codePage, name)).second) {
            continue;
        }
        // The 9x family uses the files where they lie: a full path means nothing there, and a name with a folder, as
        // colour profiles have, starts at the driver directory.
        if (!environment.hasVersionFolders) {
            const std::string place = environment.directory + "\\" + (IsFullPath(file) ? name : file);
            transfers.push_back({place, place});
            continue;
        }
        transfers.push_back({HasFolder(file) ? file : environment.directory + "\\" + name, folder + "\\" + name});
    }
    return transfers;
}

bool Drivers::IsNewer(std::string_view source, std::string_view target) const {
    const std::optional<FILETIME> sourceTime = m_machine.Files().WrittenAt(source);
    const std::optional<FILETIME> targetTime = m_machine.Files().WrittenAt(target);
    return sourceTime && targetTime && IsLater(*sourceTime, *targetTime);
}

DWORD Drivers::CheckTransfers(const std::vector<Transfer>& transfers, FileTransfer kind) const {
    const Files& files = m_machine.Files();
    for (const Transfer& transfer : transfers) {
        if (!files.Exists(transfer.source) || files.IsDirectory(transfer.source)) {
            return ERROR_FILE_NOT_FOUND;
        }
    }
    for (const Transfer& transfer : transfers) {
        const bool isRefused = (kind == FileTransfer::StrictUpgrade && !IsNewer(transfer.source, transfer.target)) ||
                               (kind == FileTransfer::StrictDowngrade && !IsNewer(transfer.target, transfer.source));
        if (isRefused && files.Exists(transfer.target)) {
            return ERROR_PRINTER_DRIVER_ALREADY_INSTALLED;
        }
    }
    return ERROR_SUCCESS;
}

DWORD Drivers::RunTransfers(const std::vector<Transfer>& transfers, FileTransfer kind) {
    Files& files = m_machine.Files();
    for (const Transfer& transfer : transfers) {
        DWORD code = ERROR_SUCCESS;
        if (kind == FileTransfer::None || IsSameName(m_machine, transfer.source, transfer.target)) {
            continue;
        }
        if (kind == FileTransfer::Move) {
            code = files.Move(transfer.source, transfer.target, true);
        } else if (kind != FileTransfer::CopyNew || !files.Exists(transfer.target) ||
                   IsNewer(transfer.source, transfer.target)) {
            code = files.Copy(transfer.source, transfer.target, false);
        }
        if (code != ERROR_SUCCESS) {
            return code;
        }
    }
    return ERROR_SUCCESS;
}

void Drivers::StripFolders(const Environment& environment, Driver& driver) const {
    const UINT codePage = m_machine.System().codePage;
    for (std::string Driver::*field : kFileFields) {
        driver.*field = std::string(FileName(driver.*field, codePage));
    }
    for (std::string& file : driver.dependentFiles) {
        if (environment.hasVersionFolders || IsFullPath(file)) {
            file = std::string(FileName(file, codePage));
        }
    }
}

void Drivers::Write(const Environment& environment, const Driver& driver) {
    Registry& registry = m_machine.Registry();
    const std::string key = KeyOf(environment, driver.name, driver.version);
    registry.SetNumber(key, "Version", driver.version);
    for (const TextField& field : kTextFields) {
        const std::string& text = driver.*field.member;
        if (field.always || !text.empty()) {
            registry.SetText(key, field.value, text);
        } else {
            registry.DeleteValue(key, field.value);
        }
    }
    registry.SetTexts(key, "Dependent Files", driver.dependentFiles);
    registry.SetTexts(key, "Previous Names", driver.previousNames);
    WriteBytes(registry, key, "DriverDate", driver.date);
    WriteBytes(registry, key, "DriverVersion", driver.driverVersion);
}

bool Drivers::Remove(const Environment& environment, std::string_view name, DWORD version) {
    return IsDriverName(name) && m_machine.Registry().DeleteKey(KeyOf(environment, name, version));
}

}  // namespace pikel::simulated
