// The road of an installation on a test machine, step by step through the table, from a sample package that fits the
// machine's system.
#pragma once

#include <string>

#include "frame/pikel.h"
#include "support/machine_test.h"
#include "support/project.h"
#include "support/pe_file.h"

namespace pikel::testing_support {

inline const PI_KEL_Interface& InterfaceTable() {
    return *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
}

inline constexpr char kPrinter[] = "Office";
inline constexpr char kPort[] = "P1";
inline constexpr char kModel[] = "Aurora Laser 500";
inline constexpr char kSdk[] = "C:\\Program Files\\pikel\\portsdk.dll";

/// What a system installs from.
struct Package {
    std::string folder;
    std::string inf;
    DWORD architecture;
    DWORD major;
    DWORD minor;
    DWORD version = PIKEL_DRIVER_VERSION_2000;  ///< DriverVersionCode
    DWORD processor = PIKEL_PROCESSOR_X86;      ///< ProcessorCode
};

inline Package PackageFor(const std::string& system) {
    if (system.starts_with("win9") || system == "winme") {
        return {"win98", "aurora98.inf", PIKEL_ARCHITECTURE_WINDOWS_9X, 4, 0, PIKEL_DRIVER_VERSION_9X};
    }
    if (system == "nt4") {
        return {"nt4", "aurora4.inf", PIKEL_ARCHITECTURE_NT4_X86, 4, 0, PIKEL_DRIVER_VERSION_NT4};
    }
    if (system.ends_with("x64")) {
        return {"xp", "aurora.inf", PIKEL_ARCHITECTURE_X64, 5, 2, PIKEL_DRIVER_VERSION_2000, PIKEL_PROCESSOR_X64};
    }
    if (system.ends_with("ia64")) {
        return {"xp", "aurora.inf", PIKEL_ARCHITECTURE_IA64, 5, 2, PIKEL_DRIVER_VERSION_2000, PIKEL_PROCESSOR_IA64};
    }
    return {"xp", "aurora.inf", PIKEL_ARCHITECTURE_NT_X86, system == "win2000" ? 5u : 6u, 0};
}

/// The road on one machine, as far as a test needs it.
class Road {
  public:
    explicit Road(const std::string& system) : m_package(PackageFor(system)), m_test(system) { InsertPackage(); }
    /// On a copy of a machine of the system.
    Road(const std::string& system, const CopyOf& machine) : m_package(PackageFor(system)), m_test(machine) {
        InsertPackage();
    }
    ~Road() {
        faults::Reset();
        m_test->Heap().StopFailing();
        FreeRecord();
        FreePrinter();
        AllowQualityKeys();
    }

    PiStatus ReadInf() {
        return InterfaceTable().PI_KEL_GetInfInfo(m_inf.c_str(), kModel, m_package.architecture, m_package.major,
                                                  m_package.minor, &m_record);
    }
    void FreeRecord() {
        if (m_record != nullptr) {
            InterfaceTable().PI_KEL_FreeMemory(m_record);
            m_record = nullptr;
        }
    }
    PiStatus ListModels() {
        LPSTR* list = nullptr;
        DWORD count = 0;
        PiStatus status = InterfaceTable().PI_KEL_GetDriverListFromInf(m_inf.c_str(), m_package.architecture,
                                                                       m_package.major, m_package.minor, &list, &count);
        if (list != nullptr) {
            InterfaceTable().PI_KEL_FreeMemory(list);
        }
        return status;
    }
    PiStatus CopyFiles() {
        auto callback = [](PVOID, UINT notification, UINT_PTR, UINT_PTR) -> UINT {
            return notification == SPFILENOTIFY_COPYERROR ? UINT{FILEOP_ABORT} : UINT{FILEOP_DOIT};
        };
        return InterfaceTable().PI_KEL_CopyInfDriverFiles(m_inf.c_str(), kModel, callback, m_package.architecture,
                                                          static_cast<INT>(m_package.major), m_package.minor, nullptr,
                                                          nullptr);
    }
    PiStatus AddDriver() { return InterfaceTable().PI_KEL_AddPrinterDriver(nullptr, nullptr, 0, 0, m_record, 0); }
    PiStatus CreatePort() {
        char created[64] = {};
        return InterfaceTable().PI_KEL_CreatePort(kSdk, kPort, 0, "queue", 0, created, sizeof created);
    }
    PiStatus AddPrinter() {
        static char printer[] = "Office", model[] = "Aurora Laser 500", processor[] = "winprint", datatype[] = "RAW";
        PrinterRecord record{};
        record.pPrinterName = printer;
        record.pPortName = m_port.data();
        record.pDriverName = model;
        record.pPrintProcessor = processor;
        record.pDatatype = datatype;
        AddPrinterOptions options{};
        if (m_record != nullptr) {
            options.ColorProfileCount = m_record->ColorProfileCount;
            options.ColorProfiles = m_record->ColorProfileList;
        }
        return InterfaceTable().PI_KEL_AddPrinter(&record, &options);
    }
    PiStatus SetDefault() { return InterfaceTable().PI_KEL_SetDefaultPrinter(kPrinter); }
    PiStatus GetDefault() {
        char name[64] = {};
        return InterfaceTable().PI_KEL_GetDefaultPrinter(name, sizeof name);
    }
    PiStatus IsDefault() { return InterfaceTable().PI_KEL_IsDefaultPrinter(kPrinter); }

    PiStatus NameOfMainFile() {
        char name[64] = {};
        DWORD size = sizeof name;
        return InterfaceTable().PI_KEL_GetDriverFileNameFromInf(m_inf.c_str(), kModel, m_package.architecture,
                                                                m_package.major, m_package.minor, 0, name, &size);
    }
    PiStatus ListFiles() {
        DriverFileRecord* records = nullptr;
        DWORD count = 0;
        const PiStatus status = InterfaceTable().PI_KEL_EnumDriverFiles(
            m_inf.c_str(), kModel, m_package.architecture, m_package.major, m_package.minor, &records, &count);
        Free(records);
        return status;
    }
    PiStatus ApplyRegistry() {
        return InterfaceTable().PI_KEL_ControlRegistory(m_inf.c_str(), kModel, m_package.architecture, m_package.major,
                                                        m_package.minor);
    }
    PiStatus CopyToLocal() {
        m_test->Files().MakeFolder("C:\\local");
        LocalFileRecord* records = nullptr;
        DWORD size = 0;
        DWORD count = 0;
        const PiStatus status = InterfaceTable().PI_KEL_CopyInfDriverFilesToLocal(
            m_inf.c_str(), kModel, "C:\\local", &size, 2, &count, &records, m_package.architecture, m_package.major,
            m_package.minor);
        Free(records);
        return status;
    }
    PiStatus Stage() {
        DWORD restart = 0;
        return InterfaceTable().PI_KEL_CopyInfDriverFilesEx(m_inf.c_str(), kModel, 2, &restart, "C:\\staging",
                                                            m_package.architecture, m_package.major, m_package.minor);
    }
    PiStatus SizeUp() {
        std::string models = kModel;
        models += std::string(2, '\0');
        DWORD total = 0;
        DWORD shared = 0;
        return InterfaceTable().PI_KEL_GetCopyDriverFilesSize(m_inf.c_str(), models.c_str(), &total, &shared, 2,
                                                              m_package.architecture, m_package.major, m_package.minor);
    }
    PiStatus CopyMonitor() {
        WriteFileOn(*m_test, "C:\\new\\mon.dll", MakePeFile("2.0"));
        WriteFileOn(*m_test, m_test->System().systemDirectory + "\\mon.dll", MakePeFile("1.0"));
        DWORD restart = 0;
        return InterfaceTable().PI_KEL_CopyMonitorFile("C:\\new", "mon.dll/", &restart);
    }
    PiStatus CopyToHardwareIdFolder() { return InterfaceTable().PI_KEL_CopyDriverFileToHWIDFolder(kModel); }
    PiStatus ReadVersion() {
        WriteFileOn(*m_test, "C:\\a.dll", MakePeFile("2.0"));
        char text[32] = {};
        return InterfaceTable().PI_KEL_GetDriverFileVersion("C:\\a.dll", text, sizeof text);
    }
    PiStatus AskWhetherLoaded() {
        InterfaceTable().PI_KEL_IsDriverFileLoaded(kModel);
        return 0;
    }

    /// Reads the printer, for WritePrinter and for the profiles that go with it.
    PiStatus ReadPrinter() { return InterfaceTable().PI_KEL_GetPrinter(kPrinter, &m_printer); }
    void FreePrinter() {
        Free(m_printer);
        m_printer = nullptr;
    }
    PiStatus WritePrinter() { return InterfaceTable().PI_KEL_SetPrinter(kPrinter, m_printer); }
    PiStatus DeletePrinter() { return DeletePrinterBy(0); }
    PiStatus DeletePrinterThroughPrintUi() { return DeletePrinterBy(1); }
    PiStatus DeletePrinterAlone() { return InterfaceTable().PI_KEL_DeletePrinterWithoutShareReg(kPrinter); }
    PiStatus Uninstall() { return UninstallBy(0); }
    PiStatus UninstallThroughPrintUi() { return UninstallBy(1); }
    PiStatus DeleteDriver() { return DeleteDriverBy(0); }
    PiStatus DeleteDriverThroughPrintUi() { return DeleteDriverBy(1); }
    PiStatus AddDriverThroughPrintUi() {
        return InterfaceTable().PI_KEL_AddPrinterDriver(InfInFolder().c_str(), kModel, m_package.version,
                                                        m_package.processor, nullptr, 1);
    }
    PiStatus InstallThroughPrintUi() {
        return InterfaceTable().PI_KEL_InstallPrinterToPrintUI(m_inf.c_str(), kPrinter, kModel, "LPT1:", "AURORA",
                                                               nullptr, 1);
    }
    PiStatus RunPrintUi() { return InterfaceTable().PI_KEL_RunPrintUI("/Xs /n\"Office\" Comment \"On the stairs\""); }
    PiStatus ReadPrintUiText() {
        char text[64];
        return InterfaceTable().PI_KEL_GetResourceStrFromPrintUI(16056, text, sizeof text);
    }
    PiStatus BrowseNetwork() {
        NetResourceRecord* nodes = nullptr;
        DWORD count = 0;
        PiStatus status = InterfaceTable().PI_KEL_EnumNetResources(nullptr, &nodes, &count);
        if (status == 0 && count != 0) {
            NetResourceRecord* below = nullptr;
            status = InterfaceTable().PI_KEL_EnumNetResources(&nodes[0], &below, &count);
            Free(below);
        }
        Free(nodes);
        return status;
    }
    PiStatus AskForRights() {
        InterfaceTable().PI_KEL_IsAdministrators();
        return 0;
    }
    PiStatus CreateShortcut() {
        return InterfaceTable().PI_KEL_CreateShortCut("Aurora", "Status.lnk", "C:\\status.exe", "C:\\");
    }

    /// Has the printer added on a port that is there.
    void UsePort(std::string port) { m_port = std::move(port); }
    const std::string& Port() const { return m_port; }

    TestMachine& Test() { return m_test; }
    const Package& From() const { return m_package; }
    const std::string& Inf() const { return m_inf; }
    /// The driver's record; null before ReadInf.
    DriverAddRecord* Record() { return m_record; }

  private:
    void InsertPackage() {
        m_test->Files().InsertMedium(SourceDir() + "/samples/" + m_package.folder);
        m_inf = "D:\\" + m_package.inf;
    }
    /// The same INF below a drive's root: a folder that ends in a backslash is none that the Print UI can read.
    std::string InfInFolder() {
        m_test->Files().InsertMedium(SourceDir() + "/samples");
        return "D:\\" + m_package.folder + "\\" + m_package.inf;
    }
    DWORD ProfileCount() const { return m_printer != nullptr ? m_printer->ColorProfileCount : 0; }
    LPSTR* Profiles() const { return m_printer != nullptr ? m_printer->ColorProfiles : nullptr; }
    PiStatus DeletePrinterBy(DWORD printUi) {
        return InterfaceTable().PI_KEL_DeletePrinter(kPrinter, ProfileCount(), Profiles(), printUi);
    }
    PiStatus UninstallBy(INT printUi) {
        return InterfaceTable().PI_KEL_UninstallPrinter(kPrinter, kModel, m_package.version, m_package.processor,
                                                        ProfileCount(), Profiles(), 1, printUi);
    }
    PiStatus DeleteDriverBy(DWORD printUi) {
        return InterfaceTable().PI_KEL_DeletePrinterDriver(m_package.version, kModel, m_package.processor, 0, nullptr,
                                                           1, printUi);
    }

    static void Free(void* block) {
        if (block != nullptr) {
            InterfaceTable().PI_KEL_FreeMemory(block);
        }
    }

    /// On Windows 95 the keys of printer profiles' qualities stay open, and nothing else may.
    void AllowQualityKeys() {
        const simulated::Handles& handles = m_test->Handles();
        if (m_test->Generation() == simulated::Generation::Windows95 &&
            handles.OpenCount() == handles.OpenCount(simulated::HandleKind::RegistryKey) &&
            m_test->Heap().OpenCount() == 0 && handles.Misuses().empty()) {
            m_test.AllowOpen();
        }
    }

    Package m_package;
    TestMachine m_test;
    std::string m_inf;
    std::string m_port = kPort;
    DriverAddRecord* m_record = nullptr;
    PrinterRecord* m_printer = nullptr;
};

}  // namespace pikel::testing_support
