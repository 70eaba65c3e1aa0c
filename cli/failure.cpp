#include "failure.h"

#include <array>
#include <cstdio>

#include "frame/pikel.h"
#include "platform/owned.h"
#include "machine/system/messages.h"

namespace pikel::cli {

namespace {

/// The system's code in a status: the prefix's bits are taken off where the code can't have had them. A Setup API code
/// has high bits of its own, which the prefix has merged with.
DWORD CodeOf(DWORD status, DWORD prefix) {
    if ((status & 0xE0000000) == 0xE0000000) {
        return 0xE0000000 | (status & 0xFFFF);
    }
    return status & ~prefix;
}

std::string Hex(DWORD number) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", static_cast<unsigned>(number));
    return text;
}

/// What to try, by code; an operation of its own first.
struct Hint {
    std::string_view operation;  ///< empty: any
    DWORD code;
    std::string_view text;
};
constexpr std::array kHints = {
    Hint{"PI_KEL_GetInfInfo", ERROR_INTERNAL_ERROR,
         "the INF has no such model for this system; `pikel inf models FILE` lists those that it has"},
    Hint{"PI_KEL_CreatePort", ERROR_INTERNAL_ERROR,
         "the port SDK refused; is there a port of this name already? `pikel machine show` lists the ports"},
    Hint{"PI_KEL_CreatePort", ERROR_INVALID_PARAMETER, "a port's name has at most 20 characters"},
    Hint{"PI_KEL_CreatePort", ERROR_MOD_NOT_FOUND, "name the port SDK library with --sdk"},
    Hint{"PI_KEL_CopyInfDriverFiles", ERROR_FILE_NOT_FOUND,
         "a file that the INF names isn't beside it; is the package complete?"},
    Hint{"PI_KEL_SetDefaultPrinter", ERROR_FILE_NOT_FOUND, "`pikel printer list` lists the printers"},
    Hint{"PI_KEL_GetResourceStrFromPrintUI", ERROR_MOD_NOT_FOUND, "the Print UI came with Windows 2000"},
    Hint{"PI_KEL_RunPrintUI", ERROR_MOD_NOT_FOUND, "the Print UI came with Windows 2000"},
    Hint{"PI_KEL_RunPrintUI", ERROR_INVALID_PARAMETER, "the Print UI can't read the command line"},
    Hint{"PI_KEL_CreateShortCut", ERROR_INTERNAL_ERROR, "is the Start menu's folder there, and may you write to it?"},
    Hint{"", ERROR_PRINTER_DRIVER_IN_USE, "delete the printers that use the driver first"},
    Hint{"", ERROR_PRINT_MONITOR_IN_USE, "another driver or a port needs the monitor"},
    Hint{"", ERROR_FILE_NOT_FOUND, "check the path"},
    Hint{"", ERROR_PATH_NOT_FOUND, "check the folder"},
    Hint{"", ERROR_ACCESS_DENIED, "run as an administrator"},
    Hint{"", ERROR_SHARING_VIOLATION, "another program holds the file; close it and try again"},
    Hint{"", ERROR_LOCK_VIOLATION, "another program holds the file; close it and try again"},
    Hint{"", ERROR_DISK_FULL, "make room on the system drive"},
    Hint{"", ERROR_CALL_NOT_IMPLEMENTED, "this system has no way to do that"},
    Hint{"", RPC_S_SERVER_UNAVAILABLE, "start the print spooler"},
    Hint{"", ERROR_UNKNOWN_PORT, "create the port first: pikel port create NAME"},
    Hint{"", ERROR_UNKNOWN_PRINTER_DRIVER, "add the driver first: pikel driver add --inf FILE --model MODEL"},
    Hint{"", ERROR_INVALID_PRINTER_NAME, "`pikel printer list` lists the printers"},
    Hint{"", ERROR_PRINTER_ALREADY_EXISTS, "choose another name; `pikel printer list` lists those in use"},
    Hint{"", ERROR_INVALID_ENVIRONMENT, "this system takes no drivers for that processor"},
    Hint{"", ERROR_WRONG_INF_STYLE, "the file is no INF of a kind that the system installs from"},
    Hint{"", ERROR_FILE_INVALID, "the file is empty"},
    Hint{"", ERROR_LINE_NOT_FOUND, "the INF lacks a section that it needs; `pikel inf show FILE` shows what it has"},
    Hint{"", ERROR_EXPECTED_SECTION_NAME, "the file has text before its first section; is it an INF?"},
    Hint{"", ERROR_BAD_SECTION_NAME_LINE, "a section's name in the INF isn't closed with ]"},
};

}  // namespace

OperationFailed::OperationFailed(std::string_view operation, DWORD status, DWORD prefix)
    : std::runtime_error(std::string(operation) + " failed: " + Hex(status)),
      m_operation(operation),
      m_status(status),
      m_code(CodeOf(status, prefix)) {}

std::string ErrorName(DWORD code) {
    std::string_view name = simulated::CodeName(code);
    return name.empty() ? "unknown error" : std::string(name);
}

std::string ErrorText(DWORD code) {
    LPSTR text = nullptr;
    DWORD length = Platform().FormatMessageA(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, code, 0,
        reinterpret_cast<LPSTR>(&text), 0, nullptr);
    LocalBlock block(text);
    if (length == 0) {
        return "the system has no text for this code";
    }
    std::string message(text, length);
    while (!message.empty() && (message.back() == '\r' || message.back() == '\n' || message.back() == ' ')) {
        message.pop_back();
    }
    return message;
}

std::string ErrorHint(std::string_view operation, DWORD code) {
    for (const Hint& hint : kHints) {
        if (hint.code == code && (hint.operation.empty() || hint.operation == operation)) {
            return std::string(hint.text);
        }
    }
    return "";
}

}  // namespace pikel::cli
