// Windows, messages and the debugger's stream.
#include "machine/desktop/desktop.h"

#include "machine/operations.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing_support::MachineTest;

class WindowCalls : public MachineTest {
  protected:
    simulated::Desktop& Desktop() { return Machine().Desktop(); }
};

TEST_F(WindowCalls, FindAWindowByItsTitleWithoutRegardToCase) {
    EXPECT_EQ(simulated::FindWindowA(nullptr, "Viewer"), nullptr);
    EXPECT_EQ(simulated::FindWindowA(nullptr, nullptr), nullptr);
    HWND viewer = Desktop().OpenWindow("Viewer");
    HWND other = Desktop().OpenWindow("Other");
    EXPECT_NE(viewer, other);
    EXPECT_EQ(simulated::FindWindowA(nullptr, "VIEWER"), viewer);
    EXPECT_EQ(simulated::FindWindowA(nullptr, "Other"), other);
    EXPECT_EQ(simulated::FindWindowA(nullptr, nullptr), viewer);
    EXPECT_EQ(simulated::FindWindowA("Class", "Viewer"), nullptr);
    Desktop().CloseWindow(viewer);
    EXPECT_EQ(simulated::FindWindowA(nullptr, "Viewer"), nullptr);
    EXPECT_EQ(simulated::FindWindowA(nullptr, "Other"), other);
}

TEST_F(WindowCalls, AMessageIsTakenByAWindowThatIsThere) {
    HWND viewer = Desktop().OpenWindow("Viewer");
    EXPECT_EQ(simulated::SendMessageA(viewer, WM_SETTEXT, 0, reinterpret_cast<LPARAM>("line")), 1);
    ASSERT_EQ(Desktop().sent.size(), 1u);
    EXPECT_EQ(Desktop().sent[0].window, viewer);
    EXPECT_EQ(Desktop().sent[0].message, WM_SETTEXT);
    EXPECT_EQ(Desktop().sent[0].text, "line");
    Desktop().CloseWindow(viewer);
    EXPECT_EQ(simulated::SendMessageA(viewer, WM_SETTEXT, 0, reinterpret_cast<LPARAM>("line")), 0);
    EXPECT_EQ(simulated::lastError, 1400u);
    EXPECT_EQ(Desktop().sent.size(), 1u);
}

TEST_F(WindowCalls, ABroadcastIsRecordedWithItsTimeout) {
    DWORD_PTR result = 77;
    EXPECT_EQ(simulated::SendMessageTimeoutA(HWND_BROADCAST, WM_SETTINGCHANGE, 1, 2, 0, 1000, &result), 1);
    EXPECT_EQ(simulated::SendMessageTimeoutA(HWND_BROADCAST, WM_SETTINGCHANGE, 0, 0, 0, 1000, nullptr), 1);
    ASSERT_EQ(Desktop().sent.size(), 2u);
    EXPECT_EQ(Desktop().sent[0].window, HWND_BROADCAST);
    EXPECT_EQ(Desktop().sent[0].wParam, 1u);
    EXPECT_EQ(Desktop().sent[0].lParam, 2);
    EXPECT_EQ(Desktop().sent[0].timeout, 1000u);
    EXPECT_EQ(result, 0u);
    EXPECT_EQ(simulated::SendMessageTimeoutA(reinterpret_cast<HWND>(8), 1, 0, 0, 0, 0, nullptr), 0);
}

TEST_F(WindowCalls, APeekTakesAMessageFromTheQueueOrLeavesIt) {
    HWND one = Desktop().OpenWindow("One");
    HWND two = Desktop().OpenWindow("Two");
    Desktop().queue = {{one, 5, 0, 0, 0, {}}, {two, 6, 0, 0, 0, {}}, {one, 7, 0, 0, 0, {}}};
    MSG message{};
    EXPECT_TRUE(simulated::PeekMessageA(&message, nullptr, 0, 0, 0));
    EXPECT_EQ(message.message, 5u);
    EXPECT_EQ(Desktop().queue.size(), 3u);
    EXPECT_TRUE(simulated::PeekMessageA(&message, two, 0, 0, PM_REMOVE));
    EXPECT_EQ(message.message, 6u);
    EXPECT_TRUE(simulated::PeekMessageA(&message, nullptr, 6, 9, PM_REMOVE));
    EXPECT_EQ(message.message, 7u);
    EXPECT_FALSE(simulated::PeekMessageA(&message, nullptr, 6, 9, PM_REMOVE));
    EXPECT_FALSE(simulated::PeekMessageA(nullptr, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(Desktop().queue.size(), 1u);
    EXPECT_FALSE(simulated::TranslateMessage(&message));
    simulated::DispatchMessageA(&message);
    simulated::DispatchMessageA(nullptr);
    ASSERT_EQ(Desktop().dispatched.size(), 1u);
    EXPECT_EQ(Desktop().dispatched[0].message, 7u);
}

TEST_F(WindowCalls, TheDebuggersStreamKeepsWhatIsWritten) {
    EXPECT_THAT(Desktop().debugOutput, IsEmpty());
    simulated::OutputDebugStringA("one");
    simulated::OutputDebugStringA("");
    simulated::OutputDebugStringA(nullptr);
    EXPECT_THAT(Desktop().debugOutput, ElementsAre("one", "", ""));
}

}  // namespace
}  // namespace pikel
