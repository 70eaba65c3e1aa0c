// The profile calls.
#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "machine/base/machine.h"
#include "machine/base/text.h"
#include "machine/operations.h"
#include "machine/registry/profiles.h"

namespace pikel::simulated {

namespace {

constexpr LPCSTR kWinIni = "win.ini";

/// Copies a text into a buffer, cut to fit with its NUL.
/// @return the length without the NUL
DWORD HandOut(std::string_view text, LPSTR buffer, DWORD size) {
    if (buffer == nullptr || size == 0) {
        return 0;
    }
    DWORD length = static_cast<DWORD>(std::min<std::size_t>(text.size(), size - 1));
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
    return length;
}

/// Copies texts, each with its NUL, and one more NUL.
/// @return the length without the last NUL; the size less 2 when they had to be cut
DWORD HandOutAll(const std::vector<std::string>& texts, LPSTR buffer, DWORD size) {
    if (buffer == nullptr || size == 0) {
        return 0;
    }
    std::string all;
    for (const std::string& text : texts) {
        all += text;
        all += '\0';
    }
    if (all.size() + 1 <= size) {
        std::memcpy(buffer, all.c_str(), all.size() + 1);
        if (all.empty() && size > 1) {
            buffer[1] = '\0';
        }
        return static_cast<DWORD>(all.size());
    }
    DWORD length = size > 2 ? size - 2 : 0;
    std::memcpy(buffer, all.data(), length);
    std::memset(buffer + length, 0, size - length);
    return length;
}

/// A default text loses the blanks at its end.
std::string_view DefaultText(LPCSTR text) {
    std::string_view value = text == nullptr ? "" : text;
    while (value.ends_with(' ')) {
        value.remove_suffix(1);
    }
    return value;
}

DWORD ReadString(LPCSTR section, LPCSTR key, LPCSTR defaultText, LPSTR buffer, DWORD size, LPCSTR file) {
    Profiles profiles(Current());
    DWORD code = ERROR_SUCCESS;
    if (section == nullptr || key == nullptr) {
        auto names = section == nullptr ? profiles.Sections(file, &code) : profiles.Keys(file, section, &code);
        if (names) {
            return HandOutAll(*names, buffer, size);
        }
    } else if (std::optional<std::string> value = profiles.Find(file, section, key, &code)) {
        return HandOut(WithoutQuotes(*value), buffer, size);
    }
    lastError = code;
    return HandOut(DefaultText(defaultText), buffer, size);
}

DWORD WriteString(LPCSTR section, LPCSTR key, LPCSTR text, LPCSTR file) {
    if (section == nullptr) {
        return ERROR_FILE_NOT_FOUND;
    }
    Profiles profiles(Current());
    if (key == nullptr) {
        return profiles.Remove(file, section, std::nullopt);
    }
    return text == nullptr ? profiles.Remove(file, section, key) : profiles.Set(file, section, key, text);
}

}  // namespace

DWORD WINAPI GetPrivateProfileStringA(LPCSTR lpAppName, LPCSTR lpKeyName, LPCSTR lpDefault, LPSTR lpReturnedString,
                                      DWORD nSize, LPCSTR lpFileName) {
    return ReadString(lpAppName, lpKeyName, lpDefault, lpReturnedString, nSize,
                      lpFileName == nullptr ? kWinIni : lpFileName);
}

UINT WINAPI GetPrivateProfileIntA(LPCSTR lpAppName, LPCSTR lpKeyName, INT nDefault, LPCSTR lpFileName) {
    DWORD code = ERROR_SUCCESS;
    std::optional<std::string> value;
    if (lpAppName != nullptr && lpKeyName != nullptr) {
        value = Profiles(Current()).Find(lpFileName == nullptr ? kWinIni : lpFileName, lpAppName, lpKeyName, &code);
    }
    // An entry without a value counts as none.
    std::string_view text = value ? WithoutQuotes(*value) : std::string_view();
    return text.empty() ? static_cast<UINT>(nDefault) : ProfileNumber(text, !Current().Is9x());
}

DWORD WINAPI GetProfileStringA(LPCSTR lpAppName, LPCSTR lpKeyName, LPCSTR lpDefault, LPSTR lpReturnedString,
                               DWORD nSize) {
    return ReadString(lpAppName, lpKeyName, lpDefault, lpReturnedString, nSize, kWinIni);
}

DWORD WINAPI GetPrivateProfileSectionA(LPCSTR lpAppName, LPSTR lpReturnedString, DWORD nSize, LPCSTR lpFileName) {
    DWORD code = ERROR_INVALID_PARAMETER;
    std::optional<std::vector<std::string>> entries;
    if (lpAppName != nullptr) {
        entries = Profiles(Current()).Entries(lpFileName == nullptr ? kWinIni : lpFileName, lpAppName, &code);
    }
    if (!entries) {
        lastError = code;
    }
    return HandOutAll(entries.value_or(std::vector<std::string>()), lpReturnedString, nSize);
}

BOOL WINAPI WritePrivateProfileStringA(LPCSTR lpAppName, LPCSTR lpKeyName, LPCSTR lpString, LPCSTR lpFileName) {
    return Outcome(WriteString(lpAppName, lpKeyName, lpString, lpFileName == nullptr ? kWinIni : lpFileName));
}

BOOL WINAPI WriteProfileStringA(LPCSTR lpAppName, LPCSTR lpKeyName, LPCSTR lpString) {
    return Outcome(WriteString(lpAppName, lpKeyName, lpString, kWinIni));
}

BOOL WINAPI WritePrivateProfileSectionA(LPCSTR lpAppName, LPCSTR lpString, LPCSTR lpFileName) {
    if (lpAppName == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER, FALSE);
    }
    LPCSTR file = lpFileName == nullptr ? kWinIni : lpFileName;
    Profiles profiles(Current());
    if (lpString == nullptr) {
        return Outcome(profiles.Remove(file, lpAppName, std::nullopt));
    }
    return Outcome(profiles.ReplaceSection(file, lpAppName, SplitMultiString(lpString)));
}

}  // namespace pikel::simulated
