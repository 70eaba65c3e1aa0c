// The contract of the shell's, COM's and the network's operations.
#include <string>
#include <vector>

#include "platform/contract.h"

namespace pikel {
namespace {

using contract::WineException;

constexpr WineException kWine[] = {
    {"the top of the network can be listed", "has no network provider"},
    {"the print providers can be listed", "lists its printers"},
};

bool Holds(std::string_view statement, bool holds) {
    const auto result = contract::Contract(kWine, statement, holds);
    EXPECT_TRUE(result);
    return result;
}

template <class Interface>
struct Releaser {
    using Value = Interface*;
    static Value Empty() { return nullptr; }
    static void Close(Value value) { value->Release(); }
};
using Link = Owned<Releaser<IShellLinkA>>;
using LinkFile = Owned<Releaser<IPersistFile>>;

std::basic_string<WCHAR> Wide(const std::string& text) {
    return {text.begin(), text.end()};
}

class ShellContract : public contract::Test {
  protected:
    static Link MakeLink() {
        void* object = nullptr;
        EXPECT_EQ(Platform().CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA, &object),
                  S_OK);
        return Link(static_cast<IShellLinkA*>(object));
    }
    static LinkFile FileOf(const Link& link) {
        void* object = nullptr;
        EXPECT_EQ(link.Get()->QueryInterface(IID_IPersistFile, &object), S_OK);
        return LinkFile(static_cast<IPersistFile*>(object));
    }
};
INSTANTIATE_CONTRACT(ShellContract, "win98", "win2000", "xp", "vista-x64");

class NetworkContract : public contract::Test {};
INSTANTIATE_CONTRACT(NetworkContract, "win98", "xp");

TEST_P(ShellContract, FolderOfTheProgramsIsTold) {
    LookedUp<looked_up::SHGetFolderPathA> getFolderPath("shfolder.dll", "SHGetFolderPathA");
    ASSERT_TRUE(static_cast<bool>(getFolderPath)) << getFolderPath.Status();
    for (const DWORD id : {DWORD{CSIDL_PROGRAMS}, DWORD{CSIDL_COMMON_PROGRAMS}}) {
        char folder[MAX_PATH] = "";
        EXPECT_EQ(getFolderPath.Call()(nullptr, static_cast<int>(id), nullptr, 0, folder), S_OK);
        EXPECT_TRUE(contract::FileExists(folder)) << folder;
        EXPECT_FALSE(std::string(folder).ends_with("\\"));
    }
    char folder[MAX_PATH] = "";
    EXPECT_LT(getFolderPath.Call()(nullptr, 0x7f, nullptr, 0, folder), 0);
    EXPECT_STREQ(folder, "");
}

TEST_P(ShellContract, ThreadNeedsCom) {
    void* object = nullptr;
    EXPECT_EQ(Platform().CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA, &object),
              CO_E_NOTINITIALIZED);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(Platform().CoInitialize(nullptr), S_OK);
    EXPECT_EQ(Platform().CoInitialize(nullptr), S_FALSE);
    Platform().CoUninitialize();
    EXPECT_TRUE(static_cast<bool>(MakeLink()));
    constexpr GUID kUnknownClass = {0x5f1a7b01, 0x1111, 0x2222, {1, 2, 3, 4, 5, 6, 7, 8}};
    EXPECT_EQ(Platform().CoCreateInstance(kUnknownClass, nullptr, CLSCTX_INPROC_SERVER, IID_IShellLinkA, &object),
              REGDB_E_CLASSNOTREG);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(Platform().CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER, kUnknownClass, &object),
              E_NOINTERFACE);
    Platform().CoUninitialize();
}

TEST_P(ShellContract, LinkIsSavedAndReadBack) {
    const std::string path = contract::TemporaryFolder() + "pikel contract.lnk";
    ASSERT_EQ(Platform().CoInitialize(nullptr), S_OK);
    {
        const Link link = MakeLink();
        EXPECT_GE(link.Get()->SetPath("C:\\pikel\\target.exe"), 0);  // S_FALSE for a target that isn't there
        EXPECT_EQ(link.Get()->SetWorkingDirectory("C:\\pikel"), S_OK);
        EXPECT_EQ(link.Get()->SetDescription("described"), S_OK);
        EXPECT_EQ(link.Get()->SetArguments("/a b"), S_OK);
        EXPECT_EQ(link.Get()->SetIconLocation("C:\\pikel\\icon.ico", 3), S_OK);
        EXPECT_EQ(FileOf(link).Get()->Save(Wide(path).c_str(), TRUE), S_OK);
        EXPECT_TRUE(contract::FileExists(path));
        // Once more over the file that is there.
        EXPECT_EQ(FileOf(link).Get()->Save(Wide(path).c_str(), TRUE), S_OK);
        EXPECT_LT(FileOf(link).Get()->Save(Wide(contract::TemporaryFolder() + "nofolder\\a.lnk").c_str(), TRUE), 0);

        const Link read = MakeLink();
        ASSERT_EQ(FileOf(read).Get()->Load(Wide(path).c_str(), 0), S_OK);
        char text[MAX_PATH] = "";
        EXPECT_EQ(read.Get()->GetWorkingDirectory(text, sizeof text), S_OK);
        EXPECT_STREQ(text, "C:\\pikel");
        EXPECT_EQ(read.Get()->GetDescription(text, sizeof text), S_OK);
        EXPECT_STREQ(text, "described");
        EXPECT_EQ(read.Get()->GetArguments(text, sizeof text), S_OK);
        EXPECT_STREQ(text, "/a b");
        int icon = 0;
        EXPECT_EQ(read.Get()->GetIconLocation(text, sizeof text, &icon), S_OK);
        EXPECT_STREQ(text, "C:\\pikel\\icon.ico");
        EXPECT_EQ(icon, 3);
        EXPECT_EQ(read.Get()->GetPath(text, sizeof text, nullptr, 0), S_OK);
        EXPECT_STREQ(text, "C:\\pikel\\target.exe");
    }
    Platform().CoUninitialize();
    EXPECT_TRUE(Platform().DeleteFileA(path.c_str()));
}

TEST_P(ShellContract, NewsOfAPrinterIsTaken) {
    // Nothing comes back; the call is to survive a printer that isn't there.
    Platform().SHChangeNotify(SHCNE_UPDATEITEM, SHCNF_PRINTERA, "No Such Printer", nullptr);
    Platform().SHChangeNotify(SHCNE_NETUNSHARE, SHCNF_PRINTERA, nullptr, nullptr);
}

TEST_P(NetworkContract, TopIsListed) {
    HANDLE handle = nullptr;
    const DWORD code = Platform().WNetOpenEnumA(RESOURCE_GLOBALNET, RESOURCETYPE_ANY, 0, nullptr, &handle);
    if (!Holds("the top of the network can be listed", code == 0) || code != 0) {
        EXPECT_EQ(code, DWORD{ERROR_NO_NETWORK});
        return;
    }
    std::vector<char> bytes(0x4000);
    DWORD count = 0xffffffff;
    DWORD size = static_cast<DWORD>(bytes.size());
    EXPECT_EQ(Platform().WNetEnumResourceA(handle, &count, bytes.data(), &size), 0u);
    EXPECT_NE(count, 0u);
    EXPECT_NE(count, 0xffffffffu);
    EXPECT_EQ(Platform().WNetEnumResourceA(handle, &count, bytes.data(), &size), DWORD{ERROR_NO_MORE_ITEMS});
    EXPECT_EQ(Platform().WNetCloseEnum(handle), 0u);
}

TEST_P(NetworkContract, UnknownProviderHasNoName) {
    char name[260] = "";
    DWORD size = sizeof name;
    EXPECT_EQ(Platform().WNetGetProviderNameA(0x00770000, name, &size), DWORD{ERROR_NO_NETWORK});
    EXPECT_STREQ(name, "");
}

TEST_P(NetworkContract, PrintProvidersAreContainers) {
    constexpr DWORD kContainer = PRINTER_ENUM_CONTAINER;
    DWORD needed = 0;
    DWORD count = 0;
    std::vector<BYTE> bytes;
    if (!Platform().EnumPrintersA(PRINTER_ENUM_NAME, nullptr, 1, nullptr, 0, &needed, &count)) {
        ASSERT_EQ(Platform().GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
        bytes.resize(needed);
        ASSERT_TRUE(Platform().EnumPrintersA(PRINTER_ENUM_NAME, nullptr, 1, bytes.data(), needed, &needed, &count));
    }
    const auto* infos = reinterpret_cast<const PRINTER_INFO_1A*>(bytes.data());
    bool areContainers = count != 0;
    for (DWORD i = 0; i < count; ++i) {
        areContainers = areContainers && (infos[i].Flags & kContainer) != 0;
    }
#ifndef _WIN32
    if (simulated::Current().Is9x()) {
        EXPECT_EQ(count, 0u) << "the 9x family browses through its network providers";
        return;
    }
#endif
    Holds("the print providers can be listed", areContainers);
}

}  // namespace
}  // namespace pikel
