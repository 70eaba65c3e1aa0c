// SetupOpenInfFileA and the reading calls: codes, contexts, buffers, handles.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/machine_test.h"

namespace pikel {
namespace {

using simulated::HandleKind;
using ::testing::ElementsAre;
using testing_support::MachineTest;
using testing_support::TestMachine;
using testing_support::WriteFileOn;

constexpr char kPath[] = "C:\\drv\\test.inf";
constexpr char kText[] =
    "[Version]\r\nSignature=\"$CHICAGO$\"\r\nClass=Printer\r\n[A]\r\nk=v,w\r\nK=second\r\nq\r\na,b\r\n%s%=sub\r\n"
    "[E]\r\n[Strings]\r\ns=key of s\r\n";

class InfOperations : public MachineTest {
  protected:
    InfOperations() { WriteFileOn(Machine(), kPath, kText); }

    /// Code that opening gives; 0 for success.
    DWORD OpenCode(const char* path, const char* className = nullptr, DWORD style = INF_STYLE_WIN4) {
        m_line = 0xdead;
        Platform().SetLastError(0xbeef);
        InfHandle inf(Platform().SetupOpenInfFileA(path, className, style, &m_line));
        const DWORD code = Platform().GetLastError();
        return inf ? 0 : code;
    }
    HINF Open() {
        m_inf.Reset(Platform().SetupOpenInfFileA(kPath, nullptr, INF_STYLE_WIN4, nullptr));
        EXPECT_TRUE(static_cast<bool>(m_inf));
        return m_inf.Get();
    }
    INFCONTEXT First(const char* section, const char* key = nullptr) {
        INFCONTEXT context{};
        EXPECT_TRUE(Platform().SetupFindFirstLineA(m_inf.Get(), section, key, &context)) << section;
        return context;
    }
    std::string Field(INFCONTEXT context, DWORD index) {
        char buffer[100] = "";
        EXPECT_TRUE(Platform().SetupGetStringFieldA(&context, index, buffer, sizeof buffer, nullptr));
        return buffer;
    }

    InfHandle m_inf;
    UINT m_line = 0;
};

template <class Result>
::testing::AssertionResult Fails(Result result, DWORD code) {
    const DWORD got = Platform().GetLastError();
    if (result) {
        return ::testing::AssertionFailure() << "succeeds";
    }
    return got == code ? ::testing::AssertionSuccess() : ::testing::AssertionFailure() << "gives " << got;
}

// ---- opening --------------------------------------------------------------------------------------------------------

TEST_F(InfOperations, OpeningTellsWhyNot) {
    EXPECT_EQ(OpenCode("C:\\drv\\none.inf"), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(m_line, 0u);
    EXPECT_EQ(OpenCode("C:\\nowhere\\none.inf"), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(OpenCode("C:\\drv"), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(OpenCode(""), DWORD{ERROR_ACCESS_DENIED});
    EXPECT_EQ(OpenCode(nullptr), DWORD{ERROR_INVALID_PARAMETER});
    WriteFileOn(Machine(), "C:\\drv\\empty.inf", "");
    EXPECT_EQ(OpenCode("C:\\drv\\empty.inf"), DWORD{ERROR_FILE_INVALID});
    WriteFileOn(Machine(), "C:\\drv\\bad.inf", "[A]\r\nk=v\r\n[B\r\n");
    EXPECT_EQ(OpenCode("C:\\drv\\bad.inf"), DWORD{ERROR_BAD_SECTION_NAME_LINE});
    EXPECT_EQ(m_line, 3u);
    WriteFileOn(Machine(), "C:\\drv\\text.inf", "; c\r\ntext\r\n");
    EXPECT_EQ(OpenCode("C:\\drv\\text.inf"), DWORD{ERROR_EXPECTED_SECTION_NAME});
    EXPECT_EQ(m_line, 2u);
    WriteFileOn(Machine(), "C:\\drv\\long.inf", "[" + std::string(256, 'x') + "]\r\n");
    EXPECT_EQ(OpenCode("C:\\drv\\long.inf"), DWORD{ERROR_SECTION_NAME_TOO_LONG});
    WriteFileOn(Machine(), "C:\\drv\\garbage.inf",
                std::string("\x7F"
                            "ELF\0\1\2\3\xFF\xFE",
                            10));
    EXPECT_EQ(OpenCode("C:\\drv\\garbage.inf"), DWORD{ERROR_EXPECTED_SECTION_NAME});
    Machine().Files().Deny("C:\\drv\\test.inf");
    EXPECT_EQ(OpenCode(kPath), DWORD{ERROR_ACCESS_DENIED});
}

TEST_F(InfOperations, AFileThatSomebodyWritesCanNotBeOpened) {
    {
        simulated::Files::Held held = Machine().Files().HoldOpen(kPath);
        EXPECT_EQ(OpenCode(kPath), DWORD{ERROR_SHARING_VIOLATION});
    }
    {
        simulated::Files::Held held = Machine().Files().HoldOpen(kPath, FILE_SHARE_READ);
        EXPECT_EQ(OpenCode(kPath), 0u);
    }
    FileHandle writer(Platform().CreateFileA(kPath, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                             OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    ASSERT_TRUE(static_cast<bool>(writer));
    EXPECT_EQ(OpenCode(kPath), DWORD{ERROR_SHARING_VIOLATION});
}

TEST_F(InfOperations, AnOpenInfDoesNotHoldItsFile) {
    Open();
    FileHandle writer(
        Platform().CreateFileA(kPath, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_TRUE(static_cast<bool>(writer));
}

TEST_F(InfOperations, ANameWithoutAFolderIsLookedForInTheInfFolder) {
    WriteFileOn(Machine(), Machine().System().windowsDirectory + "\\inf\\byname.inf", "[A]\r\n");
    WriteFileOn(Machine(), "C:\\root.inf", "[A]\r\n");
    EXPECT_EQ(OpenCode("BYNAME.INF"), 0u);
    EXPECT_EQ(OpenCode("root.inf"), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(OpenCode(".\\root.inf"), 0u);
    EXPECT_EQ(OpenCode("\\root.inf"), 0u);
    EXPECT_EQ(OpenCode("C:/drv/test.inf"), 0u);
    EXPECT_EQ(OpenCode("inf\\byname.inf"), DWORD{ERROR_PATH_NOT_FOUND});
}

TEST_F(InfOperations, AFileNeedsNoSignatureInAnyStyle) {
    WriteFileOn(Machine(), "C:\\drv\\none.inf", "[A]\r\nk=v\r\n");
    WriteFileOn(Machine(), "C:\\drv\\other.inf", "[Version]\r\nSignature=other\r\n");
    for (DWORD style : {DWORD{INF_STYLE_WIN4}, DWORD{1}, DWORD{3}}) {
        EXPECT_EQ(OpenCode(kPath, nullptr, style), 0u);
        EXPECT_EQ(OpenCode("C:\\drv\\none.inf", nullptr, style), 0u);
        EXPECT_EQ(OpenCode("C:\\drv\\other.inf", nullptr, style), 0u);
    }
}

TEST_F(InfOperations, AClassIsComparedWithoutRegardToCase) {
    EXPECT_EQ(OpenCode(kPath, "PRINTER"), 0u);
    EXPECT_EQ(OpenCode(kPath, "Net"), 0xE0000201u);
}

TEST_F(InfOperations, TextIsReadInTheCodePageOfTheMachine) {
    simulated::SystemDescription japanese = Machine().System();
    japanese.codePage = 932;
    Machine().SetSystem(japanese);
    WriteFileOn(Machine(), kPath, std::string("\xFF\xFE[\0A\0]\0\n\0k\0=\0\x42\x30\n\0", 18));  // hiragana A
    Open();
    EXPECT_EQ(Field(First("A"), 1), "\x82\xA0");
}

// ---- handles and contexts -------------------------------------------------------------------------------------------

TEST_F(InfOperations, AClosedOrForeignHandleIsRefused) {
    INFCONTEXT context{};
    char buffer[10];
    for (HINF handle : {INVALID_HANDLE_VALUE, HINF{}, reinterpret_cast<HINF>(0x7770)}) {
        EXPECT_TRUE(Fails(Platform().SetupFindFirstLineA(handle, "A", nullptr, &context), ERROR_INVALID_HANDLE));
        EXPECT_TRUE(Fails(Platform().SetupGetLineByIndexA(handle, "A", 0, &context), ERROR_INVALID_HANDLE));
        EXPECT_TRUE(
            Fails(Platform().SetupGetLineTextA(nullptr, handle, "A", "k", buffer, 10, nullptr), ERROR_INVALID_HANDLE));
        EXPECT_TRUE(Fails(Platform().SetupSetDirectoryIdA(handle, 40000, "C:\\x"), ERROR_INVALID_HANDLE));
    }
    HSPFILEQ queue = Platform().SetupOpenFileQueue();
    EXPECT_TRUE(Fails(Platform().SetupFindFirstLineA(queue, "A", nullptr, &context), ERROR_INVALID_HANDLE));
    EXPECT_TRUE(Platform().SetupCloseFileQueue(queue));
}

TEST_F(InfOperations, AStaleOrDamagedContextIsRefused) {
    Open();
    const INFCONTEXT good = First("A");
    INFCONTEXT out{};
    char buffer[10];
    auto refused = [&](INFCONTEXT context, DWORD code) {
        EXPECT_TRUE(Fails(Platform().SetupFindNextLine(&context, &out), code));
        EXPECT_TRUE(Fails(Platform().SetupGetStringFieldA(&context, 0, buffer, 10, nullptr), code));
        EXPECT_TRUE(
            Fails(Platform().SetupGetLineTextA(&context, nullptr, nullptr, nullptr, buffer, 10, nullptr), code));
    };
    INFCONTEXT damaged = good;
    damaged.Section = 4;
    refused(damaged, ERROR_INVALID_PARAMETER);
    damaged = good;
    damaged.Line = 5;
    refused(damaged, ERROR_INVALID_PARAMETER);
    damaged = good;
    std::memset(static_cast<void*>(&damaged), 0x55, sizeof damaged);
    refused(damaged, ERROR_INVALID_HANDLE);
    refused({}, ERROR_INVALID_HANDLE);
    damaged = good;
    damaged.CurrentInf = nullptr;
    refused(damaged, ERROR_INVALID_HANDLE);
    m_inf.Reset();
    refused(good, ERROR_INVALID_HANDLE);
}

TEST_F(InfOperations, NullArgumentsAreRefused) {
    HINF inf = Open();
    INFCONTEXT context = First("A");
    EXPECT_TRUE(Fails(Platform().SetupFindFirstLineA(inf, nullptr, nullptr, &context), ERROR_INVALID_PARAMETER));
    EXPECT_TRUE(Fails(Platform().SetupFindFirstLineA(inf, "A", nullptr, nullptr), ERROR_INVALID_PARAMETER));
    EXPECT_TRUE(Fails(Platform().SetupFindNextLine(nullptr, &context), ERROR_INVALID_PARAMETER));
    EXPECT_TRUE(Fails(Platform().SetupFindNextLine(&context, nullptr), ERROR_INVALID_PARAMETER));
    EXPECT_TRUE(Fails(Platform().SetupGetLineByIndexA(inf, nullptr, 0, &context), ERROR_INVALID_PARAMETER));
    EXPECT_TRUE(Fails(Platform().SetupGetLineByIndexA(inf, "A", 0, nullptr), ERROR_INVALID_PARAMETER));
    EXPECT_TRUE(Fails(Platform().SetupGetStringFieldA(nullptr, 0, nullptr, 0, nullptr), ERROR_INVALID_PARAMETER));
    EXPECT_TRUE(Fails(Platform().SetupGetLineTextA(nullptr, inf, nullptr, nullptr, nullptr, 0, nullptr),
                      ERROR_INVALID_PARAMETER));
}

TEST(InfHandles, AWrongOrSecondCloseIsNoted) {
    TestMachine machine;
    machine.AllowOpen();
    WriteFileOn(*machine, kPath, kText);
    HINF inf = Platform().SetupOpenInfFileA(kPath, nullptr, INF_STYLE_WIN4, nullptr);
    EXPECT_EQ(machine->Handles().OpenCount(HandleKind::Inf), 1u);
    Platform().SetLastError(0);
    EXPECT_TRUE(Fails(Platform().SetupCloseFileQueue(inf), ERROR_INVALID_HANDLE));
    EXPECT_EQ(machine->Handles().OpenCount(HandleKind::Inf), 1u);
    Platform().SetupCloseInfFile(inf);
    EXPECT_EQ(machine->Handles().OpenCount(), 0u);
    Platform().SetupCloseInfFile(inf);
    EXPECT_EQ(machine->Handles().Misuses().size(), 2u);
}

// ---- finding lines --------------------------------------------------------------------------------------------------

TEST_F(InfOperations, LinesAreFoundByKeyAndInTurn) {
    HINF inf = Open();
    EXPECT_EQ(Field(First("a", "K"), 1), "v");
    EXPECT_EQ(Field(First("A", "KEY OF S"), 1), "sub");
    EXPECT_EQ(Field(First("A", "q"), 0), "q");
    INFCONTEXT context = First("A");
    EXPECT_EQ(context.Inf, inf);
    EXPECT_EQ(context.CurrentInf, inf);
    std::vector<std::string> firsts;
    do {
        firsts.push_back(Field(context, 1));
    } while (Platform().SetupFindNextLine(&context, &context));
    EXPECT_EQ(Platform().GetLastError(), DWORD{ERROR_LINE_NOT_FOUND});
    EXPECT_THAT(firsts, ElementsAre("v", "second", "q", "a", "sub"));
    EXPECT_EQ(context.Line, 4u) << "the end leaves the context as it is";
}

TEST_F(InfOperations, WhatIsMissingLeavesTheContextAlone) {
    HINF inf = Open();
    INFCONTEXT context;
    std::memset(static_cast<void*>(&context), 0x55, sizeof context);
    for (const auto& [section, key] : std::vector<std::pair<const char*, const char*>>{{"none", nullptr},
                                                                                       {"none", "k"},
                                                                                       {"A", "none"},
                                                                                       {"A", "a"},
                                                                                       {"A", ""},
                                                                                       {"A", "%s%"},
                                                                                       {"E", nullptr},
                                                                                       {"E", "k"},
                                                                                       {"", nullptr}}) {
        EXPECT_TRUE(Fails(Platform().SetupFindFirstLineA(inf, section, key, &context), ERROR_LINE_NOT_FOUND))
            << section << " " << (key ? key : "null");
    }
    EXPECT_TRUE(Fails(Platform().SetupGetLineByIndexA(inf, "A", 5, &context), ERROR_LINE_NOT_FOUND));
    EXPECT_TRUE(Fails(Platform().SetupGetLineByIndexA(inf, "A", 0xffffffff, &context), ERROR_LINE_NOT_FOUND));
    EXPECT_TRUE(Fails(Platform().SetupGetLineByIndexA(inf, "E", 0, &context), ERROR_LINE_NOT_FOUND));
    EXPECT_TRUE(Fails(Platform().SetupGetLineByIndexA(inf, "none", 0, &context), ERROR_LINE_NOT_FOUND));
    EXPECT_EQ(context.Line, 0x55555555u);
}

TEST_F(InfOperations, ALineIsFoundByItsIndex) {
    HINF inf = Open();
    INFCONTEXT context{};
    ASSERT_TRUE(Platform().SetupGetLineByIndexA(inf, "A", 4, &context));
    EXPECT_EQ(Field(context, 0), "key of s");
}

// ---- reading --------------------------------------------------------------------------------------------------------

TEST_F(InfOperations, SizesCountTheNul) {
    HINF inf = Open();
    INFCONTEXT context = First("A", "k");
    DWORD size = 0;
    EXPECT_TRUE(Platform().SetupGetStringFieldA(&context, 1, nullptr, 0, &size));
    EXPECT_EQ(size, 2u);
    EXPECT_TRUE(Platform().SetupGetLineTextA(&context, nullptr, nullptr, nullptr, nullptr, 0, &size));
    EXPECT_EQ(size, 4u);
    EXPECT_TRUE(Platform().SetupGetLineTextA(nullptr, inf, "A", "K", nullptr, 0, &size));
    EXPECT_EQ(size, 4u);
    EXPECT_TRUE(Platform().SetupGetStringFieldA(&context, 1, nullptr, 0, nullptr));
}

TEST_F(InfOperations, ABufferThatIsTooSmallIsLeftAlone) {
    HINF inf = Open();
    INFCONTEXT context = First("A", "k");
    char buffer[] = "####";
    DWORD size = 0;
    EXPECT_TRUE(Fails(Platform().SetupGetStringFieldA(&context, 1, buffer, 1, &size), ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(size, 2u);
    EXPECT_TRUE(Fails(Platform().SetupGetStringFieldA(&context, 1, buffer, 0, nullptr), ERROR_INSUFFICIENT_BUFFER));
    EXPECT_TRUE(
        Fails(Platform().SetupGetLineTextA(nullptr, inf, "A", "k", buffer, 3, &size), ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(size, 4u);
    EXPECT_STREQ(buffer, "####");
    EXPECT_TRUE(Platform().SetupGetStringFieldA(&context, 1, buffer, 2, &size));
    EXPECT_STREQ(buffer, "v");
    EXPECT_TRUE(Platform().SetupGetLineTextA(nullptr, inf, "A", "k", buffer, 4, &size));
    EXPECT_STREQ(buffer, "v,w");
}

TEST_F(InfOperations, WhatIsMissingLeavesTheSizeAlone) {
    HINF inf = Open();
    INFCONTEXT context = First("A", "k");
    DWORD size = 77;
    Platform().SetLastError(0xbeef);
    EXPECT_TRUE(Fails(Platform().SetupGetStringFieldA(&context, 3, nullptr, 0, &size), 0));
    EXPECT_TRUE(Fails(Platform().SetupGetStringFieldA(&context, 0xffffffff, nullptr, 0, &size), 0));
    INFCONTEXT keyless = First("A");
    keyless.Line = 3;
    EXPECT_TRUE(Fails(Platform().SetupGetStringFieldA(&keyless, 0, nullptr, 0, &size), 0)) << "no key";
    for (const char* section : {"A", "none"}) {
        EXPECT_TRUE(Fails(Platform().SetupGetLineTextA(nullptr, inf, section, "none", nullptr, 0, &size),
                          ERROR_LINE_NOT_FOUND));
    }
    EXPECT_EQ(size, 77u);
}

TEST_F(InfOperations, TheTextOfALineMayBeNamedInThreeWays) {
    HINF inf = Open();
    char buffer[20];
    ASSERT_TRUE(Platform().SetupGetLineTextA(nullptr, inf, "A", nullptr, buffer, sizeof buffer, nullptr));
    EXPECT_STREQ(buffer, "v,w") << "the first line of the section";
    ASSERT_TRUE(Platform().SetupGetLineTextA(nullptr, inf, "A", "q", buffer, sizeof buffer, nullptr));
    EXPECT_STREQ(buffer, "q");
    INFCONTEXT context = First("A", "K");
    ASSERT_TRUE(Platform().SetupFindNextLine(&context, &context));
    ASSERT_TRUE(Platform().SetupGetLineTextA(&context, inf, "A", "q", buffer, sizeof buffer, nullptr));
    EXPECT_STREQ(buffer, "second") << "a context counts alone";
}

TEST_F(InfOperations, SuccessLeavesTheLastErrorAlone) {
    HINF inf = Open();
    INFCONTEXT context = First("A");
    Platform().SetLastError(0xbeef);
    EXPECT_TRUE(Platform().SetupFindFirstLineA(inf, "A", nullptr, &context));
    EXPECT_TRUE(Platform().SetupFindNextLine(&context, &context));
    EXPECT_TRUE(Platform().SetupGetStringFieldA(&context, 1, nullptr, 0, nullptr));
    EXPECT_TRUE(Platform().SetupGetLineTextA(&context, nullptr, nullptr, nullptr, nullptr, 0, nullptr));
    EXPECT_EQ(Platform().GetLastError(), 0xbeefu);
}

TEST_F(InfOperations, FoldersAreKnownByTheirNumbers) {
    WriteFileOn(Machine(), kPath, "[A]\r\nk=%10%,%11%,%1%,%24%,%40000%,%40001%\r\n");
    HINF inf = Open();
    ASSERT_TRUE(Platform().SetupSetDirectoryIdA(inf, 40000, "C:\\mine"));
    char buffer[200];
    ASSERT_TRUE(Platform().SetupGetLineTextA(nullptr, inf, "A", "k", buffer, sizeof buffer, nullptr));
    const simulated::SystemDescription& system = Machine().System();
    EXPECT_EQ(buffer, system.windowsDirectory + "," + system.systemDirectory + ",C:\\drv,C:\\,C:\\mine,%40001%");
}

}  // namespace
}  // namespace pikel
