// The customisation field.
#include "inf/customize_field.h"

#include <cstring>
#include <string>

#include "frame/pikel.h"
#include "support/inf_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace std::string_literals;
using ::testing::ElementsAre;

const std::string kMarkerLine = "; Tarvo Customized Drive\r\n";
const std::string kVersionLine = "[Version]\r\nSignature=\"$Windows NT$\"\r\n";

struct Result {
    DWORD status = 0;
    DWORD customized = 0;
    std::string code;
    std::string comment;

    bool operator==(const Result&) const = default;
};
void PrintTo(const Result& result, std::ostream* out) {
    *out << result.status << ' ' << result.customized << " \"" << result.code << "\" \"" << result.comment << '"';
}

const Result kStock = {0, 0, "code before", "comment before"};

class CustomizeField : public MachineTest {
  protected:
    Result Get(std::string_view text) {
        WriteFileOn(Machine(), kInfPath, text);
        return GetFrom(kInfPath);
    }
    static Result GetFrom(LPCSTR path) {
        Result result{0, 77, {}, {}};
        char code[kCustomizeCodeSize] = "code before";
        char comment[kCustomizeCommentSize] = "comment before";
        result.status = DoGetCustomizeInfo(path, &result.customized, code, comment);
        result.code = code;
        result.comment = comment;
        return result;
    }
};

struct HeaderCase {
    const char* name;
    std::string text;
    Result result;
};

const HeaderCase kHeaders[] = {
    {"whole",
     kMarkerLine + "; Customization Code=AB123456\r\n; Customization Comment=For the office\r\n" + kVersionLine,
     {0, 1, "AB123456", "For the office"}},
    {"line feeds alone",
     "; Tarvo Customized Drive\n; Customization Code=AB123456\n; Customization Comment=For the office\n[Version]\n",
     {0, 1, "AB123456", "For the office"}},
    {"lines between marker and code",
     kMarkerLine + ";\r\n;\r\n; Customization Code=AB123456\r\n;\r\n" + kVersionLine,
     {0, 1, "AB123456", ""}},
    {"marker behind the header", ";\r\n" + kVersionLine + kMarkerLine + "; Customization Code=AB123456\r\n", kStock},
    {"header's end on the marker's line", "; Tarvo Customized Drive [Version]\r\n;\r\n", kStock},
    {"code ahead of the marker", "; Customization Code=AB123456\r\n" + kMarkerLine + kVersionLine, {0, 1, "", ""}},
    {"code on the marker's line",
     "; Tarvo Customized Drive Customization Code=AB123456\r\n;\r\n" + kVersionLine,
     {0, 1, "AB123456", ""}},
    {"marker within a longer word", ";xTarvo Customized Drivers\r\n" + kVersionLine, {0, 1, "", ""}},
    {"marker in another case", "; tarvo customized drive\r\n; Customization Code=AB123456\r\n" + kVersionLine, kStock},
    {"no marker", "; Customization Code=AB123456\r\n" + kVersionLine, kStock},
    {"marker alone", kMarkerLine + kVersionLine, {0, 1, "", ""}},
    {"code of 5 keeps its line end", kMarkerLine + "; Customization Code=AB123\r\n;\r\n", {0, 1, "AB123\n", ""}},
    {"code of 7 keeps its line end", kMarkerLine + "; Customization Code=AB12345\r\n;\r\n", {0, 1, "AB12345\n", ""}},
    {"code of 8", kMarkerLine + "; Customization Code=AB123456\r\n;\r\n", {0, 1, "AB123456", ""}},
    {"code of 12 is cut", kMarkerLine + "; Customization Code=AB1234567890\r\n;\r\n", {0, 1, "AB123456", ""}},
    {"code of 0 is its line end", kMarkerLine + "; Customization Code=\r\n;\r\n", {0, 1, "\n", ""}},
    {"comment not directly behind",
     kMarkerLine + "; Customization Code=AB123456\r\n;\r\n; Customization Comment=x\r\n" + kVersionLine,
     {0, 1, "AB123456", ""}},
    {"comment without line end loses a character",
     kMarkerLine + "; Customization Code=AB123456\r\n; Customization Comment=Office",
     {0, 1, "AB123456", "Offic"}},
    {"comment of length 0",
     kMarkerLine + "; Customization Code=AB123456\r\n; Customization Comment=\r\n[Version]\r\n",
     {0, 1, "AB123456", ""}},
    {"comment of length 0 at the end",
     kMarkerLine + "; Customization Code=AB123456\r\n; Customization Comment=",
     {0, 1, "AB123456", ""}},
    {"nothing behind the code", kMarkerLine + "; Customization Code=AB123456\r\n", {0, 1, "AB123456", ""}},
    {"code in a last line without line end", kMarkerLine + "; Customization Code=AB123456", {0, 1, "", ""}},
    {"marker in a last line without line end", "; Tarvo Customized Drive", kStock},
    {"empty file", "", kStock},
    {"ctrl-Z ends the file", ";\r\n\x1a" + kMarkerLine, kStock},
    {"ctrl-Z within the marker's line", "; Tarvo Customized Drive\x1a\r\n;\r\n", kStock},
    {"a lone CR is a character", kMarkerLine + "; Customization Code=AB\r1\r\n;\r\n", {0, 1, "AB\r1\n", ""}},
    {"a NUL hides the rest of its line", ";\0 Tarvo Customized Drive\r\n;\r\n"s, kStock},
};

TEST_F(CustomizeField, IsReadFromTheHeader) {
    for (const HeaderCase& header : kHeaders) {
        EXPECT_EQ(Get(header.text), header.result) << header.name;
    }
}

TEST_F(CustomizeField, CommentIsCutToItsField) {
    const std::string head = kMarkerLine + "; Customization Code=AB123456\r\n; Customization Comment=";
    for (std::size_t length : {73u, 74u, 75u, 76u, 2000u}) {
        EXPECT_EQ(Get(head + std::string(length, 'c') + "\r\n").comment,
                  std::string(std::min(length, std::size_t{74}), 'c'))
            << length;
    }
}

TEST_F(CustomizeField, LongLinesCountAsSeveral) {
    // Pieces of 2047 characters: the marker lies across two of them, or within one.
    const std::string marker = "Tarvo Customized Drive";
    for (std::size_t before : {2025u, 2026u, 2046u, 2047u, 2048u}) {
        const bool isCut = before + marker.size() > 2047 && before < 2047;
        EXPECT_EQ(Get(std::string(before, ';') + marker + "\r\n" + kVersionLine).customized, isCut ? 0u : 1u) << before;
    }
    // A comment in a piece without a line end loses its last character there.
    const std::string comment = "; Customization Comment=";
    const std::string line = std::string(2047 - comment.size() - 3, ';') + comment + "abcdef\r\n";
    EXPECT_EQ(Get(kMarkerLine + "; Customization Code=AB123456\r\n" + line).comment, "ab");
    // A last piece of exactly that length doesn't meet the file's end, and is looked at.
    EXPECT_EQ(Get(std::string(2047 - marker.size(), ';') + marker).customized, 1u);
    EXPECT_EQ(Get(std::string(2046 - marker.size(), ';') + marker).customized, 0u);
}

TEST_F(CustomizeField, StartsEmpty) {
    CInfCustomizeField field;
    EXPECT_EQ(field.m_bCustomized, 0);
    EXPECT_STREQ(field.m_szCode, "");
    EXPECT_STREQ(field.m_szComment, "");
}

TEST_F(CustomizeField, CodeFieldHoldsNulsBehindTheText) {
    WriteFileOn(Machine(), kInfPath, kMarkerLine + "; Customization Code=AB1234567\r\n;\r\n");
    CInfCustomizeField field;
    std::memset(field.m_szCode, 'x', sizeof field.m_szCode);
    EXPECT_EQ(field.GetData(kInfPath), 0u);
    EXPECT_EQ(std::string(field.m_szCode, 9), "AB123456\0"s);
}

TEST_F(CustomizeField, AFileThatCantBeOpenedGives2) {
    EXPECT_EQ(GetFrom("C:\\Test\\none.inf"), (Result{2, 0, "code before", "comment before"}));
    EXPECT_EQ(GetFrom("C:\\Windows"), (Result{2, 0, "code before", "comment before"}));
    WriteFileOn(Machine(), kInfPath, kMarkerLine + ";\r\n");
    auto held = Machine().Files().HoldOpen(kInfPath);
    EXPECT_EQ(GetFrom(kInfPath), (Result{2, 0, "code before", "comment before"})) << "whatever the system's code";
}

TEST_F(CustomizeField, AFileThatOthersReadAndWriteIsRead) {
    WriteFileOn(Machine(), kInfPath, kMarkerLine + ";\r\n");
    auto held = Machine().Files().HoldOpen(kInfPath, FILE_SHARE_READ | FILE_SHARE_WRITE);
    EXPECT_EQ(GetFrom(kInfPath).customized, 1u);
}

TEST_F(CustomizeField, ALongPathIsRead) {
    const std::string path = "C:\\" + std::string(120, 'a') + "\\" + std::string(120, 'b') + "\\model.inf";
    WriteFileOn(Machine(), path, kMarkerLine + ";\r\n");
    EXPECT_EQ(GetFrom(path.c_str()).customized, 1u);
}

TEST_F(CustomizeField, ReadThatFailsEndsTheFile) {
    WriteFileOn(Machine(), kInfPath, kMarkerLine + ";\r\n");
    faults::FailCall("_lread", 1, 1117, true);
    EXPECT_EQ(GetFrom(kInfPath), kStock);
}

TEST_F(CustomizeField, NullArgumentsGive87) {
    DWORD customized = 77;
    Test().TurnLogOn(1);
    EXPECT_EQ(DoGetCustomizeInfo(nullptr, &customized, nullptr, nullptr), 87u);
    EXPECT_EQ(customized, 77u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoGetCustomizeInfo Start"));
    EXPECT_EQ(DoGetCustomizeInfo(kInfPath, nullptr, nullptr, nullptr), 87u);
    WriteFileOn(Machine(), kInfPath, kMarkerLine + "; Customization Code=AB123456\r\n;\r\n");
    EXPECT_EQ(DoGetCustomizeInfo(kInfPath, &customized, nullptr, nullptr), 0u) << "the texts need not be taken";
    EXPECT_EQ(customized, 1u);
}

TEST_F(CustomizeField, LogsWhatItRead) {
    Test().TurnLogOn(1);
    Get(kMarkerLine + "; Customization Code=AB123456\r\n; Customization Comment=Office\r\n");
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoGetCustomizeInfo Start", "CInfCustomizeField::GetData() Start",
                            "CInfCustomizeField::GetData() End(0)", "DoGetCustomizeInfo lpszCustomizeCode(AB123456)",
                            "DoGetCustomizeInfo lpszCustomizeComment(Office)",
                            "DoGetCustomizeInfo cInfCustomize.m_bCustomized(1)", "DoGetCustomizeInfo End(0)"));
    Get(kVersionLine);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoGetCustomizeInfo Start", "CInfCustomizeField::GetData() Start",
                            "CInfCustomizeField::GetData() End(0)", "DoGetCustomizeInfo lpszCustomizeCode(code before)",
                            "DoGetCustomizeInfo lpszCustomizeComment(comment before)",
                            "DoGetCustomizeInfo cInfCustomize.m_bCustomized(0)", "DoGetCustomizeInfo End(0)"));
    GetFrom("C:\\none.inf");
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoGetCustomizeInfo Start", "CInfCustomizeField::GetData() Start",
                            "CInfCustomizeField::GetData() End(2)", "DoGetCustomizeInfo cInfCustomize.m_bCustomized(0)",
                            "DoGetCustomizeInfo End(2)"));
}

TEST_F(CustomizeField, LogReadsNoMoreOfTheBuffersThanTheyMustHave) {
    WriteFileOn(Machine(), kInfPath, kVersionLine);
    std::string code(kCustomizeCodeSize, 'x');
    std::string comment(kCustomizeCommentSize, 'y');
    const std::unique_ptr<char[]> codeBuffer(new char[kCustomizeCodeSize]);
    const std::unique_ptr<char[]> commentBuffer(new char[kCustomizeCommentSize]);
    code.copy(codeBuffer.get(), code.size());
    comment.copy(commentBuffer.get(), comment.size());
    DWORD customized = 0;
    Test().TurnLogOn(1);
    EXPECT_EQ(DoGetCustomizeInfo(kInfPath, &customized, codeBuffer.get(), commentBuffer.get()), 0u);
    const LogLines log = Test().TakeLog();
    EXPECT_EQ(log[3], "DoGetCustomizeInfo lpszCustomizeCode(" + code + ")");
    EXPECT_EQ(log[4], "DoGetCustomizeInfo lpszCustomizeComment(" + comment + ")");
}

TEST_F(CustomizeField, IsSlot36) {
    const PI_KEL_Interface& table = *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
    DWORD customized = 77;
    EXPECT_EQ(table.PI_KEL_GetCustomizeInfo(nullptr, &customized, nullptr, nullptr), 0x90010057u);
    EXPECT_EQ(table.PI_KEL_GetCustomizeInfo("C:\\none.inf", &customized, nullptr, nullptr), 0x90010002u);
    WriteFileOn(Machine(), kInfPath, kMarkerLine + kVersionLine);
    Test().TurnLogOn(1);
    EXPECT_EQ(table.PI_KEL_GetCustomizeInfo(kInfPath, &customized, nullptr, nullptr), 0u);
    const LogLines log = Test().TakeLog();
    EXPECT_EQ(log.front(), "PI_KEL_GetCustomizeInfo Start");
    EXPECT_EQ(log[log.size() - 2], "PI_KEL_GetCustomizeInfo End:(0x00000000)");
    EXPECT_EQ(log.back(), "");
}

}  // namespace
}  // namespace pikel
