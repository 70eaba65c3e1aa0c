// The display part of names in the network.
#include "system/resource_list.h"

#include "support/machine_test.h"

namespace pikel {
namespace {

using namespace testing_support;

struct ShortNameCase {
    const char* name;
    const char* given;
    DWORD kind;
    const char* shortName;
};

class ShortName : public MachineTest, public ::testing::WithParamInterface<ShortNameCase> {};

TEST_P(ShortName, IsTheDisplayPart) {
    char shortName[260] = "####";
    EXPECT_TRUE(GetShortName(GetParam().name, GetParam().given, GetParam().kind, shortName, sizeof shortName));
    EXPECT_STREQ(shortName, GetParam().shortName);
}

INSTANTIATE_TEST_SUITE_P(
    Names, ShortName,
    ::testing::Values(ShortNameCase{"\\\\server\\queue", nullptr, 4, "queue"},
                      ShortNameCase{"\\\\server\\queue", nullptr, 3, "server\\queue"},
                      ShortNameCase{"\\\\server\\queue", nullptr, 1, "server\\queue"},
                      ShortNameCase{"\\\\server\\queue", "given", 4, "queue"},
                      ShortNameCase{"\\\\server", "given", 3, "given"}, ShortNameCase{"network", "given", 1, "given"},
                      ShortNameCase{"network", "", 1, ""}, ShortNameCase{"network", nullptr, 1, "network"},
                      ShortNameCase{"a\\\\b\\\\c", nullptr, 3, "c"}, ShortNameCase{"a\\b", nullptr, 3, "a\\b"},
                      ShortNameCase{"\\\\\\x", nullptr, 3, "x"}, ShortNameCase{"x\\\\", nullptr, 3, ""},
                      ShortNameCase{"Provider!SALES", nullptr, 2, "SALES"}, ShortNameCase{"a!b!c", "given", 2, "c"},
                      ShortNameCase{"SALES", nullptr, 2, "SALES"}, ShortNameCase{"a!", nullptr, 2, ""},
                      ShortNameCase{"queue", nullptr, 4, "queue"}, ShortNameCase{"a\\", nullptr, 4, ""},
                      ShortNameCase{"\\\\s\\q", "given", 5, "\\\\s\\q"}, ShortNameCase{"a!b", nullptr, 6, "a!b"},
                      ShortNameCase{"\\\\s\\q", nullptr, 0, "\\\\s\\q"}, ShortNameCase{"", nullptr, 4, ""}));

TEST(ShortNameOfANode, NeedsNameAndRoom) {
    char shortName[4] = "###";
    EXPECT_FALSE(GetShortName(nullptr, "given", 1, shortName, sizeof shortName));
    EXPECT_FALSE(GetShortName("name", "given", 1, nullptr, 4));
    EXPECT_FALSE(GetShortName("name", "given", 1, shortName, 0));
    EXPECT_STREQ(shortName, "###");
    EXPECT_TRUE(GetShortName("abc", nullptr, 0, shortName, sizeof shortName));
    EXPECT_STREQ(shortName, "abc");
    EXPECT_TRUE(GetShortName("abcd", nullptr, 0, shortName, sizeof shortName));
    EXPECT_STREQ(shortName, "");
}

TEST(ShortNameOfANode, TrailByteOfADoubleByteCharacterSeparatesNothing) {
    simulated::SystemDescription system = *simulated::FindSystem("win98");
    system.codePage = 932;
    TestMachine japanese(system);
    char shortName[260];
    // 0x95 0x5C is one character, whose trail byte is a backslash's.
    EXPECT_TRUE(GetShortName("\\\\s\\q\x95\\x", nullptr, 4, shortName, sizeof shortName));
    EXPECT_STREQ(shortName, "q\x95\\x");
}

}  // namespace
}  // namespace pikel
