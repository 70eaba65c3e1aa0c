// Print UI command lines: any bytes are escaped within their buffer, any text is parsed, and what was escaped comes out
// of the parser as it went in.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/printui/command.h"
#include "printui/run_dll32.h"

namespace {

using namespace pikel;

/// A backslash that the text holds itself may escape what stands behind it.
bool IsPlain(const std::string& text) {
    return text.find('\\') == std::string::npos;
}

void CheckEscaping(const std::string& text) {
    char converted[MAX_PRINTUI_TEXT];
    std::memset(converted, '#', sizeof converted);
    const DWORD code = ConvertPrintUICommandString(text.c_str(), converted, sizeof converted);
    if (text.size() > MAX_PRINTUI_TEXT) {
        if (code != ERROR_INVALID_PARAMETER || converted[0] != '#') {
            std::abort();
        }
        return;
    }
    if (std::memchr(converted, '\0', sizeof converted) == nullptr) {
        std::abort();
    }
    // The machine's code page has a character for nearly every byte, and those come back whole.
    const UINT codePage = simulated::Current().System().codePage;
    bool isReplaced = false;
    const std::u16string wide = simulated::ToWide(codePage, text, &isReplaced);
    if (code != ERROR_SUCCESS || isReplaced || !IsPlain(text)) {
        return;
    }
    const std::optional<simulated::PrintUICommand> command =
        simulated::ParsePrintUICommand(u"/dl /n\"" + simulated::ToWide(codePage, converted) + u"\" /q");
    if (!command || command->name != wide || !command->isQuiet) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const std::string text = bytes.c_str();  // up to its first NUL, as a caller's text
    CheckEscaping(text);
    CheckEscaping(text.substr(0, text.find('\\')));

    const std::u16string line(bytes.begin(), bytes.end());
    const std::optional<simulated::PrintUICommand> command = simulated::ParsePrintUICommand(line);
    // Blanks at the ends mean nothing.
    if (simulated::ParsePrintUICommand(u" " + line + u"\t") != command) {
        std::abort();
    }
    return 0;
}
