// The lists of the storage side by the texts that tie their records together.
#pragma once

#include "associations/storage/key_match.h"

namespace merolt::association {

/// The port name at the end of a port's key.
inline constexpr KeyedList portsByName = {
    .count = &storage::g_fcPortCount,
    .text = [](int index) { return storage::g_fcPortList[index].deviceID.text(); },
    .key = "DeviceID",
    .cut = Cut::suffix,
};

/// The controller's serial number at the beginning of a port's key.
inline constexpr KeyedList portsByController = {
    .count = &storage::g_fcPortCount,
    .text = [](int index) { return storage::g_fcPortList[index].deviceID.text(); },
    .key = "DeviceID",
    .cut = Cut::prefix,
};

inline constexpr KeyedList statisticsByName = {
    .count = &storage::g_fcPortStatisticsCount,
    .text = [](int index) { return storage::g_fcPortStatisticsList[index].instanceID.text(); },
    .key = "InstanceID",
    .cut = Cut::suffix,
};

inline constexpr KeyedList groupsByName = {
    .count = &storage::g_logicalPortGroupCount,
    .text = [](int index) { return storage::g_logicalPortGroupList[index].instanceID.text(); },
    .key = "InstanceID",
    .cut = Cut::suffix,
};

inline constexpr KeyedList initiators = {
    .count = &storage::g_scsiEndpointHBACount,
    .text = [](int index) { return storage::g_scsiEndpointHBAList[index].name.text(); },
    .key = "Name",
};

inline constexpr KeyedList scsiControllers = {
    .count = &storage::g_scsiProtocolControllerCount,
    .text = [](int index) { return storage::g_scsiProtocolControllerList[index].deviceID.text(); },
    .key = "DeviceID",
};

inline constexpr KeyedList controllers = {
    .count = &storage::g_portControllerCount,
    .text = [](int index) { return storage::g_portControllerList[index].deviceID.text(); },
    .key = "DeviceID",
};

inline constexpr KeyedList products = {
    .count = &physical::g_productCount,
    .text = [](int index) { return physical::g_productList[index].identifyingNumber.text(); },
    .key = "IdentifyingNumber",
};

/// A package as a source is taken by its Tag and not by its serial number: where the Tag is a UUID, it finds nothing.
inline constexpr KeyedList packages = {
    .count = &physical::g_physicalPackageCount,
    .text = [](int index) { return physical::g_physicalPackageList[index].serialNumber.text(); },
    .key = "Tag",
};

} // namespace merolt::association
