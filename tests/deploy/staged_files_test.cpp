// The staged copy of several files: lock flags in step with the files, what a failure ends and what it doesn't, and the
// calls for one file.
#include "staged_files.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

// ---- lock flags -----------------------------------------------------------------------------------------------------

TEST_F(StagedFiles, LockOfAFileBehindOneThatIsStagedAlreadyStaysItsOwn) {
    // A.DLL survives the emptying of the folder, and is no file to compare or to test then.
    WriteFileOn(Machine(), "C:\\staging\\A.DLL", "kept");
    const auto kept = Hold("C:\\staging\\A.DLL");
    PutInstalled("A.DLL", "1.0");
    PutInstalled("B.DLL", "1.0");
    const auto lockedA = Hold(Installed("A.DLL"));
    const auto lockedB = Hold(Installed("B.DLL"));
    EXPECT_EQ(Copy(), 0u);
    EXPECT_EQ(m_restart, 1u);
    EXPECT_THAT(TakeVerdicts(), ElementsAre("[lock] " + Installed("B.DLL"), "[unlock] " + Installed("C.DLL"),
                                            Copied("A.DLL"), Deferred("B.DLL"), Copied("C.DLL")));
}

TEST_F(StagedFiles, FileNamedTwiceIsStagedOnceAndFreeTheSecondTime) {
    PutInf("A.DLL\r\nA.DLL\r\nB.DLL\r\n");
    PutInstalled("A.DLL", "1.0");
    PutInstalled("B.DLL", "1.0");
    const auto lockedA = Hold(Installed("A.DLL"));
    const auto lockedB = Hold(Installed("B.DLL"));
    EXPECT_EQ(Copy(), 0u);
    EXPECT_THAT(TakeVerdicts(), ElementsAre("[lock] " + Installed("A.DLL"), "[lock] " + Installed("B.DLL"),
                                            Deferred("A.DLL"), Copied("A.DLL"), Deferred("B.DLL")));
}

/// A source that another program puts into the staging folder meanwhile.
PlatformTable g_before;

TEST_F(StagedFiles, Code80OfTheLookAtTheSourceMeansAFreeFileToo) {
    PutInstalled("A.DLL", "1.0");
    PutInstalled("B.DLL", "1.0");
    const auto lockedA = Hold(Installed("A.DLL"));
    const auto lockedB = Hold(Installed("B.DLL"));
    g_before = Platform();
    ReplacedOperations replaced;
    replaced.table.SetupGetFileCompressionInfoA = [](PCSTR source, PSTR* name, PDWORD sourceSize, PDWORD targetSize,
                                                     PUINT type) -> DWORD {
        if (std::string_view(source).ends_with("A.DLL")) {
            Platform().SetLastError(ERROR_FILE_EXISTS);
            return ERROR_ACCESS_DENIED;  // the last error counts, not this
        }
        return g_before.SetupGetFileCompressionInfoA(source, name, sourceSize, targetSize, type);
    };
    EXPECT_EQ(Copy(), 0u);
    EXPECT_EQ(m_restart, 1u) << "for B.DLL";
    EXPECT_THAT(TakeVerdicts(), ElementsAre("[lock] " + Installed("B.DLL"), "[unlock] " + Installed("C.DLL"),
                                            Copied("A.DLL"), Deferred("B.DLL"), Copied("C.DLL")));
}

TEST_F(StagedFiles, OtherFailureOfTheLookAtTheSourceIsPassedOver) {
    PutInstalled("A.DLL", "1.0");
    const auto locked = Hold(Installed("A.DLL"));
    faults::FailCall("SetupGetFileCompressionInfoA", 1, ERROR_ACCESS_DENIED);
    Copy();
    EXPECT_EQ(m_restart, 1u) << "its lock is tested all the same";
    EXPECT_THAT(TakeVerdicts(), Contains("[lock] " + Installed("A.DLL")));
}

// ---- failures -------------------------------------------------------------------------------------------------------

TEST_F(StagedFiles, FailedReplacementEndsThePlacing) {
    PutInstalled("B.DLL", "1.0");
    const auto locked = Hold(Installed("B.DLL"));
    faults::FailCall("SetupInstallFileExA", 1, 4242);
    EXPECT_EQ(Copy(), 4242u);
    EXPECT_EQ(m_restart, 1u);
    EXPECT_TRUE(IsOf(Drivers() + "A.DLL", "2.0")) << "what was placed stays";
    EXPECT_FALSE(Machine().Files().Exists(Drivers() + "C.DLL"));
    EXPECT_THAT(Machine().Files().List(kStaging), IsEmpty());
}

TEST_F(StagedFiles, ReplacementThatFailsWithoutACodeEndsNothing) {
    PutInstalled("B.DLL", "1.0");
    const auto locked = Hold(Installed("B.DLL"));
    faults::FailCall("SetupInstallFileExA", 1, 0);
    EXPECT_EQ(Copy(), 0u);
    EXPECT_TRUE(IsOf(Drivers() + "C.DLL", "2.0"));
}

TEST_F(StagedFiles, LockIsTestedAfterAFailedCopyBackToo) {
    PutInstalled("A.DLL", "3.0");
    const auto locked = Hold(Installed("A.DLL"));
    faults::FailCall("CopyFileA", 2, 5);  // the first one is the INF's
    EXPECT_EQ(Copy(), 0u);
    EXPECT_EQ(m_restart, 0u);
    EXPECT_THAT(TakeVerdicts(),
                ElementsAre("[(un)lock] " + Installed("A.DLL"), Copied("A.DLL"), Copied("B.DLL"), Copied("C.DLL")))
        << "the walk ended behind the test of its file";
}

TEST_F(StagedFiles, FailedCopyOfTheInfIsNotLookedAt) {
    faults::FailCall("CopyFileA", 1, 5);
    EXPECT_EQ(Copy(), 0u);
    for (const char* name : {"A.DLL", "B.DLL", "C.DLL"}) {
        EXPECT_TRUE(IsOf(Drivers() + name, "2.0")) << name;
    }
}

TEST_F(StagedFiles, WithoutAStagedInfNothingIsCommitted) {
    // An architecture that isn't known ends the staging before the INF is copied.
    EXPECT_EQ(Copy(2, 6), 0u);
    EXPECT_EQ(m_restart, 0u);
    EXPECT_THAT(TakeVerdicts(), IsEmpty());
    EXPECT_THAT(Test().TakeCallNames({"CopyFileA", "GetPrinterDriverDirectoryA", "SetupInstallFileExA"}), IsEmpty());
}

// ---- the calls for one file -----------------------------------------------------------------------------------------

TEST_F(StagedFiles, ReplacementAtTheNextStartIsAskedForWithTheseArguments) {
    PutInstalled("B.DLL", "1.0");
    const auto locked = Hold(Installed("B.DLL"));
    EXPECT_EQ(Copy(), 0u);
    EXPECT_THAT(TakeCallsOf(Test(), {"SetupInstallFileExA"}),
                ElementsAre("SetupInstallFileExA(null, null, \"B.DLL\", \"C:\\\\staging\\\\\", "
                            "\"C:\\\\WINDOWS\\\\system32\\\\spool\\\\drivers\\\\W32X86\\\\B.DLL\", 0x280, null, null, "
                            "&) = 0x1"));
}

TEST_F(StagedFiles, ReadOnlyMarkGoesBeforeTheComparison) {
    PutInf("A.DLL\r\n");
    PutInstalled("A.DLL", "3.0");
    g_before = Platform();
    ReplacedOperations replaced;
    replaced.table.SetupDecompressOrCopyFileA = [](PCSTR source, PCSTR target, PUINT type) -> DWORD {
        const DWORD code = g_before.SetupDecompressOrCopyFileA(source, target, type);
        g_before.SetFileAttributesA(target, FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE);
        return code;
    };
    Test().TakeCalls();
    EXPECT_EQ(Copy(), 0u);
    std::vector<std::string> calls =
        TakeCallsOf(Test(), {"SetupDecompressOrCopyFileA", "SetFileAttributesA", "GetFileVersionInfoSizeA"});
    ASSERT_GE(calls.size(), 4u);
    EXPECT_THAT(calls[0], StartsWith("SetupDecompressOrCopyFileA("));
    EXPECT_THAT(calls[1], StartsWith("SetFileAttributesA(\"C:\\\\staging\\\\A.DLL\", 0x21)"));
    EXPECT_THAT(calls[2], StartsWith("SetFileAttributesA(\"C:\\\\staging\\\\A.DLL\", 0x20)"));
    EXPECT_THAT(calls[3], StartsWith("GetFileVersionInfoSizeA(\"C:\\\\staging\\\\A.DLL\""));
    EXPECT_TRUE(IsOf(Drivers() + "A.DLL", "3.0")) << "so the newer file can be copied over it";
}

TEST_F(StagedFiles, Mode3PutsTheDestinationNameFirst) {
    PutInf("LOCAL.DLL,A.DLL\r\nB.DLL\r\n");
    EXPECT_EQ(Copy(3), 0u);
    EXPECT_THAT(TakeVerdicts(),
                ElementsAre("[unlock] " + Installed("LOCAL.DLL"), "[unlock] " + Installed("A.DLL"),
                            "[unlock] " + Installed("B.DLL"), Copied("LOCAL.DLL"), Copied("A.DLL"), Copied("B.DLL")));
}

TEST_F(StagedFiles, OneSourceGoesToTwoTargets) {
    PutInf("LOCAL.DLL,A.DLL\r\nOTHER.DLL,A.DLL\r\n");
    EXPECT_EQ(Copy(2), 0u);
    EXPECT_TRUE(IsOf(Drivers() + "LOCAL.DLL", "2.0"));
    EXPECT_TRUE(IsOf(Drivers() + "OTHER.DLL", "2.0"));
    EXPECT_FALSE(Machine().Files().Exists(Drivers() + "A.DLL"));
}

}  // namespace
}  // namespace pikel
