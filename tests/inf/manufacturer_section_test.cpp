// [Manufacturer].
#include "inf/manufacturer_section.h"

#include "support/inf_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

constexpr char kHead[] = "[Version]\nSignature = \"$Windows NT$\"\n";

class ManufacturerSection : public InfTest {
  protected:
    HINF OpenLines(const std::string& lines) { return Open(std::string(kHead) + "[Manufacturer]\n" + lines); }
};

LogLines Sections(const CInfManufacturerSection& manufacturer) {
    return {manufacturer.m_vecSections.begin(), manufacturer.m_vecSections.end()};
}

TEST_F(ManufacturerSection, IsEmptyWhenMade) {
    const CInfManufacturerSection manufacturer;
    EXPECT_TRUE(manufacturer.m_vecSections.empty());
    EXPECT_EQ(manufacturer.m_strManufacturer, "");
    EXPECT_EQ(manufacturer.m_dwProcessorType, 0u);
}

TEST_F(ManufacturerSection, ChoosesASectionForEachLineAndLogsIt) {
    HINF inf = OpenLines(
        "%NL% = NL,NTx86.5.1,NTamd64.5.2\n"
        "Other = OTHER\n"
        "[Strings]\nNL = \"Northlight\"\n");
    Test().TurnLogOn(1);
    CInfManufacturerSection manufacturer;
    EXPECT_EQ(manufacturer.GetData(inf, 0, 5, 2), 0u);
    EXPECT_EQ(manufacturer.m_strManufacturer, "Northlight");
    EXPECT_THAT(Sections(manufacturer), ElementsAre("NL.NTamd64.5.2", "OTHER"));
    EXPECT_EQ(manufacturer.m_dwProcessorType, 0u);
    EXPECT_EQ(Log(),
              Joined({{"CInfManufacturerSection::GetData() Start"},
                      Bannered("--- Manufacturer Name ---", {"Northlight"}),
                      {"\tcsvManufacturer.size() = 3", "\tstrMfgFront = NL", "\tMAKELONG:dwVersion = 502",
                       "\tdwMinDiffInVersion = ffffffff", "\tstrArchitecture = NTx86", "\tMajor = 5, Minor = 1",
                       "\tMAKELONG:dwVer = 501", "\tdwMinDiffInVersion = 1", "\tstrBestRet = NL.NTx86.5.1",
                       "\tstrArchitecture = NTamd64", "\tMajor = 5, Minor = 2", "\tMAKELONG:dwVer = 502",
                       "\tdwMinDiffInVersion = 0", "\tstrBestRet = NL.NTamd64.5.2", "\tcsvManufacturer.size() = 1",
                       "\tstrMfgFront = OTHER", "\tMAKELONG:dwVersion = 502", "\tdwMinDiffInVersion = ffffffff"},
                      Bannered("--- Manufacturer ---", {"NL.NTamd64.5.2", "OTHER"}),
                      {"CInfManufacturerSection::GetData() End(0)"}}));
}

TEST_F(ManufacturerSection, IsNotThere) {
    HINF inf = Open(kHead);
    Test().TurnLogOn(1);
    CInfManufacturerSection manufacturer;
    EXPECT_EQ(manufacturer.GetData(inf, 0, 5, 1), 0xE0000102u);
    EXPECT_TRUE(manufacturer.m_vecSections.empty());
    EXPECT_EQ(manufacturer.m_strManufacturer, "");
    EXPECT_EQ(Log(), Joined({{"CInfManufacturerSection::GetData() Start", InfErrorLine(1359, 384)},
                             Bannered("--- Manufacturer Name ---", {""}),
                             Bannered("--- Manufacturer ---", {}),
                             {"CInfManufacturerSection::GetData() End(-536870654)"}}));
}

TEST_F(ManufacturerSection, ANameThatCannotBeReadIsLoggedAndNothingElse) {
    HINF inf = OpenLines("NL = NL\n");
    Test().TurnLogOn(1);
    faults::FailCall("SetupGetStringFieldA", 2, 5);
    CInfManufacturerSection manufacturer;
    EXPECT_EQ(manufacturer.GetData(inf, 0, 5, 1), 0u);
    EXPECT_EQ(manufacturer.m_strManufacturer, "");
    EXPECT_THAT(Sections(manufacturer), ElementsAre("NL"));
    EXPECT_EQ(Log(), Joined({{"CInfManufacturerSection::GetData() Start", InfErrorLine(5, 384)},
                             Bannered("--- Manufacturer Name ---", {""}),
                             {"\tcsvManufacturer.size() = 1", "\tstrMfgFront = NL", "\tMAKELONG:dwVersion = 501",
                              "\tdwMinDiffInVersion = ffffffff"},
                             Bannered("--- Manufacturer ---", {"NL"}),
                             {"CInfManufacturerSection::GetData() End(0)"}}));
}

TEST_F(ManufacturerSection, ASingleNameServesEveryVersionAndProcessor) {
    HINF inf = OpenLines("NL = NL\n");
    for (DWORD processor : {0u, 1u, 2u}) {
        for (DWORD major : {0u, 4u, 5u, 6u, 10u, 256u}) {
            for (DWORD minor : {0u, 1u, 90u, 256u}) {
                CInfManufacturerSection manufacturer;
                EXPECT_EQ(manufacturer.GetData(inf, processor, major, minor), 0u);
                EXPECT_THAT(Sections(manufacturer), ElementsAre("NL"));
            }
        }
    }
}

TEST_F(ManufacturerSection, ChoosesNamesThatHaveNoSection) {
    HINF inf = OpenLines("NL = NL,NTx86.5.1\n[NL.NTx86.5.1]\nA = B\n");
    CInfManufacturerSection manufacturer;
    EXPECT_EQ(manufacturer.GetData(inf, 0, 5, 0), 0u);
    EXPECT_THAT(Sections(manufacturer), ElementsAre("NL"));
    EXPECT_EQ(manufacturer.GetData(inf, 0, 6, 0), 0u);
    EXPECT_THAT(Sections(manufacturer), ElementsAre("NL.NTx86.5.1"));
}

TEST_F(ManufacturerSection, AnEmptyLineAddsNothingAndTheWalkGoesOn) {
    HINF inf = OpenLines("A =\nB = B,NTamd64\nC =\n");
    CInfManufacturerSection manufacturer;
    EXPECT_EQ(manufacturer.GetData(inf, 0, 5, 1), 0u);
    EXPECT_EQ(manufacturer.m_strManufacturer, "A");
    EXPECT_THAT(Sections(manufacturer), ElementsAre("B.NTamd64"));
    EXPECT_EQ(manufacturer.m_dwProcessorType, 0u) << "of the last line, which is empty";
}

TEST_F(ManufacturerSection, TheProcessorMarkIsThatOfTheLastLine) {
    struct Case {
        const char* lines;
        DWORD processorType;
    };
    const Case cases[] = {
        {"A = A,NTx86.5.1\n", 0},
        {"A = A,NTia64.5.1\n", 1},
        {"A = A,NTamd64.5.1\n", 2},
        {"A = A,NTia64\n", 1},
        {"A = A,NTamd64\n", 2},
        // The case counts.
        {"A = A,ntia64.5.1\n", 0},
        {"A = A,ntamd64.5.1\n", 0},
        {"A = A,NTAMD64.5.1\n", 0},
        // The whole name is looked at, the plain one too.
        {"A = NTia64Models\n", 1},
        {"A = MyNTamd64Models\n", 2},
        {"A = ANTia64,NTamd64.5.1\n", 2},
        {"A = ANTamd64,NTia64.5.1\n", 2},
        // Of what was chosen, not of what was offered.
        {"A = A,NTamd64.5.2\n", 0},
        {"A = A,NTamd64.5.1,NTx86.5.1\n", 0},
        // The last line decides.
        {"A = A,NTamd64.5.1\nB = B\n", 0},
        {"A = A\nB = B,NTia64.5.1\n", 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.lines);
        CInfManufacturerSection manufacturer;
        EXPECT_EQ(manufacturer.GetData(OpenLines(c.lines), 0, 5, 1), 0u);
        EXPECT_EQ(manufacturer.m_dwProcessorType, c.processorType);
    }
}

TEST_F(ManufacturerSection, IsClearedByTheNextRead) {
    CInfManufacturerSection manufacturer;
    ASSERT_EQ(manufacturer.GetData(OpenLines("A = A,NTamd64.5.1\nB = B,NTamd64.5.1\n"), 0, 5, 1), 0u);
    EXPECT_EQ(manufacturer.GetData(OpenLines("C = C\n"), 0, 5, 1), 0u);
    EXPECT_EQ(manufacturer.m_strManufacturer, "C");
    EXPECT_THAT(Sections(manufacturer), ElementsAre("C"));
    EXPECT_EQ(manufacturer.m_dwProcessorType, 0u);
    EXPECT_EQ(manufacturer.GetData(Open(kHead), 0, 5, 1), 0xE0000102u);
    EXPECT_EQ(manufacturer.m_strManufacturer, "");
    EXPECT_TRUE(manufacturer.m_vecSections.empty());
}

// ---- a walk that ends half-way --------------------------------------------------------------------------------------

class ManufacturerWalk : public ManufacturerSection {
  protected:
    /// Reads two lines of which the second can't be read, with the log on.
    void ExpectStop(DWORD status, const char* statusText) {
        Test().TurnLogOn(1);
        CInfManufacturerSection manufacturer;
        EXPECT_EQ(manufacturer.GetData(m_twoLines, 0, 5, 1), status);
        EXPECT_EQ(manufacturer.m_strManufacturer, "A");
        EXPECT_THAT(Sections(manufacturer), ElementsAre("A.NTamd64")) << "what was chosen stays";
        EXPECT_EQ(manufacturer.m_dwProcessorType, 2u);
        EXPECT_EQ(Log(), Joined({{"CInfManufacturerSection::GetData() Start"},
                                 Bannered("--- Manufacturer Name ---", {"A"}),
                                 {"\tcsvManufacturer.size() = 2", "\tstrMfgFront = A", "\tMAKELONG:dwVersion = 501",
                                  "\tdwMinDiffInVersion = ffffffff", "\tstrBestRet = A.NTamd64"},
                                 Bannered("--- Manufacturer ---", {"A.NTamd64"}),
                                 {"CInfManufacturerSection::GetData() End(" + std::string(statusText) + ")"}}));
    }

    HINF m_twoLines = OpenLines("A = A,NTamd64\nB = B\n");
};

TEST_F(ManufacturerWalk, EndsWith1359AtALineThatNeedsNoSize) {
    faults::FailCall("SetupGetLineTextA", 3, 5);
    ExpectStop(1359, "1359");
}

TEST_F(ManufacturerWalk, EndsWithTheLastErrorOfAFailedRead) {
    faults::FailCall("SetupGetLineTextA", 4, 1234);
    ExpectStop(1234, "1234");
}

TEST_F(ManufacturerWalk, EndsWith8WithoutMemory) {
    faults::FailCall("HeapAlloc", 3, 0);
    ExpectStop(8, "8");
}

}  // namespace
}  // namespace pikel
