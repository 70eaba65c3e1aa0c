// Values of a printer by their type, and values that change while they are read.
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "support/printer_machine.h"
#include "spooler/printer_data.h"

namespace pikel {
namespace {

using namespace testing_support;

std::string Bytes(std::string_view text, std::size_t size) {
    return std::string(text.data(), size);
}

class PrinterDataKinds : public EverySystemTest {
  protected:
    PrinterDataKinds() {
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
        Test().TakeCalls();
    }
    Family OfFamily() const { return FamilyOf(GetParam()); }
    void Put(DWORD type, const std::string& bytes) {
        Machine().Registry().Set(std::string(kPrintersOn) + "\\P1\\PrinterDriverData", "CustomComment", type, bytes);
    }
    /// Reads the value; fails the test when it can't be read or has another type.
    std::string Get(DWORD type) {
        PrinterValueData value;
        EXPECT_EQ(GetPrinterData("P1", nullptr, "CustomComment", ValueKindEvery, value), 0u);
        EXPECT_EQ(value.dwType, type);
        return value.data ? std::string(static_cast<const char*>(value.data.Get()), value.dwSize) : std::string();
    }
    std::vector<std::string> LinesOfARead(bool isText) const {
        const std::string routine = RoutineOfFamily("GetPrinterData", GetParam());
        if (!isText || OfFamily() != Family::Windows2000) {
            return {routine + "() - Start", routine + "() - End(0)"};
        }
        return {routine + "() - Start", "GetPrinterData2kHelper() - Start", "GetPrinterData2kHelper() - End(0)",
                routine + "() - End(0)"};
    }
};
INSTANTIATE_ON_EVERY_SYSTEM(PrinterDataKinds);

TEST_P(PrinterDataKinds, TextsAndMultiStringsAloneAreTakenFromTheRegistryFromWindows2000On) {
    const std::string bytes = Bytes("%a%\0", 4);
    for (DWORD type : {DWORD{REG_SZ}, DWORD{REG_MULTI_SZ}, DWORD{REG_EXPAND_SZ}, DWORD{REG_BINARY}, DWORD{REG_DWORD}}) {
        SCOPED_TRACE(type);
        Put(type, bytes);
        Test().TurnLogOn(1);
        Test().TakeCalls();
        EXPECT_EQ(Get(type), bytes);
        const bool isText = type == REG_SZ || type == REG_MULTI_SZ;
        EXPECT_EQ(Test().TakeLog(), LinesOfARead(isText));
        EXPECT_EQ(Test().TakeCallNames({"RegQueryValueExA"}).empty(),
                  OfFamily() == Family::Nt4 || (OfFamily() == Family::Windows2000 && !isText));
    }
}

TEST_P(PrinterDataKinds, MultiStringWithoutItsLastTerminatorGetsOneFromWindows2000On) {
    const bool getsOne = OfFamily() == Family::Windows2000;
    Put(REG_MULTI_SZ, Bytes("a\0b", 3));
    Test().TurnLogOn(1);
    EXPECT_EQ(Get(REG_MULTI_SZ), Bytes("a\0b\0", getsOne ? 4 : 3));
    EXPECT_EQ(Test().TakeLog(), LinesOfARead(true));
    // One that ends the last text alone is there; the second one is not asked for.
    Put(REG_MULTI_SZ, Bytes("a\0b\0", 4));
    EXPECT_EQ(Get(REG_MULTI_SZ), Bytes("a\0b\0", 4));
    Put(REG_MULTI_SZ, Bytes("a\0b\0\0", 5));
    EXPECT_EQ(Get(REG_MULTI_SZ), Bytes("a\0b\0\0", 5));
}

TEST_P(PrinterDataKinds, OtherTypesGetNoTerminator) {
    for (DWORD type : {DWORD{REG_EXPAND_SZ}, DWORD{REG_BINARY}}) {
        Put(type, "abc");
        EXPECT_EQ(Get(type), "abc") << type;
    }
}

// ---- a value that changes between the two reads ---------------------------------------------------------------------

/// Does something in front of a read of a value: the second, or the third where the registry has the text that the
/// spooler was asked for first.
class BetweenTheReads {
  public:
    explicit BetweenTheReads(std::function<void()> change, int nth = 2) {
        s_below = m_replaced.table;
        s_change = std::move(change);
        s_nth = nth;
        s_reads = 0;
        m_replaced.table.RegQueryValueExA = [](HKEY key, LPCSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data,
                                               LPDWORD size) -> LSTATUS {
            CountRead();
            return s_below.RegQueryValueExA(key, name, reserved, type, data, size);
        };
        m_replaced.table.GetPrinterDataA = [](HANDLE printer, LPSTR name, LPDWORD type, LPBYTE data, DWORD size,
                                              LPDWORD needed) -> DWORD {
            CountRead();
            return s_below.GetPrinterDataA(printer, name, type, data, size, needed);
        };
        m_replaced.table.GetProcAddress = [](HMODULE module, LPCSTR symbol) -> FARPROC {
            const FARPROC found = s_below.GetProcAddress(module, symbol);
            if (std::string_view(symbol) != "GetPrinterDataExA") {
                return found;
            }
            s_readEx = reinterpret_cast<looked_up::GetPrinterDataExA>(reinterpret_cast<void (*)()>(found));
            return AsExport(&ReadEx);
        };
    }
    int Reads() const { return s_reads; }

  private:
    static void CountRead() {
        if (++s_reads == s_nth) {
            s_change();
        }
    }
    static DWORD ReadEx(HANDLE printer, LPCSTR key, LPCSTR name, LPDWORD type, LPBYTE data, DWORD size,
                        LPDWORD needed) {
        CountRead();
        return s_readEx(printer, key, name, type, data, size, needed);
    }
    static inline PlatformTable s_below;
    static inline std::function<void()> s_change;
    static inline looked_up::GetPrinterDataExA s_readEx = nullptr;
    static inline int s_nth = 0;
    static inline int s_reads = 0;
    ReplacedOperations m_replaced;
};

TEST_P(PrinterDataKinds, ValueThatShrinksBetweenTheReadsHasItsLaterSize) {
    for (DWORD type : {DWORD{REG_BINARY}, DWORD{REG_EXPAND_SZ}}) {
        Put(type, "0123456789");
        BetweenTheReads between([&] { Put(type, "abc"); });
        EXPECT_EQ(Get(type), "abc") << type;
        EXPECT_EQ(between.Reads(), 2);
    }
}

TEST_P(PrinterDataKinds, TextThatShrinksBetweenTheReadsHasItsLaterSizeAndIsEnded) {
    if (OfFamily() != Family::Windows2000) {
        return;  // a text is read there as any other value
    }
    for (const auto& [now, read] :
         {std::pair(Bytes("a\0b\0\0", 5), Bytes("a\0b\0\0", 5)), std::pair(Bytes("a\0b", 3), Bytes("a\0b\0", 4)),
          std::pair(std::string(), std::string())}) {
        Put(REG_MULTI_SZ, "0123456789");
        BetweenTheReads between([&, bytes = now] { Put(REG_MULTI_SZ, bytes); }, 3);
        EXPECT_EQ(Get(REG_MULTI_SZ), read);
        EXPECT_EQ(between.Reads(), 3);
    }
}

TEST_P(PrinterDataKinds, ValueThatGrowsBetweenTheReadsIsRefused) {
    Put(REG_BINARY, "abc");
    BetweenTheReads between([&] { Put(REG_BINARY, "0123456789"); });
    Test().TurnLogOn(1);
    PrinterValueData value;
    EXPECT_EQ(GetPrinterData("P1", nullptr, "CustomComment", ValueKindEvery, value), DWORD{ERROR_MORE_DATA});
    EXPECT_FALSE(value.data);
    EXPECT_EQ(value.dwSize, 0u);
    EXPECT_EQ(Test().TakeLog().back(), RoutineOfFamily("GetPrinterData", GetParam()) + "() - End(234)");
}

}  // namespace
}  // namespace pikel
