#include "classes/ethernet/lan_endpoint.h"

#include "classes/ethernet/port_properties.h"
#include "classes/instance.h"
#include "log/log.h"

namespace merolt::ethernet {

namespace {

constexpr const char* cimClass = "Merolt_NIC_LANEndpoint";
const char* keys[] = {"SystemCreationClassName", "SystemName", "CreationClassName", "Name", nullptr};

const EthernetClass descriptor = {
    "Name",
    forEachPort,
    [](const Element& element) { return macText(*element.port); },
    [](const char* className, const char* nameSpace, const Element& element) {
        return makePath_LANEndPoint(className, nameSpace, element.port);
    },
    [](const char* className, const char* nameSpace, const char** properties, const Element& element) {
        return makeInstance_LANEndPoint(className, nameSpace, properties, element.port);
    },
    {
        "Merolt_NIC_LANEndPoint enumInstanceNames was called\n",
        "Merolt_NIC_LANEndPoint: Error getting namespace in enumInstanceNames\n",
        "Merolt_NIC_LANEndPoint: Error getting ClassName in enumInstanceNames\n",
        "Merolt_NIC_LANEndPoint enumInstances_LANEndPoint was called\n",
        "Merolt_NIC_LANEndPoint: Error getting namespace in enumInstances\n",
        "Merolt_NIC_LANEndPoint: Error getting ClassName in enumInstances\n",
        "Merolt_NIC_LANEndPoint getInstance_LANEndPoint was called\n",
        "Merolt_NIC_LANEndPoint: Error getting namespace in getInstance\n",
        "Merolt_NIC_LANEndPoint: Error getting ClassName in getInstance\n",
        "Merolt_NIC_LANEndPoint: Error getting DeviceID key in getInstances\n",
        "Merolt_NIC_LANEndPoint: Error invalid key data type(%d)",
        "Merolt_NIC_LANEndPoint enumInstanceNames_LANEndPoint working",
    },
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
