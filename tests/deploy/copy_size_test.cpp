// How much room the files of several models take.
#include "deploy/copy_size.h"

#include "frame/pikel.h"
#include "printer_inf.h"
#include "support/calls.h"
#include "support/compressed_file.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;

class CopySize : public MachineTest {
  protected:
    CopySize() {
        PutAuroraPackage(Machine());
        ForgetCalls(Test());
    }
    PiStatus Ask(const std::string& models, DWORD mode = 2) {
        m_total = m_shared = 99;
        return PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION)
            ->PI_KEL_GetCopyDriverFilesSize(kAuroraPath, (models + '\0').c_str(), &m_total, &m_shared, mode, 3, 5, 1);
    }
    DWORD m_total = 0;
    DWORD m_shared = 0;
};

const std::string k500 = std::string("Aurora 500") + '\0';
const std::string kPlain = std::string("Aurora Plain") + '\0';
const std::string kNobody = std::string("Nobody") + '\0';
constexpr DWORD kSizeOf500 = 12 + 8 + 11 + 12 + 12 + 11 + 10 + 12;
constexpr DWORD kSizeOfPlain = 11;

TEST_F(CopySize, OfOneModelHasNothingShared) {
    EXPECT_EQ(Ask(k500), 0u);
    EXPECT_EQ(m_total, kSizeOf500);
    EXPECT_EQ(m_shared, 0u);
}

TEST_F(CopySize, OfNoModelIsZero) {
    EXPECT_EQ(Ask(""), 0u);
    EXPECT_EQ(m_total + m_shared, 0u);
}

TEST_F(CopySize, OfRepeatedModelsCountsOnceInEachSum) {
    EXPECT_EQ(Ask(k500 + kPlain + k500), 0u);
    EXPECT_EQ(m_total, kSizeOf500 + kSizeOfPlain);
    EXPECT_EQ(m_shared, kSizeOf500);
    EXPECT_EQ(Ask(kPlain + kPlain + kPlain), 0u);
    EXPECT_EQ(m_total, kSizeOfPlain);
    EXPECT_EQ(m_shared, 2 * kSizeOfPlain);
}

TEST_F(CopySize, FileOfTwoModelsIsShared) {
    ChangeAuroraInf(Machine(), "[PLAIN.Files]\n", "[PLAIN.Files]\nNLAURORA.DLL\n");
    EXPECT_EQ(Ask(k500 + kPlain), 0u);
    EXPECT_EQ(m_total, kSizeOf500 + kSizeOfPlain);
    EXPECT_EQ(m_shared, 12u);
}

TEST_F(CopySize, NamesThatDifferInCaseAreTwoFiles) {
    ChangeAuroraInf(Machine(), "[PLAIN.Files]\n", "[PLAIN.Files]\nnlaurora.dll\n");
    EXPECT_EQ(Ask(k500 + kPlain), 0u);
    EXPECT_EQ(m_total, kSizeOf500 + kSizeOfPlain + 12);
    EXPECT_EQ(m_shared, 0u);
}

TEST_F(CopySize, RenamedFileCountsUnderEachNameOfTheMode) {
    const std::pair<DWORD, DWORD> cases[] = {
        {0, kSizeOf500 - 12}, {1, kSizeOf500}, {2, kSizeOf500}, {3, kSizeOf500 + 12}};
    for (const auto& [mode, size] : cases) {
        EXPECT_EQ(Ask(k500, mode), 0u);
        EXPECT_EQ(m_total, size) << mode;
        EXPECT_EQ(m_shared, 0u) << mode;
    }
}

TEST_F(CopySize, CompressedFileCountsExpanded) {
    Machine().Files().Delete("C:\\Package\\NLPLAIN.DLL");
    WriteFileOn(Machine(), "C:\\Package\\NLPLAIN.DL_", MakeCabinet({{"nlplain.dll", std::string(5000, 'p')}}));
    EXPECT_EQ(Ask(kPlain + kPlain), 0u);
    EXPECT_EQ(m_total, 5000u);
    EXPECT_EQ(m_shared, 5000u);
}

TEST_F(CopySize, ModelThatFailsInTheMiddleRepeatsTheOneBeforeIt) {
    EXPECT_EQ(Ask(kPlain + kNobody + k500), 0u);
    EXPECT_EQ(m_total, kSizeOf500 + kSizeOfPlain);
    EXPECT_EQ(m_shared, kSizeOfPlain);
}

TEST_F(CopySize, ModelThatFailsAtTheEndLeavesTheSums) {
    EXPECT_EQ(Ask(kPlain + kNobody), 0x901b0000u | 1359u);
    EXPECT_EQ(m_total, 99u);
    EXPECT_EQ(m_shared, 99u);
}

TEST_F(CopySize, MissingFileAddsNothing) {
    Machine().Files().Delete("C:\\Package\\NLPLAIN.DLL");
    EXPECT_EQ(Ask(kPlain + kPlain), 0u);
    EXPECT_EQ(m_total, 0u);
    EXPECT_EQ(m_shared, 0u);
    Test().TurnLogOn();
    EXPECT_EQ(Ask(k500), 0u);
    EXPECT_THAT(Test().TakeLog(), Contains("\t\tFile(C:\\Package\\A500.GPD) Size\t8\t8"));
}

TEST_F(CopySize, MissingFileIsSharedWithTheSizeOfTheLastOneFound) {
    Machine().Files().Delete("C:\\Package\\NLPLAIN.DLL");
    EXPECT_EQ(Ask(k500 + kPlain + kPlain), 0u);
    EXPECT_EQ(m_total, kSizeOf500);
    EXPECT_EQ(m_shared, 10u) << "NLPLAIN.DLL comes behind NLDISP.ICC and ahead of NLRES_DE.DLL";
}

TEST_F(CopySize, ArgumentsAreRequired) {
    DWORD size = 0;
    Test().TurnLogOn();
    EXPECT_EQ(DoGetCopyDriverFilesSize(nullptr, "", &size, &size, 2, 3, 5, 1), 87u);
    EXPECT_EQ(DoGetCopyDriverFilesSize(kAuroraPath, nullptr, &size, &size, 2, 3, 5, 1), 87u);
    EXPECT_EQ(DoGetCopyDriverFilesSize(kAuroraPath, "", nullptr, &size, 2, 3, 5, 1), 87u);
    EXPECT_EQ(DoGetCopyDriverFilesSize(kAuroraPath, "", &size, nullptr, 2, 3, 5, 1), 87u);
    EXPECT_EQ(DoGetCopyDriverFilesSize(kAuroraPath, "", &size, &size, 4, 3, 5, 1), 87u);
    EXPECT_THAT(Test().TakeLog(), ::testing::Each("DoGetCopyDriverFilesSize Start"));
    EXPECT_EQ(DoGetCopyDriverFilesSize("C:\\none.inf", k500.c_str(), &size, &size, 2, 3, 5, 1), 2u);
}

}  // namespace
}  // namespace pikel
