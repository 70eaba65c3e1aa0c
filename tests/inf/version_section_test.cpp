// [Version] and [OEM URLS].
#include "inf/version_section.h"

#include "support/inf_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

constexpr char kWhole[] = R"(
[Version]
Signature = "$Windows NT$"
Provider = %NL%
Class = Printer
ClassGUID = {4D36E979-E325-11CE-BFC1-08002BE10318}
DriverVer = 07/01/2001,5.1.2600.0
CatalogFile = aurora.cat

[OEM URLS]
%NL% = "http://first.example/","http://second.example/"
Other = "http://other.example/"

[Strings]
NL = "Northlight, Inc."
)";

LogLines WholeLog() {
    return Joined({{"CInfVersionSection::GetData() Start"},
                   Bannered("--- Provider ---", {"Northlight, Inc."}),
                   Bannered("--- Class ---", {"Printer"}),
                   Bannered("--- ClassGUID ---", {"{4D36E979-E325-11CE-BFC1-08002BE10318}"}),
                   Bannered("--- OEM URLS ---", {"http://first.example/"}),
                   Bannered("--- DriverDate ---", {"7/1/2001"}),
                   Bannered("--- DriverVer ---", {"5.1.2600.0"}),
                   Bannered("--- Cat File ---", {"CatalogFile = aurora.cat"}),
                   Bannered("--- Signature ---", {"$Windows NT$"}),
                   {"CInfVersionSection::GetData() End(0)"}});
}

LogLines EmptyLog(const LogLines& driverVer = {}) {
    return Joined({{"CInfVersionSection::GetData() Start"},
                   Bannered("--- Provider ---", {""}),
                   Bannered("--- Class ---", {""}),
                   Bannered("--- ClassGUID ---", {""}),
                   Bannered("--- OEM URLS ---", {""}),
                   driverVer,
                   Bannered("--- Cat File ---", {" = "}),
                   Bannered("--- Signature ---", {""}),
                   {"CInfVersionSection::GetData() End(0)"}});
}

void ExpectWhole(const CInfVersionSection& version) {
    EXPECT_EQ(version.m_strProvider, "Northlight, Inc.");
    EXPECT_EQ(version.m_strClass, "Printer");
    EXPECT_EQ(version.m_strClassGUID, "{4D36E979-E325-11CE-BFC1-08002BE10318}");
    EXPECT_EQ(version.m_qwDriverVer, 0x000500010A280000u);
    EXPECT_EQ(version.m_ftDriverDate.dwHighDateTime, 0x01c101c0u);
    EXPECT_EQ(version.m_ftDriverDate.dwLowDateTime, 0xc5628000u);
    EXPECT_EQ(version.m_strOemUrl, "http://first.example/");
    EXPECT_EQ(version.m_strCatalogFile, "aurora.cat");
    EXPECT_EQ(version.m_strCatalogKey, "CatalogFile");
    EXPECT_EQ(version.m_strSignature, "$Windows NT$");
}

void ExpectEmpty(const CInfVersionSection& version) {
    EXPECT_EQ(version.m_strProvider, "");
    EXPECT_EQ(version.m_strClass, "");
    EXPECT_EQ(version.m_strClassGUID, "");
    EXPECT_EQ(version.m_qwDriverVer, 0u);
    EXPECT_EQ(version.m_ftDriverDate.dwHighDateTime, 0u);
    EXPECT_EQ(version.m_ftDriverDate.dwLowDateTime, 0u);
    EXPECT_EQ(version.m_strOemUrl, "");
    EXPECT_EQ(version.m_strCatalogFile, "");
    EXPECT_EQ(version.m_strCatalogKey, "");
    EXPECT_EQ(version.m_strSignature, "");
}

class VersionSection : public InfTest {};

TEST_F(VersionSection, IsEmptyWhenMade) {
    ExpectEmpty(CInfVersionSection());
}

TEST_F(VersionSection, ReadsEverythingAndLogsIt) {
    HINF inf = Open(kWhole);
    Test().TurnLogOn(1);
    CInfVersionSection version;
    EXPECT_EQ(version.GetData(inf), 0u);
    ExpectWhole(version);
    EXPECT_EQ(Log(), WholeLog());
}

TEST_F(VersionSection, IsEmptyForAnInfWithoutIt) {
    HINF inf = Open("[Manufacturer]\nA = B\n");
    Test().TurnLogOn(1);
    CInfVersionSection version;
    EXPECT_EQ(version.GetData(inf), 0u);
    ExpectEmpty(version);
    EXPECT_EQ(Log(), EmptyLog());
}

TEST_F(VersionSection, NothingSurvivesFromAnEarlierRead) {
    HINF inf = Open(kWhole);
    CInfVersionSection version;
    ASSERT_EQ(version.GetData(inf), 0u);
    inf = Open("[Manufacturer]\nA = B\n");
    EXPECT_EQ(version.GetData(inf), 0u);
    ExpectEmpty(version);
    inf = Open(kWhole);
    EXPECT_EQ(version.GetData(inf), 0u);
    ExpectWhole(version);
}

TEST_F(VersionSection, ReadsInAFixedOrder) {
    HINF inf = Open(kWhole);
    CInfVersionSection version;
    version.GetData(inf);
    std::vector<std::string> calls;
    for (const std::string& call : Test().TakeCalls()) {
        // The key of the size query is enough to tell the reads apart.
        if (call.starts_with("SetupGetLineTextA(") && call.find(", null, 0x0, &)") != std::string::npos) {
            const std::size_t key = call.find("\"Version\", \"") + 12;
            calls.push_back(call.substr(key, call.find('"', key) - key));
        } else if (call.starts_with("SetupGetLineByIndexA(")) {
            EXPECT_NE(call.find("\"OEM URLS\", 0x0"), std::string::npos) << call;
            calls.emplace_back("OEM URLS");
        }
    }
    EXPECT_THAT(calls,
                ElementsAre("Provider", "Class", "ClassGUID", "OEM URLS", "DriverVer", "CatalogFile", "Signature"));
}

TEST_F(VersionSection, ADateWithoutAVersionLeavesTheVersionAtZero) {
    HINF inf = Open("[Version]\nDriverVer = 7/1/2001\n");
    Test().TurnLogOn(1);
    CInfVersionSection version;
    EXPECT_EQ(version.GetData(inf), 0u);
    EXPECT_EQ(version.m_ftDriverDate.dwHighDateTime, 0x01c101c0u);
    EXPECT_EQ(version.m_qwDriverVer, 0u);
    EXPECT_EQ(Log(), EmptyLog(Bannered("--- DriverDate ---", {"7/1/2001"})));
}

TEST_F(VersionSection, AnEmptyDriverVerIsLoggedAsADateOfZeros) {
    HINF inf = Open("[Version]\nDriverVer =\n");
    Test().TurnLogOn(1);
    CInfVersionSection version;
    EXPECT_EQ(version.GetData(inf), 0u);
    ExpectEmpty(version);
    EXPECT_EQ(Log(), EmptyLog(Bannered("--- DriverDate ---", {"0/0/0"})));
}

TEST_F(VersionSection, ABadDateStaysZeroWhileTheVersionIsRead) {
    HINF inf = Open("[Version]\nDriverVer = 7/1/01,1.2.3.4\n");
    CInfVersionSection version;
    EXPECT_EQ(version.GetData(inf), 0u);
    EXPECT_EQ(version.m_ftDriverDate.dwHighDateTime, 0u);
    EXPECT_EQ(version.m_ftDriverDate.dwLowDateTime, 0u);
    EXPECT_EQ(version.m_qwDriverVer, 0x0001000200030004u);
}

TEST_F(VersionSection, ADriverVerThatCannotBeReadIsPassedOverSilently) {
    HINF inf = Open("[Version]\nDriverVer = 7/1/2001,1.2.3.4\n");
    Test().TurnLogOn(1);
    // Provider, Class and ClassGUID are absent and take one call each; then come the two calls for DriverVer.
    faults::FailCall("SetupGetLineTextA", 5, 1234);
    CInfVersionSection version;
    EXPECT_EQ(version.GetData(inf), 0u);
    ExpectEmpty(version);
    EXPECT_EQ(Log(), EmptyLog());
}

TEST_F(VersionSection, WithoutMemoryEverythingIsEmpty) {
    HINF inf = Open(kWhole);
    Test().TurnLogOn(1);
    faults::FailCall("HeapAlloc", 1, 8, true);
    CInfVersionSection version;
    EXPECT_EQ(version.GetData(inf), 0u);
    ExpectEmpty(version);
    EXPECT_EQ(Log(), EmptyLog());
}

TEST_F(VersionSection, WhenEverySecondCallFailsEverythingIsEmpty) {
    HINF inf = Open(kWhole);
    ReplacedOperations replaced;
    replaced.table.SetupGetLineTextA = [](PINFCONTEXT, HINF, PCSTR, PCSTR, PSTR buffer, DWORD, PDWORD required) {
        *required = 5;
        return BOOL{buffer == nullptr};
    };
    replaced.table.SetupGetStringFieldA = [](PINFCONTEXT, DWORD, PSTR buffer, DWORD, PDWORD required) {
        *required = 5;
        return BOOL{buffer == nullptr};
    };
    CInfVersionSection version;
    EXPECT_EQ(version.GetData(inf), 0u);
    ExpectEmpty(version);
}

TEST_F(VersionSection, OnlyTheFirstValueOfTheFirstUrlLineCounts) {
    struct Case {
        const char* text;
        const char* url;
    };
    const Case cases[] = {
        {"[OEM URLS]\nKey = one,two\nOther = three\n", "one"},
        {"[OEM URLS]\nKey =\nOther = three\n", ""},
        {"[OEM URLS]\n", ""},
        {"[OEM URL]\nKey = one\n", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        CInfVersionSection version;
        EXPECT_EQ(version.GetData(Open(c.text)), 0u);
        EXPECT_EQ(version.m_strOemUrl, c.url);
    }
}

struct CatalogCase {
    const char* keys;
    const char* file;
    const char* key;
};

class Catalog : public EverySystemTest {};

TEST_P(Catalog, IsThatOfTheFirstKeyWithAValueOnEverySystem) {
    const CatalogCase cases[] = {
        {"", "", ""},
        {"CatalogFile = a.cat\n", "a.cat", "CatalogFile"},
        {"CatalogFile =\n", "", ""},
        {"CatalogFile.ntamd64 = d.cat\n", "d.cat", "CatalogFile.ntamd64"},
        {"CatalogFile.ntamd64 = d.cat\nCatalogFile.ntia64 = c.cat\n", "c.cat", "CatalogFile.ntia64"},
        {"CatalogFile.ntamd64 = d.cat\nCatalogFile.ntia64 = c.cat\nCatalogFile.nt = b.cat\n", "b.cat",
         "CatalogFile.nt"},
        {"CatalogFile.ntamd64 = d.cat\nCatalogFile.ntia64 = c.cat\nCatalogFile.nt = b.cat\n"
         "CatalogFile.ntx86 = x.cat\n",
         "x.cat", "CatalogFile.ntx86"},
        {"CatalogFile.ntamd64 = d.cat\nCatalogFile.ntx86 = x.cat\nCatalogFile = a.cat\n", "a.cat", "CatalogFile"},
        // An empty value counts as none.
        {"CatalogFile =\nCatalogFile.ntx86 =\nCatalogFile.nt = b.cat\n", "b.cat", "CatalogFile.nt"},
        {"CatalogFile.ntx86 =\nCatalogFile.nt =\nCatalogFile.ntia64 =\nCatalogFile.ntamd64 =\n", "", ""},
        // Other decorations don't count.
        {"CatalogFile.ntarm64 = e.cat\n", "", ""},
    };
    for (const CatalogCase& c : cases) {
        SCOPED_TRACE(c.keys);
        WriteFileOn(Machine(), kInfPath, "[Version]\nSignature = \"$Windows NT$\"\n" + std::string(c.keys));
        InfHandle inf;
        ASSERT_EQ(OpenInf(kInfPath, inf), 0u);
        Test().TurnLogOn(1);
        CInfVersionSection version;
        EXPECT_EQ(version.GetData(inf.Get()), 0u);
        EXPECT_EQ(version.m_strCatalogFile, c.file);
        EXPECT_EQ(version.m_strCatalogKey, c.key);
        const LogLines log = Test().TakeLog();
        EXPECT_THAT(log, ::testing::Contains(std::string(c.key) + " = " + c.file));
    }
}

INSTANTIATE_ON_EVERY_SYSTEM(Catalog);

}  // namespace
}  // namespace pikel
