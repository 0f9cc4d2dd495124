#include "classes/ethernet/port_controller.h"

#include "classes/facts.h"
#include "classes/instance.h"
#include "log/log.h"
#include "text/text.h"

#include <cstdio>

namespace merolt::ethernet {

namespace {

constexpr const char* cimClass = "Merolt_NIC_PortController";
const char* keys[] = {"SystemCreationClassName", "SystemName", "CreationClassName", "DeviceID", nullptr};

const char* deviceID(const CNACard* card) {
    return merolt::calcDeviceID_NICPortController(card->properties.serialNumber);
}

const EthernetClass descriptor = {
    .key = "DeviceID",
    .forEachElement = forEachCard,
    .keyText = [](const Element& element) { return deviceID(element.card); },
    .makePath = pathOf<makePath_PortController>,
    .makeInstance = instanceOf<makeInstance_PortController>,
    .texts = {.token = "Merolt_NIC_PortController",
              .instances = {.entry = entryThatNamesClass, .className = "{F}: Error getting classname in {O}\n"},
              .getInstance = {.nameSpace = "{F}: Error getting namespace in getInstances\n",
                              .className = "{F}: Error getting classname in getInstances\n"},
              .key = "{F}: Error getting {K} key in getInstances\n"},
};

} // namespace

const char* calcDeviceID_NICPortController(const CNACard* card, char* out) {
    std::snprintf(out, 256, "%s", deviceID(card));
    return out;
}

CmpiObjectPath makePath_PortController(const char* className, const char* nameSpace, CNACard* card) {
    DEBUG_LOG("Merolt_NIC_PortController makePath_PortController was called\n");
    return systemScopedPath(className, nameSpace, cimClass, "DeviceID", deviceID(card));
}

CmpiInstance makeInstance_PortController(const char* className, const char* nameSpace, const char** properties,
                                         CNACard* card) {
    DEBUG_LOG("Merolt_NIC_PortController makeInstance_PortController was called\n");
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    setSystemScope(instance, cimClass);
    instance.setProperty("DeviceID", CmpiData(deviceID(card)));
    instance.setProperty("Caption", CmpiData("Merolt CNA"));
    instance.setProperty("Description", CmpiData("Merolt Converged Network Adapter"));
    instance.setProperty("Name", CmpiData(card->properties.modelName));
    instance.setProperty("ControllerType", CmpiData(CMPIUint16{2}));
    instance.setProperty("ProtocolSupported", CmpiData(CMPIUint16{1}));
    instance.setProperty("MaxNumberControlled", CmpiData(CMPIUint32{0}));
    instance.setProperty("EnabledState", CmpiData(CMPIUint16{5}));
    instance.setProperty("RequestedState", CmpiData(CMPIUint16{12}));
    instance.setProperty("ElementName", CmpiData("CNA PortController"));
    instance.setProperty("OperationalStatus", CmpiData(uint16Array({2})));
    instance.setProperty("StatusDescriptions", CmpiData(stringArray({"OK"})));
    instance.setProperty("FC_WWN", CmpiData(formatMACAddress(card->properties.wwn, nullptr)));
    setEthernetFacts(instance, FactOfNicController, card->ports ? &card->ports->portProperties : nullptr, properties);
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(PortController, descriptor)

} // namespace merolt::ethernet
