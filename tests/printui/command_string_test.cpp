#include <cstring>
#include <string>

#include "frame/log.h"
#include "print_ui_probe.h"
#include "printui/run_dll32.h"

namespace pikel {

namespace {

using namespace testing_support;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr char kStart[] = "ConvertPrintUICommandString Start";

class CommandString : public MachineTest {
  protected:
    /// @return the out buffer, after a check that nothing was written behind its size
    std::string Convert(const std::string& text, DWORD expectedCode = 0, DWORD size = MAX_PRINTUI_TEXT) {
        char buffer[MAX_PRINTUI_TEXT + 100];
        std::memset(buffer, '#', sizeof buffer);
        EXPECT_EQ(ConvertPrintUICommandString(text.c_str(), buffer, size), expectedCode) << text;
        for (std::size_t i = size; i < sizeof buffer; ++i) {
            EXPECT_EQ(buffer[i], '#') << "byte " << i;
        }
        EXPECT_NE(std::memchr(buffer, '\0', size), nullptr) << text;
        buffer[size == 0 ? 0 : size - 1] = '\0';
        return buffer;
    }
};

TEST_F(CommandString, GetsABackslashAheadOfEachAtSignAndDoubleQuote) {
    struct Case {
        const char* text;
        const char* converted;
    };
    const Case cases[] = {
        {"", ""},
        {"Office", "Office"},
        {"C:\\drv\\a.inf", "C:\\drv\\a.inf"},
        {"a@b", "a\\@b"},
        {"@", "\\@"},
        {"@@", "\\@\\@"},
        {"\"", "\\\""},
        {"\"Office\"", "\\\"Office\\\""},
        {"\"\"", "\\\"\\\""},
        {"a\"b", "a\\\"b"},
        {"a\\\"b", "a\\\"b"},        // behind a backslash it stays
        {"\\\"", "\\\""},            // likewise at the front
        {"a\\\\\"b", "a\\\\\"b"},    // whatever stands before that
        {"a\\\"\"b", "a\\\"\\\"b"},  // the quote behind an escaped one doesn't
        {"a\\@b", "a\\\\@b"},        // an at-sign always gets one
        {"@\"", "\\@\\\""},
        {"\"@", "\\\"\\@"},
        {"\\", "\\"},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(Convert(one.text), one.converted);
    }
}

TEST_F(CommandString, ReadsCharactersOfTheCodePageWhole) {
    simulated::SystemDescription system = *simulated::FindSystem("xp");
    system.codePage = 932;
    Machine().SetSystem(system);
    // Trail bytes that look like a backslash and like an at-sign.
    EXPECT_EQ(Convert("\x95\x5c\""), "\x95\x5c\\\"");
    EXPECT_EQ(Convert("\x83\x40@"), "\x83\x40\\@");
}

TEST_F(CommandString, UsesTheActiveCodePageAndTheFullSizes) {
    ForgetCalls(Test());
    Convert("Office");
    EXPECT_THAT(TakeCallsOf(Test(), {"MultiByteToWideChar", "WideCharToMultiByte", "GlobalAlloc"}),
                ElementsAre("GlobalAlloc(0x40, 0x1040) = &", "GlobalAlloc(0x40, 0x1040) = &",
                            "MultiByteToWideChar(0x4e4, 0x0, &, 0xffffffff, &, 0x820) = 0x7",
                            "WideCharToMultiByte(0x4e4, 0x0, &, 0xffffffff, &, 0x208, null, null) = 0x7"));
}

TEST_F(CommandString, IsLoggedWithItsCode) {
    Test().TurnLogOn(1);
    Convert("Office");
    EXPECT_THAT(Test().TakeLog(), ElementsAre(kStart, "ConvertPrintUICommandString End(0x00000000)"));
    char buffer[MAX_PRINTUI_TEXT];
    EXPECT_EQ(ConvertPrintUICommandString(std::string(521, 'a').c_str(), buffer, sizeof buffer), 87u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(kStart, "ConvertPrintUICommandString End(0x00000057)"));
    faults::FailCall("GlobalAlloc", 1, 8);
    Convert("Office", 8);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(kStart, "ConvertPrintUICommandString End(0x00000008)"));
    Convert(std::string(519, '@'), 122);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(kStart, "ConvertPrintUICommandString End(0x0000007a)"));
}

TEST_F(CommandString, RefusesNullsAndALongText) {
    char buffer[MAX_PRINTUI_TEXT] = "before";
    ForgetCalls(Test());
    EXPECT_EQ(ConvertPrintUICommandString(nullptr, buffer, sizeof buffer), 87u);
    EXPECT_EQ(ConvertPrintUICommandString("a", nullptr, sizeof buffer), 87u);
    EXPECT_EQ(ConvertPrintUICommandString("a", buffer, 0), 87u);
    EXPECT_EQ(ConvertPrintUICommandString(std::string(521, 'a').c_str(), buffer, sizeof buffer), 87u);
    EXPECT_STREQ(buffer, "before");
    EXPECT_THAT(Test().TakeCalls(), IsEmpty());
}

TEST_F(CommandString, LongestTextThatConvertsHas519Bytes) {
    const std::string fits(519, 'a');
    EXPECT_EQ(Convert(fits), fits);
    // One more is taken as well, but leaves no room for its NUL.
    EXPECT_EQ(Convert(std::string(520, 'a'), 122), fits);
}

TEST_F(CommandString, ExpansionBeyondTheBufferLeavesTheUnconvertedText) {
    const std::string text = "@" + std::string(518, 'a');
    EXPECT_EQ(Convert(text.substr(1) + "@", 122), text.substr(1) + "@");
    EXPECT_EQ(Convert(text, 122), text);
    EXPECT_EQ(Convert(std::string(259, '@')).size(), 518u);
    EXPECT_EQ(Convert(std::string(519, '"'), 122), std::string(519, '"'));
}

TEST_F(CommandString, KeepsToASmallerBuffer) {
    EXPECT_EQ(Convert("Office", 0, 7), "Office");
    EXPECT_EQ(Convert("Office", 122, 6), "Offic");
    EXPECT_EQ(Convert("Office", 122, 1), "");
}

TEST_F(CommandString, StaysAsItIsWithoutMemory) {
    for (std::size_t nth : {1u, 2u}) {
        faults::FailCall("GlobalAlloc", nth, 8);
        EXPECT_EQ(Convert("a@b", 8), "a@b");
        EXPECT_EQ(Machine().Heap().OpenCount(), 0u);
        faults::Reset();
    }
}

TEST_F(CommandString, StaysAsItIsWhenItIsNoTextOfTheCodePage) {
    faults::FailCall("MultiByteToWideChar", 1, 1113);
    EXPECT_EQ(Convert("a@b", 1113), "a@b");
    EXPECT_EQ(Machine().Heap().OpenCount(), 0u);
    faults::FailCall("WideCharToMultiByte", 1, 1113);
    EXPECT_EQ(Convert("a@b", 1113), "a@b");
    EXPECT_EQ(Machine().Heap().OpenCount(), 0u);
}

TEST_F(CommandString, FailureWithoutACodeIsNoneForTheFirstConversion) {
    faults::FailCall("MultiByteToWideChar", 1, 0);
    EXPECT_EQ(Convert("a@b", 0), "");
    faults::FailCall("WideCharToMultiByte", 1, 0);
    EXPECT_EQ(Convert("a@b", 0), "a@b");
}

TEST_F(CommandString, KeepsToItsBlocksWhateverTheSystemWritesThere) {
    ReplacedOperations replaced;
    replaced.table.MultiByteToWideChar = [](UINT, DWORD, LPCSTR, int, LPWSTR out, int size) {
        std::fill(out, out + size, u'"');
        return size;
    };
    EXPECT_EQ(Convert("a", 122), "a");
}

}  // namespace

}  // namespace pikel
