// The contract of what takes drivers and colour profiles away, NT family.
#include <cstring>
#include <string>
#include <vector>

#include "platform/contract.h"

namespace pikel {
namespace {

using contract::WineException;

constexpr WineException kWine[] = {
    {"a driver goes with its unused files", "gives 87 for every flag"},
    {"a held file of a driver stays and fails nothing", "gives 87 for every flag"},
    {"a printer reports its profiles as full paths", "records no links"},
    {"a link that isn't there gives 2015", "cuts it all the same"},
    {"a profile that isn't installed gives 2016", "gives 2 for the missing file"},
};

bool Holds(std::string_view statement, bool holds) {
    const auto result = contract::Contract(kWine, statement, holds);
    EXPECT_TRUE(result);
    return result;
}

/// Leaves spooler and colour folder as they were: on Wine the tests share them.
class RemovalContract : public contract::Test {
  protected:
    RemovalContract() {
        for (const char* file : kFiles) {
            contract::WriteFile(DriverFolder() + "\\" + file, file);
        }
    }
    ~RemovalContract() override {
        PrinterHandle printer;
        PRINTER_DEFAULTSA defaults{nullptr, nullptr, PRINTER_ALL_ACCESS};
        if (Platform().OpenPrinterA(m_printer, printer.Out(), &defaults)) {
            Platform().DeletePrinter(printer.Get());
        }
        printer.Reset();
        Platform().DeletePrinterDriverA(nullptr, nullptr, m_driver);
        Uninstall(ColourFolder() + "\\removal.icc");
        for (const char* file : kFiles) {
            Platform().DeleteFileA((DriverFolder() + "\\" + file).c_str());
            Platform().DeleteFileA(InPlace(file).c_str());
        }
    }

    static constexpr const char* kFiles[] = {"remdrv.dll", "remdata.gpd", "remui.dll"};

    static std::string DriverFolder() {
        char folder[MAX_PATH] = "";
        DWORD needed = 0;
        EXPECT_EQ(CODE_OF(Platform().GetPrinterDriverDirectoryA(nullptr, nullptr, 1, reinterpret_cast<LPBYTE>(folder),
                                                                sizeof folder, &needed)),
                  0u);
        return folder;
    }
    static std::string InPlace(const std::string& file) { return DriverFolder() + "\\3\\" + file; }

    void InstallDriver() {
        DRIVER_INFO_3A info{};
        info.cVersion = 3;
        info.pName = m_driver;
        info.pDriverPath = const_cast<LPSTR>(kFiles[0]);
        info.pDataFile = const_cast<LPSTR>(kFiles[1]);
        info.pConfigFile = const_cast<LPSTR>(kFiles[2]);
        ASSERT_EQ(CODE_OF(Platform().AddPrinterDriverA(nullptr, 3, reinterpret_cast<LPBYTE>(&info))), 0u);
        ASSERT_TRUE(contract::FileExists(InPlace("remdrv.dll")));
    }
    void AddPrinter() {
        char port[] = "LPT1:";
        char processor[] = "winprint";
        char dataType[] = "RAW";
        PRINTER_INFO_2A info{};
        info.pPrinterName = m_printer;
        info.pPortName = port;
        info.pDriverName = m_driver;
        info.pPrintProcessor = processor;
        info.pDatatype = dataType;
        const PrinterHandle printer(Platform().AddPrinterA(nullptr, 2, reinterpret_cast<LPBYTE>(&info)));
        ASSERT_TRUE(static_cast<bool>(printer)) << Platform().GetLastError();
    }
    DWORD DeleteEx(DWORD flags) {
        LookedUp<looked_up::DeletePrinterDriverExA> remove("winspool.drv", "DeletePrinterDriverExA");
        EXPECT_TRUE(static_cast<bool>(remove));
        return remove ? CODE_OF(remove.Call()(nullptr, nullptr, m_driver, flags, 3)) : remove.Status();
    }

    static std::string ColourFolder() {
        LookedUp<looked_up::GetColorDirectoryA> get("mscms.dll", "GetColorDirectoryA");
        char folder[MAX_PATH] = "";
        DWORD size = sizeof folder;
        EXPECT_EQ(CODE_OF(get.Call()(nullptr, folder, &size)), 0u);
        return folder;
    }
    static DWORD Uninstall(const std::string& profile) {
        LookedUp<looked_up::UninstallColorProfileA> uninstall("mscms.dll", "UninstallColorProfileA");
        return CODE_OF(uninstall.Call()(nullptr, profile.c_str(), TRUE));
    }
    DWORD Unlink(const char* profile, const char* device) {
        LookedUp<looked_up::DisassociateColorProfileFromDeviceA> unlink("mscms.dll",
                                                                        "DisassociateColorProfileFromDeviceA");
        return CODE_OF(unlink.Call()(nullptr, profile, device));
    }
    void InstallAndLinkProfile() {
        std::string bytes(200, '\0');
        bytes[3] = static_cast<char>(bytes.size());
        bytes.replace(12, 12, "prtrRGB XYZ ");
        bytes.replace(36, 4, "acsp");
        const std::string source = contract::TemporaryFolder() + "removal.icc";
        contract::WriteFile(source, bytes);
        LookedUp<looked_up::InstallColorProfileA> install("mscms.dll", "InstallColorProfileA");
        EXPECT_EQ(CODE_OF(install.Call()(nullptr, source.c_str())), 0u);
        LookedUp<looked_up::AssociateColorProfileWithDeviceA> link("mscms.dll", "AssociateColorProfileWithDeviceA");
        EXPECT_EQ(CODE_OF(link.Call()(nullptr, "removal.icc", m_printer)), 0u);
        Platform().DeleteFileA(source.c_str());
    }

    char m_driver[16] = "Removal Driver";
    char m_printer[16] = "Removal Printer";
};

// ---- drivers --------------------------------------------------------------------------------------------------------

TEST_P(RemovalContract, DriverGoesAndItsFilesStayWithoutAFlag) {
    InstallDriver();
    EXPECT_EQ(DeleteEx(0), 0u);
    EXPECT_TRUE(contract::FileExists(InPlace("remdrv.dll")));
    EXPECT_NE(DeleteEx(0), 0u);
}

TEST_P(RemovalContract, DriverGoesWithItsUnusedFiles) {
    InstallDriver();
    const DWORD code = DeleteEx(DPD_DELETE_UNUSED_FILES | DPD_DELETE_SPECIFIC_VERSION);
    Holds("a driver goes with its unused files",
          code == 0 && !contract::FileExists(InPlace("remdrv.dll")) && !contract::FileExists(InPlace("remui.dll")));
    EXPECT_TRUE(contract::FileExists(DriverFolder() + "\\remdrv.dll")) << "the installer's own copy";
}

TEST_P(RemovalContract, DriverGoesWhileAFileOfItIsHeld) {
    InstallDriver();
    const FileHandle held(Platform().CreateFileA(InPlace("remdrv.dll").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                                 FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(static_cast<bool>(held));
    Holds("a held file of a driver stays and fails nothing",
          DeleteEx(DPD_DELETE_UNUSED_FILES | DPD_DELETE_SPECIFIC_VERSION) == 0);
    EXPECT_TRUE(contract::FileExists(InPlace("remdrv.dll")));
}

// ---- profiles -------------------------------------------------------------------------------------------------------

int CALLBACK TakeProfile(LPSTR path, LPARAM list) {
    reinterpret_cast<std::vector<std::string>*>(list)->emplace_back(path);
    return 1;
}

TEST_P(RemovalContract, PrinterReportsItsProfilesUntilTheirLinksAreCut) {
    InstallDriver();
    AddPrinter();
    InstallAndLinkProfile();
    const HDC context = Platform().CreateICA("WINSPOOL", m_printer, nullptr, nullptr);
    ASSERT_NE(context, nullptr) << Platform().GetLastError();
    std::vector<std::string> paths;
    Platform().EnumICMProfilesA(context, &TakeProfile, reinterpret_cast<LPARAM>(&paths));
    EXPECT_TRUE(Platform().DeleteDC(context));
    Holds("a printer reports its profiles as full paths",
          paths == std::vector<std::string>{ColourFolder() + "\\removal.icc"});
    EXPECT_EQ(Unlink("removal.icc", m_printer), 0u);
    Holds("a link that isn't there gives 2015",
          Unlink("removal.icc", m_printer) == ERROR_PROFILE_NOT_ASSOCIATED_WITH_DEVICE);
    EXPECT_EQ(Unlink(nullptr, m_printer), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Unlink("removal.icc", nullptr), DWORD{ERROR_INVALID_PARAMETER});
}

TEST_P(RemovalContract, UnknownPrinterHasNoInformationContext) {
    EXPECT_EQ(Platform().CreateICA("WINSPOOL", "No Such Printer", nullptr, nullptr), nullptr);
}

TEST_P(RemovalContract, ProfileIsUninstalledOnce) {
    InstallDriver();
    AddPrinter();
    InstallAndLinkProfile();
    const std::string path = ColourFolder() + "\\removal.icc";
    EXPECT_EQ(Uninstall(path), 0u);
    EXPECT_FALSE(contract::FileExists(path));
    const DWORD again = Uninstall(path);
    EXPECT_NE(again, 0u);
    Holds("a profile that isn't installed gives 2016", again == ERROR_PROFILE_NOT_FOUND);
}

INSTANTIATE_CONTRACT(RemovalContract, "win2000", "xp", "xp-x64", "vista", "vista-x64");

}  // namespace
}  // namespace pikel
