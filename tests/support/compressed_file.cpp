#include "support/compressed_file.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace pikel::testing_support {

namespace fs = std::filesystem;

std::string MakeSzdd(const std::string& bytes) {
    std::string file("SZDD\x88\xF0\x27\x33\x41", 9);
    file.push_back('\0');
    for (int shift = 0; shift < 32; shift += 8) {
        file.push_back(static_cast<char>(bytes.size() >> shift & 0xFF));
    }
    // A byte of flags ahead of eight items; all of them literal bytes.
    for (std::size_t at = 0; at < bytes.size(); at += 8) {
        file.push_back('\xFF');
        file += bytes.substr(at, 8);
    }
    return file;
}

std::string MakeCabinet(const std::vector<std::pair<std::string, std::string>>& files) {
    std::string pattern = (fs::temp_directory_path() / "pikel-cabinet-XXXXXX").string();
    const fs::path folder = mkdtemp(pattern.data());
    std::string command = "cd '" + folder.string() + "' && gcab -c -z out.cab";
    for (const auto& [name, bytes] : files) {
        fs::create_directories((folder / name).parent_path());
        std::ofstream(folder / name, std::ios::binary) << bytes;
        command += " '" + name + "'";
    }
    EXPECT_EQ(std::system((command + " >/dev/null").c_str()), 0) << command;
    std::ifstream file(folder / "out.cab", std::ios::binary);
    std::string cabinet{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    fs::remove_all(folder);
    return cabinet;
}

}  // namespace pikel::testing_support
