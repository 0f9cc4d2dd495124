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
    .key = "Name",
    .forEachElement = forEachPort,
    .keyText = [](const Element& element) { return macText(*element.port); },
    .makePath = pathOf<makePath_IPProtocolEndPoint>,
    .makeInstance = instanceOf<makeInstance_IPProtocolEndPoint>,
    .texts = {.token = "Merolt_NIC_IPProtocolEndPoint",
              .names = {.entry = "{F} {O}\n"},
              .getInstance = {.nameSpace = "{F}: Error getting namespace in getInstances\n",
                              .className = "{F}: Error getting ClassName in getInstances\n"},
              .key = "{F}: Error getting DeviceID key in getInstances\n",
              .keyType = "{F}: Error invalid key data type, keyData.type={n}!"},
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
