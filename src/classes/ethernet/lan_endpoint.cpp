#include "classes/ethernet/lan_endpoint.h"

#include "classes/ethernet/port_properties.h"
#include "classes/instance.h"
#include "log/log.h"

namespace merolt::ethernet {

namespace {

constexpr const char* cimClass = "Merolt_NIC_LANEndpoint";
const char* keys[] = {"SystemCreationClassName", "SystemName", "CreationClassName", "Name", nullptr};

const EthernetClass descriptor = {
    .key = "Name",
    .forEachElement = forEachPort,
    .keyText = [](const Element& element) { return macText(*element.port); },
    .makePath = pathOf<makePath_LANEndPoint>,
    .makeInstance = instanceOf<makeInstance_LANEndPoint>,
    .texts = {.token = "Merolt_NIC_LANEndPoint",
              .instances = {.entry = entryThatNamesClass},
              .getInstance = {.entry = entryThatNamesClass},
              .key = "{F}: Error getting DeviceID key in getInstances\n",
              .keyType = "{F}: Error invalid key data type({n})",
              .element = "{F} {O}_LANEndPoint working"},
};

} // namespace

CmpiObjectPath makePath_LANEndPoint(const char* className, const char* nameSpace, CNAPort* port) {
    DEBUG_LOG("Merolt_NIC_LANEndPoint makePath was called\n");
    return systemScopedPath(className, nameSpace, cimClass, "Name", macText(*port));
}

CmpiInstance makeInstance_LANEndPoint(const char* className, const char* nameSpace, const char** properties,
                                      CNAPort* port) {
    DEBUG_LOG("Merolt_NIC_LANEndPoint makeInstance_LANEndPoint was called\n");
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    const char* mac = macText(*port);
    setSystemScope(instance, cimClass);
    instance.setProperty("Name", CmpiData(mac));
    instance.setProperty("NameFormat", CmpiData("MAC based"));
    instance.setProperty("LANType", CmpiData(CMPIUint16{2}));
    instance.setProperty("MaxDataSize", CmpiData(CMPIUint32{port->portProperties.mtu}));
    instance.setProperty("MACAddress", CmpiData(mac));
    instance.setProperty("ElementName", CmpiData("LANEndPoint"));
    instance.setProperty("Caption", CmpiData("Merolt LANEndPoint"));
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(LANEndPoint, descriptor)

} // namespace merolt::ethernet
