#include "indications/port_status_indication.h"

#include "classes/instance.h"
#include "classes/storage/fc_port.h"
#include "classes/system_name.h"
#include "inventory/tavik.h"
#include "inventory/tree_walk.h"
#include "log/log.h"
#include "text/fixed_text.h"

#include <cxxabi.h>

namespace merolt {

namespace {

using storage::FCPortEntry;
using storage::g_fcPortCount;
using storage::g_fcPortList;

/// A port's state as alerts tell it. The list of ports knows more states than these.
struct PortStatus {
    std::uint16_t status = 0;
    CMPIUint16 severity = 4;
};

PortStatus statusOf(std::uint8_t portState) {
    switch (portState) {
    case 1:
        return {2, 2};
    case 3:
        return {6, 6};
    default:
        return {};
    }
}

const FCPortEntry* findInList(std::uint32_t deviceNumber) {
    for (int index = 0; index < g_fcPortCount; ++index)
        if (g_fcPortList[index].deviceNumber == deviceNumber) return &g_fcPortList[index];
    return nullptr;
}

/// The first function with that number of its jack, and of several jacks the last one's.
TAVIK_DeviceRecord* findInTree(std::uint32_t deviceNumber) {
    TAVIK_AdapterList* adapters = TAVIK_GetAdapterList();
    if (!adapters) return nullptr;
    TAVIK_DeviceRecord* found = nullptr;
    const TAVIK_PhyPortEntry* foundAt = nullptr;
    forEachProtocolEntry(adapters, [&](TAVIK_AdapterEntry&, TAVIK_PhyPortEntry& port, TAVIK_ProtocolEntry& entry) {
        if (foundAt == &port || !isStorageFunction(entry)) return;
        if (entry.storage.device.deviceNumber != deviceNumber) return;
        found = &entry.storage.device;
        foundAt = &port;
    });
    return found;
}

/// What is known of an alarm's device at one moment.
struct Sighting {
    const FCPortEntry* record;
    TAVIK_DeviceRecord* device;

    explicit Sighting(std::uint32_t deviceNumber)
        : record(findInList(deviceNumber)), device(findInTree(deviceNumber)) {}

    /// The record, if the device is in the tree as well.
    const FCPortEntry* fullRecord() const { return device ? record : nullptr; }
    std::uint16_t listedStatus() const { return fullRecord() ? fullRecord()->operationalStatus : std::uint16_t{0}; }
};

PortStatus readStatus(const TAVIK_DeviceRecord* device) {
    if (!device) return {};
    TAVIK_PortPropertyBlock block = {};
    if (TAVIK_GetHbaDevicePortProperty(device->handle, 0, &block) != 0) return {};
    return statusOf(block.portState);
}

/// The same, and the log says why a state could not be read.
PortStatus readStatusAloud(const TAVIK_DeviceRecord* device) {
    if (!device) {
        ERROR_LOG("Port Status: Could not detect!");
        ERROR_LOG("m_generateIndication: Adapter Status changed, pDevice is NULL!");
        return {};
    }
    TAVIK_PortPropertyBlock block = {};
    const std::uint32_t failure = TAVIK_GetHbaDevicePortProperty(device->handle, 0, &block);
    if (failure != 0) {
        ERROR_LOG("Port Status: Could not detect!");
        ERROR_LOG("m_generateIndication: error calling ZVGetHbaDevicePortProperty return %x", failure);
        return {};
    }
    return statusOf(block.portState);
}

using ElementText = FixedText<512>;

ElementText elementOf(const FCPortEntry* record) {
    constexpr const char* portClass = "Merolt_FCHBA_FCPort";
    ElementText element;
    if (!record) {
        element.assign("NOT FOUND");
        return element;
    }
    element.format("%s:%s.SystemCreationClassName=\"%s\",SystemName=\"%s\",CreationClassName=\"%s\",DeviceID=\"%s\"",
                   alertNamespace, portClass, computerSystemClass, gSystemName, portClass, record->deviceID.text());
    return element;
}

void deliver(const PollThreadContext& thread, const CmpiInstance& alert) try {
    DEBUG_LOG("Calling Try to deliver indication");
    DEBUG_LOG("Merolt_CNA_Provider::m_generateIndication: Delivering...");
    deliverAlert(thread, alert);
    DEBUG_LOG("Merolt_CNA_Provider::m_generateIndication: Delivered");
} catch (const abi::__forced_unwind&) {
    throw; // the server ends its thread
} catch (...) {
    DEBUG_LOG("Merolt_CNA_Provider::m_generateIndication: Error delivering indication");
}

void setMessage(CmpiInstance& alert, const char* portName, const char* serialNumber, const char* statusText) {
    FixedText<512> message;
    message.format("FC Port %s in %s %s status changed to %s", portName, "HBA", serialNumber, statusText);
    DEBUG_LOG("Merolt_CNA_HBAProvider::messageStr=%s", message.text());
    alert.setProperty("Message", CmpiData(message.text()));
    alert.setProperty("MessageArguments", CmpiData(stringArray({portName, "HBA", serialNumber, statusText})));
}

void rereadPorts(const Alarm& alarm) {
    DEBUG_LOG("m_generateIndication: deviceNum=%d, alarmType=%d, rsltParam=%d, strParam=%s...",
              static_cast<int>(alarm.deviceNumber), static_cast<int>(alarm.type), static_cast<int>(alarm.parameter),
              alarm.text.c_str());
    DEBUG_LOG("m_generateIndication: Detected Port Status changed. Reinitializing devices...");
    storage::clearFCPortList();
    storage::buildFCPortList();
}

} // namespace

const char* getStatusText(std::uint16_t status) {
    static constexpr const char* texts[] = {"Unknown",
                                            "Other",
                                            "OK",
                                            "Degraded",
                                            "Stressed",
                                            "Predicted Failure",
                                            "Error",
                                            "Non-Recoverable Error",
                                            "Starting",
                                            "Stopping",
                                            "Stopped",
                                            "In Service",
                                            "No Contact",
                                            "Lost Communication",
                                            "Aborted",
                                            "Dormant",
                                            "Supporting Entity in Error",
                                            "Completed",
                                            "Power Mode"};
    return status < std::size(texts) ? texts[status] : "Unknown";
}

void generatePortStatusIndication(const PollThreadContext& thread, const Alarm& alarm) {
    const Sighting first(alarm.deviceNumber);
    if (readStatus(first.device).status == first.listedStatus()) return;

    CmpiInstance alert = beginAlert("MeroltCNA_AlertIndication_AdapterStatusChange");
    const ElementText element = elementOf(first.record);
    alert.setProperty("AlertingManagedElement", CmpiData(element.text()));
    alert.setProperty("AlertingElementFormat", CmpiData(static_cast<CMPIUint16>(first.record ? 2 : 1)));
    alert.setProperty("AlertType", CmpiData(CMPIUint16{5}));

    // The device is looked at once more: what changed back in the meantime is not told.
    const Sighting second(alarm.deviceNumber);
    alert.setProperty("OwningEntity", CmpiData("Merolt"));
    alert.setProperty("MessageID", CmpiData("Core9"));
    FixedText<128> portName;
    FixedText<128> serialNumber;
    if (const FCPortEntry* record = second.fullRecord()) {
        portName = record->permanentAddress;
        serialNumber = record->serialNumber;
    }
    const PortStatus now = readStatusAloud(second.device);
    if (now.status == second.listedStatus()) return;

    rereadPorts(alarm); // records are gone from here on
    setMessage(alert, portName.text(), serialNumber.text(), getStatusText(now.status));
    FixedText<600> eventID;
    eventID.format("%s;%d", element.text(), 1);
    alert.setProperty("EventID", CmpiData(eventID.text()));
    alert.setProperty("PerceivedSeverity", CmpiData(now.severity));
    alert.setProperty("ProbableCause", CmpiData(CMPIUint16{66}));
    endAlert(alert);
    deliver(thread, alert);
    DEBUG_LOG("Returning from m_generateIndication...\n");
}

} // namespace merolt
