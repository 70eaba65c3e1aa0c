// The record of a printer: one block that holds everything it points at.
#include "spooler/printer_record.h"

#include <cstring>

#include "spooler/printer_data.h"
#include "support/printer_machine.h"

namespace pikel {
namespace {

using namespace testing_support;

/// A DEVMODE with bytes of a driver behind it.
struct TestDevMode {
    DEVMODEA mode{};
    char extra[6] = {'e', 'x', 't', 'r', 'a', '!'};
};

class PrinterRecordTest : public MachineTest {
  protected:
    ~PrinterRecordTest() override { Free(); }
    DWORD Pack() {
        Free();
        return PackPrinterRecord(&m_record, m_source);
    }
    void Free() {
        if (m_record != nullptr) {
            Platform().HeapFree(Platform().GetProcessHeap(), 0, m_record);
        }
        m_record = nullptr;
    }
    /// True when a pointer lies within the record's block.
    bool IsInside(const void* place) {
        const auto* begin = reinterpret_cast<const char*>(m_record);
        const auto* at = static_cast<const char*>(place);
        return at >= begin && at < begin + Machine().Heap().Size(m_record);
    }
    static TestDevMode ModeNamed(const char* name) {
        TestDevMode mode;
        mode.mode.dmSize = sizeof(DEVMODEA);
        mode.mode.dmDriverExtra = sizeof mode.extra;
        std::snprintf(reinterpret_cast<char*>(mode.mode.dmDeviceName), sizeof mode.mode.dmDeviceName, "%s", name);
        return mode;
    }

    PRINTER_INFO_2A m_level2{};
    PrinterRecordSource m_source;
    PrinterRecord* m_record = nullptr;
};

TEST_F(PrinterRecordTest, NeedsLevel2) {
    PrinterRecord* record = reinterpret_cast<PrinterRecord*>(&m_level2);
    EXPECT_EQ(PackPrinterRecord(&record, m_source), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(record, nullptr);
}

TEST_F(PrinterRecordTest, NoMemory) {
    m_source.pLevel2 = &m_level2;
    faults::FailCall("HeapAlloc", 1, ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(Pack(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(m_record, nullptr);
}

TEST_F(PrinterRecordTest, EmptyLevel2GivesNullsAndZeros) {
    int anything = 0;
    m_level2.pSecurityDescriptor = &anything;  // never handed on
    m_source.pLevel2 = &m_level2;
    ASSERT_EQ(Pack(), 0u);
    const PrinterRecord zero{};
    EXPECT_EQ(memcmp(m_record, &zero, sizeof zero), 0);
}

TEST_F(PrinterRecordTest, HoldsEveryFieldOfLevel2) {
    std::string texts[] = {"server", "printer", "share",    "port", "driver",    "comment",
                           "place",  "sep",     "winprint", "RAW",  "parameters"};
    LPSTR PRINTER_INFO_2A::*const from[] = {
        &PRINTER_INFO_2A::pServerName, &PRINTER_INFO_2A::pPrinterName, &PRINTER_INFO_2A::pShareName,
        &PRINTER_INFO_2A::pPortName,   &PRINTER_INFO_2A::pDriverName,  &PRINTER_INFO_2A::pComment,
        &PRINTER_INFO_2A::pLocation,   &PRINTER_INFO_2A::pSepFile,     &PRINTER_INFO_2A::pPrintProcessor,
        &PRINTER_INFO_2A::pDatatype,   &PRINTER_INFO_2A::pParameters};
    LPSTR PrinterRecord::*const to[] = {
        &PrinterRecord::pServerName, &PrinterRecord::pPrinterName, &PrinterRecord::pShareName,
        &PrinterRecord::pPortName,   &PrinterRecord::pDriverName,  &PrinterRecord::pComment,
        &PrinterRecord::pLocation,   &PrinterRecord::pSepFile,     &PrinterRecord::pPrintProcessor,
        &PrinterRecord::pDatatype,   &PrinterRecord::pParameters};
    for (std::size_t i = 0; i < std::size(from); ++i) {
        m_level2.*from[i] = texts[i].data();
    }
    m_level2.Attributes = 1;
    m_level2.Priority = 2;
    m_level2.DefaultPriority = 3;
    m_level2.StartTime = 4;
    m_level2.UntilTime = 5;
    m_level2.Status = 6;
    m_level2.cJobs = 7;
    m_level2.AveragePPM = 8;
    m_source.pLevel2 = &m_level2;
    ASSERT_EQ(Pack(), 0u);
    for (std::size_t i = 0; i < std::size(from); ++i) {
        EXPECT_STREQ(m_record->*to[i], texts[i].c_str());
        EXPECT_NE(m_record->*to[i], texts[i].c_str());
        EXPECT_TRUE(IsInside(m_record->*to[i])) << texts[i];
    }
    EXPECT_EQ(m_record->Attributes, 1u);
    EXPECT_EQ(m_record->Priority, 2u);
    EXPECT_EQ(m_record->DefaultPriority, 3u);
    EXPECT_EQ(m_record->StartTime, 4u);
    EXPECT_EQ(m_record->UntilTime, 5u);
    EXPECT_EQ(m_record->Status, 6u);
    EXPECT_EQ(m_record->cJobs, 7u);
    EXPECT_EQ(m_record->AveragePPM, 8u);
    // The order in which the texts lie behind the record.
    EXPECT_LT(m_record->pComment, m_record->pDatatype);
    EXPECT_LT(m_record->pDatatype, m_record->pDriverName);
    EXPECT_LT(m_record->pPrintProcessor, m_record->pSepFile);
    EXPECT_LT(m_record->pServerName, m_record->pShareName);
}

TEST_F(PrinterRecordTest, DevModeComesWithItsDriversBytes) {
    TestDevMode mode = ModeNamed("mode");
    m_level2.pDevMode = &mode.mode;
    m_source.pLevel2 = &m_level2;
    ASSERT_EQ(Pack(), 0u);
    ASSERT_NE(m_record->pDevMode, nullptr);
    EXPECT_EQ(memcmp(m_record->pDevMode, &mode, sizeof(DEVMODEA) + sizeof mode.extra), 0);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(m_record->pDevMode) % 8, 0u);
}

TEST_F(PrinterRecordTest, DevModeOfNoSizeIsNone) {
    DEVMODEA mode{};
    m_level2.pDevMode = &mode;
    m_source.pLevel2 = &m_level2;
    ASSERT_EQ(Pack(), 0u);
    EXPECT_EQ(m_record->pDevMode, nullptr);
}

TEST_F(PrinterRecordTest, ValuesComeWithTheirKeysNamesAndBytes) {
    char key[] = "CopyFiles\\ICM", otherKey[] = "ICMDATA", files[] = "Files", width[] = "udpWidth", empty[] = "Empty";
    BYTE bytes[] = {'a', 0, 'b', 0, 0};
    BYTE number[] = {1, 2, 3, 4};
    const PrinterRegistryEntry entries[] = {{key, files, bytes, REG_MULTI_SZ, sizeof bytes, ValueKindNt},
                                            {nullptr, width, number, REG_DWORD, sizeof number, ValueKindEvery},
                                            {otherKey, empty, nullptr, REG_SZ, 0, ValueKind9x}};
    HeapBlock block = AllocateHeap(sizeof entries);
    memcpy(block.Get(), entries, sizeof entries);
    RegistryDataBlock values;
    values.Store(std::move(block), sizeof entries, static_cast<DWORD>(std::size(entries)));
    m_source.pLevel2 = &m_level2;
    m_source.pValues = &values;
    ASSERT_EQ(Pack(), 0u);
    ASSERT_EQ(m_record->RegistryEntryCount, std::size(entries));
    EXPECT_TRUE(IsInside(m_record->RegistryEntries));
    for (std::size_t i = 0; i < std::size(entries); ++i) {
        const PrinterRegistryEntry& from = entries[i];
        const PrinterRegistryEntry& packed = m_record->RegistryEntries[i];
        SCOPED_TRACE(from.ValueName);
        EXPECT_STREQ(packed.Key, from.Key);
        EXPECT_STREQ(packed.ValueName, from.ValueName);
        EXPECT_TRUE(IsInside(packed.ValueName));
        EXPECT_EQ(packed.Key != nullptr, from.Key != nullptr && IsInside(packed.Key));
        EXPECT_EQ(packed.Type, from.Type);
        EXPECT_EQ(packed.Size, from.Size);
        EXPECT_EQ(packed.Kind, from.Kind);
        ASSERT_EQ(packed.Data != nullptr, from.Data != nullptr);
        if (packed.Data != nullptr) {
            EXPECT_TRUE(IsInside(packed.Data) && IsInside(packed.Data + packed.Size - 1));
            EXPECT_EQ(memcmp(packed.Data, from.Data, from.Size), 0);
        }
    }
    // Entry by entry: key, name, bytes.
    const PrinterRegistryEntry* packed = m_record->RegistryEntries;
    EXPECT_LT(packed[0].Key, packed[0].ValueName);
    EXPECT_LT(packed[0].ValueName, reinterpret_cast<LPSTR>(packed[0].Data));
    EXPECT_LT(reinterpret_cast<LPSTR>(packed[0].Data), packed[1].ValueName);
    values.Empty();
    ASSERT_EQ(Pack(), 0u);
    EXPECT_EQ(m_record->RegistryEntryCount, 0u);
    EXPECT_EQ(m_record->RegistryEntries, nullptr);
}

TEST_F(PrinterRecordTest, ProfilesAreAnArrayOfNames) {
    StringList profiles;
    m_source.pLevel2 = &m_level2;
    m_source.pProfiles = &profiles;
    ASSERT_EQ(Pack(), 0u);
    EXPECT_EQ(m_record->ColorProfileCount, 0u);
    EXPECT_EQ(m_record->ColorProfiles, nullptr);
    profiles.Append("C:\\one.icm");
    profiles.Append("two.icm");
    ASSERT_EQ(Pack(), 0u);
    ASSERT_EQ(m_record->ColorProfileCount, 2u);
    EXPECT_STREQ(m_record->ColorProfiles[0], "C:\\one.icm");
    EXPECT_STREQ(m_record->ColorProfiles[1], "two.icm");
    EXPECT_TRUE(IsInside(m_record->ColorProfiles[1]));
}

TEST_F(PrinterRecordTest, ShareAndTimeoutsMakeAShareRecord) {
    PrinterShareRecord share{};
    strcpy(share.NetName, "LASER");
    strcpy(share.ReadOnlyPassword, "secret");
    share.ShareType = 1;
    share.Flags = 2;
    share.DeviceNotSelectedTimeout = 99;  // not one of the first seven fields: level 5 tells it
    PRINTER_INFO_5A level5{};
    level5.DeviceNotSelectedTimeout = 15000;
    level5.TransmissionRetryTimeout = 45000;
    m_source.pLevel2 = &m_level2;
    m_source.pShare = &share;
    ASSERT_EQ(Pack(), 0u);
    ASSERT_NE(m_record->ShareRecord, nullptr);
    EXPECT_STREQ(m_record->ShareRecord->NetName, "LASER");
    EXPECT_STREQ(m_record->ShareRecord->ReadOnlyPassword, "secret");
    EXPECT_EQ(m_record->ShareRecord->DeviceNotSelectedTimeout, 0u);
    m_source.pShare = nullptr;
    m_source.pLevel5 = &level5;
    ASSERT_EQ(Pack(), 0u);
    ASSERT_NE(m_record->ShareRecord, nullptr);
    EXPECT_STREQ(m_record->ShareRecord->NetName, "");
    EXPECT_EQ(m_record->ShareRecord->DeviceNotSelectedTimeout, 15000u);
    EXPECT_EQ(m_record->ShareRecord->TransmissionRetryTimeout, 45000u);
    EXPECT_EQ(m_record->SecurityRecord, nullptr);
}

TEST_F(PrinterRecordTest, DevModeLiesEightBytesBehindTheDescriptor) {
    TestDevMode mode = ModeNamed("per printer");
    for (std::size_t length = 1; length < 20; ++length) {
        std::string text(length, 'D');
        PrinterSecurityRecord security{text.data(), static_cast<DWORD>(length), 2, &mode.mode};
        m_source.pLevel2 = &m_level2;
        m_source.pSecurity = &security;
        ASSERT_EQ(Pack(), 0u);
        const PrinterSecurityRecord* packed = m_record->SecurityRecord;
        ASSERT_NE(packed, nullptr);
        EXPECT_EQ(std::string(packed->SecurityDescriptor, packed->SecurityDescriptorLength), text);
        EXPECT_EQ(packed->PublishAction, 2u);
        EXPECT_EQ(reinterpret_cast<char*>(packed->DevMode), packed->SecurityDescriptor + length + 8);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(packed->DevMode) % 8, 0u);
        EXPECT_EQ(memcmp(packed->DevMode, &mode, sizeof(DEVMODEA) + sizeof mode.extra), 0);
        EXPECT_TRUE(IsInside(reinterpret_cast<char*>(packed->DevMode) + sizeof(DEVMODEA) + sizeof mode.extra - 1));
    }
}

TEST_F(PrinterRecordTest, SecurityWithoutDescriptorOrDevMode) {
    PrinterSecurityRecord security{};
    m_source.pLevel2 = &m_level2;
    m_source.pSecurity = &security;
    ASSERT_EQ(Pack(), 0u);
    ASSERT_NE(m_record->SecurityRecord, nullptr);
    EXPECT_EQ(m_record->SecurityRecord->SecurityDescriptor, nullptr);
    EXPECT_EQ(m_record->SecurityRecord->DevMode, nullptr);
}

}  // namespace
}  // namespace pikel
