#include "support/spooler_test.h"

namespace pikel::testing_support {

using namespace simulated;

namespace {

LPSTR Mutable(std::optional<std::string>& text) {
    return text ? text->data() : nullptr;
}

}  // namespace

DRIVER_INFO_6A DriverText::Info() {
    dependentText = JoinMultiString(dependentFiles);
    previousText = JoinMultiString(previousNames);
    DRIVER_INFO_6A info{};
    info.cVersion = version;
    info.pName = name.data();
    info.pEnvironment = Mutable(environment);
    info.pDriverPath = Mutable(driverFile);
    info.pDataFile = Mutable(dataFile);
    info.pConfigFile = Mutable(configFile);
    info.pHelpFile = Mutable(helpFile);
    info.pDependentFiles = dependentFiles.empty() ? nullptr : dependentText.data();
    info.pMonitorName = Mutable(monitor);
    info.pDefaultDataType = Mutable(datatype);
    info.pszzPreviousNames = previousNames.empty() ? nullptr : previousText.data();
    info.ftDriverDate = date;
    info.dwlDriverVersion = driverVersion;
    info.pszMfgName = Mutable(manufacturer);
    info.pszOEMUrl = Mutable(url);
    info.pszHardwareID = Mutable(hardwareId);
    info.pszProvider = Mutable(provider);
    return info;
}

std::vector<std::string> DriverText::Files() const {
    std::vector<std::string> files = dependentFiles;
    for (const auto& file : {driverFile, dataFile, configFile, helpFile}) {
        if (file && !file->empty()) {
            files.push_back(*file);
        }
    }
    return files;
}

PRINTER_INFO_2A PrinterSettings::Info() {
    PRINTER_INFO_2A info{};
    info.pPrinterName = Mutable(name);
    info.pShareName = Mutable(share);
    info.pPortName = Mutable(port);
    info.pDriverName = Mutable(driver);
    info.pComment = Mutable(comment);
    info.pLocation = Mutable(location);
    info.pDevMode = devMode;
    info.pSepFile = Mutable(separator);
    info.pPrintProcessor = Mutable(processor);
    info.pDatatype = Mutable(datatype);
    info.pParameters = Mutable(parameters);
    info.Attributes = attributes;
    info.Priority = priority;
    info.DefaultPriority = defaultPriority;
    info.StartTime = startTime;
    info.UntilTime = untilTime;
    return info;
}

std::optional<std::string> OptionalText(LPCSTR text) {
    return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

std::vector<std::string> MultiText(LPCSTR texts) {
    return SplitMultiString(texts);
}

// ---- drivers --------------------------------------------------------------------------------------------------------

DWORD SpoolerTest::OwnVersion() {
    return Machine().Is9x() ? 0x400 : Machine().Generation() == Generation::Nt4 ? 2 : 3;
}

std::string SpoolerTest::DriverFolder(const std::string& environment) {
    std::string name = environment;
    char folder[MAX_PATH] = "";
    DWORD needed = 0;
    EXPECT_TRUE(GetPrinterDriverDirectoryA(nullptr, name.empty() ? nullptr : name.data(), 1,
                                           reinterpret_cast<LPBYTE>(folder), sizeof folder, &needed))
        << lastError;
    return folder;
}

void SpoolerTest::Stage(const std::vector<std::string>& files, const std::string& environment) {
    for (const std::string& file : files) {
        WriteFileOn(Machine(), DriverFolder(environment) + "\\" + file, "bytes of " + file);
    }
}

DWORD SpoolerTest::AddDriver(DriverText driver, DWORD level, std::optional<DWORD> flags) {
    DRIVER_INFO_6A info = driver.Info();  // levels 2 and 3 are its beginning
    const auto bytes = reinterpret_cast<LPBYTE>(&info);
    return flags ? CODE_OF(AddPrinterDriverExA(nullptr, level, bytes, *flags))
                 : CODE_OF(AddPrinterDriverA(nullptr, level, bytes));
}

void SpoolerTest::InstallDriver(DriverText driver) {
    driver.version = OwnVersion();
    Stage(driver.Files());
    ASSERT_EQ(AddDriver(std::move(driver)), 0u);
}

std::vector<std::string> SpoolerTest::DriverNames(const std::string& environment) {
    const auto answer = EnumDrivers<DRIVER_INFO_1A>(1, environment);
    EXPECT_EQ(answer.Code(), 0u);
    std::vector<std::string> names;
    for (const DRIVER_INFO_1A& info : answer.Records()) {
        names.emplace_back(info.pName);
    }
    return names;
}

// ---- printers -------------------------------------------------------------------------------------------------------

DWORD SpoolerTest::AddPrinter(PrinterSettings settings) {
    PRINTER_INFO_2A info = settings.Info();
    HANDLE handle = nullptr;
    const DWORD code = CODE_OF((handle = AddPrinterA(nullptr, 2, reinterpret_cast<LPBYTE>(&info))));
    if (handle != nullptr) {
        EXPECT_EQ(CODE_OF(ClosePrinter(handle)), 0u);
    }
    return code;
}

std::vector<std::string> SpoolerTest::PrinterNames(DWORD flags) {
    const auto answer = EnumPrinters<PRINTER_INFO_5A>(5, flags);
    EXPECT_EQ(answer.Code(), 0u);
    std::vector<std::string> names;
    for (const PRINTER_INFO_5A& info : answer.Records()) {
        names.emplace_back(info.pPrinterName);
    }
    return names;
}

PrinterHandle SpoolerTest::Open(const std::string& name, ACCESS_MASK access) {
    std::string text = name;
    PRINTER_DEFAULTSA defaults{nullptr, nullptr, access};
    PrinterHandle handle;
    EXPECT_EQ(CODE_OF(OpenPrinterA(text.data(), handle.Out(), &defaults)), 0u) << name;
    return handle;
}

PrinterHandle SpoolerTest::OpenPlainly(const std::string& name) {
    std::string text = name;
    PrinterHandle handle;
    EXPECT_EQ(CODE_OF(OpenPrinterA(text.data(), handle.Out(), nullptr)), 0u) << name;
    return handle;
}

DWORD SpoolerTest::OpenCode(const std::string& name, std::optional<ACCESS_MASK> access) {
    std::string text = name;
    PRINTER_DEFAULTSA defaults{nullptr, nullptr, access.value_or(0)};
    PrinterHandle handle;
    return CODE_OF(OpenPrinterA(text.data(), handle.Out(), access ? &defaults : nullptr));
}

std::string SpoolerTest::DefaultPrinterName() {
    char name[300] = "";
    DWORD size = sizeof name;
    return GetDefaultPrinterA(name, &size) ? name : "";
}

}  // namespace pikel::testing_support
