// Numbers at the start of a text, with both endings of one that is too large.
#include "frame/number.h"

#include <gtest/gtest.h>

namespace pikel {
namespace {

TEST(NumberOfAText, IsReadAsAtoiReadsIt) {
    struct Case {
        const char* text;
        INT number;
    };
    const Case cases[] = {
        {"", 0},
        {"0", 0},
        {"90", 90},
        {"66000", 66000},
        {" \t\r\n\v\f7", 7},
        {"+5", 5},
        {"-1", -1},
        {"- 1", 0},
        {"--1", 0},
        {"+", 0},
        {"12x34", 12},
        {"x12", 0},
        {"1,2", 1},
        {"0x10", 0},
        {"2147483647", 2147483647},
        {"-2147483648", INT32_MIN},
        // More than an INT holds: the low 32 bits.
        {"4294967295", -1},
        {"4294967299", 3},
        {"99999999999999999999", 1661992959},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ParseNumber(c.text), c.number) << '"' << c.text << '"';
    }
}

TEST(NumberOfAText, IsHeldWithinAnIntWhereThatIsAskedFor) {
    struct Case {
        const char* text;
        INT number;
    };
    const Case cases[] = {
        {"", 0},
        {" 12x", 12},
        {"-7", -7},
        {"2147483647", INT32_MAX},
        {"2147483648", INT32_MAX},
        {"-2147483648", INT32_MIN},
        {"-2147483649", INT32_MIN},
        {"4294967296", INT32_MAX},
        {"-4294967297", INT32_MIN},
        {"99999999999999999999", INT32_MAX},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(ParseNumberClamped(c.text), c.number) << '"' << c.text << '"';
    }
}

}  // namespace
}  // namespace pikel
