// The system's drive is that of its system directory, which may lie on another drive than the Windows directory.
#include <cstring>

#include "frame/os_identity.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

using namespace testing_support;

class SystemDrive : public MachineTest {};

TEST_F(SystemDrive, IsThatOfTheSystemDirectory) {
    const std::string temp = GetOsIdentity().tempDirectory;
    ForgetSystemRecords();
    ReplacedOperations replaced;
    replaced.table.GetWindowsDirectoryA = [](LPSTR buffer, UINT) -> UINT {
        std::strcpy(buffer, "E:\\WINDOWS");
        return 10;
    };
    replaced.table.GetSystemDirectoryA = [](LPSTR buffer, UINT) -> UINT {
        std::strcpy(buffer, "G:\\NT\\system32");
        return 14;
    };
    const OsIdentity& identity = GetOsIdentity();
    EXPECT_EQ(identity.windowsDirectory, "E:\\WINDOWS");
    EXPECT_EQ(identity.systemDirectory, "G:\\NT\\system32");
    EXPECT_EQ(identity.systemDrive, "G:");
    EXPECT_EQ(identity.tempDirectory, temp) << "the others are as ever";
}

TEST_F(SystemDrive, IsEmptyForASystemDirectoryWithoutOne) {
    ReplacedOperations replaced;
    replaced.table.GetSystemDirectoryA = [](LPSTR buffer, UINT) -> UINT {
        std::strcpy(buffer, "\\\\server\\nt\\system32");
        return 20;
    };
    EXPECT_EQ(GetOsIdentity().systemDrive, "");
    EXPECT_EQ(GetOsIdentity().systemDirectory, "\\\\server\\nt\\system32");
}

}  // namespace
}  // namespace pikel
