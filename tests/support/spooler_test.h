// What the tests of the simulated spooler share: the calls' codes, records with texts of their own, answers of the
// two-call kind as plain values.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/operations.h"
#include "machine/spooler/spooler.h"
#include "support/machine_test.h"

namespace pikel::testing_support {

/// The code of a call that returns FALSE or null on failure; 0 after success, which must leave the last error alone.
template <class Call>
DWORD CodeOf(Call call) {
    constexpr DWORD kUntouched = 0xdead;
    simulated::lastError = kUntouched;
    const bool succeeded = static_cast<bool>(call());
    const DWORD code = simulated::lastError;
    EXPECT_EQ(code == kUntouched, succeeded) << "last error " << code;
    return succeeded ? 0 : code;
}
#define CODE_OF(call) CodeOf([&] { return call; })

/// A driver's record with its texts.
struct DriverText {
    std::string name = "Tarvo Laser";
    std::optional<std::string> environment{};
    DWORD version = 3;
    std::optional<std::string> driverFile = "tarvo.dll";
    std::optional<std::string> dataFile = "tarvo.gpd";
    std::optional<std::string> configFile = "tarvoui.dll";
    std::optional<std::string> helpFile{};
    std::vector<std::string> dependentFiles{};
    std::optional<std::string> monitor{};
    std::optional<std::string> datatype{};
    std::vector<std::string> previousNames{};
    FILETIME date{};
    DWORDLONG driverVersion = 0;
    std::optional<std::string> manufacturer{};
    std::optional<std::string> url{};
    std::optional<std::string> hardwareId{};
    std::optional<std::string> provider{};

    /// Points into this object.
    DRIVER_INFO_6A Info();
    /// The names of all its files.
    std::vector<std::string> Files() const;

    // What Info's record points at.
    std::string dependentText{};
    std::string previousText{};
};

/// A printer's record with its texts.
struct PrinterSettings {
    std::optional<std::string> name = "Office";
    std::optional<std::string> port = "LPT1:";
    std::optional<std::string> driver = "Tarvo Laser";
    std::optional<std::string> processor = "winprint";
    std::optional<std::string> datatype = "RAW";
    std::optional<std::string> share{};
    std::optional<std::string> comment{};
    std::optional<std::string> location{};
    std::optional<std::string> separator{};
    std::optional<std::string> parameters{};
    LPDEVMODEA devMode = nullptr;
    DWORD attributes = 0;
    DWORD priority = 1;
    DWORD defaultPriority = 0;
    DWORD startTime = 0;
    DWORD untilTime = 0;

    PRINTER_INFO_2A Info();
};

std::optional<std::string> OptionalText(LPCSTR text);
std::vector<std::string> MultiText(LPCSTR texts);

/// The records of one answer, as long as this object lives.
template <class Info>
class Answer {
  public:
    /// @param call  the operation with everything but buffer, size, needed and returned
    explicit Answer(const std::function<BOOL(LPBYTE, DWORD, LPDWORD, LPDWORD)>& call) {
        DWORD count = 0;
        if (call(nullptr, 0, &m_needed, &count)) {
            return;
        }
        m_code = simulated::lastError;
        if (m_code != ERROR_INSUFFICIENT_BUFFER) {
            return;
        }
        m_bytes.resize(m_needed);
        DWORD needed = 0;
        m_code = call(m_bytes.data(), m_needed, &needed, &count) ? 0 : simulated::lastError;
        EXPECT_EQ(needed, m_needed);
        const auto* infos = reinterpret_cast<const Info*>(m_bytes.data());
        m_records.assign(infos, infos + count);
    }
    DWORD Code() const { return m_code; }
    const std::vector<Info>& Records() const { return m_records; }

  private:
    std::vector<BYTE> m_bytes;
    std::vector<Info> m_records;
    DWORD m_needed = 0;
    DWORD m_code = 0;
};

class SpoolerTest : public MachineTest {
  protected:
    /// The driver version that the running system loads.
    DWORD OwnVersion();
    /// Folder of an environment's drivers; empty: the machine's own.
    std::string DriverFolder(const std::string& environment = {});
    /// Puts files into it.
    void Stage(const std::vector<std::string>& files, const std::string& environment = {});
    /// Stages a driver's files and adds it as the machine's systems do. Takes the version from the machine.
    void InstallDriver(DriverText driver = {});
    /// @param flags  none: through AddPrinterDriverA
    DWORD AddDriver(DriverText driver, DWORD level = 3, std::optional<DWORD> flags = {});
    std::vector<std::string> DriverNames(const std::string& environment = {});

    /// Adds a printer and closes its handle.
    DWORD AddPrinter(PrinterSettings settings = {});
    std::vector<std::string> PrinterNames(DWORD flags = PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS);
    /// Opens with all rights, or with the plain ones.
    PrinterHandle Open(const std::string& name, ACCESS_MASK access = PRINTER_ALL_ACCESS);
    PrinterHandle OpenPlainly(const std::string& name);
    DWORD OpenCode(const std::string& name, std::optional<ACCESS_MASK> access = {});
    std::string DefaultPrinterName();

    simulated::Registry& Registry() { return Machine().Registry(); }
    bool FileIsThere(const std::string& path) { return Machine().Files().Exists(path); }
};

/// The same for every system.
class SpoolerSystemsTest : public SpoolerTest, public ::testing::WithParamInterface<std::string> {
  protected:
    SpoolerSystemsTest() { Start(GetParam()); }
};

/// The three forms of enumeration results.
template <class Info>
Answer<Info> EnumDrivers(DWORD level, std::string environment = {}) {
    return Answer<Info>([=](LPBYTE bytes, DWORD size, LPDWORD needed, LPDWORD count) mutable {
        return simulated::EnumPrinterDriversA(nullptr, environment.empty() ? nullptr : environment.data(), level, bytes,
                                              size, needed, count);
    });
}
template <class Info>
Answer<Info> EnumPrinters(DWORD level, DWORD flags = PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS) {
    return Answer<Info>([=](LPBYTE bytes, DWORD size, LPDWORD needed, LPDWORD count) {
        return simulated::EnumPrintersA(flags, nullptr, level, bytes, size, needed, count);
    });
}
template <class Info>
Answer<Info> GetPrinter(HANDLE handle, DWORD level) {
    return Answer<Info>([=](LPBYTE bytes, DWORD size, LPDWORD needed, LPDWORD count) {
        *count = 1;
        return simulated::GetPrinterA(handle, level, bytes, size, needed);
    });
}

}  // namespace pikel::testing_support
