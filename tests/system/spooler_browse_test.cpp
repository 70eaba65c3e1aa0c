// Browsing the network for shared printers through the spooler, as all systems but those of the 9x family do.
#include <cstring>

#include "network_browse.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::StartsWith;

class SpoolerBrowse : public NetworkBrowseTest {
  protected:
    SpoolerBrowse() : NetworkBrowseTest("xp") {}
};

TEST_F(SpoolerBrowse, EachLevelIsListedBelowItsParent) {
    MakeNetwork();
    Machine().Registry().SetText("HKLM\\SOFTWARE\\Simulated Network\\Servers\\ALPHA\\Laser", "Driver", "Tarvo 100");
    Browse top;
    EXPECT_EQ(top.Code(), 0u);
    EXPECT_THAT(top.Texts(), ElementsAre("0x18000 1|Windows NT Local Print Providor|Windows NT Local Print Providor||-",
                                         "0x18000 1|LM|LM||-", "0x18000 1|NW|NW||-"));
    Browse network(top.At(1));
    EXPECT_THAT(network.Texts(), ElementsAre("0x28000 2|LM!DEVELOPMENT|DEVELOPMENT||-", "0x28000 2|LM!SALES|SALES||-"));
    Browse domain(network.At(1));
    EXPECT_THAT(domain.Texts(), ElementsAre("0x48000 3|\\\\ALPHA|ALPHA|first floor|-"));
    Browse server(domain.At(0));
    EXPECT_THAT(server.Texts(), ElementsAre("0x800000 4|\\\\ALPHA\\Laser|Laser|by the window|-"));
    Browse tree(top.At(2));
    EXPECT_THAT(tree.Texts(), ElementsAre("0x48000 3|\\\\TREE|TREE||-"));
}

TEST_F(SpoolerBrowse, AsksTwiceAndLogsWhatItFinds) {
    MakeNetwork();
    const NetResourceRecord parent = Node(0, "\\\\ALPHA");
    Watch();
    Browse browse(&parent);
    EXPECT_THAT(TakeCallsOf(Test(), kBrowsingCalls),
                ElementsAre(StartsWith("EnumPrintersA(0x8, \"\\\\\\\\ALPHA\", 0x1, null, 0x0, &, &) = 0x0 failed"),
                            StartsWith("EnumPrintersA(0x8, \"\\\\\\\\ALPHA\", 0x1, &, ")));
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoEnumNetResources Start", "Flags:8388608", "pComment:by the window",
                            "pName:\\\\ALPHA\\Laser", "pDescription:\\\\ALPHA\\Laser,,", "DoEnumNetResources End:(0)"));
}

TEST_F(SpoolerBrowse, TopIsAskedForWithoutAName) {
    Watch();
    Browse top;
    EXPECT_THAT(TakeCallsOf(Test(), kBrowsingCalls),
                ElementsAre(StartsWith("EnumPrintersA(0x8, null, 0x1, null, 0x0, &, &)"),
                            StartsWith("EnumPrintersA(0x8, null, 0x1, &, ")));
}

TEST_F(SpoolerBrowse, UsageOfTheParentDoesNotMatter) {
    MakeNetwork();
    const NetResourceRecord parent = Node(0, "LM");
    Browse browse(&parent);
    EXPECT_EQ(browse.Count(), 2u);
}

TEST_F(SpoolerBrowse, FailureGivesItsCode) {
    const NetResourceRecord parent = Node(0, "\\\\NOBODY");
    Watch();
    Browse browse(&parent);
    EXPECT_EQ(browse.Code(), ERROR_INVALID_NAME);
    EXPECT_EQ(browse.Block(), nullptr);
    EXPECT_EQ(browse.Count(), 0u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoEnumNetResources Start", "DoEnumNetResources End:(123)"));
    faults::FailCall("EnumPrintersA", 2, RPC_S_CALL_FAILED);
    Browse second;
    EXPECT_EQ(second.Code(), RPC_S_CALL_FAILED);
}

TEST_F(SpoolerBrowse, WithoutMemoryGives8) {
    MakeNetwork();
    for (std::size_t after : {0u, 1u, 2u}) {
        Machine().Heap().FailAllocation(after, true);
        Browse browse;
        Machine().Heap().StopFailing();
        EXPECT_EQ(browse.Code(), ERROR_NOT_ENOUGH_MEMORY) << after;
        EXPECT_EQ(browse.Block(), nullptr);
    }
    EXPECT_EQ(Machine().Heap().OpenCount(simulated::BlockKind::Heap), 0u);
}

/// Answers of EnumPrintersA, in the place of the machine's.
std::vector<PRINTER_INFO_1A> g_printers;

BOOL WINAPI AnswerPrinters(DWORD, LPSTR, DWORD, LPBYTE bytes, DWORD size, LPDWORD needed, LPDWORD returned) {
    *needed = static_cast<DWORD>(g_printers.size() * sizeof(PRINTER_INFO_1A));
    if (size < *needed) {
        Platform().SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    if (size != 0) {
        std::memcpy(bytes, g_printers.data(), *needed);
    }
    *returned = static_cast<DWORD>(g_printers.size());
    return TRUE;
}

TEST_F(SpoolerBrowse, FlagsDecideTheKindInOrder) {
    ReplacedOperations replaced;
    replaced.table.EnumPrintersA = &AnswerPrinters;
    const std::vector<std::pair<DWORD, DWORD>> cases = {
        {0x10000, 1},  {0xff0008, 1}, {0x20000, 2},  {0x860008, 2},   {0x40000, 3}, {0x840008, 3},
        {0x800000, 4}, {0x800008, 4}, {0x8, 5},      {0x8008, 5},     {0, 4},       {1, 0},
        {0x8000, 0},   {0x80000, 0},  {0x100000, 0}, {0x80000000, 0}, {0x2, 0},
    };
    g_printers.clear();
    for (const auto& [flags, kind] : cases) {
        g_printers.push_back({flags, nullptr, const_cast<LPSTR>("x"), nullptr});
    }
    Browse browse;
    ASSERT_EQ(browse.Count(), cases.size());
    for (DWORD i = 0; i < browse.Count(); ++i) {
        EXPECT_EQ(browse.At(i)->ResourceKind, cases[i].second) << std::hex << cases[i].first;
        EXPECT_EQ(browse.At(i)->Usage, cases[i].first);
    }
}

TEST_F(SpoolerBrowse, NullTextsStayNull) {
    ReplacedOperations replaced;
    replaced.table.EnumPrintersA = &AnswerPrinters;
    g_printers = {{0x10000, const_cast<LPSTR>("described"), nullptr, nullptr},
                  {0x10000, nullptr, const_cast<LPSTR>("a\\\\b"), const_cast<LPSTR>("comment")}};
    Watch();
    Browse browse;
    EXPECT_THAT(browse.Texts(), ElementsAre("0x10000 1|-|-|-|-", "0x10000 1|a\\\\b|b|comment|-"));
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoEnumNetResources Start", "Flags:65536", "pDescription:described", "Flags:65536",
                            "pComment:comment", "pName:a\\\\b", "DoEnumNetResources End:(0)"));
}

TEST_F(SpoolerBrowse, NothingToListIsAnEmptyBlock) {
    ReplacedOperations replaced;
    replaced.table.EnumPrintersA = &AnswerPrinters;
    g_printers.clear();
    Browse browse;
    EXPECT_EQ(browse.Code(), 0u);
    EXPECT_EQ(browse.Count(), 0u);
    EXPECT_NE(browse.Block(), nullptr);
}

}  // namespace
}  // namespace pikel
