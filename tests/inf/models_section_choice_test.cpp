// The choice of a models section for one line of [Manufacturer].
#include <gtest/gtest.h>

#include "inf/manufacturer_section.h"
#include "support/inf_test.h"

namespace pikel {
namespace {

using namespace testing_support;

struct ChoiceCase {
    const char* line;
    DWORD major;
    DWORD minor;
    const char* chosen;
};

void PrintTo(const ChoiceCase& c, std::ostream* out) {
    *out << '"' << c.line << "\" for " << c.major << '.' << c.minor;
}

class ModelsSectionChoice : public ::testing::TestWithParam<ChoiceCase> {};

TEST_P(ModelsSectionChoice, TakesTheNearestVersionThatIsNotNewer) {
    const ChoiceCase& c = GetParam();
    for (DWORD processor : {0u, 1u, 2u, 3u, 4u, 5u, 8664u}) {
        EXPECT_EQ(CInfManufacturerSection::GetBestModelsSection(StringList(c.line, ','), processor, c.major, c.minor),
                  c.chosen)
            << "processor " << processor;
    }
}

const ChoiceCase kWorkedRows[] = {
    {"S", 5, 1, "S"},
    {"S,NTx86.5.1", 5, 1, "S.NTx86.5.1"},
    {"S,NTx86.5.1,NTamd64.5.1", 5, 1, "S.NTamd64.5.1"},
    {"S,NTx86.6.0", 5, 1, "S"},
    {"S,NTx86", 5, 1, "S.NTx86"},
    {"S,NTx86,NTamd64", 5, 1, "S.NTamd64"},
    {"S,NT.5.0,NTx86", 5, 1, "S.NT.5.0"},
    {"S,NT.5.0,NT.5.1", 5, 1, "S.NT.5.1"},
    {"S,NT.5.1,NT.5.0", 5, 1, "S.NT.5.1"},
};
INSTANTIATE_TEST_SUITE_P(For51, ModelsSectionChoice, ::testing::ValuesIn(kWorkedRows));

std::vector<ChoiceCase> WorkedRowsBefore51() {
    std::vector<ChoiceCase> cases;
    for (const ChoiceCase& row : kWorkedRows) {
        for (auto [major, minor] : {std::pair<DWORD, DWORD>{5, 0}, {4, 0}, {4, 90}, {0, 0}, {4, 255}}) {
            cases.push_back({row.line, major, minor, "S"});
        }
    }
    return cases;
}
INSTANTIATE_TEST_SUITE_P(DecorationsNeverCountBefore51, ModelsSectionChoice, ::testing::ValuesIn(WorkedRowsBefore51()));

// The distance is that of the combined numbers, not part by part.
const ChoiceCase kNearest[] = {
    {"S,NT.5.2,NT.5.0", 6, 0, "S.NT.5.2"},        {"S,NT.5.0,NT.5.2", 6, 0, "S.NT.5.2"},
    {"S,NT.5.1,NT.6.0", 6, 0, "S.NT.6.0"},        {"S,NT.5.1", 6, 0, "S.NT.5.1"},
    {"S,NT.5.255,NT.6.0", 6, 1, "S.NT.6.0"},      {"S,NT.6.0,NT.5.255", 6, 1, "S.NT.6.0"},
    {"S,NT.6.0,NT.6.2,NT.6.1", 6, 1, "S.NT.6.1"}, {"S,NT.1.0,NT.2.0,NT.1.1", 5, 1, "S.NT.2.0"},
};
INSTANTIATE_TEST_SUITE_P(Nearest, ModelsSectionChoice, ::testing::ValuesIn(kNearest));

const ChoiceCase kTies[] = {
    {"S,NTamd64.5.1,NTx86.5.1", 5, 1, "S.NTx86.5.1"},
    {"S,NTamd64.5.1,NTia64.5.1,NTx86.5.1", 6, 0, "S.NTx86.5.1"},
    {"S,NTx86.5.1.1,NTx86.5.1.2", 5, 1, "S.NTx86.5.1.2"},
    {"S,NTx86.5.2,NTia64.5.2,NTamd64.5.2,NTx86.5.1", 5, 2, "S.NTamd64.5.2"},
};
INSTANTIATE_TEST_SUITE_P(TheLaterFieldWinsATie, ModelsSectionChoice, ::testing::ValuesIn(kTies));

const ChoiceCase kBare[] = {
    {"S,NTx86,NT.5.0", 5, 1, "S.NT.5.0"},
    {"S,NT.5.0,NTx86,NTamd64", 5, 1, "S.NT.5.0"},
    {"S,NTx86,NT.6.0", 5, 1, "S.NTx86"},
    {"S,NT.6.0,NTx86", 5, 1, "S.NTx86"},
    {"S,NT.6.0,NTx86,NTamd64,NT.6.1", 5, 1, "S.NTamd64"},
    {"S,NTx86,NT.0.0", 5, 1, "S.NT.0.0"},
    {"S,NT.6.0,NT.7.0", 5, 1, "S"},
};
INSTANTIATE_TEST_SUITE_P(AVersionBeatsABareDecoration, ModelsSectionChoice, ::testing::ValuesIn(kBare));

const ChoiceCase kForms[] = {
    // The name is written as the field is, with its case and any third number.
    {"S,nTaMd64.5.1.3.foo", 5, 1, "S.nTaMd64.5.1.3.foo"},
    // A dot at the end: version 0.
    {"S,NTx86.", 5, 1, "S.NTx86."},
    {"S,NTx86.,NT.5.0", 5, 1, "S.NT.5.0"},
    {"S,NT.5.0,NTx86.", 5, 1, "S.NT.5.0"},
    {"S,NT.5.", 5, 1, "S.NT.5."},
    {"S,NT.5.,NT.5.1", 5, 1, "S.NT.5.1"},
    // A dot at the front: no architecture, and what is behind it the version.
    {"S,.5.1", 5, 1, "S..5.1"},
    {"S,NT.5.0,.5.1", 5, 1, "S..5.1"},
    {"S,.5.1,NT.5.0", 5, 1, "S..5.1"},
    {"S,.5.2", 5, 1, "S"},
    {"S,.", 5, 1, "S.."},
    {"S,..", 5, 1, "S..."},
    {"S,..1", 5, 1, "S...1"},
    // The major alone.
    {"S,NT.5", 5, 1, "S.NT.5"},
    {"S,NT.6", 5, 1, "S"},
    {"S,NT.5,NT.5.0", 5, 1, "S.NT.5.0"},
    {"S,NT.5.0,NT.5", 5, 1, "S.NT.5"},
    // Parts that are no number count 0.
    {"S,NTx86.a.b", 5, 1, "S.NTx86.a.b"},
    {"S,NTx86.a.b,NTx86.0.1", 5, 1, "S.NTx86.0.1"},
    {"S,NTx86.0.1,NTx86.a.b", 5, 1, "S.NTx86.0.1"},
    {"S,NT.5x.1y", 5, 1, "S.NT.5x.1y"},
    // Numbers beyond a byte are cut: 261 is 5, 257 is 1; and so are those of the system.
    {"S,NT.261.257", 5, 1, "S.NT.261.257"},
    {"S,NT.5.258", 5, 1, "S"},
    {"S,NT.5.1", 261, 257, "S.NT.5.1"},
    {"S,NT.5.2", 261, 257, "S"},
    {"S,NTx86.5.1", 256, 0, "S"},
    {"S,NT.6.0", 6, 256, "S.NT.6.0"},
    {"S,NT.-1.0", 6, 0, "S"},
    {"S,NT.0.-1", 6, 0, "S.NT.0.-1"},
    // Empty fields are passed over.
    {"S,,NT.5.1,", 5, 1, "S.NT.5.1"},
    {"S,", 5, 1, "S"},
    {"S,,", 5, 1, "S"},
    // Lines without a name, or without anything.
    {"", 5, 1, ""},
    {",", 5, 1, ""},
    {",NTx86.5.1", 5, 1, ".NTx86.5.1"},
    {",NTx86.5.1", 5, 0, ""},
    // No decoration at all.
    {"A.B", 5, 1, "A.B"},
    {"A.B", 6, 0, "A.B"},
    {"A.B", 4, 0, "A.B"},
    {"A.9.9,NT.5.1", 5, 1, "A.9.9.NT.5.1"},
    // Newer than 5.1, though written for one processor.
    {"S,NTamd64.5.2", 5, 1, "S"},
};
INSTANTIATE_TEST_SUITE_P(Forms, ModelsSectionChoice, ::testing::ValuesIn(kForms));

// ---- the log --------------------------------------------------------------------------------------------------------

class ModelsSectionChoiceLog : public MachineTest {
  protected:
    LogLines Choose(const char* line, DWORD major, DWORD minor) {
        Test().TurnLogOn(1);
        CInfManufacturerSection::GetBestModelsSection(StringList(line, ','), 0, major, minor);
        return Test().TakeLog();
    }
};

TEST_F(ModelsSectionChoiceLog, TellsTheCountAsADecimalNumber) {
    const LogLines expected = {"\tcsvManufacturer.size() = 1", "\tstrMfgFront = S", "\tMAKELONG:dwVersion = 501",
                               "\tdwMinDiffInVersion = ffffffff"};
    EXPECT_EQ(Choose("S", 5, 1), expected);
    const LogLines many = Choose("S,,,,,,,,,,,", 5, 1);
    ASSERT_FALSE(many.empty());
    EXPECT_EQ(many[0], "\tcsvManufacturer.size() = 12");
}

TEST_F(ModelsSectionChoiceLog, IsEmptyForAnEmptyLine) {
    EXPECT_EQ(Choose("", 5, 1), LogLines());
}

TEST_F(ModelsSectionChoiceLog, EndsBeforeTheDecorationsForAnOlderSystem) {
    const LogLines expected = {"\tcsvManufacturer.size() = 3", "\tstrMfgFront = S", "\tMAKELONG:dwVersion = 500",
                               "\tdwMinDiffInVersion = ffffffff"};
    EXPECT_EQ(Choose("S,NTx86,NT.5.0", 5, 0), expected);
}

TEST_F(ModelsSectionChoiceLog, FollowsEveryDecoration) {
    const LogLines expected = {
        "\tcsvManufacturer.size() = 11",
        "\tstrMfgFront = S",
        "\tMAKELONG:dwVersion = 60a",
        "\tdwMinDiffInVersion = ffffffff",
        // NTx86: bare
        "\tstrBestRet = S.NTx86",
        // NT.5: the major alone
        "\tstrArchitecture = NT",
        "\tMajor = 5",
        "\tMAKELONG:dwVer = 500",
        "\tdwMinDiffInVersion = 10a",
        "\tstrBestRet = S.NT.5",
        // NTamd64: a bare one after a versioned one is not told of
        // NT.6.11: newer
        "\tstrArchitecture = NT",
        "\tMajor = 6, Minor = 11",
        "\tMAKELONG:dwVer = 60b",
        // NTia64.4.0.1: farther away
        "\tstrArchitecture = NTia64",
        "\tMajor = 4, Minor = 0",
        "\tMAKELONG:dwVer = 400",
        // NTx86.: ends in its dot
        "\tstrArchitecture = NTx86",
        "\tMajor = 0",
        "\tMAKELONG:dwVer = 0",
        // .6.1: no architecture
        "\tstrArchitecture = ",
        "\tMajor = 6, Minor = 1",
        "\tMAKELONG:dwVer = 601",
        "\tdwMinDiffInVersion = 9",
        "\tstrBestRet = S..6.1",
        // NT.262.257: the numbers are told before they are cut
        "\tstrArchitecture = NT",
        "\tMajor = 262, Minor = 257",
        "\tMAKELONG:dwVer = 601",
        "\tdwMinDiffInVersion = 9",
        "\tstrBestRet = S.NT.262.257",
        // NT.-1.x
        "\tstrArchitecture = NT",
        "\tMajor = -1, Minor = 0",
        "\tMAKELONG:dwVer = ff00",
    };
    EXPECT_EQ(Choose("S,NTx86,NT.5,,NTamd64,NT.6.11,NTia64.4.0.1,NTx86.,.6.1,NT.262.257,NT.-1.x", 6, 10), expected);
}

}  // namespace
}  // namespace pikel
