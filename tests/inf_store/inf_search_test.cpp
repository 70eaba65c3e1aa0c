// The search for installed INFs, and the comparisons between INFs.
#include "inf_store/inf_search.h"

#include <cstring>

#include "support/inf_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace std::string_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string InfOf(const std::string& provider, const std::string& className) {
    return "[Version]\nSignature=\"$Windows NT$\"\nProvider=\"" + provider + "\"\nClass=" + className + "\n";
}

LogLines VersionLog(const std::string& provider, const std::string& className) {
    return Joined({{"CInfVersionSection::GetData() Start"},
                   Bannered("--- Provider ---", {provider}),
                   Bannered("--- Class ---", {className}),
                   Bannered("--- ClassGUID ---", {""}),
                   Bannered("--- OEM URLS ---", {""}),
                   Bannered("--- Cat File ---", {" = "}),
                   Bannered("--- Signature ---", {"$Windows NT$"}),
                   {"CInfVersionSection::GetData() End(0)"}});
}

LogLines Texts(const StringList& list) {
    return {list.begin(), list.end()};
}
StringList ListOf(const LogLines& texts) {
    StringList list;
    for (const std::string& text : texts) {
        list.Append(text);
    }
    return list;
}

class InfSearch : public MachineTest {
  protected:
    struct Result {
        DWORD status = 0;
        LogLines paths;
        bool operator==(const Result&) const = default;
    };
    static Result Search(LPCSTR directory, LPCSTR provider = "Northlight", LPCSTR className = "Printer") {
        StringList list = ListOf({"old"});
        const DWORD status = SearchInfList(directory, provider, className, list);
        return {status, Texts(list)};
    }
    void Write(const std::string& path, const std::string& text) { WriteFileOn(Machine(), path, text); }
};

TEST_F(InfSearch, FindsTheInfsOfAProviderAndClass) {
    Write("C:\\Infs\\c.inf", InfOf("NORTHLIGHT", "printer"));
    Write("C:\\Infs\\a.inf", InfOf("Northlight", "Printer"));
    Write("C:\\Infs\\b.inf", InfOf("Northlight", "Net"));
    Write("C:\\Infs\\d.inf", InfOf("Other", "Printer"));
    Write("C:\\Infs\\e.inf", "[Manufacturer]\nA=B\n");
    Write("C:\\Infs\\f.txt", InfOf("Northlight", "Printer"));
    EXPECT_EQ(Search("C:\\Infs\\"), (Result{0, {"C:\\Infs\\a.inf", "C:\\Infs\\c.inf"}}));
}

TEST_F(InfSearch, LogsEachNameAndOpensThoseOfTheClassAlone) {
    Write("C:\\Infs\\a.inf", InfOf("Northlight", "Printer"));
    Write("C:\\Infs\\b.inf", InfOf("Northlight", "Net"));
    Write("C:\\Infs\\c.inf", InfOf("Other", "Printer"));
    Write("C:\\Infs\\d.inf", InfOf("Northlight", "Printer"));
    Test().TurnLogOn(1);
    Test().TakeCalls();
    Search("C:\\Infs\\");
    EXPECT_EQ(Test().TakeLog(), Joined({{"--- SearchINFFile start  ---", "SetupGetInfFileList Success",
                                         "szInfPath:C:\\Infs\\a.inf", "lpBuffer[i]:a.inf"},
                                        VersionLog("Northlight", "Printer"),
                                        {"--- [0]C:\\Infs\\a.inf  ---", "szInfPath:C:\\Infs\\b.inf",
                                         "lpBuffer[i]:b.inf", "szInfPath:C:\\Infs\\c.inf", "lpBuffer[i]:c.inf"},
                                        VersionLog("Other", "Printer"),
                                        {"szInfPath:C:\\Infs\\d.inf", "lpBuffer[i]:d.inf"},
                                        VersionLog("Northlight", "Printer"),
                                        {"--- [1]C:\\Infs\\d.inf  ---", "--- SearchINFFile End:0  ---"}}));
    EXPECT_THAT(
        Test().TakeCallNames({"SetupGetInfFileListA", "SetupDiGetINFClassA", "SetupOpenInfFileA", "SetupCloseInfFile"}),
        ElementsAre("SetupGetInfFileListA", "SetupGetInfFileListA", "SetupDiGetINFClassA", "SetupOpenInfFileA",
                    "SetupCloseInfFile", "SetupDiGetINFClassA", "SetupDiGetINFClassA", "SetupOpenInfFileA",
                    "SetupCloseInfFile", "SetupDiGetINFClassA", "SetupOpenInfFileA", "SetupCloseInfFile"));
}

TEST_F(InfSearch, NullDirectoryIsTheSystemsInfFolderWithBareNames) {
    Write("C:\\WINDOWS\\inf\\oem3.inf", InfOf("Northlight", "Printer"));
    EXPECT_EQ(Search(nullptr), (Result{0, {"oem3.inf"}}));
}

TEST_F(InfSearch, DirectoryWithoutItsClosingBackslashFindsNothing) {
    Write("C:\\Infs\\a.inf", InfOf("Northlight", "Printer"));
    Test().TurnLogOn(1);
    EXPECT_EQ(Search("C:\\Infs"), (Result{0, {}}));
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("--- SearchINFFile start  ---", "SetupGetInfFileList Success", "szInfPath:C:\\Infsa.inf",
                            "lpBuffer[i]:a.inf", "--- SearchINFFile End:0  ---"));
}

TEST_F(InfSearch, FolderWithoutAnInfGivesAnEmptyList) {
    EXPECT_EQ(Machine().Files().MakeFolder("C:\\Empty"), 0u);
    EXPECT_EQ(Search("C:\\Empty\\"), (Result{0, {}}));
    EXPECT_EQ(Search("C:\\None\\"), (Result{0, {}}));
}

TEST_F(InfSearch, NoProviderOrClassMatchesNoInf) {
    Write("C:\\Infs\\a.inf", InfOf("Northlight", "Printer"));
    EXPECT_EQ(Search("C:\\Infs\\", nullptr), (Result{0, {}}));
    EXPECT_EQ(Search("C:\\Infs\\", "Northlight", nullptr), (Result{0, {}}));
}

TEST_F(InfSearch, FileOfTheClassThatCantBeOpenedEndsTheSearch) {
    for (const char* name : {"a", "b", "c"}) {
        Write("C:\\Infs\\"s + name + ".inf", InfOf("Northlight", "Printer"));
    }
    Test().TurnLogOn(1);
    faults::FailCall("SetupOpenInfFileA", 2, 32);
    EXPECT_EQ(Search("C:\\Infs\\"), (Result{32, {"C:\\Infs\\a.inf"}}));
    EXPECT_EQ(Test().TakeLog().back(), "--- SearchINFFile End:32  ---");
}

TEST_F(InfSearch, FileWhoseClassCantBeReadIsPassedOver) {
    Write("C:\\Infs\\a.inf", InfOf("Northlight", "Printer"));
    Write("C:\\Infs\\b.inf", InfOf("Northlight", "Printer"));
    faults::FailCall("SetupDiGetINFClassA", 1, 32);
    EXPECT_EQ(Search("C:\\Infs\\"), (Result{0, {"C:\\Infs\\b.inf"}}));
}

TEST_F(InfSearch, ListThatFailsEndsIt) {
    Write("C:\\Infs\\a.inf", InfOf("Northlight", "Printer"));
    Test().TurnLogOn(1);
    faults::FailCall("SetupGetInfFileListA", 1, 1234);
    EXPECT_EQ(Search("C:\\Infs\\"), (Result{1234, {}}));
    EXPECT_THAT(Test().TakeLog(), ElementsAre("--- SearchINFFile start  ---", "--- SearchINFFile End:1234  ---"));
    faults::Reset();
    faults::FailCall("SetupGetInfFileListA", 2, 1234);
    EXPECT_EQ(Search("C:\\Infs\\"), (Result{0, {}})) << "the second failure isn't told";
    EXPECT_THAT(Test().TakeLog(), ElementsAre("--- SearchINFFile start  ---", "--- SearchINFFile End:0  ---"));
    faults::Reset();
    faults::FailCall("HeapAlloc", 1, 0);
    EXPECT_EQ(Search("C:\\Infs\\"), (Result{8, {}}));
}

TEST_F(InfSearch, ListWithoutItsLastNulsEndsWithItsBlock) {
    Write("C:\\Infs\\a.inf", InfOf("Northlight", "Printer"));
    Write("C:\\Infs\\b.inf", InfOf("Northlight", "Printer"));
    static constexpr std::string_view kNames("a.inf\0b.inf", 11);
    ReplacedOperations replaced;
    replaced.table.SetupGetInfFileListA = [](PCSTR, DWORD, PSTR buffer, DWORD, PDWORD required) -> BOOL {
        *required = static_cast<DWORD>(kNames.size());
        if (buffer != nullptr) {
            kNames.copy(buffer, kNames.size());
        }
        return TRUE;
    };
    // What lies behind a block is a name, which a walk that goes too far would take.
    replaced.table.HeapAlloc = [](HANDLE heap, DWORD flags, SIZE_T size) -> LPVOID {
        auto* block = static_cast<char*>(NativePlatform().HeapAlloc(heap, flags, size + sizeof "a.inf" + 1));
        std::memcpy(block + size, "a.inf", sizeof "a.inf");
        return block;
    };
    EXPECT_EQ(Search("C:\\Infs\\"), (Result{0, {"C:\\Infs\\a.inf", "C:\\Infs\\b.inf"}}));
}

TEST_F(InfSearch, PathsAreTakenUpTo259Bytes) {
    // The machine itself takes no longer paths, so that the list comes from the test.
    static std::string asked;
    asked.clear();
    static std::string names;
    ReplacedOperations replaced;
    replaced.table.SetupGetInfFileListA = [](PCSTR, DWORD, PSTR buffer, DWORD, PDWORD required) -> BOOL {
        *required = static_cast<DWORD>(names.size() + 2);
        if (buffer != nullptr) {
            names.copy(buffer, names.size());
            buffer[names.size()] = buffer[names.size() + 1] = '\0';
        }
        return TRUE;
    };
    replaced.table.SetupDiGetINFClassA = [](PCSTR path, LPGUID, PSTR, DWORD, PDWORD) -> BOOL {
        asked = path;
        return FALSE;
    };
    for (std::size_t length : {258u, 259u, 260u, 261u, 3000u}) {
        names = std::string(length - 8 - 4, 'n') + ".inf";
        EXPECT_EQ(Search("C:\\Infs\\"), (Result{0, {}}));
        EXPECT_EQ(asked, length < 260 ? "C:\\Infs\\" + names : "") << length;
        asked.clear();
    }
}

// ---- model names ----------------------------------------------------------------------------------------------------

TEST_F(InfSearch, NamesAreHeldByteByByte) {
    Test().TurnLogOn(1);
    EXPECT_EQ(CheckDriverNameFromINF(ListOf({"B", "A", "B"}), ListOf({"A", "B", "C"})), 1u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("CheckDriverNameFromINF - (B) is  exist ", "CheckDriverNameFromINF - (A) is  exist ",
                            "CheckDriverNameFromINF - (B) is  exist "));
    EXPECT_EQ(CheckDriverNameFromINF(ListOf({"A", "b", "C"}), ListOf({"A", "B", "C"})), 0u) << "case counts";
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("CheckDriverNameFromINF - (A) is  exist ", "CheckDriverNameFromINF - (b) is not exist "));
    EXPECT_EQ(CheckDriverNameFromINF(ListOf({"A"}), ListOf({"AA", ""})), 0u);
    EXPECT_EQ(CheckDriverNameFromINF(ListOf({""}), ListOf({"AA", ""})), 1u);
    Test().TakeLog();
    EXPECT_EQ(CheckDriverNameFromINF({}, ListOf({"A"})), 1u);
    EXPECT_EQ(CheckDriverNameFromINF({}, {}), 1u);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
    EXPECT_EQ(CheckDriverNameFromINF(ListOf({"A"}), {}), 0u);
}

TEST_F(InfSearch, ManyNamesAreFoundAmongMany) {
    StringList wanted, held;
    for (int i = 0; i < 10000; ++i) {
        wanted.Append("Northlight Laser " + std::to_string(i));
        held.Append("Northlight Laser " + std::to_string(9999 - i));
    }
    EXPECT_EQ(CheckDriverNameFromINF(wanted, held), 1u);
}

// ---- texts ----------------------------------------------------------------------------------------------------------

TEST_F(InfSearch, TextsDifferByTheirLinesCaseApart) {
    struct {
        std::string left, right;
        DWORD different;
    } const cases[] = {
        {"[Version]\r\nA=b\r\n", "[version]\r\na=B\r\n", 0},
        {"a\r\nb\r\n", "a\nb\n", 0},
        {"a\n", "a\nb\n", 1},
        {"a\n", "a\nb", 1},
        {"a\n", "a\n\n", 1},
        {"a\n", "a", 1},
        {"a", "A", 0},
        {"a", "b", 1},
        {"", "", 0},
        {"", "\n", 1},
        {"a\x1a"
         "b",
         "a\x1a"
         "c",
         0},
        {"a\0b\n"s, "a\0B\n"s, 0},
        {"a\0b\n"s, "a\0c\n"s, 1},
        {"a\0b\n"s, "a\n", 1},
        {"a\r\rb\n", "a\rb\n", 1},
        {std::string(259, 'x') + "\ny", std::string(259, 'X') + "\nY", 0},
        {std::string(259, 'x'), std::string(259, 'x'), 0},
        {std::string(260, 'x'), std::string(260, 'x'), 1},
        {std::string(260, 'x') + "\n", std::string(260, 'x') + "\n", 1},
        {std::string(261, 'x') + "\n", std::string(261, 'x') + "\n", 1},
        {"a\n" + std::string(5000, 'x') + "\n", "a\n" + std::string(5000, 'x') + "\n", 1},
    };
    for (const auto& row : cases) {
        Write("C:\\left.inf", row.left);
        Write("C:\\right.inf", row.right);
        EXPECT_EQ(IsInfTextDifferent("C:\\left.inf", "C:\\right.inf"), row.different) << row.left << "|" << row.right;
        EXPECT_EQ(IsInfTextDifferent("C:\\right.inf", "C:\\left.inf"), row.different) << row.right << "|" << row.left;
    }
}

TEST_F(InfSearch, FileThatCantBeReadCountsAsNotDifferent) {
    Write("C:\\left.inf", "a");
    EXPECT_EQ(IsInfTextDifferent("C:\\left.inf", "C:\\none.inf"), 0u);
    EXPECT_EQ(IsInfTextDifferent("C:\\none.inf", "C:\\left.inf"), 0u);
    EXPECT_EQ(IsInfTextDifferent(nullptr, "C:\\left.inf"), 0u);
    EXPECT_EQ(IsInfTextDifferent("C:\\left.inf", nullptr), 0u);
    Write("C:\\right.inf", "b");
    auto held = Machine().Files().HoldOpen("C:\\right.inf");
    EXPECT_EQ(IsInfTextDifferent("C:\\left.inf", "C:\\right.inf"), 0u);
}

// ---- search path ----------------------------------------------------------------------------------------------------

TEST_F(InfSearch, PathOfAnInfIsFoundOnTheSearchPath) {
    Write("C:\\WINDOWS\\inf\\oem0.inf", InfOf("Northlight", "Printer"));
    std::string path = "old";
    Test().TurnLogOn(1);
    EXPECT_EQ(GetInfPath("oem0.inf", path), 0u);
    EXPECT_EQ(path, "C:\\WINDOWS\\inf\\oem0.inf");
    EXPECT_THAT(Test().TakeLog(), ElementsAre("GetInfPath Start", "GetInfPath End:0"));
    path = "old";
    EXPECT_EQ(GetInfPath("none.inf", path), 2u);
    EXPECT_EQ(path, "old");
    EXPECT_THAT(Test().TakeLog(), ElementsAre("GetInfPath Start", "GetInfPath End:2"));
}

TEST_F(InfSearch, EveryFailureOfThePathLookUpIsTold) {
    Write("C:\\WINDOWS\\inf\\oem0.inf", InfOf("Northlight", "Printer"));
    struct {
        const char* call;
        std::size_t nth;
        DWORD code;
        DWORD status;
    } const cases[] = {
        {"SetupGetInfInformationA", 1, 1234, 1234},
        {"SetupGetInfInformationA", 2, 1234, 1234},
        {"SetupQueryInfFileInformationA", 1, 1234, 1234},
        {"SetupQueryInfFileInformationA", 2, 1234, 1234},
        {"HeapAlloc", 1, 0, 8},
        {"HeapAlloc", 2, 0, 8},
    };
    for (const auto& row : cases) {
        faults::Reset();
        faults::FailCall(row.call, row.nth, row.code);
        std::string path = "old";
        EXPECT_EQ(GetInfPath("oem0.inf", path), row.status) << row.call << ' ' << row.nth;
        EXPECT_EQ(path, "old");
        EXPECT_EQ(Machine().Heap().OpenCount(), 0u);
    }
}

// ---- models ---------------------------------------------------------------------------------------------------------

TEST_F(InfSearch, ModelsAreThoseOfTheFirstChosenSection) {
    Write(kInfPath, InfOf("Northlight", "Printer") +
                        "[Manufacturer]\nA=A,NTx86.5.1\nB=B\n[A]\n\"Old\"=I\n[A.NTx86.5.1]\n\"Two\"=I\n\"One\"=I\n");
    StringList models = ListOf({"old"});
    EXPECT_EQ(GetInfModelList(kInfPath, 3, 5, 1, models), 0u);
    EXPECT_THAT(Texts(models), ElementsAre("One", "Two"));
    EXPECT_EQ(GetInfModelList(kInfPath, 3, 4, 0, models), 0u);
    EXPECT_THAT(Texts(models), ElementsAre("Old"));
}

TEST_F(InfSearch, ModelsThatArentThereFail) {
    StringList models = ListOf({"old"});
    EXPECT_EQ(GetInfModelList("C:\\none.inf", 3, 5, 1, models), 2u);
    EXPECT_THAT(Texts(models), IsEmpty());
    Write(kInfPath, InfOf("Northlight", "Printer"));
    EXPECT_EQ(GetInfModelList(kInfPath, 3, 5, 1, models), 0xE0000102u);
    Write(kInfPath, InfOf("Northlight", "Printer") + "[Manufacturer]\nA=\n");
    EXPECT_EQ(GetInfModelList(kInfPath, 3, 5, 1, models), 0xE0000102u) << "no section was chosen";
    Write(kInfPath, InfOf("Northlight", "Printer") + "[Manufacturer]\nA=NONE\n");
    EXPECT_EQ(GetInfModelList(kInfPath, 3, 5, 1, models), 0xE0000102u);
}

}  // namespace
}  // namespace pikel
