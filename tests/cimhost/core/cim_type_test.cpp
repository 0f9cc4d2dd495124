#include "cimhost/model/cim_type.h"

#include <gtest/gtest.h>

#include <limits>

using namespace cimhost;

TEST(CimType, NamesAndCodesAreTheSameInBothDirections) {
    for (const char* name : {"boolean", "char16", "string", "datetime", "uint8", "uint16", "uint32", "uint64", "sint8",
                             "sint16", "sint32", "sint64", "real32", "real64"}) {
        const CMPIType type = typeFromName(name);
        ASSERT_NE(type, CMPI_null) << name;
        EXPECT_EQ(typeName(type), name);
        EXPECT_EQ(typeName(arrayOf(type)), name);
    }
    EXPECT_EQ(typeFromName("UInt16"), CMPI_uint16);
    EXPECT_EQ(typeFromName("reference"), CMPI_null);
    EXPECT_EQ(typeFromName(""), CMPI_null);
    EXPECT_EQ(typeName(CMPI_ref), "reference");
    EXPECT_EQ(typeName(CMPI_instance), "");
}

TEST(CimType, IntegersAreReadInEveryBase) {
    struct Row {
        const char* text;
        bool isNegative;
        std::uint64_t magnitude;
    };
    const Row rows[] = {
        {"0", false, 0},     {"17", false, 17},   {"+17", false, 17},
        {"-17", true, 17},   {"0x1F", false, 31}, {"0Xab", false, 171},
        {"-0x10", true, 16}, {"0x1b", false, 27}, {"017", false, 15},
        {"101b", false, 5},  {"1B", false, 1},    {"0b", false, 0},
        {"-0", true, 0},     {"-101b", true, 5},  {"18446744073709551615", false, ~std::uint64_t{0}},
    };
    for (const Row& row : rows) {
        const auto value = parseInteger(row.text);
        ASSERT_TRUE(value) << row.text;
        EXPECT_EQ(value->isNegative, row.isNegative) << row.text;
        EXPECT_EQ(value->magnitude, row.magnitude) << row.text;
    }
}

TEST(CimType, TextsThatAreNoIntegersAreRefused) {
    for (const char* text : {"", "-", "+", "+-1", "--1", " 1", "1 ", "1.0", "0x", "0xg", "08", "2b", "b", "1e3", "abc",
                             "18446744073709551616", "0x10000000000000000"}) {
        EXPECT_FALSE(parseInteger(text)) << text;
    }
}

TEST(CimType, IntegersFitTheRangeOfTheirType) {
    struct Row {
        CMPIType type;
        std::uint64_t largest;
        std::uint64_t mostNegative;
    };
    const Row rows[] = {
        {CMPI_uint8, 0xff, 0},
        {CMPI_uint16, 0xffff, 0},
        {CMPI_uint32, 0xffffffff, 0},
        {CMPI_uint64, ~std::uint64_t{0}, 0},
        {CMPI_sint8, 0x7f, 0x80},
        {CMPI_sint16, 0x7fff, 0x8000},
        {CMPI_sint32, 0x7fffffff, 0x80000000},
        {CMPI_sint64, 0x7fffffffffffffff, 0x8000000000000000},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(typeName(row.type));
        EXPECT_TRUE(fitsInteger(row.type, {false, row.largest}));
        EXPECT_TRUE(fitsInteger(row.type, {true, row.mostNegative}));
        EXPECT_FALSE(fitsInteger(row.type, {true, row.mostNegative + 1}));
        if (row.type != CMPI_uint64) {
            EXPECT_FALSE(fitsInteger(row.type, {false, row.largest + 1}));
        }
    }
}

TEST(CimType, RealsAreReadWithinTheRangeOfTheirType) {
    EXPECT_EQ(parseReal<double>("1.5"), 1.5);
    EXPECT_EQ(parseReal<double>("+1.5e3"), 1500.0);
    EXPECT_EQ(parseReal<double>("-.5"), -0.5);
    EXPECT_EQ(parseReal<double>("17"), 17.0);
    EXPECT_EQ(parseReal<float>("0.25"), 0.25F);
    EXPECT_TRUE(parseReal<double>("1e300"));
    EXPECT_FALSE(parseReal<float>("1e300"));
    for (const char* text : {"", "+", "-", "+-1.5", "1.5x", " 1.5", "inf", "nan", "0x1p3", "1e999"}) {
        EXPECT_FALSE(parseReal<double>(text)) << text;
    }
}
