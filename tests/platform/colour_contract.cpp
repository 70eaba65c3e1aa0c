// The contract of colour management's operations.
#include <string>

#include "platform/contract.h"

namespace pikel {
namespace {

using contract::WineException;

constexpr WineException kWine[] = {
    {"a small buffer for the colour folder gives 122", "gives 234"},
    {"a profile that is installed gives 183", "gives 80"},
    {"a file that is no profile gives 2011", "copies it"},
    {"a bare name is looked for in the colour folder", "takes it from the current folder"},
    {"a profile is linked to printers alone", "links it to any name, and records nothing"},
};

bool Holds(std::string_view statement, bool holds) {
    const auto result = contract::Contract(kWine, statement, holds);
    EXPECT_TRUE(result);
    return result;
}

std::string Profile() {
    std::string bytes(200, '\0');
    bytes[3] = static_cast<char>(bytes.size());
    bytes.replace(12, 12, "prtrRGB XYZ ");
    bytes.replace(36, 4, "acsp");
    return bytes;
}

class ColourContract : public contract::Test {
  protected:
    ~ColourContract() override {
        LookedUp<looked_up::UninstallColorProfileA> uninstall("mscms.dll", "UninstallColorProfileA");
        for (const char* name : {"contract.icc", "conbad.icc", "conbare.icc"}) {
            const std::string path = Folder() + "\\" + name;
            uninstall.Call()(nullptr, path.c_str(), TRUE);
            Platform().DeleteFileA(path.c_str());
        }
    }
    static std::string Folder() {
        LookedUp<looked_up::GetColorDirectoryA> get("mscms.dll", "GetColorDirectoryA");
        char folder[MAX_PATH] = "";
        DWORD size = sizeof folder;
        EXPECT_EQ(CODE_OF(get.Call()(nullptr, folder, &size)), 0u);
        return folder;
    }
    static DWORD Install(const std::string& profile) {
        LookedUp<looked_up::InstallColorProfileA> install("mscms.dll", "InstallColorProfileA");
        return CODE_OF(install.Call()(nullptr, profile.c_str()));
    }
    static DWORD Link(const char* profile, const char* device) {
        LookedUp<looked_up::AssociateColorProfileWithDeviceA> link("mscms.dll", "AssociateColorProfileWithDeviceA");
        return CODE_OF(link.Call()(nullptr, profile, device));
    }
};

TEST_P(ColourContract, FolderIsTold) {
    EXPECT_TRUE(contract::FileExists(Folder()));
    LookedUp<looked_up::GetColorDirectoryA> get("mscms.dll", "GetColorDirectoryA");
    char folder[4];
    DWORD size = sizeof folder;
    Holds("a small buffer for the colour folder gives 122",
          CODE_OF(get.Call()(nullptr, folder, &size)) == ERROR_INSUFFICIENT_BUFFER);
    EXPECT_GE(size, Folder().size());
}

TEST_P(ColourContract, ProfileIsCopiedToTheFolder) {
    const std::string source = contract::TemporaryFolder() + "contract.icc";
    contract::WriteFile(source, Profile());
    ASSERT_EQ(Install(source), 0u);
    EXPECT_TRUE(contract::FileExists(source));
    EXPECT_TRUE(contract::FileExists(Folder() + "\\contract.icc"));
    const DWORD again = Install(source);
    EXPECT_NE(again, 0u);
    Holds("a profile that is installed gives 183", again == ERROR_ALREADY_EXISTS);
    EXPECT_EQ(Install(contract::TemporaryFolder() + "nosuch.icc"), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(Install("nosuch.icc"), DWORD{ERROR_FILE_NOT_FOUND});
    Holds("a profile is linked to printers alone", Link("contract.icc", "No Such Printer") != 0);
    EXPECT_NE(Link("nosuch.icc", "No Such Printer"), 0u);
    EXPECT_EQ(Link(nullptr, "No Such Printer"), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Link("contract.icc", nullptr), DWORD{ERROR_INVALID_PARAMETER});
    LookedUp<looked_up::UninstallColorProfileA> uninstall("mscms.dll", "UninstallColorProfileA");
    EXPECT_EQ(CODE_OF(uninstall.Call()(nullptr, (Folder() + "\\contract.icc").c_str(), TRUE)), 0u);
    EXPECT_FALSE(contract::FileExists(Folder() + "\\contract.icc"));
    Platform().DeleteFileA(source.c_str());
}

TEST_P(ColourContract, ProfilesAloneAreInstalled) {
    const std::string source = contract::TemporaryFolder() + "conbad.icc";
    std::string bytes = Profile();
    bytes[36] = 'x';
    contract::WriteFile(source, bytes);
    Holds("a file that is no profile gives 2011", Install(source) == ERROR_INVALID_PROFILE);
    Platform().DeleteFileA(source.c_str());
}

TEST_P(ColourContract, BareNameIsThatOfAFileInTheFolder) {
    contract::WriteFile(Folder() + "\\conbare.icc", Profile());
    Holds("a bare name is looked for in the colour folder", Install("conbare.icc") == 0);
}

INSTANTIATE_CONTRACT(ColourContract, "win2000", "xp", "xp-x64", "vista", "vista-x64");

}  // namespace
}  // namespace pikel
