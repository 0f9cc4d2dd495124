#include "cimhost/cimxml/request.h"

#include <gtest/gtest.h>
#include <ostream>

namespace cimhost::cimxml {
namespace {

const std::string xmlHeader = "<?xml version=\"1.0\" encoding=\"utf-8\"?>";
const std::string place = "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"ns\"/></LOCALNAMESPACEPATH>";

std::string message(const std::string& inside) {
    return xmlHeader + "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"7\" PROTOCOLVERSION=\"1.0\">" +
           inside + "</MESSAGE></CIM>";
}

std::string call(const std::string& parameters) {
    return message("<SIMPLEREQ><IMETHODCALL NAME=\"GetInstance\">" + place + parameters + "</IMETHODCALL></SIMPLEREQ>");
}

std::string parameter(const std::string& value) { return "<IPARAMVALUE NAME=\"P\">" + value + "</IPARAMVALUE>"; }

Request decoded(const std::string& document) {
    auto result = decodeRequest(document);
    if (auto* error = std::get_if<ProtocolError>(&result)) {
        ADD_FAILURE() << error->message << "\n" << document.substr(0, 500);
        return {};
    }
    return std::get<Request>(std::move(result));
}

template <typename Kind>
Kind argument(const std::string& value) {
    const Request request = decoded(call(parameter(value)));
    const Argument* found = request.parameter("p");
    if (!found || !std::holds_alternative<Kind>(*found)) {
        ADD_FAILURE() << value;
        return {};
    }
    return std::get<Kind>(*found);
}

TEST(RequestDecoder, AnIntrinsicCallIsRead) {
    const Request request = decoded(call(""));
    EXPECT_EQ(request.messageId, "7");
    EXPECT_EQ(request.protocolVersion, "1.0");
    EXPECT_EQ(request.kind, Request::Kind::intrinsic);
    EXPECT_EQ(request.nameSpace, "root/ns");
    EXPECT_EQ(request.methodName, "GetInstance");
    EXPECT_TRUE(request.parameters.empty());
}

TEST(RequestDecoder, ABooleanComesAsItsText) {
    const auto value = argument<Value>("<VALUE>TRUE</VALUE>");
    EXPECT_FALSE(value.isArray);
    EXPECT_EQ(value.texts[0], "TRUE");
}

TextList textsOf(const std::vector<std::string>& elements) {
    std::string xml;
    for (const std::string& element : elements)
        xml += element;
    return argument<Value>("<VALUE.ARRAY>" + xml + "</VALUE.ARRAY>").texts;
}

std::vector<std::string> all(const TextList& texts) {
    std::vector<std::string> copies;
    for (std::size_t index = 0; index < texts.size(); ++index)
        copies.push_back(texts.isNull(index) ? "null" : std::string(texts[index]));
    return copies;
}

TEST(RequestDecoder, TheBytesOfAnImageTakeAByteEach) {
    std::vector<std::string> elements;
    std::vector<std::string> expected;
    for (int number = 0; number < 256; ++number) {
        expected.push_back(std::to_string(number));
        elements.push_back("<VALUE>" + expected.back() + "</VALUE>");
    }
    const TextList texts = textsOf(elements);
    EXPECT_EQ(all(texts), expected);
    EXPECT_EQ(texts.heldBytes(), 256U);
}

TEST(RequestDecoder, AnArrayKeepsItsTextsAsTheyAre) {
    // Each of these ends the run of bytes; what came before and comes after it is read all the same.
    for (const std::string odd : {"", " 7", "7 ", "07", "+7", "-1", "256", "0x7", "1e1", "text", "null"}) {
        const std::string element = odd == "null" ? "<VALUE.NULL/>" : "<VALUE>" + odd + "</VALUE>";
        const TextList texts = textsOf({"<VALUE>0</VALUE>", "<VALUE>255</VALUE>", element, "<VALUE>9</VALUE>"});
        EXPECT_EQ(all(texts), (std::vector<std::string>{"0", "255", odd, "9"}));
        EXPECT_EQ(all(textsOf({element})), std::vector<std::string>{odd});
    }
}

// The document in pieces of that many bytes.
std::variant<Request, ProtocolError> inPieces(const std::string& document, std::size_t size,
                                              const XmlLimits& limits = {}) {
    XmlReader reader(limits);
    for (std::size_t begin = 0; begin < document.size(); begin += size)
        reader.read(std::string_view(document).substr(begin, size));
    return decodeRequest(reader);
}

TEST(RequestDecoder, PiecesOfAnySizeGiveTheSameRequest) {
    const std::string document = call(parameter("<VALUE.ARRAY><VALUE>&lt;\xC3\xA4</VALUE><VALUE.NULL/>"
                                                "<VALUE>200</VALUE><VALUE><![CDATA[a<b]]></VALUE></VALUE.ARRAY>"));
    for (std::size_t size = 1; size <= document.size(); ++size) {
        auto result = inPieces(document, size);
        ASSERT_TRUE(std::holds_alternative<Request>(result)) << size;
        const auto& request = std::get<Request>(result);
        EXPECT_EQ(request.nameSpace, "root/ns");
        EXPECT_EQ(all(std::get<Value>(*request.parameter("P")).texts),
                  (std::vector<std::string>{"<\xC3\xA4", "null", "200", "a<b"}))
            << size;
    }
}

TEST(RequestDecoder, AnErrorIsTheSameWhereverThePiecesEnd) {
    const std::string document = call(parameter("<VALUE>x</VALUE>")) + "\n<rest/>";
    const std::string expected = std::get<ProtocolError>(decodeRequest(document)).message;
    EXPECT_EQ(expected.substr(0, 8), "line 2: ");
    for (std::size_t size = 1; size <= document.size(); ++size)
        EXPECT_EQ(std::get<ProtocolError>(inPieces(document, size)).message, expected) << size;
}

TEST(RequestDecoder, AnErrorIsReportedAtOnceAndAgainAtTheEnd) {
    XmlReader reader;
    EXPECT_EQ(reader.read("<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"), std::nullopt);
    const auto error = reader.read("<WRONG>");
    ASSERT_NE(error, std::nullopt);
    EXPECT_EQ(error->message, "line 1: <WRONG> is no element of CIM-XML");
    EXPECT_EQ(reader.read("</CIM>")->message, error->message);
    EXPECT_EQ(std::get<ProtocolError>(reader.finish()).message, error->message);
}

TEST(RequestDecoder, ATokenWithoutEndIsRefusedEarly) {
    XmlLimits limits;
    limits.tokenBytes = 1000;
    for (const std::string token : {"<!--", "<CIM CIMVERSION=\"", "<?x "}) {
        const std::string document = xmlHeader + token + std::string(5000, 'x');
        EXPECT_EQ(std::get<ProtocolError>(inPieces(document, 100, limits)).message,
                  "line 1: a tag or comment is too long")
            << token;
    }
}

TEST(RequestDecoder, AMessageThatHoldsTooMuchIsRefused) {
    XmlLimits limits;
    limits.heldBytes = 10'000;
    const std::string text(5000, 'x');
    const auto outcome = [&](const std::string& value) -> std::string {
        const auto result = inPieces(call(parameter(value)), 512, limits);
        const auto* error = std::get_if<ProtocolError>(&result);
        return error ? error->message : "read";
    };
    const std::string tooMuch = "line 1: the message holds too much";
    EXPECT_EQ(outcome("<VALUE>" + text + "</VALUE>"), "read");
    EXPECT_EQ(outcome("<VALUE>" + text + text + "</VALUE>"), tooMuch);
    EXPECT_EQ(outcome("<VALUE.ARRAY><VALUE>" + text + "</VALUE></VALUE.ARRAY>"), "read");
    EXPECT_EQ(outcome("<VALUE.ARRAY><VALUE>" + text + "</VALUE><VALUE>" + text + "</VALUE></VALUE.ARRAY>"), tooMuch);
    EXPECT_EQ(outcome("<CLASSNAME NAME=\"" + text + text + "\"/>"), tooMuch);
}

TEST(RequestDecoder, BytesAreNotSpeltOutBeyondWhatAMessageMayHold) {
    XmlLimits limits;
    limits.heldBytes = 10'000;
    std::string numbers = xmlHeader + "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><VALUE.ARRAY>";
    for (int index = 0; index < 5000; ++index)
        numbers += "<VALUE>255</VALUE>";
    for (const std::string odd : {"<VALUE>x</VALUE>", "<VALUE.NULL/>"}) {
        XmlReader reader(limits);
        ASSERT_EQ(reader.read(numbers), std::nullopt);
        const std::size_t before = reader.heldBytes();
        const auto error = reader.read(odd);
        ASSERT_NE(error, std::nullopt) << odd;
        EXPECT_EQ(error->message, "line 1: the message holds too much");
        EXPECT_LE(reader.heldBytes(), before) << odd;
    }
}

TEST(RequestDecoder, AListThatHasReachedItsLimitStaysAsItIs) {
    TextList texts;
    for (const std::string number : {"0", "10", "200"})
        EXPECT_TRUE(texts.append(number, 3));
    EXPECT_FALSE(texts.append("1", 3));
    EXPECT_FALSE(texts.append("x", 22));
    EXPECT_FALSE(texts.appendNull(21));
    EXPECT_EQ(texts.heldBytes(), 3U);
    EXPECT_TRUE(texts.append("x", 23));
    EXPECT_EQ(texts.heldBytes(), 23U);
    EXPECT_EQ(all(texts), (std::vector<std::string>{"0", "10", "200", "x"}));
    EXPECT_FALSE(texts.appendNull(26));
    EXPECT_TRUE(texts.appendNull(27));
}

TEST(RequestDecoder, AnEmptyPropertyListIsNotAnAbsentOne) {
    EXPECT_EQ(decoded(call("")).parameter("P"), nullptr);
    argument<std::monostate>("");
    const auto empty = argument<Value>("<VALUE.ARRAY/>");
    EXPECT_TRUE(empty.isArray);
    EXPECT_FALSE(empty.isNull);
    EXPECT_TRUE(empty.texts.empty());
}

TEST(RequestDecoder, AnArrayKeepsOrderEmptyTextsAndNulls) {
    const auto list = argument<Value>(
        "<VALUE.ARRAY><VALUE>a</VALUE><VALUE/><VALUE.NULL/><VALUE> b&amp;<![CDATA[<]]></VALUE></VALUE.ARRAY>");
    ASSERT_EQ(list.texts.size(), 4U);
    EXPECT_EQ(list.texts[0], "a");
    EXPECT_EQ(list.texts[1], "");
    EXPECT_FALSE(list.texts.isNull(1));
    EXPECT_TRUE(list.texts.isNull(2));
    EXPECT_EQ(list.texts[3], " b&<");
}

TEST(RequestDecoder, AnInstanceNameKeepsTheKindOfEachKey) {
    const auto path = argument<ObjectPath>(
        "<INSTANCENAME CLASSNAME=\"C\">"
        "<KEYBINDING NAME=\"A\"><KEYVALUE>text</KEYVALUE></KEYBINDING>"
        "<KEYBINDING NAME=\"B\"><KEYVALUE VALUETYPE=\"numeric\" TYPE=\"uint16\">17</KEYVALUE></KEYBINDING>"
        "<KEYBINDING NAME=\"D\"><KEYVALUE VALUETYPE=\"boolean\">true</KEYVALUE></KEYBINDING>"
        "</INSTANCENAME>");
    EXPECT_TRUE(path.namesInstance);
    EXPECT_EQ(path.className, "C");
    ASSERT_EQ(path.keys.size(), 3U);
    EXPECT_EQ(path.keys[0].type, KeyType::text);
    EXPECT_EQ(path.keys[0].text, "text");
    EXPECT_EQ(path.keys[1].type, KeyType::numeric);
    EXPECT_EQ(path.keys[1].declaredType, CMPI_uint16);
    EXPECT_EQ(path.keys[2].type, KeyType::boolean);
}

TEST(RequestDecoder, AKeyMayBeAReferenceWithAPlaceOfItsOwn) {
    const auto path = argument<ObjectPath>(
        "<INSTANCENAME CLASSNAME=\"A\"><KEYBINDING NAME=\"Left\"><VALUE.REFERENCE><INSTANCEPATH><NAMESPACEPATH>"
        "<HOST>h</HOST><LOCALNAMESPACEPATH><NAMESPACE NAME=\"other\"/></LOCALNAMESPACEPATH></NAMESPACEPATH>"
        "<INSTANCENAME CLASSNAME=\"C\"><KEYBINDING NAME=\"K\"><KEYVALUE>v</KEYVALUE></KEYBINDING></INSTANCENAME>"
        "</INSTANCEPATH></VALUE.REFERENCE></KEYBINDING></INSTANCENAME>");
    ASSERT_EQ(path.keys.size(), 1U);
    ASSERT_EQ(path.keys[0].type, KeyType::reference);
    EXPECT_EQ(path.keys[0].reference->host, "h");
    EXPECT_EQ(path.keys[0].reference->nameSpace, "other");
    EXPECT_EQ(path.keys[0].reference->className, "C");
    EXPECT_EQ(path.keys[0].reference->keys[0].text, "v");
}

TEST(RequestDecoder, ASingleKeyMayStandWithoutAName) {
    const auto path = argument<ObjectPath>("<INSTANCENAME CLASSNAME=\"C\"><KEYVALUE>v</KEYVALUE></INSTANCENAME>");
    ASSERT_EQ(path.keys.size(), 1U);
    EXPECT_EQ(path.keys[0].name, "");
    EXPECT_EQ(path.keys[0].text, "v");
}

TEST(RequestDecoder, AClassNameNamesNoInstance) {
    const auto path = argument<ObjectPath>("<CLASSNAME NAME=\"C\"/>");
    EXPECT_FALSE(path.namesInstance);
    EXPECT_EQ(path.className, "C");
}

TEST(RequestDecoder, AnInstanceKeepsTypesAndNulls) {
    const auto named = argument<NamedInstance>(
        "<VALUE.NAMEDINSTANCE><INSTANCENAME CLASSNAME=\"C\"/><INSTANCE CLASSNAME=\"C\">"
        "<PROPERTY NAME=\"A\" TYPE=\"uint8\"><VALUE>1</VALUE></PROPERTY>"
        "<PROPERTY NAME=\"B\" TYPE=\"string\"/>"
        "<PROPERTY.ARRAY NAME=\"D\" TYPE=\"string\"><VALUE.ARRAY><VALUE>x</VALUE></VALUE.ARRAY></PROPERTY.ARRAY>"
        "<PROPERTY.REFERENCE NAME=\"E\"><VALUE.REFERENCE><CLASSNAME NAME=\"R\"/></VALUE.REFERENCE></PROPERTY.REFERENCE>"
        "</INSTANCE></VALUE.NAMEDINSTANCE>");
    ASSERT_TRUE(named.path);
    const auto& properties = named.instance.properties;
    ASSERT_EQ(properties.size(), 4U);
    EXPECT_EQ(properties[0].value.type, CMPI_uint8);
    EXPECT_EQ(properties[0].value.texts[0], "1");
    EXPECT_TRUE(properties[1].value.isNull);
    EXPECT_EQ(properties[1].value.type, CMPI_string);
    EXPECT_TRUE(properties[2].value.isArray);
    EXPECT_EQ(properties[3].value.type, CMPI_ref);
    EXPECT_EQ(properties[3].value.references[0].className, "R");
}

TEST(RequestDecoder, AMethodCallKeepsItsTargetAndTheTypesOfItsParameters) {
    const Request request = decoded(message(
        "<SIMPLEREQ><METHODCALL NAME=\"Install\"><LOCALINSTANCEPATH>" + place +
        "<INSTANCENAME CLASSNAME=\"S\"/></LOCALINSTANCEPATH>"
        "<PARAMVALUE NAME=\"Options\" PARAMTYPE=\"uint16\"><VALUE.ARRAY><VALUE>2</VALUE></VALUE.ARRAY></PARAMVALUE>"
        "<PARAMVALUE NAME=\"Target\"><VALUE.REFERENCE><INSTANCENAME CLASSNAME=\"T\"/></VALUE.REFERENCE></PARAMVALUE>"
        "</METHODCALL></SIMPLEREQ>"));
    EXPECT_EQ(request.kind, Request::Kind::extrinsic);
    EXPECT_EQ(request.nameSpace, "root/ns");
    EXPECT_EQ(request.target.className, "S");
    const auto& options = std::get<Value>(*request.parameter("Options"));
    EXPECT_EQ(options.type, CMPI_uint16);
    EXPECT_TRUE(options.isArray);
    EXPECT_EQ(std::get<Value>(*request.parameter("Target")).type, CMPI_ref);
}

TEST(RequestDecoder, ACommentAndACorrelatorAreSkipped) {
    decoded(message("<SIMPLEREQ><CORRELATOR NAME=\"a\" TYPE=\"string\"><VALUE>x</VALUE></CORRELATOR>"
                    "<!-- hello --><IMETHODCALL NAME=\"X\">" +
                    place + "</IMETHODCALL></SIMPLEREQ>"));
}

TEST(RequestDecoder, OtherEncodingsThatExpatKnowsAreRead) {
    const std::string document = "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>" +
                                 call(parameter("<VALUE>\xFC</VALUE>")).substr(xmlHeader.size());
    EXPECT_EQ(std::get<Value>(*decoded(document).parameter("P")).texts[0], "ü");
}

TEST(RequestDecoder, AFirmwareImageMayHaveMoreBytesThanTheLimitOfElements) {
    std::string list = "<VALUE.ARRAY>";
    for (int index = 0; index < 200'000; ++index)
        list += "<VALUE>255</VALUE>";
    const auto value = argument<Value>(list + "</VALUE.ARRAY>");
    EXPECT_EQ(value.texts.size(), 200'000U);
    EXPECT_EQ(value.texts[199'999], "255");
}

struct BadDocument {
    std::string name;
    std::string document;
    ErrorKind kind;
};

void PrintTo(const BadDocument& bad, std::ostream* out) { *out << bad.name; }

std::string repeated(const std::string& text, int count) {
    std::string all;
    for (int index = 0; index < count; ++index)
        all += text;
    return all;
}

std::string nestedReferences(int depth) {
    return parameter(repeated("<INSTANCENAME CLASSNAME=\"C\"><KEYBINDING NAME=\"K\"><VALUE.REFERENCE>", depth) +
                     "<CLASSNAME NAME=\"C\"/>" + repeated("</VALUE.REFERENCE></KEYBINDING></INSTANCENAME>", depth));
}

std::vector<BadDocument> badDocuments() {
    using enum ErrorKind;
    const std::string name = "<INSTANCENAME CLASSNAME=\"C\">";
    const std::string open = "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">";
    const std::string wrongNamespace =
        message("<SIMPLEREQ><IMETHODCALL NAME=\"X\"><LOCALNAMESPACEPATH/></IMETHODCALL></SIMPLEREQ>");
    std::string keys;
    for (int index = 0; index < 1000; ++index) {
        keys += "<KEYBINDING NAME=\"K" + std::to_string(index) + "\"><KEYVALUE/></KEYBINDING>";
    }
    std::vector<BadDocument> rows = {
        {"Nothing", "", requestNotWellFormed},
        {"NoXml", "hello", requestNotWellFormed},
        {"CutOff", call("").substr(0, 150), requestNotWellFormed},
        {"TrailingJunk", call("") + "<x/>", requestNotWellFormed},
        {"TwoRoots", call("") + call("").substr(xmlHeader.size()), requestNotWellFormed},
        {"DuplicateAttribute", "<CIM CIMVERSION=\"2.0\" CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"/>", requestNotWellFormed},
        {"UnknownEntity", call(parameter("<VALUE>&bomb;</VALUE>")), requestNotWellFormed},
        {"InvalidUtf8", call(parameter("<VALUE>\xFF</VALUE>")), requestNotWellFormed},
        {"ControlCharacter", call(parameter("<VALUE>\x01</VALUE>")), requestNotWellFormed},
        {"ForbiddenCharacterReference", call(parameter("<VALUE>&#0;</VALUE>")), requestNotWellFormed},
        {"Doctype", "<!DOCTYPE CIM [<!ENTITY a \"b\">]>" + open + "</CIM>", requestNotValid},
        {"ExternalDoctype", "<!DOCTYPE CIM SYSTEM \"file:///etc/passwd\">" + open + "</CIM>", requestNotValid},
        {"UnknownElement", message("<HELLO/>"), requestNotValid},
        {"UnknownAttribute", call("<IPARAMVALUE NAME=\"P\" COLOUR=\"red\"/>"), requestNotValid},
        {"MissingAttribute", call("<IPARAMVALUE/>"), requestNotValid},
        {"EmptyName", call("<IPARAMVALUE NAME=\"\"/>"), requestNotValid},
        {"StrayText", call("hello"), requestNotValid},
        {"ElementInsideValue", call(parameter("<VALUE><VALUE/></VALUE>")), requestNotValid},
        {"ElementInsideArrayEntry", call(parameter("<VALUE.ARRAY><VALUE><VALUE/></VALUE></VALUE.ARRAY>")),
         requestNotValid},
        {"OtherElementInArray", call(parameter("<VALUE.ARRAY><CLASSNAME NAME=\"C\"/></VALUE.ARRAY>")), requestNotValid},
        {"AttributeOnArrayEntry", call(parameter("<VALUE.ARRAY><VALUE NAME=\"x\"/></VALUE.ARRAY>")), requestNotValid},
        {"TextInNullEntry", call(parameter("<VALUE.ARRAY><VALUE.NULL>x</VALUE.NULL></VALUE.ARRAY>")), requestNotValid},
        {"TwoValues", call(parameter("<VALUE/><VALUE/>")), requestNotValid},
        {"ParameterTwice", call("<IPARAMVALUE NAME=\"P\"/><IPARAMVALUE NAME=\"p\"/>"), requestNotValid},
        {"KeyTwice",
         call(parameter(name + "<KEYBINDING NAME=\"K\"><KEYVALUE/></KEYBINDING><KEYBINDING "
                               "NAME=\"k\"><KEYVALUE/></KEYBINDING></INSTANCENAME>")),
         requestNotValid},
        {"TooManyKeys", call(parameter(name + keys + "</INSTANCENAME>")), requestNotValid},
        {"UnknownValueType",
         call(parameter(name + "<KEYBINDING NAME=\"K\"><KEYVALUE VALUETYPE=\"date\"/></KEYBINDING></INSTANCENAME>")),
         requestNotValid},
        {"UnknownType", call(parameter("<INSTANCE CLASSNAME=\"C\"><PROPERTY NAME=\"A\" TYPE=\"int\"/></INSTANCE>")),
         requestNotValid},
        {"ArrayInScalarProperty",
         call(parameter(
             "<INSTANCE CLASSNAME=\"C\"><PROPERTY NAME=\"A\" TYPE=\"string\"><VALUE.ARRAY/></PROPERTY></INSTANCE>")),
         requestNotValid},
        {"NoNamespace", wrongNamespace, requestNotValid},
        {"NoCall", message("<SIMPLEREQ/>"), requestNotValid},
        {"NoMessage", open + "</CIM>", requestNotValid},
        {"ResponseInPlaceOfRequest", message("<SIMPLERSP/>"), requestNotValid},
        {"TooDeep", call(nestedReferences(1000)), requestNotValid},
        {"TooManyElements", message(repeated("<SIMPLEREQ/>", 70'000)), requestNotValid},
        {"OverlongAttribute", call("<IPARAMVALUE NAME=\"" + std::string(20'000, 'x') + "\"/>"), requestNotValid},
        {"OtherRoot", "<VALUE/>", requestNotValid},
        {"CimVersion3", "<CIM CIMVERSION=\"3.0\" DTDVERSION=\"2.0\"/>", unsupportedCimVersion},
        {"DtdVersion1", "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"1.0\"/>", unsupportedDtdVersion},
        {"ProtocolVersion2", open + "<MESSAGE ID=\"1\" PROTOCOLVERSION=\"2.0\"><SIMPLEREQ/></MESSAGE></CIM>",
         unsupportedProtocolVersion},
        {"SeveralRequests", message("<MULTIREQ><SIMPLEREQ/><SIMPLEREQ/></MULTIREQ>"), multipleRequestsUnsupported},
        {"Export", message("<SIMPLEEXPREQ><EXPMETHODCALL NAME=\"ExportIndication\"/></SIMPLEEXPREQ>"),
         unsupportedOperation},
    };
    return rows;
}

class BadRequest : public testing::TestWithParam<BadDocument> {};

TEST_P(BadRequest, IsRefusedAndSaysWhy) {
    const auto result = decodeRequest(GetParam().document);
    const auto* error = std::get_if<ProtocolError>(&result);
    ASSERT_TRUE(error);
    EXPECT_EQ(headerValue(error->kind), headerValue(GetParam().kind)) << error->message;
    EXPECT_FALSE(error->message.empty());
    EXPECT_LT(error->message.size(), 300U);
}

INSTANTIATE_TEST_SUITE_P(Documents, BadRequest, testing::ValuesIn(badDocuments()),
                         [](const auto& row) { return row.param.name; });

} // namespace
} // namespace cimhost::cimxml
