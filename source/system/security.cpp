// The administrator test, and the security descriptors of printers.
#include "system/security.h"

#include <stddef.h>

#include <algorithm>
#include <string>

#include "frame/log.h"
#include "frame/os_identity.h"
#include "spooler/printer_data.h"
#include "spooler/spooler_read.h"

namespace pikel {

namespace {

// ---- administrators -------------------------------------------------------------------------------------------------

/// Makes the SID of the local Administrators group; empty on failure.
OwnedSid AdministratorsSid() {
    SID_IDENTIFIER_AUTHORITY authority = SECURITY_NT_AUTHORITY;
    PSID pSid = nullptr;
    if (!Platform().AllocateAndInitializeSid(&authority, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0,
                                             0, 0, 0, 0, &pSid)) {
        return OwnedSid();
    }
    return OwnedSid(pSid);
}

/// Groups in a block of that size, never more than have room in it.
DWORD CountGroups(const TOKEN_GROUPS& groups, DWORD cbGroups) {
    if (cbGroups < offsetof(TOKEN_GROUPS, Groups)) {
        return 0;
    }
    const DWORD dwRoom = static_cast<DWORD>((cbGroups - offsetof(TOKEN_GROUPS, Groups)) / sizeof(SID_AND_ATTRIBUTES));
    return std::min(static_cast<DWORD>(groups.GroupCount), dwRoom);
}

/// Looks for the Administrators group in a token.
/// @param cbGroups  size that the token reported for its groups
/// @return 1 when it is there; 0 when it isn't, and when a step failed
DWORD FindAdministrators(HANDLE hToken, DWORD cbGroups) {
    const HeapBlock block = AllocateHeap(cbGroups);
    DWORD cbRead = 0;
    if (!block || !Platform().GetTokenInformation(hToken, TokenGroups, block.Get(), cbGroups, &cbRead)) {
        return 0;
    }
    const OwnedSid administrators = AdministratorsSid();
    if (!administrators) {
        return 0;
    }
    auto& groups = *static_cast<TOKEN_GROUPS*>(block.Get());
    const DWORD dwCount = CountGroups(groups, std::min(cbRead, cbGroups));
    DWORD dwFound = 0;
    // Attributes don't count: under User Account Control an administrator's group is there to deny alone, and yet the
    // user is one. The walk goes on behind a match.
    for (DWORD i = 0; i < dwCount; ++i) {
        if (Platform().EqualSid(administrators.Get(), groups.Groups[i].Sid)) {
            dwFound = 1;
        }
    }
    return dwFound;
}

}  // namespace

DWORD IsAdministrators() {
    WriteLog("IsAdministrators() - Start");
    HANDLE hToken = nullptr;
    if (!Platform().OpenProcessToken(Platform().GetCurrentProcess(), TOKEN_QUERY, &hToken)) {
        // A system without the call has no rights to give. This end and the next one are silent.
        return Platform().GetLastError() == ERROR_CALL_NOT_IMPLEMENTED ? 1 : 0;
    }
    TokenHandle token(hToken);
    DWORD cbGroups = 0;
    if (!Platform().GetTokenInformation(hToken, TokenGroups, nullptr, 0, &cbGroups) &&
        Platform().GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return 0;
    }
    const DWORD dwResult = FindAdministrators(hToken, cbGroups);
    token.Reset();
    WriteLog("IsAdministrators() - End(%d)", dwResult);
    return dwResult;
}

// ---- descriptors ----------------------------------------------------------------------------------------------------

void StringSD::Reset() {
    m_text.Reset();
    m_bytes.Reset();
    m_dwLength = 0;
}

void StringSD::TakeText(LocalBlock text, DWORD dwLength) {
    Reset();
    m_text = std::move(text);
    m_dwLength = dwLength;
}

void StringSD::TakeBytes(HeapBlock bytes, DWORD dwLength) {
    Reset();
    m_bytes = std::move(bytes);
    m_dwLength = dwLength;
}

namespace {

constexpr char kAdvapi[] = "advapi32.dll";
constexpr char kSecurityValue[] = "Security";

bool IsNt4() {
    return HasOsClass(OsClassNt4);
}

// ---- NT 4: the bytes in the registry --------------------------------------------------------------------------------

std::string PrinterKeyPath(LPCSTR lpszPrinterName) {
    return std::string(kPrintersKey) + '\\' + lpszPrinterName + '\\';
}

/// Every failure leaves sd empty and tells nobody.
void ReadDescriptorNT(LPCSTR lpszPrinterName, StringSD& sd) {
    HKEY hKey = nullptr;
    if (Platform().RegOpenKeyExA(HKEY_LOCAL_MACHINE, PrinterKeyPath(lpszPrinterName).c_str(), 0, KEY_READ, &hKey) !=
        ERROR_SUCCESS) {
        return;
    }
    const RegistryKey key(hKey);
    DWORD cbData = 0;
    if (Platform().RegQueryValueExA(hKey, kSecurityValue, nullptr, nullptr, nullptr, &cbData) != ERROR_SUCCESS) {
        return;
    }
    HeapBlock block = AllocateHeap(cbData);
    if (!block || Platform().RegQueryValueExA(hKey, kSecurityValue, nullptr, nullptr, static_cast<LPBYTE>(block.Get()),
                                              &cbData) != ERROR_SUCCESS) {
        return;
    }
    sd.TakeBytes(std::move(block), cbData);
}

/// Every failure is dropped.
void WriteDescriptorNT(LPCSTR lpszPrinterName, LPCSTR lpszText, DWORD dwLength) {
    HKEY hKey = nullptr;
    if (Platform().RegCreateKeyExA(HKEY_LOCAL_MACHINE, PrinterKeyPath(lpszPrinterName).c_str(), 0, nullptr,
                                   REG_OPTION_NON_VOLATILE, KEY_READ | KEY_WRITE, nullptr, &hKey,
                                   nullptr) != ERROR_SUCCESS) {
        return;
    }
    const RegistryKey key(hKey);
    Platform().RegSetValueExA(hKey, kSecurityValue, 0, REG_BINARY, reinterpret_cast<const BYTE*>(lpszText), dwLength);
}

// ---- later systems: the spooler's descriptor as text ----------------------------------------------------------------

using DescriptorToText = looked_up::ConvertSecurityDescriptorToStringSecurityDescriptorA;
using TextToDescriptor = looked_up::ConvertStringSecurityDescriptorToSecurityDescriptorA;

/// @param block [out]  a PRINTER_INFO_3 with its descriptor
DWORD ReadPrinterDescriptor(LPCSTR lpszPrinterName, HeapBlock& block) {
    PrinterHandle hPrinter;
    const DWORD dwCode = OpenPrinterWithAccess(lpszPrinterName, hPrinter);
    return dwCode == ERROR_SUCCESS ? GetPrinterInfo(hPrinter.Get(), 3, block) : dwCode;
}

DWORD ReadDescriptorText(DescriptorToText pfnConvert, LPCSTR lpszPrinterName, StringSD& sd) {
    HeapBlock block;
    const DWORD dwCode = ReadPrinterDescriptor(lpszPrinterName, block);
    if (dwCode != ERROR_SUCCESS || !block) {
        return dwCode;
    }
    constexpr DWORD kWholeDescriptor =
        OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION | SACL_SECURITY_INFORMATION;
    LPSTR lpszText = nullptr;
    ULONG dwLength = 0;
    if (!pfnConvert(static_cast<const PRINTER_INFO_3*>(block.Get())->pSecurityDescriptor, SDDL_REVISION_1,
                    kWholeDescriptor, &lpszText, &dwLength)) {
        return Platform().GetLastError();
    }
    sd.TakeText(LocalBlock(lpszText), dwLength);
    return ERROR_SUCCESS;
}

DWORD WriteDescriptorText(TextToDescriptor pfnConvert, LPCSTR lpszPrinterName, LPCSTR lpszText) {
    PrinterHandle hPrinter;  // closes behind the release of the descriptor
    PSECURITY_DESCRIPTOR pDescriptor = nullptr;
    if (!pfnConvert(lpszText, SDDL_REVISION_1, &pDescriptor, nullptr)) {
        return Platform().GetLastError();
    }
    const LocalBlock descriptor(pDescriptor);
    const DWORD dwCode = OpenPrinterWithAccess(lpszPrinterName, hPrinter);
    if (dwCode != ERROR_SUCCESS) {
        return dwCode;
    }
    PRINTER_INFO_3 info{pDescriptor};
    return Platform().SetPrinterA(hPrinter.Get(), 3, reinterpret_cast<LPBYTE>(&info), 0) ? DWORD{ERROR_SUCCESS}
                                                                                         : Platform().GetLastError();
}

// ---- the choice between them ----------------------------------------------------------------------------------------

/// What stands between the log lines of GetStringSD. The library is there for its length.
DWORD ReadDescriptor(LPCSTR lpszPrinterName, StringSD& sd) {
    if (lpszPrinterName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    const LookedUp<DescriptorToText> convert(kAdvapi, "ConvertSecurityDescriptorToStringSecurityDescriptorA");
    if (convert) {
        return ReadDescriptorText(convert.Call(), lpszPrinterName, sd);
    }
    if (!convert.IsLoaded() || !IsNt4()) {
        return convert.Status();
    }
    ReadDescriptorNT(lpszPrinterName, sd);
    return ERROR_SUCCESS;
}

/// The same of SetStringSD.
DWORD WriteDescriptor(LPCSTR lpszPrinterName, LPCSTR lpszText, DWORD dwLength) {
    if (lpszPrinterName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    const LookedUp<TextToDescriptor> convert(kAdvapi, "ConvertStringSecurityDescriptorToSecurityDescriptorA");
    if (convert) {
        return WriteDescriptorText(convert.Call(), lpszPrinterName, lpszText);
    }
    if (!convert.IsLoaded() || !IsNt4()) {
        return convert.Status();
    }
    WriteDescriptorNT(lpszPrinterName, lpszText, dwLength);
    return ERROR_SUCCESS;
}

}  // namespace

DWORD GetStringSD(LPCSTR lpszPrinterName, StringSD& sd) {
    WriteLog("GetStringSD() - Start");
    sd.Reset();
    const DWORD dwCode = ReadDescriptor(lpszPrinterName, sd);
    WriteLog("GetStringSD() - End(%d)", dwCode);
    return dwCode;
}

DWORD SetStringSD(LPCSTR lpszPrinterName, LPCSTR lpszText, DWORD dwLength) {
    WriteLog("SetStringSD() - Start");
    const DWORD dwCode = WriteDescriptor(lpszPrinterName, lpszText, dwLength);
    WriteLog("SetStringSD() - End(%d)", dwCode);
    return dwCode;
}

}  // namespace pikel
