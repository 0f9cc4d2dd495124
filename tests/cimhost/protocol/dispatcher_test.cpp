#include "fake_provider.h"
#include "refused_call.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <sstream>
#include <thread>

namespace cimhost {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using testing_support::className;
using testing_support::countOf;
using testing_support::error;
using testing_support::expectRefusal;
using testing_support::FakeHost;
using testing_support::instanceName;
using testing_support::nameOfCall;
using testing_support::parameter;
using testing_support::RefusedCall;

std::string flag(const std::string& name, bool value) {
    return parameter(name, value ? "<VALUE>TRUE</VALUE>" : "<VALUE>FALSE</VALUE>");
}

std::string propertyList(const std::string& names) {
    std::string list = "<VALUE.ARRAY>";
    std::istringstream stream(names);
    for (std::string name; std::getline(stream, name, ',');)
        list += "<VALUE>" + name + "</VALUE>";
    return parameter("PropertyList", list + "</VALUE.ARRAY>");
}

class DispatcherTest : public testing::Test {
protected:
    FakeHost host;
};

TEST_F(DispatcherTest, TheAnswerCarriesIdAndMethodOfTheRequest) {
    const std::string answer = host.handle(
        "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"a&amp;&quot;b\" PROTOCOLVERSION=\"1.4\">"
        "<SIMPLEREQ><IMETHODCALL NAME=\"EnumerateClassNames\"><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/>"
        "<NAMESPACE NAME=\"ns\"/></LOCALNAMESPACEPATH></IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>");
    EXPECT_EQ(answer, "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">"
                      "<MESSAGE ID=\"a&amp;&quot;b\" PROTOCOLVERSION=\"1.0\"><SIMPLERSP>"
                      "<IMETHODRESPONSE NAME=\"EnumerateClassNames\"><IRETURNVALUE><CLASSNAME NAME=\"T_Element\"/>"
                      "<CLASSNAME NAME=\"T_Counter\"/><CLASSNAME "
                      "NAME=\"T_Link\"/></IRETURNVALUE></IMETHODRESPONSE></SIMPLERSP></MESSAGE></CIM>\n");
}

TEST_F(DispatcherTest, EnumeratingABaseClassCallsTheProviderOnceForEachServedSubclass) {
    const std::string answer = host.call("EnumerateInstances", className("T_Element"));
    EXPECT_THAT(host.provider.calls, ElementsAre("enumerateInstances T_FibrePort flags=3 by=anna in=root/ns",
                                                 "enumerateInstances T_EtherPort flags=3 by=anna in=root/ns"));
    EXPECT_EQ(countOf(answer, "<VALUE.NAMEDINSTANCE>"), 3U);
    EXPECT_EQ(countOf(answer, "<INSTANCE CLASSNAME=\"T_FibrePort\">"), 2U);
    EXPECT_THAT(answer, HasSubstr("<PROPERTY NAME=\"Mtu\" TYPE=\"uint32\"></PROPERTY>"));
}

TEST_F(DispatcherTest, AnAnswerThatWouldBeTooLongIsAnErrorThatSaysSo) {
    host.dispatcher = std::make_unique<Dispatcher>(*host.operations, *host.broker, nullptr, std::size_t{1} << 20);
    for (int number = 0; number < 4; ++number)
        host.provider.objects.push_back({"T_FibrePort", std::string(std::size_t{100} << 10, '&') + char('0' + number)});
    const std::string answer = host.call("EnumerateInstances", className("T_FibrePort"));
    EXPECT_THAT(answer, StartsWith(error(1)));
    EXPECT_THAT(answer, HasSubstr("the answer would be longer than 1 MiB: ask for fewer objects or properties"));
    EXPECT_THAT(host.call("EnumerateInstances", className("T_EtherPort")), HasSubstr("<VALUE.NAMEDINSTANCE>"));
}

TEST_F(DispatcherTest, EnumeratingAConcreteClassCallsForItAlone) {
    host.call("EnumerateInstances", className("t_fibreport"));
    EXPECT_THAT(host.provider.calls, ElementsAre("enumerateInstances T_FibrePort flags=3 by=anna in=root/ns"));
}

TEST_F(DispatcherTest, WithoutDeepInheritanceASubclassShowsWhatTheNamedClassHas) {
    const std::string answer = host.call("EnumerateInstances", className("T_Port") + flag("DeepInheritance", false));
    EXPECT_THAT(host.provider.calls.front(),
                StartsWith("enumerateInstances T_FibrePort [Caption,System,Id,Speed] flags=1"));
    EXPECT_THAT(answer, HasSubstr("NAME=\"Speed\""));
    EXPECT_THAT(answer, Not(HasSubstr("NAME=\"Topology\"")));
}

TEST_F(DispatcherTest, APropertyListIsHandedOnAndKept) {
    const std::string answer =
        host.call("EnumerateInstances", className("T_EtherPort") + propertyList("speed,Nonsense"));
    EXPECT_THAT(host.provider.calls.front(), StartsWith("enumerateInstances T_EtherPort [speed,Nonsense]"));
    EXPECT_THAT(answer, HasSubstr("<INSTANCE CLASSNAME=\"T_EtherPort\"><PROPERTY NAME=\"Speed\" TYPE=\"uint64\"><VALUE>"
                                  "10000000000</VALUE></PROPERTY></INSTANCE>"));
}

TEST_F(DispatcherTest, AnEmptyPropertyListAsksForNoProperty) {
    const std::string answer = host.call("EnumerateInstances", className("T_EtherPort") + propertyList(""));
    EXPECT_THAT(answer, HasSubstr("<INSTANCE CLASSNAME=\"T_EtherPort\"></INSTANCE>"));
    EXPECT_THAT(host.provider.calls.front(), StartsWith("enumerateInstances T_EtherPort []"));
}

TEST_F(DispatcherTest, ClassOriginIsShownOnRequest) {
    const std::string answer =
        host.call("EnumerateInstances", className("T_EtherPort") + flag("IncludeClassOrigin", true));
    EXPECT_THAT(answer, HasSubstr("<PROPERTY NAME=\"Speed\" TYPE=\"uint64\" CLASSORIGIN=\"T_Port\"><VALUE>"));
    EXPECT_THAT(host.provider.calls.front(), HasSubstr("flags=11 "));
}

TEST_F(DispatcherTest, InstanceNamesCarryTheKeys) {
    const std::string answer = host.call("EnumerateInstanceNames", className("T_Port"));
    EXPECT_EQ(countOf(answer, "<INSTANCENAME CLASSNAME=\"T_FibrePort\">"), 2U);
    EXPECT_THAT(answer, HasSubstr("<KEYBINDING NAME=\"Id\"><KEYVALUE VALUETYPE=\"string\">e</KEYVALUE></KEYBINDING>"));
}

TEST_F(DispatcherTest, AClassWithoutProviderHasNoInstances) {
    EXPECT_EQ(host.call("EnumerateInstances", className("T_Counter")), "<IRETURNVALUE></IRETURNVALUE>");
}

TEST_F(DispatcherTest, GetInstanceGivesTheInstance) {
    const std::string answer =
        host.call("GetInstance", parameter("InstanceName", instanceName("T_FibrePort", "Id=b,System=s")));
    EXPECT_THAT(answer, StartsWith("<IRETURNVALUE><INSTANCE CLASSNAME=\"T_FibrePort\">"));
    EXPECT_THAT(answer, HasSubstr("<VALUE>8000000000</VALUE>"));
}

TEST_F(DispatcherTest, SuccessWithoutAnInstanceIsAFailure) {
    const std::string answer =
        host.call("GetInstance", parameter("InstanceName", instanceName("T_FibrePort", "System=s,Id=z")));
    EXPECT_THAT(answer, StartsWith(error(1)));
    EXPECT_THAT(answer, HasSubstr("too few objects"));
    EXPECT_EQ(host.provider.calls.size(), 1U);
}

TEST_F(DispatcherTest, SuccessWithTwoInstancesIsAFailure) {
    host.provider.objects.push_back({"T_FibrePort", "a"});
    const std::string answer =
        host.call("GetInstance", parameter("InstanceName", instanceName("T_FibrePort", "System=s,Id=a")));
    EXPECT_THAT(answer, StartsWith(error(1)));
    EXPECT_THAT(answer, HasSubstr("too many objects: 2"));
}

TEST_F(DispatcherTest, AKeyOfAnotherKindReachesTheProviderAsItWasSent) {
    const std::string name =
        "<INSTANCENAME CLASSNAME=\"T_FibrePort\"><KEYBINDING NAME=\"System\"><KEYVALUE>s</KEYVALUE>"
        "</KEYBINDING><KEYBINDING NAME=\"Id\"><KEYVALUE VALUETYPE=\"numeric\">17</KEYVALUE>"
        "</KEYBINDING></INSTANCENAME>";
    EXPECT_THAT(host.call("GetInstance", parameter("InstanceName", name)), StartsWith(error(1)));
    EXPECT_EQ(host.provider.calls.size(), 1U);
}

TEST_F(DispatcherTest, QualifiersAreListedAsTheyAreDeclared) {
    const std::string answer = host.call("EnumerateQualifiers", "");
    EXPECT_THAT(answer, StartsWith("<IRETURNVALUE><QUALIFIER.DECLARATION NAME=\"Key\" TYPE=\"boolean\" "
                                   "ISARRAY=\"false\" OVERRIDABLE=\"false\"><SCOPE REFERENCE=\"true\" "
                                   "PROPERTY=\"true\"/><VALUE>false</VALUE></QUALIFIER.DECLARATION>"));
    EXPECT_EQ(countOf(answer, "<QUALIFIER.DECLARATION "), 4U);
    EXPECT_THAT(host.call("EnumerateQualifiers", "", "root/other"), StartsWith(error(3)));
}

TEST_F(DispatcherTest, OneQualifierIsFoundByItsName) {
    EXPECT_EQ(host.call("GetQualifier", parameter("QualifierName", "<VALUE>override</VALUE>")),
              "<IRETURNVALUE><QUALIFIER.DECLARATION NAME=\"Override\" TYPE=\"string\" ISARRAY=\"false\" "
              "TOSUBCLASS=\"false\"><SCOPE REFERENCE=\"true\" PROPERTY=\"true\" METHOD=\"true\"/>"
              "</QUALIFIER.DECLARATION></IRETURNVALUE>");
    EXPECT_THAT(host.call("GetQualifier", parameter("QualifierName", "<VALUE>Nobody</VALUE>")), StartsWith(error(6)));
    EXPECT_THAT(host.call("GetQualifier", ""), StartsWith(error(4)));
}

TEST_F(DispatcherTest, OperationsThatTheServerLacksAreNotSupported) {
    for (const char* method :
         {"OpenQueryInstances", "PullInstances", "EnumerationCount", "ExecQuery", "CreateClass", "ModifyClass",
          "DeleteClass", "SetQualifier", "DeleteQualifier", "GetProperty", "SetProperty"}) {
        EXPECT_THAT(host.call(method, className("T_Port")), StartsWith(error(7))) << method;
    }
}

TEST_F(DispatcherTest, ANamespaceAnswersUnderAFurtherNameAndIsCalledByItInTheAnswer) {
    host.repository.addAlias("further/name", "root/ns");
    const std::string path = parameter("ObjectName", instanceName("T_FibrePort", "System=s,Id=a"));
    const std::string answer = host.call("References", path, "Further/Name");
    EXPECT_EQ(countOf(answer, "<NAMESPACE NAME=\"further\"/><NAMESPACE NAME=\"name\"/>"), 5U);
    EXPECT_THAT(answer, Not(HasSubstr("<NAMESPACE NAME=\"ns\"/>")));
    EXPECT_THAT(host.provider.calls.back(), HasSubstr("in=root/ns"));
    EXPECT_EQ(host.call("EnumerateInstances", className("T_Port"), "further/name"),
              host.call("EnumerateInstances", className("T_Port")));
}

TEST_F(DispatcherTest, TheProvidersErrorIsTheClientsError) {
    host.provider.failure = CimError{CMPI_RC_ERR_ACCESS_DENIED, "a <bad> day"};
    const std::string expected = "<ERROR CODE=\"2\" DESCRIPTION=\"a &lt;bad&gt; day\"/>";
    const std::string name = parameter("InstanceName", instanceName("T_FibrePort", "System=s,Id=a"));
    const std::string instance =
        "<INSTANCE CLASSNAME=\"T_FibrePort\"><PROPERTY NAME=\"Id\" TYPE=\"string\"><VALUE>n</VALUE>"
        "</PROPERTY></INSTANCE>";
    EXPECT_EQ(host.call("EnumerateInstances", className("T_Port")), expected);
    EXPECT_EQ(host.call("EnumerateInstanceNames", className("T_Port")), expected);
    EXPECT_EQ(host.call("GetInstance", name), expected);
    EXPECT_EQ(host.call("CreateInstance", parameter("NewInstance", instance)), expected);
    EXPECT_EQ(host.call("DeleteInstance", name), expected);
    EXPECT_EQ(
        host.call("ModifyInstance",
                  parameter("ModifiedInstance", "<VALUE.NAMEDINSTANCE>" + instanceName("T_FibrePort", "System=s,Id=a") +
                                                    instance + "</VALUE.NAMEDINSTANCE>")),
        expected);
}

TEST_F(DispatcherTest, CreatingAnInstanceGivesItsName) {
    const std::string answer = host.call(
        "CreateInstance",
        parameter(
            "NewInstance",
            "<INSTANCE CLASSNAME=\"T_FibrePort\"><PROPERTY NAME=\"System\" TYPE=\"string\"><VALUE>s</VALUE></PROPERTY>"
            "<PROPERTY NAME=\"Id\" TYPE=\"string\"><VALUE>n</VALUE></PROPERTY>"
            "<PROPERTY NAME=\"Speed\" TYPE=\"uint64\"/></INSTANCE>"));
    EXPECT_THAT(answer, StartsWith("<IRETURNVALUE><INSTANCENAME CLASSNAME=\"T_FibrePort\">"));
    EXPECT_THAT(answer, HasSubstr(">n</KEYVALUE>"));
}

TEST_F(DispatcherTest, ModifyingAndDeletingReturnNothing) {
    const std::string name = instanceName("T_FibrePort", "System=s,Id=a");
    EXPECT_EQ(host.call("DeleteInstance", parameter("InstanceName", name)), "");
    EXPECT_EQ(host.call("ModifyInstance", parameter("ModifiedInstance",
                                                    "<VALUE.NAMEDINSTANCE>" + name +
                                                        "<INSTANCE CLASSNAME=\"T_FibrePort\"/></VALUE.NAMEDINSTANCE>")),
              "");
}

TEST_F(DispatcherTest, AClassIsShownWithItsOwnMembersUnlessAllAreWanted) {
    const std::string own = host.call("GetClass", className("T_FibrePort"));
    EXPECT_THAT(own, HasSubstr("<CLASS NAME=\"T_FibrePort\" SUPERCLASS=\"T_Port\">"));
    EXPECT_THAT(own, Not(HasSubstr("NAME=\"Speed\"")));
    const std::string all =
        host.call("GetClass", className("T_FibrePort") + flag("LocalOnly", false) + propertyList("SPEED"));
    EXPECT_THAT(all, HasSubstr("<PROPERTY NAME=\"Speed\" TYPE=\"uint64\" PROPAGATED=\"true\">"));
    EXPECT_THAT(all, Not(HasSubstr("NAME=\"Topology\"")));
}

TEST_F(DispatcherTest, SubclassesAreEnumeratedDirectlyOrDeeply) {
    EXPECT_EQ(countOf(host.call("EnumerateClassNames", className("T_Element")), "<CLASSNAME"), 1U);
    EXPECT_EQ(
        countOf(host.call("EnumerateClassNames", className("T_Element") + flag("DeepInheritance", true)), "<CLASSNAME"),
        4U);
    EXPECT_EQ(countOf(host.call("EnumerateClassNames", flag("DeepInheritance", true)), "<CLASSNAME"), 8U);
    EXPECT_EQ(countOf(host.call("EnumerateClasses", className("T_Port")), "<CLASS "), 3U);
}

TEST_F(DispatcherTest, ClientsAreServedAtTheSameTime) {
    const std::string expected = host.call("EnumerateInstances", className("T_Port"));
    std::vector<std::thread> clients;
    std::atomic<int> wrong = 0;
    for (int client = 0; client < 4; ++client) {
        clients.emplace_back([&] {
            for (int request = 0; request < 50; ++request) {
                if (host.call("EnumerateInstances", className("T_Port")) != expected) ++wrong;
            }
        });
    }
    for (std::thread& client : clients)
        client.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(host.provider.calls.size(), 2U * (1 + 4 * 50));
}

TEST_F(DispatcherTest, AReadOnlyClientIsRefusedEveryChange) {
    host.access = Access::read;
    const std::string path = parameter("InstanceName", instanceName("T_FibrePort", "System=s,Id=a"));
    for (const char* change : {"CreateInstance", "ModifyInstance", "DeleteInstance"}) {
        EXPECT_THAT(host.call(change, path), HasSubstr(error(2))) << change;
    }
    EXPECT_TRUE(host.provider.calls.empty());
    EXPECT_THAT(host.call("GetInstance", path), HasSubstr("<INSTANCE "));
    EXPECT_THAT(host.call("EnumerateInstances", className("T_Element")), Not(HasSubstr("<ERROR")));
}

TEST_F(DispatcherTest, AMethodThatItsClassLacksIsNotFound) {
    const std::string answer = host.handle(
        "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ>"
        "<METHODCALL NAME=\"Start\"><LOCALCLASSPATH><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root/ns\"/>"
        "</LOCALNAMESPACEPATH><CLASSNAME NAME=\"T_Port\"/></LOCALCLASSPATH></METHODCALL></SIMPLEREQ></MESSAGE></CIM>");
    EXPECT_THAT(answer, HasSubstr("<METHODRESPONSE NAME=\"Start\"><ERROR CODE=\"17\""));
}

std::vector<RefusedCall> refusedCalls() {
    const std::string port = className("T_Port");
    const auto get = [](const std::string& name) { return parameter("InstanceName", name); };
    const auto create = [](const std::string& properties) {
        return parameter("NewInstance", "<INSTANCE CLASSNAME=\"T_FibrePort\">" + properties + "</INSTANCE>");
    };
    const std::string key = instanceName("T_FibrePort", "System=s,Id=a");
    return {
        {"UnknownOperation", "ExecQuery", "", 7},
        {"UnknownNamespace", "EnumerateInstances", port, 3, "root/other"},
        {"UnknownNamespaceOfClasses", "EnumerateClassNames", "", 3, "root/other"},
        {"UnknownClass", "EnumerateInstances", className("T_None"), 5},
        {"UnknownClassOfNames", "EnumerateInstanceNames", className("T_None"), 5},
        {"UnknownClassOfInstance", "GetInstance", get(instanceName("T_None", "A=b")), 5},
        {"UnknownClassToGet", "GetClass", className("T_None"), 6},
        {"UnknownSuperclass", "EnumerateClasses", className("T_None"), 5},
        {"NoClassName", "EnumerateInstances", "", 4},
        {"ClassNameNull", "EnumerateInstances", "<IPARAMVALUE NAME=\"ClassName\"/>", 4},
        {"ClassNameIsText", "EnumerateInstances", parameter("ClassName", "<VALUE>T_Port</VALUE>"), 4},
        {"UnknownParameter", "EnumerateInstances", port + parameter("Colour", "<VALUE>red</VALUE>"), 4},
        {"NoBoolean", "EnumerateInstances", port + parameter("DeepInheritance", "<VALUE>maybe</VALUE>"), 4},
        {"BooleanArray", "EnumerateInstances", port + parameter("LocalOnly", "<VALUE.ARRAY/>"), 4},
        {"ListNoArray", "EnumerateInstances", port + parameter("PropertyList", "<VALUE>Id</VALUE>"), 4},
        {"NullInList", "EnumerateInstances",
         port + parameter("PropertyList", "<VALUE.ARRAY><VALUE.NULL/></VALUE.ARRAY>"), 4},
        {"KeyMissing", "GetInstance", get(instanceName("T_FibrePort", "Id=a")), 4},
        {"KeyTooMany", "GetInstance", get(instanceName("T_FibrePort", "System=s,Id=a,Colour=red")), 4},
        {"PropertyAsKey", "GetInstance", get(instanceName("T_FibrePort", "System=s,Id=a,Topology=x")), 4},
        {"NoKeys", "GetInstance", get("<INSTANCENAME CLASSNAME=\"T_FibrePort\"/>"), 4},
        {"UnnamedKeyOfTwo", "GetInstance",
         get("<INSTANCENAME CLASSNAME=\"T_FibrePort\"><KEYVALUE>a</KEYVALUE></INSTANCENAME>"), 4},
        {"NumberKeyNoNumber", "GetInstance",
         get("<INSTANCENAME CLASSNAME=\"T_Counter\"><KEYVALUE VALUETYPE=\"numeric\">many</KEYVALUE></INSTANCENAME>"),
         4},
        {"NumberKeyTooLarge", "GetInstance",
         get("<INSTANCENAME CLASSNAME=\"T_Counter\"><KEYVALUE "
             "VALUETYPE=\"numeric\">4294967296</KEYVALUE></INSTANCENAME>"),
         4},
        {"NumberKeyBetweenBlanks", "GetInstance",
         get("<INSTANCENAME CLASSNAME=\"T_Counter\"><KEYVALUE VALUETYPE=\"numeric\">\t 5 \n</KEYVALUE></INSTANCENAME>"),
         6},
        {"NumberKeyBetweenLetters", "GetInstance",
         get("<INSTANCENAME CLASSNAME=\"T_Counter\"><KEYVALUE "
             "VALUETYPE=\"numeric\">\u00E95\u00E9</KEYVALUE></INSTANCENAME>"),
         4},
        {"ClassNameForInstance", "GetInstance", get("<CLASSNAME NAME=\"T_FibrePort\"/>"), 4},
        {"InstanceOfNoProvider", "GetInstance",
         get("<INSTANCENAME CLASSNAME=\"T_Counter\"><KEYVALUE VALUETYPE=\"numeric\">1</KEYVALUE></INSTANCENAME>"), 6},
        {"CreateWithoutProvider", "CreateInstance", parameter("NewInstance", "<INSTANCE CLASSNAME=\"T_Counter\"/>"), 7},
        {"CreateUnknownClass", "CreateInstance", parameter("NewInstance", "<INSTANCE CLASSNAME=\"T_None\"/>"), 5},
        {"CreateUnknownProperty", "CreateInstance", create("<PROPERTY NAME=\"Colour\" TYPE=\"string\"/>"), 12},
        {"CreateWrongType", "CreateInstance",
         create("<PROPERTY NAME=\"Speed\" TYPE=\"string\"><VALUE>1</VALUE></PROPERTY>"), 13},
        {"CreateNoNumber", "CreateInstance",
         create("<PROPERTY NAME=\"Speed\" TYPE=\"uint64\"><VALUE>fast</VALUE></PROPERTY>"), 4},
        {"CreateNegative", "CreateInstance",
         create("<PROPERTY NAME=\"Speed\" TYPE=\"uint64\"><VALUE>-1</VALUE></PROPERTY>"), 4},
        {"CreateClass", "CreateClass", parameter("NewClass", "<CLASS NAME=\"T_New\"/>"), 7},
        {"ModifyWithoutName", "ModifyInstance", parameter("ModifiedInstance", "<INSTANCE CLASSNAME=\"T_FibrePort\"/>"),
         4},
        {"ModifyOtherClass", "ModifyInstance",
         parameter("ModifiedInstance",
                   "<VALUE.NAMEDINSTANCE>" + key + "<INSTANCE CLASSNAME=\"T_EtherPort\"/></VALUE.NAMEDINSTANCE>"),
         4},
        {"DeleteMissingKey", "DeleteInstance", get(instanceName("T_FibrePort", "Id=a")), 4},
    };
}

class Refusal : public DispatcherTest, public testing::WithParamInterface<RefusedCall> {};

TEST_P(Refusal, HasItsStatusAndSaysWhy) { expectRefusal(host, GetParam()); }

INSTANTIATE_TEST_SUITE_P(Calls, Refusal, testing::ValuesIn(refusedCalls()), nameOfCall);

} // namespace
} // namespace cimhost
