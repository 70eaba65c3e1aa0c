// The fixed list of values that belong to a printer's settings: read into a record, and written back from one.
#include "spooler/printer_values.h"

#include <cstring>
#include <limits>
#include <vector>

#include "frame/log.h"
#include "frame/packer.h"
#include "frame/text.h"
#include "spooler/printer_data.h"

namespace pikel {
namespace {

/// One row of PrinterValueTable. A null key is the default key.
struct PrinterValueRow {
    LPCSTR lpszKey;
    LPCSTR lpszValueName;
    DWORD dwKind;
};

/// Some values stand twice: in a subkey on the NT family, in the default key on the 9x family. The device option is one
/// value in a subkey on the 9x family, and nine numbered ones with a size on the NT family.
constexpr PrinterValueRow PrinterValueTable[] = {
    {nullptr, "CurFriendlyName", ValueKind9x},
    {nullptr, "UserPaper", ValueKind9x},
    {nullptr, "UserPaperVersion", ValueKind9x},
    {nullptr, "udpWidth", ValueKindEvery},
    {nullptr, "udpLength", ValueKindEvery},
    {nullptr, "Capture Flags", ValueKindEvery},
    {nullptr, "Printer Settings", ValueKindEvery},
    {nullptr, "DeviceOption01", ValueKindNt},
    {nullptr, "DeviceOption02", ValueKindNt},
    {nullptr, "DeviceOption03", ValueKindNt},
    {nullptr, "DeviceOption04", ValueKindNt},
    {nullptr, "DeviceOption05", ValueKindNt},
    {nullptr, "DeviceOption06", ValueKindNt},
    {nullptr, "DeviceOption07", ValueKindNt},
    {nullptr, "DeviceOption08", ValueKindNt},
    {nullptr, "DeviceOption09", ValueKindNt},
    {nullptr, "DeviceOptionSize", ValueKindNt},
    {"PrinterDriverData\\DeviceOption", "DeviceOption", ValueKind9x},
    {nullptr, "udpEnable", ValueKindEvery},
    {"CopyFiles\\ICM", "Files", ValueKindNt},
    {nullptr, "Files", ValueKind9x},
    {"ICMDATA", "ProfileEnumMode", ValueKindNt},
    {nullptr, "ProfileEnumMode", ValueKind9x},
    {nullptr, "PrinterID", ValueKind9x},
    {nullptr, "CustomCode", ValueKindEvery},
    {nullptr, "RenameConfigFile", ValueKindEvery},
    {nullptr, "Version", ValueKindEvery},
    {nullptr, "CustomComment", ValueKindEvery},
    {nullptr, "EMFDespoolingSetting", ValueKindNt},
};
static_assert(std::size(PrinterValueTable) == 29);

/// A value that was found, until the block is made.
struct FoundValue {
    const PrinterValueRow* pRow;
    PrinterValueData value;
};

std::vector<FoundValue> FindValues(LPCSTR lpszPrinterName) {
    std::vector<FoundValue> found;
    for (const PrinterValueRow& row : PrinterValueTable) {
        PrinterValueData value;
        const DWORD dwCode = GetPrinterData(lpszPrinterName, row.lpszKey, row.lpszValueName, row.dwKind, value);
        if (dwCode == ERROR_SUCCESS) {
            found.push_back({&row, std::move(value)});
        } else {
            WriteLog("GetPrinterData(%s) is not found(%d)", row.lpszValueName, dwCode);
        }
    }
    return found;
}

std::size_t SizeOf(const std::vector<FoundValue>& found) {
    PackSize size;
    size.Add<PrinterRegistryEntry>(found.size());
    for (const FoundValue& item : found) {
        size.AddOptionalText(item.pRow->lpszKey);
        size.AddText(item.pRow->lpszValueName);
        size.AddBytes(item.value.dwSize);
    }
    return size.Size();
}

void Fill(void* pBlock, const std::vector<FoundValue>& found) {
    Packer packer(pBlock);
    auto* pEntry = packer.Take<PrinterRegistryEntry>(found.size());
    for (const FoundValue& item : found) {
        pEntry->Key = packer.OptionalText(item.pRow->lpszKey);
        pEntry->ValueName = packer.Text(item.pRow->lpszValueName);
        if (item.value.dwSize != 0) {
            pEntry->Data = reinterpret_cast<LPBYTE>(packer.TakeBytes(item.value.dwSize));
            std::memcpy(pEntry->Data, item.value.data.Get(), item.value.dwSize);
        }
        pEntry->Type = item.value.dwType;
        pEntry->Size = item.value.dwSize;
        pEntry->Kind = item.pRow->dwKind;
        ++pEntry;
    }
}

}  // namespace

DWORD ReadPrinterValues(RegistryDataBlock& block, LPCSTR lpszPrinterName) {
    block.Empty();
    const std::vector<FoundValue> found = FindValues(lpszPrinterName);
    if (found.empty()) {
        return ERROR_SUCCESS;
    }
    const std::size_t size = SizeOf(found);
    HeapBlock entries = size <= std::numeric_limits<DWORD>::max() ? AllocateHeap(size) : HeapBlock();
    if (!entries) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    Fill(entries.Get(), found);
    block.Store(std::move(entries), static_cast<DWORD>(size), static_cast<DWORD>(found.size()));
    return ERROR_SUCCESS;
}

DWORD SetRegistryData(LPCSTR lpszPrinterName, const PrinterRegistryEntry* pEntries, DWORD dwCount) {
    DWORD dwCode = ERROR_SUCCESS;
    for (DWORD dwIndex = 0; pEntries != nullptr && dwIndex < dwCount; ++dwIndex) {
        const PrinterRegistryEntry& entry = pEntries[dwIndex];
        // Only the last code is told, as installers that write a whole list expect it.
        dwCode =
            SetPrinterData(lpszPrinterName, entry.Key, entry.ValueName, entry.Type, entry.Data, entry.Size, entry.Kind);
    }
    return dwCode;
}

}  // namespace pikel
