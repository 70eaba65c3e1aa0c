#include "machine/printui/command.h"

#include <gmock/gmock.h>

namespace pikel::simulated {

namespace {

using Work = PrintUICommand::Work;

PrintUICommand Parsed(std::u16string_view text) {
    const std::optional<PrintUICommand> command = ParsePrintUICommand(text);
    EXPECT_TRUE(command.has_value());
    return command.value_or(PrintUICommand{});
}

TEST(PrintUICommandLine, NamesItsWork) {
    struct Case {
        std::u16string_view text;
        Work work;
    };
    for (const Case& one :
         {Case{u"/ia", Work::AddDriver}, Case{u"/if", Work::InstallPrinter}, Case{u"/dl", Work::DeletePrinter},
          Case{u"/dn", Work::DeleteConnection}, Case{u"/dd", Work::DeleteDriver}, Case{u"/Xs", Work::SetProperties}}) {
        EXPECT_EQ(Parsed(one.text).work, one.work);
    }
}

TEST(PrintUICommandLine, ValuesStandBehindTheSwitchOrInTheNextWord) {
    PrintUICommand expected;
    expected.work = Work::InstallPrinter;
    expected.printer = u"Office";
    expected.inf = u"C:\\drv\\a b.inf";
    expected.port = u"LPT1:";
    expected.model = u"Aurora Laser 500";
    expected.isQuiet = true;
    EXPECT_EQ(Parsed(u"/if /b\"Office\" /f\"C:\\drv\\a b.inf\" /r\"LPT1:\" /m\"Aurora Laser 500\" /q"), expected);
    EXPECT_EQ(Parsed(u"/if /b \"Office\" /f \"C:\\drv\\a b.inf\" /r LPT1: /m \"Aurora Laser 500\" /q"), expected);
    EXPECT_EQ(Parsed(u"\t /q  /mAurora\" Laser \"500 /rLPT1: /f\"C:\\drv\\a\"\" b.inf\"\t/b Office /if "), expected);
}

TEST(PrintUICommandLine, TakesEachSwitchByItsCase) {
    const PrintUICommand command = Parsed(u"/dd /m\"M\" /l\"C:\\\\x\" /n\"N\" /K /h\"Windows x64\" /v 3 /u /Z");
    PrintUICommand expected;
    expected.work = Work::DeleteDriver;
    expected.model = u"M";
    expected.folder = u"C:\\\\x";
    expected.name = u"N";
    expected.architecture = u"Windows x64";
    expected.version = u"3";
    expected.isPlainEnvironment = true;
    expected.usesPresentDriver = true;
    expected.isShared = true;
    EXPECT_EQ(command, expected);
    for (const char16_t* wrong : {u"/dd /k", u"/dd /Q", u"/dd /M\"x\"", u"/DD", u"/xs", u"/dd /B\"x\""}) {
        EXPECT_FALSE(ParsePrintUICommand(wrong).has_value());
    }
}

TEST(PrintUICommandLine, LastOfTwoOpposedSwitchesAndOfTwoValuesCounts) {
    EXPECT_TRUE(Parsed(u"/if /z /Z").isShared);
    EXPECT_FALSE(Parsed(u"/if /Z /z").isShared);
    EXPECT_EQ(Parsed(u"/dl /n\"A\" /n\"B\"").name, u"B");
}

TEST(PrintUICommandLine, BackslashTakesTheMeaningOfQuoteAndAtSignAlone) {
    struct Case {
        std::u16string_view value;
        std::u16string_view text;
    };
    for (const Case& one : {
             Case{u"\"a\\\"b\"", u"a\"b"},
             Case{u"a\\\"b", u"a\"b"},
             Case{u"\"\\@a\"", u"@a"},
             Case{u"\\@a", u"@a"},
             Case{u"\"a@b\"", u"a@b"},  // within a text it means nothing
             Case{u"\"\\\\server\\x\"", u"\\\\server\\x"},
             Case{u"\"a\\\\\"", u"a\\\""},  // a pair of backslashes is no pair
             Case{u"\"\"", u""},
             Case{u"a\\", u"a\\"},
         }) {
        const bool isOpen = one.value == u"\"a\\\\\"";
        const std::u16string line = u"/dl /n" + std::u16string(one.value) + (isOpen ? u"\"" : u"");
        EXPECT_EQ(Parsed(line).name, std::u16string(one.text));
    }
}

TEST(PrintUICommandLine, FreeWordsArePairsOfAPropertyCommand) {
    const PrintUICommand command = Parsed(u"/Xs /n\"Office\" ShareName \"/x y\" Comment \"\" /q");
    EXPECT_EQ(command.name, u"Office");
    EXPECT_THAT(command.properties,
                ::testing::ElementsAre(::testing::Pair(u"ShareName", u"/x y"), ::testing::Pair(u"Comment", u"")));
    EXPECT_FALSE(ParsePrintUICommand(u"/Xs /n\"Office\" ShareName").has_value());
    EXPECT_FALSE(ParsePrintUICommand(u"/dl /n\"Office\" ShareName x").has_value());
    EXPECT_TRUE(Parsed(u"/Xs /n\"Office\"").properties.empty());
}

TEST(PrintUICommandLine, IsRefusedWhenItIsNotWellFormed) {
    for (const char16_t* text : {
             u"",
             u" ",
             u"/q",
             u"/",
             u"/dl /",
             u"/dl/q",
             u"/dl /qq",
             u"/dlx",
             u"Office",
             u"/?",
             u"/dl /dn",
             u"/dl /dl",  // two kinds of work
             u"/dl /n\"Office",
             u"/dl /n \"",
             u"/Xs \"a\" \"b",  // quotes that aren't closed
             u"/dl /n",
             u"/dl /n /q",
             u"/dl /n  ",  // no value
             u"/dl @C:\\args.txt",
             u"@C:\\args.txt",
             u"/dl /n@args",
             u"/dl /n\"@args\"",
             u"/dl /n \"@args\"",
             u"/Xs /n\"a\" @key value",  // files of arguments
             u"/ia /x",
             u"/ib",
             u"/i",
             u"/d",
             u"/X",
         }) {
        EXPECT_FALSE(ParsePrintUICommand(text).has_value());
    }
}

TEST(PrintUICommandLine, KeepsNulsAndCharactersBeyondTheCodePage) {
    const std::u16string line(u"/dl /n\"\u3042\0b\"", 11);
    EXPECT_EQ(Parsed(line).name, std::u16string(u"\u3042\0b", 3));
}

}  // namespace

}  // namespace pikel::simulated
