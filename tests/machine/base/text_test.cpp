#include "machine/base/text.h"

#include "support/machine_test.h"

namespace pikel {
namespace {

using namespace simulated;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct ConversionCase {
    UINT codePage;
    std::string bytes;
    std::u16string wide;
    bool replaced;
};

TEST(CodePages, BytesBecomeCharacters) {
    for (const ConversionCase& c : {
             ConversionCase{1252, "plain", u"plain", false},
             ConversionCase{1252, std::string("a\0b", 3), std::u16string(u"a\0b", 3), false},
             ConversionCase{1252, "\x80\x9F\xE9\xFF", u"\u20AC\u0178\u00E9\u00FF", false},
             ConversionCase{1252, "\x81\x8D\x8F\x90\x9D", u"\u0081\u008D\u008F\u0090\u009D", false},
             ConversionCase{932, "\x82\xA0\x95\x5C\xB1\\~", u"\u3042\u8868\uFF71\\~", false},
             ConversionCase{932, "\x80\xA0\xFD\xFF", std::u16string(u"\u0080\uF8F0\uF8F1\uF8F3"), false},
             ConversionCase{932, "\xED\x40\xFA\x5C\xF0\x40", u"\u7E8A\u7E8A\uE000", false},
             ConversionCase{932, "a\x81", u"a\u30FB", true},
             ConversionCase{932, std::string("\x81\0b", 3), std::u16string(u"\u30FB\0b", 3), true},
             ConversionCase{932,
                            "\xFC\xFC"
                            "a",
                            u"\u30FBa", true},
             ConversionCase{65001, "\xC3\xA9\xE3\x81\x82\xF0\x9F\x98\x80", u"\u00E9\u3042\U0001F600", false},
             ConversionCase{65001, "\xEF\xBF\xBD", u"\uFFFD", false},
             ConversionCase{65001,
                            "\xFF"
                            "a\xC3",
                            u"\uFFFDa\uFFFD", true},
             ConversionCase{65001, "\xC0\xAF", u"\uFFFD\uFFFD", true},                      // overlong
             ConversionCase{65001, "\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD", true},            // half a pair
             ConversionCase{65001, "\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD", true},  // beyond the last one
             ConversionCase{99999, "a\xE9", u"a?", true},
         }) {
        bool replaced = !c.replaced;
        EXPECT_EQ(ToWide(c.codePage, c.bytes, &replaced), c.wide) << c.codePage << " " << c.bytes;
        EXPECT_EQ(replaced, c.replaced) << c.codePage << " " << c.bytes;
    }
}

TEST(CodePages, CharactersBecomeBytes) {
    for (const ConversionCase& c : {
             ConversionCase{1252, "\x80\xE9\x81", u"\u20AC\u00E9\u0081", false},
             ConversionCase{1252, "a?b", u"a\u3042b", true},
             ConversionCase{1252, "?", u"\U0001F600", true},
             ConversionCase{932, "\x82\xA0\x95\x5C\xB1", u"\u3042\u8868\uFF71", false},
             ConversionCase{932, "\xFA\x5C\x81\xCA", u"\u7E8A\uFFE2", false},  // the code that is written, of several
             ConversionCase{932, "?", u"\u0153", true},
             ConversionCase{65001, "\xC3\xA9\xF0\x9F\x98\x80", u"\u00E9\U0001F600", false},
             ConversionCase{65001,
                            "\xEF\xBF\xBD"
                            "z",
                            std::u16string(1, char16_t(0xD800)) + u"z", true},
         }) {
        bool replaced = !c.replaced;
        EXPECT_EQ(FromWide(c.codePage, c.wide, &replaced), c.bytes) << c.codePage << " " << c.bytes;
        EXPECT_EQ(replaced, c.replaced) << c.codePage << " " << c.bytes;
    }
}

TEST(CodePages, EveryByteOfASingleBytePageComesBack) {
    for (UINT codePage : {1250u, 1251u, 1252u, 1253u, 1254u, 1257u, 437u, 850u}) {
        ASSERT_TRUE(KnowsCodePage(codePage)) << codePage;
        for (int byte = 0; byte < 256; ++byte) {
            const std::string text(1, static_cast<char>(byte));
            EXPECT_EQ(FromWide(codePage, ToWide(codePage, text)), text) << codePage << " " << byte;
        }
    }
}

TEST(CodePages, EveryCharacterOf932ComesBack) {
    for (int lead = 0x81; lead <= 0xFC; ++lead) {
        for (int trail = 0x40; IsLeadByte(932, static_cast<unsigned char>(lead)) && trail < 0x100; ++trail) {
            const std::string text = {static_cast<char>(lead), static_cast<char>(trail)};
            bool replaced = false;
            const std::u16string wide = ToWide(932, text, &replaced);
            if (!replaced) {
                EXPECT_EQ(ToWide(932, FromWide(932, wide)), wide) << lead << " " << trail;
            }
        }
    }
}

TEST(CodePages, LeadBytesAreThoseOf932) {
    for (int byte = 0; byte < 256; ++byte) {
        const bool isLead = (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
        EXPECT_EQ(IsLeadByte(932, static_cast<unsigned char>(byte)), isLead) << byte;
        EXPECT_FALSE(IsLeadByte(1252, static_cast<unsigned char>(byte)));
        EXPECT_FALSE(IsLeadByte(65001, static_cast<unsigned char>(byte)));
    }
}

TEST(CodePages, KnownOnes) {
    for (UINT codePage : {932u, 936u, 949u, 950u, 1252u, 65001u}) {
        EXPECT_TRUE(KnowsCodePage(codePage)) << codePage;
    }
    EXPECT_FALSE(KnowsCodePage(0));
    EXPECT_FALSE(KnowsCodePage(99999));
    EXPECT_FALSE(KnowsCodePage(37));  // not built upon ASCII
}

TEST(CodePages, Utf8FileNamesComeBack) {
    EXPECT_EQ(ToUtf8(1252, "\xC9t\xE9"), "\u00C9t\u00E9");
    EXPECT_EQ(FromUtf8(1252, "\u00C9t\u00E9"), "\xC9t\xE9");
    EXPECT_EQ(FromUtf8(1252, "\u8868"), "?");
    EXPECT_EQ(ToUtf8(932, "\x95\x5C"), "\u8868");
    EXPECT_EQ(ToUtf8(65001, "\u8868"), "\u8868");
}

TEST(NamesWithoutCase, FoldTheLettersOfSingleBytePages) {
    EXPECT_EQ(FoldCase(1252, "ABC \xC9\xDE\x8A\x9F 1_"), "abc \xE9\xFE\x9A\xFF 1_");
    EXPECT_EQ(FoldCase(1252, "\xD7\xDF\xB5"), "\xD7\xDF\xB5");
    EXPECT_EQ(FoldCase(1251, "\xC0\xDF"), "\xE0\xFF");
    EXPECT_EQ(FoldCase(932, "AB\x83\x41Z"), "ab\x83\x41z");
    EXPECT_EQ(FoldCase(65001, "A\u00C9"), "a\u00C9");
}

TEST(NamesWithoutCase, CompareByFoldedBytes) {
    EXPECT_EQ(CompareNoCase(1252, "Printer \xC9", "pRINTER \xE9"), 0);
    EXPECT_LT(CompareNoCase(1252, "a", "B"), 0);
    EXPECT_GT(CompareNoCase(1252, "b", "A"), 0);
    EXPECT_LT(CompareNoCase(1252, "a", "ab"), 0);
    EXPECT_LT(CompareNoCase(1252, "z", "\xE9"), 0);
}

TEST(NamesWithoutCase, AsciiFoldingLeavesOtherBytes) {
    EXPECT_TRUE(EqualNoCase("PRINTUI.DLL", "printui.dll"));
    EXPECT_FALSE(EqualNoCase("\xC9", "\xE9"));
    EXPECT_FALSE(EqualNoCase("a", "ab"));
    EXPECT_FALSE(EqualNoCase("[", "{"));
    EXPECT_EQ(LowerAscii("A\xC9Z[@"), "a\xC9z[@");
}

TEST(PathTexts, SplitAtTheLastSeparator) {
    EXPECT_EQ(FileName("C:\\a\\b.txt"), "b.txt");
    EXPECT_EQ(FileName("C:\\a/b.txt"), "b.txt");
    EXPECT_EQ(FileName("b.txt"), "b.txt");
    EXPECT_EQ(FileName("C:\\a\\"), "");
    EXPECT_EQ(FolderOf("C:\\a\\b.txt"), "C:\\a");
    EXPECT_EQ(FolderOf("b.txt"), "");
    EXPECT_EQ(FileName("C:\\a\\\x95\x5C.txt", 932), "\x95\x5C.txt");
    EXPECT_EQ(FolderOf("C:\\a\\\x95\x5C.txt", 932), "C:\\a");
}

TEST(MultiStrings, EndWithTheEmptyText) {
    EXPECT_THAT(SplitMultiString("one\0two\0\0three\0"), ElementsAre("one", "two"));
    EXPECT_THAT(SplitMultiString("\0"), IsEmpty());
    EXPECT_THAT(SplitMultiString(nullptr), IsEmpty());
    EXPECT_EQ(JoinMultiString({"one", "two"}), std::string("one\0two\0\0", 9));
    EXPECT_EQ(JoinMultiString({}), std::string("\0", 1));
}

class TextOperations : public testing_support::MachineTest {
  protected:
    void SetCodePage(UINT codePage) {
        SystemDescription system = Machine().System();
        system.codePage = codePage;
        Machine().SetSystem(system);
    }
    DWORD LastErrorAfter(int result) { return result == 0 ? Platform().GetLastError() : 0; }
};

TEST_F(TextOperations, TheActiveCodePageIsTheMachines) {
    EXPECT_EQ(Platform().GetACP(), 1252u);
    EXPECT_FALSE(Platform().IsDBCSLeadByte(0x81));
    SetCodePage(932);
    EXPECT_EQ(Platform().GetACP(), 932u);
    EXPECT_TRUE(Platform().IsDBCSLeadByte(0x81));
    EXPECT_FALSE(Platform().IsDBCSLeadByte(0xB1));
}

TEST_F(TextOperations, MultiByteToWideChar) {
    WCHAR wide[8] = {};
    EXPECT_EQ(Platform().MultiByteToWideChar(CP_ACP, 0,
                                             "\x80"
                                             "ab",
                                             -1, wide, 8),
              4);
    EXPECT_EQ(std::u16string_view(wide, 4), std::u16string_view(u"\u20ACab\0", 4));
    EXPECT_EQ(Platform().MultiByteToWideChar(3, 0, "ab", 2, wide, 8), 2);
    EXPECT_EQ(wide[2], u'b');  // no NUL of its own
    EXPECT_EQ(Platform().MultiByteToWideChar(CP_UTF8, 0, "\u3042", -1, nullptr, 0), 2);
    EXPECT_EQ(Platform().MultiByteToWideChar(932, 0, "\x82\xA0", 2, wide, 1), 1);
    EXPECT_EQ(wide[0], u'\u3042');
}

TEST_F(TextOperations, MultiByteToWideCharRefusals) {
    WCHAR wide[8];
    const auto code = [&](UINT page, DWORD flags, LPCSTR text, int size, LPWSTR buffer, int length) {
        Platform().SetLastError(0);
        return LastErrorAfter(Platform().MultiByteToWideChar(page, flags, text, size, buffer, length));
    };
    EXPECT_EQ(code(99999, 0, "a", -1, wide, 8), 87u);
    EXPECT_EQ(code(CP_ACP, 0, nullptr, 1, wide, 8), 87u);
    EXPECT_EQ(code(CP_ACP, 0, "abc", 0, wide, 8), 87u);
    EXPECT_EQ(code(CP_ACP, 0, "abc", -2, wide, 8), 87u);
    EXPECT_EQ(code(CP_ACP, 0, "abc", -1, wide, -1), 87u);
    EXPECT_EQ(code(CP_ACP, 0, "abc", -1, nullptr, 8), 87u);
    EXPECT_EQ(code(CP_ACP, 0, "abc", -1, wide, 3), 122u);
    EXPECT_EQ(code(932, 8, "\x81", 1, wide, 8), 1113u);
    EXPECT_EQ(code(1252, 8, "\x81", 1, wide, 8), 0u);
}

TEST_F(TextOperations, WideCharToMultiByte) {
    char bytes[8] = {};
    BOOL used = 9;
    EXPECT_EQ(Platform().WideCharToMultiByte(CP_ACP, 0, u"\u20ACab", -1, bytes, 8, nullptr, &used), 4);
    EXPECT_STREQ(bytes,
                 "\x80"
                 "ab");
    EXPECT_EQ(used, FALSE);
    EXPECT_EQ(Platform().WideCharToMultiByte(CP_ACP, 0, u"a\u3042", 2, bytes, 8, nullptr, &used), 2);
    EXPECT_EQ(std::string_view(bytes, 2), "a?");
    EXPECT_EQ(used, TRUE);
    EXPECT_EQ(Platform().WideCharToMultiByte(CP_ACP, 0, u"\u3042\u3044", -1, bytes, 8, "_", &used), 3);
    EXPECT_STREQ(bytes, "__");
    EXPECT_EQ(used, TRUE);
    EXPECT_EQ(Platform().WideCharToMultiByte(932, 0, u"\u3042\u3044", 2, nullptr, 0, nullptr, nullptr), 4);
    EXPECT_EQ(Platform().WideCharToMultiByte(CP_UTF8, 0, u"\U0001F600", 2, bytes, 8, nullptr, nullptr), 4);
}

TEST_F(TextOperations, ConversionsCopyTheFrontPartOfATextThatDoesNotFit) {
    WCHAR wide[5] = {};
    EXPECT_EQ(Platform().MultiByteToWideChar(CP_ACP, 0, "abcdef", -1, wide, 4), 0);
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(std::u16string_view(wide), u"abcd");
    char bytes[5] = {};
    EXPECT_EQ(Platform().WideCharToMultiByte(CP_ACP, 0, u"abcdef", -1, bytes, 4, nullptr, nullptr), 0);
    EXPECT_STREQ(bytes, "abcd");
}

TEST_F(TextOperations, WideCharToMultiByteRefusals) {
    char bytes[8];
    const auto code = [&](UINT page, DWORD flags, LPCWSTR text, int size, LPSTR buffer, int length) {
        Platform().SetLastError(0);
        return LastErrorAfter(
            Platform().WideCharToMultiByte(page, flags, text, size, buffer, length, nullptr, nullptr));
    };
    EXPECT_EQ(code(99999, 0, u"a", -1, bytes, 8), 87u);
    EXPECT_EQ(code(CP_ACP, 0, nullptr, 1, bytes, 8), 87u);
    EXPECT_EQ(code(CP_ACP, 0, u"abc", 0, bytes, 8), 87u);
    EXPECT_EQ(code(CP_ACP, 0, u"abc", -1, bytes, -1), 87u);
    EXPECT_EQ(code(CP_ACP, 0, u"abc", -1, nullptr, 8), 87u);
    EXPECT_EQ(code(CP_ACP, 0, u"abc", -1, bytes, 3), 122u);
    EXPECT_EQ(code(932, 0, u"\u3042", 1, bytes, 1), 122u);
    const WCHAR half[] = {0xD800, 0};
    EXPECT_EQ(code(CP_UTF8, 0x80, half, -1, bytes, 8), 1113u);
}

TEST_F(TextOperations, LstrcmpiComparesByTheCodePageAndNullIsLowest) {
    EXPECT_EQ(Platform().lstrcmpiA("Printer", "PRINTER"), 0);
    EXPECT_EQ(Platform().lstrcmpiA("\xE9", "\xC9"), 0);
    EXPECT_LT(Platform().lstrcmpiA("a", "B"), 0);
    EXPECT_GT(Platform().lstrcmpiA("b", "A"), 0);
    EXPECT_EQ(Platform().lstrcmpiA(nullptr, nullptr), 0);
    EXPECT_LT(Platform().lstrcmpiA(nullptr, ""), 0);
    EXPECT_GT(Platform().lstrcmpiA("", nullptr), 0);
    SetCodePage(932);
    EXPECT_NE(Platform().lstrcmpiA("\x83\x41", "\x83\x61"), 0);
}

}  // namespace
}  // namespace pikel
