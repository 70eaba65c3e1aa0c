// Profile files: the text of one, the calls, and the sections that are registry keys.
#include "machine/registry/profiles.h"

#include <string>
#include <vector>

#include "machine/operations.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

using simulated::ProfileNumber;
using simulated::ProfileText;
using testing_support::EverySystemTest;
using testing_support::MachineTest;
using testing_support::ReadFileOn;
using testing_support::WriteFileOn;
using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kFile = "C:\\test.ini";
constexpr const char* kText =
    "; a comment\r\n"
    "[ First ]\r\n"
    "  key = some value  \r\n"
    "quoted=\" blanks \"\r\n"
    "single='x'\r\n"
    "half=\"open\r\n"
    "inner=a \"b\" c\r\n"
    "empty=\r\n"
    "no equals sign\r\n"
    ";hidden=1\r\n"
    "key=again\r\n"
    "semicolon=a;b\r\n"
    "\r\n"
    "[Second] behind\n"
    "k=2\n"
    "[FIRST]\r\n"
    "late=1\r\n"
    "[unclosed\r\n"
    "last=3";

// ---- one file -------------------------------------------------------------------------------------------------------

struct FindCase {
    const char* section;
    const char* key;
    std::optional<std::string> value;
};

TEST(ProfileTextTest, FindsValuesAsWindowsDoes) {
    const ProfileText text(1252, kText);
    const FindCase cases[] = {
        {"First", "key", "some value"},
        {"FIRST", " KEY ", "some value"},
        {" first ", "quoted", "\" blanks \""},
        {"first", "empty", ""},
        {"first", "no equals sign", {}},
        {"first", ";hidden", {}},
        {"first", "hidden", {}},
        {"first", "semicolon", "a;b"},
        {"Second", "k", "2"},
        {"first", "late", {}},
        {"unclosed", "last", {}},
        {"missing", "key", {}},
        {"first", "k", {}},
    };
    for (const FindCase& test : cases) {
        EXPECT_EQ(text.Find(test.section, test.key), test.value) << test.section << ' ' << test.key;
    }
}

TEST(ProfileTextTest, ListsSectionsKeysAndEntriesInTheOrderOfTheFile) {
    const ProfileText text(1252, kText);
    EXPECT_THAT(text.Sections(), ElementsAre("First", "Second", "FIRST"));
    EXPECT_THAT(text.Keys("first"),
                ElementsAre("key", "quoted", "single", "half", "inner", "empty", "key", "semicolon"));
    EXPECT_THAT(text.Keys("missing"), IsEmpty());
    EXPECT_THAT(text.Entries("First"),
                ElementsAre("key=some value", "quoted=\" blanks \"", "single='x'", "half=\"open", "inner=a \"b\" c",
                            "empty=", "no equals sign", "key=again", "semicolon=a;b"));
}

TEST(ProfileTextTest, TrailBytesThatLookLikeBracketsDoNotCloseAHeader) {
    const ProfileText text(932, "[\x83\x5D]\r\nk=\x83\x5C\r\n");
    EXPECT_THAT(text.Sections(), ElementsAre("\x83\x5D"));
    EXPECT_EQ(text.Find("\x83\x5D", "k"), "\x83\x5C");
}

TEST(ProfileTextTest, AWriteKeepsEveryOtherLine) {
    ProfileText text(1252, "; head\r\n\r\n[A]\r\n key = 1 \r\n; note\r\n\r\n[B]\r\nx=1");
    text.Set("a", "KEY", "2");
    text.Set("A", "new", "3");
    text.Set("B", "y", "");
    text.Set("C", " z ", " v ");
    EXPECT_EQ(text.Text(), "; head\r\n\r\n[A]\r\nkey=2\r\n; note\r\nnew=3\r\n\r\n[B]\r\nx=1\r\ny=\r\n[C]\r\nz= v \r\n");
    text.RemoveKey("A", "key");
    text.RemoveKey("A", "missing");
    text.RemoveKey("missing", "key");
    text.RemoveSection("b");
    text.RemoveSection("missing");
    EXPECT_EQ(text.Text(), "; head\r\n\r\n[A]\r\n; note\r\nnew=3\r\n\r\n[C]\r\nz= v \r\n");
    text.ReplaceSection("a", {"one=1", "two"});
    text.ReplaceSection("d", {"x=y"});
    text.ReplaceSection("C", {});
    EXPECT_EQ(text.Text(), "; head\r\n\r\n[A]\r\none=1\r\ntwo\r\n\r\n[C]\r\n[d]\r\nx=y\r\n");
}

TEST(ProfileNumberTest, ReadsTheDigitsInFront) {
    struct {
        const char* text;
        UINT number;
        UINT withPrefixes;
    } const cases[] = {
        {"12", 12, 12},
        {"  12abc", 12, 12},
        {"+7", 7, 7},
        {"-5", static_cast<UINT>(-5), static_cast<UINT>(-5)},
        {"- 5", 0, 0},
        {"abc", 0, 0},
        {"", 0, 0},
        {"0x1F", 0, 31},
        {"-0x10", 0, static_cast<UINT>(-16)},
        {"0b101", 0, 5},
        {"0o17", 0, 15},
        {"017", 17, 17},
        {"0", 0, 0},
        {"0x", 0, 0},
        {"4294967295", 4294967295U, 4294967295U},
        {"4294967297", 1, 1},
        {"1.5", 1, 1},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(ProfileNumber(test.text, false), test.number) << test.text;
        EXPECT_EQ(ProfileNumber(test.text, true), test.withPrefixes) << test.text;
    }
}

// ---- the calls ------------------------------------------------------------------------------------------------------

/// The buffer's bytes that matter: as long as the length returned and two more.
struct Answer {
    DWORD length;
    std::string bytes;
    bool operator==(const Answer&) const = default;
};
void PrintTo(const Answer& answer, std::ostream* stream) {
    *stream << answer.length << " \"";
    for (char c : answer.bytes) {
        *stream << (c == '\0' ? '~' : c);
    }
    *stream << '"';
}

class ProfileCalls : public MachineTest {
  protected:
    ProfileCalls() { Begin("xp"); }
    void Begin(const char* system) {
        Start(system);
        WriteFileOn(Machine(), kFile, kText);
    }
    static Answer Get(const char* section, const char* key, const char* defaultText = "D", DWORD size = 128,
                      const char* file = kFile) {
        std::string buffer(160, '#');
        DWORD length = simulated::GetPrivateProfileStringA(section, key, defaultText, buffer.data(), size, file);
        EXPECT_EQ(buffer.substr(size), std::string(160 - size, '#')) << "nothing may be written past the buffer";
        return {length, buffer.substr(0, std::min<std::size_t>(length + 2, size))};
    }
};

TEST_F(ProfileCalls, GiveAValueWithoutItsQuotesAndItsLength) {
    EXPECT_EQ(Get("first", "key"), (Answer{10, "some value\0#"s}));
    EXPECT_EQ(Get("first", "quoted"), (Answer{8, " blanks \0#"s}));
    EXPECT_EQ(Get("first", "single"), (Answer{1, "x\0#"s}));
    EXPECT_EQ(Get("first", "half"), (Answer{5, "\"open\0#"s}));
    EXPECT_EQ(Get("first", "inner"), (Answer{7, "a \"b\" c\0#"s}));
    EXPECT_EQ(Get("first", "empty"), (Answer{0, "\0#"s}));
}

TEST_F(ProfileCalls, CutAValueThatDoesNotFit) {
    EXPECT_EQ(Get("first", "key", "D", 11), (Answer{10, "some value\0"s}));
    EXPECT_EQ(Get("first", "key", "D", 10), (Answer{9, "some valu\0"s}));
    EXPECT_EQ(Get("first", "key", "D", 1), (Answer{0, "\0"s}));
    EXPECT_EQ(Get("first", "key", "D", 0), (Answer{0, ""}));
    EXPECT_EQ(simulated::GetPrivateProfileStringA("first", "key", "D", nullptr, 10, kFile), 0u);
}

TEST_F(ProfileCalls, GiveTheDefaultWithoutItsBlanksForWhatIsMissing) {
    simulated::lastError = 0;
    EXPECT_EQ(Get("first", "missing", "def  "), (Answer{3, "def\0#"s}));
    EXPECT_EQ(simulated::lastError, 2u);
    EXPECT_EQ(Get("missing", "key", nullptr), (Answer{0, "\0#"s}));
    EXPECT_EQ(Get("first", "key", "D", 128, "C:\\missing.ini"), (Answer{1, "D\0#"s}));
    EXPECT_EQ(Get("first", "missing", "default", 4), (Answer{3, "def\0"s}));
    simulated::lastError = 4711;
    Get("first", "key");
    EXPECT_EQ(simulated::lastError, 4711u) << "success leaves it alone";
}

TEST_F(ProfileCalls, ListSectionsAndKeysForANullName) {
    EXPECT_EQ(Get(nullptr, nullptr), (Answer{19, "First\0Second\0FIRST\0\0#"s}));
    EXPECT_EQ(Get(nullptr, "key"), (Answer{19, "First\0Second\0FIRST\0\0#"s}));
    EXPECT_EQ(Get("second", nullptr), (Answer{2, "k\0\0#"s}));
    EXPECT_EQ(Get(nullptr, nullptr, "D", 10), (Answer{8, "First\0Se\0\0"s}));
    EXPECT_EQ(Get(nullptr, nullptr, "D", 20), (Answer{19, "First\0Second\0FIRST\0\0"s}));
    EXPECT_EQ(Get(nullptr, nullptr, "D", 2), (Answer{0, "\0\0"s}));
    EXPECT_EQ(Get(nullptr, nullptr, "D", 1), (Answer{0, "\0"s}));
    EXPECT_EQ(Get("missing", nullptr), (Answer{1, "D\0#"s}));
}

TEST_F(ProfileCalls, ReadNumbers) {
    WriteFileOn(Machine(), kFile, "[a]\r\nn= 12x\r\nneg=-3\r\nq=\"15\"\r\nempty=\r\nhex=0x10\r\nword=no\r\n");
    auto number = [](const char* key, INT fallback) {
        return simulated::GetPrivateProfileIntA("a", key, fallback, kFile);
    };
    EXPECT_EQ(number("n", 1), 12u);
    EXPECT_EQ(number("neg", 1), static_cast<UINT>(-3));
    EXPECT_EQ(number("q", 1), 15u);
    EXPECT_EQ(number("empty", 1), 1u);
    EXPECT_EQ(number("missing", -7), static_cast<UINT>(-7));
    EXPECT_EQ(number("word", 1), 0u);
    EXPECT_EQ(number("hex", 1), 16u);
    EXPECT_EQ(simulated::GetPrivateProfileIntA(nullptr, "n", 3, kFile), 3u);
    EXPECT_EQ(simulated::GetPrivateProfileIntA("a", nullptr, 3, kFile), 3u);
}

TEST_F(ProfileCalls, AFileWithoutAFolderLiesInTheWindowsFolder) {
    EXPECT_TRUE(simulated::WritePrivateProfileStringA("a", "b", "c", "bare.ini"));
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\WINDOWS\\bare.ini"), "[a]\r\nb=c\r\n");
    EXPECT_EQ(Get("a", "b", "D", 128, "BARE.INI"), (Answer{1, "c\0#"s}));
}

TEST_F(ProfileCalls, WriteAndRemoveEntriesAndSections) {
    WriteFileOn(Machine(), kFile, "[a]\r\nx=1\r\ny=2\r\n[b]\r\nz=3\r\n");
    EXPECT_TRUE(simulated::WritePrivateProfileStringA("A", "X", "\"q\"", kFile));
    EXPECT_TRUE(simulated::WritePrivateProfileStringA("a", "y", nullptr, kFile));
    EXPECT_TRUE(simulated::WritePrivateProfileStringA("b", nullptr, nullptr, kFile));
    EXPECT_TRUE(simulated::WritePrivateProfileStringA("b", "missing", nullptr, kFile));
    EXPECT_EQ(ReadFileOn(Machine(), kFile), "[a]\r\nx=\"q\"\r\n");
    EXPECT_TRUE(simulated::WritePrivateProfileStringA("b", "missing", nullptr, "C:\\missing.ini"));
    EXPECT_FALSE(Machine().Files().Exists("C:\\missing.ini")) << "nothing to remove, nothing to make";
}

TEST_F(ProfileCalls, ReadAndReplaceWholeSections) {
    WriteFileOn(Machine(), kFile, "[rename]\r\nNUL=C:\\old\r\n; note\r\n[b]\r\nz=3\r\n");
    std::string buffer(40, '#');
    EXPECT_EQ(simulated::GetPrivateProfileSectionA("RENAME", buffer.data(), 40, kFile), 11u);
    EXPECT_EQ(buffer.substr(0, 13), "NUL=C:\\old\0\0#"s);
    EXPECT_TRUE(simulated::WritePrivateProfileSectionA("Rename", "NUL=C:\\old\0C:\\a=C:\\b\0", kFile));
    EXPECT_EQ(ReadFileOn(Machine(), kFile), "[rename]\r\nNUL=C:\\old\r\nC:\\a=C:\\b\r\n[b]\r\nz=3\r\n");
    EXPECT_EQ(simulated::GetPrivateProfileSectionA("rename", buffer.data(), 16, kFile), 14u);
    EXPECT_EQ(buffer.substr(0, 16), "NUL=C:\\old\0C:\\\0\0"s);
    EXPECT_EQ(simulated::GetPrivateProfileSectionA("missing", buffer.data(), 40, kFile), 0u);
    EXPECT_EQ(buffer.substr(0, 2), "\0\0"s);
    EXPECT_EQ(simulated::GetPrivateProfileSectionA("rename", buffer.data(), 0, kFile), 0u);
    EXPECT_EQ(simulated::GetPrivateProfileSectionA(nullptr, buffer.data(), 40, kFile), 0u);
    EXPECT_TRUE(simulated::WritePrivateProfileSectionA("rename", nullptr, kFile));
    EXPECT_EQ(ReadFileOn(Machine(), kFile), "[b]\r\nz=3\r\n");
    EXPECT_TRUE(simulated::WritePrivateProfileSectionA("new", "", kFile));
    EXPECT_EQ(ReadFileOn(Machine(), kFile), "[b]\r\nz=3\r\n[new]\r\n");
    EXPECT_FALSE(simulated::WritePrivateProfileSectionA(nullptr, "", kFile));
}

TEST_F(ProfileCalls, TellWhyAFileCanNotBeWritten) {
    auto failure = [](const char* section, const char* file) {
        simulated::lastError = 0;
        EXPECT_FALSE(simulated::WritePrivateProfileStringA(section, "k", "v", file));
        return simulated::lastError;
    };
    EXPECT_EQ(failure("a", "C:\\nofolder\\x.ini"), 3u);
    EXPECT_FALSE(Machine().Files().Exists("C:\\nofolder"));
    EXPECT_EQ(failure(nullptr, kFile), 2u);
    {
        auto held = Machine().Files().HoldOpen(kFile);
        EXPECT_EQ(failure("a", kFile), 32u);
        EXPECT_EQ(Get("first", "key"), (Answer{1, "D\0#"s}));
    }
    Machine().Files().Deny(kFile);
    EXPECT_EQ(failure("a", kFile), 5u);
    simulated::lastError = 0;
    EXPECT_EQ(Get("first", "key"), (Answer{1, "D\0#"s}));
    EXPECT_EQ(simulated::lastError, 5u);
}

// ---- win.ini --------------------------------------------------------------------------------------------------------

class WinIni : public EverySystemTest {
  protected:
    static std::string GetProfile(const char* section, const char* key) {
        std::string buffer(64, '#');
        return buffer.substr(0, simulated::GetProfileStringA(section, key, "D", buffer.data(), 64));
    }
};

TEST_P(WinIni, KeepsTheDefaultPrinterWhereItsFamilyHasIt) {
    EXPECT_EQ(GetProfile("windows", "device"), "D");
    EXPECT_TRUE(simulated::WriteProfileStringA("windows", "device", "P,winspool,LPT1:"));
    EXPECT_EQ(GetProfile("Windows", "DEVICE"), "P,winspool,LPT1:");
    const std::string file = ReadFileOn(Machine(), Machine().System().windowsDirectory + "\\win.ini");
    const std::string key = "HKCU\\Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows";
    const bool isInFile = file.find("device=P,winspool,LPT1:\r\n") != std::string::npos;
    EXPECT_EQ(isInFile, Machine().Is9x());
    EXPECT_EQ(Machine().Registry().Text(key, "Device"), Machine().Is9x() ? "" : "P,winspool,LPT1:");
    Test().Reopen();
    EXPECT_EQ(GetProfile("windows", "device"), "P,winspool,LPT1:");
    EXPECT_TRUE(simulated::WriteProfileStringA("windows", "device", nullptr));
    EXPECT_EQ(GetProfile("windows", "device"), "D");
}

TEST_P(WinIni, SharesItsDevicesWithTheRegistryOnTheNtFamily) {
    const std::string key = "HKCU\\Software\\Microsoft\\Windows NT\\CurrentVersion\\Devices";
    Machine().Registry().SetText(key, "P", "winspool,Ne00:");
    EXPECT_EQ(GetProfile("devices", "P"), Machine().Is9x() ? "D" : "winspool,Ne00:");
    std::string buffer(64, '#');
    const DWORD length = simulated::GetPrivateProfileSectionA("devices", buffer.data(), 64, "win.ini");
    EXPECT_EQ(buffer.substr(0, length), Machine().Is9x() ? "" : "P=winspool,Ne00:\0"s);
    EXPECT_NE(GetProfile("ports", "LPT1:"), "D") << "the ports are there on every system";
}

TEST_P(WinIni, KeepsEveryOtherSectionInTheFile) {
    EXPECT_TRUE(simulated::WriteProfileStringA("mine", "k", "v"));
    EXPECT_EQ(GetProfile("mine", "k"), "v");
    EXPECT_THAT(ReadFileOn(Machine(), Machine().System().windowsDirectory + "\\win.ini"),
                ::testing::HasSubstr("[mine]\r\nk=v\r\n"));
}

TEST_P(WinIni, CountsAsTheSameFileUnderEveryName) {
    EXPECT_TRUE(simulated::WriteProfileStringA("windows", "device", "P"));
    const std::string path = Machine().System().windowsDirectory + "\\WIN.INI";
    std::string buffer(16, '#');
    for (const char* name : {path.c_str(), "Win.ini", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(simulated::GetPrivateProfileStringA("windows", "device", "", buffer.data(), 16, name), 1u);
    }
    EXPECT_TRUE(simulated::WritePrivateProfileStringA("windows", nullptr, nullptr, "win.ini"));
    EXPECT_EQ(GetProfile("windows", "device"), "D");
    EXPECT_TRUE(simulated::WritePrivateProfileSectionA("devices", "A=1\0B=2\0", "win.ini"));
    EXPECT_TRUE(simulated::WritePrivateProfileSectionA("devices", "C=3\0", "win.ini"));
    EXPECT_EQ(GetProfile("devices", nullptr), "C\0"s);
}

INSTANTIATE_ON_EVERY_SYSTEM(WinIni);

TEST_F(ProfileCalls, RightsOnAMappedKeyCount) {
    Machine().Registry().Deny("HKCU\\Software\\Microsoft\\Windows NT");
    for (auto text : {"P", static_cast<const char*>(nullptr)}) {
        simulated::lastError = 0;
        EXPECT_FALSE(simulated::WriteProfileStringA("windows", "device", text));
        EXPECT_EQ(simulated::lastError, 5u);
    }
    simulated::SystemDescription system = Machine().System();
    system.administrator = false;
    Machine().SetSystem(system);
    EXPECT_FALSE(simulated::WriteProfileStringA("ports", "X:", ""));
}

TEST_F(ProfileCalls, ANumberOfTheRegistryReadsAsItsDigits) {
    Machine().Registry().SetNumber("HKCU\\Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows", "n", 77);
    EXPECT_EQ(simulated::GetPrivateProfileIntA("windows", "n", 0, "win.ini"), 77u);
}

}  // namespace
}  // namespace pikel
