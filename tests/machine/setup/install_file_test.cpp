// SetupInstallFileExA: one file, with or without an INF, at once or at the next start.
#include "support/queue_test.h"

namespace pikel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::string_literals;
using testing_support::kToTarget;
using testing_support::QueueTest;
using testing_support::ReadFileOn;
using testing_support::WriteFileOn;

constexpr DWORD kSucceeds = 0xffffffff;

class InstallFile : public QueueTest {
  protected:
    InstallFile() { EXPECT_EQ(Machine().Files().MakeFolder(kTarget), 0u); }

    /// The last error of a failed call, or kSucceeds.
    DWORD Install(HINF inf, PINFCONTEXT context, const char* source, const char* root, const char* target,
                  DWORD style = 0, PSP_FILE_CALLBACK_A callback = nullptr) {
        m_inUse = 77;
        Platform().SetLastError(kUntouched);
        const BOOL result =
            Platform().SetupInstallFileExA(inf, context, source, root, target, style, callback, nullptr, &m_inUse);
        const DWORD code = Platform().GetLastError();
        if (result) {
            EXPECT_EQ(code, kUntouched);
        }
        return result ? kSucceeds : code;
    }
    INFCONTEXT LineOf(const char* section) {
        INFCONTEXT context{};
        EXPECT_TRUE(Platform().SetupFindFirstLineA(m_inf.Get(), section, nullptr, &context));
        return context;
    }
    BOOL m_inUse = 0;
};

TEST_F(InstallFile, CopiesFromARoot) {
    for (const char* root : {"C:\\source", "C:\\source\\"}) {
        EXPECT_EQ(Install(nullptr, nullptr, "a.txt", root, "C:\\target\\o.txt"), kSucceeds);
        EXPECT_EQ(m_inUse, FALSE);
        EXPECT_THAT(Targets(), ElementsAre("o.txt=aaa"));
        EXPECT_EQ(Machine().Files().Delete("C:\\target\\o.txt"), 0u);
    }
    EXPECT_EQ(
        Install(nullptr, nullptr, "C:\\source\\b.txt", "C:\\nowhere", "C:\\target\\o.txt", SP_COPY_SOURCE_ABSOLUTE),
        kSucceeds);
    EXPECT_THAT(Targets(), ElementsAre("o.txt=bbbb"));
}

TEST_F(InstallFile, TellsWhyNot) {
    EXPECT_EQ(Install(nullptr, nullptr, "none.txt", "C:\\source", "C:\\target\\o.txt"), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(Install(nullptr, nullptr, "a.txt", "C:\\nowhere", "C:\\target\\o.txt"), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(Install(nullptr, nullptr, "a.txt", "C:\\source", "C:\\nowhere\\x\\o.txt"), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(Install(nullptr, nullptr, nullptr, "C:\\source", "C:\\target\\o.txt"), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Install(nullptr, nullptr, "a.txt", "C:\\source", nullptr), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Install(reinterpret_cast<HINF>(0x7770), nullptr, "a.txt", "C:\\source", "C:\\target\\o.txt"),
              DWORD{ERROR_INVALID_HANDLE});
    INFCONTEXT stale{};
    EXPECT_EQ(Install(nullptr, &stale, nullptr, "C:\\source", nullptr), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_THAT(Targets(), IsEmpty());
}

TEST_F(InstallFile, AnInfTellsWhereItsSourceLies) {
    OpenInf("[SourceDisksNames]\r\n1=disc,,,sub\r\n[SourceDisksFiles]\r\nc.txt=1\r\n");
    EXPECT_EQ(Install(m_inf.Get(), nullptr, "c.txt", "C:\\source", "C:\\target\\c.txt"), kSucceeds);
    EXPECT_EQ(Install(m_inf.Get(), nullptr, "a.txt", "C:\\source", "C:\\target\\a.txt"), kSucceeds)
        << "one that the INF doesn't name lies at the root";
    EXPECT_EQ(Install(m_inf.Get(), nullptr, "b.txt", nullptr, "C:\\target\\b.txt"), kSucceeds)
        << "without a root it lies beside the INF";
    EXPECT_THAT(Targets(), ElementsAre("a.txt=aaa", "b.txt=bbbb", "c.txt=ccccc"));
}

TEST_F(InstallFile, ALineTellsSourceAndTarget) {
    OpenInf(std::string("[F]\r\nx.txt,a.txt\r\n") + kToTarget);
    INFCONTEXT line = LineOf("F");
    EXPECT_EQ(Install(m_inf.Get(), &line, nullptr, "C:\\source", nullptr), kSucceeds);
    EXPECT_EQ(Install(nullptr, &line, "ignored", "C:\\source", "y.txt"), kSucceeds);
    EXPECT_THAT(Targets(), ElementsAre("x.txt=aaa", "y.txt=aaa"));
}

TEST_F(InstallFile, AHeldTargetFails) {
    WriteFileOn(Machine(), "C:\\target\\o.txt", "old");
    simulated::Files::Held held = Machine().Files().HoldOpen("C:\\target\\o.txt", FILE_SHARE_READ);
    EXPECT_EQ(Install(nullptr, nullptr, "a.txt", "C:\\source", "C:\\target\\o.txt"), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_THAT(Targets(), ElementsAre("o.txt=old"));
}

TEST_F(InstallFile, KeepingATargetIsAFailureWithoutACode) {
    WriteFileOn(Machine(), "C:\\target\\o.txt", "old");
    for (DWORD style : {SP_COPY_NOOVERWRITE, SP_COPY_FORCE_NOOVERWRITE}) {
        EXPECT_EQ(Install(nullptr, nullptr, "a.txt", "C:\\source", "C:\\target\\o.txt", style), 0u);
    }
    EXPECT_EQ(Install(nullptr, nullptr, "a.txt", "C:\\source", "C:\\target\\n.txt", SP_COPY_REPLACEONLY), 0u);
    EXPECT_THAT(Targets(), ElementsAre("o.txt=old"));
}

TEST_F(InstallFile, ACallbackMayLetATargetBeOverwritten) {
    WriteFileOn(Machine(), "C:\\target\\o.txt", "old");
    auto yes = [](PVOID, UINT notification, UINT_PTR first, UINT_PTR) -> UINT {
        EXPECT_EQ(notification, 0x20000u);
        EXPECT_STREQ(reinterpret_cast<const FILEPATHS_A*>(first)->Target, "C:\\target\\o.txt");
        EXPECT_STREQ(reinterpret_cast<const FILEPATHS_A*>(first)->Source, "C:\\source\\a.txt");
        return 1;
    };
    EXPECT_EQ(Install(nullptr, nullptr, "a.txt", "C:\\source", "C:\\target\\o.txt", SP_COPY_NOOVERWRITE, yes),
              kSucceeds);
    EXPECT_THAT(Targets(), ElementsAre("o.txt=aaa"));
}

// ---- replaced at the next start -------------------------------------------------------------------------------------

constexpr DWORD kAtRestart = SP_COPY_FORCE_IN_USE | SP_COPY_SOURCEPATH_ABSOLUTE;

TEST_F(InstallFile, AFileInUseIsReplacedAtTheNextStart) {
    WriteFileOn(Machine(), "C:\\target\\o.txt", "old");
    {
        simulated::Files::Held held = Machine().Files().HoldOpen("C:\\target\\o.txt", FILE_SHARE_READ);
        EXPECT_EQ(Install(nullptr, nullptr, "a.txt", "C:\\source", "C:\\target\\o.txt", kAtRestart), kSucceeds);
    }
    EXPECT_EQ(m_inUse, TRUE);
    EXPECT_TRUE(Machine().System().restartPending);
    EXPECT_THAT(Targets(), ElementsAre("o.txt=old", "SET1.tmp=aaa"));
    EXPECT_EQ(Install(nullptr, nullptr, "b.txt", "C:\\source", "C:\\target\\o.txt", kAtRestart), kSucceeds);
    Test().Reopen();
    EXPECT_TRUE(Machine().System().restartPending);
    EXPECT_THAT(Machine().Registry().Texts("HKLM\\SYSTEM\\CurrentControlSet\\Control\\Session Manager",
                                           "PendingFileRenameOperations"),
                ElementsAre("\\??\\C:\\target\\SET1.tmp", "!\\??\\C:\\target\\o.txt", "\\??\\C:\\target\\SET2.tmp",
                            "!\\??\\C:\\target\\o.txt"));
}

TEST_F(InstallFile, ADeletionThatWaitsStaysInTheList) {
    WriteFileOn(Machine(), "C:\\target\\o.txt", "old");
    const std::string key = "HKLM\\SYSTEM\\CurrentControlSet\\Control\\Session Manager";
    const std::string waiting = "\\??\\C:\\gone\0\0\0"s;
    Machine().Registry().Set(key, "PendingFileRenameOperations", REG_MULTI_SZ, waiting);
    EXPECT_EQ(Install(nullptr, nullptr, "a.txt", "C:\\source", "C:\\target\\o.txt", kAtRestart), kSucceeds);
    EXPECT_EQ(Machine().Registry().Find(key, "PendingFileRenameOperations")->data,
              "\\??\\C:\\gone\0\0\\??\\C:\\target\\SET1.tmp\0!\\??\\C:\\target\\o.txt\0\0"s);
}

TEST_F(InstallFile, The9xFamilyKeepsWaitingFilesInWininit) {
    Start("win98");
    WriteFileOn(Machine(), "C:\\source\\a.txt", "aaa");
    WriteFileOn(Machine(), "C:\\target\\o.txt", "old");
    EXPECT_EQ(Install(nullptr, nullptr, "a.txt", "C:\\source", "C:\\target\\o.txt", kAtRestart), kSucceeds);
    char source[MAX_PATH] = "";
    Platform().GetPrivateProfileStringA("rename", "C:\\target\\o.txt", "", source, sizeof source, "wininit.ini");
    EXPECT_STREQ(source, "C:\\target\\SET1.tmp");
    EXPECT_TRUE(Machine().System().restartPending);
}

TEST_F(InstallFile, ATargetThatIsNotThereNeedsNoRestart) {
    EXPECT_EQ(Install(nullptr, nullptr, "a.txt", "C:\\source", "C:\\target\\o.txt", kAtRestart), kSucceeds);
    EXPECT_EQ(m_inUse, FALSE);
    EXPECT_FALSE(Machine().System().restartPending);
    EXPECT_THAT(Targets(), ElementsAre("o.txt=aaa"));
}

TEST_F(InstallFile, WithoutRightsNothingWaits) {
    WriteFileOn(Machine(), "C:\\target\\o.txt", "old");
    simulated::SystemDescription guest = Machine().System();
    guest.administrator = false;
    Machine().SetSystem(guest);
    EXPECT_EQ(Install(nullptr, nullptr, "a.txt", "C:\\source", "C:\\target\\o.txt", kAtRestart),
              DWORD{ERROR_ACCESS_DENIED});
    EXPECT_THAT(Targets(), ElementsAre("o.txt=old"));
}

TEST_F(InstallFile, TheQueueTellsOfAFileThatWaits) {
    WriteFileOn(Machine(), "C:\\target\\a.txt", "old");
    OpenInf(std::string("[I]\r\nCopyFiles=F\r\n[F]\r\na.txt,,,8\r\n") + kToTarget);
    EXPECT_TRUE(Run());
    EXPECT_THAT(Steps(), ::testing::Contains("delayed C:\\target\\SET1.tmp > C:\\target\\a.txt"));
    EXPECT_THAT(Targets(), ElementsAre("a.txt=old", "SET1.tmp=aaa"));
}

}  // namespace
}  // namespace pikel
