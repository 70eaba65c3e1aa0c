// Fixture for tests of the machine's network: what is described of it, and a network of two providers.
#pragma once

#include <string>
#include <string_view>

#include "support/machine_test.h"

namespace pikel::testing_support {

class DescribedNetworkTest : public MachineTest {
  protected:
    explicit DescribedNetworkTest(std::string_view system = "xp") : MachineTest(system) {}

    static std::string Key(const std::string& below) { return "HKLM\\SOFTWARE\\Simulated Network\\" + below; }
    void SetText(const std::string& key, const char* name, const char* text) {
        Machine().Registry().SetText(Key(key), name, text);
    }
    void SetNumber(const std::string& key, const char* name, DWORD number) {
        Machine().Registry().SetNumber(Key(key), name, number);
    }
    void MakeNetwork() {
        SetNumber("Providers\\LM", "NetType", WNNC_NET_LANMAN);
        SetNumber("Providers\\NW", "NetType", WNNC_NET_NETWARE);
        SetText("Servers\\ALPHA", "Comment", "first floor");
        SetText("Servers\\ALPHA\\Laser", "Comment", "by the window");
        SetNumber("Servers\\ALPHA\\Files", "Type", RESOURCETYPE_DISK);
        SetText("Servers\\BETA", "Domain", "Sales");
        SetText("Servers\\GAMMA", "Domain", "SALES");
        SetText("Servers\\TREE", "Provider", "nw");
        SetText("Servers\\LEAF", "Provider", "NW");
        SetText("Servers\\LEAF", "Domain", "BRANCH");
    }
};

}  // namespace pikel::testing_support
