// What the Setup API is asked for when INFs are searched, compared and found: styles, kinds of search and sizes.
#include <cstring>
#include <string>
#include <vector>

#include "inf_store/inf_search.h"
#include "support/calls.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr char kInf[] = "[Version]\r\nSignature=\"$Windows NT$\"\r\nProvider=\"Northlight\"\r\nClass=Printer\r\n";

class SetupArguments : public MachineTest {
  protected:
    std::vector<std::string> Search(LPCSTR directory, LPCSTR className = "Printer") {
        StringList list;
        EXPECT_EQ(SearchInfList(directory, "Northlight", className, list), 0u);
        return {list.begin(), list.end()};
    }
};

TEST_F(SetupArguments, SearchAsksForInfsOfTheNewStyleAlone) {
    WriteFileOn(Machine(), "C:\\Infs\\a.inf", kInf);
    ForgetCalls(Test());
    EXPECT_THAT(Search("C:\\Infs\\"), ElementsAre("C:\\Infs\\a.inf"));
    const std::vector<std::string> calls = TakeCallsOf(Test(), {"SetupGetInfFileListA"});
    ASSERT_THAT(calls, SizeIs(2));
    EXPECT_THAT(calls[0], StartsWith("SetupGetInfFileListA(\"C:\\\\Infs\\\\\", 0x2, null, 0x0, "));
    EXPECT_THAT(calls[1], StartsWith("SetupGetInfFileListA(\"C:\\\\Infs\\\\\", 0x2, &, "));
}

TEST_F(SetupArguments, CandidateIsOpenedWithoutAClassAndInTheNewStyle) {
    WriteFileOn(Machine(), "C:\\Infs\\a.inf", kInf);
    ForgetCalls(Test());
    Search("C:\\Infs\\");
    EXPECT_THAT(TakeCallsOf(Test(), {"SetupOpenInfFileA"}),
                ElementsAre(StartsWith("SetupOpenInfFileA(\"C:\\\\Infs\\\\a.inf\", null, 0x2, &) = ")));
}

TEST_F(SetupArguments, PathIsLookedUpByTheDefaultSearchAndForTheFirstFile) {
    WriteFileOn(Machine(), "C:\\WINDOWS\\inf\\oem0.inf", kInf);
    ForgetCalls(Test());
    std::string path;
    EXPECT_EQ(GetInfPath("oem0.inf", path), 0u);
    const std::vector<std::string> calls =
        TakeCallsOf(Test(), {"SetupGetInfInformationA", "SetupQueryInfFileInformationA"});
    ASSERT_THAT(calls, SizeIs(4));
    EXPECT_THAT(calls[0], HasSubstr(", 0x3, null, 0x0, "));
    EXPECT_THAT(calls[1], HasSubstr(", 0x3, &, "));
    EXPECT_THAT(calls[2], StartsWith("SetupQueryInfFileInformationA(&, 0x0, null, 0x0, "));
    EXPECT_THAT(calls[3], StartsWith("SetupQueryInfFileInformationA(&, 0x0, &, "));
}

// ---- the class ------------------------------------------------------------------------------------------------------

std::string g_class;
DWORD g_size = 0;
PDWORD g_required = nullptr;

BOOL WINAPI TellClass(PCSTR, LPGUID guid, PSTR name, DWORD size, PDWORD required) {
    EXPECT_NE(guid, nullptr);
    g_size = size;
    g_required = required;
    if (g_class.size() >= size) {
        Platform().SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    std::memcpy(name, g_class.c_str(), g_class.size() + 1);
    return TRUE;
}

TEST_F(SetupArguments, ClassNameHasRoomFor255Characters) {
    WriteFileOn(Machine(), "C:\\Infs\\a.inf", kInf);
    ReplacedOperations replaced;
    replaced.table.SetupDiGetINFClassA = &TellClass;
    g_required = reinterpret_cast<PDWORD>(&g_size);
    for (std::size_t length : {31u, 32u, 254u, 255u}) {
        g_class = std::string(length, 'c');
        EXPECT_THAT(Search("C:\\Infs\\", g_class.c_str()), ElementsAre("C:\\Infs\\a.inf")) << length;
    }
    EXPECT_EQ(g_size, 256u);
    EXPECT_EQ(g_required, nullptr) << "a longer one isn't asked for again";
    g_class = std::string(256, 'c');
    EXPECT_THAT(Search("C:\\Infs\\", g_class.c_str()), IsEmpty());
}

}  // namespace
}  // namespace pikel
