// FormatMessageA.
#include <cstdarg>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "machine/system/machine.h"
#include "machine/operations.h"

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

/// The texts that stand for %1, %2 and so on, which come in one of two forms. They are asked for in rising order.
class Inserts {
  public:
    Inserts(bool isArray, va_list* arguments) : m_isArray(isArray), m_arguments(arguments) {}

    /// Null when there is none. Numbers beyond 99 don't exist.
    const char* At(unsigned number) {
        if (m_arguments == nullptr) {
            return nullptr;
        }
        if (m_isArray) {
            return reinterpret_cast<const char* const*>(m_arguments)[number - 1];
        }
        for (; m_taken < number; ++m_taken) {
            m_texts[m_taken] = va_arg(*m_arguments, const char*);
        }
        return m_texts[number - 1];
    }

  private:
    bool m_isArray;
    va_list* m_arguments;
    unsigned m_taken = 0;
    const char* m_texts[99] = {};
};

bool IsDigit(std::string_view text, std::size_t at) {
    return at < text.size() && text[at] >= '0' && text[at] <= '9';
}

/// Puts the inserts in. Nothing when one is missing. "%0" ends the text, "%n" is a line break, "%%" a percent sign; any
/// other character behind a percent sign stands for itself.
std::optional<std::string> Expand(std::string_view text, Inserts inserts) {
    std::string expanded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%' || i + 1 == text.size()) {
            expanded += text[i];
            continue;
        }
        ++i;
        if (text[i] == '0') {
            break;
        }
        if (!IsDigit(text, i)) {
            expanded += text[i] == 'n' ? std::string("\r\n") : std::string(1, text[i]);
            continue;
        }
        unsigned number = static_cast<unsigned>(text[i] - '0');
        if (IsDigit(text, i + 1)) {
            number = number * 10 + static_cast<unsigned>(text[++i] - '0');
        }
        const char* insert = inserts.At(number);
        if (insert == nullptr) {
            return std::nullopt;
        }
        expanded += insert;
    }
    return expanded;
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
        std::optional<std::string> expanded = Expand(text, Inserts((dwFlags & kArgumentArray) != 0, Arguments));
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
