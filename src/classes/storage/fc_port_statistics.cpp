#include "classes/storage/fc_port_statistics.h"

#include "classes/facts.h"
#include "classes/instance.h"
#include "classes/record_list.h"
#include "log/log.h"
#include "text/text.h"

namespace merolt::storage {

std::int32_t g_fcPortStatisticsCount = 0;
FCPortStatisticsEntry* g_fcPortStatisticsList = nullptr;

namespace {

RecordList<FCPortStatisticsEntry> records(g_fcPortStatisticsCount, g_fcPortStatisticsList);

const char* keys[] = {"InstanceID", nullptr};

const ListClass descriptor = {
    .name = "FCPortStatistics",
    .key = "InstanceID",
    .count = [] { return int{g_fcPortStatisticsCount}; },
    .keyText = [](int index) { return g_fcPortStatisticsList[index].instanceID.text(); },
    .makePath = makePath_FCPortStatistics,
    .makeInstance = makeInstance_FCPortStatistics,
    .valid = [](int index) { return g_fcPortStatisticsList[index].valid != 0; },
};

/// A counter of the class and the field of the record behind it; none for counters that always read 0.
struct Counter {
    const char* property;
    std::uint64_t FCPortStatisticsEntry::*field;
};

constexpr Counter counters[] = {
    {"LIPCount", &FCPortStatisticsEntry::lipCount},
    {"LinkFailures", &FCPortStatisticsEntry::linkFailures},
    {"LossOfSyncCounter", &FCPortStatisticsEntry::lossOfSync},
    {"LossOfSignalCounter", &FCPortStatisticsEntry::lossOfSignal},
    {"PrimitiveSeqProtocolErrCount", &FCPortStatisticsEntry::primitiveSeqProtocolErrors},
    {"CRCErrors", &FCPortStatisticsEntry::crcErrors},
    {"InvalidTransmissionWords", &FCPortStatisticsEntry::invalidTransmissionWords},
    {"IOCount", &FCPortStatisticsEntry::ioCount},
    {"MegabyteCount", &FCPortStatisticsEntry::megabyteCount},
    {"BytesTransmitted", nullptr},
    {"BytesReceived", nullptr},
    {"PacketsTransmitted", nullptr},
    {"PacketsReceived", nullptr},
    {"NOSCount", nullptr},
    {"ErrorFrames", nullptr},
    {"DumpedFrames", nullptr},
    {"FramesTooShort", nullptr},
    {"FramesTooLong", nullptr},
    {"AddressErrors", nullptr},
    {"BufferCreditNotProvided", nullptr},
    {"DelimiterErrors", nullptr},
    {"EncodingDisparityErrors", nullptr},
    {"LinkResetsReceived", nullptr},
    {"LinkResetsTransmitted", nullptr},
    {"MulticastFramesReceived", nullptr},
    {"MulticastFramesTransmitted", nullptr},
};

void copyCounters(const TAVIK_DeviceRecord* device, FCPortStatisticsEntry& port) {
    port.lipCount = device->lipCount;
    port.linkFailures = device->linkFailures;
    port.lossOfSync = device->lossOfSync;
    port.lossOfSignal = device->lossOfSignal;
    port.primitiveSeqProtocolErrors = device->primitiveSequenceErrors;
    port.crcErrors = device->crcErrors;
    port.invalidTransmissionWords = device->invalidTransmissionWords;
    port.ioCount = device->ioCount;
    port.megabyteCount = device->megabyteCount;
}

} // namespace

void createFCPortStatistics(TAVIK_DeviceRecord* device, int index) {
    DEBUG_LOG("Entering createFCPortStatistics, index = %d", index);
    FCPortStatisticsEntry& port = g_fcPortStatisticsList[index];
    const WorldWideNameText nodeName = formatWorldWideName(device->nodeName);
    port.elementName.assign(formatWorldWideName(device->portProperty.portName).view());
    port.instanceID.join({nodeName.view(), "_", port.elementName.view()});
    // A record starts with every counter at 0, and keeps that where the library cannot tell.
    if (TAVIK_RefreshDeviceStats(device) == 0) {
        copyCounters(device, port);
    } else {
        ERROR_LOG("Merolt_FC_FCPortStatistics ERROR in getting statistical data...");
    }
    port.device = device;
    port.valid = 1;
    DEBUG_LOG("Exiting  createFCPortStatistics\n");
}

void buildFCPortStatisticsList() { buildPerStorageFunction(records, createFCPortStatistics); }

void clearFCPortStatisticsList() { records.clear(); }

CmpiObjectPath makePath_FCPortStatistics(const char* className, const char* nameSpace, int index) {
    CmpiObjectPath path(nameSpace, className);
    path.setKey("InstanceID", CmpiData(g_fcPortStatisticsList[index].instanceID.text()));
    return path;
}

CmpiInstance makeInstance_FCPortStatistics(const char* className, const char* nameSpace, const char** properties,
                                           int index) {
    const FCPortStatisticsEntry& port = g_fcPortStatisticsList[index];
    CmpiInstance instance = newInstance(className, nameSpace, properties, keys);
    instance.setProperty("InstanceID", CmpiData(port.instanceID.text()));
    instance.setProperty("ElementName", CmpiData(port.elementName.text()));
    for (const Counter& counter : counters)
        instance.setProperty(counter.property, CmpiData(CMPIUint64{counter.field ? port.*counter.field : 0}));
    setStorageFacts(instance, FactOfFCPortStatistics, port.device, properties);
    return instance;
}

DEFINE_REQUEST_FUNCTIONS(FCPortStatistics, descriptor)

} // namespace merolt::storage
