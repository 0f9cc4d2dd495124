#include "classes/ethernet/port_properties.h"

#include "classes/instance.h"
#include "text/text.h"

namespace merolt::ethernet {

namespace {

struct LinkStatus {
    std::uint32_t linkState;
    CMPIUint16 operationalStatus;
    const char* description;
};

constexpr LinkStatus linkStatuses[] = {
    {1, 2, "Link Up"},
    {2, 3, "Link Down"},
    {3, 1, "Testing"},
};
constexpr LinkStatus unknownLinkStatus = {0, 0, "Unknown"};

const LinkStatus& linkStatus(std::uint32_t linkState) {
    for (const LinkStatus& status : linkStatuses) {
        if (status.linkState == linkState) return status;
    }
    return unknownLinkStatus;
}

} // namespace

const char* macText(const CNAPort& port) { return formatMACAddress(port.portProperties.macAddress, nullptr); }

void setLinkStatus(CmpiInstance& instance, const CNAPort& port) {
    const LinkStatus& status = linkStatus(port.portProperties.link.state);
    instance.setProperty("OperationalStatus", CmpiData(uint16Array({status.operationalStatus})));
    instance.setProperty("StatusDescriptions", CmpiData(stringArray({status.description})));
}

CMPIUint16 portNumber(const CNAPort& port) { return static_cast<CMPIUint16>(port.portProperties.portId); }

} // namespace merolt::ethernet
