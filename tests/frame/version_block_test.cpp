// What a version resource can look like beyond the usual: short translations, values without an end, numbers beyond 16
// bits; and which of its two texts counts.
#include <string>

#include "frame/file_version.h"
#include "support/machine_test.h"
#include "support/pe_file.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;

constexpr char kFile[] = "C:\\driver.dll";

class VersionBlock : public MachineTest {
  protected:
    void Put(const PeVersion& version) { WriteFileOn(Machine(), kFile, MakePeFile(version)); }
    void Put(const std::string& version) { WriteFileOn(Machine(), kFile, MakePeFile(version)); }
    DWORD Check(const char* given) { return DoCheckDriverFileVersion(kFile, given, nullptr, 0); }
    std::string Text(DWORD which = 1) {
        char text[64] = "untouched";
        EXPECT_EQ(DoGetDriverFileVersion(kFile, text, sizeof text, which), 0u);
        return text;
    }
};

TEST_F(VersionBlock, CheckGoesByTheProductVersion) {
    PeVersion version;
    version.texts = {{"FileVersion", "3.4"}, {"ProductVersion", "5.6"}};
    Put(version);
    EXPECT_EQ(Check("5.6"), 1u);
    EXPECT_EQ(Check("3.4"), 2u);
    EXPECT_EQ(Check("5.7"), 3u);
    char text[16] = {};
    EXPECT_EQ(DoCheckDriverFileVersion(kFile, "5.6", text, sizeof text), 1u);
    EXPECT_STREQ(text, "5.06");
}

TEST_F(VersionBlock, BothPartsCompareByTheirLow16Bits) {
    const struct {
        const char* file;
        const char* given;
        DWORD verdict;
    } cases[] = {{"0.65537", "0.1", 1}, {"0.1", "0.65537", 1}, {"0.65536", "0.1", 3},
                 {"1.0", "0.65536", 2}, {"0.65536", "1.0", 3}, {"65537.2", "1.2", 1},
                 {"1.2", "65537.2", 1}, {"0.65535", "1.0", 3}, {"32768.0", "1.0", 2}};
    for (const auto& one : cases) {
        Put(one.file);
        EXPECT_EQ(Check(one.given), one.verdict) << one.file << " against " << one.given;
    }
}

TEST_F(VersionBlock, LogTellsTheNumbersWholeAndThePackedOnesCut) {
    Put("1.2");
    Test().TurnLogOn();
    Check("65538.65539");
    EXPECT_THAT(Test().TakeLog(), Contains("String:(65538.65539) -> DWORD:(65538.65539)(00020003)"));
}

TEST_F(VersionBlock, VerdictsStandInTheDetailLogAlone) {
    Put("2.10");
    for (const char* given : {"2.10", "2.9", "2.11"}) {
        Test().TurnLogOn(1);
        Check(given);
        EXPECT_THAT(Test().TakeLog(), ::testing::IsEmpty()) << given;
    }
    const std::pair<const char*, const char*> verdicts[] = {
        {"2.10", "2.10 == 2.10"}, {"2.9", "2.10 > 2.9"}, {"2.11", "2.10 < 2.11"}};
    for (const auto& [given, line] : verdicts) {
        Test().TurnLogOn(2);
        Check(given);
        EXPECT_THAT(Test().TakeLog(), Contains(line));
    }
}

// ---- blocks that the version calls tell of --------------------------------------------------------------------------

PlatformTable g_before;
UINT g_translationLength = 0;

TEST_F(VersionBlock, TranslationOfLessThan4BytesGivesAnEmptyText) {
    Put("7.8");
    g_before = Platform();
    ReplacedOperations replaced;
    replaced.table.VerQueryValueA = [](LPCVOID block, LPCSTR query, LPVOID* value, PUINT length) -> BOOL {
        const BOOL found = g_before.VerQueryValueA(block, query, value, length);
        if (std::string_view(query).ends_with("Translation")) {
            *length = g_translationLength;
        }
        return found;
    };
    for (g_translationLength = 0; g_translationLength < 4; ++g_translationLength) {
        Test().TurnLogOn();
        EXPECT_EQ(Text(), "0.00") << g_translationLength;
        const std::vector<std::string> log = Test().TakeLog();
        EXPECT_THAT(log, Contains("GetFileVersionHelper() - End:0"));
        EXPECT_THAT(log, Contains("FileName:(C:\\driver.dll) -> Version:(0.00)"));
        EXPECT_EQ(Check("0.0"), 1u);
    }
    EXPECT_EQ(Text(), "7.08") << "4 bytes are a pair";
}

TEST_F(VersionBlock, ValueWithoutANulEndsWithItsLength) {
    Put("1.25.9");
    g_before = Platform();
    ReplacedOperations replaced;
    replaced.table.VerQueryValueA = [](LPCVOID block, LPCSTR query, LPVOID* value, PUINT length) -> BOOL {
        const BOOL found = g_before.VerQueryValueA(block, query, value, length);
        if (std::string_view(query).ends_with("Version")) {
            *length = 3;  // of "1.25.9"
        }
        return found;
    };
    EXPECT_EQ(Text(), "1.02");
    EXPECT_EQ(Text(0), "1.02");
    EXPECT_EQ(Check("1.2"), 1u);
}

TEST_F(VersionBlock, ValueEndsWithItsNulWhateverLengthIsTold) {
    Put("1.25");
    g_before = Platform();
    ReplacedOperations replaced;
    replaced.table.VerQueryValueA = [](LPCVOID block, LPCSTR query, LPVOID* value, PUINT length) -> BOOL {
        static constexpr char kValue[] =
            "1.25\0"
            "7.7";
        const BOOL found = g_before.VerQueryValueA(block, query, value, length);
        if (std::string_view(query).ends_with("Version")) {
            *value = const_cast<char*>(kValue);
            *length = sizeof kValue;
        }
        return found;
    };
    EXPECT_EQ(Text(), "1.25");
}

}  // namespace
}  // namespace pikel
