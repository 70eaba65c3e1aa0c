// Shortcuts in the Start menu.
#include "system/short_cut.h"

#include <utility>

#include "machine/shell/shell_link.h"
#include "support/calls.h"

namespace pikel {
namespace {

using namespace testing_support;
using simulated::LinkSettings;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr char kTarget[] = "C:\\Program Files\\Tarvo\\tarvo.exe";
constexpr char kWorking[] = "C:\\Program Files\\Tarvo";
const std::vector<std::string> kLinkCalls = {"LoadLibraryA",     "GetProcAddress",   "SHGetFolderPathA",
                                             "FreeLibrary",      "CreateDirectoryA", "CoInitialize",
                                             "CoCreateInstance", "CoUninitialize",   "MultiByteToWideChar"};

/// Where a system has the Start menu's programs that get the shortcuts.
std::string ProgramsOf(const std::string& system) {
    if (system.starts_with("win9") || system == "winme") {
        return "C:\\WINDOWS\\Start Menu\\Programs";
    }
    if (system == "nt4") {
        return "C:\\WINNT\\Profiles\\All Users\\Start Menu\\Programs";
    }
    return system.starts_with("vista") ? "C:\\ProgramData\\Microsoft\\Windows\\Start Menu\\Programs"
                                       : "C:\\Documents and Settings\\All Users\\Start Menu\\Programs";
}

/// Systems from before Internet Explorer 5 and those that never got it have no "shfolder.dll".
bool HasFolderLibrary(const std::string& system) {
    return system != "win95" && system != "nt4";
}

LinkSettings LinkOn(simulated::Machine& machine, const std::string& path) {
    const std::optional<LinkSettings> link = simulated::ParseLink(ReadFileOn(machine, path), 1252);
    EXPECT_TRUE(link);
    return link.value_or(LinkSettings());
}

/// COM on the test's thread.
class ComOnThread {
  public:
    ComOnThread() { EXPECT_EQ(Platform().CoInitialize(nullptr), S_OK); }
    ~ComOnThread() { Platform().CoUninitialize(); }
    ComOnThread(const ComOnThread&) = delete;
    ComOnThread& operator=(const ComOnThread&) = delete;
};

std::size_t ComObjectsOf(simulated::Machine& machine) {
    return machine.Handles().OpenCount(simulated::HandleKind::ComObject);
}

// ---- every system -----------------------------------------------------------------------------------------------

class ShortCutOnEverySystem : public EverySystemTest {};
INSTANTIATE_ON_EVERY_SYSTEM(ShortCutOnEverySystem);

TEST_P(ShortCutOnEverySystem, LiesInAFolderOfItsOwnBelowThePrograms) {
    const std::string folder = ProgramsOf(GetParam()) + "\\Tarvo";
    const DWORD code = DoCreateShortCut("Tarvo", "Tarvo 100.lnk", kTarget, kWorking);
    if (!HasFolderLibrary(GetParam())) {
        EXPECT_EQ(code, ERROR_INTERNAL_ERROR);
        EXPECT_FALSE(Machine().Files().Exists(folder));
        return;
    }
    EXPECT_EQ(code, 0u);
    EXPECT_TRUE(Machine().Files().IsDirectory(folder));
    const LinkSettings link = LinkOn(Machine(), folder + "\\Tarvo 100.lnk");
    EXPECT_EQ(link.target, kTarget);
    EXPECT_EQ(link.workingDirectory, kWorking);
    EXPECT_EQ(link.description, "");
    EXPECT_EQ(link.arguments, "");
    EXPECT_EQ(link.iconPath, "");
}

TEST_P(ShortCutOnEverySystem, FolderIsAskedForByFamily) {
    if (!HasFolderLibrary(GetParam())) {
        return;
    }
    ForgetCalls(Test());
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", kTarget, nullptr), 0u);
    const bool is9x = GetParam().starts_with("win9") || GetParam() == "winme";
    EXPECT_THAT(TakeCallsOf(Test(), {"SHGetFolderPathA"}),
                ElementsAre(StartsWith(is9x ? "SHGetFolderPathA(null, 0x2, null, 0x0, "
                                            : "SHGetFolderPathA(null, 0x17, null, 0x0, ")));
}

TEST_P(ShortCutOnEverySystem, LogsNothing) {
    Test().TurnLogOn();
    DoCreateShortCut("Tarvo", "a.lnk", kTarget, kWorking);
    DoCreateShortCut(nullptr, "a.lnk", kTarget, kWorking);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST(ShortCutOfTheLatest9x, FolderIsAskedForByFamily) {
    simulated::SystemDescription system = *simulated::FindSystem("winme");
    system.minor = 91;  // no known version of the family
    TestMachine test(system);
    ForgetCalls(test);
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", kTarget, nullptr), 0u);
    EXPECT_THAT(TakeCallsOf(test, {"SHGetFolderPathA"}), ElementsAre(StartsWith("SHGetFolderPathA(null, 0x2, ")));
}

// ---- the path ---------------------------------------------------------------------------------------------------

class ShortCut : public MachineTest {
  protected:
    std::string Programs() const { return ProgramsOf("xp"); }
};

TEST_F(ShortCut, NullArgumentsAreRefused) {
    ForgetCalls(Test());
    EXPECT_EQ(DoCreateShortCut(nullptr, "a.lnk", kTarget, kWorking), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(DoCreateShortCut("Tarvo", nullptr, kTarget, kWorking), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", nullptr, kWorking), ERROR_INVALID_PARAMETER);
    EXPECT_THAT(Test().TakeCalls(), IsEmpty());
}

TEST_F(ShortCut, WorkingDirectoryMayBeNull) {
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", kTarget, nullptr), 0u);
    EXPECT_EQ(LinkOn(Machine(), Programs() + "\\Tarvo\\a.lnk").workingDirectory, "");
}

TEST_F(ShortCut, TakesItsStepsInOrder) {
    ForgetCalls(Test());
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", kTarget, nullptr), 0u);
    const std::string folder =
        "\"C:\\\\Documents and Settings\\\\All Users\\\\Start Menu\\\\Programs\\\\Tarvo\", null) = 0x1";
    EXPECT_THAT(
        TakeCallsOf(Test(), kLinkCalls),
        ElementsAre(StartsWith("LoadLibraryA(\"shfolder.dll\")"), StartsWith("GetProcAddress("),
                    StartsWith("SHGetFolderPathA("), StartsWith("FreeLibrary("), "CreateDirectoryA(" + folder,
                    "CoCreateInstance(&, null, 0x1, &, &) = 0x800401f0 failed, last error 0",
                    "CoInitialize(null) = 0x0", "CoCreateInstance(&, null, 0x1, &, &) = 0x0",
                    StartsWith("MultiByteToWideChar(0x0, 0x0, &, 0xffffffff, &, 0x104) = "), "CoUninitialize()"));
}

TEST_F(ShortCut, FolderThatExistsDoesNotStopIt) {
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", kTarget, nullptr), 0u);
    EXPECT_EQ(DoCreateShortCut("Tarvo", "b.lnk", kTarget, nullptr), 0u);
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", "C:\\other.exe", nullptr), 0u);
    EXPECT_EQ(LinkOn(Machine(), Programs() + "\\Tarvo\\a.lnk").target, "C:\\other.exe");
    EXPECT_EQ(LinkOn(Machine(), Programs() + "\\Tarvo\\b.lnk").target, kTarget);
}

TEST_F(ShortCut, FolderThatCannotBeMadeShowsWhenTheLinkIsSaved) {
    faults::FailCall("CreateDirectoryA", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", kTarget, nullptr), ERROR_INTERNAL_ERROR);
    EXPECT_FALSE(Machine().Files().Exists(Programs() + "\\Tarvo"));
    EXPECT_EQ(ComObjectsOf(Machine()), 0u);
}

TEST_F(ShortCut, LinkNameIsUsedAsItStands) {
    EXPECT_EQ(DoCreateShortCut("Tarvo", "no extension", kTarget, nullptr), 0u);
    EXPECT_TRUE(Machine().Files().Exists(Programs() + "\\Tarvo\\no extension"));
    EXPECT_FALSE(Machine().Files().Exists(Programs() + "\\Tarvo\\no extension.lnk"));
}

TEST_F(ShortCut, MissingLibraryGives1359) {
    Machine().Modules().Remove("shfolder.dll");
    ForgetCalls(Test());
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", kTarget, nullptr), ERROR_INTERNAL_ERROR);
    EXPECT_THAT(Test().TakeCallNames(kLinkCalls), ElementsAre("LoadLibraryA"));
}

TEST_F(ShortCut, MissingEntryGives1359AndFreesTheLibrary) {
    Machine().Modules().RemoveExport("shfolder.dll", "SHGetFolderPathA");
    ForgetCalls(Test());
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", kTarget, nullptr), ERROR_INTERNAL_ERROR);
    EXPECT_THAT(Test().TakeCallNames(kLinkCalls), ElementsAre("LoadLibraryA", "GetProcAddress", "FreeLibrary"));
}

TEST_F(ShortCut, FolderThatIsNotKnownGives1359) {
    faults::FailCall("SHGetFolderPathA", 1, ERROR_ACCESS_DENIED);
    ForgetCalls(Test());
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", kTarget, nullptr), ERROR_INTERNAL_ERROR);
    EXPECT_THAT(Test().TakeCallNames(kLinkCalls),
                ElementsAre("LoadLibraryA", "GetProcAddress", "SHGetFolderPathA", "FreeLibrary"));
}

TEST_F(ShortCut, FolderThatIsMissingGives1359) {
    Machine().Registry().SetText("HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
                                 "Common Programs", "C:\\Gone");
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", kTarget, nullptr), ERROR_INTERNAL_ERROR);
    EXPECT_FALSE(Machine().Files().Exists("C:\\Gone"));
}

/// S_FALSE with an empty path: old shells answer so for a folder that doesn't exist.
HRESULT WINAPI FolderWithoutPath(HWND, int, HANDLE, DWORD, LPSTR path) {
    *path = '\0';
    return S_FALSE;
}

TEST_F(ShortCut, SuccessWithoutAPathGives1359) {
    const auto entry = reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&FolderWithoutPath));
    Machine().Modules().Register("C:\\WINDOWS\\system32\\shfolder.dll", {{"SHGetFolderPathA", entry}});
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", kTarget, nullptr), ERROR_INTERNAL_ERROR);
    EXPECT_FALSE(Machine().Files().Exists("C:\\Tarvo"));
}

TEST_F(ShortCut, PathThatIsTooLongGives1359) {
    EXPECT_EQ(DoCreateShortCut("Tarvo", std::string(300, 'x').c_str(), kTarget, nullptr), ERROR_INTERNAL_ERROR);
    EXPECT_EQ(DoCreateShortCut(std::string(5000, 'x').c_str(), "a.lnk", kTarget, nullptr), ERROR_INTERNAL_ERROR);
    EXPECT_EQ(ComObjectsOf(Machine()), 0u);
}

// ---- COM --------------------------------------------------------------------------------------------------------

TEST_F(ShortCut, ThreadWithComIsNotInitialisedAgain) {
    const ComOnThread com;
    ForgetCalls(Test());
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", kTarget, nullptr), 0u);
    EXPECT_THAT(Test().TakeCallNames({"CoInitialize", "CoCreateInstance", "CoUninitialize"}),
                ElementsAre("CoCreateInstance"));
    EXPECT_EQ(ComObjectsOf(Machine()), 1u);  // the test's own
}

TEST_F(ShortCut, ComThatCannotBeInitialisedGives1359) {
    faults::FailCall("CoInitialize", 1, 0x80010106);
    ForgetCalls(Test());
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", kTarget, nullptr), ERROR_INTERNAL_ERROR);
    EXPECT_THAT(Test().TakeCallNames({"CoInitialize", "CoCreateInstance", "CoUninitialize", "MultiByteToWideChar"}),
                ElementsAre("CoCreateInstance", "CoInitialize"));
}

TEST_F(ShortCut, ClassThatCannotBeMadeIsTriedTwice) {
    faults::FailCall("CoCreateInstance", 1, 0x80040154, true);
    ForgetCalls(Test());
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", kTarget, nullptr), ERROR_INTERNAL_ERROR);
    EXPECT_THAT(Test().TakeCallNames({"CoInitialize", "CoCreateInstance", "CoUninitialize", "MultiByteToWideChar"}),
                ElementsAre("CoCreateInstance", "CoInitialize", "CoCreateInstance", "CoUninitialize"));
    EXPECT_EQ(ComObjectsOf(Machine()), 0u);
}

TEST_F(ShortCut, InitialisationThatWasThereAlreadyIsUndoneToo) {
    // The class fails once on a thread with COM: what CoInitialize counts up is counted down again.
    const ComOnThread com;
    faults::FailCall("CoCreateInstance", 1, 0x80040154);
    ForgetCalls(Test());
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", kTarget, nullptr), 0u);
    EXPECT_THAT(TakeCallsOf(Test(), {"CoInitialize", "CoUninitialize"}),
                ElementsAre("CoInitialize(null) = 0x1", "CoUninitialize()"));
    EXPECT_EQ(ComObjectsOf(Machine()), 1u);
}

TEST_F(ShortCut, PathThatCannotBeConvertedGives1359) {
    faults::FailCall("MultiByteToWideChar", 1, ERROR_NO_UNICODE_TRANSLATION);
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", kTarget, nullptr), ERROR_INTERNAL_ERROR);
    EXPECT_FALSE(Machine().Files().Exists(Programs() + "\\Tarvo\\a.lnk"));
    EXPECT_EQ(ComObjectsOf(Machine()), 0u);
}

TEST_F(ShortCut, LinkThatCannotBeSavedGives1359) {
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", kTarget, nullptr), 0u);
    const auto held = Machine().Files().HoldOpen(Programs() + "\\Tarvo\\a.lnk");
    EXPECT_EQ(DoCreateShortCut("Tarvo", "a.lnk", "C:\\other.exe", nullptr), ERROR_INTERNAL_ERROR);
    EXPECT_EQ(LinkOn(Machine(), Programs() + "\\Tarvo\\a.lnk").target, kTarget);
    EXPECT_EQ(ComObjectsOf(Machine()), 0u);
}

// ---- the record -------------------------------------------------------------------------------------------------

/// The file of a link. It notes what it is told, and refuses what a test says.
class NotingFile final : public IPersistFile {
  public:
    HRESULT saveResult = S_OK;
    int references = 0;

    explicit NotingFile(std::vector<std::string>& notes) : m_notes(notes) {}
    HRESULT WINAPI QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG WINAPI AddRef() override { return static_cast<ULONG>(++references); }
    ULONG WINAPI Release() override {
        m_notes.push_back("Release(file)");
        return static_cast<ULONG>(--references);
    }
    HRESULT WINAPI GetClassID(CLSID*) override { return E_FAIL; }
    HRESULT WINAPI IsDirty() override { return E_FAIL; }
    HRESULT WINAPI Load(LPCWSTR, DWORD) override { return E_FAIL; }
    HRESULT WINAPI Save(LPCWSTR path, BOOL remember) override {
        m_notes.push_back("Save(" + simulated::FromWide(1252, path) + ", " + std::to_string(remember) + ")");
        return saveResult;
    }
    HRESULT WINAPI SaveCompleted(LPCWSTR) override { return E_FAIL; }
    HRESULT WINAPI GetCurFile(LPWSTR*) override { return E_FAIL; }

  private:
    std::vector<std::string>& m_notes;
};

/// The link itself, in the same way.
class NotingLink final : public IShellLinkA {
  public:
    std::vector<std::string> notes;
    NotingFile file{notes};
    bool hasFile = true;
    HRESULT firstResult = S_OK;  ///< of the first try to make it
    HRESULT setResult = S_OK;
    int references = 1;

    HRESULT WINAPI QueryInterface(REFIID riid, void** object) override {
        notes.push_back(riid == IID_IPersistFile ? "QueryInterface(IPersistFile)" : "QueryInterface");
        *object = nullptr;
        if (!hasFile) {
            return E_NOINTERFACE;
        }
        file.AddRef();
        *object = static_cast<IPersistFile*>(&file);
        return S_OK;
    }
    ULONG WINAPI AddRef() override { return static_cast<ULONG>(++references); }
    ULONG WINAPI Release() override {
        notes.push_back("Release(link)");
        return static_cast<ULONG>(--references);
    }
    HRESULT WINAPI GetPath(LPSTR, int, WIN32_FIND_DATAA*, DWORD) override { return E_FAIL; }
    HRESULT WINAPI GetIDList(void**) override { return E_FAIL; }
    HRESULT WINAPI SetIDList(const void*) override { return E_FAIL; }
    HRESULT WINAPI GetDescription(LPSTR, int) override { return E_FAIL; }
    HRESULT WINAPI SetDescription(LPCSTR text) override { return Note("SetDescription", text); }
    HRESULT WINAPI GetWorkingDirectory(LPSTR, int) override { return E_FAIL; }
    HRESULT WINAPI SetWorkingDirectory(LPCSTR text) override { return Note("SetWorkingDirectory", text); }
    HRESULT WINAPI GetArguments(LPSTR, int) override { return E_FAIL; }
    HRESULT WINAPI SetArguments(LPCSTR text) override { return Note("SetArguments", text); }
    HRESULT WINAPI GetHotkey(WORD*) override { return E_FAIL; }
    HRESULT WINAPI SetHotkey(WORD) override { return E_FAIL; }
    HRESULT WINAPI GetShowCmd(int*) override { return E_FAIL; }
    HRESULT WINAPI SetShowCmd(int) override { return E_FAIL; }
    HRESULT WINAPI GetIconLocation(LPSTR, int, int*) override { return E_FAIL; }
    HRESULT WINAPI SetIconLocation(LPCSTR text, int index) override {
        return Note("SetIconLocation", std::string(text) + "," + std::to_string(index));
    }
    HRESULT WINAPI SetRelativePath(LPCSTR, DWORD) override { return E_FAIL; }
    HRESULT WINAPI Resolve(HWND, DWORD) override { return E_FAIL; }
    HRESULT WINAPI SetPath(LPCSTR text) override { return Note("SetPath", text); }

  private:
    HRESULT Note(const char* name, const std::string& text) {
        notes.push_back(name + ("(" + text + ")"));
        return setResult;
    }
};

class ShortcutWriting : public ShortCut {
  protected:
    ShortcutWriting() {
        s_link = &m_link;
        m_replaced.table.CoCreateInstance = [](REFCLSID rclsid, LPUNKNOWN outer, DWORD context, REFIID riid,
                                               LPVOID* object) -> HRESULT {
            EXPECT_TRUE(rclsid == CLSID_ShellLink);
            EXPECT_TRUE(riid == IID_IShellLinkA);
            EXPECT_EQ(outer, nullptr);
            EXPECT_EQ(context, DWORD{CLSCTX_INPROC_SERVER});
            if (const HRESULT result = std::exchange(s_link->firstResult, S_OK); result != S_OK) {
                return result;
            }
            *object = static_cast<IShellLinkA*>(s_link);
            return S_OK;
        };
        m_record.LinkPath = "C:\\a.lnk";
        m_record.TargetPath = kTarget;
    }
    ~ShortcutWriting() override {
        EXPECT_EQ(m_link.references, 0);
        EXPECT_EQ(m_link.file.references, 0);
    }
    NotingLink& Link() { return m_link; }
    ShortcutRecord& Record() { return m_record; }

    static NotingLink* s_link;

  private:
    NotingLink m_link;
    ShortcutRecord m_record{};
    ReplacedOperations m_replaced;
};
NotingLink* ShortcutWriting::s_link = nullptr;

TEST_F(ShortcutWriting, RecordWithEverythingSetsEverything) {
    Record().Description = "d";
    Record().WorkingDirectory = "w";
    Record().Arguments = "a";
    Record().IconPath = "i";
    Record().IconIndex = -3;
    EXPECT_EQ(WriteShortcut(&Record()), 0u);
    EXPECT_THAT(Link().notes,
                ElementsAre("QueryInterface(IPersistFile)", std::string("SetPath(") + kTarget + ")",
                            "SetDescription(d)", "SetWorkingDirectory(w)", "SetArguments(a)", "SetIconLocation(i,-3)",
                            "Save(C:\\a.lnk, 1)", "Release(file)", "Release(link)"));
}

TEST_F(ShortcutWriting, GivesUpFileAndLinkBeforeTheComThatItSetUp) {
    Link().firstResult = CO_E_NOTINITIALIZED;
    ReplacedOperations replaced;
    replaced.table.CoUninitialize = [] {
        s_link->notes.push_back("CoUninitialize");
        NativePlatform().CoUninitialize();
    };
    EXPECT_EQ(WriteShortcut(&Record()), 0u);
    EXPECT_THAT(Link().notes, ElementsAre("QueryInterface(IPersistFile)", HasSubstr("SetPath("), HasSubstr("Save("),
                                          "Release(file)", "Release(link)", "CoUninitialize"));
}

TEST_F(ShortcutWriting, NullTextsAreLeftAlone) {
    EXPECT_EQ(WriteShortcut(&Record()), 0u);
    EXPECT_THAT(Link().notes, ElementsAre("QueryInterface(IPersistFile)", HasSubstr("SetPath("), HasSubstr("Save("),
                                          "Release(file)", "Release(link)"));
}

TEST_F(ShortcutWriting, EmptyTextsAreSet) {
    Record().Description = Record().WorkingDirectory = Record().Arguments = "";
    EXPECT_EQ(WriteShortcut(&Record()), 0u);
    EXPECT_THAT(Link().notes, ElementsAre("QueryInterface(IPersistFile)", HasSubstr("SetPath("), "SetDescription()",
                                          "SetWorkingDirectory()", "SetArguments()", HasSubstr("Save("),
                                          "Release(file)", "Release(link)"));
}

TEST_F(ShortcutWriting, IconNumber0LeavesTheIconAlone) {
    Record().IconPath = "C:\\tarvo.ico";
    EXPECT_EQ(WriteShortcut(&Record()), 0u);
    Record().IconPath = nullptr;
    Record().IconIndex = 5;
    Link().references = 1;
    EXPECT_EQ(WriteShortcut(&Record()), 0u);
    for (const std::string& note : Link().notes) {
        EXPECT_THAT(note, ::testing::Not(HasSubstr("SetIconLocation")));
    }
}

TEST_F(ShortcutWriting, PropertiesThatAreRefusedDoNotMatter) {
    Record().Description = "d";
    Link().setResult = E_FAIL;
    EXPECT_EQ(WriteShortcut(&Record()), 0u);
}

TEST_F(ShortcutWriting, LinkThatHasNoFileGives1359) {
    Link().hasFile = false;
    EXPECT_EQ(WriteShortcut(&Record()), ERROR_INTERNAL_ERROR);
    EXPECT_THAT(Link().notes, ElementsAre("QueryInterface(IPersistFile)", "Release(link)"));
}

TEST_F(ShortcutWriting, OutcomeOfTheSaveDecides) {
    Link().file.saveResult = E_FAIL;
    EXPECT_EQ(WriteShortcut(&Record()), ERROR_INTERNAL_ERROR);
    Link().references = 1;
    Link().file.saveResult = S_FALSE;
    EXPECT_EQ(WriteShortcut(&Record()), 0u);
}

TEST_F(ShortcutWriting, RecordWithoutItsRequiredTextsIsRefused) {
    EXPECT_EQ(WriteShortcut(nullptr), ERROR_INVALID_PARAMETER);
    Record().LinkPath = nullptr;
    EXPECT_EQ(WriteShortcut(&Record()), ERROR_INVALID_PARAMETER);
    Record().LinkPath = "C:\\a.lnk";
    Record().TargetPath = nullptr;
    EXPECT_EQ(WriteShortcut(&Record()), ERROR_INVALID_PARAMETER);
    EXPECT_THAT(Link().notes, IsEmpty());
    Link().references = 0;
}

}  // namespace
}  // namespace pikel
