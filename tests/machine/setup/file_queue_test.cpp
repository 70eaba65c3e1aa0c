// The file queue: what a section queues, the order of notifications, and what the callback's answers do.
#include "support/queue_test.h"

namespace pikel {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing_support::kToTarget;
using testing_support::QueueTest;
using testing_support::ReadFileOn;
using testing_support::WriteFileOn;

class FileQueue : public QueueTest {};

constexpr char kOneFile[] = "[I]\r\nCopyFiles=F\r\n[F]\r\na.txt\r\n[DestinationDirs]\r\nDefaultDestDir=40000\r\n";
constexpr char kThreeFiles[] =
    "[I]\r\nCopyFiles=F\r\n[F]\r\na.txt\r\nnone.txt\r\nb.txt\r\n[DestinationDirs]\r\nDefaultDestDir=40000\r\n";

// ---- the road of a queue --------------------------------------------------------------------------------------------

TEST_F(FileQueue, EveryStepIsTold) {
    OpenInf(std::string("[I]\r\nCopyFiles=F,@b.txt\r\n[F]\r\nx.txt,a.txt\r\nb.txt\r\n") + kToTarget);
    EXPECT_TRUE(Run());
    EXPECT_EQ(Code(), kUntouched);
    EXPECT_THAT(Steps(), ElementsAre("startqueue 119", "startsub 0 of 3", "needmedia C:\\source | a.txt | - | -",
                                     "startcopy C:\\source\\a.txt > C:\\target\\x.txt op 0",
                                     "endcopy C:\\source\\a.txt > C:\\target\\x.txt",
                                     "startcopy C:\\source\\b.txt > C:\\target\\b.txt op 0",
                                     "endcopy C:\\source\\b.txt > C:\\target\\b.txt",
                                     "startcopy C:\\source\\b.txt > C:\\target\\b.txt op 0",
                                     "endcopy C:\\source\\b.txt > C:\\target\\b.txt", "endsub 0", "endqueue 1"));
    EXPECT_THAT(Targets(), ElementsAre("b.txt=bbbb", "x.txt=aaa"));
}

TEST_F(FileQueue, DeletesComeFirstThenRenamesThenCopies) {
    WriteFileOn(Machine(), "C:\\target\\d.txt", "d");
    WriteFileOn(Machine(), "C:\\target\\old.txt", "o");
    OpenInf(std::string("[I]\r\nCopyFiles=F\r\nDelFiles=D\r\nRenFiles=R\r\n[F]\r\na.txt\r\n[D]\r\nd.txt\r\n"
                        "[R]\r\nnew.txt,old.txt\r\n") +
            kToTarget);
    EXPECT_TRUE(Run());
    EXPECT_THAT(Steps(), ElementsAre("startqueue 119", "startsub 2 of 1", "startdelete  > C:\\target\\d.txt op 2",
                                     "enddelete  > C:\\target\\d.txt", "endsub 2", "startsub 1 of 1",
                                     "startrename C:\\target\\old.txt > C:\\target\\new.txt op 1",
                                     "endrename C:\\target\\old.txt > C:\\target\\new.txt", "endsub 1",
                                     "startsub 0 of 1", "needmedia C:\\source | a.txt | - | -",
                                     "startcopy C:\\source\\a.txt > C:\\target\\a.txt op 0",
                                     "endcopy C:\\source\\a.txt > C:\\target\\a.txt", "endsub 0", "endqueue 1"));
    EXPECT_THAT(Targets(), ElementsAre("a.txt=aaa", "new.txt=o"));
}

TEST_F(FileQueue, AnEmptyQueueTellsNothing) {
    OpenInf("[I]\r\nother=1\r\n");
    EXPECT_TRUE(Run());
    EXPECT_THAT(Steps(), IsEmpty());
    EXPECT_EQ(Code(), kUntouched);
}

TEST_F(FileQueue, TheCopyHasTheTimeOfItsSource) {
    const FILETIME time = {0x1234567, 0x1C00000};
    ASSERT_EQ(Machine().Files().SetWrittenAt("C:\\source\\a.txt", time), 0u);
    OpenInf(kOneFile);
    EXPECT_TRUE(Run());
    const FILETIME written = Machine().Files().WrittenAt("C:\\target\\a.txt").value();
    EXPECT_EQ(Platform().CompareFileTime(&written, &time), 0);
}

TEST_F(FileQueue, AQueueMayBeFilledFromSeveralSections) {
    OpenInf(std::string("[I]\r\nCopyFiles=F\r\n[J]\r\nCopyFiles=@b.txt\r\n[F]\r\na.txt\r\n") + kToTarget);
    m_queue.Reset(Platform().SetupOpenFileQueue());
    for (const char* section : {"I", "J"}) {
        EXPECT_TRUE(
            Platform().SetupInstallFilesFromInfSectionA(m_inf.Get(), nullptr, m_queue.Get(), section, "C:\\source", 0));
    }
    EXPECT_TRUE(Commit());
    EXPECT_THAT(Targets(), ElementsAre("a.txt=aaa", "b.txt=bbbb"));
}

TEST_F(FileQueue, TheCallbackMayCloseItsQueue) {
    OpenInf(kThreeFiles);
    m_queue.Reset(Platform().SetupOpenFileQueue());
    ASSERT_TRUE(Platform().SetupInstallFilesFromInfSectionA(m_inf.Get(), nullptr, m_queue.Get(), "I", "C:\\source", 0));
    auto close = [](PVOID context, UINT notification, UINT_PTR, UINT_PTR) -> UINT {
        if (notification == SPFILENOTIFY_STARTQUEUE) {
            static_cast<FileQueueHandle*>(context)->Reset();
        }
        return notification == SPFILENOTIFY_COPYERROR ? FILEOP_SKIP : FILEOP_DOIT;
    };
    EXPECT_TRUE(Platform().SetupCommitFileQueueA(nullptr, m_queue.Get(), close, &m_queue));
    EXPECT_THAT(Targets(), ElementsAre("a.txt=aaa", "b.txt=bbbb"));
}

// ---- what a section queues ------------------------------------------------------------------------------------------

TEST_F(FileQueue, AMissingSectionIsRefused) {
    OpenInf(kOneFile);
    m_queue.Reset(Platform().SetupOpenFileQueue());
    EXPECT_FALSE(
        Platform().SetupInstallFilesFromInfSectionA(m_inf.Get(), nullptr, m_queue.Get(), "None", "C:\\source", 0));
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_LINE_NOT_FOUND});
    EXPECT_FALSE(
        Platform().SetupInstallFilesFromInfSectionA(m_inf.Get(), nullptr, m_queue.Get(), nullptr, "C:\\source", 0));
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
}

TEST_F(FileQueue, ForeignHandlesAreRefused) {
    OpenInf(kOneFile);
    m_queue.Reset(Platform().SetupOpenFileQueue());
    const HINF foreign = reinterpret_cast<HINF>(0x7770);
    auto refused = [&](HINF inf, HINF layout, HSPFILEQ queue) {
        EXPECT_FALSE(Platform().SetupInstallFilesFromInfSectionA(inf, layout, queue, "I", nullptr, 0));
        EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_INVALID_HANDLE});
    };
    refused(foreign, nullptr, m_queue.Get());
    refused(m_inf.Get(), foreign, m_queue.Get());
    refused(m_inf.Get(), nullptr, m_inf.Get());
    EXPECT_FALSE(Platform().SetupCommitFileQueueA(nullptr, foreign, nullptr, nullptr));
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_INVALID_HANDLE});
}

TEST_F(FileQueue, AMissingListSectionCountsAsEmpty) {
    OpenInf(std::string("[I]\r\nCopyFiles=None,,F\r\nDelFiles=None\r\nRenFiles=None\r\n[F]\r\na.txt\r\n") + kToTarget);
    EXPECT_TRUE(Run());
    EXPECT_THAT(Targets(), ElementsAre("a.txt=aaa"));
}

TEST_F(FileQueue, EveryLineOfAKeyCounts) {
    OpenInf(std::string("[I]\r\nCopyFiles=F\r\ncopyfiles=@b.txt\r\n[F]\r\na.txt\r\n") + kToTarget);
    EXPECT_TRUE(Run());
    EXPECT_THAT(Targets(), ElementsAre("a.txt=aaa", "b.txt=bbbb"));
}

TEST_F(FileQueue, NamesGoThroughTheStrings) {
    OpenInf(std::string("[I]\r\nCopyFiles=%list%\r\n[F]\r\n%new%,%old%\r\n,a.txt\r\n[Strings]\r\nlist=F\r\n"
                        "new=n.txt\r\nold=a.txt\r\n") +
            kToTarget);
    EXPECT_TRUE(Run());
    EXPECT_THAT(Targets(), ElementsAre("n.txt=aaa")) << "a line without a target is none";
}

TEST_F(FileQueue, WithoutARootFilesLieBesideTheInf) {
    OpenInf(kOneFile);
    EXPECT_TRUE(Run(0, nullptr));
    EXPECT_THAT(Targets(), ElementsAre("a.txt=aaa"));
}

TEST_F(FileQueue, ABackslashAtTheRootsEndDoesNotCount) {
    OpenInf(kOneFile);
    EXPECT_TRUE(Run(0, "C:\\source\\"));
    EXPECT_THAT(Steps(), ::testing::Contains("startcopy C:\\source\\a.txt > C:\\target\\a.txt op 0"));
}

// ---- sources --------------------------------------------------------------------------------------------------------

TEST_F(FileQueue, DiscsTellWhereFilesLie) {
    OpenInf(std::string("[I]\r\nCopyFiles=F\r\n[F]\r\nx.txt,a.txt\r\nc.txt\r\nb.txt\r\n"
                        "[SourceDisksNames]\r\n1=\"My disc\",tag.txt,,\\sub\r\n2=other\r\n"
                        "[SourceDisksFiles]\r\nc.txt=1\r\na.txt=2\r\n") +
            kToTarget);
    EXPECT_TRUE(Run());
    EXPECT_THAT(Steps(), ElementsAre("startqueue 119", "startsub 0 of 3", "needmedia C:\\source | a.txt | other | -",
                                     "startcopy C:\\source\\a.txt > C:\\target\\x.txt op 0",
                                     "endcopy C:\\source\\a.txt > C:\\target\\x.txt",
                                     "needmedia C:\\source\\sub | c.txt | My disc | tag.txt",
                                     "startcopy C:\\source\\sub\\c.txt > C:\\target\\c.txt op 0",
                                     "endcopy C:\\source\\sub\\c.txt > C:\\target\\c.txt",
                                     "needmedia C:\\source | b.txt | - | -",
                                     "startcopy C:\\source\\b.txt > C:\\target\\b.txt op 0",
                                     "endcopy C:\\source\\b.txt > C:\\target\\b.txt", "endsub 0", "endqueue 1"));
}

TEST_F(FileQueue, AFileMayNameAFolderOfItsOwn) {
    OpenInf(std::string("[I]\r\nCopyFiles=F\r\n[F]\r\nc.txt\r\n[SourceDisksNames]\r\n1=disc,,,\r\n"
                        "[SourceDisksFiles]\r\nc.txt=1,sub\r\n") +
            kToTarget);
    EXPECT_TRUE(Run());
    EXPECT_THAT(Targets(), ElementsAre("c.txt=ccccc"));
}

TEST_F(FileQueue, TheRootAloneCountsWhereTheCallerSaysSo) {
    OpenInf(std::string("[I]\r\nCopyFiles=F\r\n[F]\r\na.txt\r\n[SourceDisksNames]\r\n1=disc,,,sub\r\n"
                        "[SourceDisksFiles]\r\na.txt=1,sub\r\n") +
            kToTarget);
    EXPECT_TRUE(Run(SP_COPY_SOURCEPATH_ABSOLUTE));
    EXPECT_THAT(Targets(), ElementsAre("a.txt=aaa"));
}

TEST_F(FileQueue, SectionsForTheProcessorComeFirst) {
    for (const auto& [system, folder] :
         std::vector<std::pair<const char*, const char*>>{{"xp", "x86"}, {"xp-ia64", "ia64"}, {"xp-x64", "amd64"}}) {
        SCOPED_TRACE(system);
        m_inf.Reset();
        m_queue.Reset();
        Start(system);
        for (const char* name : {"x86", "ia64", "amd64", "plain"}) {
            WriteFileOn(Machine(), std::string("C:\\source\\") + name + "\\a.txt", name);
            WriteFileOn(Machine(), std::string("C:\\source\\") + name + "\\own\\b.txt", name);
        }
        OpenInf(std::string("[I]\r\nCopyFiles=F\r\n[F]\r\na.txt\r\nb.txt\r\n[SourceDisksNames]\r\n1=p,,,plain\r\n"
                            "[SourceDisksNames.x86]\r\n1=d,,,x86\r\n[SourceDisksNames.ia64]\r\n1=d,,,ia64\r\n"
                            "[SourceDisksNames.amd64]\r\n1=d,,,amd64\r\n[SourceDisksFiles]\r\na.txt=1\r\nb.txt=1\r\n"
                            "[SourceDisksFiles.x86]\r\nb.txt=1,own\r\n[SourceDisksFiles.ia64]\r\nb.txt=1,own\r\n"
                            "[SourceDisksFiles.amd64]\r\nb.txt=1,own\r\n") +
                kToTarget);
        EXPECT_TRUE(Run());
        EXPECT_THAT(Targets(), ElementsAre(std::string("a.txt=") + folder, std::string("b.txt=") + folder));
    }
}

TEST_F(FileQueue, TheLayoutMayBeAnotherInf) {
    WriteFileOn(Machine(), "C:\\source\\layout.inf",
                "[SourceDisksNames]\r\n1=disc,,,sub\r\n[SourceDisksFiles]\r\nc.txt=1\r\n");
    OpenInf(std::string("[I]\r\nCopyFiles=F\r\n[F]\r\nc.txt\r\n") + kToTarget);
    InfHandle layout(Platform().SetupOpenInfFileA("C:\\source\\layout.inf", nullptr, INF_STYLE_WIN4, nullptr));
    m_queue.Reset(Platform().SetupOpenFileQueue());
    ASSERT_TRUE(
        Platform().SetupInstallFilesFromInfSectionA(m_inf.Get(), layout.Get(), m_queue.Get(), "I", "C:\\source", 0));
    EXPECT_TRUE(Commit());
    EXPECT_THAT(Targets(), ElementsAre("c.txt=ccccc"));
}

// ---- targets --------------------------------------------------------------------------------------------------------

TEST_F(FileQueue, ASectionsOwnFolderWinsAndSubFoldersAreMade) {
    OpenInf(
        "[I]\r\nCopyFiles=F,@b.txt\r\n[F]\r\nx.txt,a.txt\r\n"
        "[DestinationDirs]\r\nDefaultDestDir=40000,def\r\nF=40000,my\\deep\r\n");
    EXPECT_TRUE(Run());
    EXPECT_THAT(Targets("C:\\target\\def"), ElementsAre("b.txt=bbbb"));
    EXPECT_THAT(Targets("C:\\target\\my\\deep"), ElementsAre("x.txt=aaa"));
}

TEST_F(FileQueue, AnAbsoluteFolderIsTakenAsItStands) {
    for (const char* id : {"-1", "65535"}) {
        OpenInf(std::string("[I]\r\nCopyFiles=F\r\n[F]\r\na.txt\r\n[DestinationDirs]\r\nF=") + id + ",C:\\abs" + id +
                "\r\n");
        EXPECT_TRUE(Run());
        EXPECT_EQ(ReadFileOn(Machine(), std::string("C:\\abs") + id + "\\a.txt"), "aaa");
    }
}

TEST_F(FileQueue, WithoutAKnownFolderFilesGoToTheSystemFolder) {
    const std::string target = Machine().System().systemDirectory + "\\a.txt";
    for (const char* folders : {"", "[DestinationDirs]\r\nF=45000\r\n", "[DestinationDirs]\r\nF=text\r\n",
                                "[DestinationDirs]\r\nF=\r\n", "[DestinationDirs]\r\nOther=10\r\n"}) {
        SCOPED_TRACE(folders);
        OpenInf(std::string("[I]\r\nCopyFiles=F\r\n[F]\r\na.txt\r\n") + folders);
        EXPECT_TRUE(Run());
        EXPECT_EQ(ReadFileOn(Machine(), target), "aaa");
        EXPECT_EQ(Machine().Files().Delete(target), 0u);
    }
}

TEST_F(FileQueue, ATargetOutsideTheMachineIsRefused) {
    OpenInf("[I]\r\nCopyFiles=F\r\n[F]\r\n..\\..\\..\\..\\a.txt,a.txt\r\n[DestinationDirs]\r\nF=-1,C:\\x\\..\\..\r\n");
    Answer(SPFILENOTIFY_COPYERROR, FILEOP_ABORT);
    EXPECT_FALSE(Run());
    EXPECT_NE(Code(), 0u);
    OpenInf("[I]\r\nCopyFiles=F\r\n[F]\r\na.txt\r\n[DestinationDirs]\r\nF=-1,\\\\server\\share\r\n");
    EXPECT_FALSE(Run());
}

// ---- errors and answers ---------------------------------------------------------------------------------------------

TEST_F(FileQueue, AMissingSourceAnsweredWithAbortEndsTheQueueWithItsCode) {
    OpenInf(kThreeFiles);
    Answer(SPFILENOTIFY_COPYERROR, FILEOP_ABORT);
    EXPECT_FALSE(Run());
    EXPECT_EQ(Code(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_THAT(Steps(), ElementsAre("startqueue 119", "startsub 0 of 3", "needmedia C:\\source | a.txt | - | -",
                                     "startcopy C:\\source\\a.txt > C:\\target\\a.txt op 0",
                                     "endcopy C:\\source\\a.txt > C:\\target\\a.txt",
                                     "startcopy C:\\source\\none.txt > C:\\target\\none.txt op 0",
                                     "copyerror C:\\source\\none.txt > C:\\target\\none.txt error 2", "endqueue 0"));
    EXPECT_THAT(Targets(), ElementsAre("a.txt=aaa")) << "what was done stays, nothing is half-written";
}

TEST_F(FileQueue, AMissingSourceMayBeSkipped) {
    OpenInf(kThreeFiles);
    Answer(SPFILENOTIFY_COPYERROR, FILEOP_SKIP);
    EXPECT_TRUE(Run());
    EXPECT_THAT(Steps(), ::testing::Contains("endcopy C:\\source\\none.txt > C:\\target\\none.txt error 2"));
    EXPECT_THAT(Targets(), ElementsAre("a.txt=aaa", "b.txt=bbbb"));
}

TEST_F(FileQueue, AFailedCopyMayBeTriedAgain) {
    OpenInf(kOneFile);
    WriteFileOn(Machine(), "C:\\target\\a.txt", "old");
    m_queue.Reset(Platform().SetupOpenFileQueue());
    ASSERT_TRUE(Platform().SetupInstallFilesFromInfSectionA(m_inf.Get(), nullptr, m_queue.Get(), "I", "C:\\source", 0));
    struct State {
        std::unique_ptr<simulated::Files::Held> held;
        int errors = 0;
    } state{std::make_unique<simulated::Files::Held>(Machine().Files().HoldOpen("C:\\target\\a.txt")), 0};
    auto release = [](PVOID context, UINT notification, UINT_PTR first, UINT_PTR) -> UINT {
        auto* its = static_cast<State*>(context);
        if (notification == SPFILENOTIFY_COPYERROR) {
            EXPECT_EQ(reinterpret_cast<const FILEPATHS_A*>(first)->Win32Error, UINT{ERROR_SHARING_VIOLATION});
            if (++its->errors == 2) {
                its->held.reset();
            }
            return FILEOP_RETRY;
        }
        return FILEOP_DOIT;
    };
    EXPECT_TRUE(Platform().SetupCommitFileQueueA(nullptr, m_queue.Get(), release, &state));
    EXPECT_EQ(state.errors, 2);
    EXPECT_THAT(Targets(), ElementsAre("a.txt=aaa"));
}

TEST_F(FileQueue, TryingAgainForEverEndsWithTheCode) {
    OpenInf("[I]\r\nCopyFiles=@none.txt\r\n");
    EXPECT_FALSE(Run());
    EXPECT_EQ(Code(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_LT(Steps().size(), 200u);
    EXPECT_EQ(Steps().back(), "endqueue 0");
}

TEST_F(FileQueue, AFailedCopyMayComeFromAnotherFolder) {
    OpenInf("[I]\r\nCopyFiles=@c.txt\r\n[DestinationDirs]\r\nDefaultDestDir=40000\r\n");
    Answer(SPFILENOTIFY_COPYERROR, FILEOP_NEWPATH);
    m_newPath = "C:\\source\\sub\\";
    EXPECT_TRUE(Run());
    EXPECT_THAT(Steps(), ::testing::Contains("endcopy C:\\source\\sub\\c.txt > C:\\target\\c.txt"));
    EXPECT_THAT(Targets(), ElementsAre("c.txt=ccccc"));
}

TEST_F(FileQueue, MediaMayLieInAnotherFolder) {
    OpenInf(std::string("[I]\r\nCopyFiles=F\r\n[F]\r\nc.txt\r\nd.txt,c.txt\r\n") + kToTarget);
    AnswerOnce(SPFILENOTIFY_NEEDMEDIA, 1, FILEOP_NEWPATH);
    m_newPath = "C:\\source\\sub";
    EXPECT_TRUE(Run());
    EXPECT_THAT(Targets(), ElementsAre("c.txt=ccccc", "d.txt=ccccc")) << "asked for once";
    EXPECT_EQ(std::ranges::count_if(Steps(), [](const std::string& step) { return step.starts_with("needmedia"); }), 1);
}

TEST_F(FileQueue, SkippedMediaAreAskedForAgain) {
    OpenInf(kThreeFiles);
    Answer(SPFILENOTIFY_NEEDMEDIA, FILEOP_SKIP);
    AnswerOnce(SPFILENOTIFY_NEEDMEDIA, 3, FILEOP_DOIT);
    EXPECT_TRUE(Run());
    EXPECT_THAT(Steps(), ElementsAre("startqueue 119", "startsub 0 of 3", "needmedia C:\\source | a.txt | - | -",
                                     "needmedia C:\\source | none.txt | - | -", "needmedia C:\\source | b.txt | - | -",
                                     "startcopy C:\\source\\b.txt > C:\\target\\b.txt op 0",
                                     "endcopy C:\\source\\b.txt > C:\\target\\b.txt", "endsub 0", "endqueue 1"));
}

struct AbortCase {
    const char* name;
    UINT notification;
    std::vector<std::string> steps;
};
class QueueAborts : public FileQueue, public ::testing::WithParamInterface<AbortCase> {};

TEST_P(QueueAborts, EndTheQueueWithTheCallbacksCodeOr995) {
    for (DWORD code : {DWORD{0}, DWORD{ERROR_CANCELLED}}) {
        OpenInf(kOneFile);
        Answer(GetParam().notification, FILEOP_ABORT);
        m_errorOnAbort = code;
        EXPECT_FALSE(Run());
        EXPECT_EQ(Code(), code != 0 ? code : 995);
        EXPECT_EQ(Steps(), GetParam().steps);
        EXPECT_THAT(Targets(), IsEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Notifications, QueueAborts,
    ::testing::Values(
        AbortCase{"StartQueue", SPFILENOTIFY_STARTQUEUE, {"startqueue 119"}},
        AbortCase{"StartSubQueue", SPFILENOTIFY_STARTSUBQUEUE, {"startqueue 119", "startsub 0 of 1", "endqueue 0"}},
        AbortCase{"NeedMedia",
                  SPFILENOTIFY_NEEDMEDIA,
                  {"startqueue 119", "startsub 0 of 1", "needmedia C:\\source | a.txt | - | -", "endqueue 0"}},
        AbortCase{"StartCopy",
                  SPFILENOTIFY_STARTCOPY,
                  {"startqueue 119", "startsub 0 of 1", "needmedia C:\\source | a.txt | - | -",
                   "startcopy C:\\source\\a.txt > C:\\target\\a.txt op 0", "endqueue 0"}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(FileQueue, ACodeOfTheCallbackWinsOverThatOfTheStep) {
    OpenInf("[I]\r\nCopyFiles=@none.txt\r\n");
    Answer(SPFILENOTIFY_COPYERROR, FILEOP_ABORT);
    m_errorOnAbort = ERROR_CANCELLED;
    EXPECT_FALSE(Run());
    EXPECT_EQ(Code(), DWORD{ERROR_CANCELLED});
}

TEST_F(FileQueue, AnAbortWithoutACodeEndsWithThatOfTheStep) {
    OpenInf("[I]\r\nCopyFiles=@none.txt\r\n");
    Answer(SPFILENOTIFY_COPYERROR, FILEOP_ABORT);
    m_clearsErrorOnAbort = true;
    EXPECT_FALSE(Run());
    EXPECT_EQ(Code(), DWORD{ERROR_FILE_NOT_FOUND});
}

TEST_F(FileQueue, AStepMayBeSkippedAtItsStart) {
    WriteFileOn(Machine(), "C:\\target\\d.txt", "d");
    OpenInf(std::string("[I]\r\nCopyFiles=@a.txt\r\nDelFiles=D\r\n[D]\r\nd.txt\r\n") + kToTarget);
    Answer(SPFILENOTIFY_STARTDELETE, FILEOP_SKIP);
    Answer(SPFILENOTIFY_STARTCOPY, FILEOP_SKIP);
    EXPECT_TRUE(Run());
    EXPECT_THAT(Steps(), ElementsAre("startqueue 119", "startsub 2 of 1", "startdelete  > C:\\target\\d.txt op 2",
                                     "endsub 2", "startsub 0 of 1", "needmedia C:\\source | a.txt | - | -",
                                     "startcopy C:\\source\\a.txt > C:\\target\\a.txt op 0", "endsub 0", "endqueue 1"));
    EXPECT_THAT(Targets(), ElementsAre("d.txt=d"));
}

TEST_F(FileQueue, ErrorsOfDeletesAndRenamesAreTold) {
    WriteFileOn(Machine(), "C:\\target\\held.txt", "h");
    OpenInf(
        std::string("[I]\r\nDelFiles=D\r\nRenFiles=R\r\n[D]\r\nnone.txt\r\nheld.txt\r\n[R]\r\nnew.txt,old.txt\r\n") +
        kToTarget);
    Answer(SPFILENOTIFY_DELETEERROR, FILEOP_SKIP);
    Answer(SPFILENOTIFY_RENAMEERROR, FILEOP_ABORT);
    simulated::Files::Held held = Machine().Files().HoldOpen("C:\\target\\held.txt", FILE_SHARE_READ);
    EXPECT_FALSE(Run());
    EXPECT_EQ(Code(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_THAT(Steps(),
                ElementsAre("startqueue 119", "startsub 2 of 2", "startdelete  > C:\\target\\none.txt op 2",
                            "deleteerror  > C:\\target\\none.txt error 2", "enddelete  > C:\\target\\none.txt error 2",
                            "startdelete  > C:\\target\\held.txt op 2", "deleteerror  > C:\\target\\held.txt error 32",
                            "enddelete  > C:\\target\\held.txt error 32", "endsub 2", "startsub 1 of 1",
                            "startrename C:\\target\\old.txt > C:\\target\\new.txt op 1",
                            "renameerror C:\\target\\old.txt > C:\\target\\new.txt error 2", "endqueue 0"));
}

TEST_F(FileQueue, AFullDiskLeavesTheOldFile) {
    WriteFileOn(Machine(), "C:\\target\\a.txt", "o");
    OpenInf(kOneFile);
    Machine().Files().SetFreeSpace(1);
    Answer(SPFILENOTIFY_COPYERROR, FILEOP_ABORT);
    EXPECT_FALSE(Run());
    EXPECT_EQ(Code(), DWORD{ERROR_DISK_FULL});
    EXPECT_THAT(Targets(), ElementsAre("a.txt=o"));
}

TEST_F(FileQueue, AReadOnlyTargetIsReplacedAndStaysReadOnly) {
    WriteFileOn(Machine(), "C:\\target\\a.txt", "old");
    ASSERT_EQ(Machine().Files().SetAttributes("C:\\target\\a.txt", FILE_ATTRIBUTE_READONLY), 0u);
    OpenInf(kOneFile);
    EXPECT_TRUE(Run());
    EXPECT_THAT(Targets(), ElementsAre("a.txt=aaa"));
    EXPECT_TRUE(Machine().Files().Attributes("C:\\target\\a.txt") & FILE_ATTRIBUTE_READONLY);
}

TEST_F(FileQueue, AReadOnlySourceMakesAPlainTarget) {
    ASSERT_EQ(Machine().Files().SetAttributes("C:\\source\\a.txt", FILE_ATTRIBUTE_READONLY), 0u);
    OpenInf(kOneFile);
    EXPECT_TRUE(Run());
    EXPECT_FALSE(Machine().Files().Attributes("C:\\target\\a.txt") & FILE_ATTRIBUTE_READONLY);
}

TEST_F(FileQueue, AHeldReadOnlyTargetStaysAsItWas) {
    WriteFileOn(Machine(), "C:\\target\\a.txt", "old");
    ASSERT_EQ(Machine().Files().SetAttributes("C:\\target\\a.txt", FILE_ATTRIBUTE_READONLY), 0u);
    simulated::Files::Held held = Machine().Files().HoldOpen("C:\\target\\a.txt", FILE_SHARE_READ);
    OpenInf(kOneFile);
    Answer(SPFILENOTIFY_COPYERROR, FILEOP_ABORT);
    EXPECT_FALSE(Run());
    EXPECT_EQ(Code(), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_TRUE(Machine().Files().Attributes("C:\\target\\a.txt") & FILE_ATTRIBUTE_READONLY);
    EXPECT_THAT(Targets(), ElementsAre("a.txt=old"));
}

// ---- the system's own callback --------------------------------------------------------------------------------------

TEST_F(FileQueue, WithoutACallbackTheSystemsOwnDecides) {
    m_hasCallback = false;
    OpenInf(kOneFile);
    EXPECT_TRUE(Run());
    EXPECT_THAT(Targets(), ElementsAre("a.txt=aaa"));
    OpenInf(kThreeFiles);
    EXPECT_FALSE(Run());
    EXPECT_EQ(Code(), DWORD{ERROR_FILE_NOT_FOUND});
    OpenInf(std::string("[I]\r\nCopyFiles=@b.txt\r\nDelFiles=D\r\nRenFiles=R\r\n[D]\r\nnone.txt\r\n"
                        "[R]\r\nnew.txt,old.txt\r\n") +
            kToTarget);
    EXPECT_TRUE(Run()) << "what can't be deleted or renamed is left alone";
    EXPECT_THAT(Targets(), ElementsAre("a.txt=aaa", "b.txt=bbbb"));
}

TEST_F(FileQueue, TheSystemsCallbackAnswersEveryNotification) {
    QueueCallbackContext context(Platform().SetupInitDefaultQueueCallbackEx(nullptr, nullptr, 0, 0, nullptr));
    ASSERT_TRUE(static_cast<bool>(context));
    FILEPATHS_A paths = {"C:\\t", "C:\\s", ERROR_SHARING_VIOLATION, 0};
    SOURCE_MEDIA_A media = {nullptr, nullptr, nullptr, "C:\\source", "a.txt", 0};
    char folder[MAX_PATH] = "";
    auto ask = [&](UINT notification, const void* first) {
        return Platform().SetupDefaultQueueCallbackA(context.Get(), notification, reinterpret_cast<UINT_PTR>(first),
                                                     reinterpret_cast<UINT_PTR>(folder));
    };
    EXPECT_EQ(ask(SPFILENOTIFY_STARTQUEUE, nullptr), UINT{TRUE});
    EXPECT_EQ(ask(SPFILENOTIFY_STARTSUBQUEUE, nullptr), UINT{TRUE});
    EXPECT_EQ(ask(SPFILENOTIFY_ENDSUBQUEUE, nullptr), 0u);
    EXPECT_EQ(ask(SPFILENOTIFY_ENDQUEUE, nullptr), 0u);
    for (UINT notification : {SPFILENOTIFY_STARTDELETE, SPFILENOTIFY_STARTRENAME, SPFILENOTIFY_STARTCOPY}) {
        EXPECT_EQ(ask(notification, &paths), UINT{FILEOP_DOIT});
    }
    for (UINT notification : {SPFILENOTIFY_ENDDELETE, SPFILENOTIFY_ENDRENAME, SPFILENOTIFY_ENDCOPY}) {
        EXPECT_EQ(ask(notification, &paths), 0u);
    }
    EXPECT_EQ(ask(SPFILENOTIFY_DELETEERROR, &paths), UINT{FILEOP_SKIP});
    EXPECT_EQ(ask(SPFILENOTIFY_RENAMEERROR, &paths), UINT{FILEOP_SKIP});
    EXPECT_EQ(ask(SPFILENOTIFY_COPYERROR, &paths), UINT{FILEOP_ABORT});
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
    EXPECT_EQ(ask(SPFILENOTIFY_NEEDMEDIA, &media), UINT{FILEOP_DOIT});
    EXPECT_STREQ(folder, "C:\\source");
    EXPECT_EQ(ask(0x40000, &paths), 0u);
    EXPECT_EQ(ask(99, nullptr), 0u);
}

TEST_F(FileQueue, ANullContextNeedsNoEnd) {
    Platform().SetupTermDefaultQueueCallback(nullptr);
    EXPECT_THAT(Machine().Handles().Misuses(), IsEmpty());
}

// ---- flags ----------------------------------------------------------------------------------------------------------

struct StyleCase {
    const char* name;
    const char* line;  ///< of the copy section
    DWORD style;
    UINT notification;  ///< that is answered with 0; 0: none
    std::vector<std::string> targets;
};
class CopyStyles : public FileQueue, public ::testing::WithParamInterface<StyleCase> {};

TEST_P(CopyStyles, DecideAboutTargetsThatAreThere) {
    WriteFileOn(Machine(), "C:\\target\\a.txt", "old");
    OpenInf(std::string("[I]\r\nCopyFiles=F\r\n[F]\r\n") + GetParam().line + "\r\n" + kToTarget);
    if (GetParam().notification != 0) {
        Answer(GetParam().notification, 0);
    }
    EXPECT_TRUE(Run(GetParam().style));
    EXPECT_EQ(Targets(), GetParam().targets);
}

INSTANTIATE_TEST_SUITE_P(
    Flags, CopyStyles,
    ::testing::Values(StyleCase{"None", "a.txt", 0, 0, {"a.txt=aaa"}},
                      StyleCase{"NoOverwriteAsksAndMayOverwrite", "a.txt", SP_COPY_NOOVERWRITE, 0, {"a.txt=aaa"}},
                      StyleCase{"NoOverwriteAsksAndMayKeep", "a.txt", SP_COPY_NOOVERWRITE, 0x20000, {"a.txt=old"}},
                      StyleCase{"ForceNoOverwriteKeeps", "a.txt", SP_COPY_FORCE_NOOVERWRITE, 0, {"a.txt=old"}},
                      StyleCase{"ReplaceOnlyReplaces", "a.txt", SP_COPY_REPLACEONLY, 0, {"a.txt=aaa"}},
                      StyleCase{"ReplaceOnlyMakesNothingNew", "b.txt", SP_COPY_REPLACEONLY, 0, {"a.txt=old"}},
                      StyleCase{"NewerCopiesWithoutVersions", "a.txt", SP_COPY_NEWER, 0x40000, {"a.txt=aaa"}},
                      StyleCase{"ForceNewerCopiesWithoutVersions", "a.txt", SP_COPY_FORCE_NEWER, 0, {"a.txt=aaa"}},
                      StyleCase{"ALineMayKeepItsTarget", "a.txt,,,0x10", 0, 0, {"a.txt=old"}},
                      StyleCase{"ALineMayAskForNewerFiles", "a.txt,,,0x20", 0, 0, {"a.txt=aaa"}},
                      StyleCase{"ALineMayReplaceOnly", "b.txt,,,0x400", 0, 0, {"a.txt=old"}},
                      StyleCase{"OtherLineFlagsCopy", "a.txt,,,0x3", 0, 0, {"a.txt=aaa"}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(FileQueue, DeleteSourceTakesTheSourceAway) {
    OpenInf(kOneFile);
    EXPECT_TRUE(Run(SP_COPY_DELETESOURCE));
    EXPECT_FALSE(Machine().Files().Exists("C:\\source\\a.txt"));
    EXPECT_THAT(Targets(), ElementsAre("a.txt=aaa"));
}

}  // namespace
}  // namespace pikel
