// Names and texts of the system's codes.
#pragma once

#include <string>
#include <string_view>

#include "platform/types.h"

namespace pikel::simulated {

/// The system's message for a code, CR LF at its end; empty for one that isn't known.
std::string MessageText(DWORD code);
/// "ERROR_FILE_NOT_FOUND"; empty for one that isn't known.
std::string_view CodeName(DWORD code);

}  // namespace pikel::simulated
