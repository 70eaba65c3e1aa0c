// A printer's share on the 9x family.
#include "printer/share_registry.h"

#include <array>
#include <cstring>

#include "machine/desktop/desktop.h"
#include "machine/operations.h"
#include "machine/network/shares.h"
#include "support/printer_machine.h"
#include "support/calls.h"

namespace pikel {
namespace {

using namespace testing_support;
using simulated::Share;
using simulated::Shares;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr char kLanMan[] = "HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Network\\LanMan";
constexpr DWORD kMissingModule = ERROR_MOD_NOT_FOUND;
const std::vector<std::string> kSharingCalls = {
    "LoadLibraryA",  "GetProcAddress", "NetShareGetInfo", "NetShareSetInfo", "NetShareAdd",
    "NetShareDel",   "FreeLibrary",    "RegCreateKeyExA", "RegSetValueExA",  "RegCloseKey",
    "RegDeleteKeyA", "SHChangeNotify", "PeekMessageA"};

template <std::size_t Size>
void Put(char (&field)[Size], std::string_view text) {
    ASSERT_LE(text.size(), Size);
    std::memset(field, 0, Size);
    std::memcpy(field, text.data(), text.size());
}

PrinterShareRecord LaserShare() {
    PrinterShareRecord record{};
    Put(record.NetName, "LASER");
    record.ShareType = 1;
    record.Flags = 0x103;
    Put(record.Remark, "by the window");
    Put(record.Path, "P1");
    Put(record.ReadWritePassword, "write");
    Put(record.ReadOnlyPassword, "read");
    record.DeviceNotSelectedTimeout = 15;
    record.TransmissionRetryTimeout = 45;
    return record;
}

/// What the network library was given, taken before its call returns.
struct Given {
    int calls = 0;
    std::string server;
    std::string name;
    SHORT level = 0;
    WORD size = 0;
    share_info_50 info{};
    std::string remark;
    std::string path;
};

/// A network library of a test's own in the place of the machine's.
class OwnLibrary {
  public:
    explicit OwnLibrary(simulated::Machine& machine) : m_machine(machine) { s_given = {}; }
    template <class Function>
    void Export(const char* name, Function* function) {
        m_exports.emplace(name, AsExport(function));
        m_machine.Modules().Register(Path(), m_exports);
    }
    static Given s_given;
    static DWORD s_code;

    static void Take(LPCSTR server, SHORT level, LPCSTR bytes, WORD size) {
        ++s_given.calls;
        s_given.server = server == nullptr ? "null" : server;
        s_given.level = level;
        s_given.size = size;
        // As many bytes as were told of can be read.
        const std::string all(bytes, size);
        std::memcpy(&s_given.info, all.data(), sizeof(share_info_50));
        s_given.remark = s_given.info.shi50_remark == nullptr ? "null" : s_given.info.shi50_remark;
        s_given.path = s_given.info.shi50_path == nullptr ? "null" : s_given.info.shi50_path;
    }
    static DWORD WINAPI Set(LPCSTR server, LPCSTR name, SHORT level, LPCSTR bytes, WORD size, SHORT parameter) {
        Take(server, level, bytes, size);
        s_given.name = name;
        EXPECT_EQ(parameter, 0);
        return s_code;
    }
    static DWORD WINAPI Add(LPCSTR server, SHORT level, LPCSTR bytes, WORD size) {
        Take(server, level, bytes, size);
        return s_code;
    }

  private:
    std::string Path() const { return m_machine.System().systemDirectory + "\\svrapi.dll"; }

    simulated::Machine& m_machine;
    std::map<std::string, FARPROC, std::less<>> m_exports;
};
Given OwnLibrary::s_given;
DWORD OwnLibrary::s_code = 0;

class ShareRegistry : public MachineTest {
  protected:
    ShareRegistry() : MachineTest("win98") { OwnLibrary::s_code = 0; }
    Shares SharesOnMachine() { return Shares(Machine()); }
    void ShareOnMachine(const Share& share) {
        ASSERT_EQ(SharesOnMachine().Add(share), 0u);
        Machine().Commit();
    }
    std::vector<std::string> ChangesTold() {
        std::vector<std::string> told;
        for (const simulated::ShellChange& change : Machine().Desktop().shellChanges) {
            EXPECT_EQ(change.flags, 2u);
            char text[80];
            std::snprintf(text, sizeof text, "0x%x %s %s", static_cast<unsigned>(change.event), change.item1.c_str(),
                          change.item2.c_str());
            told.push_back(text);
        }
        return told;
    }
    /// Turns the log on and forgets the calls so far.
    void Watch() {
        Test().TurnLogOn(1);
        Test().TakeCalls();
    }
};

// ---- the arguments and the library ------------------------------------------------------------------------------

TEST_F(ShareRegistry, NullArgumentsAreRefusedWithoutAnEndLine) {
    Watch();
    PrinterShareRecord record{};
    EXPECT_EQ(GetSharePrinter9x(nullptr, &record), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(GetSharePrinter9x("LASER", nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(SetSharePrinter9x(nullptr, &record), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(SetSharePrinter9x("LASER", nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(AddSharePrinter9x(nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(DeleteSharePrinter9x(nullptr, "P1"), ERROR_INVALID_PARAMETER);
    EXPECT_THAT(Test().TakeCallNames(kSharingCalls), IsEmpty());
    EXPECT_THAT(Test().TakeLog(), ElementsAre("GetSharePrinter9x() - Start", "GetSharePrinter9x() - Start",
                                              "SetSharePrinter9x() - Start", "SetSharePrinter9x() - Start",
                                              "AddSharePrinter9x() - Start", "DeleteSharePrinter9x() - Start"));
}

TEST_F(ShareRegistry, MissingLibraryGivesItsCode) {
    Machine().Modules().Remove("svrapi.dll");
    Watch();
    PrinterShareRecord record = LaserShare();
    EXPECT_EQ(GetSharePrinter9x("LASER", &record), kMissingModule);
    EXPECT_EQ(SetSharePrinter9x("LASER", &record), kMissingModule);
    EXPECT_EQ(AddSharePrinter9x(&record), kMissingModule);
    EXPECT_EQ(DeleteSharePrinter9x("LASER", "P1"), kMissingModule);
    EXPECT_THAT(Test().TakeCallNames(kSharingCalls), Each("LoadLibraryA"));
    EXPECT_THAT(Test().TakeLog(), ElementsAre("GetSharePrinter9x() - Start", "SetSharePrinter9x() - Start",
                                              "AddSharePrinter9x() - Start", "DeleteSharePrinter9x() - Start"));
}

TEST_F(ShareRegistry, LibraryWithoutTheEntryIsFreedAgain) {
    for (const char* name : {"NetShareGetInfo", "NetShareSetInfo", "NetShareAdd", "NetShareDel"}) {
        Machine().Modules().RemoveExport("svrapi.dll", name);
    }
    Watch();
    PrinterShareRecord record = LaserShare();
    auto expectFreed = [&](DWORD code) {
        EXPECT_EQ(code, ERROR_PROC_NOT_FOUND);
        EXPECT_THAT(Test().TakeCallNames(kSharingCalls), ElementsAre("LoadLibraryA", "GetProcAddress", "FreeLibrary"));
        EXPECT_THAT(Test().TakeLog(), SizeIs(1));
    };
    expectFreed(GetSharePrinter9x("LASER", &record));
    expectFreed(SetSharePrinter9x("LASER", &record));
    expectFreed(AddSharePrinter9x(&record));
    expectFreed(DeleteSharePrinter9x("LASER", "P1"));
    EXPECT_THAT(ChangesTold(), IsEmpty());
}

TEST_F(ShareRegistry, SystemsOfTheNtFamilyHaveNoSuchLibrary) {
    for (const std::string& system : EverySystem()) {
        Start(system);
        PrinterShareRecord record = LaserShare();
        EXPECT_EQ(GetSharePrinter9x("NOBODY", &record), Is9xName(system) ? DWORD{NERR_NetNameNotFound} : kMissingModule)
            << system;
    }
}

// ---- reading ----------------------------------------------------------------------------------------------------

TEST_F(ShareRegistry, ReadFillsTheFirstSevenFieldsAlone) {
    ShareOnMachine({"LASER", 1, 0x103, "by the window", "P1", "write", "read"});
    PrinterShareRecord record;
    std::memset(&record, '#', sizeof record);
    Watch();
    EXPECT_EQ(GetSharePrinter9x("laser", &record), 0u);
    EXPECT_STREQ(record.NetName, "laser");
    EXPECT_EQ(record.ShareType, 1);
    EXPECT_EQ(record.Flags, 0x103);
    EXPECT_STREQ(record.Remark, "by the window");
    EXPECT_STREQ(record.Path, "P1");
    EXPECT_STREQ(record.ReadWritePassword, "write");
    EXPECT_STREQ(record.ReadOnlyPassword, "read");
    EXPECT_EQ(record.DeviceNotSelectedTimeout, 0x23232323u);
    EXPECT_EQ(record.TransmissionRetryTimeout, 0x23232323u);
    EXPECT_THAT(TakeCallsOf(Test(), {"NetShareGetInfo"}),
                ElementsAre("NetShareGetInfo(null, \"laser\", 0x32, &, 0x100, &) = 0x0"));
    EXPECT_THAT(Test().TakeLog(), ElementsAre("GetSharePrinter9x() - Start", "GetSharePrinter9x() - End(0)"));
}

TEST_F(ShareRegistry, ReadTakesTheCallsInTheirOrder) {
    ShareOnMachine({"LASER", 1, 0, "", "P1", "", ""});
    PrinterShareRecord record{};
    Watch();
    EXPECT_EQ(GetSharePrinter9x("LASER", &record), 0u);
    EXPECT_THAT(Test().TakeCallNames(kSharingCalls),
                ElementsAre("LoadLibraryA", "GetProcAddress", "NetShareGetInfo", "FreeLibrary"));
}

TEST_F(ShareRegistry, UnknownShareGivesTheLibrarysCode) {
    PrinterShareRecord record = LaserShare();
    Watch();
    EXPECT_EQ(GetSharePrinter9x("NOBODY", &record), DWORD{NERR_NetNameNotFound});
    EXPECT_STREQ(record.NetName, "LASER");
    EXPECT_THAT(Test().TakeCallNames(kSharingCalls),
                ElementsAre("LoadLibraryA", "GetProcAddress", "NetShareGetInfo", "FreeLibrary"));
    EXPECT_THAT(Test().TakeLog(), ElementsAre("GetSharePrinter9x() - Start", "GetSharePrinter9x() - End(2310)"));
}

TEST_F(ShareRegistry, SmallBlockGrowsBy256BytesBeyondWhatTheLibraryReports) {
    // A remark of 200 bytes: more than the first block holds beside the structure, and more than the record takes.
    const std::string remark(200, 'r');
    ShareOnMachine({"LASER", 1, 0, remark, "P1", "", ""});
    PrinterShareRecord record{};
    Watch();
    EXPECT_EQ(GetSharePrinter9x("LASER", &record), 0u);
    // 56 bytes of structure, 201 of remark, 3 of path.
    EXPECT_THAT(TakeCallsOf(Test(), {"NetShareGetInfo"}),
                ElementsAre("NetShareGetInfo(null, \"LASER\", 0x32, &, 0x100, &) = 0x84b failed, last error 0",
                            "NetShareGetInfo(null, \"LASER\", 0x32, &, 0x204, &) = 0x0"));
    EXPECT_EQ(std::string(record.Remark), std::string(49, 'r'));
    EXPECT_STREQ(record.Path, "P1");
}

TEST_F(ShareRegistry, BlockGrowsAsOftenAsTheLibraryAsks) {
    static std::vector<WORD> s_sizes;
    s_sizes.clear();
    OwnLibrary library(Machine());
    library.Export(
        "NetShareGetInfo", +[](LPCSTR, LPCSTR, SHORT, LPSTR bytes, WORD size, WORD* needed) -> DWORD {
            s_sizes.push_back(size);
            bytes[size - 1] = 1;  // every byte told of is there
            *needed = 1000;
            if (s_sizes.size() == 2) {
                *needed = 2000;  // grew meanwhile
            }
            if (s_sizes.size() < 3) {
                return NERR_BufTooSmall;
            }
            std::memset(bytes, 0, size);
            std::strcpy(bytes, "LASER");
            return 0;
        });
    PrinterShareRecord record = LaserShare();
    EXPECT_EQ(GetSharePrinter9x("LASER", &record), 0u);
    EXPECT_THAT(s_sizes, ElementsAre(256, 1256, 2256));
    // Null texts leave their fields.
    EXPECT_STREQ(record.Remark, "by the window");
    EXPECT_STREQ(record.Path, "P1");
    EXPECT_STREQ(record.ReadWritePassword, "");
}

TEST_F(ShareRegistry, LibraryThatNeverHasEnoughEndsTheRead) {
    static std::vector<WORD> s_sizes;
    for (WORD reported : {0, 256, 0xff00, 0xffff}) {
        s_sizes.clear();
        static WORD s_reported;
        s_reported = reported;
        OwnLibrary library(Machine());
        library.Export(
            "NetShareGetInfo", +[](LPCSTR, LPCSTR, SHORT, LPSTR, WORD size, WORD* needed) -> DWORD {
                s_sizes.push_back(size);
                *needed = s_reported;
                return s_sizes.size() < 100 ? DWORD{NERR_BufTooSmall} : 0;
            });
        PrinterShareRecord record = LaserShare();
        Watch();
        EXPECT_EQ(GetSharePrinter9x("LASER", &record), DWORD{NERR_BufTooSmall}) << reported;
        EXPECT_THAT(s_sizes, SizeIs(reported == 256 ? 2 : 1)) << reported;
        EXPECT_THAT(Test().TakeLog(), ElementsAre("GetSharePrinter9x() - Start", "GetSharePrinter9x() - End(2123)"));
        EXPECT_STREQ(record.NetName, "LASER");
    }
}

TEST_F(ShareRegistry, ReadWithoutMemoryForTheFirstBlockLooksLikeASuccess) {
    ShareOnMachine({"OTHER", 1, 0, "", "P2", "", ""});
    PrinterShareRecord record = LaserShare();
    Watch();
    Machine().Heap().FailAllocation(0, true);
    EXPECT_EQ(GetSharePrinter9x("OTHER", &record), 0u);
    Machine().Heap().StopFailing();
    EXPECT_STREQ(record.NetName, "LASER");
    EXPECT_THAT(Test().TakeCallNames(kSharingCalls), ElementsAre("LoadLibraryA", "GetProcAddress", "FreeLibrary"));
    EXPECT_THAT(Test().TakeLog(), ElementsAre("GetSharePrinter9x() - Start", "GetSharePrinter9x() - End(0)"));
}

TEST_F(ShareRegistry, ReadWithoutMemoryForALargerBlockGivesTheLibrarysCode) {
    ShareOnMachine({"LASER", 1, 0, std::string(200, 'r'), "P1", "", ""});
    PrinterShareRecord record{};
    Watch();
    Machine().Heap().FailAllocation(1, true);
    EXPECT_EQ(GetSharePrinter9x("LASER", &record), DWORD{NERR_BufTooSmall});
    Machine().Heap().StopFailing();
    EXPECT_THAT(Test().TakeCallNames(kSharingCalls),
                ElementsAre("LoadLibraryA", "GetProcAddress", "NetShareGetInfo", "FreeLibrary"));
    EXPECT_THAT(Test().TakeLog(), ElementsAre("GetSharePrinter9x() - Start", "GetSharePrinter9x() - End(2123)"));
    EXPECT_EQ(Machine().Heap().OpenCount(simulated::BlockKind::Heap), 0u);
}

// ---- changing ---------------------------------------------------------------------------------------------------

TEST_F(ShareRegistry, ChangeCarriesEverythingToTheLibrary) {
    OwnLibrary library(Machine());
    library.Export("NetShareSetInfo", &OwnLibrary::Set);
    const PrinterShareRecord record = LaserShare();
    Watch();
    EXPECT_EQ(SetSharePrinter9x("OLD", &record), 0u);
    const Given& given = OwnLibrary::s_given;
    EXPECT_EQ(given.server, "null");
    EXPECT_EQ(given.name, "OLD");
    EXPECT_EQ(given.level, 50);
    EXPECT_EQ(given.size, 56 + 14 + 3);
    EXPECT_STREQ(given.info.shi50_netname, "LASER");
    EXPECT_EQ(given.info.shi50_type, 1);
    EXPECT_EQ(given.info.shi50_flags, 0x103);
    EXPECT_EQ(given.remark, "by the window");
    EXPECT_EQ(given.path, "P1");
    EXPECT_STREQ(given.info.shi50_rw_password, "write");
    EXPECT_STREQ(given.info.shi50_ro_password, "read");
    EXPECT_THAT(Test().TakeCallNames(kSharingCalls),
                ElementsAre("LoadLibraryA", "GetProcAddress", "NetShareSetInfo", "FreeLibrary"));
    EXPECT_THAT(Test().TakeLog(), ElementsAre("SetSharePrinter9x() - Start", "SetSharePrinter9x() - End(0)"));
}

TEST_F(ShareRegistry, ChangePassesEmptyTextsForEmptyFieldsAndCountsNothingForThem) {
    OwnLibrary library(Machine());
    library.Export("NetShareSetInfo", &OwnLibrary::Set);
    PrinterShareRecord record = LaserShare();
    Put(record.Remark, "");
    EXPECT_EQ(SetSharePrinter9x("LASER", &record), 0u);
    EXPECT_EQ(OwnLibrary::s_given.remark, "");
    EXPECT_EQ(OwnLibrary::s_given.path, "P1");
    EXPECT_EQ(OwnLibrary::s_given.size, 56 + 3);
    Put(record.Path, "");
    EXPECT_EQ(SetSharePrinter9x("LASER", &record), 0u);
    EXPECT_EQ(OwnLibrary::s_given.path, "");
    EXPECT_EQ(OwnLibrary::s_given.size, 56);
}

TEST_F(ShareRegistry, TextsThatFillTheirFieldsAreCut) {
    OwnLibrary library(Machine());
    library.Export("NetShareSetInfo", &OwnLibrary::Set);
    PrinterShareRecord record{};
    Put(record.NetName, std::string(13, 'n'));
    Put(record.Remark, std::string(50, 'r'));
    Put(record.Path, std::string(33, 'p'));
    Put(record.ReadWritePassword, std::string(9, 'w'));
    Put(record.ReadOnlyPassword, std::string(9, 'o'));
    EXPECT_EQ(SetSharePrinter9x("LASER", &record), 0u);
    const Given& given = OwnLibrary::s_given;
    EXPECT_EQ(std::string(given.info.shi50_netname), std::string(12, 'n'));
    EXPECT_EQ(given.remark, std::string(49, 'r'));
    EXPECT_EQ(given.path, std::string(32, 'p'));
    EXPECT_EQ(std::string(given.info.shi50_rw_password), std::string(8, 'w'));
    EXPECT_EQ(std::string(given.info.shi50_ro_password), std::string(8, 'o'));
    EXPECT_EQ(given.size, 56 + 50 + 33);
    EXPECT_EQ(record.Remark[49], 'r');  // the caller's record stays as it was
}

TEST_F(ShareRegistry, ChangeThatFailsGivesTheLibrarysCode) {
    const PrinterShareRecord record = LaserShare();
    Watch();
    EXPECT_EQ(SetSharePrinter9x("NOBODY", &record), DWORD{NERR_NetNameNotFound});
    EXPECT_THAT(Test().TakeLog(), ElementsAre("SetSharePrinter9x() - Start", "SetSharePrinter9x() - End(2310)"));
    EXPECT_THAT(Machine().Registry().SubKeys(kLanMan), IsEmpty());
}

// ---- adding -----------------------------------------------------------------------------------------------------

TEST_F(ShareRegistry, AddPassesNoPasswordsAndNullForEmptyTexts) {
    OwnLibrary library(Machine());
    library.Export("NetShareAdd", &OwnLibrary::Add);
    PrinterShareRecord record = LaserShare();
    EXPECT_EQ(AddSharePrinter9x(&record), 0u);
    const Given& given = OwnLibrary::s_given;
    EXPECT_EQ(given.server, "null");
    EXPECT_EQ(given.level, 50);
    EXPECT_EQ(given.size, 56 + 14 + 3);
    EXPECT_STREQ(given.info.shi50_netname, "LASER");
    EXPECT_EQ(given.info.shi50_type, 1);
    EXPECT_EQ(given.info.shi50_flags, 0x103);
    EXPECT_EQ(given.remark, "by the window");
    EXPECT_EQ(given.path, "P1");
    EXPECT_EQ(std::string(given.info.shi50_rw_password, 9), std::string(9, '\0'));
    EXPECT_EQ(std::string(given.info.shi50_ro_password, 9), std::string(9, '\0'));
    Put(record.Remark, "");
    Put(record.Path, "");
    EXPECT_EQ(AddSharePrinter9x(&record), 0u);
    EXPECT_EQ(OwnLibrary::s_given.remark, "null");
    EXPECT_EQ(OwnLibrary::s_given.path, "null");
    EXPECT_EQ(OwnLibrary::s_given.size, 56);
}

TEST_F(ShareRegistry, AddEntersTheShareIntoTheRegistry) {
    const PrinterShareRecord record = LaserShare();
    EXPECT_EQ(AddSharePrinter9x(&record), 0u);
    const std::string key = std::string(kLanMan) + "\\LASER";
    auto bytes = [&](const char* name, DWORD type) -> std::string {
        const simulated::RegistryValue* value = Machine().Registry().Find(key, name);
        return value != nullptr && value->type == type ? value->data : "missing";
    };
    EXPECT_EQ(bytes("Flags", REG_DWORD), std::string("\x03\x01\0\0", 4));
    EXPECT_EQ(bytes("Type", REG_DWORD), std::string("\x01\0\0\0", 4));
    EXPECT_EQ(bytes("Path", REG_SZ), std::string("P1\0", 3));
    EXPECT_EQ(bytes("Remark", REG_SZ), std::string("by the window\0", 14));
    EXPECT_EQ(bytes("Parm1enc", REG_BINARY), "");
    EXPECT_EQ(bytes("Parm2enc", REG_BINARY), "");
    EXPECT_THAT(Machine().Registry().Values(key), SizeIs(6));
}

TEST_F(ShareRegistry, AddWritesALoneTerminatorForEmptyTexts) {
    OwnLibrary library(Machine());
    library.Export("NetShareAdd", &OwnLibrary::Add);
    PrinterShareRecord record{};
    Put(record.NetName, "BARE");
    record.ShareType = 0xff;
    record.Flags = 0xffff;
    EXPECT_EQ(AddSharePrinter9x(&record), 0u);
    const std::string key = std::string(kLanMan) + "\\BARE";
    EXPECT_EQ(Machine().Registry().Find(key, "Path")->data, std::string(1, '\0'));
    EXPECT_EQ(Machine().Registry().Find(key, "Remark")->data, std::string(1, '\0'));
    EXPECT_EQ(Machine().Registry().Number(key, "Flags"), 0xffffu);
    EXPECT_EQ(Machine().Registry().Number(key, "Type"), 0xffu);
}

TEST_F(ShareRegistry, AddTakesItsStepsInOrder) {
    Machine().Desktop().queue.push_back(QueuedMessage(1));
    const PrinterShareRecord record = LaserShare();
    Watch();
    EXPECT_EQ(AddSharePrinter9x(&record), 0u);
    const std::vector<std::string> calls = Test().TakeCalls();
    std::vector<std::string> steps;
    for (const std::string& call : calls) {
        for (const std::string& name : kSharingCalls) {
            if (call.starts_with(name + "(")) {
                steps.push_back(call);
            }
        }
    }
    const std::string lanMan = "\"SOFTWARE\\\\Microsoft\\\\Windows\\\\CurrentVersion\\\\Network\\\\LanMan";
    ASSERT_THAT(
        steps,
        ElementsAre(
            StartsWith("LoadLibraryA(\"svrapi.dll\")"), StartsWith("GetProcAddress("), StartsWith("NetShareAdd("),
            StartsWith("RegCreateKeyExA(0x80000002, " + lanMan + "\", 0x0, null, 0x0, 0x2001f, null, &, null)"),
            StartsWith("RegCloseKey("),
            StartsWith("RegCreateKeyExA(0x80000002, " + lanMan +
                       "\\\\LASER\", 0x0, null, 0x0, 0x2001f, null, &, null)"),
            ::testing::HasSubstr("\"Flags\", 0x0, 0x4, &, 0x4)"), ::testing::HasSubstr("\"Type\", 0x0, 0x4, &, 0x4)"),
            ::testing::HasSubstr("\"Path\", 0x0, 0x1, &, 0x3)"), ::testing::HasSubstr("\"Remark\", 0x0, 0x1, &, 0xe)"),
            ::testing::HasSubstr("\"Parm1enc\", 0x0, 0x3, &, 0x0)"),
            ::testing::HasSubstr("\"Parm2enc\", 0x0, 0x3, &, 0x0)"), StartsWith("RegCloseKey("),
            StartsWith("SHChangeNotify(0x2000, 0x2, &, null)"), StartsWith("PeekMessageA("),
            StartsWith("PeekMessageA("), StartsWith("SHChangeNotify(0x200, 0x2, &, null)"), StartsWith("PeekMessageA("),
            StartsWith("FreeLibrary(")));
    EXPECT_THAT(ChangesTold(), ElementsAre("0x2000 P1 ", "0x200 P1 "));
    EXPECT_THAT(Machine().Desktop().dispatched, SizeIs(1));
    EXPECT_THAT(Test().TakeLog(), ElementsAre("AddSharePrinter9x() - Start", "AddSharePrinter9x() - End(0)"));
}

TEST_F(ShareRegistry, AddThatTheLibraryRefusesWritesNothing) {
    ShareOnMachine({"LASER", 1, 0, "", "P1", "", ""});
    const std::string before = Machine().Registry().Text();
    const PrinterShareRecord record = LaserShare();
    Watch();
    EXPECT_EQ(AddSharePrinter9x(&record), DWORD{NERR_DuplicateShare});
    EXPECT_EQ(Machine().Registry().Text(), before);
    EXPECT_THAT(ChangesTold(), IsEmpty());
    EXPECT_THAT(Test().TakeCallNames(kSharingCalls),
                ElementsAre("LoadLibraryA", "GetProcAddress", "NetShareAdd", "FreeLibrary"));
    EXPECT_THAT(Test().TakeLog(), ElementsAre("AddSharePrinter9x() - Start", "AddSharePrinter9x() - End(2118)"));
}

TEST_F(ShareRegistry, AddWithoutTheSharesKeyGivesTheCodeAndTellsNobody) {
    const PrinterShareRecord record = LaserShare();
    faults::FailCall("RegCreateKeyExA", 2, ERROR_ACCESS_DENIED);
    Watch();
    EXPECT_EQ(AddSharePrinter9x(&record), ERROR_ACCESS_DENIED);
    EXPECT_THAT(ChangesTold(), IsEmpty());
    EXPECT_THAT(Test().TakeCallNames(kSharingCalls),
                ElementsAre("LoadLibraryA", "GetProcAddress", "NetShareAdd", "RegCreateKeyExA", "RegCloseKey",
                            "RegCreateKeyExA", "FreeLibrary"));
    EXPECT_THAT(Test().TakeLog(), ElementsAre("AddSharePrinter9x() - Start", "AddSharePrinter9x() - End(5)"));
    EXPECT_TRUE(SharesOnMachine().Find("LASER"));  // the share itself stays
}

TEST_F(ShareRegistry, FailureOfTheKeyOfAllSharesDoesNotMatter) {
    const PrinterShareRecord record = LaserShare();
    faults::FailCall("RegCreateKeyExA", 1, ERROR_ACCESS_DENIED);
    Test().TakeCalls();
    EXPECT_EQ(AddSharePrinter9x(&record), 0u);
    EXPECT_TRUE(Machine().Registry().KeyExists(std::string(kLanMan) + "\\LASER"));
    // The key that wasn't opened is not closed.
    EXPECT_THAT(Test().TakeCallNames({"RegCreateKeyExA", "RegCloseKey"}),
                ElementsAre("RegCreateKeyExA", "RegCreateKeyExA", "RegCloseKey"));
}

TEST_F(ShareRegistry, ValuesThatCannotBeWrittenDoNotMatter) {
    const PrinterShareRecord record = LaserShare();
    faults::FailCall("RegSetValueExA", 1, ERROR_ACCESS_DENIED, true);
    Test().TakeCalls();
    EXPECT_EQ(AddSharePrinter9x(&record), 0u);
    EXPECT_THAT(Test().TakeCallNames({"RegSetValueExA"}), SizeIs(6));
    EXPECT_THAT(ChangesTold(), ElementsAre("0x2000 P1 ", "0x200 P1 "));
}

TEST_F(ShareRegistry, PasswordsReachTheLibraryByTheChangeAfterTheAdd) {
    const PrinterShareRecord record = LaserShare();
    ASSERT_EQ(AddSharePrinter9x(&record), 0u);
    EXPECT_EQ(SharesOnMachine().Find("LASER")->readWritePassword, "");
    EXPECT_EQ(SharesOnMachine().Find("LASER")->readOnlyPassword, "");
    ASSERT_EQ(SetSharePrinter9x("LASER", &record), 0u);
    EXPECT_EQ(SharesOnMachine().Find("LASER")->readWritePassword, "write");
    EXPECT_EQ(SharesOnMachine().Find("LASER")->readOnlyPassword, "read");
    PrinterShareRecord read{};
    EXPECT_EQ(GetSharePrinter9x("LASER", &read), 0u);
    EXPECT_STREQ(read.ReadWritePassword, "write");
    EXPECT_STREQ(read.Remark, "by the window");
    // Their place in the registry stays empty.
    EXPECT_EQ(Machine().Registry().Find(std::string(kLanMan) + "\\LASER", "Parm1enc")->data, "");
}

// ---- deleting ---------------------------------------------------------------------------------------------------

TEST_F(ShareRegistry, DeleteTakesShareAndKeyAway) {
    const PrinterShareRecord record = LaserShare();
    ASSERT_EQ(AddSharePrinter9x(&record), 0u);
    Machine().Desktop().shellChanges.clear();
    Watch();
    EXPECT_EQ(DeleteSharePrinter9x("LASER", "P1"), 0u);
    EXPECT_FALSE(SharesOnMachine().Find("LASER"));
    EXPECT_FALSE(Machine().Registry().KeyExists(std::string(kLanMan) + "\\LASER"));
    EXPECT_THAT(ChangesTold(), ElementsAre("0x2000 P1 ", "0x400 P1 "));
    EXPECT_THAT(
        TakeCallsOf(Test(), kSharingCalls),
        ElementsAre(StartsWith("LoadLibraryA("), StartsWith("GetProcAddress("),
                    "NetShareDel(null, \"LASER\", 0x0) = 0x0",
                    "RegDeleteKeyA(0x80000002, "
                    "\"SOFTWARE\\\\Microsoft\\\\Windows\\\\CurrentVersion\\\\Network\\\\LanMan\\\\LASER\") = 0x0",
                    StartsWith("SHChangeNotify(0x2000, 0x2, &, null)"), StartsWith("PeekMessageA("),
                    StartsWith("SHChangeNotify(0x400, 0x2, &, null)"), StartsWith("PeekMessageA("),
                    "RegCloseKey(0x80000002) = 0x0", StartsWith("FreeLibrary(")));
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DeleteSharePrinter9x() - Start", "DeleteSharePrinter9x() - End(0)"));
}

TEST_F(ShareRegistry, DeleteOfAnUnknownShareLeavesTheRegistry) {
    Machine().Registry().SetText(std::string(kLanMan) + "\\OTHER", "Path", "P2");
    Machine().Commit();
    const std::string before = Machine().Registry().Text();
    Watch();
    EXPECT_EQ(DeleteSharePrinter9x("LASER", "P1"), DWORD{NERR_NetNameNotFound});
    EXPECT_EQ(Machine().Registry().Text(), before);
    EXPECT_THAT(ChangesTold(), IsEmpty());
    EXPECT_THAT(Test().TakeCallNames(kSharingCalls),
                ElementsAre("LoadLibraryA", "GetProcAddress", "NetShareDel", "FreeLibrary"));
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DeleteSharePrinter9x() - Start", "DeleteSharePrinter9x() - End(2310)"));
}

TEST_F(ShareRegistry, KeyThatCannotBeDeletedIsLoggedAlone) {
    ShareOnMachine({"LASER", 1, 0, "", "P1", "", ""});  // in the library alone
    Watch();
    EXPECT_EQ(DeleteSharePrinter9x("LASER", "P1"), 0u);
    EXPECT_THAT(
        Test().TakeLog(),
        ElementsAre(
            "DeleteSharePrinter9x() - Start",
            "DeleteSharePrinter9x()-DeleteSubKey(SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Network\\LanMan\\"
            "LASER):2",
            "DeleteSharePrinter9x() - End(0)"));
    EXPECT_THAT(ChangesTold(), ElementsAre("0x2000 P1 ", "0x400 P1 "));
}

TEST_F(ShareRegistry, DeleteIgnoresTheCloseOfTheRoot) {
    ShareOnMachine({"LASER", 1, 0, "", "P1", "", ""});
    ReplacedOperations replaced;
    static HKEY s_closed;
    s_closed = nullptr;
    replaced.table.RegCloseKey = [](HKEY key) -> LSTATUS {
        s_closed = key;
        return ERROR_INVALID_HANDLE;
    };
    EXPECT_EQ(DeleteSharePrinter9x("LASER", nullptr), 0u);
    EXPECT_EQ(s_closed, HKEY_LOCAL_MACHINE);
    EXPECT_THAT(ChangesTold(), ElementsAre("0x2000  ", "0x400  "));
}

TEST_F(ShareRegistry, EveryFailureOfTheLibraryIsPassedOn) {
    PrinterShareRecord record = LaserShare();
    for (const char* name : {"NetShareGetInfo", "NetShareSetInfo", "NetShareAdd", "NetShareDel"}) {
        faults::FailCall(name, 1, ERROR_NOT_SUPPORTED, true);
    }
    EXPECT_EQ(GetSharePrinter9x("LASER", &record), ERROR_NOT_SUPPORTED);
    EXPECT_EQ(SetSharePrinter9x("LASER", &record), ERROR_NOT_SUPPORTED);
    EXPECT_EQ(AddSharePrinter9x(&record), ERROR_NOT_SUPPORTED);
    EXPECT_EQ(DeleteSharePrinter9x("LASER", "P1"), ERROR_NOT_SUPPORTED);
}

}  // namespace
}  // namespace pikel
