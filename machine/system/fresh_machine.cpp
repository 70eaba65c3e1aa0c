// A machine as its system's installation leaves it: the folders, files and registry keys that printing, its
// installation and the services touch, each where that family of Windows keeps it.
#include "machine/system/fresh_machine.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "machine/base/text.h"
#include "machine/files/disk.h"
#include "machine/registry/registry.h"

namespace pikel::simulated {

namespace {

constexpr const char* kPrint = "HKLM\\SYSTEM\\CurrentControlSet\\Control\\Print\\";
constexpr const char* kServices = "HKLM\\SYSTEM\\CurrentControlSet\\Services\\";
constexpr const char* kWindows = "HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
constexpr const char* kWindowsNt = "HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";

/// A printing environment: where its drivers lie below spool\drivers, and the driver versions that it has had.
struct Environment {
    const char* name;
    const char* folder;
    std::vector<DWORD> versions;
};

struct StockMonitor {
    const char* name;
    const char* library;
};

/// A library with nothing in it, as far as a loader looks before it maps sections: DOS header, signature, file header.
std::string EmptyLibrary(DWORD processorType) {
    constexpr std::size_t headerStart = 0x40;
    std::string image(headerStart + 24, '\0');
    auto put = [&](std::size_t at, DWORD number, std::size_t size) {
        for (std::size_t i = 0; i < size; ++i) {
            image[at + i] = static_cast<char>(number >> (8 * i) & 0xff);
        }
    };
    WORD machine = processorType == 8664 ? 0x8664 : processorType == 2200 ? 0x0200 : 0x014c;
    image.replace(0, 2, "MZ");
    put(0x3c, headerStart, 4);
    image.replace(headerStart, 2, "PE");
    put(headerStart + 4, machine, 2);
    put(headerStart + 22, 0x2002, 2);  // executable image, DLL
    return image;
}

class FreshMachine {
  public:
    FreshMachine(Disk& disk, Registry& registry, const SystemDescription& system)
        : m_disk(disk),
          m_system(system),
          m_generation(GenerationOf(system)),
          m_is9x(system.platform == VER_PLATFORM_WIN32_WINDOWS),
          m_registry(registry) {}

    void Fill() {
        MakeCommonFolders();
        MakeShellFolders();
        DescribeSystem();
        if (m_is9x) {
            MakePrinting9x();
        } else {
            MakePrintingNt();
            MakeServices();
        }
        MakeColour();
        WriteWinIni();
        PutFile("C:\\Program Files\\pikel\\pikel.dll", EmptyLibrary(m_system.processorType));
    }

  private:
    // ---- places ----

    /// A path on the disk, from one of Windows.
    std::string OnDisk(std::string_view path) const {
        std::string place = {'/', static_cast<char>(path[0] & ~0x20), '/'};
        place += ToUtf8(m_system.codePage, path.substr(3));
        std::ranges::replace(place, '\\', '/');
        return place;
    }
    /// A folder and those on the way to it. Nothing fails on a fresh disk but the memory.
    void MakeFolder(const std::string& path) { MakeFolderAt(OnDisk(path)); }
    void MakeFolderAt(const std::string& place) {
        if (!place.empty() && m_disk.Look(place, nullptr) != ERROR_SUCCESS) {
            MakeFolderAt(place.substr(0, place.rfind('/')));
            m_disk.MakeFolder(place);
        }
    }
    void PutFile(const std::string& path, std::string_view bytes) {
        const std::string place = OnDisk(path);
        MakeFolderAt(place.substr(0, place.rfind('/')));
        m_disk.Replace(place, bytes, nullptr);
    }
    std::string InWindows(std::string_view rest) const { return m_system.windowsDirectory + "\\" + std::string(rest); }
    std::string InSystem(std::string_view rest) const { return m_system.systemDirectory + "\\" + std::string(rest); }
    void PutLibrary(std::string_view name) { PutFile(InSystem(name), EmptyLibrary(m_system.processorType)); }

    void MakeCommonFolders() {
        MakeFolder(m_system.windowsDirectory);
        MakeFolder(m_system.systemDirectory);
        // The 9x family writes these in capitals.
        for (const char* name : m_is9x ? std::array{"INF", "TEMP", "FONTS"} : std::array{"inf", "Temp", "Fonts"}) {
            MakeFolder(InWindows(name));
        }
        if (!m_is9x) {
            MakeFolder(InWindows("system"));
            MakeFolder(InSystem("drivers"));
            MakeFolder(InSystem("config"));
        }
        if (m_generation == Generation::Vista) {
            MakeFolder(InSystem("DriverStore\\FileRepository"));
        }
    }

    void MakeShellFolders() {
        std::string user;
        std::string everybody;
        if (m_is9x) {
            user = everybody = m_system.windowsDirectory;
        } else if (m_generation == Generation::Nt4 || m_generation == Generation::Nt3) {
            user = InWindows("Profiles\\Administrator");
            everybody = InWindows("Profiles\\All Users");
        } else if (m_generation == Generation::Vista) {
            user = "C:\\Users\\Administrator\\AppData\\Roaming\\Microsoft\\Windows";
            everybody = "C:\\ProgramData\\Microsoft\\Windows";
        } else {
            user = "C:\\Documents and Settings\\Administrator";
            everybody = "C:\\Documents and Settings\\All Users";
        }
        const std::string key = "\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
        SetFolder("HKCU" + key, "Start Menu", user + "\\Start Menu");
        SetFolder("HKCU" + key, "Programs", user + "\\Start Menu\\Programs");
        if (!m_is9x) {
            SetFolder("HKLM" + key, "Common Start Menu", everybody + "\\Start Menu");
            SetFolder("HKLM" + key, "Common Programs", everybody + "\\Start Menu\\Programs");
        }
    }
    void SetFolder(const std::string& key, std::string_view name, const std::string& path) {
        MakeFolder(path);
        m_registry.SetText(key, name, path);
    }

    // ---- the system ----

    void DescribeSystem() {
        m_registry.SetText(kWindows, "ProgramFilesDir", "C:\\Program Files");
        m_registry.SetText(kWindows, "DevicePath", InWindows(m_is9x ? "INF" : "inf"));
        std::string version = std::to_string(m_system.major) + "." + std::to_string(m_system.minor);
        std::string build = std::to_string(m_system.build & 0xffff);
        m_registry.SetText("HKLM\\SYSTEM\\CurrentControlSet\\Control\\ComputerName\\ComputerName", "ComputerName",
                           m_system.computerName);
        if (m_is9x) {
            m_registry.SetText(kWindows, "SystemRoot", m_system.windowsDirectory);
            m_registry.SetText(kWindows, "VersionNumber", version + "." + build);
            m_registry.CreateKey(std::string(kWindows) + "\\Network\\LanMan");
            return;
        }
        m_registry.SetText(kWindowsNt, "SystemRoot", m_system.windowsDirectory);
        m_registry.SetText(kWindowsNt, "CurrentVersion", version);
        m_registry.SetText(kWindowsNt, "CurrentBuildNumber", build);
        m_registry.SetText(kWindowsNt, "CSDVersion", m_system.servicePack);
    }

    // ---- printing ----

    void MakePrinting9x() {
        const std::string print = kPrint;
        const std::string environment = print + "Environments\\Windows 4.0\\";
        m_registry.CreateKey(environment + "Drivers");
        SetLibrary(environment + "Print Processors\\WinPrint", "WINPRINT.DLL");
        // The 9x family's folders for drivers and for print processors are one: the system folder.
        m_registry.SetText(print + "Environments\\Windows 4.0", "Directory", "");
        for (const StockMonitor& monitor : StockMonitors()) {
            SetLibrary(print + "Monitors\\" + monitor.name, monitor.library);
        }
        m_registry.CreateKey(print + "Printers");
        m_registry.CreateKey(print + "Providers");
        MakeFolder(InWindows("SPOOL\\PRINTERS"));
        m_registry.SetText(print + "Printers", "DefaultSpoolDirectory", InWindows("SPOOL\\PRINTERS"));
    }

    void MakePrintingNt() {
        const std::string print = kPrint;
        for (const Environment& environment : Environments()) {
            MakeEnvironment(environment);
        }
        for (const StockMonitor& monitor : StockMonitors()) {
            SetLibrary(print + "Monitors\\" + monitor.name, monitor.library);
        }
        m_registry.CreateKey(print + "Providers");
        MakeFolder(InSystem("spool\\PRINTERS"));
        m_registry.SetText(print + "Printers", "DefaultSpoolDirectory", InSystem("spool\\PRINTERS"));
        MakePorts(std::string(kWindowsNt) + "\\Ports");
        const std::string user = "HKCU\\Software\\Microsoft\\Windows NT\\CurrentVersion\\";
        m_registry.CreateKey(user + "Devices");
        m_registry.CreateKey(user + "PrinterPorts");
        m_registry.SetText(user + "Windows", "Programs", "com exe bat pif cmd");
    }

    void MakePorts(const std::string& key) {
        for (const char* name : {"COM1:", "COM2:", "COM3:", "COM4:"}) {
            m_registry.SetText(key, name, "9600,n,8,1");
        }
        for (const char* name : {"LPT1:", "LPT2:", "LPT3:", "FILE:"}) {
            m_registry.SetText(key, name, "");
        }
    }

    void MakeEnvironment(const Environment& environment) {
        const std::string key = std::string(kPrint) + "Environments\\" + environment.name;
        const std::string drivers = InSystem("spool\\drivers\\") + environment.folder;
        m_registry.SetText(key, "Directory", environment.folder);
        m_registry.CreateKey(key + "\\Drivers");
        MakeFolder(drivers);
        for (DWORD version : environment.versions) {
            const std::string name = std::to_string(version);
            const std::string versionKey = key + "\\Drivers\\Version-" + name;
            m_registry.SetText(versionKey, "Directory", name);
            m_registry.SetNumber(versionKey, "MajorVersion", version);
            m_registry.SetNumber(versionKey, "MinorVersion", 0);
            MakeFolder(drivers + "\\" + name);
        }
        m_registry.CreateKey(key + "\\Print Processors");
        if (environment.name == EnvironmentOf(m_system)) {
            const char* library = m_generation == Generation::Vista ? "winprint.dll" : "localspl.dll";
            const std::string processors = InSystem("spool\\prtprocs\\") + environment.folder;
            m_registry.SetText(key + "\\Print Processors\\winprint", "Driver", library);
            PutFile(processors + "\\" + library, EmptyLibrary(m_system.processorType));
        }
    }

    /// A driver or monitor entry of the registry, and its file in the system folder.
    void SetLibrary(const std::string& key, std::string_view library) {
        m_registry.SetText(key, "Driver", library);
        PutLibrary(library);
    }

    std::vector<Environment> Environments() const {
        const Environment windows4 = {"Windows 4.0", "WIN40", {0}};
        const Environment ia64 = {"Windows IA64", "IA64", {3}};
        const Environment x64 = {"Windows x64", "x64", {3}};
        switch (m_generation) {
            case Generation::Nt3:
            case Generation::Nt4:
                return {windows4, {"Windows NT x86", "W32X86", {2}}};
            case Generation::Windows2000:
                return {windows4, {"Windows NT x86", "W32X86", {2, 3}}};
            case Generation::Xp:
            case Generation::Other:
                return {windows4, {"Windows NT x86", "W32X86", {2, 3}}, ia64, x64};
            default:
                return {windows4, {"Windows NT x86", "W32X86", {3}}, ia64, x64};
        }
    }

    std::vector<StockMonitor> StockMonitors() const {
        switch (m_generation) {
            case Generation::Windows95:
                return {{"Local Port", "SPOOLSS.DLL"}};
            case Generation::Windows98:
            case Generation::WindowsMe:
                return {
                    {"Local Port", "SPOOLSS.DLL"}, {"PJL Language Monitor", "PJLMON.DLL"}, {"USB Port", "USBMON.DLL"}};
            case Generation::Nt3:
            case Generation::Nt4:
                return {
                    {"Local Port", "localmon.dll"}, {"LPR Port", "lprmon.dll"}, {"PJL Language Monitor", "pjlmon.dll"}};
            case Generation::Windows2000:
                return {{"Local Port", "localmon.dll"},
                        {"LPR Port", "lprmon.dll"},
                        {"PJL Language Monitor", "pjlmon.dll"},
                        {"Standard TCP/IP Port", "tcpmon.dll"},
                        {"USB Monitor", "usbmon.dll"}};
            case Generation::Vista:
                return {{"Local Port", "localspl.dll"},
                        {"PJL Language Monitor", "pjlmon.dll"},
                        {"Standard TCP/IP Port", "tcpmon.dll"},
                        {"USB Monitor", "usbmon.dll"},
                        {"WSD Port", "WSDMon.dll"}};
            default:
                return {{"Local Port", "localspl.dll"},
                        {"LPR Port", "lprmon.dll"},
                        {"PJL Language Monitor", "pjlmon.dll"},
                        {"Standard TCP/IP Port", "tcpmon.dll"},
                        {"USB Monitor", "usbmon.dll"}};
        }
    }

    /// The colour folder, where the system has colour management. NT 4 has none.
    void MakeColour() {
        if (m_is9x) {
            MakeFolder(InSystem("Color"));
        } else if (m_generation != Generation::Nt3 && m_generation != Generation::Nt4) {
            MakeFolder(InSystem("spool\\drivers\\color"));
        } else {
            return;
        }
        m_registry.CreateKey(std::string(m_is9x ? kWindows : kWindowsNt) + "\\ICM");
    }

    // ---- services ----

    void MakeServices() {
        bool isOld = m_generation == Generation::Nt3 || m_generation == Generation::Nt4;
        MakeService("RpcSs", "Remote Procedure Call (RPC)", isOld ? "RpcSs.exe" : "svchost.exe", {},
                    SERVICE_AUTO_START);
        MakeService("Spooler", "Print Spooler", isOld ? "spoolss.exe" : "spoolsv.exe", {"RpcSs"}, SERVICE_AUTO_START);
        MakeService("Fax", "Fax", isOld ? "faxsvc.exe" : "fxssvc.exe", {"RpcSs", "Spooler"}, SERVICE_AUTO_START);
        MakeService("LPDSVC", "TCP/IP Print Server", "tcpsvcs.exe", {"Spooler"}, SERVICE_DEMAND_START);
    }

    void MakeService(std::string_view name, std::string_view displayName, std::string_view program,
                     const std::vector<std::string>& dependencies, DWORD startType) {
        const std::string key = kServices + std::string(name);
        m_registry.SetText(key, "DisplayName", displayName);
        // The place below the Windows folder goes by %SystemRoot%, as the system's own services have it.
        std::string path = InSystem(program);
        PutFile(path, EmptyLibrary(m_system.processorType));
        if (path.starts_with(m_system.windowsDirectory + "\\")) {
            path.replace(0, m_system.windowsDirectory.size(), "%SystemRoot%");
        }
        m_registry.Set(key, "ImagePath", REG_EXPAND_SZ, std::string_view(path.c_str(), path.size() + 1));
        m_registry.SetNumber(key, "Type", SERVICE_WIN32_OWN_PROCESS);
        m_registry.SetNumber(key, "Start", startType);
        m_registry.SetNumber(key, "ErrorControl", 1);
        m_registry.SetText(key, "ObjectName", "LocalSystem");
        if (!dependencies.empty()) {
            m_registry.SetTexts(key, "DependOnService", dependencies);
        }
    }

    // ---- win.ini ----

    void WriteWinIni() {
        std::string text = "[windows]\r\n";
        if (m_is9x) {
            text += "load=\r\nrun=\r\nNullPort=None\r\n\r\n[devices]\r\n\r\n[PrinterPorts]\r\n\r\n[ports]\r\n";
            for (const char* name : {"LPT1", "LPT2", "LPT3"}) {
                text += name + std::string(":=\r\n");
            }
            for (const char* name : {"COM1", "COM2", "COM3", "COM4"}) {
                text += name + std::string(":=9600,n,8,1,x\r\n");
            }
            text += "FILE:=\r\n";
        } else {
            text = "; for 16-bit app support\r\n[fonts]\r\n[extensions]\r\n[files]\r\n";
        }
        PutFile(InWindows("win.ini"), text);
    }

    Disk& m_disk;
    const SystemDescription& m_system;
    Generation m_generation;
    bool m_is9x;
    Registry& m_registry;
};

}  // namespace

void FillFreshMachine(Disk& disk, Registry& registry, const SystemDescription& system) {
    FreshMachine(disk, registry, system).Fill();
}

}  // namespace pikel::simulated
