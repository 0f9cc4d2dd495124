#include "cimhost/broker/broker.h"
#include "cimhost/cimxml/class_encoder.h"
#include "cimhost/cimxml/encoder.h"

#include <gtest/gtest.h>

#include <limits>

namespace cimhost::cimxml {
namespace {

constexpr const char* mof = R"(
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
Qualifier Association : boolean = false, Scope(association), Flavor(DisableOverride, ToSubclass);
Qualifier Description : string = null, Scope(any), Flavor(EnableOverride, ToSubclass, Translatable);
class T_Base {
    [Key] string Id;
    uint16 Number;
};
[Description("Ports & more")]
class T_Port : T_Base {
    boolean Flag;
    uint8 Octet;
    sint8 Small;
    uint64 Large;
    sint64 Low;
    real32 Real;
    real64 Double;
    char16 Letter;
    datetime Time;
    string Words[];
    uint8 Bytes[];
    uint32 Act(uint16 Options[]);
};
Qualifier MappingStrings : string[], Scope(any), Flavor(EnableOverride, ToSubclass);
class T_Mapped : T_Base {
    [MappingStrings { "Other|speed" }] uint64 Speed;
    [MappingStrings { "Other|names" }] string Names[];
};
class T_MappedBelow : T_Mapped { uint64 Own; };
[Association] class T_Link { [Key] T_Base ref Left; [Key] T_Base ref Right; };
)";

class EncoderTest : public testing::Test {
protected:
    EncoderTest() { repository.loadText("root/ns", mof); }

    InstanceObject& make(std::string_view className) {
        return *scope().make().instance(*scope().make().path("root/ns", className));
    }

    RequestScope& scope() {
        if (!requestScope) {
            broker = std::make_unique<Broker>(repository);
            requestScope = std::make_unique<RequestScope>(*broker);
        }
        return *requestScope;
    }

    void set(InstanceObject& instance, std::string_view name, CMPIType type, CMPIValue value) {
        ASSERT_EQ(instance.setProperty(name, &value, type), CMPI_RC_OK) << name;
    }

    std::string render(const InstanceObject& instance, const InstanceOptions& options = {}) {
        const TagTable tags(repository);
        ByteBuffer out;
        Encoder(out, tags).instance(instance, options);
        return std::string(out.view());
    }

    // What stands for one property.
    std::string property(const InstanceObject& instance, const std::string& name) {
        const std::string all = render(instance);
        const std::size_t nameAt = all.find("NAME=\"" + name + "\"");
        if (nameAt == std::string::npos) return "";
        const std::size_t begin = all.rfind('<', nameAt);
        const std::string element = all.substr(begin + 1, all.find(' ', begin) - begin - 1);
        const std::string close = "</" + element + ">";
        return all.substr(begin, all.find(close, begin) + close.size() - begin);
    }

    ClassRepository repository;
    std::unique_ptr<Broker> broker;
    std::unique_ptr<RequestScope> requestScope;
};

TEST_F(EncoderTest, AnUnsetPropertyHasNoValue) {
    const InstanceObject& instance = make("T_Base");
    EXPECT_EQ(render(instance), "<INSTANCE CLASSNAME=\"T_Base\"><PROPERTY NAME=\"Id\" TYPE=\"string\"></PROPERTY>"
                                "<PROPERTY NAME=\"Number\" TYPE=\"uint16\"></PROPERTY></INSTANCE>");
}

// What only another system knows (DSP0004, MappingStrings) is not there where that system has nothing.
TEST_F(EncoderTest, APropertyWithAMappingIsLeftOutWithoutAValue) {
    for (const char* className : {"T_Mapped", "T_MappedBelow"}) {
        InstanceObject& instance = make(className);
        EXPECT_EQ(property(instance, "Speed"), "");
        EXPECT_EQ(property(instance, "Names"), "");
        EXPECT_NE(property(instance, "Number"), "");
        set(instance, "Speed", CMPI_uint64, {.uint64 = 5});
        EXPECT_EQ(property(instance, "Speed"), "<PROPERTY NAME=\"Speed\" TYPE=\"uint64\"><VALUE>5</VALUE></PROPERTY>");
        ASSERT_EQ(instance.setProperty("Speed", nullptr, CMPI_uint64), CMPI_RC_OK);
        EXPECT_EQ(property(instance, "Speed"), "");
    }
    EXPECT_EQ(property(make("T_MappedBelow"), "Own"), "<PROPERTY NAME=\"Own\" TYPE=\"uint64\"></PROPERTY>");
}

TEST_F(EncoderTest, TextIsEscaped) {
    InstanceObject& instance = make("T_Base");
    CMPIValue value{};
    value.string = scope().make().string("a<b>&\x01");
    set(instance, "Id", CMPI_string, value);
    EXPECT_EQ(property(instance, "Id"),
              "<PROPERTY NAME=\"Id\" TYPE=\"string\"><VALUE>a&lt;b&gt;&amp;\xEF\xBF\xBD</VALUE></PROPERTY>");
}

TEST_F(EncoderTest, NumbersReachTheirLimits) {
    InstanceObject& instance = make("T_Port");
    CMPIValue value{};
    value.uint64 = std::numeric_limits<CMPIUint64>::max();
    set(instance, "Large", CMPI_uint64, value);
    value.sint64 = std::numeric_limits<CMPISint64>::min();
    set(instance, "Low", CMPI_sint64, value);
    value = {};
    value.uint8 = 255;
    set(instance, "Octet", CMPI_uint8, value);
    value.sint8 = -128;
    set(instance, "Small", CMPI_sint8, value);
    value.boolean = 1;
    set(instance, "Flag", CMPI_boolean, value);
    value.real32 = 0.1F;
    set(instance, "Real", CMPI_real32, value);
    value.real64 = std::numeric_limits<double>::infinity();
    set(instance, "Double", CMPI_real64, value);
    value.char16 = u'é';
    set(instance, "Letter", CMPI_char16, value);
    const auto text = [&](const std::string& name) {
        const std::string all = property(instance, name);
        const std::size_t begin = all.find("<VALUE>") + 7;
        return all.substr(begin, all.find("</VALUE>") - begin);
    };
    EXPECT_EQ(text("Large"), "18446744073709551615");
    EXPECT_EQ(text("Low"), "-9223372036854775808");
    EXPECT_EQ(text("Octet"), "255");
    EXPECT_EQ(text("Small"), "-128");
    EXPECT_EQ(text("Flag"), "true");
    EXPECT_EQ(text("Real"), "0.1");
    EXPECT_EQ(text("Double"), "INF");
    EXPECT_EQ(text("Letter"), "é");
}

TEST_F(EncoderTest, AnArrayShowsItsNulls) {
    InstanceObject& instance = make("T_Port");
    const std::optional<std::string> texts[] = {"a", std::nullopt, "<"};
    instance.setProperty("Words", *scope().make().arrayValue(CMPI_string, texts));
    EXPECT_EQ(property(instance, "Words"),
              "<PROPERTY.ARRAY NAME=\"Words\" TYPE=\"string\"><VALUE.ARRAY><VALUE>a</VALUE><VALUE.NULL/>"
              "<VALUE>&lt;</VALUE></VALUE.ARRAY></PROPERTY.ARRAY>");
}

TEST_F(EncoderTest, AReferenceShowsAsMuchAsItsPathKnows) {
    InstanceObject& instance = make("T_Link");
    ObjectPathObject& path = *scope().make().path("root/ns", "T_Base");
    ASSERT_FALSE(scope().make().addKey(path, "Id", KeyKind::string, "x"));
    instance.setProperty("Left", ObjectMaker::value(path));
    EXPECT_EQ(property(instance, "Left"),
              "<PROPERTY.REFERENCE NAME=\"Left\" REFERENCECLASS=\"T_Base\"><VALUE.REFERENCE><LOCALINSTANCEPATH>"
              "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"ns\"/></LOCALNAMESPACEPATH>"
              "<INSTANCENAME CLASSNAME=\"T_Base\"><KEYBINDING NAME=\"Id\"><KEYVALUE VALUETYPE=\"string\">x</KEYVALUE>"
              "</KEYBINDING></INSTANCENAME></LOCALINSTANCEPATH></VALUE.REFERENCE></PROPERTY.REFERENCE>");
}

TEST_F(EncoderTest, OnlySelectedPropertiesAreSent) {
    const std::vector<bool> selected = {false, true};
    EXPECT_EQ(render(make("T_Base"), {false, &selected}),
              "<INSTANCE CLASSNAME=\"T_Base\"><PROPERTY NAME=\"Number\" TYPE=\"uint16\"></PROPERTY></INSTANCE>");
}

TEST_F(EncoderTest, ClassOriginIsShownOnRequest) {
    InstanceObject& instance = make("T_Base");
    CMPIValue value{};
    value.uint16 = 5;
    set(instance, "Number", CMPI_uint16, value);
    EXPECT_EQ(
        render(instance, {true, nullptr}),
        "<INSTANCE CLASSNAME=\"T_Base\"><PROPERTY NAME=\"Id\" TYPE=\"string\" CLASSORIGIN=\"T_Base\"></PROPERTY>"
        "<PROPERTY NAME=\"Number\" TYPE=\"uint16\" CLASSORIGIN=\"T_Base\"><VALUE>5</VALUE></PROPERTY></INSTANCE>");
}

TEST_F(EncoderTest, AClassShowsOnlyItsOwnMembersWhenAskedSo) {
    const ClassDeclaration& port = *repository.find("root/ns", "T_Port");
    ByteBuffer ownBytes;
    appendClass(ownBytes, port, {});
    const std::string own(ownBytes.view());
    EXPECT_EQ(own.find("NAME=\"Id\""), std::string::npos);
    EXPECT_NE(own.find("<CLASS NAME=\"T_Port\" SUPERCLASS=\"T_Base\">"), std::string::npos) << own;
    EXPECT_NE(own.find("<VALUE>Ports &amp; more</VALUE>"), std::string::npos) << own;
    EXPECT_NE(own.find("<METHOD NAME=\"Act\" TYPE=\"uint32\"><PARAMETER.ARRAY NAME=\"Options\" TYPE=\"uint16\">"),
              std::string::npos)
        << own;
    ByteBuffer wholeBytes;
    appendClass(wholeBytes, port, {false, false, true, {}});
    const std::string whole(wholeBytes.view());
    EXPECT_NE(whole.find("<PROPERTY NAME=\"Id\" TYPE=\"string\" CLASSORIGIN=\"T_Base\" PROPAGATED=\"true\">"),
              std::string::npos)
        << whole;
    EXPECT_EQ(whole.find("QUALIFIER"), std::string::npos);
}

} // namespace
} // namespace cimhost::cimxml
