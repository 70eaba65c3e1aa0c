// Splitting of delimited texts.
#include "frame/string_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace pikel {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

struct SplitCase {
    const char* text;
    char delimiter;
    std::vector<std::string> elements;
};

class StringListSplitting : public ::testing::TestWithParam<SplitCase> {};

TEST_P(StringListSplitting, KeepsEveryElementAsItStands) {
    const SplitCase& c = GetParam();
    EXPECT_THAT(StringList(c.text, c.delimiter), ElementsAreArray(c.elements));
}

TEST_P(StringListSplitting, GivesTheSameForATextObject) {
    const SplitCase& c = GetParam();
    EXPECT_THAT(StringList(std::string(c.text), c.delimiter), ElementsAreArray(c.elements));
}

INSTANTIATE_TEST_SUITE_P(Texts, StringListSplitting,
                         ::testing::Values(SplitCase{"", ',', {}}, SplitCase{"a", ',', {"a"}},
                                           SplitCase{"a,b", ',', {"a", "b"}}, SplitCase{"a,,b", ',', {"a", "", "b"}},
                                           SplitCase{"a,", ',', {"a", ""}}, SplitCase{",", ',', {"", ""}},
                                           SplitCase{",a", ',', {"", "a"}}, SplitCase{" a , b ", ',', {" a ", " b "}},
                                           SplitCase{"\"a,b\",c", ',', {"\"a", "b\"", "c"}},
                                           SplitCase{"5.2.3790.0", '.', {"5", "2", "3790", "0"}},
                                           SplitCase{"MON.DLL/UI.DLL/", '/', {"MON.DLL", "UI.DLL", ""}},
                                           // The trail byte of a double-byte character splits like any other byte.
                                           SplitCase{"\x83\x5C,x", '\\', {"\x83", ",x"}}));

TEST(StringList, OfANullTextIsEmptyAndKnowsItsDelimiter) {
    const StringList list(static_cast<const char*>(nullptr), ';');
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.Delimiter(), ';');
}

TEST(StringList, TakesTextsBehindTheSplitOnes) {
    StringList list("b,a", ',');
    list.Append("c");
    EXPECT_THAT(list, ElementsAre("b", "a", "c"));
    EXPECT_EQ(list.size(), 3u);
    EXPECT_EQ(list[2], "c");
}

TEST(StringList, SortsByByteValueAndDropsEqualTexts) {
    StringList list("b,\xE4,B,a,b,,a", ',');
    list.SortUnique();
    EXPECT_THAT(list, ElementsAre("", "B", "a", "b", "\xE4"));
}

TEST(StringList, IsEmptyOnceCleared) {
    StringList list("a,b", ',');
    list.Clear();
    EXPECT_THAT(list, IsEmpty());
}

TEST(StringList, GivesItsFirstTextOrAnEmptyOne) {
    EXPECT_EQ(StringList("a,b", ',').FrontOrEmpty(), "a");
    EXPECT_EQ(StringList("", ',').FrontOrEmpty(), "");
}

TEST(StringList, SplitsAMillionElementsInOnePass) {
    const std::string text(1'000'000, ',');
    EXPECT_EQ(StringList(text, ',').size(), 1'000'001u);
}

}  // namespace
}  // namespace pikel
