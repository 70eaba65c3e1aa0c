// How much the section of delayed replacements takes, to the byte.
#include <string>

#include "driver/delayed_replace.h"
#include "support/calls.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kWininit[] = "C:\\WINDOWS\\wininit.ini";
constexpr std::size_t kSectionSize = 16384;

class DelayedReplaceLimits : public MachineTest {
  protected:
    DelayedReplaceLimits() : MachineTest("win98") {}

    /// Fills the section with lines that take this many bytes in its buffer, each with its NUL.
    void Fill(std::size_t bytes) {
        constexpr std::size_t kLine = 100;
        m_lines.clear();
        for (std::size_t number = 0; bytes != 0; ++number) {
            const std::size_t length = bytes < 2 * kLine ? bytes : kLine;
            std::string line = "C:\\" + std::to_string(number) + "=C:\\";
            line.resize(length - 1, 'x');
            m_lines += line + "\r\n";
            bytes -= length;
        }
        WriteFileOn(Machine(), kWininit, "[rename]\r\n" + m_lines);
    }
    std::string Wininit() { return Machine().Files().Read(kWininit).value_or("(missing)"); }

    std::string m_lines;
};

constexpr char kEntry[] = "C:\\b.dll=C:\\b.new";
constexpr std::size_t kEntrySize = sizeof kEntry;  // with its NUL

TEST_F(DelayedReplaceLimits, EntryGoesInUpToTheBuffersLastByte) {
    // The lines, the entry with its NUL and the NUL behind all of them fill the buffer, or its two bytes of reserve.
    for (std::size_t spare : {2u, 1u, 0u}) {
        Fill(kSectionSize + 2 - kEntrySize - 1 - spare);
        EXPECT_EQ(WriteWininit("C:\\b.dll", "C:\\b.new"), 0u) << spare;
        EXPECT_TRUE(Wininit().ends_with(m_lines + kEntry + "\r\n")) << spare;
    }
}

TEST_F(DelayedReplaceLimits, EntryOneByteLongerIsRefusedAndTheFileStays) {
    Fill(kSectionSize + 2 - kEntrySize);
    const std::string before = Wininit();
    Test().TurnLogOn();
    ForgetCalls(Test());
    EXPECT_EQ(WriteWininit("C:\\b.dll", "C:\\b.new"), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_THAT(Test().TakeLog(), ElementsAre("WriteWininit() - C:\\b.dll Start", "WriteWininit() End(122)"));
    EXPECT_THAT(Test().TakeCallNames({"WritePrivateProfileSectionA", "WritePrivateProfileStringA"}), IsEmpty());
    EXPECT_EQ(Wininit(), before);
}

}  // namespace
}  // namespace pikel
