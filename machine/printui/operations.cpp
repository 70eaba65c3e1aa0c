// PRINTUI.DLL: its entry, and the string tables of the machine's libraries, of which it alone has one.
#include <cstring>
#include <string>

#include "machine/base/last_error.h"
#include "machine/base/text.h"
#include "machine/modules/modules.h"
#include "machine/operations.h"
#include "machine/printui/print_ui.h"
#include "machine/printui/strings.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kErrorResourceDataNotFound = 1812;
constexpr DWORD kErrorResourceTypeNotFound = 1813;
constexpr DWORD kErrorResourceNameNotFound = 1814;
constexpr char kPrintUI[] = "printui.dll";

/// Success is told as well: the last error is all that a caller of the entry gets.
void RunEntry(Machine& machine, std::u16string_view commandLine) {
    const std::optional<PrintUICommand> command = ParsePrintUICommand(commandLine);
    const DWORD code = command ? RunPrintUICommand(machine, *command) : static_cast<DWORD>(ERROR_INVALID_PARAMETER);
    lastError = code;
}

}  // namespace

void WINAPI PrintUIEntryW(HWND, HINSTANCE, LPWSTR lpCommandLine, int) {
    RunEntry(Current(), lpCommandLine != nullptr ? lpCommandLine : u"");
}

void WINAPI PrintUIEntryA(HWND, HINSTANCE, LPSTR lpCommandLine, int) {
    Machine& machine = Current();
    RunEntry(machine, ToWide(machine.System().codePage, lpCommandLine != nullptr ? lpCommandLine : ""));
}

void WINAPI PrintUIEntry(HWND hWnd, HINSTANCE hInstance, LPSTR lpCommandLine, int nShow) {
    PrintUIEntryA(hWnd, hInstance, lpCommandLine, nShow);
}

int WINAPI LoadStringA(HINSTANCE hInstance, UINT uID, LPSTR lpBuffer, int cchBufferMax) {
    Machine& machine = Current();
    if (lpBuffer == nullptr || cchBufferMax <= 0) {
        return Fail(ERROR_INVALID_PARAMETER, 0);
    }
    const std::string path = machine.Modules().PathOf(hInstance);
    if (path.empty()) {
        return Fail(kErrorResourceDataNotFound, 0);
    }
    if (!EqualNoCase(FileName(path, machine.System().codePage), kPrintUI)) {
        return Fail(kErrorResourceTypeNotFound, 0);
    }
    const std::string_view text = PrintUIString(machine, uID);
    if (text.empty()) {
        return Fail(kErrorResourceNameNotFound, 0);
    }
    const std::string_view fitting = text.substr(0, static_cast<std::size_t>(cchBufferMax) - 1);
    std::memcpy(lpBuffer, fitting.data(), fitting.size());
    lpBuffer[fitting.size()] = '\0';
    return static_cast<int>(fitting.size());
}

}  // namespace pikel::simulated
