// A model's files in a local folder, and how much room they take.
#include "deploy/local_copy.h"

#include "deploy/copy_size.h"
#include "printer_inf.h"
#include "support/calls.h"
#include "support/compressed_file.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class LocalCopyTest : public MachineTest {
  protected:
    LocalCopyTest() {
        PutAuroraPackage(Machine());
        Machine().Files().MakeFolder("C:\\local");
        ForgetCalls(Test());
    }
    ~LocalCopyTest() override { Free(); }
    void Free() {
        if (m_records != nullptr) {
            Platform().HeapFree(Platform().GetProcessHeap(), 0, m_records);
            m_records = nullptr;
        }
    }
    static const PI_KEL_Interface& Table() { return *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION); }
    PiStatus Copy(const char* model = "Aurora 500", DWORD mode = 2, const char* folder = "C:\\local") {
        Free();
        return Table().PI_KEL_CopyInfDriverFilesToLocal(kAuroraPath, model, folder, &m_size, mode, &m_count, &m_records,
                                                        3, 5, 1);
    }
    std::vector<std::string> Records() {
        std::vector<std::string> texts;
        for (DWORD i = 0; i < m_count; ++i) {
            texts.push_back(std::string(m_records[i].szDirectory) + "|" + m_records[i].szFileName);
        }
        return texts;
    }

    /// Gives the plain model a file whose name has a length.
    void Begin(std::size_t length) {
        const std::string name(length, 'n');
        ChangeAuroraInf(Machine(), "[PLAIN.Files]\nNLPLAIN.DLL", "[PLAIN.Files]\n" + name);
        if (length < 250) {
            WriteFileOn(Machine(), "C:\\Package\\" + name, "x");
        }
    }

    LocalFileRecord* m_records = nullptr;
    DWORD m_count = 77;
    DWORD m_size = 77;
};

class LocalCopy : public LocalCopyTest {};

constexpr char kDrivers[] = "C:\\WINDOWS\\system32\\spool\\drivers\\W32X86";

TEST_F(LocalCopy, TellsWhereEachFileBelongs) {
    EXPECT_EQ(Copy(), 0u);
    const std::string drivers = kDrivers;
    EXPECT_THAT(Records(), ElementsAre(drivers + "|NLAURORA.DLL", drivers + "|A500.GPD", drivers + "|NLAURUI.DLL",
                                       drivers + "|NLAURORA.HLP", drivers + "|NLLOCAL.DLL",
                                       ::testing::HasSubstr("color|NLA500A.ICC"), drivers + "\\0\\Color|NLDISP.ICC",
                                       drivers + "|NLRES_EN.DLL"));
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\local\\NLLOCAL.DLL"), "NLRES_DE.DLL") << "renamed";
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\local\\aurora.inf"), kAuroraInf);
    EXPECT_EQ(
        m_size,
        std::string("NLAURORA.DLLA500.GPDNLAURUI.DLLNLAURORA.HLPNLRES_DE.DLLNLA500A.ICCNLDISP.ICCNLRES_EN.DLL").size());
}

TEST_F(LocalCopy, SecondOneCopiesNothingAndTellsTheSame) {
    ASSERT_EQ(Copy(), 0u);
    const std::vector<std::string> first = Records();
    EXPECT_EQ(Copy("Aurora 500", 2, "C:\\local\\"), 0u);
    EXPECT_EQ(Records(), first);
    EXPECT_EQ(m_size, 0u);
}

TEST_F(LocalCopy, ModeTellsHowRenamedFilesEnter) {
    const std::pair<DWORD, std::vector<std::string>> cases[] = {
        {0, {}}, {1, {"NLRES_DE.DLL"}}, {2, {"NLLOCAL.DLL"}}, {3, {"NLLOCAL.DLL", "NLRES_DE.DLL"}}};
    for (const auto& [mode, names] : cases) {
        for (const simulated::FileEntry& entry : Machine().Files().List("C:\\local")) {
            Machine().Files().Delete("C:\\local\\" + entry.name);
        }
        EXPECT_EQ(Copy("Aurora 500", mode), 0u);
        EXPECT_EQ(m_count, 7 + names.size());
        for (const char* name : {"NLRES_DE.DLL", "NLLOCAL.DLL"}) {
            EXPECT_EQ(Machine().Files().Exists(std::string("C:\\local\\") + name),
                      std::find(names.begin(), names.end(), name) != names.end())
                << mode << name;
        }
    }
    EXPECT_EQ(Copy("Aurora 500", 4), 0x901b0057u);
}

TEST_F(LocalCopy, CatalogHasNoDirectory) {
    ChangeAuroraInf(Machine(), "Class=Printer", "Class=Printer\nCatalogFile=aurora.cat");
    WriteFileOn(Machine(), "C:\\Package\\aurora.cat", "catalog");
    EXPECT_EQ(Copy("Aurora Plain"), 0u);
    EXPECT_THAT(Records(), ElementsAre(std::string(kDrivers) + "|NLPLAIN.DLL", "|aurora.cat"));
}

TEST_F(LocalCopy, CompressedFilesCountExpanded) {
    Machine().Files().Delete("C:\\Package\\NLPLAIN.DLL");
    WriteFileOn(Machine(), "C:\\Package\\NLPLAIN.DL_", MakeCabinet({{"nlplain.dll", std::string(5000, 'p')}}));
    EXPECT_EQ(Copy("Aurora Plain"), 0u);
    EXPECT_EQ(m_size, 5000u);
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\local\\NLPLAIN.DLL"), std::string(5000, 'p'));
}

TEST_F(LocalCopy, FailurePartWayKeepsWhatWasDone) {
    Machine().Files().Delete("C:\\Package\\NLAURUI.DLL");
    EXPECT_EQ(Copy(), 0x901b0002u);
    EXPECT_THAT(Records(), SizeIs(2));
    EXPECT_EQ(m_size, 20u);
    faults::FailCall("SetupDecompressOrCopyFileA", 1, 4242);
    EXPECT_EQ(Copy("Aurora Plain"), 0x901b0000u | 2u)
        << "the operation returns its code; the last error is what counts";
    faults::Reset();
    Machine().Files().SetFreeSpace(3);
    EXPECT_EQ(Copy("Aurora Plain"), 0x901b0000u | DWORD{ERROR_DISK_FULL});
}

TEST_F(LocalCopy, UnreadableInfTouchesNothing) {
    m_records = nullptr;
    EXPECT_EQ(Copy("Nobody"), 0x901b0000u | 1359u);
    EXPECT_EQ(m_count, 77u);
    EXPECT_EQ(m_size, 77u);
    EXPECT_EQ(m_records, nullptr);
}

TEST_F(LocalCopy, WithoutMemoryTheFilesAreCopiedAllTheSame) {
    static PlatformTable before;
    before = Platform();
    ReplacedOperations replaced;
    // The block of the one record alone is refused: the INF's reads need theirs.
    replaced.table.HeapAlloc = [](HANDLE heap, DWORD flags, SIZE_T size) -> LPVOID {
        return size == sizeof(LocalFileRecord) ? nullptr : before.HeapAlloc(heap, flags, size);
    };
    EXPECT_EQ(Copy("Aurora Plain"), 0u);
    EXPECT_EQ(m_count, 0u);
    EXPECT_EQ(m_records, nullptr);
    EXPECT_EQ(m_size, 11u);
    EXPECT_TRUE(Machine().Files().Exists("C:\\local\\NLPLAIN.DLL"));
}

TEST_F(LocalCopy, FailureWithoutACodeLeavesTheFileOutAndTheWalkGoesOn) {
    static PlatformTable before;
    before = Platform();
    ReplacedOperations replaced;
    replaced.table.SetupGetFileCompressionInfoA = [](PCSTR source, PSTR* name, PDWORD sourceSize, PDWORD targetSize,
                                                     PUINT type) -> DWORD {
        if (std::string_view(source).ends_with("A500.GPD")) {
            Platform().SetLastError(0);
            return ERROR_ACCESS_DENIED;
        }
        return before.SetupGetFileCompressionInfoA(source, name, sourceSize, targetSize, type);
    };
    replaced.table.SetupDecompressOrCopyFileA = [](PCSTR source, PCSTR target, PUINT type) -> DWORD {
        if (std::string_view(source).ends_with("NLAURUI.DLL")) {
            Platform().SetLastError(0);
            return ERROR_ACCESS_DENIED;
        }
        return before.SetupDecompressOrCopyFileA(source, target, type);
    };
    EXPECT_EQ(Copy(), 0u);
    const std::string drivers = kDrivers;
    EXPECT_THAT(Records(), ElementsAre(drivers + "|NLAURORA.DLL", drivers + "|NLAURORA.HLP", drivers + "|NLLOCAL.DLL",
                                       ::testing::HasSubstr("color|NLA500A.ICC"), drivers + "\\0\\Color|NLDISP.ICC",
                                       drivers + "|NLRES_EN.DLL"));
    EXPECT_EQ(m_size, 12u + 12 + 12 + 11 + 10 + 12);
}

TEST_F(LocalCopy, UnknownArchitectureMeansTheDirectoriesOfTheRunningSystem) {
    EXPECT_EQ(DoCopyInfDriverFilesToLocal(kAuroraPath, "Aurora Plain", "C:\\local", &m_size, 2, &m_count, &m_records, 9,
                                          3, 5, 1),
              0u);
    EXPECT_THAT(Records(), ElementsAre(std::string(kDrivers) + "|NLPLAIN.DLL"));
    EXPECT_THAT(TakeCallsOf(Test(), {"GetPrinterDriverDirectoryA"}),
                ElementsAre(::testing::StartsWith("GetPrinterDriverDirectoryA(null, null, ")));
    EXPECT_TRUE(Machine().Files().Exists("C:\\local\\NLPLAIN.DLL"));
}

TEST_F(LocalCopy, ArgumentsAreRequired) {
    Test().TurnLogOn();
    EXPECT_EQ(
        DoCopyInfDriverFilesToLocal(kAuroraPath, nullptr, "C:\\local", &m_size, 2, &m_count, &m_records, 3, 3, 5, 1),
        87u);
    EXPECT_EQ(DoCopyInfDriverFilesToLocal(kAuroraPath, "x", nullptr, &m_size, 2, &m_count, &m_records, 3, 3, 5, 1),
              87u);
    EXPECT_EQ(DoCopyInfDriverFilesToLocal(kAuroraPath, "x", "C:\\local", nullptr, 2, &m_count, &m_records, 3, 3, 5, 1),
              87u);
    EXPECT_EQ(DoCopyInfDriverFilesToLocal(kAuroraPath, "x", "C:\\local", &m_size, 2, nullptr, &m_records, 3, 3, 5, 1),
              87u);
    EXPECT_EQ(DoCopyInfDriverFilesToLocal(kAuroraPath, "x", "C:\\local", &m_size, 8, &m_count, &m_records, 3, 3, 5, 1),
              87u);
    EXPECT_THAT(Test().TakeLog(), ::testing::Each("DoCopyInfDriverFilesToLocal Start"));
    EXPECT_EQ(DoCopyInfDriverFilesToLocal(nullptr, "x", "C:\\local", &m_size, 2, &m_count, &m_records, 3, 3, 5, 1),
              87u);
    EXPECT_EQ(Test().TakeLog().back(), "DoCopyInfDriverFilesToLocal End(87)");
    EXPECT_EQ(Table().PI_KEL_CopyInfDriverFilesToLocal("C:\\none.inf", "x", "C:\\local", &m_size, 2, &m_count,
                                                       &m_records, 3, 5, 1),
              0x901b0002u);
    EXPECT_THAT(Test().TakeLog(), ::testing::Not(Contains("DoCopyInfDriverFilesToLocal Start")))
        << "the copy isn't entered";
}

TEST_F(LocalCopy, TextsOfARecordAreCutAtItsEnd) {
    for (std::size_t length : {100u, 240u}) {
        Begin(length);
        EXPECT_EQ(Copy("Aurora Plain"), 0u) << length;
        ASSERT_EQ(m_count, 1u);
        EXPECT_EQ(std::string(m_records[0].szFileName).size(), length);
    }
    // No file of Windows has such a name, and what follows it in the record stays whole.
    for (std::size_t length : {259u, 260u, 261u}) {
        Begin(length);
        EXPECT_NE(Copy("Aurora Plain"), 0u) << length;
        EXPECT_EQ(m_count, 0u);
    }
}

// ---- sizes ----------------------------------------------------------------------------------------------------------

class CopySize : public LocalCopyTest {
  protected:
    PiStatus Ask(const std::string& models, DWORD mode = 2) {
        m_total = m_shared = 99;
        return Table().PI_KEL_GetCopyDriverFilesSize(kAuroraPath, (models + '\0').c_str(), &m_total, &m_shared, mode, 3,
                                                     5, 1);
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
