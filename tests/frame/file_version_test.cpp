// Version texts of driver files, by the table's slots and by their workers.
#include "frame/file_version.h"

#include "frame/pikel.h"
#include "support/calls.h"
#include "support/pe_file.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kFile[] = "C:\\driver.dll";

class FileVersion : public MachineTest {
  protected:
    void Put(const PeVersion& version) { WriteFileOn(Machine(), kFile, MakePeFile(version)); }
    void Put(const std::string& version) { WriteFileOn(Machine(), kFile, MakePeFile(version)); }
    std::string Text() {
        char text[260] = "untouched";
        EXPECT_EQ(DoGetDriverFileVersion(kFile, text, sizeof text), 0u);
        return text;
    }
    DWORD Check(const char* version) {
        char text[260] = {};
        return DoCheckDriverFileVersion(kFile, version, text, sizeof text);
    }
};

TEST_F(FileVersion, IsTheFirstTwoNumbers) {
    const std::pair<const char*, const char*> cases[] = {
        {"2.10.0.3", "2.10"}, {"2", "2.00"},
        {"1.2", "1.02"},      {"12.30.1", "12.30"},
        {"none", "0.00"},     {"1,5,0,0", "1.00"},
        {"", "0.00"},         {"1..2", "1.00"},
        {"-1.5", "-1.05"},    {"1.100", "1.100"},
        {"1a.2b", "1.02"},    {" 3. 4", "3.04"},
        {".7", "0.07"},       {"99999999999.1", "2147483647.01"},
    };
    for (const auto& [version, text] : cases) {
        Put(version);
        EXPECT_EQ(Text(), text) << version;
    }
}

TEST_F(FileVersion, IsReadFrom64BitFilesToo) {
    PeVersion version;
    version.is64Bit = true;
    Put(version);
    EXPECT_EQ(Text(), "1.02");
}

TEST_F(FileVersion, IsTheProductVersionUnlessTheOtherIsAskedFor) {
    PeVersion version;
    version.texts = {{"FileVersion", "3.4"}, {"ProductVersion", "5.6"}};
    Put(version);
    EXPECT_EQ(Text(), "5.06");
    char text[32] = {};
    EXPECT_EQ(DoGetDriverFileVersion(kFile, text, sizeof text, 0), 0u);
    EXPECT_STREQ(text, "3.04");
    EXPECT_EQ(DoGetDriverFileVersion(kFile, text, sizeof text, 7), 0u);
    EXPECT_STREQ(text, "5.06");
}

TEST_F(FileVersion, MissingTextCountsAsEmpty) {
    PeVersion version;
    version.texts = {{"Comments", "none"}};
    Put(version);
    EXPECT_EQ(Text(), "0.00");
}

TEST_F(FileVersion, OfAFileWithoutOneIsTheSystemsCode) {
    char text[16] = "untouched";
    WriteFileOn(Machine(), kFile, "plain");
    EXPECT_EQ(DoGetDriverFileVersion(kFile, text, sizeof text), DWORD{ERROR_RESOURCE_DATA_NOT_FOUND});
    EXPECT_EQ(DoGetDriverFileVersion("C:\\missing.dll", text, sizeof text), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_STREQ(text, "untouched");
}

TEST_F(FileVersion, NeedsATranslation) {
    PeVersion version;
    version.hasTranslation = false;
    Put(version);
    char text[16] = "untouched";
    EXPECT_EQ(DoGetDriverFileVersion(kFile, text, sizeof text), DWORD{ERROR_INTERNAL_ERROR});
    version.hasTranslation = version.isTranslationEmpty = true;
    Put(version);
    EXPECT_EQ(DoGetDriverFileVersion(kFile, text, sizeof text), 0u);
    EXPECT_STREQ(text, "0.00") << "an empty translation leaves the text empty";
}

TEST_F(FileVersion, IsThatOfTheFirstTranslation) {
    PeVersion version;
    version.otherTranslations = {{0x0411, 0x03A4}, {0x0407, 0x04E4}};
    Put(version);
    EXPECT_EQ(Text(), "1.02");
}

TEST_F(FileVersion, TextThatFillsTheBufferIsTooLong) {
    char text[16] = {};
    Put("1.2" + std::string(256, '.'));  // 259 bytes and a NUL
    EXPECT_EQ(DoGetDriverFileVersion(kFile, text, sizeof text), 0u);
    Put("1.2" + std::string(257, '.'));
    EXPECT_EQ(DoGetDriverFileVersion(kFile, text, sizeof text), DWORD{ERROR_INSUFFICIENT_BUFFER});
}

TEST_F(FileVersion, ThatDoesNotFitIsLeftOutWithoutAnError) {
    Put("12.30");
    char text[6] = "old";
    EXPECT_EQ(DoGetDriverFileVersion(kFile, text, 5), 0u);
    EXPECT_STREQ(text, "old");
    EXPECT_EQ(DoGetDriverFileVersion(kFile, text, 6), 0u);
    EXPECT_STREQ(text, "12.30");
    EXPECT_EQ(DoGetDriverFileVersion(kFile, nullptr, 100), 0u);
    EXPECT_EQ(DoGetDriverFileVersion(nullptr, text, sizeof text), DWORD{ERROR_INVALID_PARAMETER});
}

TEST_F(FileVersion, CheckComparesNumbers) {
    const struct {
        const char* file;
        const char* given;
        DWORD verdict;
    } cases[] = {{"1.10", "1.9", 2},  {"1.09", "1.9", 1},    {"3.0", "3", 1}, {"2.9", "3", 3},   {"1.2.3.4", "1.2", 1},
                 {"1.2", "1.2.9", 1}, {"65536.1", "0.1", 1}, {"1.2", "", 2},  {"0.0", "none", 1}};
    for (const auto& one : cases) {
        Put(one.file);
        EXPECT_EQ(Check(one.given), one.verdict) << one.file << " against " << one.given;
    }
}

TEST_F(FileVersion, CheckOfAnUnreadableFileSaysLowerAndWritesNothing) {
    char text[16] = "untouched";
    EXPECT_EQ(DoCheckDriverFileVersion("C:\\missing.dll", "1.0", text, sizeof text), 3u);
    EXPECT_STREQ(text, "untouched");
    EXPECT_EQ(DoCheckDriverFileVersion(nullptr, "1.0", text, sizeof text), 87u);
    EXPECT_EQ(DoCheckDriverFileVersion(kFile, nullptr, text, sizeof text), 87u);
    Put("1.0");
    EXPECT_EQ(DoCheckDriverFileVersion(kFile, "1.0", text, 4), 1u);
    EXPECT_STREQ(text, "untouched");
    EXPECT_EQ(DoCheckDriverFileVersion(kFile, "1.0", text, 5), 1u);
    EXPECT_STREQ(text, "1.00");
}

TEST_F(FileVersion, SlotsLogAtDetailLevelWithinTheirFrames) {
    Put("2.10.0.3");
    const PI_KEL_Interface& table = *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
    Test().TurnLogOn();
    char text[16] = {};
    EXPECT_EQ(table.PI_KEL_GetDriverFileVersion(kFile, text, sizeof text), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_KEL_GetDriverFileVersion Start", "DoGetDriverFileVersion() - Start",
                            "GetFileVersionHelper() - Start", "GetFileVersionHelper() - End:0",
                            "FileName:(C:\\driver.dll) -> Version:(2.10)", "DoGetDriverFileVersion() - End:0",
                            "PI_KEL_GetDriverFileVersion End:(0x00000000)", ""));
    EXPECT_EQ(table.PI_KEL_CheckDriverFileVersion(kFile, "2.9", text, sizeof text), 2u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_KEL_CheckDriverFileVersion Start", "DoCheckDriverFileVersion() - Start",
                            "DoGetDriverFileVersion() - Start", "GetFileVersionHelper() - Start",
                            "GetFileVersionHelper() - End:0", "FileName:(C:\\driver.dll) -> Version:(2.10)",
                            "DoGetDriverFileVersion() - End:0", "String:(2.9) -> DWORD:(2.9)(00020009)", "2.10 > 2.9",
                            "DoCheckDriverFileVersion() - End:2", "PI_KEL_CheckDriverFileVersion End:(2)", ""));
    EXPECT_EQ(table.PI_KEL_GetDriverFileVersion(nullptr, text, sizeof text), 0x90010057u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_KEL_GetDriverFileVersion Start", "PI_KEL_GetDriverFileVersion End:(0x90010057)", ""));
    Test().TurnLogOn(1);
    EXPECT_EQ(table.PI_KEL_CheckDriverFileVersion(nullptr, "2.9", text, sizeof text), 87u);
    EXPECT_EQ(table.PI_KEL_GetDriverFileVersion(kFile, text, sizeof text), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_KEL_CheckDriverFileVersion Start", "PI_KEL_CheckDriverFileVersion End:(87)", "",
                            "PI_KEL_GetDriverFileVersion Start", "PI_KEL_GetDriverFileVersion End:(0x00000000)", ""));
}

TEST_F(FileVersion, CheckLogsBothVersionsAndItsVerdict) {
    Put("2.10");
    Test().TurnLogOn();
    const struct {
        const char* given;
        std::vector<std::string> lines;
    } cases[] = {
        {"2.10", {"String:(2.10) -> DWORD:(2.10)(0002000a)", "2.10 == 2.10", "DoCheckDriverFileVersion() - End:1"}},
        {"2.11.5",
         {"String:(2.11.5) -> DWORD:(2.11)(0002000b)", "2.10 < 2.11.5", "DoCheckDriverFileVersion() - End:3"}},
    };
    for (const auto& one : cases) {
        Check(one.given);
        const std::vector<std::string> log = Test().TakeLog();
        ASSERT_GT(log.size(), 3u);
        EXPECT_EQ(std::vector<std::string>(log.end() - 3, log.end()), one.lines);
    }
}

TEST_F(FileVersion, CheckOfAnUnreadableFileLogsTheCodes) {
    WriteFileOn(Machine(), kFile, "plain");
    Test().TurnLogOn();
    Check("1.0");
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoCheckDriverFileVersion() - Start", "DoGetDriverFileVersion() - Start",
                            "GetFileVersionHelper() - Start", "GetFileVersionHelper() - End:1812",
                            "DoGetDriverFileVersion() - End:1812", "DoCheckDriverFileVersion() - End:3"));
}

TEST_F(FileVersion, FailuresOfTheSystemComeBack) {
    Put("1.0");
    char text[16] = {};
    faults::FailCall("GetFileVersionInfoA", 1, 4242);
    EXPECT_EQ(DoGetDriverFileVersion(kFile, text, sizeof text), 4242u);
    faults::Reset();
    faults::FailCall("GetFileVersionInfoSizeA", 1, 4243);
    EXPECT_EQ(DoGetDriverFileVersion(kFile, text, sizeof text), 4243u);
    faults::Reset();
    faults::FailCall("VerQueryValueA", 1, 4244);
    EXPECT_EQ(DoGetDriverFileVersion(kFile, text, sizeof text), DWORD{ERROR_INTERNAL_ERROR});
    faults::Reset();
    Machine().Heap().FailAllocation(0, false);
    EXPECT_EQ(DoGetDriverFileVersion(kFile, text, sizeof text), DWORD{ERROR_NOT_ENOUGH_MEMORY});
    Machine().Heap().StopFailing();
    EXPECT_STREQ(text, "");
}

// ---- damaged files --------------------------------------------------------------------------------------------------

TEST_F(FileVersion, OfACutFileIsACodeAndNothingElse) {
    const std::string whole = MakePeFile("1.2");
    char text[16] = {};
    for (std::size_t size = 0; size < whole.size(); size += 7) {
        WriteFileOn(Machine(), kFile, whole.substr(0, size));
        EXPECT_NE(DoGetDriverFileVersion(kFile, text, sizeof text), 0u) << size;
    }
}

TEST_F(FileVersion, DamagedBytesDoNoHarm) {
    const std::string whole = MakePeFile("1.2");
    char text[16] = {};
    for (std::size_t at = 0; at < whole.size(); at += 3) {
        for (char byte : {'\0', '\x7F', '\xFF'}) {
            std::string damaged = whole;
            damaged[at] = byte;
            WriteFileOn(Machine(), kFile, damaged);
            DoGetDriverFileVersion(kFile, text, sizeof text);
        }
    }
}

}  // namespace
}  // namespace pikel
