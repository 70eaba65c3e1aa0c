// The contract of reading a file: the 16-bit style read takes the handles of CreateFileA, for a handle is a number.
#include <cstdint>
#include <string>

#include "platform/contract.h"

namespace pikel {
namespace {

class ReadContract : public contract::Test {};
INSTANTIATE_CONTRACT(ReadContract, "win95", "xp", "vista-x64");

TEST_P(ReadContract, HandleOfCreateFileCanBeRead) {
    const std::string path = contract::TemporaryFolder() + "pikelread.txt";
    contract::WriteFile(path, "abcde");
    FileHandle file(Platform().CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(static_cast<bool>(file));
    const auto number = static_cast<HFILE>(reinterpret_cast<std::intptr_t>(file.Get()));
    char buffer[8] = {};
    EXPECT_EQ(Platform()._lread(number, buffer, 3), 3u);
    EXPECT_EQ(std::string(buffer, 3), "abc");
    EXPECT_EQ(Platform()._lread(number, buffer, sizeof buffer), 2u);
    EXPECT_EQ(std::string(buffer, 2), "de");
    EXPECT_EQ(Platform()._lread(number, buffer, sizeof buffer), 0u) << "the end is no failure";
    file.Reset();
    EXPECT_TRUE(Platform().DeleteFileA(path.c_str()));
}

}  // namespace
}  // namespace pikel
