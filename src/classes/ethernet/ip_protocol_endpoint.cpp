#include "classes/ethernet/ip_protocol_endpoint.h"

#include "classes/ethernet/ip_address.h"
#include "classes/ethernet/port_properties.h"
#include "classes/instance.h"
#include "log/log.h"

namespace merolt::ethernet {

namespace {

constexpr const char* cimClass = "Merolt_NIC_IPProtocolEndpoint";
const char* keys[] = {"SystemCreationClassName", "SystemName", "CreationClassName", "Name", nullptr};

const EthernetClass descriptor = {
    "Name",
    forEachPort,
    [](const Element& element) { return macText(*element.port); },
    [](const char* className, const char* nameSpace, const Element& element) {
        return makePath_IPProtocolEndPoint(className, nameSpace, element.port);
    },
    [](const char* className, const char* nameSpace, const char** properties, const Element& element) {
        return makeInstance_IPProtocolEndPoint(className, nameSpace, properties, element.port);
    },
    {
        "Merolt_NIC_IPProtocolEndPoint enumInstanceNames\n",
        "Merolt_NIC_IPProtocolEndPoint: Error getting namespace in enumInstanceNames\n",
        "Merolt_NIC_IPProtocolEndPoint: Error getting ClassName in enumInstanceNames\n",
        "Merolt_NIC_IPProtocolEndPoint enumInstances was called\n",
        "Merolt_NIC_IPProtocolEndPoint: Error getting namespace in enumInstances\n",
        "Merolt_NIC_IPProtocolEndPoint: Error getting ClassName in enumInstances\n",
        "Merolt_NIC_IPProtocolEndPoint getInstance was called\n",
        "Merolt_NIC_IPProtocolEndPoint: Error getting namespace in getInstances\n",
        "Merolt_NIC_IPProtocolEndPoint: Error getting ClassName in getInstances\n",
        "Merolt_NIC_IPProtocolEndPoint: Error getting DeviceID key in getInstances\n",
        "Merolt_NIC_IPProtocolEndPoint: Error invalid key data type, keyData.type=%d!",
    },
};

} // namespace

CmpiObjectPath makePath_IPProtocolEndPoint(const char* className, const char* nameSpace, CNAPort* port) {
    DEBUG_LOG("Merolt_NIC_IPProtocolEndPoint makePath was called\n");
    return systemScopedPath(className, nameSpace, cimClass, "Name", macText(*port));
}

CmpiInstance makeInstance_IPProtocolEndPoint(const char* className, const char* nameSpace, const char** properties,
                                             CNAPort* port) {
    DEBUG_LOG("Merolt_NIC_IPProtocolEndPoint makeInstance_IPProtocolEndPoint was called\n");
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    const TAVIK_IPProperties& addresses = port->ipProperties;
    setSystemScope(instance, cimClass);
    instance.setProperty("Name", CmpiData(macText(*port)));
    instance.setProperty("AddressOrigin", CmpiData(CMPIUint16{4}));
    instance.setProperty("IPv4Address", CmpiData(formatIPAddress(&addresses.ipv4)));
    instance.setProperty("SubnetMask", CmpiData(formatIPAddress(&addresses.ipv4Mask)));
    if (addresses.firstList) instance.setProperty("IPv6Address", CmpiData(formatIPAddress(addresses.firstList)));
    instance.setProperty("ProtocolIFType", CmpiData(CMPIUint16{6}));
    instance.setProperty("Status", CmpiData("OK"));
    instance.setProperty("HealthState", CmpiData(CMPIUint16{5}));
    instance.setProperty("ElementName", CmpiData("IPProtocolEndPoint"));
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(IPProtocolEndPoint, descriptor)

} // namespace merolt::ethernet
