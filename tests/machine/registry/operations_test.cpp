// The registry calls, as a program makes them.
#include <string>
#include <vector>

#include "machine/operations.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

using simulated::Registry;
using testing_support::EverySystemTest;
using testing_support::MachineTest;
using namespace std::string_literals;

constexpr const char* kKey = "Software\\Vendor";

/// A key handle that is closed at the end.
class Key {
  public:
    Key() = default;
    Key(HKEY root, const char* path, REGSAM access = KEY_ALL_ACCESS) {
        EXPECT_EQ(simulated::RegCreateKeyExA(root, path, 0, nullptr, 0, access, nullptr, &m_key, nullptr), 0);
    }
    ~Key() {
        if (m_key != nullptr) {
            simulated::RegCloseKey(m_key);
        }
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    operator HKEY() const { return m_key; }

  private:
    HKEY m_key = nullptr;
};

LSTATUS SetValue(HKEY key, const char* name, DWORD type, const std::string& data) {
    return simulated::RegSetValueExA(key, name, 0, type, reinterpret_cast<const BYTE*>(data.data()),
                                     static_cast<DWORD>(data.size()));
}

/// Opens and closes; the code of the open.
LSTATUS TryOpen(HKEY key, const char* path, REGSAM access = KEY_READ) {
    HKEY opened = reinterpret_cast<HKEY>(1);
    LSTATUS code = simulated::RegOpenKeyExA(key, path, 0, access, &opened);
    EXPECT_EQ(opened != nullptr, code == 0);
    if (code == 0) {
        simulated::RegCloseKey(opened);
    }
    return code;
}

LSTATUS TryCreate(HKEY key, const char* path, DWORD* disposition = nullptr, REGSAM access = KEY_ALL_ACCESS) {
    HKEY opened = nullptr;
    LSTATUS code = simulated::RegCreateKeyExA(key, path, 0, nullptr, 0, access, nullptr, &opened, disposition);
    EXPECT_EQ(opened != nullptr, code == 0);
    if (code == 0) {
        simulated::RegCloseKey(opened);
    }
    return code;
}

class RegistryCalls : public MachineTest {
  protected:
    Registry& Keys() { return Machine().Registry(); }
    void RemoveRights() {
        simulated::SystemDescription system = Machine().System();
        system.administrator = false;
        Machine().SetSystem(system);
    }
};

TEST_F(RegistryCalls, CreateMakesEveryMissingKeyAndTellsWhetherTheLastIsNew) {
    DWORD disposition = 0;
    EXPECT_EQ(TryCreate(HKEY_CURRENT_USER, "a\\b\\c", &disposition), 0);
    EXPECT_EQ(disposition, static_cast<DWORD>(REG_CREATED_NEW_KEY));
    EXPECT_EQ(TryCreate(HKEY_CURRENT_USER, "A\\B\\C", &disposition), 0);
    EXPECT_EQ(disposition, static_cast<DWORD>(REG_OPENED_EXISTING_KEY));
    EXPECT_TRUE(Keys().KeyExists("HKCU\\a\\b\\c"));
}

TEST_F(RegistryCalls, WhatACallChangedIsOnDiskWhenItReturns) {
    {
        Key key(HKEY_CURRENT_USER, "a");
        EXPECT_EQ(SetValue(key, "v", REG_SZ, "text\0"s), 0);
    }
    Test().Reopen();
    EXPECT_EQ(Keys().Text("HKCU\\a", "v"), "text");
    EXPECT_EQ(simulated::RegDeleteKeyA(HKEY_CURRENT_USER, "a"), 0);
    Test().Reopen();
    EXPECT_FALSE(Keys().KeyExists("HKCU\\a"));
}

TEST_F(RegistryCalls, NoCallTouchesTheLastError) {
    simulated::lastError = 4711;
    TryOpen(HKEY_CURRENT_USER, "missing");
    TryCreate(HKEY_CURRENT_USER, "a");
    simulated::RegCloseKey(HKEY_CURRENT_USER);
    EXPECT_EQ(simulated::lastError, 4711u);
}

TEST_F(RegistryCalls, BackslashesAtTheEndAndDoubledOnesAreTakenAndALeadingOneIsNot) {
    TryCreate(HKEY_CURRENT_USER, "a\\b");
    EXPECT_EQ(TryOpen(HKEY_CURRENT_USER, "a\\b\\"), 0);
    EXPECT_EQ(TryOpen(HKEY_CURRENT_USER, "a\\\\b"), 0);
    EXPECT_EQ(TryOpen(HKEY_CURRENT_USER, "\\a\\b"), 161);
    EXPECT_EQ(TryCreate(HKEY_CURRENT_USER, "\\a\\c"), 161);
    EXPECT_EQ(TryCreate(HKEY_CURRENT_USER, "a\\c\\"), 0);
    EXPECT_TRUE(Keys().KeyExists("HKCU\\a\\c"));
    Start("win98");
    EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, "\\Software"), 2);
}

TEST_F(RegistryCalls, AnEmptyOrNullSubKeyIsTheKeyItself) {
    Key key(HKEY_CURRENT_USER, kKey);
    for (const char* subKey : {"", static_cast<const char*>(nullptr)}) {
        HKEY same = nullptr;
        ASSERT_EQ(simulated::RegOpenKeyExA(key, subKey, 0, KEY_ALL_ACCESS, &same), 0);
        EXPECT_NE(same, static_cast<HKEY>(key));
        EXPECT_EQ(SetValue(same, "v", REG_DWORD, "\1\0\0\0"s), 0);
        EXPECT_EQ(simulated::RegCloseKey(same), 0);
    }
    EXPECT_EQ(Keys().Number("HKCU\\Software\\Vendor", "v"), 1u);
}

TEST_F(RegistryCalls, BadArgumentsAreRefused) {
    HKEY key = nullptr;
    const HKEY unknown = reinterpret_cast<HKEY>(static_cast<std::uintptr_t>(0x12344));
    EXPECT_EQ(simulated::RegOpenKeyExA(HKEY_CURRENT_USER, "a", 0, KEY_READ, nullptr), 87);
    EXPECT_EQ(simulated::RegOpenKeyExA(unknown, "a", 0, KEY_READ, &key), 6);
    EXPECT_EQ(simulated::RegOpenKeyExA(HKEY_CURRENT_USER, "missing", 0, KEY_READ, &key), 2);
    EXPECT_EQ(simulated::RegCreateKeyExA(HKEY_CURRENT_USER, "a", 1, nullptr, 0, KEY_READ, nullptr, &key, nullptr), 87);
    EXPECT_EQ(simulated::RegCreateKeyExA(HKEY_CURRENT_USER, "a", 0, nullptr, 0, KEY_READ, nullptr, nullptr, nullptr),
              87);
    EXPECT_EQ(simulated::RegCreateKeyExA(unknown, "a", 0, nullptr, 0, KEY_READ, nullptr, &key, nullptr), 6);
    EXPECT_EQ(simulated::RegQueryValueExA(unknown, "a", nullptr, nullptr, nullptr, nullptr), 6);
    EXPECT_EQ(simulated::RegSetValueExA(unknown, "a", 0, REG_SZ, nullptr, 0), 6);
    EXPECT_EQ(simulated::RegSetValueExA(HKEY_CURRENT_USER, "a", 1, REG_SZ, nullptr, 0), 87);
    EXPECT_EQ(simulated::RegSetValueExA(HKEY_CURRENT_USER, "a", 0, REG_BINARY, nullptr, 4), 998);
    EXPECT_EQ(simulated::RegSetValueExA(HKEY_CURRENT_USER, std::string(16384, 'n').c_str(), 0, REG_SZ, nullptr, 0), 87);
    EXPECT_EQ(simulated::RegDeleteKeyA(HKEY_CURRENT_USER, nullptr), 87);
    EXPECT_EQ(simulated::RegDeleteKeyA(unknown, "a"), 6);
}

TEST_F(RegistryCalls, AKeyNameHas255CharactersAtMost) {
    EXPECT_EQ(TryCreate(HKEY_CURRENT_USER, std::string(255, 'n').c_str()), 0);
    EXPECT_EQ(TryCreate(HKEY_CURRENT_USER, std::string(256, 'n').c_str()), 87);
    EXPECT_EQ(TryCreate(HKEY_CURRENT_USER, ("a\\" + std::string(256, 'n') + "\\b").c_str()), 87);
    EXPECT_EQ(TryOpen(HKEY_CURRENT_USER, std::string(256, 'n').c_str()), 2);
    EXPECT_FALSE(Keys().KeyExists("HKCU\\a"));
}

TEST_F(RegistryCalls, ClosingTwiceIsRefusedAndARootCanBeClosedAgainAndAgain) {
    Test().AllowOpen();  // the second close is noted as a misuse
    HKEY key = nullptr;
    ASSERT_EQ(simulated::RegOpenKeyExA(HKEY_CURRENT_USER, "Software", 0, KEY_READ, &key), 0);
    EXPECT_EQ(simulated::RegCloseKey(key), 0);
    EXPECT_EQ(simulated::RegCloseKey(key), 6);
    EXPECT_EQ(Machine().Handles().Misuses().size(), 1u);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(simulated::RegCloseKey(HKEY_LOCAL_MACHINE), 0);
        EXPECT_EQ(simulated::RegCloseKey(HKEY_CURRENT_USER), 0);
        EXPECT_EQ(simulated::RegCloseKey(HKEY_CLASSES_ROOT), 0);
        EXPECT_EQ(simulated::RegCloseKey(HKEY_USERS), 0);
    }
    EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, "SOFTWARE"), 0);
    // As a 64-bit Windows has it, with the sign extended.
    EXPECT_EQ(simulated::RegCloseKey(reinterpret_cast<HKEY>(static_cast<std::intptr_t>(-2147483646))), 0);
}

TEST_F(RegistryCalls, AHandleOfADeletedKeyTellsThat) {
    Key key(HKEY_CURRENT_USER, "gone");
    ASSERT_EQ(simulated::RegDeleteKeyA(HKEY_CURRENT_USER, "gone"), 0);
    EXPECT_EQ(SetValue(key, "v", REG_SZ, "x\0"s), 1018);
    EXPECT_EQ(simulated::RegQueryValueExA(key, "v", nullptr, nullptr, nullptr, nullptr), 1018);
    EXPECT_EQ(TryOpen(key, ""), 1018);
    ASSERT_EQ(TryCreate(HKEY_CURRENT_USER, "gone"), 0);
    EXPECT_EQ(SetValue(key, "v", REG_SZ, "x\0"s), 1018) << "the new key is another one";
    EXPECT_FALSE(Keys().Find("HKCU\\gone", "v"));
}

// ---- values ---------------------------------------------------------------------------------------------------------

TEST_F(RegistryCalls, AQueryTellsSizeFirstAndThenTheData) {
    Keys().SetText("HKCU\\k", "v", "text");
    Key key(HKEY_CURRENT_USER, "k", KEY_READ);
    DWORD type = 0;
    DWORD size = 77;
    EXPECT_EQ(simulated::RegQueryValueExA(key, "V", nullptr, &type, nullptr, &size), 0);
    EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(size, 5u);
    std::string buffer(8, '#');
    size = 4;
    type = 0;
    EXPECT_EQ(simulated::RegQueryValueExA(key, "v", nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()), &size),
              234);
    EXPECT_EQ(size, 5u);
    EXPECT_EQ(type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(buffer, "########");
    EXPECT_EQ(simulated::RegQueryValueExA(key, "v", nullptr, nullptr, reinterpret_cast<BYTE*>(buffer.data()), &size),
              0);
    EXPECT_EQ(buffer, "text\0###"s);
    EXPECT_EQ(simulated::RegQueryValueExA(key, "v", nullptr, &type, nullptr, nullptr), 0);
    EXPECT_EQ(simulated::RegQueryValueExA(key, "missing", nullptr, &type, nullptr, &size), 2);
    EXPECT_EQ(simulated::RegQueryValueExA(key, nullptr, nullptr, &type, nullptr, &size), 2);
    EXPECT_EQ(simulated::RegQueryValueExA(key, "v", &size, &type, nullptr, nullptr), 87);
    EXPECT_EQ(simulated::RegQueryValueExA(key, "v", nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()), nullptr),
              87);
}

TEST_F(RegistryCalls, ANullNameIsTheDefaultValue) {
    Key key(HKEY_CURRENT_USER, "k");
    EXPECT_EQ(SetValue(key, nullptr, REG_SZ, "d\0"s), 0);
    EXPECT_EQ(Keys().Text("HKCU\\k", ""), "d");
    EXPECT_EQ(simulated::RegQueryValueExA(key, "", nullptr, nullptr, nullptr, nullptr), 0);
}

TEST_F(RegistryCalls, ATextWithoutItsNulGetsOneOnTheNtFamilyAlone) {
    struct {
        const char* system;
        DWORD type;
        const char* data;
        std::string stored;
    } const cases[] = {
        {"xp", REG_SZ, "ab", "ab\0"s},
        {"nt4", REG_EXPAND_SZ, "ab", "ab\0"s},
        {"vista", REG_MULTI_SZ, "ab", "ab\0"s},
        {"xp", REG_BINARY, "ab", "ab"},
        {"xp", REG_SZ, "", ""},
        {"win95", REG_SZ, "ab", "ab"},
        {"winme", REG_MULTI_SZ, "ab", "ab"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.system);
        Start(test.system);
        Key key(HKEY_CURRENT_USER, "k");
        EXPECT_EQ(SetValue(key, "v", test.type, test.data), 0);
        EXPECT_EQ(Keys().Find("HKCU\\k", "v")->data, test.stored);
    }
}

TEST_F(RegistryCalls, ATextStoredWithoutNulIsReadWithOneWhereThereIsRoom) {
    Keys().Set("HKCU\\k", "v", REG_SZ, "ab");
    Key key(HKEY_CURRENT_USER, "k", KEY_READ);
    std::string buffer(4, '#');
    DWORD size = 4;
    EXPECT_EQ(simulated::RegQueryValueExA(key, "v", nullptr, nullptr, reinterpret_cast<BYTE*>(buffer.data()), &size),
              0);
    EXPECT_EQ(size, 2u);
    EXPECT_EQ(buffer, "ab\0#"s);
    buffer.assign(4, '#');
    size = 2;
    EXPECT_EQ(simulated::RegQueryValueExA(key, "v", nullptr, nullptr, reinterpret_cast<BYTE*>(buffer.data()), &size),
              0);
    EXPECT_EQ(buffer, "ab##");
}

TEST_F(RegistryCalls, AnEnumerationGivesEveryValueAndThenItsEnd) {
    Keys().SetText("HKCU\\k", "one", "1");
    Keys().SetNumber("HKCU\\k", "two", 2);
    Key key(HKEY_CURRENT_USER, "k", KEY_READ);
    std::vector<std::string> seen;
    for (DWORD i = 0;; ++i) {
        char name[16];
        BYTE data[16];
        DWORD nameSize = sizeof name;
        DWORD dataSize = sizeof data;
        DWORD type = 0;
        LSTATUS code = simulated::RegEnumValueA(key, i, name, &nameSize, nullptr, &type, data, &dataSize);
        if (code != 0) {
            EXPECT_EQ(code, 259);
            break;
        }
        seen.push_back(std::string(name, nameSize) + " " + std::to_string(type) + " " + std::to_string(dataSize));
        EXPECT_EQ(name[nameSize], '\0');
    }
    EXPECT_THAT(seen, ::testing::ElementsAre("one 1 2", "two 4 4"));
}

TEST_F(RegistryCalls, AnEnumerationRefusesWhatDoesNotFit) {
    Keys().SetText("HKCU\\k", "one", "1");
    Key key(HKEY_CURRENT_USER, "k", KEY_READ);
    char name[16] = "#";
    BYTE data[16];
    DWORD nameSize = 3;
    DWORD dataSize = sizeof data;
    EXPECT_EQ(simulated::RegEnumValueA(key, 0, name, &nameSize, nullptr, nullptr, data, &dataSize), 234);
    EXPECT_STREQ(name, "#");
    nameSize = 4;
    dataSize = 1;
    EXPECT_EQ(simulated::RegEnumValueA(key, 0, name, &nameSize, nullptr, nullptr, data, &dataSize), 234);
    EXPECT_EQ(dataSize, 2u);
    nameSize = 4;
    EXPECT_EQ(simulated::RegEnumValueA(key, 0, name, &nameSize, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(simulated::RegEnumValueA(key, 0, nullptr, &nameSize, nullptr, nullptr, nullptr, nullptr), 87);
    EXPECT_EQ(simulated::RegEnumValueA(key, 0, name, nullptr, nullptr, nullptr, nullptr, nullptr), 87);
    EXPECT_EQ(simulated::RegEnumValueA(key, 0, name, &nameSize, &dataSize, nullptr, nullptr, nullptr), 87);
    EXPECT_EQ(simulated::RegEnumValueA(key, 0, name, &nameSize, nullptr, nullptr, data, nullptr), 87);
    EXPECT_EQ(
        simulated::RegEnumValueA(reinterpret_cast<HKEY>(4), 0, name, &nameSize, nullptr, nullptr, data, &dataSize), 6);
}

// ---- deletion -------------------------------------------------------------------------------------------------------

TEST_F(RegistryCalls, OnlyTheNinetyFiveFamilyDeletesAKeyWithKeysBelow) {
    Keys().CreateKey("HKCU\\a\\b");
    EXPECT_EQ(simulated::RegDeleteKeyA(HKEY_CURRENT_USER, "a"), 5);
    EXPECT_EQ(simulated::RegDeleteKeyA(HKEY_CURRENT_USER, "missing"), 2);
    EXPECT_EQ(simulated::RegDeleteKeyA(HKEY_CURRENT_USER, "a\\b"), 0);
    EXPECT_EQ(simulated::RegDeleteKeyA(HKEY_CURRENT_USER, "a"), 0);
    EXPECT_EQ(simulated::RegDeleteKeyA(HKEY_CURRENT_USER, ""), 5);
    Start("win98");
    Keys().CreateKey("HKCU\\a\\b");
    EXPECT_EQ(simulated::RegDeleteKeyA(HKEY_CURRENT_USER, "a"), 0);
    EXPECT_FALSE(Keys().KeyExists("HKCU\\a"));
}

// ---- rights ---------------------------------------------------------------------------------------------------------

TEST_F(RegistryCalls, AHandleForReadingWritesNothingAndOneForWritingReadsNothing) {
    Keys().SetText("HKCU\\k", "v", "x");
    Key reading(HKEY_CURRENT_USER, "k", KEY_READ);
    EXPECT_EQ(SetValue(reading, "v", REG_SZ, "y\0"s), 5);
    EXPECT_EQ(TryCreate(reading, "below"), 0) << "creation goes by the key's own rights";
    Key writing(HKEY_CURRENT_USER, "k", KEY_WRITE);
    char name[8];
    DWORD size = sizeof name;
    EXPECT_EQ(simulated::RegQueryValueExA(writing, "v", nullptr, nullptr, nullptr, nullptr), 5);
    EXPECT_EQ(simulated::RegEnumValueA(writing, 0, name, &size, nullptr, nullptr, nullptr, nullptr), 5);
    EXPECT_EQ(SetValue(writing, "v", REG_SZ, "y\0"s), 0);
    Key generic(HKEY_CURRENT_USER, "k", GENERIC_READ | GENERIC_WRITE);
    EXPECT_EQ(SetValue(generic, "v", REG_SZ, "y\0"s), 0);
    EXPECT_EQ(simulated::RegQueryValueExA(generic, "v", nullptr, nullptr, nullptr, nullptr), 0);
}

TEST_F(RegistryCalls, AnyHandleWritesOnTheNinetyFiveFamily) {
    Start("win95");
    Key anything(HKEY_CURRENT_USER, "k", KEY_READ);
    EXPECT_EQ(SetValue(anything, "v", REG_SZ, "y\0"s), 0) << "the 9x family has no rights";
}

TEST_F(RegistryCalls, ADeniedKeyGivesFive) {
    Keys().CreateKey("HKLM\\SOFTWARE\\a\\b");
    Keys().Deny("HKLM\\SOFTWARE\\a");
    EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, "Software\\A\\b", KEY_WRITE), 5);
    EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, "Software\\A\\b", KEY_READ), 0);
    EXPECT_EQ(TryCreate(HKEY_LOCAL_MACHINE, "Software\\a\\new", nullptr, KEY_READ), 5);
    EXPECT_EQ(TryCreate(HKEY_LOCAL_MACHINE, "Software\\a", nullptr, KEY_ALL_ACCESS), 5);
    EXPECT_EQ(simulated::RegDeleteKeyA(HKEY_LOCAL_MACHINE, "Software\\a\\b"), 5);
    Keys().Deny("HKLM\\SOFTWARE\\a", true);
    EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, "Software\\A\\b", KEY_READ), 5);
    Keys().Deny("HKCU");
    EXPECT_EQ(SetValue(HKEY_CURRENT_USER, "v", REG_SZ, "x\0"s), 5);
}

TEST_F(RegistryCalls, OnlyAnAdministratorWritesBelowTheLocalMachine) {
    RemoveRights();
    EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, "SOFTWARE", KEY_READ), 0);
    EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, "SOFTWARE", KEY_WRITE), 5);
    EXPECT_EQ(TryOpen(HKEY_LOCAL_MACHINE, "SOFTWARE", KEY_ALL_ACCESS), 5);
    EXPECT_EQ(TryCreate(HKEY_LOCAL_MACHINE, "SOFTWARE\\new", nullptr, KEY_READ), 5);
    EXPECT_EQ(TryCreate(HKEY_CLASSES_ROOT, ".new"), 5);
    EXPECT_EQ(SetValue(HKEY_LOCAL_MACHINE, "v", REG_SZ, "x\0"s), 5);
    EXPECT_EQ(TryCreate(HKEY_CURRENT_USER, "Software\\new"), 0);
    HKEY key = nullptr;
    ASSERT_EQ(simulated::RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE", 0, 0x02000000, &key), 0) << "all that it may";
    EXPECT_EQ(SetValue(key, "v", REG_SZ, "x\0"s), 5);
    EXPECT_EQ(simulated::RegCloseKey(key), 0);
    Start("win98");
    RemoveRights();
    EXPECT_EQ(TryCreate(HKEY_LOCAL_MACHINE, "SOFTWARE\\new"), 0);
}

class RegistryOnEverySystem : public EverySystemTest {};

TEST_P(RegistryOnEverySystem, KeepsAValueAcrossAReopenedMachine) {
    {
        Key key(HKEY_LOCAL_MACHINE, "SYSTEM\\CurrentControlSet\\Control\\Print\\Printers\\P 1\\PrinterDriverData",
                KEY_READ | KEY_WRITE);
        EXPECT_EQ(SetValue(key, "udpWidth", REG_DWORD, "\1\2\3\4"), 0);
    }
    Test().Reopen();
    EXPECT_EQ(Machine().Registry().Number(
                  "HKLM\\System\\CurrentControlSet\\Control\\Print\\Printers\\P 1\\PrinterDriverData", "UDPWIDTH"),
              0x04030201u);
}

INSTANTIATE_ON_EVERY_SYSTEM(RegistryOnEverySystem);

}  // namespace
}  // namespace pikel
