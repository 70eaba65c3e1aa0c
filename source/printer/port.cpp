// Creates a network printer port through a port SDK library that the caller names.
#include "printer/port.h"

#include <cstring>
#include <string>
#include <string_view>

#include "frame/log.h"
#include "frame/os_identity.h"
#include "frame/text.h"
#include "platform/owned.h"

namespace pikel {
namespace {

constexpr std::size_t kMaxPortName = 20;
constexpr DWORD kPortCreated = 0x10000;

/// What the SDK is told.
struct PortRequest {
    std::string_view portName;
    LPCSTR lpszMonitor;
    LPCSTR lpszQueue;
    LPCSTR lpszConfiguration;
};

LPCSTR PortMonitorOf(DWORD dwOsClass) {
    if (dwOsClass & OsClass9xFamily) {
        return "Tarvo LPR Port";
    }
    if (dwOsClass & OsClassNtFamily) {
        if (dwOsClass & OsClassNt4) {
            return "LPR Port";
        }
        if (dwOsClass & (OsClassWindows2000 | OsClassXp | OsClassVista)) {
            return "Standard TCP/IP Port";
        }
    }
    return "";
}

LPCSTR PortConfigurationOf(DWORD protocolFlag, INT byteCountFlag) {
    if (protocolFlag == 0) {
        return "porttype=9100";
    }
    return byteCountFlag == 0 ? "" : "bytecount=true";
}

/// Hands the SDK's text on where it fits. A null text is an empty one.
DWORD CopyResult(BSTR text, LPSTR result, DWORD size) {
    const int cchText = static_cast<int>(Platform().SysStringLen(text));
    const int cbText =
        cchText == 0 ? 0 : Platform().WideCharToMultiByte(CP_ACP, 0, text, cchText, nullptr, 0, nullptr, nullptr);
    if (cbText <= 0) {
        return ERROR_SUCCESS;
    }
    HeapBlock narrow = AllocateHeap(static_cast<SIZE_T>(cbText));
    if (!narrow) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    auto* pNarrow = static_cast<LPSTR>(narrow.Get());
    Platform().WideCharToMultiByte(CP_ACP, 0, text, cchText, pNarrow, cbText, nullptr, nullptr);
    std::string_view narrowText(pNarrow, static_cast<std::size_t>(cbText));
    narrowText = narrowText.substr(0, narrowText.find('\0'));
    if (!narrowText.empty()) {
        CopyIfFits(narrowText, result, size);
    }
    return ERROR_SUCCESS;
}

DWORD CallSdk(looked_up::CreatePort pfnCreatePort, const PortRequest& request, LPSTR result, DWORD size) {
    // Freed from the last to the first: monitor, queue, configuration, result.
    OwnedBstr resultText;
    OwnedBstr configuration(ToBstr(request.lpszConfiguration));
    OwnedBstr queue(ToBstr(request.lpszQueue));
    OwnedBstr monitor(ToBstr(request.lpszMonitor));
    if (!monitor || !queue || !configuration) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    char szPortName[kMaxPortName + 1] = {};
    std::memcpy(szPortName, request.portName.data(), request.portName.size());
    const DWORD dwAnswer = pfnCreatePort(monitor.Get(), szPortName, queue.Get(), configuration.Get(), resultText.Out());
    if (dwAnswer != kPortCreated) {
        return ERROR_INTERNAL_ERROR;  // the SDK tells several failures apart, which are one here
    }
    return CopyResult(resultText.Get(), result, size);
}

/// The whole work behind the checks. The library is freed before it returns.
DWORD CreatePortThroughSdk(LPCSTR lpSdkPath, PortRequest request, DWORD protocolFlag, INT byteCountFlag, LPSTR result,
                           DWORD size) {
    WriteLog("lpSdkPath ->(%s)", lpSdkPath);
    LookedUp<looked_up::CreatePort> createPort(lpSdkPath, "CreatePort");
    if (!createPort) {
        return createPort.Status();
    }
    if (request.lpszQueue != nullptr) {
        WriteLog("lpQueueName ->(%s)", request.lpszQueue);
    } else {
        request.lpszQueue = "";
    }
    request.lpszMonitor = PortMonitorOf(GetOsIdentity().osClass);
    WriteLog("PortMonitor ->(%s)", request.lpszMonitor);
    request.lpszConfiguration = PortConfigurationOf(protocolFlag, byteCountFlag);
    WriteLog("CnfigStr ->(%s)", request.lpszConfiguration);
    return CallSdk(createPort.Call(), request, result, size);
}

}  // namespace

DWORD PI_CreatePort(LPCSTR lpSdkPath, LPCSTR portName, DWORD protocolFlag, LPCSTR lpQueueName, INT byteCountFlag,
                    LPSTR result, DWORD size) {
    if (lpSdkPath == nullptr || portName == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    WriteLog("PI_CreatePort(%s) Start", portName);
    const PortRequest request{portName, "", lpQueueName, ""};
    DWORD dwCode = ERROR_INVALID_PARAMETER;
    if (request.portName.size() <= kMaxPortName) {
        dwCode = CreatePortThroughSdk(lpSdkPath, request, protocolFlag, byteCountFlag, result, size);
    }
    WriteLog("PI_CreatePort End(%d)", dwCode);
    return dwCode;
}

}  // namespace pikel
