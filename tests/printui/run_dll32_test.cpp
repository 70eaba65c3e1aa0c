#include "printui/run_dll32.h"

#include "frame/log.h"
#include "print_ui_probe.h"

namespace pikel {

namespace {

using namespace testing_support;
using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr char kLibrary[] = "C:\\rundll.dll";
constexpr char kEndOf87[] = "CRunDll32::CallEntry() End  res = 87";

std::string StartOf(const std::string& entry, const std::string& commandLine) {
    return "CRunDll32::CallEntry(" + entry + "," + commandLine + ") Start";
}

/// Names asked of GetProcAddress since the last look.
std::vector<std::string> TakeLookUps(TestMachine& test) {
    std::vector<std::string> names;
    for (const std::string& call : TakeCallsOf(test, {"GetProcAddress"})) {
        const std::size_t begin = call.find('"') + 1;
        names.push_back(call.substr(begin, call.find('"', begin) - begin));
    }
    return names;
}

class RunDll : public MachineTest {
  protected:
    /// Registers a library with exports and loads it.
    void Load(CRunDll32& runDll, Exports exports, const char* path = kLibrary) {
        g_entries = {};
        Machine().Modules().Register(path, std::move(exports));
        ASSERT_EQ(runDll.Load(path), 0u);
        ForgetCalls(Test());
    }
};

// ---- arguments ------------------------------------------------------------------------------------------------------

TEST_F(RunDll, CallsNothingWithoutALibrary) {
    CRunDll32 runDll;
    Test().TurnLogOn(1);
    EXPECT_EQ(runDll.CallEntry(nullptr, "Entry", "/x", 0), 87u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(StartOf("Entry", "/x"), "NULL check", kEndOf87));
}

TEST_F(RunDll, RefusesANullEntryAndANullCommandLine) {
    CRunDll32 runDll;
    Load(runDll, {{"EntryW", WideEntry()}});
    Test().TurnLogOn(1);
    EXPECT_EQ(runDll.CallEntry(nullptr, nullptr, "/x", 0), 87u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(StartOf("(null)", "/x"), "NULL check", kEndOf87));
    EXPECT_EQ(runDll.CallEntry(nullptr, "Entry", nullptr, 0), 87u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(StartOf("Entry", "(null)"), "NULL check", kEndOf87));
    EXPECT_THAT(g_entries.calls, IsEmpty());
}

TEST_F(RunDll, TakesAnEntryNameOf256CharactersAndNoLongerOne) {
    const std::string longest(MAX_ENTRY_LENGTH, 'e');
    for (const auto& [suffix, entry] : {std::pair("W", WideEntry()), std::pair("A", NarrowEntry())}) {
        CRunDll32 runDll;
        Load(runDll, {{longest + suffix, entry}, {longest + "e" + suffix, entry}});
        EXPECT_EQ(runDll.CallEntry(nullptr, longest.c_str(), "/x", 0), 0u);
        EXPECT_EQ(g_entries.calls.size(), 1u);
        Test().TurnLogOn(1);
        const std::string tooLong = longest + "e";
        EXPECT_EQ(runDll.CallEntry(nullptr, tooLong.c_str(), "/x", 0), 87u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(StartOf(tooLong, "/x"), "MAX_ENTRY_LENGTH over", kEndOf87));
        EXPECT_EQ(g_entries.calls.size(), 1u);
        ResetLog();
    }
}

TEST_F(RunDll, TakesACommandLineOf2048CharactersAndNoLongerOne) {
    const std::string longest(MAX_COMMANDLINE_LENGTH, 'c');
    for (const auto& [name, entry] : {std::pair("EntryW", WideEntry()), std::pair("EntryA", NarrowEntry())}) {
        CRunDll32 runDll;
        Load(runDll, {{name, entry}});
        EXPECT_EQ(runDll.CallEntry(nullptr, "Entry", longest.c_str(), 0), 0u);
        ASSERT_EQ(g_entries.calls.size(), 1u);
        EXPECT_EQ(g_entries.calls[0].commandLine, longest);
        Test().TurnLogOn(1);
        EXPECT_EQ(runDll.CallEntry(nullptr, "Entry", (longest + "c").c_str(), 0), 87u);
        const std::vector<std::string> log = Test().TakeLog();
        ASSERT_EQ(log.size(), 3u);
        EXPECT_THAT(log[0], StartsWith("CRunDll32::CallEntry(Entry,ccc"));  // cut, as every long line
        EXPECT_EQ(log[1], "MAX_COMMANDLINE_LENGTH over");
        EXPECT_EQ(log[2], kEndOf87);
        EXPECT_EQ(g_entries.calls.size(), 1u);
        ResetLog();
    }
}

TEST_F(RunDll, LongestCommandLineLeavesTheCodeOfItsConversionBehind) {
    // It doesn't convert with its NUL; an entry that sets no last error leaves 122 for the result.
    CRunDll32 runDll;
    Load(runDll, {{"EntryW", WideEntry()}});
    g_entries.outcomes = {std::nullopt, std::nullopt};
    simulated::lastError = 77;
    EXPECT_EQ(runDll.CallEntry(nullptr, "Entry", std::string(MAX_COMMANDLINE_LENGTH, 'c').c_str(), 0), 122u);
    simulated::lastError = 77;
    EXPECT_EQ(runDll.CallEntry(nullptr, "Entry", std::string(MAX_COMMANDLINE_LENGTH - 1, 'c').c_str(), 0), 77u);
}

// ---- forms of an entry ----------------------------------------------------------------------------------------------

TEST_F(RunDll, TakesTheWideFormFirstThenTheNarrowOneThenTheBareName) {
    struct Case {
        Exports exports;
        const char* form;
        std::vector<std::string> lookUps;
    };
    const Case cases[] = {
        {{{"EntryW", WideEntry()}, {"EntryA", NarrowEntry()}, {"Entry", NarrowEntry()}}, "W", {"EntryW"}},
        {{{"EntryA", NarrowEntry()}, {"Entry", WideEntry()}}, "A", {"EntryW", "EntryA"}},
        {{{"Entry", NarrowEntry()}}, "A", {"EntryW", "EntryA", "Entry"}},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.lookUps.back());
        CRunDll32 runDll;
        Load(runDll, one.exports);
        auto* window = reinterpret_cast<HWND>(0x1234);
        EXPECT_EQ(runDll.CallEntry(window, "Entry", "/dl /n\"Office\"", 5), 0u);
        ASSERT_EQ(g_entries.calls.size(), 1u);
        EXPECT_EQ(g_entries.calls[0].form, one.form);
        EXPECT_EQ(g_entries.calls[0].commandLine, "/dl /n\"Office\"");
        EXPECT_EQ(g_entries.calls[0].window, window);
        EXPECT_EQ(g_entries.calls[0].show, 5);
        EXPECT_EQ(Machine().Modules().PathOf(g_entries.calls[0].module), kLibrary);
        EXPECT_EQ(TakeLookUps(Test()), one.lookUps);
    }
}

TEST_F(RunDll, WideFormGetsTheTextOfTheCodePage) {
    CRunDll32 runDll;
    Load(runDll, {{"EntryW", WideEntry()}});
    runDll.CallEntry(nullptr, "Entry", "caf\xe9 \x80", 0);
    ASSERT_EQ(g_entries.calls.size(), 1u);
    EXPECT_EQ(g_entries.calls[0].commandLine, "caf\xe9 \xac");  // the low byte of U+20AC
    EXPECT_THAT(TakeCallsOf(Test(), {"MultiByteToWideChar"}),
                ElementsAre("MultiByteToWideChar(0x0, 0x0, &, 0xffffffff, &, 0x800) = 0x7"));
}

TEST_F(RunDll, MissingEntryGives87) {
    CRunDll32 runDll;
    Load(runDll, {{"Other", NarrowEntry()}});
    Test().TurnLogOn(1);
    EXPECT_EQ(runDll.CallEntry(nullptr, "Entry", "/x", 0), 87u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(StartOf("Entry", "/x"), "pfnEntryPointA = NULL", kEndOf87));
    EXPECT_THAT(TakeLookUps(Test()), ElementsAre("EntryW", "EntryA", "Entry"));
}

TEST_F(RunDll, SecondCallOfAnEntryInAnyCaseLooksNothingUp) {
    for (const auto& [name, entry] : {std::pair("EntryW", WideEntry()), std::pair("Entry", NarrowEntry())}) {
        CRunDll32 runDll;
        Load(runDll, {{name, entry}});
        EXPECT_EQ(runDll.CallEntry(nullptr, "Entry", "/1", 0), 0u);
        ForgetCalls(Test());
        EXPECT_EQ(runDll.CallEntry(nullptr, "ENTRY", "/2", 0), 0u);
        EXPECT_THAT(TakeLookUps(Test()), IsEmpty());
        EXPECT_EQ(g_entries.calls.size(), 2u);
    }
}

TEST_F(RunDll, AnotherEntryIsLookedUpAfresh) {
    CRunDll32 runDll;
    Load(runDll, {{"OneW", WideEntry()}, {"Two", NarrowEntry()}});
    EXPECT_EQ(runDll.CallEntry(nullptr, "One", "/1", 0), 0u);
    EXPECT_EQ(runDll.CallEntry(nullptr, "Two", "/2", 0), 0u);
    EXPECT_EQ(runDll.CallEntry(nullptr, "One", "/3", 0), 0u);
    ASSERT_EQ(g_entries.calls.size(), 3u);
    EXPECT_EQ(g_entries.calls[0].form + g_entries.calls[1].form + g_entries.calls[2].form, "WAW");
    EXPECT_THAT(TakeLookUps(Test()), ElementsAre("OneW", "TwoW", "TwoA", "Two", "OneW"));
}

TEST_F(RunDll, FailedLookUpForgetsTheEntryButKeepsItsName) {
    // So the earlier name counts as held, and has no pointer any more.
    CRunDll32 runDll;
    Load(runDll, {{"OneW", WideEntry()}});
    EXPECT_EQ(runDll.CallEntry(nullptr, "One", "/1", 0), 0u);
    EXPECT_EQ(runDll.CallEntry(nullptr, "Two", "/2", 0), 87u);
    ForgetCalls(Test());
    Test().TurnLogOn(1);
    EXPECT_EQ(runDll.CallEntry(nullptr, "One", "/3", 0), 87u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(StartOf("One", "/3"), "pfnEntryPointA = NULL", kEndOf87));
    EXPECT_THAT(TakeLookUps(Test()), IsEmpty());
    EXPECT_EQ(g_entries.calls.size(), 1u);
}

TEST_F(RunDll, EmptyEntryNameIsTheOneHeldAtFirst) {
    CRunDll32 runDll;
    Load(runDll, {{"W", WideEntry()}});
    Test().TurnLogOn(1);
    EXPECT_EQ(runDll.CallEntry(nullptr, "", "/x", 0), 87u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(StartOf("", "/x"), "pfnEntryPointA = NULL", kEndOf87));
    EXPECT_THAT(TakeLookUps(Test()), IsEmpty());
}

// ---- the result -----------------------------------------------------------------------------------------------------

TEST_F(RunDll, ResultIsTheLastErrorWhichMayBeOlderThanTheCall) {
    CRunDll32 runDll;
    Load(runDll, {{"EntryW", WideEntry()}, {"Bare", NarrowEntry()}});
    g_entries.outcomes = {1801, std::nullopt, std::nullopt};
    Test().TurnLogOn(1);
    EXPECT_EQ(runDll.CallEntry(nullptr, "Entry", "/1", 0), 1801u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(StartOf("Entry", "/1"), "CRunDll32::CallEntry() End  res = 1801"));
    ResetLog();
    simulated::lastError = 4711;
    EXPECT_EQ(runDll.CallEntry(nullptr, "Entry", "/2", 0), 4711u);
    // The look-ups that failed on the way to the bare name leave theirs.
    EXPECT_EQ(runDll.CallEntry(nullptr, "Bare", "/3", 0), 127u);
}

/// The test whose calls are looked at when the last error is asked for, and the call before the first such question.
TestMachine* g_test = nullptr;
std::string g_callBefore;

TEST_F(RunDll, NoCallStandsBetweenTheEntryAndTheLastError) {
    for (const auto& [name, entry] : {std::pair("EntryW", WideEntry()), std::pair("Entry", NarrowEntry())}) {
        CRunDll32 runDll;
        Load(runDll, {{name, entry}});
        Test().TurnLogOn(1);
        g_test = &Test();
        g_callBefore.clear();
        ReplacedOperations replaced;
        replaced.table.GetLastError = []() -> DWORD {
            if (!g_entries.calls.empty() && g_callBefore.empty()) {
                g_callBefore = g_test->TakeCallNames().back();
            }
            return simulated::lastError;
        };
        runDll.CallEntry(nullptr, "Entry", "/x", 0);
        EXPECT_EQ(g_callBefore, "GetACP");  // the entry's own
        ResetLog();
    }
}

// ---- loading --------------------------------------------------------------------------------------------------------

TEST_F(RunDll, KeepsTheLibraryOfTheSameNameInAnyCase) {
    CRunDll32 runDll;
    Load(runDll, {{"EntryW", WideEntry()}});
    EXPECT_EQ(runDll.CallEntry(nullptr, "Entry", "/1", 0), 0u);
    ForgetCalls(Test());
    EXPECT_EQ(runDll.Load("c:\\RUNDLL.dll"), 0u);
    EXPECT_EQ(runDll.CallEntry(nullptr, "Entry", "/2", 0), 0u);
    EXPECT_THAT(Test().TakeCallNames({"LoadLibraryA", "FreeLibrary", "GetProcAddress"}), IsEmpty());
}

TEST_F(RunDll, FreesAnotherLibraryFirstAndForgetsItsEntry) {
    CRunDll32 runDll;
    Load(runDll, {{"EntryW", WideEntry()}}, "C:\\other.dll");
    EXPECT_EQ(runDll.CallEntry(nullptr, "Entry", "/1", 0), 0u);
    Machine().Modules().Register(kLibrary, {{"Entry", NarrowEntry()}});
    ForgetCalls(Test());
    EXPECT_EQ(runDll.Load(kLibrary), 0u);
    EXPECT_EQ(runDll.CallEntry(nullptr, "Entry", "/2", 0), 0u);
    ASSERT_EQ(g_entries.calls.size(), 2u);
    EXPECT_EQ(g_entries.calls[1].form, "A");
    EXPECT_THAT(Test().TakeCallNames({"LoadLibraryA", "FreeLibrary", "GetProcAddress"}),
                ElementsAre("FreeLibrary", "LoadLibraryA", "GetProcAddress", "GetProcAddress", "GetProcAddress"));
}

TEST_F(RunDll, FailedLoadLeavesNothingHeld) {
    CRunDll32 runDll;
    Load(runDll, {{"EntryW", WideEntry()}});
    EXPECT_EQ(runDll.Load("missing.dll"), 126u);
    EXPECT_EQ(Machine().Handles().OpenCount(), 0u);
    EXPECT_EQ(runDll.CallEntry(nullptr, "Entry", "/x", 0), 87u);
    EXPECT_EQ(runDll.Load("missing.dll"), 126u);  // no library is held under that name either
    EXPECT_EQ(runDll.Load(kLibrary), 0u);
    EXPECT_EQ(runDll.CallEntry(nullptr, "Entry", "/x", 0), 0u);
}

TEST_F(RunDll, RefusesALibraryNameThatItCannotKeep) {
    CRunDll32 runDll;
    const std::string longest = "C:\\" + std::string(252, 'l') + ".dll";
    Machine().Modules().Register(longest, {{"EntryW", WideEntry()}});
    EXPECT_EQ(longest.size(), 259u);
    EXPECT_EQ(runDll.Load(longest.c_str()), 0u);
    ForgetCalls(Test());
    EXPECT_EQ(runDll.Load((longest + "l").c_str()), 8u);
    EXPECT_THAT(Test().TakeCallNames({"LoadLibraryA", "FreeLibrary"}), ElementsAre("FreeLibrary"));
}

TEST_F(RunDll, FreesTheLibraryAtItsEnd) {
    {
        CRunDll32 runDll;
        Load(runDll, {{"EntryW", WideEntry()}});
    }
    EXPECT_THAT(Test().TakeCallNames(), ElementsAre("FreeLibrary"));
    EXPECT_EQ(Machine().Handles().OpenCount(), 0u);
}

// ---- texts ----------------------------------------------------------------------------------------------------------

TEST_F(RunDll, TextIsEmptyWithoutALibrary) {
    CRunDll32 runDll;
    char text[] = "before";
    Test().TurnLogOn(1);
    EXPECT_EQ(runDll.GetResourceStr(16050, text, sizeof text), 0u);
    EXPECT_STREQ(text, "");
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("CRunDll32::GetResourceStr(16050) Start", "CRunDll32::GetResourceStr() End  res = 0"));
    text[0] = 'x';
    EXPECT_EQ(runDll.GetResourceStr(16050, text, 0), 0u);  // no room for so much as a NUL
    EXPECT_EQ(text[0], 'x');
}

TEST_F(RunDll, TextComesFromTheLibraryOrGivesTheSystemsCode) {
    Start("win2000");
    CRunDll32 runDll;
    ASSERT_EQ(runDll.Load("PRINTUI.DLL"), 0u);
    ForgetCalls(Test());
    char text[100] = {};
    EXPECT_EQ(runDll.GetResourceStr(16056, text, sizeof text), 0u);
    EXPECT_STREQ(text, "Windows 2000");
    EXPECT_EQ(runDll.GetResourceStr(16056, text, 8), 0u);
    EXPECT_STREQ(text, "Windows");
    EXPECT_THAT(TakeCallsOf(Test(), {"LoadStringA"}),
                ElementsAre(HasSubstr(", 0x3eb8, &, 0x64) = 0xc"), HasSubstr(", 0x3eb8, &, 0x8) = 0x7")));
    Test().TurnLogOn(1);
    EXPECT_EQ(runDll.GetResourceStr(1, text, sizeof text), 1814u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("CRunDll32::GetResourceStr(1) Start", "CRunDll32::GetResourceStr() End  res = 1814"));
}

// ---- one command ----------------------------------------------------------------------------------------------------

TEST_F(RunDll, RunsOneCommandOfThePrintUI) {
    PrintUIProbe probe(Test());
    ForgetCalls(Test());
    EXPECT_EQ(DoRunPrintUI("/dl /n\"Office\" /q"), 0u);
    EXPECT_THAT(Test().TakeCallNames({"LoadLibraryA", "GetProcAddress", "MultiByteToWideChar", "FreeLibrary"}),
                ElementsAre("LoadLibraryA", "GetProcAddress", "MultiByteToWideChar", "FreeLibrary"));
    ASSERT_EQ(g_entries.calls.size(), 1u);
    EXPECT_EQ(g_entries.calls[0].window, nullptr);
    EXPECT_NE(g_entries.calls[0].module, nullptr);
    EXPECT_EQ(g_entries.calls[0].show, 0);
    EXPECT_THAT(probe.TakeCommands(), ElementsAre("/dl /n\"Office\" /q"));
    EXPECT_EQ(Machine().Handles().OpenCount(), 0u);
}

TEST_F(RunDll, CommandIsLoggedWithItsOutcome) {
    PrintUIProbe probe(Test());
    probe.Leave(1801);
    Test().TurnLogOn(1);
    EXPECT_EQ(DoRunPrintUI("/dl /q"), 1801u);
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(RunLines("/dl /q", 1801)));
}

TEST_F(RunDll, NullCommandLineIsRefusedWithoutAWord) {
    ForgetCalls(Test());
    Test().TurnLogOn(1);
    EXPECT_EQ(DoRunPrintUI(nullptr), 87u);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
    EXPECT_THAT(Test().TakeCallNames({"LoadLibraryA"}), IsEmpty());
}

TEST_F(RunDll, MissingPrintUIGivesTheCodeOfTheLoad) {
    Start("nt4");
    Test().TurnLogOn(1);
    EXPECT_EQ(DoRunPrintUI("/dl"), 126u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoRunPrintUI(/dl) Start", "DoRunPrintUI End(126)"));
}

TEST_F(RunDll, LoadThatFailsWithoutACodeGoesOnToTheEntry) {
    faults::FailCall("LoadLibraryA", 1, 0);
    Test().TurnLogOn(1);
    EXPECT_EQ(DoRunPrintUI("/dl"), 87u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoRunPrintUI(/dl) Start", StartOf("PrintUIEntry", "/dl"), "NULL check",
                                              kEndOf87, "DoRunPrintUI End(87)"));
}

TEST_F(RunDll, PrintUIWithoutAnEntryGives87AndIsFreed) {
    Machine().Modules().RemoveExport("printui.dll", "PrintUIEntryW");
    Test().TurnLogOn(1);
    EXPECT_EQ(DoRunPrintUI("/dl"), 87u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoRunPrintUI(/dl) Start", StartOf("PrintUIEntry", "/dl"),
                                              "pfnEntryPointA = NULL", kEndOf87, "DoRunPrintUI End(87)"));
}

TEST_F(RunDll, ReadsATextOfThePrintUI) {
    Start("win2000");
    ForgetCalls(Test());
    char text[260] = {};
    EXPECT_EQ(DoGetResourceStrFromPrintUI(16050, text, sizeof text), 0u);
    EXPECT_STREQ(text, "Windows 95 or 98");
    EXPECT_THAT(Test().TakeCallNames(), ElementsAre("LoadLibraryA", "LoadStringA", "FreeLibrary"));
    Test().TurnLogOn(1);
    EXPECT_EQ(DoGetResourceStrFromPrintUI(16051, text, sizeof text), 1814u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoGetResourceStrFromPrintUI(16051) Start", "CRunDll32::GetResourceStr(16051) Start",
                            "CRunDll32::GetResourceStr() End  res = 1814", "DoGetResourceStrFromPrintUI End(1814)"));
}

TEST_F(RunDll, TextNeedsABufferAndTheLibrary) {
    Start("nt4");
    Test().TurnLogOn(1);
    EXPECT_EQ(DoGetResourceStrFromPrintUI(16050, nullptr, 260), 87u);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
    char text[260] = "before";
    EXPECT_EQ(DoGetResourceStrFromPrintUI(16050, text, sizeof text), 126u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoGetResourceStrFromPrintUI(16050) Start", "DoGetResourceStrFromPrintUI End(126)"));
    EXPECT_STREQ(text, "before");
    faults::FailCall("LoadLibraryA", 1, 0);
    EXPECT_EQ(DoGetResourceStrFromPrintUI(16050, text, sizeof text), 0u);
    EXPECT_STREQ(text, "");
}

}  // namespace

}  // namespace pikel
