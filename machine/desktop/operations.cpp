// Windows, messages and the debugger's stream.
#include <algorithm>

#include "machine/base/machine.h"
#include "machine/desktop/desktop.h"
#include "machine/operations.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kInvalidWindowHandle = 1400;

bool IsInFilter(const MSG& message, HWND window, UINT first, UINT last) {
    bool isOfWindow = window == nullptr || message.hwnd == window;
    bool isInRange = (first == 0 && last == 0) || (message.message >= first && message.message <= last);
    return isOfWindow && isInRange;
}

/// Records a message for a window of the machine, or for all of them.
/// @return false, with the last error set, for a window that isn't there
bool Send(const SentMessage& sent) {
    Desktop& desktop = Current().Desktop();
    if (sent.window != HWND_BROADCAST && !desktop.Has(sent.window)) {
        return Fail(kInvalidWindowHandle, false);
    }
    desktop.sent.push_back(sent);
    if (sent.message == WM_SETTEXT) {
        LPCSTR text = reinterpret_cast<LPCSTR>(sent.lParam);
        desktop.sent.back().text = text == nullptr ? "" : text;
    }
    return true;
}

}  // namespace

HWND WINAPI FindWindowA(LPCSTR lpClassName, LPCSTR lpWindowName) {
    // The machine's windows are known by title alone: no class that a program could ask for is registered.
    HWND window = lpClassName == nullptr ? Current().Desktop().FindByTitle(lpWindowName) : nullptr;
    return window != nullptr ? window : Fail<HWND>(ERROR_FILE_NOT_FOUND, nullptr);
}

LRESULT WINAPI SendMessageA(HWND hWnd, UINT Msg, WPARAM wParam, LPARAM lParam) {
    return Send({hWnd, Msg, wParam, lParam, {}, 0}) ? 1 : 0;
}

LRESULT WINAPI SendMessageTimeoutA(HWND hWnd, UINT Msg, WPARAM wParam, LPARAM lParam, UINT /*fuFlags*/, UINT uTimeout,
                                   PDWORD_PTR lpdwResult) {
    if (!Send({hWnd, Msg, wParam, lParam, {}, uTimeout})) {
        return 0;
    }
    if (lpdwResult != nullptr) {
        *lpdwResult = 0;
    }
    return 1;
}

BOOL WINAPI PeekMessageA(LPMSG lpMsg, HWND hWnd, UINT wMsgFilterMin, UINT wMsgFilterMax, UINT wRemoveMsg) {
    auto& queue = Current().Desktop().queue;
    auto found = std::find_if(queue.begin(), queue.end(), [&](const MSG& message) {
        return IsInFilter(message, hWnd, wMsgFilterMin, wMsgFilterMax);
    });
    if (lpMsg == nullptr || found == queue.end()) {
        return FALSE;
    }
    *lpMsg = *found;
    if ((wRemoveMsg & PM_REMOVE) != 0) {
        queue.erase(found);
    }
    return TRUE;
}

BOOL WINAPI TranslateMessage(const MSG* /*lpMsg*/) {
    return FALSE;  // no key messages come from a machine without a keyboard
}

LRESULT WINAPI DispatchMessageA(const MSG* lpMsg) {
    if (lpMsg != nullptr) {
        Current().Desktop().dispatched.push_back(*lpMsg);
    }
    return 0;
}

void WINAPI OutputDebugStringA(LPCSTR lpOutputString) {
    Current().Desktop().debugOutput.emplace_back(lpOutputString == nullptr ? "" : lpOutputString);
}

}  // namespace pikel::simulated
