// Printer data.
#include "support/spooler_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using namespace simulated;

class PrinterDataTest : public SpoolerTest {
  protected:
    void Prepare(const std::string& system) {
        m_printer.Reset();
        Start(system);
        InstallDriver();
        ASSERT_EQ(AddPrinter(), 0u);
        m_printer = Open("Office");
    }
    DWORD Set(std::string value, std::string data, DWORD type = REG_SZ) {
        return SetPrinterDataA(m_printer.Get(), value.data(), type, reinterpret_cast<LPBYTE>(data.data()),
                               static_cast<DWORD>(data.size()));
    }
    DWORD SetEx(const char* key, const char* value, std::string data = "x", DWORD type = REG_BINARY) {
        return SetPrinterDataExA(m_printer.Get(), key, value, type, reinterpret_cast<LPBYTE>(data.data()),
                                 static_cast<DWORD>(data.size()));
    }
    std::string Bytes(const std::string& key, const std::string& value) {
        const RegistryValue* found = Registry().Find(PrintKey("Printers\\Office\\" + key), value);
        return found == nullptr ? "missing" : found->data;
    }

    PrinterHandle m_printer;
};

TEST_F(PrinterDataTest, LiesInTheKeyOfThePrinter) {
    for (const std::string& system : EverySystem()) {
        Prepare(system);
        EXPECT_TRUE(Registry().KeyExists(PrintKey("Printers\\Office\\PrinterDriverData"))) << system;
        EXPECT_EQ(Set("Model", std::string("500\0", 4)), 0u) << system;
        EXPECT_EQ(Bytes("PrinterDriverData", "Model"), std::string("500\0", 4)) << system;
        EXPECT_EQ(SetEx("PnPData", "HardwareID"), 0u) << system;
        EXPECT_EQ(Bytes("PnPData", "HardwareID"), "x") << system;
        EXPECT_EQ(SetEx("PrinterDriverData\\DeviceOption", "DeviceOption"), 0u) << system;
        EXPECT_EQ(Bytes("PrinterDriverData\\DeviceOption", "DeviceOption"), "x") << system;
    }
}

TEST_F(PrinterDataTest, IsKeptAsGiven) {
    Prepare("xp");
    EXPECT_EQ(Set("Unterminated", "abc"), 0u);
    EXPECT_EQ(Bytes("PrinterDriverData", "Unterminated"), "abc");
    EXPECT_EQ(SetPrinterDataA(m_printer.Get(), std::string("Empty").data(), REG_BINARY, nullptr, 0), 0u);
    EXPECT_EQ(Bytes("PrinterDriverData", "Empty"), "");
    EXPECT_EQ(Set("Unterminated", "changed", REG_BINARY), 0u);
    EXPECT_EQ(Registry().Find(PrintKey("Printers\\Office\\PrinterDriverData"), "unterminated")->type,
              DWORD{REG_BINARY});
    Test().AllowOpen();
    m_printer.Reset();
    Test().Reopen();
    EXPECT_EQ(Bytes("PrinterDriverData", "Unterminated"), "changed");
}

TEST_F(PrinterDataTest, SettingTellsWhatIsWrong) {
    Prepare("xp");
    std::string text = "x";
    const auto data = reinterpret_cast<LPBYTE>(text.data());
    EXPECT_EQ(SetPrinterDataA(m_printer.Get(), nullptr, REG_SZ, data, 1), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Set("", "x"), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(SetPrinterDataA(m_printer.Get(), text.data(), REG_SZ, nullptr, 1), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(SetPrinterDataA(nullptr, text.data(), REG_SZ, data, 1), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(SetEx(nullptr, "Value"), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(SetEx("", "Value"), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(SetEx("Key", nullptr), DWORD{ERROR_INVALID_PARAMETER});
    for (const char* key : {"\\Key", "Key\\", "A\\\\B"}) {
        EXPECT_EQ(SetEx(key, "Value"), DWORD{ERROR_INVALID_PARAMETER}) << key;
    }
    EXPECT_EQ(SetEx(std::string(300, 'k').c_str(), "Value"), DWORD{ERROR_INVALID_PARAMETER});
    const PrinterHandle plain = OpenPlainly("Office");
    EXPECT_EQ(SetPrinterDataA(plain.Get(), text.data(), REG_SZ, data, 1), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(SetPrinterDataExA(plain.Get(), "Key", "Value", REG_SZ, data, 1), DWORD{ERROR_ACCESS_DENIED});
}

TEST_F(PrinterDataTest, ReadsInTwoCalls) {
    Prepare("xp");
    ASSERT_EQ(SetEx("A\\B", "Value", "12345", REG_BINARY), 0u);
    ASSERT_EQ(Set("Text", std::string("abc\0", 4)), 0u);
    const PrinterHandle plain = OpenPlainly("Office");
    DWORD type = 0;
    DWORD needed = 0;
    BYTE bytes[16] = {};
    EXPECT_EQ(GetPrinterDataExA(plain.Get(), "a\\b", "VALUE", &type, nullptr, 0, &needed), DWORD{ERROR_MORE_DATA});
    EXPECT_EQ(needed, 5u);
    EXPECT_EQ(type, DWORD{REG_BINARY});
    EXPECT_EQ(GetPrinterDataExA(plain.Get(), "a\\b", "VALUE", &type, bytes, 4, &needed), DWORD{ERROR_MORE_DATA});
    EXPECT_EQ(bytes[0], 0);
    EXPECT_EQ(GetPrinterDataExA(plain.Get(), "a\\b", "VALUE", nullptr, bytes, 5, &needed), 0u);
    EXPECT_EQ(std::string(bytes, bytes + 5), "12345");
    std::string value = "Text";
    EXPECT_EQ(GetPrinterDataA(plain.Get(), value.data(), &type, bytes, sizeof bytes, &needed), 0u);
    EXPECT_EQ(type, DWORD{REG_SZ});
    EXPECT_EQ(needed, 4u);
    value = "Missing";
    EXPECT_EQ(GetPrinterDataA(plain.Get(), value.data(), &type, bytes, sizeof bytes, &needed),
              DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(GetPrinterDataExA(plain.Get(), "C", "Value", &type, bytes, sizeof bytes, &needed),
              DWORD{ERROR_FILE_NOT_FOUND});
}

TEST_F(PrinterDataTest, EmptyValueIsReadAtOnce) {
    Prepare("xp");
    ASSERT_EQ(SetEx("Key", "Empty", ""), 0u);
    DWORD type = 0;
    DWORD needed = 9;
    EXPECT_EQ(GetPrinterDataExA(m_printer.Get(), "Key", "Empty", &type, nullptr, 0, &needed), 0u);
    EXPECT_EQ(needed, 0u);
    EXPECT_EQ(type, DWORD{REG_BINARY});
}

TEST_F(PrinterDataTest, ReadingTellsWhatIsWrong) {
    Prepare("xp");
    DWORD needed = 0;
    BYTE bytes[4];
    EXPECT_EQ(GetPrinterDataA(nullptr, std::string("V").data(), nullptr, bytes, 4, &needed),
              DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(GetPrinterDataA(m_printer.Get(), nullptr, nullptr, bytes, 4, &needed), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(GetPrinterDataA(m_printer.Get(), std::string("V").data(), nullptr, bytes, 4, nullptr),
              DWORD{RPC_X_NULL_REF_POINTER});
    EXPECT_EQ(GetPrinterDataExA(m_printer.Get(), nullptr, "V", nullptr, bytes, 4, &needed),
              DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(GetPrinterDataExA(m_printer.Get(), "K", "V", nullptr, nullptr, 4, &needed),
              DWORD{ERROR_INVALID_PARAMETER});
}

}  // namespace
}  // namespace pikel
