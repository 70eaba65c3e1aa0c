#include "colour/color_profile_removal.h"

#include <algorithm>
#include <string>
#include <vector>

#include "icc_profile.h"
#include "machine/colour/colour.h"
#include "support/calls.h"
#include "support/spooler_setup.h"

namespace pikel {

namespace {

using namespace testing_support;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

using Lines = std::vector<std::string>;

char g_first[] = "one.icc";
char g_second[] = "two.icc";
LPSTR g_profiles[] = {g_first, g_second};

/// The routines, all of which go through the colour library.
struct LibraryRoutine {
    const char* name;
    const char* function;
    const char* failure;  ///< what a failure line begins with; null: none is written
    DWORD (*call)(DWORD count, const LPSTR* profiles);
};
const LibraryRoutine kRoutines[] = {
    {"DeleteColorProfile982k()", "DisassociateColorProfileFromDeviceA", "DisassociateColorProfileFromDevice(",
     [](DWORD count, const LPSTR* profiles) { return DeleteColorProfile982k("Office", count, profiles); }},
    {"DeleteColorProfileVista()", "WcsDisassociateColorProfileFromDevice", "WcsDisassociateColorProfileFromDevice(",
     [](DWORD count, const LPSTR* profiles) { return DeleteColorProfileVista("Office", count, profiles); }},
    {"UnInstallColorProfile982k()", "UninstallColorProfileA", nullptr,
     [](DWORD count, const LPSTR* profiles) { return UnInstallColorProfile982k(count, profiles); }},
};

Lines LinesOf(const LibraryRoutine& routine, DWORD code, Lines between = {}) {
    between.insert(between.begin(), std::string(routine.name) + " - Start");
    between.push_back(std::string(routine.name) + " - End(" + std::to_string(code) + ")");
    return between;
}

/// On vista, whose colour library has all three functions.
class RemovalByLibrary : public MachineTest {
  protected:
    void Begin() {
        Start("vista");
        ForgetCalls(Test());
    }
};

TEST_F(RemovalByLibrary, DoesNothingWithoutProfiles) {
    for (const LibraryRoutine& routine : kRoutines) {
        SCOPED_TRACE(routine.name);
        Begin();
        EXPECT_EQ(routine.call(2, nullptr), 0u);
        EXPECT_EQ(routine.call(0, g_profiles), 0u);
        EXPECT_THAT(Test().TakeCalls(), IsEmpty());
        Test().TurnLogOn();
        EXPECT_EQ(routine.call(2, nullptr), 0u);
        EXPECT_THAT(Test().TakeLog(), ElementsAreArray(LinesOf(routine, 0)));
        EXPECT_EQ(routine.call(0, g_profiles), 0u);
        EXPECT_THAT(Test().TakeLog(), ElementsAreArray(LinesOf(routine, 0)));
    }
}

TEST_F(RemovalByLibrary, GivesTheCodeOfALibraryThatIsMissing) {
    for (const LibraryRoutine& routine : kRoutines) {
        SCOPED_TRACE(routine.name);
        Begin();
        Machine().Modules().Remove("mscms.dll");
        Test().TurnLogOn();
        EXPECT_EQ(routine.call(2, g_profiles), DWORD{ERROR_MOD_NOT_FOUND});
        EXPECT_THAT(Test().TakeLog(), ElementsAreArray(LinesOf(routine, 126)));
        EXPECT_THAT(Test().TakeCallNames({"LoadLibraryA", "GetProcAddress", "FreeLibrary", "DeleteFileA"}),
                    ElementsAre("LoadLibraryA"));
    }
}

TEST_F(RemovalByLibrary, FreesALibraryWithoutTheFunctionAndTouchesNothing) {
    for (const LibraryRoutine& routine : kRoutines) {
        SCOPED_TRACE(routine.name);
        Begin();
        Machine().Modules().RemoveExport("mscms.dll", routine.function);
        Test().TurnLogOn();
        EXPECT_EQ(routine.call(2, g_profiles), DWORD{ERROR_PROC_NOT_FOUND});
        EXPECT_THAT(Test().TakeLog(), ElementsAreArray(LinesOf(routine, 127)));
        EXPECT_THAT(Test().TakeCallNames({"LoadLibraryA", "GetProcAddress", "FreeLibrary", "DeleteFileA"}),
                    ElementsAre("LoadLibraryA", "GetProcAddress", "FreeLibrary"));
    }
}

TEST_F(RemovalByLibrary, PlainLogHasNeitherStartNorEnd) {
    for (const LibraryRoutine& routine : kRoutines) {
        SCOPED_TRACE(routine.name);
        Begin();
        Test().TurnLogOn(1);
        EXPECT_EQ(routine.call(0, g_profiles), 0u);
        EXPECT_THAT(Test().TakeLog(), IsEmpty());
    }
}

/// A machine with the printer "Office" and profiles that are installed and linked to it.
class ColourPrinterTest : public MachineTest {
  protected:
    void Begin(std::string_view system) {
        Start(system);
        PutDriver(Machine(), {});
        PutPrinter("Office", "Aurora 500");
        for (const char* name : {"one.icc", "two.icc", "three.icc"}) {
            Install(name);
        }
        for (const char* name : {"one.icc", "two.icc"}) {
            Link(name, "Office");
        }
        ForgetCalls(Test());
    }
    void Install(const std::string& name) {
        const std::string path = "C:\\Stage\\" + name;
        WriteFileOn(Machine(), path, IccProfile("prtr").Bytes());
        ASSERT_TRUE(simulated::InstallColorProfileA(nullptr, path.c_str())) << simulated::lastError;
    }
    void Link(const std::string& name, const std::string& printer) {
        ASSERT_TRUE(simulated::AssociateColorProfileWithDeviceA(nullptr, name.c_str(), printer.c_str()))
            << simulated::lastError;
    }
    std::string Path(const std::string& name) { return simulated::ColourProfiles(Machine()).Directory() + "\\" + name; }
    bool IsInstalled(const std::string& name) { return simulated::ColourProfiles(Machine()).IsInstalled(name); }
    Lines LinkedTo(const std::string& printer) { return simulated::ColourProfiles(Machine()).LinkedTo(printer); }
};

// ---- links ----------------------------------------------------------------------------------------------------------

class LinkRemoval : public ColourPrinterTest {
  protected:
    /// The two routines for links, each on vista, which has the functions of both.
    static constexpr const LibraryRoutine* kBegin = &kRoutines[0];
    static constexpr const LibraryRoutine* kEnd = &kRoutines[2];
};

TEST_F(LinkRemoval, CutsTheLinksAndLeavesTheProfiles) {
    for (const LibraryRoutine* routine = kBegin; routine != kEnd; ++routine) {
        SCOPED_TRACE(routine->name);
        Begin("vista");
        EXPECT_EQ(routine->call(2, g_profiles), 0u);
        EXPECT_THAT(LinkedTo("Office"), IsEmpty());
        EXPECT_TRUE(IsInstalled("one.icc"));
        EXPECT_TRUE(Machine().Files().Exists(Path("two.icc")));
        EXPECT_THAT(
            Test().TakeCallNames({"LoadLibraryA", "GetProcAddress", routine->function, "FreeLibrary", "DeleteFileA"}),
            ElementsAre("LoadLibraryA", "GetProcAddress", routine->function, routine->function, "FreeLibrary"));
    }
}

TEST_F(LinkRemoval, OfAProfileThatWasNeverLinkedGivesTheCodeAndGoesOn) {
    char never[] = "three.icc";
    LPSTR profiles[] = {g_first, never, g_second};
    for (const LibraryRoutine* routine = kBegin; routine != kEnd; ++routine) {
        SCOPED_TRACE(routine->name);
        Begin("vista");
        Test().TurnLogOn();
        EXPECT_EQ(routine->call(3, profiles), DWORD{ERROR_PROFILE_NOT_ASSOCIATED_WITH_DEVICE});
        const std::string failure = std::string(routine->failure) + "three.icc):Disassociated or Error(2015)";
        EXPECT_THAT(Test().TakeLog(), ElementsAreArray(LinesOf(*routine, 2015, {failure})));
        EXPECT_THAT(LinkedTo("Office"), IsEmpty());
        Begin("vista");
        Test().TurnLogOn(1);
        EXPECT_EQ(routine->call(3, profiles), 2015u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(failure));
    }
}

TEST_F(LinkRemoval, GivesTheLastOfSeveralFailures) {
    for (const LibraryRoutine* routine = kBegin; routine != kEnd; ++routine) {
        SCOPED_TRACE(routine->name);
        Begin("vista");
        faults::FailCall(routine->function, 1, 2011);
        faults::FailCall(routine->function, 2, 80);
        Test().TurnLogOn();
        EXPECT_EQ(routine->call(2, g_profiles), 80u);
        EXPECT_THAT(Test().TakeLog(),
                    ElementsAreArray(LinesOf(*routine, 80,
                                             {std::string(routine->failure) + "one.icc):Disassociated or Error(2011)",
                                              std::string(routine->failure) + "two.icc):Disassociated or Error(80)"})));
        EXPECT_THAT(LinkedTo("Office"), ElementsAre("one.icc", "two.icc"));
    }
}

TEST_F(LinkRemoval, IsAskedForThisMachine) {
    Begin("vista");
    DeleteColorProfile982k("Office", 1, g_profiles);
    DeleteColorProfileVista("Office", 1, g_profiles);
    const Lines calls =
        TakeCallsOf(Test(), {"DisassociateColorProfileFromDeviceA", "WcsDisassociateColorProfileFromDevice"});
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_THAT(calls[0], StartsWith("DisassociateColorProfileFromDeviceA(null, \"one.icc\", \"Office\")"));
    EXPECT_THAT(calls[1], StartsWith("WcsDisassociateColorProfileFromDevice(0x0, \"one.icc\", \"Office\")"));
}

TEST_F(LinkRemoval, ConvertsNamesInTheActiveCodePageIntoBuffersOfFixedSize) {
    Begin("vista");
    DeleteColorProfileVista("Office", 1, g_profiles);
    EXPECT_THAT(TakeCallsOf(Test(), {"GetACP", "MultiByteToWideChar"}),
                ElementsAre("GetACP() = 0x4e4", "MultiByteToWideChar(0x4e4, 0x0, &, 0xffffffff, &, 0x207) = 0x8",
                            "GetACP() = 0x4e4", "MultiByteToWideChar(0x4e4, 0x0, &, 0xffffffff, &, 0x40f) = 0x7"));
}

std::string g_cutProfile;
std::basic_string<WCHAR> g_cutWide;

BOOL WINAPI TakeNarrow(PCSTR, PCSTR profile, PCSTR) {
    g_cutProfile = profile;
    return TRUE;
}
BOOL WINAPI TakeWide(DWORD, LPCWSTR profile, LPCWSTR) {
    g_cutWide = profile;
    return TRUE;
}

template <class Function>
FARPROC AsExport(Function* function) {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(function));
}

TEST_F(LinkRemoval, CutsNamesThatDoNotFitTheirBuffer) {
    Begin("vista");
    ReplacedOperations replaced;
    replaced.table.GetProcAddress = [](HMODULE, LPCSTR name) -> FARPROC {
        return name[0] == 'W' ? AsExport(&TakeWide) : AsExport(&TakeNarrow);
    };
    for (std::size_t length : {0u, 1u, 518u, 519u, 520u, 5000u}) {
        std::string name(length, 'p');
        LPSTR profiles[] = {name.data()};
        EXPECT_EQ(DeleteColorProfile982k("Office", 1, profiles), 0u);
        EXPECT_EQ(g_cutProfile.size(), std::min<std::size_t>(length, 519));
    }
    LPSTR none[] = {nullptr};
    EXPECT_EQ(DeleteColorProfile982k(nullptr, 1, none), 0u);
    EXPECT_EQ(g_cutProfile, "");
    EXPECT_EQ(DeleteColorProfileVista(nullptr, 1, none), 0u);
    EXPECT_TRUE(g_cutWide.empty());
}

// ---- profiles -------------------------------------------------------------------------------------------------------

class ProfileRemoval : public ColourPrinterTest {
  protected:
    ProfileRemoval() { Begin("xp"); }
    DWORD Remove(const std::vector<std::string>& names) {
        std::vector<std::string> texts = names;
        std::vector<LPSTR> profiles;
        for (std::string& text : texts) {
            profiles.push_back(text.data());
        }
        return UnInstallColorProfile982k(static_cast<DWORD>(profiles.size()), profiles.data());
    }
    static inline const Lines kSteps = {"EnumPrintersA", "CreateICA",    "EnumICMProfilesA",
                                        "DeleteDC",      "LoadLibraryA", "GetProcAddress",
                                        "FreeLibrary",   "DeleteFileA",  "UninstallColorProfileA"};
};

TEST_F(ProfileRemoval, TakesTheProfileAndItsFile) {
    EXPECT_EQ(Remove({Path("three.icc")}), 0u);
    EXPECT_FALSE(IsInstalled("three.icc"));
    EXPECT_FALSE(Machine().Files().Exists(Path("three.icc")));
    EXPECT_TRUE(IsInstalled("one.icc"));
    EXPECT_THAT(Test().TakeCallNames(kSteps),
                ElementsAre("EnumPrintersA", "EnumPrintersA", "CreateICA", "EnumICMProfilesA", "DeleteDC",
                            "LoadLibraryA", "GetProcAddress", "UninstallColorProfileA", "FreeLibrary"));
}

TEST_F(ProfileRemoval, AsksForLocalPrintersAndForTheFile) {
    EXPECT_EQ(Remove({Path("three.icc")}), 0u);
    const Lines calls = TakeCallsOf(Test(), {"EnumPrintersA", "CreateICA", "UninstallColorProfileA"});
    ASSERT_EQ(calls.size(), 4u);
    EXPECT_THAT(calls[0], StartsWith("EnumPrintersA(0x2, null, 0x2, null, 0x0, "));
    EXPECT_THAT(calls[1], StartsWith("EnumPrintersA(0x2, null, 0x2, &, "));
    EXPECT_THAT(calls[2], StartsWith("CreateICA(\"WINSPOOL\", \"Office\", null, null)"));
    EXPECT_THAT(calls[3], AllOf(StartsWith("UninstallColorProfileA(null, "), HasSubstr("three.icc\", 0x1)")));
}

TEST_F(ProfileRemoval, PassesOverAProfileThatAPrinterReportsWithoutAWord) {
    Test().TurnLogOn();
    EXPECT_EQ(Remove({Path("one.icc"), Path("three.icc")}), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(LinesOf(kRoutines[2], 0)));
    EXPECT_TRUE(IsInstalled("one.icc"));
    EXPECT_TRUE(Machine().Files().Exists(Path("one.icc")));
    EXPECT_FALSE(IsInstalled("three.icc"));
    EXPECT_EQ(TakeCallsOf(Test(), {"UninstallColorProfileA"}).size(), 1u);
}

TEST_F(ProfileRemoval, ComparesNamesByteByByte) {
    // Neither the bare name nor another spelling is what the printer reports.
    std::string spelled = Path("TWO.ICC");
    EXPECT_EQ(Remove({"one.icc", spelled}), 0u);
    EXPECT_FALSE(IsInstalled("one.icc"));
    EXPECT_FALSE(IsInstalled("two.icc"));
}

TEST_F(ProfileRemoval, HoldsBackWhatAnyOfThePrintersUses) {
    PutPrinter("Another", "Aurora 500");
    Link("three.icc", "Another");
    Link("one.icc", "Another");
    ForgetCalls(Test());
    EXPECT_EQ(Remove({Path("one.icc"), Path("two.icc"), Path("three.icc")}), 0u);
    EXPECT_EQ(TakeCallsOf(Test(), {"UninstallColorProfileA"}).size(), 0u);
    for (const char* name : {"one.icc", "two.icc", "three.icc"}) {
        EXPECT_TRUE(IsInstalled(name)) << name;
    }
}

TEST_F(ProfileRemoval, TakesThePrintersOwnProfilesOnceItIsGone) {
    EXPECT_EQ(Remove({Path("one.icc"), Path("two.icc")}), 0u);
    EXPECT_TRUE(IsInstalled("one.icc"));
    PrinterHandle printer;
    char name[] = "Office";
    PRINTER_DEFAULTSA defaults{nullptr, nullptr, PRINTER_ALL_ACCESS};
    ASSERT_TRUE(Platform().OpenPrinterA(name, printer.Out(), &defaults));
    ASSERT_TRUE(Platform().DeletePrinter(printer.Get()));
    printer.Reset();
    EXPECT_EQ(Remove({Path("one.icc"), Path("two.icc")}), 0u);
    EXPECT_FALSE(IsInstalled("one.icc"));
    EXPECT_FALSE(Machine().Files().Exists(Path("two.icc")));
}

TEST_F(ProfileRemoval, WithoutAListOfPrintersHoldsNothingBack) {
    faults::FailCall("EnumPrintersA", 1, 1722);
    EXPECT_EQ(Remove({Path("one.icc")}), 0u);
    EXPECT_FALSE(IsInstalled("one.icc"));
    faults::Reset();
    faults::FailCall("EnumPrintersA", 2, 5);
    EXPECT_EQ(Remove({Path("two.icc")}), 0u);
    EXPECT_FALSE(IsInstalled("two.icc"));
}

TEST_F(ProfileRemoval, CountsAPrinterWithoutAContextAsUsingNothing) {
    PutPrinter("Another", "Aurora 500");  // which is listed first
    Link("three.icc", "Another");
    Link("two.icc", "Another");
    faults::FailCall("CreateICA", 1, 1801);
    ForgetCalls(Test());
    EXPECT_EQ(Remove({Path("three.icc"), Path("two.icc")}), 0u);
    EXPECT_FALSE(IsInstalled("three.icc"));
    EXPECT_TRUE(IsInstalled("two.icc")) << "the other printer has it too";
    EXPECT_THAT(Test().TakeCallNames({"CreateICA", "EnumICMProfilesA", "DeleteDC"}),
                ElementsAre("CreateICA", "CreateICA", "EnumICMProfilesA", "DeleteDC"));
}

TEST_F(ProfileRemoval, RefusedByTheLibraryIsASuccessWhenTheFileGoes) {
    WriteFileOn(Machine(), "C:\\Setup\\loose.icc", "never installed");
    Test().TurnLogOn();
    EXPECT_EQ(Remove({"C:\\Setup\\loose.icc"}), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(LinesOf(kRoutines[2], 0)));
    EXPECT_FALSE(Machine().Files().Exists("C:\\Setup\\loose.icc"));
    EXPECT_EQ(TakeCallsOf(Test(), {"DeleteFileA"}).front(), "DeleteFileA(\"C:\\\\Setup\\\\loose.icc\") = 0x1");
}

TEST_F(ProfileRemoval, GivesTheLastFileThatCanNotBeDeleted) {
    faults::FailCall("UninstallColorProfileA", 1, 2011, true);
    faults::FailCall("DeleteFileA", 1, 5);
    faults::FailCall("DeleteFileA", 2, 32);
    Test().TurnLogOn();
    EXPECT_EQ(Remove({Path("three.icc"), "C:\\a.icc", Path("three.icc")}), 32u);
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(LinesOf(kRoutines[2], 32)));
    EXPECT_FALSE(Machine().Files().Exists(Path("three.icc"))) << "the third name was still tried";
}

TEST_F(ProfileRemoval, LastFailureCountsAlsoWithoutACode) {
    faults::FailCall("UninstallColorProfileA", 1, 2011, true);
    faults::FailCall("DeleteFileA", 1, 5);
    faults::FailCall("DeleteFileA", 2, 0);
    EXPECT_EQ(Remove({"C:\\a.icc", "C:\\b.icc"}), 0u);
    EXPECT_EQ(TakeCallsOf(Test(), {"DeleteFileA"}).size(), 2u);
}

TEST_F(ProfileRemoval, LeavesAFileThatSomebodyHolds) {
    const simulated::Files::Held held = Machine().Files().HoldOpen(Path("three.icc"));
    EXPECT_EQ(Remove({Path("three.icc")}), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_TRUE(Machine().Files().Exists(Path("three.icc")));
}

TEST_F(ProfileRemoval, WithoutANameIsAFailureLikeAnyOther) {
    LPSTR profiles[] = {nullptr};
    EXPECT_EQ(UnInstallColorProfile982k(1, profiles), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(Remove({std::string(5000, 'p')}), 206u);  // a path too long
}

// ---- the routes -----------------------------------------------------------------------------------------------------

class RemovalRoutes : public EverySystemTest {
  protected:
    bool HasNoRoutine() const { return GetParam() == "win95" || GetParam() == "nt4"; }
    bool IsVistaOrLater() const { return GetParam().starts_with("vista") || GetParam() == "other"; }
};
INSTANTIATE_ON_EVERY_SYSTEM(RemovalRoutes);

TEST_P(RemovalRoutes, LinksGoThroughTheRoutineOfTheSystem) {
    Test().TurnLogOn();
    EXPECT_EQ(DeleteColorProfile("Office", 0, g_profiles), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAreArray(HasNoRoutine() ? Lines() : LinesOf(kRoutines[IsVistaOrLater() ? 1 : 0], 0)));
}

TEST_P(RemovalRoutes, ProfilesGoThroughTheRoutineOfTheSystem) {
    Test().TurnLogOn();
    EXPECT_EQ(UnInstallColorProfile(0, g_profiles), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(HasNoRoutine() ? Lines() : LinesOf(kRoutines[2], 0)));
}

TEST_P(RemovalRoutes, Windows95AndNt4DoNothing) {
    ForgetCalls(Test());
    const DWORD link = DeleteColorProfile("Office", 2, g_profiles);
    const DWORD profile = UnInstallColorProfile(2, g_profiles);
    if (HasNoRoutine()) {
        EXPECT_EQ(link, 0u);
        EXPECT_EQ(profile, 0u);
        EXPECT_THAT(Test().TakeCalls(), IsEmpty());
    } else {
        EXPECT_EQ(link, DWORD{ERROR_INVALID_PRINTER_NAME});
        EXPECT_EQ(profile, DWORD{ERROR_FILE_NOT_FOUND});
    }
}

/// On every system with a colour library.
class RemovalOnEverySystem : public ColourPrinterTest, public ::testing::WithParamInterface<std::string> {
  protected:
    RemovalOnEverySystem() { Begin(GetParam()); }
};
INSTANTIATE_TEST_SUITE_P(Systems, RemovalOnEverySystem,
                         ::testing::Values("win98", "winme", "win2000", "xp", "xp-ia64", "xp-x64", "vista",
                                           "vista-ia64", "vista-x64", "other"),
                         [](const auto& info) {
                             std::string name = info.param;
                             std::erase(name, '-');
                             return name;
                         });

TEST_P(RemovalOnEverySystem, TakesLinksAndThenProfiles) {
    std::string one = Path("one.icc");
    std::string two = Path("two.icc");
    LPSTR paths[] = {one.data(), two.data()};
    EXPECT_EQ(DeleteColorProfile("Office", 1, g_profiles), 0u);
    EXPECT_THAT(LinkedTo("Office"), ElementsAre("two.icc"));
    EXPECT_EQ(UnInstallColorProfile(2, paths), 0u);
    EXPECT_FALSE(Machine().Files().Exists(one));
    EXPECT_FALSE(IsInstalled("one.icc"));
    EXPECT_TRUE(Machine().Files().Exists(two));
    EXPECT_TRUE(IsInstalled("two.icc"));
}

TEST(RemovalWithoutRoute, GivesCode120) {
    simulated::SystemDescription system = *simulated::FindSystem("nt4");
    system.major = 3;
    system.minor = 51;
    TestMachine test(system);
    EXPECT_EQ(DeleteColorProfile("Office", 2, g_profiles), DWORD{ERROR_CALL_NOT_IMPLEMENTED});
    EXPECT_EQ(UnInstallColorProfile(2, g_profiles), DWORD{ERROR_CALL_NOT_IMPLEMENTED});
}

}  // namespace

}  // namespace pikel
