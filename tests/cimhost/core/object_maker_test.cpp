// Objects that the server makes for itself: values from their CIM-XML texts, keys as requests spell them.
#include "broker_fixture.h"

using namespace cimhost;

namespace {

class ObjectMakerTest : public BrokerTest {
protected:
    std::string valueText(CMPIType type, std::string_view text) {
        const auto data = scope->make().value(type, text);
        if (!data) return "none";
        EXPECT_EQ(data->type, type);
        std::string written;
        appendValueText(written, *data);
        return written;
    }
    std::string addedKey(const char* name, KeyKind kind, std::string_view text) {
        ObjectPathObject* made = scope->make().path("root/test", "Test_Keys");
        const auto error = scope->make().addKey(*made, name, kind, text);
        if (error) {
            EXPECT_EQ(error->code, CMPI_RC_ERR_INVALID_PARAMETER);
            return error->description;
        }
        std::string written;
        made->appendText(written);
        return written.substr(std::string("root/test:Test_Keys.").size());
    }
};

} // namespace

TEST_F(ObjectMakerTest, ValuesAreReadAndWrittenAsCimXmlHasThem) {
    struct Row {
        CMPIType type;
        const char* text;
        const char* written;
    };
    const Row rows[] = {
        {CMPI_boolean, "TRUE", "true"},
        {CMPI_boolean, "false", "false"},
        {CMPI_boolean, "1", "none"},
        {CMPI_char16, "\xe2\x82\xac", "\xe2\x82\xac"},
        {CMPI_char16, "A", "A"},
        {CMPI_char16, "AB", "none"},
        {CMPI_char16, "", "none"},
        {CMPI_char16, "\xf0\x9f\x98\x80", "none"},
        {CMPI_char16, "\xc0\x80", "none"},
        {CMPI_uint8, "255", "255"},
        {CMPI_uint8, "256", "none"},
        {CMPI_uint8, "0xFF", "255"},
        {CMPI_uint16, "65535", "65535"},
        {CMPI_uint32, "4294967295", "4294967295"},
        {CMPI_uint64, "18446744073709551615", "18446744073709551615"},
        {CMPI_sint8, "-128", "-128"},
        {CMPI_sint8, "-129", "none"},
        {CMPI_sint16, "-32768", "-32768"},
        {CMPI_sint32, "-2147483648", "-2147483648"},
        {CMPI_sint64, "-9223372036854775808", "-9223372036854775808"},
        {CMPI_sint64, "9223372036854775808", "none"},
        {CMPI_real32, "1.5", "1.5"},
        {CMPI_real32, "1e300", "none"},
        {CMPI_real64, "-2.5e+10", "-2.5e+10"},
        {CMPI_real64, "nan", "none"},
        {CMPI_string, "text", "text"},
        {CMPI_string, "", ""},
        {CMPI_dateTime, "20010909034640.000000+120", "20010909034640.000000+120"},
        {CMPI_dateTime, "today", "none"},
        {CMPI_ref, "A.x=1", "none"},
        {CMPI_instance, "x", "none"},
        {CMPI_uint8A, "1", "none"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(valueText(row.type, row.text), row.written) << row.type << " " << row.text;
}

TEST_F(ObjectMakerTest, AnArrayNeedsEveryElementToFit) {
    const std::vector<std::optional<std::string>> texts = {"1", std::nullopt, "3"};
    const auto data = scope->make().arrayValue(CMPI_uint8, texts);
    ASSERT_TRUE(data);
    EXPECT_EQ(data->type, CMPI_uint8A);
    const ArrayObject* made = ArrayObject::from(data->value.array);
    ASSERT_EQ(made->size(), 3U);
    EXPECT_EQ(made->element(0).value.uint8, 1);
    EXPECT_EQ(made->element(1).state, CMPI_nullValue);
    EXPECT_EQ(made->bytes()[2], 3);
    const std::vector<std::optional<std::string>> bad = {"1", "300"};
    EXPECT_FALSE(scope->make().arrayValue(CMPI_uint8, bad));
    EXPECT_FALSE(scope->make().arrayValue(CMPI_args, texts));
}

TEST_F(ObjectMakerTest, KeysAreReadInTheTypeOfTheClass) {
    EXPECT_EQ(addedKey("Text", KeyKind::string, "17"), "Text=\"17\"");
    EXPECT_EQ(addedKey("U32", KeyKind::numeric, "17"), "U32=17");
    EXPECT_EQ(addedKey("U64", KeyKind::numeric, "18446744073709551615"), "U64=18446744073709551615");
    EXPECT_EQ(addedKey("S8", KeyKind::numeric, "-5"), "S8=-5");
    EXPECT_EQ(addedKey("Flag", KeyKind::boolean, "TRUE"), "Flag=true");
    EXPECT_EQ(addedKey("When", KeyKind::string, "20010909034640.000000+120"), "When=\"20010909034640.000000+120\"");
}

TEST_F(ObjectMakerTest, KeysThatDoNotFitTheClassAreRefused) {
    EXPECT_EQ(addedKey("Text", KeyKind::numeric, "17"), R"(key "Text" of class "Test_Keys" is no string)");
    EXPECT_EQ(addedKey("U32", KeyKind::string, "17"), R"(key "U32" of class "Test_Keys" is no uint32)");
    EXPECT_EQ(addedKey("U32", KeyKind::numeric, "-1"), R"(key "U32" of class "Test_Keys" is no uint32)");
    EXPECT_EQ(addedKey("S8", KeyKind::numeric, "200"), R"(key "S8" of class "Test_Keys" is no sint8)");
    EXPECT_EQ(addedKey("Flag", KeyKind::boolean, "yes"), R"(key "Flag" of class "Test_Keys" is no boolean)");
    EXPECT_EQ(addedKey("Flag", KeyKind::string, "true"), R"(key "Flag" of class "Test_Keys" is no boolean)");
    EXPECT_EQ(addedKey("When", KeyKind::string, "today"), R"(key "When" of class "Test_Keys" is no datetime)");
    EXPECT_EQ(addedKey("Thing", KeyKind::string, "x"), R"(key "Thing" of class "Test_Keys" is no reference)");
}

TEST_F(ObjectMakerTest, KeysThatTheClassLacksHaveTheTypeOfTheirKind) {
    EXPECT_EQ(addedKey("New", KeyKind::string, "17"), "New=\"17\"");
    EXPECT_EQ(addedKey("New", KeyKind::numeric, "-17"), "New=-17");
    EXPECT_EQ(addedKey("New", KeyKind::numeric, "18446744073709551615"), "New=18446744073709551615");
    EXPECT_EQ(addedKey("New", KeyKind::numeric, "1.5"), "New=1.5");
    EXPECT_EQ(addedKey("New", KeyKind::numeric, "x"), R"(key "New" of class "Test_Keys" is no real64)");
    EXPECT_EQ(addedKey("New", KeyKind::boolean, "false"), "New=false");
}

TEST_F(ObjectMakerTest, ALoneSurrogateIsWrittenAsTheReplacementCharacter) {
    CMPIData data{};
    data.type = CMPI_char16;
    data.value.char16 = 0xd800;
    std::string written;
    appendValueText(written, data);
    EXPECT_EQ(written, "\xef\xbf\xbd");
}
