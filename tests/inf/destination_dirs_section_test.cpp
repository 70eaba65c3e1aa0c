// [DestinationDirs], and the directories behind its identifiers on every system.
#include "inf/destination_dirs_section.h"

#include <map>

#include "frame/os_identity.h"
#include "frame/os_route.h"
#include "support/inf_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kText[] = R"(
[Version]
Signature = "$Windows NT$"

[DestinationDirs]
DefaultDestDir = 66000
Profiles = 23,Northlight
System = 11
Again = 66000
NoNumber = here
Negative = -1
Empty =
Three = 10,a,b
)";

class DestinationDirs : public InfTest {};

TEST_F(DestinationDirs, ReadsOneLine) {
    struct Case {
        const char* key;
        DWORD dirId;
        const char* subDir;
    };
    const Case cases[] = {
        {"DefaultDestDir", 66000, "old"},
        {"Profiles", 23, "Northlight"},
        {"System", 11, "old"},
        {"NoNumber", 0, "old"},
        {"Negative", 0xFFFFFFFF, "old"},
        {"Three", 10, "a"},
        // An empty value has no field at all.
        {"Empty", 99, "old"},
    };
    HINF inf = Open(kText);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.key);
        Test().TurnLogOn(1);
        CInfDestinationDirsSection destination;
        destination.m_dwDirID = 99;
        destination.m_strSubDir = "old";
        EXPECT_EQ(destination.GetData(inf, c.key), 0u);
        EXPECT_EQ(destination.m_dwDirID, c.dirId);
        EXPECT_EQ(destination.m_strSubDir, c.subDir) << "what the line lacks stays";
        EXPECT_THAT(Log(), ElementsAre("CInfDestinationDirsSection::GetData() Start",
                                       "CInfDestinationDirsSection::GetData() End(0)"));
    }
}

TEST_F(DestinationDirs, ALineThatIsNotThereGives1359AndLeavesTheRecord) {
    HINF inf = Open(kText);
    Test().TurnLogOn(1);
    CInfDestinationDirsSection destination;
    EXPECT_EQ(destination.m_dwDirID, 0u);
    destination.m_dwDirID = 99;
    destination.m_strSubDir = "old";
    EXPECT_EQ(destination.GetData(inf, "Absent"), 1359u);
    EXPECT_EQ(destination.m_dwDirID, 99u);
    EXPECT_EQ(destination.m_strSubDir, "old");
    EXPECT_THAT(Log(), ElementsAre("CInfDestinationDirsSection::GetData() Start",
                                   "CInfDestinationDirsSection::GetData() End(1359)"));
    faults::FailCall("SetupGetLineTextA", 2, 1234);
    EXPECT_EQ(destination.GetData(inf, "Profiles"), 1234u);
    EXPECT_EQ(destination.m_dwDirID, 99u);
}

TEST_F(DestinationDirs, ListsEveryIdentifierOnceInAscendingOrder) {
    HINF inf = Open(kText);
    Test().TurnLogOn(1);
    std::vector<DWORD> ids = {7};
    EXPECT_EQ(CInfDestinationDirsSection::GetAllDestDirID(inf, ids), 0u);
    EXPECT_THAT(ids, ElementsAre(0u, 10u, 11u, 23u, 66000u, 0xFFFFFFFFu));
    EXPECT_EQ(Log(), Joined({{"CInfDestinationDirsSection::GetAllDestDirID() Start"},
                             Bannered("--- DestinationDirIDs ---", {"0", "10", "11", "23", "66000", "-1"}),
                             {"CInfDestinationDirsSection::GetAllDestDirID() End(0)"}}));
}

TEST_F(DestinationDirs, ALineWithoutTextAddsNoIdentifier) {
    HINF inf = Open("[Version]\nSignature = \"$Windows NT$\"\n[DestinationDirs]\nFirst = 11\nEmpty =\nLast = 10\n");
    Test().TurnLogOn(1);
    std::vector<DWORD> ids;
    EXPECT_EQ(CInfDestinationDirsSection::GetAllDestDirID(inf, ids), 0u);
    EXPECT_THAT(ids, ElementsAre(10u, 11u)) << "0 would be an identifier that the INF doesn't have";
    EXPECT_EQ(Log(), Joined({{"CInfDestinationDirsSection::GetAllDestDirID() Start"},
                             Bannered("--- DestinationDirIDs ---", {"10", "11"}),
                             {"CInfDestinationDirsSection::GetAllDestDirID() End(0)"}}));
}

TEST_F(DestinationDirs, ALineThatBeginsWithACommaHasTheIdentifier0) {
    HINF inf = Open("[Version]\nSignature = \"$Windows NT$\"\n[DestinationDirs]\nFirst = ,Northlight\n");
    std::vector<DWORD> ids;
    EXPECT_EQ(CInfDestinationDirsSection::GetAllDestDirID(inf, ids), 0u);
    EXPECT_THAT(ids, ElementsAre(0u)) << "its first field is there, and empty";
    CInfDestinationDirsSection destination;
    destination.m_dwDirID = 99;
    EXPECT_EQ(destination.GetData(inf, "First"), 0u);
    EXPECT_EQ(destination.m_dwDirID, 0u);
    EXPECT_EQ(destination.m_strSubDir, "Northlight");
}

TEST_F(DestinationDirs, ASectionThatIsNotThereGivesTheLastErrorAndAnEmptyList) {
    HINF inf = Open("[Version]\nSignature = \"$Windows NT$\"\n");
    Test().TurnLogOn(1);
    std::vector<DWORD> ids = {7};
    EXPECT_EQ(CInfDestinationDirsSection::GetAllDestDirID(inf, ids), 0xE0000102u);
    EXPECT_THAT(ids, IsEmpty());
    EXPECT_EQ(Log(), Joined({{"CInfDestinationDirsSection::GetAllDestDirID() Start"},
                             Bannered("--- DestinationDirIDs ---", {}),
                             {"CInfDestinationDirsSection::GetAllDestDirID() End(-536870654)"}}));
}

TEST_F(DestinationDirs, AWalkThatEndsHalfWayKeepsWhatItHas) {
    struct Case {
        const char* operation;
        std::size_t nth;
        DWORD code;
        DWORD status;
    };
    const Case cases[] = {
        {"SetupGetLineTextA", 5, 5, 1359},
        {"SetupGetLineTextA", 6, 1234, 1234},
        {"HeapAlloc", 3, 0, 8},
    };
    HINF inf = Open(kText);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.status);
        Test().TurnLogOn(1);
        faults::Reset();
        faults::FailCall(c.operation, c.nth, c.code);
        std::vector<DWORD> ids;
        EXPECT_EQ(CInfDestinationDirsSection::GetAllDestDirID(inf, ids), c.status);
        EXPECT_THAT(ids, ElementsAre(23u, 66000u));
        EXPECT_EQ(Log(),
                  Joined({{"CInfDestinationDirsSection::GetAllDestDirID() Start"},
                          Bannered("--- DestinationDirIDs ---", {"23", "66000"}),
                          {"CInfDestinationDirsSection::GetAllDestDirID() End(" + std::to_string(c.status) + ")"}}));
    }
}

// ---- the directories ------------------------------------------------------------------------------------------------

/// What an identifier stands for.
enum class Place { Nothing, Windows, System, SystemColor, Driver, DriverColor, Color };

using Places = std::map<DWORD, Place>;

const Places kPlaces95 = {{10, Place::Windows}, {11, Place::System}, {23, Place::SystemColor}};
const Places kPlaces9x = {{10, Place::Windows}, {11, Place::System}, {23, Place::Color}};
const Places kPlacesNT = {{10, Place::Windows},   {11, Place::Driver},    {23, Place::DriverColor},
                          {66000, Place::Driver}, {66002, Place::System}, {66003, Place::Color}};

struct Family {
    const char* member;
    const Places* places;
};

const Family kFamily95 = {"GetDirectoryFromDirID95", &kPlaces95};
const Family kFamily9x = {"GetDirectoryFromDirID9x", &kPlaces9x};
const Family kFamilyNT = {"GetDirectoryFromDirIDNT", &kPlacesNT};

const std::map<std::string, Family> kFamilies = {
    {"win95", kFamily95},   {"win98", kFamily9x},     {"winme", kFamily9x},      {"nt4", kFamilyNT},
    {"win2000", kFamilyNT}, {"xp", kFamilyNT},        {"xp-ia64", kFamilyNT},    {"xp-x64", kFamilyNT},
    {"vista", kFamilyNT},   {"vista-x64", kFamilyNT}, {"vista-ia64", kFamilyNT}, {"other", kFamilyNT},
};

constexpr DWORD kIdentifiers[] = {10, 11, 23, 66000, 66002, 66003, 0, 12, 17, 22, 24, 65999, 66001, 66004, 0xFFFFFFFF};

Place PlaceOf(const Family& family, DWORD id) {
    const auto found = family.places->find(id);
    return found == family.places->end() ? Place::Nothing : found->second;
}

constexpr DWORD kNoSuchDirectory = 1234;
bool g_directoriesFail = false;
bool g_driverDirectoryAsked = false;

/// The made-up driver directory of an environment.
std::string DriverDirectoryOf(LPCSTR environment) {
    return "D:\\drivers\\" + std::string(environment == nullptr ? "own" : environment);
}

BOOL WINAPI MadeUpDriverDirectory(LPSTR name, LPSTR environment, DWORD level, LPBYTE buffer, DWORD size,
                                  LPDWORD needed) {
    EXPECT_EQ(name, nullptr);
    EXPECT_EQ(level, 1u);
    EXPECT_EQ(size, 4096u);
    g_driverDirectoryAsked = true;
    if (g_directoriesFail) {
        Platform().SetLastError(kNoSuchDirectory);
        return FALSE;
    }
    const std::string directory = DriverDirectoryOf(environment);
    *needed = static_cast<DWORD>(directory.size() + 1);
    std::copy_n(directory.c_str(), directory.size() + 1, reinterpret_cast<char*>(buffer));
    return TRUE;
}

BOOL WINAPI MadeUpColorDirectory(PCSTR machine, PSTR buffer, PDWORD size) {
    EXPECT_EQ(machine, nullptr);
    EXPECT_EQ(*size, 4096u);
    if (g_directoriesFail) {
        Platform().SetLastError(kNoSuchDirectory);
        return FALSE;
    }
    static constexpr std::string_view kDirectory = "D:\\color";
    std::copy_n(kDirectory.data(), kDirectory.size() + 1, buffer);
    return TRUE;
}

HMODULE LoadColorLibrary(LPCSTR name) {
    EXPECT_STREQ(name, "mscms.dll");
    return reinterpret_cast<HMODULE>(0x77);
}

FARPROC FindColorDirectory(HMODULE module, LPCSTR name) {
    EXPECT_EQ(module, reinterpret_cast<HMODULE>(0x77));
    EXPECT_STREQ(name, "GetColorDirectoryA");
    return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&MadeUpColorDirectory));
}

/// Every system, with a spooler and a colour library whose answers are made up.
class DirectoryOfIdentifier : public EverySystemTest {
  protected:
    DirectoryOfIdentifier() {
        g_directoriesFail = false;
        g_driverDirectoryAsked = false;
        m_replaced.table.GetPrinterDriverDirectoryA = &MadeUpDriverDirectory;
        m_replaced.table.LoadLibraryA = [](LPCSTR name) -> HMODULE { return LoadColorLibrary(name); };
        m_replaced.table.GetProcAddress = [](HMODULE module, LPCSTR name) -> FARPROC {
            return FindColorDirectory(module, name);
        };
        m_replaced.table.FreeLibrary = [](HMODULE module) -> BOOL {
            EXPECT_EQ(module, reinterpret_cast<HMODULE>(0x77));
            ++s_frees;
            return TRUE;
        };
        s_frees = 0;
    }

    const Family& OwnFamily() const { return kFamilies.at(GetParam()); }

    static std::string Expected(Place place, LPCSTR environment) {
        switch (place) {
            case Place::Nothing:
                return "";
            case Place::Windows:
                return GetOsIdentity().windowsDirectory;
            case Place::System:
                return GetOsIdentity().systemDirectory;
            case Place::SystemColor:
                return GetOsIdentity().systemDirectory + "\\Color";
            case Place::Driver:
                return DriverDirectoryOf(environment);
            case Place::DriverColor:
                return DriverDirectoryOf(environment) + "\\0\\Color";
            case Place::Color:
                return "D:\\color";
        }
        return "?";
    }

    static LogLines ExpectedLog(const Family& family, DWORD status, const std::string& directory) {
        return {std::string(family.member) + "() - Start",
                std::string(family.member) + "() - End(" + std::to_string(status) + ") -> " + directory};
    }

    static inline int s_frees = 0;
    ReplacedOperations m_replaced;
};

TEST_P(DirectoryOfIdentifier, IsThatOfTheFamily) {
    ASSERT_FALSE(GetOsIdentity().windowsDirectory.empty());
    ASSERT_FALSE(GetOsIdentity().systemDirectory.empty());
    for (DWORD id : kIdentifiers) {
        const Place place = PlaceOf(OwnFamily(), id);
        for (LPCSTR environment : {LPCSTR{nullptr}, LPCSTR{"Windows 4.0"}, LPCSTR{"Windows x64"}}) {
            SCOPED_TRACE(id);
            Test().TurnLogOn(1);
            s_frees = 0;
            std::string directory = "old";
            EXPECT_EQ(GetDirectoryFromDirID(id, environment, directory), 0u);
            const std::string expected = Expected(place, environment);
            EXPECT_EQ(directory, expected);
            EXPECT_EQ(Test().TakeLog(), ExpectedLog(OwnFamily(), 0, expected));
            EXPECT_EQ(s_frees, place == Place::Color ? 1 : 0);
        }
    }
}

TEST_P(DirectoryOfIdentifier, IsEmptyWithTheCodeWhenTheSystemCannotTell) {
    g_directoriesFail = true;
    for (DWORD id : kIdentifiers) {
        SCOPED_TRACE(id);
        const Place place = PlaceOf(OwnFamily(), id);
        const bool asks = place == Place::Driver || place == Place::DriverColor || place == Place::Color;
        const DWORD status = asks ? kNoSuchDirectory : 0;
        Test().TurnLogOn(1);
        std::string directory = "old";
        EXPECT_EQ(GetDirectoryFromDirID(id, nullptr, directory), status);
        const std::string expected = asks ? "" : Expected(place, nullptr);
        EXPECT_EQ(directory, expected);
        EXPECT_EQ(Test().TakeLog(), ExpectedLog(OwnFamily(), status, expected));
    }
}

TEST_P(DirectoryOfIdentifier, AsksForTheColourDirectoryOnlyWhereTheFamilyDoes) {
    m_replaced.table.LoadLibraryA = [](LPCSTR) -> HMODULE {
        Platform().SetLastError(126);
        return nullptr;
    };
    for (DWORD id : kIdentifiers) {
        SCOPED_TRACE(id);
        const Place place = PlaceOf(OwnFamily(), id);
        const DWORD status = place == Place::Color ? 126 : 0;
        Test().TurnLogOn(1);
        std::string directory = "old";
        EXPECT_EQ(GetDirectoryFromDirID(id, nullptr, directory), status);
        const std::string expected = place == Place::Color ? "" : Expected(place, nullptr);
        EXPECT_EQ(directory, expected);
        EXPECT_EQ(Test().TakeLog(), ExpectedLog(OwnFamily(), status, expected));
    }
    EXPECT_EQ(s_frees, 0);
}

TEST_P(DirectoryOfIdentifier, FreesAColourLibraryThatLacksTheExport) {
    m_replaced.table.GetProcAddress = [](HMODULE, LPCSTR) -> FARPROC {
        Platform().SetLastError(127);
        return nullptr;
    };
    for (DWORD id : kIdentifiers) {
        SCOPED_TRACE(id);
        const bool isColor = PlaceOf(OwnFamily(), id) == Place::Color;
        s_frees = 0;
        std::string directory = "old";
        EXPECT_EQ(GetDirectoryFromDirID(id, nullptr, directory), isColor ? 127u : 0u);
        EXPECT_EQ(s_frees, isColor ? 1 : 0);
        EXPECT_EQ(directory.empty(), isColor || PlaceOf(OwnFamily(), id) == Place::Nothing);
    }
}

TEST_P(DirectoryOfIdentifier, EveryMemberServesWhereverItIsCalled) {
    struct Member {
        const Family& family;
        DWORD (*run)(DWORD, LPCSTR, std::string&);
    };
    for (const Member& member :
         {Member{kFamily95, &GetDirectoryFromDirID95}, Member{kFamily9x, &GetDirectoryFromDirID9x},
          Member{kFamilyNT, &GetDirectoryFromDirIDNT}}) {
        for (DWORD id : kIdentifiers) {
            SCOPED_TRACE(std::string(member.family.member) + " " + std::to_string(id));
            g_driverDirectoryAsked = false;
            std::string directory = "old";
            EXPECT_EQ(member.run(id, "Windows IA64", directory), 0u);
            const Place place = PlaceOf(member.family, id);
            EXPECT_EQ(directory, Expected(place, "Windows IA64"));
            EXPECT_EQ(g_driverDirectoryAsked, place == Place::Driver || place == Place::DriverColor);
        }
    }
}

INSTANTIATE_ON_EVERY_SYSTEM(DirectoryOfIdentifier);

/// The same on the systems as they are.
class DirectoryOnTheMachine : public EverySystemTest {
  protected:
    bool IsNt() const { return kFamilies.at(GetParam()).places == &kPlacesNT; }
};

TEST_P(DirectoryOnTheMachine, APrinterDriverDirectoryIsThatOfTheRunningEnvironment) {
    char own[MAX_PATH] = {};
    DWORD needed = 0;
    const BOOL known =
        Platform().GetPrinterDriverDirectoryA(nullptr, nullptr, 1, reinterpret_cast<LPBYTE>(own), sizeof own, &needed);
    const DWORD code = known ? 0 : Platform().GetLastError();
    std::string directory = "old";
    EXPECT_EQ(GetDirectoryFromDirID(66000, nullptr, directory), IsNt() ? code : 0u);
    EXPECT_EQ(directory, IsNt() ? own : "");
    EXPECT_EQ(GetDirectoryFromDirID(11, nullptr, directory), IsNt() ? code : 0u);
    EXPECT_EQ(directory, IsNt() ? std::string(own) : GetOsIdentity().systemDirectory);
}

TEST_P(DirectoryOnTheMachine, TheColourLibraryIsMissingOnTheSystemsBeforeColourManagement) {
    const bool hasLibrary = GetParam() != "win95" && GetParam() != "nt4";
    const DWORD id = IsNt() ? 66003 : 23;
    std::string directory = "old";
    const DWORD status = GetDirectoryFromDirID(id, nullptr, directory);
    if (GetParam() == "win95") {
        EXPECT_EQ(status, 0u);
        EXPECT_EQ(directory, GetOsIdentity().systemDirectory + "\\Color");
    } else if (hasLibrary) {
        EXPECT_EQ(status, 0u);
        EXPECT_NE(directory, "");
    } else {
        EXPECT_EQ(status, 126u);
        EXPECT_EQ(directory, "");
    }
}

INSTANTIATE_ON_EVERY_SYSTEM(DirectoryOnTheMachine);

class DirectoryWithoutRoute : public MachineTest {};

TEST_F(DirectoryWithoutRoute, IsRefusedOnSystemsThatHaveNone) {
    Start("xp");
    ReplacedOperations replaced;
    replaced.table.GetVersionExA = [](LPOSVERSIONINFOA info) -> BOOL {
        info->dwMajorVersion = 3;
        info->dwMinorVersion = 51;
        info->dwPlatformId = VER_PLATFORM_WIN32_NT;
        return TRUE;
    };
    ForgetSystemRecords();
    std::string directory;
    EXPECT_EQ(GetDirectoryFromDirID(10, nullptr, directory), 120u);
}

}  // namespace
}  // namespace pikel
