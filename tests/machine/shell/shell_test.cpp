// The machine's shell: known folders, news of changes, COM and shell links.
#include <cstring>
#include <memory>
#include <thread>

#include "machine/desktop/desktop.h"
#include "machine/operations.h"
#include "machine/shell/shell_link.h"
#include "support/machine_test.h"

namespace pikel::simulated {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

constexpr int kCreate = 0x8000;
constexpr int kUnverified = 0x4000;
constexpr HRESULT kNoPath = static_cast<HRESULT>(0x80070003);
constexpr char kShellFolders[] = "HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

std::string Folder(int id, HRESULT expected = S_OK, DWORD flags = 0) {
    char path[MAX_PATH] = "####";
    EXPECT_EQ(SHGetFolderPathA(nullptr, id, nullptr, flags, path), expected) << id;
    return path;
}

// ---- folders ----------------------------------------------------------------------------------------------------

TEST(ShellFolders, StandWhereEachSystemHasThem) {
    struct Case {
        const char* system;
        const char* programs;
        const char* ofAllUsers;
    };
    constexpr Case kCases[] = {
        {"win98", "C:\\WINDOWS\\Start Menu\\Programs", "C:\\WINDOWS\\Start Menu\\Programs"},
        {"nt4", "C:\\WINNT\\Profiles\\Administrator\\Start Menu\\Programs",
         "C:\\WINNT\\Profiles\\All Users\\Start Menu\\Programs"},
        {"win2000", "C:\\Documents and Settings\\Administrator\\Start Menu\\Programs",
         "C:\\Documents and Settings\\All Users\\Start Menu\\Programs"},
        {"xp", "C:\\Documents and Settings\\Administrator\\Start Menu\\Programs",
         "C:\\Documents and Settings\\All Users\\Start Menu\\Programs"},
        {"vista", "C:\\Users\\Administrator\\AppData\\Roaming\\Microsoft\\Windows\\Start Menu\\Programs",
         "C:\\ProgramData\\Microsoft\\Windows\\Start Menu\\Programs"},
    };
    for (const Case& one : kCases) {
        TestMachine test(one.system);
        EXPECT_EQ(Folder(CSIDL_PROGRAMS), one.programs);
        EXPECT_EQ(Folder(CSIDL_COMMON_PROGRAMS), one.ofAllUsers);
        EXPECT_TRUE(test->Files().IsDirectory(one.ofAllUsers));
        EXPECT_EQ(Folder(0x24), test->System().windowsDirectory);
        EXPECT_EQ(Folder(0x25), test->System().systemDirectory);
        EXPECT_EQ(Folder(0x26), "C:\\Program Files");
        EXPECT_EQ(Folder(0x0b) + "\\Programs", one.programs);
        EXPECT_EQ(Folder(0x16) + "\\Programs", one.ofAllUsers);
    }
}

class ShellTest : public MachineTest {};

TEST_F(ShellTest, MissingFolderIsMadeOnDemandAlone) {
    Machine().Registry().SetText(kShellFolders, "Common Programs", "C:\\a\\b");
    EXPECT_EQ(Folder(CSIDL_COMMON_PROGRAMS, kNoPath), "");
    EXPECT_EQ(Folder(CSIDL_COMMON_PROGRAMS | kUnverified), "C:\\a\\b");
    EXPECT_FALSE(Machine().Files().Exists("C:\\a"));
    EXPECT_EQ(Folder(CSIDL_COMMON_PROGRAMS | kCreate), "C:\\a\\b");
    EXPECT_TRUE(Machine().Files().IsDirectory("C:\\a\\b"));
    Machine().Files().Deny("C:\\c");
    Machine().Registry().SetText(kShellFolders, "Common Programs", "C:\\c\\d");
    EXPECT_EQ(Folder(CSIDL_COMMON_PROGRAMS | kCreate, static_cast<HRESULT>(0x80070005)), "");
}

TEST_F(ShellTest, UnknownFoldersAreRefused) {
    EXPECT_EQ(Folder(0x7f, E_INVALIDARG), "");
    EXPECT_EQ(Folder(CSIDL_PROGRAMS, E_INVALIDARG, 2), "####");
    EXPECT_EQ(SHGetFolderPathA(nullptr, CSIDL_PROGRAMS, nullptr, 0, nullptr), E_INVALIDARG);
    Machine().Registry().SetText(kShellFolders, "Common Programs", "C:\\" + std::string(300, 'x'));
    EXPECT_EQ(Folder(CSIDL_COMMON_PROGRAMS, E_INVALIDARG), "");
}

TEST_F(ShellTest, ChangesAreKept) {
    SHChangeNotify(SHCNE_UPDATEITEM, SHCNF_PRINTERA, "P1", nullptr);
    SHChangeNotify(1, 0x1001, "C:\\a", "C:\\b");
    SHChangeNotify(2, 3, reinterpret_cast<LPCVOID>(1), reinterpret_cast<LPCVOID>(2));
    const std::vector<ShellChange>& changes = Machine().Desktop().shellChanges;
    ASSERT_EQ(changes.size(), 3u);
    EXPECT_EQ(changes[0].event, LONG{SHCNE_UPDATEITEM});
    EXPECT_EQ(changes[0].item1, "P1");
    EXPECT_EQ(changes[0].item2, "");
    EXPECT_EQ(changes[1].item1, "C:\\a");
    EXPECT_EQ(changes[1].item2, "C:\\b");
    EXPECT_EQ(changes[2].item1, "") << "numbers are no texts";
}

// ---- COM --------------------------------------------------------------------------------------------------------

HRESULT Create(void** object, REFCLSID class_ = CLSID_ShellLink, REFIID interface_ = IID_IShellLinkA,
               DWORD context = CLSCTX_INPROC_SERVER, LPUNKNOWN outer = nullptr) {
    return CoCreateInstance(class_, outer, context, interface_, object);
}

TEST_F(ShellTest, ComIsCountedThreadByThread) {
    void* object = nullptr;
    EXPECT_EQ(Create(&object), CO_E_NOTINITIALIZED);
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
    std::thread([] {
        void* other = nullptr;
        EXPECT_EQ(Create(&other), CO_E_NOTINITIALIZED);
    }).join();
    CoUninitialize();
    ASSERT_EQ(Create(&object), S_OK);
    static_cast<IShellLinkA*>(object)->Release();
    CoUninitialize();
    EXPECT_EQ(Create(&object), CO_E_NOTINITIALIZED);
    EXPECT_EQ(CoInitialize(&object), E_INVALIDARG);
    EXPECT_EQ(Machine().Handles().OpenCount(), 0u);
}

TEST_F(ShellTest, ComLeftOpenIsSeen) {
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    EXPECT_THAT(Machine().Handles().Describe(), ElementsAre("COM object COM of a thread"));
    Test().AllowOpen();
}

TEST_F(ShellTest, ComOfAnotherMachineDoesNotCount) {
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    Test().AllowOpen();
    Start("vista");
    void* object = nullptr;
    EXPECT_EQ(Create(&object), CO_E_NOTINITIALIZED);
}

TEST_F(ShellTest, UninitialisingTooOftenIsAMisuse) {
    CoUninitialize();
    EXPECT_THAT(Machine().Handles().Misuses(), ElementsAre("CoUninitialize on a thread without COM"));
    Test().AllowOpen();
}

class ShellLinkTest : public ShellTest {
  protected:
    ShellLinkTest() { EXPECT_EQ(CoInitialize(nullptr), S_OK); }
    ~ShellLinkTest() override { CoUninitialize(); }
    struct Releaser {
        void operator()(IUnknown* object) const { object->Release(); }
    };
    using Link = std::unique_ptr<IShellLinkA, Releaser>;
    using File = std::unique_ptr<IPersistFile, Releaser>;
    static Link MakeLink() {
        void* object = nullptr;
        EXPECT_EQ(Create(&object), S_OK);
        return Link(static_cast<IShellLinkA*>(object));
    }
    static File FileOf(const Link& link) {
        void* object = nullptr;
        EXPECT_EQ(link->QueryInterface(IID_IPersistFile, &object), S_OK);
        return File(static_cast<IPersistFile*>(object));
    }
    static HRESULT Save(const Link& link, std::u16string_view path) {
        return FileOf(link)->Save(std::u16string(path).c_str(), TRUE);
    }
};

TEST_F(ShellLinkTest, IsTheOneClass) {
    void* object = reinterpret_cast<void*>(1);
    EXPECT_EQ(Create(&object, IID_IUnknown), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(Create(&object, CLSID_ShellLink, IID_IShellLinkA, 4), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(Create(&object, CLSID_ShellLink, CLSID_ShellLink), E_NOINTERFACE);
    EXPECT_EQ(Create(nullptr), E_INVALIDARG);
    const Link link = MakeLink();
    EXPECT_EQ(Create(&object, CLSID_ShellLink, IID_IUnknown, 1, link.get()), static_cast<HRESULT>(0x80040110));
}

TEST_F(ShellLinkTest, CountsItsReferencesOverBothInterfaces) {
    Link link = MakeLink();
    EXPECT_EQ(Machine().Handles().OpenCount(HandleKind::ComObject), 2u);  // the thread's and the link's
    File file = FileOf(link);
    link.reset();
    EXPECT_EQ(Machine().Handles().OpenCount(HandleKind::ComObject), 2u);
    void* object = nullptr;
    EXPECT_EQ(file->QueryInterface(IID_IUnknown, &object), S_OK);
    EXPECT_EQ(static_cast<IUnknown*>(object)->Release(), 1u);
    EXPECT_EQ(file->QueryInterface(IID_IPersistFile, nullptr), E_INVALIDARG);
    file.reset();
    EXPECT_EQ(Machine().Handles().OpenCount(HandleKind::ComObject), 1u);
}

TEST_F(ShellLinkTest, SavesItselfAsText) {
    const Link link = MakeLink();
    EXPECT_EQ(link->SetPath("C:\\x.exe"), S_OK);
    EXPECT_EQ(link->SetWorkingDirectory("C:\\"), S_OK);
    EXPECT_EQ(link->SetArguments("/a=1"), S_OK);
    EXPECT_EQ(link->SetDescription("gr\xfc\xdf\r\ngott"), S_OK);
    EXPECT_EQ(link->SetIconLocation("C:\\x,y.ico", -2), S_OK);
    EXPECT_EQ(Save(link, u"C:\\a.lnk"), S_OK);
    EXPECT_EQ(ReadFileOn(Machine(), "C:\\a.lnk"),
              "[Shell Link]\r\nTarget=C:\\x.exe\r\nWorking Directory=C:\\\r\nArguments=/a=1\r\n"
              "Description=gr\xc3\xbc\xc3\x9f  gott\r\nIcon=C:\\x,y.ico,-2\r\n");
}

TEST_F(ShellLinkTest, IsReadBack) {
    const Link link = MakeLink();
    link->SetPath("C:\\x.exe");
    link->SetWorkingDirectory("C:\\w");
    link->SetArguments("/a=1");
    link->SetDescription("gr\xfc\xdf gott");
    link->SetIconLocation("C:\\x,y.ico", -2);
    ASSERT_EQ(Save(link, u"C:\\a.lnk"), S_OK);
    const Link read = MakeLink();
    EXPECT_EQ(FileOf(read)->Load(u"C:\\a.lnk", 0), S_OK);
    char text[100] = "";
    int icon = 0;
    EXPECT_EQ(read->GetPath(text, sizeof text, nullptr, 0), S_OK);
    EXPECT_STREQ(text, "C:\\x.exe");
    EXPECT_EQ(read->GetWorkingDirectory(text, sizeof text), S_OK);
    EXPECT_STREQ(text, "C:\\w");
    EXPECT_EQ(read->GetArguments(text, sizeof text), S_OK);
    EXPECT_STREQ(text, "/a=1");
    EXPECT_EQ(read->GetDescription(text, 5), S_OK);
    EXPECT_STREQ(text, "gr\xfc\xdf");
    EXPECT_EQ(read->GetIconLocation(text, sizeof text, &icon), S_OK);
    EXPECT_STREQ(text, "C:\\x,y.ico");
    EXPECT_EQ(icon, -2);
    EXPECT_EQ(read->GetPath(nullptr, 0, nullptr, 0), E_INVALIDARG);
}

TEST_F(ShellLinkTest, LoadsLinksAlone) {
    WriteFileOn(Machine(), "C:\\text.lnk", "Target=C:\\x.exe\r\n");
    WriteFileOn(Machine(), "C:\\empty.lnk", "");
    WriteFileOn(Machine(), "C:\\bare.lnk", "[Shell Link]");
    const Link link = MakeLink();
    EXPECT_EQ(FileOf(link)->Load(u"C:\\text.lnk", 0), E_FAIL);
    EXPECT_EQ(FileOf(link)->Load(u"C:\\empty.lnk", 0), E_FAIL);
    EXPECT_EQ(FileOf(link)->Load(u"C:\\bare.lnk", 0), S_OK);
    EXPECT_LT(FileOf(link)->Load(u"C:\\missing.lnk", 0), 0);
    EXPECT_EQ(FileOf(link)->Load(nullptr, 0), E_INVALIDARG);
}

TEST_F(ShellLinkTest, NeedsAFolderAndAFileThatCanBeWritten) {
    const Link link = MakeLink();
    EXPECT_LT(Save(link, u"C:\\missing\\a.lnk"), 0);
    EXPECT_FALSE(Machine().Files().Exists("C:\\missing"));
    EXPECT_LT(Save(link, u"C:\\WINDOWS"), 0);
    EXPECT_LT(Save(link, u""), 0);
    EXPECT_EQ(FileOf(link)->Save(nullptr, TRUE), E_INVALIDARG);
    EXPECT_EQ(Save(link, u"C:\\a.lnk"), S_OK);
    const auto held = Machine().Files().HoldOpen("C:\\a.lnk");
    EXPECT_EQ(Save(link, u"C:\\a.lnk"), static_cast<HRESULT>(0x80070020));
}

TEST_F(ShellLinkTest, RefusesWhatItCannotKeep) {
    const Link link = MakeLink();
    EXPECT_EQ(link->SetPath(nullptr), E_INVALIDARG);
    EXPECT_EQ(link->SetPath(std::string(259, 'x').c_str()), S_OK);
    EXPECT_EQ(link->SetPath(std::string(260, 'x').c_str()), E_INVALIDARG);
    EXPECT_EQ(link->SetDescription(nullptr), E_INVALIDARG);
    EXPECT_LT(link->SetIDList(nullptr), 0);
    EXPECT_LT(link->SetRelativePath("x", 0), 0);
    CLSID class_{};
    EXPECT_EQ(FileOf(link)->GetClassID(&class_), S_OK);
    EXPECT_TRUE(class_ == CLSID_ShellLink);
    WORD hotkey = 0;
    link->SetHotkey(0x41);
    EXPECT_EQ(link->GetHotkey(&hotkey), S_OK);
    EXPECT_EQ(hotkey, 0x41);
    int show = 0;
    link->SetShowCmd(3);
    EXPECT_EQ(link->GetShowCmd(&show), S_OK);
    EXPECT_EQ(show, 3);
}

}  // namespace
}  // namespace pikel::simulated
