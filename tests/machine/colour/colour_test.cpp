// Colour profiles.
#include "machine/colour/colour.h"

#include "support/spooler_test.h"
#include "machine/services/services.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace simulated;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A profile of a device class.
std::string Profile(std::string_view deviceClass = "prtr") {
    std::string bytes(200, '\0');
    bytes.replace(12, 4, deviceClass);
    bytes.replace(36, 4, "acsp");
    bytes.replace(48, 8, "TARVL500");
    return bytes;
}

class ColourTest : public SpoolerTest {
  protected:
    std::string Folder() { return ColourProfiles(Machine()).Directory(); }
    void WriteProfile(const std::string& path, std::string_view deviceClass = "prtr") {
        WriteFileOn(Machine(), path, Profile(deviceClass));
    }
    DWORD Install(const std::string& profile) { return CODE_OF(InstallColorProfileA(nullptr, profile.c_str())); }
    DWORD Link(const char* profile, const char* printer) {
        return CODE_OF(AssociateColorProfileWithDeviceA(nullptr, profile, printer));
    }
    DWORD Unlink(const char* profile, const char* printer) {
        return CODE_OF(DisassociateColorProfileFromDeviceA(nullptr, profile, printer));
    }
    DWORD Uninstall(const char* profile, bool deletes) {
        return CODE_OF(UninstallColorProfileA(nullptr, profile, deletes));
    }
    std::string IcmKey() {
        return std::string("HKLM\\SOFTWARE\\Microsoft\\") + (Machine().Is9x() ? "Windows" : "Windows NT") +
               "\\CurrentVersion\\ICM\\";
    }
    void PreparePrinter() {
        InstallDriver();
        ASSERT_EQ(AddPrinter(), 0u);
        for (const char* name : {"one.icc", "two.icc"}) {
            WriteProfile(Folder() + "\\" + name);
            ASSERT_EQ(Install(name), 0u);
        }
    }
    static int Collect(LPSTR path, LPARAM list) {
        auto& paths = *reinterpret_cast<std::vector<std::string>*>(list);
        paths.emplace_back(path);
        return paths.size() < 2 ? 1 : 0;
    }
    std::vector<std::string> ProfilesOf(const char* printer, int* answer = nullptr) {
        std::vector<std::string> paths;
        const HDC context = CreateICA("WINSPOOL", printer, nullptr, nullptr);
        EXPECT_NE(context, nullptr) << lastError;
        const int last = EnumICMProfilesA(context, Collect, reinterpret_cast<LPARAM>(&paths));
        if (answer != nullptr) {
            *answer = last;
        }
        EXPECT_EQ(CODE_OF(DeleteDC(context)), 0u);
        return paths;
    }
};

class ColourOfEverySystem : public ColourTest, public ::testing::WithParamInterface<std::string> {
  protected:
    ColourOfEverySystem() { Start(GetParam()); }
};

TEST_P(ColourOfEverySystem, FolderIsThatOfTheFamily) {
    const std::string expected =
        Machine().System().systemDirectory + (Machine().Is9x() ? "\\COLOR" : "\\spool\\drivers\\color");
    char text[MAX_PATH] = "";
    DWORD size = sizeof text;
    EXPECT_EQ(CODE_OF(GetColorDirectoryA(nullptr, text, &size)), 0u);
    EXPECT_EQ(text, expected);
    EXPECT_EQ(size, expected.size() + 1);
    size = static_cast<DWORD>(expected.size());
    EXPECT_EQ(CODE_OF(GetColorDirectoryA(nullptr, text, &size)), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(size, expected.size() + 1);
    size = 0;
    EXPECT_EQ(CODE_OF(GetColorDirectoryA(nullptr, nullptr, &size)), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(CODE_OF(GetColorDirectoryA(nullptr, text, nullptr)), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(CODE_OF(GetColorDirectoryA("\\\\other", text, &size)), DWORD{ERROR_NOT_SUPPORTED});
}

TEST_P(ColourOfEverySystem, ProfileIsInstalledAndLinked) {
    PreparePrinter();
    EXPECT_EQ(Registry().Find(IcmKey() + "prtr", "one.icc")->data, std::string("TARVL500\0\0\0\0\0\0\0\0", 16));
    EXPECT_EQ(Link("one.icc", "Office"), 0u);
    EXPECT_EQ(Link("TWO.ICC", "OFFICE"), 0u);
    EXPECT_THAT(ColourProfiles(Machine()).LinkedTo("Office"), ElementsAre("one.icc", "TWO.ICC"));
    const std::string key = Machine().Is9x() ? "PrinterDriverData" : "CopyFiles\\ICM";
    EXPECT_THAT(Registry().Texts(PrintKey("Printers\\Office\\" + key), "Files"), ElementsAre("one.icc", "TWO.ICC"));
    Test().Reopen();
    int answer = 9;
    EXPECT_THAT(ProfilesOf("Office", &answer), ElementsAre(Folder() + "\\one.icc", Folder() + "\\TWO.ICC"));
    EXPECT_EQ(answer, 0);
    EXPECT_EQ(Unlink("ONE.icc", "Office"), 0u);
    EXPECT_EQ(Unlink("two.icc", "Office"), 0u);
    EXPECT_THAT(ProfilesOf("Office", &answer), IsEmpty());
    EXPECT_EQ(answer, -1);
}

INSTANTIATE_ON_EVERY_SYSTEM(ColourOfEverySystem);

// ---- installing -----------------------------------------------------------------------------------------------------

TEST_F(ColourTest, InstallsFromWhereTheProfileIs) {
    WriteProfile("C:\\Setup\\path.icc");
    WriteProfile(Folder() + "\\here.icc", "mntr");
    WriteProfile(DriverFolder() + "\\driver.icm", "abst");
    EXPECT_EQ(Install("C:\\Setup\\path.icc"), 0u);
    EXPECT_EQ(Install("here.icc"), 0u);
    EXPECT_EQ(Install("driver.icm"), 0u);
    for (const char* name : {"path.icc", "here.icc", "driver.icm"}) {
        EXPECT_TRUE(FileIsThere(Folder() + "\\" + name)) << name;
        EXPECT_TRUE(ColourProfiles(Machine()).IsInstalled(name)) << name;
    }
    EXPECT_TRUE(FileIsThere("C:\\Setup\\path.icc"));
    EXPECT_NE(Registry().Find(IcmKey() + "mntr", "here.icc"), nullptr);
    EXPECT_NE(Registry().Find(IcmKey() + "abst", "driver.icm"), nullptr);
}

TEST_F(ColourTest, InstallingTellsWhatIsWrong) {
    WriteProfile("C:\\Setup\\good.icc");
    EXPECT_EQ(Install("C:\\Setup\\good.icc"), 0u);
    EXPECT_EQ(Install("C:\\Setup\\good.icc"), DWORD{ERROR_ALREADY_EXISTS});
    EXPECT_EQ(Install("GOOD.icc"), DWORD{ERROR_ALREADY_EXISTS});
    EXPECT_EQ(Install("C:\\Setup\\missing.icc"), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(Install("missing.icc"), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(Install("C:\\Setup"), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(Install(""), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Install("C:\\Setup\\"), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(CODE_OF(InstallColorProfileA(nullptr, nullptr)), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(CODE_OF(InstallColorProfileA("\\\\other", "good.icc")), DWORD{ERROR_NOT_SUPPORTED});
}

TEST_F(ColourTest, InstallsProfilesAlone) {
    std::string signature = Profile();
    signature[36] = 'x';
    std::string deviceClass = Profile();
    deviceClass[12] = '\\';
    for (const std::string& bytes : {signature, deviceClass, Profile().substr(0, 127), std::string()}) {
        WriteFileOn(Machine(), "C:\\Setup\\bad.icc", bytes);
        EXPECT_EQ(Install("C:\\Setup\\bad.icc"), DWORD{ERROR_INVALID_PROFILE});
        EXPECT_FALSE(FileIsThere(Folder() + "\\bad.icc"));
    }
    WriteFileOn(Machine(), "C:\\Setup\\bad.icc", Profile().substr(0, 128));
    EXPECT_EQ(Install("C:\\Setup\\bad.icc"), 0u);
}

TEST_F(ColourTest, FailedCopyInstallsNothing) {
    WriteProfile("C:\\Setup\\a.icc");
    WriteProfile(Folder() + "\\a.icc");
    {
        const Files::Held held = Machine().Files().HoldOpen(Folder() + "\\a.icc");
        EXPECT_EQ(Install("C:\\Setup\\a.icc"), DWORD{ERROR_SHARING_VIOLATION});
    }
    {
        const Files::Held held = Machine().Files().HoldOpen("C:\\Setup\\a.icc");
        EXPECT_EQ(Install("C:\\Setup\\a.icc"), DWORD{ERROR_SHARING_VIOLATION});
    }
    EXPECT_FALSE(ColourProfiles(Machine()).IsInstalled("a.icc"));
    EXPECT_EQ(Install("C:\\Setup\\a.icc"), 0u);
}

TEST_F(ColourTest, UninstallsWithOrWithoutTheFile) {
    PreparePrinter();
    EXPECT_EQ(Uninstall("one.icc", false), 0u);
    EXPECT_TRUE(FileIsThere(Folder() + "\\one.icc"));
    EXPECT_EQ(Uninstall("one.icc", true), DWORD{ERROR_PROFILE_NOT_FOUND});
    EXPECT_EQ(Uninstall((Folder() + "\\TWO.icc").c_str(), true), 0u);
    EXPECT_FALSE(FileIsThere(Folder() + "\\two.icc"));
    EXPECT_EQ(Uninstall("", true), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Uninstall(nullptr, true), DWORD{ERROR_INVALID_PARAMETER});
}

// ---- links ----------------------------------------------------------------------------------------------------------

TEST_F(ColourTest, LinkingTellsWhatIsWrong) {
    PreparePrinter();
    EXPECT_EQ(Link("missing.icc", "Office"), DWORD{ERROR_PROFILE_NOT_FOUND});
    EXPECT_EQ(Link("one.icc", "Unknown"), DWORD{ERROR_INVALID_PRINTER_NAME});
    EXPECT_EQ(Link(nullptr, "Office"), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Link("one.icc", nullptr), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Link("one.icc", "Office"), 0u);
    EXPECT_EQ(Link("C:\\anywhere\\ONE.icc", "Office"), DWORD{ERROR_ALREADY_EXISTS});
    EXPECT_EQ(Unlink("two.icc", "Office"), DWORD{ERROR_PROFILE_NOT_ASSOCIATED_WITH_DEVICE});
    EXPECT_EQ(Unlink("one.icc", "Unknown"), DWORD{ERROR_INVALID_PRINTER_NAME});
    EXPECT_EQ(Unlink("", "Office"), DWORD{ERROR_INVALID_PARAMETER});
}

TEST_F(ColourTest, WideCallsDoTheSame) {
    Start("vista");
    PreparePrinter();
    EXPECT_EQ(CODE_OF(WcsAssociateColorProfileWithDevice(0, u"one.icc", u"Office")), 0u);
    EXPECT_EQ(CODE_OF(WcsAssociateColorProfileWithDevice(0, u"one.icc", u"Office")), DWORD{ERROR_ALREADY_EXISTS});
    EXPECT_EQ(CODE_OF(WcsAssociateColorProfileWithDevice(1, u"two.icc", u"Office")), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(CODE_OF(WcsAssociateColorProfileWithDevice(0, nullptr, u"Office")), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_THAT(ColourProfiles(Machine()).LinkedTo("Office"), ElementsAre("one.icc"));
    EXPECT_EQ(CODE_OF(WcsDisassociateColorProfileFromDevice(0, u"ONE.ICC", u"Office")), 0u);
    EXPECT_EQ(CODE_OF(WcsDisassociateColorProfileFromDevice(1, u"ONE.ICC", u"Office")), DWORD{ERROR_INVALID_PARAMETER});
}

TEST_F(ColourTest, ChangesNeedRightsAndLinksTheSpooler) {
    PreparePrinter();
    Machine().Services().SetState("Spooler", SERVICE_STOPPED);
    EXPECT_EQ(Link("one.icc", "Office"), DWORD{RPC_S_SERVER_UNAVAILABLE});
    EXPECT_EQ(Unlink("one.icc", "Office"), DWORD{RPC_S_SERVER_UNAVAILABLE});
    EXPECT_EQ(CODE_OF(CreateICA("WINSPOOL", "Office", nullptr, nullptr)), DWORD{RPC_S_SERVER_UNAVAILABLE});
    EXPECT_EQ(Uninstall("two.icc", false), 0u);
    Machine().Services().SetState("Spooler", SERVICE_RUNNING);
    SystemDescription description = Machine().System();
    description.administrator = false;
    Machine().SetSystem(description);
    EXPECT_EQ(Install("two.icc"), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(Uninstall("one.icc", false), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(Link("one.icc", "Office"), DWORD{ERROR_ACCESS_DENIED});
}

TEST_F(ColourTest, EnumerationEndsWhereItIsTold) {
    PreparePrinter();
    WriteProfile(Folder() + "\\three.icc");
    ASSERT_EQ(Install("three.icc"), 0u);
    for (const char* name : {"one.icc", "two.icc", "three.icc"}) {
        ASSERT_EQ(Link(name, "Office"), 0u);
    }
    int answer = 9;
    EXPECT_EQ(ProfilesOf("Office", &answer).size(), 2u);  // then Collect answers 0
    EXPECT_EQ(answer, 0);
}

TEST_F(ColourTest, ContextsAreThoseOfPrinters) {
    EXPECT_EQ(CODE_OF(CreateICA("WINSPOOL", "Unknown", nullptr, nullptr)), DWORD{ERROR_INVALID_PRINTER_NAME});
    EXPECT_EQ(CODE_OF(CreateICA("WINSPOOL", nullptr, nullptr, nullptr)), DWORD{ERROR_INVALID_PRINTER_NAME});
    EXPECT_EQ(CODE_OF(DeleteDC(nullptr)), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(EnumICMProfilesA(nullptr, Collect, 0), -1);
    PreparePrinter();
    const HDC context = CreateICA("WINSPOOL", "office", nullptr, nullptr);
    EXPECT_EQ(EnumICMProfilesA(context, nullptr, 0), -1);
    EXPECT_EQ(lastError, DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_TRUE(DeleteDC(context));
    Test().AllowOpen();
}

}  // namespace
}  // namespace pikel
