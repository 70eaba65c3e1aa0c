// Drivers and printers on a test machine, put there and read back through the machine's own spooler, past the shims.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/pikel.h"
#include "support/machine_test.h"

namespace pikel::testing_support {

inline constexpr char kPrintersOn[] = "HKLM\\SYSTEM\\CurrentControlSet\\Control\\Print\\Printers";
inline constexpr char kDriver[] = "Tarvo 100";
inline constexpr char kLocalPort[] = "LPT1:";

/// What a driver says of its device; the spooler keeps it from Windows 2000 on.
struct DriverIdentity {
    std::optional<std::string> hardwareId = "LPTENUM\\TarvoTarvo_1003D5A";
    std::optional<std::string> maker = "Tarvo";
    std::optional<std::string> url = "http://tarvo.example/";
};

/// Installs a driver of the machine's own environment, with its files.
void InstallDriver(TestMachine& test, const std::string& name = kDriver, const DriverIdentity& identity = {});

/// A record of a printer on the first parallel port, with texts of its own.
class PrinterText {
  public:
    explicit PrinterText(std::string name);
    PrinterRecord& Record() { return m_record; }
    const std::string& Name() const { return m_name; }

  private:
    std::string m_name;
    std::string m_driver = kDriver;
    std::string m_port = kLocalPort;
    std::string m_processor = "winprint";
    std::string m_dataType = "RAW";
    PrinterRecord m_record{};
};

/// Adds a printer with the driver, which must be there.
void AddPrinterTo(TestMachine& test, const std::string& name);

/// What the spooler tells of a printer at levels 2 and 5.
struct PrinterFacts {
    std::string name;
    std::string driver;
    std::string port;
    std::string dataType;
    DWORD attributes = 0;
    DWORD priority = 0;
    DWORD notSelectedTimeout = 0;
    DWORD retryTimeout = 0;
};

/// Nothing when there is no such printer.
std::optional<PrinterFacts> PrinterOn(TestMachine& test, const std::string& name);

/// Names of all printers of the machine.
std::vector<std::string> PrintersOn(TestMachine& test);

/// Makes a printer the default one in the way of the machine's system.
void MakeDefaultOn(TestMachine& test, const std::string& name);

/// Puts a shared printer, "\\\\server\\Laser", within the machine's reach.
inline constexpr char kShared[] = "\\\\server\\Laser";
void ShareOnTheNetwork(TestMachine& test);

/// A system that has no row: Win32s.
simulated::SystemDescription SystemWithoutRoute();

/// A function as a module's export.
template <class Function>
FARPROC AsExport(Function* function) {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(function));
}

/// A message of the thread's queue.
inline MSG QueuedMessage(UINT message) {
    MSG queued{};
    queued.message = message;
    return queued;
}

/// Rows, by the names of EverySystem.
inline bool Is9xName(std::string_view system) {
    return system.starts_with("win9") || system == "winme";
}
inline bool IsNt4Name(std::string_view system) {
    return system == "nt4";
}

/// How the ways to a printer's data differ.
enum class Family { Windows9x, Nt4, Windows2000 };
inline Family FamilyOf(std::string_view system) {
    return Is9xName(system) ? Family::Windows9x : IsNt4Name(system) ? Family::Nt4 : Family::Windows2000;
}
/// "SetPrinterData9x": how the routine of a system calls itself in the log.
inline std::string RoutineOfFamily(std::string_view operation, std::string_view system) {
    static constexpr const char* kSuffixes[] = {"9x", "NT", "2k"};
    return std::string(operation) + kSuffixes[static_cast<int>(FamilyOf(system))];
}

}  // namespace pikel::testing_support
