#include "classes/physical/mezzanine.h"

#include "log/log.h"

namespace merolt::physical {

namespace {

struct Subsystem {
    std::uint16_t vendorId;
    std::uint16_t firstDeviceId;
    std::uint16_t lastDeviceId;
    const char* detected;
};

#define DETECTED(what) what " (SSVID/SSDID = 0x%04x/0x%04x)"

// Tested in this order; device IDs run without gaps.
constexpr Subsystem mezzanines[] = {
    {0x1D5A, 0x0A01, 0x0A03, DETECTED("16G Mezzanine CNA/HBA detected")},
    {0x1D5A, 0x0A04, 0x0A0F, DETECTED("8G Mezzanine CNA/HBA detected")},
    {0x103C, 0x0A10, 0x0A15, DETECTED("8G Mezzanine CNA/HBA detected")},
    {0x1137, 0x0A16, 0x0A17, DETECTED("8G Mezzanine CNA/HBA detected")},
    {0x1028, 0x0A18, 0x0A18, DETECTED("8G Mezzanine CNA/HBA detected")},
    {0x1028, 0x0A19, 0x0A1B, DETECTED("Dell 8G Mezzanine CNA/HBA detected")},
    {0x1D5A, 0x0A1C, 0x0A24, DETECTED("Mezzanine HBA/FibreDown detected")},
    {0x0E11, 0x0A25, 0x0A27, DETECTED("Mezzanine HBA/FibreDown detected")},
    {0x103C, 0x0A28, 0x0A29, DETECTED("Mezzanine HBA/FibreDown detected")},
    {0x1D5A, 0x0A2A, 0x0A2C, DETECTED("Dell Yellowstone platform motherboard 2G")},
};

#undef DETECTED

} // namespace

int isMezzanineAdapter(const TAVIK_DeviceRecord* device) {
    if (!device) return 0;
    const std::uint16_t vendorId = device->pciSubsystemVendorId;
    const std::uint16_t deviceId = device->pciSubsystemDeviceId;
    for (const Subsystem& mezzanine : mezzanines) {
        if (vendorId != mezzanine.vendorId) continue;
        if (deviceId < mezzanine.firstDeviceId || deviceId > mezzanine.lastDeviceId) continue;
        DEBUG_LOG(mezzanine.detected, vendorId, deviceId);
        return 1;
    }
    return 0;
}

} // namespace merolt::physical
