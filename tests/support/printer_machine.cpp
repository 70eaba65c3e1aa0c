#include "support/printer_machine.h"

#include "machine/operations.h"

namespace pikel::testing_support {
namespace {

LPSTR Mutable(const std::optional<std::string>& text) {
    return text ? const_cast<LPSTR>(text->c_str()) : nullptr;
}

std::string TextOf(LPCSTR text) {
    return text == nullptr ? "" : text;
}

/// A printer opened past the shims, for the length of one reading.
class OpenedPrinter {
  public:
    explicit OpenedPrinter(std::string name) { simulated::OpenPrinterA(name.data(), &m_handle, nullptr); }
    ~OpenedPrinter() {
        if (m_handle != nullptr) {
            simulated::ClosePrinter(m_handle);
        }
    }
    OpenedPrinter(const OpenedPrinter&) = delete;
    OpenedPrinter& operator=(const OpenedPrinter&) = delete;

    bool IsOpen() const { return m_handle != nullptr; }
    HANDLE Handle() const { return m_handle; }
    std::vector<BYTE> Read(DWORD level) const {
        DWORD needed = 0;
        simulated::GetPrinterA(m_handle, level, nullptr, 0, &needed);
        std::vector<BYTE> bytes(needed);
        EXPECT_TRUE(simulated::GetPrinterA(m_handle, level, bytes.data(), needed, &needed))
            << "level " << level << ": " << simulated::lastError;
        return bytes;
    }

  private:
    HANDLE m_handle = nullptr;
};

DWORD DriverVersionOf(TestMachine& test) {
    if (test->Is9x()) {
        return 0x400;
    }
    return test->Generation() == simulated::Generation::Nt4 ? 2 : 3;
}

}  // namespace

void InstallDriver(TestMachine& test, const std::string& name, const DriverIdentity& identity) {
    char folder[MAX_PATH] = {};
    DWORD needed = 0;
    ASSERT_TRUE(simulated::GetPrinterDriverDirectoryA(nullptr, nullptr, 1, reinterpret_cast<LPBYTE>(folder),
                                                      sizeof folder, &needed))
        << simulated::lastError;
    std::string driver = "tarvo.drv", data = "tarvo.dat", config = "tarvoui.dll";
    for (const std::string& file : {driver, data, config}) {
        WriteFileOn(*test, std::string(folder) + "\\" + file, file);
    }
    DRIVER_INFO_6A info{};
    info.cVersion = DriverVersionOf(test);
    info.pName = const_cast<LPSTR>(name.c_str());
    info.pDriverPath = driver.data();
    info.pDataFile = data.data();
    info.pConfigFile = config.data();
    info.pszMfgName = Mutable(identity.maker);
    info.pszOEMUrl = Mutable(identity.url);
    info.pszHardwareID = Mutable(identity.hardwareId);
    const DWORD level = DriverVersionOf(test) == 3 ? 6 : 3;
    ASSERT_TRUE(simulated::AddPrinterDriverA(nullptr, level, reinterpret_cast<LPBYTE>(&info))) << simulated::lastError;
}

PrinterText::PrinterText(std::string name) : m_name(std::move(name)) {
    m_record.pPrinterName = m_name.data();
    m_record.pDriverName = m_driver.data();
    m_record.pPortName = m_port.data();
    m_record.pPrintProcessor = m_processor.data();
    m_record.pDatatype = m_dataType.data();
}

void AddPrinterTo(TestMachine&, const std::string& name) {
    PrinterText text(name);
    HANDLE handle = simulated::AddPrinterA(nullptr, 2, reinterpret_cast<LPBYTE>(&text.Record()));
    ASSERT_NE(handle, nullptr) << name << ": " << simulated::lastError;
    simulated::ClosePrinter(handle);
}

std::optional<PrinterFacts> PrinterOn(TestMachine&, const std::string& name) {
    OpenedPrinter printer(name);
    if (!printer.IsOpen()) {
        return std::nullopt;
    }
    const std::vector<BYTE> level2 = printer.Read(2);
    const std::vector<BYTE> level5 = printer.Read(5);
    if (level2.empty() || level5.empty()) {
        return std::nullopt;
    }
    const auto& info2 = *reinterpret_cast<const PRINTER_INFO_2A*>(level2.data());
    const auto& info5 = *reinterpret_cast<const PRINTER_INFO_5A*>(level5.data());
    return PrinterFacts{TextOf(info2.pPrinterName),
                        TextOf(info2.pDriverName),
                        TextOf(info2.pPortName),
                        TextOf(info2.pDatatype),
                        info2.Attributes,
                        info2.Priority,
                        info5.DeviceNotSelectedTimeout,
                        info5.TransmissionRetryTimeout};
}

std::vector<std::string> PrintersOn(TestMachine&) {
    constexpr DWORD kFlags = PRINTER_ENUM_LOCAL | PRINTER_ENUM_CONNECTIONS;
    DWORD needed = 0;
    DWORD count = 0;
    simulated::EnumPrintersA(kFlags, nullptr, 2, nullptr, 0, &needed, &count);
    std::vector<BYTE> bytes(needed);
    EXPECT_TRUE(simulated::EnumPrintersA(kFlags, nullptr, 2, bytes.data(), needed, &needed, &count))
        << simulated::lastError;
    std::vector<std::string> names;
    for (DWORD i = 0; i < count; ++i) {
        names.push_back(TextOf(reinterpret_cast<const PRINTER_INFO_2A*>(bytes.data())[i].pPrinterName));
    }
    return names;
}

void MakeDefaultOn(TestMachine& test, const std::string& name) {
    if (test->Is9x()) {
        OpenedPrinter printer(name);
        ASSERT_TRUE(printer.IsOpen()) << name;
        std::vector<BYTE> level5 = printer.Read(5);
        reinterpret_cast<PRINTER_INFO_5A*>(level5.data())->Attributes |= PRINTER_ATTRIBUTE_DEFAULT;
        ASSERT_TRUE(simulated::SetPrinterA(printer.Handle(), 5, level5.data(), 0)) << simulated::lastError;
    } else if (test->Generation() == simulated::Generation::Nt4) {
        const std::string device = name + ",winspool," + kLocalPort;
        ASSERT_TRUE(simulated::WriteProfileStringA("windows", "device", device.c_str())) << simulated::lastError;
    } else {
        ASSERT_TRUE(simulated::SetDefaultPrinterA(name.c_str())) << simulated::lastError;
    }
}

void ShareOnTheNetwork(TestMachine& test) {
    test->Registry().SetText("HKLM\\SOFTWARE\\Simulated Network\\Servers\\server\\Laser", "Driver", kDriver);
}

simulated::SystemDescription SystemWithoutRoute() {
    simulated::SystemDescription system = *simulated::FindSystem("win95");
    system.name = "win32s";
    system.platform = VER_PLATFORM_WIN32s;
    return system;
}

}  // namespace pikel::testing_support
