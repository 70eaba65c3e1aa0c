// Where the Print UI's library is freed: before the last lines of the operations.
#include "support/log_order.h"

#include "printui/run_dll32.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

class PrintUILogOrder : public MachineTest {
  protected:
    PrintUILogOrder() : MachineTest("win2000") { TraceLog(Test()); }
    std::vector<std::string> TakeEnd() { return TakeLastCallsAndLines(Test(), {"FreeLibrary"}, 3); }
};

TEST_F(PrintUILogOrder, LibraryIsFreedBetweenTheEntrysEndAndTheCommands) {
    const DWORD code = DoRunPrintUI("/dl /n\"Nobody\" /q");
    const std::string text = std::to_string(code);
    EXPECT_THAT(TakeEnd(), ElementsAre("CRunDll32::CallEntry() End  res = " + text, "FreeLibrary",
                                       "DoRunPrintUI End(" + text + ")"));
}

TEST_F(PrintUILogOrder, LibraryIsFreedBetweenTheTextsTwoEnds) {
    char text[260] = {};
    EXPECT_EQ(DoGetResourceStrFromPrintUI(16050, text, sizeof text), 0u);
    EXPECT_THAT(TakeEnd(), ElementsAre("CRunDll32::GetResourceStr() End  res = 0", "FreeLibrary",
                                       "DoGetResourceStrFromPrintUI End(0)"));
}

}  // namespace
}  // namespace pikel
