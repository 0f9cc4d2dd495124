// Paths, instances, arguments, results, contexts, enumerations and the broker: what they hand to the server, and which
// answers of the server are thrown.

#include "CmpiArgs.h"
#include "CmpiArray.h"
#include "CmpiBooleanData.h"
#include "CmpiBroker.h"
#include "CmpiDateTime.h"
#include "CmpiEnumeration.h"
#include "CmpiInstance.h"
#include "CmpiObjectPath.h"
#include "CmpiResult.h"
#include "wrapper_test.h"

#include <functional>

namespace {

class PathTest : public WrapperTest {
protected:
    CmpiObjectPath path{"root/test", "Class"};
};

class InstanceTest : public WrapperTest {
protected:
    CmpiInstance instance{CmpiObjectPath("root/test", "Class")};
};

class ArgsTest : public WrapperTest {
protected:
    CmpiArgs args;
};

class ResultTest : public WrapperTest {
protected:
    ServerResult result{plainResult()};
};

class BrokerTest : public WrapperTest {
protected:
    CmpiContext context{plainContext()};
    CmpiObjectPath path{"root/test", "Class"};
    CmpiInstance instance{path};
    CmpiBroker& broker = provider.server();
};

// Paths

TEST_F(PathTest, NamesGoToTheServer) {
    EXPECT_EQ(server.lastCallOf("newObjectPath").text, "root/test");
    EXPECT_EQ(server.lastCallOf("newObjectPath").name, "Class");
    path.setHostname("host");
    path.setNameSpace(CmpiString("root/other"));
    path.setClassName("Other");
    EXPECT_STREQ(path.getHostname().charPtr(), "host");
    EXPECT_STREQ(path.getNameSpace().charPtr(), "root/other");
    EXPECT_STREQ(path.getClassName().charPtr(), "Other");
}

TEST_F(PathTest, ReadingANameMakesOneServerString) {
    server.calls.clear();
    path.getClassName();
    EXPECT_EQ(server.functions(), std::vector<std::string>{"getClassName"});
}

TEST_F(PathTest, NamespaceMayBeAServerString) {
    CmpiObjectPath other(CmpiString("root/test"), "Class");
    EXPECT_STREQ(other.getNameSpace().charPtr(), "root/test");
}

TEST_F(PathTest, CopySharesTheServersPath) {
    CmpiObjectPath copy(path);
    copy.setKey("DeviceID", "0");
    EXPECT_EQ(path.getKeyCount(), 1u);
}

TEST_F(PathTest, TextKeyIsHandedOverAsTheTextItself) {
    path.setKey("DeviceID", "card 0");
    EXPECT_EQ(server.lastCallOf("addKey").pointers.type, CMPI_chars);
    EXPECT_EQ(server.lastCallOf("addKey").text, "card 0");
}

TEST_F(PathTest, NumberKeyIsHandedOverByPointer) {
    path.setKey("Index", CMPIUint64(7));
    EXPECT_EQ(server.lastCallOf("addKey").pointers.type, CMPI_uint64);
    EXPECT_EQ(server.lastCallOf("addKey").value.uint64, 7u);
}

TEST_F(PathTest, KeyIsReadByNameAndByPosition) {
    path.setKey("Index", CMPIUint64(7));
    EXPECT_EQ(path.getKey("Index").getUint64(), 7u);
    CmpiString name;
    EXPECT_EQ(path.getKey(0, &name).getUint64(), 7u);
    EXPECT_STREQ(name.charPtr(), "Index");
    EXPECT_EQ(path.getKey(0).getUint64(), 7u);
}

TEST_F(PathTest, AnAbsentKeyThrows) {
    for (const CMPIrc rc : {CMPI_RC_ERR_NOT_FOUND, CMPI_RC_ERR_NO_SUCH_PROPERTY}) {
        plainBroker.absentRc = rc;
        EXPECT_EQ(thrownBy([&] { path.getKey("DeviceID"); }), rc);
        EXPECT_EQ(thrownBy([&] { path.getKey(0); }), rc);
    }
}

TEST_F(PathTest, ServersErrorsAreThrownWithTheirMessage) {
    server.failWith("newObjectPath", CMPI_RC_ERR_INVALID_NAMESPACE, "no such namespace");
    EXPECT_EQ(messageThrownBy([] { CmpiObjectPath("nowhere", "Class"); }), "no such namespace");
    server.failWith("addKey", CMPI_RC_ERR_INVALID_DATA_TYPE);
    EXPECT_EQ(thrownBy([&] { path.setKey("DeviceID", 5); }), CMPI_RC_ERR_INVALID_DATA_TYPE);
    server.failWith("setHostname", CMPI_RC_ERR_FAILED);
    EXPECT_EQ(thrownBy([&] { path.setHostname("host"); }), CMPI_RC_ERR_FAILED);
    server.failWith("getHostname", CMPI_RC_ERR_FAILED);
    EXPECT_EQ(thrownBy([&] { path.getHostname(); }), CMPI_RC_ERR_FAILED);
    server.failWith("getKeyCount", CMPI_RC_ERR_FAILED);
    EXPECT_EQ(thrownBy([&] { path.getKeyCount(); }), CMPI_RC_ERR_FAILED);
    server.failWith("classPathIsA", CMPI_RC_ERR_INVALID_CLASS);
    EXPECT_EQ(thrownBy([&] { path.classPathIsA("no name"); }), CMPI_RC_ERR_INVALID_CLASS);
}

TEST_F(PathTest, ServerAnswersClassTests) {
    EXPECT_TRUE(path.classPathIsA("Class"));
    EXPECT_FALSE(path.classPathIsA("Other"));
    EXPECT_TRUE(path.isA("CMPIObjectPath"));
    EXPECT_FALSE(path.isA("CMPIInstance"));
    EXPECT_STREQ(path.toString().charPtr(), "an object");
}

TEST_F(PathTest, PathOfTheServerMayBeNull) {
    EXPECT_TRUE(CmpiObjectPath(static_cast<CMPIObjectPath*>(nullptr)).isNull());
    EXPECT_FALSE(path.isNull());
}

// Instances

TEST_F(InstanceTest, SettingAPropertyIsOneCall) {
    server.calls.clear();
    instance.setProperty("Speed", CMPIUint64(10));
    instance.setProperty("Name", "eth0");
    instance.setProperty("Enabled", CmpiTrue);
    EXPECT_EQ(server.functions(), std::vector<std::string>(3, "setProperty"));
}

TEST_F(InstanceTest, PropertiesAreHandedOverWithTheirTypes) {
    CmpiArray statuses(1, CMPI_uint16);
    CmpiString string("eth0");
    instance.setProperty("Speed", CMPIUint64(10));
    instance.setProperty("Name", "eth0");
    instance.setProperty("Enabled", CmpiTrue);
    instance.setProperty("Statuses", statuses);
    instance.setProperty("Date", CmpiDateTime(1, 0));
    instance.setProperty("Caption", string);
    const std::vector<RecordedCall> properties = server.callsOf("setProperty");
    EXPECT_EQ(properties.at(0).pointers.type, CMPI_uint64);
    EXPECT_EQ(properties.at(0).value.uint64, 10u);
    EXPECT_EQ(properties.at(1).pointers.type, CMPI_chars);
    EXPECT_EQ(properties.at(1).text, "eth0");
    EXPECT_EQ(properties.at(2).pointers.type, CMPI_boolean);
    EXPECT_EQ(properties.at(2).value.boolean, 1);
    EXPECT_EQ(properties.at(3).pointers.type, CMPI_uint16A);
    EXPECT_NE(properties.at(3).value.array, nullptr);
    EXPECT_EQ(properties.at(4).pointers.type, CMPI_dateTime);
    EXPECT_EQ(properties.at(5).pointers.type, CMPI_string);
    EXPECT_EQ(properties.at(5).value.string->hdl, string.charPtr());
}

TEST_F(InstanceTest, NullTextIsATypedNull) {
    instance.setProperty("Name", CmpiData(static_cast<const char*>(nullptr)));
    EXPECT_EQ(server.lastCallOf("setProperty").pointers.type, CMPI_chars);
    EXPECT_EQ(server.lastCallOf("setProperty").text, "(null)");
}

TEST_F(InstanceTest, CopySharesTheServersInstance) {
    CmpiInstance copy(instance);
    copy.setProperty("Name", "eth0");
    EXPECT_EQ(instance.getPropertyCount(), 1u);
}

TEST_F(InstanceTest, PathBecomesANewInstance) {
    CmpiInstance other = CmpiObjectPath("root/test", "Class");
    EXPECT_EQ(server.count("newInstance"), 2);
    EXPECT_TRUE(other.instanceIsA("Class"));
    EXPECT_FALSE(other.instanceIsA("Other"));
}

TEST_F(InstanceTest, PropertyIsReadByNameAndByPosition) {
    instance.setProperty("Speed", CMPIUint64(10));
    EXPECT_EQ(instance.getProperty("Speed").getUint64(), 10u);
    CmpiString name;
    EXPECT_EQ(instance.getProperty(0, &name).getUint64(), 10u);
    EXPECT_STREQ(name.charPtr(), "Speed");
}

TEST_F(InstanceTest, AbsentPropertyIsToldAsNotFound) { EXPECT_TRUE(instance.getProperty("Speed").isNotFound()); }

TEST_F(InstanceTest, OtherCodeForAnAbsentPropertyIsThrownWithItsName) {
    plainBroker.absentRc = CMPI_RC_ERR_NOT_FOUND;
    EXPECT_EQ(thrownBy([&] { instance.getProperty("Speed"); }), CMPI_RC_ERR_NOT_FOUND);
    EXPECT_EQ(messageThrownBy([&] { instance.getProperty("Speed"); }), "Speed");
}

TEST_F(InstanceTest, AbsentPositionIsToldAsNotFoundForTheOtherCode) {
    EXPECT_EQ(thrownBy([&] { instance.getProperty(0); }), CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(messageThrownBy([&] { instance.getProperty(0); }), "(none)");
    plainBroker.absentRc = CMPI_RC_ERR_NOT_FOUND;
    EXPECT_TRUE(instance.getProperty(0).isNotFound());
}

TEST_F(InstanceTest, ErrorAtAPositionBearsThePropertysName) {
    instance.setProperty("Speed", CMPIUint64(10));
    server.failWith("getPropertyAt", CMPI_RC_ERR_FAILED);
    CmpiString name;
    EXPECT_EQ(messageThrownBy([&] { instance.getProperty(0, &name); }), "Speed");
}

TEST_F(InstanceTest, ServersMessageGoesBeforeTheName) {
    server.failWith("getProperty", CMPI_RC_ERR_FAILED, "broken");
    EXPECT_EQ(messageThrownBy([&] { instance.getProperty("Speed"); }), "broken");
}

TEST_F(InstanceTest, FilterWithoutKeysGivesAnEmptyListOfKeys) {
    const char* properties[] = {"Speed", nullptr};
    instance.setPropertyFilter(properties, nullptr);
    EXPECT_EQ(server.lastCallOf("setPropertyFilter").pointers.properties, properties);
    EXPECT_EQ(server.lastCallOf("setPropertyFilter").keys, std::vector<std::string>{});
    const char* keys[] = {"DeviceID", nullptr};
    instance.setPropertyFilter(nullptr, keys);
    EXPECT_EQ(server.lastCallOf("setPropertyFilter").pointers.properties, nullptr);
    EXPECT_EQ(server.lastCallOf("setPropertyFilter").keys, std::vector<std::string>{"DeviceID"});
}

TEST_F(InstanceTest, ServersErrorsAreThrown) {
    server.failWith("newInstance", CMPI_RC_ERR_INVALID_CLASS);
    EXPECT_EQ(thrownBy([] { CmpiInstance(CmpiObjectPath("root/test", "Class")); }), CMPI_RC_ERR_INVALID_CLASS);
    server.failWith("setProperty", CMPI_RC_ERR_INVALID_DATA_TYPE, "Speed is uint64");
    EXPECT_EQ(messageThrownBy([&] { instance.setProperty("Speed", 10); }), "Speed is uint64");
    server.failWith("getPropertyCount", CMPI_RC_ERR_FAILED);
    EXPECT_EQ(thrownBy([&] { instance.getPropertyCount(); }), CMPI_RC_ERR_FAILED);
    server.failWith("getObjectPath", CMPI_RC_ERR_INVALID_CLASS);
    EXPECT_EQ(thrownBy([&] { instance.getObjectPath(); }), CMPI_RC_ERR_INVALID_CLASS);
    server.failWith("setPropertyFilter", CMPI_RC_ERR_FAILED);
    EXPECT_EQ(thrownBy([&] { instance.setPropertyFilter(nullptr, nullptr); }), CMPI_RC_ERR_FAILED);
}

// Arguments

TEST_F(ArgsTest, ArgumentsGoInAndComeBack) {
    args.setArg("Timeout", CMPIUint32(30));
    args.setArg("Image", "flash.bin");
    EXPECT_EQ(args.getArgCount(), 2u);
    EXPECT_EQ(args.getArg("Timeout").getUint32(), 30u);
    CmpiString name;
    EXPECT_EQ(args.getArg(0, &name).getUint32(), 30u);
    EXPECT_STREQ(name.charPtr(), "Timeout");
    EXPECT_EQ(server.callsOf("addArg").at(1).text, "flash.bin");
}

TEST_F(ArgsTest, AbsentArgumentIsThrownOrToldAsTheServerHasIt) {
    EXPECT_EQ(thrownBy([&] { args.getArg("Timeout"); }), CMPI_RC_ERR_NO_SUCH_PROPERTY);
    EXPECT_EQ(messageThrownBy([&] { args.getArg("Timeout"); }), "Timeout");
    EXPECT_EQ(messageThrownBy([&] { args.getArg(0); }), "(none)");
    plainBroker.absentRc = CMPI_RC_ERR_NOT_FOUND;
    EXPECT_TRUE(args.getArg("Timeout").isNotFound());
    EXPECT_TRUE(args.getArg(0).isNotFound());
}

TEST_F(ArgsTest, ServersErrorsAreThrown) {
    server.failWith("addArg", CMPI_RC_ERR_FAILED);
    EXPECT_EQ(thrownBy([&] { args.setArg("Timeout", 30); }), CMPI_RC_ERR_FAILED);
    server.failWith("getArgCount", CMPI_RC_ERR_FAILED);
    EXPECT_EQ(thrownBy([&] { args.getArgCount(); }), CMPI_RC_ERR_FAILED);
    server.failWith("newArgs", CMPI_RC_ERR_FAILED);
    EXPECT_EQ(thrownBy([] { CmpiArgs(); }), CMPI_RC_ERR_FAILED);
}

// Results

TEST_F(ResultTest, PathsInstancesAndValuesAreReturnedByTheirOwnFunctions) {
    CmpiObjectPath path("root/test", "Class");
    CmpiInstance instance(path);
    server.calls.clear();
    result.returnData(path);
    result.returnData(instance);
    result.returnData(CmpiData(CMPIUint32(0)));
    result.returnData("text");
    result.returnDone();
    EXPECT_EQ(server.functions(), (std::vector<std::string>{"returnObjectPath", "returnInstance", "returnData",
                                                            "returnData", "returnDone"}));
    EXPECT_EQ(server.lastCallOf("returnObjectPath").pointers.path, path.getEnc());
    EXPECT_EQ(server.lastCallOf("returnInstance").pointers.instance, ServerInstance(instance).getEnc());
    EXPECT_EQ(server.callsOf("returnData").at(0).pointers.type, CMPI_uint32);
    EXPECT_EQ(server.callsOf("returnData").at(1).text, "text");
}

TEST_F(ResultTest, AnObjectThatDoesNotFitTheRequestThrows) {
    CmpiObjectPath path("root/test", "Class");
    server.failWith("returnObjectPath", CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(thrownBy([&] { result.returnData(path); }), CMPI_RC_ERR_NOT_SUPPORTED);
    server.failWith("returnInstance", CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(thrownBy([&] { result.returnData(CmpiInstance(path)); }), CMPI_RC_ERR_NOT_SUPPORTED);
    server.failWith("returnData", CMPI_RC_ERR_NOT_SUPPORTED);
    EXPECT_EQ(thrownBy([&] { result.returnData(CmpiTrue); }), CMPI_RC_ERR_NOT_SUPPORTED);
    server.failWith("returnDone", CMPI_RC_ERR_FAILED);
    EXPECT_EQ(thrownBy([&] { result.returnDone(); }), CMPI_RC_ERR_FAILED);
}

// Contexts

TEST_F(BrokerTest, EntriesOfAContextAreRead) {
    CMPIValue flags = {};
    flags.uint32 = CMPI_FLAG_DeepInheritance;
    context.getEnc()->ft->addEntry(context.getEnc(), CMPIInvocationFlags, &flags, CMPI_uint32);
    EXPECT_EQ(context.getEntry(CmpiContext::invocationFlags).getUint32(), CMPIUint32(CMPI_FLAG_DeepInheritance));
    EXPECT_EQ(thrownBy([&] { context.getEntry("CMPIPrincipal"); }), CMPI_RC_ERR_NO_SUCH_PROPERTY);
}

// The broker

TEST_F(BrokerTest, CallsReachTheServersOwnBroker) { EXPECT_EQ(broker.getEnc(), &plainBroker.broker); }

TEST_F(BrokerTest, ThreadIsAttachedAndDetachedWithAPreparedContext) {
    CmpiContext prepared = broker.prepareAttachThread(context);
    EXPECT_NE(prepared.getEnc(), context.getEnc());
    broker.attachThread(prepared);
    EXPECT_EQ(server.lastCallOf("attachThread").pointers.context, prepared.getEnc());
    broker.detachThread(prepared);
    EXPECT_EQ(server.count("detachThread"), 1);
}

TEST_F(BrokerTest, PreparingNeverThrows) {
    server.failWith("prepareAttachThread", CMPI_RC_ERR_FAILED);
    EXPECT_TRUE(broker.prepareAttachThread(context).isNull());
}

TEST_F(BrokerTest, IndicationIsDelivered) {
    broker.deliverIndication(context, "root/test", instance);
    const RecordedCall call = server.lastCallOf("deliverIndication");
    EXPECT_EQ(call.text, "root/test");
    EXPECT_EQ(call.pointers.context, context.getEnc());
    EXPECT_EQ(call.pointers.instance, ServerInstance(instance).getEnc());
}

TEST_F(BrokerTest, InstancesOfTheServerAreReadAndChanged) {
    const char* properties[] = {"Speed", nullptr};
    EXPECT_FALSE(broker.getInstance(context, path, properties).isNull());
    EXPECT_EQ(server.lastCallOf("getInstance").pointers.properties, properties);
    EXPECT_STREQ(broker.createInstance(context, path, instance).getNameSpace().charPtr(), "created");
    broker.setInstance(context, path, instance, properties);
    EXPECT_EQ(server.lastCallOf("modifyInstance").pointers.instance, ServerInstance(instance).getEnc());
    EXPECT_EQ(server.lastCallOf("modifyInstance").pointers.properties, properties);
    broker.deleteInstance(context, path);
    EXPECT_EQ(server.lastCallOf("deleteInstance").pointers.path, path.getEnc());
    EXPECT_FALSE(broker.enumInstances(context, path, nullptr).isNull());
    EXPECT_FALSE(broker.enumInstanceNames(context, path).isNull());
}

TEST_F(BrokerTest, ServersErrorsAreThrown) {
    const std::pair<const char*, std::function<void()>> operations[] = {
        {"attachThread", [&] { broker.attachThread(context); }},
        {"detachThread", [&] { broker.detachThread(context); }},
        {"deliverIndication", [&] { broker.deliverIndication(context, "root/test", instance); }},
        {"enumerateInstanceNames", [&] { broker.enumInstanceNames(context, path); }},
        {"enumerateInstances", [&] { broker.enumInstances(context, path, nullptr); }},
        {"getInstance", [&] { broker.getInstance(context, path, nullptr); }},
        {"createInstance", [&] { broker.createInstance(context, path, instance); }},
        {"modifyInstance", [&] { broker.setInstance(context, path, instance, nullptr); }},
        {"deleteInstance", [&] { broker.deleteInstance(context, path); }},
    };
    for (const auto& [function, operation] : operations) {
        server.failWith(function, CMPI_RC_ERR_ACCESS_DENIED, function);
        EXPECT_EQ(thrownBy(operation), CMPI_RC_ERR_ACCESS_DENIED) << function;
        EXPECT_EQ(messageThrownBy(operation), function);
    }
}

TEST_F(BrokerTest, AMissingFunctionOfTheBrokerThrows) {
    CmpiArgs in, out;
    const std::function<void()> operations[] = {
        [&] { broker.execQuery(context, path, "SELECT * FROM Class", "WQL"); },
        [&] { broker.associators(context, path, "", "", "", "", nullptr); },
        [&] { broker.associatorNames(context, path, "", "", "", ""); },
        [&] { broker.references(context, path, "", "", nullptr); },
        [&] { broker.referenceNames(context, path, "", ""); },
        [&] { broker.invokeMethod(context, path, "Install", in, out); },
        [&] { broker.setProperty(context, path, "Speed", 5); },
        [&] { broker.getProperty(context, path, "Speed"); },
    };
    for (const auto& operation : operations) {
        EXPECT_EQ(thrownBy(operation), CMPI_RC_ERR_NOT_SUPPORTED);
        EXPECT_EQ(messageThrownBy(operation), "(none)");
    }
}

// Enumerations

TEST_F(BrokerTest, EnumerationIsWalkedToItsEnd) {
    EXPECT_FALSE(broker.enumInstances(context, path, nullptr).hasNext());
    CmpiEnumeration names = broker.enumInstanceNames(context, path);
    EXPECT_TRUE(names.hasNext());
    EXPECT_EQ(names.toArray().getArray().size(), 1u);
    EXPECT_EQ(names.getNext().getObjectPath().getEnc(), path.getEnc());
    EXPECT_FALSE(names.hasNext());
    CmpiEnumeration others = broker.enumInstanceNames(context, path);
    server.failWith("getNext", CMPI_RC_ERR_FAILED);
    EXPECT_EQ(thrownBy([&] { others.getNext(); }), CMPI_RC_ERR_FAILED);
}

TEST_F(BrokerTest, NullEnumerationIsAnInvalidHandle) {
    CmpiEnumeration null;
    EXPECT_EQ(thrownBy([&] { null.getNext(); }), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(thrownBy([&] { null.hasNext(); }), CMPI_RC_ERR_INVALID_HANDLE);
    EXPECT_EQ(thrownBy([&] { null.toArray(); }), CMPI_RC_ERR_INVALID_HANDLE);
}

} // namespace
