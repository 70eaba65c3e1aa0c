// Where the share operations of the 9x family free the network library: before their last lines.
#include "support/log_order.h"

#include <cstring>

#include "printer/share_registry.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

class ShareLogOrder : public MachineTest {
  protected:
    ShareLogOrder() : MachineTest("win98") {
        std::memcpy(m_share.NetName, "LASER", 6);
        std::memcpy(m_share.Path, "P1", 3);
        m_share.ShareType = 1;
    }
    std::vector<std::string> TakeEnd(std::size_t count) {
        return TakeLastCallsAndLines(
            Test(), {"NetShareGetInfo", "NetShareSetInfo", "RegCloseKey", "SHChangeNotify", "FreeLibrary"}, count);
    }
    PrinterShareRecord m_share{};
};

TEST_F(ShareLogOrder, LibraryIsFreedBeforeTheEndOfEveryOperation) {
    TraceLog(Test());
    EXPECT_EQ(AddSharePrinter9x(&m_share), 0u);
    EXPECT_THAT(TakeEnd(4),
                ElementsAre("SHChangeNotify", "SHChangeNotify", "FreeLibrary", "AddSharePrinter9x() - End(0)"));
    EXPECT_EQ(SetSharePrinter9x("LASER", &m_share), 0u);
    EXPECT_THAT(TakeEnd(3), ElementsAre("NetShareSetInfo", "FreeLibrary", "SetSharePrinter9x() - End(0)"));
    EXPECT_EQ(GetSharePrinter9x("LASER", &m_share), 0u);
    EXPECT_THAT(TakeEnd(3), ElementsAre("NetShareGetInfo", "FreeLibrary", "GetSharePrinter9x() - End(0)"));
    EXPECT_EQ(DeleteSharePrinter9x("LASER", "P1"), 0u);
    EXPECT_THAT(TakeEnd(4),
                ElementsAre("SHChangeNotify", "RegCloseKey", "FreeLibrary", "DeleteSharePrinter9x() - End(0)"));
}

TEST_F(ShareLogOrder, LibraryIsFreedBeforeTheEndOfAFailureToo) {
    TraceLog(Test());
    EXPECT_EQ(GetSharePrinter9x("NOBODY", &m_share), 2310u);
    EXPECT_THAT(TakeEnd(2), ElementsAre("FreeLibrary", "GetSharePrinter9x() - End(2310)"));
    EXPECT_EQ(DeleteSharePrinter9x("NOBODY", "P1"), 2310u);
    EXPECT_THAT(TakeEnd(2), ElementsAre("FreeLibrary", "DeleteSharePrinter9x() - End(2310)"));
    // Without memory for the first block: the library goes first there as well.
    Machine().Heap().FailAllocation(0, false);
    EXPECT_EQ(GetSharePrinter9x("NOBODY", &m_share), 0u);
    Machine().Heap().StopFailing();
    EXPECT_THAT(TakeEnd(2), ElementsAre("FreeLibrary", "GetSharePrinter9x() - End(0)"));
}

}  // namespace
}  // namespace pikel
