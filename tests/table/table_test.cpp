// The table of operations: its version check, its slots, the frame round every call, bring-up and tear-down.
#include <cstring>
#include <string>
#include <vector>

#include "frame/log.h"
#include "frame/os_identity.h"
#include "frame/pikel.h"
#include "machine/modules/modules.h"
#include "support/machine_test.h"

namespace pikel::testing_support {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const PI_KEL_Interface& Table() {
    return *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
}

constexpr char kIniPath[] = "C:\\Program Files\\pikel\\UtilDbg.ini";
constexpr char kLogPath[] = "C:\\Program Files\\pikel\\UtilDbg.txt";

struct SlotCase {
    const char* name;
    std::size_t offset;
};
#define SLOT_CASE(operation)                              \
    SlotCase {                                            \
#operation, offsetof(PI_KEL_Interface, operation) \
    }

/// The slots in their order, as installers know them.
const std::vector<SlotCase> kSlots = {
    SLOT_CASE(PI_KEL_Initialize),
    SLOT_CASE(PI_KEL_Shutdown),
    SLOT_CASE(PI_KEL_FreeMemory),
    SLOT_CASE(PI_KEL_AddPrinterDriver),
    SLOT_CASE(PI_KEL_DeletePrinterDriver),
    SLOT_CASE(PI_KEL_IsDriverFileLoaded),
    SLOT_CASE(PI_KEL_GetDriverFileVersion),
    SLOT_CASE(PI_KEL_CheckDriverFileVersion),
    SLOT_CASE(PI_KEL_GetInfInfo),
    SLOT_CASE(PI_KEL_GetDriverFileNameFromInf),
    SLOT_CASE(PI_KEL_CopyInfDriverFiles),
    SLOT_CASE(PI_KEL_GetDriverListFromInf),
    SLOT_CASE(PI_KEL_InfFileCopy),
    SLOT_CASE(PI_KEL_GetInstalledInfName),
    SLOT_CASE(PI_KEL_EnumNetResources),
    SLOT_CASE(PI_KEL_CreatePort),
    SLOT_CASE(PI_KEL_GetPrinter),
    SLOT_CASE(PI_KEL_SetPrinter),
    SLOT_CASE(PI_KEL_AddPrinter),
    SLOT_CASE(PI_KEL_DeletePrinter),
    SLOT_CASE(PI_KEL_IsAdministrators),
    SLOT_CASE(PI_KEL_CreateShortCut),
    SLOT_CASE(PI_KEL_ExtractCabFile),
    SLOT_CASE(PI_KEL_IsValidInfFile),
    SLOT_CASE(PI_KEL_GetInfOsVersion),
    SLOT_CASE(PI_KEL_CopyInfDriverFilesToLocal),
    SLOT_CASE(PI_KEL_RunPrintUI),
    SLOT_CASE(PI_KEL_DeletePrinterWithoutShareReg),
    SLOT_CASE(PI_KEL_GetResourceStrFromPrintUI),
    SLOT_CASE(PI_KEL_InstallPrinterToPrintUI),
    SLOT_CASE(PI_KEL_UninstallPrinter),
    SLOT_CASE(PI_KEL_CopyInfDriverFilesEx),
    SLOT_CASE(PI_KEL_CopyDriverFileToHWIDFolder),
    SLOT_CASE(PI_KEL_ControlRegistory),
    SLOT_CASE(PI_KEL_SetDefaultPrinter),
    SLOT_CASE(PI_KEL_EnumDriverFiles),
    SLOT_CASE(PI_KEL_GetCustomizeInfo),
    SLOT_CASE(PI_KEL_GetCopyDriverFilesSize),
    SLOT_CASE(PI_KEL_SetEffectiveDevMode),
    SLOT_CASE(PI_KEL_CopyMonitorFile),
    SLOT_CASE(PI_KEL_GetDefaultPrinter),
    SLOT_CASE(PI_KEL_IsDefaultPrinter),
    SLOT_CASE(PI_KEL_GetCATFileInfo),
};

class TableTest : public MachineTest {
  protected:
    TableTest() { SetAttachedModule(simulated::LibraryModule()); }
    ~TableTest() override {
        SetAttachedModule(nullptr);
        // A test that fails between bring-up and tear-down must not leave its count to the next one.
        for (; m_initialized > 0; --m_initialized) {
            Table().PI_KEL_Shutdown();
        }
    }

    void Initialize() {
        EXPECT_EQ(Table().PI_KEL_Initialize(), 0u);
        ++m_initialized;
    }
    void Shutdown() {
        EXPECT_EQ(Table().PI_KEL_Shutdown(), 0u);
        --m_initialized;
    }
    void WriteLogConfiguration() {
        WriteFileOn(Machine(), kIniPath, "[DEBUG]\r\npikel.dll=LIB\r\n[LIB]\r\nDEBUG=ON\r\nLOG=ON\r\n");
    }
    /// Messages of the log that UtilDbg.ini turned on.
    std::vector<std::string> Messages() {
        std::vector<std::string> messages;
        std::string text = Machine().Files().Read(kLogPath).value_or("");
        constexpr std::size_t kStamp = sizeof("[--- Date:MM/DD/YY , Time:HH:MM:SS ---]  ") - 1;
        for (std::size_t start = 0, end; (end = text.find("\r\n", start)) != std::string::npos; start = end + 2) {
            messages.push_back(text.substr(start + kStamp, end - start - kStamp));
        }
        return messages;
    }

  private:
    int m_initialized = 0;
};

TEST_F(TableTest, OnlyVersion0x100Exists) {
    EXPECT_NE(PI_KEL_GetInterface(0x100), nullptr);
    EXPECT_EQ(PI_KEL_GetInterface(0x100), PI_KEL_GetInterface(0x100)) << "the address is the same each time";
    for (DWORD version : {0u, 1u, 0xFFu, 0x101u, 0x200u, 0x10100u, 0xFFFFFFFFu}) {
        EXPECT_EQ(PI_KEL_GetInterface(version), nullptr) << version;
    }
    EXPECT_THAT(Test().TakeCalls(), IsEmpty());
}

TEST_F(TableTest, SlotsStandInTheirOrderAndNoneIsNull) {
    ASSERT_EQ(kSlots.size(), 43u);
    for (std::size_t slot = 0; slot < kSlots.size(); ++slot) {
        EXPECT_EQ(kSlots[slot].offset, slot * sizeof(void*)) << kSlots[slot].name;
        void* function = nullptr;
        std::memcpy(&function, reinterpret_cast<const char*>(&Table()) + kSlots[slot].offset, sizeof function);
        EXPECT_NE(function, nullptr) << kSlots[slot].name;
    }
}

TEST_F(TableTest, FreeMemoryReturnsWhatHeapFreeReturns) {
    void* block = Platform().HeapAlloc(Platform().GetProcessHeap(), HEAP_ZERO_MEMORY, 10);
    EXPECT_NE(Table().PI_KEL_FreeMemory(block), FALSE);
    EXPECT_EQ(Machine().Heap().OpenCount(), 0u);
    int notABlock = 0;
    EXPECT_EQ(Table().PI_KEL_FreeMemory(&notABlock), FALSE);
    Test().AllowOpen();
}

TEST_F(TableTest, WithoutConfigurationNothingIsWritten) {
    Initialize();
    EXPECT_EQ(Table().PI_KEL_GetDefaultPrinter(nullptr, 0), 0x90010057u);
    Shutdown();
    EXPECT_FALSE(Machine().Files().Exists(kLogPath));
    EXPECT_TRUE(g_logSettings.logFilePath.empty());
}

TEST_F(TableTest, BringUpLogsAfterItsWorkAndTearDownBefore) {
    WriteLogConfiguration();
    Initialize();
    EXPECT_THAT(Messages(), ElementsAre("PI_KEL_Initialize "));
    Shutdown();
    EXPECT_THAT(Messages(), ElementsAre("PI_KEL_Initialize ", "PI_KEL_Shutdown"));
    EXPECT_FALSE(g_logSettings.debugEnabled);
}

TEST_F(TableTest, TheSecondShutdownOfTwoInitializesClosesTheLog) {
    WriteLogConfiguration();
    Initialize();
    Initialize();
    Shutdown();
    EXPECT_TRUE(g_logSettings.debugEnabled);
    Shutdown();
    EXPECT_FALSE(g_logSettings.debugEnabled);
}

TEST_F(TableTest, AShutdownWithoutInitializeMakesTheNextInitializeDoNoWork) {
    WriteLogConfiguration();
    Table().PI_KEL_Shutdown();
    EXPECT_EQ(Table().PI_KEL_Initialize(), 0u);
    EXPECT_FALSE(g_logSettings.debugEnabled) << "the count came to 0, which isn't the step to 1";
    Initialize();
    EXPECT_TRUE(g_logSettings.debugEnabled);
    Shutdown();
    EXPECT_FALSE(g_logSettings.debugEnabled);
}

TEST_F(TableTest, AChangedConfigurationTakesEffectAtTheNextFirstInitialize) {
    Initialize();
    WriteLogConfiguration();
    Initialize();
    EXPECT_FALSE(g_logSettings.debugEnabled);
    Shutdown();
    Shutdown();
    Initialize();
    EXPECT_TRUE(g_logSettings.debugEnabled);
}

TEST_F(TableTest, InitializeKnowsTheModulesPath) {
    Initialize();
    EXPECT_EQ(GetOsIdentity().moduleFilePath, Machine().ModulePath());
}

TEST_F(TableTest, AStatusSlotLogsStartEndAndABlankLine) {
    Test().TurnLogOn(1);
    EXPECT_EQ(Table().PI_KEL_GetDefaultPrinter(nullptr, 0), 0x90010057u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_KEL_GetDefaultPrinter Start", "PI_KEL_GetDefaultPrinter End:(0x90010057)", ""));
}

TEST_F(TableTest, SetEffectiveDevModeCarriesItsArgumentInTheStartLine) {
    Test().TurnLogOn(1);
    EXPECT_EQ(Table().PI_KEL_SetEffectiveDevMode(7), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_KEL_SetEffectiveDevMode( 7 ) Start", "DoSetEffectiveDevMode( 7 ) Start",
                            "DoSetEffectiveDevMode End(0)", "PI_KEL_SetEffectiveDevMode End:(0x00000000)", ""));
    EXPECT_EQ(Table().PI_KEL_SetEffectiveDevMode(1), 0u);
}

// Each slot from 3 on with the zeros that its types allow: a harmless call, and for most a refused one.
template <class Result, class... Parameters>
Result CallWithZeros(Result(WINAPI* operation)(Parameters...)) {
    return operation(Parameters{}...);
}

struct FramedSlot {
    const char* name;
    DWORD (*call)();
    DWORD answer;
    const char* endFormat;
    const char* start;
};
#define STARTING_SLOT(operation, start, answer)                                                       \
    FramedSlot {                                                                                      \
#operation, [] { return CallWithZeros(Table().operation); }, answer, "%s End:(0x%08x)", start \
    }
#define STATUS_ANSWER(operation, answer) STARTING_SLOT(operation, #operation " Start", answer)
#define VALUE_ANSWER(operation, answer)                                                                         \
    FramedSlot {                                                                                                \
#operation, [] { return CallWithZeros(Table().operation); }, answer, "%s End:(%d)", #operation " Start" \
    }
const FramedSlot kFramedSlots[] = {
    STATUS_ANSWER(PI_KEL_AddPrinterDriver, 0x900d0057),
    STATUS_ANSWER(PI_KEL_DeletePrinterDriver, 0x900f0057),
    VALUE_ANSWER(PI_KEL_IsDriverFileLoaded, 0),
    STATUS_ANSWER(PI_KEL_GetDriverFileVersion, 0x90010057),
    VALUE_ANSWER(PI_KEL_CheckDriverFileVersion, 87),
    STATUS_ANSWER(PI_KEL_GetInfInfo, 0x90120057),
    STATUS_ANSWER(PI_KEL_GetDriverFileNameFromInf, 0x90120057),
    STATUS_ANSWER(PI_KEL_CopyInfDriverFiles, 0x901b0057),
    STATUS_ANSWER(PI_KEL_GetDriverListFromInf, 0x90120057),
    STATUS_ANSWER(PI_KEL_InfFileCopy, 0x901b0057),
    STATUS_ANSWER(PI_KEL_GetInstalledInfName, 0x90130057),
    STATUS_ANSWER(PI_KEL_EnumNetResources, 0x90020057),
    STATUS_ANSWER(PI_KEL_CreatePort, 0x900c0057),
    STATUS_ANSWER(PI_KEL_GetPrinter, 0x90010057),
    STATUS_ANSWER(PI_KEL_SetPrinter, 0x90010057),
    STATUS_ANSWER(PI_KEL_AddPrinter, 0x900e0057),
    STATUS_ANSWER(PI_KEL_DeletePrinter, 0x90100057),
    VALUE_ANSWER(PI_KEL_IsAdministrators, 1),
    STATUS_ANSWER(PI_KEL_CreateShortCut, 0x90010057),
    STATUS_ANSWER(PI_KEL_ExtractCabFile, 0x90010057),
    VALUE_ANSWER(PI_KEL_IsValidInfFile, 0),
    STATUS_ANSWER(PI_KEL_GetInfOsVersion, 0x90010057),
    STATUS_ANSWER(PI_KEL_CopyInfDriverFilesToLocal, 0x901b0057),
    STATUS_ANSWER(PI_KEL_RunPrintUI, 0x90010057),
    STATUS_ANSWER(PI_KEL_DeletePrinterWithoutShareReg, 0x90100057),
    STATUS_ANSWER(PI_KEL_GetResourceStrFromPrintUI, 0x90010057),
    STATUS_ANSWER(PI_KEL_InstallPrinterToPrintUI, 0x900d0057),
    STATUS_ANSWER(PI_KEL_UninstallPrinter, 0x900d0057),
    // Installers' log readers know this one by the start line of the local copy.
    STARTING_SLOT(PI_KEL_CopyInfDriverFilesEx, "PI_KEL_CopyInfDriverFilesToLocal Start", 0x901b0057),
    STATUS_ANSWER(PI_KEL_CopyDriverFileToHWIDFolder, 0x90010057),
    STATUS_ANSWER(PI_KEL_ControlRegistory, 0x90010057),
    STATUS_ANSWER(PI_KEL_SetDefaultPrinter, 0x90010057),
    STATUS_ANSWER(PI_KEL_EnumDriverFiles, 0x90010057),
    STATUS_ANSWER(PI_KEL_GetCustomizeInfo, 0x90010057),
    STATUS_ANSWER(PI_KEL_GetCopyDriverFilesSize, 0x901b0057),
    STARTING_SLOT(PI_KEL_SetEffectiveDevMode, "PI_KEL_SetEffectiveDevMode( 0 ) Start", 0),
    STATUS_ANSWER(PI_KEL_CopyMonitorFile, 0x901b0057),
    STATUS_ANSWER(PI_KEL_GetDefaultPrinter, 0x90010057),
    STATUS_ANSWER(PI_KEL_IsDefaultPrinter, 0x90010057),
    STATUS_ANSWER(PI_KEL_GetCATFileInfo, 0x90010057),
};

/// A slot's log: its start line in front, behind all others its end line and a blank one.
void ExpectFrame(const std::vector<std::string>& log, const std::string& start, const char* endFormat, const char* name,
                 DWORD answer) {
    ASSERT_GE(log.size(), 3u);
    EXPECT_EQ(log.front(), start);
    char end[96];
    std::snprintf(end, sizeof end, endFormat, name, answer);
    EXPECT_EQ(log[log.size() - 2], end);
    EXPECT_EQ(log.back(), "");
}

TEST_F(TableTest, EverySlotStandsBetweenItsLinesAndBearsItsPrefix) {
    ASSERT_EQ(std::size(kFramedSlots), kSlots.size() - 3);
    for (std::size_t i = 0; i < std::size(kFramedSlots); ++i) {
        const FramedSlot& slot = kFramedSlots[i];
        SCOPED_TRACE(slot.name);
        EXPECT_STREQ(slot.name, kSlots[i + 3].name);
        Test().TurnLogOn(1);
        EXPECT_EQ(slot.call(), slot.answer);
        ExpectFrame(Test().TakeLog(), slot.start, slot.endFormat, slot.name, slot.answer);
    }
    EXPECT_EQ(Table().PI_KEL_SetEffectiveDevMode(1), 0u);
}

TEST_F(TableTest, AdministratorsAreTestedAsAPlainValue) {
    Test().TurnLogOn(1);
    EXPECT_EQ(Table().PI_KEL_IsAdministrators(), 1u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("PI_KEL_IsAdministrators Start", "IsAdministrators() - Start",
                                              "IsAdministrators() - End(1)", "PI_KEL_IsAdministrators End:(1)", ""));
}

TEST_F(TableTest, TheNetworksTopIsABlockForTheCaller) {
    NetResourceRecord* nodes = nullptr;
    DWORD count = 99;
    EXPECT_EQ(Table().PI_KEL_EnumNetResources(nullptr, &nodes, &count), 0u);
    EXPECT_NE(nodes, nullptr);
    EXPECT_TRUE(Table().PI_KEL_FreeMemory(nodes));
}

TEST_F(TableTest, MainFileIsToldUnderItsOwnNameForEveryFlagButZero) {
    constexpr char kInf[] = "C:\\aurora.inf";
    WriteFileOn(Machine(), kInf,
                "[Version]\r\nSignature=\"$Windows NT$\"\r\n[Manufacturer]\r\nNorthlight=NL\r\n"
                "[NL]\r\n\"Aurora\"=AURORA,AuroraId\r\n"
                "[AURORA]\r\nCopyFiles=FILES\r\nDriverFile=AURORA.DLL\r\n[FILES]\r\nAURORA.DLL,AURORA_RT.DLL\r\n"
                "[DestinationDirs]\r\nDefaultDestDir=66000\r\n");
    for (const auto& [flag, expected] :
         {std::pair<DWORD, const char*>(0, "AURORA_RT.DLL"), {1, "AURORA.DLL"}, {2, "AURORA.DLL"}}) {
        char name[32] = {};
        DWORD size = sizeof name;
        EXPECT_EQ(Table().PI_KEL_GetDriverFileNameFromInf(kInf, "Aurora", 3, 5, 1, flag, name, &size), 0u) << flag;
        EXPECT_STREQ(name, expected) << flag;
    }
}

TEST_F(TableTest, TheWholeCodeIsOredWithThePrefix) {
    // A Setup API code keeps its high bits.
    ReplacedOperations replaced;
    replaced.table.SetupOpenInfFileA = [](PCSTR, PCSTR, DWORD, PUINT) -> HINF {
        Platform().SetLastError(0xE0000100);
        return INVALID_HANDLE_VALUE;
    };
    LPSTR* list = nullptr;
    DWORD count = 1;
    EXPECT_EQ(Table().PI_KEL_GetDriverListFromInf("C:\\x.inf", 3, 5, 1, &list, &count), 0x90120000u | 0xE0000100u);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(count, 0u);
}

TEST_F(TableTest, NoExceptionLeavesTheTable) {
    ReplacedOperations replaced;
    replaced.table.SetupOpenInfFileA = [](PCSTR, PCSTR, DWORD, PUINT) -> HINF { throw std::bad_alloc(); };
    LPSTR* list = nullptr;
    DWORD count = 0;
    EXPECT_EQ(Table().PI_KEL_GetDriverListFromInf("C:\\x.inf", 3, 5, 1, &list, &count), 0x90120008u);
    replaced.table.SetupOpenInfFileA = [](PCSTR, PCSTR, DWORD, PUINT) -> HINF { throw 1; };
    EXPECT_EQ(Table().PI_KEL_GetDriverListFromInf("C:\\x.inf", 3, 5, 1, &list, &count), 0x90120000u | 1359u);
}

struct ThrowingSlot {
    const char* system;
    const char* name;
    void (*breakPlatform)(PlatformTable& table);
    DWORD (*call)();
    DWORD answer;
};
const ThrowingSlot kThrowingSlots[] = {
    {"win98", "PI_KEL_IsDriverFileLoaded",
     [](PlatformTable& table) {
         table.EnumPrinterDriversA = [](LPSTR, LPSTR, DWORD, LPBYTE, DWORD, LPDWORD, LPDWORD) -> BOOL {
             throw std::bad_alloc();
         };
     },
     [] { return Table().PI_KEL_IsDriverFileLoaded("Aurora"); }, 0},
    {"xp", "PI_KEL_CheckDriverFileVersion",
     [](PlatformTable& table) {
         table.GetFileVersionInfoSizeA = [](LPCSTR, LPDWORD) -> DWORD { throw std::bad_alloc(); };
     },
     [] { return Table().PI_KEL_CheckDriverFileVersion("C:\\a.dll", "1.0", nullptr, 0); }, 3},
    {"xp", "PI_KEL_IsAdministrators",
     [](PlatformTable& table) {
         table.OpenProcessToken = [](HANDLE, DWORD, LPHANDLE) -> BOOL { throw std::bad_alloc(); };
     },
     [] { return Table().PI_KEL_IsAdministrators(); }, 0},
    {"xp", "PI_KEL_IsValidInfFile",
     [](PlatformTable& table) {
         table.SetupOpenInfFileA = [](PCSTR, PCSTR, DWORD, PUINT) -> HINF { throw std::bad_alloc(); };
     },
     [] { return Table().PI_KEL_IsValidInfFile("C:\\a.inf", nullptr, nullptr); }, 0},
};

TEST_F(TableTest, ValueThatCannotBeFoundOutIsNoCode) {
    for (const ThrowingSlot& slot : kThrowingSlots) {
        SCOPED_TRACE(slot.name);
        Start(slot.system);
        Test().TurnLogOn(1);
        {
            ReplacedOperations replaced;
            slot.breakPlatform(replaced.table);
            EXPECT_EQ(slot.call(), slot.answer);
        }
        ExpectFrame(Test().TakeLog(), std::string(slot.name) + " Start", "%s End:(%d)", slot.name, slot.answer);
    }
}

class PrintUIRoute : public EverySystemTest {
  protected:
    bool IsUsable() const {
        return GetParam() != "win95" && GetParam() != "win98" && GetParam() != "winme" && GetParam() != "nt4";
    }
    bool IsVista() const { return GetParam().starts_with("vista"); }
    bool Ran() {
        for (const std::string& line : Test().TakeLog()) {
            if (line.find("ToPrintUI Start") != std::string::npos) {
                return true;
            }
        }
        return false;
    }
};

TEST_P(PrintUIRoute, IsRefusedWhereThereIsNone) {
    EXPECT_EQ(IsPrintUIUsable(), IsUsable());
    if (IsUsable()) {
        return;
    }
    EXPECT_EQ(Table().PI_KEL_AddPrinterDriver("C:\\a.inf", "Model", 3, 0, nullptr, 1), 0x900d0057u);
    EXPECT_EQ(Table().PI_KEL_DeletePrinterDriver(3, "Model", 0, 0, nullptr, 1, 1), 0x900f0057u);
    EXPECT_EQ(Table().PI_KEL_DeletePrinter("P1", 0, nullptr, 1), 0x90100057u);
    EXPECT_EQ(Table().PI_KEL_InstallPrinterToPrintUI("C:\\a.inf", "P1", "Model", "LPT1:", "", nullptr, 0), 0x900d0057u);
    Test().TakeCalls();
    Test().TurnLogOn(1);
    EXPECT_EQ(Table().PI_KEL_UninstallPrinter("P1", "Model", 3, 0, 0, nullptr, 1, 1), 0x900d0057u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_KEL_UninstallPrinter Start", "PI_KEL_UninstallPrinter End:(0x900d0057)", ""));
}

TEST_P(PrintUIRoute, DriversTakeItOnEverySystemThatHasIt) {
    if (!IsUsable()) {
        return;
    }
    Test().TurnLogOn(1);
    EXPECT_NE(Table().PI_KEL_AddPrinterDriver("C:\\a.inf", "Model", 3, 0, nullptr, 1), 0u);
    EXPECT_TRUE(Ran());
    EXPECT_NE(Table().PI_KEL_DeletePrinterDriver(3, "Model", 0, 0, nullptr, 0, 1), 0u);
    EXPECT_TRUE(Ran());
    EXPECT_NE(Table().PI_KEL_InstallPrinterToPrintUI("C:\\a.inf", "P1", "Model", "LPT1:", "", nullptr, 0), 0u);
    EXPECT_TRUE(Ran());
    EXPECT_NE(Table().PI_KEL_DeletePrinterDriver(3, "Model", 0, 0, nullptr, 1, 0), 0u);
    EXPECT_FALSE(Ran());
}

TEST_P(PrintUIRoute, PrintersTakeItBeforeTheVistaGeneration) {
    if (!IsUsable()) {
        return;
    }
    Test().TurnLogOn(1);
    EXPECT_NE(Table().PI_KEL_DeletePrinter("Nobody", 0, nullptr, 1), 0u);
    EXPECT_EQ(Ran(), !IsVista());
    EXPECT_NE(Table().PI_KEL_UninstallPrinter("Nobody", "Model", 3, 0, 0, nullptr, 1, 1), 0u);
    EXPECT_EQ(Ran(), !IsVista());
    EXPECT_NE(Table().PI_KEL_DeletePrinter("Nobody", 0, nullptr, 0), 0u);
    EXPECT_FALSE(Ran());
}

TEST_P(PrintUIRoute, ItsLibraryIsAskedOnEverySystem) {
    // Not refused where there is no Print UI: the loader's own code comes back.
    char text[260];
    if (!IsUsable()) {
        EXPECT_EQ(Table().PI_KEL_RunPrintUI("/dl /n\"Nobody\" /q"), 0x90010000u | ERROR_MOD_NOT_FOUND);
        EXPECT_EQ(Table().PI_KEL_GetResourceStrFromPrintUI(16056, text, sizeof text),
                  0x90010000u | ERROR_MOD_NOT_FOUND);
    } else {
        EXPECT_EQ(Table().PI_KEL_RunPrintUI("/dl /n\"Nobody\" /q"), 0x90010000u | ERROR_INVALID_PRINTER_NAME);
        // The texts of versions have these numbers on Windows 2000 alone.
        EXPECT_EQ(Table().PI_KEL_GetResourceStrFromPrintUI(16056, text, sizeof text) == 0, GetParam() == "win2000");
    }
}

INSTANTIATE_ON_EVERY_SYSTEM(PrintUIRoute);

}  // namespace
}  // namespace pikel::testing_support
