// How INF text is taken apart: sections, keys, fields, quotes, comments, continuations, strings, encodings. The answers
// are those of the Setup API.
#include "machine/inf/file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/inf_cases.h"
#include "machine/base/text.h"

namespace pikel::simulated {
namespace {

using namespace contract;

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::unique_ptr<InfFile> Parse(std::string text, UINT codePage = 1252) {
    InfFile::Error error;
    std::unique_ptr<InfFile> file = InfFile::Parse(std::move(text), codePage, &error);
    EXPECT_NE(file, nullptr) << std::hex << error.code << " line " << std::dec << error.line;
    EXPECT_EQ(error.code, 0u);
    return file;
}

/// "<key> [field] [field]", with "-" for a line without a key.
std::string Show(InfFile& file, UINT section, UINT line) {
    const std::optional<std::string_view> key = file.Field(section, line, 0);
    std::string text = key.has_value() ? "<" + std::string(*key) + ">" : "-";
    for (UINT index = 1; index <= file.FieldCount(section, line); ++index) {
        text += " [" + std::string(file.Field(section, line, index).value_or("MISSING")) + "]";
    }
    EXPECT_EQ(file.Field(section, line, file.FieldCount(section, line) + 1), std::nullopt);
    return text;
}

std::vector<std::string> ShowSection(InfFile& file, std::string_view name) {
    const std::optional<UINT> section = file.FindSection(name);
    if (!section.has_value()) {
        return {"no section"};
    }
    std::vector<std::string> lines;
    for (UINT line = 0; line < file.LineCount(*section); ++line) {
        lines.push_back(Show(file, *section, line));
    }
    return lines;
}

// ---- lines ----------------------------------------------------------------------------------------------------------

class InfLines : public ::testing::TestWithParam<InfLineCase> {};

TEST_P(InfLines, AreTakenApartAsTheSetupApiDoes) {
    std::unique_ptr<InfFile> file = Parse("[A]\n" + std::string(GetParam().text) + kInfStrings);
    EXPECT_EQ(ShowSection(*file, "A"), GetParam().lines);
    // The same with the other line ends.
    std::string windows;
    for (char character : "[A]\n" + std::string(GetParam().text) + kInfStrings) {
        windows += character == '\n' ? "\r\n" : std::string(1, character);
    }
    file = Parse(windows);
    EXPECT_EQ(ShowSection(*file, "a"), GetParam().lines);
}

INSTANTIATE_TEST_SUITE_P(Cases, InfLines, ::testing::ValuesIn(kInfLineCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(InfText, ACarriageReturnInALineIsABlankOfItsMiddle) {
    std::unique_ptr<InfFile> file = Parse("[A]\r\nk=v\rw,x\r\rz\r\n");
    EXPECT_THAT(ShowSection(*file, "A"), ElementsAre("<k> [v\rw] [x\r\rz]"));
}

TEST(InfText, ANulIsShownAsABlank) {
    std::unique_ptr<InfFile> file = Parse("[A]\nk=v\0w\nk=\"v\0w\"\n\0\n"s);
    EXPECT_THAT(ShowSection(*file, "A"), ElementsAre("<k> [v w]", "<k> [v w]", "< > [ ]"));
}

TEST(InfText, ControlZEndsTheFile) {
    std::unique_ptr<InfFile> file = Parse("[A]\nk=v\x1Aw\nz=1\n[B]\nq=1\n");
    EXPECT_THAT(ShowSection(*file, "A"), ElementsAre("<k> [v]"));
    EXPECT_EQ(file->FindSection("B"), std::nullopt);
    file = Parse("[A]\nk=\"v\x1Aw\"\n");
    EXPECT_THAT(ShowSection(*file, "A"), ElementsAre("<k> [v]"));
}

TEST(InfText, TheLastLineNeedsNoLineBreak) {
    EXPECT_THAT(ShowSection(*Parse("[A]\nk=v"), "A"), ElementsAre("<k> [v]"));
    EXPECT_THAT(ShowSection(*Parse("[A]\nk=\"v"), "A"), ElementsAre("<k> [v]"));
    EXPECT_THAT(ShowSection(*Parse("[A]\nk=b\\"), "A"), ElementsAre("<k> [b]"));
    EXPECT_THAT(ShowSection(*Parse("[A]"), "A"), IsEmpty());
}

TEST(InfText, LineTextJoinsFieldsByBareCommas) {
    std::unique_ptr<InfFile> file = Parse("[A]\nk= \"a,b\" , %s% ,, c ,\nx\na , b\n[Strings]\ns=\"q\"\"q\"\n");
    const UINT section = file->FindSection("A").value();
    EXPECT_EQ(file->LineText(section, 0), "a,b,q\"q,,c,");
    EXPECT_EQ(file->LineText(section, 1), "x");
    EXPECT_EQ(file->LineText(section, 2), "a,b");
}

TEST(InfText, NumbersBetweenPercentSignsAreFolders) {
    std::unique_ptr<InfFile> file = Parse("[A]\nk=%10%\\x,%11%,%12%,%1x%,%-1%,%99999999999%\n[Strings]\n11=own\n");
    file->SetDirectories([](DWORD id) { return id == 12 ? std::nullopt : std::optional("dir" + std::to_string(id)); });
    EXPECT_THAT(ShowSection(*file, "A"), ElementsAre("<k> [dir10\\x] [own] [%12%] [%1x%] [%-1%] [%99999999999%]"));
}

TEST(InfText, StringsMissingInTheirSectionAreTakenFromTheEnglishOne) {
    std::unique_ptr<InfFile> file = Parse(
        "[A]\nk=%x%,%y%,%z%\n[Strings.0409]\nx=english\ny=english y\n[Strings.0407]\nz=german\n[Strings]\nx=plain\n");
    EXPECT_THAT(ShowSection(*file, "A"), ElementsAre("<k> [plain] [english y] [%z%]"));
}

TEST(InfText, SubstitutionIsBounded) {
    const std::string large(1024 * 1024, 'x');
    std::string text = "[A]\nk=";
    for (int count = 0; count < 1000; ++count) {
        text += "%s%,";
    }
    text += "\nj=";
    for (int count = 0; count < 1000; ++count) {
        text += "%s%";
    }
    std::unique_ptr<InfFile> file = Parse(text + "\n[Strings]\ns=" + large + "\n");
    const UINT section = file->FindSection("A").value();
    EXPECT_LE(file->LineText(section, 0).size(), InfFile::kLongestText + 4 * 1001);
    EXPECT_LE(file->LineText(section, 1).size(), InfFile::kLongestText + 4 * 1001);
    EXPECT_GT(file->LineText(section, 1).size(), 15 * large.size());
}

// ---- sections -------------------------------------------------------------------------------------------------------

TEST(InfSections, OfOneNameAreOneWithoutRegardToCase) {
    std::unique_ptr<InfFile> file = Parse("[A]\na=1\n[B]\nb=1\n[a]\na=2\nc=3\n");
    EXPECT_THAT(ShowSection(*file, "A"), ElementsAre("<a> [1]", "<a> [2]", "<c> [3]"));
    EXPECT_EQ(file->FindSection("A"), file->FindSection("a"));
    EXPECT_EQ(file->SectionCount(), 2u);
    EXPECT_EQ(file->SectionName(0), "A");
}

TEST(InfSections, LettersOfTheCodePageFoldToo) {
    std::unique_ptr<InfFile> file = Parse("[\xC9T\xC9]\n\xC4=1\n");
    ASSERT_NE(file->FindSection("\xE9t\xE9"), std::nullopt);
    EXPECT_NE(file->FindLine(0, "\xE4"), std::nullopt);
    EXPECT_EQ(file->FindLine(0, "\xE5"), std::nullopt);
}

class InfHeaders : public ::testing::TestWithParam<InfHeaderCase> {};

TEST_P(InfHeaders, NameTheirSectionsUpToTheFirstBracket) {
    std::unique_ptr<InfFile> file = Parse(std::string("[First]\nf=1\n") + GetParam().text);
    EXPECT_EQ(ShowSection(*file, GetParam().section), GetParam().lines);
}

INSTANTIATE_TEST_SUITE_P(Cases, InfHeaders, ::testing::ValuesIn(kInfHeaderCases),
                         [](const auto& info) { return std::string(info.param.name); });

// ---- keys -----------------------------------------------------------------------------------------------------------

/// Few lines are searched one by one, many by a table.
class InfKeys : public ::testing::TestWithParam<int> {};

TEST_P(InfKeys, TheFirstLineWithAKeyIsFound) {
    std::string text = "[A]\nk=v\n%s%=sub\nk=second\na,b\nonly\n\"q , k\"=quoted\nLast=1\n";
    for (int count = 0; count < GetParam(); ++count) {
        text += "more" + std::to_string(count) + "=1\n";
    }
    std::unique_ptr<InfFile> file = Parse(text + "[Strings]\ns=key of s\n");
    EXPECT_EQ(file->FindLine(0, "K"), 0u);
    EXPECT_EQ(file->FindLine(0, "Key Of S"), 1u);
    EXPECT_EQ(file->FindLine(0, "%s%"), std::nullopt);
    EXPECT_EQ(file->FindLine(0, "a"), std::nullopt);
    EXPECT_EQ(file->FindLine(0, "b"), std::nullopt);
    EXPECT_EQ(file->FindLine(0, "only"), 4u);
    EXPECT_EQ(file->FindLine(0, "q , k"), 5u);
    EXPECT_EQ(file->FindLine(0, "last"), 6u);
    EXPECT_EQ(file->FindLine(0, ""), std::nullopt);
    for (int count = 0; count < GetParam(); ++count) {
        EXPECT_EQ(file->FindLine(0, "MORE" + std::to_string(count)), 7u + count);
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, InfKeys, ::testing::Values(0, 1, 2, 50));

TEST(InfText, ValueGivesFieldOneOfAKey) {
    std::unique_ptr<InfFile> file = Parse("[A]\nk=a,b\n,x\n");
    EXPECT_EQ(file->Value("a", "K"), "a");
    EXPECT_EQ(file->Value("a", "none"), std::nullopt);
    EXPECT_EQ(file->Value("none", "k"), std::nullopt);
}

// ---- errors ---------------------------------------------------------------------------------------------------------

class InfErrors : public ::testing::TestWithParam<InfErrorCase> {};

TEST_P(InfErrors, NameTheCodeAndTheLine) {
    InfFile::Error error;
    EXPECT_EQ(InfFile::Parse(GetParam().text, 1252, &error), nullptr);
    EXPECT_EQ(error.code, GetParam().code);
    EXPECT_EQ(error.line, GetParam().line);
}

INSTANTIATE_TEST_SUITE_P(Cases, InfErrors, ::testing::ValuesIn(kInfErrorCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(InfSections, ANameMayHave255Bytes) {
    std::unique_ptr<InfFile> file = Parse("[" + std::string(255, 's') + "]\nk=v\n");
    EXPECT_NE(file->FindSection(std::string(255, 'S')), std::nullopt);
}

TEST(InfSections, AFileMayHaveNone) {
    EXPECT_EQ(Parse("  \r\n")->SectionCount(), 0u);
    EXPECT_EQ(Parse("; nothing")->SectionCount(), 0u);
    EXPECT_EQ(Parse("\x1A")->SectionCount(), 0u);
    EXPECT_EQ(Parse("\xFF\xFE")->SectionCount(), 0u);
    EXPECT_EQ(Parse("\xEF\xBB\xBF")->SectionCount(), 0u);
}

TEST(InfText, ErrorsNeedNobodyToListen) {
    EXPECT_EQ(InfFile::Parse("text", 1252), nullptr);
    EXPECT_NE(InfFile::Parse("[A]", 1252), nullptr);
}

// ---- encodings ------------------------------------------------------------------------------------------------------

std::string Utf16(std::u16string_view text, bool isBigEndian) {
    std::string bytes;
    for (char16_t character : text) {
        const char low = static_cast<char>(character & 0xff);
        const char high = static_cast<char>(character >> 8);
        bytes += isBigEndian ? high : low;
        bytes += isBigEndian ? low : high;
    }
    return bytes;
}

TEST(InfEncodings, AreTurnedIntoTheCodePage) {
    const std::u16string text = u"[A]\r\nk=v\u00E9\u20AC\u3042\r\n";
    const std::string line = "<k> [v\xE9\x80?]";
    EXPECT_THAT(ShowSection(*Parse(Utf16(u"\uFEFF" + text, false)), "A"), ElementsAre(line));
    EXPECT_THAT(ShowSection(*Parse(Utf16(u"\uFEFF" + text, true)), "A"), ElementsAre(line));
    EXPECT_THAT(ShowSection(*Parse(Utf16(text, false)), "A"), ElementsAre(line));
    EXPECT_THAT(ShowSection(*Parse("\xEF\xBB\xBF" + FromWide(CP_UTF8, text)), "A"), ElementsAre(line));
}

TEST(InfEncodings, TextWithoutAMarkIsOfTheCodePage) {
    EXPECT_THAT(ShowSection(*Parse("[A]\nk=v\x80\x81\x8D\xE9\xFF\n"), "A"), ElementsAre("<k> [v\x80\x81\x8D\xE9\xFF]"));
    EXPECT_THAT(ShowSection(*Parse("[A]\nk=v\xC3\xA9\n"), "A"), ElementsAre("<k> [v\xC3\xA9]"));
}

TEST(InfEncodings, Utf8StaysOnAMachineThatUsesIt) {
    EXPECT_THAT(ShowSection(*Parse("\xEF\xBB\xBF[A]\nk=\xC3\xA0\n", CP_UTF8), "A"), ElementsAre("<k> [\xC3\xA0]"));
}

TEST(InfEncodings, TrailBytesAreNoBackslashesBracketsOrLetters) {
    // 0x83 0x5C and 0x83 0x5D hold a backslash and a closing bracket, 0x83 0x41 and 0x83 0x61 an A and an a.
    std::unique_ptr<InfFile> file = Parse(
        "[\x83\x5D]\nk=\x83\x5C\nz=1\n\x83\x41=big\n\x83\x61=small\n[\x83\x41]\n[\x83\x61]\nx=\x95\x5C , \x95\x5C;\n",
        932);
    EXPECT_THAT(ShowSection(*file, "\x83\x5D"),
                ElementsAre("<k> [\x83\x5C]", "<z> [1]", "<\x83\x41> [big]", "<\x83\x61> [small]"));
    EXPECT_EQ(file->FindLine(0, "\x83\x61"), 3u);
    EXPECT_THAT(ShowSection(*file, "\x83\x41"), IsEmpty());
    EXPECT_THAT(ShowSection(*file, "\x83\x61"), ElementsAre("<x> [\x95\x5C] [\x95\x5C]"));
}

TEST(InfEncodings, ALeadByteAtTheEndIsHarmless) {
    EXPECT_THAT(ShowSection(*Parse("[A]\nk=\x83", 932), "A"), ElementsAre("<k> [\x83]"));
    EXPECT_EQ(InfFile::Parse("[A\x83", 932), nullptr);
    EXPECT_EQ(InfFile::Parse("[A\x83]\nk=1\n", 932), nullptr) << "the bracket is a trail byte";
}

// ---- size -----------------------------------------------------------------------------------------------------------

// Nothing here is timed; a step that isn't linear makes these tests stand out.

TEST(InfSize, ManyDuplicateSectionsAreFound) {
    std::string text;
    for (int count = 0; count < 50000; ++count) {
        text += "[Same]\nk" + std::to_string(count) + "=1\n";
    }
    std::unique_ptr<InfFile> file = Parse(text);
    EXPECT_EQ(file->LineCount(0), 50000u);
    for (int count = 0; count < 50000; count += 1) {
        EXPECT_EQ(file->FindLine(0, "k" + std::to_string(count)), static_cast<UINT>(count));
    }
}

TEST(InfSize, ManySectionsAreFound) {
    std::string text;
    for (int count = 0; count < 50000; ++count) {
        text += "[Section" + std::to_string(count) + "]\nk=1\n";
    }
    std::unique_ptr<InfFile> file = Parse(text);
    for (int count = 0; count < 50000; ++count) {
        EXPECT_EQ(file->Value("SECTION" + std::to_string(count), "k"), "1");
    }
}

TEST(InfSize, ManyFieldsOfOneLineAreRead) {
    std::string text = "[A]\nk=";
    for (int count = 0; count < 200000; ++count) {
        text += "field,";
    }
    std::unique_ptr<InfFile> file = Parse(text);
    for (UINT index = 1; index <= 200000; ++index) {
        EXPECT_EQ(file->Field(0, 0, index), "field");
    }
    EXPECT_EQ(file->FieldCount(0, 0), 200001u);
}

TEST(InfSize, ManyStringsAreFound) {
    std::string text = "[A]\n";
    std::string strings = "[Strings]\n";
    for (int count = 0; count < 100000; ++count) {
        text += "%s" + std::to_string(count) + "%=1\n";
        strings += "s" + std::to_string(count) + "=\"value " + std::to_string(count) + "\"\n";
    }
    std::unique_ptr<InfFile> file = Parse(text + strings);
    EXPECT_EQ(file->FindLine(0, "VALUE 99999"), 99999u);
    EXPECT_EQ(file->FindLine(0, "value 0"), 0u);
}

TEST(InfSize, DeepContinuationIsRead) {
    std::string text = "[A]\nk=";
    for (int count = 0; count < 200000; ++count) {
        text += "a\\\n";
    }
    text += "end\n" + std::string(1 << 20, '\\') + "\n" + std::string(1 << 20, '"') + "\n" + std::string(1 << 20, '%') +
            "\n";
    std::unique_ptr<InfFile> file = Parse(text);
    EXPECT_EQ(file->Field(0, 0, 1)->size(), 200003u);
    EXPECT_EQ(file->LineCount(0), 3u);
    // The line of backslashes goes on in the quotes; a pair of quotes inside a quote is one.
    EXPECT_EQ(file->Field(0, 1, 0)->size(), (1u << 19) - 1);
}

}  // namespace
}  // namespace pikel::simulated
