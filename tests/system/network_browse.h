// What the tests that browse the network share: a network, the answer of one browse, and records as texts.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "support/calls.h"
#include "system/net_resources.h"

namespace pikel::testing_support {

inline constexpr char kNetwork[] = "HKLM\\SOFTWARE\\Simulated Network";
inline const std::vector<std::string> kBrowsingCalls = {"WNetGetProviderNameA", "WNetOpenEnumA",
                                                        "WNetEnumResourceA",    "WNetCloseEnum",
                                                        "WNetGetLastErrorA",    "EnumPrintersA"};

/// A record as one text: usage kind|remote name|short name|comment|provider, with "-" for null.
inline std::string TextOf(const NetResourceRecord& record) {
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
inline NetResourceRecord Node(DWORD usage, const char* remoteName, const char* provider = nullptr) {
    NetResourceRecord record{};
    record.Usage = usage;
    record.RemoteName = const_cast<LPSTR>(remoteName);
    record.Provider = const_cast<LPSTR>(provider);
    return record;
}

/// Fixture with a network to browse.
class NetworkBrowseTest : public MachineTest {
  protected:
    explicit NetworkBrowseTest(std::string_view system) : MachineTest(system) {}
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

}  // namespace pikel::testing_support
