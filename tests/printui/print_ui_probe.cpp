#include "print_ui_probe.h"

#include <cstdio>

namespace pikel::testing_support {

namespace {

template <class Character>
void Record(const char* form, HWND window, HINSTANCE module, const Character* commandLine, int show) {
    EntryCall call{form, window, module, {}, show};
    for (; *commandLine != 0; ++commandLine) {
        call.commandLine += static_cast<char>(*commandLine);
    }
    g_entries.calls.push_back(std::move(call));
    const std::size_t index = g_entries.calls.size() - 1;
    const std::optional<DWORD> outcome = index < g_entries.outcomes.size() ? g_entries.outcomes[index] : 0;
    if (outcome) {
        simulated::lastError = *outcome;
    }
    Platform().GetACP();
}

void WINAPI RecordWide(HWND window, HINSTANCE module, LPWSTR commandLine, int show) {
    Record("W", window, module, commandLine, show);
}

void WINAPI RecordNarrow(HWND window, HINSTANCE module, LPSTR commandLine, int show) {
    Record("A", window, module, commandLine, show);
}

}  // namespace

EntryRecord g_entries;

FARPROC WideEntry() {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&RecordWide));
}

FARPROC NarrowEntry() {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&RecordNarrow));
}

PrintUIProbe::PrintUIProbe(TestMachine& test, Exports exports) {
    g_entries = {};
    test->Modules().Register(test->System().systemDirectory + "\\printui.dll", std::move(exports));
}

std::vector<std::string> PrintUIProbe::TakeCommands() {
    std::vector<std::string> commands;
    for (const EntryCall& call : g_entries.calls) {
        commands.push_back(call.commandLine);
    }
    g_entries = {};
    return commands;
}

std::string HexLine(const std::string& text, DWORD code) {
    char number[16];
    std::snprintf(number, sizeof number, "(0x%08x)", static_cast<unsigned>(code));
    return text + number;
}

std::vector<std::string> RunLines(const std::string& command, DWORD code) {
    return {"DoRunPrintUI(" + command + ") Start", "CRunDll32::CallEntry(PrintUIEntry," + command + ") Start",
            "CRunDll32::CallEntry() End  res = " + std::to_string(code),
            "DoRunPrintUI End(" + std::to_string(code) + ")"};
}

std::vector<std::string> ConversionLines(int count, DWORD code) {
    std::vector<std::string> lines;
    for (int i = 0; i < count; ++i) {
        lines.push_back("ConvertPrintUICommandString Start");
        lines.push_back(HexLine("ConvertPrintUICommandString End", code));
    }
    return lines;
}

std::vector<std::string> Lines(const std::vector<std::vector<std::string>>& parts) {
    std::vector<std::string> lines;
    for (const std::vector<std::string>& part : parts) {
        lines.insert(lines.end(), part.begin(), part.end());
    }
    return lines;
}

}  // namespace pikel::testing_support
