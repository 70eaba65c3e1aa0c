// A model's files in a local folder.
#include "deploy/local_copy.h"

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

class LocalCopy : public MachineTest {
  protected:
    LocalCopy() {
        PutAuroraPackage(Machine());
        Machine().Files().MakeFolder("C:\\local");
        ForgetCalls(Test());
    }
    ~LocalCopy() override { Free(); }
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

}  // namespace
}  // namespace pikel
