// What a device's PCI ID tells about its chip. Most decisions about a device rest on the chip index.
#pragma once

#include "inventory/tavik.h"

namespace merolt {

constexpr int unknownChipIndex = 100;

/// 0 for a null device, 100 for an ID that is not in the table: an unknown chip counts as a modern one.
int getChipIndex(const TAVIK_DeviceRecord* device);

/// The serial number of such a chip stands in its vital product data, that of the others in the device record.
bool chipHasVpdSerial(const TAVIK_DeviceRecord* device);

/// 2 and 1 for the chips of the fast and the less fast four-gigabit class, else 0.
int getChipSpeedClass(const TAVIK_DeviceRecord* device);

/// A function that has an FCoE ENode MAC address beside its Fibre Channel names.
bool isConvergedFunction(const TAVIK_DeviceRecord* device);

/// PCI device IDs of chips whose serial number may be taken from the device record when no VPD can be read.
bool serialNumberInRecord(const TAVIK_DeviceRecord* device);

/// Copies the six bytes of the ENode MAC address. @return 0; 1 for a null device, and nothing is written.
int GetDeviceMacAddress(const TAVIK_DeviceRecord* device, unsigned char* mac);

} // namespace merolt
