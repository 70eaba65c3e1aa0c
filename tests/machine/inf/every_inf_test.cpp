// Every INF of the samples, and of the folder that PIKEL_EXTRA_INFS names, opens and can be read through, or is refused
// with a code of the Setup API.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "machine/inf/file.h"
#include "support/project.h"

namespace pikel::simulated {
namespace {

namespace fs = std::filesystem;

/// The samples' INFs, and those of the further folder.
std::vector<fs::path> Infs() {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry :
         fs::recursive_directory_iterator(fs::path(testing_support::SourceDir()) / "samples")) {
        if (entry.path().extension() == ".inf") {
            files.push_back(entry.path());
        }
    }
    if (const char* further = std::getenv("PIKEL_EXTRA_INFS")) {
        std::error_code error;
        for (const fs::directory_entry& entry : fs::directory_iterator(further, error)) {
            files.push_back(entry.path());
        }
    }
    std::ranges::sort(files);
    return files;
}

std::string Read(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

TEST(InfFolder, EveryFileOpensAndCanBeReadThrough) {
    const std::vector<fs::path> files = Infs();
    ASSERT_FALSE(files.empty());
    for (const fs::path& path : files) {
        SCOPED_TRACE(path.filename().string());
        InfFile::Error error;
        std::unique_ptr<InfFile> file = InfFile::Parse(Read(path), 1252, &error);
        if (file == nullptr) {
            EXPECT_GE(error.code, DWORD{ERROR_EXPECTED_SECTION_NAME});
            EXPECT_LE(error.code, DWORD{ERROR_GENERAL_SYNTAX});
            EXPECT_NE(error.line, 0u);
            continue;
        }
        EXPECT_NE(file->FindSection("Version"), std::nullopt);
        for (UINT section = 0; section < file->SectionCount(); ++section) {
            EXPECT_EQ(file->FindSection(file->SectionName(section)), section);
            for (UINT line = 0; line < file->LineCount(section); ++line) {
                std::string joined;
                for (UINT index = 1; index <= file->FieldCount(section, line); ++index) {
                    joined += (index == 1 ? "" : ",") + std::string(file->Field(section, line, index).value());
                }
                EXPECT_EQ(file->LineText(section, line), joined);
                if (const auto key = file->Field(section, line, 0)) {
                    EXPECT_LE(file->FindLine(section, std::string(*key)).value(), line);
                }
            }
        }
    }
}

}  // namespace
}  // namespace pikel::simulated
