#include "machine/files/path.h"

#include "support/machine_test.h"

namespace pikel::simulated {
namespace {

using ::testing::ElementsAre;

TEST(MachinePath, HasDriveAndNames) {
    const MachinePath path = ParsePath("d:\\Windows/INF\\.\\x\\..\\oem1.inf", 1252, 'C');
    EXPECT_EQ(path.code, 0u);
    EXPECT_EQ(path.drive, 'D');
    EXPECT_THAT(path.names, ElementsAre("Windows", "INF", "oem1.inf"));
    EXPECT_FALSE(path.endsInSeparator);
    EXPECT_EQ(path.Key(1252), "d/windows/inf/oem1.inf");
}

TEST(MachinePath, TellsARootAndASeparatorAtTheEnd) {
    EXPECT_TRUE(ParsePath("C:\\", 1252, 'C').IsRoot());
    EXPECT_TRUE(ParsePath("C:", 1252, 'C').IsRoot());
    EXPECT_TRUE(ParsePath(".", 1252, 'E').IsRoot());
    EXPECT_EQ(ParsePath(".", 1252, 'E').drive, 'E');
    EXPECT_TRUE(ParsePath("C:\\x\\", 1252, 'C').endsInSeparator);
}

TEST(MachinePath, TheLongestPathHas259Bytes) {
    EXPECT_EQ(ParsePath("C:\\" + std::string(256, 'a'), 1252, 'C').code, 0u);
    EXPECT_EQ(ParsePath("C:\\" + std::string(257, 'a'), 1252, 'C').code, 206u);
}

TEST(MachinePath, KeysFoldTheLettersOfTheCodePage) {
    EXPECT_EQ(ParsePath("C:\\\xC9T\xC9", 1252, 'C').Key(1252), ParsePath("c:\\\xE9t\xE9", 1252, 'C').Key(1252));
    // A trail byte in 932 is no letter.
    EXPECT_NE(ParsePath("C:\\\x83\x41", 932, 'C').Key(932), ParsePath("C:\\\x83\x61", 932, 'C').Key(932));
}

struct PatternCase {
    const char* pattern;
    const char* name;
    bool matches;
};

class NamePatternCases : public ::testing::TestWithParam<PatternCase> {};

TEST_P(NamePatternCases, MatchAsTheyDoOnWindows) {
    const auto& [pattern, name, matches] = GetParam();
    EXPECT_EQ(NamePattern(pattern, 1252).Matches(name), matches) << pattern << " against " << name;
}

INSTANTIATE_TEST_SUITE_P(
    NamePattern, NamePatternCases,
    ::testing::Values(
        PatternCase{"*", "anything.at.all", true}, PatternCase{"*.*", "name", true}, PatternCase{"*.*", ".", true},
        PatternCase{"*.inf", "oem1.INF", true}, PatternCase{"*.inf", "oem1.inf.bak", false},
        PatternCase{"*.inf", "inf", false}, PatternCase{"*.inf", "a.b.inf", true}, PatternCase{"*.inf", ".inf", true},
        PatternCase{"oem*.inf", "oem.inf", true}, PatternCase{"oem*.inf", "oem12.inf", true},
        PatternCase{"oem*.inf", "xoem12.inf", false}, PatternCase{"o*m*", "oem", true},
        PatternCase{"o*x*", "oem", false}, PatternCase{"?", "a", true}, PatternCase{"?", "ab", false},
        PatternCase{"?", ".", false}, PatternCase{"??", "a", true}, PatternCase{"file?.txt", "file.txt", true},
        PatternCase{"file?.txt", "file1.txt", true}, PatternCase{"file?.txt", "file12.txt", false},
        PatternCase{"?ile.txt", "ile.txt", false}, PatternCase{"name.*", "name", true},
        PatternCase{"name.*", "name.x", true}, PatternCase{"name.?", "name", true},
        PatternCase{"name.?", "name.xy", false}, PatternCase{"*.", "name", true}, PatternCase{"*.", "name.x", false},
        PatternCase{"name.", "name", true}, PatternCase{"name", "NAME", true}, PatternCase{"name", "names", false},
        PatternCase{"\xE9*", "\xC9t\xE9", true}, PatternCase{"*a*a*a*a*b", "aaaaaaaaaaaaaaaaaaaaaaaa", false}));

TEST(NamePattern, AQuestionMarkStandsForOneDoubleByteCharacter) {
    EXPECT_TRUE(NamePattern("?.txt", 932).Matches("\x95\x5C.txt"));
    EXPECT_FALSE(NamePattern("?.txt", 932).Matches("\x95\x5C\x95\x5C.txt"));
}

TEST(NamePattern, IsToldByItsCharacters) {
    EXPECT_TRUE(IsPattern("*.inf"));
    EXPECT_TRUE(IsPattern("a?b"));
    EXPECT_FALSE(IsPattern("a.inf"));
}

class JoinedPath : public testing_support::MachineTest {};

TEST_F(JoinedPath, ABackslashThatIsATrailByteIsNone) {
    SystemDescription japanese = Machine().System();
    japanese.codePage = 932;
    Machine().SetSystem(japanese);
    EXPECT_EQ(JoinPath(Machine(), "C:\\\x95\x5C", "a"), "C:\\\x95\x5C\\a");
    EXPECT_EQ(JoinPath(Machine(), "C:\\x\\", "\\a"), "C:\\x\\a");
    EXPECT_EQ(JoinPath(Machine(), "", "a"), "a");
    EXPECT_EQ(JoinPath(Machine(), "C:\\x", ""), "C:\\x");
}

}  // namespace
}  // namespace pikel::simulated
