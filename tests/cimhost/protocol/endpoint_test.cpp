#include "fake_provider.h"
#include "test_reply.h"

#include "cimhost/service/endpoint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace cimhost {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing_support::FakeHost;
using testing_support::TestReply;

const std::string enumerateNames =
    "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>"
    "<IMETHODCALL NAME=\"EnumerateClassNames\"><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"ns\"/>"
    "</LOCALNAMESPACEPATH></IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";

const std::string start =
    "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>"
    "<METHODCALL NAME=\"Start\"><LOCALCLASSPATH><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root/ns\"/>"
    "</LOCALNAMESPACEPATH><CLASSNAME NAME=\"T_Port\"/></LOCALCLASSPATH></METHODCALL></SIMPLEREQ></MESSAGE></CIM>";

std::string callOf(const std::string& method, const std::string& parameters) {
    return "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>"
           "<IMETHODCALL NAME=\"" +
           method + "\"><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root/ns\"/></LOCALNAMESPACEPATH>" + parameters +
           "</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";
}

const std::string openPorts = callOf("OpenEnumerateInstances", testing_support::className("T_Port"));

// What continues an enumeration.
std::string pullOf(const http::Response& opened, std::size_t count) {
    const std::string answer(opened.body.view());
    const std::string before = "NAME=\"EnumerationContext\" PARAMTYPE=\"string\"><VALUE>";
    const std::size_t place = answer.find(before);
    EXPECT_NE(place, std::string::npos) << answer;
    return callOf("PullInstancesWithPath",
                  testing_support::parameter("EnumerationContext",
                                             "<VALUE>" + answer.substr(place + before.size(), 32) + "</VALUE>") +
                      testing_support::parameter("MaxObjectCount", "<VALUE>" + std::to_string(count) + "</VALUE>"));
}

struct Exchange {
    std::string name;
    std::string method;
    std::string target;
    std::vector<http::Field> fields;
    std::string body;
    unsigned status;
    std::string cimError;
};

void PrintTo(const Exchange& exchange, std::ostream* out) { *out << exchange.name; }

const std::string associatorNames =
    "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>"
    "<IMETHODCALL NAME=\"AssociatorNames\"><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root/ns\"/></LOCALNAMESPACEPATH>"
    "<IPARAMVALUE NAME=\"ObjectName\"><INSTANCENAME CLASSNAME=\"T_FibrePort\"><KEYBINDING NAME=\"System\">"
    "<KEYVALUE>s</KEYVALUE></KEYBINDING><KEYBINDING NAME=\"Id\"><KEYVALUE>a</KEYVALUE></KEYBINDING></INSTANCENAME>"
    "</IPARAMVALUE></IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>";

class EndpointTest : public testing::TestWithParam<Exchange> {
protected:
    EndpointTest() : endpoint(*host.dispatcher) {}

    http::Response exchange(const http::Request& request) {
        http::Request head = request;
        head.body.clear();
        if (auto refused = endpoint.refuse(head)) return std::move(*refused);
        return endpoint.answer(request);
    }

    /// As from a connection, which tells whether the answer has arrived.
    http::Response answered(const std::string& body) {
        http::Response response;
        endpoint.answerTo({"POST", "/cimom", {{"CIMOperation", "MethodCall"}}, body, "anna"},
                          std::make_shared<TestReply>([&](http::Response answer) { response = std::move(answer); }));
        return response;
    }
    std::size_t openCount() const { return host.dispatcher->pulls().figures().sessions; }

    static std::string fieldOf(const http::Response& response, std::string_view name) {
        for (const http::Field& field : response.fields) {
            if (field.name == name) return field.value;
        }
        return "";
    }

    FakeHost host;
    Endpoint endpoint;
};

TEST_P(EndpointTest, FollowsDsp0200) {
    const Exchange& row = GetParam();
    const http::Response response = exchange({row.method, row.target, row.fields, row.body, ""});
    EXPECT_EQ(response.status, row.status) << response.body.view();
    EXPECT_EQ(fieldOf(response, "CIMError"), row.cimError);
    EXPECT_EQ(fieldOf(response, "CIMOperation"), row.status == 200 ? "MethodResponse" : "");
}

TEST_F(EndpointTest, PathsNameTheHostAsTheClientDid) {
    const http::Response response = exchange(
        {"POST", "/cimom", {{"CIMOperation", "MethodCall"}, {"Host", "adapters.example:5988"}}, associatorNames, ""});
    EXPECT_THAT(std::string(response.body.view()), HasSubstr("<HOST>adapters.example:5988</HOST>"));
}

TEST_F(EndpointTest, TheHostIsEscaped) {
    const http::Response response =
        exchange({"POST", "/cimom", {{"CIMOperation", "MethodCall"}, {"Host", "</HOST>&"}}, associatorNames, ""});
    EXPECT_THAT(std::string(response.body.view()), HasSubstr("<HOST>&lt;/HOST&gt;&amp;</HOST>"));
}

TEST_F(EndpointTest, AnEnumerationBelongsToTheUserWhoOpenedIt) {
    const auto ask = [&](const std::string& user, const std::string& body) {
        return exchange({"POST", "/cimom", {{"CIMOperation", "MethodCall"}}, body, user});
    };
    const std::string pull = pullOf(ask("anna", openPorts), 10);
    const auto told = [&](const std::string& user) { return std::string(ask(user, pull).body.view()); };
    EXPECT_THAT(told("berta"), HasSubstr("<ERROR CODE=\"21\""));
    EXPECT_THAT(told(""), HasSubstr("<ERROR CODE=\"21\""));
    EXPECT_THAT(told("anna"), HasSubstr("<VALUE.INSTANCEWITHPATH>"));
}

TEST_F(EndpointTest, AnEnumerationEndsWithTheAnswerThatNobodyReceived) {
    {
        const http::Response opened = answered(openPorts);
        EXPECT_TRUE(opened.receipt);
        EXPECT_EQ(openCount(), 1U);
    }
    EXPECT_EQ(openCount(), 0U);
    EXPECT_EQ(host.dispatcher->pulls().figures().bytes, 0U);
}

TEST_F(EndpointTest, AnEnumerationEndsWhereItsClientHasAnotherAnswerAlready) {
    const auto reply = std::make_shared<TestReply>([](http::Response) {});
    reply->send({});
    endpoint.answerTo({"POST", "/cimom", {{"CIMOperation", "MethodCall"}}, openPorts, ""}, reply);
    EXPECT_EQ(openCount(), 0U);
}

TEST_F(EndpointTest, AnEnumerationStaysWhereItsAnswersArrive) {
    http::Response opened = answered(openPorts);
    opened.receipt.confirm();
    {
        http::Response pulled = answered(pullOf(opened, 1));
        pulled.receipt.confirm();
        opened = std::move(pulled);
    }
    EXPECT_EQ(openCount(), 1U);
    answered(pullOf(opened, 1)); // lost on its way
    EXPECT_EQ(openCount(), 0U);
    EXPECT_FALSE(answered(enumerateNames).receipt) << "nobody need hear of that";
}

TEST_F(EndpointTest, AMessageInPiecesIsAnsweredAsAWholeOne) {
    const http::Request request{"POST", "/cimom", {{"CIMOperation", "MethodCall"}}, associatorNames, ""};
    const http::Response whole = exchange(request);
    for (const std::size_t size : {std::size_t{1}, std::size_t{7}, std::size_t{100}}) {
        http::Request head = request;
        head.body.clear();
        const std::unique_ptr<http::BodyReader> reader = endpoint.readerOfLargeBody(head);
        for (std::size_t begin = 0; begin < request.body.size(); begin += size)
            EXPECT_FALSE(reader->read(std::string_view(request.body).substr(begin, size)));
        EXPECT_GT(reader->heldBytes(), 0U);
        http::Response response;
        reader->answerTo(head,
                         std::make_shared<TestReply>([&](http::Response answer) { response = std::move(answer); }));
        EXPECT_EQ(response.status, 200U);
        EXPECT_EQ(response.body.view(), whole.body.view());
    }
}

TEST_F(EndpointTest, AMessageIsRefusedAtThePieceThatIsWrong) {
    const std::unique_ptr<http::BodyReader> reader = endpoint.readerOfLargeBody({});
    EXPECT_FALSE(reader->read("<CIM CIMVERSION=\"2.0\" "));
    const auto refusal = reader->read("DTDVERSION=\"2.0\"><WRONG>");
    ASSERT_TRUE(refusal);
    EXPECT_EQ(refusal->status, 400U);
    EXPECT_EQ(fieldOf(*refusal, "CIMError"), "request-not-valid");
}

TEST_F(EndpointTest, AnonymousClientsCannotChangeAnything) {
    http::Request request{"POST", "/cimom", {{"CIMOperation", "MethodCall"}}, start, ""};
    const auto answer = [&request](Endpoint& asked) { return std::string(asked.answer(request).body.view()); };
    EXPECT_THAT(answer(endpoint), HasSubstr("<ERROR CODE=\"2\""));
    EXPECT_THAT(answer(endpoint), HasSubstr("--anonymous-writes"));
    Endpoint open(*host.dispatcher, Writers::everybody);
    EXPECT_THAT(answer(open), Not(HasSubstr("<ERROR CODE=\"2\"")));
    request.user = "anna";
    EXPECT_THAT(answer(endpoint), Not(HasSubstr("<ERROR CODE=\"2\"")));
}

std::vector<Exchange> exchanges() {
    const http::Field xml = {"Content-Type", "application/xml; charset=\"utf-8\""};
    const http::Field call = {"CIMOperation", "MethodCall"};
    const std::vector<http::Field> usual = {xml, call};
    const auto with = [&](const std::string& name, const std::string& value) {
        return std::vector<http::Field>{xml, call, {name, value}};
    };
    const std::string& body = enumerateNames;
    return {
        {"Usual", "POST", "/cimom", usual, body, 200, ""},
        {"RootPath", "POST", "/", usual, body, 200, ""},
        {"OtherPath", "POST", "/wsman", usual, body, 404, ""},
        {"Get", "GET", "/cimom", usual, "", 405, ""},
        {"ExtendedPost", "M-POST", "/cimom", usual, body, 510, ""},
        {"NoContentType", "POST", "/cimom", {call}, body, 200, ""},
        {"TextXml", "POST", "/cimom", {{"Content-Type", "text/xml"}, call}, body, 200, ""},
        {"PlainCharset", "POST", "/cimom", {{"Content-Type", "text/xml;charset=UTF-8"}, call}, body, 200, ""},
        {"OtherCharset", "POST", "/cimom", {{"Content-Type", "text/xml; charset=utf-16"}, call}, body, 415, ""},
        {"OtherContentType", "POST", "/cimom", {{"Content-Type", "text/plain"}, call}, body, 415, ""},
        {"NoOperation", "POST", "/cimom", {xml}, body, 400, "header-mismatch"},
        {"OtherOperation",
         "POST",
         "/cimom",
         {xml, {"CIMOperation", "MethodResponse"}},
         body,
         501,
         "unsupported-operation"},
        {"Export", "POST", "/cimom", {xml, {"CIMExport", "MethodRequest"}}, body, 501, "unsupported-operation"},
        {"Batch", "POST", "/cimom", with("CIMBatch", "CIMBatch"), body, 501, "multiple-requests-unsupported"},
        {"ProtocolVersion1", "POST", "/cimom", with("CIMProtocolVersion", "1.0"), body, 200, ""},
        {"ProtocolVersion2", "POST", "/cimom", with("CIMProtocolVersion", "2.0"), body, 501,
         "unsupported-protocol-version"},
        {"SameMethod", "POST", "/cimom", with("CIMMethod", "EnumerateClassNames"), body, 200, ""},
        {"OtherMethodInHeader", "POST", "/cimom", with("CIMMethod", "GetClass"), body, 400, "header-mismatch"},
        {"SameObject", "POST", "/cimom", with("CIMObject", "root/ns"), body, 200, ""},
        {"EscapedObject", "POST", "/cimom", with("CIMObject", "root%2Fns"), body, 200, ""},
        {"OtherObject", "POST", "/cimom", with("CIMObject", "root/other"), body, 400, "header-mismatch"},
        {"SameClass", "POST", "/cimom", with("CIMObject", "root%2Fns%3AT_Port"), start, 200, ""},
        {"OtherClass", "POST", "/cimom", with("CIMObject", "root/ns:T_Element"), start, 400, "header-mismatch"},
        {"NoClass", "POST", "/cimom", with("CIMObject", "root/ns"), start, 400, "header-mismatch"},
        {"NotWellFormed", "POST", "/cimom", usual, "<CIM", 400, "request-not-well-formed"},
        {"NotValid", "POST", "/cimom", usual, "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"/>", 400, "request-not-valid"},
        {"DtdVersion", "POST", "/cimom", usual, "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"9\"/>", 501,
         "unsupported-dtd-version"},
    };
}

INSTANTIATE_TEST_SUITE_P(Exchanges, EndpointTest, testing::ValuesIn(exchanges()),
                         [](const auto& row) { return row.param.name; });

} // namespace
} // namespace cimhost
