// Top-level windows of the machine.
#include "machine/desktop/desktop.h"

#include <algorithm>

#include "machine/base/text.h"

namespace pikel::simulated {

HWND Desktop::OpenWindow(std::string_view title) {
    m_next += 2;
    HWND handle = reinterpret_cast<HWND>(m_next);
    m_windows.push_back({handle, std::string(title)});
    return handle;
}

void Desktop::CloseWindow(HWND window) {
    std::erase_if(m_windows, [&](const Window& open) { return open.handle == window; });
}

HWND Desktop::FindByTitle(const char* title) const {
    auto found = std::find_if(m_windows.begin(), m_windows.end(), [&](const Window& window) {
        return title == nullptr || EqualNoCase(window.title, title);
    });
    return found == m_windows.end() ? nullptr : found->handle;
}

bool Desktop::Has(HWND window) const {
    return std::any_of(m_windows.begin(), m_windows.end(), [&](const Window& open) { return open.handle == window; });
}

}  // namespace pikel::simulated
