// Trace shim: a table over another table that tells of every call, with its arguments, its result and the last error.
// Functions found at run time are traced too. One trace exists at a time.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/platform.h"

namespace pikel::trace {

/// One finished call.
struct Call {
    std::string name;
    std::vector<std::string> arguments;  ///< numbers as 0x..., texts in quotes, pointers as "&" or "null"
    std::string result;                  ///< empty for an operation without a result
    DWORD lastError = 0;                 ///< as the call left it
    bool failed = false;

    /// OpenPrinterA("P1", &, null) = 0x1
    std::string Text() const;
    /// One JSON object on one line.
    std::string Json() const;
};

using Sink = std::function<void(const Call&)>;

/// The tracing table over `inner`. GetLastError, SetLastError and the heap calls are passed on without a trace: they
/// would drown the rest.
const PlatformTable& Over(const PlatformTable& inner, Sink sink);

}  // namespace pikel::trace
