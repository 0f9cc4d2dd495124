// The association operations as a CIM-XML client sees them, and association paths as keys of a request.
#include "fake_provider.h"
#include "refused_call.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ostream>

namespace cimhost {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using testing_support::countOf;
using testing_support::error;
using testing_support::expectRefusal;
using testing_support::FakeHost;
using testing_support::instanceName;
using testing_support::nameOfCall;
using testing_support::parameter;
using testing_support::RefusedCall;

std::string object(const std::string& className, const std::string& id) {
    return parameter("ObjectName", instanceName(className, "System=s,Id=" + id));
}

std::string classObject(const std::string& name) {
    return parameter("ObjectName", "<CLASSNAME NAME=\"" + name + "\"/>");
}

std::string classFilter(const std::string& name, const std::string& className) {
    return parameter(name, "<CLASSNAME NAME=\"" + className + "\"/>");
}

std::string text(const std::string& name, const std::string& value) {
    return parameter(name, "<VALUE>" + value + "</VALUE>");
}

std::string localPath(const std::string& nameSpace, const std::string& name) {
    std::string place = "<LOCALNAMESPACEPATH>";
    place += "<NAMESPACE NAME=\"" + nameSpace.substr(0, nameSpace.find('/')) + "\"/>";
    place += "<NAMESPACE NAME=\"" + nameSpace.substr(nameSpace.find('/') + 1) + "\"/></LOCALNAMESPACEPATH>";
    return "<LOCALINSTANCEPATH>" + place + name + "</LOCALINSTANCEPATH>";
}

// <INSTANCENAME> of the link between "a" and "e", with what stands inside the two key bindings.
std::string linkName(const std::string& left, const std::string& right) {
    return "<INSTANCENAME CLASSNAME=\"T_FibreLink\"><KEYBINDING NAME=\"Left\">" + left +
           "</KEYBINDING><KEYBINDING NAME=\"Right\">" + right + "</KEYBINDING></INSTANCENAME>";
}

std::string reference(const std::string& path) { return "<VALUE.REFERENCE>" + path + "</VALUE.REFERENCE>"; }

class AssociationTest : public testing::Test {
protected:
    FakeHost host;
};

TEST_F(AssociationTest, AssociatorsAreObjectsWithTheirFullPath) {
    EXPECT_THAT(host.call("Associators", object("T_FibrePort", "a")),
                AllOf(StartsWith("<IRETURNVALUE><VALUE.OBJECTWITHPATH><INSTANCEPATH><NAMESPACEPATH><HOST>"),
                      HasSubstr("</HOST><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"ns\"/>"
                                "</LOCALNAMESPACEPATH></NAMESPACEPATH><INSTANCENAME CLASSNAME=\"T_EtherPort\">"
                                "<KEYBINDING NAME=\"System\"><KEYVALUE VALUETYPE=\"string\">s</KEYVALUE></KEYBINDING>"
                                "<KEYBINDING NAME=\"Id\"><KEYVALUE VALUETYPE=\"string\">e</KEYVALUE></KEYBINDING>"
                                "</INSTANCENAME></INSTANCEPATH><INSTANCE CLASSNAME=\"T_EtherPort\">"),
                      HasSubstr("<VALUE>10000000000</VALUE>"),
                      EndsWith("</INSTANCE></VALUE.OBJECTWITHPATH></IRETURNVALUE>")));
}

TEST_F(AssociationTest, AssociatorNamesAreFullPaths) {
    EXPECT_THAT(host.call("AssociatorNames", object("T_EtherPort", "e")),
                AllOf(StartsWith("<IRETURNVALUE><OBJECTPATH><INSTANCEPATH><NAMESPACEPATH><HOST>"),
                      HasSubstr("<INSTANCENAME CLASSNAME=\"T_FibrePort\">"),
                      EndsWith("</INSTANCENAME></INSTANCEPATH></OBJECTPATH></IRETURNVALUE>")));
}

TEST_F(AssociationTest, ReferencesAreAssociationsWithBothEnds) {
    const std::string answer = host.call("References", object("T_FibrePort", "a"));
    EXPECT_THAT(answer, HasSubstr("<INSTANCE CLASSNAME=\"T_FibreLink\"><PROPERTY.REFERENCE NAME=\"Left\" "
                                  "REFERENCECLASS=\"T_FibrePort\"><VALUE.REFERENCE><LOCALINSTANCEPATH>"));
    EXPECT_THAT(answer, HasSubstr("<KEYBINDING NAME=\"Left\"><VALUE.REFERENCE>"));
    EXPECT_THAT(answer, HasSubstr("<PROPERTY NAME=\"Cost\" TYPE=\"uint16\"></PROPERTY>"));
    EXPECT_EQ(countOf(answer, "<VALUE.OBJECTWITHPATH>"), 1U);
}

TEST_F(AssociationTest, ReferenceNamesHaveReferencesAsKeys) {
    const std::string answer = host.call("ReferenceNames", object("T_EtherPort", "e"));
    EXPECT_THAT(answer, HasSubstr("<INSTANCENAME CLASSNAME=\"T_FibreLink\"><KEYBINDING NAME=\"Left\"><VALUE.REFERENCE>"
                                  "<LOCALINSTANCEPATH>"));
    EXPECT_EQ(countOf(answer, "<OBJECTPATH>"), 1U);
}

// As OpenPegasus asks: a base class reaches the provider as its concrete classes, and so finds their rows.
TEST_F(AssociationTest, EachAssociationClassOfTheSourceIsAskedOnce) {
    const std::string source = object("T_FibrePort", "a");
    EXPECT_EQ(countOf(host.call("Associators", source + classFilter("AssocClass", "T_Link")), "<INSTANCEPATH>"), 1U);
    EXPECT_EQ(countOf(host.call("ReferenceNames", source + classFilter("ResultClass", "T_Link")), "<OBJECTPATH>"), 1U);
    host.call("References", source);
    host.call("AssociatorNames", object("T_EtherPort", "e") + text("Role", "Right"));
    const std::string all = " flags=0 by=anna in=root/ns through=T_FibreLink to= role=";
    EXPECT_THAT(host.provider.calls, ElementsAre("associators T_FibrePort" + all + " resultRole=",
                                                 "referenceNames T_FibrePort" + all + " resultRole=",
                                                 "references T_FibrePort" + all + " resultRole=",
                                                 "associatorNames T_EtherPort" + all + "Right resultRole="));
}

TEST_F(AssociationTest, AssociationClassesThatCannotHoldTheSourceAreNotAsked) {
    EXPECT_EQ(host.call("References", object("T_EtherPort", "e") + text("Role", "Left")),
              "<IRETURNVALUE></IRETURNVALUE>");
    EXPECT_EQ(host.call("References", parameter("ObjectName", "<INSTANCENAME CLASSNAME=\"T_Counter\"><KEYBINDING "
                                                              "NAME=\"Number\"><KEYVALUE VALUETYPE=\"numeric\">1"
                                                              "</KEYVALUE></KEYBINDING></INSTANCENAME>")),
              "<IRETURNVALUE></IRETURNVALUE>");
    EXPECT_THAT(host.provider.calls, IsEmpty());
}

TEST_F(AssociationTest, AskedOnceTheProviderGetsTheFiltersOfTheClient) {
    host.operations->associationCalls = AssociationCalls::once;
    const std::string source = object("T_FibrePort", "a");
    const std::string filters = classFilter("AssocClass", "T_Link") + classFilter("ResultClass", "T_Port") +
                                text("Role", "Left") + text("ResultRole", "Right");
    host.call("Associators", source + filters +
                                 parameter("PropertyList", "<VALUE.ARRAY><VALUE>Id</VALUE>"
                                                           "</VALUE.ARRAY>"));
    host.call("AssociatorNames", source + filters);
    host.call("References", source + classFilter("ResultClass", "T_Link") + text("Role", "Left"));
    host.call("ReferenceNames", source);
    const std::string all = " by=anna in=root/ns through=T_Link to=T_Port role=Left resultRole=Right";
    EXPECT_THAT(
        host.provider.calls,
        ElementsAre("associators T_FibrePort [Id] flags=0" + all, "associatorNames T_FibrePort flags=0" + all,
                    "references T_FibrePort flags=0 by=anna in=root/ns through=T_Link to= role=Left resultRole=",
                    "referenceNames T_FibrePort flags=0 by=anna in=root/ns through= to= role= resultRole="));
}

TEST_F(AssociationTest, APropertyListNarrowsTheObjectsAndNotTheirPaths) {
    const std::string answer =
        host.call("Associators", object("T_FibrePort", "a") +
                                     parameter("PropertyList", "<VALUE.ARRAY><VALUE>speed</VALUE></VALUE.ARRAY>"));
    EXPECT_THAT(answer, HasSubstr("<KEYBINDING NAME=\"Id\">"));
    EXPECT_THAT(answer, HasSubstr("<INSTANCE CLASSNAME=\"T_EtherPort\"><PROPERTY NAME=\"Speed\" TYPE=\"uint64\"><VALUE>"
                                  "10000000000</VALUE></PROPERTY></INSTANCE>"));
}

TEST_F(AssociationTest, ClassOriginIsShownOnRequest) {
    const std::string answer =
        host.call("Associators", object("T_FibrePort", "a") + text("IncludeClassOrigin", "true"));
    EXPECT_THAT(answer, HasSubstr(" CLASSORIGIN=\"T_Port\""));
    EXPECT_THAT(host.provider.calls.front(), HasSubstr("flags=8 "));
}

TEST_F(AssociationTest, AnObjectOfAnotherNamespaceKeepsItsOwn) {
    host.provider.links.front().rightNamespace = "root/io";
    const std::string elsewhere = "<NAMESPACE NAME=\"io\"/></LOCALNAMESPACEPATH></NAMESPACEPATH><INSTANCENAME "
                                  "CLASSNAME=\"T_EtherPort\">";
    EXPECT_THAT(host.call("Associators", object("T_FibrePort", "a")), HasSubstr(elsewhere));
    EXPECT_THAT(host.call("AssociatorNames", object("T_FibrePort", "a")), HasSubstr(elsewhere));
}

TEST_F(AssociationTest, AnObjectWithoutAssociationsHasNone) {
    for (const char* method : {"Associators", "AssociatorNames", "References", "ReferenceNames"}) {
        EXPECT_EQ(host.call(method, object("T_FibrePort", "b")), "<IRETURNVALUE></IRETURNVALUE>") << method;
    }
    EXPECT_EQ(host.provider.calls.size(), 4U);
}

TEST_F(AssociationTest, InANamespaceWithoutAssociationsTheProviderIsNotAsked) {
    EXPECT_EQ(host.call("Associators", object("T_FibrePort", "a"), "root/io"), "<IRETURNVALUE></IRETURNVALUE>");
    EXPECT_THAT(host.provider.calls, IsEmpty());
}

TEST_F(AssociationTest, AFailureTakesThePlaceOfEarlierObjects) {
    host.provider.failure = CimError{CMPI_RC_ERR_ACCESS_DENIED, "a <bad> day"};
    for (const char* method : {"Associators", "AssociatorNames", "References", "ReferenceNames"}) {
        EXPECT_EQ(host.call(method, object("T_FibrePort", "a")),
                  "<ERROR CODE=\"2\" DESCRIPTION=\"a &lt;bad&gt; day\"/>");
    }
}

TEST_F(AssociationTest, AssociationsOfAClassAreThoseDeclared) {
    const std::string names = host.call("ReferenceNames", classObject("T_FibrePort"));
    EXPECT_THAT(names, HasSubstr("<OBJECTPATH><CLASSPATH><NAMESPACEPATH><HOST>"));
    EXPECT_THAT(names, HasSubstr("</NAMESPACEPATH><CLASSNAME NAME=\"T_FibreLink\"/></CLASSPATH></OBJECTPATH>"));
    EXPECT_EQ(countOf(names, "<OBJECTPATH>"), 2U);
    const std::string classes = host.call("References", classObject("T_FibrePort") + text("Role", "right"));
    EXPECT_THAT(classes, HasSubstr("<CLASS NAME=\"T_Link\">"));
    EXPECT_THAT(host.call("Associators", classObject("T_FibrePort") + text("Role", "Left")),
                HasSubstr("</CLASSPATH><CLASS NAME=\"T_Port\" SUPERCLASS=\"T_Element\">"));
    EXPECT_EQ(countOf(host.call("AssociatorNames", classObject("T_EtherPort") + text("Role", "Right")), "<CLASSNAME"),
              2U);
    EXPECT_THAT(host.provider.calls, IsEmpty());
}

TEST_F(AssociationTest, AssociatedClassesShowQualifiersAndPropertiesOnRequest) {
    const std::string plain = host.call("References", classObject("T_FibrePort"));
    EXPECT_THAT(plain, Not(HasSubstr("<QUALIFIER ")));
    const std::string chosen = host.call("References", classObject("T_FibrePort") + text("IncludeQualifiers", "true") +
                                                           parameter("PropertyList", "<VALUE.ARRAY/>"));
    EXPECT_THAT(chosen, HasSubstr("<QUALIFIER NAME=\"Association\""));
    EXPECT_THAT(chosen, Not(HasSubstr("<PROPERTY")));
}

// The path of an association in a request: references with and without a namespace, and as texts.
struct LinkForm {
    std::string name;
    std::string key;
};

void PrintTo(const LinkForm& form, std::ostream* out) { *out << form.name; }

class AssociationPath : public AssociationTest, public testing::WithParamInterface<LinkForm> {};

TEST_P(AssociationPath, LeadsToTheAssociation) {
    const std::string right = reference(instanceName("T_EtherPort", "System=s,Id=e"));
    const std::string answer = host.call("GetInstance", parameter("InstanceName", linkName(GetParam().key, right)));
    EXPECT_THAT(answer, StartsWith("<IRETURNVALUE><INSTANCE CLASSNAME=\"T_FibreLink\"><PROPERTY.REFERENCE NAME=\"Left\""
                                   " REFERENCECLASS=\"T_FibrePort\"><VALUE.REFERENCE><LOCALINSTANCEPATH>"
                                   "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/><NAMESPACE NAME=\"ns\"/>"
                                   "</LOCALNAMESPACEPATH><INSTANCENAME CLASSNAME=\"T_FibrePort\">"));
}

std::vector<LinkForm> linkForms() {
    const std::string name = instanceName("T_FibrePort", "System=s,Id=a");
    return {
        {"NameAlone", reference(name)},
        {"WithNamespace", reference(localPath("root/ns", name))},
        {"AsText", "<KEYVALUE VALUETYPE=\"string\">T_FibrePort.System=\"s\",Id=\"a\"</KEYVALUE>"},
        {"AsTextWithNamespace", "<KEYVALUE>root/ns:T_FibrePort.System=\"s\",Id=\"a\"</KEYVALUE>"},
        {"AsTextWithHost", "<KEYVALUE>//host/root/ns:T_FibrePort.System=\"s\",Id=\"a\"</KEYVALUE>"},
    };
}

INSTANTIATE_TEST_SUITE_P(Forms, AssociationPath, testing::ValuesIn(linkForms()),
                         [](const auto& row) { return row.param.name; });

TEST_F(AssociationTest, AReferenceIntoAnotherNamespaceStaysThere) {
    const std::string answer = host.call(
        "GetInstance", parameter("InstanceName",
                                 linkName(reference(localPath("root/io", instanceName("T_FibrePort", "System=s,Id=a"))),
                                          reference(instanceName("T_EtherPort", "System=s,Id=e")))));
    EXPECT_EQ(countOf(answer, "<NAMESPACE NAME=\"io\"/>"), 1U);
    EXPECT_EQ(countOf(answer, "<NAMESPACE NAME=\"ns\"/>"), 1U);
}

TEST_F(AssociationTest, AReferenceThatIsNoPathReachesTheProviderAsText) {
    const std::string right = reference(instanceName("T_EtherPort", "System=s,Id=e"));
    EXPECT_THAT(
        host.call("GetInstance", parameter("InstanceName", linkName("<KEYVALUE>no path at all</KEYVALUE>", right))),
        StartsWith(error(1)));
    EXPECT_THAT(host.provider.calls, ElementsAre(StartsWith("getInstance T_FibreLink")));
}

TEST_F(AssociationTest, AKeyOfAnyLengthIsJustAKey) {
    const std::string longKey(1 << 20, 'k');
    EXPECT_EQ(host.call("Associators", object("T_FibrePort", longKey)), "<IRETURNVALUE></IRETURNVALUE>");
    EXPECT_EQ(host.call("References", object("T_FibrePort", longKey)), "<IRETURNVALUE></IRETURNVALUE>");
    EXPECT_EQ(host.provider.calls.size(), 2U);
}

TEST_F(AssociationTest, AKeyOfAnotherKindReachesTheProviderAsItWasSent) {
    const std::string name = "<INSTANCENAME CLASSNAME=\"T_FibrePort\"><KEYBINDING NAME=\"System\"><KEYVALUE>s"
                             "</KEYVALUE></KEYBINDING><KEYBINDING NAME=\"Id\"><KEYVALUE VALUETYPE=\"numeric\">17"
                             "</KEYVALUE></KEYBINDING></INSTANCENAME>";
    EXPECT_EQ(host.call("AssociatorNames", parameter("ObjectName", name)), "<IRETURNVALUE></IRETURNVALUE>");
    EXPECT_EQ(host.provider.calls.size(), 1U);
}

std::vector<RefusedCall> refusedCalls() {
    const std::string port = object("T_FibrePort", "a");
    const std::string classPort = classObject("T_FibrePort");
    std::vector<RefusedCall> rows;
    for (const std::string method : {"Associators", "AssociatorNames", "References", "ReferenceNames"}) {
        const auto add = [&](const std::string& name, const std::string& parameters, int code,
                             const std::string& nameSpace = "root/ns") {
            rows.push_back({method + name, method, parameters, code, nameSpace});
        };
        add("NoObjectName", "", 4);
        add("ObjectNameNull", "<IPARAMVALUE NAME=\"ObjectName\"/>", 4);
        add("ObjectNameIsText", text("ObjectName", "T_FibrePort"), 4);
        add("ObjectNameIsAnInstance", parameter("ObjectName", "<INSTANCE CLASSNAME=\"T_FibrePort\"/>"), 4);
        add("UnknownNamespace", port, 3, "root/other");
        add("UnknownNamespaceOfClass", classPort, 3, "root/other");
        add("UnknownSource", object("T_None", "a"), 5);
        add("UnknownSourceClass", classObject("T_None"), 5);
        add("UnknownResultClass", port + classFilter("ResultClass", "T_None"), 4);
        add("UnknownResultClassOfClass", classPort + classFilter("ResultClass", "T_None"), 4);
        add("ResultClassIsText", port + text("ResultClass", "T_Port"), 4);
        add("RoleIsNoName", port + text("Role", "left end"), 4);
        add("RoleIsEmpty", port + text("Role", ""), 4);
        add("RoleIsAList", port + parameter("Role", "<VALUE.ARRAY><VALUE>Left</VALUE></VALUE.ARRAY>"), 4);
        add("KeyMissing", parameter("ObjectName", instanceName("T_FibrePort", "Id=a")), 4);
        add("KeyTooMany", parameter("ObjectName", instanceName("T_FibrePort", "System=s,Id=a,Colour=red")), 4);
        add("NoKeys", parameter("ObjectName", "<INSTANCENAME CLASSNAME=\"T_FibrePort\"/>"), 4);
        add("UnknownParameter", port + text("Colour", "red"), 4);
    }
    rows.push_back({"UnknownAssociation", "Associators", port + classFilter("AssocClass", "T_None"), 4});
    rows.push_back({"PlainClassAsAssociation", "Associators", port + classFilter("AssocClass", "T_Port"), 4});
    rows.push_back({"PlainClassAsReference", "References", port + classFilter("ResultClass", "T_Port"), 4});
    rows.push_back({"AssociationOfReferences", "References", port + classFilter("AssocClass", "T_Link"), 4});
    rows.push_back({"PropertiesOfNames", "AssociatorNames", port + parameter("PropertyList", "<VALUE.ARRAY/>"), 4});
    rows.push_back({"ListNoArray", "Associators", port + text("PropertyList", "Id"), 4});
    rows.push_back({"NoBoolean", "References", port + text("IncludeQualifiers", "maybe"), 4});
    return rows;
}

class AssociationRefusal : public AssociationTest, public testing::WithParamInterface<RefusedCall> {};

TEST_P(AssociationRefusal, HasItsStatusAndSaysWhy) { expectRefusal(host, GetParam()); }

INSTANTIATE_TEST_SUITE_P(Calls, AssociationRefusal, testing::ValuesIn(refusedCalls()), nameOfCall);

} // namespace
} // namespace cimhost
