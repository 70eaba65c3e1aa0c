// Builds the record of a printer: one heap block that holds everything it points at.
#include "spooler/printer_record.h"

#include <cstring>

#include "frame/packer.h"

namespace pikel {
namespace {

constexpr std::size_t kDevModeAlignment = 8;
/// Bytes between a descriptor and the DEVMODE behind it.
constexpr std::size_t kDevModeDistance = 8;

/// The texts in the order in which they lie in the block.
struct TextField {
    LPSTR PrinterRecord::*pRecordField;
    LPSTR PRINTER_INFO_2A::*pLevel2Field;
};
constexpr TextField kTexts[] = {
    {&PrinterRecord::pComment, &PRINTER_INFO_2A::pComment},
    {&PrinterRecord::pDatatype, &PRINTER_INFO_2A::pDatatype},
    {&PrinterRecord::pDriverName, &PRINTER_INFO_2A::pDriverName},
    {&PrinterRecord::pLocation, &PRINTER_INFO_2A::pLocation},
    {&PrinterRecord::pParameters, &PRINTER_INFO_2A::pParameters},
    {&PrinterRecord::pPortName, &PRINTER_INFO_2A::pPortName},
    {&PrinterRecord::pPrinterName, &PRINTER_INFO_2A::pPrinterName},
    {&PrinterRecord::pPrintProcessor, &PRINTER_INFO_2A::pPrintProcessor},
    {&PrinterRecord::pSepFile, &PRINTER_INFO_2A::pSepFile},
    {&PrinterRecord::pServerName, &PRINTER_INFO_2A::pServerName},
    {&PrinterRecord::pShareName, &PRINTER_INFO_2A::pShareName},
};

struct NumberField {
    DWORD PrinterRecord::*pRecordField;
    DWORD PRINTER_INFO_2A::*pLevel2Field;
};
constexpr NumberField kNumbers[] = {
    {&PrinterRecord::Attributes, &PRINTER_INFO_2A::Attributes},
    {&PrinterRecord::Priority, &PRINTER_INFO_2A::Priority},
    {&PrinterRecord::DefaultPriority, &PRINTER_INFO_2A::DefaultPriority},
    {&PrinterRecord::StartTime, &PRINTER_INFO_2A::StartTime},
    {&PrinterRecord::UntilTime, &PRINTER_INFO_2A::UntilTime},
    {&PrinterRecord::Status, &PRINTER_INFO_2A::Status},
    {&PrinterRecord::cJobs, &PRINTER_INFO_2A::cJobs},
    {&PrinterRecord::AveragePPM, &PRINTER_INFO_2A::AveragePPM},
};

/// Bytes of a DEVMODE with what its driver keeps behind it; 0 for null.
std::size_t SizeOf(const DEVMODEA* pDevMode) {
    return pDevMode == nullptr ? 0 : std::size_t{pDevMode->dmSize} + std::size_t{pDevMode->dmDriverExtra};
}

bool HasShare(const PrinterRecordSource& source) {
    return source.pShare != nullptr || source.pLevel5 != nullptr;
}

// ---- the sizes ----------------------------------------------------------------------------------------------------
// The order of what is added is that in which the block is filled.

void AddValues(PackSize& size, const RegistryDataBlock& values) {
    size.Add<PrinterRegistryEntry>(values.Count());
    for (DWORD dwIndex = 0; dwIndex < values.Count(); ++dwIndex) {
        const PrinterRegistryEntry& entry = values.Entries()[dwIndex];
        size.AddOptionalText(entry.Key);
        size.AddOptionalText(entry.ValueName);
        size.AddBytes(entry.Data != nullptr ? entry.Size : 0);
    }
}

void AddSecurity(PackSize& size, const PrinterSecurityRecord& security) {
    size.Add<PrinterSecurityRecord>();
    // Its end is aligned, so that the DEVMODE behind it is so too.
    size.AddBytesUpTo(security.SecurityDescriptorLength, kDevModeAlignment);
    if (const std::size_t cbDevMode = SizeOf(security.DevMode)) {
        size.AddBytes(kDevModeDistance);
        size.AddBytes(cbDevMode);
    }
}

std::size_t SizeOf(const PrinterRecordSource& source) {
    PackSize size;
    size.Add<PrinterRecord>();
    for (const TextField& field : kTexts) {
        size.AddOptionalText(source.pLevel2->*field.pLevel2Field);
    }
    size.AddBytes(SizeOf(source.pLevel2->pDevMode), kDevModeAlignment);
    if (source.pValues != nullptr) {
        AddValues(size, *source.pValues);
    }
    if (source.pProfiles != nullptr) {
        size.Add<LPSTR>(source.pProfiles->size());
        for (const std::string& strProfile : *source.pProfiles) {
            size.AddText(strProfile);
        }
    }
    if (HasShare(source)) {
        size.Add<PrinterShareRecord>();
    }
    if (source.pSecurity != nullptr) {
        AddSecurity(size, *source.pSecurity);
    }
    return size.Size();
}

// ---- the block ----------------------------------------------------------------------------------------------------

LPDEVMODEA TakeDevMode(Packer& packer, const DEVMODEA* pDevMode, std::size_t alignment) {
    const std::size_t cbDevMode = SizeOf(pDevMode);
    char* pPlace = packer.TakeBytes(cbDevMode, alignment);
    if (cbDevMode == 0) {
        return nullptr;
    }
    std::memcpy(pPlace, pDevMode, cbDevMode);
    return reinterpret_cast<LPDEVMODEA>(pPlace);
}

void TakeLevel2(Packer& packer, PrinterRecord& record, const PRINTER_INFO_2A& info) {
    for (const NumberField& field : kNumbers) {
        record.*field.pRecordField = info.*field.pLevel2Field;
    }
    for (const TextField& field : kTexts) {
        record.*field.pRecordField = packer.OptionalText(info.*field.pLevel2Field);
    }
    record.pDevMode = TakeDevMode(packer, info.pDevMode, kDevModeAlignment);
}

void TakeValues(Packer& packer, PrinterRecord& record, const RegistryDataBlock& values) {
    if (values.Count() == 0) {
        return;
    }
    record.RegistryEntryCount = values.Count();
    record.RegistryEntries = packer.Take<PrinterRegistryEntry>(values.Count());
    for (DWORD dwIndex = 0; dwIndex < values.Count(); ++dwIndex) {
        const PrinterRegistryEntry& from = values.Entries()[dwIndex];
        PrinterRegistryEntry& to = record.RegistryEntries[dwIndex];
        to = from;
        to.Key = packer.OptionalText(from.Key);
        to.ValueName = packer.OptionalText(from.ValueName);
        if (from.Data != nullptr) {
            to.Data = reinterpret_cast<LPBYTE>(packer.TakeBytes(from.Size));
            std::memcpy(to.Data, from.Data, from.Size);
        }
    }
}

void TakeProfiles(Packer& packer, PrinterRecord& record, const StringList& profiles) {
    if (profiles.empty()) {
        return;
    }
    record.ColorProfileCount = static_cast<DWORD>(profiles.size());
    record.ColorProfiles = packer.Take<LPSTR>(profiles.size());
    LPSTR* ppszProfile = record.ColorProfiles;
    for (const std::string& strProfile : profiles) {
        *ppszProfile++ = packer.Text(strProfile);
    }
}

void TakeShare(Packer& packer, PrinterRecord& record, const PrinterRecordSource& source) {
    record.ShareRecord = packer.Take<PrinterShareRecord>();
    if (source.pShare != nullptr) {
        *record.ShareRecord = *source.pShare;
    }
    const PRINTER_INFO_5A* pLevel5 = source.pLevel5;
    record.ShareRecord->DeviceNotSelectedTimeout = pLevel5 != nullptr ? pLevel5->DeviceNotSelectedTimeout : 0;
    record.ShareRecord->TransmissionRetryTimeout = pLevel5 != nullptr ? pLevel5->TransmissionRetryTimeout : 0;
}

void TakeSecurity(Packer& packer, PrinterRecord& record, const PrinterSecurityRecord& security) {
    record.SecurityRecord = packer.Take<PrinterSecurityRecord>();
    PrinterSecurityRecord& to = *record.SecurityRecord;
    to.SecurityDescriptorLength = security.SecurityDescriptorLength;
    to.PublishAction = security.PublishAction;
    char* pDescriptor = packer.TakeBytesUpTo(security.SecurityDescriptorLength, kDevModeAlignment);
    if (security.SecurityDescriptorLength != 0) {
        to.SecurityDescriptor = pDescriptor;
        std::memcpy(pDescriptor, security.SecurityDescriptor, security.SecurityDescriptorLength);
    }
    if (SizeOf(security.DevMode) != 0) {
        packer.TakeBytes(kDevModeDistance);
        to.DevMode = TakeDevMode(packer, security.DevMode, 1);
    }
}

}  // namespace

DWORD PackPrinterRecord(PrinterRecord** ppRecord, const PrinterRecordSource& source) {
    *ppRecord = nullptr;
    if (source.pLevel2 == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    HeapBlock block = AllocateHeap(SizeOf(source));
    if (!block) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
    Packer packer(block.Get());
    auto* pRecord = packer.Take<PrinterRecord>();
    TakeLevel2(packer, *pRecord, *source.pLevel2);
    if (source.pValues != nullptr) {
        TakeValues(packer, *pRecord, *source.pValues);
    }
    if (source.pProfiles != nullptr) {
        TakeProfiles(packer, *pRecord, *source.pProfiles);
    }
    if (HasShare(source)) {
        TakeShare(packer, *pRecord, source);
    }
    if (source.pSecurity != nullptr) {
        TakeSecurity(packer, *pRecord, *source.pSecurity);
    }
    block.Release();
    *ppRecord = pRecord;
    return ERROR_SUCCESS;
}

}  // namespace pikel
