// Telling a connection from a printer of the machine.
#include "spooler/printer_connection.h"

#include "support/printer_machine.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Entries that EnumPrintersA lists.
struct Entry {
    const char* name;
    const char* server;
};
std::vector<Entry> g_entries;

BOOL WINAPI ListEntries(DWORD, LPSTR, DWORD, LPBYTE buffer, DWORD size, LPDWORD needed, LPDWORD count) {
    *needed = static_cast<DWORD>(g_entries.size() * sizeof(PRINTER_INFO_2A));
    *count = 0;
    if (size < *needed) {
        Platform().SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    for (const Entry& entry : g_entries) {
        PRINTER_INFO_2A& info = reinterpret_cast<PRINTER_INFO_2A*>(buffer)[(*count)++];
        info = {};
        info.pPrinterName = const_cast<LPSTR>(entry.name);
        info.pServerName = const_cast<LPSTR>(entry.server);
    }
    return TRUE;
}

class ConnectionTestOnEverySystem : public EverySystemTest {};
INSTANTIATE_ON_EVERY_SYSTEM(ConnectionTestOnEverySystem);

TEST_P(ConnectionTestOnEverySystem, GoesByTwoBackslashesAlone) {
    struct Case {
        const char* name;
        DWORD answer;
    };
    const Case cases[] = {{nullptr, 0}, {"", 0},     {"\\", 0},          {"\\\\", 1},
                          {kShared, 1}, {"P1", 0},   {"//server/P1", 0}, {" \\\\server\\P1", 0},
                          {"\\P1", 0},  {"P\\\\", 0}};
    for (const Case& oneCase : cases) {
        Test().TakeCalls();
        EXPECT_EQ(IsPrinterConnection(oneCase.name, 1), Is9xName(GetParam()) ? 0 : oneCase.answer)
            << (oneCase.name == nullptr ? "null" : oneCase.name);
        EXPECT_THAT(Test().TakeCallNames({"EnumPrintersA", "OpenPrinterA"}), IsEmpty());
    }
}

TEST_P(ConnectionTestOnEverySystem, AsksTheSpoolerWhereTheFormIsNotEnough) {
    g_entries = {{"P1", nullptr}, {"\\\\SERVER\\laser", "\\\\SERVER"}};
    ReplacedOperations replaced;
    replaced.table.EnumPrintersA = ListEntries;
    EXPECT_EQ(IsPrinterConnection(kShared, 0), Is9xName(GetParam()) ? 0u : 1u);
    EXPECT_EQ(IsPrinterConnection("P1", 0), 0u);
    EXPECT_EQ(IsPrinterConnection("\\\\server\\Other", 0), 0u);
    EXPECT_EQ(IsPrinterConnection(nullptr, 0), 0u);
}

TEST_P(ConnectionTestOnEverySystem, MachineWithoutPrintersHasNoConnection) {
    EXPECT_EQ(IsPrinterConnection(kShared, 0), 0u);
}

TEST_P(ConnectionTestOnEverySystem, KnowsWhatTheUserIsConnectedTo) {
    InstallDriver(Test());
    ShareOnTheNetwork(Test());
    EXPECT_EQ(IsPrinterConnection(kShared, 0), 0u);  // within reach is not connected
    const BOOL connected = Platform().AddPrinterConnectionA(const_cast<LPSTR>(kShared));
    EXPECT_EQ(connected, Is9xName(GetParam()) ? FALSE : TRUE);
    EXPECT_EQ(IsPrinterConnection("\\\\SERVER\\LASER", 0), connected ? 1u : 0u);
}

TEST_P(ConnectionTestOnEverySystem, ReadsTheSpoolerAtLevel2) {
    InstallDriver(Test());
    AddPrinterTo(Test(), "P1");
    Test().TakeCalls();
    EXPECT_EQ(IsPrinterConnection("P1", 0), 0u);
    if (Is9xName(GetParam())) {
        EXPECT_THAT(Test().TakeCallNames({"EnumPrintersA"}), IsEmpty());
    } else {
        EXPECT_THAT(Test().TakeCallNames({"EnumPrintersA"}), ElementsAre("EnumPrintersA", "EnumPrintersA"));
    }
}

class PrinterConnection : public MachineTest {
  protected:
    PrinterConnection() { m_replaced.table.EnumPrintersA = ListEntries; }
    ReplacedOperations m_replaced;
};

TEST_F(PrinterConnection, EntryMustBeginWithABackslashAndHaveAServer) {
    struct Case {
        Entry entry;
        const char* name;
        DWORD answer;
    };
    const Case cases[] = {
        {{kShared, "\\\\server"}, kShared, 1}, {{kShared, ""}, kShared, 1},  // an empty server name counts as one
        {{kShared, nullptr}, kShared, 0},      {{"\\Laser", "\\\\server"}, "\\laser", 1},
        {{"Laser", "\\\\server"}, "Laser", 0}, {{nullptr, "\\\\server"}, kShared, 0},
        {{"", "\\\\server"}, "", 0},
    };
    for (const Case& oneCase : cases) {
        g_entries = {oneCase.entry};
        EXPECT_EQ(IsPrinterConnection(oneCase.name, 0), oneCase.answer) << (&oneCase - cases);
    }
}

TEST_F(PrinterConnection, AnyEntryWill) {
    g_entries = {{kShared, nullptr}, {"P1", "\\\\server"}, {kShared, "\\\\server"}};
    EXPECT_EQ(IsPrinterConnection(kShared, 0), 1u);
}

TEST_F(PrinterConnection, NoMemoryAnswersNo) {
    g_entries = {{kShared, "\\\\server"}};
    Machine().Heap().FailAllocation(0, false);
    EXPECT_EQ(IsPrinterConnection(kShared, 0), 0u);
}

class FailingConnectionTest : public MachineTest {};

TEST_F(FailingConnectionTest, EnumerationThatFailsAnswersNo) {
    InstallDriver(Test());
    AddPrinterTo(Test(), "P1");
    for (std::size_t nth : {1u, 2u}) {
        faults::Reset();
        faults::FailCall("EnumPrintersA", nth, RPC_S_SERVER_UNAVAILABLE);
        EXPECT_EQ(IsPrinterConnection("P1", 0), 0u);
        EXPECT_EQ(faults::LastFailed(), "EnumPrintersA") << nth;
    }
}

TEST(ConnectionTestWithoutRoute, AnswersNo) {
    TestMachine test(SystemWithoutRoute());
    EXPECT_EQ(IsPrinterConnection(kShared, 1), 0u);
    EXPECT_EQ(IsPrinterConnection(kShared, 0), 0u);
}

}  // namespace
}  // namespace pikel
