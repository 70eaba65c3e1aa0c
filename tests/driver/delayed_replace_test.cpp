#include "driver/delayed_replace.h"

#include "machine/system/restart.h"
#include "support/calls.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr char kWininit[] = "C:\\WINDOWS\\wininit.ini";

class DelayedReplace : public MachineTest {
  protected:
    DelayedReplace() : MachineTest("win98") {
        WriteFileOn(Machine(), "C:\\WINDOWS\\SYSTEM\\mon.dll", "old");
        WriteFileOn(Machine(), "C:\\new\\mon.dll", "new");
    }
    std::string Wininit() { return Machine().Files().Read(kWininit).value_or("(missing)"); }
};

TEST_F(DelayedReplace, ExtensionIsReplacedOrAdded) {
    const std::pair<const char*, const char*> cases[] = {{"C:\\a\\mon.dll", "C:\\a\\mon.new"},
                                                         {"C:\\a.b\\mon", "C:\\a.b\\mon.new"},
                                                         {"mon.x.dll", "mon.x.new"},
                                                         {"", ".new"}};
    for (const auto& [path, expected] : cases) {
        char name[MAX_PATH] = {};
        EXPECT_TRUE(ReplaceExtension(path, ".new", name));
        EXPECT_STREQ(name, expected);
    }
}

TEST_F(DelayedReplace, NameThatDoesNotFitIsRefused) {
    char name[MAX_PATH] = "untouched";
    const std::string stem = "C:\\" + std::string(252, 'x');  // 255 with the root; ".new" makes 259
    EXPECT_TRUE(ReplaceExtension((stem + ".d").c_str(), ".new", name));
    EXPECT_EQ(std::string(name), stem + ".new");
    std::string before = name;
    EXPECT_FALSE(ReplaceExtension((stem + "x.d").c_str(), ".new", name));
    EXPECT_EQ(name, before);
    Test().TurnLogOn();
    EXPECT_EQ(RenameFileAndRegister9x((stem + "x.d").c_str(), "C:\\new\\mon.dll"), DWORD{ERROR_INTERNAL_ERROR});
    EXPECT_THAT(
        Test().TakeLog(),
        ElementsAre("RenameFileAndRegister9x() ReplaceExtension() OldFileName is " + stem + "x.d",
                    "ReplaceExtension Start", "ReplaceExtension OldFile=" + stem + "x.d", "ReplaceExtension Ext=.new",
                    "ReplaceExtension End(FALSE)", "RenameFileAndRegister9x() 新しいファイル名の作成に失敗"));
    EXPECT_EQ(Wininit(), "(missing)");
}

TEST_F(DelayedReplace, NullArgumentsAreRefused) {
    char name[MAX_PATH] = {};
    Test().TurnLogOn();
    EXPECT_FALSE(ReplaceExtension(nullptr, ".new", name));
    EXPECT_FALSE(ReplaceExtension("a", nullptr, name));
    EXPECT_FALSE(ReplaceExtension("a", ".new", nullptr));
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("ReplaceExtension Start", "ReplaceExtension End(FALSE)", "ReplaceExtension Start",
                            "ReplaceExtension End(FALSE)", "ReplaceExtension Start", "ReplaceExtension End(FALSE)"));
    EXPECT_EQ(RenameFileAndRegister9x(nullptr, "a"), 87u);
    EXPECT_EQ(RenameFileAndRegister9x("a", nullptr), 87u);
    EXPECT_EQ(WriteWininit(nullptr, "a"), 87u);
    EXPECT_EQ(WriteWininit("a", nullptr), 87u);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_F(DelayedReplace, WaitsBesideTheOldFileUntilTheNextStart) {
    Test().TurnLogOn();
    EXPECT_EQ(RenameFileAndRegister9x("C:\\WINDOWS\\SYSTEM\\mon.dll", "C:\\new\\mon.dll"), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("RenameFileAndRegister9x() ReplaceExtension() OldFileName is C:\\WINDOWS\\SYSTEM\\mon.dll",
                            "ReplaceExtension Start", "ReplaceExtension OldFile=C:\\WINDOWS\\SYSTEM\\mon.dll",
                            "ReplaceExtension Ext=.new", "ReplaceExtension NewFile=C:\\WINDOWS\\SYSTEM\\mon.new",
                            "ReplaceExtension End(TRUE)",
                            "RenameFileAndRegister9x() ReplaceExtension() NewFileName is C:\\WINDOWS\\SYSTEM\\mon.new",
                            "RenameFileAndRegister9x() CopyFile() srcPath is C:\\new\\mon.dll",
                            "RenameFileAndRegister9x() CopyFile() dstPath is C:\\WINDOWS\\SYSTEM\\mon.new",
                            "RenameFileAndRegister9x() WriteWininit() srcPath is C:\\WINDOWS\\SYSTEM\\mon.dll",
                            "RenameFileAndRegister9x() WriteWininit() dstPath is C:\\WINDOWS\\SYSTEM\\mon.new",
                            "WriteWininit() - C:\\WINDOWS\\SYSTEM\\mon.dll Start", "WriteWininit() End(0)"));
    EXPECT_EQ(Wininit(), "[RENAME]\r\nC:\\WINDOWS\\SYSTEM\\mon.dll=C:\\WINDOWS\\SYSTEM\\mon.new\r\n");
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\WINDOWS\\SYSTEM\\mon.dll"), "old");

    simulated::Restart(Machine());
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\WINDOWS\\SYSTEM\\mon.dll"), "new");
    EXPECT_FALSE(Machine().Files().Exists("C:\\WINDOWS\\SYSTEM\\mon.new"));
    EXPECT_EQ(Wininit(), "(missing)");
}

TEST_F(DelayedReplace, OlderWaitingFileIsOverwritten) {
    WriteFileOn(Machine(), "C:\\WINDOWS\\SYSTEM\\mon.new", "waiting");
    EXPECT_EQ(RenameFileAndRegister9x("C:\\WINDOWS\\SYSTEM\\mon.dll", "C:\\new\\mon.dll"), 0u);
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\WINDOWS\\SYSTEM\\mon.new"), "new");
}

TEST_F(DelayedReplace, PlainLogHasNothingOfIt) {
    Test().TurnLogOn(1);
    EXPECT_FALSE(ReplaceExtension(nullptr, ".new", nullptr));
    EXPECT_EQ(RenameFileAndRegister9x("C:\\WINDOWS\\SYSTEM\\mon.dll", "C:\\new\\mon.dll"), 0u);
    EXPECT_EQ(RenameFileAndRegister9x("C:\\WINDOWS\\SYSTEM\\mon.dll", "C:\\new\\missing.dll"), 2u);
    EXPECT_EQ(RenameFileAndRegister9x(("C:\\" + std::string(253, 'x')).c_str(), "C:\\new\\mon.dll"),
              DWORD{ERROR_INTERNAL_ERROR});
    faults::FailCall("WritePrivateProfileSectionA", 1, 6);
    EXPECT_EQ(RenameFileAndRegister9x("C:\\WINDOWS\\SYSTEM\\mon2.dll", "C:\\new\\mon.dll"), 6u);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_F(DelayedReplace, SectionIsReadInOneSpellingAndWrittenInTheOther) {
    Test().TakeCalls();
    EXPECT_EQ(WriteWininit("C:\\a.dll", "C:\\a.new"), 0u);
    EXPECT_EQ(WriteWininit("C:\\b.dll", "C:\\b.new"), 0u);
    const std::vector<std::string> calls =
        TakeCallsOf(Test(), {"GetPrivateProfileSectionA", "WritePrivateProfileStringA", "WritePrivateProfileSectionA"});
    EXPECT_THAT(calls, ElementsAre(StartsWith("GetPrivateProfileSectionA(\"RENAME\", &, 0x4000, \"wininit.ini\")"),
                                   StartsWith("WritePrivateProfileStringA(\"RENAME\", "),
                                   StartsWith("GetPrivateProfileSectionA(\"RENAME\", &, 0x4000, \"wininit.ini\")"),
                                   StartsWith("WritePrivateProfileSectionA(\"rename\", ")));
}

TEST_F(DelayedReplace, LaterEntriesFollowTheOthers) {
    EXPECT_EQ(WriteWininit("C:\\a.dll", "C:\\a.new"), 0u);
    EXPECT_EQ(WriteWininit("C:\\b.dll", "C:\\b.new"), 0u);
    EXPECT_EQ(WriteWininit("NUL", "C:\\c.dll"), 0u);
    EXPECT_EQ(WriteWininit("NUL", "C:\\d.dll"), 0u);
    const std::string all = "C:\\a.dll=C:\\a.new\r\nC:\\b.dll=C:\\b.new\r\nNUL=C:\\c.dll\r\nNUL=C:\\d.dll\r\n";
    EXPECT_THAT(Wininit(), ::testing::EndsWith(all));
    Test().TurnLogOn();
    EXPECT_EQ(WriteWininit("c:\\B.DLL", "c:\\B.NEW"), 0u) << "there already, whatever its case";
    EXPECT_THAT(Test().TakeLog(), ElementsAre("WriteWininit() - c:\\B.DLL Start")) << "without an end line";
    EXPECT_THAT(Wininit(), ::testing::EndsWith(all));
}

TEST_F(DelayedReplace, DeletionIsDoneAtTheNextStart) {
    EXPECT_EQ(WriteWininit("NUL", "C:\\new\\mon.dll"), 0u);
    simulated::Restart(Machine());
    EXPECT_FALSE(Machine().Files().Exists("C:\\new\\mon.dll"));
}

TEST_F(DelayedReplace, CopyThatFailsEntersNothing) {
    Test().TurnLogOn();
    EXPECT_EQ(RenameFileAndRegister9x("C:\\WINDOWS\\SYSTEM\\mon.dll", "C:\\new\\missing.dll"),
              DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(Test().TakeLog().back(), "CopyMonitorFile9x コピー失敗:C:\\WINDOWS\\SYSTEM\\mon.new");
    EXPECT_EQ(Wininit(), "(missing)");
}

TEST_F(DelayedReplace, ProfileThatCanNotBeWrittenLeavesTheWaitingFile) {
    faults::FailCall("WritePrivateProfileStringA", 1, 5);
    Test().TurnLogOn();
    EXPECT_EQ(RenameFileAndRegister9x("C:\\WINDOWS\\SYSTEM\\mon.dll", "C:\\new\\mon.dll"), 5u);
    EXPECT_EQ(Test().TakeLog().back(), "RenameFileAndRegister9x() リネームセクションの登録失敗");
    EXPECT_TRUE(Machine().Files().Exists("C:\\WINDOWS\\SYSTEM\\mon.new"));
    faults::Reset();
    EXPECT_EQ(WriteWininit("C:\\a.dll", "C:\\a.new"), 0u);
    faults::FailCall("WritePrivateProfileSectionA", 1, 6);
    EXPECT_EQ(WriteWininit("C:\\b.dll", "C:\\b.new"), 6u);
}

TEST_F(DelayedReplace, SectionThatIsFullTakesNoMore) {
    std::string text = "[rename]\r\n";
    for (int i = 0; i < 900; ++i) {
        text += "C:\\" + std::to_string(i) + "=C:\\12345678.new\r\n";
    }
    WriteFileOn(Machine(), kWininit, text);
    EXPECT_EQ(WriteWininit("C:\\b.dll", "C:\\b.new"), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(Wininit(), text);
}

}  // namespace
}  // namespace pikel
