#include "classes/facts.h"

#include "classes/wrapper_access.h"
#include "inventory/fact_reader.h"
#include "inventory/fact_table.h"
#include "text/fixed_text.h"
#include "text/text.h"

#include "CmpiArray.h"
#include "CmpiBooleanData.h"
#include "CmpiData.h"

#include <bit>
#include <cstdint>
#include <iterator>
#include <vector>

namespace merolt {

namespace {

bool isListed(const char** properties, const char* name) {
    for (; *properties; ++properties) {
        if (equalsIgnoringCase(*properties, name)) return true;
    }
    return false;
}

/// Groups in which the class at that bit has a property.
constexpr std::uint32_t groupsOfBit(unsigned bit) {
    std::uint32_t groups = 0;
    for (const FactRow& row : fact_table::rows)
        groups |= (row.classes >> bit & 1U) != 0 ? std::uint32_t{row.group} : 0;
    return groups;
}
constexpr std::uint32_t groupsByBit[] = {groupsOfBit(0), groupsOfBit(1), groupsOfBit(2),
                                         groupsOfBit(3), groupsOfBit(4), groupsOfBit(5)};
static_assert(1U << (std::size(groupsByBit) - 1) == FactOfFCPortStatistics);

/// Groups in which the class has a property that the request wants, as bits.
std::uint32_t wantedGroups(FactClass cls, const char** properties) {
    if (!properties) return groupsByBit[std::countr_zero(static_cast<unsigned>(cls))];
    std::uint32_t groups = 0;
    for (const FactRow& row : fact_table::rows) {
        const bool isOfClass = (row.classes & cls) != 0;
        if (isOfClass && (groups & row.group) == 0 && isListed(properties, row.property)) groups |= row.group;
    }
    return groups;
}

CmpiArray listOf(const FactValues& values) {
    const bool isText = values.row->type == TavikFactText;
    const std::size_t count = isText ? values.texts.size() : values.numbers.size();
    CmpiArray array(static_cast<CMPICount>(count), isText ? CMPI_string : CMPI_uint64);
    for (CMPICount index = 0; index < count; ++index) {
        if (isText) {
            array[index] = newString(values.texts[index].c_str());
        } else {
            array[index] = CmpiData(CMPIUint64{values.numbers[index]});
        }
    }
    return array;
}

CmpiData valueOf(const FactValues& values) {
    if (values.row->count == FactCount::list) return CmpiData(listOf(values));
    if (values.row->type == TavikFactText) return CmpiData(values.texts.front().c_str());
    if (values.row->type == TavikFactTruth) return CmpiBooleanData(values.numbers.front() != 0);
    return CmpiData(CMPIUint64{values.numbers.front()});
}

void setAll(CmpiInstance& instance, const std::vector<FactValues>& facts) {
    for (const FactValues& values : facts)
        instance.setProperty(values.row->property, valueOf(values));
}

} // namespace

void setStorageFacts(CmpiInstance& instance, FactClass cls, const TAVIK_DeviceRecord* device, const char** properties) {
    if (!device || !offersFactsOfStoragePorts()) return;
    const std::uint32_t groups = wantedGroups(cls, properties);
    if (groups != 0) setAll(instance, factsOfStoragePort(device->handle, cls, groups));
}

void setEthernetFacts(CmpiInstance& instance, FactClass cls, const TAVIK_PortProperties* port,
                      const char** properties) {
    if (!port || !offersFactsOfEthernetPorts()) return;
    const std::uint32_t groups = wantedGroups(cls, properties);
    if (groups == 0) return;
    FixedText<sizeof(port->deviceName) + 1> deviceName;
    deviceName.assignField(port->deviceName, sizeof(port->deviceName));
    setAll(instance, factsOfEthernetPort(deviceName.text(), cls, groups));
}

} // namespace merolt
