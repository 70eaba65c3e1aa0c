// Browsing the network for shared printers: the way of the 9x family, and the choice of the way.
#include "system/net_resources.h"

#include <algorithm>
#include <cstring>

#include "frame/os_identity.h"
#include "network_browse.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

class NetResources : public NetworkBrowseTest {
  protected:
    NetResources() : NetworkBrowseTest("win98") {}
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

TEST_F(NetResources, TopHasRoomForAProvidersNameOf259Characters) {
    static std::vector<std::string> s_asked;
    s_asked.clear();
    ReplacedOperations replaced;
    replaced.table.WNetGetProviderNameA = [](DWORD, LPSTR name, LPDWORD size) -> DWORD {
        std::memset(name, 'p', *size - 1);
        name[*size - 1] = '\0';
        return 0;
    };
    replaced.table.WNetOpenEnumA = [](DWORD, DWORD, DWORD, LPNETRESOURCEA resource, LPHANDLE) -> DWORD {
        s_asked.push_back(resource->lpProvider);
        return ERROR_NO_NETWORK;
    };
    Browse top;
    EXPECT_EQ(top.Code(), 0u);
    EXPECT_THAT(s_asked, ElementsAre(std::string(259, 'p'), std::string(259, 'p')));
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
    ASSERT_THAT(calls, Not(IsEmpty()));
    EXPECT_THAT(calls, Each(StartsWith(is9x ? "WNet" : "EnumPrinters")));
}

TEST(NetResourcesOfTheLatest9x, FamilyDecidesTheWay) {
    simulated::SystemDescription system = *simulated::FindSystem("winme");
    system.minor = 91;  // no known version of the family
    TestMachine test(system);
    ForgetCalls(test);
    Browse top;
    EXPECT_EQ(top.Code(), 0u);
    EXPECT_THAT(test.TakeCallNames(kBrowsingCalls), AllOf(Not(IsEmpty()), Each(StartsWith("WNet"))));
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
