// Where the colour library is freed and the keys of a profile are closed: before or behind which line. And the level of
// the lines of a failure.
#include "support/log_order.h"

#include "colour/color_profile_install.h"
#include "colour/profile_registry.h"
#include "icc_profile.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Lines = std::vector<std::string>;

char g_name[] = "NLDISP.ICC";
LPSTR g_names[] = {g_name};
constexpr char kPath[] = "C:\\WINDOWS\\SYSTEM\\Color\\NLDISP.ICC";

TEST(ColourLogOrder, LibraryIsFreedBeforeTheEnd) {
    TestMachine test("vista");
    WriteFileOn(*test, test->System().systemDirectory + "\\spool\\drivers\\color\\NLDISP.ICC", "x");
    const std::pair<std::string, DWORD (*)()> routines[] = {
        {"InstallColorProfile982k", [] { return InstallColorProfile982k(g_names, 1); }},
        {"AddColorProfile982k", [] { return AddColorProfile982k("Nobody", g_names, 1); }},
        {"AddColorProfileVista", [] { return AddColorProfileVista("Nobody", g_names, 1); }},
    };
    for (const auto& [name, run] : routines) {
        TraceLog(test);
        EXPECT_EQ(run(), 0u);
        const Lines steps = TakeLastCallsAndLines(test, {"FreeLibrary"}, 2);
        EXPECT_THAT(steps, ElementsAre("FreeLibrary", name + "() - End(0)"));
    }
}

class ProfileLogOrder : public MachineTest {
  protected:
    ProfileLogOrder() : MachineTest("win95") {}
    void Begin(const char* kind, const char* call = nullptr, std::size_t nth = 0) {
        IccProfile profile(kind);
        profile.PutDescription(304, "Nordlicht").PutDescription(400, "Aurora 500");
        WriteFileOn(Machine(), kPath, profile.Bytes());
        faults::Reset();
        if (call != nullptr) {
            faults::FailCall(call, nth, 5);
        }
        TraceLog(Test());
    }
    Lines TakeEnd(std::size_t count) { return TakeLastCallsAndLines(Test(), {"RegCloseKey"}, count); }
};

TEST_F(ProfileLogOrder, KeysAreClosedBeforeTheEnd) {
    Begin("mntr");
    WIToolRegistMntrProfileKey(kPath);
    EXPECT_THAT(TakeEnd(4),
                ElementsAre("RegCloseKey", "RegCloseKey", "RegCloseKey", "WIToolRegistMntrProfileKey() - End"));
    Begin("prtr");
    WIToolRegistPrtrProfileKey(kPath);
    EXPECT_THAT(TakeEnd(4),
                ElementsAre("RegCloseKey", "RegCloseKey", "RegCloseKey", "WIToolRegistPrtrProfileKey() - End"));
    Test().AllowOpen();  // the key of a printer profile's quality
}

struct Failure {
    const char* kind;
    const char* call;
    std::size_t nth;
    const char* line;
    std::size_t closes;
};
const Failure kFailures[] = {
    {"mntr", "RegSetValueExA", 1, "WIToolRegistMntrProfileKey RegSetValueEx Error:5", 2},
    {"mntr", "RegCreateKeyExA", 3, "WIToolRegistMntrProfileKey RegCreateKeyEx-2 Error:5", 2},
    {"mntr", "RegSetValueExA", 2, "WIToolRegistMntrProfileKey RegSetValueEx Error:5", 3},
    {"prtr", "RegSetValueExA", 1, "RegSetValueEx-1 Error:5", 2},
    {"prtr", "RegCreateKeyExA", 3, "RegCreateKeyEx-3 Error:5", 2},
    {"prtr", "RegSetValueExA", 2, "RegSetValueEx-2 Error:5", 3},
};

void Register(const std::string& kind) {
    kind == "mntr" ? WIToolRegistMntrProfileKey(kPath) : WIToolRegistPrtrProfileKey(kPath);
}

TEST_F(ProfileLogOrder, KeysAreClosedBeforeTheLineOfAFailedValueOrModel) {
    for (const Failure& failure : kFailures) {
        Begin(failure.kind, failure.call, failure.nth);
        Register(failure.kind);
        Lines expected(failure.closes, "RegCloseKey");
        expected.push_back(failure.line);
        EXPECT_EQ(TakeEnd(expected.size()), expected) << failure.kind << ' ' << failure.line;
    }
}

TEST_F(ProfileLogOrder, ClassIsClosedBehindTheLineOfAFailedMaker) {
    for (const char* kind : {"mntr", "prtr"}) {
        Begin(kind, "RegCreateKeyExA", 2);
        Register(kind);
        EXPECT_THAT(TakeEnd(2), ElementsAre("RegCreateKeyEx-2 Error:5", "RegCloseKey")) << kind;
    }
}

TEST_F(ProfileLogOrder, FailuresStandInTheDetailLogAlone) {
    const auto expectNothing = [this](const char* kind, const char* call, std::size_t nth) {
        Begin(kind, call, nth);
        Test().TurnLogOn(1);
        Register(kind);
        EXPECT_THAT(Test().TakeLog(), IsEmpty()) << kind << ' ' << call << ' ' << nth;
    };
    for (const char* kind : {"mntr", "prtr"}) {
        expectNothing(kind, "RegCreateKeyExA", 1);
        expectNothing(kind, "RegCreateKeyExA", 2);
    }
    for (const Failure& failure : kFailures) {
        expectNothing(failure.kind, failure.call, failure.nth);
    }
}

}  // namespace
}  // namespace pikel
