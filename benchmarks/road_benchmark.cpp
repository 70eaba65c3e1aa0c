// The table's operations as an installer calls them: reading an INF's models and one model's record, the whole road
// from an INF to a default printer on a machine, and a log call while the log is off.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <memory>
#include <string>

#include "frame/log.h"
#include "frame/os_identity.h"
#include "frame/pikel.h"
#include "platform/simulated/machine.h"

namespace pikel {
namespace {

namespace fs = std::filesystem;

const PI_KEL_Interface& Table() {
    return *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
}

/// A fresh xp machine in a temporary folder, current as long as it lives.
class FreshMachine {
  public:
    FreshMachine() {
        std::string pattern = (fs::temp_directory_path() / "pikel-benchmark-XXXXXX").string();
        m_folder = mkdtemp(pattern.data());
        m_machine = simulated::Machine::Create(m_folder / "machine", *simulated::FindSystem("xp"));
        simulated::Use(m_machine.get());
        ForgetSystemRecords();
    }
    ~FreshMachine() {
        simulated::Use(nullptr);
        m_machine.reset();
        fs::remove_all(m_folder);
    }
    simulated::Machine* operator->() { return m_machine.get(); }

  private:
    fs::path m_folder;
    std::unique_ptr<simulated::Machine> m_machine;
};

/// An INF of many models with an install section each.
std::string MakeInf(std::int64_t models) {
    std::string text =
        "[Version]\r\nSignature=\"$Windows NT$\"\r\nClass=Printer\r\nProvider=%Maker%\r\nDriverVer=7/3/2004,1.2.3.4\r\n"
        "[Manufacturer]\r\n%Maker%=Models\r\n[Models]\r\n";
    for (std::int64_t model = 0; model < models; ++model) {
        const std::string number = std::to_string(model);
        text += "\"Aurora " + number + "\" = Install_" + number + ",USBPRINT\\AURORA_" + number + "\r\n";
    }
    for (std::int64_t model = 0; model < models; ++model) {
        const std::string number = std::to_string(model);
        text += "[Install_" + number + "]\r\nCopyFiles=@A" + number + ".GPD,Common\r\nDataFile=A" + number +
                ".GPD\r\nDataSection=Data\r\nRetryTimeout=90\r\n";
    }
    return text +
           "[Data]\r\nDriverFile=AURORA.DLL\r\nConfigFile=AURORAUI.DLL\r\nHelpFile=AURORA.HLP\r\n"
           "[Common]\r\nAURORA.DLL\r\nAURORAUI.DLL\r\nAURORA.HLP\r\nRES.DLL\r\n"
           "[DestinationDirs]\r\nDefaultDestDir=66000\r\n[Strings]\r\nMaker=\"Northlight\"\r\n";
}

constexpr char kInf[] = "C:\\package\\test.inf";

void ListThroughTheTable(benchmark::State& state) {
    FreshMachine machine;
    const std::string text = MakeInf(state.range(0));
    machine->Files().Write(kInf, text);
    for (auto _ : state) {
        LPSTR* list = nullptr;
        DWORD count = 0;
        if (Table().PI_KEL_GetDriverListFromInf(kInf, 3, 5, 1, &list, &count) != 0 ||
            static_cast<std::int64_t>(count) != state.range(0)) {
            state.SkipWithError("models are missing");
        }
        Table().PI_KEL_FreeMemory(list);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) * state.iterations());
    state.counters["per_model"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(ListThroughTheTable)->Arg(100)->Arg(1000)->Arg(10000)->Arg(50000)->Unit(benchmark::kMillisecond);

void BuildOneRecord(benchmark::State& state) {
    FreshMachine machine;
    machine->Files().Write(kInf, MakeInf(state.range(0)));
    const std::string model = "Aurora " + std::to_string(state.range(0) / 2);
    for (auto _ : state) {
        DriverAddRecord* record = nullptr;
        if (Table().PI_KEL_GetInfInfo(kInf, model.c_str(), 3, 5, 1, &record) != 0) {
            state.SkipWithError("no record");
        }
        Table().PI_KEL_FreeMemory(record);
    }
}
BENCHMARK(BuildOneRecord)->Arg(1)->Arg(100)->Arg(10000)->Unit(benchmark::kMicrosecond);

UINT CALLBACK GoOn(PVOID, UINT, UINT_PTR, UINT_PTR) {
    return FILEOP_DOIT;
}

/// All steps of the sample package on one machine.
bool DriveTheRoad(const std::string& inf, const char* model) {
    static char printer[] = "Office", port[] = "P1", processor[] = "winprint", datatype[] = "RAW";
    DriverAddRecord* record = nullptr;
    bool done = Table().PI_KEL_GetInfInfo(inf.c_str(), model, 3, 5, 1, &record) == 0;
    done = done && Table().PI_KEL_CopyInfDriverFiles(inf.c_str(), model, &GoOn, 3, 5, 1, nullptr, nullptr) == 0;
    done = done && Table().PI_KEL_AddPrinterDriver(nullptr, nullptr, 0, 0, record, 0) == 0;
    done = done &&
           Table().PI_KEL_CreatePort("C:\\Program Files\\pikel\\portsdk.dll", port, 0, nullptr, 0, nullptr, 0) == 0;
    PrinterRecord added{};
    added.pPrinterName = printer;
    added.pPortName = port;
    added.pDriverName = const_cast<LPSTR>(model);
    added.pPrintProcessor = processor;
    added.pDatatype = datatype;
    done = done && Table().PI_KEL_AddPrinter(&added, nullptr) == 0;
    done = done && Table().PI_KEL_SetDefaultPrinter(printer) == 0;
    Table().PI_KEL_FreeMemory(record);
    return done;
}

void WholeRoad(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto machine = std::make_unique<FreshMachine>();
        (*machine)->Files().InsertMedium(PIKEL_SAMPLES "/xp");
        state.ResumeTiming();
        if (!DriveTheRoad("D:\\aurora.inf", "Aurora Laser 500")) {
            state.SkipWithError("the road ends early");
        }
        state.PauseTiming();
        machine.reset();
        state.ResumeTiming();
    }
}
BENCHMARK(WholeRoad)->Unit(benchmark::kMillisecond);

void LogCallWhileOff(benchmark::State& state) {
    ResetLog();
    int number = 0;
    for (auto _ : state) {
        WriteLog("a line with a number %d", number);
        benchmark::DoNotOptimize(++number);
    }
}
BENCHMARK(LogCallWhileOff);

}  // namespace
}  // namespace pikel
