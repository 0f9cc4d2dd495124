#include "classes/ethernet/ethernet_port.h"

#include "classes/ethernet/port_properties.h"
#include "classes/facts.h"
#include "classes/instance.h"
#include "configuration/answers.h"
#include "log/log.h"
#include "text/text.h"

namespace merolt::ethernet {

namespace {

constexpr const char* cimClass = "Merolt_NIC_EthernetPort2";
const char* keys[] = {"SystemCreationClassName", "SystemName", "CreationClassName", "DeviceID", nullptr};

constexpr std::uint64_t tenGigabit = 10000;

// The first linkage stands for all; without one the properties are there and empty.
void setLinkageProperties(CmpiInstance& instance, const CNAPort& port) {
    FixedText<24> wwn;
    FixedText<9> portId;
    MacText eNodeMac;
    if (const TAVIK_FCoELinkage* linkage = port.fcoeLinkage) {
        const std::uint8_t* name = linkage->wwn;
        wwn.format("%02X-%02X-%02X-%02X-%02X-%02X-%02X-%02X", name[0], name[1], name[2], name[3], name[4], name[5],
                   name[6], name[7]);
        portId.format("%02X-%02X-%02X", linkage->fcPortId[0], linkage->fcPortId[1], linkage->fcPortId[2]);
        formatMACAddress(linkage->eNodeMac, eNodeMac.data());
    }
    instance.setProperty("FC_WWN", CmpiData(wwn.text()));
    instance.setProperty("FC_PortID", CmpiData(portId.text()));
    instance.setProperty("FC_ENodeMACAddress", CmpiData(eNodeMac.text()));
}

const EthernetClass descriptor = {
    .key = "DeviceID",
    .forEachElement = forEachPort,
    .keyText = [](const Element& element) { return macText(*element.port); },
    .makePath = pathOf<makePath_EthernetPort>,
    .makeInstance = instanceOf<makeInstance_EthernetPort>,
    .texts = {.token = "Merolt_NIC_EthernetPort",
              .instances = {.nameSpace = "{F}: Error getting namespace in enumIntances\n",
                            .className = "{F}: Error getting classname in enumIntances\n"},
              .getInstance = {.entry = entryThatNamesClass,
                              .nameSpace = "{F}: Error getting namespace in getIntances\n",
                              .className = "{F}: Error getting classname in getIntances\n"},
              .key = "{F}: Error getting {K} key in findMatchedRole1\n"},
};

constexpr CMPIUint64 megabit = 1000000;
constexpr CMPIUint64 mostMegabits = 10 * megabit; ///< a number beyond that tells no speed

/// Bits per second of a link at another speed than ten gigabit.
constexpr TwoForms<CMPIUint64 (*)(CMPIUint64 megabits)> otherSpeed = {
    .contract = [](CMPIUint64) { return CMPIUint64{0}; },
    .corrected = [](CMPIUint64 megabits) { return megabits <= mostMegabits ? megabits * megabit : 0; },
};

CMPIUint64 speedOf(CMPIUint64 megabits) {
    return megabits == tenGigabit ? maximumPortSpeed : otherSpeed.chosen()(megabits);
}

} // namespace

CmpiObjectPath makePath_EthernetPort(const char* className, const char* nameSpace, CNACard*, CNAPort* port) {
    DEBUG_LOG("Merolt_NIC_EthernetPort makePath_EthernetPort was called\n");
    return systemScopedPath(className, nameSpace, cimClass, "DeviceID", macText(*port));
}

CmpiInstance makeInstance_EthernetPort(const char* className, const char* nameSpace, const char** properties, CNACard*,
                                       CNAPort* port) {
    DEBUG_LOG("Merolt_NIC_EthernetPort makeInstance_EthernetPort was called\n");
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    const char* mac = macText(*port);
    setSystemScope(instance, cimClass);
    instance.setProperty("DeviceID", CmpiData(mac));
    instance.setProperty("LinkTechnology", CmpiData(linkTechnologyEthernet));
    instance.setProperty("PermanentAddress", CmpiData(mac));
    instance.setProperty("PortNumber", CmpiData(portNumber(*port)));
    instance.setProperty("PortType", CmpiData(portTypeEthernet));
    setLinkStatus(instance, *port);
    instance.setProperty("Caption", CmpiData(mac));
    instance.setProperty("Description", CmpiData("Merolt CNA Ethernet Port"));
    instance.setProperty("ElementName", CmpiData(mac));
    instance.setProperty("Name", CmpiData(mac));
    instance.setProperty("MaxSpeed", CmpiData(maximumPortSpeed));
    instance.setProperty("ActiveMaximumTransmissionUnit", CmpiData(CMPIUint64{port->portProperties.mtu}));
    instance.setProperty("Speed", CmpiData(speedOf(port->portProperties.link.speed)));
    setLinkageProperties(instance, *port);
    setEthernetFacts(instance, FactOfEthernetPort, &port->portProperties, properties);
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(EthernetPort, descriptor)

} // namespace merolt::ethernet
