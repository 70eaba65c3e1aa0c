// The shell's calls: news of changes, known folders.
#include "platform/simulated/desktop.h"
#include "platform/simulated/operations.h"
#include "platform/simulated/spooler.h"

namespace pikel::simulated {

namespace {

// What the items of a change are; the upper bytes of the flags tell when it is told.
constexpr UINT kItemKind = 0xff;
constexpr UINT kPathText = 1;
constexpr UINT kPrinterText = 2;

std::string ItemText(UINT flags, LPCVOID item) {
    const UINT kind = flags & kItemKind;
    return kind == kPathText || kind == kPrinterText ? std::string(TextOf(static_cast<const char*>(item)))
                                                     : std::string();
}

}  // namespace

void WINAPI SHChangeNotify(LONG wEventId, UINT uFlags, LPCVOID dwItem1, LPCVOID dwItem2) {
    Current().Desktop().shellChanges.push_back(
        {wEventId, uFlags, ItemText(uFlags, dwItem1), ItemText(uFlags, dwItem2)});
}

}  // namespace pikel::simulated
