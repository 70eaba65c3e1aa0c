#include "machine/system/messages.h"

#include <cstring>

#include "support/machine_test.h"

namespace pikel {
namespace {

using simulated::BlockKind;
using simulated::CodeName;
using simulated::MessageText;

TEST(Messages, HaveNamesAndTextsThatEndInALineBreak) {
    EXPECT_EQ(CodeName(2), "ERROR_FILE_NOT_FOUND");
    EXPECT_EQ(MessageText(2), "The system cannot find the file specified.\r\n");
    EXPECT_EQ(CodeName(0xE0000102), "ERROR_LINE_NOT_FOUND");
    EXPECT_EQ(MessageText(0xE0000102), "The required line was not found in the INF.\r\n");
    EXPECT_EQ(CodeName(1722), "RPC_S_SERVER_UNAVAILABLE");
    EXPECT_EQ(MessageText(0), "The operation completed successfully.\r\n");
    EXPECT_EQ(CodeName(0x7FFFFFFF), "");
    EXPECT_EQ(MessageText(0x7FFFFFFF), "");
}

TEST(Messages, KnowEveryCodeThatTheLibraryAndTheMachineGive) {
    for (DWORD code : {ERROR_SUCCESS,
                       ERROR_INVALID_FUNCTION,
                       ERROR_FILE_NOT_FOUND,
                       ERROR_PATH_NOT_FOUND,
                       ERROR_ACCESS_DENIED,
                       ERROR_INVALID_HANDLE,
                       ERROR_NOT_ENOUGH_MEMORY,
                       ERROR_INVALID_DATA,
                       ERROR_OUTOFMEMORY,
                       ERROR_NO_MORE_FILES,
                       ERROR_WRITE_PROTECT,
                       ERROR_SHARING_VIOLATION,
                       ERROR_LOCK_VIOLATION,
                       ERROR_NOT_SUPPORTED,
                       ERROR_FILE_EXISTS,
                       ERROR_INVALID_PARAMETER,
                       ERROR_DISK_FULL,
                       ERROR_CALL_NOT_IMPLEMENTED,
                       ERROR_INSUFFICIENT_BUFFER,
                       ERROR_INVALID_NAME,
                       ERROR_INVALID_LEVEL,
                       ERROR_MOD_NOT_FOUND,
                       ERROR_PROC_NOT_FOUND,
                       ERROR_DIR_NOT_EMPTY,
                       ERROR_ALREADY_EXISTS,
                       ERROR_MORE_DATA,
                       ERROR_NO_MORE_ITEMS,
                       ERROR_DIRECTORY,
                       ERROR_INVALID_FLAGS,
                       ERROR_FILE_INVALID,
                       ERROR_BADKEY,
                       ERROR_CANTREAD,
                       ERROR_KEY_DELETED,
                       ERROR_DEPENDENT_SERVICES_RUNNING,
                       ERROR_INVALID_SERVICE_CONTROL,
                       ERROR_SERVICE_ALREADY_RUNNING,
                       ERROR_SERVICE_DISABLED,
                       ERROR_SERVICE_DOES_NOT_EXIST,
                       ERROR_SERVICE_NOT_ACTIVE,
                       ERROR_DATABASE_DOES_NOT_EXIST,
                       ERROR_NO_UNICODE_TRANSLATION,
                       ERROR_INVALID_SHARENAME,
                       ERROR_CANCELLED,
                       ERROR_INTERNAL_ERROR,
                       ERROR_TIMEOUT,
                       RPC_S_SERVER_UNAVAILABLE,
                       RPC_S_CALL_FAILED,
                       RPC_X_NULL_REF_POINTER,
                       ERROR_INVALID_USER_BUFFER,
                       ERROR_UNKNOWN_PORT,
                       ERROR_UNKNOWN_PRINTER_DRIVER,
                       ERROR_UNKNOWN_PRINTPROCESSOR,
                       ERROR_INVALID_SEPARATOR_FILE,
                       ERROR_INVALID_PRIORITY,
                       ERROR_INVALID_PRINTER_NAME,
                       ERROR_PRINTER_ALREADY_EXISTS,
                       ERROR_INVALID_PRINTER_COMMAND,
                       ERROR_INVALID_DATATYPE,
                       ERROR_INVALID_ENVIRONMENT,
                       ERROR_PRINTER_DRIVER_ALREADY_INSTALLED,
                       ERROR_RESOURCE_NAME_NOT_FOUND,
                       ERROR_INVALID_TIME,
                       ERROR_PRINTER_DELETED,
                       ERROR_INVALID_PROFILE,
                       ERROR_PROFILE_NOT_ASSOCIATED_WITH_DEVICE,
                       ERROR_PROFILE_NOT_FOUND,
                       ERROR_UNKNOWN_PRINT_MONITOR,
                       ERROR_PRINT_MONITOR_ALREADY_INSTALLED,
                       ERROR_INVALID_PRINT_MONITOR,
                       ERROR_PRINT_MONITOR_IN_USE,
                       ERROR_EXPECTED_SECTION_NAME,
                       ERROR_BAD_SECTION_NAME_LINE,
                       ERROR_SECTION_NAME_TOO_LONG,
                       ERROR_GENERAL_SYNTAX,
                       ERROR_WRONG_INF_STYLE,
                       ERROR_SECTION_NOT_FOUND,
                       ERROR_LINE_NOT_FOUND}) {
        EXPECT_NE(CodeName(code), "") << code;
        EXPECT_TRUE(MessageText(code).ends_with(".\r\n")) << code;
    }
    // Codes without a name in the project's header.
    for (DWORD code : {4u,    17u,   31u,   53u,   111u,  131u,  182u,  193u,  206u,  317u, 1117u,
                       1208u, 1222u, 1812u, 1813u, 1815u, 2118u, 2123u, 2310u, 3001u, 3010u}) {
        EXPECT_NE(CodeName(code), "") << code;
    }
}

class FormatMessage : public testing_support::MachineTest {
  protected:
    static constexpr DWORD kAllocated =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM;
    /// Text of a code as the log asks for it; "code N" for a failure.
    std::string Ask(DWORD code, DWORD language = 0x400) {
        LPSTR text = nullptr;
        Platform().SetLastError(0);
        const DWORD length =
            Platform().FormatMessageA(kAllocated, nullptr, code, language, reinterpret_cast<LPSTR>(&text), 0, nullptr);
        if (length == 0) {
            EXPECT_EQ(text, nullptr);
            return "code " + std::to_string(Platform().GetLastError());
        }
        EXPECT_TRUE(Machine().Heap().Owns(BlockKind::Local, text));
        std::string copy = text;
        EXPECT_EQ(length, copy.size());
        EXPECT_EQ(Platform().LocalFree(text), nullptr);
        return copy;
    }
};

TEST_F(FormatMessage, GivesTheSystemsTextInALocalBlock) {
    EXPECT_EQ(Ask(2), "The system cannot find the file specified.\r\n");
    EXPECT_EQ(Ask(193), "%1 is not a valid Win32 application.\r\n");
}

TEST_F(FormatMessage, FailsForUnknownCodesAndForThoseOfTheSetupApi) {
    EXPECT_EQ(Ask(99999), "code 317");
    EXPECT_EQ(Ask(0xE0000102), "code 317");
}

TEST_F(FormatMessage, HasOneLanguage) {
    for (DWORD language : {0x0u, 0x400u, 0x409u, 0x800u}) {
        EXPECT_EQ(Ask(5, language), "Access is denied.\r\n");
    }
    EXPECT_EQ(Ask(5, 0x411), "code 1815");
    EXPECT_EQ(Ask(99999, 0x411), "code 317");
}

TEST_F(FormatMessage, FailsWithoutMemory) {
    Machine().Heap().FailAllocation(0, false);
    EXPECT_EQ(Ask(2), "code 8");
}

TEST_F(FormatMessage, FillsABufferOfTheCallers) {
    char buffer[64] = {};
    const DWORD flags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    EXPECT_EQ(Platform().FormatMessageA(flags, nullptr, 5, 0, buffer, 20, nullptr), 19u);
    EXPECT_STREQ(buffer, "Access is denied.\r\n");
    EXPECT_EQ(Platform().FormatMessageA(flags, nullptr, 5, 0, buffer, 19, nullptr), 0u);
    EXPECT_EQ(Platform().GetLastError(), 122u);
    EXPECT_EQ(Platform().FormatMessageA(flags, nullptr, 5, 0, nullptr, 19, nullptr), 0u);
    EXPECT_EQ(Platform().GetLastError(), 87u);
}

TEST_F(FormatMessage, AnAllocatedBlockIsAtLeastAsLargeAsAsked) {
    LPSTR text = nullptr;
    EXPECT_EQ(Platform().FormatMessageA(kAllocated, nullptr, 5, 0, reinterpret_cast<LPSTR>(&text), 500, nullptr), 19u);
    EXPECT_EQ(Machine().Heap().Size(text), 500u);
    Platform().LocalFree(text);
}

TEST_F(FormatMessage, PutsInsertsIn) {
    char buffer[64] = {};
    const char* arguments[] = {"one", "two"};
    void* address = arguments;
    auto* list = static_cast<va_list*>(address);
    constexpr DWORD kArray = 0x2000;
    constexpr DWORD kFromString = 0x400;
    EXPECT_NE(Platform().FormatMessageA(kFromString | kArray, "%2 and %1%%%!%n%0 lost", 0, 0, buffer, 64, list), 0u);
    EXPECT_STREQ(buffer, "two and one%!\r\n");
    EXPECT_NE(Platform().FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | kArray, nullptr, 193, 0, buffer, 64, list), 0u);
    EXPECT_STREQ(buffer, "one is not a valid Win32 application.\r\n");
    EXPECT_EQ(Platform().FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, 193, 0, buffer, 64, nullptr), 0u);
    EXPECT_EQ(Platform().GetLastError(), 87u);
}

DWORD FormatWithList(char* buffer, DWORD size, const char* format, ...) {
    va_list list;
    va_start(list, format);
    const DWORD length = Platform().FormatMessageA(0x400, format, 0, 0, buffer, size, &list);
    va_end(list);
    return length;
}

TEST_F(FormatMessage, TakesInsertsFromAListInAnyOrder) {
    char buffer[64] = {};
    EXPECT_EQ(FormatWithList(buffer, 64, "%3 %1 %2 %1", "a", "b", "c"), 7u);
    EXPECT_STREQ(buffer, "c a b a");
}

TEST_F(FormatMessage, NeedsASource) {
    char buffer[64] = {};
    EXPECT_EQ(Platform().FormatMessageA(0, nullptr, 5, 0, buffer, 64, nullptr), 0u);
    EXPECT_EQ(Platform().GetLastError(), 87u);
    EXPECT_EQ(Platform().FormatMessageA(0x800, nullptr, 5, 0, buffer, 64, nullptr), 0u);
    EXPECT_EQ(Platform().GetLastError(), 317u);
}

}  // namespace
}  // namespace pikel
