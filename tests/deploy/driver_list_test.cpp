// The driver list of an INF: the read of model keys and the block.
#include "deploy/driver_list.h"

#include "inf_store/inf_search.h"

#include <algorithm>
#include <cstring>

#include "support/inf_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kText[] = R"(
[Version]
Signature = "$Windows NT$"

[Manufacturer]
%NL% = NL,NTx86.5.1,NTamd64.5.2
Other = OTHER

[NL]
"Old" = O

[NL.NTx86.5.1]
"Laser 700" = L700
"Laser 500" = L500
"laser 500" = L500
"Laser 500" = AGAIN

[NL.NTamd64.5.2]
"Laser x64" = LX64

[OTHER]
"Never seen" = N

[Strings]
NL = "Northlight"
)";

LogLines Texts(const StringList& list) {
    return {list.begin(), list.end()};
}

class DriverList : public MachineTest {
  protected:
    void WriteInf(std::string_view text) { WriteFileOn(Machine(), kInfPath, text); }

    /// What the call hands out, as texts; the block is checked and freed.
    struct Result {
        DWORD status;
        LogLines names;
        DWORD count;
        std::size_t blockSize;  ///< 0 for no block
    };
    Result Get(LPCSTR path, DWORD major = 5, DWORD minor = 1) {
        LPSTR* list = reinterpret_cast<LPSTR*>(0x10);
        DWORD count = 99;
        const DWORD status = PI_GetDriverListFromInf(path, 3, major, minor, &list, &count);
        const HeapBlock block(list);
        Result result{status, {}, count, list == nullptr ? 0 : Machine().Heap().Size(list)};
        const char* expected = reinterpret_cast<const char*>(list + count);
        for (DWORD i = 0; list != nullptr && i < count; ++i) {
            EXPECT_EQ(list[i], expected) << "the names stand one behind the other, from the end of the pointers on";
            result.names.emplace_back(list[i]);
            expected = list[i] + std::strlen(list[i]) + 1;
        }
        return result;
    }
};

TEST_F(DriverList, IsOneBlockOfPointersAndNames) {
    WriteInf(kText);
    const Result result = Get(kInfPath);
    EXPECT_EQ(result.status, 0u);
    EXPECT_THAT(result.names, ElementsAre("Laser 500", "Laser 700", "laser 500"));
    EXPECT_EQ(result.count, 3u);
    EXPECT_EQ(result.blockSize, 3u * 9 + 27);
    EXPECT_EQ(Machine().Heap().OpenCount(), 0u) << "one free takes every name";
}

TEST_F(DriverList, IsThatOfTheFirstSectionForTheVersion) {
    WriteInf(kText);
    EXPECT_THAT(Get(kInfPath, 5, 0).names, ElementsAre("Old"));
    EXPECT_THAT(Get(kInfPath, 4, 0).names, ElementsAre("Old"));
    EXPECT_THAT(Get(kInfPath, 5, 2).names, ElementsAre("Laser x64"));
    EXPECT_THAT(Get(kInfPath, 6, 0).names, ElementsAre("Laser x64"));
    EXPECT_THAT(Get(kInfPath, 0x105, 0x101).names, ElementsAre("Laser 500", "Laser 700", "laser 500"));
}

TEST_F(DriverList, LogsItsFrameAtDetailLevelAlone) {
    WriteInf("[Version]\nSignature = \"$Windows NT$\"\n[Manufacturer]\nM = M\n[M]\nA = B\n");
    const LogLines sections =
        Joined({{"CInfManufacturerSection::GetData() Start"},
                Bannered("--- Manufacturer Name ---", {"M"}),
                {"\tcsvManufacturer.size() = 1", "\tstrMfgFront = M", "\tMAKELONG:dwVersion = 501",
                 "\tdwMinDiffInVersion = ffffffff"},
                Bannered("--- Manufacturer ---", {"M"}),
                {"CInfManufacturerSection::GetData() End(0)", "CInfModelsSection::GetAllDeviceKey() Start"},
                Bannered("--- Support Models ---", {"A"}),
                {"CInfModelsSection::GetAllDeviceKey() End(0)"}});
    Test().TurnLogOn(1);
    EXPECT_EQ(Get(kInfPath).status, 0u);
    EXPECT_EQ(Test().TakeLog(), sections);
    Test().TurnLogOn(2);
    EXPECT_EQ(Get(kInfPath).status, 0u);
    EXPECT_EQ(Test().TakeLog(), Joined({{"PI_GetDriverListFromInf Start"}, sections, {"PI_GetDriverListFromInf End"}}));
}

TEST_F(DriverList, OpensReadsAndClosesInThisOrder) {
    WriteInf("[Version]\nSignature = \"$Windows NT$\"\n[Manufacturer]\nM = M\n[M]\nA = B\n");
    Test().TakeCalls();
    Get(kInfPath);
    EXPECT_THAT(Test().TakeCallNames(),
                ElementsAre("SetupOpenInfFileA", "SetupGetLineByIndexA", "SetupGetStringFieldA", "SetupGetStringFieldA",
                            "SetupFindFirstLineA", "SetupGetLineTextA", "SetupGetLineTextA", "SetupFindNextLine",
                            "SetupFindFirstLineA", "SetupGetStringFieldA", "SetupGetStringFieldA", "SetupFindNextLine",
                            "SetupCloseInfFile"));
}

TEST_F(DriverList, ANullPathGives87WithoutALogLine) {
    Test().TurnLogOn(2);
    const Result result = Get(nullptr);
    EXPECT_EQ(result.status, 87u);
    EXPECT_EQ(result.count, 0u);
    EXPECT_EQ(result.blockSize, 0u);
    EXPECT_EQ(Test().TakeLog(), LogLines());
}

TEST_F(DriverList, NullResultsGive87) {
    WriteInf(kText);
    LPSTR* list = reinterpret_cast<LPSTR*>(0x10);
    DWORD count = 99;
    EXPECT_EQ(PI_GetDriverListFromInf(kInfPath, 3, 5, 1, nullptr, &count), 87u);
    EXPECT_EQ(PI_GetDriverListFromInf(kInfPath, 3, 5, 1, &list, nullptr), 87u);
}

TEST_F(DriverList, AFileThatCannotBeOpenedGivesTheLastError) {
    Test().TurnLogOn(2);
    const Result result = Get("C:\\missing.inf");
    EXPECT_EQ(result.status, 2u);
    EXPECT_EQ(result.count, 0u);
    EXPECT_EQ(result.blockSize, 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("PI_GetDriverListFromInf Start", "PI_GetDriverListFromInf End"));
}

TEST_F(DriverList, ANullHandleGives87) {
    ReplacedOperations replaced;
    replaced.table.SetupOpenInfFileA = [](PCSTR, PCSTR, DWORD, PUINT) -> HINF { return nullptr; };
    EXPECT_EQ(Get(kInfPath).status, 87u);
    EXPECT_THAT(Test().TakeCallNames({"SetupCloseInfFile"}), IsEmpty());
}

TEST_F(DriverList, AFailedOpenWithoutACodeReadsNothing) {
    faults::FailCall("SetupOpenInfFileA", 1, 0);
    Test().TakeCalls();
    const Result result = Get(kInfPath);
    EXPECT_EQ(result.blockSize, 0u);
    EXPECT_THAT(Test().TakeCallNames(), ElementsAre("SetupOpenInfFileA"));
}

TEST_F(DriverList, IsEmptyWithTheCodeOfTheSectionThatIsNotThere) {
    struct Case {
        const char* text;
        DWORD status;
    };
    const Case cases[] = {
        {"[NL]\nA = B\n", 0xE0000102},                    // no [Manufacturer]
        {"[Manufacturer]\nNL = NL\n", 0xE0000102},        // no models section
        {"[Manufacturer]\nNL = NL\n[NL]\n", 0xE0000102},  // one without a line
        {"[Manufacturer]\nNL =\n[NL]\nA = B\n", 0},       // a line that names no section
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        WriteInf("[Version]\nSignature = \"$Windows NT$\"\n" + std::string(c.text));
        const Result result = Get(kInfPath);
        EXPECT_EQ(result.status, c.status);
        EXPECT_EQ(result.count, 0u);
        EXPECT_EQ(result.blockSize, 0u);
    }
}

TEST_F(DriverList, NoModelsGiveSuccessAndNoBlock) {
    WriteInf(kText);
    ReplacedOperations replaced;
    // A section of one line whose walk finds nothing to list can't be written down; the platform may still say so.
    replaced.table.SetupFindFirstLineA = [](HINF inf, PCSTR section, PCSTR key, PINFCONTEXT context) -> BOOL {
        if (std::string_view(section) == "Manufacturer") {
            return NativePlatform().SetupFindFirstLineA(inf, section, key, context);
        }
        Platform().SetLastError(0);
        return FALSE;
    };
    const Result result = Get(kInfPath);
    EXPECT_EQ(result.status, 0u);
    EXPECT_EQ(result.count, 0u);
    EXPECT_EQ(result.blockSize, 0u);
}

TEST_F(DriverList, TheManufacturersCodeEndsTheRead) {
    WriteInf(kText);
    faults::FailCall("SetupGetLineTextA", 4, 1234);  // second line of [Manufacturer]
    const Result result = Get(kInfPath);
    EXPECT_EQ(result.status, 1234u);
    EXPECT_EQ(result.blockSize, 0u);
    EXPECT_EQ(Machine().Handles().OpenCount(), 0u);
}

TEST_F(DriverList, AReadThatStopsHalfWayGivesItsNamesAndItsCode) {
    WriteInf(kText);
    // Two calls for the manufacturer's name, two for each model before the third one.
    faults::FailCall("SetupGetStringFieldA", 8, 1234);
    const Result result = Get(kInfPath);
    EXPECT_EQ(result.status, 1234u);
    EXPECT_THAT(result.names, ElementsAre("Laser 500", "Laser 700"));
    EXPECT_EQ(result.count, 2u);
    EXPECT_EQ(result.blockSize, 2u * 9 + 18);
}

TEST_F(DriverList, WithoutMemoryForTheBlockThereIsNone) {
    WriteInf(kText);
    // One block for the manufacturer's name, two for its lines, four for the models; then the list.
    faults::FailCall("HeapAlloc", 8, 0);
    const Result result = Get(kInfPath);
    EXPECT_EQ(result.status, 8u);
    EXPECT_EQ(result.count, 0u);
    EXPECT_EQ(result.blockSize, 0u);
}

TEST_F(DriverList, NoMemoryForTheBlockOutweighsTheCodeOfTheRead) {
    WriteInf(kText);
    faults::FailCall("SetupGetStringFieldA", 8, 1234);
    faults::FailCall("HeapAlloc", 7, 0);  // the third model's block is number 6
    EXPECT_EQ(Get(kInfPath).status, 8u);
}

TEST_F(DriverList, NamesAreBytes) {
    simulated::SystemDescription japanese = *simulated::FindSystem("xp");
    japanese.codePage = 932;
    TestMachine machine(japanese);
    // In this code page the second byte of the first letter is a backslash, and that of the second one a vertical bar.
    WriteFileOn(*machine, kInfPath,
                "[Version]\nSignature = \"$Windows NT$\"\n[Manufacturer]\nM = M\n[M]\n\"\x83\x5C\x83\x7C\" = B\n");
    LPSTR* list = nullptr;
    DWORD count = 0;
    EXPECT_EQ(PI_GetDriverListFromInf(kInfPath, 3, 5, 1, &list, &count), 0u);
    const HeapBlock block(list);
    ASSERT_EQ(count, 1u);
    EXPECT_STREQ(list[0], "\x83\x5C\x83\x7C");
    EXPECT_EQ(machine->Heap().Size(list), 4u + 9);
}

TEST_F(DriverList, EachCallThatFailsIsAnswered) {
    WriteInf(kText);
    faults::Reset();
    ASSERT_EQ(Get(kInfPath).status, 0u);
    const std::size_t calls = faults::CallCount();
    ASSERT_GT(calls, 15u);
    for (bool persistent : {false, true}) {
        for (std::size_t nth = 1; nth <= calls; ++nth) {
            faults::Reset();
            faults::FailNth(nth, 1234, persistent);
            const Result result = Get(kInfPath);
            EXPECT_THAT(result.status, ::testing::AnyOf(0u, 8u, 1234u, 1359u)) << faults::LastFailed();
            EXPECT_EQ(result.count, result.names.size());
            EXPECT_EQ(Machine().Handles().OpenCount(), 0u) << nth << ' ' << faults::LastFailed();
            EXPECT_EQ(Machine().Heap().OpenCount(), 0u);
        }
    }
}

TEST_F(DriverList, TenThousandModelsComeInOrder) {
    std::string text = "[Version]\nSignature = \"$Windows NT$\"\n[Manufacturer]\nM = M\n[M]\n";
    for (int i = 9999; i >= 0; --i) {
        const std::string digits = std::to_string(10000 + i).substr(1);
        text += "\"Model " + digits + "\" = INSTALL_" + digits + ",Hardware_" + digits + "\n";
    }
    WriteInf(text);
    const Result result = Get(kInfPath);
    EXPECT_EQ(result.status, 0u);
    ASSERT_EQ(result.names.size(), 10000u);
    EXPECT_EQ(result.names.front(), "Model 0000");
    EXPECT_EQ(result.names.back(), "Model 9999");
    EXPECT_TRUE(std::ranges::is_sorted(result.names));
    EXPECT_EQ(result.blockSize, 10000u * (10 + 9));
}

// ---- the read alone -------------------------------------------------------------------------------------------------

class ModelKeys : public MachineTest {};

TEST_F(ModelKeys, AreTheNamesOfTheFirstSection) {
    WriteFileOn(Machine(), kInfPath, kText);
    Test().TurnLogOn(2);
    StringList models("old", ',');
    EXPECT_EQ(GetInfModelList(kInfPath, 5, 5, 2, models, NoModels::AreNone), 0u);
    EXPECT_THAT(Texts(models), ElementsAre("Laser x64"));
    EXPECT_THAT(Test().TakeLog(), ::testing::Not(::testing::Contains("PI_GetDriverListFromInf Start")));
}

TEST_F(ModelKeys, AreClearedWhenTheReadFails) {
    StringList models("old", ',');
    EXPECT_EQ(GetInfModelList("C:\\missing.inf", 3, 5, 1, models, NoModels::AreNone), 2u);
    EXPECT_TRUE(models.empty());
    WriteFileOn(Machine(), kInfPath, "[Version]\nSignature = \"$Windows NT$\"\n[Manufacturer]\nM =\n");
    models = StringList("old", ',');
    EXPECT_EQ(GetInfModelList(kInfPath, 3, 5, 1, models, NoModels::AreNone), 0u);
    EXPECT_TRUE(models.empty());
}

}  // namespace
}  // namespace pikel
