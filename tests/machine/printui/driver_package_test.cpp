#include "machine/printui/driver_package.h"

#include "machine/operations.h"
#include "support/machine_test.h"

namespace pikel::simulated {

namespace {

using namespace testing_support;

constexpr char kX86[] = "Windows NT x86";
constexpr char kX64[] = "Windows x64";
constexpr char kIa64[] = "Windows IA64";

class DriverPackage : public MachineTest {
  protected:
    DriverTarget Target(std::string_view environment = {}, DWORD version = 3) {
        const std::optional<Environment> found = Environments(Machine()).Find(environment);
        EXPECT_TRUE(found.has_value()) << environment;
        return {found.value_or(Environment{}), version};
    }
    std::string Section(const std::vector<std::string>& fields, std::string_view environment = {}, DWORD version = 3) {
        return ModelsSectionFor(Machine(), Target(environment, version), fields);
    }
};

// ---- the models section ---------------------------------------------------------------------------------------------

TEST_F(DriverPackage, FormNearestToTheSystemIsTaken) {
    struct Case {
        const char* system;
        const char* environment;
        std::vector<std::string> fields;
        const char* section;
    };
    const Case cases[] = {
        {"xp", kX86, {"M"}, "M"},
        {"xp", kX86, {"M", "NTx86"}, "M.NTx86"},
        {"xp", kX86, {"M", "ntX86.5.1"}, "M.ntX86.5.1"},
        {"xp", kX86, {"M", "NTx86", "NTx86.5.1"}, "M.NTx86.5.1"},
        {"xp", kX86, {"M", "NTx86.5.1", "NTx86"}, "M.NTx86.5.1"},
        {"xp", kX86, {"M", "NTx86.5", "NTx86.5.1"}, "M.NTx86.5.1"},
        {"xp", kX86, {"M", "NTx86.5.2", "NTx86.5.1"}, "M.NTx86.5.1"},  // 5.2 is above the system
        {"xp", kX86, {"M", "NTx86.6.0"}, "M"},
        {"xp", kX86, {"M", "NTamd64", "NTia64"}, "M"},
        {"xp", kX86, {"M", "NT", "NTx86"}, "M.NTx86"},
        {"xp", kX86, {"M", "NT.5.1", "NTx86"}, "M.NTx86"},  // the processor counts before the version
        {"xp", kX86, {"M", "NT.5"}, "M.NT.5"},
        {"xp", kX86, {"M", "", "XP", "N", "NTalpha"}, "M"},
        {"xp", kX86, {"M", "NTx86.5.1.1"}, "M.NTx86.5.1.1"},               // workstation
        {"xp", kX86, {"M", "NTx86.5.1.3"}, "M"},                           // server
        {"xp", kX86, {"M", "NTx86.5.1", "NTx86.5.1.1"}, "M.NTx86.5.1.1"},  // names more
        {"xp", kX86, {"M", "NTx86.5.1..0x100"}, "M.NTx86.5.1..0x100"},     // suite of XP
        {"xp", kX86, {"M", "NTx86.5.1..0x2"}, "M"},                        // another suite
        {"xp", kX86, {"M", "NTx86.5.1.1.0x100.9"}, "M"},                   // one part too many
        {"xp", kX64, {"M", "NTx86.5.1", "NTamd64.5.2"}, "M.NTamd64.5.2"},  // x64 systems begin with 5.2
        {"xp", kIa64, {"M", "NTia64.5.1", "NTia64.5.2"}, "M.NTia64.5.1"},
        {"xp-x64", kX64, {"M", "NTamd64.5.2", "NTx86"}, "M.NTamd64.5.2"},
        {"xp-x64", kX86, {"M", "NTamd64.5.2", "NTx86"}, "M.NTx86"},
        {"vista", kX86, {"M", "NTx86.5.1", "NTx86.6.0", "NTx86.6.1"}, "M.NTx86.6.0"},
        {"vista-ia64", kIa64, {"M", "NTia64.6.0.3"}, "M.NTia64.6.0.3"},
        {"other", kX86, {"M", "NTx86.5.2"}, "M.NTx86.5.2"},
        {"win2000", kX86, {"M", "NTx86"}, "M"},  // knows no forms
    };
    for (const Case& one : cases) {
        Start(one.system);
        EXPECT_EQ(Section(one.fields, one.environment), one.section)
            << one.system << ": " << ::testing::PrintToString(one.fields);
    }
}

TEST_F(DriverPackage, DriversOfOlderSystemsHaveNoForms) {
    EXPECT_EQ(Section({"M", "NTx86", "NT"}, kX86, 2), "M");
    EXPECT_EQ(Section({"M", "NTx86", "NT"}, "Windows 4.0", 0), "M");
    EXPECT_EQ(Section({}), "");
}

// ---- models and their drivers ---------------------------------------------------------------------------------------

/// An INF that is open as long as this object lives.
class PackageInf {
  public:
    PackageInf(Machine& machine, const std::string& text) {
        WriteFileOn(machine, "C:\\a.inf", text);
        m_handle = SetupOpenInfFileA("C:\\a.inf", nullptr, 2, nullptr);
        m_inf = FindInf(machine, m_handle);
    }
    ~PackageInf() { SetupCloseInfFile(m_handle); }
    OpenInf& operator*() { return *m_inf; }

  private:
    HINF m_handle;
    OpenInf* m_inf;
};

constexpr char kInf[] = R"([Version]
Signature="$Windows NT$"
Provider=%P%
DriverVer=02/29/2004,1.2.65535.4
[Manufacturer]
Solo
%P%=Models,NTx86,NTamd64
[Solo]
"Solo 1"=SOLO
[Models]
"Aurora 500"=OLD,HW\Old
[Models.NTx86]
"Aurora 500"=A500,HW\New,HW\Compatible
"Aurora Two"=TWO
"Aurora Three"=THREE
[Models.NTamd64]
"Aurora 500"=A500
[A500.NT]
DriverFile=NT.DLL
[A500.NTx86]
DriverFile=D.DLL
DataFile=D.GPD
ConfigFile=U.DLL
HelpFile=D.HLP
DefaultDataType=EMF
LanguageMonitor="Monitor, with comma,MON.DLL"
[TWO]
DataSection=TWO_DATA
DriverFile=
LanguageMonitor=%M%,MON2.DLL
[TWO_DATA]
DataFile=DATA.GPD
[OEM URLS]
%P%=http://n.example/
[Strings]
P=Nordlicht
M="Second Monitor"
)";

TEST_F(DriverPackage, ModelIsFoundInTheSectionsThatCount) {
    PackageInf inf(Machine(), kInf);
    const std::optional<ModelLine> model = FindModel(*inf, Target(), "aurora 500");
    ASSERT_TRUE(model.has_value());
    EXPECT_EQ(model->name, "Aurora 500");  // as the INF spells it
    EXPECT_EQ(model->manufacturer, "Nordlicht");
    EXPECT_EQ(model->section, "A500");
    EXPECT_EQ(model->installSection, "A500.NTx86");
    EXPECT_EQ(model->hardwareId, "HW\\New");
    EXPECT_EQ(FindModel(*inf, Target(kX64), "Aurora 500")->installSection, "A500.NT");
    EXPECT_EQ(FindModel(*inf, Target(kX86, 2), "Aurora 500")->hardwareId, "HW\\Old");
    EXPECT_EQ(FindModel(*inf, Target("Windows 4.0", 0), "Aurora 500")->installSection, "OLD");
    EXPECT_FALSE(FindModel(*inf, Target(kX64), "Aurora Two").has_value());
    EXPECT_FALSE(FindModel(*inf, Target(), "Aurora").has_value());
    EXPECT_FALSE(FindModel(*inf, Target(), "").has_value());
}

TEST_F(DriverPackage, ManufacturerWithoutASectionNameIsTheSection) {
    PackageInf inf(Machine(), kInf);
    const std::optional<ModelLine> model = FindModel(*inf, Target(), "Solo 1");
    ASSERT_TRUE(model.has_value());
    EXPECT_EQ(model->manufacturer, "Solo");
    EXPECT_EQ(model->installSection, "SOLO");
}

TEST_F(DriverPackage, InfWithoutManufacturersHasNoModels) {
    PackageInf inf(Machine(), "[Version]\nSignature=\"$Windows NT$\"\n");
    EXPECT_FALSE(FindModel(*inf, Target(), "Aurora 500").has_value());
}

TEST_F(DriverPackage, InstallSectionTellsTheDriver) {
    PackageInf inf(Machine(), kInf);
    const DriverDescription told = DescribeDriver(*inf, Target(), *FindModel(*inf, Target(), "Aurora 500"));
    EXPECT_EQ(told.driver.name, "Aurora 500");
    EXPECT_EQ(told.driver.environment, kX86);
    EXPECT_EQ(told.driver.version, 3u);
    EXPECT_EQ(told.driver.driverFile, "D.DLL");
    EXPECT_EQ(told.driver.dataFile, "D.GPD");
    EXPECT_EQ(told.driver.configFile, "U.DLL");
    EXPECT_EQ(told.driver.helpFile, "D.HLP");
    EXPECT_EQ(told.driver.defaultDatatype, "EMF");
    EXPECT_EQ(told.driver.monitorName, "Monitor, with comma");
    EXPECT_EQ(told.monitorFile, "MON.DLL");
    EXPECT_EQ(told.driver.provider, "Nordlicht");
    EXPECT_EQ(told.driver.manufacturer, "Nordlicht");
    EXPECT_EQ(told.driver.oemUrl, "http://n.example/");
    EXPECT_EQ(told.driver.hardwareId, "HW\\New");
    EXPECT_EQ(told.driver.driverVersion, 0x00010002FFFF0004u);
    // 29 February 2004.
    EXPECT_EQ(DWORDLONG{told.driver.date.dwHighDateTime} << 32 | told.driver.date.dwLowDateTime,
              127'224'864'000'000'000u);
}

TEST_F(DriverPackage, FilesThatAreNotNamedHaveTheSystemsOwnNames) {
    PackageInf inf(Machine(), kInf);
    const DriverDescription two = DescribeDriver(*inf, Target(), *FindModel(*inf, Target(), "Aurora Two"));
    EXPECT_EQ(two.driver.driverFile, "TWO");
    EXPECT_EQ(two.driver.dataFile, "DATA.GPD");
    EXPECT_EQ(two.driver.configFile, "TWO");
    EXPECT_EQ(two.driver.helpFile, "");
    EXPECT_EQ(two.driver.monitorName, "Second Monitor");
    EXPECT_EQ(two.monitorFile, "MON2.DLL");
    const DriverDescription three = DescribeDriver(*inf, Target(), *FindModel(*inf, Target(), "Aurora Three"));
    EXPECT_EQ(three.driver.driverFile, "THREE");
    EXPECT_EQ(three.driver.dataFile, "THREE");
    EXPECT_EQ(three.driver.monitorName, "");
}

TEST_F(DriverPackage, DateThatIsNoneStaysUnset) {
    for (const char* value : {"13/01/2004,1", "00/01/2004", "01/32/2004", "01/01/1600", "soon", "", "1/2", "1/2/x"}) {
        PackageInf inf(Machine(), "[Version]\nDriverVer=" + std::string(value) +
                                      "\n[Manufacturer]\nM=M\n[M]\nA=A\n[A]\nDriverFile=D\n");
        const DriverDescription told = DescribeDriver(*inf, Target(), *FindModel(*inf, Target(), "A"));
        EXPECT_EQ(told.driver.date.dwHighDateTime | told.driver.date.dwLowDateTime, 0u) << value;
    }
}

}  // namespace

}  // namespace pikel::simulated
