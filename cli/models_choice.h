// Why an INF's models section is read for a system, in words: the sections that a line of [Manufacturer] offers and
// what speaks for or against each.
#pragma once

#include <string>
#include <vector>

#include "platform/types.h"

namespace pikel::cli {

struct ModelsCandidate {
    std::string section;
    bool isChosen = false;
    std::string reason;
};

/// The sections of the first line of [Manufacturer], which is the one that counts.
/// @param path   of the INF, on the system at hand
/// @param major, minor  version of the target system
/// @return empty for an INF without such a line
std::vector<ModelsCandidate> ExplainModelsChoice(const std::string& path, DWORD major, DWORD minor);

}  // namespace pikel::cli
