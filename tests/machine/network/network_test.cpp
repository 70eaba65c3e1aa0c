// The machine's network and the calls that browse it.
#include "machine/network/network.h"

#include <cstring>

#include "machine/operations.h"
#include "support/network_test.h"

namespace pikel::simulated {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr DWORD kAll = 0xffffffff;

class NetworkTest : public DescribedNetworkTest {
  protected:
    NetworkTest() : DescribedNetworkTest("win98") {}
    Network TheNetwork() { return Network(Machine()); }
};

/// All nodes below a container, as "display type type usage remote name|comment|provider"; "code n" for a failure.
std::vector<std::string> Below(LPNETRESOURCEA container, DWORD type = RESOURCETYPE_ANY, DWORD bufferSize = 0x4000) {
    HANDLE handle = nullptr;
    if (const DWORD code = WNetOpenEnumA(RESOURCE_GLOBALNET, type, 0, container, &handle); code != 0) {
        EXPECT_EQ(handle, nullptr);
        return {"code " + std::to_string(code)};
    }
    std::vector<std::string> nodes;
    std::vector<char> bytes(bufferSize + 1);
    for (;;) {
        DWORD count = kAll;
        DWORD size = bufferSize;
        // One byte off, so that nothing relies on the alignment of the buffer.
        const DWORD code = WNetEnumResourceA(handle, &count, bytes.data() + 1, &size);
        if (code != 0) {
            EXPECT_EQ(code, DWORD{ERROR_NO_MORE_ITEMS});
            EXPECT_EQ(count, 0u);
            break;
        }
        for (DWORD i = 0; i < count; ++i) {
            NETRESOURCEA node;
            std::memcpy(&node, bytes.data() + 1 + i * sizeof node, sizeof node);
            EXPECT_EQ(node.dwScope, DWORD{RESOURCE_GLOBALNET});
            EXPECT_EQ(node.lpLocalName, nullptr);
            auto text = [](LPCSTR one) { return std::string(one == nullptr ? "-" : one); };
            nodes.push_back(std::to_string(node.dwDisplayType) + " " + std::to_string(node.dwType) + " " +
                            std::to_string(node.dwUsage) + " " + text(node.lpRemoteName) + "|" + text(node.lpComment) +
                            "|" + text(node.lpProvider));
        }
    }
    EXPECT_EQ(WNetCloseEnum(handle), 0u);
    return nodes;
}

std::vector<std::string> BelowNode(const char* name, const char* provider, DWORD usage = RESOURCEUSAGE_CONTAINER) {
    NETRESOURCEA container{};
    container.dwUsage = usage;
    container.lpRemoteName = const_cast<LPSTR>(name);
    container.lpProvider = const_cast<LPSTR>(provider);
    return Below(&container);
}

// ---- what is there ----------------------------------------------------------------------------------------------

TEST_F(NetworkTest, FamilyBringsALanManProvider) {
    for (const std::string& system : EverySystem()) {
        Start(system);
        const std::vector<NetworkProvider> providers = TheNetwork().Providers();
        ASSERT_EQ(providers.size(), 1u);
        EXPECT_EQ(providers[0].name, Machine().Is9x() ? "Microsoft Network" : "Microsoft Windows Network");
        EXPECT_EQ(providers[0].netType, DWORD{WNNC_NET_LANMAN});
    }
}

TEST_F(NetworkTest, ProvidersAreThoseListedWhereAnyAre) {
    Machine().Registry().CreateKey(Key("Providers"));
    EXPECT_THAT(TheNetwork().Providers(), IsEmpty());
    SetNumber("Providers\\X", "Error", 7);
    SetText("Providers\\X", "Error Text", "broken");
    ASSERT_EQ(TheNetwork().Providers().size(), 1u);
    EXPECT_EQ(TheNetwork().Providers()[0].error, 7u);
    EXPECT_EQ(TheNetwork().Providers()[0].errorText, "broken");
    EXPECT_TRUE(TheNetwork().FindProvider("x"));
    EXPECT_FALSE(TheNetwork().FindProvider("Y"));
}

TEST_F(NetworkTest, DomainsAreListedOnceEach) {
    MakeNetwork();
    EXPECT_THAT(TheNetwork().Domains(*TheNetwork().FindProvider("LM")), ElementsAre("Sales", "WORKGROUP"));
    EXPECT_THAT(TheNetwork().Domains(*TheNetwork().FindProvider("NW")), ElementsAre("BRANCH"));
}

TEST_F(NetworkTest, ServersBelongToTheirProviderAndDomain) {
    MakeNetwork();
    auto names = [this](const char* provider, const char* domain) {
        std::vector<std::string> found;
        for (const NetworkServer& server : TheNetwork().Servers(*TheNetwork().FindProvider(provider), domain)) {
            found.push_back(server.name);
        }
        return found;
    };
    EXPECT_THAT(names("LM", "sales"), ElementsAre("BETA", "GAMMA"));
    EXPECT_THAT(names("LM", "WORKGROUP"), ElementsAre("ALPHA"));
    EXPECT_THAT(names("LM", ""), IsEmpty());
    EXPECT_THAT(names("NW", ""), ElementsAre("TREE"));
    EXPECT_THAT(names("NW", "BRANCH"), ElementsAre("LEAF"));
    EXPECT_TRUE(TheNetwork().HasServer("alpha"));
    EXPECT_FALSE(TheNetwork().HasServer("ALPHA\\Laser"));
    EXPECT_FALSE(TheNetwork().HasServer(""));
}

// ---- browsing ---------------------------------------------------------------------------------------------------

TEST_F(NetworkTest, TopHasTheProviders) {
    MakeNetwork();
    EXPECT_THAT(Below(nullptr), ElementsAre("6 0 2 LM|-|LM", "6 0 2 NW|-|NW"));
}

TEST_F(NetworkTest, EachContainerHasItsNodes) {
    MakeNetwork();
    EXPECT_THAT(BelowNode(nullptr, "LM"), ElementsAre("1 0 2 Sales|-|LM", "1 0 2 WORKGROUP|-|LM"));
    EXPECT_THAT(BelowNode("lm", "LM"), ElementsAre("1 0 2 Sales|-|LM", "1 0 2 WORKGROUP|-|LM"));
    EXPECT_THAT(BelowNode(nullptr, "NW"), ElementsAre("1 0 2 BRANCH|-|NW", "2 0 2 \\\\TREE|-|NW"));
    EXPECT_THAT(BelowNode("WORKGROUP", "LM"), ElementsAre("2 0 2 \\\\ALPHA|first floor|LM"));
    EXPECT_THAT(BelowNode("\\\\ALPHA", "LM"),
                ElementsAre("3 1 1 \\\\ALPHA\\Files|-|LM", "3 2 1 \\\\ALPHA\\Laser|by the window|LM"));
    EXPECT_THAT(BelowNode("\\\\BETA", "LM"), IsEmpty());
}

TEST_F(NetworkTest, ContainerWithoutAProviderIsFoundByItsName) {
    MakeNetwork();
    EXPECT_THAT(BelowNode("NW", nullptr), ElementsAre("1 0 2 BRANCH|-|NW", "2 0 2 \\\\TREE|-|NW"));
    EXPECT_THAT(BelowNode("WORKGROUP", nullptr), ElementsAre("2 0 2 \\\\ALPHA|first floor|LM"));
    EXPECT_THAT(BelowNode(nullptr, nullptr), ElementsAre("1 0 2 Sales|-|LM", "1 0 2 WORKGROUP|-|LM"));
}

TEST_F(NetworkTest, SharesCanBeAskedForByType) {
    MakeNetwork();
    NETRESOURCEA container{};
    container.lpRemoteName = const_cast<LPSTR>("\\\\ALPHA");
    EXPECT_THAT(Below(&container, RESOURCETYPE_PRINT), ElementsAre("3 2 1 \\\\ALPHA\\Laser|by the window|LM"));
    EXPECT_THAT(Below(&container, RESOURCETYPE_DISK), ElementsAre("3 1 1 \\\\ALPHA\\Files|-|LM"));
}

TEST_F(NetworkTest, WhatIsNotThereHasItsCode) {
    MakeNetwork();
    EXPECT_THAT(BelowNode("\\\\NOBODY", "LM"), ElementsAre("code 53"));
    EXPECT_THAT(BelowNode("NODOMAIN", "LM"), ElementsAre("code 53"));
    EXPECT_THAT(BelowNode(nullptr, "XX"), ElementsAre("code 1204"));
    EXPECT_THAT(BelowNode("\\\\ALPHA", "LM", RESOURCEUSAGE_CONNECTABLE), ElementsAre("code 1207"));
    Machine().Registry().DeleteKey(Key("Providers"));
    Machine().Registry().CreateKey(Key("Providers"));
    EXPECT_THAT(Below(nullptr), ElementsAre("code 1222"));
}

TEST_F(NetworkTest, ProvidersOwnErrorCanBeAskedFor) {
    MakeNetwork();
    SetNumber("Providers\\LM", "Error", 4321);
    SetText("Providers\\LM", "Error Text", "The tree is gone.");
    EXPECT_THAT(BelowNode(nullptr, "LM"), ElementsAre("code 1208"));
    DWORD error = 0;
    char text[8] = "";
    char name[260] = "";
    EXPECT_EQ(WNetGetLastErrorA(&error, text, sizeof text, name, sizeof name), 0u);
    EXPECT_EQ(error, 4321u);
    EXPECT_STREQ(text, "The tre");
    EXPECT_STREQ(name, "LM");
    EXPECT_EQ(WNetGetLastErrorA(&error, nullptr, 0, nullptr, 0), 0u);
    EXPECT_NE(WNetGetLastErrorA(nullptr, text, sizeof text, name, sizeof name), 0u);
}

// ---- the buffer -------------------------------------------------------------------------------------------------

TEST_F(NetworkTest, BufferThatHoldsNoEntryIsToldItsSize) {
    MakeNetwork();
    HANDLE handle = nullptr;
    ASSERT_EQ(WNetOpenEnumA(RESOURCE_GLOBALNET, 0, 0, nullptr, &handle), 0u);
    char bytes[256];
    DWORD count = kAll;
    DWORD size = 1;
    EXPECT_EQ(WNetEnumResourceA(handle, &count, bytes, &size), DWORD{ERROR_MORE_DATA});
    EXPECT_EQ(size, sizeof(NETRESOURCEA) + 6);
    EXPECT_EQ(count, 0u);
    count = kAll;
    EXPECT_EQ(WNetEnumResourceA(handle, &count, bytes, &size), 0u);
    EXPECT_EQ(count, 1u);
    EXPECT_EQ(WNetCloseEnum(handle), 0u);
}

TEST_F(NetworkTest, SmallBufferGivesTheNodesInSeveralBatches) {
    for (int i = 100; i < 200; ++i) {
        SetText("Servers\\S" + std::to_string(i), "Comment", "x");
    }
    NETRESOURCEA container{};
    container.lpRemoteName = const_cast<LPSTR>("WORKGROUP");
    EXPECT_EQ(Below(&container, 0, 300).size(), 100u);
    EXPECT_EQ(Below(&container, 0, 300), Below(&container));
}

TEST_F(NetworkTest, CountLimitsABatch) {
    MakeNetwork();
    HANDLE handle = nullptr;
    ASSERT_EQ(WNetOpenEnumA(RESOURCE_GLOBALNET, 0, 0, nullptr, &handle), 0u);
    char bytes[1000];
    for (DWORD expected : {1u, 1u, 0u}) {
        DWORD count = 1;
        DWORD size = sizeof bytes;
        EXPECT_EQ(WNetEnumResourceA(handle, &count, bytes, &size), expected == 1 ? 0 : DWORD{ERROR_NO_MORE_ITEMS});
        EXPECT_EQ(count, expected);
    }
    EXPECT_EQ(WNetCloseEnum(handle), 0u);
}

TEST_F(NetworkTest, ArgumentsAreChecked) {
    HANDLE handle = nullptr;
    EXPECT_NE(WNetOpenEnumA(RESOURCE_GLOBALNET, 0, 0, nullptr, nullptr), 0u);
    EXPECT_EQ(WNetOpenEnumA(0, 0, 0, nullptr, &handle), DWORD{ERROR_INVALID_PARAMETER});
    ASSERT_EQ(WNetOpenEnumA(1, 0, 0, nullptr, &handle), 0u);
    EXPECT_EQ(Machine().Handles().OpenCount(HandleKind::NetworkEnumeration), 1u);
    char bytes[100];
    DWORD count = kAll;
    DWORD size = sizeof bytes;
    EXPECT_EQ(WNetEnumResourceA(handle, &count, bytes, &size), DWORD{ERROR_NO_MORE_ITEMS});
    EXPECT_NE(WNetEnumResourceA(handle, nullptr, bytes, &size), 0u);
    EXPECT_NE(WNetEnumResourceA(handle, &count, nullptr, &size), 0u);
    EXPECT_NE(WNetEnumResourceA(handle, &count, bytes, nullptr), 0u);
    EXPECT_EQ(WNetCloseEnum(handle), 0u);
    EXPECT_EQ(WNetEnumResourceA(handle, &count, bytes, &size), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(WNetCloseEnum(handle), DWORD{ERROR_INVALID_HANDLE});
    Test().AllowOpen();  // the second close is on purpose
}

TEST_F(NetworkTest, ProviderIsNamedByItsType) {
    MakeNetwork();
    char name[260] = "";
    DWORD size = sizeof name;
    EXPECT_EQ(WNetGetProviderNameA(WNNC_NET_NETWARE, name, &size), 0u);
    EXPECT_STREQ(name, "NW");
    size = 2;
    EXPECT_EQ(WNetGetProviderNameA(WNNC_NET_LANMAN, name, &size), DWORD{ERROR_MORE_DATA});
    EXPECT_EQ(size, 3u);
    EXPECT_EQ(WNetGetProviderNameA(WNNC_NET_LANMAN, name, &size), 0u);
    EXPECT_STREQ(name, "LM");
    EXPECT_EQ(WNetGetProviderNameA(0x70000, name, &size), DWORD{ERROR_NO_NETWORK});
    EXPECT_NE(WNetGetProviderNameA(WNNC_NET_LANMAN, nullptr, &size), 0u);
    EXPECT_NE(WNetGetProviderNameA(WNNC_NET_LANMAN, name, nullptr), 0u);
}

}  // namespace
}  // namespace pikel::simulated
