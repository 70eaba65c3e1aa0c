// Version resources as programs read them.
#include "support/machine_test.h"
#include "support/pe_file.h"

namespace pikel {
namespace {

using testing_support::MachineTest;
using testing_support::MakePeFile;
using testing_support::WriteFileOn;

constexpr char kFile[] = "C:\\tool.dll";

class VersionOperations : public MachineTest {
  protected:
    VersionOperations() { WriteFileOn(Machine(), kFile, MakePeFile("1.2")); }
};

TEST_F(VersionOperations, BlockNeedsABufferOfItsSize) {
    DWORD handle = 7;
    const DWORD size = Platform().GetFileVersionInfoSizeA(kFile, &handle);
    ASSERT_GT(size, 1u);
    EXPECT_EQ(handle, 0u);
    std::string block(size, '\xee');
    EXPECT_FALSE(Platform().GetFileVersionInfoA(kFile, 0, size - 1, block.data()));
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(block, std::string(size, '\xee'));
    EXPECT_TRUE(Platform().GetFileVersionInfoA(kFile, 0, size, block.data()));
    EXPECT_FALSE(Platform().GetFileVersionInfoA(kFile, 0, size, nullptr));
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
}

TEST_F(VersionOperations, FileWithoutAVersionHasNoBlock) {
    WriteFileOn(Machine(), "C:\\plain.dll", "plain");
    EXPECT_EQ(Platform().GetFileVersionInfoSizeA("C:\\plain.dll", nullptr), 0u);
    EXPECT_NE(Platform().GetLastError(), 0u);
    EXPECT_EQ(Platform().GetFileVersionInfoSizeA("C:\\none.dll", nullptr), 0u);
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(Platform().GetFileVersionInfoSizeA(nullptr, nullptr), 0u);
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
}

TEST_F(VersionOperations, ValueThatIsNotThereClearsTheLength) {
    std::string block(Platform().GetFileVersionInfoSizeA(kFile, nullptr), '\0');
    ASSERT_TRUE(Platform().GetFileVersionInfoA(kFile, 0, static_cast<DWORD>(block.size()), block.data()));
    LPVOID value = nullptr;
    UINT length = 7;
    EXPECT_FALSE(Platform().VerQueryValueA(block.data(), "\\none", &value, &length));
    EXPECT_EQ(length, 0u);
    EXPECT_TRUE(Platform().VerQueryValueA(block.data(), "\\", &value, &length));
    EXPECT_NE(length, 0u);
}

}  // namespace
}  // namespace pikel
