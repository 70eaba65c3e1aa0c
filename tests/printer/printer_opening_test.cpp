// How each operation opens its printer: plainly, or with the right to change it.
#include "printer/default_printer.h"
#include "printer/delete_printer.h"
#include "printer/get_printer.h"
#include "spooler/printer_data.h"
#include "support/printer_machine.h"
#include "printer/set_printer.h"

namespace pikel {
namespace {

using namespace testing_support;

/// Notes what is done to the printer. The calls go on to the machine.
class WatchedPrinter {
  public:
    WatchedPrinter() {
        s_below = m_replaced.table;
        s_events.clear();
        m_replaced.table.OpenPrinterA = [](LPSTR name, LPHANDLE handle, LPPRINTER_DEFAULTSA defaults) -> BOOL {
            EXPECT_STREQ(name, "P1");
            Note(defaults == nullptr                             ? "open plainly"
                 : defaults->DesiredAccess == PRINTER_ALL_ACCESS ? "open with access"
                                                                 : "open otherwise");
            return s_below.OpenPrinterA(name, handle, defaults);
        };
        m_replaced.table.GetPrinterA = [](HANDLE handle, DWORD level, LPBYTE data, DWORD size, LPDWORD needed) -> BOOL {
            if (data != nullptr) {
                Note("read " + std::to_string(level));
            }
            return s_below.GetPrinterA(handle, level, data, size, needed);
        };
        m_replaced.table.SetPrinterA = [](HANDLE handle, DWORD level, LPBYTE data, DWORD command) -> BOOL {
            Note("write " + std::to_string(level));
            return s_below.SetPrinterA(handle, level, data, command);
        };
        m_replaced.table.DeletePrinter = [](HANDLE handle) -> BOOL {
            Note("delete");
            return s_below.DeletePrinter(handle);
        };
    }
    const std::vector<std::string>& Events() const { return s_events; }

  private:
    /// A run of the same counts once: a printer's values are read one by one, each with a printer of its own.
    static void Note(const std::string& event) {
        if (s_events.empty() || s_events.back() != event) {
            s_events.push_back(event);
        }
    }

    static inline PlatformTable s_below;
    static inline std::vector<std::string> s_events;
    ReplacedOperations m_replaced;
};

// ---- the operations -------------------------------------------------------------------------------------------------

void ReadValue() {
    PrinterValueData value;
    EXPECT_EQ(GetPrinterData("P1", nullptr, "udpWidth", ValueKindEvery, value), ERROR_FILE_NOT_FOUND);
}

void ReadAll() {
    PrinterRecord* record = nullptr;
    ASSERT_EQ(DoGetPrinter("P1", &record), 0u);
    Platform().HeapFree(Platform().GetProcessHeap(), 0, record);
}

void Write() {
    PrinterText text("P1");
    EXPECT_EQ(DoSetPrinter("P1", &text.Record()), 0u);
}

void WriteExtras() {
    DEVMODEA mode{};
    mode.dmSize = sizeof mode;
    PrinterSecurityRecord security{};
    security.PublishAction = DSPRINT_PUBLISH;
    security.DevMode = &mode;
    PrinterShareRecord share{};
    PrinterText text("P1");
    text.Record().SecurityRecord = &security;
    text.Record().ShareRecord = &share;
    EXPECT_EQ(ApplyPrinterExtras("P1", &text.Record()), 0u);
}

void Delete() {
    EXPECT_EQ(DoDeletePrinter("P1", 0, nullptr), 0u);
}

void AskForDefault() {
    EXPECT_EQ(IsDefaultPrinter("P1"), 0u);
}

void MakeDefault() {
    EXPECT_EQ(DoSetDefaultPrinter("P1"), 0u);
}

struct OpeningCase {
    const char* system;
    const char* operation;
    void (*run)();
    std::vector<std::string> events;
};

const std::vector<OpeningCase> kOpenings = {
    {"nt4", "ReadValue", ReadValue, {"open with access"}},
    {"xp", "ReadValue", ReadValue, {"open with access"}},
    // Level 2, whether it is the default printer, and the timeouts.
    {"win98", "ReadAll", ReadAll, {"open plainly", "read 2", "open plainly", "read 5", "open plainly", "read 5"}},
    // Level 2 and the values.
    {"nt4", "ReadAll", ReadAll, {"open plainly", "read 2", "open with access"}},
    // Level 2, the values and the descriptor, the publishing, the DEVMODE.
    {"xp",
     "ReadAll",
     ReadAll,
     {"open plainly", "read 2", "open with access", "read 3", "open with access", "read 7", "open plainly", "read 8"}},
    {"win98", "Write", Write, {"open with access", "write 2"}},
    {"xp", "Write", Write, {"open with access", "write 2"}},
    {"win98", "WriteExtras", WriteExtras, {"open with access", "write 5"}},
    {"xp", "WriteExtras", WriteExtras, {"open with access", "read 7", "write 7", "open with access", "write 8"}},
    {"win98", "Delete", Delete, {"open with access", "read 2", "delete"}},
    {"xp", "Delete", Delete, {"open with access", "delete"}},
    {"win98", "AskForDefault", AskForDefault, {"open plainly", "read 5"}},
    {"win98", "MakeDefault", MakeDefault, {"open plainly", "read 5", "write 5"}},
    {"nt4", "MakeDefault", MakeDefault, {"open plainly", "read 2"}},
};

TEST(PrinterOpening, GoesByWhatTheOperationDoes) {
    for (const OpeningCase& opening : kOpenings) {
        SCOPED_TRACE(std::string(opening.operation) + " on " + opening.system);
        TestMachine test(opening.system);
        InstallDriver(test);
        AddPrinterTo(test, "First");
        AddPrinterTo(test, "P1");
        WatchedPrinter printer;
        opening.run();
        EXPECT_EQ(printer.Events(), opening.events);
    }
}

}  // namespace
}  // namespace pikel
