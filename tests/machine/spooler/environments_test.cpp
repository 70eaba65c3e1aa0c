// Environments and the driver directory.
#include <map>

#include "support/spooler_test.h"
#include "machine/spooler/environments.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace simulated;

/// Where each environment's drivers lie; empty: the system doesn't know it.
struct Row {
    const char* system;
    const char* own;
    const char* windows4;
    const char* x86;
    const char* ia64;
    const char* x64;
};

constexpr Row kRows[] = {
    {"win95", "C:\\WINDOWS\\SYSTEM", "C:\\WINDOWS\\SYSTEM", "", "", ""},
    {"win98", "C:\\WINDOWS\\SYSTEM", "C:\\WINDOWS\\SYSTEM", "", "", ""},
    {"winme", "C:\\WINDOWS\\SYSTEM", "C:\\WINDOWS\\SYSTEM", "", "", ""},
    {"nt4", "W32X86", "WIN40", "W32X86", "", ""},
    {"win2000", "W32X86", "WIN40", "W32X86", "", ""},
    {"xp", "W32X86", "WIN40", "W32X86", "IA64", "x64"},
    {"xp-ia64", "IA64", "WIN40", "W32X86", "IA64", "x64"},
    {"xp-x64", "x64", "WIN40", "W32X86", "IA64", "x64"},
    {"vista", "W32X86", "WIN40", "W32X86", "IA64", "x64"},
    {"vista-ia64", "IA64", "WIN40", "W32X86", "IA64", "x64"},
    {"vista-x64", "x64", "WIN40", "W32X86", "IA64", "x64"},
};

class DriverDirectory : public SpoolerTest, public ::testing::WithParamInterface<Row> {
  protected:
    DriverDirectory() { Start(GetParam().system); }

    std::string Expected(const char* folder) {
        return std::string(folder).starts_with("C:")
                   ? folder
                   : Machine().System().systemDirectory + "\\spool\\drivers\\" + folder;
    }
    void ExpectDirectory(const char* environment, const char* folder) {
        std::string name = environment == nullptr ? "" : environment;
        char text[MAX_PATH] = "";
        DWORD needed = 0;
        const DWORD code = CODE_OF(GetPrinterDriverDirectoryA(nullptr, environment == nullptr ? nullptr : name.data(),
                                                              1, reinterpret_cast<LPBYTE>(text), sizeof text, &needed));
        if (*folder == '\0') {
            EXPECT_EQ(code, DWORD{ERROR_INVALID_ENVIRONMENT}) << name;
        } else {
            EXPECT_EQ(code, 0u) << name;
            EXPECT_EQ(text, Expected(folder)) << name;
            EXPECT_EQ(needed, Expected(folder).size() + 1) << name;
        }
    }
};

TEST_P(DriverDirectory, IsThatOfTheEnvironment) {
    const Row& row = GetParam();
    ExpectDirectory(nullptr, row.own);
    ExpectDirectory("", row.own);
    ExpectDirectory("Windows 4.0", row.windows4);
    ExpectDirectory("WINDOWS 4.0", row.windows4);
    ExpectDirectory("Windows NT x86", row.x86);
    ExpectDirectory("Windows IA64", row.ia64);
    ExpectDirectory("Windows x64", row.x64);
    ExpectDirectory("Windows NT Alpha_AXP", "");
}

TEST_P(DriverDirectory, IsThereOnAFreshMachine) {
    EXPECT_TRUE(Machine().Files().IsDirectory(DriverFolder()));
    EXPECT_EQ(DriverFolder(), Expected(GetParam().own));
}

INSTANTIATE_TEST_SUITE_P(Systems, DriverDirectory, ::testing::ValuesIn(kRows), [](const auto& info) {
    std::string name = info.param.system;
    std::erase(name, '-');
    return name;
});

class DriverDirectoryCall : public SpoolerTest {};

TEST_F(DriverDirectoryCall, TellsTheSizeThatIsNeeded) {
    const DWORD size = static_cast<DWORD>(DriverFolder().size() + 1);
    char text[MAX_PATH] = "untouched";
    DWORD needed = 0;
    EXPECT_EQ(CODE_OF(GetPrinterDriverDirectoryA(nullptr, nullptr, 1, nullptr, 0, &needed)),
              DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(needed, size);
    EXPECT_EQ(
        CODE_OF(GetPrinterDriverDirectoryA(nullptr, nullptr, 1, reinterpret_cast<LPBYTE>(text), size - 1, &needed)),
        DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_STREQ(text, "untouched");
    EXPECT_EQ(CODE_OF(GetPrinterDriverDirectoryA(nullptr, nullptr, 1, reinterpret_cast<LPBYTE>(text), size, &needed)),
              0u);
    EXPECT_EQ(text, DriverFolder());
}

TEST_F(DriverDirectoryCall, ChecksItsArguments) {
    char text[MAX_PATH] = "";
    const auto bytes = reinterpret_cast<LPBYTE>(text);
    DWORD needed = 0;
    EXPECT_EQ(CODE_OF(GetPrinterDriverDirectoryA(nullptr, nullptr, 0, bytes, sizeof text, &needed)),
              DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(CODE_OF(GetPrinterDriverDirectoryA(nullptr, nullptr, 2, bytes, sizeof text, &needed)),
              DWORD{ERROR_INVALID_LEVEL});
    EXPECT_EQ(CODE_OF(GetPrinterDriverDirectoryA(nullptr, nullptr, 1, bytes, sizeof text, nullptr)),
              DWORD{RPC_X_NULL_REF_POINTER});
    EXPECT_EQ(CODE_OF(GetPrinterDriverDirectoryA(nullptr, nullptr, 1, nullptr, sizeof text, &needed)),
              DWORD{ERROR_INVALID_USER_BUFFER});
    Start("win98");
    EXPECT_EQ(CODE_OF(GetPrinterDriverDirectoryA(nullptr, nullptr, 1, bytes, sizeof text, nullptr)),
              DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(CODE_OF(GetPrinterDriverDirectoryA(nullptr, nullptr, 1, nullptr, sizeof text, &needed)),
              DWORD{ERROR_INVALID_PARAMETER});
}

TEST_F(DriverDirectoryCall, KnowsThisComputerAlone) {
    char text[MAX_PATH] = "";
    DWORD needed = 0;
    for (std::string server :
         {std::string(), Machine().System().computerName, "\\\\" + Machine().System().computerName}) {
        EXPECT_EQ(CODE_OF(GetPrinterDriverDirectoryA(server.data(), nullptr, 1, reinterpret_cast<LPBYTE>(text),
                                                     sizeof text, &needed)),
                  0u)
            << server;
    }
    std::string other = "\\\\OTHER";
    EXPECT_EQ(CODE_OF(GetPrinterDriverDirectoryA(other.data(), nullptr, 1, reinterpret_cast<LPBYTE>(text), sizeof text,
                                                 &needed)),
              DWORD{RPC_S_SERVER_UNAVAILABLE});
}

TEST_F(DriverDirectoryCall, FollowsTheRegistry) {
    Registry().SetText(PrintKey("Environments\\Windows NT x86"), "Directory", "ELSEWHERE");
    EXPECT_EQ(DriverFolder(), Machine().System().systemDirectory + "\\spool\\drivers\\ELSEWHERE");
    // A machine without the key has the usual folder.
    Registry().DeleteKey(PrintKey("Environments"));
    EXPECT_EQ(DriverFolder(), Machine().System().systemDirectory + "\\spool\\drivers\\W32X86");
}

}  // namespace
}  // namespace pikel
