// Merolt_FCHBA_FCPortStatistics: the counters of each storage function at the moment of the request, since the list
// is rebuilt for every request on the class.
#pragma once

#include "classes/list_class.h"
#include "inventory/tavik.h"
#include "text/fixed_text.h"

#include <cstdint>

namespace merolt::storage {

struct FCPortStatisticsEntry {
    std::uint8_t valid;         ///< 1 after createFCPortStatistics finished
    FixedText<128> instanceID;  ///< key: node name and port name
    FixedText<128> elementName; ///< port name
    std::uint64_t lipCount;
    std::uint64_t linkFailures;
    std::uint64_t lossOfSync;
    std::uint64_t lossOfSignal;
    std::uint64_t primitiveSeqProtocolErrors;
    std::uint64_t crcErrors;
    std::uint64_t invalidTransmissionWords;
    std::uint64_t ioCount;
    std::uint64_t megabyteCount;
    const TAVIK_DeviceRecord* device;
};

extern std::int32_t g_fcPortStatisticsCount;
extern FCPortStatisticsEntry* g_fcPortStatisticsList;

void buildFCPortStatisticsList();
void clearFCPortStatisticsList();
inline constexpr ClassList listOfFCPortStatistics = {buildFCPortStatisticsList, clearFCPortStatisticsList};
void createFCPortStatistics(TAVIK_DeviceRecord* device, int index);

CmpiObjectPath makePath_FCPortStatistics(const char* className, const char* nameSpace, int index);
CmpiInstance makeInstance_FCPortStatistics(const char* className, const char* nameSpace, const char** properties,
                                           int index);
DECLARE_REQUEST_FUNCTIONS(FCPortStatistics)

} // namespace merolt::storage
