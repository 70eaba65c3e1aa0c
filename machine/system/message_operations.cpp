// FormatMessageA.
#include <cstdarg>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "machine/base/machine.h"
#include "machine/operations.h"
#include "machine/system/message_format.h"
#include "machine/system/messages.h"

namespace pikel::simulated {

namespace {

constexpr DWORD kFromString = 0x400;
constexpr DWORD kFromModule = 0x800;
constexpr DWORD kArgumentArray = 0x2000;
constexpr DWORD kErrorMessageNotFound = 317;
constexpr DWORD kErrorLanguageNotFound = 1815;
// Texts of the program's own and of the Setup API are not in the system's table.
constexpr DWORD kCustomerCode = 0x20000000;

/// Neutral, the user's and the system's default language, and the one that the texts are in.
bool HasLanguage(DWORD language) {
    return language == 0 || language == 0x400 || language == 0x800 || language == 0x409;
}

/// The text before its inserts. Empty: *code tells why.
std::string Source(DWORD flags, LPCVOID source, DWORD id, DWORD language, DWORD* code) {
    if ((flags & kFromString) != 0) {
        return static_cast<const char*>(source);
    }
    if ((flags & FORMAT_MESSAGE_FROM_SYSTEM) == 0) {
        // No module of the machine has a table of messages.
        *code = (flags & kFromModule) != 0 ? kErrorMessageNotFound : static_cast<DWORD>(ERROR_INVALID_PARAMETER);
        return {};
    }
    std::string text = (id & kCustomerCode) == 0 ? MessageText(id) : std::string();
    if (text.empty()) {
        *code = kErrorMessageNotFound;
    } else if (!HasLanguage(language)) {
        *code = kErrorLanguageNotFound;
        text.clear();
    }
    return text;
}

}  // namespace

DWORD WINAPI FormatMessageA(DWORD dwFlags, LPCVOID lpSource, DWORD dwMessageId, DWORD dwLanguageId, LPSTR lpBuffer,
                            DWORD nSize, va_list* Arguments) {
    const bool allocates = (dwFlags & FORMAT_MESSAGE_ALLOCATE_BUFFER) != 0;
    if (lpBuffer == nullptr) {
        return Fail<DWORD>(ERROR_INVALID_PARAMETER, 0);
    }
    if (allocates) {
        *reinterpret_cast<LPSTR*>(lpBuffer) = nullptr;
    }
    DWORD code = ERROR_SUCCESS;
    std::string text = Source(dwFlags, lpSource, dwMessageId, dwLanguageId, &code);
    if (code != ERROR_SUCCESS) {
        return Fail<DWORD>(code, 0);
    }
    if ((dwFlags & FORMAT_MESSAGE_IGNORE_INSERTS) == 0) {
        std::optional<std::string> expanded =
            ExpandMessage(text, MessageInserts((dwFlags & kArgumentArray) != 0, Arguments));
        if (!expanded) {
            return Fail<DWORD>(ERROR_INVALID_PARAMETER, 0);
        }
        text = *std::move(expanded);
    }
    if (!allocates) {
        if (text.size() >= nSize) {
            return Fail<DWORD>(ERROR_INSUFFICIENT_BUFFER, 0);
        }
        std::memcpy(lpBuffer, text.c_str(), text.size() + 1);
        return static_cast<DWORD>(text.size());
    }
    const std::size_t size = text.size() + 1 > nSize ? text.size() + 1 : nSize;
    void* block = Current().Heap().Allocate(BlockKind::Local, size);
    if (block == nullptr) {
        return Fail<DWORD>(ERROR_NOT_ENOUGH_MEMORY, 0);
    }
    std::memcpy(block, text.c_str(), text.size() + 1);
    *reinterpret_cast<LPSTR*>(lpBuffer) = static_cast<LPSTR>(block);
    return static_cast<DWORD>(text.size());
}

}  // namespace pikel::simulated
