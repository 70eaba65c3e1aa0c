// The spellings of a driver's target system.
#include "frame/architecture.h"

#include <gtest/gtest.h>

namespace pikel {
namespace {

TEST(DriverArchitecture, OfADwArchitecture) {
    EXPECT_EQ(DriverArchitectureOf(0), nullptr);
    EXPECT_STREQ(DriverArchitectureOf(1), "Windows 4.0");
    EXPECT_STREQ(DriverArchitectureOf(2), "Windows NT x86");
    EXPECT_STREQ(DriverArchitectureOf(3), "Windows NT x86");
    EXPECT_STREQ(DriverArchitectureOf(4), "Windows IA64");
    EXPECT_STREQ(DriverArchitectureOf(5), "Windows x64");
    EXPECT_EQ(DriverArchitectureOf(6), nullptr);
    EXPECT_EQ(DriverArchitectureOf(0xFFFFFFFF), nullptr);
}

struct CodesCase {
    DWORD version;
    DWORD processor;
    const char* architecture;
};

TEST(DriverArchitecture, OfAVersionAndAProcessor) {
    static const CodesCase cases[] = {
        {0, 0, "Windows 4.0"},    {0, 1, "Windows 4.0"},    {0, 2, "Windows 4.0"},    {0, 7, "Windows 4.0"},
        {2, 0, "Windows NT x86"}, {2, 1, "Windows IA64"},   {2, 2, "Windows x64"},    {2, 3, "Windows NT x86"},
        {3, 0, "Windows NT x86"}, {3, 1, "Windows IA64"},   {3, 2, "Windows x64"},    {3, 9, "Windows NT x86"},
        {1, 0, "Windows NT x86"}, {1, 1, "Windows NT x86"}, {4, 2, "Windows NT x86"}, {0x400, 0, "Windows NT x86"},
    };
    for (const CodesCase& c : cases) {
        EXPECT_STREQ(DriverArchitectureOf(c.version, c.processor), c.architecture)
            << "version " << c.version << ", processor " << c.processor;
    }
}

}  // namespace
}  // namespace pikel
