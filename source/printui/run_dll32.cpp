// Calls rundll-style entries of libraries, above all the one of the system's Print UI.
#include "printui/run_dll32.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>

#include "frame/log.h"
#include "frame/text.h"

namespace pikel {

namespace {

constexpr char kPrintUI[] = "PRINTUI.DLL";
constexpr char kPrintUIEntry[] = "PrintUIEntry";

/// A text for the log, where null is told from empty.
LPCSTR Shown(LPCSTR lpszText) {
    return lpszText == nullptr ? "(null)" : lpszText;
}

}  // namespace

// ---- the library ----------------------------------------------------------------------------------------------------

DWORD CRunDll32::Load(LPCSTR lpszModule) {
    if (m_hModule && EqualNoCase(lpszModule, m_szModuleName)) {
        return ERROR_SUCCESS;
    }
    Unload();
    if (std::strlen(lpszModule) >= sizeof m_szModuleName) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    m_hModule.Reset(Platform().LoadLibraryA(lpszModule));
    if (!m_hModule) {
        const DWORD dwCode = Platform().GetLastError();
        m_szModuleName[0] = '\0';
        return dwCode;
    }
    CopyIfFits(lpszModule, m_szModuleName, sizeof m_szModuleName);
    return ERROR_SUCCESS;
}

void CRunDll32::Unload() {
    m_szModuleName[0] = '\0';
    ForgetEntry();
    m_szEntryName[0] = '\0';
    m_hModule.Reset();
}

DWORD CRunDll32::GetResourceStr(DWORD dwId, LPSTR lpszBuffer, DWORD dwSize) {
    WriteLog("CRunDll32::GetResourceStr(%d) Start", dwId);
    DWORD dwCode = ERROR_SUCCESS;
    if (!m_hModule) {
        CopyIfFits("", lpszBuffer, dwSize);
    } else {
        const DWORD dwMost = std::min<DWORD>(dwSize, std::numeric_limits<int>::max());
        if (Platform().LoadStringA(m_hModule.Get(), dwId, lpszBuffer, static_cast<int>(dwMost)) == 0) {
            dwCode = Platform().GetLastError();
        }
    }
    WriteLog("CRunDll32::GetResourceStr() End  res = %d", dwCode);
    return dwCode;
}

// ---- the entry ------------------------------------------------------------------------------------------------------

DWORD CRunDll32::CheckArguments(LPCSTR lpszEntry, LPCSTR lpszCommandLine) const {
    if (!m_hModule || lpszEntry == nullptr || lpszCommandLine == nullptr) {
        WriteLog("NULL check");
        return ERROR_INVALID_PARAMETER;
    }
    if (std::strlen(lpszEntry) > MAX_ENTRY_LENGTH) {
        WriteLog("MAX_ENTRY_LENGTH over");
        return ERROR_INVALID_PARAMETER;
    }
    if (std::strlen(lpszCommandLine) > MAX_COMMANDLINE_LENGTH) {
        WriteLog("MAX_COMMANDLINE_LENGTH over");
        return ERROR_INVALID_PARAMETER;
    }
    return ERROR_SUCCESS;
}

void CRunDll32::ForgetEntry() {
    m_pfnEntryPointW = nullptr;
    m_pfnEntryPointA = nullptr;
    m_nWide = 0;
}

template <class EntryPoint>
EntryPoint CRunDll32::Find(LPCSTR lpszEntry, LPCSTR lpszSuffix) const {
    const std::string strName = std::string(lpszEntry) + lpszSuffix;
    // By way of the one function type that may be cast to any other.
    auto pfnAny = reinterpret_cast<void (*)()>(Platform().GetProcAddress(m_hModule.Get(), strName.c_str()));
    return reinterpret_cast<EntryPoint>(pfnAny);
}

/// @return false when the library has none of the forms; the name held is the last one that was found then, and its
///         pointers are gone
bool CRunDll32::LookUpEntry(LPCSTR lpszEntry) {
    ForgetEntry();
    m_pfnEntryPointW = Find<EntryPointW>(lpszEntry, "W");
    if (m_pfnEntryPointW != nullptr) {
        m_nWide = 1;
    } else {
        m_pfnEntryPointA = Find<EntryPointA>(lpszEntry, "A");
        if (m_pfnEntryPointA == nullptr) {
            m_pfnEntryPointA = Find<EntryPointA>(lpszEntry, "");
        }
        if (m_pfnEntryPointA == nullptr) {
            return false;
        }
    }
    CopyIfFits(lpszEntry, m_szEntryName, sizeof m_szEntryName);
    return true;
}

DWORD CRunDll32::CallWide(HWND hWnd, LPCSTR lpszCommandLine, INT nShow) const {
    if (m_pfnEntryPointW == nullptr) {
        WriteLog("pfnEntryPointW = NULL");
        return ERROR_INVALID_PARAMETER;
    }
    // The system is told of one character less than there is: the longest command line doesn't convert with its NUL,
    // and the one behind the buffer's end closes it. The conversion's result isn't looked at; the last error that it
    // leaves is the call's result where the entry sets none.
    WCHAR wszCommandLine[MAX_COMMANDLINE_LENGTH + 1] = {};
    Platform().MultiByteToWideChar(CP_ACP, 0, lpszCommandLine, -1, wszCommandLine, MAX_COMMANDLINE_LENGTH);
    m_pfnEntryPointW(hWnd, m_hModule.Get(), wszCommandLine, nShow);
    return Platform().GetLastError();  // no call may stand between the entry and this one
}

DWORD CRunDll32::CallNarrow(HWND hWnd, LPCSTR lpszCommandLine, INT nShow) const {
    if (m_pfnEntryPointA == nullptr) {
        WriteLog("pfnEntryPointA = NULL");
        return ERROR_INVALID_PARAMETER;
    }
    char szCommandLine[MAX_COMMANDLINE_LENGTH + 1] = {};
    CopyIfFits(lpszCommandLine, szCommandLine, sizeof szCommandLine);
    m_pfnEntryPointA(hWnd, m_hModule.Get(), szCommandLine, nShow);
    return Platform().GetLastError();  // likewise
}

DWORD CRunDll32::CallHeldEntry(HWND hWnd, LPCSTR lpszEntry, LPCSTR lpszCommandLine, INT nShow) {
    if (!EqualNoCase(lpszEntry, m_szEntryName) && !LookUpEntry(lpszEntry)) {
        WriteLog("pfnEntryPointA = NULL");
        return ERROR_INVALID_PARAMETER;
    }
    return m_nWide != 0 ? CallWide(hWnd, lpszCommandLine, nShow) : CallNarrow(hWnd, lpszCommandLine, nShow);
}

DWORD CRunDll32::CallEntry(HWND hWnd, LPCSTR lpszEntry, LPCSTR lpszCommandLine, INT nShow) {
    WriteLog("CRunDll32::CallEntry(%s,%s) Start", Shown(lpszEntry), Shown(lpszCommandLine));
    DWORD dwCode = CheckArguments(lpszEntry, lpszCommandLine);
    if (dwCode == ERROR_SUCCESS) {
        dwCode = CallHeldEntry(hWnd, lpszEntry, lpszCommandLine, nShow);
    }
    WriteLog("CRunDll32::CallEntry() End  res = %d", dwCode);
    return dwCode;
}

// ---- the Print UI ---------------------------------------------------------------------------------------------------

DWORD DoRunPrintUI(LPCSTR lpszCommandLine) {
    if (lpszCommandLine == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLog("DoRunPrintUI(%s) Start", lpszCommandLine);
    CRunDll32 runDll;
    DWORD dwCode = runDll.Load(kPrintUI);
    if (dwCode == ERROR_SUCCESS) {
        dwCode = runDll.CallEntry(nullptr, kPrintUIEntry, lpszCommandLine, 0);
    }
    runDll.Unload();
    WriteLog("DoRunPrintUI End(%d)", dwCode);
    return dwCode;
}

DWORD DoGetResourceStrFromPrintUI(DWORD dwId, LPSTR lpszBuffer, DWORD dwSize) {
    if (lpszBuffer == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLog("DoGetResourceStrFromPrintUI(%d) Start", dwId);
    CRunDll32 runDll;
    DWORD dwCode = runDll.Load(kPrintUI);
    if (dwCode == ERROR_SUCCESS) {
        dwCode = runDll.GetResourceStr(dwId, lpszBuffer, dwSize);
    }
    runDll.Unload();
    WriteLog("DoGetResourceStrFromPrintUI End(%d)", dwCode);
    return dwCode;
}

}  // namespace pikel
