// The contract of the print spooler's operations, NT family: what the library relies on, over the simulated machine and
// over Wine.
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "platform/contract.h"

namespace pikel {
namespace {

using contract::WineException;

constexpr WineException kWine[] = {
    {"a driver's missing file gives 2", "registers the driver all the same"},
    {"a driver's unknown monitor gives 3000", "doesn't look at monitors"},
    {"level 6 keeps maker, hardware ID, URL, provider, version and date", "gives them back empty"},
    {"a monitor's library is in use", "has no spooler process that would load it"},
    {"a name that is taken gives 1802", "hands out a handle of the printer that is there"},
    {"an unknown driver gives 1797", "gives 87"},
    {"an unknown print processor gives 1798", "gives 87"},
    {"an unknown port gives 1796", "takes any port"},
    {"an unknown data type gives 1804", "takes any type"},
    {"a local printer has the local attribute", "has no attributes but those given"},
    {"a new printer has the usual timeouts", "has none"},
    {"the first printer becomes the default", "leaves the choice to the user"},
    {"a printer can be paused", "knows no level 0"},
    {"a plain handle can't write", "has no rights on printers"},
    {"data needs the name of a key", "writes to the printer's own key"},
    {"a driver in use can't be deleted", "deletes it"},
    {"deleting an unknown driver gives 1797", "fails without a code"},
    {"an unknown shared printer gives 1801", "fails without a code"},
};

bool Holds(std::string_view statement, bool holds) {
    const auto result = contract::Contract(kWine, statement, holds);
    EXPECT_TRUE(result);
    return result;
}

const char* OwnEnvironment() {
#ifdef _WIN32
    return sizeof(void*) == 8 ? "Windows x64" : "Windows NT x86";
#else
    return simulated::Current().Environment().data();
#endif
}

template <class Text>
LPSTR Mutable(Text& text) {
    return const_cast<LPSTR>(&text[0]);
}

std::string DriverFolder(const char* environment = nullptr) {
    char folder[MAX_PATH] = "";
    DWORD needed = 0;
    EXPECT_EQ(CODE_OF(Platform().GetPrinterDriverDirectoryA(nullptr, const_cast<LPSTR>(environment), 1,
                                                            reinterpret_cast<LPBYTE>(folder), sizeof folder, &needed)),
              0u);
    return folder;
}

std::string SystemFolder() {
    char folder[MAX_PATH] = "";
    EXPECT_NE(Platform().GetSystemDirectoryA(folder, sizeof folder), 0u);
    return folder;
}

/// An answer of the two-call kind.
class Answer {
  public:
    template <class Call>
    explicit Answer(Call call) {
        DWORD needed = 0;
        m_code = contract::CodeOf([&] { return call(nullptr, 0, &needed, &m_count); });
        if (m_code == ERROR_INSUFFICIENT_BUFFER) {
            m_bytes.resize(needed);
            m_code = contract::CodeOf([&] { return call(m_bytes.data(), needed, &needed, &m_count); });
        }
    }
    DWORD Code() const { return m_code; }
    template <class Info>
    std::vector<Info> Records() const {
        std::vector<Info> records(m_count);
        if (m_count != 0) {
            std::memcpy(records.data(), m_bytes.data(), m_count * sizeof(Info));
        }
        return records;
    }
    template <class Info>
    Info One() const {
        Info info{};
        EXPECT_GE(m_bytes.size(), sizeof info);
        if (m_bytes.size() >= sizeof info) {
            std::memcpy(&info, m_bytes.data(), sizeof info);
        }
        return info;
    }

  private:
    std::vector<BYTE> m_bytes;
    DWORD m_count = 0;
    DWORD m_code = 0;
};

Answer EnumDrivers(DWORD level) {
    return Answer([=](LPBYTE bytes, DWORD size, LPDWORD needed, LPDWORD count) {
        return Platform().EnumPrinterDriversA(nullptr, nullptr, level, bytes, size, needed, count);
    });
}
Answer EnumMonitors(DWORD level) {
    return Answer([=](LPBYTE bytes, DWORD size, LPDWORD needed, LPDWORD count) {
        return Platform().EnumMonitorsA(nullptr, level, bytes, size, needed, count);
    });
}
Answer EnumPrinters(DWORD level, DWORD flags = PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS) {
    return Answer([=](LPBYTE bytes, DWORD size, LPDWORD needed, LPDWORD count) {
        return Platform().EnumPrintersA(flags, nullptr, level, bytes, size, needed, count);
    });
}
Answer GetPrinter(HANDLE printer, DWORD level) {
    return Answer([=](LPBYTE bytes, DWORD size, LPDWORD needed, LPDWORD) {
        return Platform().GetPrinterA(printer, level, bytes, size, needed);
    });
}

bool HasMonitor(const std::string& name) {
    const Answer answer = EnumMonitors(1);
    EXPECT_EQ(answer.Code(), 0u);
    for (const MONITOR_INFO_1A& info : answer.Records<MONITOR_INFO_1A>()) {
        if (name == info.pName) {
            return true;
        }
    }
    return false;
}

/// Leaves the spooler as it was: on Wine the tests share one.
class SpoolerContract : public contract::Test {
  protected:
    ~SpoolerContract() override {
        PrinterHandle printer;
        PRINTER_DEFAULTSA defaults{nullptr, nullptr, PRINTER_ALL_ACCESS};
        for (std::string name : {"Contract Printer", "Contract Second"}) {
            if (Platform().OpenPrinterA(Mutable(name), printer.Out(), &defaults)) {
                Platform().DeletePrinter(printer.Get());
            }
        }
        printer.Reset();
        std::string driver = "Contract Driver";
        std::string monitor = "Contract Monitor";
        Platform().DeletePrinterDriverA(nullptr, nullptr, Mutable(driver));
        Platform().DeleteMonitorA(nullptr, nullptr, Mutable(monitor));
    }

    static DRIVER_INFO_6A Driver() {
        static std::string dependentFiles = std::string("condep1.dll\0condep2.dll\0", 24);
        DRIVER_INFO_6A info{};
        info.cVersion = 3;
        info.pName = const_cast<LPSTR>("Contract Driver");
        info.pEnvironment = const_cast<LPSTR>(OwnEnvironment());
        info.pDriverPath = const_cast<LPSTR>("condrv.dll");
        info.pDataFile = const_cast<LPSTR>("condata.gpd");
        info.pConfigFile = const_cast<LPSTR>("conui.dll");
        info.pHelpFile = const_cast<LPSTR>("conhelp.hlp");
        info.pDependentFiles = Mutable(dependentFiles);
        info.pDefaultDataType = const_cast<LPSTR>("RAW");
        info.ftDriverDate.dwHighDateTime = 0x01c1f000;
        info.dwlDriverVersion = 0x0005000100020003;
        info.pszMfgName = const_cast<LPSTR>("Contract Maker");
        info.pszOEMUrl = const_cast<LPSTR>("http://contract.example");
        info.pszHardwareID = const_cast<LPSTR>("CONTRACT\\Printer");
        info.pszProvider = const_cast<LPSTR>("Contract Provider");
        return info;
    }
    static void StageFiles() {
        for (const char* file :
             {"condrv.dll", "condata.gpd", "conui.dll", "conhelp.hlp", "condep1.dll", "condep2.dll"}) {
            contract::WriteFile(DriverFolder() + "\\" + file, file);
        }
    }
    static DWORD AddDriver(DRIVER_INFO_6A info, DWORD level = 6, DWORD flags = APD_COPY_NEW_FILES) {
        LookedUp<looked_up::AddPrinterDriverExA> add("winspool.drv", "AddPrinterDriverExA");
        EXPECT_TRUE(static_cast<bool>(add));
        return add ? CODE_OF(add.Call()(nullptr, level, reinterpret_cast<PBYTE>(&info), flags)) : add.Status();
    }
    static void InstallDriver() {
        StageFiles();
        ASSERT_EQ(AddDriver(Driver()), 0u);
    }
    static PRINTER_INFO_2A Printer(const char* name = "Contract Printer") {
        PRINTER_INFO_2A info{};
        info.pPrinterName = const_cast<LPSTR>(name);
        info.pPortName = const_cast<LPSTR>("LPT1:");
        info.pDriverName = const_cast<LPSTR>("Contract Driver");
        info.pPrintProcessor = const_cast<LPSTR>("winprint");
        info.pDatatype = const_cast<LPSTR>("RAW");
        info.pComment = const_cast<LPSTR>("made by a test");
        info.Priority = 1;
        return info;
    }
    /// Adds a printer; with failure the code.
    static DWORD AddPrinter(PRINTER_INFO_2A info, PrinterHandle* handle = nullptr) {
        PrinterHandle added;
        const DWORD code =
            CODE_OF((added = PrinterHandle(Platform().AddPrinterA(nullptr, 2, reinterpret_cast<LPBYTE>(&info)))));
        if (handle != nullptr) {
            *handle = std::move(added);
        }
        return code;
    }
    static DWORD Open(std::string name, PrinterHandle* handle = nullptr) {
        PrinterHandle opened;
        const DWORD code = CODE_OF(Platform().OpenPrinterA(Mutable(name), opened.Out(), nullptr));
        if (handle != nullptr) {
            *handle = std::move(opened);
        }
        return code;
    }
    static std::optional<std::string> DefaultPrinter(DWORD* code = nullptr) {
        LookedUp<looked_up::GetDefaultPrinterA> get("winspool.drv", "GetDefaultPrinterA");
        char name[300] = "";
        DWORD size = sizeof name;
        const DWORD result = CODE_OF(get.Call()(name, &size));
        if (code != nullptr) {
            *code = result;
        }
        return result == 0 ? std::optional<std::string>(name) : std::nullopt;
    }
};

// ---- drivers --------------------------------------------------------------------------------------------------------

TEST_P(SpoolerContract, DriverDirectoryIsThatOfTheEnvironment) {
    EXPECT_EQ(DriverFolder(), DriverFolder(OwnEnvironment()));
    EXPECT_NE(DriverFolder("Windows 4.0"), DriverFolder());
    char folder[MAX_PATH];
    const auto bytes = reinterpret_cast<LPBYTE>(folder);
    std::string unknown = "Windows 5.0";
    DWORD needed = 0;
    EXPECT_EQ(CODE_OF(Platform().GetPrinterDriverDirectoryA(nullptr, Mutable(unknown), 1, bytes, MAX_PATH, &needed)),
              DWORD{ERROR_INVALID_ENVIRONMENT});
    EXPECT_EQ(CODE_OF(Platform().GetPrinterDriverDirectoryA(nullptr, nullptr, 2, bytes, MAX_PATH, &needed)),
              DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(CODE_OF(Platform().GetPrinterDriverDirectoryA(nullptr, nullptr, 1, nullptr, 0, &needed)),
              DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(needed, DriverFolder().size() + 1);
}

TEST_P(SpoolerContract, DriversFilesAreCopiedToTheVersionFolder) {
    InstallDriver();
    for (const char* file : {"condrv.dll", "condata.gpd", "conui.dll", "conhelp.hlp", "condep1.dll", "condep2.dll"}) {
        EXPECT_TRUE(contract::FileExists(DriverFolder() + "\\" + file)) << file;
        EXPECT_TRUE(contract::FileExists(DriverFolder() + "\\3\\" + file)) << file;
    }
}

TEST_P(SpoolerContract, DriverIsListedWithFullPaths) {
    InstallDriver();
    const Answer answer = EnumDrivers(3);
    ASSERT_EQ(answer.Code(), 0u);
    bool found = false;
    for (const DRIVER_INFO_3A& info : answer.Records<DRIVER_INFO_3A>()) {
        if (std::string_view(info.pName) == "Contract Driver") {
            found = true;
            EXPECT_EQ(info.cVersion, 3u);
            EXPECT_STREQ(info.pEnvironment, OwnEnvironment());
            EXPECT_EQ(info.pDriverPath, DriverFolder() + "\\3\\condrv.dll");
            EXPECT_EQ(info.pConfigFile, DriverFolder() + "\\3\\conui.dll");
            EXPECT_EQ(info.pHelpFile, DriverFolder() + "\\3\\conhelp.hlp");
            const std::string first = info.pDependentFiles;
            EXPECT_EQ(first, DriverFolder() + "\\3\\condep1.dll");
            EXPECT_EQ(info.pDependentFiles + first.size() + 1, DriverFolder() + "\\3\\condep2.dll");
            EXPECT_STREQ(info.pDefaultDataType, "RAW");
        }
    }
    EXPECT_TRUE(found);
}

TEST_P(SpoolerContract, DriverOfAPrinterIsReadAtLevel6) {
    InstallDriver();
    PrinterHandle printer;
    ASSERT_EQ(AddPrinter(Printer(), &printer), 0u);
    const Answer answer([&](LPBYTE bytes, DWORD size, LPDWORD needed, LPDWORD) {
        return Platform().GetPrinterDriverA(printer.Get(), nullptr, 6, bytes, size, needed);
    });
    ASSERT_EQ(answer.Code(), 0u);
    const auto info = answer.One<DRIVER_INFO_6A>();
    EXPECT_STREQ(info.pName, "Contract Driver");
    auto is = [](LPCSTR text, std::string_view expected) { return text != nullptr && expected == text; };
    Holds("level 6 keeps maker, hardware ID, URL, provider, version and date",
          is(info.pszMfgName, "Contract Maker") && is(info.pszHardwareID, "CONTRACT\\Printer") &&
              is(info.pszOEMUrl, "http://contract.example") && is(info.pszProvider, "Contract Provider") &&
              info.dwlDriverVersion == 0x0005000100020003 && info.ftDriverDate.dwHighDateTime == 0x01c1f000);
    std::string other = "Windows 4.0";
    DWORD needed = 0;
    EXPECT_EQ(CODE_OF(Platform().GetPrinterDriverA(printer.Get(), Mutable(other), 3, nullptr, 0, &needed)),
              DWORD{ERROR_UNKNOWN_PRINTER_DRIVER});
}

TEST_P(SpoolerContract, AddingADriverTellsWhatIsWrong) {
    StageFiles();
    DRIVER_INFO_6A info = Driver();
    info.pEnvironment = const_cast<LPSTR>("Windows 5.0");
    EXPECT_EQ(AddDriver(info), DWORD{ERROR_INVALID_ENVIRONMENT});
    for (DWORD level : {0u, 1u, 5u, 7u}) {
        EXPECT_EQ(AddDriver(Driver(), level), DWORD{ERROR_INVALID_LEVEL});
    }
    LookedUp<looked_up::AddPrinterDriverExA> add("winspool.drv", "AddPrinterDriverExA");
    EXPECT_EQ(CODE_OF(add.Call()(nullptr, 6, nullptr, APD_COPY_NEW_FILES)), DWORD{ERROR_INVALID_PARAMETER});
    info = Driver();
    info.pHelpFile = const_cast<LPSTR>("missing.hlp");
    Holds("a driver's missing file gives 2", AddDriver(info) == ERROR_FILE_NOT_FOUND);
    info = Driver();
    info.pMonitorName = const_cast<LPSTR>("No Such Monitor");
    Holds("a driver's unknown monitor gives 3000", AddDriver(info) == ERROR_UNKNOWN_PRINT_MONITOR);
}

TEST_P(SpoolerContract, DriverGoesWhenNoPrinterUsesIt) {
    InstallDriver();
    ASSERT_EQ(AddPrinter(Printer()), 0u);
    std::string name = "Contract Driver";
    const DWORD code = CODE_OF(Platform().DeletePrinterDriverA(nullptr, nullptr, Mutable(name)));
    Holds("a driver in use can't be deleted", code == ERROR_PRINTER_DRIVER_IN_USE);
    name = "Unknown Driver";
    Holds("deleting an unknown driver gives 1797",
          CODE_OF(Platform().DeletePrinterDriverA(nullptr, nullptr, Mutable(name))) == ERROR_UNKNOWN_PRINTER_DRIVER);
}

// ---- monitors and ports ---------------------------------------------------------------------------------------------

TEST_P(SpoolerContract, MonitorIsThereOnceItWasAdded) {
    const std::string library = SystemFolder() + "\\localspl.dll";
    if (!contract::FileExists(library)) {
        contract::WriteFile(library, "a library");
    }
    auto add = [](const char* name, const char* environment, const char* file, DWORD level = 2) {
        MONITOR_INFO_2A info{const_cast<LPSTR>(name), const_cast<LPSTR>(environment), const_cast<LPSTR>(file)};
        return CODE_OF(Platform().AddMonitorA(nullptr, level, reinterpret_cast<LPBYTE>(&info)));
    };
    EXPECT_EQ(add("Contract Monitor", OwnEnvironment(), "nosuch.dll"), DWORD{ERROR_MOD_NOT_FOUND});
    EXPECT_EQ(add("", OwnEnvironment(), "localspl.dll"), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(add("Contract Monitor", OwnEnvironment(), ""), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(add("Contract Monitor", "Windows 5.0", "localspl.dll"), DWORD{ERROR_INVALID_ENVIRONMENT});
    EXPECT_EQ(add("Contract Monitor", OwnEnvironment(), "localspl.dll", 1), DWORD{ERROR_INVALID_LEVEL});
    EXPECT_FALSE(HasMonitor("Contract Monitor"));
    ASSERT_EQ(add("Contract Monitor", OwnEnvironment(), "localspl.dll"), 0u);
    EXPECT_TRUE(HasMonitor("Contract Monitor"));
    EXPECT_EQ(add("CONTRACT monitor", OwnEnvironment(), "localspl.dll"), DWORD{ERROR_PRINT_MONITOR_ALREADY_INSTALLED});

    FileHandle file(Platform().CreateFileA(library.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                           FILE_ATTRIBUTE_NORMAL, nullptr));
    Holds("a monitor's library is in use", !file && Platform().GetLastError() == ERROR_SHARING_VIOLATION);

    std::string name = "contract MONITOR";
    EXPECT_EQ(CODE_OF(Platform().DeleteMonitorA(nullptr, nullptr, Mutable(name))), 0u);
    EXPECT_FALSE(HasMonitor("Contract Monitor"));
    EXPECT_EQ(CODE_OF(Platform().DeleteMonitorA(nullptr, nullptr, Mutable(name))), DWORD{ERROR_UNKNOWN_PRINT_MONITOR});
}

TEST_P(SpoolerContract, EnumerationsTellTheirLevels) {
    DWORD needed = 0;
    DWORD count = 0;
    EXPECT_EQ(CODE_OF(Platform().EnumMonitorsA(nullptr, 3, nullptr, 0, &needed, &count)), DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(CODE_OF(Platform().EnumPortsA(nullptr, 3, nullptr, 0, &needed, &count)), DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(CODE_OF(Platform().EnumPrinterDriversA(nullptr, nullptr, 0, nullptr, 0, &needed, &count)),
              DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(CODE_OF(Platform().EnumPrintersA(PRINTER_ENUM_LOCAL, nullptr, 3, nullptr, 0, &needed, &count)),
              DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(CODE_OF(Platform().EnumPrintersA(0, nullptr, 2, nullptr, 0, &needed, &count)),
              DWORD{ERROR_INVALID_FLAGS});
}

TEST_P(SpoolerContract, LocalPortsAreThere) {
    const Answer answer([](LPBYTE bytes, DWORD size, LPDWORD needed, LPDWORD count) {
        return Platform().EnumPortsA(nullptr, 2, bytes, size, needed, count);
    });
    ASSERT_EQ(answer.Code(), 0u);
    int known = 0;
    for (const PORT_INFO_2A& info : answer.Records<PORT_INFO_2A>()) {
        known += std::string_view(info.pPortName) == "LPT1:" || std::string_view(info.pPortName) == "FILE:";
    }
    EXPECT_EQ(known, 2);
}

// ---- printers -------------------------------------------------------------------------------------------------------

TEST_P(SpoolerContract, PrinterIsWhatItWasMade) {
    InstallDriver();
    ASSERT_EQ(AddPrinter(Printer()), 0u);
    PrinterHandle printer;
    ASSERT_EQ(Open("CONTRACT printer", &printer), 0u);
    const Answer level2 = GetPrinter(printer.Get(), 2);
    const auto info = level2.One<PRINTER_INFO_2A>();
    EXPECT_EQ(info.pServerName, nullptr);
    EXPECT_STREQ(info.pPrinterName, "Contract Printer");
    EXPECT_STREQ(info.pPortName, "LPT1:");
    EXPECT_STREQ(info.pDriverName, "Contract Driver");
    EXPECT_STREQ(info.pComment, "made by a test");
    EXPECT_STREQ(info.pDatatype, "RAW");
    ASSERT_NE(info.pDevMode, nullptr);
    EXPECT_GE(info.pDevMode->dmSize, 148);
    Holds("a local printer has the local attribute", (info.Attributes & PRINTER_ATTRIBUTE_LOCAL) != 0);
    const Answer level5 = GetPrinter(printer.Get(), 5);
    const auto timeouts = level5.One<PRINTER_INFO_5A>();
    EXPECT_STREQ(timeouts.pPrinterName, "Contract Printer");
    Holds("a new printer has the usual timeouts",
          timeouts.DeviceNotSelectedTimeout == 15000 && timeouts.TransmissionRetryTimeout == 45000);
    const Answer level4 = GetPrinter(printer.Get(), 4);
    EXPECT_STREQ(level4.One<PRINTER_INFO_4A>().pPrinterName, "Contract Printer");
    const Answer all = EnumPrinters(2);
    ASSERT_EQ(all.Code(), 0u);
    int found = 0;
    for (const PRINTER_INFO_2A& one : all.Records<PRINTER_INFO_2A>()) {
        found += std::string_view(one.pPrinterName) == "Contract Printer";
    }
    EXPECT_EQ(found, 1);
}

TEST_P(SpoolerContract, AddingAPrinterTellsWhatIsWrong) {
    InstallDriver();
    PRINTER_INFO_2A info = Printer();
    info.pPrinterName = nullptr;
    EXPECT_EQ(AddPrinter(info), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(CODE_OF(Platform().AddPrinterA(nullptr, 2, nullptr)), DWORD{ERROR_INVALID_PARAMETER});
    info = Printer();
    EXPECT_EQ(CODE_OF(Platform().AddPrinterA(nullptr, 1, reinterpret_cast<LPBYTE>(&info))), DWORD{ERROR_INVALID_LEVEL});
    info.pDriverName = const_cast<LPSTR>("Unknown Driver");
    Holds("an unknown driver gives 1797", AddPrinter(info) == ERROR_UNKNOWN_PRINTER_DRIVER);
    info = Printer();
    info.pPrintProcessor = const_cast<LPSTR>("unknown");
    Holds("an unknown print processor gives 1798", AddPrinter(info) == ERROR_UNKNOWN_PRINTPROCESSOR);
    info = Printer("Contract Second");
    info.pPortName = const_cast<LPSTR>("NOSUCH9:");
    Holds("an unknown port gives 1796", AddPrinter(info) == ERROR_UNKNOWN_PORT);
    info = Printer("Contract Second");
    info.pDatatype = const_cast<LPSTR>("COOKED");
    Holds("an unknown data type gives 1804", AddPrinter(info) == ERROR_INVALID_DATATYPE);
    ASSERT_EQ(AddPrinter(Printer()), 0u);
    Holds("a name that is taken gives 1802", AddPrinter(Printer()) == ERROR_PRINTER_ALREADY_EXISTS);
}

TEST_P(SpoolerContract, HandlesAreChecked) {
    EXPECT_EQ(CODE_OF(Platform().ClosePrinter(reinterpret_cast<HANDLE>(0x7777))), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(CODE_OF(Platform().ClosePrinter(nullptr)), DWORD{ERROR_INVALID_HANDLE});
    DWORD needed = 0;
    EXPECT_EQ(CODE_OF(Platform().GetPrinterA(nullptr, 2, nullptr, 0, &needed)), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(Open("No Such Printer"), DWORD{ERROR_INVALID_PRINTER_NAME});
    EXPECT_EQ(Open(""), DWORD{ERROR_INVALID_PARAMETER});
    std::string name = "No Such Printer";
    HANDLE handle = reinterpret_cast<HANDLE>(0x55);
    EXPECT_FALSE(Platform().OpenPrinterA(Mutable(name), &handle, nullptr));
    EXPECT_EQ(handle, nullptr);
#ifndef _WIN32
    Machine().AllowOpen();  // the wrong closes above were meant
#endif
}

TEST_P(SpoolerContract, PrinterTakesChangesAndCommands) {
    InstallDriver();
    PrinterHandle printer;
    ASSERT_EQ(AddPrinter(Printer(), &printer), 0u);
    PRINTER_INFO_2A info = Printer();
    info.pComment = const_cast<LPSTR>("changed");
    ASSERT_EQ(CODE_OF(Platform().SetPrinterA(printer.Get(), 2, reinterpret_cast<LPBYTE>(&info), 0)), 0u);
    const Answer after = GetPrinter(printer.Get(), 2);
    EXPECT_STREQ(after.One<PRINTER_INFO_2A>().pComment, "changed");
    Holds("a printer can be paused",
          CODE_OF(Platform().SetPrinterA(printer.Get(), 0, nullptr, PRINTER_CONTROL_PAUSE)) == 0);
    PrinterHandle plain;
    ASSERT_EQ(Open("Contract Printer", &plain), 0u);
    Holds("a plain handle can't write",
          CODE_OF(Platform().SetPrinterA(plain.Get(), 2, reinterpret_cast<LPBYTE>(&info), 0)) == ERROR_ACCESS_DENIED);
}

TEST_P(SpoolerContract, PrinterGoesWhenItIsDeleted) {
    InstallDriver();
    PrinterHandle printer;
    ASSERT_EQ(AddPrinter(Printer(), &printer), 0u);
    EXPECT_EQ(CODE_OF(Platform().DeletePrinter(printer.Get())), 0u);
    EXPECT_EQ(CODE_OF(Platform().ClosePrinter(printer.Release())), 0u);
    EXPECT_EQ(Open("Contract Printer"), DWORD{ERROR_INVALID_PRINTER_NAME});
}

// ---- printer data ---------------------------------------------------------------------------------------------------

/// The bytes of a value below a printer's key.
std::string StoredValue(const std::string& key, const char* value) {
    const std::string path = "SYSTEM\\CurrentControlSet\\Control\\Print\\Printers\\Contract Printer\\" + key;
    RegistryKey opened;
    EXPECT_EQ(Platform().RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, opened.Out()), 0) << path;
    BYTE bytes[256];
    DWORD size = sizeof bytes;
    const LSTATUS code = Platform().RegQueryValueExA(opened.Get(), value, nullptr, nullptr, bytes, &size);
    return code == 0 ? std::string(bytes, bytes + size) : "code " + std::to_string(code);
}

TEST_P(SpoolerContract, PrinterDataLieBelowThePrintersKey) {
    InstallDriver();
    PrinterHandle printer;
    ASSERT_EQ(AddPrinter(Printer(), &printer), 0u);
    std::string value = "Model";
    std::string data = std::string("500\0", 4);
    const auto bytes = reinterpret_cast<LPBYTE>(Mutable(data));
    EXPECT_EQ(Platform().SetPrinterDataA(printer.Get(), Mutable(value), REG_SZ, bytes, 4), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(StoredValue("PrinterDriverData", "Model"), data);
    LookedUp<looked_up::SetPrinterDataExA> set("winspool.drv", "SetPrinterDataExA");
    EXPECT_EQ(set.Call()(printer.Get(), "PnPData", "HardwareID", REG_SZ, bytes, 4), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(StoredValue("PnPData", "HardwareID"), data);
    EXPECT_EQ(set.Call()(nullptr, "PnPData", "HardwareID", REG_SZ, bytes, 4), DWORD{ERROR_INVALID_HANDLE});
    Holds("data needs the name of a key",
          set.Call()(printer.Get(), "", "Value", REG_SZ, bytes, 4) == ERROR_INVALID_PARAMETER);

    DWORD type = 0;
    DWORD needed = 0;
    BYTE read[16];
    EXPECT_EQ(Platform().GetPrinterDataA(printer.Get(), Mutable(value), &type, nullptr, 0, &needed),
              DWORD{ERROR_MORE_DATA});
    EXPECT_EQ(Platform().GetPrinterDataA(printer.Get(), Mutable(value), &type, read, sizeof read, &needed),
              DWORD{ERROR_SUCCESS});
    EXPECT_EQ(type, DWORD{REG_SZ});
    value = "Missing";
    EXPECT_EQ(Platform().GetPrinterDataA(printer.Get(), Mutable(value), &type, read, sizeof read, &needed),
              DWORD{ERROR_FILE_NOT_FOUND});
}

// ---- default printer and connections --------------------------------------------------------------------------------

TEST_P(SpoolerContract, DefaultPrinterIsRead) {
    DWORD code = 0;
    ASSERT_FALSE(DefaultPrinter(&code)) << "the tests want a spooler without printers";
    EXPECT_EQ(code, DWORD{ERROR_FILE_NOT_FOUND});
    InstallDriver();
    ASSERT_EQ(AddPrinter(Printer()), 0u);
    Holds("the first printer becomes the default", DefaultPrinter() == "Contract Printer");
    LookedUp<looked_up::SetDefaultPrinterA> set("winspool.drv", "SetDefaultPrinterA");
    EXPECT_EQ(CODE_OF(set.Call()("No Such Printer")), DWORD{ERROR_INVALID_PRINTER_NAME});
    ASSERT_EQ(CODE_OF(set.Call()("Contract Printer")), 0u);
    EXPECT_EQ(DefaultPrinter(), "Contract Printer");
    LookedUp<looked_up::GetDefaultPrinterA> get("winspool.drv", "GetDefaultPrinterA");
    char name[8];
    DWORD size = sizeof name;
    EXPECT_EQ(CODE_OF(get.Call()(name, &size)), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(size, sizeof "Contract Printer");
    char device[300] = "";
    EXPECT_NE(Platform().GetProfileStringA("windows", "device", "", device, sizeof device), 0u);
    EXPECT_EQ(std::string(device).substr(0, 17), "Contract Printer,");
    EXPECT_TRUE(Platform().WriteProfileStringA("windows", "device", nullptr));
}

TEST_P(SpoolerContract, UnknownSharedPrinterIsTold) {
    std::string name = "\\\\nosuchserver\\printer";
    Holds("an unknown shared printer gives 1801",
          CODE_OF(Platform().AddPrinterConnectionA(Mutable(name))) == ERROR_INVALID_PRINTER_NAME);
}

INSTANTIATE_CONTRACT(SpoolerContract, "win2000", "xp", "xp-x64", "vista", "vista-x64");

}  // namespace
}  // namespace pikel
