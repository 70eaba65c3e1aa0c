#include "colour/color_profile_install.h"

#include <string>
#include <vector>

#include "icc_profile.h"
#include "support/calls.h"

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

char g_printerProfile[] = "NLA500A.ICC";
char g_monitorProfile[] = "NLDISP.ICC";
LPSTR g_profiles[] = {g_printerProfile, g_monitorProfile};

/// The three routines that go through the colour library.
struct LibraryRoutine {
    const char* name;
    const char* function;
    const char* failure;  ///< what a failure line begins with
    const char* verdict;  ///< and how it goes on behind the profile
    DWORD (*call)(const LPSTR* profiles, DWORD count);
};
const LibraryRoutine kRoutines[] = {
    {"InstallColorProfile982k()", "InstallColorProfileA", "InstallColorProfile(", "):Installed or Error(",
     [](const LPSTR* profiles, DWORD count) { return InstallColorProfile982k(profiles, count); }},
    {"AddColorProfile982k()", "AssociateColorProfileWithDeviceA", "AssociateColorProfileWithDevice(",
     "):Associated or Error(",
     [](const LPSTR* profiles, DWORD count) { return AddColorProfile982k("Aurora", profiles, count); }},
    {"AddColorProfileVista()", "WcsAssociateColorProfileWithDevice", "WcsAssociateColorProfileWithDevice(",
     "):Associated or Error(",
     [](const LPSTR* profiles, DWORD count) { return AddColorProfileVista("Aurora", profiles, count); }},
};

/// On vista, whose colour library has all three functions.
class ColourLibrary : public MachineTest {
  protected:
    void Begin() {
        Start("vista");
        ForgetCalls(Test());
    }
    static std::string StartLine(const LibraryRoutine& routine) { return routine.name + std::string(" - Start"); }
    static std::string EndLine(const LibraryRoutine& routine, DWORD code) {
        return routine.name + (" - End(" + std::to_string(code) + ")");
    }
};

TEST_F(ColourLibrary, IsNotLoadedWithoutProfiles) {
    for (const LibraryRoutine& routine : kRoutines) {
        SCOPED_TRACE(routine.name);
        Begin();
        EXPECT_EQ(routine.call(nullptr, 2), 0u);
        EXPECT_EQ(routine.call(g_profiles, 0), 0u);
        EXPECT_THAT(Test().TakeCalls(), IsEmpty());
        Test().TurnLogOn();
        EXPECT_EQ(routine.call(nullptr, 2), 0u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(StartLine(routine), EndLine(routine, 0)));
        EXPECT_EQ(routine.call(g_profiles, 0), 0u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(StartLine(routine), EndLine(routine, 0)));
    }
}

TEST_F(ColourLibrary, ThatIsMissingGivesTheCodeOfTheLoad) {
    for (const LibraryRoutine& routine : kRoutines) {
        SCOPED_TRACE(routine.name);
        Begin();
        Machine().Modules().Remove("mscms.dll");
        Test().TurnLogOn();
        EXPECT_EQ(routine.call(g_profiles, 2), DWORD{ERROR_MOD_NOT_FOUND});
        EXPECT_THAT(Test().TakeLog(), ElementsAre(StartLine(routine), EndLine(routine, 126)));
        EXPECT_THAT(Test().TakeCallNames({"LoadLibraryA", "GetProcAddress", "FreeLibrary"}),
                    ElementsAre("LoadLibraryA"));
    }
}

TEST_F(ColourLibrary, WithoutTheFunctionIsFreedAndNoEndIsLogged) {
    for (const LibraryRoutine& routine : kRoutines) {
        SCOPED_TRACE(routine.name);
        Begin();
        Machine().Modules().RemoveExport("mscms.dll", routine.function);
        Test().TurnLogOn();
        EXPECT_EQ(routine.call(g_profiles, 2), DWORD{ERROR_PROC_NOT_FOUND});
        EXPECT_THAT(Test().TakeLog(), ElementsAre(StartLine(routine)));
        EXPECT_THAT(Test().TakeCallNames({"LoadLibraryA", "GetProcAddress", "FreeLibrary"}),
                    ElementsAre("LoadLibraryA", "GetProcAddress", "FreeLibrary"));
    }
}

TEST_F(ColourLibrary, GetsEachProfileInOrderAlsoBehindOneThatFails) {
    for (const LibraryRoutine& routine : kRoutines) {
        SCOPED_TRACE(routine.name);
        Begin();
        faults::FailCall(routine.function, 1, 2011);
        faults::FailCall(routine.function, 2, 80);
        EXPECT_EQ(routine.call(g_profiles, 2), 0u);
        Lines calls = TakeCallsOf(Test(), {"LoadLibraryA", "GetProcAddress", routine.function, "FreeLibrary"});
        ASSERT_EQ(calls.size(), 5u);
        EXPECT_THAT(calls[0], StartsWith("LoadLibraryA(\"mscms.dll\")"));
        EXPECT_THAT(calls[1], HasSubstr(std::string("\"") + routine.function + "\""));
        EXPECT_THAT(calls[2], AllOf(HasSubstr("\"NLA500A.ICC\""), HasSubstr("failed, last error 2011")));
        EXPECT_THAT(calls[3], AllOf(HasSubstr("\"NLDISP.ICC\""), HasSubstr("failed, last error 80")));
        EXPECT_THAT(calls[4], StartsWith("FreeLibrary("));
    }
}

TEST_F(ColourLibrary, FailureOfAProfileIsLoggedAndTheCodeStays0) {
    for (const LibraryRoutine& routine : kRoutines) {
        SCOPED_TRACE(routine.name);
        Begin();
        faults::FailCall(routine.function, 1, 2011);
        faults::FailCall(routine.function, 2, 80);
        const std::string first = routine.failure + std::string("NLA500A.ICC") + routine.verdict + "2011)";
        const std::string second = routine.failure + std::string("NLDISP.ICC") + routine.verdict + "80)";
        Test().TurnLogOn();
        EXPECT_EQ(routine.call(g_profiles, 2), 0u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(StartLine(routine), first, second, EndLine(routine, 0)));
        faults::Reset();
        faults::FailCall(routine.function, 1, 2011);
        faults::FailCall(routine.function, 2, 80);
        Test().TurnLogOn(1);
        EXPECT_EQ(routine.call(g_profiles, 2), 0u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(first, second));
    }
}

TEST_F(ColourLibrary, RefusesAProfileWithoutANameLikeAnyOther) {
    LPSTR profiles[] = {nullptr};
    for (const LibraryRoutine& routine : kRoutines) {
        SCOPED_TRACE(routine.name);
        Begin();
        faults::FailCall(routine.function, 1, 87);
        Test().TurnLogOn(1);
        EXPECT_EQ(routine.call(profiles, 1), 0u);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(routine.failure + std::string(routine.verdict) + "87)"));
    }
}

TEST_F(ColourLibrary, IsAskedForThisMachine) {
    Begin();
    InstallColorProfile982k(g_profiles, 1);
    AddColorProfile982k("Aurora 500", g_profiles, 1);
    AddColorProfileVista("Aurora 500", g_profiles, 1);
    Lines calls = TakeCallsOf(
        Test(), {"InstallColorProfileA", "AssociateColorProfileWithDeviceA", "WcsAssociateColorProfileWithDevice"});
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_THAT(calls[0], StartsWith("InstallColorProfileA(null, \"NLA500A.ICC\")"));
    EXPECT_THAT(calls[1], StartsWith("AssociateColorProfileWithDeviceA(null, \"NLA500A.ICC\", \"Aurora 500\")"));
    EXPECT_THAT(calls[2], StartsWith("WcsAssociateColorProfileWithDevice(0x0, \"NLA500A.ICC\", \"Aurora 500\")"));
}

// ---- wide names -----------------------------------------------------------------------------------------------------

class WideNames : public MachineTest {
  protected:
    WideNames() { Start("vista"); }
};

TEST_F(WideNames, AreConvertedInTheActiveCodePageIntoBuffersOfFixedSize) {
    ForgetCalls(Test());
    AddColorProfileVista("Aurora 500", g_profiles, 1);
    EXPECT_THAT(TakeCallsOf(Test(), {"GetACP", "MultiByteToWideChar"}),
                ElementsAre("GetACP() = 0x4e4", "MultiByteToWideChar(0x4e4, 0x0, &, 0xffffffff, &, 0x207) = 0xc",
                            "GetACP() = 0x4e4", "MultiByteToWideChar(0x4e4, 0x0, &, 0xffffffff, &, 0x40f) = 0xb"));
}

struct WideCall {
    DWORD scope = 99;
    std::basic_string<WCHAR> profile;
    std::basic_string<WCHAR> device;
};
WideCall g_wide;

BOOL WINAPI TakeWide(DWORD scope, LPCWSTR profile, LPCWSTR device) {
    g_wide = {scope, profile, device};
    return TRUE;
}

TEST_F(WideNames, ThatAreTooLongAreCutAndNeverOverrunTheirBuffers) {
    ReplacedOperations replaced;
    replaced.table.GetProcAddress = [](HMODULE, LPCSTR) -> FARPROC {
        return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&TakeWide));
    };
    // A converter that fills what it is given, without a NUL.
    replaced.table.MultiByteToWideChar = [](UINT, DWORD, LPCSTR text, int, LPWSTR wide, int size) -> int {
        int i = 0;
        for (; i < size && text[i] != '\0'; ++i) {
            wide[i] = static_cast<WCHAR>(text[i]);
        }
        return text[i] == '\0' ? i + 1 : 0;
    };
    for (std::size_t length : {518u, 519u, 520u, 5000u}) {
        std::string profile(length, 'p');
        std::string device(length + 520, 'd');
        LPSTR profiles[] = {profile.data()};
        EXPECT_EQ(AddColorProfileVista(device.c_str(), profiles, 1), 0u);
        EXPECT_EQ(g_wide.scope, 0u);
        EXPECT_EQ(g_wide.profile.size(), std::min<std::size_t>(length, 519));
        EXPECT_EQ(g_wide.device.size(), std::min<std::size_t>(length + 520, 1039));
    }
}

TEST_F(WideNames, OfANullPrinterAreEmpty) {
    ReplacedOperations replaced;
    replaced.table.GetProcAddress = [](HMODULE, LPCSTR) -> FARPROC {
        return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&TakeWide));
    };
    EXPECT_EQ(AddColorProfileVista(nullptr, g_profiles, 1), 0u);
    EXPECT_TRUE(g_wide.device.empty());
    EXPECT_EQ(g_wide.profile.size(), 11u);
}

// ---- the routes -----------------------------------------------------------------------------------------------------

class ColourRoutes : public EverySystemTest {
  protected:
    bool IsVistaOrLater() const { return GetParam().starts_with("vista") || GetParam() == "other"; }
};
INSTANTIATE_ON_EVERY_SYSTEM(ColourRoutes);

TEST_P(ColourRoutes, InstallationGoesThroughTheRoutineOfTheSystem) {
    Test().TurnLogOn();
    EXPECT_EQ(InstallColorProfile(g_profiles, 0), 0u);
    Lines expected;
    if (GetParam() == "win95") {
        expected = {"InstallColorProfile95() - Start", "InstallColorProfile95() - End"};
    } else if (GetParam() != "nt4") {
        expected = {"InstallColorProfile982k() - Start", "InstallColorProfile982k() - End(0)"};
    }
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(expected));
}

TEST_P(ColourRoutes, LinkingGoesThroughTheRoutineOfTheSystem) {
    Test().TurnLogOn();
    EXPECT_EQ(AddColorProfile("Aurora 500", g_profiles, 0), 0u);
    Lines expected;
    if (IsVistaOrLater()) {
        expected = {"AddColorProfileVista() - Start", "AddColorProfileVista() - End(0)"};
    } else if (GetParam() != "win95" && GetParam() != "nt4") {
        expected = {"AddColorProfile982k() - Start", "AddColorProfile982k() - End(0)"};
    }
    EXPECT_THAT(Test().TakeLog(), ElementsAreArray(expected));
}

TEST_P(ColourRoutes, Windows95AndNt4DoNothingWhereTheyHaveNoRoutine) {
    ForgetCalls(Test());
    if (GetParam() == "nt4") {
        EXPECT_EQ(InstallColorProfile(g_profiles, 2), 0u);
    }
    if (GetParam() == "nt4" || GetParam() == "win95") {
        EXPECT_EQ(AddColorProfile("Aurora 500", g_profiles, 2), 0u);
    }
    EXPECT_THAT(Test().TakeCalls(), IsEmpty());
}

TEST_P(ColourRoutes, InstalledProfilesAreInTheColourFolder) {
    if (GetParam() == "win95" || GetParam() == "nt4") {
        return;  // no colour library
    }
    const std::string source = "C:\\Stage\\NLA500A.ICC";
    WriteFileOn(Machine(), source, IccProfile("prtr").Bytes());
    std::string path = source;
    LPSTR profiles[] = {path.data()};
    EXPECT_EQ(InstallColorProfile(profiles, 1), 0u);
    const std::string& system = Machine().System().systemDirectory;
    EXPECT_TRUE(Machine().Files().Exists(
        system + (Machine().Is9x() ? "\\Color\\NLA500A.ICC" : "\\spool\\drivers\\color\\NLA500A.ICC")));
}

TEST(ColourWithoutRoute, GivesCode120) {
    simulated::SystemDescription system = *simulated::FindSystem("nt4");
    system.major = 3;
    system.minor = 51;
    TestMachine test(system);
    EXPECT_EQ(InstallColorProfile(g_profiles, 2), DWORD{ERROR_CALL_NOT_IMPLEMENTED});
    EXPECT_EQ(AddColorProfile("Aurora 500", g_profiles, 2), DWORD{ERROR_CALL_NOT_IMPLEMENTED});
}

// ---- Windows 95 -----------------------------------------------------------------------------------------------------

class ProfilesOnWindows95 : public MachineTest {
  protected:
    ProfilesOnWindows95() { Start("win95"); }
    void PutProfile(const char* name, const char* kind) {
        WriteFileOn(Machine(), std::string("C:\\WINDOWS\\SYSTEM\\Color\\") + name, IccProfile(kind).Bytes());
    }
    std::string Text(const char* key, const char* name) {
        return Machine().Registry().Text(std::string("HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\ICM\\") + key,
                                         name);
    }
};

TEST_F(ProfilesOnWindows95, AreEnteredWithTheirPathsInTheDriverDirectory) {
    Test().AllowOpen();  // the key of the printer profile's quality
    PutProfile(g_printerProfile, "prtr");
    PutProfile(g_monitorProfile, "mntr");
    EXPECT_EQ(InstallColorProfile(g_profiles, 2), 0u);
    EXPECT_EQ(Text("prtr\\NORD\\A500\\MediaUnknown\\FE01\\ResolutionUnknown", "Profile00"),
              "C:\\WINDOWS\\SYSTEM\\Color\\NLA500A.ICC");
    EXPECT_EQ(Text("mntr\\NORD\\A500", "Profile00"), "C:\\WINDOWS\\SYSTEM\\Color\\NLDISP.ICC");
    EXPECT_EQ(Machine().Handles().OpenCount(), 1u);
}

TEST_F(ProfilesOnWindows95, AreLookedAtAsPrintersAndThenAsMonitors) {
    PutProfile(g_monitorProfile, "mntr");
    Test().TurnLogOn();
    EXPECT_EQ(InstallColorProfile(g_profiles, 2), 0u);
    const std::string folder = "C:\\WINDOWS\\SYSTEM\\Color\\";
    EXPECT_THAT(
        Test().TakeLog(),
        ElementsAre(
            "InstallColorProfile95() - Start", "WIToolRegistPrtrProfileKey() - Start(" + folder + "NLA500A.ICC)",
            "WIToolReadProfileData Open Error", "WIToolReadProfileData(kind:)",
            "WIToolRegistMntrProfileKey() - Start(" + folder + "NLA500A.ICC)", "WIToolReadProfileData Open Error",
            "WIToolReadProfileData(kind:)", "WIToolRegistPrtrProfileKey() - Start(" + folder + "NLDISP.ICC)",
            "WIToolReadProfileData(kind:mntr)", "WIToolRegistMntrProfileKey() - Start(" + folder + "NLDISP.ICC)",
            "WIToolReadProfileData(kind:mntr)", "WIToolRegistMntrProfileKey() - End", "InstallColorProfile95() - End"));
}

TEST_F(ProfilesOnWindows95, AreLookedForFromTheRootWithoutTheDriverDirectory) {
    faults::FailCall("GetPrinterDriverDirectoryA", 1, 1722);
    ForgetCalls(Test());
    EXPECT_EQ(InstallColorProfile(g_profiles, 1), 0u);
    Lines calls = TakeCallsOf(Test(), {"OpenFile"});
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_THAT(calls[0], StartsWith("OpenFile(\"\\\\Color\\\\NLA500A.ICC\""));
}

TEST_F(ProfilesOnWindows95, ListThatIsNullOrHoldsANullIsSafe) {
    LPSTR profiles[] = {nullptr};
    EXPECT_EQ(InstallColorProfile(nullptr, 2), 0u);
    EXPECT_EQ(InstallColorProfile(profiles, 1), 0u);
}

}  // namespace

}  // namespace pikel
