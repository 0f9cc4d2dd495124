#include "inventory/chip.h"

#include "log/log.h"

#include <array>
#include <cstring>
#include <iterator>

namespace merolt {

namespace {

struct Chip {
    std::uint16_t pciDeviceId;
    int index;
};

constexpr Chip chips[] = {
    {0xA100, 0},  {0xA101, 1},  {0xA102, 2},  {0xA103, 3},  {0xA104, 4},  {0xA105, 5},  {0xA106, 6},
    {0xA107, 7},  {0xA110, 8},  {0xA111, 9},  {0xA112, 10}, {0xA113, 11}, {0xA114, 12}, {0xA115, 13},
    {0xA120, 14}, {0xA121, 15}, {0xA122, 16}, {0xA123, 17}, {0xA124, 18}, {0xA125, 19}, {0xA126, 20},
    {0xA127, 21}, {0xA128, 22}, {0xA129, 23}, {0xA130, 24}, {0xA131, 25}, {0xA132, 26}, {0xA133, 26},
};

constexpr std::uint16_t firstId = std::begin(chips)->pciDeviceId;
constexpr std::uint16_t lastId = std::rbegin(chips)->pciDeviceId;

/// The same by PCI device ID: every record of every list asks several times.
constexpr auto indexes = [] {
    std::array<int, lastId - firstId + 1> made{};
    for (int& index : made)
        index = unknownChipIndex;
    for (const Chip& chip : chips)
        made[chip.pciDeviceId - firstId] = chip.index;
    return made;
}();

} // namespace

int getChipIndex(const TAVIK_DeviceRecord* device) {
    if (!device) return 0;
    const std::uint16_t id = device->pciDeviceId;
    return id >= firstId && id <= lastId ? indexes[id - firstId] : unknownChipIndex;
}

bool chipHasVpdSerial(const TAVIK_DeviceRecord* device) { return getChipIndex(device) > 7; }

int getChipSpeedClass(const TAVIK_DeviceRecord* device) {
    if (!device) return 0;
    switch (device->pciDeviceId) {
    case 0xA112:
    case 0xA113:
        return 1;
    case 0xA110:
    case 0xA111:
        return 2;
    default:
        return 0;
    }
}

bool isConvergedFunction(const TAVIK_DeviceRecord* device) {
    const int index = getChipIndex(device);
    return index == 15 || index == 17 || index == 21 || index == 26;
}

bool serialNumberInRecord(const TAVIK_DeviceRecord* device) { return getChipSpeedClass(device) > 0; }

int GetDeviceMacAddress(const TAVIK_DeviceRecord* device, unsigned char* mac) {
    if (!device) return 1;
    std::memcpy(mac, device->eNodeMac, sizeof(device->eNodeMac));
    DEBUG_LOG("GetDeviceMacAddress: MAC Address=%02X:%02X:%02X:%02X:%02X:%02X", mac[0], mac[1], mac[2], mac[3], mac[4],
              mac[5]);
    return 0;
}

} // namespace merolt
