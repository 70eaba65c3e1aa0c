// Fixture for tests of the INF model: an INF from a text, the log in the form in which sections write it, and expected
// error lines.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "inf/inf_access.h"
#include "frame/log.h"
#include "machine/base/text.h"
#include "machine/system/messages.h"
#include "support/machine_test.h"

namespace pikel::testing_support {

/// Path at which the fixture puts its INF.
inline constexpr char kInfPath[] = "C:\\Test\\model.inf";

using LogLines = std::vector<std::string>;

/// A value as the sections log it: between two banner lines, an empty line behind. Several values stand one below the
/// other.
inline LogLines Bannered(const std::string& banner, const LogLines& values) {
    LogLines lines = {banner};
    lines.insert(lines.end(), values.begin(), values.end());
    lines.push_back(banner);
    lines.emplace_back();
    return lines;
}

inline LogLines Joined(const std::vector<LogLines>& parts) {
    LogLines lines;
    for (const LogLines& part : parts) {
        lines.insert(lines.end(), part.begin(), part.end());
    }
    return lines;
}

/// The line of a code at a place of the INF model's source.
inline std::string InfErrorLine(DWORD code, int line) {
    const std::string text = simulated::MessageText(code);
    EXPECT_FALSE(text.empty()) << "the machine has no text for " << code;
    return "***** Error!!! " + text + " [InfFile.cpp:" + std::to_string(line) + "] *****";
}

/// One xp machine and one INF at a time. What a test opens is closed before the machine's own checks.
class InfTest : public MachineTest {
  protected:
    /// Writes the text to kInfPath and opens it. Lines end in a bare line feed or CR LF.
    HINF Open(std::string_view text) {
        m_inf.Reset();
        WriteFileOn(Machine(), kInfPath, text);
        EXPECT_EQ(OpenInf(kInfPath, m_inf), 0u);
        Test().TakeCalls();
        return m_inf.Get();
    }

    /// Messages of the log; turn it on first.
    LogLines Log() { return Test().TakeLog(); }

  private:
    InfHandle m_inf;
};

}  // namespace pikel::testing_support
