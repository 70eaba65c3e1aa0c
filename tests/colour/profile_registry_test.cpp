#include "colour/profile_registry.h"

#include <cstring>
#include <string>
#include <vector>

#include "icc_profile.h"
#include "support/calls.h"

namespace pikel {

namespace {

using namespace testing_support;
using simulated::HandleKind;
using simulated::RegistryValue;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

using Lines = std::vector<std::string>;

constexpr char kIcm[] = "HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\ICM";
constexpr char kModelKey[] = "HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\ICM\\mntr\\NORD\\A500";
constexpr char kPrinterModelKey[] = "HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\ICM\\prtr\\NORD\\A500";

/// Values of a key as "name=text", the length told where no text ends in a NUL.
Lines ValuesOf(simulated::Machine& machine, const std::string& key) {
    Lines lines;
    for (const RegistryValue& value : machine.Registry().Values(key)) {
        EXPECT_EQ(value.type, DWORD{REG_SZ}) << value.name;
        lines.push_back(value.name + "=" + value.data.c_str());
    }
    return lines;
}

class ProfileRegistryTest : public MachineTest {
  protected:
    ProfileRegistryTest() { Start("win95"); }

    /// Writes a profile with both descriptions.
    void PutProfile(const std::string& path, const char* kind) {
        IccProfile profile(kind);
        profile.PutDescription(304, "Nordlicht").PutDescription(400, "Aurora 500");
        WriteFileOn(Machine(), path, profile.Bytes());
    }
    /// Gives the first names of a key to another profile.
    void TakeNames(const std::string& key, int count) {
        for (int i = 0; i < count; ++i) {
            char name[20];
            std::snprintf(name, sizeof name, "Profile%02d", i);
            Machine().Registry().SetText(key, name, "C:\\other.icc");
        }
    }
    std::string Text(const std::string& key, const std::string& name) {
        return Machine().Registry().Text(key, name, "?");
    }
    bool HasIcm(const char* kind) { return Machine().Registry().KeyExists(std::string(kIcm) + "\\" + kind); }
    std::size_t OpenKeys() { return Machine().Handles().OpenCount(HandleKind::RegistryKey); }
};

// ---- monitors -------------------------------------------------------------------------------------------------------

class MonitorProfile : public ProfileRegistryTest {
  protected:
    const char* m_path = "C:\\WINDOWS\\SYSTEM\\Color\\NLDISP.ICC";
};

TEST_F(MonitorProfile, IsEnteredUnderItsSignatures) {
    PutProfile(m_path, "mntr");
    WIToolRegistMntrProfileKey(m_path);
    EXPECT_THAT(ValuesOf(Machine(), std::string(kIcm) + "\\mntr\\NORD"), ElementsAre("ManufacturerTag=Nordlicht"));
    EXPECT_THAT(ValuesOf(Machine(), kModelKey), ElementsAre("ModelTag=Aurora 500", std::string("Profile00=") + m_path));
}

TEST_F(MonitorProfile, IsEnteredByTheseCalls) {
    PutProfile(m_path, "MNTR");
    ForgetCalls(Test());
    WIToolRegistMntrProfileKey(m_path);
    EXPECT_THAT(
        TakeCallsOf(Test(), {"RegCreateKeyExA", "RegSetValueExA", "RegEnumValueA", "RegQueryValueExA", "RegCloseKey"}),
        ElementsAre(MatchesRegex("RegCreateKeyExA\\(0x80000002, \"SOFTWARE.*ICM\\\\+mntr\", 0x0, null, 0x0, 0xf003f, "
                                 "null, &, null\\) = 0x0"),
                    MatchesRegex("RegCreateKeyExA\\(0x[0-9a-f]+, \"NORD\", 0x0, null, 0x0, 0xf003f, null, &, null\\) = "
                                 "0x0"),
                    MatchesRegex("RegSetValueExA\\(0x[0-9a-f]+, \"ManufacturerTag\", 0x0, 0x1, &, 0x9\\) = 0x0"),
                    MatchesRegex("RegCreateKeyExA\\(0x[0-9a-f]+, \"A500\", .*"),
                    MatchesRegex("RegSetValueExA\\(0x[0-9a-f]+, \"ModelTag\", 0x0, 0x1, &, 0xa\\) = 0x0"),
                    MatchesRegex("RegEnumValueA\\(0x[0-9a-f]+, 0x0, &, &, null, null, &, &\\) = 0x0"),
                    MatchesRegex("RegEnumValueA\\(0x[0-9a-f]+, 0x1, .* = 0x103.*"),
                    MatchesRegex("RegQueryValueExA\\(0x[0-9a-f]+, \"Profile00\", null, null, null, null\\) = 0x2.*"),
                    MatchesRegex("RegSetValueExA\\(0x[0-9a-f]+, \"Profile00\", 0x0, 0x1, &, 0x22\\) = 0x0"),
                    MatchesRegex("RegCloseKey.*"), MatchesRegex("RegCloseKey.*"), MatchesRegex("RegCloseKey.*")));
}

TEST_F(MonitorProfile, IsEnteredOnceHoweverOftenItIsRegistered) {
    PutProfile(m_path, "mntr");
    WIToolRegistMntrProfileKey(m_path);
    WIToolRegistMntrProfileKey(m_path);
    WIToolRegistMntrProfileKey("c:\\windows\\system\\COLOR\\nldisp.icc");
    EXPECT_THAT(ValuesOf(Machine(), kModelKey), ElementsAre("ModelTag=Aurora 500", std::string("Profile00=") + m_path));
}

TEST_F(MonitorProfile, UnderAnotherPathIsAnotherProfile) {
    PutProfile(m_path, "mntr");
    PutProfile("C:\\Other\\NLDISP.ICC", "mntr");
    WIToolRegistMntrProfileKey(m_path);
    WIToolRegistMntrProfileKey("C:\\Other\\NLDISP.ICC");
    EXPECT_EQ(Text(kModelKey, "Profile00"), m_path);
    EXPECT_EQ(Text(kModelKey, "Profile01"), "C:\\Other\\NLDISP.ICC");
}

TEST_F(MonitorProfile, TakesTheFirstFreeNumber) {
    PutProfile(m_path, "mntr");
    Machine().Registry().SetText(kModelKey, "Profile00", "C:\\a.icc");
    Machine().Registry().SetText(kModelKey, "profile02", "C:\\c.icc");
    WIToolRegistMntrProfileKey(m_path);
    EXPECT_EQ(Text(kModelKey, "Profile01"), m_path);
}

TEST_F(MonitorProfile, TakesTheLastNumberBeside99Others) {
    PutProfile(m_path, "mntr");
    TakeNames(kModelKey, 99);
    WIToolRegistMntrProfileKey(m_path);
    EXPECT_EQ(Text(kModelKey, "Profile99"), m_path);
}

TEST_F(MonitorProfile, IsNotEnteredBeside100Others) {
    PutProfile(m_path, "mntr");
    TakeNames(kModelKey, 100);
    Test().TurnLogOn();
    WIToolRegistMntrProfileKey(m_path);
    EXPECT_EQ(Machine().Registry().Values(kModelKey).size(), 101u) << "the 100 and ModelTag";
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre(std::string("WIToolRegistMntrProfileKey() - Start(") + m_path + ")",
                            "WIToolReadProfileData(kind:mntr)", "WIToolRegistMntrProfileKey() - End"));
}

TEST_F(MonitorProfile, WithoutDescriptionsGetsTheStockMaker) {
    WriteFileOn(Machine(), m_path, IccProfile("mntr").Bytes());
    WIToolRegistMntrProfileKey(m_path);
    EXPECT_THAT(ValuesOf(Machine(), std::string(kIcm) + "\\mntr\\NORD"), ElementsAre("ManufacturerTag=Tarvo Inc."));
    EXPECT_THAT(ValuesOf(Machine(), kModelKey), ElementsAre("ModelTag=", std::string("Profile00=") + m_path));
}

TEST_F(MonitorProfile, OfAnotherClassIsLeftAlone) {
    for (const char* kind : {"prtr", "scnr", "mnt", ""}) {
        SCOPED_TRACE(kind);
        WriteFileOn(Machine(), m_path, IccProfile(kind).Bytes());
        Test().TurnLogOn();
        WIToolRegistMntrProfileKey(m_path);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(std::string("WIToolRegistMntrProfileKey() - Start(") + m_path + ")",
                                                  std::string("WIToolReadProfileData(kind:") + kind + ")"));
        EXPECT_FALSE(HasIcm("mntr"));
    }
}

TEST_F(MonitorProfile, ThatCannotBeReadIsLeftAlone) {
    Test().TurnLogOn();
    WIToolRegistMntrProfileKey(m_path);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(std::string("WIToolRegistMntrProfileKey() - Start(") + m_path + ")",
                                              "WIToolReadProfileData Open Error", "WIToolReadProfileData(kind:)"));
    EXPECT_FALSE(HasIcm("mntr"));
}

TEST_F(MonitorProfile, SignatureEndsAtANul) {
    IccProfile profile("mntr", std::string_view("NO\0X", 4), std::string_view("\0A50", 4));
    WriteFileOn(Machine(), m_path, profile.Bytes());
    WIToolRegistMntrProfileKey(m_path);
    EXPECT_THAT(ValuesOf(Machine(), std::string(kIcm) + "\\mntr\\NO"),
                ElementsAre("ManufacturerTag=Tarvo Inc.", "ModelTag=", std::string("Profile00=") + m_path));
}

/// A registry call that fails, and what is logged of it.
struct FailureCase {
    const char* call;
    std::size_t nth;
    const char* line;
    std::size_t closes;
};

TEST_F(MonitorProfile, FailuresOfTheRegistryAreLoggedAndTheKeysClosed) {
    PutProfile(m_path, "mntr");
    for (const FailureCase& c :
         {FailureCase{"RegCreateKeyExA", 1, "RegCreateKeyEx-1 Error:5", 0},
          FailureCase{"RegCreateKeyExA", 2, "RegCreateKeyEx-2 Error:5", 1},
          FailureCase{"RegSetValueExA", 1, "WIToolRegistMntrProfileKey RegSetValueEx Error:5", 2},
          FailureCase{"RegCreateKeyExA", 3, "WIToolRegistMntrProfileKey RegCreateKeyEx-2 Error:5", 2},
          FailureCase{"RegSetValueExA", 2, "WIToolRegistMntrProfileKey RegSetValueEx Error:5", 3}}) {
        SCOPED_TRACE(c.line);
        faults::Reset();
        faults::FailCall(c.call, c.nth, 5);
        Test().TurnLogOn();
        WIToolRegistMntrProfileKey(m_path);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(std::string("WIToolRegistMntrProfileKey() - Start(") + m_path + ")",
                                                  "WIToolReadProfileData(kind:mntr)", c.line));
        EXPECT_EQ(Test().TakeCallNames({"RegCloseKey"}).size(), c.closes);
        EXPECT_EQ(OpenKeys(), 0u);
    }
}

TEST_F(MonitorProfile, ValueThatCannotBeSetIsNotReported) {
    PutProfile(m_path, "mntr");
    faults::FailCall("RegSetValueExA", 3, 5);
    Test().TurnLogOn();
    WIToolRegistMntrProfileKey(m_path);
    EXPECT_EQ(Test().TakeLog().back(), "WIToolRegistMntrProfileKey() - End");
    EXPECT_THAT(ValuesOf(Machine(), kModelKey), ElementsAre("ModelTag=Aurora 500"));
}

TEST_F(MonitorProfile, LogsAtDetailLevelAlone) {
    PutProfile(m_path, "mntr");
    Test().TurnLogOn(1);
    WIToolRegistMntrProfileKey(m_path);
    faults::FailCall("RegCreateKeyExA", 1, 5);
    WIToolRegistMntrProfileKey(m_path);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_F(MonitorProfile, OfNoPathIsLeftAlone) {
    WIToolRegistMntrProfileKey(nullptr);
    EXPECT_FALSE(HasIcm("mntr"));
}

// ---- printers -------------------------------------------------------------------------------------------------------

/// Where profiles of printers go. The key of the quality stays open by design, one more with each profile.
class PrinterProfile : public ProfileRegistryTest {
  protected:
    PrinterProfile() { Test().AllowOpen(); }
    void SetUp() override { m_leftOpen = 0; }
    void TearDown() override {
        EXPECT_EQ(OpenKeys(), m_leftOpen);
        EXPECT_EQ(Machine().Handles().OpenCount(), m_leftOpen);
        EXPECT_THAT(Machine().Handles().Misuses(), IsEmpty());
        EXPECT_EQ(Machine().Heap().OpenCount(), 0u);
    }
    /// Registers a profile whose quality key is opened.
    void Register(const std::string& path) {
        WIToolRegistPrtrProfileKey(path.c_str());
        ++m_leftOpen;
    }

    std::size_t m_leftOpen = 0;
    const char* m_path = "C:\\WINDOWS\\SYSTEM\\Color\\NLA500A.ICC";
    std::string m_qualityKey = std::string(kPrinterModelKey) + "\\MediaUnknown\\FE01\\ResolutionUnknown";
};

TEST_F(PrinterProfile, IsEnteredBelowItsSignaturesByItsQuality) {
    struct Case {
        const char* file;
        const char* quality;
    };
    for (const Case& c : {Case{"NLA500.PRF", "\\MediaUnknown\\DitherUnknown\\ResolutionUnknown"},
                          Case{"nla500a.prf", "\\MediaUnknown\\DitherUnknown\\ResolutionUnknown"},
                          Case{"NLA500A.ICC", "\\MediaUnknown\\FE01\\ResolutionUnknown"},
                          Case{"nla501a.icc", "\\MediaUnknown\\FE01\\ResolutionUnknown"},
                          Case{"a.icc", "\\MediaUnknown\\FE01\\ResolutionUnknown"},
                          Case{"NLA500B.ICC", "\\MediaUnknown\\FE05\\ResolutionUnknown"},
                          Case{"nla501b.Icc", "\\MediaUnknown\\FE05\\ResolutionUnknown"}, Case{"NLA500C.ICC", ""},
                          Case{"NLA500A.ICM", ""}, Case{"A.ICC.TXT", ""}, Case{"ICC", ""}, Case{"x", ""},
                          Case{".PRF", "\\MediaUnknown\\DitherUnknown\\ResolutionUnknown"}}) {
        SCOPED_TRACE(c.file);
        Machine().Registry().DeleteKey(std::string(kIcm) + "\\prtr");
        std::string path = std::string("C:\\WINDOWS\\SYSTEM\\Color\\") + c.file;
        PutProfile(path, "prtr");
        Register(path);
        EXPECT_THAT(ValuesOf(Machine(), std::string(kIcm) + "\\prtr\\NORD"), ElementsAre("ManufacturerTag=Nordlicht"));
        std::string key = kPrinterModelKey + std::string(c.quality);
        if (*c.quality == '\0') {
            EXPECT_THAT(ValuesOf(Machine(), key), ElementsAre("ModelTag=Aurora 500", "Profile00=" + path));
        } else {
            EXPECT_THAT(ValuesOf(Machine(), kPrinterModelKey), ElementsAre("ModelTag=Aurora 500"));
            EXPECT_THAT(ValuesOf(Machine(), key), ElementsAre("Profile00=" + path));
        }
    }
}

TEST_F(PrinterProfile, FolderThatLooksLikeAnEndingDoesNotCount) {
    PutProfile("C:\\X.PRF\\SUBA.ICC\\name", "prtr");
    Register("C:\\X.PRF\\SUBA.ICC\\name");
    EXPECT_EQ(Text(kPrinterModelKey, "Profile00"), "C:\\X.PRF\\SUBA.ICC\\name");
}

TEST_F(PrinterProfile, KeyOfItsQualityIsMadeInOneCallAndStaysOpen) {
    PutProfile(m_path, "prtr");
    ForgetCalls(Test());
    Register(m_path);
    EXPECT_THAT(
        TakeCallsOf(Test(), {"RegCreateKeyExA", "RegEnumValueA", "RegQueryValueExA", "RegSetValueExA", "RegCloseKey"}),
        ElementsAre(MatchesRegex("RegCreateKeyExA\\(0x80000002, \"SOFTWARE.*ICM\\\\+prtr\", 0x0, null, 0x0, "
                                 "0xf003f, null, &, null\\) = 0x0"),
                    MatchesRegex("RegCreateKeyExA\\(0x[0-9a-f]+, \"NORD\", .*"),
                    MatchesRegex("RegSetValueExA\\(.*\"ManufacturerTag\".*"),
                    MatchesRegex("RegCreateKeyExA\\(0x[0-9a-f]+, \"A500\", .*"),
                    MatchesRegex("RegSetValueExA\\(.*\"ModelTag\".*"),
                    MatchesRegex("RegCreateKeyExA\\(0x[0-9a-f]+, \"MediaUnknown\\\\+FE01\\\\+ResolutionUnknown\", "
                                 "0x0, null, 0x0, 0xf003f, null, &, &\\) = 0x0"),
                    MatchesRegex("RegQueryValueExA\\(.*\"Profile00\".*"),
                    MatchesRegex("RegSetValueExA\\(.*\"Profile00\", 0x0, 0x1, &, 0x23\\) = 0x0"),
                    MatchesRegex("RegCloseKey.*"), MatchesRegex("RegCloseKey.*"), MatchesRegex("RegCloseKey.*")));
}

TEST_F(PrinterProfile, ClosesModelMakerAndClassInThatOrder) {
    PutProfile(m_path, "prtr");
    ForgetCalls(Test());
    Register(m_path);
    Lines calls = TakeCallsOf(Test(), {"RegSetValueExA", "RegCreateKeyExA", "RegCloseKey"});
    auto handleOf = [](const std::string& call) {
        return call.substr(call.find('(') + 1, call.find_first_of(",)") - call.find('(') - 1);
    };
    std::string classKey = handleOf(calls[1]);         // parent of the maker's key
    std::string manufacturerKey = handleOf(calls[3]);  // parent of the model's key
    std::string modelKey = handleOf(calls[5]);         // parent of the quality's key
    ASSERT_EQ(calls.size(), 10u);
    EXPECT_EQ(handleOf(calls[7]), modelKey);
    EXPECT_EQ(handleOf(calls[8]), manufacturerKey);
    EXPECT_EQ(handleOf(calls[9]), classKey);
}

TEST_F(PrinterProfile, IsEnteredOnceHoweverOftenItIsRegistered) {
    PutProfile(m_path, "prtr");
    Register(m_path);
    Register(m_path);
    EXPECT_THAT(ValuesOf(Machine(), m_qualityKey), ElementsAre(std::string("Profile00=") + m_path));
}

TEST_F(PrinterProfile, HasNoLimitOfNumbers) {
    PutProfile(m_path, "prtr");
    TakeNames(m_qualityKey, 100);
    Register(m_path);
    EXPECT_EQ(Text(m_qualityKey, "Profile100"), m_path);
    // A name of three digits isn't recognised as a profile's.
    Register(m_path);
    EXPECT_EQ(Text(m_qualityKey, "Profile101"), m_path);
}

TEST_F(PrinterProfile, WhoseQualityKeyCannotBeMadeIsLeftOutWithoutALine) {
    PutProfile(m_path, "prtr");
    faults::FailCall("RegCreateKeyExA", 4, 5);
    Test().TurnLogOn();
    WIToolRegistPrtrProfileKey(m_path);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre(std::string("WIToolRegistPrtrProfileKey() - Start(") + m_path + ")",
                            "WIToolReadProfileData(kind:prtr)", "WIToolRegistPrtrProfileKey() - End"));
    EXPECT_EQ(Test().TakeCallNames({"RegCloseKey"}).size(), 3u);
}

TEST_F(PrinterProfile, OfAnotherClassIsLeftAlone) {
    PutProfile(m_path, "mntr");
    Test().TurnLogOn();
    WIToolRegistPrtrProfileKey(m_path);
    EXPECT_THAT(Test().TakeLog(), ElementsAre(std::string("WIToolRegistPrtrProfileKey() - Start(") + m_path + ")",
                                              "WIToolReadProfileData(kind:mntr)"));
    EXPECT_FALSE(HasIcm("prtr"));
}

TEST_F(PrinterProfile, FailuresOfTheRegistryAreLoggedAndTheKeysClosed) {
    PutProfile(m_path, "prtr");
    for (const FailureCase& c : {FailureCase{"RegCreateKeyExA", 1, "RegCreateKeyEx-1 Error:5", 0},
                                 FailureCase{"RegCreateKeyExA", 2, "RegCreateKeyEx-2 Error:5", 1},
                                 FailureCase{"RegSetValueExA", 1, "RegSetValueEx-1 Error:5", 2},
                                 FailureCase{"RegCreateKeyExA", 3, "RegCreateKeyEx-3 Error:5", 2},
                                 FailureCase{"RegSetValueExA", 2, "RegSetValueEx-2 Error:5", 3}}) {
        SCOPED_TRACE(c.line);
        faults::Reset();
        faults::FailCall(c.call, c.nth, 5);
        Test().TurnLogOn();
        WIToolRegistPrtrProfileKey(m_path);
        EXPECT_THAT(Test().TakeLog(), ElementsAre(std::string("WIToolRegistPrtrProfileKey() - Start(") + m_path + ")",
                                                  "WIToolReadProfileData(kind:prtr)", c.line));
        EXPECT_EQ(Test().TakeCallNames({"RegCloseKey"}).size(), c.closes);
    }
}

TEST_F(PrinterProfile, LogsAtDetailLevelAlone) {
    PutProfile(m_path, "prtr");
    Test().TurnLogOn(1);
    Register(m_path);
    faults::FailCall("RegCreateKeyExA", 1, 5);
    WIToolRegistPrtrProfileKey(m_path);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

// ---- IsProfileRegistered --------------------------------------------------------------------------------------------

class RegisteredProfile : public ProfileRegistryTest {
  protected:
    DWORD Look(LPCSTR path) {
        RegistryKey key;
        EXPECT_EQ(Platform().RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Test", 0, KEY_READ, key.Out()), 0);
        return IsProfileRegistered(key.Get(), path);
    }
    void Set(const char* name, std::string_view text) {
        Machine().Registry().SetText("HKLM\\SOFTWARE\\Test", name, text);
    }
};

TEST_F(RegisteredProfile, IsAValueOfAProfilesNameWithThePath) {
    struct Case {
        const char* name;
        const char* path;
        DWORD found;
    };
    for (const Case& c :
         {Case{"Profile00", "C:\\a.icc", 1}, Case{"PROFILE37", "c:\\A.ICC", 1}, Case{"ProfileXY", "C:\\a.icc", 1},
          Case{"Profile0", "C:\\a.icc", 0}, Case{"Profile100", "C:\\a.icc", 0}, Case{"Profils00", "C:\\a.icc", 0},
          Case{"ModelTag1", "C:\\a.icc", 0}, Case{"Profile00", "C:\\b.icc", 0}, Case{"Profile00", "C:\\a.icc2", 0},
          Case{"Profile00", "", 0}}) {
        Machine().Registry().DeleteKey("HKLM\\SOFTWARE\\Test");
        Set("Before", "C:\\b.icc");
        Set(c.name, "C:\\a.icc");
        if (std::string(c.path) != "C:\\b.icc") {
            EXPECT_EQ(Look(c.path), c.found) << c.name << " " << c.path;
        } else {
            EXPECT_EQ(Look(c.path), 0u);
        }
    }
}

TEST_F(RegisteredProfile, IsLookedForUntilTheEnumerationEnds) {
    for (int i = 0; i < 30; ++i) {
        Set(("Other" + std::to_string(i)).c_str(), "C:\\a.icc");
    }
    Set("Profile05", "C:\\a.icc");
    EXPECT_EQ(Look("C:\\a.icc"), 1u);
    EXPECT_EQ(Look("C:\\z.icc"), 0u);
}

TEST_F(RegisteredProfile, IsNotFoundBehindAValueThatDoesNotFit) {
    Set("Long", std::string(300, 'x'));
    Set("Profile05", "C:\\a.icc");
    EXPECT_EQ(Look("C:\\a.icc"), 0u) << "any code ends the search";
}

TEST_F(RegisteredProfile, MayHaveAPathThatFillsTheBuffer) {
    std::string path = "C:\\" + std::string(257, 'p');
    Machine().Registry().Set("HKLM\\SOFTWARE\\Test", "Profile00", REG_SZ, path);
    EXPECT_EQ(Look(path.c_str()), 1u);
}

}  // namespace

}  // namespace pikel
