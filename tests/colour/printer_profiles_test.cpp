#include "colour/printer_profiles.h"

#include "icc_profile.h"
#include "support/calls.h"
#include "support/spooler_setup.h"

namespace pikel {

namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class PrinterProfiles : public MachineTest {
  protected:
    PrinterProfiles() {
        PutDriver(Machine(), {});
        PutPrinter("Office", "Aurora 500");
        for (const char* name : {"one.icc", "Two.icc"}) {
            const std::string path = std::string("C:\\Stage\\") + name;
            WriteFileOn(Machine(), path, IccProfile("prtr").Bytes());
            EXPECT_TRUE(simulated::InstallColorProfileA(nullptr, path.c_str()));
            EXPECT_TRUE(simulated::AssociateColorProfileWithDeviceA(nullptr, name, "Office"));
        }
        m_profiles.Append("left over");
        ForgetCalls(Test());
    }
    std::string Path(const char* name) {
        return Machine().System().systemDirectory + "\\spool\\drivers\\color\\" + name;
    }

    StringList m_profiles;
};

TEST_F(PrinterProfiles, AreFullPathsInTheirOrder) {
    CollectPrinterProfiles("OFFICE", m_profiles);
    EXPECT_THAT(m_profiles, ElementsAre(Path("one.icc"), Path("Two.icc")));
    const std::vector<std::string> calls = TakeCallsOf(Test(), {"CreateICA", "EnumICMProfilesA", "DeleteDC"});
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_THAT(calls[0], StartsWith("CreateICA(\"WINSPOOL\", \"OFFICE\", null, null) = "));
    EXPECT_THAT(calls[1], StartsWith("EnumICMProfilesA("));
    EXPECT_THAT(calls[2], StartsWith("DeleteDC("));
}

TEST_F(PrinterProfiles, OfAPrinterWithoutAContextAreNone) {
    for (const char* name : {"Nobody", static_cast<const char*>(nullptr)}) {
        m_profiles.Append("left over");
        CollectPrinterProfiles(name, m_profiles);
        EXPECT_THAT(m_profiles, IsEmpty());
        EXPECT_THAT(Test().TakeCallNames(), ElementsAre("CreateICA"));
    }
}

TEST_F(PrinterProfiles, ThatCanNotBeListedAreNoneAndTheContextGoes) {
    faults::FailCall("EnumICMProfilesA", 1, 6);
    CollectPrinterProfiles("Office", m_profiles);
    EXPECT_THAT(m_profiles, IsEmpty());
    EXPECT_THAT(Test().TakeCallNames(), ElementsAre("CreateICA", "EnumICMProfilesA", "DeleteDC"));
}

int g_answer = 0;

TEST_F(PrinterProfiles, KeepRepeatsAndAskForMore) {
    ReplacedOperations replaced;
    replaced.table.EnumICMProfilesA = [](HDC, ICMENUMPROCA proc, LPARAM param) -> int {
        char path[] = "C:\\a.icc";
        proc(path, param);
        proc(nullptr, param);
        g_answer = proc(path, param);
        return g_answer;
    };
    CollectPrinterProfiles("Office", m_profiles);
    EXPECT_THAT(m_profiles, ElementsAre("C:\\a.icc", "", "C:\\a.icc"));
    EXPECT_EQ(g_answer, 1);
}

}  // namespace

}  // namespace pikel
