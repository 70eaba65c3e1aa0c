// Which parts of a record reach the spooler when a printer is written, and under which of two names.
#include <cstring>
#include <string>
#include <vector>

#include "machine/network/shares.h"
#include "machine/operations.h"
#include "support/printer_machine.h"
#include "printer/set_printer.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

/// The spooler's calls as they come: whom they open, and what is written at levels 2 and 5.
class WatchedSpooler {
  public:
    WatchedSpooler() {
        s_below = m_replaced.table;
        s_opened.clear();
        s_level2.clear();
        s_level5.clear();
        m_replaced.table.OpenPrinterA = [](LPSTR name, LPHANDLE handle, LPPRINTER_DEFAULTSA defaults) -> BOOL {
            s_opened.emplace_back(name);
            return s_below.OpenPrinterA(name, handle, defaults);
        };
        m_replaced.table.SetPrinterA = [](HANDLE handle, DWORD level, LPBYTE data, DWORD command) -> BOOL {
            if (level == 2) {
                s_level2.push_back(*reinterpret_cast<const PRINTER_INFO_2A*>(data));
            } else if (level == 5) {
                s_level5.emplace_back(reinterpret_cast<const PRINTER_INFO_5A*>(data)->pPrinterName);
            }
            return s_below.SetPrinterA(handle, level, data, command);
        };
    }
    static const std::vector<std::string>& Opened() { return s_opened; }
    static const std::vector<PRINTER_INFO_2A>& Level2() { return s_level2; }
    static const std::vector<std::string>& NamesAtLevel5() { return s_level5; }

  private:
    static inline PlatformTable s_below;
    static inline std::vector<std::string> s_opened;
    static inline std::vector<PRINTER_INFO_2A> s_level2;
    static inline std::vector<std::string> s_level5;
    ReplacedOperations m_replaced;
};

class WrittenRecord : public MachineTest {
  protected:
    void StartWith(const std::string& system) {
        Start(system);
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
        m_mode = {};
        m_mode.dmSize = sizeof m_mode;
        m_share = {};
        std::strcpy(m_share.NetName, "LASER");
        std::strcpy(m_share.Path, "P1");
        m_share.ShareType = 1;
        m_security = {};
        m_security.SecurityDescriptor = m_descriptor.data();
        m_security.SecurityDescriptorLength = static_cast<DWORD>(m_descriptor.size() + 1);
        m_security.PublishAction = DSPRINT_PUBLISH;
        m_security.DevMode = &m_mode;
        Test().TakeCalls();
    }

    std::string m_descriptor = "O:BAG:SYD:(A;;0xf000c;;;BA)";
    PrinterSecurityRecord m_security{};
    PrinterShareRecord m_share{};
    DEVMODEA m_mode{};
};

class WrittenRecordOnEverySystem : public WrittenRecord, public ::testing::WithParamInterface<std::string> {
  protected:
    WrittenRecordOnEverySystem() { StartWith(GetParam()); }
    bool Is9x() const { return Is9xName(GetParam()); }
};
INSTANTIATE_ON_EVERY_SYSTEM(WrittenRecordOnEverySystem);

TEST_P(WrittenRecordOnEverySystem, KeepsWhatTheSpoolerTellsButIsNotTold) {
    PrinterText text("P1");
    char server[] = "\\\\server";
    char parameters[] = "parameters";
    BYTE descriptor[64] = {};
    PrinterRecord& record = text.Record();
    record.pServerName = server;
    record.pParameters = parameters;
    record.pSecurityDescriptor = descriptor;
    record.DefaultPriority = 5;
    record.cJobs = 3;
    record.AveragePPM = 12;
    WatchedSpooler watched;
    EXPECT_EQ(DoSetPrinter("P1", &record), 0u);
    ASSERT_EQ(watched.Level2().size(), 1u);
    const PRINTER_INFO_2A& written = watched.Level2()[0];
    EXPECT_EQ(written.pServerName, nullptr);
    EXPECT_EQ(written.pParameters, nullptr);
    EXPECT_EQ(written.pSecurityDescriptor, nullptr);
    EXPECT_EQ(written.DefaultPriority, 0u);
    EXPECT_EQ(written.cJobs, 0u);
    EXPECT_EQ(written.AveragePPM, 0u);
    EXPECT_EQ(record.pServerName, server) << "the caller's record stays as it is";
    EXPECT_EQ(record.pSecurityDescriptor, descriptor);
    EXPECT_EQ(record.cJobs, 3u);
}

TEST_P(WrittenRecordOnEverySystem, IsOpenedUnderTheArgumentsNameAndWrittenUnderItsOwn) {
    PrinterText text("P2");
    text.Record().ShareRecord = &m_share;
    text.Record().SecurityRecord = &m_security;
    WatchedSpooler watched;
    EXPECT_EQ(ApplyPrinterExtras("P1", &text.Record()), 0u);
    if (Is9x()) {
        EXPECT_THAT(watched.Opened(), ElementsAre("P1"));
        EXPECT_THAT(watched.NamesAtLevel5(), ElementsAre("P2"));
    } else {
        EXPECT_THAT(watched.Opened(), Each("P1"));
        EXPECT_EQ(watched.Opened().empty(), IsNt4Name(GetParam()));
        EXPECT_THAT(watched.NamesAtLevel5(), IsEmpty());
    }
}

TEST_P(WrittenRecordOnEverySystem, LooksForItsValuesUnderTheArgumentsNameAlsoAfterARename) {
    PrinterText text("P2");
    std::string data = "abcd";
    PrinterRegistryEntry entry{
        nullptr, const_cast<LPSTR>("udpWidth"), reinterpret_cast<LPBYTE>(data.data()), REG_BINARY, 4, 0};
    text.Record().RegistryEntryCount = 1;
    text.Record().RegistryEntries = &entry;
    text.Record().SecurityRecord = &m_security;
    WatchedSpooler watched;
    Test().TurnLogOn(1);
    EXPECT_EQ(DoSetPrinter("P1", &text.Record()), 0u);
    EXPECT_TRUE(PrinterOn(Test(), "P2"));
    EXPECT_THAT(watched.Opened(), Contains("P1"));
    EXPECT_THAT(watched.Opened(), Not(Contains("P2"))) << "no call of the operation goes to the new name";
    const std::string newKey = std::string(kPrintersOn) + "\\P2\\PrinterDriverData";
    EXPECT_EQ(Machine().Registry().Find(newKey, "udpWidth"), nullptr);
    if (!Is9x()) {
        // There is no such printer any more, and that ends the rest.
        EXPECT_THAT(Test().TakeLog(), Contains("SetRegistryData Error:1801"));
    }
}

// ---- the 9x family --------------------------------------------------------------------------------------------------

TEST_F(WrittenRecord, Of9xWithoutAShareGoesByItsSecurity) {
    StartWith("win98");
    PrinterText text("P1");
    text.Record().SecurityRecord = &m_security;
    Test().TurnLogOn(1);
    WatchedSpooler watched;
    EXPECT_NE(ApplyPrinterExtras("P1", &text.Record()), 0u);
    // That family can turn no text into a descriptor, has no level 7, and is of no system with a DEVMODE of level 8.
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("SetStringSD() - Start", "SetStringSD() - End(127)", "SetStringSD Error:127"));
    EXPECT_THAT(watched.Opened(), ElementsAre("P1")) << "for the publishing";
    EXPECT_THAT(Test().TakeCallNames({"GetPrinterA", "SetPrinterA", "NetShareAdd"}), ElementsAre("GetPrinterA"));
}

TEST_F(WrittenRecord, Of9xWithAShareLeavesItsSecurityAlone) {
    StartWith("win98");
    PrinterText text("P1");
    text.Record().ShareRecord = &m_share;
    text.Record().SecurityRecord = &m_security;
    Test().TurnLogOn(1);
    EXPECT_EQ(ApplyPrinterExtras("P1", &text.Record()), 0u);
    EXPECT_THAT(Test().TakeLog(), IsEmpty());
}

TEST_F(WrittenRecord, Of9xWithAnEmptyShareNameIsSharedAllTheSame) {
    StartWith("win98");
    PrinterText text("P1");
    char empty[] = "";
    text.Record().pShareName = empty;
    text.Record().ShareRecord = &m_share;
    Test().TurnLogOn(1);
    Test().TakeCalls();
    const DWORD code = ApplyPrinterExtras("P1", &text.Record());
    EXPECT_NE(code, 0u) << "the share's name is the empty one at its change";
    const std::string number = std::to_string(code);
    EXPECT_THAT(
        Test().TakeLog(),
        ElementsAre("AddSharePrinter9x() - Start", "AddSharePrinter9x() - End(0)", "SetSharePrinter9x() - Start",
                    "SetSharePrinter9x() - End(" + number + ")", "SetSharePrinter9x Error:" + number));
    EXPECT_TRUE(simulated::Shares(Machine()).Find("LASER"));
    EXPECT_THAT(Test().TakeCallNames({"SetPrinterA"}), IsEmpty()) << "the failure keeps the timeouts back";
}

}  // namespace
}  // namespace pikel
