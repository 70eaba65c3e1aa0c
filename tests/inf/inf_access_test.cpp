// The read helpers: results, the two calls of a read, and each way in which it fails.
#include "inf/inf_access.h"

#include <functional>
#include <optional>

#include "support/inf_test.h"

namespace pikel {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::StrEq;

constexpr char kText[] = R"(
[Version]
Signature="$Windows NT$"

[Numbers]
One = 1
Several = a, "b c", ,d
Empty =
Named = %name%
Alone
[Strings]
name = "A name"
)";

class InfAccess : public InfTest {};

TEST_F(InfAccess, ReadsTheTextOfALineByItsKey) {
    HINF inf = Open(kText);
    std::string text = "old";
    EXPECT_EQ(GetInfLineText(inf, "Numbers", "One", text), 0u);
    EXPECT_EQ(text, "1");
}

TEST_F(InfAccess, SeveralFieldsComeAsOneTextWithItsCommas) {
    HINF inf = Open(kText);
    std::string text;
    EXPECT_EQ(GetInfLineText(inf, "Numbers", "Several", text), 0u);
    EXPECT_EQ(text, "a,b c,,d");
}

TEST_F(InfAccess, SubstitutionsAreResolved) {
    HINF inf = Open(kText);
    std::string text;
    EXPECT_EQ(GetInfLineText(inf, "Numbers", "Named", text), 0u);
    EXPECT_EQ(text, "A name");
}

TEST_F(InfAccess, AKeyWithAnEmptyValueIsThere) {
    HINF inf = Open(kText);
    std::string text = "old";
    EXPECT_EQ(GetInfLineText(inf, "Numbers", "Empty", text), 0u);
    EXPECT_EQ(text, "");
    HeapBlock buffer;
    EXPECT_EQ(GetInfLineTextBuffer(nullptr, inf, "Numbers", "Empty", buffer), 0u);
    ASSERT_TRUE(buffer);
    EXPECT_THAT(static_cast<const char*>(buffer.Get()), StrEq(""));
}

TEST_F(InfAccess, WhatIsNotThereGives1359AndErasesTheText) {
    HINF inf = Open(kText);
    std::string text = "old";
    EXPECT_EQ(GetInfLineText(inf, "Numbers", "Two", text), 1359u);
    EXPECT_EQ(text, "");
    text = "old";
    EXPECT_EQ(GetInfLineText(inf, "Letters", "One", text), 1359u);
    EXPECT_EQ(text, "");
    text = "old";
    EXPECT_EQ(GetInfFieldByIndex(inf, "Numbers", 0, 2, text), 1359u) << "past the last field";
    EXPECT_EQ(text, "");
    text = "old";
    EXPECT_EQ(GetInfFieldByIndex(inf, "Numbers", 5, 0, text), 1359u) << "past the last line";
    EXPECT_EQ(text, "");
}

TEST_F(InfAccess, TheBufferIsABlockOfTheProcessHeapForTheCaller) {
    HINF inf = Open(kText);
    HeapBlock buffer = AllocateHeap(1);
    EXPECT_EQ(GetInfLineTextBuffer(nullptr, inf, "Numbers", "Several", buffer), 0u);
    EXPECT_THAT(static_cast<const char*>(buffer.Get()), StrEq("a,b c,,d"));
    EXPECT_EQ(Machine().Heap().Size(buffer.Get()), 10u) << "the text, its NUL and one more";
    EXPECT_EQ(GetInfLineTextBuffer(nullptr, inf, "Numbers", "Two", buffer), 1359u);
    EXPECT_FALSE(buffer) << "emptied first";
}

TEST_F(InfAccess, ReadsTheLineThatAContextStandsOn) {
    HINF inf = Open(kText);
    INFCONTEXT context{};
    ASSERT_TRUE(Platform().SetupFindFirstLineA(inf, "Numbers", "Several", &context));
    std::string text;
    EXPECT_EQ(GetInfLineText(context, text), 0u);
    EXPECT_EQ(text, "a,b c,,d");
    EXPECT_EQ(GetInfField(context, 0, text), 0u);
    EXPECT_EQ(text, "Several");
    EXPECT_EQ(GetInfField(context, 2, text), 0u);
    EXPECT_EQ(text, "b c");
    HeapBlock buffer;
    EXPECT_EQ(GetInfLineTextBuffer(&context, nullptr, nullptr, nullptr, buffer), 0u);
    EXPECT_THAT(static_cast<const char*>(buffer.Get()), StrEq("a,b c,,d"));
}

TEST_F(InfAccess, FieldZeroIsTheKeyAndForALoneValueTheValue) {
    HINF inf = Open(kText);
    std::string text;
    EXPECT_EQ(GetInfFieldByIndex(inf, "Numbers", 0, 0, text), 0u);
    EXPECT_EQ(text, "One");
    EXPECT_EQ(GetInfFieldByIndex(inf, "Numbers", 0, 1, text), 0u);
    EXPECT_EQ(text, "1");
    EXPECT_EQ(GetInfFieldByIndex(inf, "Numbers", 4, 0, text), 0u);
    EXPECT_EQ(text, "Alone");
}

TEST_F(InfAccess, AReadIsTwoCallsThroughNothingElse) {
    HINF inf = Open(kText);
    std::string text;
    GetInfLineText(inf, "Numbers", "One", text);
    EXPECT_THAT(Test().TakeCallNames(), ElementsAre("SetupGetLineTextA", "SetupGetLineTextA"));
    GetInfLineText(inf, "Numbers", "Two", text);
    EXPECT_THAT(Test().TakeCallNames(), ElementsAre("SetupGetLineTextA"));
    GetInfFieldByIndex(inf, "Numbers", 1, 1, text);
    EXPECT_THAT(Test().TakeCallNames(),
                ElementsAre("SetupGetLineByIndexA", "SetupGetStringFieldA", "SetupGetStringFieldA"));
}

TEST_F(InfAccess, ALineThatIsNotFoundByIndexIsNotAskedForItsCode) {
    HINF inf = Open(kText);
    std::string text = "old";
    faults::FailCall("SetupGetLineByIndexA", 1, 5);
    EXPECT_EQ(GetInfFieldByIndex(inf, "Numbers", 0, 0, text), 1359u);
    EXPECT_EQ(text, "");
}

// ---- the two calls, seen from below ---------------------------------------------------------------------------------

/// One call of a read as it came in.
struct ReadCall {
    bool hasContext;
    HINF inf;
    std::string section;
    std::string key;
    DWORD field;
    bool hasBuffer;
    DWORD size;
    DWORD required;  ///< the size word as it came in
};

/// What the next calls answer.
struct ReadAnswer {
    BOOL result;
    std::optional<DWORD> required;
    std::string bytes;  ///< for the buffer
    DWORD lastError = 0;
};

std::vector<ReadCall> g_calls;
std::vector<ReadAnswer> g_answers;

BOOL Answer(ReadCall call, PSTR buffer, PDWORD required) {
    g_calls.push_back(std::move(call));
    const ReadAnswer& answer = g_answers.at(g_calls.size() - 1);
    if (answer.required) {
        *required = *answer.required;
    }
    if (buffer != nullptr) {
        std::copy(answer.bytes.begin(), answer.bytes.end(), buffer);
    }
    Platform().SetLastError(answer.lastError);
    return answer.result;
}

std::string TextOrNull(PCSTR text) {
    return text == nullptr ? "(null)" : text;
}

/// Every helper on a platform whose answers the test makes up.
class ReadHelper : public MachineTest {
  protected:
    ReadHelper() {
        g_calls.clear();
        g_answers.clear();
        m_replaced.table.SetupGetLineTextA = [](PINFCONTEXT context, HINF inf, PCSTR section, PCSTR key, PSTR buffer,
                                                DWORD size, PDWORD required) -> BOOL {
            return Answer(
                {context != nullptr, inf, TextOrNull(section), TextOrNull(key), 0, buffer != nullptr, size, *required},
                buffer, required);
        };
        m_replaced.table.SetupGetStringFieldA = [](PINFCONTEXT context, DWORD field, PSTR buffer, DWORD size,
                                                   PDWORD required) -> BOOL {
            return Answer({context != nullptr, nullptr, "(null)", "(null)", field, buffer != nullptr, size, *required},
                          buffer, required);
        };
        m_replaced.table.SetupGetLineByIndexA = [](HINF, PCSTR, DWORD, PINFCONTEXT) -> BOOL { return TRUE; };
    }

    struct Read {
        const char* name;
        std::function<DWORD(std::string& text)> run;
    };

    /// The helpers, each reading into a text. A buffer that stays empty leaves "(empty)".
    std::vector<Read> Helpers() {
        return {
            {"GetInfLineTextBuffer",
             [this](std::string& text) {
                 HeapBlock buffer;
                 const DWORD status = GetInfLineTextBuffer(nullptr, m_inf, "S", "K", buffer);
                 text = buffer ? static_cast<const char*>(buffer.Get()) : "";
                 return status;
             }},
            {"GetInfLineText by key", [this](std::string& text) { return GetInfLineText(m_inf, "S", "K", text); }},
            {"GetInfLineText by context", [this](std::string& text) { return GetInfLineText(m_context, text); }},
            {"GetInfField", [this](std::string& text) { return GetInfField(m_context, 3, text); }},
            {"GetInfFieldByIndex", [this](std::string& text) { return GetInfFieldByIndex(m_inf, "S", 0, 3, text); }},
        };
    }

    /// Runs each helper with these answers.
    void ForEachHelper(const std::vector<ReadAnswer>& answers,
                       const std::function<void(DWORD status, const std::string& text)>& check) {
        for (const Read& helper : Helpers()) {
            SCOPED_TRACE(helper.name);
            g_calls.clear();
            g_answers = answers;
            std::string text = "old";
            const DWORD status = helper.run(text);
            check(status, text);
        }
    }

    HINF m_inf = reinterpret_cast<HINF>(0x1234);
    INFCONTEXT m_context{};
    ReplacedOperations m_replaced;
};

TEST_F(ReadHelper, AsksForTheSizeWithANullBufferAndASizeWordOfZero) {
    ForEachHelper({{TRUE, 4, ""}, {TRUE, 4, "abc"}}, [](DWORD status, const std::string& text) {
        EXPECT_EQ(status, 0u);
        EXPECT_EQ(text, "abc");
        ASSERT_EQ(g_calls.size(), 2u);
        EXPECT_FALSE(g_calls[0].hasBuffer);
        EXPECT_EQ(g_calls[0].size, 0u);
        EXPECT_EQ(g_calls[0].required, 0u);
        EXPECT_TRUE(g_calls[1].hasBuffer);
        EXPECT_EQ(g_calls[1].size, 4u);
    });
}

TEST_F(ReadHelper, PassesEitherAContextAloneOrHandleSectionAndKey) {
    g_answers = {{TRUE, 1, ""}, {TRUE, 1, ""}};
    std::string text;
    GetInfLineText(m_inf, "S", "K", text);
    ASSERT_EQ(g_calls.size(), 2u);
    for (const ReadCall& call : g_calls) {
        EXPECT_FALSE(call.hasContext);
        EXPECT_EQ(call.inf, m_inf);
        EXPECT_EQ(call.section, "S");
        EXPECT_EQ(call.key, "K");
    }
    g_calls.clear();
    GetInfLineText(m_context, text);
    ASSERT_EQ(g_calls.size(), 2u);
    for (const ReadCall& call : g_calls) {
        EXPECT_TRUE(call.hasContext);
        EXPECT_EQ(call.inf, nullptr);
        EXPECT_EQ(call.section, "(null)");
        EXPECT_EQ(call.key, "(null)");
    }
    g_calls.clear();
    GetInfField(m_context, 3, text);
    ASSERT_EQ(g_calls.size(), 2u);
    EXPECT_EQ(g_calls[0].field, 3u);
    EXPECT_EQ(g_calls[1].field, 3u);
}

TEST_F(ReadHelper, DoesNotLookAtWhatTheFirstCallReturns) {
    ForEachHelper({{FALSE, 4, "", 122}, {TRUE, 4, "abc"}}, [](DWORD status, const std::string& text) {
        EXPECT_EQ(status, 0u);
        EXPECT_EQ(text, "abc");
    });
}

TEST_F(ReadHelper, ASizeOfZeroIs1359AndEndsTheRead) {
    const std::size_t allocations = Machine().Heap().AllocationCount();
    ForEachHelper({{TRUE, 0, "", 5}}, [](DWORD status, const std::string& text) {
        EXPECT_EQ(status, 1359u);
        EXPECT_EQ(text, "");
        EXPECT_EQ(g_calls.size(), 1u);
    });
    ForEachHelper({{FALSE, std::nullopt, "", 5}}, [](DWORD status, const std::string& text) {
        EXPECT_EQ(status, 1359u);
        EXPECT_EQ(text, "");
        EXPECT_EQ(g_calls.size(), 1u);
    });
    EXPECT_EQ(Machine().Heap().AllocationCount(), allocations);
}

TEST_F(ReadHelper, NoMemoryIs8AndEndsTheRead) {
    Machine().Heap().FailAllocation(0, true);
    ForEachHelper({{TRUE, 4, ""}}, [](DWORD status, const std::string& text) {
        EXPECT_EQ(status, 8u);
        EXPECT_EQ(text, "");
        EXPECT_EQ(g_calls.size(), 1u);
    });
    Machine().Heap().StopFailing();
}

TEST_F(ReadHelper, ASecondCallThatFailsGivesTheLastErrorAndFreesTheBlock) {
    ForEachHelper({{TRUE, 4, ""}, {FALSE, 4, "abc", 1234}}, [this](DWORD status, const std::string& text) {
        EXPECT_EQ(status, 1234u);
        EXPECT_EQ(text, "");
        EXPECT_EQ(Machine().Heap().OpenCount(), 0u);
    });
}

TEST_F(ReadHelper, ASecondCallThatTellsAnotherSizeIsTakenAsItIs) {
    ForEachHelper({{TRUE, 8, ""}, {TRUE, 3, std::string("ab\0", 3)}}, [](DWORD status, const std::string& text) {
        EXPECT_EQ(status, 0u);
        EXPECT_EQ(text, "ab");
    });
}

TEST_F(ReadHelper, ATextWithoutItsNulEndsWithItsBlock) {
    ForEachHelper({{TRUE, 3, ""}, {TRUE, 3, "abc"}}, [](DWORD status, const std::string& text) {
        EXPECT_EQ(status, 0u);
        EXPECT_EQ(text, "abc");
    });
}

// ---- opening --------------------------------------------------------------------------------------------------------

class OpeningAnInf : public InfTest {};

TEST_F(OpeningAnInf, PassesStyleTwoAndNoClass) {
    static std::string s_file;
    static bool s_hasClass;
    static DWORD s_style;
    static UINT s_errorLine;
    WriteFileOn(Machine(), kInfPath, kText);
    InfHandle inf;
    {
        ReplacedOperations replaced;
        replaced.table.SetupOpenInfFileA = [](PCSTR file, PCSTR infClass, DWORD style, PUINT errorLine) -> HINF {
            s_file = file;
            s_hasClass = infClass != nullptr;
            s_style = style;
            s_errorLine = *errorLine;
            return NativePlatform().SetupOpenInfFileA(file, infClass, style, errorLine);
        };
        EXPECT_EQ(OpenInf(kInfPath, inf), 0u);
    }
    EXPECT_TRUE(inf);
    EXPECT_EQ(s_file, kInfPath);
    EXPECT_FALSE(s_hasClass);
    EXPECT_EQ(s_style, 2u);
    EXPECT_EQ(s_errorLine, 0u);
}

TEST_F(OpeningAnInf, AMissingFileGivesTheLastErrorAndNoHandle) {
    InfHandle inf;
    EXPECT_EQ(OpenInf("C:\\missing.inf", inf), 2u);
    EXPECT_FALSE(inf);
}

TEST_F(OpeningAnInf, ANullHandleGives87AndNothingIsClosed) {
    ReplacedOperations replaced;
    replaced.table.SetupOpenInfFileA = [](PCSTR, PCSTR, DWORD, PUINT) -> HINF { return nullptr; };
    {
        InfHandle inf;
        EXPECT_EQ(OpenInf(kInfPath, inf), 87u);
        EXPECT_FALSE(inf);
    }
    EXPECT_THAT(Test().TakeCallNames({"SetupCloseInfFile"}), ElementsAre());
}

TEST_F(OpeningAnInf, ClosesWhatTheGuardHeld) {
    WriteFileOn(Machine(), kInfPath, kText);
    InfHandle inf;
    ASSERT_EQ(OpenInf(kInfPath, inf), 0u);
    ASSERT_EQ(OpenInf(kInfPath, inf), 0u);
    EXPECT_EQ(Machine().Handles().OpenCount(simulated::HandleKind::Inf), 1u);
}

}  // namespace
}  // namespace pikel
