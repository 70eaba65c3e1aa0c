// AddReg and DelReg of an install section.
#include "support/queue_test.h"

namespace pikel {
namespace {

using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing_support::QueueTest;

constexpr char kKey[] = "HKLM\\Software\\Test";

class RegistrySection : public QueueTest {
  protected:
    /// Applies section [I] that names [R] for AddReg and [D] for DelReg.
    DWORD Apply(const std::string& add, const std::string& remove = "", HKEY relative = nullptr) {
        OpenInf("[I]\r\nAddReg=R\r\nDelReg=D\r\n[R]\r\n" + add + "[D]\r\n" + remove);
        return ApplySection("I", relative);
    }
    DWORD ApplySection(const char* section, HKEY relative = nullptr, DWORD flags = SPINST_REGISTRY) {
        Platform().SetLastError(0);
        const BOOL result = Platform().SetupInstallFromInfSectionA(nullptr, m_inf.Get(), section, flags, relative,
                                                                   nullptr, 0, nullptr, nullptr, nullptr, nullptr);
        return result ? 0 : Platform().GetLastError();
    }
    /// "type:bytes" of a value, NULs as "|".
    std::string Value(const std::string& name, const std::string& key = kKey) {
        const simulated::RegistryValue* value = Machine().Registry().Find(key, name);
        if (value == nullptr) {
            return "none";
        }
        std::string text = std::to_string(value->type) + ":" + value->data;
        std::replace(text.begin(), text.end(), '\0', '|');
        return text;
    }
};

// ---- types ----------------------------------------------------------------------------------------------------------

struct TypeCase {
    const char* name;
    const char* rest;  ///< of "HKLM,Software\Test,v,"
    std::string value;
};
class AddedValues : public RegistrySection, public ::testing::WithParamInterface<TypeCase> {};

TEST_P(AddedValues, HaveTheTypeOfTheirFlags) {
    EXPECT_EQ(Apply(std::string("HKLM,Software\\Test,v") + GetParam().rest + "\r\n"), 0u);
    const simulated::RegistryValue* value = Machine().Registry().Find(kKey, "v");
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(std::to_string(value->type) + ":" + value->data, GetParam().value);
    m_inf.Reset();
    Test().Reopen();
    EXPECT_NE(Machine().Registry().Find(kKey, "v"), nullptr) << "it is on disk";
}

INSTANTIATE_TEST_SUITE_P(
    Types, AddedValues,
    ::testing::Values(
        TypeCase{"Text", ",,text", "1:text\0"s}, TypeCase{"TextWithACommaAndMore", ",0,\"te,xt\",more", "1:te,xt\0"s},
        TypeCase{"NoText", ",0", "1:\0"s}, TypeCase{"AnEmptyText", ",0,", "1:\0"s}, TypeCase{"NoFlags", "", "1:\0"s},
        TypeCase{"ExpandText", ",0x20000,%%windir%%\\x", "2:%windir%\\x\0"s},
        TypeCase{"DecimalNumber", ",0x10001,10", "4:\x0A\0\0\0"s},
        TypeCase{"HexNumber", ",0x10001,0x1F", "4:\x1F\0\0\0"s},
        TypeCase{"ZerosInFront", ",65537,010", "4:\x0A\0\0\0"s},
        TypeCase{"NegativeNumber", ",0x10001,-1", "4:\xFF\xFF\xFF\xFF"s},
        TypeCase{"NoNumber", ",0x10001,zz", "4:\0\0\0\0"s}, TypeCase{"MissingNumber", ",0x10001", "4:\0\0\0\0"s},
        TypeCase{"NumberAsBytes", ",0x10001,1,2,3,ff", "4:\x01\x02\x03\xFF"s},
        TypeCase{"Bytes", ",1,01,2,ff,A0", "3:\x01\x02\xFF\xA0"s}, TypeCase{"NoBytes", ",1", "3:"s},
        TypeCase{"BytesBehind0x", ",1,0x10,0xff", "3:\x10\xFF"s}, TypeCase{"None", ",0x20001,1,2", "0:\x01\x02"s},
        TypeCase{"OtherType", ",0x50001,1,2", "5:\x01\x02"s},
        TypeCase{"Quadword", ",0xb0001,1,2,3,4,5,6,7,8", "11:\x01\x02\x03\x04\x05\x06\x07\x08"s},
        TypeCase{"Texts", ",0x10000,a,b,c", "7:a\0b\0c\0\0"s}, TypeCase{"NoTexts", ",0x10000", "7:\0"s},
        TypeCase{"AnEmptyTextEndsTexts", ",0x10000,a,,b", "7:a\0\0"s},
        TypeCase{"ViewsPlayNoPart", ",0x1000,x", "1:x\0"s}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(RegistrySection, AValueWithoutANameIsTheKeysOwn) {
    EXPECT_EQ(Apply("HKLM,Software\\Test,,,own\r\n"), 0u);
    EXPECT_EQ(Value(""), "1:own|");
}

TEST_F(RegistrySection, AKeyMayComeAlone) {
    EXPECT_EQ(Apply("HKLM,Software\\Test\\a\r\nHKLM,Software\\Test\\b,,\r\nHKLM,Software\\Test\\c,v,0x10,x\r\n"
                    "HKLM,Software\\Test\\d,v,0x2000,x\r\n"),
              0u);
    EXPECT_THAT(Machine().Registry().SubKeys(kKey), ElementsAre("a", "b", "c", "d"));
    for (const char* key : {"\\a", "\\b", "\\c", "\\d"}) {
        EXPECT_THAT(Machine().Registry().Values(std::string(kKey) + key), IsEmpty()) << key;
    }
}

// ---- what is there already ------------------------------------------------------------------------------------------

TEST_F(RegistrySection, NoClobberKeepsAValue) {
    Machine().Registry().SetText(kKey, "old", "old");
    EXPECT_EQ(Apply("HKLM,Software\\Test,old,2,new\r\nHKLM,Software\\Test,fresh,2,new\r\n"
                    "HKLM,Software\\Test,old,0x10003,7\r\n"),
              0u);
    EXPECT_EQ(Value("old"), "1:old|");
    EXPECT_EQ(Value("fresh"), "1:new|");
}

TEST_F(RegistrySection, OverwriteOnlyMakesNothingNew) {
    Machine().Registry().SetText(kKey, "old", "old");
    EXPECT_EQ(Apply("HKLM,Software\\Test,old,0x20,new\r\nHKLM,Software\\Test,fresh,0x20,new\r\n"
                    "HKLM,Software\\Test\\sub,fresh,0x20,new\r\n"),
              0u);
    EXPECT_EQ(Value("old"), "1:new|");
    EXPECT_EQ(Value("fresh"), "none");
    EXPECT_FALSE(Machine().Registry().KeyExists(std::string(kKey) + "\\sub"));
}

TEST_F(RegistrySection, DeleteValueTakesAValueAway) {
    Machine().Registry().SetText(kKey, "old", "old");
    EXPECT_EQ(Apply("HKLM,Software\\Test,old,4\r\nHKLM,Software\\Test,none,4\r\n"), 0u);
    EXPECT_EQ(Value("old"), "none");
}

TEST_F(RegistrySection, TextsAreAppendedOnce) {
    Machine().Registry().SetTexts(kKey, "list", {"a", "b"});
    Machine().Registry().SetText(kKey, "text", "x");
    EXPECT_EQ(Apply("HKLM,Software\\Test,list,0x10008,d,A,b,d\r\nHKLM,Software\\Test,new,0x10008,e\r\n"
                    "HKLM,Software\\Test,text,0x10008,e\r\n"),
              0u);
    EXPECT_EQ(Value("list"), "7:a|b|d||");
    EXPECT_EQ(Value("new"), "7:e||");
    EXPECT_EQ(Value("text"), "1:x|") << "a value of another type is left alone";
}

// ---- roots ----------------------------------------------------------------------------------------------------------

TEST_F(RegistrySection, RootsMatchWithoutRegardToCase) {
    EXPECT_EQ(Apply("hklm,Software\\Test,m,,1\r\nHKCU,Test,u,,1\r\nHKCR,.test,c,,1\r\nHKU,Test,s,,1\r\n"), 0u);
    EXPECT_EQ(Value("m"), "1:1|");
    EXPECT_EQ(Value("u", "HKCU\\Test"), "1:1|");
    EXPECT_EQ(Value("c", "HKCR\\.test"), "1:1|");
    EXPECT_EQ(Value("s", "HKU\\Test"), "1:1|");
}

TEST_F(RegistrySection, AnUnknownRootIsPassedOver) {
    EXPECT_EQ(Apply("XXX,Software\\Test,x,,1\r\n,Software\\Test,y,,1\r\nHKEY_LOCAL_MACHINE,Software\\Test,z,,1\r\n"
                    "HKLM,Software\\Test,v,,1\r\n"),
              0u);
    EXPECT_EQ(Machine().Registry().Values(kKey).size(), 1u);
}

TEST_F(RegistrySection, HkrNeedsARelativeKey) {
    EXPECT_EQ(Apply("HKR,,v,,1\r\nHKR,sub,v,,1\r\nHKLM,Software\\Test,after,,1\r\n"), 0u);
    EXPECT_EQ(Value("after"), "1:1|") << "without one its lines are passed over";
    HKEY key = nullptr;
    ASSERT_EQ(Platform().RegCreateKeyExA(HKEY_LOCAL_MACHINE, "Software\\Test\\rel", 0, nullptr, 0, KEY_ALL_ACCESS,
                                         nullptr, &key, nullptr),
              0);
    RegistryKey relative(key);
    EXPECT_EQ(Apply("HKR,,v,,1\r\nHKR,sub\\deep,v,,2\r\nHKR,,,,own\r\n", "", relative.Get()), 0u);
    const std::string path = std::string(kKey) + "\\rel";
    EXPECT_EQ(Value("v", path), "1:1|");
    EXPECT_EQ(Value("", path), "1:own|");
    EXPECT_EQ(Value("v", path + "\\sub\\deep"), "1:2|");
    EXPECT_EQ(Apply("HKR,Test,v,,3\r\n", "", HKEY_CURRENT_USER), 0u);
    EXPECT_EQ(Value("v", "HKCU\\Test"), "1:3|");
}

TEST_F(RegistrySection, ARelativeKeyThatIsNotOpenIsRefused) {
    EXPECT_EQ(Apply("HKLM,Software\\Test,v,,1\r\n", "", reinterpret_cast<HKEY>(0x7770)), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(Value("v"), "none");
}

// ---- DelReg ---------------------------------------------------------------------------------------------------------

TEST_F(RegistrySection, DeletesComeFirst) {
    Machine().Registry().SetText(kKey, "v", "old");
    EXPECT_EQ(Apply("HKLM,Software\\Test,v,2,new\r\n", "HKLM,Software\\Test,v\r\n"), 0u);
    EXPECT_EQ(Value("v"), "1:new|");
}

TEST_F(RegistrySection, KeysGoWithAllBelow) {
    Machine().Registry().SetText(std::string(kKey) + "\\a\\b", "v", "1");
    Machine().Registry().SetText(std::string(kKey) + "\\c", "v", "1");
    Machine().Registry().SetText(std::string(kKey) + "\\d", "v", "1");
    EXPECT_EQ(Apply("",
                    "HKLM,Software\\Test\\a\r\nHKLM,Software\\Test\\c,v,0x2000\r\nHKLM,Software\\Test\\d,,\r\n"
                    "HKLM,Software\\Test\\none\r\nHKLM,Software\\None,v\r\n"),
              0u);
    EXPECT_THAT(Machine().Registry().SubKeys(kKey), IsEmpty());
}

TEST_F(RegistrySection, ARootIsNeverDeleted) {
    Machine().Registry().SetText(kKey, "v", "1");
    EXPECT_EQ(Apply("", "HKLM\r\nHKLM,\r\nHKLM,,\r\n"), 0u);
    EXPECT_EQ(Value("v"), "1:1|");
}

TEST_F(RegistrySection, TextsAreTakenOutOfAList) {
    Machine().Registry().SetTexts(kKey, "list", {"a", "b", "c"});
    Machine().Registry().SetText(kKey, "text", "b");
    EXPECT_EQ(Apply("",
                    "HKLM,Software\\Test,list,0x18002,B\r\nHKLM,Software\\Test,text,0x18002,b\r\n"
                    "HKLM,Software\\Test,none,0x18002,b\r\n"),
              0u);
    EXPECT_EQ(Value("list"), "7:a|c||");
    EXPECT_EQ(Value("text"), "1:b|");
}

// ---- the whole section ----------------------------------------------------------------------------------------------

TEST_F(RegistrySection, EveryListOfEveryLineCounts) {
    OpenInf(
        "[I]\r\nAddReg=R,None,%s%\r\naddreg=T\r\n[R]\r\nHKLM,Software\\Test,r,,1\r\n[S]\r\nHKLM,Software\\Test,s,,1\r\n"
        "[T]\r\nHKLM,Software\\Test,t,,1\r\n[Strings]\r\ns=S\r\n");
    EXPECT_EQ(ApplySection("I"), 0u);
    EXPECT_EQ(Machine().Registry().Values(kKey).size(), 3u);
}

TEST_F(RegistrySection, ASectionThatIsMissingOrEmptyAsksForNothing) {
    OpenInf("[I]\r\nAddReg=\r\nDelReg=None\r\n");
    EXPECT_EQ(ApplySection("I"), 0u);
    EXPECT_EQ(ApplySection("None"), 0u);
    EXPECT_EQ(ApplySection("I", nullptr, 0), 0u);
}

TEST_F(RegistrySection, WrongArgumentsAreRefused) {
    OpenInf("[I]\r\n");
    EXPECT_EQ(ApplySection(nullptr), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(ApplySection("I", nullptr, SPINST_REGISTRY | 0x10), DWORD{ERROR_CALL_NOT_IMPLEMENTED});
    EXPECT_FALSE(Platform().SetupInstallFromInfSectionA(nullptr, nullptr, "I", SPINST_REGISTRY, nullptr, nullptr, 0,
                                                        nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_INVALID_HANDLE});
}

TEST_F(RegistrySection, AKeyWithoutRightsEndsIt) {
    Machine().Registry().Deny("HKLM\\Software\\Denied");
    EXPECT_EQ(Apply("HKLM,Software\\Test,a,,1\r\nHKLM,Software\\Denied,b,,1\r\nHKLM,Software\\Test,c,,1\r\n"),
              DWORD{ERROR_ACCESS_DENIED});
    m_inf.Reset();
    Test().Reopen();
    EXPECT_EQ(Value("a"), "1:1|") << "what was done stays";
    EXPECT_EQ(Value("c"), "none");
}

TEST_F(RegistrySection, ItIsWrittenInOneGo) {
    std::string lines;
    for (int count = 0; count < 20000; ++count) {
        lines += "HKLM,Software\\Test,v" + std::to_string(count) + ",,1\r\n";
    }
    EXPECT_EQ(Apply(lines), 0u) << "a commit for each of them would take hours";
    EXPECT_FALSE(Machine().Registry().IsDirty());
    EXPECT_EQ(Machine().Registry().Values(kKey).size(), 20000u);
}

}  // namespace
}  // namespace pikel
