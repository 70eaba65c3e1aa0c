// Browsing the network for shared printers.
#include "system/net_resources.h"

#include <cstring>

#include "frame/os_identity.h"
#include "platform/simulated/operations.h"
#include "support/calls.h"
#include "system/resource_list.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

constexpr char kNetwork[] = "HKLM\\SOFTWARE\\Simulated Network";
const std::vector<std::string> kBrowsingCalls = {"WNetGetProviderNameA", "WNetOpenEnumA", "WNetEnumResourceA",
                                                 "WNetCloseEnum",        "WNetGetLastErrorA", "EnumPrintersA"};

/// A record as one text: usage kind|remote name|short name|comment|provider, with "-" for null.
std::string TextOf(const NetResourceRecord& record) {
    auto text = [](LPCSTR lpszText) { return std::string("|") + (lpszText == nullptr ? "-" : lpszText); };
    char numbers[40];
    std::snprintf(numbers, sizeof numbers, "0x%x %u", static_cast<unsigned>(record.Usage),
                  static_cast<unsigned>(record.ResourceKind));
    return numbers + text(record.RemoteName) + text(record.ShortName) + text(record.Comment) + text(record.Provider);
}

/// The answer of one browse.
class Browse {
  public:
    explicit Browse(const NetResourceRecord* parent = nullptr) {
        m_code = DoEnumNetResources(parent, &m_block, &m_count);
    }
    ~Browse() {
        if (m_block != nullptr) {
            EXPECT_TRUE(Platform().HeapFree(Platform().GetProcessHeap(), 0, m_block));
        }
    }
    Browse(const Browse&) = delete;
    Browse& operator=(const Browse&) = delete;

    DWORD Code() const { return m_code; }
    DWORD Count() const { return m_count; }
    const NetResourceRecord* Block() const { return m_block; }
    const NetResourceRecord* At(DWORD index) const { return &m_block[index]; }
    std::vector<std::string> Texts() const {
        std::vector<std::string> texts;
        for (DWORD i = 0; i < m_count; ++i) {
            texts.push_back(TextOf(m_block[i]));
        }
        return texts;
    }

  private:
    NetResourceRecord* m_block = reinterpret_cast<NetResourceRecord*>(1);
    DWORD m_count = 77;
    DWORD m_code;
};

/// Parent with texts of its own.
NetResourceRecord Node(DWORD usage, const char* remoteName, const char* provider = nullptr) {
    NetResourceRecord record{};
    record.Usage = usage;
    record.RemoteName = const_cast<LPSTR>(remoteName);
    record.Provider = const_cast<LPSTR>(provider);
    return record;
}

class NetResources : public MachineTest {
  protected:
    NetResources() : MachineTest("win98") {}
    void SetText(const std::string& key, const char* name, const char* text) {
        Machine().Registry().SetText(kNetwork + ("\\" + key), name, text);
    }
    void SetNumber(const std::string& key, const char* name, DWORD number) {
        Machine().Registry().SetNumber(kNetwork + ("\\" + key), name, number);
    }
    void MakeNetwork() {
        SetNumber("Providers\\LM", "NetType", WNNC_NET_LANMAN);
        SetNumber("Providers\\NW", "NetType", WNNC_NET_NETWARE);
        SetText("Servers\\ALPHA", "Domain", "SALES");
        SetText("Servers\\ALPHA", "Comment", "first floor");
        SetText("Servers\\ALPHA\\Laser", "Comment", "by the window");
        SetNumber("Servers\\ALPHA\\Files", "Type", RESOURCETYPE_DISK);
        SetNumber("Servers\\ALPHA\\Mixed", "Type", 3);
        SetText("Servers\\BETA", "Domain", "DEVELOPMENT");
        SetText("Servers\\TREE", "Provider", "NW");
        SetText("Servers\\TREE\\Queue", "Comment", "");
    }
    /// Turns the log on and forgets the calls so far.
    void Watch() {
        Test().TurnLogOn(1);
        ForgetCalls(Test());
    }
};

// ---- 9x family: the top -----------------------------------------------------------------------------------------

TEST_F(NetResources, TopListsTheRootsOfBothProviders) {
    MakeNetwork();
    Browse top;
    EXPECT_EQ(top.Code(), 0u);
    EXPECT_THAT(top.Texts(), ElementsAre("0x2 2|DEVELOPMENT|DEVELOPMENT|-|LM", "0x2 2|SALES|SALES|-|LM",
                                         "0x2 3|\\\\TREE|TREE|-|NW"));
}

TEST_F(NetResources, TopAsksLanManFirstAndThenNetWare) {
    MakeNetwork();
    Watch();
    Browse top;
    EXPECT_THAT(TakeCallsOf(Test(), kBrowsingCalls),
                ElementsAre("WNetGetProviderNameA(0x20000, \"\", &) = 0x0", "WNetOpenEnumA(0x2, 0x0, 0x0, &, &) = 0x0",
                            StartsWith("WNetEnumResourceA("), StartsWith("WNetCloseEnum("),
                            "WNetGetProviderNameA(0x30000, \"\", &) = 0x0", "WNetOpenEnumA(0x2, 0x0, 0x0, &, &) = 0x0",
                            StartsWith("WNetEnumResourceA("), StartsWith("WNetCloseEnum(")));
    EXPECT_THAT(
        Test().TakeLog(),
        ElementsAre("DoEnumNetResources Start", "WNetEnumSharePrinters - Start", "lpRemoteName:DEVELOPMENT",
                    "lpProvider:LM", "dwDisplayType:1", "dwScope:2", "dwType:0", "dwUsage:2", "", "lpRemoteName:SALES",
                    "lpProvider:LM", "dwDisplayType:1", "dwScope:2", "dwType:0", "dwUsage:2", "",
                    "WNetEnumSharePrinters - End:0", "WNetEnumSharePrinters - Start", "lpRemoteName:\\\\TREE",
                    "lpProvider:NW", "dwDisplayType:2", "dwScope:2", "dwType:0", "dwUsage:2", "",
                    "WNetEnumSharePrinters - End:0", "DoEnumNetResources End:(0)"));
}

TEST_F(NetResources, TopPassesTheProviderAlone) {
    MakeNetwork();
    static std::vector<std::string> s_asked;
    s_asked.clear();
    ReplacedOperations replaced;
    replaced.table.WNetOpenEnumA = [](DWORD, DWORD, DWORD, LPNETRESOURCEA resource, LPHANDLE) -> DWORD {
        EXPECT_EQ(resource->dwScope, 0u);
        EXPECT_EQ(resource->dwType, 0u);
        EXPECT_EQ(resource->dwDisplayType, 0u);
        EXPECT_EQ(resource->dwUsage, 2u);
        EXPECT_EQ(resource->lpLocalName, nullptr);
        EXPECT_EQ(resource->lpRemoteName, nullptr);
        EXPECT_EQ(resource->lpComment, nullptr);
        s_asked.push_back(resource->lpProvider);
        return ERROR_NO_NETWORK;
    };
    Browse top;
    EXPECT_EQ(top.Code(), 0u);
    EXPECT_THAT(s_asked, ElementsAre("LM", "NW"));
}

TEST_F(NetResources, TopIsEmptyWithoutProviders) {
    Machine().Registry().CreateKey(std::string(kNetwork) + "\\Providers");
    Watch();
    Browse top;
    EXPECT_EQ(top.Code(), 0u);
    EXPECT_EQ(top.Count(), 0u);
    EXPECT_NE(top.Block(), nullptr);
    EXPECT_THAT(Test().TakeCallNames(kBrowsingCalls), ElementsAre("WNetGetProviderNameA", "WNetGetProviderNameA"));
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoEnumNetResources Start", "DoEnumNetResources End:(0)"));
}

TEST_F(NetResources, ProviderThatFailsIsPassedOver) {
    MakeNetwork();
    SetNumber("Providers\\LM", "Error", 5);
    Watch();
    Browse top;
    EXPECT_EQ(top.Code(), 0u);
    EXPECT_THAT(top.Texts(), ElementsAre("0x2 3|\\\\TREE|TREE|-|NW"));
    const std::vector<std::string> log = Test().TakeLog();
    ASSERT_GE(log.size(), 3u);
    EXPECT_THAT(std::vector<std::string>(log.begin(), log.begin() + 3),
                ElementsAre("DoEnumNetResources Start", "WNetEnumSharePrinters - Start", "WNetEnumSharePrinters - End:5"));
}

TEST_F(NetResources, TopWithoutMemoryGives8AndLeavesNothing) {
    MakeNetwork();
    // Two buffers and two lists, then the joint list and the caller's block.
    for (std::size_t after : {4u, 5u}) {
        Machine().Heap().FailAllocation(after, true);
        Browse top;
        Machine().Heap().StopFailing();
        EXPECT_EQ(top.Code(), ERROR_NOT_ENOUGH_MEMORY) << after;
        EXPECT_EQ(top.Block(), nullptr);
        EXPECT_EQ(top.Count(), 0u);
    }
    EXPECT_EQ(Machine().Heap().OpenCount(simulated::BlockKind::Heap), 0u);
    // A list of one network that can't be built is a network that fails.
    Machine().Heap().FailAllocation(1, false);
    Browse top;
    Machine().Heap().StopFailing();
    EXPECT_EQ(top.Code(), 0u);
    EXPECT_THAT(top.Texts(), ElementsAre("0x2 3|\\\\TREE|TREE|-|NW"));
}

// ---- 9x family: below a parent ----------------------------------------------------------------------------------

TEST_F(NetResources, EachLevelIsListedBelowItsParent) {
    MakeNetwork();
    Browse top;
    ASSERT_EQ(top.Count(), 3u);
    Browse domain(top.At(1));
    EXPECT_THAT(domain.Texts(), ElementsAre("0x2 3|\\\\ALPHA|ALPHA|first floor|LM"));
    Browse server(domain.At(0));
    EXPECT_THAT(server.Texts(),
                ElementsAre("0x1 0|\\\\ALPHA\\Files|\\\\ALPHA\\Files|-|LM",
                            "0x1 4|\\\\ALPHA\\Laser|Laser|by the window|LM",
                            "0x1 6|\\\\ALPHA\\Mixed|\\\\ALPHA\\Mixed|-|LM"));
    Browse queue(server.At(1));
    EXPECT_EQ(queue.Code(), 0u);
    EXPECT_EQ(queue.Count(), 0u);
}

TEST_F(NetResources, ParentThatIsNoContainerMakesNoNetworkCall) {
    MakeNetwork();
    for (DWORD usage : {0u, 1u, 0xfffffffdu}) {
        const NetResourceRecord parent = Node(usage, "\\\\ALPHA", "LM");
        Watch();
        Browse browse(&parent);
        EXPECT_EQ(browse.Code(), 0u);
        EXPECT_EQ(browse.Count(), 0u);
        EXPECT_NE(browse.Block(), nullptr);
        EXPECT_THAT(Test().TakeCallNames(kBrowsingCalls), IsEmpty());
        EXPECT_THAT(Test().TakeLog(), ElementsAre("DoEnumNetResources Start", "WNetEnumSharePrinters - Start",
                                                  "DoEnumNetResources End:(0)"));
    }
}

TEST_F(NetResources, ParentIsPassedByUsageNameAndProvider) {
    ReplacedOperations replaced;
    replaced.table.WNetOpenEnumA = [](DWORD scope, DWORD type, DWORD usage, LPNETRESOURCEA resource,
                                      LPHANDLE) -> DWORD {
        EXPECT_EQ(scope, 2u);
        EXPECT_EQ(type, 0u);
        EXPECT_EQ(usage, 0u);
        EXPECT_EQ(resource->dwScope, 0u);
        EXPECT_EQ(resource->dwType, 0u);
        EXPECT_EQ(resource->dwDisplayType, 0u);
        EXPECT_EQ(resource->dwUsage, 0x8002u);
        EXPECT_STREQ(resource->lpRemoteName, "\\\\ALPHA");
        EXPECT_STREQ(resource->lpProvider, "LM");
        EXPECT_EQ(resource->lpLocalName, nullptr);
        EXPECT_EQ(resource->lpComment, nullptr);
        return ERROR_ACCESS_DENIED;
    };
    NetResourceRecord parent = Node(0x8002, "\\\\ALPHA", "LM");
    parent.ResourceKind = 3;
    parent.ShortName = const_cast<LPSTR>("ALPHA");
    parent.Comment = const_cast<LPSTR>("first floor");
    Browse browse(&parent);
    EXPECT_EQ(browse.Code(), ERROR_ACCESS_DENIED);
}

TEST_F(NetResources, OpenThatFailsGivesItsCode) {
    MakeNetwork();
    const NetResourceRecord parent = Node(2, "\\\\NOBODY", "LM");
    Watch();
    Browse browse(&parent);
    EXPECT_EQ(browse.Code(), 53u);
    EXPECT_EQ(browse.Block(), nullptr);
    EXPECT_EQ(browse.Count(), 0u);
    EXPECT_THAT(Test().TakeCallNames(kBrowsingCalls), ElementsAre("WNetOpenEnumA"));
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoEnumNetResources Start", "WNetEnumSharePrinters - Start",
                                              "WNetEnumSharePrinters - End:53", "DoEnumNetResources End:(53)"));
}

TEST_F(NetResources, ProvidersOwnCodeReplacesExtendedErrorOfTheOpen) {
    MakeNetwork();
    SetNumber("Providers\\LM", "Error", 4321);
    const NetResourceRecord parent = Node(2, "\\\\ALPHA", "LM");
    Watch();
    Browse browse(&parent);
    EXPECT_EQ(browse.Code(), 4321u);
    EXPECT_THAT(Test().TakeCallNames(kBrowsingCalls), ElementsAre("WNetOpenEnumA", "WNetGetLastErrorA"));
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoEnumNetResources Start", "WNetEnumSharePrinters - Start",
                                              "WNetEnumSharePrinters - End:4321", "DoEnumNetResources End:(4321)"));
}

TEST_F(NetResources, ExtendedErrorStaysWhenItCannotBeAskedFor) {
    MakeNetwork();
    SetNumber("Providers\\LM", "Error", 4321);
    faults::FailCall("WNetGetLastErrorA", 1, ERROR_INVALID_PARAMETER);
    const NetResourceRecord parent = Node(2, "\\\\ALPHA", "LM");
    Browse browse(&parent);
    EXPECT_EQ(browse.Code(), DWORD{ERROR_EXTENDED_ERROR});
}

TEST_F(NetResources, ParentWithoutMemoryGives8) {
    MakeNetwork();
    const NetResourceRecord parent = Node(2, "SALES", "LM");
    // The buffer, the list, the caller's block.
    const std::vector<std::vector<std::string>> logs = {
        {"DoEnumNetResources Start", "WNetEnumSharePrinters - Start", "WNetEnumSharePrinters - End:8",
         "DoEnumNetResources End:(8)"},
        {"DoEnumNetResources Start", "WNetEnumSharePrinters - Start", "WNetEnumSharePrinters - End:8",
         "DoEnumNetResources End:(8)"},
        {"DoEnumNetResources Start", "WNetEnumSharePrinters - Start", "lpRemoteName:\\\\ALPHA", "lpComment:first floor",
         "lpProvider:LM", "dwDisplayType:2", "dwScope:2", "dwType:0", "dwUsage:2", "", "WNetEnumSharePrinters - End:0",
         "DoEnumNetResources End:(8)"}};
    for (std::size_t after = 0; after < logs.size(); ++after) {
        Watch();
        Machine().Heap().FailAllocation(after, true);
        Browse browse(&parent);
        Machine().Heap().StopFailing();
        EXPECT_EQ(browse.Code(), ERROR_NOT_ENOUGH_MEMORY) << after;
        EXPECT_EQ(browse.Block(), nullptr);
        EXPECT_EQ(Test().TakeLog(), logs[after]) << after;
        EXPECT_EQ(Test().TakeCallNames({"WNetOpenEnumA", "WNetCloseEnum"}),
                  (std::vector<std::string>{"WNetOpenEnumA", "WNetCloseEnum"}));
    }
}
