// Opening an INF and listing its models through the operations table, as the model list of an INF is read: the time per
// model has to stay flat.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <memory>
#include <string>

#include "platform/owned.h"
#include "platform/simulated/inf_file.h"
#include "platform/simulated/machine.h"

namespace pikel {
namespace {

namespace fs = std::filesystem;

/// A machine in a temporary folder, current as long as it lives.
class BenchmarkMachine {
  public:
    BenchmarkMachine() {
        std::string pattern = (fs::temp_directory_path() / "pikel-benchmark-XXXXXX").string();
        m_folder = mkdtemp(pattern.data());
        m_machine = simulated::Machine::Create(m_folder / "machine", *simulated::FindSystem("xp"));
        simulated::Use(m_machine.get());
    }
    ~BenchmarkMachine() {
        simulated::Use(nullptr);
        m_machine.reset();
        fs::remove_all(m_folder);
    }

    simulated::Machine* operator->() { return m_machine.get(); }

  private:
    fs::path m_folder;
    std::unique_ptr<simulated::Machine> m_machine;
};

/// An INF with a models section and an install section for each model, in the manner of a printer maker's.
std::string MakeInf(int models) {
    std::string text =
        "; Printer driver\r\n[Version]\r\nSignature=\"$Windows NT$\"\r\nClass=Printer\r\n"
        "ClassGUID={4D36E979-E325-11CE-BFC1-08002BE10318}\r\nProvider=%Maker%\r\nDriverVer=07/03/2004,1.2.3.4\r\n\r\n"
        "[Manufacturer]\r\n%Maker%=Models,NTamd64\r\n\r\n[Models]\r\n";
    for (int model = 0; model < models; ++model) {
        const std::string number = std::to_string(model);
        text += "\"Aurora " + number + " PCL\"\t= Install_" + number + ",USBPRINT\\AURORA_" + number + ",AURORA_" +
                number + "\r\n";
    }
    for (int model = 0; model < models; ++model) {
        const std::string number = std::to_string(model);
        text += "\r\n[Install_" + number + "]\r\nCopyFiles=@A" + number +
                ".GPD,CommonFiles,ColourFiles\r\nDataSection=CommonData\r\nDataFile=A" + number +
                ".GPD\r\n; what the monitor needs\r\nLanguageMonitor=%Monitor%\r\nRetryTimeout=90\r\n";
    }
    text +=
        "\r\n[DestinationDirs]\r\nDefaultDestDir=66000\r\nColourFiles=66003\r\n\r\n[Strings]\r\nMaker=\"Nimbus\"\r\n";
    return text;
}

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
    BenchmarkMachine machine;
    const std::string text = MakeInf(static_cast<int>(state.range(0)));
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
    const std::string text = MakeInf(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(simulated::InfFile::Parse(text, 1252));
    }
    Report(state, text.size());
}
BENCHMARK(ParseAlone)->Arg(0)->Arg(100)->Arg(10000)->Arg(50000)->Unit(benchmark::kMillisecond);

/// Every model's install section is read: four keys each.
void ReadEverySection(benchmark::State& state) {
    BenchmarkMachine machine;
    const std::string text = MakeInf(static_cast<int>(state.range(0)));
    machine->Files().Write("C:\\driver\\test.inf", text);
    const PlatformTable& platform = Platform();
    for (auto _ : state) {
        InfHandle inf(platform.SetupOpenInfFileA("C:\\driver\\test.inf", nullptr, INF_STYLE_WIN4, nullptr));
        char buffer[256];
        for (std::int64_t model = 0; model < state.range(0); ++model) {
            const std::string section = "Install_" + std::to_string(model);
            for (const char* key : {"CopyFiles", "DataFile", "LanguageMonitor", "RetryTimeout"}) {
                platform.SetupGetLineTextA(nullptr, inf.Get(), section.c_str(), key, buffer, sizeof buffer, nullptr);
            }
        }
    }
    Report(state, text.size());
}
BENCHMARK(ReadEverySection)->Arg(100)->Arg(10000)->Arg(50000)->Unit(benchmark::kMillisecond);

/// Every model is looked up by its name.
void FindEveryModel(benchmark::State& state) {
    BenchmarkMachine machine;
    const std::string text = MakeInf(static_cast<int>(state.range(0)));
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
