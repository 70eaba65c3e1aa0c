// Which row serves a system, and what the library answers about it: the table of the twelve systems.
#include "frame/os_route.h"

#include <array>
#include <iostream>
#include <utility>

#include "frame/os_identity.h"
#include "support/machine_test.h"

namespace pikel {
namespace {

using testing_support::EverySystem;
using testing_support::MachineTest;
using testing_support::ReplacedOperations;
using testing_support::TestMachine;

struct SystemCase {
    const char* system;
    DWORD row;
    DWORD osClass;
    DWORD cpuClass;
    bool hasPrintUI;
    std::array<bool, 7> isForeign;  // for dwArchitecture 0 to 6
};

constexpr bool T = true;
constexpr bool F = false;

const SystemCase kSystems[] = {
    {"win95", 0, 0x09, 0, false, {T, F, T, T, T, T, T}},
    {"win98", 1, 0x11, 0, false, {T, F, T, T, T, T, T}},
    {"winme", 2, 0x21, 0, false, {T, F, T, T, T, T, T}},
    {"nt4", 3, 0x82, 0, false, {F, T, F, F, F, F, F}},
    {"win2000", 4, 0x102, 0, true, {F, T, T, F, F, F, F}},
    {"xp", 5, 0x202, 0, true, {T, T, T, F, T, T, T}},
    {"xp-ia64", 6, 0x202, 0x10000000, true, {T, T, T, T, F, T, T}},
    {"xp-x64", 7, 0x202, 0x20000000, true, {T, T, T, T, T, F, T}},
    {"vista", 8, 0x402, 0, true, {T, T, T, F, T, T, T}},
    {"vista-ia64", 9, 0x402, 0x10000000, true, {T, T, T, T, F, T, T}},
    {"vista-x64", 10, 0x402, 0x20000000, true, {T, T, T, T, T, F, T}},
};

TEST(SystemRoutes, HoldOnTheElevenSystemsWithRowsOfTheirOwn) {
    for (const SystemCase& c : kSystems) {
        std::cout << "system " << c.system << '\n';
        SCOPED_TRACE(c.system);
        TestMachine machine(c.system);
        EXPECT_EQ(GetOsRoute().Index(), c.row);
        EXPECT_TRUE(GetOsRoute().HasRoute());
        EXPECT_EQ(GetOsIdentity().osClass, c.osClass);
        EXPECT_EQ(GetOsIdentity().cpuClass, c.cpuClass);
        EXPECT_EQ(IsPrintUIUsable(), c.hasPrintUI);
        for (DWORD dwArchitecture = 0; dwArchitecture < c.isForeign.size(); ++dwArchitecture) {
            EXPECT_EQ(IsForeignArchitecture(dwArchitecture), c.isForeign[dwArchitecture])
                << "architecture " << dwArchitecture;
        }
    }
}

TEST(SystemRoutes, HoldOnAnySystemWithoutARowOfItsOwn) {
    std::cout << "system other\n";
    TestMachine machine("other");
    EXPECT_EQ(GetOsRoute().Index(), 11u);
    EXPECT_THAT(GetOsIdentity().osClass, ::testing::AnyOf(0x1u, 0x80000000u));
    EXPECT_TRUE(IsPrintUIUsable());
    for (DWORD dwArchitecture = 0; dwArchitecture <= 6; ++dwArchitecture) {
        EXPECT_FALSE(IsForeignArchitecture(dwArchitecture)) << "architecture " << dwArchitecture;
    }
}

struct RowCase {
    DWORD osClass;
    DWORD cpuClass;
    DWORD row;
};

TEST(RouteClassification, CoversEveryClass) {
    constexpr DWORD dwIa64 = 0x10000000;
    constexpr DWORD dwX64 = 0x20000000;
    static const RowCase cases[] = {
        {0x04, 0, 99},
        {0x42, 0, 99},
        {0x09, 0, 0},
        {0x11, 0, 1},
        {0x21, 0, 2},
        {0x82, 0, 3},
        {0x102, 0, 4},
        {0x202, 0, 5},
        {0x202, dwIa64, 6},
        {0x202, dwX64, 7},
        {0x402, 0, 8},
        {0x402, dwIa64, 9},
        {0x402, dwX64, 10},
        {0x01, 0, 11},
        {0x80000000, 0, 11},
        {0x02, 0, 11},
        {0, 0, 11},
        {0x102, dwX64, 4},
        {0x82, dwIa64, 3},
        {0x80000000, dwX64, 11},
        {0x09, dwX64, 0},
        {0x42, dwIa64, 99},
        // Both bits together: the Vista generation takes the higher one.
        {0x402, dwIa64 | dwX64, 10},
        {0x202, dwIa64 | dwX64, 6},
    };
    for (const RowCase& c : cases) {
        EXPECT_EQ(ClassifyRoute(c.osClass, c.cpuClass), c.row) << std::hex << c.osClass << ' ' << c.cpuClass;
    }
}

template <std::size_t Row>
DWORD RowRoutine(DWORD dwFactor, const char** ppText) {
    *ppText = "reached";
    return dwFactor * 100 + static_cast<DWORD>(Row);
}

template <std::size_t... Rows>
constexpr OsRouteTable<DWORD (*)(DWORD, const char**)> MakeTable(std::index_sequence<Rows...>) {
    return {&RowRoutine<Rows>...};
}

constexpr auto kTable = MakeTable(std::make_index_sequence<kRouteCount>());
static_assert(IsComplete(kTable));
static_assert(!IsComplete(OsRouteTable<DWORD (*)()>{&NoWork<>}));

TEST(RouteDispatch, CallsTheRowOfTheRunningSystemWithItsArguments) {
    for (std::size_t row = 0; row < EverySystem().size(); ++row) {
        TestMachine machine(EverySystem()[row]);
        const char* text = "";
        EXPECT_EQ(CallRoute(kTable, DWORD{3}, &text), 300 + row) << EverySystem()[row];
        EXPECT_STREQ(text, "reached");
    }
}

TEST(RouteDispatch, AnswersNotImplementedOnASystemWithoutARoute) {
    TestMachine machine("xp");
    faults::FailCall("GetVersionExA", 1, ERROR_INVALID_PARAMETER, true);
    const char* text = "untouched";
    EXPECT_EQ(CallRoute(kTable, DWORD{3}, &text), 120u);
    EXPECT_STREQ(text, "untouched");
    EXPECT_FALSE(GetOsRoute().HasRoute());
}

TEST(RouteDispatch, HasARoutineForRowsWithoutWork) {
    const char* text = "untouched";
    EXPECT_EQ((NoWork<DWORD, const char**>(3, &text)), 0u);
    EXPECT_STREQ(text, "untouched");
}

TEST(SystemRoutes, AreBuiltOnceUntilForgotten) {
    TestMachine machine("xp");
    const OsRoute* first = &GetOsRoute();
    machine.TakeCalls();
    EXPECT_EQ(&GetOsRoute(), first);
    EXPECT_THAT(machine.TakeCalls(), ::testing::IsEmpty());
    ForgetSystemRecords();
    EXPECT_EQ(GetOsRoute().Index(), 5u);
    EXPECT_THAT(machine.TakeCallNames({"GetVersionExA"}), ::testing::SizeIs(1));
}

}  // namespace
}  // namespace pikel
