// Damaged texts: whatever a file holds, reading it ends with a reason or with a state that is written and read again as
// it is. The changes are the same in every run.
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "machine/system/machine_ini.h"
#include "machine/registry/profiles.h"
#include "machine/registry/registry.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

using namespace std::string_literals;

/// Cuts, doubles, swaps and replaces parts of a text.
class Mutator {
  public:
    explicit Mutator(std::uint32_t seed) : m_random(seed) {}

    std::string Change(std::string text) {
        for (std::size_t count = Below(4) + 1; count > 0 && !text.empty(); --count) {
            ChangeOnce(text);
        }
        return text;
    }

  private:
    std::size_t Below(std::size_t end) { return m_random() % end; }

    void ChangeOnce(std::string& text) {
        static const std::vector<std::string> pieces = {
            "\"",       "\\",      "[",       "]",           "=",        ",",           "\n",
            "\r\n",     "hex(7):", "raw(1):", ";",           "@",        "\0"s,         "\xFF",
            "\xE6\x97", "\\x4",    "dword:",  "hex:00,\\\n", "[system]", "0x",          "\t",
            "\\\\",     "\\\\x",   "-",       "HKCR",        "\"=\"x\"", "99999999999", "; end of registry"};
        const std::size_t start = Below(text.size());
        const std::size_t length = Below(std::min<std::size_t>(text.size() - start, 24)) + 1;
        switch (Below(5)) {
            case 0:
                text.erase(start, length);
                break;
            case 1:
                text.insert(start, text.substr(start, length));
                break;
            case 2:
                text.insert(start, pieces[Below(pieces.size())]);
                break;
            case 3:
                text[start] = static_cast<char>(Below(256));
                break;
            default:
                std::swap(text[start], text[Below(text.size())]);
        }
    }

    std::mt19937 m_random;
};

TEST(DamagedTexts, OfARegistryAreRefusedOrComeBackAsTheyAre) {
    simulated::Registry original(932);
    original.SetText("HKCU\\\x95\x5C\\b", "\x83\x5C", "\x93\xFA\"\\");
    original.SetTexts("HKLM\\SOFTWARE\\x]", "m", {"one", "\xFF\x01"});
    original.Set("HKLM\\SOFTWARE\\\x01", "\x80\n", REG_EXPAND_SZ, "%a%\0"s);
    original.SetNumber("HKLM\\S", "n", 0xfffffffe);
    original.SetBytes("HKLM\\S", "b", std::string(60, '\x7f'));
    const std::string text = original.Text();
    Mutator mutator(1);
    int taken = 0;
    for (int i = 0; i < 4000; ++i) {
        const std::string changed = mutator.Change(text);
        simulated::Registry registry(932);
        const std::string problem = registry.Parse(changed);
        if (!problem.empty()) {
            EXPECT_TRUE(problem.starts_with("line ")) << problem;
            continue;
        }
        ++taken;
        simulated::Registry again(932);
        ASSERT_EQ(again.Parse(registry.Text()), "") << changed;
        ASSERT_EQ(again.Text(), registry.Text()) << changed;
    }
    EXPECT_GT(taken, 100) << "some changes do no harm, or nothing was tested";
    EXPECT_LT(taken, 3900);
}

TEST(DamagedTexts, OfAMachineAreRefusedOrComeBackAsTheyAre) {
    const std::string text = simulated::WriteMachineIni(*simulated::FindSystem("win98"));
    Mutator mutator(2);
    int taken = 0;
    for (int i = 0; i < 4000; ++i) {
        const std::string changed = mutator.Change(text);
        try {
            const simulated::SystemDescription system = simulated::ReadMachineIni(changed, "machine.ini");
            const std::string written = simulated::WriteMachineIni(system);
            ASSERT_EQ(simulated::WriteMachineIni(simulated::ReadMachineIni(written, "machine.ini")), written)
                << changed;
            ++taken;
        } catch (const simulated::MachineError& error) {
            EXPECT_TRUE(std::string(error.what()).starts_with("machine.ini: ")) << error.what();
        }
    }
    EXPECT_GT(taken, 100);
    EXPECT_LT(taken, 3900);
}

TEST(DamagedTexts, OfAProfileAreReadAndWrittenAllTheSame) {
    const std::string text = "; c\r\n[a]\r\nx = \"1\"\r\n\r\n[b c]\r\n=2\r\ny\r\n;z=1\r\n[\x83\x5D]\r\nk=\x83\x5C\r\n";
    Mutator mutator(3);
    for (int i = 0; i < 4000; ++i) {
        simulated::ProfileText profile(932, mutator.Change(text));
        for (const std::string& section : profile.Sections()) {
            for (const std::string& key : profile.Keys(section)) {
                EXPECT_TRUE(profile.Find(section, key).has_value());
            }
            profile.Entries(section);
        }
        const std::string before = profile.Text();
        profile.Set("new section", "new key", "v");
        EXPECT_EQ(profile.Find("NEW SECTION", "NEW KEY"), "v");
        profile.RemoveSection("new section");
        EXPECT_EQ(profile.Text(), before);
    }
}

}  // namespace
}  // namespace pikel
