// The spooler's calls about printer data, connections and the default printer.
#include <cstring>

#include "machine/operations.h"
#include "machine/spooler/spooler.h"
#include "machine/spooler/connections.h"
#include "machine/spooler/default_printer.h"
#include "machine/spooler/handles.h"
#include "machine/spooler/printer_data.h"
#include "machine/spooler/printers.h"

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

/// The printer that becomes the default when the caller names none: the one that is, or else the first.
DWORD ChooseDefault(Machine& machine) {
    DefaultPrinter current(machine);
    if (!current.Name().empty()) {
        return ERROR_SUCCESS;
    }
    std::vector<Printer> printers = Printers(machine).List();
    if (printers.empty()) {
        printers = Connections(machine).List();
    }
    if (printers.empty()) {
        return ERROR_INVALID_PRINTER_NAME;
    }
    current.Set(printers.front());
    return ERROR_SUCCESS;
}

}  // namespace

// ---- printer data ---------------------------------------------------------------------------------------------------

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

// ---- connections ----------------------------------------------------------------------------------------------------

BOOL WINAPI AddPrinterConnectionA(LPSTR pName) {
    return Outcome(CallSpooler(nullptr, [&](Machine& machine) -> DWORD {
        return machine.Is9x() ? static_cast<DWORD>(ERROR_CALL_NOT_IMPLEMENTED)
                              : Connections(machine).Add(TextOf(pName));
    }));
}

BOOL WINAPI DeletePrinterConnectionA(LPSTR pName) {
    return Outcome(CallSpooler(nullptr, [&](Machine& machine) -> DWORD {
        return machine.Is9x() ? static_cast<DWORD>(ERROR_CALL_NOT_IMPLEMENTED)
                              : Connections(machine).Remove(TextOf(pName));
    }));
}

// ---- default printer ------------------------------------------------------------------------------------------------

BOOL WINAPI GetDefaultPrinterA(LPSTR pszBuffer, LPDWORD pcchBuffer) {
    // The user's settings tell it, so that it works without the spooler.
    if (pcchBuffer == nullptr) {
        return Outcome(ERROR_INVALID_PARAMETER);
    }
    const std::string name = DefaultPrinter(Current()).Name();
    if (name.empty()) {
        return Outcome(ERROR_FILE_NOT_FOUND);
    }
    const DWORD size = static_cast<DWORD>(name.size() + 1);
    const bool fits = pszBuffer != nullptr && *pcchBuffer >= size;
    *pcchBuffer = size;
    if (!fits) {
        return Outcome(ERROR_INSUFFICIENT_BUFFER);
    }
    std::memcpy(pszBuffer, name.c_str(), size);
    return TRUE;
}

BOOL WINAPI SetDefaultPrinterA(LPCSTR pszPrinter) {
    return Outcome(CallSpooler(nullptr, [&](Machine& machine) -> DWORD {
        const std::string_view name = TextOf(pszPrinter);
        if (name.empty()) {
            return ChooseDefault(machine);
        }
        std::optional<Printer> printer = Printers(machine).Find(name);
        if (!printer && Connections(machine).IsConnected(name)) {
            printer = Connections(machine).Find(name);
        }
        if (!printer) {
            return ERROR_INVALID_PRINTER_NAME;
        }
        DefaultPrinter(machine).Set(*printer);
        return ERROR_SUCCESS;
    }));
}

}  // namespace pikel::simulated
