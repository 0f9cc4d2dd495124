#include "cimhost/model/utf8.h"

#include <gtest/gtest.h>

using namespace cimhost;
using namespace std::string_view_literals;

TEST(Utf8, CountsTheBytesOfTheFirstCharacter) {
    EXPECT_EQ(utf8Length("ab"), 1U);
    EXPECT_EQ(utf8Length("\0"sv), 1U);
    EXPECT_EQ(utf8Length("\xc3\xa4z"), 2U);
    EXPECT_EQ(utf8Length("\xe2\x82\xacz"), 3U);
    EXPECT_EQ(utf8Length("\xf0\x9f\x98\x80z"), 4U);
    EXPECT_EQ(utf8Length("\xf4\x8f\xbf\xbf"), 4U) << "the last code there is";
}

TEST(Utf8, RefusesIllegalBytes) {
    const std::string_view bad[] = {
        ""sv,                 // nothing
        "\x80"sv,             // a continuation first
        "\xc3"sv,             // cut
        "\xc3z"sv,            // no continuation
        "\xe2\x82"sv,         // cut
        "\xe2\x82z"sv,        // no continuation
        "\xc0\x80"sv,         // overlong
        "\xc1\xbf"sv,         // overlong
        "\xe0\x9f\xbf"sv,     // overlong
        "\xf0\x8f\xbf\xbf"sv, // overlong
        "\xed\xa0\x80"sv,     // a surrogate
        "\xf4\x90\x80\x80"sv, // beyond U+10FFFF
        "\xf5\x80\x80\x80"sv, // never legal
        "\xff"sv,             // never legal
    };
    for (const std::string_view text : bad)
        EXPECT_EQ(utf8Length(text), 0U) << testing::PrintToString(text);
}

TEST(Utf8, ATextIsLegalIfAllOfItIs) {
    EXPECT_TRUE(isUtf8(""));
    EXPECT_TRUE(isUtf8("Gr\xc3\xb6\xc3\x9f"
                       "e"));
    EXPECT_FALSE(isUtf8("Gr\xf6\xdf"
                        "e"));
    EXPECT_FALSE(isUtf8("cut\xc3"));
}

TEST(Utf8, EveryCharacterIsReadAsItWasWritten) {
    for (const char32_t code : {0x01U, 0x7fU, 0x80U, 0x7ffU, 0x800U, 0xd7ffU, 0xe000U, 0xffffU, 0x10000U, 0x10ffffU}) {
        std::string text;
        appendUtf8(text, code);
        EXPECT_EQ(singleCharacter(text), code);
    }
    EXPECT_EQ(singleCharacter("ab"), std::nullopt);
    EXPECT_EQ(singleCharacter(""), std::nullopt);
}

TEST(Utf8, IllegalCharactersAreWrittenAsTheReplacement) {
    for (const char32_t code : {0xd800U, 0xdfffU, 0x110000U, 0xffffffffU}) {
        std::string text;
        appendUtf8(text, code);
        EXPECT_EQ(text, "\xef\xbf\xbd");
    }
}
