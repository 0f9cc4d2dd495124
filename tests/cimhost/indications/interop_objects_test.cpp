// What the server says of itself in the interop namespace, and the associations among what it keeps there.
#include "indication_world.h"

#include "cimhost/service/path_text.h"
#include "cimhost/service/request_values.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace cimhost {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;
using testing_support::World;

constexpr const char* interop = "root/PG_InterOp";

std::string textOf(const ObjectPathObject& path) {
    std::string text;
    path.appendText(text);
    return text;
}

class InteropObjectsTest : public testing::Test {
protected:
    std::vector<std::string> values(const std::string& className, const std::string& property,
                                    const std::string& calledNamespace = "") {
        RequestScope scope(*world.broker);
        CallContext context;
        context.calledNamespace = calledNamespace;
        const auto outcome =
            world.server->objects().enumerateInstances(scope, context, *scope.make().path(interop, className), {});
        std::vector<std::string> texts;
        for (const InstanceObject* instance : outcome.instances) {
            std::string text;
            if (const CMPIData* data = instance->value(property)) appendValueText(text, *data);
            texts.push_back(text);
        }
        return texts;
    }

    std::string nameOf(const std::string& className) {
        const std::vector<std::string> names = world.names(className);
        EXPECT_THAT(names, SizeIs(1)) << className;
        return names.empty() ? "" : names.front();
    }

    // The classes that AssociatorNames and ReferenceNames give, in their order.
    std::vector<std::string> classesAround(const std::string& path, const AssociationFilter& filter,
                                           bool asReferences) {
        RequestScope scope(*world.broker);
        const ObjectPathObject& source = makePath(scope, interop, parsePath(path, interop, world.repository));
        InteropObjects& objects = world.server->objects();
        const Outcome names = asReferences ? objects.referenceNames(scope, {}, source, filter)
                                           : objects.associatorNames(scope, {}, source, filter);
        const Outcome whole = asReferences ? objects.references(scope, {}, source, filter, {})
                                           : objects.associators(scope, {}, source, filter, {});
        std::vector<std::string> classes;
        for (const ObjectPathObject* found : names.paths)
            classes.emplace_back(found->className());
        EXPECT_EQ(whole.instances.size(), names.paths.size());
        for (std::size_t index = 0; index < std::min(whole.instances.size(), names.paths.size()); ++index) {
            EXPECT_EQ(textOf(*whole.instances[index]->path(scope.arena())), textOf(*names.paths[index]));
        }
        return classes;
    }

    World world;
};

TEST_F(InteropObjectsTest, EveryNamespaceIsListedOnceUnderTheNameThatTheClientUses) {
    EXPECT_THAT(values("CIM_Namespace", "Name"), ElementsAre("root/merolt_cmpi", interop));
    EXPECT_THAT(values("CIM_Namespace", "Name", "interop"), ElementsAre("root/merolt_cmpi", "interop"));
}

TEST_F(InteropObjectsTest, TheInteropNamespacesObjectIsFoundByEachOfItsNames) {
    std::string path;
    for (const std::string& name : world.names("CIM_Namespace")) {
        if (name.find(interop, name.find(".")) != std::string::npos) path = name;
    }
    ASSERT_FALSE(path.empty());
    EXPECT_EQ(world.property(path, "Name"), interop);
    const std::size_t place = path.rfind(interop);
    const std::string further = path.substr(0, place) + "interop" + path.substr(place + std::string(interop).size());
    EXPECT_EQ(world.property(further, "Name"), "interop");
    EXPECT_THAT(classesAround(further, {}, false), ElementsAre("CIM_ObjectManager"));
    const std::string none = path.substr(0, place) + "none" + path.substr(place + std::string(interop).size());
    EXPECT_EQ(World::statusOf([&] { world.property(none, "Name"); }), CMPI_RC_ERR_NOT_FOUND);
}

TEST_F(InteropObjectsTest, OneObjectManagerTellsBrandVersionAndSystem) {
    const std::string manager = nameOf("CIM_ObjectManager");
    EXPECT_EQ(world.property(manager, "ElementName"), "cimhost");
    EXPECT_THAT(world.property(manager, "Description"), HasSubstr(" version "));
    EXPECT_EQ(world.property(manager, "SystemName"), "host");
    EXPECT_EQ(world.property(manager, "EnabledState"), "2");
    EXPECT_EQ(world.property(manager, "RequestedState"), "12") << "the class's default";
    EXPECT_EQ(world.property(nameOf("CIM_CIMXMLCommunicationMechanism"), "CommunicationMechanism"), "2");
    EXPECT_EQ(world.property(nameOf("CIM_IndicationServiceCapabilities"), "MaxActiveSubscriptions"), "1024");
    EXPECT_EQ(world.property(nameOf("CIM_IndicationServiceCapabilities"), "SubscriptionsPersisted"), "false");
}

TEST_F(InteropObjectsTest, TheServersOwnObjectsAreAssociatedWithEachOther) {
    EXPECT_THAT(classesAround(nameOf("CIM_ObjectManager"), {}, false),
                UnorderedElementsAre("CIM_ComputerSystem", "CIM_CIMXMLCommunicationMechanism", "CIM_Namespace",
                                     "CIM_Namespace"));
    EXPECT_THAT(classesAround(nameOf("CIM_ComputerSystem"), {"CIM_HostedService", "", "", ""}, false),
                UnorderedElementsAre("CIM_ObjectManager", "CIM_IndicationService"));
    EXPECT_THAT(classesAround(nameOf("CIM_IndicationService"), {"CIM_ElementCapabilities", "", "", ""}, false),
                ElementsAre("CIM_IndicationServiceCapabilities"));
    EXPECT_THAT(classesAround(nameOf("CIM_ObjectManager"), {"CIM_Dependency", "", "", ""}, true),
                UnorderedElementsAre("CIM_HostedService", "CIM_CommMechanismForManager", "CIM_NamespaceInManager",
                                     "CIM_NamespaceInManager"));
}

TEST_F(InteropObjectsTest, ASubscriptionIsFoundFromItsEnds) {
    const std::string filter = world.filter("f", "SELECT * FROM CIM_AlertIndication");
    const std::string handler = world.destination("h", "http://127.0.0.1:1/");
    EXPECT_THAT(classesAround(handler, {"CIM_IndicationSubscription", "", "", ""}, true), IsEmpty());
    const std::string subscription = world.subscribe(filter, handler);
    EXPECT_THAT(classesAround(handler, {"CIM_IndicationSubscription", "", "", ""}, true),
                ElementsAre("CIM_IndicationSubscription"));
    EXPECT_THAT(classesAround(filter, {"CIM_IndicationSubscription", "", "Filter", ""}, false),
                ElementsAre("CIM_ListenerDestinationCIMXML"));
    EXPECT_THAT(classesAround(filter, {"", "", "Handler", ""}, false), IsEmpty());
    EXPECT_THAT(classesAround(filter, {"", "", "", ""}, false),
                UnorderedElementsAre("CIM_ListenerDestinationCIMXML", "CIM_IndicationService"));
    EXPECT_THAT(classesAround(nameOf("CIM_IndicationService"), {"CIM_ServiceAffectsElement", "", "", ""}, false),
                UnorderedElementsAre("CIM_IndicationFilter", "CIM_ListenerDestinationCIMXML"));
}

TEST_F(InteropObjectsTest, TheServersOwnObjectsCannotBeChanged) {
    const std::string manager = nameOf("CIM_ObjectManager");
    RequestScope scope(*world.broker);
    const ObjectPathObject& path = makePath(scope, interop, parsePath(manager, interop, world.repository));
    InteropObjects& objects = world.server->objects();
    EXPECT_EQ(objects.deleteInstance(scope, {}, path).error->code, CMPI_RC_ERR_NOT_SUPPORTED);
    const InstanceObject& instance = *objects.getInstance(scope, {}, path, {}).instances.front();
    EXPECT_EQ(objects.modifyInstance(scope, {}, path, instance, {}).error->code, CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(World::statusOf([&] { objects.createInstance(scope, {}, path, instance); }), CMPI_RC_ERR_NOT_SUPPORTED);
}

TEST_F(InteropObjectsTest, AllClassesAreDeclaredInTheInteropNamespace) {
    std::vector<std::string> names;
    for (const ClassDeclaration* declaration : world.server->objects().classes()) {
        EXPECT_EQ(declaration->nameSpace(), interop);
        names.push_back(declaration->name());
    }
    EXPECT_THAT(names, SizeIs(15));
    EXPECT_THAT(names, AllOf(Contains("CIM_IndicationSubscription"), Contains("CIM_NamespaceInManager"),
                             Contains(StartsWith("CIM_CIMXML"))));
}

} // namespace
} // namespace cimhost
