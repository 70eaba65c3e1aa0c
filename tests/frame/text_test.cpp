// Small text helpers of the active code page.
#include "frame/text.h"

#include <string>
#include <vector>

#include "support/machine_test.h"

namespace pikel {
namespace {

using ::testing::ElementsAre;
using testing_support::MachineTest;
using testing_support::TestMachine;

std::vector<std::string> Texts(LPCSTR lpszTexts) {
    std::vector<std::string> texts;
    for (LPCSTR lpszText : MultiString(lpszTexts)) {
        texts.emplace_back(lpszText);
    }
    return texts;
}

TEST(MultiString, WalksUpToTheEmptyText) {
    EXPECT_THAT(Texts("A.DLL\0B.DLL\0\0C.DLL\0"), ElementsAre("A.DLL", "B.DLL"));
    EXPECT_THAT(Texts("A.DLL\0"), ElementsAre("A.DLL"));
    EXPECT_THAT(Texts("\0"), ::testing::IsEmpty());
    EXPECT_THAT(Texts(nullptr), ::testing::IsEmpty());
}

TEST(EmptyText, IsNullOrWithoutACharacter) {
    EXPECT_TRUE(IsEmpty(nullptr));
    EXPECT_TRUE(IsEmpty(""));
    EXPECT_FALSE(IsEmpty(" "));
    EXPECT_STREQ(TextOrEmpty(nullptr), "");
    EXPECT_STREQ(TextOrEmpty("x"), "x");
}

TEST(CopyIfFits, NeedsRoomForTheNul) {
    char buffer[8] = "???????";
    EXPECT_FALSE(CopyIfFits("abcd", buffer, 4));
    EXPECT_STREQ(buffer, "???????");
    EXPECT_TRUE(CopyIfFits("abcd", buffer, 5));
    EXPECT_STREQ(buffer, "abcd");
    EXPECT_EQ(buffer[5], '?');
}

TEST(CopyIfFits, RefusesNoBufferAndNoRoom) {
    char buffer[2] = "?";
    EXPECT_FALSE(CopyIfFits("", nullptr, 10));
    EXPECT_FALSE(CopyIfFits("", buffer, 0));
    EXPECT_STREQ(buffer, "?");
    EXPECT_TRUE(CopyIfFits("", buffer, 1));
    EXPECT_STREQ(buffer, "");
}

class TextConversion : public MachineTest {
  protected:
    static std::u16string Taken(BSTR text) {
        OwnedBstr owned(text);
        return text == nullptr ? u"<null>" : std::u16string(text, Platform().SysStringLen(text));
    }
};

TEST_F(TextConversion, GivesWideTextOfTheActiveCodePage) {
    EXPECT_EQ(ToWide("M\xFCnchen"), u"M\u00FCnchen");
    EXPECT_EQ(ToWide(""), u"");
    EXPECT_EQ(ToWide(std::string_view("ab", 1)), u"a") << "the view's length counts, not a NUL";
}

TEST_F(TextConversion, GivesABstrOfItsOwnLength) {
    EXPECT_EQ(Taken(ToBstr("\x80 5")), u"\u20AC 5");
}

TEST_F(TextConversion, GivesAnEmptyBstrAndNotNullForAnEmptyText) {
    EXPECT_EQ(Taken(ToBstr("")), u"");
}

TEST_F(TextConversion, GivesANullBstrWithoutMemory) {
    faults::FailCall("SysAllocStringLen", 1, 0);
    EXPECT_EQ(ToBstr("x"), nullptr);
}

TEST_F(TextConversion, GivesAnEmptyTextWhenTheSystemCanNotConvert) {
    faults::FailCall("MultiByteToWideChar", 1, ERROR_NO_UNICODE_TRANSLATION);
    EXPECT_EQ(ToWide("x"), u"");
    faults::FailCall("MultiByteToWideChar", 2, ERROR_NO_UNICODE_TRANSLATION);
    EXPECT_EQ(ToWide("x"), u"");
}

TEST_F(TextConversion, ComparesWithoutRegardToCase) {
    EXPECT_TRUE(EqualNoCase("PRINTER", "printer"));
    EXPECT_FALSE(EqualNoCase("PRINTER", "printer "));
}

TEST(TextConversionInJapanese, TakesTwoBytesForACharacter) {
    simulated::SystemDescription system = *simulated::FindSystem("xp");
    system.codePage = 932;
    TestMachine machine(system);
    EXPECT_EQ(ToWide("\x83\x5C\xB1"), u"\u30BD\uFF71");
}

}  // namespace
}  // namespace pikel
