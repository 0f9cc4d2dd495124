#include "poor_server_test.h"

#include <ostream>

using namespace adapters;

void PrintTo(const PlainAnswer& answer, std::ostream* out) {
    *out << "status " << answer.rc << ", " << answer.objects << " objects, done " << answer.doneCount << " times";
}

PoorServerTest::PoorServerTest() {
    tavik::StorageFunction storage = storageFunction(1, 0xA107);
    storage.property.state = tavik::PortOperational;
    tavikLibrary.setFleet(fleet({card("S1", {storage, nicFunction(7, 1)})}));
    plainBrokerReset();
}

PoorServerTest::~PoorServerTest() {
    unload();
    EXPECT_EQ(plainBroker.releaseCount, 0U) << "the provider released what belongs to the server's request";
}

bool PoorServerTest::load() {
    instances = make(Merolt_CNA_Provider_Create_InstanceMI);
    if (!instances) return false;
    associations = make(Merolt_CNA_Provider_Create_AssociationMI);
    methods = make(Merolt_CNA_Provider_Create_MethodMI);
    filters = make(Merolt_CNA_Provider_Create_IndicationMI);
    return true;
}

void PoorServerTest::loadAndBuild() {
    ASSERT_TRUE(load());
    services.waitUntilIdle();
}

void PoorServerTest::unload() {
    plainBroker.before = nullptr;
    cleanUpAll();
}

void PoorServerTest::cleanUpAll() {
    if (instances) cleanUp(std::exchange(instances, nullptr));
    if (associations) cleanUp(std::exchange(associations, nullptr));
    if (methods) cleanUp(std::exchange(methods, nullptr));
    if (filters) cleanUp(std::exchange(filters, nullptr));
}

PlainAnswer PoorServerTest::enumerate(const char* className, const char** properties, const char* nameSpace) {
    return ask([&] { return plainPath(nameSpace, className); },
               [&](auto* context, auto* result, auto* path) {
                   return instances->ft->enumerateInstances(instances, context, result, path, properties);
               });
}

CMPIObjectPath* PoorServerTest::portPath() {
    CMPIResult* result = plainResult();
    instances->ft->enumerateInstanceNames(instances, plainContext(), result,
                                          plainPath(implementationNamespace, fcPort));
    return plainReturnedPath(result, 0);
}

PlainAnswer PoorServerTest::getPort() {
    return ask([&] { return portPath(); },
               [&](auto* context, auto* result, auto* path) {
                   return instances->ft->getInstance(instances, context, result, path, nullptr);
               });
}

PlainAnswer PoorServerTest::associatorsOfPort(const char* assocClass, const char* resultClass, const char* role,
                                              const char* resultRole) {
    return ask([&] { return portPath(); },
               [&](auto* context, auto* result, auto* path) {
                   return associations->ft->associators(associations, context, result, path, assocClass, resultClass,
                                                        role, resultRole, nullptr);
               });
}

PlainAnswer PoorServerTest::invoke(const char* className, const char* methodName, const CMPIArgs* in, CMPIArgs* out) {
    return ask([&] { return plainPath(implementationNamespace, className); },
               [&](auto* context, auto* result, auto* path) {
                   return methods->ft->invokeMethod(methods, context, result, path, methodName, in, out);
               });
}

PlainAnswer PoorServerTest::install() {
    const PlainScope scope;
    CMPIArgs* in = plainArgs();
    const auto* uri = reinterpret_cast<const CMPIValue*>("file:///nowhere/image.bin");
    CMPIValue target{};
    target.ref = plainPath(implementationNamespace, "Merolt_FCHBA_PortController");
    target.ref->ft->addKey(target.ref, "DeviceID", reinterpret_cast<const CMPIValue*>("S1"), CMPI_chars);
    in->ft->addArg(in, "URI", uri, CMPI_chars);
    in->ft->addArg(in, "Target", &target, CMPI_ref);
    CMPIValue options{};
    options.array = plainBroker.objects.newArray(&plainBroker.broker, 0, CMPI_uint16, nullptr);
    in->ft->addArg(in, "InstallOptions", &options, CMPI_uint16A);
    return invoke("Merolt_FCHBA_SoftwareInstallationService", "InstallFromURI", in, plainArgs());
}

void PoorServerTest::subscribe() {
    const PlainScope scope;
    const CMPIObjectPath* path = plainPath(implementationNamespace, "CIM_AlertIndication");
    const CMPIStatus status =
        filters->ft->activateFilter(filters, plainContext(), nullptr, "CIM_AlertIndication", path, 1);
    EXPECT_EQ(status.rc, CMPI_RC_OK);
}

std::vector<std::string> PoorServerTest::linesAboutTheServer() const {
    std::vector<std::string> found;
    for (const std::string& line : logLines())
        if (line.find("the CIM server ") != std::string::npos) found.push_back(line);
    return found;
}
