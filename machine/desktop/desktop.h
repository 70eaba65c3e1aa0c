// The desktop room: windows and messages. It stands on the ground alone.
//
// Top-level windows, the calling thread's message queue, and the debugger's stream.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace pikel::simulated {

struct SentMessage {
    HWND window = nullptr;
    UINT message = 0;
    WPARAM wParam = 0;
    LPARAM lParam = 0;
    std::string text;  ///< of a WM_SETTEXT
    UINT timeout = 0;
};

/// What the shell was told by SHChangeNotify.
struct ShellChange {
    LONG event = 0;
    UINT flags = 0;
    std::string item1;  ///< texts of paths and printers; empty for null and for items of other kinds
    std::string item2;
};

class Desktop {
  public:
    /// Opens a top-level window with a title.
    HWND OpenWindow(std::string_view title);
    void CloseWindow(HWND window);
    /// The title's case doesn't count. Null when no window bears it; a null title is any window's.
    HWND FindByTitle(const char* title) const;
    bool Has(HWND window) const;

    /// Everything that was taken so far, broadcasts (window 0xFFFF) among it.
    std::vector<SentMessage> sent;
    /// What the shell was told so far.
    std::vector<ShellChange> shellChanges;
    /// What OutputDebugStringA got.
    std::vector<std::string> debugOutput;
    /// The thread's queue: PeekMessageA takes from it, DispatchMessageA appends to `dispatched`.
    std::deque<MSG> queue;
    std::vector<MSG> dispatched;

  private:
    struct Window {
        HWND handle;
        std::string title;
    };
    std::vector<Window> m_windows;
    std::uintptr_t m_next = 0x10000;
};

}  // namespace pikel::simulated
