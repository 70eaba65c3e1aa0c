// The Other folder, in which the 9x family keeps INFs that it was given later, in the search for a driver's INF.
#include <string>
#include <vector>

#include "deploy/installed_inf.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

constexpr char kInf[] = "[Version]\r\nSignature=\"$Windows NT$\"\r\nProvider=\"Northlight\"\r\nClass=Printer\r\n";

class OtherFolder : public MachineTest {
  protected:
    OtherFolder() : MachineTest("win98") {}
    void Put(const std::string& path, DWORD minute) {
        WriteFileOn(Machine(), path,
                    std::string(kInf) + "[Manufacturer]\r\nM=M\r\n[M]\r\n\"Laser\"=I\r\n\"" + path + "\"=I\r\n");
        ASSERT_EQ(Machine().Files().SetWrittenAt(path, FILETIME{minute * 600000000u, 0x01c80000}), 0u);
    }
    std::string Find(LPCSTR driver) {
        char name[MAX_PATH] = {};
        DoGetInstalledInfName(driver, 3, 5, 1, "C:\\Infs\\", "Northlight", "Printer", name, sizeof name);
        return name;
    }
};

TEST_F(OtherFolder, ComesBehindTheFolderAskedFor) {
    Put("C:\\Infs\\z.inf", 1);
    Put("C:\\WINDOWS\\inf\\Other\\a.inf", 1);
    Put("C:\\WINDOWS\\inf\\Other\\b.inf", 1);
    EXPECT_EQ(Find("Laser"), "C:\\Infs\\z.inf") << "of one time, the first stays";
    Test().TurnLogOn(2);
    Find("None");
    std::vector<std::string> models;
    for (const std::string& line : Test().TakeLog()) {
        if (line.starts_with("Model:C:")) {
            models.push_back(line);
        }
    }
    EXPECT_THAT(models, ElementsAre("Model:C:\\Infs\\z.inf", "Model:C:\\WINDOWS\\inf\\Other\\a.inf",
                                    "Model:C:\\WINDOWS\\inf\\Other\\b.inf"));
}

TEST_F(OtherFolder, AddsToWhatTheFirstSearchFound) {
    Put("C:\\Infs\\z.inf", 3);
    Put("C:\\WINDOWS\\inf\\Other\\a.inf", 2);
    EXPECT_EQ(Find("Laser"), "C:\\Infs\\z.inf") << "the second search doesn't replace the first one's";
    EXPECT_EQ(Find("C:\\WINDOWS\\inf\\Other\\a.inf"), "C:\\WINDOWS\\inf\\Other\\a.inf");
}

}  // namespace
}  // namespace pikel
