// The spooler's calls about printer data.
#include <cstring>

#include "machine/base/last_error.h"
#include "machine/base/text.h"
#include "machine/operations.h"
#include "machine/registry/registry.h"
#include "machine/spooler/handles.h"
#include "machine/spooler/printer_data.h"
#include "machine/spooler/printers.h"
#include "machine/spooler/spooler.h"

namespace pikel::simulated {

namespace {

DWORD SetData(HANDLE handle, std::string_view key, LPCSTR value, DWORD type, LPBYTE data, DWORD size) {
    return CallSpooler(nullptr, [&](Machine& machine) -> DWORD {
        const PrinterCall call = BeginPrinterCall(machine, handle, PRINTER_ACCESS_ADMINISTER);
        if (call.code != ERROR_SUCCESS) {
            return call.code;
        }
        if (data == nullptr && size != 0) {
            return ERROR_INVALID_PARAMETER;
        }
        const std::string_view bytes(reinterpret_cast<const char*>(data), data == nullptr ? 0 : size);
        return PrinterData(machine, call.opened->name).Set(key, TextOf(value), type, bytes);
    });
}

DWORD GetData(HANDLE handle, std::string_view key, LPCSTR value, LPDWORD type, LPBYTE data, DWORD size,
              LPDWORD needed) {
    return CallSpooler(nullptr, [&](Machine& machine) -> DWORD {
        const PrinterCall call = BeginPrinterCall(machine, handle, 0);
        if (call.code != ERROR_SUCCESS) {
            return call.code;
        }
        if (needed == nullptr) {
            return machine.Is9x() ? ERROR_INVALID_PARAMETER : RPC_X_NULL_REF_POINTER;
        }
        *needed = 0;
        if (value == nullptr || key.empty() || (data == nullptr && size != 0)) {
            return ERROR_INVALID_PARAMETER;
        }
        // The data of a shared printer lie on its own computer.
        const bool isLocal = call.opened->kind == OpenedPrinter::Kind::Local;
        const RegistryValue* found = isLocal ? PrinterData(machine, call.opened->name).Get(key, value) : nullptr;
        if (found == nullptr) {
            return ERROR_FILE_NOT_FOUND;
        }
        *needed = static_cast<DWORD>(found->data.size());
        if (type != nullptr) {
            *type = found->type;
        }
        if (*needed > size) {
            return ERROR_MORE_DATA;
        }
        if (!found->data.empty()) {
            std::memcpy(data, found->data.data(), found->data.size());
        }
        return ERROR_SUCCESS;
    });
}

}  // namespace

DWORD WINAPI SetPrinterDataA(HANDLE hPrinter, LPSTR pValueName, DWORD Type, LPBYTE pData, DWORD cbData) {
    return SetData(hPrinter, PrinterData::kDriverData, pValueName, Type, pData, cbData);
}

DWORD WINAPI SetPrinterDataExA(HANDLE hPrinter, LPCSTR pKeyName, LPCSTR pValueName, DWORD Type, LPBYTE pData,
                               DWORD cbData) {
    return SetData(hPrinter, TextOf(pKeyName), pValueName, Type, pData, cbData);
}

DWORD WINAPI GetPrinterDataA(HANDLE hPrinter, LPSTR pValueName, LPDWORD pType, LPBYTE pData, DWORD nSize,
                             LPDWORD pcbNeeded) {
    return GetData(hPrinter, PrinterData::kDriverData, pValueName, pType, pData, nSize, pcbNeeded);
}

DWORD WINAPI GetPrinterDataExA(HANDLE hPrinter, LPCSTR pKeyName, LPCSTR pValueName, LPDWORD pType, LPBYTE pData,
                               DWORD nSize, LPDWORD pcbNeeded) {
    return GetData(hPrinter, TextOf(pKeyName), pValueName, pType, pData, nSize, pcbNeeded);
}

}  // namespace pikel::simulated
