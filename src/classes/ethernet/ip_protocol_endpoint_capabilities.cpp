#include "classes/ethernet/ip_protocol_endpoint_capabilities.h"

#include "classes/ethernet/port_properties.h"
#include "classes/instance.h"
#include "log/log.h"

namespace merolt::ethernet {

namespace {

const char* keys[] = {"InstanceID", nullptr};

const EthernetClass descriptor = {
    .key = "InstanceID",
    .forEachElement = forEachPort,
    .keyText = [](const Element& element) { return macText(*element.port); },
    .makePath = pathOf<makePath_IPProtocolEndPointCapabilities>,
    .makeInstance = instanceOf<makeInstance_IPProtocolEndPointCapabilities>,
    .texts = {.token = "Merolt_NIC_IPProtocolEndPointCapabilities",
              .keyType = "{F}: Error invalid key data type in {O} ({n})"},
    // By contract getInstance of their association delivers the capabilities, then the association: two objects, which
    // production servers turn into an error.
    .alwaysReturnsInstance = {.contract = true, .corrected = false},
};

} // namespace

CmpiObjectPath makePath_IPProtocolEndPointCapabilities(const char* className, const char* nameSpace, CNAPort* port) {
    DEBUG_LOG("Merolt_NIC_IPProtocolEndPointCapabilities makePath_IPProtocolEndPointCapabilities was called\n");
    CmpiObjectPath path(nameSpace, className);
    path.setKey("InstanceID", CmpiData(macText(*port)));
    return path;
}

CmpiInstance makeInstance_IPProtocolEndPointCapabilities(const char* className, const char* nameSpace,
                                                         const char** properties, CNAPort* port) {
    DEBUG_LOG("Merolt_NIC_IPProtocolEndPointCapabilities makeInstance was called\n");
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    const char* mac = macText(*port);
    instance.setProperty("InstanceID", CmpiData(mac));
    instance.setProperty("RequestedStatesSupported", CmpiData(uint16Array({12})));
    instance.setProperty("ElementName", CmpiData("IPProtocolEndPointCapabilities"));
    instance.setProperty("Caption", CmpiData(mac));
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(IPProtocolEndPointCapabilities, descriptor)

} // namespace merolt::ethernet
