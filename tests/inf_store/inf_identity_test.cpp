// What an INF file is: provider and class, system, catalog.
#include "inf_store/inf_identity.h"

#include "frame/pikel.h"
#include "support/inf_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace std::string_literals;
using ::testing::ElementsAre;

constexpr char kNorthlight[] = "[Version]\nSignature=\"$Windows NT$\"\nProvider=\"Northlight\"\nClass=Printer\n";

LogLines VersionLog(const std::string& provider, const std::string& className, const std::string& url,
                    const std::string& catalog, const std::string& signature) {
    return Joined({{"CInfVersionSection::GetData() Start"},
                   Bannered("--- Provider ---", {provider}),
                   Bannered("--- Class ---", {className}),
                   Bannered("--- ClassGUID ---", {""}),
                   Bannered("--- OEM URLS ---", {url}),
                   Bannered("--- Cat File ---", {catalog}),
                   Bannered("--- Signature ---", {signature}),
                   {"CInfVersionSection::GetData() End(0)"}});
}

class InfIdentity : public MachineTest {
  protected:
    void WriteInf(std::string_view text) { WriteFileOn(Machine(), kInfPath, text); }
};

// ---- provider and class ---------------------------------------------------------------------------------------------

TEST_F(InfIdentity, ProviderAndClassMatchWithoutRegardToCase) {
    WriteInf(kNorthlight);
    struct {
        LPCSTR provider;
        LPCSTR className;
        DWORD result;
    } const cases[] = {
        {"Northlight", "Printer", 1}, {"NORTHLIGHT", "pRINTER", 1}, {"Northlight", "Net", 0},
        {"Other", "Printer", 0},      {"Northlight", nullptr, 1},   {"northlighT", nullptr, 1},
        {"North", nullptr, 0},        {"Northlights", nullptr, 0},  {nullptr, "PRINTER", 1},
        {nullptr, "Net", 0},          {nullptr, nullptr, 1},        {"", "Printer", 0},
        {"Northlight", "", 0},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(IsTarvoPrinterDriver(kInfPath, row.provider, row.className), row.result)
            << (row.provider ? row.provider : "null") << ' ' << (row.className ? row.className : "null");
    }
}

TEST_F(InfIdentity, OnlyAsciiLettersFold) {
    WriteInf("[Version]\nSignature=\"$Windows NT$\"\nProvider=\"N\xd6rd\"\nClass=Printer\n");
    EXPECT_EQ(IsTarvoPrinterDriver(kInfPath, "n\xd6RD", nullptr), 1u);
    EXPECT_EQ(IsTarvoPrinterDriver(kInfPath, "N\xf6rd", nullptr), 0u);
}

TEST_F(InfIdentity, FileWithoutVersionIsAnInfOfNobody) {
    WriteInf("[Manufacturer]\nA = B\n");
    EXPECT_EQ(IsTarvoPrinterDriver(kInfPath, nullptr, nullptr), 1u);
    EXPECT_EQ(IsTarvoPrinterDriver(kInfPath, "Northlight", nullptr), 0u);
    EXPECT_EQ(IsTarvoPrinterDriver(kInfPath, nullptr, "Printer"), 0u);
    EXPECT_EQ(IsTarvoPrinterDriver(kInfPath, "", ""), 1u) << "what is absent is empty";
}

TEST_F(InfIdentity, FileThatCantBeOpenedIsNone) {
    EXPECT_EQ(IsTarvoPrinterDriver("C:\\none.inf", nullptr, nullptr), 0u);
    EXPECT_EQ(IsTarvoPrinterDriver(nullptr, nullptr, nullptr), 0u);
    WriteInf("text before a section\n");
    EXPECT_EQ(IsTarvoPrinterDriver(kInfPath, nullptr, nullptr), 0u);
}

TEST_F(InfIdentity, NothingIsReadWithNeitherAskedFor) {
    WriteInf(kNorthlight);
    Test().TakeCalls();
    EXPECT_EQ(IsTarvoPrinterDriver(kInfPath, nullptr, nullptr), 1u);
    EXPECT_THAT(Test().TakeCallNames(), ElementsAre("SetupOpenInfFileA", "SetupCloseInfFile"));
}

TEST_F(InfIdentity, IsValidInfFileIsSlot23AndGivesAPlainValue) {
    const PI_KEL_Interface& table = *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
    WriteInf(kNorthlight);
    Test().TurnLogOn(1);
    EXPECT_EQ(table.PI_KEL_IsValidInfFile(kInfPath, "northlight", "printer"), 1u);
    EXPECT_EQ(Test().TakeLog(), Joined({{"PI_KEL_IsValidInfFile Start", "IsTarvoPrinterDriver Start"},
                                        VersionLog("Northlight", "Printer", "", " = ", "$Windows NT$"),
                                        {"IsTarvoPrinterDriver End(1)", "PI_KEL_IsValidInfFile End:(1)", ""}}));
    EXPECT_EQ(table.PI_KEL_IsValidInfFile("C:\\none.inf", nullptr, nullptr), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("PI_KEL_IsValidInfFile Start", "IsTarvoPrinterDriver Start",
                                              "IsTarvoPrinterDriver End(0)", "PI_KEL_IsValidInfFile End:(0)", ""));
}

// ---- system ---------------------------------------------------------------------------------------------------------

constexpr char kUrl[] = "[OEM URLS]\nA=\"http://northlight.example\"\n";

struct SystemCase {
    const char* name;
    std::string text;
    DWORD status;
    DWORD os;
};

const SystemCase kSystems[] = {
    {"9x", "[Version]\nSignature=\"$CHICAGO$\"\n"s + kUrl, 0, 1},
    {"NT 4", "[Version]\nSignature=\"$Windows NT$\"\n", 0, 2},
    {"NT in another case", "[Version]\nSignature=\"$WINDOWS NT$\"\n", 0, 2},
    {"[OEM URLS] without a line", "[Version]\nSignature=\"$Windows NT$\"\n[OEM URLS]\n", 0, 2},
    {"[OEM URLS] without a first value", "[Version]\nSignature=\"$Windows NT$\"\n[OEM URLS]\nA=\nB=x\n", 0, 2},
    {"x86", "[Version]\nSignature=\"$Windows NT$\"\n"s + kUrl + "[Manufacturer]\nA=A\n", 0, 3},
    {"x86, decorated", "[Version]\nSignature=\"$Windows NT$\"\n"s + kUrl + "[Manufacturer]\nA=A,NTx86.5.1\n", 0, 3},
    {"IA64", "[Version]\nSignature=\"$Windows NT$\"\n"s + kUrl + "[Manufacturer]\nA=A,NTia64\n", 0, 4},
    {"x64", "[Version]\nSignature=\"$Windows NT$\"\n"s + kUrl + "[Manufacturer]\nA=A,NTamd64\n", 0, 5},
    {"x64, and newer than 5.1", "[Version]\nSignature=\"$Windows NT$\"\n"s + kUrl + "[Manufacturer]\nA=A,NTamd64.5.2\n",
     0, 3},
    {"x64 and a last line without",
     "[Version]\nSignature=\"$Windows NT$\"\n"s + kUrl + "[Manufacturer]\nA=A,NTamd64\nB=B\n", 0, 3},
    {"no Manufacturer", "[Version]\nSignature=\"$Windows NT$\"\n"s + kUrl, 0xE0000102, 3},
    {"another signature", "[Version]\nSignature=\"$Other$\"\n"s + kUrl, 0, 0},
    {"no signature", "[Version]\nClass=Printer\n", 0, 0},
    {"no [Version]", "[Manufacturer]\nA=A\n", 0, 0},
};

TEST_F(InfIdentity, SystemIsToldBySignatureUrlAndProcessor) {
    for (const SystemCase& row : kSystems) {
        WriteInf(row.text);
        DWORD os = 77;
        EXPECT_EQ(DoGetInfOsVersion(kInfPath, &os), row.status) << row.name;
        EXPECT_EQ(os, row.os) << row.name;
    }
}

TEST_F(InfIdentity, SystemOfAFileThatCantBeOpenedIs0) {
    DWORD os = 77;
    Test().TurnLogOn(1);
    EXPECT_EQ(DoGetInfOsVersion("C:\\none.inf", &os), 2u);
    EXPECT_EQ(os, 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoGetInfOsVersion Start", "DoGetInfOsVersion End(2) OS(0)"));
    os = 77;
    EXPECT_EQ(DoGetInfOsVersion(nullptr, &os), 87u);
    EXPECT_EQ(os, 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoGetInfOsVersion Start"));
    EXPECT_EQ(DoGetInfOsVersion(kInfPath, nullptr), 87u);
}

TEST_F(InfIdentity, GetInfOsVersionIsSlot24) {
    const PI_KEL_Interface& table = *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
    DWORD os = 77;
    EXPECT_EQ(table.PI_KEL_GetInfOsVersion(nullptr, &os), 0x90010057u);
    WriteInf("[Version]\nSignature=\"$Windows NT$\"\n"s + kUrl + "[Manufacturer]\nA=A,NTamd64\n");
    Test().TurnLogOn(1);
    EXPECT_EQ(table.PI_KEL_GetInfOsVersion(kInfPath, &os), 0u);
    EXPECT_EQ(os, 5u);
    WriteInf("[Version]\nSignature=\"$Chicago$\"\n");
    Test().TakeLog();
    EXPECT_EQ(table.PI_KEL_GetInfOsVersion(kInfPath, &os), 0u);
    EXPECT_EQ(Test().TakeLog(),
              Joined({{"PI_KEL_GetInfOsVersion Start", "DoGetInfOsVersion Start"},
                      VersionLog("", "", "", " = ", "$Chicago$"),
                      {"DoGetInfOsVersion End(0) OS(1)", "PI_KEL_GetInfOsVersion End:(0x00000000)", ""}}));
}

TEST_F(InfIdentity, WholeLogOfAnInfForWindows2000) {
    WriteInf("[Version]\nSignature=\"$Windows NT$\"\n"s + kUrl + "[Manufacturer]\nA=A\n");
    Test().TurnLogOn(1);
    DWORD os = 0;
    EXPECT_EQ(DoGetInfOsVersion(kInfPath, &os), 0u);
    EXPECT_EQ(Test().TakeLog(),
              Joined({{"DoGetInfOsVersion Start"},
                      VersionLog("", "", "http://northlight.example", " = ", "$Windows NT$"),
                      {"CInfManufacturerSection::GetData() Start"},
                      Bannered("--- Manufacturer Name ---", {"A"}),
                      {"\tcsvManufacturer.size() = 1", "\tstrMfgFront = A", "\tMAKELONG:dwVersion = 501",
                       "\tdwMinDiffInVersion = ffffffff"},
                      Bannered("--- Manufacturer ---", {"A"}),
                      {"CInfManufacturerSection::GetData() End(0)", "\t\t\tManufacturer.m_dwProcessorType = 0",
                       "DoGetInfOsVersion End(0) OS(3)"}}));
}

TEST_F(InfIdentity, ProcessorIsLoggedBehindTheManufacturerSection) {
    for (const auto& [decoration, type, os] : {std::tuple{"", 0, 3}, {",NTia64", 1, 4}, {",NTamd64", 2, 5}}) {
        WriteInf("[Version]\nSignature=\"$Windows NT$\"\n"s + kUrl + "[Manufacturer]\nA=A" + decoration + "\n");
        Test().TurnLogOn(1);
        DWORD result = 0;
        EXPECT_EQ(DoGetInfOsVersion(kInfPath, &result), 0u);
        const LogLines log = Test().TakeLog();
        ASSERT_GE(log.size(), 3u);
        EXPECT_EQ(log[log.size() - 3], "CInfManufacturerSection::GetData() End(0)");
        EXPECT_EQ(log[log.size() - 2], "\t\t\tManufacturer.m_dwProcessorType = " + std::to_string(type));
        EXPECT_EQ(log[log.size() - 1], "DoGetInfOsVersion End(0) OS(" + std::to_string(os) + ")");
    }
}

// ---- catalog --------------------------------------------------------------------------------------------------------

TEST_F(InfIdentity, CatalogIsFoundByAnyOfItsKeys) {
    for (const char* key :
         {"CatalogFile", "CatalogFile.ntx86", "CatalogFile.nt", "CatalogFile.ntia64", "CatalogFile.ntamd64"}) {
        WriteInf("[Version]\nSignature=\"$Windows NT$\"\n"s + key + "=aurora.cat\n");
        DWORD exists = 77;
        char name[64] = "before";
        EXPECT_EQ(DoGetCATFileInfo(kInfPath, &exists, name), 0u);
        EXPECT_EQ(exists, 1u) << key;
        EXPECT_STREQ(name, "aurora.cat") << key;
        exists = 77;
        EXPECT_EQ(DoGetCATFileInfo(kInfPath, &exists, nullptr), 0u);
        EXPECT_EQ(exists, 1u) << key;
    }
}

TEST_F(InfIdentity, CatalogNameMayHaveAnyLength) {
    const std::string longName(2048, 'c');
    WriteInf("[Version]\nSignature=\"$Windows NT$\"\nCatalogFile=" + longName + "\n");
    DWORD exists = 0;
    const std::unique_ptr<char[]> name(new char[longName.size() + 1]);
    EXPECT_EQ(DoGetCATFileInfo(kInfPath, &exists, name.get()), 0u);
    EXPECT_EQ(name.get(), longName);
}

TEST_F(InfIdentity, NoCatalogIsNoFailure) {
    char name[64] = "before";
    WriteInf(kNorthlight);
    for (LPCSTR path : {kInfPath, "C:\\none.inf"}) {
        DWORD exists = 77;
        EXPECT_EQ(DoGetCATFileInfo(path, &exists, name), 0u) << path;
        EXPECT_EQ(exists, 0u) << path;
        EXPECT_STREQ(name, "before") << path;
    }
}

TEST_F(InfIdentity, GetCATFileInfoIsSlot42) {
    const PI_KEL_Interface& table = *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
    DWORD exists = 77;
    char name[64] = {};
    Test().TurnLogOn(1);
    EXPECT_EQ(table.PI_KEL_GetCATFileInfo(nullptr, &exists, name), 0x90010057u);
    EXPECT_EQ(exists, 77u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("PI_KEL_GetCATFileInfo Start", "DoGetCATFileInfo Start",
                                              "PI_KEL_GetCATFileInfo End:(0x90010057)", ""));
    EXPECT_EQ(table.PI_KEL_GetCATFileInfo(kInfPath, nullptr, name), 0x90010057u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("PI_KEL_GetCATFileInfo Start", "DoGetCATFileInfo Start",
                                              "PI_KEL_GetCATFileInfo End:(0x90010057)", ""));
    WriteInf("[Version]\nSignature=\"$Windows NT$\"\nCatalogFile.ntamd64=aurora.cat\n");
    Test().TakeLog();
    EXPECT_EQ(table.PI_KEL_GetCATFileInfo(kInfPath, &exists, name), 0u);
    EXPECT_EQ(Test().TakeLog(), Joined({{"PI_KEL_GetCATFileInfo Start", "DoGetCATFileInfo Start"},
                                        VersionLog("", "", "", "CatalogFile.ntamd64 = aurora.cat", "$Windows NT$"),
                                        {"DoGetCATFileInfo lpszCATFile(aurora.cat)", "DoGetCATFileInfo pbExistCAT(1)",
                                         "DoGetCATFileInfo End(0)", "PI_KEL_GetCATFileInfo End:(0x00000000)", ""}}));
    EXPECT_EQ(table.PI_KEL_GetCATFileInfo("C:\\none.inf", &exists, name), 0u);
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("PI_KEL_GetCATFileInfo Start", "DoGetCATFileInfo Start", "DoGetCATFileInfo pbExistCAT(0)",
                            "DoGetCATFileInfo End(0)", "PI_KEL_GetCATFileInfo End:(0x00000000)", ""));
}

}  // namespace
}  // namespace pikel
