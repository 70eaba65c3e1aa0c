// The registry as a tree, and as text: what is written comes back byte for byte, and what is damaged is refused.
#include "machine/registry/registry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <string_view>

namespace pikel::simulated {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr const char* kHead = "Windows Registry Editor Version 5.00\n";
constexpr const char* kEnd = "\n; end of registry\n";

std::string Document(const std::string& body) {
    return kHead + body + kEnd;
}

/// Text of a registry with the value alone, from its key on.
std::string Shown(const Registry& registry) {
    std::string text = registry.Text();
    std::size_t start = text.find("[HKEY_CURRENT_USER\\K]\n");
    if (start == std::string::npos) {
        return "no key";
    }
    start += std::string_view("[HKEY_CURRENT_USER\\K]\n").size();
    return text.substr(start, text.find("\n\n", start) + 1 - start);
}

// ---- the tree -------------------------------------------------------------------------------------------------------

TEST(RegistryTree, RootsAreThereFromTheStart) {
    Registry registry;
    for (const char* root : {"HKLM", "HKEY_LOCAL_MACHINE", "hkcu", "HKEY_CURRENT_USER", "HKU", "HKEY_USERS"}) {
        EXPECT_TRUE(registry.KeyExists(root)) << root;
    }
    EXPECT_FALSE(registry.KeyExists("HKEY_NOBODY"));
    EXPECT_FALSE(registry.KeyExists(""));
    EXPECT_FALSE(registry.IsDirty());
}

TEST(RegistryTree, KeysAndNamesMatchWithoutRegardToCaseAndKeepTheirFirstSpelling) {
    Registry registry;
    EXPECT_TRUE(registry.CreateKey("HKLM\\Software\\Vendor"));
    EXPECT_FALSE(registry.CreateKey("HKEY_LOCAL_MACHINE\\SOFTWARE\\vendor"));
    registry.SetText("hklm\\software\\VENDOR", "Name", "first");
    registry.SetText("HKLM\\Software\\Vendor", "NAME", "second");
    EXPECT_EQ(registry.Text("HKLM\\Software\\Vendor", "name"), "second");
    EXPECT_THAT(registry.SubKeys("HKLM\\SOFTWARE"), ElementsAre("Vendor"));
    ASSERT_EQ(registry.Values("HKLM\\Software\\Vendor").size(), 1u);
    EXPECT_EQ(registry.Values("HKLM\\Software\\Vendor")[0].name, "Name");
}

TEST(RegistryTree, LettersOfTheCodePageFoldAsWell) {
    Registry registry(1252);
    registry.SetText("HKCU\\\xC4pfel", "\xDC", "x");
    EXPECT_EQ(registry.Text("HKCU\\\xE4pfel", "\xFC"), "x");
}

TEST(RegistryTree, TrailBytesThatLookLikeBackslashesDoNotPartAPath) {
    Registry registry(932);
    registry.CreateKey("HKCU\\\x95\x5C\\in");
    EXPECT_THAT(registry.SubKeys("HKCU"), ElementsAre("\x95\x5C"));
    EXPECT_THAT(registry.SubKeys("HKCU\\\x95\x5C"), ElementsAre("in"));
}

TEST(RegistryTree, BackslashesAtTheEndAndDoubledOnesDoNotCount) {
    Registry registry;
    registry.CreateKey("HKLM\\a\\b");
    for (const char* path : {"HKLM\\a\\b\\", "HKLM\\a\\\\b", "HKLM\\\\a\\b\\\\"}) {
        EXPECT_TRUE(registry.KeyExists(path)) << path;
    }
}

TEST(RegistryTree, ClassesAreAKeyOfTheLocalMachine) {
    Registry registry;
    registry.SetText("HKCR\\.inf", "", "inffile");
    EXPECT_EQ(registry.Text("HKLM\\SOFTWARE\\Classes\\.inf", ""), "inffile");
    EXPECT_EQ(registry.Text("HKEY_CLASSES_ROOT\\.inf", ""), "inffile");
    EXPECT_TRUE(registry.IsBelowLocalMachine("HKCR\\.inf"));
    EXPECT_FALSE(registry.IsBelowLocalMachine("HKCU\\.inf"));
}

TEST(RegistryTree, SubKeysAndValuesComeInTheOrderOfTheirNames) {
    Registry registry;
    for (const char* name : {"b", "C", "a"}) {
        registry.CreateKey("HKCU\\K\\"s + name);
        registry.SetNumber("HKCU\\K", name, 1);
    }
    EXPECT_THAT(registry.SubKeys("HKCU\\K"), ElementsAre("a", "b", "C"));
    EXPECT_EQ(registry.ValueAt("HKCU\\K", 0)->name, "a");
    EXPECT_EQ(registry.ValueAt("HKCU\\K", 2)->name, "C");
    EXPECT_EQ(registry.ValueAt("HKCU\\K", 1)->name, "b");
    EXPECT_EQ(registry.ValueAt("HKCU\\K", 3), nullptr);
    EXPECT_EQ(registry.ValueAt("HKCU\\Missing", 0), nullptr);
}

TEST(RegistryTree, AnEnumerationGoesOnRightlyAfterAChange) {
    Registry registry;
    for (const char* name : {"a", "c", "e"}) {
        registry.SetNumber("HKCU\\K", name, 1);
    }
    EXPECT_EQ(registry.ValueAt("HKCU\\K", 1)->name, "c");
    registry.DeleteValue("HKCU\\K", "c");
    EXPECT_EQ(registry.ValueAt("HKCU\\K", 1)->name, "e");
    registry.SetNumber("HKCU\\K", "b", 1);
    EXPECT_EQ(registry.ValueAt("HKCU\\K", 1)->name, "b");
    EXPECT_EQ(registry.ValueAt("HKCU\\K", 2)->name, "e");
    EXPECT_EQ(registry.ValueAt("HKCU\\K", 0)->name, "a");
}

TEST(RegistryTree, TypedReadsGiveTheFallbackForMissingValuesAndOtherTypes) {
    Registry registry;
    registry.SetText("HKCU\\K", "text", "t");
    registry.SetNumber("HKCU\\K", "number", 0x12345678);
    registry.SetTexts("HKCU\\K", "texts", {"a", "b"});
    registry.Set("HKCU\\K", "expand", REG_EXPAND_SZ, "%x%\0"s);
    registry.Set("HKCU\\K", "short", REG_DWORD, "ab");
    registry.Set("HKCU\\K", "unended", REG_MULTI_SZ, "a\0b"s);
    EXPECT_EQ(registry.Text("HKCU\\K", "expand"), "%x%");
    EXPECT_EQ(registry.Text("HKCU\\K", "number", "f"), "f");
    EXPECT_EQ(registry.Text("HKCU\\K", "missing", "f"), "f");
    EXPECT_EQ(registry.Text("HKCU\\No", "text", "f"), "f");
    EXPECT_EQ(registry.Number("HKCU\\K", "number"), 0x12345678u);
    EXPECT_EQ(registry.Number("HKCU\\K", "short", 7), 7u);
    EXPECT_EQ(registry.Number("HKCU\\K", "text", 7), 7u);
    EXPECT_THAT(registry.Texts("HKCU\\K", "texts"), ElementsAre("a", "b"));
    EXPECT_THAT(registry.Texts("HKCU\\K", "unended"), ElementsAre("a", "b"));
    EXPECT_THAT(registry.Texts("HKCU\\K", "text"), IsEmpty());
}

TEST(RegistryTree, DeletingAKeyTakesAllBelowItAndARootIsOnlyEmptied) {
    Registry registry;
    registry.CreateKey("HKCU\\a\\b\\c");
    registry.SetText("HKCU", "v", "x");
    EXPECT_TRUE(registry.HasSubKeys("HKCU\\a"));
    EXPECT_TRUE(registry.DeleteKey("HKCU\\A"));
    EXPECT_FALSE(registry.KeyExists("HKCU\\a\\b"));
    EXPECT_FALSE(registry.DeleteKey("HKCU\\a"));
    EXPECT_FALSE(registry.DeleteKey("HKCU\\no\\a"));
    EXPECT_FALSE(registry.DeleteKey("HKXX"));
    EXPECT_TRUE(registry.DeleteKey("HKCU"));
    EXPECT_TRUE(registry.KeyExists("HKCU"));
    EXPECT_EQ(registry.Find("HKCU", "v"), nullptr);
}

TEST(RegistryTree, AKeyNumberNeverComesBack) {
    Registry registry;
    registry.CreateKey("HKCU\\a");
    const std::uint64_t first = registry.KeyId("HKCU\\a");
    EXPECT_NE(first, 0u);
    EXPECT_EQ(registry.KeyId("HKCU\\A"), first);
    registry.DeleteKey("HKCU\\a");
    EXPECT_EQ(registry.KeyId("HKCU\\a"), 0u);
    registry.CreateKey("HKCU\\a");
    EXPECT_GT(registry.KeyId("HKCU\\a"), first);
    const std::uint64_t second = registry.KeyId("HKCU\\a");
    EXPECT_EQ(registry.Parse(registry.Text()), "");
    EXPECT_GT(registry.KeyId("HKCU\\a"), second);
}

TEST(RegistryTree, NamesTooLongAndKeysTooDeepAreRefused) {
    Registry registry;
    EXPECT_TRUE(registry.CreateKey("HKCU\\" + std::string(255, 'n')));
    EXPECT_FALSE(registry.CreateKey("HKCU\\" + std::string(256, 'n')));
    std::string deep = "HKCU";
    for (int i = 0; i < 512; ++i) {
        deep += "\\d";
    }
    EXPECT_TRUE(registry.CreateKey(deep));
    EXPECT_FALSE(registry.CreateKey(deep + "\\d"));
    EXPECT_FALSE(registry.CreateKey("NOROOT\\x"));
    EXPECT_THROW(registry.SetText("NOROOT\\x", "v", "t"), std::invalid_argument);
}

TEST(RegistryTree, OnlyAChangeMakesItDirty) {
    Registry registry;
    registry.SetText("HKCU\\K", "v", "x");
    EXPECT_TRUE(registry.IsDirty());
    registry.MarkClean();
    registry.SetText("HKCU\\K", "V", "x");
    registry.CreateKey("HKCU\\k");
    registry.DeleteValue("HKCU\\K", "missing");
    EXPECT_FALSE(registry.IsDirty());
    registry.SetText("HKCU\\K", "v", "y");
    EXPECT_TRUE(registry.IsDirty());
    registry.MarkClean();
    registry.DeleteValue("HKCU\\K", "v");
    EXPECT_TRUE(registry.IsDirty());
    registry.MarkClean();
    registry.CreateKey("HKCU\\other");
    EXPECT_TRUE(registry.IsDirty());
    registry.MarkClean();
    registry.DeleteKey("HKCU\\other");
    EXPECT_TRUE(registry.IsDirty());
}

TEST(RegistryTree, ADeniedKeyRefusesWritesAndWithEverythingReads) {
    Registry registry;
    registry.Deny("HKLM\\a");
    registry.Deny("HKLM\\b\\c", true);
    EXPECT_EQ(registry.CheckAccess("HKLM\\A\\below", KEY_WRITE), ERROR_ACCESS_DENIED);
    EXPECT_EQ(registry.CheckAccess("HKLM\\a", KEY_ALL_ACCESS), ERROR_ACCESS_DENIED);
    EXPECT_EQ(registry.CheckAccess("HKLM\\a", KEY_READ), ERROR_SUCCESS);
    EXPECT_EQ(registry.CheckAccess("HKLM\\ab", KEY_WRITE), ERROR_SUCCESS);
    EXPECT_EQ(registry.CheckAccess("HKLM\\b", KEY_WRITE), ERROR_SUCCESS);
    EXPECT_EQ(registry.CheckAccess("HKLM\\b\\C", KEY_READ), ERROR_ACCESS_DENIED);
}

TEST(RegistryTree, DenialsOutlastAChangeOfTheCodePage) {
    Registry registry;
    registry.Deny("HKLM\\a");
    EXPECT_EQ(registry.SetCodePage(932), "");
    EXPECT_EQ(registry.CheckAccess("HKLM\\a", KEY_WRITE), ERROR_ACCESS_DENIED);
}

// ---- the text -------------------------------------------------------------------------------------------------------

TEST(RegistryText, AnEmptyRegistryIsHeaderRootsAndClosingLine) {
    EXPECT_EQ(Registry().Text(),
              "Windows Registry Editor Version 5.00\n"
              "\n[HKEY_CURRENT_USER]\n"
              "\n[HKEY_LOCAL_MACHINE]\n"
              "\n[HKEY_USERS]\n"
              "\n; end of registry\n");
}

struct ValueCase {
    const char* description;
    DWORD type;
    std::string data;
    std::string shown;
};

class RegistryValueText : public ::testing::TestWithParam<ValueCase> {};

TEST_P(RegistryValueText, IsWrittenReadablyAndComesBack) {
    const ValueCase& test = GetParam();
    Registry registry;
    registry.Set("HKCU\\K", "v", test.type, test.data);
    EXPECT_EQ(Shown(registry), test.shown);
    Registry copy;
    ASSERT_EQ(copy.Parse(registry.Text()), "");
    const RegistryValue* value = copy.Find("HKCU\\K", "v");
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(value->type, test.type);
    EXPECT_EQ(value->data, test.data);
    EXPECT_EQ(copy.Text(), registry.Text());
}

INSTANTIATE_TEST_SUITE_P(
    Values, RegistryValueText,
    ::testing::Values(
        ValueCase{"text", REG_SZ, "C:\\a \"b\"\0"s, "\"v\"=\"C:\\\\a \\\"b\\\"\"\n"},
        ValueCase{"empty text", REG_SZ, "\0"s, "\"v\"=\"\"\n"}, ValueCase{"no bytes", REG_SZ, "", "\"v\"=hex(1):\n"},
        ValueCase{"text without NUL", REG_SZ, "ab", "; \"ab\"\n\"v\"=hex(1):61,00,62,00\n"},
        ValueCase{"two NULs", REG_SZ, "a\0\0"s, "; \"a\"\n\"v\"=hex(1):61,00,00,00,00,00\n"},
        ValueCase{"line break", REG_SZ, "a\r\n\0"s, "\"v\"=hex(1):61,00,0d,00,0a,00,00,00\n"},
        ValueCase{"accent", REG_SZ, "\xE9\0"s, "\"v\"=\"\xC3\xA9\"\n"},
        ValueCase{"byte without a character", REG_SZ, "\x81\0"s, "\"v\"=hex(1):81,00,00,00\n"},
        ValueCase{"expand", REG_EXPAND_SZ, "%a%\0"s, "; \"%a%\"\n\"v\"=hex(2):25,00,61,00,25,00,00,00\n"},
        ValueCase{"multi", REG_MULTI_SZ, "a\0b\0\0"s, "; \"a\" \"b\"\n\"v\"=hex(7):61,00,00,00,62,00,00,00,00,00\n"},
        ValueCase{"empty multi", REG_MULTI_SZ, "\0"s, "\"v\"=hex(7):00,00\n"},
        ValueCase{"number", REG_DWORD, "\x01\x02\x00\xff"s, "\"v\"=dword:ff000201\n"},
        ValueCase{"short number", REG_DWORD, "\x01\x02"s, "\"v\"=hex(4):01,02\n"},
        ValueCase{"bytes", REG_BINARY, "\x00\xff"s, "\"v\"=hex:00,ff\n"},
        ValueCase{"no binary", REG_BINARY, "", "\"v\"=hex:\n"}, ValueCase{"none", REG_NONE, "x", "\"v\"=hex(0):78\n"},
        ValueCase{"quad", REG_QWORD, "\1\0\0\0\0\0\0\0"s, "\"v\"=hex(b):01,00,00,00,00,00,00,00\n"},
        ValueCase{"any type", 0xFFFFFFFF, "x", "\"v\"=hex(ffffffff):78\n"},
        ValueCase{"long binary", REG_BINARY, std::string(30, '\x11'),
                  "\"v\"=hex:11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,11,\\\n"
                  "  11,11,11,11,11,11,11\n"}),
    [](const auto& info) {
        std::string name = info.param.description;
        std::erase(name, ' ');
        return name;
    });

TEST(RegistryText, EveryByteComesBackInDataInValueNamesAndInKeys) {
    for (UINT codePage : {1252u, 932u, 936u, 65001u}) {
        Registry registry(codePage);
        std::string bytes;
        for (int byte = 1; byte < 256; ++byte) {
            bytes += static_cast<char>(byte);
        }
        std::string reversed(bytes.rbegin(), bytes.rend());
        std::string noBackslash = bytes;
        std::erase(noBackslash, '\\');
        for (const std::string& data : {bytes, reversed, bytes + '\0', '\0' + bytes}) {
            for (DWORD type : {0u, 1u, 2u, 3u, 4u, 7u, 11u}) {
                registry.Set("HKCU\\K", data.substr(0, 250) + std::to_string(type), type, data);
            }
        }
        registry.CreateKey("HKCU\\" + noBackslash.substr(0, 127));
        registry.CreateKey("HKCU\\]" + noBackslash.substr(127) + "]");
        registry.CreateKey("HKCU\\xC4");
        Registry copy(codePage);
        ASSERT_EQ(copy.Parse(registry.Text()), "") << codePage;
        EXPECT_EQ(copy.Text(), registry.Text()) << codePage;
        EXPECT_EQ(copy.SubKeys("HKCU"), registry.SubKeys("HKCU")) << codePage;
        std::vector<RegistryValue> expected = registry.Values("HKCU\\K");
        std::vector<RegistryValue> values = copy.Values("HKCU\\K");
        ASSERT_EQ(values.size(), expected.size());
        for (std::size_t i = 0; i < values.size(); ++i) {
            EXPECT_EQ(values[i].name, expected[i].name) << codePage;
            EXPECT_EQ(values[i].type, expected[i].type) << codePage;
            EXPECT_EQ(values[i].data, expected[i].data) << codePage;
        }
    }
}

TEST(RegistryText, JapaneseTextIsReadableInTheFile) {
    Registry registry(932);
    registry.SetText("HKCU\\\x95\x5C", "\x83\x5C", "\x93\xFA\x96\x7B");
    EXPECT_THAT(registry.Text(), HasSubstr("[HKEY_CURRENT_USER\\\u8868]\n\"\u30bd\"=\"\u65e5\u672c\"\n"));
    Registry copy(932);
    ASSERT_EQ(copy.Parse(registry.Text()), "");
    EXPECT_EQ(copy.Text("HKCU\\\x95\x5C", "\x83\x5C"), "\x93\xFA\x96\x7B");
}

TEST(RegistryText, KeysAndValuesAreSortedSoThatTheSameStateIsTheSameText) {
    Registry one;
    one.SetText("HKCU\\K\\b", "y", "1");
    one.SetText("HKCU\\K\\A", "z", "2");
    one.SetText("HKCU\\K\\b", "X", "3");
    Registry two;
    two.SetText("HKCU\\K\\A", "z", "2");
    two.SetText("HKCU\\K\\b", "X", "3");
    two.SetText("HKCU\\K\\b", "y", "1");
    EXPECT_EQ(one.Text(), two.Text());
    EXPECT_THAT(one.Text(),
                HasSubstr("[HKEY_CURRENT_USER\\K\\A]\n\"z\"=\"2\"\n\n[HKEY_CURRENT_USER\\K\\b]\n\"X\"=\"3\"\n\"y\""));
}

TEST(RegistryText, PartsOfAnExportedFileAreTaken) {
    Registry registry;
    const std::string text =
        "\xEF\xBB\xBFWindows Registry Editor Version 5.00\r\n\r\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Vendor]\r\n"
        "@=\"default\"\r\n"
        "  \"Blanks\" = \"x\"  \r\n"
        "\"Number\"=dword:1F\r\n"
        "\"Files\"=hex(7):61,00,2e,00,64,00,\\\r\n  6c,00,00,00,\\\r\n  00,00\r\n"
        "; a comment\r\n"
        "[HKEY_CLASSES_ROOT\\.x]\r\n@=\"y\"\r\n"
        "; end of registry\r\n\r\n";
    ASSERT_EQ(registry.Parse(text), "");
    EXPECT_EQ(registry.Text("HKLM\\SOFTWARE\\Vendor", ""), "default");
    EXPECT_EQ(registry.Text("HKLM\\SOFTWARE\\Vendor", "Blanks"), "x");
    EXPECT_EQ(registry.Number("HKLM\\SOFTWARE\\Vendor", "Number"), 31u);
    EXPECT_THAT(registry.Texts("HKLM\\SOFTWARE\\Vendor", "Files"), ElementsAre("a.dl"));
    EXPECT_EQ(registry.Text("HKLM\\SOFTWARE\\Classes\\.x", ""), "y");
    EXPECT_FALSE(registry.IsDirty());
}

TEST(RegistryText, ParseTakesThePlaceOfAllThatWasThere) {
    Registry registry;
    registry.CreateKey("HKCU\\old");
    ASSERT_EQ(registry.Parse(Document("[HKEY_CURRENT_USER\\new]\n")), "");
    EXPECT_THAT(registry.SubKeys("HKCU"), ElementsAre("new"));
}

struct DamageCase {
    const char* text;
    const char* problem;
};

class RegistryDamage : public ::testing::TestWithParam<DamageCase> {};

TEST_P(RegistryDamage, NamesTheLineAndChangesNothing) {
    Registry registry;
    registry.CreateKey("HKCU\\kept");
    registry.MarkClean();
    const std::string before = registry.Text();
    EXPECT_THAT(registry.Parse(GetParam().text), StartsWith(GetParam().problem));
    EXPECT_EQ(registry.Text(), before);
    EXPECT_FALSE(registry.IsDirty());
}

#define HEAD "Windows Registry Editor Version 5.00\n"
#define KEY HEAD "[HKEY_CURRENT_USER\\K]\n"
INSTANTIATE_TEST_SUITE_P(
    Texts, RegistryDamage,
    ::testing::Values(
        DamageCase{"", "line 0: the first line has to be"},
        DamageCase{"REGEDIT4\n", "line 1: the first line has to be"}, DamageCase{HEAD, "line 1: the closing line"},
        DamageCase{KEY "\"a\"=\"x\"\n", "line 3: the closing line"},
        DamageCase{KEY "\"a\"=\"x\"\n; end of registr", "line 4: the closing line"},
        DamageCase{HEAD "; end of registry\n[HKCU]\n", "line 3: text behind the closing line"},
        DamageCase{HEAD "[HKEY_CURRENT_USER", "line 2: a key has to end in ]"},
        DamageCase{HEAD "[]\n", "line 2: a key without a name"},
        DamageCase{HEAD "[HKEY_CURRENT_USER\\\\a]\n", "line 2: a key without a name"},
        DamageCase{HEAD "[HKEY_CURRENT_USER\\]\n", "line 2: a key without a name"},
        DamageCase{HEAD "[HKEY_CURRENT_USER\\\\x0]\n", "line 2: a byte has to be"},
        DamageCase{HEAD "[NOROOT\\a]\n", "line 2: unknown root \"NOROOT\""},
        DamageCase{HEAD "[-HKEY_CURRENT_USER\\a]\n", "line 2: a key to be deleted"},
        DamageCase{HEAD "\"a\"=\"x\"\n", "line 2: a value ahead of the first key"},
        DamageCase{KEY "garbage\n", "line 3: neither a key"}, DamageCase{KEY "\"a\n", "line 3: the closing quote"},
        DamageCase{KEY "\"a\"\n", "line 3: = is missing"}, DamageCase{KEY "\"a\"=\n", "line 3: the value is neither"},
        DamageCase{KEY "\"a\"=-\n", "line 3: the value is neither"},
        DamageCase{KEY "\"a\"=\"te", "line 3: the closing quote is missing"},
        DamageCase{KEY "\"a\"=\"te\"x\n", "line 3: text behind the closing quote"},
        DamageCase{KEY "\"a\"=\"C:\\x\"\n", "line 3: a byte has to be two"},
        DamageCase{KEY "\"a\"=\"C:\\y\"\n", "line 3: a backslash has to be doubled"},
        DamageCase{KEY "\"a\"=\"\xFF\"\n", "line 3: no UTF-8"},
        DamageCase{KEY "\"a\"=\"\xE6\x97\xA5\"\n", "line 3: no UTF-8, or characters that code page 1252 lacks"},
        DamageCase{KEY "\"a\"=dword:123456789\n", "line 3: dword: needs"},
        DamageCase{KEY "\"a\"=dword:\n", "line 3: dword: needs"},
        DamageCase{KEY "\"a\"=dword:1g\n", "line 3: dword: needs"},
        DamageCase{KEY "\"a\"=hex:0\n", "line 3: a byte has to be two"},
        DamageCase{KEY "\"a\"=hex:00,\n", "line 3: a byte is missing"},
        DamageCase{KEY "\"a\"=hex:0011\n", "line 3: bytes have to be parted"},
        DamageCase{KEY "\"a\"=hex:00\\\n  11\n", "line 3: bytes have to be parted"},
        DamageCase{KEY "\"a\"=hex:00,\\\n", "line 3: the line that continues"},
        DamageCase{KEY "\"a\"=hex:00,\\\n  1", "line 4: a byte has to be two"},
        DamageCase{KEY "\"a\"=hex(q):00\n", "line 3: hex(n): needs"},
        DamageCase{KEY "\"a\"=hex(1:00\n", "line 3: hex(n): needs"},
        DamageCase{KEY "\"a\"=hex(123456789):00\n", "line 3: hex(n): needs"},
        DamageCase{KEY "\"a\"=hex(1):00\n", "line 3: a text in hex is UTF-16"},
        DamageCase{KEY "\"a\"=hex(1):e5,65\n", "line 3: no UTF-8, or characters"}));
#undef KEY
#undef HEAD

TEST(RegistryText, ANameOrADepthBeyondTheLimitsIsDamage) {
    Registry registry;
    EXPECT_THAT(registry.Parse(Document("[HKEY_CURRENT_USER\\" + std::string(256, 'n') + "]\n")),
                StartsWith("line 2: a key's name is longer"));
    std::string deep;
    for (int i = 0; i < 100000; ++i) {
        deep += "\\d";
    }
    EXPECT_THAT(registry.Parse(Document("[HKEY_CURRENT_USER" + deep + "]\n")), StartsWith("line 2: a key's name"));
}

TEST(RegistryText, AFileCutAnywhereIsRefused) {
    Registry registry;
    registry.SetText("HKCU\\K", "a", "text");
    registry.SetTexts("HKCU\\K\\L", "m", {"some", "texts", "that", "take", "more", "than", "one", "line"});
    registry.SetNumber("HKLM\\X", "n", 5);
    const std::string whole = registry.Text();
    Registry copy;
    // The line break behind the closing line is the one thing that may be missing.
    for (std::size_t length = 0; length < whole.size() - 1; ++length) {
        EXPECT_THAT(copy.Parse(whole.substr(0, length)), StartsWith("line ")) << length;
    }
    EXPECT_EQ(copy.Parse(whole.substr(0, whole.size() - 1)), "");
}

TEST(RegistryText, AnotherCodePageKeepsTheCharacters) {
    Registry registry(1252);
    registry.SetText("HKCU\\K", "v", "\x80");
    ASSERT_EQ(registry.SetCodePage(65001), "");
    EXPECT_EQ(registry.Text("HKCU\\K", "v"), "\u20ac");
    EXPECT_THAT(registry.SetCodePage(932), HasSubstr("lacks"));
    EXPECT_EQ(registry.Text("HKCU\\K", "v"), "\u20ac");
    registry.MarkClean();
    ASSERT_EQ(registry.SetCodePage(1252), "");
    EXPECT_FALSE(registry.IsDirty());
    EXPECT_EQ(registry.Text("HKCU\\K", "v"), "\x80");
}

// ---- size -----------------------------------------------------------------------------------------------------------

/// Processor seconds for building, printing, reading and enumerating a registry of so many values and keys.
double TimeOf(int count) {
    const std::clock_t start = std::clock();
    Registry registry;
    for (int i = 0; i < count; ++i) {
        registry.SetText("HKCU\\K", "value" + std::to_string(i), "text");
        registry.CreateKey("HKCU\\K\\key" + std::to_string(i));
    }
    Registry copy;
    EXPECT_EQ(copy.Parse(registry.Text()), "");
    int seen = 0;
    while (copy.ValueAt("HKCU\\K", static_cast<std::size_t>(seen)) != nullptr) {
        ++seen;
    }
    EXPECT_EQ(seen, count);
    while (const RegistryValue* first = copy.ValueAt("HKCU\\K", 0)) {
        copy.DeleteValue("HKCU\\K", std::string(first->name));
    }
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

TEST(RegistrySize, TimeGrowsWithTheNumberOfEntriesAndNotWithItsSquare) {
    TimeOf(500);
    double small = TimeOf(1000);
    double large = TimeOf(8000);
    // Eight times the entries; a quadratic step would take 64 times as long.
    EXPECT_LT(large, small * 30) << small << " s and " << large << " s";
}

}  // namespace
}  // namespace pikel::simulated
