// Browsing the network through the spooler.
#include <cstdio>

#include "machine/operations.h"
#include "support/network_test.h"

namespace pikel::simulated {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SpoolerNetworkTest : public DescribedNetworkTest {
  protected:
    /// Entries of an enumeration by name at level 1, as "flags name|description|comment"; "code n" for a failure.
    std::vector<std::string> Entries(const char* name, DWORD flags = PRINTER_ENUM_NAME) {
        DWORD needed = 0;
        DWORD count = 0;
        LPSTR asked = const_cast<LPSTR>(name);
        lastError = 0;
        std::vector<BYTE> bytes;
        if (!EnumPrintersA(flags, asked, 1, nullptr, 0, &needed, &count) && lastError == ERROR_INSUFFICIENT_BUFFER) {
            lastError = 0;
            bytes.resize(needed);
            EnumPrintersA(flags, asked, 1, bytes.data(), needed, &needed, &count);
        }
        if (lastError != 0) {
            return {"code " + std::to_string(lastError)};
        }
        std::vector<std::string> entries;
        for (DWORD i = 0; i < count; ++i) {
            const auto& info = reinterpret_cast<const PRINTER_INFO_1A*>(bytes.data())[i];
            char number[20];
            std::snprintf(number, sizeof number, "%x ", static_cast<unsigned>(info.Flags));
            entries.push_back(number + std::string(info.pName) + "|" + info.pDescription + "|" + info.pComment);
        }
        return entries;
    }
};

TEST_F(SpoolerNetworkTest, NamesLeadFromProvidersToPrinters) {
    MakeNetwork();
    SetText("Servers\\ALPHA\\Laser", "Driver", "Tarvo 100");
    SetText("Servers\\ALPHA\\Laser", "Location", "Room 1");
    EXPECT_THAT(Entries(nullptr), ElementsAre("18000 Windows NT Local Print Providor|Windows NT Local Print Providor|",
                                              "18000 LM|LM|", "18000 NW|NW|"));
    EXPECT_EQ(Entries(""), Entries(nullptr));
    EXPECT_THAT(Entries("lm"), ElementsAre("28000 LM!Sales|Sales|", "28000 LM!WORKGROUP|WORKGROUP|"));
    EXPECT_THAT(Entries("NW"), ElementsAre("28000 NW!BRANCH|BRANCH|", "48000 \\\\TREE|TREE|"));
    EXPECT_THAT(Entries("LM!WORKGROUP"), ElementsAre("48000 \\\\ALPHA|ALPHA|first floor"));
    EXPECT_THAT(Entries("\\\\ALPHA"),
                ElementsAre("800000 \\\\ALPHA\\Laser|\\\\ALPHA\\Laser,Tarvo 100,Room 1|by the window"));
}

TEST_F(SpoolerNetworkTest, OwnProviderHasItsPrintProvidersName) {
    EXPECT_THAT(Entries(nullptr), ElementsAre(::testing::_, "18000 LanMan Print Services|LanMan Print Services|"));
    EXPECT_THAT(Entries("LanMan Print Services"), IsEmpty());
}

TEST_F(SpoolerNetworkTest, WhatIsNotThereHasItsCode) {
    MakeNetwork();
    EXPECT_THAT(Entries("\\\\NOBODY"), ElementsAre("code 123"));
    EXPECT_THAT(Entries("LM!NODOMAIN"), ElementsAre("code 123"));
    EXPECT_THAT(Entries("XX"), ElementsAre("code 123"));
    SetNumber("Providers\\LM", "Error", 1722);
    EXPECT_THAT(Entries("LM"), ElementsAre("code 1722"));
    EXPECT_THAT(Entries("LM!WORKGROUP"), ElementsAre("code 1722"));
}

TEST_F(SpoolerNetworkTest, ThisComputerHasItsOwnPrinters) {
    const std::string self = "\\\\" + Machine().System().computerName;
    Machine().Registry().CreateKey(Key("Servers\\" + Machine().System().computerName + "\\Other"));
    EXPECT_THAT(Entries(self.c_str()), IsEmpty());
    EXPECT_THAT(Entries("Windows NT Local Print Providor"), IsEmpty());
    EXPECT_THAT(Entries(nullptr, PRINTER_ENUM_LOCAL), IsEmpty());
}

}  // namespace
}  // namespace pikel::simulated
