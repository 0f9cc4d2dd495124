#include "cimhost/cimxml/xml_text.h"

#include <gtest/gtest.h>

namespace cimhost::cimxml {
namespace {

const std::string replaced = "\xEF\xBF\xBD";

std::string content(std::string_view text) {
    ByteBuffer out;
    appendText(out, text);
    return std::string(out.view());
}

std::string attribute(std::string_view text) {
    ByteBuffer out;
    appendAttributeText(out, text);
    return std::string(out.view());
}

std::string character(char16_t code) {
    ByteBuffer out;
    appendCharacter(out, code);
    return std::string(out.view());
}

TEST(XmlText, MarkupIsEscaped) {
    EXPECT_EQ(content("a<b>&c]]>\"'"), "a&lt;b&gt;&amp;c]]&gt;\"'");
    EXPECT_EQ(attribute("a<b>&c\"'"), "a&lt;b&gt;&amp;c&quot;'");
}

TEST(XmlText, MarkupIsFoundWhereverItStands) {
    for (std::size_t position = 0; position < 40; ++position) {
        std::string text(40, 'x');
        text[position] = '<';
        std::string expected(40, 'x');
        expected.replace(position, 1, "&lt;");
        EXPECT_EQ(content(text), expected);
        EXPECT_EQ(attribute(text), expected);
    }
}

TEST(XmlText, ControlCharactersThatXmlForbidsAreReplaced) {
    for (int code = 0; code < 0x20; ++code) {
        if (code == '\t' || code == '\n' || code == '\r') continue;
        const std::string text = {'a', static_cast<char>(code), 'b'};
        EXPECT_EQ(content(text), "a" + replaced + "b") << code;
        EXPECT_EQ(content("a long text in front" + text), "a long text in fronta" + replaced + "b") << code;
        EXPECT_EQ(attribute(text), "a" + replaced + "b") << code;
    }
}

TEST(XmlText, WhiteSpaceSurvivesTheParserAtTheOtherEnd) {
    EXPECT_EQ(content("a\tb\nc\rd"), "a\tb\nc&#13;d");
    EXPECT_EQ(attribute("a\tb\nc\rd"), "a&#9;b&#10;c&#13;d");
}

TEST(XmlText, Utf8PassesUnchanged) {
    for (const char* text :
         {"\x7F", "\xC2\x80", "Grüße", "\xDF\xBF", "\xE0\xA0\x80", "日本語", "\xED\x9F\xBF", "\xEE\x80\x80",
          "\xEF\xBF\xBD", "\xF0\x90\x80\x80", "\xF0\x9F\x98\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(content(text), text);
        EXPECT_EQ(attribute(text), text);
    }
}

struct BrokenText {
    std::string_view bytes;
    std::size_t replacements;
};

TEST(XmlText, BytesThatAreNoUtf8AreReplaced) {
    const BrokenText cases[] = {
        {"\x80", 1},             // a continuation alone
        {"\xC0\xAF", 2},         // overlong
        {"\xC1\xBF", 2},         // overlong
        {"\xE0\x80\xAF", 3},     // overlong
        {"\xF0\x80\x80\xAF", 4}, // overlong
        {"\xED\xA0\x80", 3},     // a surrogate
        {"\xED\xBF\xBF", 3},     // a surrogate
        {"\xEF\xBF\xBE", 3},     // U+FFFE
        {"\xEF\xBF\xBF", 3},     // U+FFFF
        {"\xF4\x90\x80\x80", 4}, // beyond U+10FFFF
        {"\xF5\x80\x80\x80", 4},
        {"\xFF", 1},
        {"\xC3", 1}, // cut off at the end
        {"\xE2\x82", 2},
        {"\xF0\x9F\x98", 3},
    };
    for (const BrokenText& broken : cases) {
        std::string expected = "a";
        for (std::size_t index = 0; index < broken.replacements; ++index)
            expected += replaced;
        EXPECT_EQ(content("a" + std::string(broken.bytes)), expected);
        EXPECT_EQ(content("a" + std::string(broken.bytes) + "z"), expected + "z");
    }
}

TEST(XmlText, Utf16IsWrittenAsUtf8) {
    EXPECT_EQ(character(u'A'), "A");
    EXPECT_EQ(character(u'<'), "&lt;");
    EXPECT_EQ(character(u'é'), "é");
    EXPECT_EQ(character(u'語'), "語");
    EXPECT_EQ(character(0xD800), replaced);
    EXPECT_EQ(character(0xDFFF), replaced);
    EXPECT_EQ(character(0xFFFE), replaced + replaced + replaced);
    EXPECT_EQ(character(0), replaced);
}

} // namespace
} // namespace cimhost::cimxml
