// Names of profiles and values that fill their buffers, and those that are a byte too long.
#include <cstring>
#include <string>
#include <vector>

#include "colour/color_profile_removal.h"
#include "colour/profile_registry.h"
#include "support/calls.h"
#include "support/spooler_setup.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

// ---- names of more than 519 bytes -----------------------------------------------------------------------------------

/// A colour library that writes down the profiles that it gets, and refuses them.
class RefusingLibrary {
  public:
    RefusingLibrary() {
        s_profiles.clear();
        s_deleted.clear();
        s_reported.clear();
        m_replaced.table.GetProcAddress = [](HMODULE, LPCSTR name) -> FARPROC {
            const std::string function = name;
            return function.starts_with("Wcs")         ? AsExport(&TakeWide)
                   : function.starts_with("Uninstall") ? AsExport(&TakeUninstall)
                                                       : AsExport(&TakeNarrow);
        };
        m_replaced.table.DeleteFileA = [](LPCSTR path) -> BOOL {
            s_deleted.emplace_back(path);
            Platform().SetLastError(ERROR_FILE_NOT_FOUND);
            return FALSE;
        };
        m_replaced.table.EnumICMProfilesA = [](HDC, ICMENUMPROCA callback, LPARAM context) -> int {
            for (std::string& profile : s_reported) {
                callback(profile.data(), context);
            }
            return 1;
        };
    }
    /// What every printer reports.
    void Report(const std::string& profile) { s_reported.push_back(profile); }
    std::vector<std::string> TakeProfiles() { return std::exchange(s_profiles, {}); }
    std::vector<std::string> TakeDeleted() { return std::exchange(s_deleted, {}); }

  private:
    template <class Function>
    static FARPROC AsExport(Function* function) {
        return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(function));
    }
    static BOOL Refuse() {
        Platform().SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    static BOOL WINAPI TakeNarrow(PCSTR, PCSTR profile, PCSTR) {
        s_profiles.emplace_back(profile);
        return Refuse();
    }
    static BOOL WINAPI TakeUninstall(PCSTR, PCSTR profile, BOOL) {
        s_profiles.emplace_back(profile);
        return Refuse();
    }
    static BOOL WINAPI TakeWide(DWORD, LPCWSTR profile, LPCWSTR) {
        std::string narrow;
        for (; *profile != 0; ++profile) {
            narrow += static_cast<char>(*profile);
        }
        s_profiles.push_back(narrow);
        return Refuse();
    }
    static inline std::vector<std::string> s_profiles;
    static inline std::vector<std::string> s_deleted;
    static inline std::vector<std::string> s_reported;
    ReplacedOperations m_replaced;
};

class LongProfileNames : public MachineTest {
  protected:
    LongProfileNames() : MachineTest("vista") {
        PutDriver(Machine(), {});
        PutPrinter("Office", "Aurora 500");
        ForgetCalls(Test());
    }
};

TEST_F(LongProfileNames, AreCutTo519BytesWhenTheyAreUninstalledAndDeleted) {
    for (std::size_t length : {518u, 519u, 520u, 521u}) {
        RefusingLibrary library;
        std::string name(length, 'p');
        LPSTR profiles[] = {name.data()};
        EXPECT_EQ(UnInstallColorProfile982k(1, profiles), DWORD{ERROR_FILE_NOT_FOUND}) << "that of the file's deletion";
        const std::string cut = name.substr(0, 519);
        EXPECT_THAT(library.TakeProfiles(), ElementsAre(cut));
        EXPECT_THAT(library.TakeDeleted(), ElementsAre(cut));
    }
}

TEST_F(LongProfileNames, AreComparedAsTheyAreCut) {
    const std::string inUse(519, 'p');
    RefusingLibrary library;
    library.Report(inUse);
    std::string longer = inUse + "x";
    std::string shorter = inUse.substr(1);
    LPSTR profiles[] = {longer.data(), shorter.data()};
    EXPECT_EQ(UnInstallColorProfile982k(2, profiles), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_THAT(library.TakeProfiles(), ElementsAre(shorter)) << "the longer one is the one in use, once it is cut";
}

TEST_F(LongProfileNames, ThatAreReportedLongerAreNotTheOnesThatAreCut) {
    RefusingLibrary library;
    std::string name(520, 'p');
    library.Report(name);
    LPSTR profiles[] = {name.data()};
    EXPECT_EQ(UnInstallColorProfile982k(1, profiles), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_THAT(library.TakeProfiles(), ElementsAre(name.substr(0, 519)));
}

TEST_F(LongProfileNames, AreLoggedAndUnlinkedAsTheyAreCut) {
    for (std::size_t length : {519u, 520u}) {
        RefusingLibrary library;
        std::string name(length, 'p');
        const std::string cut(519, 'p');
        LPSTR profiles[] = {name.data()};
        Test().TurnLogOn(1);
        EXPECT_EQ(DeleteColorProfile982k("Office", 1, profiles), DWORD{ERROR_ACCESS_DENIED});
        EXPECT_THAT(library.TakeProfiles(), ElementsAre(cut));
        EXPECT_THAT(Test().TakeLog(),
                    ElementsAre("DisassociateColorProfileFromDevice(" + cut + "):Disassociated or Error(5)"));
    }
}

TEST_F(LongProfileNames, OfWideFormFillTheirBufferWithANulBehindThem) {
    for (std::size_t length : {517u, 518u}) {
        RefusingLibrary library;
        std::string name(length, 'p');
        LPSTR profiles[] = {name.data()};
        EXPECT_EQ(DeleteColorProfileVista("Office", 1, profiles), DWORD{ERROR_ACCESS_DENIED});
        EXPECT_THAT(library.TakeProfiles(), ElementsAre(name)) << "519 characters are told, the NUL among them";
    }
}

// ---- values of 260 bytes --------------------------------------------------------------------------------------------

class RegisteredProfileLimits : public MachineTest {
  protected:
    RegisteredProfileLimits() : MachineTest("win95") {}
    DWORD Look(const std::string& path) {
        RegistryKey key;
        EXPECT_EQ(Platform().RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Test", 0, KEY_READ, key.Out()), 0);
        return IsProfileRegistered(key.Get(), path.c_str());
    }
    void Set(const std::string& name, const std::string& bytes) {
        Machine().Registry().Set("HKLM\\SOFTWARE\\Test", name, REG_SZ, bytes);
    }
};

TEST_F(RegisteredProfileLimits, DataOf260BytesFitsAndOfOneMoreEndsTheSearch) {
    for (std::size_t length : {259u, 260u, 261u}) {
        Machine().Registry().DeleteKey("HKLM\\SOFTWARE\\Test");
        Set("Other", std::string(length, 'o'));
        Set("Profile00", "C:\\a.icc");
        EXPECT_EQ(Look("C:\\a.icc"), length <= 260 ? 1u : 0u) << length;
    }
}

TEST_F(RegisteredProfileLimits, NameOf259CharactersFitsAndOfOneMoreEndsTheSearch) {
    for (std::size_t length : {258u, 259u, 260u}) {
        Machine().Registry().DeleteKey("HKLM\\SOFTWARE\\Test");
        Set(std::string(length, 'o'), "x");
        Set("Profile00", "C:\\a.icc");
        EXPECT_EQ(Look("C:\\a.icc"), length <= 259 ? 1u : 0u) << length;
    }
}

TEST_F(RegisteredProfileLimits, BuffersAreOf260BytesAndClearedForEveryValue) {
    static PlatformTable below;
    static std::vector<std::string> seen;
    below = Platform();
    seen.clear();
    Set("Long name of a value", "long data of it");
    Set("Profile00", "C:\\b.icc");
    ReplacedOperations replaced;
    replaced.table.RegEnumValueA = [](HKEY key, DWORD index, LPSTR name, LPDWORD nameSize, LPDWORD reserved,
                                      LPDWORD type, LPBYTE data, LPDWORD size) -> LSTATUS {
        EXPECT_EQ(*nameSize, 260u);
        EXPECT_EQ(*size, 260u);
        EXPECT_EQ(std::string(name, 260), std::string(260, '\0'));
        EXPECT_EQ(std::string(reinterpret_cast<char*>(data), 260), std::string(260, '\0'));
        const LSTATUS code = below.RegEnumValueA(key, index, name, nameSize, reserved, type, data, size);
        seen.emplace_back(code == 0 ? name : "(end)");
        return code;
    };
    EXPECT_EQ(Look("C:\\a.icc"), 0u);
    EXPECT_THAT(seen, ElementsAre("Long name of a value", "Profile00", "(end)"));
}

}  // namespace
}  // namespace pikel
