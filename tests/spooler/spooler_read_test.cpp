// The helpers that read from the spooler: their two-call shape, opening, and the message pump.
#include "spooler/spooler_read.h"

#include <cstring>

#include "machine/desktop/desktop.h"
#include "support/printer_machine.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// What GetPrinterA or EnumPrintersA answers, and what it was asked.
struct Answer {
    BOOL success = FALSE;
    DWORD code = 0;
};
struct Question {
    DWORD level;
    LPBYTE buffer;
    DWORD size;
    bool operator==(const Question&) const = default;
};
struct Script {
    std::vector<Answer> answers;
    DWORD needed = 0;
    DWORD count = 0;
    HANDLE handle = nullptr;
    DWORD flags = 0;
    bool named = false;
    std::vector<Question> questions;
};
Script g_script;

BOOL Play(DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed) {
    const std::size_t turn = g_script.questions.size();
    g_script.questions.push_back({level, buffer, size});
    *needed = g_script.needed;
    if (turn >= g_script.answers.size()) {
        ADD_FAILURE() << "asked once too often";
        return FALSE;
    }
    const Answer answer = g_script.answers[turn];
    if (answer.success) {
        if (buffer != nullptr) {
            std::memset(buffer, 0x5A, size);
        }
    } else {
        Platform().SetLastError(answer.code);
    }
    return answer.success;
}

BOOL WINAPI PlayGetPrinter(HANDLE printer, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed) {
    g_script.handle = printer;
    return Play(level, buffer, size, needed);
}

BOOL WINAPI PlayEnumPrinters(DWORD flags, LPSTR name, DWORD level, LPBYTE buffer, DWORD size, LPDWORD needed,
                             LPDWORD count) {
    g_script.flags = flags;
    g_script.named = name != nullptr;
    const BOOL success = Play(level, buffer, size, needed);
    *count = g_script.count;
    return success;
}

const HANDLE kHandle = reinterpret_cast<HANDLE>(static_cast<uintptr_t>(0x44));

/// Both reads have one shape: the tests run for each.
enum class Reader { GetPrinter, EnumPrinters };

class SpoolerRead : public MachineTest, public ::testing::WithParamInterface<Reader> {
  protected:
    SpoolerRead() {
        m_replaced.table.GetPrinterA = PlayGetPrinter;
        m_replaced.table.EnumPrintersA = PlayEnumPrinters;
        g_script = {};
        g_script.needed = 200;
        g_script.count = 3;
    }
    DWORD Read(HeapBlock& block) {
        return GetParam() == Reader::GetPrinter ? GetPrinterInfo(kHandle, 2, block)
                                                : EnumPrinterInfo(kLocalAndConnected, nullptr, 2, block, &m_count);
    }
    /// Nothing is told of a block that isn't there.
    void ExpectNoCount() const {
        if (GetParam() == Reader::EnumPrinters) {
            EXPECT_EQ(m_count, 0u);
        }
    }

    ReplacedOperations m_replaced;
    DWORD m_count = 77;
};

INSTANTIATE_TEST_SUITE_P(Readers, SpoolerRead, ::testing::Values(Reader::GetPrinter, Reader::EnumPrinters),
                         [](const auto& info) {
                             return info.param == Reader::GetPrinter ? "GetPrinterInfo" : "EnumPrinterInfo";
                         });

TEST_P(SpoolerRead, AsksForTheSizeAndThenForTheData) {
    g_script.answers = {{FALSE, ERROR_INSUFFICIENT_BUFFER}, {TRUE, 0}};
    HeapBlock block;
    EXPECT_EQ(Read(block), 0u);
    ASSERT_TRUE(block);
    EXPECT_EQ(Machine().Heap().Size(block.Get()), 200u);
    EXPECT_EQ(static_cast<BYTE*>(block.Get())[199], 0x5A);
    EXPECT_THAT(g_script.questions,
                ElementsAre(Question{2, nullptr, 0}, Question{2, static_cast<LPBYTE>(block.Get()), 200}));
    if (GetParam() == Reader::GetPrinter) {
        EXPECT_EQ(g_script.handle, kHandle);
    } else {
        EXPECT_EQ(m_count, 3u);
        EXPECT_EQ(g_script.flags, 6u);
        EXPECT_FALSE(g_script.named);
    }
}

TEST_P(SpoolerRead, FirstCallThatSucceedsGivesZeroAndNoBlock) {
    g_script.answers = {{TRUE, 0}};
    HeapBlock block = AllocateHeap(16);
    EXPECT_EQ(Read(block), 0u);
    EXPECT_FALSE(block);
    EXPECT_EQ(g_script.questions.size(), 1u);
    ExpectNoCount();
}

TEST_P(SpoolerRead, OnlyTheSmallBufferErrorLeadsToASecondCall) {
    for (DWORD code : {ERROR_SUCCESS, ERROR_ACCESS_DENIED, ERROR_INVALID_HANDLE, ERROR_INVALID_LEVEL, ERROR_MORE_DATA,
                       RPC_S_SERVER_UNAVAILABLE}) {
        g_script.questions.clear();
        g_script.answers = {{FALSE, code}};
        HeapBlock block = AllocateHeap(16);
        EXPECT_EQ(Read(block), code);
        EXPECT_FALSE(block) << code;
        EXPECT_EQ(g_script.questions.size(), 1u) << code;
        ExpectNoCount();
    }
}

TEST_P(SpoolerRead, FailedSecondCallLeavesNoBlock) {
    // 122 again is no reason for a third call.
    for (DWORD code : {ERROR_INSUFFICIENT_BUFFER, ERROR_ACCESS_DENIED}) {
        g_script.questions.clear();
        g_script.answers = {{FALSE, ERROR_INSUFFICIENT_BUFFER}, {FALSE, code}};
        HeapBlock block = AllocateHeap(16);
        EXPECT_EQ(Read(block), code);
        EXPECT_FALSE(block) << code;
        EXPECT_EQ(g_script.questions.size(), 2u) << code;
        ExpectNoCount();
    }
    EXPECT_EQ(Machine().Heap().OpenCount(), 0u);
}

TEST_P(SpoolerRead, FailedAllocationGivesOutOfMemory) {
    g_script.answers = {{FALSE, ERROR_INSUFFICIENT_BUFFER}};
    HeapBlock block = AllocateHeap(16);
    Machine().Heap().FailAllocation(0, false);
    EXPECT_EQ(Read(block), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_FALSE(block);
    EXPECT_EQ(g_script.questions.size(), 1u);
    ExpectNoCount();
}

class PrinterInfoLevel : public MachineTest, public ::testing::WithParamInterface<DWORD> {};
INSTANTIATE_TEST_SUITE_P(Levels, PrinterInfoLevel, ::testing::Values(2, 3, 5, 7, 8));

TEST_P(PrinterInfoLevel, IsPassedToBothCalls) {
    ReplacedOperations replaced;
    replaced.table.GetPrinterA = PlayGetPrinter;
    g_script = {};
    g_script.answers = {{FALSE, ERROR_INSUFFICIENT_BUFFER}, {TRUE, 0}};
    g_script.needed = 64;
    HeapBlock block;
    EXPECT_EQ(GetPrinterInfo(kHandle, GetParam(), block), 0u);
    ASSERT_EQ(g_script.questions.size(), 2u);
    EXPECT_EQ(g_script.questions[0].level, GetParam());
    EXPECT_EQ(g_script.questions[1].level, GetParam());
}

class SpoolerReadOnEverySystem : public EverySystemTest {};
INSTANTIATE_ON_EVERY_SYSTEM(SpoolerReadOnEverySystem);

TEST_P(SpoolerReadOnEverySystem, MachineWithoutPrintersHasNoBlock) {
    HeapBlock block;
    DWORD count = 77;
    EXPECT_EQ(EnumPrinterInfo(kLocalAndConnected, nullptr, 2, block, &count), 0u);
    EXPECT_FALSE(block);
    EXPECT_EQ(count, 0u);
}

TEST_P(SpoolerReadOnEverySystem, ReadsAPrinterAtLevels2And5) {
    InstallDriver(Test());
    AddPrinterTo(Test(), "P1");
    PrinterHandle printer;
    ASSERT_EQ(OpenPrinterPlainly("p1", printer), 0u);
    HeapBlock level2;
    ASSERT_EQ(GetPrinterInfo(printer.Get(), 2, level2), 0u);
    ASSERT_TRUE(level2);
    EXPECT_STREQ(static_cast<PRINTER_INFO_2A*>(level2.Get())->pPrinterName, "P1");
    EXPECT_STREQ(static_cast<PRINTER_INFO_2A*>(level2.Get())->pDriverName, kDriver);
    HeapBlock level5;
    ASSERT_EQ(GetPrinterInfo(printer.Get(), 5, level5), 0u);
    ASSERT_TRUE(level5);
    EXPECT_STREQ(static_cast<PRINTER_INFO_5A*>(level5.Get())->pPortName, kLocalPort);
}

TEST_P(SpoolerReadOnEverySystem, ListsEveryPrinter) {
    InstallDriver(Test());
    AddPrinterTo(Test(), "P1");
    AddPrinterTo(Test(), "P2");
    for (DWORD level : {2u, 5u}) {
        HeapBlock block;
        DWORD count = 0;
        EXPECT_EQ(EnumPrinterInfo(kLocalAndConnected, nullptr, level, block, &count), 0u);
        EXPECT_TRUE(block);
        EXPECT_EQ(count, 2u) << "level " << level;
    }
}

/// How OpenPrinterA was called.
struct Seen {
    std::string name;
    bool defaults = false;
    PRINTER_DEFAULTSA values{};
};

class OpeningAPrinter : public MachineTest {
  protected:
    static inline Seen s_seen;
    static inline DWORD s_code = 0;

    OpeningAPrinter() {
        s_seen = {};
        s_code = 0;
        m_replaced.table.OpenPrinterA = [](LPSTR name, LPHANDLE handle, LPPRINTER_DEFAULTSA defaults) -> BOOL {
            s_seen.name = name;
            s_seen.defaults = defaults != nullptr;
            if (defaults != nullptr) {
                s_seen.values = *defaults;
            }
            *handle = kHandle;  // also on failure, as a careless spooler may
            Platform().SetLastError(s_code);
            return s_code == 0 ? TRUE : FALSE;
        };
        m_replaced.table.ClosePrinter = [](HANDLE handle) -> BOOL {
            EXPECT_EQ(handle, kHandle);
            ++s_closed;
            return TRUE;
        };
        s_closed = 0;
    }
    static inline int s_closed = 0;
    ReplacedOperations m_replaced;
};

TEST_F(OpeningAPrinter, PlainlyPassesNoDefaults) {
    PrinterHandle printer;
    EXPECT_EQ(OpenPrinterPlainly("P1", printer), 0u);
    EXPECT_EQ(printer.Get(), kHandle);
    EXPECT_EQ(s_seen.name, "P1");
    EXPECT_FALSE(s_seen.defaults);
}

TEST_F(OpeningAPrinter, WithAccessAsksForAllOfIt) {
    PrinterHandle printer;
    EXPECT_EQ(OpenPrinterWithAccess("P1", printer), 0u);
    EXPECT_EQ(printer.Get(), kHandle);
    EXPECT_EQ(s_seen.name, "P1");
    ASSERT_TRUE(s_seen.defaults);
    EXPECT_EQ(s_seen.values.pDatatype, nullptr);
    EXPECT_EQ(s_seen.values.pDevMode, nullptr);
    EXPECT_EQ(s_seen.values.DesiredAccess, 0xF000Cu);
}

TEST_F(OpeningAPrinter, FailureLeavesTheHandleEmpty) {
    s_code = ERROR_INVALID_PRINTER_NAME;
    for (auto open : {OpenPrinterPlainly, OpenPrinterWithAccess}) {
        PrinterHandle printer;
        EXPECT_EQ(open("P1", printer), ERROR_INVALID_PRINTER_NAME);
        EXPECT_FALSE(printer);
    }
    EXPECT_EQ(s_closed, 0);
}

TEST_F(OpeningAPrinter, ClosesWhatTheHandleHeldBefore) {
    PrinterHandle printer(kHandle);
    EXPECT_EQ(OpenPrinterPlainly("P1", printer), 0u);
    EXPECT_EQ(s_closed, 1);
}

class MessagePump : public MachineTest {};

TEST_F(MessagePump, DrainsTheQueue) {
    for (UINT message : {0x400u, 0x401u, 0x402u}) {
        Machine().Desktop().queue.push_back(QueuedMessage(message));
    }
    Test().TakeCalls();
    PumpMessages();
    EXPECT_THAT(Machine().Desktop().queue, IsEmpty());
    std::vector<UINT> dispatched;
    for (const MSG& message : Machine().Desktop().dispatched) {
        dispatched.push_back(message.message);
    }
    EXPECT_THAT(dispatched, ElementsAre(0x400u, 0x401u, 0x402u));
    EXPECT_THAT(
        Test().TakeCallNames(),
        ElementsAre("PeekMessageA", "TranslateMessage", "DispatchMessageA", "PeekMessageA", "TranslateMessage",
                    "DispatchMessageA", "PeekMessageA", "TranslateMessage", "DispatchMessageA", "PeekMessageA"));
}

TEST_F(MessagePump, TakesMessagesOfEveryWindowAndKind) {
    Test().TakeCalls();
    PumpMessages();
    EXPECT_THAT(Test().TakeCalls(), ElementsAre("PeekMessageA(&, null, 0x0, 0x0, 0x1) = 0x0"));
}

}  // namespace
}  // namespace pikel
