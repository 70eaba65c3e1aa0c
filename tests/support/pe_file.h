// Program files with a version resource, made byte by byte.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace pikel::testing_support {

struct PeVersion {
    bool is64Bit = false;
    /// Texts of the one language, as name and value.
    std::vector<std::pair<std::string, std::string>> texts = {{"FileVersion", "1.2.3.4"},
                                                              {"ProductVersion", "1.2.3.4"}};
    bool hasTranslation = true;
    bool isTranslationEmpty = false;  ///< the value is there, without a pair in it
    unsigned language = 0x0409;
    unsigned codePage = 0x04B0;
    /// Further pairs of language and code page, without texts.
    std::vector<std::pair<unsigned, unsigned>> otherTranslations{};
    /// The version as numbers, which copies compare: high half and low half.
    std::pair<std::uint32_t, std::uint32_t> fixed{};
};

/// A program file with a version resource.
std::string MakePeFile(const PeVersion& version);
/// The same version for both texts.
std::string MakePeFile(const std::string& version);
/// The resource alone, as it lies in the file.
std::string MakeVersionBlock(const PeVersion& version);

}  // namespace pikel::testing_support
