// The fixed list of a printer's values: read into a block, written back from entries.
#include "spooler/printer_values.h"

#include "spooler/printer_data.h"
#include "support/printer_machine.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::Contains;
using ::testing::ElementsAre;

struct Row {
    const char* key;  ///< null: the default key
    const char* name;
    DWORD kind;
};

/// The list as installers know it, in its order.
const Row kRows[] = {
    {nullptr, "CurFriendlyName", 1},
    {nullptr, "UserPaper", 1},
    {nullptr, "UserPaperVersion", 1},
    {nullptr, "udpWidth", 0},
    {nullptr, "udpLength", 0},
    {nullptr, "Capture Flags", 0},
    {nullptr, "Printer Settings", 0},
    {nullptr, "DeviceOption01", 2},
    {nullptr, "DeviceOption02", 2},
    {nullptr, "DeviceOption03", 2},
    {nullptr, "DeviceOption04", 2},
    {nullptr, "DeviceOption05", 2},
    {nullptr, "DeviceOption06", 2},
    {nullptr, "DeviceOption07", 2},
    {nullptr, "DeviceOption08", 2},
    {nullptr, "DeviceOption09", 2},
    {nullptr, "DeviceOptionSize", 2},
    {"PrinterDriverData\\DeviceOption", "DeviceOption", 1},
    {nullptr, "udpEnable", 0},
    {"CopyFiles\\ICM", "Files", 2},
    {nullptr, "Files", 1},
    {"ICMDATA", "ProfileEnumMode", 2},
    {nullptr, "ProfileEnumMode", 1},
    {nullptr, "PrinterID", 1},
    {nullptr, "CustomCode", 0},
    {nullptr, "RenameConfigFile", 0},
    {nullptr, "Version", 0},
    {nullptr, "CustomComment", 0},
    {nullptr, "EMFDespoolingSetting", 2},
};

class PrinterValues : public EverySystemTest {
  protected:
    PrinterValues() {
        InstallDriver(Test());
        AddPrinterTo(Test(), "P1");
        Test().TakeCalls();
    }
    bool Reads(const Row& row) const { return row.kind == 0 || row.kind == (Is9xName(GetParam()) ? 1u : 2u); }
    /// NT 4 finds every value in the default key.
    std::string KeyOf(const Row& row) const {
        const bool inDefault = row.key == nullptr || IsNt4Name(GetParam());
        return std::string(kPrintersOn) + "\\P1\\" + (inDefault ? "PrinterDriverData" : row.key);
    }
    void Put(const Row& row, std::string_view bytes) {
        Machine().Registry().Set(KeyOf(row), row.name, REG_BINARY, bytes);
    }
    std::string ValueOn(const Row& row) {
        const simulated::RegistryValue* value = Machine().Registry().Find(KeyOf(row), row.name);
        return value == nullptr ? "-" : value->data;
    }
};
INSTANTIATE_ON_EVERY_SYSTEM(PrinterValues);

TEST_P(PrinterValues, AreReadInTheOrderOfTheList) {
    for (const Row& row : kRows) {
        if (Reads(row)) {
            Put(row, std::string("data of ") + row.name);
        }
    }
    RegistryDataBlock block;
    EXPECT_EQ(ReadPrinterValues(block, "P1"), 0u);
    DWORD index = 0;
    for (const Row& row : kRows) {
        if (!Reads(row)) {
            continue;
        }
        ASSERT_LT(index, block.Count()) << row.name;
        const PrinterRegistryEntry& entry = block.Entries()[index++];
        EXPECT_STREQ(entry.Key, row.key) << row.name;
        EXPECT_STREQ(entry.ValueName, row.name);
        EXPECT_EQ(entry.Type, DWORD{REG_BINARY});
        EXPECT_EQ(entry.Kind, row.kind) << row.name;
        EXPECT_EQ(std::string(reinterpret_cast<const char*>(entry.Data), entry.Size),
                  std::string("data of ") + row.name);
    }
    EXPECT_EQ(index, block.Count());
    EXPECT_EQ(block.Count(), Is9xName(GetParam()) ? 16u : 22u);
}

TEST_P(PrinterValues, MissingOnesAreLoggedAndPassedOver) {
    Put({nullptr, "udpLength", 0}, "x");
    Test().TurnLogOn(1);
    RegistryDataBlock block;
    EXPECT_EQ(ReadPrinterValues(block, "P1"), 0u);
    ASSERT_EQ(block.Count(), 1u);
    EXPECT_STREQ(block.Entries()->ValueName, "udpLength");
    const std::vector<std::string> log = Test().TakeLog();
    std::vector<std::string> expected;
    for (const Row& row : kRows) {
        if (std::string_view(row.name) != "udpLength") {
            expected.push_back(std::string("GetPrinterData(") + row.name + ") is not found(2)");
        }
    }
    std::vector<std::string> told;
    for (const std::string& line : log) {
        if (line.starts_with("GetPrinterData(")) {
            told.push_back(line);
        }
    }
    EXPECT_EQ(told, expected);
}

TEST_P(PrinterValues, NoneGivesAnEmptyBlock) {
    Put({nullptr, "udpLength", 0}, "x");
    RegistryDataBlock block;
    EXPECT_EQ(ReadPrinterValues(block, "P1"), 0u);
    EXPECT_EQ(block.Count(), 1u);
    // A second read empties the block first.
    EXPECT_EQ(ReadPrinterValues(block, "Nobody"), 0u);
    EXPECT_EQ(block.Count(), 0u);
    EXPECT_EQ(block.Entries(), nullptr);
    EXPECT_EQ(block.Size(), 0u);
}

TEST_P(PrinterValues, BlockIsAsLargeAsWhatItHolds) {
    Put({nullptr, "udpWidth", 0}, "12345");
    Put({nullptr, "Version", 0}, "");
    RegistryDataBlock block;
    EXPECT_EQ(ReadPrinterValues(block, "P1"), 0u);
    ASSERT_EQ(block.Count(), 2u);
    EXPECT_EQ(block.Entries()[1].Data, nullptr);
    EXPECT_EQ(block.Entries()[1].Size, 0u);
    EXPECT_EQ(block.Size(), 2 * sizeof(PrinterRegistryEntry) + sizeof "udpWidth" + 5 + sizeof "Version");
}

TEST_P(PrinterValues, NoMemoryForTheBlock) {
    Put({nullptr, "udpWidth", 0}, "12345");
    // The first block is the value's own.
    faults::FailCall("HeapAlloc", 2, ERROR_NOT_ENOUGH_MEMORY);
    RegistryDataBlock block;
    EXPECT_EQ(ReadPrinterValues(block, "P1"), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(block.Count(), 0u);
}

TEST_P(PrinterValues, ReadAndWrittenBackTheyAreAsBefore) {
    for (const Row& row : kRows) {
        if (Reads(row)) {
            Put(row, std::string("data of ") + row.name);
        }
    }
    RegistryDataBlock block;
    ASSERT_EQ(ReadPrinterValues(block, "P1"), 0u);
    for (const Row& row : kRows) {
        Machine().Registry().DeleteValue(KeyOf(row), row.name);
    }
    EXPECT_EQ(SetRegistryData("P1", block.Entries(), block.Count()), 0u);
    for (const Row& row : kRows) {
        // NT 4 has the two rows of one name in one place.
        if (Reads(row) || !IsNt4Name(GetParam())) {
            EXPECT_EQ(ValueOn(row), Reads(row) ? std::string("data of ") + row.name : "-") << row.name;
        }
    }
}

// ---- writing --------------------------------------------------------------------------------------------------------

PrinterRegistryEntry EntryOf(const char* name, std::string& data, DWORD kind) {
    return {nullptr,    const_cast<LPSTR>(name),         reinterpret_cast<LPBYTE>(data.data()),
            REG_BINARY, static_cast<DWORD>(data.size()), kind};
}

TEST_P(PrinterValues, OnlyTheLastCodeIsTold) {
    std::string data = "x";
    const DWORD own = Is9xName(GetParam()) ? 1 : 2;
    const DWORD other = 3 - own;
    PrinterRegistryEntry entries[] = {EntryOf("udpWidth", data, other), EntryOf("udpLength", data, own)};
    // A kind of the other family fails with 2; in front of an entry that is written nobody hears of it.
    EXPECT_EQ(SetRegistryData("P1", entries, 2), 0u);
    EXPECT_EQ(ValueOn({nullptr, "udpWidth", 0}), "-");
    EXPECT_EQ(ValueOn({nullptr, "udpLength", 0}), "x");
    std::swap(entries[0], entries[1]);
    EXPECT_EQ(SetRegistryData("P1", entries, 2), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(SetRegistryData("P1", entries, 1), 0u);
}

TEST_P(PrinterValues, NothingToWriteIsNoFailure) {
    std::string data = "x";
    const PrinterRegistryEntry entry = EntryOf("udpWidth", data, 9);
    EXPECT_EQ(SetRegistryData("P1", nullptr, 3), 0u);
    EXPECT_EQ(SetRegistryData("P1", &entry, 0), 0u);
    EXPECT_EQ(SetRegistryData("P1", &entry, 1), ERROR_FILE_NOT_FOUND);
}

}  // namespace
}  // namespace pikel
