#include <cstring>

#include "support/machine_test.h"

namespace pikel {
namespace {

using simulated::SystemDescription;

class SystemOperations : public testing_support::MachineTest {
  protected:
    void Change(const std::function<void(SystemDescription&)>& change) {
        SystemDescription system = Machine().System();
        change(system);
        Machine().SetSystem(system);
    }
    static bool AcceptsSize(DWORD size) {
        OSVERSIONINFOEXA version{};
        version.dwOSVersionInfoSize = size;
        Platform().SetLastError(0);
        const BOOL result = Platform().GetVersionExA(reinterpret_cast<LPOSVERSIONINFOA>(&version));
        EXPECT_EQ(Platform().GetLastError(), result ? 0u : 122u);
        return result != FALSE;
    }
};

class SystemOperationsEverywhere : public testing_support::EverySystemTest {};
INSTANTIATE_ON_EVERY_SYSTEM(SystemOperationsEverywhere);

TEST_P(SystemOperationsEverywhere, VersionFieldsAreTheMachines) {
    const SystemDescription& system = Machine().System();
    OSVERSIONINFOEXA version;
    std::memset(&version, 0xEE, sizeof version);
    version.dwOSVersionInfoSize = 148;
    ASSERT_TRUE(Platform().GetVersionExA(reinterpret_cast<LPOSVERSIONINFOA>(&version)));
    EXPECT_EQ(version.dwOSVersionInfoSize, 148u);
    EXPECT_EQ(version.dwMajorVersion, system.major);
    EXPECT_EQ(version.dwMinorVersion, system.minor);
    EXPECT_EQ(version.dwBuildNumber, system.build);
    EXPECT_EQ(version.dwPlatformId, system.platform);
    EXPECT_EQ(version.szCSDVersion, system.servicePack);
    EXPECT_EQ(version.wServicePackMajor, 0xEEEE) << "the short form ends before it";
}

TEST_P(SystemOperationsEverywhere, TheLongVersionIsKnownFromNt4ServicePack6On) {
    OSVERSIONINFOEXA version{};
    version.dwOSVersionInfoSize = 156;
    const bool isKnown = !Machine().Is9x();
    EXPECT_EQ(Platform().GetVersionExA(reinterpret_cast<LPOSVERSIONINFOA>(&version)) != FALSE, isKnown);
    EXPECT_EQ(version.wServicePackMajor, isKnown ? Machine().System().servicePackMajor : 0);
    EXPECT_EQ(version.wProductType, isKnown ? Machine().System().productType : 0);
    EXPECT_EQ(version.wSuiteMask, isKnown ? Machine().System().suiteMask : 0);
}

TEST_P(SystemOperationsEverywhere, FoldersExistAndOnlyTheTemporaryOneEndsInABackslash) {
    char buffer[MAX_PATH];
    ASSERT_NE(Platform().GetWindowsDirectoryA(buffer, sizeof buffer), 0u);
    EXPECT_EQ(buffer, Machine().System().windowsDirectory);
    EXPECT_TRUE(Platform().PathFileExistsA(buffer));
    ASSERT_NE(Platform().GetSystemDirectoryA(buffer, sizeof buffer), 0u);
    EXPECT_EQ(buffer, Machine().System().systemDirectory);
    EXPECT_TRUE(Platform().PathFileExistsA(buffer));
    const DWORD length = Platform().GetTempPathA(sizeof buffer, buffer);
    ASSERT_EQ(length, std::strlen(buffer));
    EXPECT_EQ(buffer[length - 1], '\\');
    EXPECT_TRUE(Platform().PathFileExistsA(buffer)) << buffer;
}

TEST_P(SystemOperationsEverywhere, TheProcessorIsTheMachines) {
    SYSTEM_INFO info;
    std::memset(&info, 0xEE, sizeof info);
    Platform().GetSystemInfo(&info);
    EXPECT_EQ(info.dwProcessorType, Machine().System().processorType);
    EXPECT_EQ(info.wProcessorArchitecture, GetParam().ends_with("-x64") ? 9 : GetParam().ends_with("-ia64") ? 6 : 0);
    EXPECT_EQ(info.dwNumberOfProcessors, 1u);
}

TEST_F(SystemOperations, OtherVersionSizesAreRefused) {
    for (DWORD size : {0u, 1u, 147u, 149u, 155u, 157u, 0xFFFFFFFFu}) {
        EXPECT_FALSE(AcceptsSize(size)) << size;
    }
    EXPECT_TRUE(AcceptsSize(148));
    EXPECT_TRUE(AcceptsSize(156));
}

TEST_F(SystemOperations, Nt4BeforeServicePack6RefusesTheLongVersion) {
    Start("nt4");
    Change([](SystemDescription& system) { system.servicePackMajor = 5; });
    EXPECT_FALSE(AcceptsSize(156));
    EXPECT_TRUE(AcceptsSize(148));
    Change([](SystemDescription& system) { system.servicePackMajor = 6; });
    EXPECT_TRUE(AcceptsSize(156));
    Change([](SystemDescription& system) { system.major = 3; });
    EXPECT_FALSE(AcceptsSize(156));
}

TEST_F(SystemOperations, FolderCallsTellTheSizeThatASmallBufferLacks) {
    const auto check = [](const std::function<DWORD(LPSTR, DWORD)>& call, const std::string& folder) {
        char buffer[MAX_PATH] = "untouched";
        const auto size = static_cast<DWORD>(folder.size());
        EXPECT_EQ(call(nullptr, 0), size + 1);
        EXPECT_EQ(call(buffer, size), size + 1);
        EXPECT_STREQ(buffer, "untouched");
        EXPECT_EQ(call(buffer, size + 1), size);
        EXPECT_EQ(buffer, folder);
    };
    check([](LPSTR buffer, DWORD size) { return Platform().GetWindowsDirectoryA(buffer, size); }, "C:\\WINDOWS");
    check([](LPSTR buffer, DWORD size) { return Platform().GetSystemDirectoryA(buffer, size); },
          "C:\\WINDOWS\\system32");
    check([](LPSTR buffer, DWORD size) { return Platform().GetTempPathA(size, buffer); }, "C:\\WINDOWS\\Temp\\");
}

TEST_F(SystemOperations, ComputerNameNeedsRoomForItsNul) {
    Change([](SystemDescription& system) { system.computerName = "PRINTSRV"; });
    char buffer[16] = "untouched";
    DWORD size = 8;
    EXPECT_FALSE(Platform().GetComputerNameA(buffer, &size));
    EXPECT_EQ(Platform().GetLastError(), 111u);
    EXPECT_EQ(size, 9u);
    EXPECT_STREQ(buffer, "untouched");
    EXPECT_TRUE(Platform().GetComputerNameA(buffer, &size));
    EXPECT_EQ(size, 8u);
    EXPECT_STREQ(buffer, "PRINTSRV");
}

}  // namespace
}  // namespace pikel
