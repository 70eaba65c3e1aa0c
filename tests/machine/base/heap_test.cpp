#include "machine/base/heap.h"

#include <cstdint>
#include <cstring>
#include <random>
#include <set>

#include "support/machine_test.h"

namespace pikel {
namespace {

using simulated::BlockKind;
using simulated::Heap;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST(Heap, HandsOutZeroedBlocksOfTheSizeAskedFor) {
    Heap heap;
    auto* block = static_cast<unsigned char*>(heap.Allocate(BlockKind::Heap, 300));
    ASSERT_NE(block, nullptr);
    EXPECT_TRUE(std::all_of(block, block + 300, [](unsigned char byte) { return byte == 0; }));
    EXPECT_EQ(heap.Size(block), 300u);
    EXPECT_TRUE(heap.Owns(BlockKind::Heap, block));
    EXPECT_FALSE(heap.Owns(BlockKind::Local, block));
    EXPECT_EQ(heap.OpenCount(), 1u);
    EXPECT_TRUE(heap.Free(BlockKind::Heap, block));
    EXPECT_EQ(heap.OpenCount(), 0u);
    EXPECT_EQ(heap.Size(block), 0u);
}

TEST(Heap, GivesABlockForSizeZero) {
    Heap heap;
    void* block = heap.Allocate(BlockKind::Heap, 0);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(heap.Size(block), 0u);
    EXPECT_TRUE(heap.Free(BlockKind::Heap, block));
}

TEST(Heap, RefusesASecondFreeAndNotesIt) {
    Heap heap;
    void* block = heap.Allocate(BlockKind::Heap, 8);
    EXPECT_TRUE(heap.Free(BlockKind::Heap, block));
    EXPECT_FALSE(heap.Free(BlockKind::Heap, block));
    EXPECT_THAT(heap.Misuses(), ElementsAre(HasSubstr("no live block")));
}

TEST(Heap, RefusesTheWrongCloserAndKeepsTheBlock) {
    Heap heap;
    void* block = heap.Allocate(BlockKind::Local, 8);
    EXPECT_FALSE(heap.Free(BlockKind::Heap, block));
    EXPECT_THAT(heap.Misuses(), ElementsAre(HasSubstr("a local block")));
    EXPECT_TRUE(heap.Owns(BlockKind::Local, block));
    EXPECT_TRUE(heap.Free(BlockKind::Local, block));
}

TEST(Heap, RefusesPointersIntoABlockAndStrangePointers) {
    Heap heap;
    char* block = static_cast<char*>(heap.Allocate(BlockKind::Heap, 8));
    int onTheStack = 0;
    EXPECT_FALSE(heap.Free(BlockKind::Heap, block + 1));
    EXPECT_FALSE(heap.Free(BlockKind::Heap, &onTheStack));
    EXPECT_FALSE(heap.Free(BlockKind::Heap, reinterpret_cast<void*>(std::uintptr_t{16})));
    EXPECT_EQ(heap.Misuses().size(), 3u);
    EXPECT_TRUE(heap.Free(BlockKind::Heap, block));
}

TEST(Heap, CountsBlocksByKind) {
    Heap heap;
    void* first = heap.Allocate(BlockKind::Heap, 1);
    void* second = heap.Allocate(BlockKind::Bstr, 2);
    EXPECT_EQ(heap.OpenCount(BlockKind::Heap), 1u);
    EXPECT_EQ(heap.OpenCount(BlockKind::Bstr), 1u);
    EXPECT_EQ(heap.OpenCount(BlockKind::Local), 0u);
    EXPECT_EQ(heap.AllocationCount(), 2u);
    EXPECT_TRUE(heap.Free(BlockKind::Heap, first));
    EXPECT_TRUE(heap.Free(BlockKind::Bstr, second));
    EXPECT_EQ(heap.AllocationCount(), 2u);
}

TEST(Heap, FailsTheAllocationThatIsChosenOnce) {
    Heap heap;
    heap.FailAllocation(1, false);
    void* first = heap.Allocate(BlockKind::Heap, 1);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(heap.Allocate(BlockKind::Heap, 1), nullptr);
    void* third = heap.Allocate(BlockKind::Heap, 1);
    EXPECT_NE(third, nullptr);
    EXPECT_TRUE(heap.Free(BlockKind::Heap, first));
    EXPECT_TRUE(heap.Free(BlockKind::Heap, third));
}

TEST(Heap, FailsEveryAllocationFromTheChosenOneOnUntilItIsStopped) {
    Heap heap;
    heap.FailAllocation(0, true);
    EXPECT_EQ(heap.Allocate(BlockKind::Heap, 1), nullptr);
    EXPECT_EQ(heap.Allocate(BlockKind::Local, 1), nullptr);
    EXPECT_EQ(heap.Allocate(BlockKind::Bstr, 1), nullptr);
    heap.StopFailing();
    void* block = heap.Allocate(BlockKind::Heap, 1);
    EXPECT_NE(block, nullptr);
    EXPECT_TRUE(heap.Free(BlockKind::Heap, block));
}

TEST(Heap, HasNoMemoryForABlockOfTwoGigabytes) {
    Heap heap;
    EXPECT_EQ(heap.Allocate(BlockKind::Heap, 0x80000000u), nullptr);
    EXPECT_EQ(heap.Allocate(BlockKind::Heap, SIZE_MAX), nullptr);
    EXPECT_EQ(heap.OpenCount(), 0u);
}

TEST(Heap, KnowsEveryLiveBlockAmongManyThatCameAndWent) {
    Heap heap;
    std::mt19937 random(1);
    std::vector<void*> live;
    std::vector<void*> gone;
    for (int i = 0; i < 20000; ++i) {
        if (live.empty() || random() % 3 != 0) {
            live.push_back(heap.Allocate(BlockKind::Heap, random() % 200));
        } else {
            std::swap(live[random() % live.size()], live.back());
            gone.push_back(live.back());
            ASSERT_TRUE(heap.Free(BlockKind::Heap, live.back()));
            live.pop_back();
        }
    }
    const std::set<void*> liveSet(live.begin(), live.end());
    EXPECT_EQ(liveSet.size(), live.size());
    EXPECT_EQ(heap.OpenCount(), live.size());
    for (void* block : gone) {
        EXPECT_EQ(heap.Owns(BlockKind::Heap, block), liveSet.contains(block));
    }
    for (void* block : live) {
        EXPECT_TRUE(heap.Free(BlockKind::Heap, block));
    }
    EXPECT_THAT(heap.Misuses(), IsEmpty());
}

class HeapOperations : public testing_support::MachineTest {};

TEST_F(HeapOperations, AllocateZeroedOnlyWhenAsked) {
    HANDLE heap = Platform().GetProcessHeap();
    auto* zeroed = static_cast<unsigned char*>(Platform().HeapAlloc(heap, HEAP_ZERO_MEMORY, 16));
    auto* raw = static_cast<unsigned char*>(Platform().HeapAlloc(heap, 0, 16));
    EXPECT_TRUE(std::all_of(zeroed, zeroed + 16, [](unsigned char byte) { return byte == 0; }));
    EXPECT_TRUE(std::none_of(raw, raw + 16, [](unsigned char byte) { return byte == 0; }));
    EXPECT_TRUE(Platform().HeapFree(heap, 0, zeroed));
    EXPECT_TRUE(Platform().HeapFree(heap, 0, raw));
}

TEST_F(HeapOperations, FreeOfNullSucceeds) {
    EXPECT_TRUE(Platform().HeapFree(Platform().GetProcessHeap(), 0, nullptr));
    EXPECT_EQ(Platform().LocalFree(nullptr), nullptr);
    EXPECT_EQ(Platform().GlobalFree(nullptr), nullptr);
    Platform().SysFreeString(nullptr);
}

TEST_F(HeapOperations, FreeOfAStrangePointerGives87) {
    Test().AllowOpen();
    int strange = 0;
    EXPECT_FALSE(Platform().HeapFree(Platform().GetProcessHeap(), 0, &strange));
    EXPECT_EQ(Platform().GetLastError(), 87u);
    EXPECT_EQ(Platform().LocalFree(&strange), &strange);
    EXPECT_EQ(Platform().GetLastError(), 6u);
    EXPECT_EQ(Machine().Heap().Misuses().size(), 2u);
}

TEST_F(HeapOperations, RefuseAHandleThatIsNoHeap) {
    Test().AllowOpen();
    EXPECT_EQ(Platform().HeapAlloc(nullptr, 0, 16), nullptr);
    EXPECT_FALSE(Platform().HeapFree(nullptr, 0, nullptr));
    EXPECT_EQ(Platform().GetLastError(), 6u);
    EXPECT_EQ(Machine().Handles().Misuses().size(), 2u);
}

TEST_F(HeapOperations, ShortMemoryGivesNull) {
    Machine().Heap().FailAllocation(0, true);
    EXPECT_EQ(Platform().HeapAlloc(Platform().GetProcessHeap(), 0, 16), nullptr);
    EXPECT_EQ(Platform().SysAllocStringLen(u"x", 1), nullptr);
    EXPECT_EQ(Platform().GlobalAlloc(GMEM_ZEROINIT, 16), nullptr);
    EXPECT_EQ(Platform().GetLastError(), 8u);
    Machine().Heap().StopFailing();
}

TEST_F(HeapOperations, GlobalBlocksAreZeroedWhenAskedAndFreed) {
    auto* zeroed = static_cast<unsigned char*>(Platform().GlobalAlloc(GMEM_ZEROINIT, 16));
    EXPECT_TRUE(std::all_of(zeroed, zeroed + 16, [](unsigned char byte) { return byte == 0; }));
    EXPECT_EQ(Platform().GlobalFree(zeroed), nullptr);
}

TEST_F(HeapOperations, BstrHasItsLengthInFrontAndANulBehind) {
    BSTR text = Platform().SysAllocStringLen(u"LPT1:\0x", 7);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(Platform().SysStringLen(text), 7u);
    EXPECT_EQ(std::u16string_view(text, 8), std::u16string_view(u"LPT1:\0x\0", 8));
    DWORD bytes = 0;
    std::memcpy(&bytes, reinterpret_cast<char*>(text) - 4, 4);
    EXPECT_EQ(bytes, 14u);
    Platform().SysFreeString(text);
    EXPECT_EQ(Machine().Heap().OpenCount(), 0u);
}

TEST_F(HeapOperations, BstrWithoutASourceIsToBeFilledIn) {
    BSTR text = Platform().SysAllocStringLen(nullptr, 3);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(Platform().SysStringLen(text), 3u);
    EXPECT_EQ(std::u16string_view(text, 4), std::u16string_view(u"\0\0\0\0", 4));
    Platform().SysFreeString(text);
    EXPECT_EQ(Platform().SysStringLen(nullptr), 0u);
}

TEST_F(HeapOperations, SecondFreeOfABstrIsNoted) {
    Test().AllowOpen();
    // Past the shims: the trace would read the text.
    BSTR text = NativePlatform().SysAllocStringLen(u"x", 1);
    NativePlatform().SysFreeString(text);
    NativePlatform().SysFreeString(text);
    EXPECT_EQ(Machine().Heap().Misuses().size(), 1u);
    EXPECT_EQ(NativePlatform().SysStringLen(text), 0u);
}

}  // namespace
}  // namespace pikel
