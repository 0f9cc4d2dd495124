// What becomes of a server's answers: the broker's objects, whatever the server writes and however it writes it.
#include "scripted_server.h"

#include "cimhost/remote/remote_calls.h"
#include "cimhost/service/cim_failure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace cimhost::remote {
namespace {

using testing::HasSubstr;
using testing_support::httpAnswer;
using testing_support::readRequest;
using testing_support::ScriptedServer;
using testing_support::sendAll;

constexpr const char* mof = R"(
Qualifier Key : boolean = false, Scope(property, reference), Flavor(DisableOverride, ToSubclass);
Qualifier Association : boolean = false, Scope(association), Flavor(DisableOverride, ToSubclass);
Qualifier In : boolean = true, Scope(parameter);
Qualifier Out : boolean = false, Scope(parameter);
class T_Port { [Key] string Id; [Key] uint16 Number; uint16 State = 5; string Words[]; datetime Time; };
[Association] class T_Link { [Key] T_Port ref Left; [Key] T_Port ref Right; };
class T_Service { [Key] string Name; uint32 Install([In] string URI, [In] T_Port ref Target, [Out, In(false)] T_Port ref Job); };
)";

const std::string portName =
    "<INSTANCENAME CLASSNAME=\"T_Port\"><KEYBINDING NAME=\"Id\"><KEYVALUE VALUETYPE=\"string\">a"
    "</KEYVALUE></KEYBINDING><KEYBINDING NAME=\"Number\"><KEYVALUE VALUETYPE=\"numeric\">4"
    "</KEYVALUE></KEYBINDING></INSTANCENAME>";

std::string property(const std::string& name, const std::string& type, const std::string& value) {
    return "<PROPERTY NAME=\"" + name + "\" TYPE=\"" + type + "\"><VALUE>" + value + "</VALUE></PROPERTY>";
}

std::string port(const std::string& properties) {
    return "<VALUE.NAMEDINSTANCE>" + portName + "<INSTANCE CLASSNAME=\"T_Port\">" + property("Id", "string", "a") +
           property("Number", "uint16", "4") + properties + "</INSTANCE></VALUE.NAMEDINSTANCE>";
}

std::string attributeOf(const std::string& request, const std::string& element, const std::string& attribute) {
    const std::size_t begin = request.find("<" + element + " ");
    const std::string start = attribute + "=\"";
    const std::size_t value = request.find(start, begin) + start.size();
    return request.substr(value, request.find('"', value) - value);
}

/// A server that answers every call with the same parts.
class RemoteCallsTest : public testing::Test {
protected:
    RemoteCallsTest() { repository.loadText("root/ns", mof); }

    // Answers with the message's own ID and name.
    void answerWith(const std::string& parts) {
        server = std::make_unique<ScriptedServer>([this, parts](int socket) {
            for (std::string got = readRequest(socket); !got.empty(); got = readRequest(socket)) {
                request = got;
                const bool isMethod = got.find("<METHODCALL ") != std::string::npos;
                const std::string element = isMethod ? "METHODRESPONSE" : "IMETHODRESPONSE";
                sendAll(socket,
                        httpAnswer("200 OK", "application/xml; charset=\"utf-8\"",
                                   "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n<CIM CIMVERSION=\"2.0\" "
                                   "DTDVERSION=\"2.0\">\n<MESSAGE ID=\"" +
                                       attributeOf(got, "MESSAGE", "ID") +
                                       "\" PROTOCOLVERSION=\"1.0\">\n<SIMPLERSP>\n<" + element + " NAME=\"" +
                                       attributeOf(got, isMethod ? "METHODCALL" : "IMETHODCALL", "NAME") + "\">\n" +
                                       parts + "</" + element + ">\n</SIMPLERSP>\n</MESSAGE>\n</CIM>\n"));
            }
        });
        connection = std::make_unique<Connection>(parseServer(server->url()), Identity(), std::chrono::seconds(60));
        calls = std::make_unique<RemoteCalls>(*connection, tags());
    }
    void answerWithObjects(const std::string& objects) {
        answerWith("<IRETURNVALUE>\n" + objects + "\n</IRETURNVALUE>\n");
    }

    Outcome enumerate(const std::string& className) {
        return calls->enumerateInstances(scope, {}, *scope.make().path("root/ns", className), std::nullopt);
    }

    const cimxml::TagTable& tags() {
        if (!tagTable) tagTable = std::make_unique<cimxml::TagTable>(repository);
        return *tagTable;
    }

    static std::string text(const CMPIData* data) {
        std::string shown;
        if (data) appendValueText(shown, *data);
        return shown;
    }

    std::string request;
    ClassRepository repository;
    Broker broker{repository};
    RequestScope scope{broker};
    std::unique_ptr<cimxml::TagTable> tagTable;
    std::unique_ptr<ScriptedServer> server;
    std::unique_ptr<Connection> connection;
    std::unique_ptr<RemoteCalls> calls;
};

TEST_F(RemoteCallsTest, AnErrorBehindTheBeginningOfAnAnswerIsTheAnswer) {
    const ScriptedServer breaking([](int socket) {
        EXPECT_THAT(readRequest(socket), HasSubstr("\r\nTE: trailers\r\n"));
        sendAll(socket, "HTTP/1.1 200 OK\r\nContent-Type: application/xml\r\nTransfer-Encoding: chunked\r\n"
                        "Trailer: CIMError, CIMStatusCode, CIMStatusCodeDescription\r\n\r\n"
                        "1c\r\n<CIM CIMVERSION=\"2.0\" DTDVER\r\n0\r\nCIMStatusCode: 6\r\n"
                        "CIMStatusCodeDescription: gone:%0A5 %25\r\n\r\n");
    });
    Connection other(parseServer(breaking.url()), Identity(), std::chrono::seconds(60));
    const Outcome outcome =
        RemoteCalls(other, tags()).enumerateInstances(scope, {}, *scope.make().path("root/ns", "T_Port"), std::nullopt);
    ASSERT_TRUE(outcome.error);
    EXPECT_EQ(outcome.error->code, CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(outcome.error->description, "gone:\n5 %");
}

TEST_F(RemoteCallsTest, AnInstanceIsMadeAsItsClassIsDeclared) {
    answerWithObjects(port(property("Time", "datetime", "20261122061105.000000+000") +
                           "<PROPERTY.ARRAY NAME=\"Words\" TYPE=\"string\"><VALUE.ARRAY><VALUE>x</VALUE><VALUE.NULL/>"
                           "</VALUE.ARRAY></PROPERTY.ARRAY>"));
    const Outcome outcome = enumerate("T_Port");
    ASSERT_EQ(outcome.instances.size(), 1U);
    const InstanceObject& instance = *outcome.instances.front();
    EXPECT_TRUE(instance.declaration());
    EXPECT_TRUE(instance.freeProperties().empty());
    EXPECT_EQ(text(instance.value("Number")), "4");
    EXPECT_EQ(text(instance.value("Time")), "20261122061105.000000+000");
    EXPECT_EQ(ArrayObject::from(instance.value("Words")->value.array)->size(), 2U);
    std::string path;
    instance.path(scope.arena())->appendText(path);
    EXPECT_EQ(path, "root/ns:T_Port.Id=\"a\",Number=4");
}

TEST_F(RemoteCallsTest, PropertiesLeftOutHaveNoDefaultAndNullIsNull) {
    answerWithObjects(port("<PROPERTY.ARRAY NAME=\"Words\" TYPE=\"string\"/>"));
    const InstanceObject& instance = *enumerate("T_Port").instances.front();
    EXPECT_EQ(instance.value("State"), nullptr);
    ASSERT_TRUE(instance.value("Words"));
    EXPECT_NE(instance.value("Words")->state & CMPI_nullValue, 0);
}

TEST_F(RemoteCallsTest, PropertiesThatTheLocalClassLacksStayAsReceived) {
    answerWithObjects(port(property("New", "boolean", "TRUE") + property("State", "string", "fine")));
    const InstanceObject& instance = *enumerate("T_Port").instances.front();
    ASSERT_EQ(instance.freeProperties().size(), 2U);
    EXPECT_EQ(instance.freeProperties()[0].name, "New");
    EXPECT_EQ(text(&instance.freeProperties()[0].data), "true");
    EXPECT_EQ(text(&instance.freeProperties()[1].data), "fine");
}

TEST_F(RemoteCallsTest, AnUnknownClassKeepsTheOrderOfItsProperties) {
    answerWithObjects("<VALUE.NAMEDINSTANCE><INSTANCENAME CLASSNAME=\"X_Fan\"><KEYBINDING NAME=\"N\"><KEYVALUE "
                      "VALUETYPE=\"numeric\">7</KEYVALUE></KEYBINDING></INSTANCENAME><INSTANCE CLASSNAME=\"X_Fan\">" +
                      property("Speed", "uint64", "18446744073709551615") + property("N", "uint8", "7") +
                      property("Ratio", "real32", "1.5") + "</INSTANCE></VALUE.NAMEDINSTANCE>");
    const InstanceObject& instance = *enumerate("X_Fan").instances.front();
    EXPECT_FALSE(instance.declaration());
    ASSERT_EQ(instance.freeProperties().size(), 3U);
    EXPECT_EQ(instance.freeProperties()[0].name, "Speed");
    EXPECT_EQ(text(&instance.freeProperties()[0].data), "18446744073709551615");
    EXPECT_EQ(instance.freeProperties()[2].data.type, CMPI_real32);
    EXPECT_THAT(request, HasSubstr("<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"X_Fan\"/>"));
}

TEST_F(RemoteCallsTest, AnEmbeddedInstanceIsAnObjectAndAnEmbeddedClassAText) {
    answerWithObjects(
        port("<PROPERTY NAME=\"Inner\" TYPE=\"string\" EmbeddedObject=\"instance\"><VALUE><![CDATA[<INSTANCE "
             "CLASSNAME=\"X_In\">" +
             property("P", "uint8", "3") +
             "</INSTANCE>]]></VALUE></PROPERTY><PROPERTY NAME=\"Class\" TYPE=\"string\" "
             "EmbeddedObject=\"object\"><VALUE>&lt;CLASS NAME=\"X\"/&gt;</VALUE></PROPERTY>"));
    const InstanceObject& instance = *enumerate("T_Port").instances.front();
    ASSERT_EQ(instance.freeProperties().size(), 2U);
    const CMPIData& inner = instance.freeProperties()[0].data;
    ASSERT_EQ(inner.type, CMPI_instance);
    const InstanceObject* object = InstanceObject::from(static_cast<const CMPIInstance*>(inner.value.inst));
    EXPECT_EQ(object->className(), "X_In");
    EXPECT_EQ(text(&object->freeProperties()[0].data), "3");
    EXPECT_EQ(text(&instance.freeProperties()[1].data), "<CLASS NAME=\"X\"/>");
}

TEST_F(RemoteCallsTest, PathsAreReadWithoutTheHostThatTheServerNames) {
    answerWithObjects(
        "<OBJECTPATH><INSTANCEPATH><NAMESPACEPATH><HOST>inner-name:5989</HOST><LOCALNAMESPACEPATH><NAMESPACE "
        "NAME=\"root\"/><NAMESPACE NAME=\"ns\"/></LOCALNAMESPACEPATH></NAMESPACEPATH>" +
        portName + "</INSTANCEPATH></OBJECTPATH>");
    ObjectPathObject& source = *scope.make().path("root/ns", "T_Port");
    source.addKey("Id", *scope.make().value(CMPI_string, "a"));
    const Outcome outcome = calls->associatorNames(scope, {}, source, {"T_Link", "T_Port", "Left", "Right"});
    ASSERT_EQ(outcome.paths.size(), 1U);
    std::string path;
    outcome.paths.front()->appendText(path);
    EXPECT_EQ(path, "root/ns:T_Port.Id=\"a\",Number=4");
    for (const char* part :
         {"NAME=\"AssocClass\"><CLASSNAME NAME=\"T_Link\"/>", "NAME=\"ResultClass\"><CLASSNAME NAME=\"T_Port\"/>",
          "NAME=\"Role\"><VALUE>Left</VALUE>", "NAME=\"ResultRole\"><VALUE>Right</VALUE>"})
        EXPECT_THAT(request, HasSubstr(part));
}

TEST_F(RemoteCallsTest, AMethodTakesItsArgumentsAndGivesItsResults) {
    answerWith("<RETURNVALUE PARAMTYPE=\"uint32\"><VALUE>4096</VALUE></RETURNVALUE><PARAMVALUE "
               "NAME=\"Job\"><VALUE.REFERENCE>" +
               portName + "</VALUE.REFERENCE></PARAMVALUE><PARAMVALUE NAME=\"Else\"><VALUE>x</VALUE></PARAMVALUE>");
    ObjectPathObject& service = *scope.make().path("root/ns", "T_Service");
    service.addKey("Name", *scope.make().value(CMPI_string, "s \xc3\xa4\"%"));
    ArgsObject& arguments = *scope.make().arguments();
    arguments.add("URI", *scope.make().value(CMPI_string, "file:///a<b"));
    const Outcome outcome = calls->invokeMethod(scope, {}, service, "Install", arguments);
    ASSERT_TRUE(outcome.ok());
    EXPECT_EQ(text(&*outcome.returnValue), "4096");
    ASSERT_EQ(outcome.outArguments->arguments().size(), 2U);
    EXPECT_EQ(outcome.outArguments->argument("Job")->data.type, CMPI_ref);
    EXPECT_EQ(text(&outcome.outArguments->argument("Else")->data), "x");
    EXPECT_THAT(request,
                HasSubstr("<PARAMVALUE NAME=\"URI\" PARAMTYPE=\"string\"><VALUE>file:///a&lt;b</VALUE></PARAMVALUE>"));
    EXPECT_THAT(request, HasSubstr("CIMObject: root/ns:T_Service.Name=\"s%20%C3%A4\\\"%25\"\r\n"));
}

TEST_F(RemoteCallsTest, AMethodOfAClassIsCalledOnTheClass) {
    answerWith("<RETURNVALUE><VALUE>7</VALUE></RETURNVALUE>");
    const Outcome outcome = calls->invokeMethod(scope, {}, *scope.make().path("root/ns", "T_Service"), "Install",
                                                *scope.make().arguments());
    EXPECT_EQ(outcome.returnValue->type, CMPI_uint32); // as it is declared
    EXPECT_THAT(request, HasSubstr("</LOCALNAMESPACEPATH><CLASSNAME NAME=\"T_Service\"/></LOCALCLASSPATH>"));
}

TEST_F(RemoteCallsTest, AnErrorOfTheServerIsTheErrorOfTheCall) {
    answerWith("<ERROR CODE=\"3\" DESCRIPTION=\"root/ns\"/>");
    const Outcome outcome = enumerate("T_Port");
    ASSERT_TRUE(outcome.error);
    EXPECT_EQ(outcome.error->code, CMPI_RC_ERR_INVALID_NAMESPACE);
    EXPECT_THROW(calls->enumerateClasses("root/ns"), CimFailure);
}

TEST_F(RemoteCallsTest, ClassesComeByNameAndSuperclass) {
    answerWithObjects("<CLASS NAME=\"A\"/><CLASS NAME=\"B\" SUPERCLASS=\"A\"/>");
    const RemoteCalls::Classes classes = calls->enumerateClasses("root/ns");
    ASSERT_EQ(classes.size(), 2U);
    EXPECT_EQ(classes[1].superclass, "A");
}

struct Disorder {
    const char* name;
    std::string objects;
    std::string reason;
};

void PrintTo(const Disorder& disorder, std::ostream* out) { *out << disorder.name; }

class DisorderedAnswer : public RemoteCallsTest, public testing::WithParamInterface<Disorder> {};

TEST_P(DisorderedAnswer, IsRefusedWithTheReason) {
    answerWithObjects(GetParam().objects);
    try {
        enumerate("T_Port");
        ADD_FAILURE() << "taken";
    } catch (const ServerFailure& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("its answer is not in order: "));
        EXPECT_THAT(failure.what(), HasSubstr(GetParam().reason));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Objects, DisorderedAnswer,
    testing::Values(
        Disorder{"ATextAsANumber", port(property("State", "uint16", "fine")), "T_Port.State: \"fine\" is no uint16"},
        Disorder{"ANumberOutOfRange", port(property("State", "uint16", "65536")), "is no uint16"},
        Disorder{"AnUnknownType", port(property("State", "int", "1")), "int is no type"},
        Disorder{"AClass", "<CLASS NAME=\"A\"/>", "a class where an object stands"},
        Disorder{"AKeyWithoutAName", "<INSTANCENAME CLASSNAME=\"T_Port\"><KEYVALUE>x</KEYVALUE></INSTANCENAME>",
                 "a key without a name"},
        Disorder{"NoXml", "<a&b>", "line"}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace cimhost::remote
