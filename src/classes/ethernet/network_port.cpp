#include "classes/ethernet/network_port.h"

#include "classes/ethernet/port_properties.h"
#include "classes/facts.h"
#include "classes/instance.h"
#include "log/log.h"
#include "text/text.h"

#include <cstdio>

namespace merolt::ethernet {

namespace {

constexpr const char* cimClass = "Merolt_NIC_NetworkPort";
const char* keys[] = {"SystemCreationClassName", "SystemName", "CreationClassName", "DeviceID", nullptr};

const EthernetClass descriptor = {
    .key = "DeviceID",
    .forEachElement = forEachPort,
    .keyText = [](const Element& element) { return calcDeviceID_NetworkPort(element.card, element.port, nullptr); },
    .makePath = pathOf<makePath_NetworkPort>,
    .makeInstance = instanceOf<makeInstance_NetworkPort>,
    .texts = {.token = "Merolt_NIC_NetworkPort",
              .names = {.nameSpace = "{F}: Error getting namespace\n", .className = "{F}: Error getting ClassName\n"},
              .instances = withoutOperation,
              .getInstance = withoutOperation,
              .key = "{F}: Error getting {K} key in findMatchedRole1\n"},
};

} // namespace

const char* calcDeviceID_NetworkPort(const CNACard* card, const CNAPort* port, char* buffer) {
    static char moduleBuffer[256];
    char* target = buffer ? buffer : moduleBuffer;
    std::snprintf(target, sizeof(moduleBuffer), "%s_%u", card->properties.serialNumber, port->portProperties.portId);
    return target;
}

const char* calcMACAddress_NetworkPort(const CNACard*, const CNAPort* port, char* buffer) {
    static char moduleBuffer[13];
    return formatMACAddress(port->portProperties.macAddress, buffer ? buffer : moduleBuffer);
}

CmpiObjectPath makePath_NetworkPort(const char* className, const char* nameSpace, CNACard* card, CNAPort* port) {
    DEBUG_LOG("Merolt_NIC_NetworkPort makePath_NetworkPort was called\n");
    return systemScopedPath(className, nameSpace, cimClass, "DeviceID", calcDeviceID_NetworkPort(card, port, nullptr));
}

CmpiInstance makeInstance_NetworkPort(const char* className, const char* nameSpace, const char** properties,
                                      CNACard* card, CNAPort* port) {
    DEBUG_LOG("Merolt_NIC_NetworkPort makeInstance was called\n");
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    const char* mac = calcMACAddress_NetworkPort(card, port, nullptr);
    setSystemScope(instance, cimClass);
    instance.setProperty("DeviceID", CmpiData(calcDeviceID_NetworkPort(card, port, nullptr)));
    instance.setProperty("LinkTechnology", CmpiData(linkTechnologyEthernet));
    instance.setProperty("PermanentAddress", CmpiData(mac));
    instance.setProperty("PortType", CmpiData(portTypeEthernet));
    instance.setProperty("PortNumber", CmpiData(portNumber(*port)));
    setLinkStatus(instance, *port);
    instance.setProperty("Caption", CmpiData(mac));
    instance.setProperty("Description", CmpiData("Merolt CNA Network Port"));
    instance.setProperty("ElementName", CmpiData(mac));
    instance.setProperty("Name", CmpiData(mac));
    instance.setProperty("MaxSpeed", CmpiData(maximumPortSpeed));
    instance.setProperty("ActiveMaximumTransmissionUnit", CmpiData(CMPIUint64{port->portProperties.mtu}));
    instance.setProperty("Speed", CmpiData(CMPIUint64{port->portProperties.link.speed}));
    setEthernetFacts(instance, FactOfNetworkPort, &port->portProperties, properties);
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(NetworkPort, descriptor)

} // namespace merolt::ethernet
