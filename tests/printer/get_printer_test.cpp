// Reading all that is known of a printer.
#include "printer/get_printer.h"

#include <cstring>

#include "machine/operations.h"
#include "printer/effective_dev_mode.h"
#include "support/printer_machine.h"
#include "spooler/printer_values.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::StartsWith;

/// A record that goes back to the heap.
class ReadRecord {
  public:
    explicit ReadRecord(LPCSTR printer) : m_code(DoGetPrinter(printer, &m_record)) {}
    ~ReadRecord() {
        if (m_record != nullptr) {
            simulated::HeapFree(simulated::GetProcessHeap(), 0, m_record);
        }
    }
    ReadRecord(const ReadRecord&) = delete;
    ReadRecord& operator=(const ReadRecord&) = delete;
    DWORD Code() const { return m_code; }
    const PrinterRecord* operator->() const { return m_record; }
    bool IsThere() const { return m_record != nullptr; }

  private:
    PrinterRecord* m_record = nullptr;
    DWORD m_code;
};

class GetPrinterOnEverySystem : public EverySystemTest {
  protected:
    GetPrinterOnEverySystem() {
        InstallDriver(Test());
        AddPrinterTo(Test(), "First");
        AddPrinterTo(Test(), "P1");
        MakeDefaultOn(Test(), "First");
        Test().TakeCalls();
    }
    bool Is9x() const { return Is9xName(GetParam()); }
    bool IsNt4() const { return IsNt4Name(GetParam()); }
    /// Its class has none of the flags for which level 8 is read.
    bool IsOther() const { return GetParam() == "other"; }
    std::string Key(std::string_view below = "") const {
        return std::string(kPrintersOn) + "\\P1" + (below.empty() ? "" : "\\") + std::string(below);
    }
};
INSTANTIATE_ON_EVERY_SYSTEM(GetPrinterOnEverySystem);

TEST_P(GetPrinterOnEverySystem, TellsLevel2AndWhatTheFamilyKeepsBesideIt) {
    ReadRecord record("P1");
    ASSERT_EQ(record.Code(), 0u);
    EXPECT_STREQ(record->pPrinterName, "P1");
    EXPECT_STREQ(record->pDriverName, kDriver);
    EXPECT_STREQ(record->pPortName, kLocalPort);
    EXPECT_STREQ(record->pPrintProcessor, "winprint");
    EXPECT_EQ(record->pSecurityDescriptor, nullptr);
    EXPECT_NE(record->pDevMode, nullptr);
    EXPECT_EQ(record->Attributes & PRINTER_ATTRIBUTE_DEFAULT, 0u);
    ASSERT_EQ(record->ShareRecord != nullptr, Is9x());
    ASSERT_EQ(record->SecurityRecord != nullptr, !Is9x());
    if (Is9x()) {
        EXPECT_EQ(record->ShareRecord->DeviceNotSelectedTimeout, 15000u);
        EXPECT_EQ(record->ShareRecord->TransmissionRetryTimeout, 45000u);
        EXPECT_STREQ(record->ShareRecord->NetName, "");
        return;
    }
    const PrinterSecurityRecord& security = *record->SecurityRecord;
    ASSERT_NE(security.SecurityDescriptor, nullptr);
    if (IsNt4()) {
        EXPECT_EQ(std::string(security.SecurityDescriptor, security.SecurityDescriptorLength),
                  Machine().Registry().Find(Key(), "Security")->data);
    } else {
        EXPECT_TRUE(std::string_view(security.SecurityDescriptor).starts_with("O:")) << security.SecurityDescriptor;
        EXPECT_EQ(std::strlen(security.SecurityDescriptor) + 1, security.SecurityDescriptorLength);
    }
    EXPECT_EQ(security.DevMode != nullptr, !IsNt4() && !IsOther());
}

TEST_P(GetPrinterOnEverySystem, TellsTheValues) {
    Machine().Registry().Set(Key("PrinterDriverData"), "udpWidth", REG_BINARY, "abcd");
    ReadRecord record("P1");
    ASSERT_EQ(record.Code(), 0u);
    ASSERT_EQ(record->RegistryEntryCount, 1u);
    const PrinterRegistryEntry& entry = record->RegistryEntries[0];
    EXPECT_EQ(entry.Key, nullptr);
    EXPECT_STREQ(entry.ValueName, "udpWidth");
    EXPECT_EQ(std::string(reinterpret_cast<char*>(entry.Data), entry.Size), "abcd");
}

TEST_P(GetPrinterOnEverySystem, TellsTheColourProfiles) {
    static std::vector<std::string> s_profiles;
    s_profiles = {"C:\\one.icm", "C:\\two.icm"};
    ReplacedOperations replaced;
    replaced.table.EnumICMProfilesA = [](HDC, ICMENUMPROCA callback, LPARAM data) -> int {
        for (std::string& profile : s_profiles) {
            callback(profile.data(), data);
        }
        return 1;
    };
    ReadRecord record("P1");
    ASSERT_EQ(record.Code(), 0u);
    ASSERT_EQ(record->ColorProfileCount, 2u);
    EXPECT_STREQ(record->ColorProfiles[0], "C:\\one.icm");
    EXPECT_STREQ(record->ColorProfiles[1], "C:\\two.icm");
}

TEST_P(GetPrinterOnEverySystem, PrinterWithoutAnInformationContextHasNoProfiles) {
    faults::FailCall("CreateICA", 1, ERROR_INVALID_PARAMETER);
    ReadRecord record("P1");
    ASSERT_EQ(record.Code(), 0u);
    EXPECT_EQ(record->ColorProfileCount, 0u);
    EXPECT_EQ(record->ColorProfiles, nullptr);
}

TEST_P(GetPrinterOnEverySystem, DefaultPrinterHasItsBitWhateverTheSpoolerSays) {
    Test().TurnLogOn(1);
    ReadRecord record("First");
    ASSERT_EQ(record.Code(), 0u);
    EXPECT_NE(record->Attributes & PRINTER_ATTRIBUTE_DEFAULT, 0u);
    EXPECT_THAT(Test().TakeLog(), Contains("PI_GetPrinter() First is default printer"));
}

TEST_P(GetPrinterOnEverySystem, RecordOwnsAllThatItPointsAt) {
    Machine().Registry().Set(Key("PrinterDriverData"), "udpWidth", REG_BINARY, "abcd");
    ReadRecord record("P1");
    ASSERT_EQ(record.Code(), 0u);
    ReadRecord other("First");
    {
        std::string name = "P1";
        HANDLE handle = nullptr;
        PRINTER_DEFAULTSA defaults{};
        defaults.DesiredAccess = PRINTER_ALL_ACCESS;
        ASSERT_TRUE(simulated::OpenPrinterA(name.data(), &handle, &defaults));
        ASSERT_TRUE(simulated::DeletePrinter(handle));
        simulated::ClosePrinter(handle);
    }
    EXPECT_STREQ(record->pPrinterName, "P1");
    EXPECT_STREQ(record->RegistryEntries[0].ValueName, "udpWidth");
    EXPECT_EQ(ReadRecord("P1").Code(), ERROR_INVALID_PRINTER_NAME);
}

TEST_P(GetPrinterOnEverySystem, SwitchOfTheDevModeGovernsWritingOnly) {
    for (DWORD value : {0u, 1u, 2u}) {
        DoSetEffectiveDevMode(value);
        ReadRecord record("P1");
        ASSERT_EQ(record.Code(), 0u);
        EXPECT_NE(record->pDevMode, nullptr) << value;
    }
    DoSetEffectiveDevMode(1);
}

TEST_P(GetPrinterOnEverySystem, LogsTheValuesAndThenTheDescriptor) {
    Test().TurnLogOn(1);
    ASSERT_EQ(ReadRecord("P1").Code(), 0u);
    const std::vector<std::string> log = Test().TakeLog();
    // Each of the 29 values has its routine's two lines and, as none is there, one more.
    constexpr std::size_t kValueLines = 29 * 3;
    ASSERT_GT(log.size(), 1 + kValueLines);
    const auto values = log.begin() + 1;
    EXPECT_EQ(log.front(), "DoGetPrinter(P1) Start");
    EXPECT_THAT(std::vector(values, values + kValueLines), Each(StartsWith("GetPrinterData")));
    EXPECT_EQ(
        std::vector(values + kValueLines, log.end()),
        Is9x() ? std::vector<std::string>({"DoGetPrinter End(0)"})
               : std::vector<std::string>({"GetStringSD() - Start", "GetStringSD() - End(0)", "DoGetPrinter End(0)"}));
}

TEST_P(GetPrinterOnEverySystem, UnknownPrinterIsTheSpoolersCode) {
    Test().TurnLogOn(1);
    ReadRecord record("Nobody");
    EXPECT_EQ(record.Code(), ERROR_INVALID_PRINTER_NAME);
    EXPECT_FALSE(record.IsThere());
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoGetPrinter(Nobody) Start", "DoGetPrinter End(1801)"));
}

TEST_P(GetPrinterOnEverySystem, NullArgumentsAreRefused) {
    PrinterRecord* record = nullptr;
    Test().TurnLogOn(1);
    EXPECT_EQ(DoGetPrinter(nullptr, &record), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(DoGetPrinter("P1", nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_THAT(Test().TakeLog(), ElementsAre());
}

TEST_P(GetPrinterOnEverySystem, NoMemoryForTheRecord) {
    // Counts the blocks of a whole read, and has the last one fail.
    ASSERT_EQ(ReadRecord("P1").Code(), 0u);
    const std::size_t before = Machine().Heap().AllocationCount();
    ASSERT_EQ(ReadRecord("P1").Code(), 0u);
    const std::size_t perRead = Machine().Heap().AllocationCount() - before;
    Machine().Heap().FailAllocation(perRead - 1, false);
    ReadRecord record("P1");
    Machine().Heap().StopFailing();
    EXPECT_EQ(record.Code(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_FALSE(record.IsThere());
}

TEST_P(GetPrinterOnEverySystem, NoMemoryForTheValuesEndsTheRead) {
    Machine().Registry().Set(Key("PrinterDriverData"), "udpWidth", REG_BINARY, "abcd");
    const std::size_t before = Machine().Heap().AllocationCount();
    {
        RegistryDataBlock values;
        ASSERT_EQ(ReadPrinterValues(values, "P1"), 0u);
        ASSERT_EQ(values.Count(), 1u);
    }
    const std::size_t perValues = Machine().Heap().AllocationCount() - before;
    // Ahead of the values there are level 2 and, on the 9x family, level 5 for the default printer.
    Machine().Heap().FailAllocation((Is9x() ? 2 : 1) + perValues - 1, false);
    Test().TurnLogOn(1);
    ReadRecord record("P1");
    Machine().Heap().StopFailing();
    EXPECT_EQ(record.Code(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_FALSE(record.IsThere());
    const std::vector<std::string> log = Test().TakeLog();
    // The last value was looked for, and nothing behind the values was.
    ASSERT_GE(log.size(), 2u);
    EXPECT_THAT(log[log.size() - 2], StartsWith("GetPrinterData(EMFDespoolingSetting)"));
    EXPECT_EQ(log.back(), "DoGetPrinter End(8)");
    EXPECT_THAT(Test().TakeCallNames({"CreateICA"}), ElementsAre());
}

// ---- 9x family ------------------------------------------------------------------------------------------------------

class GetPrinter : public MachineTest {
  protected:
    void StartWith(std::string_view system) {
        Start(system);
        InstallDriver(Test());
        AddPrinterTo(Test(), "First");
        AddPrinterTo(Test(), "P1");
        MakeDefaultOn(Test(), "First");
        Test().TakeCalls();
    }
    /// Makes every call of GetPrinterA at one level fail.
    static void FailLevel(ReplacedOperations& replaced, DWORD level, DWORD code) {
        static const PlatformTable* s_below = nullptr;
        static DWORD s_level = 0;
        static DWORD s_code = 0;
        static PlatformTable s_table;
        s_table = replaced.table;
        s_below = &s_table;
        s_level = level;
        s_code = code;
        replaced.table.GetPrinterA = [](HANDLE handle, DWORD asked, LPBYTE data, DWORD size, LPDWORD needed) -> BOOL {
            return asked == s_level ? simulated::Fail(s_code, FALSE)
                                    : s_below->GetPrinterA(handle, asked, data, size, needed);
        };
    }
};

TEST_F(GetPrinter, ShareOfA9xPrinterIsRead) {
    StartWith("win98");
    std::string path = std::string(kPrintersOn) + "\\P1";
    Machine().Registry().SetText(path, "Share Name", "LASER");
    static bool s_asked = false;
    s_asked = false;
    ReplacedOperations replaced;
    static const PlatformTable* s_below = nullptr;
    static PlatformTable s_table;
    s_table = replaced.table;
    s_below = &s_table;
    replaced.table.GetProcAddress = [](HMODULE module, LPCSTR name) -> FARPROC {
        using Function = DWORD (*)(LPCSTR, LPCSTR, SHORT, LPSTR, WORD, WORD*);
        static const Function function = [](LPCSTR, LPCSTR share, SHORT level, LPSTR data, WORD, WORD*) -> DWORD {
            EXPECT_STREQ(share, "LASER");
            EXPECT_EQ(level, 50);
            share_info_50 info{};
            std::strcpy(info.shi50_netname, "LASER");
            std::strcpy(info.shi50_rw_password, "secret");
            info.shi50_type = 1;
            std::memcpy(data, &info, sizeof info);
            s_asked = true;
            return 0;
        };
        return std::string_view(name) == "NetShareGetInfo" ? AsExport(function) : s_below->GetProcAddress(module, name);
    };
    ReadRecord record("P1");
    ASSERT_EQ(record.Code(), 0u);
    EXPECT_TRUE(s_asked);
    EXPECT_STREQ(record->ShareRecord->NetName, "LASER");
    EXPECT_STREQ(record->ShareRecord->ReadWritePassword, "secret");
    EXPECT_EQ(record->ShareRecord->ShareType, 1u);
    EXPECT_EQ(record->ShareRecord->DeviceNotSelectedTimeout, 15000u);
}

TEST_F(GetPrinter, ShareThatIsNotThereIsNoFailure) {
    StartWith("win98");
    Machine().Registry().SetText(std::string(kPrintersOn) + "\\P1", "Share Name", "LASER");
    ReadRecord record("P1");
    EXPECT_EQ(record.Code(), 0u);
    // Each level with two calls: 2, then 5 for the default printer, then 5 for the timeouts, and behind it the share.
    EXPECT_THAT(Test().TakeCallNames({"GetPrinterA", "NetShareGetInfo"}),
                ElementsAre("GetPrinterA", "GetPrinterA", "GetPrinterA", "GetPrinterA", "GetPrinterA", "GetPrinterA",
                            "NetShareGetInfo"));
    EXPECT_STREQ(record->ShareRecord->NetName, "");
}

TEST_F(GetPrinter, Level5OfA9xPrinterIsNeeded) {
    StartWith("win98");
    ReplacedOperations replaced;
    FailLevel(replaced, 5, ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(ReadRecord("P1").Code(), ERROR_NOT_ENOUGH_MEMORY);
}

// ---- NT family ------------------------------------------------------------------------------------------------------

TEST_F(GetPrinter, DescriptorIsNeeded) {
    StartWith("xp");
    ReplacedOperations replaced;
    FailLevel(replaced, 3, ERROR_ACCESS_DENIED);
    Test().TurnLogOn(1);
    EXPECT_EQ(ReadRecord("P1").Code(), ERROR_ACCESS_DENIED);
    const std::vector<std::string> log = Test().TakeLog();
    ASSERT_GE(log.size(), 2u);
    EXPECT_EQ(log.back(), "DoGetPrinter End(5)");
    EXPECT_THAT(log, Contains("GetStringSD() - End(5)"));
}

TEST_F(GetPrinter, Level8IsReadAlsoBehindAFailedDescriptor) {
    StartWith("xp");
    static std::vector<DWORD> s_levels;
    s_levels.clear();
    ReplacedOperations replaced;
    FailLevel(replaced, 3, ERROR_ACCESS_DENIED);
    static PlatformTable s_failing;
    s_failing = replaced.table;
    replaced.table.GetPrinterA = [](HANDLE handle, DWORD level, LPBYTE data, DWORD size, LPDWORD needed) -> BOOL {
        if (s_levels.empty() || s_levels.back() != level) {
            s_levels.push_back(level);
        }
        return s_failing.GetPrinterA(handle, level, data, size, needed);
    };
    EXPECT_EQ(ReadRecord("P1").Code(), ERROR_ACCESS_DENIED);
    EXPECT_THAT(s_levels, ElementsAre(2, 3, 8));  // and not 7
}

TEST_F(GetPrinter, PublishingAndDevModeThatCanNotBeReadAreNoFailure) {
    StartWith("xp");
    for (DWORD level : {7u, 8u}) {
        ReplacedOperations replaced;
        FailLevel(replaced, level, ERROR_ACCESS_DENIED);
        ReadRecord record("P1");
        ASSERT_EQ(record.Code(), 0u) << level;
        EXPECT_EQ(record->SecurityRecord->PublishAction, 0u);
        EXPECT_EQ(record->SecurityRecord->DevMode == nullptr, level == 8);
    }
}

TEST_F(GetPrinter, PublishActionCountsOnlyWithAnObject) {
    StartWith("xp");
    static bool s_hasObject = false;
    static PlatformTable s_below;
    ReplacedOperations replaced;
    s_below = replaced.table;
    replaced.table.GetPrinterA = [](HANDLE handle, DWORD level, LPBYTE data, DWORD size, LPDWORD needed) -> BOOL {
        if (level != 7) {
            return s_below.GetPrinterA(handle, level, data, size, needed);
        }
        *needed = sizeof(PRINTER_INFO_7A);
        if (size < *needed) {
            return simulated::Fail(ERROR_INSUFFICIENT_BUFFER, FALSE);
        }
        static char guid[] = "{00000000-0000-0000-0000-000000000001}";
        PRINTER_INFO_7A info{s_hasObject ? guid : nullptr, DSPRINT_PUBLISH};
        std::memcpy(data, &info, sizeof info);
        return TRUE;
    };
    for (bool hasObject : {false, true}) {
        s_hasObject = hasObject;
        ReadRecord record("P1");
        ASSERT_EQ(record.Code(), 0u);
        EXPECT_EQ(record->SecurityRecord->PublishAction, hasObject ? DWORD{DSPRINT_PUBLISH} : 0u);
    }
}

TEST_F(GetPrinter, OfAConnectionLevel2Alone) {
    StartWith("xp");
    ShareOnTheNetwork(Test());
    char name[] = "\\\\server\\Laser";
    ASSERT_TRUE(simulated::AddPrinterConnectionA(name));
    Test().TurnLogOn(1);
    ReadRecord record(name);
    ASSERT_EQ(record.Code(), 0u);
    EXPECT_STREQ(record->pPrinterName, name);
    EXPECT_STREQ(record->pServerName, "\\\\server");
    EXPECT_EQ(record->SecurityRecord, nullptr);
    EXPECT_EQ(record->ShareRecord, nullptr);
    EXPECT_EQ(record->RegistryEntryCount, 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoGetPrinter(\\\\server\\Laser) Start", "DoGetPrinter End(0)"));
}

TEST_F(GetPrinter, ConnectionCanBeTheDefaultPrinter) {
    StartWith("xp");
    ShareOnTheNetwork(Test());
    char name[] = "\\\\server\\Laser";
    ASSERT_TRUE(simulated::AddPrinterConnectionA(name));
    MakeDefaultOn(Test(), name);
    Test().TurnLogOn(1);
    ReadRecord record(name);
    ASSERT_EQ(record.Code(), 0u);
    EXPECT_NE(record->Attributes & PRINTER_ATTRIBUTE_DEFAULT, 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoGetPrinter(\\\\server\\Laser) Start",
                            "PI_GetPrinter() \\\\server\\Laser is default printer", "DoGetPrinter End(0)"));
}

TEST_F(GetPrinter, Level2WithoutABlockIsRefused) {
    StartWith("xp");
    ReplacedOperations replaced;
    replaced.table.GetPrinterA = [](HANDLE, DWORD, LPBYTE, DWORD, LPDWORD) -> BOOL { return TRUE; };
    EXPECT_EQ(ReadRecord("P1").Code(), ERROR_INVALID_PARAMETER);
}

TEST_F(GetPrinter, CallsComeInTheirOrder) {
    const std::vector<std::string> kCalls = {"OpenPrinterA", "ClosePrinter", "GetPrinterA", "CreateICA",
                                             "DeleteDC",     "LoadLibraryA", "FreeLibrary", "EnumICMProfilesA"};
    StartWith("nt4");
    Test().TakeCalls();
    ASSERT_EQ(ReadRecord("P1").Code(), 0u);
    std::vector<std::string> names = Test().TakeCallNames(kCalls);
    ASSERT_GE(names.size(), 6u);
    // Level 2 first and the profiles last; between them the values, each with a printer of its own.
    EXPECT_EQ(std::vector(names.begin(), names.begin() + 4),
              (std::vector<std::string>{"OpenPrinterA", "GetPrinterA", "GetPrinterA", "ClosePrinter"}));
    const auto tail = std::find(names.begin(), names.end(), "LoadLibraryA");
    EXPECT_EQ(std::vector(tail, names.end()),
              (std::vector<std::string>{"LoadLibraryA", "FreeLibrary", "CreateICA", "EnumICMProfilesA", "DeleteDC"}));
}

}  // namespace
}  // namespace pikel
