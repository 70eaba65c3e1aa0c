// What the network browse and the security operations close and free before their last lines, and what behind them.
#include "support/log_order.h"

#include "network_browse.h"
#include "support/spooler_setup.h"
#include "system/security.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

using Lines = std::vector<std::string>;

PlatformTable g_before;

/// Has every HeapFree stand among the lines of the log: the trace leaves the heap out.
class SeenHeap {
  public:
    SeenHeap() {
        g_before = Platform();
        m_replaced.table.HeapFree = [](HANDLE heap, DWORD flags, LPVOID block) -> BOOL {
            g_before.OutputDebugStringA("HeapFree");
            return g_before.HeapFree(heap, flags, block);
        };
    }

  private:
    ReplacedOperations m_replaced;
};

// ---- network --------------------------------------------------------------------------------------------------------

class BrowseLogOrder : public NetworkBrowseTest {
  protected:
    BrowseLogOrder() : NetworkBrowseTest("win98") { MakeNetwork(); }
    /// The last steps of a browse below a node.
    Lines StepsOf(std::size_t count, DWORD code) {
        const NetResourceRecord parent = Node(2, "SALES", "LM");
        NetResourceRecord* block = nullptr;
        DWORD entries = 0;
        TraceLog(Test());
        {
            SeenHeap heap;
            EXPECT_EQ(DoEnumNetResources(&parent, &block, &entries), code);
        }
        const Lines steps = TakeLastCallsAndLines(Test(), {"WNetOpenEnumA", "WNetCloseEnum"}, count);
        if (block != nullptr) {
            Platform().HeapFree(Platform().GetProcessHeap(), 0, block);
        }
        return steps;
    }
};

TEST_F(BrowseLogOrder, BufferAndEnumerationGoBeforeTheEndAndTheRoutesListBehindIt) {
    EXPECT_THAT(StepsOf(6, 0), ElementsAre("", "HeapFree", "WNetCloseEnum", "WNetEnumSharePrinters - End:0",
                                           "DoEnumNetResources End:(0)", "HeapFree"));
}

TEST_F(BrowseLogOrder, EnumerationIsClosedBeforeTheLineOfItsFailure) {
    faults::FailCall("WNetEnumResourceA", 1, 1234);
    EXPECT_THAT(StepsOf(4, 1234), ElementsAre("HeapFree", "WNetCloseEnum", "WNetEnumSharePrinters - Error:1234",
                                              "DoEnumNetResources End:(1234)"));
}

TEST_F(BrowseLogOrder, EnumerationIsClosedBetweenTheTwoLinesOfAnExtendedError) {
    faults::FailCall("WNetEnumResourceA", 1, ERROR_EXTENDED_ERROR);
    const NetResourceRecord parent = Node(2, "SALES", "LM");
    TraceLog(Test());
    Browse browse(&parent);
    const Lines steps = TakeLastCallsAndLines(Test(), {"WNetGetLastErrorA", "WNetCloseEnum"}, 5);
    ASSERT_EQ(steps.size(), 5u);
    EXPECT_EQ(steps[0], "WNetEnumSharePrinters - ExtendedError:1208");
    EXPECT_EQ(steps[1], "WNetGetLastErrorA");
    EXPECT_EQ(steps[2], "WNetCloseEnum");
    EXPECT_EQ(steps[3], "WNetEnumSharePrinters - Error:" + std::to_string(browse.Code()));
}

TEST_F(BrowseLogOrder, EnumerationIsClosedBeforeTheEndWithoutMemory) {
    Machine().Heap().FailAllocation(0, false);
    EXPECT_THAT(StepsOf(3, 8),
                ElementsAre("WNetCloseEnum", "WNetEnumSharePrinters - End:8", "DoEnumNetResources End:(8)"));
    Machine().Heap().StopFailing();
}

// ---- security -------------------------------------------------------------------------------------------------------

TEST(SecurityLogOrder, TokenIsClosedBehindSidAndGroupsAndBeforeTheEnd) {
    TestMachine test("xp");
    TraceLog(test);
    {
        SeenHeap heap;
        EXPECT_EQ(IsAdministrators(), 1u);
    }
    EXPECT_THAT(TakeLastCallsAndLines(test, {"EqualSid", "FreeSid", "CloseHandle"}, 5),
                ElementsAre("EqualSid", "FreeSid", "HeapFree", "CloseHandle", "IsAdministrators() - End(1)"));
}

const Lines kDescriptorCalls = {"GetPrinterA",
                                "SetPrinterA",
                                "ClosePrinter",
                                "LocalFree",
                                "RegCloseKey",
                                "FreeLibrary",
                                "ConvertSecurityDescriptorToStringSecurityDescriptorA"};

TEST(SecurityLogOrder, LibraryIsFreedBeforeTheEndOfARead) {
    TestMachine test("xp");
    PutDriver(*test, {});
    PutPrinter("P1", "Aurora 500");
    TraceLog(test);
    StringSD sd;
    EXPECT_EQ(GetStringSD("P1", sd), 0u);
    EXPECT_THAT(TakeLastCallsAndLines(test, kDescriptorCalls, 4),
                ElementsAre("ClosePrinter", "ConvertSecurityDescriptorToStringSecurityDescriptorA", "FreeLibrary",
                            "GetStringSD() - End(0)"))
        << "and the printer before the conversion";
}

TEST(SecurityLogOrder, DescriptorAndPrinterAndLibraryGoBeforeTheEndOfAChange) {
    TestMachine test("xp");
    PutDriver(*test, {});
    PutPrinter("P1", "Aurora 500");
    TraceLog(test);
    EXPECT_EQ(SetStringSD("P1", "D:(A;;GA;;;WD)", 0), 0u);
    EXPECT_THAT(TakeLastCallsAndLines(test, kDescriptorCalls, 5),
                ElementsAre("SetPrinterA", "LocalFree", "ClosePrinter", "FreeLibrary", "SetStringSD() - End(0)"));
}

TEST(SecurityLogOrder, KeyOfNt4IsClosedBeforeTheLibraryIsFreed) {
    TestMachine test("nt4");
    PutDriver(*test, {});
    PutPrinter("P1", "Aurora 500");
    TraceLog(test);
    EXPECT_EQ(SetStringSD("P1", "bytes", 5), 0u);
    EXPECT_THAT(TakeLastCallsAndLines(test, kDescriptorCalls, 3),
                ElementsAre("RegCloseKey", "FreeLibrary", "SetStringSD() - End(0)"));
    StringSD sd;
    EXPECT_EQ(GetStringSD("P1", sd), 0u);
    EXPECT_THAT(TakeLastCallsAndLines(test, kDescriptorCalls, 3),
                ElementsAre("RegCloseKey", "FreeLibrary", "GetStringSD() - End(0)"));
}

}  // namespace
}  // namespace pikel
