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
const std::vector<std::string> kBrowsingCalls = {"WNetGetProviderNameA", "WNetOpenEnumA",     "WNetEnumResourceA",
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
    EXPECT_THAT(Test().TakeLog(),
                ElementsAre("DoEnumNetResources Start", "WNetEnumSharePrinters - Start", "lpRemoteName:DEVELOPMENT",
                            "lpProvider:LM", "dwDisplayType:1", "dwScope:2", "dwType:0", "dwUsage:2", "",
                            "lpRemoteName:SALES", "lpProvider:LM", "dwDisplayType:1", "dwScope:2", "dwType:0",
                            "dwUsage:2", "", "WNetEnumSharePrinters - End:0", "WNetEnumSharePrinters - Start",
                            "lpRemoteName:\\\\TREE", "lpProvider:NW", "dwDisplayType:2", "dwScope:2", "dwType:0",
                            "dwUsage:2", "", "WNetEnumSharePrinters - End:0", "DoEnumNetResources End:(0)"));
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
    EXPECT_THAT(
        std::vector<std::string>(log.begin(), log.begin() + 3),
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
    EXPECT_THAT(server.Texts(), ElementsAre("0x1 0|\\\\ALPHA\\Files|\\\\ALPHA\\Files|-|LM",
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

// ---- 9x family: the batch ---------------------------------------------------------------------------------------

/// Answers of WNetEnumResourceA, in the place of the machine's.
struct Answers {
    struct Answer {
        DWORD code = 0;
        DWORD count = 0;
        DWORD size = 0;  ///< 0: left as it is
        bool setsCount = true;
    };
    std::vector<Answer> answers;
    std::vector<NETRESOURCEA> entries;  ///< of every answer
    std::vector<DWORD> sizes;           ///< that were offered
};
Answers g_answers;

DWORD WINAPI AnswerEnum(HANDLE, LPDWORD count, LPVOID buffer, LPDWORD size) {
    EXPECT_EQ(*count, 0xFFFFFFFFu);
    const std::string zeroes(*size, '\0');
    EXPECT_EQ(std::memcmp(buffer, zeroes.data(), *size), 0);
    g_answers.sizes.push_back(*size);
    const std::size_t turn = std::min(g_answers.sizes.size(), g_answers.answers.size()) - 1;
    const Answers::Answer& answer = g_answers.answers[turn];
    if (!g_answers.entries.empty()) {
        std::memcpy(buffer, g_answers.entries.data(), g_answers.entries.size() * sizeof(NETRESOURCEA));
    }
    if (answer.setsCount) {
        *count = answer.count;
    }
    if (answer.size != 0) {
        *size = answer.size;
    }
    return g_answers.sizes.size() < 100 ? answer.code : DWORD{ERROR_NOT_SUPPORTED};
}

NETRESOURCEA Entry(DWORD displayType, DWORD type, const char* remoteName) {
    NETRESOURCEA entry{};
    entry.dwDisplayType = displayType;
    entry.dwType = type;
    entry.lpRemoteName = const_cast<LPSTR>(remoteName);
    return entry;
}

class NetResourceBatch : public NetResources {
  protected:
    NetResourceBatch() {
        g_answers = {};
        MakeNetwork();
        m_replaced.table.WNetEnumResourceA = &AnswerEnum;
    }
    const NetResourceRecord* Parent() const { return &m_parent; }

  private:
    ReplacedOperations m_replaced;
    NetResourceRecord m_parent = Node(2, "SALES", "LM");
};

TEST_F(NetResourceBatch, EndOfTheListAtOnceIsAnEmptyList) {
    g_answers.answers = {{ERROR_NO_MORE_ITEMS, 0, 0, true}};
    Watch();
    Browse browse(Parent());
    EXPECT_EQ(browse.Code(), 0u);
    EXPECT_EQ(browse.Count(), 0u);
    EXPECT_NE(browse.Block(), nullptr);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoEnumNetResources Start", "WNetEnumSharePrinters - Start",
                                              "WNetEnumSharePrinters - End:0", "DoEnumNetResources End:(0)"));
}

TEST_F(NetResourceBatch, EndOfTheListWithEntriesGivesThem) {
    g_answers.entries = {Entry(1, 0, "A"), Entry(1, 0, "B")};
    g_answers.answers = {{ERROR_NO_MORE_ITEMS, 2, 0, true}};
    Browse browse(Parent());
    EXPECT_EQ(browse.Code(), 0u);
    EXPECT_EQ(browse.Count(), 2u);
}

TEST_F(NetResourceBatch, CountThatWasLeftAsItWentInStandsForNone) {
    g_answers.answers = {{ERROR_NO_MORE_ITEMS, 0, 0, false}};
    Browse browse(Parent());
    EXPECT_EQ(browse.Code(), 0u);
    EXPECT_EQ(browse.Count(), 0u);
}

TEST_F(NetResourceBatch, CountBeyondTheBufferIsCut) {
    g_answers.answers = {{0, 0xFFFFFFF0, 0, true}};
    Browse browse(Parent());
    EXPECT_EQ(browse.Code(), 0u);
    EXPECT_EQ(browse.Count(), 0x4000 / sizeof(NETRESOURCEA));
}

TEST_F(NetResourceBatch, OneBatchIsAllThatIsAskedFor) {
    g_answers.entries = {Entry(1, 0, "A")};
    g_answers.answers = {{0, 1, 0, true}};
    Browse browse(Parent());
    EXPECT_EQ(browse.Count(), 1u);
    EXPECT_THAT(g_answers.sizes, ElementsAre(0x4000));
}

TEST_F(NetResourceBatch, BufferGrowsToTheSizeReported) {
    g_answers.entries = {Entry(1, 0, "A")};
    g_answers.answers = {{ERROR_MORE_DATA, 0, 0x5000, true}, {ERROR_MORE_DATA, 0, 0x6000, true}, {0, 1, 0, true}};
    Browse browse(Parent());
    EXPECT_EQ(browse.Code(), 0u);
    EXPECT_THAT(browse.Texts(), ElementsAre("0x0 2|A|A|-|-"));
    EXPECT_THAT(g_answers.sizes, ElementsAre(0x4000, 0x5000, 0x6000));
}

TEST_F(NetResourceBatch, SizeThatDoesNotGrowEndsTheRead) {
    for (DWORD size : {0x4000u, 0x10u}) {
        g_answers.sizes.clear();
        g_answers.answers = {{ERROR_MORE_DATA, 0, size, true}};
        Watch();
        Browse browse(Parent());
        EXPECT_EQ(browse.Code(), DWORD{ERROR_MORE_DATA});
        EXPECT_THAT(g_answers.sizes, SizeIs(1));
        EXPECT_THAT(Test().TakeLog(), ElementsAre("DoEnumNetResources Start", "WNetEnumSharePrinters - Start",
                                                  "WNetEnumSharePrinters - Error:234", "DoEnumNetResources End:(234)"));
    }
}

TEST_F(NetResourceBatch, BufferThatCannotGrowGives8) {
    g_answers.answers = {{ERROR_MORE_DATA, 0, 0x5000, true}};
    Watch();
    Machine().Heap().FailAllocation(1, true);
    Browse browse(Parent());
    Machine().Heap().StopFailing();
    EXPECT_EQ(browse.Code(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoEnumNetResources Start", "WNetEnumSharePrinters - Start",
                                              "WNetEnumSharePrinters - Alloc Error:8", "WNetEnumSharePrinters - End:8",
                                              "DoEnumNetResources End:(8)"));
    EXPECT_THAT(Test().TakeCallNames({"WNetOpenEnumA", "WNetCloseEnum"}),
                ElementsAre("WNetOpenEnumA", "WNetCloseEnum"));
}

TEST_F(NetResourceBatch, OtherFailureGivesItsCode) {
    g_answers.answers = {{ERROR_NO_NETWORK, 0, 0, true}};
    Watch();
    Browse browse(Parent());
    EXPECT_EQ(browse.Code(), DWORD{ERROR_NO_NETWORK});
    EXPECT_EQ(browse.Block(), nullptr);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoEnumNetResources Start", "WNetEnumSharePrinters - Start",
                                              "WNetEnumSharePrinters - Error:1222", "DoEnumNetResources End:(1222)"));
    EXPECT_THAT(Test().TakeCallNames({"WNetOpenEnumA", "WNetCloseEnum", "WNetGetLastErrorA"}),
                ElementsAre("WNetOpenEnumA", "WNetCloseEnum"));
}

TEST_F(NetResourceBatch, ProvidersOwnCodeReplacesExtendedErrorOfTheRead) {
    ReplacedOperations replaced;
    replaced.table.WNetGetLastErrorA = [](LPDWORD error, LPSTR text, DWORD textSize, LPSTR name,
                                          DWORD nameSize) -> DWORD {
        *error = 4321;
        std::memset(text, 't', textSize);
        std::memset(name, 'n', nameSize);
        return 0;
    };
    g_answers.answers = {{ERROR_EXTENDED_ERROR, 0, 0, true}};
    Watch();
    Browse browse(Parent());
    EXPECT_EQ(browse.Code(), 4321u);
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoEnumNetResources Start", "WNetEnumSharePrinters - Start",
                                              "WNetEnumSharePrinters - ExtendedError:1208",
                                              "WNetEnumSharePrinters - Error:4321", "DoEnumNetResources End:(4321)"));
}

TEST_F(NetResourceBatch, EntryIsLoggedWithWhatItHas) {
    NETRESOURCEA full = Entry(3, 2, "\\\\ALPHA\\Laser");
    full.dwScope = 2;
    full.dwUsage = 1;
    full.lpLocalName = const_cast<LPSTR>("LPT2:");
    full.lpComment = const_cast<LPSTR>("by the window");
    full.lpProvider = const_cast<LPSTR>("LM");
    NETRESOURCEA bare{};
    bare.dwUsage = 0xffffffff;
    g_answers.entries = {full, bare};
    g_answers.answers = {{0, 2, 0, true}};
    Watch();
    Browse browse(Parent());
    EXPECT_THAT(
        Test().TakeLog(),
        ElementsAre("DoEnumNetResources Start", "WNetEnumSharePrinters - Start", "lpRemoteName:\\\\ALPHA\\Laser",
                    "lpComment:by the window", "lpProvider:LM", "lpLocalName:LPT2:", "dwDisplayType:3", "dwScope:2",
                    "dwType:2", "dwUsage:1", "", "dwDisplayType:0", "dwScope:0", "dwType:0", "dwUsage:-1", "",
                    "WNetEnumSharePrinters - End:0", "DoEnumNetResources End:(0)"));
    EXPECT_THAT(browse.Texts(), ElementsAre("0x1 4|\\\\ALPHA\\Laser|Laser|by the window|LM", "0xffffffff 1|-|-|-|-"));
}

TEST_F(NetResourceBatch, BlockHoldsRecordsAndThenTheirTextsInOrder) {
    NETRESOURCEA first = Entry(3, 2, "\\\\A\\Q");
    first.lpComment = const_cast<LPSTR>("c1");
    first.lpProvider = const_cast<LPSTR>("p1");
    NETRESOURCEA second = Entry(2, 0, "\\\\B");
    second.lpProvider = const_cast<LPSTR>("p2");
    g_answers.entries = {first, second};
    g_answers.answers = {{0, 2, 0, true}};
    Browse browse(Parent());
    ASSERT_EQ(browse.Count(), 2u);
    const std::string_view expected("c1\0\\\\A\\Q\0Q\0p1\0\\\\B\0B\0p2\0", 23);
    const std::string texts(reinterpret_cast<const char*>(browse.At(2)), expected.size());
    EXPECT_EQ(texts, expected);
    EXPECT_EQ(Machine().Heap().Size(browse.Block()), 2 * sizeof(NetResourceRecord) + expected.size());
    EXPECT_EQ(browse.At(0)->Comment, reinterpret_cast<const char*>(browse.At(2)));
}

TEST_F(NetResourceBatch, DisplayTypeDecidesTheKind) {
    struct Case {
        DWORD displayType;
        DWORD type;
        DWORD kind;
    };
    constexpr Case kCases[] = {
        {0, 0, 1},  {6, 0, 1},  {10, 2, 1}, {11, 3, 1}, {1, 2, 2},  {2, 2, 3},  {3, 2, 4},          {3, 3, 6},
        {3, 0, 0},  {3, 1, 0},  {3, 4, 0},  {4, 2, 0},  {5, 2, 0},  {7, 2, 0},  {8, 2, 0},          {9, 2, 0},
        {12, 2, 0}, {99, 2, 0}, {3, 7, 0},  {3, 8, 0},  {3, 10, 0}, {3, 18, 0}, {0xffffffff, 2, 0},
    };
    for (const Case& one : kCases) {
        g_answers.entries.push_back(Entry(one.displayType, one.type, "x"));
    }
    g_answers.answers = {{0, static_cast<DWORD>(std::size(kCases)), 0, true}};
    Browse browse(Parent());
    ASSERT_EQ(browse.Count(), std::size(kCases));
    for (DWORD i = 0; i < browse.Count(); ++i) {
        EXPECT_EQ(browse.At(i)->ResourceKind, kCases[i].kind) << kCases[i].displayType << " " << kCases[i].type;
    }
}

TEST_F(NetResourceBatch, LongNamesHaveAnEmptyShortName) {
    const std::string fits = "\\\\S\\" + std::string(259, 'q');
    const std::string tooLong = "\\\\S\\" + std::string(260, 'q');
    g_answers.entries = {Entry(3, 2, fits.c_str()), Entry(3, 2, tooLong.c_str())};
    g_answers.answers = {{0, 2, 0, true}};
    Browse browse(Parent());
    ASSERT_EQ(browse.Count(), 2u);
    EXPECT_EQ(std::string(browse.At(0)->ShortName), std::string(259, 'q'));
    EXPECT_STREQ(browse.At(1)->ShortName, "");
    EXPECT_EQ(browse.At(1)->RemoteName, tooLong);
}

// ---- short names ------------------------------------------------------------------------------------------------

struct ShortNameCase {
    const char* name;
    const char* given;
    DWORD kind;
    const char* shortName;
};

class ShortName : public NetResources, public ::testing::WithParamInterface<ShortNameCase> {};

TEST_P(ShortName, IsTheDisplayPart) {
    char shortName[260] = "####";
    EXPECT_TRUE(GetShortName(GetParam().name, GetParam().given, GetParam().kind, shortName, sizeof shortName));
    EXPECT_STREQ(shortName, GetParam().shortName);
}

INSTANTIATE_TEST_SUITE_P(
    Names, ShortName,
    ::testing::Values(ShortNameCase{"\\\\server\\queue", nullptr, 4, "queue"},
                      ShortNameCase{"\\\\server\\queue", nullptr, 3, "server\\queue"},
                      ShortNameCase{"\\\\server\\queue", nullptr, 1, "server\\queue"},
                      ShortNameCase{"\\\\server\\queue", "given", 4, "queue"},
                      ShortNameCase{"\\\\server", "given", 3, "given"}, ShortNameCase{"network", "given", 1, "given"},
                      ShortNameCase{"network", "", 1, ""}, ShortNameCase{"network", nullptr, 1, "network"},
                      ShortNameCase{"a\\\\b\\\\c", nullptr, 3, "c"}, ShortNameCase{"a\\b", nullptr, 3, "a\\b"},
                      ShortNameCase{"\\\\\\x", nullptr, 3, "x"}, ShortNameCase{"x\\\\", nullptr, 3, ""},
                      ShortNameCase{"Provider!SALES", nullptr, 2, "SALES"}, ShortNameCase{"a!b!c", "given", 2, "c"},
                      ShortNameCase{"SALES", nullptr, 2, "SALES"}, ShortNameCase{"a!", nullptr, 2, ""},
                      ShortNameCase{"queue", nullptr, 4, "queue"}, ShortNameCase{"a\\", nullptr, 4, ""},
                      ShortNameCase{"\\\\s\\q", "given", 5, "\\\\s\\q"}, ShortNameCase{"a!b", nullptr, 6, "a!b"},
                      ShortNameCase{"\\\\s\\q", nullptr, 0, "\\\\s\\q"}, ShortNameCase{"", nullptr, 4, ""}));

TEST_F(NetResources, ShortNameNeedsNameAndRoom) {
    char shortName[4] = "###";
    EXPECT_FALSE(GetShortName(nullptr, "given", 1, shortName, sizeof shortName));
    EXPECT_FALSE(GetShortName("name", "given", 1, nullptr, 4));
    EXPECT_FALSE(GetShortName("name", "given", 1, shortName, 0));
    EXPECT_STREQ(shortName, "###");
    EXPECT_TRUE(GetShortName("abc", nullptr, 0, shortName, sizeof shortName));
    EXPECT_STREQ(shortName, "abc");
    EXPECT_TRUE(GetShortName("abcd", nullptr, 0, shortName, sizeof shortName));
    EXPECT_STREQ(shortName, "");
}

TEST_F(NetResources, TrailByteOfADoubleByteCharacterSeparatesNothing) {
    simulated::SystemDescription system = *simulated::FindSystem("win98");
    system.codePage = 932;
    TestMachine japanese(system);
    char shortName[260];
    // 0x95 0x5C is one character, whose trail byte is a backslash's.
    EXPECT_TRUE(GetShortName("\\\\s\\q\x95\\x", nullptr, 4, shortName, sizeof shortName));
    EXPECT_STREQ(shortName, "q\x95\\x");
}

// ---- the other systems ------------------------------------------------------------------------------------------

class SpoolerBrowse : public NetResources {
  protected:
    SpoolerBrowse() { Start("xp"); }
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

// ---- every system -----------------------------------------------------------------------------------------------

class NetResourcesOnEverySystem : public EverySystemTest {};
INSTANTIATE_ON_EVERY_SYSTEM(NetResourcesOnEverySystem);

TEST_P(NetResourcesOnEverySystem, FamilyDecidesTheWay) {
    ForgetCalls(Test());
    const bool is9x = (GetOsIdentity().osClass & OsClass9xFamily) != 0;
    EXPECT_EQ(is9x, GetParam() == "win95" || GetParam() == "win98" || GetParam() == "winme");
    Test().TakeCalls();
    Browse top;
    EXPECT_EQ(top.Code(), 0u);
    const NetResourceRecord parent = Node(2, "Microsoft Network", "Microsoft Network");
    Browse below(&parent);
    const std::vector<std::string> calls = Test().TakeCallNames(kBrowsingCalls);
    ASSERT_THAT(calls, ::testing::Not(IsEmpty()));
    EXPECT_THAT(calls, Each(StartsWith(is9x ? "WNet" : "EnumPrinters")));
}

TEST_P(NetResourcesOnEverySystem, NullOutsAreRefused) {
    Test().TurnLogOn(1);
    ForgetCalls(Test());
    NetResourceRecord* block = reinterpret_cast<NetResourceRecord*>(1);
    DWORD count = 7;
    EXPECT_EQ(DoEnumNetResources(nullptr, nullptr, &count), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(DoEnumNetResources(nullptr, &block, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_THAT(Test().TakeCallNames(kBrowsingCalls), IsEmpty());
    EXPECT_THAT(Test().TakeLog(), ElementsAre("DoEnumNetResources Start", "DoEnumNetResources End:(87)",
                                              "DoEnumNetResources Start", "DoEnumNetResources End:(87)"));
}

}  // namespace
}  // namespace pikel
