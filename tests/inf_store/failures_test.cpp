// Every platform call of the INF operations fails in turn, once and from then on: nothing stays open, nothing crashes,
// and what comes back is a code with the slot's prefix.
#include <functional>
#include <string>

#include "frame/os_route.h"
#include "frame/pikel.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

using namespace testing_support;

constexpr DWORD kInjected = 31;
constexpr char kSource[] = "C:\\Driver\\aurora.inf";
constexpr char kText[] =
    "; Tarvo Customized Drive\r\n; Customization Code=AB123456\r\n; Customization Comment=Office\r\n"
    "[Version]\r\nSignature=\"$Windows NT$\"\r\nProvider=\"Northlight\"\r\nClass=Printer\r\nCatalogFile=a.cat\r\n"
    "[OEM URLS]\r\nA=\"http://northlight.example\"\r\n[Manufacturer]\r\nM=M\r\n[M]\r\n\"Laser\"=I\r\n";

struct Operation {
    const char* name;
    std::function<DWORD(const PI_KEL_Interface&)> call;
    DWORD prefix;
};

DWORD Place(const PI_KEL_Interface& table, DWORD flag) {
    return table.PI_KEL_InfFileCopy(kSource, 3, 5, 1, "C:\\Infs", "Northlight", "Printer", flag);
}

const Operation kOperations[] = {
    {"plain copy", [](const PI_KEL_Interface& table) { return Place(table, 1); }, 0x901b0000},
    {"system's copy", [](const PI_KEL_Interface& table) { return Place(table, 0); }, 0x901b0000},
    {"installed INF",
     [](const PI_KEL_Interface& table) {
         char name[MAX_PATH] = {};
         return table.PI_KEL_GetInstalledInfName("Laser", 3, 5, 1, "C:\\Held\\", "Northlight", "Printer", name,
                                                 sizeof name);
     },
     0x90130000},
    {"installed INF of the system's folder",
     [](const PI_KEL_Interface& table) {
         char name[MAX_PATH] = {};
         return table.PI_KEL_GetInstalledInfName("Laser", 3, 5, 1, nullptr, "Northlight", "Printer", name, sizeof name);
     },
     0x90130000},
    {"customisation",
     [](const PI_KEL_Interface& table) {
         DWORD customized = 0;
         char code[20] = {};
         char comment[75] = {};
         return table.PI_KEL_GetCustomizeInfo(kSource, &customized, code, comment);
     },
     0x90010000},
    {"system",
     [](const PI_KEL_Interface& table) {
         DWORD os = 0;
         return table.PI_KEL_GetInfOsVersion(kSource, &os);
     },
     0x90010000},
    {"catalog",
     [](const PI_KEL_Interface& table) {
         DWORD exists = 0;
         char name[64] = {};
         return table.PI_KEL_GetCATFileInfo(kSource, &exists, name);
     },
     0x90010000},
};

class InfFailures : public EverySystemTest {
  protected:
    InfFailures() {
        WriteFileOn(Machine(), kSource, kText);
        // Another text with another model, so that the checks walk it and the copy is done all the same.
        std::string held = kText;
        held.replace(held.find("\"Laser\""), 7, "\"Ink\"");
        WriteFileOn(Machine(), "C:\\Infs\\held.inf", held);
        WriteFileOn(Machine(), "C:\\Held\\held.inf", kText);
        WriteFileOn(Machine(), Machine().System().windowsDirectory + "\\inf\\own.inf", kText);
        GetOsRoute();
    }
    void TakeAwayWhatWasPlaced() {
        simulated::Files& files = Machine().Files();
        for (const char* folder : {"C:\\Infs\\", "C:\\Infs\\Other\\"}) {
            for (const simulated::FileEntry& entry : files.List(folder)) {
                if (entry.name != "held.inf") {
                    files.Delete(folder + entry.name);
                }
            }
        }
        files.RemoveFolder("C:\\Infs\\Other");
        files.Delete(Machine().System().windowsDirectory + "\\inf\\oem0.inf");
    }
};

TEST_P(InfFailures, LeaveNothingOpen) {
    const PI_KEL_Interface& table = *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
    for (const Operation& operation : kOperations) {
        SCOPED_TRACE(operation.name);
        const std::size_t before = faults::CallCount();
        EXPECT_EQ(operation.call(table), 0u);
        const std::size_t count = faults::CallCount() - before;
        EXPECT_GT(count, 0u);
        for (bool persistent : {false, true}) {
            for (std::size_t nth = 1; nth <= count; ++nth) {
                TakeAwayWhatWasPlaced();
                faults::Reset();
                faults::FailNth(nth, kInjected, persistent);
                const DWORD status = operation.call(table);
                const std::string failed = faults::LastFailed();
                faults::Reset();
                EXPECT_TRUE(status == 0 || (status & operation.prefix) == operation.prefix)
                    << std::hex << status << ' ' << failed;
                EXPECT_EQ(Machine().Handles().OpenCount(), 0u) << nth << ' ' << failed;
                EXPECT_EQ(Machine().Heap().OpenCount(), 0u) << nth << ' ' << failed;
            }
        }
        TakeAwayWhatWasPlaced();
    }
}

INSTANTIATE_ON_EVERY_SYSTEM(InfFailures);

}  // namespace
}  // namespace pikel
