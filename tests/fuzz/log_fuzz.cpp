// Log lines: any text of any length makes one bounded line that ends in CR LF.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "frame/log.h"
#include "machine/desktop/desktop.h"
#include "machine/base/machine.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace pikel;
    static const HWND viewer = simulated::Current().Desktop().OpenWindow("WIWatch");
    (void)viewer;
    simulated::Desktop& desktop = simulated::Current().Desktop();
    desktop.sent.clear();
    desktop.debugOutput.clear();
    g_logSettings = {.debugEnabled = true, .logToFile = false, .logToDebugger = true, .logLevel = 2, .logFilePath = ""};
    const std::string text(reinterpret_cast<const char*>(data), size);
    simulated::lastError = 77;
    WriteLog("%s(%d)", text.c_str(), static_cast<int>(size));
    WriteErrorLog(static_cast<DWORD>(size), text.c_str(), 5);
    if (simulated::lastError != 77 || desktop.sent.empty()) {
        std::abort();
    }
    for (const simulated::SentMessage& message : desktop.sent) {
        if (message.text.size() > 1024 || !message.text.ends_with("\r\n")) {
            std::abort();
        }
    }
    return 0;
}
