// Enters colour profiles into the registry of Windows 95:
//
//   ICM\<class>\<manufacturer signature>                          "ManufacturerTag"
//   ICM\<class>\<manufacturer signature>\<model signature>        "ModelTag"
//   that key, or for a printer a quality path below it            "Profile00", "Profile01", ... the paths
#include "colour/profile_registry.h"

#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "colour/profile_data.h"
#include "frame/log.h"
#include "frame/path.h"
#include "frame/text.h"
#include "platform/owned.h"

namespace pikel {

namespace {

constexpr char kIcmKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\ICM";
constexpr char kUnknownManufacturer[] = "Tarvo Inc.";
constexpr char kValuePrefix[] = "Profile";
constexpr std::size_t kValuePrefixLength = sizeof kValuePrefix - 1;
constexpr DWORD kEnumSize = 260;
constexpr DWORD kMonitorValueLimit = 100;
constexpr DWORD kNoLimit = 0;

/// What is known of a profile before it is entered.
struct ProfileData {
    BYTE ident[kProfileIdentSize] = {};
    char szManufacturerText[kProfileTextSize] = {};
    char szModelText[kProfileTextSize] = {};
    char szKind[kProfileKindSize] = {};

    std::string ManufacturerSignature() const { return Signature(4); }
    std::string ModelSignature() const { return Signature(8); }

  private:
    /// Four bytes as text; a NUL among them ends it.
    std::string Signature(std::size_t offset) const {
        char szSignature[5] = {};
        std::memcpy(szSignature, ident + offset, 4);
        return szSignature;
    }
};

/// What differs between the two classes of profiles: the key and the log formats of the failures, each for a code.
struct ProfileClass {
    LPCSTR lpszKind;
    LPCSTR lpszManufacturerTagFailure;
    LPCSTR lpszModelKeyFailure;
    LPCSTR lpszModelTagFailure;
};

constexpr ProfileClass kMonitorClass = {"mntr", "WIToolRegistMntrProfileKey RegSetValueEx Error:%d",
                                        "WIToolRegistMntrProfileKey RegCreateKeyEx-2 Error:%d",
                                        "WIToolRegistMntrProfileKey RegSetValueEx Error:%d"};
constexpr ProfileClass kPrinterClass = {"prtr", "RegSetValueEx-1 Error:%d", "RegCreateKeyEx-3 Error:%d",
                                        "RegSetValueEx-2 Error:%d"};

/// The keys of a profile, closed from the innermost outwards.
struct ProfileKeys {
    RegistryKey classKey;
    RegistryKey manufacturerKey;
    RegistryKey modelKey;

    void Close() {
        modelKey.Reset();
        manufacturerKey.Reset();
        classKey.Reset();
    }
};

LSTATUS CreateKey(HKEY hParent, LPCSTR lpszPath, PHKEY phKey, LPDWORD pdwDisposition = nullptr) {
    return Platform().RegCreateKeyExA(hParent, lpszPath, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, phKey, pdwDisposition);
}

/// Writes a text without its NUL.
LSTATUS SetTextWithoutNul(HKEY hKey, LPCSTR lpszName, std::string_view text) {
    return Platform().RegSetValueExA(hKey, lpszName, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.data()),
                                     static_cast<DWORD>(text.size()));
}

/// Creates the three keys and sets the two tags. On failure the keys are closed again and the failure is logged.
bool OpenProfileKeys(const ProfileClass& profileClass, const ProfileData& data, ProfileKeys& keys) {
    std::string strClassKey = std::string(kIcmKey) + "\\" + profileClass.lpszKind;
    LSTATUS nStatus = CreateKey(HKEY_LOCAL_MACHINE, strClassKey.c_str(), keys.classKey.Out());
    if (nStatus != ERROR_SUCCESS) {
        WriteLogDetail("RegCreateKeyEx-1 Error:%d", nStatus);
        return false;
    }
    nStatus = CreateKey(keys.classKey.Get(), data.ManufacturerSignature().c_str(), keys.manufacturerKey.Out());
    if (nStatus != ERROR_SUCCESS) {
        WriteLogDetail("RegCreateKeyEx-2 Error:%d", nStatus);
        keys.Close();
        return false;
    }
    LPCSTR lpszManufacturer = IsEmpty(data.szManufacturerText) ? kUnknownManufacturer : data.szManufacturerText;
    LPCSTR lpszFailure = profileClass.lpszManufacturerTagFailure;
    nStatus = SetTextWithoutNul(keys.manufacturerKey.Get(), "ManufacturerTag", lpszManufacturer);
    if (nStatus == ERROR_SUCCESS) {
        lpszFailure = profileClass.lpszModelKeyFailure;
        nStatus = CreateKey(keys.manufacturerKey.Get(), data.ModelSignature().c_str(), keys.modelKey.Out());
    }
    if (nStatus == ERROR_SUCCESS) {
        lpszFailure = profileClass.lpszModelTagFailure;
        nStatus = SetTextWithoutNul(keys.modelKey.Get(), "ModelTag", data.szModelText);
    }
    if (nStatus != ERROR_SUCCESS) {
        keys.Close();
        WriteLogDetail(lpszFailure, nStatus);
        return false;
    }
    return true;
}

/// Writes the path under the first name that isn't taken, from Profile00 on.
/// @param dwLimit  how many names are tried; kNoLimit: as many as it takes, with three digits past 99
void AddProfileValue(HKEY hKey, LPCSTR lpszPath, DWORD dwLimit) {
    for (DWORD i = 0; dwLimit == kNoLimit || i < dwLimit; ++i) {
        char szName[kValuePrefixLength + 12];
        std::snprintf(szName, sizeof szName, "%s%02d", kValuePrefix, static_cast<INT>(i));
        if (Platform().RegQueryValueExA(hKey, szName, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
            SetTextWithoutNul(hKey, szName, lpszPath);
            return;
        }
    }
}

/// Where below the model's key a printer profile is entered. The file name's ending tells the quality; a name without
/// such an ending goes into the model's key itself.
LPCSTR QualityPath(LPCSTR lpszPath) {
    if (EqualNoCase(SplitPath(lpszPath).strExtension.c_str(), ".PRF")) {
        return "MediaUnknown\\DitherUnknown\\ResolutionUnknown";
    }
    static constexpr std::size_t kEndingLength = 5;
    std::string strName(BehindLastBackslash(lpszPath));
    if (strName.size() < kEndingLength) {
        return "";
    }
    LPCSTR lpszEnding = strName.c_str() + strName.size() - kEndingLength;
    if (EqualNoCase(lpszEnding, "A.ICC")) {
        return "MediaUnknown\\FE01\\ResolutionUnknown";
    }
    if (EqualNoCase(lpszEnding, "B.ICC")) {
        return "MediaUnknown\\FE05\\ResolutionUnknown";
    }
    return "";
}

/// Enters a printer profile under the key of its quality. A key that is new holds no repeat to look for.
void AddQualityValue(HKEY hModelKey, LPCSTR lpszPath) {
    // Not an owner: this key stays open until the process ends, so that a trace shows one close less than opens.
    HKEY hQualityKey = nullptr;
    DWORD dwDisposition = 0;
    if (CreateKey(hModelKey, QualityPath(lpszPath), &hQualityKey, &dwDisposition) != ERROR_SUCCESS) {
        return;
    }
    if (dwDisposition == REG_OPENED_EXISTING_KEY && IsProfileRegistered(hQualityKey, lpszPath) == 1) {
        return;
    }
    AddProfileValue(hQualityKey, lpszPath, kNoLimit);
}

/// Reads a profile and tells whether it is of a class.
bool ReadProfileOfClass(const ProfileClass& profileClass, LPCSTR lpszPath, ProfileData& data) {
    // What could be read decides: a profile without descriptions is entered too.
    WIToolReadProfileData(lpszPath, data.ident, data.szManufacturerText, data.szModelText, data.szKind);
    WriteLogDetail("WIToolReadProfileData(kind:%s)", data.szKind);
    return EqualNoCase(data.szKind, profileClass.lpszKind);
}

}  // namespace

DWORD IsProfileRegistered(HKEY hKey, LPCSTR lpszPath) {
    for (DWORD i = 0;; ++i) {
        char szName[kEnumSize + 1] = {};  // one more than is handed over: data needs no NUL of its own
        char szData[kEnumSize + 1] = {};
        DWORD dwNameSize = kEnumSize;
        DWORD dwDataSize = kEnumSize;
        if (Platform().RegEnumValueA(hKey, i, szName, &dwNameSize, nullptr, nullptr, reinterpret_cast<LPBYTE>(szData),
                                     &dwDataSize) != ERROR_SUCCESS) {
            return 0;
        }
        std::string_view name(szName);
        if (name.size() == kValuePrefixLength + 2 &&
            EqualNoCase(std::string(name.substr(0, kValuePrefixLength)).c_str(), kValuePrefix) &&
            EqualNoCase(szData, lpszPath)) {
            return 1;
        }
    }
}

void WIToolRegistMntrProfileKey(LPCSTR lpszPath) {
    lpszPath = TextOrEmpty(lpszPath);
    WriteLogDetail("WIToolRegistMntrProfileKey() - Start(%s)", lpszPath);
    ProfileData data;
    ProfileKeys keys;
    if (!ReadProfileOfClass(kMonitorClass, lpszPath, data) || !OpenProfileKeys(kMonitorClass, data, keys)) {
        return;
    }
    if (IsProfileRegistered(keys.modelKey.Get(), lpszPath) == 0) {
        AddProfileValue(keys.modelKey.Get(), lpszPath, kMonitorValueLimit);
    }
    keys.Close();
    WriteLogDetail("WIToolRegistMntrProfileKey() - End");
}

void WIToolRegistPrtrProfileKey(LPCSTR lpszPath) {
    lpszPath = TextOrEmpty(lpszPath);
    WriteLogDetail("WIToolRegistPrtrProfileKey() - Start(%s)", lpszPath);
    ProfileData data;
    ProfileKeys keys;
    if (!ReadProfileOfClass(kPrinterClass, lpszPath, data) || !OpenProfileKeys(kPrinterClass, data, keys)) {
        return;
    }
    AddQualityValue(keys.modelKey.Get(), lpszPath);
    keys.Close();
    WriteLogDetail("WIToolRegistPrtrProfileKey() - End");
}

}  // namespace pikel
