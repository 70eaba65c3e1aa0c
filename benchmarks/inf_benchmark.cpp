// Opening an INF and listing its models through the operations table, as the model list of an INF is read: the time per
// model has to stay flat.
#include <benchmark/benchmark.h>

#include <string>

#include "platform/owned.h"
#include "machine/inf/file.h"
#include "support.h"

namespace pikel {
namespace {

using benchmarks::FreshMachine;
using benchmarks::MakeInf;

/// The road of a model list: every key is asked for its size, then read into a heap block.
std::size_t ListModels(const char* path) {
    const PlatformTable& platform = Platform();
    InfHandle inf(platform.SetupOpenInfFileA(path, nullptr, INF_STYLE_WIN4, nullptr));
    INFCONTEXT context{};
    std::size_t count = 0;
    if (!platform.SetupFindFirstLineA(inf.Get(), "Models", nullptr, &context)) {
        return 0;
    }
    do {
        DWORD size = 0;
        platform.SetupGetStringFieldA(&context, 0, nullptr, 0, &size);
        HeapBlock block = AllocateHeap(size);
        platform.SetupGetStringFieldA(&context, 0, static_cast<char*>(block.Get()), size, nullptr);
        benchmark::DoNotOptimize(block.Get());
        ++count;
    } while (platform.SetupFindNextLine(&context, &context));
    return count;
}

void Report(benchmark::State& state, std::size_t bytes) {
    const auto models = static_cast<double>(state.range(0));
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
    state.counters["per_model"] =
        benchmark::Counter(models, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void OpenAndList(benchmark::State& state) {
    FreshMachine machine;
    const std::string text = MakeInf(state.range(0));
    machine->Files().Write("C:\\driver\\test.inf", text);
    for (auto _ : state) {
        if (ListModels("C:\\driver\\test.inf") != static_cast<std::size_t>(state.range(0))) {
            state.SkipWithError("models are missing");
        }
    }
    Report(state, text.size());
}
BENCHMARK(OpenAndList)->Arg(100)->Arg(1000)->Arg(10000)->Arg(50000)->Unit(benchmark::kMillisecond);

void ParseAlone(benchmark::State& state) {
    const std::string text = MakeInf(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(simulated::InfFile::Parse(text, 1252));
    }
    Report(state, text.size());
}
BENCHMARK(ParseAlone)->Arg(0)->Arg(100)->Arg(10000)->Arg(50000)->Unit(benchmark::kMillisecond);

/// Every model's install section is read: four keys each.
void ReadEverySection(benchmark::State& state) {
    FreshMachine machine;
    const std::string text = MakeInf(state.range(0));
    machine->Files().Write("C:\\driver\\test.inf", text);
    const PlatformTable& platform = Platform();
    for (auto _ : state) {
        InfHandle inf(platform.SetupOpenInfFileA("C:\\driver\\test.inf", nullptr, INF_STYLE_WIN4, nullptr));
        char buffer[256];
        for (std::int64_t model = 0; model < state.range(0); ++model) {
            const std::string section = "Install_" + std::to_string(model);
            for (const char* key : {"CopyFiles", "DataFile", "DataSection", "RetryTimeout"}) {
                platform.SetupGetLineTextA(nullptr, inf.Get(), section.c_str(), key, buffer, sizeof buffer, nullptr);
            }
        }
    }
    Report(state, text.size());
}
BENCHMARK(ReadEverySection)->Arg(100)->Arg(10000)->Arg(50000)->Unit(benchmark::kMillisecond);

/// Every model is looked up by its name.
void FindEveryModel(benchmark::State& state) {
    FreshMachine machine;
    const std::string text = MakeInf(state.range(0));
    machine->Files().Write("C:\\driver\\test.inf", text);
    const PlatformTable& platform = Platform();
    for (auto _ : state) {
        InfHandle inf(platform.SetupOpenInfFileA("C:\\driver\\test.inf", nullptr, INF_STYLE_WIN4, nullptr));
        INFCONTEXT context{};
        for (std::int64_t model = 0; model < state.range(0); ++model) {
            const std::string name = "AURORA " + std::to_string(model) + " pcl";
            if (!platform.SetupFindFirstLineA(inf.Get(), "models", name.c_str(), &context)) {
                state.SkipWithError("a model is missing");
            }
        }
    }
    Report(state, text.size());
}
BENCHMARK(FindEveryModel)->Arg(100)->Arg(10000)->Arg(50000)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace pikel
