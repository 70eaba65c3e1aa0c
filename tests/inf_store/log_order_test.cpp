// Where the identity operations close the INF: before their last lines.
#include "support/log_order.h"

#include "inf_store/inf_identity.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

constexpr char kInf[] = "C:\\Driver\\aurora.inf";

class IdentityLogOrder : public MachineTest {
  protected:
    IdentityLogOrder() {
        WriteFileOn(Machine(), kInf,
                    "[Version]\r\nSignature=\"$Windows NT$\"\r\nProvider=\"Northlight\"\r\nClass=Printer\r\n"
                    "CatalogFile=aurora.cat\r\n[OEM URLS]\r\nA=\"http://northlight.example\"\r\n"
                    "[Manufacturer]\r\nM=M,NTamd64\r\n[M.NTamd64]\r\n\"Laser\"=I\r\n");
        TraceLog(Test());
    }
    std::vector<std::string> TakeEnd(std::size_t count) {
        return TakeLastCallsAndLines(Test(), {"SetupCloseInfFile"}, count);
    }
};

TEST_F(IdentityLogOrder, InfIsClosedBeforeTheEndOfTheProviderTest) {
    EXPECT_EQ(IsTarvoPrinterDriver(kInf, "Northlight", "Printer"), 1u);
    EXPECT_THAT(TakeEnd(3), ElementsAre("CInfVersionSection::GetData() End(0)", "SetupCloseInfFile",
                                        "IsTarvoPrinterDriver End(1)"));
    EXPECT_EQ(IsTarvoPrinterDriver(kInf, nullptr, nullptr), 1u);
    EXPECT_THAT(TakeEnd(3),
                ElementsAre("IsTarvoPrinterDriver Start", "SetupCloseInfFile", "IsTarvoPrinterDriver End(1)"));
}

TEST_F(IdentityLogOrder, InfIsClosedBeforeTheEndOfTheSystemTest) {
    DWORD os = 0;
    EXPECT_EQ(DoGetInfOsVersion(kInf, &os), 0u);
    EXPECT_THAT(TakeEnd(3), ElementsAre("\t\t\tManufacturer.m_dwProcessorType = 2", "SetupCloseInfFile",
                                        "DoGetInfOsVersion End(0) OS(5)"));
}

TEST_F(IdentityLogOrder, InfIsClosedBeforeTheCatalogsFlagIsTold) {
    DWORD exists = 0;
    char name[64] = {};
    EXPECT_EQ(DoGetCATFileInfo(kInf, &exists, name), 0u);
    EXPECT_THAT(TakeEnd(4), ElementsAre("DoGetCATFileInfo lpszCATFile(aurora.cat)", "SetupCloseInfFile",
                                        "DoGetCATFileInfo pbExistCAT(1)", "DoGetCATFileInfo End(0)"));
}

}  // namespace
}  // namespace pikel
