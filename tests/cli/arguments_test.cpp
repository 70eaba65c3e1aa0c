// The reading of arguments, over a small table of commands of its own.
#include "cli/arguments.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace pikel::cli {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

struct Values {
    bool json = false;
    std::string file;
    std::string system = "xp";
    std::string processor;
    std::vector<std::string> profiles;
    std::optional<std::string> comment;
    std::optional<DWORD> priority;
    DWORD depth = 1;
    bool keep = true;
};

class Arguments : public ::testing::Test {
  protected:
    Command Make() {
        return {"make",
                "Make a thing",
                {{"FILE", &values.file, "What to make it from", Need::Required},
                 {.name = "--system", .value = &values.system, .help = "For this system", .showsDefault = true},
                 {.name = "--processor",
                  .value = &values.processor,
                  .help = "For this processor",
                  .choices = {"x86", "x64"},
                  .group = "For experts"},
                 {"--profile", &values.profiles, "May be given several times"},
                 {.name = "--comment", .value = &values.comment, .help = "A remark", .word = "REMARK"},
                 {"--priority", &values.priority, "Its priority"},
                 {.name = "--depth", .value = &values.depth, .help = "Levels", .range = NumberRange{1, 8}},
                 {.name = "--drop", .value = &values.keep, .help = "Keep nothing", .clears = true}},
                [this] { ran += "make "; }};
    }

    /// Runs `tool ARGUMENTS...`.
    int Run(std::vector<const char*> arguments) {
        CommandLine line = {
            "tool",
            "Makes things",
            "tool 7",
            "The end.",
            {{"--json", &values.json, "As JSON"}},
            {{"thing", "Things", {}, nullptr, {Make(), {"fail", "Fail", {}, [] { throw std::runtime_error("no"); }}}},
             {"look", "Look around", {}, [this] { ran += "look "; }}}};
        arguments.insert(arguments.begin(), "tool");
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        struct Captured {
            Arguments& test;
            ~Captured() {
                test.output = ::testing::internal::GetCapturedStdout();
                test.errors = ::testing::internal::GetCapturedStderr();
            }
        } captured{*this};
        return RunCommandLine(line, static_cast<int>(arguments.size()), arguments.data());
    }

    Values values;
    std::string ran;
    std::string output;
    std::string errors;
};

TEST_F(Arguments, ReachTheValuesOfTheirOptions) {
    EXPECT_EQ(Run({"thing", "make", "a.inf", "--system", "2000", "--processor", "x64", "--profile", "a", "--profile",
                   "b", "--comment", "c", "--priority", "9", "--depth", "8"}),
              0);
    EXPECT_EQ(ran, "make ");
    EXPECT_EQ(values.file, "a.inf");
    EXPECT_EQ(values.system, "2000");
    EXPECT_EQ(values.processor, "x64");
    EXPECT_THAT(values.profiles, ElementsAre("a", "b"));
    EXPECT_EQ(values.comment, "c");
    EXPECT_EQ(values.priority, 9u);
    EXPECT_EQ(values.depth, 8u);
    EXPECT_FALSE(values.json);
    EXPECT_TRUE(values.keep);
}

TEST_F(Arguments, ThatAreNotGivenLeaveTheValues) {
    EXPECT_EQ(Run({"thing", "make", "a.inf"}), 0);
    EXPECT_EQ(values.system, "xp");
    EXPECT_EQ(values.comment, std::nullopt);
    EXPECT_EQ(values.priority, std::nullopt);
    EXPECT_EQ(values.depth, 1u);
    EXPECT_TRUE(values.keep);
}

TEST_F(Arguments, EmptyOptionDiffersFromOneThatIsNotGiven) {
    EXPECT_EQ(Run({"thing", "make", "a.inf", "--comment", ""}), 0);
    EXPECT_EQ(values.comment, "");
}

TEST_F(Arguments, FlagMayClearItsValue) {
    EXPECT_EQ(Run({"thing", "make", "a.inf", "--drop"}), 0);
    EXPECT_FALSE(values.keep);
}

TEST_F(Arguments, OptionsOfTheWholeLineCountInFrontAndBehind) {
    EXPECT_EQ(Run({"--json", "look"}), 0);
    EXPECT_TRUE(values.json);
    values.json = false;
    EXPECT_EQ(Run({"thing", "make", "a.inf", "--json"}), 0);
    EXPECT_TRUE(values.json);
    EXPECT_EQ(ran, "look make ");
}

TEST_F(Arguments, WrongUsageRunsNothingAndGives2) {
    const std::vector<std::vector<const char*>> wrong = {
        {},
        {"nonsense"},
        {"look", "--nonsense"},
        {"look", "around"},
        {"thing"},
        {"thing", "break"},
        {"thing", "make"},
        {"thing", "make", "a.inf", "b.inf"},
        {"thing", "make", "a.inf", "--comment"},
        {"thing", "make", "a.inf", "--processor", "ppc"},
        {"thing", "make", "a.inf", "--priority", "high"},
        {"thing", "make", "a.inf", "--priority", "-1"},
        {"thing", "make", "a.inf", "--depth", "0"},
        {"thing", "make", "a.inf", "--depth", "9"},
    };
    for (const std::vector<const char*>& arguments : wrong) {
        SCOPED_TRACE(arguments.empty() ? "no arguments" : arguments.back());
        EXPECT_EQ(Run(arguments), 2);
        EXPECT_EQ(output, "");
        EXPECT_THAT(errors, Not(IsEmpty()));
    }
    EXPECT_EQ(ran, "");
}

TEST_F(Arguments, HelpAndVersionRunNothing) {
    EXPECT_EQ(Run({"--version"}), 0);
    EXPECT_EQ(output, "tool 7\n");
    EXPECT_EQ(Run({"--help"}), 0);
    EXPECT_THAT(output, AllOf(HasSubstr("Makes things"), HasSubstr("--json"), HasSubstr("Look around")));
    EXPECT_EQ(Run({"thing", "--help"}), 0);
    EXPECT_THAT(output, AllOf(HasSubstr("make"), HasSubstr("The end.")));
    EXPECT_EQ(ran, "");
    EXPECT_EQ(errors, "");
}

TEST_F(Arguments, HelpSaysWhatTheTableSays) {
    EXPECT_EQ(Run({"thing", "make", "--help"}), 0);
    EXPECT_THAT(output,
                AllOf(HasSubstr("FILE TEXT REQUIRED"), HasSubstr("--system TEXT=xp"), HasSubstr("--profile TEXT ..."),
                      HasSubstr("--comment REMARK"), HasSubstr("--priority UINT "), HasSubstr("[1 - 8]")));
    EXPECT_THAT(output, HasSubstr("For experts:\n  --processor TEXT:{x86,x64}"));
}

TEST_F(Arguments, WhatACommandThrowsComesThrough) {
    EXPECT_THROW(Run({"thing", "fail"}), std::runtime_error);
}

TEST_F(Arguments, KindOfAnOptionFollowsFromItsValue) {
    const Command make = Make();
    std::vector<OptionKind> kinds;
    std::vector<std::string_view> words;
    for (const Option& option : make.options) {
        kinds.push_back(option.Kind());
        words.push_back(option.ValueWord());
        EXPECT_EQ(option.IsPositional(), option.name == "FILE");
    }
    using enum OptionKind;
    EXPECT_THAT(kinds, ElementsAre(Text, Text, Text, Texts, Text, Number, Number, Flag));
    EXPECT_THAT(words, ElementsAre("TEXT", "TEXT", "TEXT", "TEXT", "REMARK", "UINT", "UINT", ""));
    EXPECT_FALSE(make.IsNoun());
}

}  // namespace
}  // namespace pikel::cli
