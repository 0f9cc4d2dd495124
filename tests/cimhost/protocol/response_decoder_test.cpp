// What CIM servers answer, as several of them write it, and what no server should.
#include "cimhost/cimxml/response.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace cimhost::cimxml {
namespace {

using testing::HasSubstr;

const std::string xmlHeader = "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n";

std::string message(const std::string& inside, const std::string& id = "7") {
    return xmlHeader + "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n<MESSAGE ID=\"" + id +
           "\" PROTOCOLVERSION=\"1.0\">\n" + inside + "</MESSAGE>\n</CIM>\n";
}

std::string answer(const std::string& parts, const std::string& method = "EnumerateInstances") {
    return message("<SIMPLERSP>\n<IMETHODRESPONSE NAME=\"" + method + "\">\n" + parts +
                   "</IMETHODRESPONSE>\n</SIMPLERSP>\n");
}

std::string objects(const std::string& inside) { return answer("<IRETURNVALUE>\n" + inside + "\n</IRETURNVALUE>\n"); }

std::string methodAnswer(const std::string& parts) {
    return message("<SIMPLERSP><METHODRESPONSE NAME=\"Install\">" + parts + "</METHODRESPONSE></SIMPLERSP>");
}

const std::string place =
    "<LOCALNAMESPACEPATH>\n<NAMESPACE NAME=\"root\"/>\n<NAMESPACE NAME=\"ns\"/>\n</LOCALNAMESPACEPATH>\n";
const std::string name =
    "<INSTANCENAME CLASSNAME=\"X_Port\">\n<KEYBINDING NAME=\"Name\">\n<KEYVALUE VALUETYPE=\"string\">"
    "p1</KEYVALUE>\n</KEYBINDING>\n<KEYBINDING NAME=\"Number\">\n<KEYVALUE TYPE=\"uint16\" "
    "VALUETYPE=\"numeric\">4</KEYVALUE>\n</KEYBINDING>\n</INSTANCENAME>\n";
const std::string fullPath =
    "<INSTANCEPATH>\n<NAMESPACEPATH>\n<HOST>san1</HOST>\n" + place + "</NAMESPACEPATH>\n" + name + "</INSTANCEPATH>\n";
const std::string instance = "<INSTANCE CLASSNAME=\"X_Port\" >\n<PROPERTY NAME=\"Name\" CLASSORIGIN=\"X\" "
                             "PROPAGATED=\"true\" TYPE=\"string\">\n<VALUE>\np 1 </VALUE>\n</PROPERTY>\n</INSTANCE>\n";

struct Read {
    std::vector<ReturnedObject> returned;
    std::variant<Response, ProtocolError> end;

    [[nodiscard]] const Response& response() const { return std::get<Response>(end); }
    [[nodiscard]] std::string refusal() const {
        const auto* error = std::get_if<ProtocolError>(&end);
        return error ? error->message : "nothing is refused";
    }
};

Read read(const std::string& document, Asked asked = {"7", Request::Kind::intrinsic, "EnumerateInstances"},
          std::size_t pieceSize = 1024, const ResponseLimits& limits = {}) {
    Read read;
    ResponseReader reader(
        std::move(asked), [&read](ReturnedObject object) { read.returned.push_back(std::move(object)); }, limits);
    for (std::size_t begin = 0; begin < document.size(); begin += pieceSize)
        reader.read(std::string_view(document).substr(begin, pieceSize));
    read.end = reader.finish();
    return read;
}

Read readMethod(const std::string& parts) {
    return read(methodAnswer(parts), {"7", Request::Kind::extrinsic, "Install"});
}

NamedInstance onlyInstance(const std::string& inside) {
    const Read found = read(objects(inside));
    if (found.returned.size() != 1 || !std::holds_alternative<NamedInstance>(found.returned.front())) {
        ADD_FAILURE() << inside << found.refusal();
        return {};
    }
    return std::get<NamedInstance>(found.returned.front());
}

TEST(ResponseDecoder, ANamedInstanceIsReadWithItsKeys) {
    const NamedInstance found = onlyInstance("<VALUE.NAMEDINSTANCE>\n" + name + instance + "</VALUE.NAMEDINSTANCE>");
    ASSERT_TRUE(found.path);
    EXPECT_EQ(found.path->className, "X_Port");
    ASSERT_EQ(found.path->keys.size(), 2U);
    EXPECT_EQ(found.path->keys[0].text, "p1");
    EXPECT_EQ(found.path->keys[1].type, KeyType::numeric);
    EXPECT_EQ(found.path->keys[1].declaredType, CMPI_uint16);
    ASSERT_EQ(found.instance.properties.size(), 1U);
    // White space belongs to a value.
    EXPECT_EQ(found.instance.properties[0].value.texts[0], "\np 1 ");
}

TEST(ResponseDecoder, AnObjectWithItsPathIsReadInEveryForm) {
    const std::string local = "<LOCALINSTANCEPATH>" + place + name + "</LOCALINSTANCEPATH>";
    for (const std::string& wrapped :
         {"<VALUE.OBJECTWITHPATH>\n" + fullPath + instance + "</VALUE.OBJECTWITHPATH>",
          "<VALUE.INSTANCEWITHPATH>" + fullPath + instance + "</VALUE.INSTANCEWITHPATH>",
          "<VALUE.OBJECTWITHLOCALPATH>" + local + instance + "</VALUE.OBJECTWITHLOCALPATH>"}) {
        const NamedInstance found = onlyInstance(wrapped);
        ASSERT_TRUE(found.path);
        EXPECT_EQ(found.path->nameSpace, "root/ns");
        EXPECT_EQ(found.instance.className, "X_Port");
    }
}

TEST(ResponseDecoder, AnInstanceAloneHasNoPath) { EXPECT_FALSE(onlyInstance(instance).path); }

TEST(ResponseDecoder, PathsAreReadInEveryForm) {
    const Read found = read(objects("<OBJECTPATH>\n" + fullPath + "</OBJECTPATH>\n" + fullPath + name));
    ASSERT_EQ(found.returned.size(), 3U) << found.refusal();
    EXPECT_EQ(std::get<ObjectPath>(found.returned[0]).host, "san1");
    EXPECT_EQ(std::get<ObjectPath>(found.returned[1]).nameSpace, "root/ns");
    EXPECT_EQ(std::get<ObjectPath>(found.returned[2]).nameSpace, "");
}

TEST(ResponseDecoder, AKeyMayStandWithoutItsNameAndAClassMayHaveNone) {
    const Read found = read(objects("<INSTANCENAME CLASSNAME=\"A\"><KEYVALUE>x</KEYVALUE></INSTANCENAME>"
                                    "<INSTANCENAME CLASSNAME=\"B\"/>"));
    ASSERT_EQ(found.returned.size(), 2U) << found.refusal();
    EXPECT_EQ(std::get<ObjectPath>(found.returned[0]).keys.front().text, "x");
    EXPECT_TRUE(std::get<ObjectPath>(found.returned[1]).keys.empty());
}

TEST(ResponseDecoder, ClassesAreReadByNameAndSuperclass) {
    const Read found =
        read(objects("<CLASSNAME NAME=\"A\"/><CLASS NAME=\"B\" SUPERCLASS=\"A\"><QUALIFIER NAME=\"Key\" "
                     "TYPE=\"boolean\"><VALUE>true</VALUE></QUALIFIER><METHOD NAME=\"M\" TYPE=\"uint32\">"
                     "<PARAMETER.REFARRAY NAME=\"p\" REFERENCECLASS=\"A\"/></METHOD></CLASS>"));
    ASSERT_EQ(found.returned.size(), 2U) << found.refusal();
    EXPECT_EQ(std::get<ClassSummary>(found.returned[0]).name, "A");
    EXPECT_EQ(std::get<ClassSummary>(found.returned[1]).superclass, "A");
}

TEST(ResponseDecoder, ValuesMayBeNullOrEscapedOrInSections) {
    const NamedInstance found = onlyInstance(
        "<INSTANCE CLASSNAME=\"A\"><PROPERTY NAME=\"Null\" TYPE=\"uint64\"/>"
        "<PROPERTY.ARRAY NAME=\"NullArray\" TYPE=\"uint16\"></PROPERTY.ARRAY>"
        "<PROPERTY.ARRAY NAME=\"Array\" TYPE=\"string\"><VALUE.ARRAY><VALUE>a</VALUE><VALUE.NULL/></VALUE.ARRAY>"
        "</PROPERTY.ARRAY><PROPERTY NAME=\"Section\" TYPE=\"string\"><VALUE><![CDATA[a<b]]>&amp;c</VALUE></PROPERTY>"
        "<PROPERTY.REFERENCE NAME=\"Ref\" REFERENCECLASS=\"B\"><VALUE.REFERENCE>" +
        fullPath + "</VALUE.REFERENCE></PROPERTY.REFERENCE></INSTANCE>");
    ASSERT_EQ(found.instance.properties.size(), 5U);
    EXPECT_TRUE(found.instance.properties[0].value.isNull);
    EXPECT_TRUE(found.instance.properties[1].value.isNull && found.instance.properties[1].value.isArray);
    EXPECT_TRUE(found.instance.properties[2].value.texts.isNull(1));
    EXPECT_EQ(found.instance.properties[3].value.texts[0], "a<b&c");
    EXPECT_EQ(found.instance.properties[4].value.references.front().className, "X_Port");
}

TEST(ResponseDecoder, AnEmbeddedInstanceIsReadFromItsText) {
    const NamedInstance found = onlyInstance(
        "<INSTANCE CLASSNAME=\"A\"><PROPERTY NAME=\"Inner\" TYPE=\"string\" EmbeddedObject=\"object\">"
        "<VALUE>&lt;INSTANCE CLASSNAME=&quot;B&quot;&gt;&lt;PROPERTY NAME=&quot;P&quot; "
        "TYPE=&quot;boolean&quot;&gt;&lt;VALUE&gt;true&lt;/VALUE&gt;&lt;/PROPERTY&gt;&lt;/INSTANCE&gt;</VALUE>"
        "</PROPERTY></INSTANCE>");
    ASSERT_EQ(found.instance.properties.front().value.type, CMPI_instance);
    const auto inner = decodeEmbeddedInstance(found.instance.properties.front().value.texts[0]);
    ASSERT_TRUE(inner);
    EXPECT_EQ(inner->className, "B");
    EXPECT_EQ(inner->properties.front().value.texts[0], "true");
    EXPECT_FALSE(decodeEmbeddedInstance("<CLASS NAME=\"B\"/>"));
    EXPECT_FALSE(decodeEmbeddedInstance("no XML"));
}

TEST(ResponseDecoder, AnEmptyAnswerHasNoObjects) {
    EXPECT_FALSE(read(objects("")).response().error);
    EXPECT_FALSE(read(answer("")).response().error);
    EXPECT_FALSE(read(answer("<IRETURNVALUE/>")).response().error);
}

TEST(ResponseDecoder, EveryStatusIsRead) {
    for (int code = 1; code <= 17; ++code) {
        const Read found = read(answer("<ERROR CODE=\"" + std::to_string(code) + "\" DESCRIPTION=\"why\"/>"));
        ASSERT_TRUE(found.response().error) << code;
        EXPECT_EQ(found.response().error->code, code);
        EXPECT_EQ(found.response().error->description, "why");
    }
}

TEST(ResponseDecoder, AnUnknownStatusIsAFailureWithItsNumber) {
    for (const char* code : {"0", "18", "28", "-1", "x", "99999999999999999999"}) {
        const Read found = read(answer("<ERROR CODE=\"" + std::string(code) + "\"/>"));
        ASSERT_TRUE(found.response().error) << code;
        EXPECT_EQ(found.response().error->code, CMPI_RC_ERR_FAILED);
        EXPECT_EQ(found.response().error->description, "status " + std::string(code).substr(0, 16));
    }
}

TEST(ResponseDecoder, AnErrorBehindObjectsCounts) {
    const Read found = read(answer("<IRETURNVALUE>" + name + "</IRETURNVALUE><ERROR CODE=\"1\"/>"));
    EXPECT_TRUE(found.response().error);
}

TEST(ResponseDecoder, AMethodsReturnValueAndParametersAreRead) {
    const Read found =
        readMethod("<RETURNVALUE PARAMTYPE=\"uint32\">\n<VALUE>4096</VALUE>\n</RETURNVALUE>\n"
                   "<PARAMVALUE NAME=\"Job\" PARAMTYPE=\"reference\"><VALUE.REFERENCE>" +
                   name +
                   "</VALUE.REFERENCE></PARAMVALUE><PARAMVALUE NAME=\"Null\"/>"
                   "<PARAMVALUE NAME=\"List\" PARAMTYPE=\"uint8\"><VALUE.ARRAY><VALUE>1</VALUE></VALUE.ARRAY>"
                   "</PARAMVALUE>");
    ASSERT_TRUE(std::holds_alternative<Response>(found.end)) << found.refusal();
    EXPECT_EQ(found.response().returnValue->texts[0], "4096");
    EXPECT_EQ(found.response().returnValue->type, CMPI_uint32);
    ASSERT_EQ(found.response().outParameters.size(), 3U);
    EXPECT_EQ(found.response().outParameters[0].value.references.front().className, "X_Port");
    EXPECT_TRUE(found.response().outParameters[1].value.isNull);
    EXPECT_TRUE(found.response().outParameters[2].value.isArray);
}

TEST(ResponseDecoder, PiecesMayBeOfAnySize) {
    const std::string document = objects("<VALUE.NAMEDINSTANCE>" + name + instance + "</VALUE.NAMEDINSTANCE>" + name);
    for (const std::size_t size : {std::size_t{1}, std::size_t{7}, std::size_t{100000}}) {
        EXPECT_EQ(read(document, {"7", Request::Kind::intrinsic, "enumerateinstances"}, size).returned.size(), 2U)
            << size;
    }
}

struct Refused {
    const char* name;
    std::string document;
    std::string reason;
};

void PrintTo(const Refused& refused, std::ostream* out) { *out << refused.name; }

class RefusedResponse : public testing::TestWithParam<Refused> {};

TEST_P(RefusedResponse, IsReportedWithTheReason) {
    const Read found = read(GetParam().document);
    EXPECT_THAT(found.refusal(), HasSubstr(GetParam().reason));
}

INSTANTIATE_TEST_SUITE_P(
    Documents, RefusedResponse,
    testing::Values(
        Refused{"Nothing", "", "no element found"},
        Refused{"Html", "<!DOCTYPE html><html><body>404</body></html>", "document type declaration"},
        Refused{"HtmlWithoutAType", "<html><body>404</body></html>", "<html> is no element of CIM-XML"},
        Refused{"CutShort", objects(name).substr(0, objects(name).find("<KEYBINDING")), "no element found"},
        Refused{"AnotherMessage", message("<SIMPLERSP><IMETHODRESPONSE NAME=\"EnumerateInstances\"/></SIMPLERSP>", "8"),
                "it answers message \"8\", and this was \"7\""},
        Refused{"AnotherMethod", answer("", "GetInstance"), "it answers \"GetInstance\" and not EnumerateInstances"},
        Refused{"ARequest", message("<SIMPLEREQ/>"), "<SIMPLEREQ> where <SIMPLERSP> stands"},
        Refused{"Several", message("<MULTIRSP/>"), "<MULTIRSP> where <SIMPLERSP> stands"},
        Refused{"AMethodsAnswer", methodAnswer(""), "<METHODRESPONSE> where <IMETHODRESPONSE> stands"},
        Refused{"AnotherVersion",
                "<CIM CIMVERSION=\"3.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"7\" PROTOCOLVERSION=\"1.0\"/></CIM>",
                "CIMVERSION 3.0 is not supported"},
        Refused{"AValue", objects("<VALUE>x</VALUE>"), "<VALUE> where an object stands"},
        Refused{"AQualifier", objects("<QUALIFIER.DECLARATION NAME=\"Q\" TYPE=\"boolean\"/>"),
                "<QUALIFIER.DECLARATION> where an object stands"},
        Refused{"TwoClasses",
                objects("<VALUE.NAMEDINSTANCE>" + name + "<INSTANCE CLASSNAME=\"Y\"/></VALUE.NAMEDINSTANCE>"),
                "path and instance are of different classes"},
        Refused{"NoPath", objects("<VALUE.NAMEDINSTANCE>" + instance + "</VALUE.NAMEDINSTANCE>"),
                "holds other than a path and its object"},
        Refused{"AnUnknownType",
                objects("<INSTANCE CLASSNAME=\"A\"><PROPERTY NAME=\"P\" TYPE=\"uint128\"/></INSTANCE>"),
                "uint128 is no type"},
        Refused{"TwoValues", answer("<IRETURNVALUE/><IRETURNVALUE/>"), "a second <IRETURNVALUE>"},
        Refused{"ObjectsInObjects", objects("<IRETURNVALUE>" + name + "</IRETURNVALUE>"),
                "<IRETURNVALUE> where an object stands"},
        Refused{"ObjectsElsewhere",
                message("<SIMPLERSP><IMETHODRESPONSE NAME=\"EnumerateInstances\"><ERROR CODE=\"1\">" + name +
                        "</ERROR><SIMPLERSP/></IMETHODRESPONSE></SIMPLERSP>"),
                "<SIMPLERSP> inside <IMETHODRESPONSE>"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ResponseDecoder, AMethodThatGivesAParameterTwiceIsRefused) {
    EXPECT_THAT(readMethod("<PARAMVALUE NAME=\"A\"/><PARAMVALUE NAME=\"a\"/>").refusal(), HasSubstr("is given twice"));
    EXPECT_THAT(readMethod("<RETURNVALUE/><RETURNVALUE/>").refusal(), HasSubstr("a second <RETURNVALUE>"));
    EXPECT_THAT(readMethod("<IRETURNVALUE/>").refusal(), HasSubstr("<IRETURNVALUE> inside <METHODRESPONSE>"));
}

TEST(ResponseDecoder, TheLimitsAreThoseOfOneObjectAndNotOfAll) {
    ResponseLimits limits;
    limits.xml.elements = 32;
    limits.xml.heldBytes = 16384;
    limits.objects = 1000;
    std::string many;
    for (int count = 0; count < 1000; ++count)
        many += name;
    EXPECT_EQ(read(objects(many), {"7", Request::Kind::intrinsic, "EnumerateInstances"}, 4096, limits).returned.size(),
              1000U);
    const Read tooMany =
        read(objects(many + name), {"7", Request::Kind::intrinsic, "EnumerateInstances"}, 4096, limits);
    EXPECT_THAT(tooMany.refusal(), HasSubstr("too many objects"));
    std::string large = "<INSTANCENAME CLASSNAME=\"A\">";
    for (int count = 0; count < 40; ++count)
        large += "<KEYBINDING NAME=\"k" + std::to_string(count) + "\"><KEYVALUE>x</KEYVALUE></KEYBINDING>";
    const Read tooLarge =
        read(objects(large + "</INSTANCENAME>"), {"7", Request::Kind::intrinsic, "EnumerateInstances"}, 4096, limits);
    EXPECT_THAT(tooLarge.refusal(), HasSubstr("too many elements"));
}

TEST(ResponseDecoder, NestingIsBounded) {
    std::string deep;
    for (int count = 0; count < 80; ++count)
        deep += "<INSTANCENAME CLASSNAME=\"A\"><VALUE.REFERENCE>";
    EXPECT_THAT(read(objects(deep)).refusal(), HasSubstr("nested too deeply"));
}

// Recorded of cimhost, OpenPegasus 2.14 and sfcb 1.4, message 1.
TEST(ResponseDecoder, AnswersOfRealServersAreRead) {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(RECORDED)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string document{std::istreambuf_iterator<char>(file), {}};
        const bool isMethod = document.find("<METHODRESPONSE") != std::string::npos;
        const Read found = isMethod ? read(document, {"1", Request::Kind::extrinsic, "InstallFromURI"})
                                    : read(document, {"1", Request::Kind::intrinsic, "EnumerateInstances"});
        ASSERT_TRUE(std::holds_alternative<Response>(found.end)) << entry.path() << ": " << found.refusal();
        EXPECT_TRUE(found.response().error || found.response().returnValue || !found.returned.empty()) << entry.path();
        ++count;
    }
    EXPECT_GE(count, 13U);
}

TEST(ResponseDecoder, ExceptionsOfTheCallersFunctionPassThrough) {
    ResponseReader reader({"7", Request::Kind::intrinsic, "EnumerateInstances"},
                          [](const ReturnedObject&) { throw std::runtime_error("no room"); });
    EXPECT_THROW(reader.read(objects(name)), std::runtime_error);
}

} // namespace
} // namespace cimhost::cimxml
