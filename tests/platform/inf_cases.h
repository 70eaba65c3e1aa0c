// INF text and what the Setup API makes of it: shared by the tests of the parser and by the contract of the operations.
#pragma once

#include <string>
#include <vector>

#include "platform/types.h"

namespace pikel::contract {

using namespace std::string_literals;

// ---- lines ----------------------------------------------------------------------------------------------------------

/// Behind a case's lines stand these strings.
inline const std::string kInfStrings =
    "[Strings]\nx=val\ny=\"va,l2\"\nz=\"%x% z\"\nr=%r%\ne=\n\"q k\"=quoted key\nCase=CASE\n"
    "m=a,b\npc=\"50%\"\npp=\"100%%\"\nnokey\n9=nine\nx=again\n";

/// A line is shown as "<key> [field] [field]", with "-" for a line without a key.
struct InfLineCase {
    const char* name;
    const char* text;  ///< lines of section [A]
    std::vector<std::string> lines;
};

inline const InfLineCase kInfLineCases[] = {
    {"AKeyAndAValue", "k=v\n", {"<k> [v]"}},
    {"BlanksAroundAreTrimmed", "  key one  =  val one  ,\ttwo\t \n", {"<key one> [val one] [two]"}},
    {"BlanksInsideStay", "a b  c = d  e , f\tg\n", {"<a b  c> [d  e] [f\tg]"}},
    {"OtherBlanks", "\v\fk=1\v,2\f\n\xA0k\xA0=\xA0v\xA0\n", {"<k> [1] [2]", "<k> [v]"}},
    {"AnEmptyValueIsOneEmptyField", "k=\nk2 =\n", {"<k> []", "<k2> []"}},
    {"AnEmptyKeyIsAKey", "=v\n=\n", {"<> [v]", "<> []"}},
    {"OneValueIsItsOwnKey", "only\n", {"<only> [only]"}},
    {"SeveralValuesWithoutAnEqualsSignHaveNoKey", "a,b\nx,\n,x\n,\n", {"- [a] [b]", "- [x] []", "- [] [x]", "- [] []"}},
    {"EmptyFieldsAtTheEndStay", "k=a,b,,\n", {"<k> [a] [b] [] []"}},
    {"OnlyTheFirstEqualsSignCounts", "a=b=c\na=b,c=d\n", {"<a> [b=c]", "<a> [b] [c=d]"}},
    {"AnEqualsSignBehindACommaIsText", "a,b=c\na,b=c,d\n", {"- [a] [b=c]", "- [a] [b=c] [d]"}},
    {"QuotesGoAway", "k=\"a,b;c=d\"\n\"key = q\"=v\n", {"<k> [a,b;c=d]", "<key = q> [v]"}},
    {"DoubledQuotesAreOne", "k=\"a \"\"b\"\" c\"\nk=\"\"\"\"\n", {"<k> [a \"b\" c]", "<k> [\"]"}},
    {"QuotesMayStandInsideAField", "k=x\"a,b\"y\n\"ab\"cd\"ef\"=1\n", {"<k> [xa,by]", "<abcdef> [1]"}},
    {"QuotedBlanksStay", "k=\"  sp  \" , a\" \"\nk=\"  sp  \"  x\n", {"<k> [  sp  ] [a ]", "<k> [  sp    x]"}},
    {"EmptyQuotesAreAnEmptyField", "k=\"\"\n\"\"=x\n\"\"\nk=\"\",\"\"\n", {"<k> []", "<> [x]", "<> []", "<k> [] []"}},
    {"AnOpenQuoteEndsWithTheLine",
     "k=\"open\nb=1\nr=\"x   \ns=\"y ; z\nq=\"a\"\"\n\"key\n",
     {"<k> [open]", "<b> [1]", "<r> [x   ]", "<s> [y ; z]", "<q> [a\"]", "<key> [key]"}},
    {"CommentsGoAway", "k=v;comment\n;c\n  ;c2\nk=\";no\" ; yes\nkk;c=v\n", {"<k> [v]", "<k> [;no]", "<kk> [kk]"}},
    {"ABackslashContinues",
     "k=a\\\nb\nk=a \\\n   b, c\\  \n  d\nk=a,\\\n  b\nk=a\\\n,b\n",
     {"<k> [ab]", "<k> [ab] [cd]", "<k> [a] [b]", "<k> [a] [b]"}},
    {"AKeyMayBeContinued", "key\\\n=v\nkey\\\nrest=v\nk\\\n\n", {"<key> [v]", "<keyrest> [v]", "<k> [k]"}},
    {"ABackslashInsideIsText",
     "k=c:\\a\\\\b\\\\\\c,\\\\srv\\s\nm\\ x\nk=a\\,b\nk=a\\=b\nk=\\x\n",
     {"<k> [c:\\a\\\\b\\\\\\c] [\\\\srv\\s]", "<m\\ x> [m\\ x]", "<k> [a\\] [b]", "<k> [a\\=b]", "<k> [\\x]"}},
    {"BlanksBehindAnInnerBackslashBelongToTheText", "k=a \\  , b\nx \\ =y\n", {"<k> [a \\  ] [b]", "<x \\ > [y]"}},
    {"AllBackslashesAtTheEndContinue", "k=a\\\\\\\nb\nk=c:\\dir\\\nx\n", {"<k> [ab]", "<k> [c:\\dirx]"}},
    {"ABackslashInQuotesDoesNotContinue", "k=\"a\\\nb=c\nk=\"a\\\"\n", {"<k> [a\\]", "<b> [c]", "<k> [a\\]"}},
    {"ABackslashBehindQuotesContinues", "k=\"a\"\\\n\"b,c\"\nk=\"a \"\\\n  b\n", {"<k> [ab,c]", "<k> [a b]"}},
    {"ABackslashInFrontOfACommentContinues", "q=y\\ ;comment\n  more\nx\\;c\n=z\n", {"<q> [ymore]", "<x> [z]"}},
    {"ACommentLineEndsAContinuation", "k=a\\\n;comment\nb=1\n", {"<k> [a]", "<b> [1]"}},
    {"ACommentIsNotContinued", "; com \\\nk=2\nk=3;c \\\nb=4\n", {"<k> [2]", "<k> [3]", "<b> [4]"}},
    {"AnEmptyLineEndsAContinuation", "k=v\\\n\nz=1\nk=\\\n\nk,\\\n\n", {"<k> [v]", "<z> [1]", "<k> []", "- [k] []"}},
    {"ABackslashAloneMakesAnEmptyLine", "\\\n\nz=1\n\\\nk=v\n\\ ;c\nz=3\n", {"<> []", "<z> [1]", "<k> [v]", "<z> [3]"}},
    {"AContinuedHeaderIsText", "k=\\\n[B]\nz=1\n", {"<k> [[B]]", "<z> [1]"}},
    {"AClosingBracketIsText", "]\n\"[B]\"\n", {"<]> []]", "<[B]> [[B]]"}},
    {"StringsAreReplaced", "k=%x%\nk=%x%%y%\n%x%=%y%,%z%\n", {"<k> [val]", "<k> [valva,l2]", "<val> [va,l2] [%x% z]"}},
    {"StringsMatchWithoutRegardToCase", "k=%CASE%,%case%,%Q K%\n", {"<k> [CASE] [CASE] [quoted key]"}},
    {"StringsAreNotReplacedInStrings", "k=%r%,%pc%,%pp%\n", {"<k> [%r%] [50%] [100%%]"}},
    {"OnlyAStringsFirstFieldCounts", "k=%m%\n", {"<k> [a]"}},
    {"TheFirstOfTwoStringsCounts", "k=%X%\n", {"<k> [val]"}},
    {"UnknownStringsStay", "k=%none%,%none%x%,50% of %x%\n", {"<k> [%none%] [%none%x%] [50% of %x%]"}},
    {"TwoPercentSignsAreOne", "k=%%,%%x%%,%%%x%%%,%%%%\n", {"<k> [%] [%x%] [%val%] [%%]"}},
    {"LonePercentSignsStay", "k=50%,%x%%,%\n", {"<k> [50%] [val%] [%]"}},
    {"BlanksInAStringsNameCount", "k=%x %,% x%\n", {"<k> [%x %] [% x%]"}},
    {"StringsAreReplacedInQuotesAndAroundThem",
     "k=\"%x%\"\nk=\"a%x%b\"c%x%\nk=%\"x\"%\n\"%x%\"=1\nk=a%x\\\n%b\n",
     {"<k> [val]", "<k> [avalbcval]", "<k> [val]", "<val> [1]", "<k> [avalb]"}},
    {"ACommaPartsFieldsAlsoInAStringsName", "k=%x,y%\n", {"<k> [%x] [y%]"}},
    {"ALineMayBeAString", "%x%\n%x%,b\n%e%=1\n", {"<val> [val]", "- [val] [b]", "<> [1]"}},
    {"AStringWithoutAnEqualsSignIsItself", "k=%nokey%\n", {"<k> [nokey]"}},
    {"AStringMayBeNamedByANumber", "k=%9%\n", {"<k> [nine]"}},
};

// ---- headers --------------------------------------------------------------------------------------------------------

struct InfHeaderCase {
    const char* name;
    const char* text;
    const char* section;
    std::vector<std::string> lines;
};

inline const InfHeaderCase kInfHeaderCases[] = {
    {"BlanksInFront", " \t[A] \nk=v\n", "A", {"<k> [v]"}},
    {"TextBehind", "[A] junk=x\nk=v\n", "A", {"<k> [v]"}},
    {"ABackslashBehindDoesNotContinue", "[A] \\\nk=v\n", "A", {"<k> [v]"}},
    {"ASecondHeaderOnTheLine", "[A][B]\nk=v\n", "B", {"no section"}},
    {"BlanksInsideBelongToTheName", "[ A ]\nk=v\n", " A ", {"<k> [v]"}},
    {"NamesAreNotTrimmed", "[ A ]\nk=v\n", "A", {"no section"}},
    {"QuotesBelongToTheName", "[\"A\"]\nk=v\n", "\"A\"", {"<k> [v]"}},
    {"NothingIsReplacedInAName", "[%A%]\nk=v\n[Strings]\nA=B\n", "%A%", {"<k> [v]"}},
    {"ASemicolonBelongsToTheName", "[a;b]\nk=v\n", "a;b", {"<k> [v]"}},
    {"AnOpeningBracketBelongsToTheName", "[[A]\nk=v\n", "[A", {"<k> [v]"}},
    {"TheFirstClosingBracketEndsTheName", "[A]]\nk=v\n", "A", {"<k> [v]"}},
    {"AnEmptyName", "[]\nk=v\n", "", {"<k> [v]"}},
    {"AnEmptySection", "[A]\n[B]\nk=v\n", "A", {}},
};

// ---- errors ---------------------------------------------------------------------------------------------------------

struct InfErrorCase {
    const char* name;
    std::string text;
    DWORD code;
    UINT line;
};

inline std::string EveryByte() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    return bytes + bytes;
}

inline const InfErrorCase kInfErrorCases[] = {
    {"NoBytes", "", ERROR_FILE_INVALID, 0},
    {"TextInFront", "text\n[A]\n", ERROR_EXPECTED_SECTION_NAME, 1},
    {"AKeyInFront", "; comment\n\n k=v\n[A]\n", ERROR_EXPECTED_SECTION_NAME, 3},
    {"ABackslashInFront", "\\\n[A]\n", ERROR_EXPECTED_SECTION_NAME, 1},
    {"ACommaInFront", ",\n[A]\n", ERROR_EXPECTED_SECTION_NAME, 1},
    {"AnOpenHeader", "[A]\nk=v\n[B\nk=v\n", ERROR_BAD_SECTION_NAME_LINE, 3},
    {"AnOpenHeaderBehindAContinuedLine", "[A]\nk=v\\\nw\n[B\n", ERROR_BAD_SECTION_NAME_LINE, 4},
    {"AnOpenHeaderAtTheEnd", "[A]\n[B", ERROR_BAD_SECTION_NAME_LINE, 2},
    {"AContinuedHeader", "[A\\\n]\n", ERROR_BAD_SECTION_NAME_LINE, 1},
    {"ControlZInAHeader", "[A\x1A]\n", ERROR_BAD_SECTION_NAME_LINE, 1},
    {"ANameThatIsTooLong", "[" + std::string(256, 's') + "]\n", ERROR_SECTION_NAME_TOO_LONG, 1},
    {"Nuls", std::string(4, '\0'), ERROR_EXPECTED_SECTION_NAME, 1},
    {"EveryByte", EveryByte(), ERROR_EXPECTED_SECTION_NAME, 1},
    {"AProgram", "MZ\x90\0\3\0\0\0"s, ERROR_EXPECTED_SECTION_NAME, 1},
    {"Utf16WithHalfACharacter", "\xFF\xFE[\0A\0]\0x"s, ERROR_EXPECTED_SECTION_NAME, 1},
};

}  // namespace pikel::contract
