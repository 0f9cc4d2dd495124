#include "fake_tavik.h"

#include <algorithm>
#include <cstring>

FakeTavik& FakeTavik::instance() {
    static FakeTavik fake;
    return fake;
}

void FakeTavik::reset() {
    setFleet({});
    const std::lock_guard guard(mutex);
    nextFleet.reset();
    backupTree.reset();
    changed = false;
    callLog.clear();
    blocks.clear();
    onGetLinkProperties = nullptr;
    onGetOSName = nullptr;
    afterGetIPProperties = nullptr;
    afterGetFCoELinkage = nullptr;
    onGetText = nullptr;
    onGetTransceiver = nullptr;
    onGetVpd = nullptr;
    onUpdateFlash = nullptr;
    onOptionRomUpdate = nullptr;
    onUpdateBackup = nullptr;
    onInitialize = nullptr;
    alarmCallback = nullptr;
}

void FakeTavik::setFleet(tavik::Fleet next) {
    const std::lock_guard guard(mutex);
    fleet = std::move(next);
    mainTree = std::make_unique<tavik::Tree>(fleet);
}

void FakeTavik::setNextFleet(tavik::Fleet next) {
    const std::lock_guard guard(mutex);
    nextFleet = std::move(next);
    changed = true;
}

namespace {

/// The first function of the kind that the predicate takes; null if there is none.
template <class Function, class Predicate>
Function* find(tavik::Fleet& fleet, Predicate&& predicate) {
    Function* found = nullptr;
    if (!fleet.cards) return found;
    for (tavik::Card& card : *fleet.cards) {
        tavik::forEachFunction(card, [&](auto& function) {
            if constexpr (std::is_same_v<std::decay_t<decltype(function)>, Function>) {
                if (!found && predicate(function)) found = &function;
            }
        });
    }
    return found;
}

} // namespace

tavik::StorageFunction& FakeTavik::storage(std::uint32_t handle) {
    return *const_cast<tavik::StorageFunction*>(findStorage(handle));
}

tavik::NicFunction& FakeTavik::nic(const std::string& deviceName) {
    return *const_cast<tavik::NicFunction*>(findNic(deviceName.c_str()));
}

const tavik::StorageFunction* FakeTavik::findStorage(std::uint32_t handle) const {
    return find<tavik::StorageFunction>(const_cast<tavik::Fleet&>(fleet),
                                        [&](const auto& function) { return function.handle == handle; });
}

const tavik::NicFunction* FakeTavik::findNic(const char* deviceName) const {
    return find<tavik::NicFunction>(const_cast<tavik::Fleet&>(fleet),
                                    [&](const auto& function) { return function.deviceName == deviceName; });
}

std::vector<std::string> FakeTavik::calls() {
    const std::lock_guard guard(mutex);
    return callLog;
}

std::size_t FakeTavik::callCount(const std::string& name) {
    const std::vector<std::string> all = calls();
    return static_cast<std::size_t>(std::count(all.begin(), all.end(), name));
}

void FakeTavik::clearCalls() {
    const std::lock_guard guard(mutex);
    callLog.clear();
}

void FakeTavik::raiseAlarm(std::uint32_t deviceNumber, std::uint32_t type, std::uint32_t parameter, const char* text) {
    TAVIK_AlarmCallback callback = nullptr;
    {
        const std::lock_guard guard(mutex);
        callback = alarmCallback;
    }
    if (callback) callback(deviceNumber, type, parameter, text);
}

std::size_t FakeTavik::outstandingBlocks() {
    const std::lock_guard guard(mutex);
    return blocks.size();
}

void FakeTavik::record(std::string call) {
    const std::lock_guard guard(mutex);
    callLog.push_back(std::move(call));
}

void* FakeTavik::handOut(std::size_t size) {
    const std::lock_guard guard(mutex);
    auto block = std::make_unique<char[]>(size);
    void* address = block.get();
    blocks[address].push_back(std::move(block));
    return address;
}

/// What the C functions do; a struct of its own so that it may look inside.
struct FakeTavikCalls {
    static FakeTavik& fake(const char* call) {
        FakeTavik::instance().record(call);
        return FakeTavik::instance();
    }

    static std::uint32_t swap() {
        FakeTavik& self = fake("TAVIK_SwapBackupToMainAdapterList");
        const std::lock_guard guard(self.mutex);
        if (!self.backupTree) return 0;
        self.mainTree = std::move(self.backupTree);
        self.fleet = std::move(self.backupFleet);
        return 0;
    }

    static std::uint32_t updateBackup() {
        FakeTavik& self = fake("TAVIK_UpdateBackupAdapterList");
        if (self.onUpdateBackup) self.onUpdateBackup();
        const std::lock_guard guard(self.mutex);
        // Queries are answered from the main tree's fleet meanwhile, by other threads too.
        self.backupFleet = self.nextFleet ? std::move(*self.nextFleet) : self.fleet;
        self.nextFleet.reset();
        self.backupTree = std::make_unique<tavik::Tree>(self.backupFleet);
        return 0;
    }

    static std::uint32_t text(const std::optional<std::string>& value, char** out, std::uint32_t* size) {
        if (const auto& onGetText = FakeTavik::instance().onGetText) return onGetText(out, size);
        if (!value) return 1;
        *out = static_cast<char*>(FakeTavik::instance().handOut(value->size() + 1));
        std::memcpy(*out, value->c_str(), value->size() + 1);
        *size = static_cast<std::uint32_t>(value->size());
        return 0;
    }

    static void copyAddress(const tavik::IPAddress& from, TAVIK_IPAddress& to) {
        std::copy(from.bytes.begin(), from.bytes.end(), to.address);
        to.family = from.family;
    }

    static void copyList(const std::vector<tavik::IPAddress>& from, std::uint32_t& count, TAVIK_IPAddress*& list,
                         void* owner) {
        count = static_cast<std::uint32_t>(from.size());
        if (from.empty()) return;
        auto block = std::make_unique<char[]>(from.size() * sizeof(TAVIK_IPAddress));
        list = reinterpret_cast<TAVIK_IPAddress*>(block.get());
        for (std::size_t index = 0; index < from.size(); ++index)
            copyAddress(from[index], list[index]);
        FakeTavik& self = FakeTavik::instance();
        const std::lock_guard guard(self.mutex);
        self.blocks[owner].push_back(std::move(block));
    }

    static std::uint32_t ipProperties(const char* deviceName, TAVIK_IPProperties** properties) {
        FakeTavik& self = fake("TAVIK_GetIPProperties");
        const tavik::NicFunction* nic = self.findNic(deviceName);
        if (!nic || !nic->ip) return 1;
        if (nic->failures.ip) return nic->failures.ip;
        auto* block = static_cast<TAVIK_IPProperties*>(self.handOut(sizeof(TAVIK_IPProperties)));
        std::memset(static_cast<void*>(block), 0, sizeof(*block));
        copyAddress(nic->ip->ipv4, block->ipv4);
        copyAddress(nic->ip->ipv4Mask, block->ipv4Mask);
        std::uint32_t counts[3] = {};
        TAVIK_IPAddress* lists[3] = {};
        copyList(nic->ip->firstList, counts[0], lists[0], block);
        copyList(nic->ip->secondList, counts[1], lists[1], block);
        copyList(nic->ip->thirdList, counts[2], lists[2], block);
        block->firstCount = counts[0];
        block->secondCount = counts[1];
        block->thirdCount = counts[2];
        block->firstList = lists[0];
        block->secondList = lists[1];
        block->thirdList = lists[2];
        if (self.afterGetIPProperties) self.afterGetIPProperties(*block);
        *properties = block;
        return 0;
    }

    static std::uint32_t linkage(const char* deviceName, TAVIK_FCoELinkage** linkage, std::uint32_t* count) {
        FakeTavik& self = fake("TAVIK_GetFCoELinkage");
        const tavik::NicFunction* nic = self.findNic(deviceName);
        if (!nic) return 1;
        if (nic->failures.fcoeLinkage) return nic->failures.fcoeLinkage;
        *count = static_cast<std::uint32_t>(nic->fcoeLinkage.size());
        if (nic->fcoeLinkage.empty()) return 0;
        auto* list = static_cast<TAVIK_FCoELinkage*>(self.handOut(*count * sizeof(TAVIK_FCoELinkage)));
        std::memset(static_cast<void*>(list), 0, *count * sizeof(TAVIK_FCoELinkage));
        for (std::size_t index = 0; index < nic->fcoeLinkage.size(); ++index) {
            const tavik::FCoELinkage& from = nic->fcoeLinkage[index];
            std::copy(from.wwn.begin(), from.wwn.end(), list[index].wwn);
            std::copy(from.fcPortId.begin(), from.fcPortId.end(), list[index].fcPortId);
            std::copy(from.eNodeMac.begin(), from.eNodeMac.end(), list[index].eNodeMac);
        }
        *linkage = list;
        if (self.afterGetFCoELinkage) self.afterGetFCoELinkage(*linkage, *count);
        return 0;
    }

    static std::uint32_t transceiver(const char* deviceName, std::uint32_t* size, void* buffer) {
        FakeTavik& self = fake("TAVIK_GetTransceiverDMIData");
        if (self.onGetTransceiver) return self.onGetTransceiver(deviceName, size, buffer);
        const tavik::NicFunction* nic = self.findNic(deviceName);
        if (!nic || !nic->transceiver) return 1;
        if (nic->failures.transceiver) return nic->failures.transceiver;
        const tavik::Bytes& page = nic->transceiver->pageA0;
        *size = std::min<std::uint32_t>(*size, static_cast<std::uint32_t>(page.size()));
        std::copy_n(page.begin(), *size, static_cast<std::uint8_t*>(buffer));
        return 0;
    }

    static std::uint32_t portProperty(std::uint32_t handle, TAVIK_PortPropertyBlock* block) {
        FakeTavik& self = fake("TAVIK_GetHbaDevicePortProperty");
        const tavik::StorageFunction* function = self.findStorage(handle);
        if (!function) return 1;
        if (function->failures.portProperty) return function->failures.portProperty;
        *block = TAVIK_PortPropertyBlock{};
        std::copy(function->property.portName.begin(), function->property.portName.end(), block->portName);
        block->portType = function->property.portType;
        block->portState = function->property.state;
        block->speedCode = function->property.speedCode;
        block->transceiverKind = function->property.transceiverKind;
        return 0;
    }

    static std::uint32_t vpd(std::uint32_t handle, void* buffer, std::uint32_t* size) {
        FakeTavik& self = fake("TAVIK_GetVpd");
        if (self.onGetVpd) return self.onGetVpd(handle, buffer, size);
        const tavik::StorageFunction* function = self.findStorage(handle);
        if (!function || !function->vpd) return 1;
        if (function->failures.vpd) return function->failures.vpd;
        *size = std::min<std::uint32_t>(*size, static_cast<std::uint32_t>(function->vpd->size()));
        std::copy_n(function->vpd->begin(), *size, static_cast<std::uint8_t*>(buffer));
        return 0;
    }

    static std::uint32_t sfpData(TAVIK_DeviceRecord* device, void* buffer) {
        FakeTavik& self = fake("TAVIK_GetSFPData");
        const tavik::StorageFunction* function = self.findStorage(device->handle);
        if (!function || !function->transceiver) return 1;
        if (function->failures.transceiver) return function->failures.transceiver;
        static constexpr std::size_t pageSize = 256;
        const auto copyPage = [&](const tavik::Bytes& page, void* target) {
            std::memset(target, 0, pageSize);
            const std::size_t length = std::min(page.size(), pageSize);
            std::copy_n(page.begin(), length, static_cast<std::uint8_t*>(target));
        };
        copyPage(function->transceiver->pageA0, buffer);
        copyPage(function->transceiver->pageA2, static_cast<char*>(buffer) + pageSize);
        return 0;
    }

    static std::uint32_t refreshStatistics(TAVIK_DeviceRecord* device) {
        FakeTavik& self = fake("TAVIK_RefreshDeviceStats");
        const tavik::StorageFunction* function = self.findStorage(device->handle);
        if (!function) return 1;
        if (function->failures.statistics) return function->failures.statistics;
        const tavik::Statistics& from = function->statistics;
        device->ioCount = from.ioCount;
        device->megabyteCount = from.megabyteCount;
        device->lipCount = from.lipCount;
        device->linkFailures = from.linkFailures;
        device->lossOfSync = from.lossOfSync;
        device->lossOfSignal = from.lossOfSignal;
        device->primitiveSequenceErrors = from.primitiveSequenceErrors;
        device->invalidTransmissionWords = from.invalidTransmissionWords;
        device->crcErrors = from.crcErrors;
        return 0;
    }

    static std::uint32_t linkProperties(const char* deviceName, TAVIK_LinkProperties* link) {
        FakeTavik& self = fake("TAVIK_GetLinkProperties");
        if (self.onGetLinkProperties) return self.onGetLinkProperties(deviceName, link);
        const tavik::NicFunction* nic = self.findNic(deviceName);
        if (!nic) return 1;
        if (nic->failures.link) return nic->failures.link;
        *link = TAVIK_LinkProperties{};
        link->speed = nic->link.speed;
        link->state = nic->link.state;
        return 0;
    }

    static std::uint32_t osName(char* buffer, std::uint32_t* size) {
        FakeTavik& self = fake("TAVIK_GetOSName");
        if (self.onGetOSName) return self.onGetOSName(buffer, size);
        const std::string name = "Test OS 1.0";
        std::memcpy(buffer, name.c_str(), name.size() + 1);
        *size = static_cast<std::uint32_t>(name.size());
        return 0;
    }

    static TAVIK_AdapterList* list() {
        FakeTavik& self = fake("TAVIK_GetAdapterList");
        return self.mainTree ? self.mainTree->list() : nullptr;
    }

    static std::uint32_t release(void* memory) {
        FakeTavik& self = fake("TAVIK_FreeMem");
        const std::lock_guard guard(self.mutex);
        return self.blocks.erase(memory) == 1 ? 0 : 1;
    }

    static std::uint32_t didChange() {
        FakeTavik& self = fake("TAVIK_DidConfigChange");
        const std::lock_guard guard(self.mutex);
        return self.changed ? 1 : 0;
    }

    static std::uint32_t resetChange() {
        FakeTavik& self = fake("TAVIK_ResetConfigChange");
        const std::lock_guard guard(self.mutex);
        self.changed = false;
        return 0;
    }

    static std::uint32_t setCallback(const char* call, TAVIK_AlarmCallback callback) {
        FakeTavik& self = fake(call);
        const std::lock_guard guard(self.mutex);
        self.alarmCallback = callback;
        return 0;
    }

    static std::uint32_t initialize(std::uint32_t mask) {
        FakeTavik& self = fake(("TAVIK_Initialize(" + std::to_string(mask) + ")").c_str());
        if (self.onInitialize) self.onInitialize();
        return 0;
    }

    static std::uint32_t updateFlash(std::uint32_t adapterId, const void* image, std::uintptr_t reserved) {
        FakeTavik& self = fake("TAVIK_UpdateFlash");
        return self.onUpdateFlash && reserved == 0 ? self.onUpdateFlash(adapterId, image) : 1;
    }

    static std::uint32_t updateOptionRom(TAVIK_DeviceRecord* device, const char* fileName, std::uintptr_t reserved) {
        FakeTavik& self = fake("TAVIK_doOptionROMUpdate");
        return self.onOptionRomUpdate && reserved == 0 ? self.onOptionRomUpdate(device, fileName) : 1;
    }

    static std::uint32_t uuid(TAVIK_DeviceRecord* device, char** out, std::uint32_t* size) {
        const tavik::StorageFunction* function = fake("TAVIK_GetUUIDFromI2CVPD").findStorage(device->handle);
        if (!function) return 1;
        return function->failures.uuid ? function->failures.uuid : text(function->uuid, out, size);
    }

    static std::uint32_t multiBootVersion(TAVIK_DeviceRecord* device, char** out, std::uint32_t* size) {
        const tavik::StorageFunction* function = fake("TAVIK_GetMBIVersionString").findStorage(device->handle);
        if (!function) return 1;
        if (function->failures.multiBootVersion) return function->failures.multiBootVersion;
        return text(function->multiBootVersion, out, size);
    }
};

// clang-format off
std::uint32_t TAVIK_Initialize(std::uint32_t mask, std::uint32_t) { return FakeTavikCalls::initialize(mask); }
std::uint32_t TAVIK_Uninitialize() { FakeTavikCalls::fake("TAVIK_Uninitialize"); return 0; }
TAVIK_AdapterList* TAVIK_GetAdapterList() { return FakeTavikCalls::list(); }
std::uint32_t TAVIK_DidConfigChange() { return FakeTavikCalls::didChange(); }
std::uint32_t TAVIK_ResetConfigChange() { return FakeTavikCalls::resetChange(); }
std::uint32_t TAVIK_UpdateBackupAdapterList() { return FakeTavikCalls::updateBackup(); }
std::uint32_t TAVIK_SwapBackupToMainAdapterList() { return FakeTavikCalls::swap(); }
std::uint32_t TAVIK_RegisterAlarmNotificationCallback(TAVIK_AlarmCallback callback) { return FakeTavikCalls::setCallback("TAVIK_RegisterAlarmNotificationCallback", callback); }
std::uint32_t TAVIK_UnRegisterAlarmNotificationCallback(TAVIK_AlarmCallback) { return FakeTavikCalls::setCallback("TAVIK_UnRegisterAlarmNotificationCallback", nullptr); }
std::uint32_t TAVIK_GetHbaDevicePortProperty(std::uint32_t handle, std::uint32_t, TAVIK_PortPropertyBlock* block) { return FakeTavikCalls::portProperty(handle, block); }
std::uint32_t TAVIK_GetVpd(std::uint32_t handle, std::uint32_t, void* buffer, std::uint32_t* size) { return FakeTavikCalls::vpd(handle, buffer, size); }
std::uint32_t TAVIK_GetUUIDFromI2CVPD(TAVIK_DeviceRecord* device, char** text, std::uint32_t* size) { return FakeTavikCalls::uuid(device, text, size); }
std::uint32_t TAVIK_RefreshDeviceStats(TAVIK_DeviceRecord* device) { return FakeTavikCalls::refreshStatistics(device); }
std::uint32_t TAVIK_GetSFPData(TAVIK_DeviceRecord* device, void* buffer) { return FakeTavikCalls::sfpData(device, buffer); }
std::uint32_t TAVIK_GetOSName(char* buffer, std::uint32_t* size) { return FakeTavikCalls::osName(buffer, size); }
std::uint32_t TAVIK_GetLinkProperties(const char* deviceName, TAVIK_LinkProperties* link) { return FakeTavikCalls::linkProperties(deviceName, link); }
std::uint32_t TAVIK_GetIPProperties(const char* deviceName, TAVIK_IPProperties** properties) { return FakeTavikCalls::ipProperties(deviceName, properties); }
std::uint32_t TAVIK_GetFCoELinkage(const char* deviceName, TAVIK_FCoELinkage** linkage, std::uint32_t* count) { return FakeTavikCalls::linkage(deviceName, linkage, count); }
std::uint32_t TAVIK_GetTransceiverDMIData(const char* deviceName, std::uint32_t* size, void* buffer) { return FakeTavikCalls::transceiver(deviceName, size, buffer); }
std::uint32_t TAVIK_GetMBIVersionString(TAVIK_DeviceRecord* device, char** text, std::uint32_t* length) { return FakeTavikCalls::multiBootVersion(device, text, length); }
std::uint32_t TAVIK_UpdateFlash(std::uint32_t adapterId, const void* image, std::uintptr_t reserved) { return FakeTavikCalls::updateFlash(adapterId, image, reserved); }
std::uint32_t TAVIK_doOptionROMUpdate(TAVIK_DeviceRecord* device, const char* fileName, std::uintptr_t reserved) { return FakeTavikCalls::updateOptionRom(device, fileName, reserved); }
std::uint32_t TAVIK_FreeMem(void* memory) { return FakeTavikCalls::release(memory); }
// clang-format on
