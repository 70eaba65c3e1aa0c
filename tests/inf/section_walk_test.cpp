// What the section classes share: the walk over a section.
#include "inf/section_walk.h"

#include "support/inf_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

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
