// What the section classes share: numbers in INF text and the walk over a section.
#include "inf/section_walk.h"

#include "support/inf_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

TEST(NumberOfAText, IsReadAsAtoiReadsIt) {
    struct Case {
        const char* text;
        INT number;
    };
    const Case cases[] = {
        {"", 0},
        {"0", 0},
        {"90", 90},
        {"66000", 66000},
        {" \t\r\n\v\f7", 7},
        {"+5", 5},
        {"-1", -1},
        {"- 1", 0},
        {"--1", 0},
        {"+", 0},
        {"12x34", 12},
        {"x12", 0},
        {"1,2", 1},
        {"0x10", 0},
        {"2147483647", 2147483647},
        {"-2147483648", INT32_MIN},
        // More than an INT holds: the low 32 bits.
        {"4294967295", -1},
        {"4294967299", 3},
        {"99999999999999999999", 1661992959},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ParseNumber(c.text), c.number) << '"' << c.text << '"';
    }
}

constexpr char kText[] = R"(
[Version]
Signature="$Windows NT$"
[Lines]
b = 1
a = 2
c = 3
[Empty]
)";

class SectionWalk : public InfTest {};

TEST_F(SectionWalk, VisitsTheLinesInFileOrder) {
    HINF inf = Open(kText);
    std::vector<std::string> keys;
    EXPECT_EQ(WalkLines(inf, "Lines",
                        [&](INFCONTEXT& context) {
                            std::string key;
                            const DWORD status = GetInfField(context, 0, key);
                            keys.push_back(key);
                            return status;
                        }),
              0u);
    EXPECT_THAT(keys, ElementsAre("b", "a", "c"));
}

TEST_F(SectionWalk, EndsWithTheFirstVisitThatFails) {
    HINF inf = Open(kText);
    int visits = 0;
    EXPECT_EQ(WalkLines(inf, "Lines", [&](INFCONTEXT&) { return ++visits == 2 ? DWORD{1234} : DWORD{0}; }), 1234u);
    EXPECT_EQ(visits, 2);
    EXPECT_THAT(Test().TakeCallNames(), ElementsAre("SetupFindFirstLineA", "SetupFindNextLine"));
}

TEST_F(SectionWalk, ASectionWithoutLinesGivesTheLastError) {
    HINF inf = Open(kText);
    const auto visit = [](INFCONTEXT&) -> DWORD {
        ADD_FAILURE() << "there is no line";
        return 0;
    };
    EXPECT_EQ(WalkLines(inf, "Absent", visit), 0xE0000102u);
    EXPECT_EQ(WalkLines(inf, "Empty", visit), 0xE0000102u);
    faults::FailCall("SetupFindFirstLineA", 1, 1234);
    EXPECT_EQ(WalkLines(inf, "Lines", visit), 1234u);
}

}  // namespace
}  // namespace pikel
