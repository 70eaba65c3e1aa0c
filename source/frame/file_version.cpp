// Versions of driver files: the version resource's text, cut to two numbers.
#include "frame/file_version.h"

#include <cstdio>
#include <string>
#include <string_view>

#include "frame/log.h"
#include "frame/number.h"
#include "frame/string_list.h"
#include "frame/text.h"
#include "platform/owned.h"

namespace pikel {

namespace {

/// First element of "\VarFileInfo\Translation" (verrsrc.h, VERSIONINFO resource).
struct Translation {
    WORD wLanguage;
    WORD wCodePage;
};

/// Reads the version resource of a file as one block.
DWORD ReadVersionBlock(LPCSTR lpszFilePath, HeapBlock& block) {
    DWORD dwIgnored = 0;
    const DWORD dwSize = Platform().GetFileVersionInfoSizeA(lpszFilePath, &dwIgnored);
    if (dwSize == 0) {
        return Platform().GetLastError();
    }
    block = AllocateHeap(dwSize);
    if (!block) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    return Platform().GetFileVersionInfoA(lpszFilePath, 0, dwSize, block.Get()) ? 0 : Platform().GetLastError();
}

/// The value of a text in a version block; empty where there is none. nLength counts the NUL, and a value that lacks it
/// ends with its length.
std::string_view QueryText(const HeapBlock& block, LPCSTR lpszQuery) {
    LPVOID pText = nullptr;
    UINT nLength = 0;
    Platform().VerQueryValueA(block.Get(), lpszQuery, &pText, &nLength);
    if (pText == nullptr) {
        return {};
    }
    const std::string_view text(static_cast<LPCSTR>(pText), nLength);
    return text.substr(0, text.find('\0'));
}

DWORD ReadVersionText(LPCSTR lpszFilePath, LPSTR lpszText, DWORD dwSize, LPCSTR lpszValue) {
    HeapBlock block;
    const DWORD dwStatus = ReadVersionBlock(lpszFilePath, block);
    if (dwStatus != 0) {
        return dwStatus;
    }
    LPVOID pTranslation = nullptr;
    UINT nLength = 0;
    if (!Platform().VerQueryValueA(block.Get(), "\\VarFileInfo\\Translation", &pTranslation, &nLength)) {
        return ERROR_INTERNAL_ERROR;
    }
    if (nLength < sizeof(Translation) || pTranslation == nullptr) {
        return 0;  // no text then, and no failure either
    }
    const auto* pFirst = static_cast<const Translation*>(pTranslation);
    char szQuery[64];
    std::snprintf(szQuery, sizeof szQuery, "\\StringFileInfo\\%04x%04x\\%s", pFirst->wLanguage, pFirst->wCodePage,
                  lpszValue);
    // Whether the value is there isn't looked at: a missing one counts as an empty text.
    return CopyIfFits(QueryText(block, szQuery), lpszText, dwSize) ? 0 : static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER);
}

/// Reads a text of a file's version resource as it stands there.
/// @param lpszValue  "FileVersion" or "ProductVersion"
DWORD GetFileVersionHelper(LPCSTR lpszFilePath, LPSTR lpszText, DWORD dwSize, LPCSTR lpszValue) {
    if (lpszFilePath == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("GetFileVersionHelper() - Start");
    const DWORD dwStatus = ReadVersionText(lpszFilePath, lpszText, dwSize, lpszValue);
    WriteLogDetail("GetFileVersionHelper() - End:%d", dwStatus);
    return dwStatus;
}

struct TwoNumbers {
    INT nMajor = 0;
    INT nMinor = 0;

    /// For comparing; both parts are cut to 16 bits.
    DWORD Packed() const { return (static_cast<DWORD>(nMajor) & 0xFFFF) << 16 | (static_cast<DWORD>(nMinor) & 0xFFFF); }
};

TwoNumbers SplitVersion(LPCSTR lpszText) {
    const StringList parts(lpszText, '.');
    TwoNumbers numbers;
    if (parts.size() > 0) {
        numbers.nMajor = ParseNumberClamped(parts[0].c_str());
    }
    if (parts.size() > 1) {
        numbers.nMinor = ParseNumberClamped(parts[1].c_str());
    }
    return numbers;
}

DWORD GetVersionText(LPCSTR lpszFilePath, LPSTR lpszText, DWORD dwSize, LPCSTR lpszValue) {
    char szWhole[kVersionTextSize] = {};
    const DWORD dwStatus = GetFileVersionHelper(lpszFilePath, szWhole, sizeof szWhole, lpszValue);
    if (dwStatus != 0) {
        return dwStatus;
    }
    const TwoNumbers numbers = SplitVersion(szWhole);
    char szVersion[32];
    std::snprintf(szVersion, sizeof szVersion, "%d.%02d", numbers.nMajor, numbers.nMinor);
    WriteLogDetail("FileName:(%s) -> Version:(%s)", lpszFilePath, szVersion);
    CopyIfFits(szVersion, lpszText, dwSize);  // a text that doesn't fit is no failure
    return 0;
}

DWORD CheckVersion(LPCSTR lpszFilePath, LPCSTR lpszVersionText, LPSTR lpszText, DWORD dwSize) {
    char szVersion[kVersionTextSize] = {};
    if (DoGetDriverFileVersion(lpszFilePath, szVersion, sizeof szVersion) != 0) {
        return FileVersionLowerOrUnreadable;
    }
    CopyIfFits(szVersion, lpszText, dwSize);
    const DWORD dwFile = SplitVersion(szVersion).Packed();
    const TwoNumbers numbers = SplitVersion(lpszVersionText);
    const DWORD dwGiven = numbers.Packed();
    WriteLogDetail("String:(%s) -> DWORD:(%d.%d)(%08x)", lpszVersionText, numbers.nMajor, numbers.nMinor, dwGiven);
    if (dwFile == dwGiven) {
        WriteLogDetail("%s == %s", szVersion, lpszVersionText);
        return FileVersionEqual;
    }
    if (dwFile > dwGiven) {
        WriteLogDetail("%s > %s", szVersion, lpszVersionText);
        return FileVersionHigher;
    }
    WriteLogDetail("%s < %s", szVersion, lpszVersionText);
    return FileVersionLowerOrUnreadable;
}

}  // namespace

DWORD DoGetDriverFileVersion(LPCSTR lpszFilePath, LPSTR lpszText, DWORD dwSize) {
    return DoGetDriverFileVersion(lpszFilePath, lpszText, dwSize, 1);
}

DWORD DoGetDriverFileVersion(LPCSTR lpszFilePath, LPSTR lpszText, DWORD dwSize, DWORD dwWhich) {
    if (lpszFilePath == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("DoGetDriverFileVersion() - Start");
    const DWORD dwStatus =
        GetVersionText(lpszFilePath, lpszText, dwSize, dwWhich == 0 ? "FileVersion" : "ProductVersion");
    WriteLogDetail("DoGetDriverFileVersion() - End:%d", dwStatus);
    return dwStatus;
}

DWORD DoCheckDriverFileVersion(LPCSTR lpszFilePath, LPCSTR lpszVersionText, LPSTR lpszText, DWORD dwSize) {
    if (lpszFilePath == nullptr || lpszVersionText == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLogDetail("DoCheckDriverFileVersion() - Start");
    const DWORD dwVerdict = CheckVersion(lpszFilePath, lpszVersionText, lpszText, dwSize);
    WriteLogDetail("DoCheckDriverFileVersion() - End:%d", dwVerdict);
    return dwVerdict;
}

}  // namespace pikel
