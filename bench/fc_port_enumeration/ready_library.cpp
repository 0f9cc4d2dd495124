#include "ready_library.h"

#include "inventory/tavik.h"
#include "tavik/tree.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

constexpr std::uint32_t notAnswered = 1;

std::unique_ptr<tavik::Tree> tree;
tavik::Bytes vpdBlock;

} // namespace

void setReadyFleet(const tavik::Fleet& fleet, const tavik::Bytes& vpd) {
    tree = std::make_unique<tavik::Tree>(fleet);
    vpdBlock = vpd;
}

std::uint32_t TAVIK_Initialize(std::uint32_t, std::uint32_t) { return 0; }
std::uint32_t TAVIK_Uninitialize() { return 0; }
TAVIK_AdapterList* TAVIK_GetAdapterList() { return tree ? tree->list() : nullptr; }
std::uint32_t TAVIK_DidConfigChange() { return 0; }
std::uint32_t TAVIK_ResetConfigChange() { return 0; }
std::uint32_t TAVIK_UpdateBackupAdapterList() { return 0; }
std::uint32_t TAVIK_SwapBackupToMainAdapterList() { return 0; }
std::uint32_t TAVIK_RegisterAlarmNotificationCallback(TAVIK_AlarmCallback) { return 0; }
std::uint32_t TAVIK_UnRegisterAlarmNotificationCallback(TAVIK_AlarmCallback) { return 0; }

// The block is as the tree laid it out.
std::uint32_t TAVIK_GetHbaDevicePortProperty(std::uint32_t, std::uint32_t, TAVIK_PortPropertyBlock*) { return 0; }

std::uint32_t TAVIK_GetVpd(std::uint32_t, std::uint32_t, void* buffer, std::uint32_t* size) {
    *size = std::min(*size, static_cast<std::uint32_t>(vpdBlock.size()));
    std::memcpy(buffer, vpdBlock.data(), *size);
    return 0;
}

std::uint32_t TAVIK_GetUUIDFromI2CVPD(TAVIK_DeviceRecord*, char**, std::uint32_t*) { return notAnswered; }
std::uint32_t TAVIK_RefreshDeviceStats(TAVIK_DeviceRecord*) { return notAnswered; }
std::uint32_t TAVIK_GetSFPData(TAVIK_DeviceRecord*, void*) { return notAnswered; }
std::uint32_t TAVIK_GetOSName(char*, std::uint32_t*) { return notAnswered; }
std::uint32_t TAVIK_GetLinkProperties(const char*, TAVIK_LinkProperties*) { return notAnswered; }
std::uint32_t TAVIK_GetIPProperties(const char*, TAVIK_IPProperties**) { return notAnswered; }
std::uint32_t TAVIK_GetFCoELinkage(const char*, TAVIK_FCoELinkage**, std::uint32_t*) { return notAnswered; }
std::uint32_t TAVIK_GetTransceiverDMIData(const char*, std::uint32_t*, void*) { return notAnswered; }
std::uint32_t TAVIK_GetMBIVersionString(TAVIK_DeviceRecord*, char**, std::uint32_t*) { return notAnswered; }
std::uint32_t TAVIK_UpdateFlash(std::uint32_t, const void*, std::uintptr_t) { return notAnswered; }
std::uint32_t TAVIK_doOptionROMUpdate(TAVIK_DeviceRecord*, const char*, std::uintptr_t) { return notAnswered; }
std::uint32_t TAVIK_FreeMem(void*) { return 0; }
