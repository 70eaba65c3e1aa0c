// The records of drivers.
#include "machine/spooler/driver_records.h"

#include <cstring>

#include "machine/base/info_buffer.h"
#include "machine/base/machine.h"
#include "machine/base/text.h"

namespace pikel::simulated {

namespace {

/// Level 6 came with Windows Me and 2000.
bool HasLevel6(const Machine& machine) {
    return machine.Generation() == Generation::WindowsMe ||
           (!machine.Is9x() && machine.Generation() >= Generation::Windows2000);
}

// ---- records of the caller ------------------------------------------------------------------------------------------

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

}  // namespace

bool IsDriverAddLevel(const Machine& machine, DWORD level) {
    return level == 2 || level == 3 || (level == 6 && HasLevel6(machine));
}

bool IsDriverReadLevel(const Machine& machine, DWORD level) {
    return level == 1 || IsDriverAddLevel(machine, level);
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

}  // namespace pikel::simulated
