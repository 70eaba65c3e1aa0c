// What the 9x routes of an INF's placing delete: which files, in which order, and made deletable first.
#include <string>
#include <vector>

#include "inf_store/inf_placement.h"
#include "support/calls.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;

constexpr char kSource[] = "C:\\Driver\\aurora.inf";
constexpr char kFolder[] = "C:\\Infs\\";
constexpr char kInf[] =
    "[Version]\r\nSignature=\"$CHICAGO$\"\r\nProvider=\"Northlight\"\r\nClass=Printer\r\n"
    "[Manufacturer]\r\nM=M\r\n[M]\r\n\"Laser\"=I\r\n";

class PlacementDeletion : public MachineTest {
  protected:
    void Begin(std::string_view system) {
        Start(system);
        WriteFileOn(Machine(), kSource, kInf);
        ASSERT_EQ(Machine().Files().MakeFolders("C:\\Infs\\Other"), 0u);
        for (const char* name : {"Drvdata.bin", "Drvidx.bin", "Northlightaurora.inf"}) {
            WriteFileOn(Machine(), std::string(kFolder) + name, "x");
            // With more marks than the one that is set: it replaces all of them.
            Machine().Files().SetAttributes(std::string(kFolder) + name,
                                            FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
        }
        ForgetCalls(Test());
    }
    std::vector<std::string> TakeDeletions() { return TakeCallsOf(Test(), {"SetFileAttributesA", "DeleteFileA"}); }
    static std::string Clear(const std::string& path) { return "SetFileAttributesA(\"" + path + "\", 0x20) = 0x1"; }
    static std::string Delete(const std::string& path) { return "DeleteFileA(\"" + path + "\") = 0x1"; }
};

TEST_F(PlacementDeletion, OfWindows98IsTheOldCopyThenDrvdataThenDrvidx) {
    for (const char* system : {"win98", "winme"}) {
        Begin(system);
        EXPECT_EQ(InfFileCopy98(kSource, 1, 4, 0, kFolder, "Northlight", "Printer", 0), 0u);
        EXPECT_THAT(
            TakeDeletions(),
            ElementsAre(Clear("C:\\\\Infs\\\\Northlightaurora.inf"), Delete("C:\\\\Infs\\\\Northlightaurora.inf"),
                        Clear("C:\\\\Infs\\\\Drvdata.bin"), Delete("C:\\\\Infs\\\\Drvdata.bin"),
                        Clear("C:\\\\Infs\\\\Drvidx.bin"), Delete("C:\\\\Infs\\\\Drvidx.bin")));
    }
}

TEST_F(PlacementDeletion, OfWindows95IsTheFreshCopyThenDrvdataThenDrvidx) {
    Begin("win95");
    EXPECT_EQ(InfFileCopy95(kSource, 1, 4, 0, kFolder, "Northlight", "Printer", 0), 0u);
    EXPECT_THAT(TakeDeletions(), ElementsAre(Clear("C:\\\\Infs\\\\Other\\\\Tarvoaurora.inf"),
                                             Delete("C:\\\\Infs\\\\Other\\\\Tarvoaurora.inf"),
                                             Clear("C:\\\\Infs\\\\Drvdata.bin"), Delete("C:\\\\Infs\\\\Drvdata.bin"),
                                             Clear("C:\\\\Infs\\\\Drvidx.bin"), Delete("C:\\\\Infs\\\\Drvidx.bin")));
    EXPECT_TRUE(Machine().Files().Exists("C:\\Infs\\Northlightaurora.inf")) << "no other name is touched";
    Test().AllowOpen();  // the second close of the search is noted as misuse
}

}  // namespace
}  // namespace pikel
