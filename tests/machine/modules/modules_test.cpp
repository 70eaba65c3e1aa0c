#include "machine/modules/modules.h"

#include <algorithm>
#include <cstring>

#include "support/machine_test.h"

namespace pikel {
namespace {

using testing_support::WriteFileOn;

/// Codes of a look-up: of the load, and of the export when the load worked.
struct LookUp {
    DWORD load = 0;
    DWORD find = 0;
    bool operator==(const LookUp&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const LookUp& lookUp) {
    return stream << "load " << lookUp.load << ", find " << lookUp.find;
}

LookUp TryLookUp(const char* module, const char* name) {
    LookUp result;
    const LoadedModule loaded(Platform().LoadLibraryA(module));
    if (!loaded) {
        result.load = Platform().GetLastError();
    } else if (Platform().GetProcAddress(loaded.Get(), name) == nullptr) {
        result.find = Platform().GetLastError();
    }
    return result;
}

class ModulesEverywhere : public testing_support::EverySystemTest {
  protected:
    bool IsOneOf(std::initializer_list<std::string_view> systems) {
        return std::ranges::find(systems, std::string_view(GetParam())) != systems.end();
    }
    bool IsFrom2000() { return !IsOneOf({"win95", "win98", "winme", "nt4"}); }
    bool HasColour() { return !IsOneOf({"win95", "nt4"}); }
};
INSTANTIATE_ON_EVERY_SYSTEM(ModulesEverywhere);

constexpr LookUp kFound = {0, 0};
constexpr LookUp kNoExport = {0, 127};
constexpr LookUp kNoLibrary = {126, 0};

TEST_P(ModulesEverywhere, ExportsGoByFamily) {
    const LookUp from2000 = IsFrom2000() ? kFound : kNoExport;
    for (const char* name : {"AddPrinterDriverExA", "SetPrinterDataExA", "GetPrinterDataExA", "DeletePrinterDriverExA",
                             "GetDefaultPrinterA", "SetDefaultPrinterA"}) {
        EXPECT_EQ(TryLookUp("winspool.drv", name), from2000) << name;
    }
    for (const char* name : {"GetColorDirectoryA", "InstallColorProfileA", "UninstallColorProfileA",
                             "AssociateColorProfileWithDeviceA", "DisassociateColorProfileFromDeviceA"}) {
        EXPECT_EQ(TryLookUp("mscms.dll", name), HasColour() ? kFound : kNoLibrary) << name;
    }
    const bool isVista = GetParam().starts_with("vista") || GetParam() == "other";
    const LookUp wcs = isVista ? kFound : HasColour() ? kNoExport : kNoLibrary;
    EXPECT_EQ(TryLookUp("mscms.dll", "WcsAssociateColorProfileWithDevice"), wcs);
    EXPECT_EQ(TryLookUp("mscms.dll", "WcsDisassociateColorProfileFromDevice"), wcs);
    EXPECT_EQ(TryLookUp("PRINTUI.DLL", "PrintUIEntryW"), IsFrom2000() ? kFound : kNoLibrary);
    EXPECT_EQ(TryLookUp("PRINTUI.DLL", "PrintUIEntryA"), IsFrom2000() ? kNoExport : kNoLibrary);
    EXPECT_EQ(TryLookUp("PRINTUI.DLL", "PrintUIEntry"), IsFrom2000() ? kNoExport : kNoLibrary);
    EXPECT_EQ(TryLookUp("svrapi.dll", "NetShareAdd"), Machine().Is9x() ? kFound : kNoLibrary);
    EXPECT_EQ(TryLookUp("setupapi.dll", "SetupCopyOEMInfA"), HasColour() ? kFound : kNoExport);
    EXPECT_EQ(TryLookUp("advapi32.dll", "ConvertStringSecurityDescriptorToSecurityDescriptorA"), from2000);
    EXPECT_EQ(TryLookUp("shfolder.dll", "SHGetFolderPathA"), HasColour() ? kFound : kNoLibrary);
}

class MachineModules : public testing_support::MachineTest {
  protected:
    LoadedModule Load(const char* name) { return LoadedModule(Platform().LoadLibraryA(name)); }
    DWORD CodeOfLoad(const char* name) {
        Platform().SetLastError(0);
        const LoadedModule module = Load(name);
        return module ? 0 : Platform().GetLastError();
    }
};

intptr_t Answer() {
    return 42;
}

TEST_F(MachineModules, NamesGoInAnyCaseWithOrWithoutPathAndExtension) {
    for (const char* name : {"mscms.dll", "MSCMS.DLL", "mscms", "MsCms", "C:\\WINDOWS\\system32\\mscms.dll",
                             "c:/windows/SYSTEM32/mscms", "winspool.drv"}) {
        EXPECT_EQ(CodeOfLoad(name), 0u) << name;
    }
    for (const char* name : {"winspool", "mscms.", "none.dll", "", "C:\\mscms.dll", "C:\\none\\mscms.dll",
                             "C:\\WINDOWS", "\\\\server\\share\\mscms.dll"}) {
        EXPECT_EQ(CodeOfLoad(name), 126u) << name;
    }
    EXPECT_EQ(CodeOfLoad(nullptr), 126u);
}

TEST_F(MachineModules, AFileThatIsNoLibraryGives193) {
    WriteFileOn(Machine(), "C:\\WINDOWS\\system32\\acmelm.dll", "MZ");
    WriteFileOn(Machine(), "C:\\tools\\readme.txt", "x");
    EXPECT_EQ(CodeOfLoad("acmelm.dll"), 193u);
    EXPECT_EQ(CodeOfLoad("ACMELM"), 193u);
    EXPECT_EQ(CodeOfLoad("C:\\tools\\readme.txt"), 193u);
    EXPECT_EQ(CodeOfLoad("C:\\tools\\none.txt"), 126u);
}

TEST_F(MachineModules, RegisteredLibrariesAreFoundByTheirPath) {
    Machine().Modules().Register("C:\\Acme\\AcmeSdk.dll", {{"Answer", &Answer}});
    const LoadedModule module = Load("c:\\ACME\\acmesdk.DLL");
    ASSERT_TRUE(module);
    const FARPROC answer = Platform().GetProcAddress(module.Get(), "Answer");
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);
    EXPECT_EQ(Platform().GetProcAddress(module.Get(), "answer"), nullptr);
    EXPECT_EQ(Platform().GetLastError(), 127u);
    EXPECT_EQ(CodeOfLoad("AcmeSdk.dll"), 126u) << "its folder is not on the search path";
}

TEST_F(MachineModules, TheSystemFolderIsSearchedAheadOfTheWindowsFolder) {
    for (const char* folder : {"C:\\WINDOWS\\", "C:\\WINDOWS\\system32\\"}) {
        Machine().Modules().Register(std::string(folder) + "AcmeSdk.dll", {{"Answer", &Answer}});
    }
    const LoadedModule module = Load("AcmeSdk.dll");
    char path[MAX_PATH] = "";
    EXPECT_NE(Platform().GetModuleFileNameA(module.Get(), path, sizeof path), 0u);
    EXPECT_STREQ(path, "C:\\WINDOWS\\system32\\AcmeSdk.dll");
}

TEST_F(MachineModules, ARegisteredLibraryInTheSystemFolderComesFirst) {
    Machine().Modules().Register("C:\\WINDOWS\\system32\\printui.dll", {{"PrintUIEntryA", &Answer}});
    EXPECT_EQ(TryLookUp("PRINTUI.DLL", "PrintUIEntryA"), kFound);
    EXPECT_EQ(TryLookUp("PRINTUI.DLL", "PrintUIEntryW"), kNoExport);
}

TEST_F(MachineModules, LibrariesAndExportsCanBeTakenAway) {
    Machine().Modules().RemoveExport("WINSPOOL.DRV", "GetDefaultPrinterA");
    EXPECT_EQ(TryLookUp("winspool.drv", "GetDefaultPrinterA"), kNoExport);
    EXPECT_EQ(TryLookUp("winspool.drv", "SetDefaultPrinterA"), kFound);
    Machine().Modules().Remove("mscms.dll");
    EXPECT_EQ(TryLookUp("MSCMS.DLL", "GetColorDirectoryA"), kNoLibrary);
    Machine().Modules().Register("C:\\Acme\\AcmeSdk.dll", {{"Answer", &Answer}, {"Other", &Answer}});
    Machine().Modules().RemoveExport("C:\\Acme\\AcmeSdk.dll", "Answer");
    EXPECT_EQ(TryLookUp("C:\\Acme\\AcmeSdk.dll", "Answer"), kNoExport);
    EXPECT_EQ(TryLookUp("C:\\Acme\\AcmeSdk.dll", "Other"), kFound);
    Machine().Modules().Remove("C:\\Acme\\AcmeSdk.dll");
    EXPECT_EQ(TryLookUp("C:\\Acme\\AcmeSdk.dll", "Other"), kNoLibrary);
}

TEST_F(MachineModules, OneLibraryHasOneHandleThatIsCounted) {
    const HMODULE first = Platform().LoadLibraryA("mscms.dll");
    const HMODULE second = Platform().LoadLibraryA("C:\\WINDOWS\\system32\\MSCMS.DLL");
    EXPECT_EQ(first, second);
    EXPECT_EQ(Machine().Handles().OpenCount(), 1u);
    EXPECT_TRUE(Platform().FreeLibrary(first));
    EXPECT_NE(Platform().GetProcAddress(first, "GetColorDirectoryA"), nullptr);
    EXPECT_TRUE(Platform().FreeLibrary(second));
    EXPECT_EQ(Machine().Handles().OpenCount(), 0u);
}

TEST_F(MachineModules, ClosedAndStrangeModulesAreRefused) {
    Test().AllowOpen();
    const HMODULE module = Platform().LoadLibraryA("mscms.dll");
    EXPECT_TRUE(Platform().FreeLibrary(module));
    EXPECT_EQ(Platform().GetProcAddress(module, "GetColorDirectoryA"), nullptr);
    EXPECT_EQ(Platform().GetLastError(), 126u);
    EXPECT_FALSE(Platform().FreeLibrary(module));
    EXPECT_EQ(Platform().GetLastError(), 126u);
    EXPECT_FALSE(Platform().FreeLibrary(nullptr));
    EXPECT_EQ(Platform().GetLastError(), 6u);
    EXPECT_EQ(Machine().Handles().Misuses().size(), 2u);
    EXPECT_EQ(Platform().GetProcAddress(nullptr, "none"), nullptr);
    EXPECT_EQ(Platform().GetLastError(), 127u);
}

TEST_F(MachineModules, OrdinalsAreNotExported) {
    const LoadedModule module = Load("mscms.dll");
    // Past the shims: the trace would read the number as a text.
    EXPECT_EQ(NativePlatform().GetProcAddress(module.Get(), reinterpret_cast<LPCSTR>(uintptr_t{5})), nullptr);
    EXPECT_EQ(Platform().GetLastError(), 182u);
}

TEST_F(MachineModules, TheLibrarysOwnModuleIsAlwaysThere) {
    char buffer[MAX_PATH];
    const DWORD length = Platform().GetModuleFileNameA(simulated::LibraryModule(), buffer, sizeof buffer);
    EXPECT_EQ(std::string(buffer, length), Machine().ModulePath());
    EXPECT_TRUE(Platform().FreeLibrary(simulated::LibraryModule()));
    EXPECT_EQ(Platform().GetProcAddress(simulated::LibraryModule(), "none"), nullptr);
    EXPECT_EQ(Platform().GetLastError(), 127u);
    EXPECT_EQ(Machine().Handles().OpenCount(), 0u);
}

TEST_F(MachineModules, FileNamesOfModules) {
    char buffer[MAX_PATH];
    EXPECT_EQ(Platform().GetModuleFileNameA(nullptr, buffer, sizeof buffer), 32u);
    EXPECT_STREQ(buffer, "C:\\Program Files\\pikel\\setup.exe");
    const LoadedModule module = Load("WINSPOOL.DRV");
    EXPECT_NE(Platform().GetModuleFileNameA(module.Get(), buffer, sizeof buffer), 0u);
    EXPECT_STREQ(buffer, "C:\\WINDOWS\\system32\\winspool.drv");
    EXPECT_EQ(Platform().GetModuleFileNameA(reinterpret_cast<HMODULE>(uintptr_t{0x1230}), buffer, sizeof buffer), 0u);
    EXPECT_EQ(Platform().GetLastError(), 126u);
    EXPECT_EQ(Platform().GetModuleFileNameA(nullptr, buffer, 0), 0u);
    EXPECT_EQ(Platform().GetLastError(), 122u);
}

TEST_F(MachineModules, AFileNameThatDoesNotFitIsCutAsTheSystemDoes) {
    char buffer[8];
    std::memset(buffer, '#', sizeof buffer);
    Platform().SetLastError(77);
    EXPECT_EQ(NativePlatform().GetModuleFileNameA(nullptr, buffer, 5), 5u);
    EXPECT_EQ(std::string_view(buffer, 8), "C:\\Pr###");
    EXPECT_EQ(Platform().GetLastError(), 77u);
    Start("vista");
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(NativePlatform().GetModuleFileNameA(nullptr, buffer, 5), 5u);
    EXPECT_EQ(std::string_view(buffer, 8), std::string_view("C:\\P\0###", 8));
    EXPECT_EQ(Platform().GetLastError(), 122u);
    char exact[33];
    EXPECT_EQ(NativePlatform().GetModuleFileNameA(nullptr, exact, 33), 32u);
    EXPECT_EQ(NativePlatform().GetModuleFileNameA(nullptr, exact, 32), 32u);
    EXPECT_EQ(exact[31], '\0');
}

TEST_F(MachineModules, GuardsFindTheirFunctions) {
    {
        const LookedUp<looked_up::GetDefaultPrinterA> found("winspool.drv", "GetDefaultPrinterA");
        EXPECT_TRUE(found);
        EXPECT_EQ(found.Status(), 0u);
    }
    const LookedUp<looked_up::NetShareAdd> missing("svrapi.dll", "NetShareAdd");
    EXPECT_FALSE(missing);
    EXPECT_FALSE(missing.IsLoaded());
    EXPECT_EQ(missing.Status(), 126u);
}

}  // namespace
}  // namespace pikel
