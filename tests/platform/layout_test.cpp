// The structures and constants that stand in for the Windows headers agree with them: both are held against one list.
#include <gtest/gtest.h>

#include <cstddef>

#include "platform/types.h"

namespace {

// A 32-bit process has other pointers, so the values alone are the same there.
#if defined(_WIN64) || !defined(_WIN32)
#define SIZE(structure, size) static_assert(sizeof(structure) == (size), #structure);
#define FIELD(structure, member, offset) \
    static_assert(offsetof(structure, member) == (offset), #structure "::" #member);
#else
#define SIZE(structure, size)
#define FIELD(structure, member, offset)
#endif
#define VALUE(constant, value)
#include "platform/layout.def"
#undef VALUE
#undef SIZE
#undef FIELD

TEST(Layout, ConstantsHaveThePublishedValues) {
#define SIZE(structure, size)
#define FIELD(structure, member, offset)
#define VALUE(constant, value) EXPECT_EQ(static_cast<unsigned>(constant), static_cast<unsigned>(value)) << #constant;
#include "platform/layout.def"
}

}  // namespace
