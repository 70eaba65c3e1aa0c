// What the tests of the tool share: runs of the program, machines and samples.
#pragma once

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/machine_test.h"
#include "support/project.h"

namespace pikel::testing_support {
namespace fs = std::filesystem;
using nlohmann::json;

struct Result {
    int exitCode = 0;
    std::string output;  ///< standard output
    std::string errors;  ///< standard error
};

inline std::string ReadHostFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteHostFile(const fs::path& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

/// Every file of a folder with its bytes.
inline std::map<std::string, std::string> Snapshot(const fs::path& folder) {
    std::map<std::string, std::string> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        files[entry.path().lexically_relative(folder).string()] =
            entry.is_regular_file() ? ReadHostFile(entry.path()) : "folder";
    }
    return files;
}

/// The sample package's first model, as a shell takes it.
inline constexpr char kModel[] = "'Aurora Laser 500'";

class ToolTest : public ::testing::Test {
  protected:
    ToolTest() {
        std::string pattern = (fs::temp_directory_path() / "pikel-tool-XXXXXX").string();
        m_folder = mkdtemp(pattern.data());
        unsetenv("PIKEL_MACHINE");
        unsetenv("PIKEL_MEDIUM");
        unsetenv("PIKEL_TRACE");
        // The leak check itself crashes over the thread-local data of a library that was loaded at run time.
        setenv("LSAN_OPTIONS", "use_tls=0:print_suppressions=0", 1);
    }
    ~ToolTest() override { fs::remove_all(m_folder); }

    /// Runs `pikel` with arguments as a shell takes them.
    Result Run(const std::string& arguments) { return RunProgram(testing_support::BinDir() + "/pikel " + arguments); }

    Result RunProgram(const std::string& command) {
        Result result;
        const fs::path errors = m_folder / "errors";
        std::FILE* pipe = popen((command + " 2>" + errors.string()).c_str(), "r");
        std::array<char, 4096> buffer{};
        while (std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe)) {
            result.output.append(buffer.data(), count);
        }
        const int status = pclose(pipe);
        result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        result.errors = ReadHostFile(errors);
        return result;
    }

    /// A command on a machine.
    Result On(const fs::path& machine, const std::string& arguments) {
        return Run("--machine " + machine.string() + " " + arguments);
    }
    /// What a command that has to succeed on a machine answers as JSON.
    json Json(const fs::path& machine, const std::string& arguments) {
        const Result result = On(machine, arguments + " --json");
        EXPECT_EQ(result.exitCode, 0) << arguments << ": " << result.errors;
        return json::parse(result.output, nullptr, false);
    }

    /// A fresh machine's folder.
    fs::path NewMachine(const std::string& system = "xp", const std::string& name = "machine") {
        const fs::path folder = m_folder / name;
        Result result = Run("machine new " + folder.string() + " --system " + system);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        return folder;
    }

    static std::string Sample(const std::string& path) { return testing_support::SourceDir() + "/samples/" + path; }

    fs::path m_folder;
};

}  // namespace pikel::testing_support
