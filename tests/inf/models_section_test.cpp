// A models section.
#include "inf/models_section.h"

#include "support/inf_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

constexpr char kText[] = R"(
[Version]
Signature = "$Windows NT$"

[Models]
"Laser 700" = L700,USB\Laser_700,Laser_700
"Laser 500" = L500,USB\Laser_500
%Ink% = INK
"laser 500" = LOWER,Lower
"Laser 500" = AGAIN,Other_500
"Empty" =
"Comma" = ,Id

[Strings]
Ink = "Inkjet, colour"
)";

class ModelsSection : public InfTest {};

LogLines Texts(const StringList& list) {
    return {list.begin(), list.end()};
}

TEST_F(ModelsSection, LooksOneModelUp) {
    struct Case {
        const char* model;
        const char* install;
        const char* hardwareId;
    };
    const Case cases[] = {
        {"Laser 700", "L700", "USB\\Laser_700"},
        {"Laser 500", "L500", "USB\\Laser_500"},  // the first of the lines with this name
        {"Inkjet, colour", "INK", ""},
        {"Empty", "", ""},
        {"Comma", "", "Id"},
    };
    HINF inf = Open(kText);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.model);
        Test().TurnLogOn(1);
        CInfModelsSection models;
        models.m_strInstallSection = "old";
        models.m_strHardwareId = "old";
        EXPECT_EQ(models.GetData(inf, "Models", c.model), 0u);
        EXPECT_EQ(models.m_strInstallSection, c.install);
        EXPECT_EQ(models.m_strHardwareId, c.hardwareId);
        EXPECT_THAT(Log(), ElementsAre("CInfModelsSection::GetData() Start", "CInfModelsSection::GetData() End(0)"));
    }
}

TEST_F(ModelsSection, AModelOrASectionThatIsNotThereGives1359) {
    HINF inf = Open(kText);
    for (auto [section, model] : {std::pair{"Models", "Laser 900"}, {"Absent", "Laser 500"}, {"", ""}}) {
        Test().TurnLogOn(1);
        CInfModelsSection models;
        models.m_strInstallSection = "old";
        models.m_strHardwareId = "old";
        EXPECT_EQ(models.GetData(inf, section, model), 1359u);
        EXPECT_EQ(models.m_strInstallSection, "");
        EXPECT_EQ(models.m_strHardwareId, "");
        EXPECT_THAT(Log(), ElementsAre("CInfModelsSection::GetData() Start", "CInfModelsSection::GetData() End(1359)"));
    }
}

TEST_F(ModelsSection, AModelThatCannotBeReadGivesTheCodeOfTheRead) {
    HINF inf = Open(kText);
    Test().TurnLogOn(1);
    faults::FailCall("SetupGetLineTextA", 2, 1234);
    CInfModelsSection models;
    EXPECT_EQ(models.GetData(inf, "Models", "Laser 500"), 1234u);
    EXPECT_EQ(models.m_strInstallSection, "");
    EXPECT_THAT(Log(), ElementsAre("CInfModelsSection::GetData() Start", "CInfModelsSection::GetData() End(1234)"));
    faults::FailCall("HeapAlloc", 1, 0);
    EXPECT_EQ(models.GetData(inf, "Models", "Laser 500"), 8u);
}

TEST_F(ModelsSection, ListsEveryNameOnceSortedByBytes) {
    HINF inf = Open(kText);
    Test().TurnLogOn(1);
    StringList list("old", ',');
    EXPECT_EQ(CInfModelsSection::GetAllDeviceKey(inf, "Models", list), 0u);
    const LogLines sorted = {"Comma", "Empty", "Inkjet, colour", "Laser 500", "Laser 700", "laser 500"};
    EXPECT_EQ(Texts(list), sorted);
    EXPECT_EQ(Log(), Joined({{"CInfModelsSection::GetAllDeviceKey() Start"},
                             Bannered("--- Support Models ---", sorted),
                             {"CInfModelsSection::GetAllDeviceKey() End(0)"}}));
}

TEST_F(ModelsSection, BytesAbove127StandBehindTheOthers) {
    HINF inf = Open("[Version]\nSignature = \"$Windows NT$\"\n[Models]\n\"\xC4\" = A\n\"z\" = B\n\"Z\" = C\n");
    StringList list;
    EXPECT_EQ(CInfModelsSection::GetAllDeviceKey(inf, "Models", list), 0u);
    EXPECT_THAT(Texts(list), ElementsAre("Z", "z", "\xC4"));
}

TEST_F(ModelsSection, ASectionThatIsNotThereGivesTheLastErrorAndAnEmptyList) {
    HINF inf = Open(kText);
    Test().TurnLogOn(1);
    StringList list("old", ',');
    EXPECT_EQ(CInfModelsSection::GetAllDeviceKey(inf, "Absent", list), 0xE0000102u);
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(Log(), Joined({{"CInfModelsSection::GetAllDeviceKey() Start"},
                             Bannered("--- Support Models ---", {}),
                             {"CInfModelsSection::GetAllDeviceKey() End(-536870654)"}}));
    Test().TakeCalls();
    faults::FailCall("SetupFindFirstLineA", 1, 1234);
    EXPECT_EQ(CInfModelsSection::GetAllDeviceKey(inf, "Models", list), 1234u);
    EXPECT_TRUE(list.empty());
}

/// Three lines of which the third can't be read.
class ModelsWalk : public InfTest {
  protected:
    void ExpectStop(DWORD status) {
        Test().TurnLogOn(1);
        StringList list;
        EXPECT_EQ(CInfModelsSection::GetAllDeviceKey(m_threeLines, "Models", list), status);
        EXPECT_THAT(Texts(list), ElementsAre("A", "B")) << "sorted, as far as the walk came";
        EXPECT_EQ(Log(), Joined({{"CInfModelsSection::GetAllDeviceKey() Start"},
                                 Bannered("--- Support Models ---", {"A", "B"}),
                                 {"CInfModelsSection::GetAllDeviceKey() End(" + std::to_string(status) + ")"}}));
    }

    HINF m_threeLines = Open("[Version]\nSignature = \"$Windows NT$\"\n[Models]\nB = B\nA = A\nC = C\n");
};

TEST_F(ModelsWalk, EndsWith1359AtALineThatNeedsNoSize) {
    faults::FailCall("SetupGetStringFieldA", 5, 5);
    ExpectStop(1359);
}

TEST_F(ModelsWalk, EndsWithTheLastErrorOfAFailedRead) {
    faults::FailCall("SetupGetStringFieldA", 6, 1234);
    ExpectStop(1234);
}

TEST_F(ModelsWalk, EndsWith8WithoutMemory) {
    faults::FailCall("HeapAlloc", 3, 0);
    ExpectStop(8);
}

TEST_F(ModelsWalk, EndsWith1359AtALineOfSeveralValuesWithoutAKey) {
    HINF inf = Open("[Version]\nSignature = \"$Windows NT$\"\n[Models]\nB = B\nC,D\nA = A\n");
    StringList list;
    EXPECT_EQ(CInfModelsSection::GetAllDeviceKey(inf, "Models", list), 1359u);
    EXPECT_THAT(Texts(list), ElementsAre("B"));
}

TEST_F(ModelsWalk, ReadsEachNameWithTwoCallsAndOneBlock) {
    const std::size_t allocations = Machine().Heap().AllocationCount();
    StringList list;
    EXPECT_EQ(CInfModelsSection::GetAllDeviceKey(m_threeLines, "Models", list), 0u);
    EXPECT_EQ(Machine().Heap().AllocationCount() - allocations, 3u);
    EXPECT_THAT(Test().TakeCallNames(),
                ElementsAre("SetupFindFirstLineA", "SetupGetStringFieldA", "SetupGetStringFieldA", "SetupFindNextLine",
                            "SetupGetStringFieldA", "SetupGetStringFieldA", "SetupFindNextLine", "SetupGetStringFieldA",
                            "SetupGetStringFieldA", "SetupFindNextLine"));
}

}  // namespace
}  // namespace pikel
