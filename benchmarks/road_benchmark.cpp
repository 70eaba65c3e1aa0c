// The table's operations as an installer calls them: reading an INF's models and one model's record, the whole road
// from an INF to a default printer on a machine, and a log call while the log is off.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "frame/log.h"
#include "frame/pikel.h"
#include "inf_store/inf_search.h"
#include "support.h"

namespace pikel {
namespace {

using benchmarks::FreshMachine;
using benchmarks::MakeInf;

const PI_KEL_Interface& Table() {
    return *PI_KEL_GetInterface(PIKEL_INTERFACE_VERSION);
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
    const std::string model = benchmarks::ModelName(state.range(0) / 2);
    for (auto _ : state) {
        DriverAddRecord* record = nullptr;
        if (Table().PI_KEL_GetInfInfo(kInf, model.c_str(), 3, 5, 1, &record) != 0) {
            state.SkipWithError("no record");
        }
        Table().PI_KEL_FreeMemory(record);
    }
}
BENCHMARK(BuildOneRecord)->Arg(1)->Arg(100)->Arg(10000)->Unit(benchmark::kMicrosecond);

/// The room that the files of all models take.
void SizeOfAllModels(benchmark::State& state) {
    FreshMachine machine;
    machine->Files().Write(kInf, MakeInf(state.range(0)));
    std::string models;
    for (std::int64_t model = 0; model < state.range(0); ++model) {
        models += benchmarks::ModelName(model) + '\0';
    }
    models += '\0';
    for (auto _ : state) {
        DWORD total = 0;
        DWORD shared = 0;
        if (Table().PI_KEL_GetCopyDriverFilesSize(kInf, models.c_str(), &total, &shared, 2, 3, 5, 1) != 0) {
            state.SkipWithError("no sizes");
        }
    }
    state.counters["per_model"] =
        benchmark::Counter(static_cast<double>(state.range(0)),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(SizeOfAllModels)->Arg(100)->Arg(1000)->Arg(5000)->Unit(benchmark::kMillisecond);

/// As many wanted model names against as many held ones, in the opposite order.
void FindNamesAmongNames(benchmark::State& state) {
    FreshMachine machine;
    StringList wanted;
    StringList held;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        wanted.Append(benchmarks::ModelName(i));
        held.Append(benchmarks::ModelName(state.range(0) - 1 - i));
    }
    for (auto _ : state) {
        if (CheckDriverNameFromINF(wanted, held) != 1) {
            state.SkipWithError("a name is missing");
        }
    }
}
BENCHMARK(FindNamesAmongNames)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

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
