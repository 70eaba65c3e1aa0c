// What the tool says when something didn't work: which operation, the code with its Windows name and text, what to try.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace pikel::cli {

/// An operation of the table that returned a failure.
class OperationFailed : public std::runtime_error {
  public:
    /// @param operation  its name in the table
    /// @param status     what it returned
    /// @param prefix     the operation's prefix, which is taken off again to find the system's code
    OperationFailed(std::string_view operation, DWORD status, DWORD prefix);

    const std::string& Operation() const { return m_operation; }
    DWORD Status() const { return m_status; }
    DWORD Code() const { return m_code; }

  private:
    std::string m_operation;
    DWORD m_status;
    DWORD m_code;
};

/// Something that the tool itself can't do: a file that isn't there, a library that can't be loaded.
class ToolError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// "ERROR_ACCESS_DENIED", or "unknown error".
std::string ErrorName(DWORD code);
/// The system's text without its line break.
std::string ErrorText(DWORD code);
/// What a person can try; empty where there is nothing better than the text.
std::string ErrorHint(std::string_view operation, DWORD code);

}  // namespace pikel::cli
