// Version texts that can't be had or don't fit, and a count of profiles that disagrees with their list.
#include <cstring>
#include <string>

#include "print_ui_probe.h"
#include "printui/command_line.h"
#include "printui/print_ui_commands.h"
#include "support/spooler_setup.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// A string table whose every text has one length; tells the room that it was last offered.
class TextsOfLength {
  public:
    explicit TextsOfLength(std::size_t length) {
        s_length = length;
        s_room = 0;
        m_replaced.table.LoadStringA = [](HINSTANCE, UINT, LPSTR buffer, int size) -> int {
            s_room = size;
            const std::size_t length = std::min<std::size_t>(s_length, static_cast<std::size_t>(size) - 1);
            std::memset(buffer, 'v', length);
            buffer[length] = '\0';
            return static_cast<int>(length);
        };
    }
    int Room() const { return s_room; }

  private:
    static inline std::size_t s_length = 0;
    static inline int s_room = 0;
    ReplacedOperations m_replaced;
};

class PrintUILimits : public MachineTest {
  protected:
    PrintUILimits() : MachineTest("win2000") {}
};

TEST_F(PrintUILimits, VersionThatHasNoTextAndDoesNotFitEitherGives8) {
    const std::string withoutText = "/h\"Intel\" /v\"\"";
    char text[260];
    std::memset(text, '#', sizeof text);
    Test().TurnLogOn(1);
    EXPECT_EQ(MakeVersionStringForPrintUI(7, 0, text, static_cast<DWORD>(withoutText.size())), 8u)
        << "what doesn't fit counts for more than what can't be looked up";
    EXPECT_EQ(text[withoutText.size()], '#');
    EXPECT_EQ(Test().TakeLog().back(), "MakeVersionStringForPrintUI End(0x00000008)");
    EXPECT_EQ(MakeVersionStringForPrintUI(7, 0, text, static_cast<DWORD>(withoutText.size() + 1)), 1814u);
    EXPECT_EQ(text, withoutText);
}

TEST_F(PrintUILimits, LibraryThatIsMissingGives8ForAVersionThatDoesNotFit) {
    Machine().Modules().Remove("printui.dll");
    char text[260] = "";
    EXPECT_EQ(MakeVersionStringForPrintUI(3, 0, text, 14), 8u);
    EXPECT_EQ(MakeVersionStringForPrintUI(3, 0, text, 15), 126u);
    EXPECT_STREQ(text, "/h\"Intel\" /v\"\"");
}

TEST_F(PrintUILimits, TextOfAVersionIsReadIntoABufferOf260Bytes) {
    TextsOfLength texts(1000);
    char text[1000] = "";
    EXPECT_EQ(MakeVersionStringForPrintUI(3, 0, text, sizeof text), 0u);
    EXPECT_EQ(texts.Room(), 260);
    EXPECT_EQ(text, "/h\"Intel\" /v\"" + std::string(259, 'v') + "\"");
}

TEST_F(PrintUILimits, VersionOfACommandHas259BytesAtMost) {
    PrintUIProbe probe(Test());
    for (std::size_t length : {245u, 246u}) {
        TextsOfLength texts(length);
        const DWORD code = DoAddDriverToPrintUI("C:\\a.inf", "Aurora", 3, 0);
        const DWORD deletion = DoDeletePrinterDriverToPrintUI(3, "Aurora", 0, 0, nullptr, 0, 0);
        if (length == 245) {
            EXPECT_EQ(code, 0u);
            EXPECT_EQ(deletion, 0u);
            const std::string version = "/h\"Intel\" /v\"" + std::string(length, 'v') + "\"";
            EXPECT_EQ(version.size(), 259u);
            EXPECT_THAT(probe.TakeCommands(), ElementsAre(HasSubstr(version), HasSubstr(version)));
        } else {
            EXPECT_EQ(code, 8u);
            EXPECT_EQ(deletion, 8u);
            EXPECT_THAT(probe.TakeCommands(), IsEmpty()) << "nothing is run";
        }
    }
}

// ---- profiles of a printer ------------------------------------------------------------------------------------------

TEST_F(PrintUILimits, CountOf0WithAListOrAListThatIsNullAddsNoLine) {
    Start("xp");
    PutDriver(Machine(), {});
    PutPrinter("Office", "Aurora 500");
    PrintUIProbe probe(Test());
    char profile[] = "one.icc";
    LPSTR profiles[] = {profile};
    for (const auto& [count, list] : {std::pair<DWORD, LPSTR*>(0, profiles), std::pair<DWORD, LPSTR*>(1, nullptr),
                                      std::pair<DWORD, LPSTR*>(0, nullptr)}) {
        SCOPED_TRACE(count);
        Test().TurnLogOn();
        ForgetCalls(Test());
        EXPECT_EQ(DoDeletePrinterToPrintUI("Office", count, list), 0u);
        EXPECT_THAT(Test().TakeLog(), ElementsAreArray(Lines({{"DoDeletePrinterToPrintUI Start"},
                                                              ConversionLines(),
                                                              RunLines("/dl /n\"Office\" /q", 0),
                                                              {HexLine("DoDeletePrinterToPrintUI End", 0)}})));
        EXPECT_THAT(TakeCallsOf(Test(), {"DisassociateColorProfileFromDeviceA"}), IsEmpty());
    }
}

}  // namespace
}  // namespace pikel
