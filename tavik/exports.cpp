// The calls with C linkage: thin, and nothing thrown leaves them.
#include "inventory/fact_calls.h"
#include "inventory/tavik.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "tavik/library.h"
#include "tavik/log.h"
#include "tavik/os_name.h"

namespace {

using tavik::Answer;
using tavik::Bytes;
using tavik::Library;
using tavik::Source;
using tavik::Status;

constexpr std::uint32_t logMaskOn = 31;
constexpr std::size_t transceiverPageSize = 256;

/** Lives until the process ends, whatever order its parts are torn down in: threads of the library may still run. */
Library& library() {
    static Library& only = *std::make_unique<Library>().release();
    return only;
}

/** Runs a call, writes its outcome to the log and turns exceptions into a status. */
template <typename Call>
Status guarded(const char* name, Call call) noexcept {
    try {
        const Status status = call();
        if (tavik::isLogging()) tavik::log(std::string(name) + ": " + std::to_string(status));
        return status;
    } catch (const std::exception& exception) {
        tavik::report(std::string(name) + ": " + exception.what());
        return tavik::statusSourceFailed;
    }
}

/** A call that puts a question to the source. @param arguments all pointers of the call, none of which may be null. */
template <typename Ask, typename... Pointers>
Status asked(const char* name, Ask ask, Pointers... arguments) noexcept {
    return guarded(name, [&]() -> Status {
        const bool lacksArgument = (!arguments || ...);
        if (lacksArgument) return tavik::statusInvalidArgument;
        const auto source = library().source();
        return source ? ask(*source) : tavik::statusNotInitialized;
    });
}

/** Passes the value of a good answer on. */
template <typename Value, typename Take>
Status taken(const Answer<Value>& answer, Take take) {
    if (answer.ok()) take(answer.value);
    return answer.status;
}

/** Copies what fits. @param size in: room in the buffer, out: bytes copied. */
void copyOut(const Bytes& bytes, void* buffer, std::uint32_t& size) {
    size = static_cast<std::uint32_t>(std::min<std::size_t>(bytes.size(), size));
    if (size > 0) std::memcpy(buffer, bytes.data(), size);
}

/** All or nothing. @param size in: room in the buffer, out: bytes of all facts. */
Status copyFacts(const Answer<tavik::Facts>& answer, std::uint32_t groups, void* buffer, std::uint32_t& size) {
    if (!answer.ok()) return answer.status;
    const Bytes encoded = tavik::encodeFacts(answer.value, groups);
    const bool fits = encoded.size() <= size;
    size = static_cast<std::uint32_t>(encoded.size());
    if (fits && !encoded.empty()) std::memcpy(buffer, encoded.data(), encoded.size());
    return fits ? tavik::statusOk : tavik::statusBufferTooSmall;
}

void handOutText(const std::string& value, char*& text, std::uint32_t& length) {
    text = library().handOuts().text(value);
    length = static_cast<std::uint32_t>(value.size());
}

struct IPBlock {
    explicit IPBlock(const tavik::IPConfiguration& configuration) {
        properties.ipv4 = tavik::makeIPAddress(configuration.ipv4);
        properties.ipv4Mask = tavik::makeIPAddress(configuration.ipv4Mask);
        properties.firstCount = fill(first, configuration.firstList);
        properties.secondCount = fill(second, configuration.secondList);
        properties.thirdCount = fill(third, configuration.thirdList);
        properties.firstList = first.empty() ? nullptr : first.data();
        properties.secondList = second.empty() ? nullptr : second.data();
        properties.thirdList = third.empty() ? nullptr : third.data();
    }

    static std::uint32_t fill(std::vector<TAVIK_IPAddress>& records, const std::vector<tavik::IPAddress>& addresses) {
        std::transform(addresses.begin(), addresses.end(), std::back_inserter(records), tavik::makeIPAddress);
        return static_cast<std::uint32_t>(records.size());
    }

    TAVIK_IPProperties properties{};
    std::vector<TAVIK_IPAddress> first, second, third;
};

TAVIK_IPProperties* handOutIPBlock(const tavik::IPConfiguration& configuration) {
    auto block = std::make_shared<IPBlock>(configuration);
    auto* properties = &block->properties;
    library().handOuts().keep(properties, std::move(block));
    return properties;
}

TAVIK_FCoELinkage* handOutLinkage(const std::vector<tavik::FCoELinkage>& linkage) {
    std::vector<TAVIK_FCoELinkage> records;
    std::transform(linkage.begin(), linkage.end(), std::back_inserter(records), tavik::makeFCoELinkage);
    return library().handOuts().array(records);
}

void copyPage(const Bytes& page, std::uint8_t* to) {
    std::memset(to, 0, transceiverPageSize);
    std::copy_n(page.begin(), std::min(page.size(), transceiverPageSize), to);
}

} // namespace

std::uint32_t TAVIK_Initialize(std::uint32_t logMask, std::uint32_t) {
    tavik::setLogging(logMask == logMaskOn);
    return guarded("TAVIK_Initialize", [] { return library().initialize(); });
}

std::uint32_t TAVIK_Uninitialize() {
    return guarded("TAVIK_Uninitialize", [] { return library().uninitialize(); });
}

TAVIK_AdapterList* TAVIK_GetAdapterList() { return library().adapterList(); }

std::uint32_t TAVIK_DidConfigChange() {
    // Not a status: what cannot be asked has not changed.
    return guarded("TAVIK_DidConfigChange", [] {
        const auto source = library().source();
        return Status(source && source->changed() ? 1 : 0);
    });
}

std::uint32_t TAVIK_ResetConfigChange() {
    return asked("TAVIK_ResetConfigChange", [](Source& source) {
        source.resetChanged();
        return tavik::statusOk;
    });
}

std::uint32_t TAVIK_UpdateBackupAdapterList() {
    return guarded("TAVIK_UpdateBackupAdapterList", [] { return library().updateBackup(); });
}

std::uint32_t TAVIK_SwapBackupToMainAdapterList() {
    return guarded("TAVIK_SwapBackupToMainAdapterList", [] { return library().swapBackup(); });
}

std::uint32_t TAVIK_RegisterAlarmNotificationCallback(TAVIK_AlarmCallback callback) {
    return guarded("TAVIK_RegisterAlarmNotificationCallback", [&] {
        if (!callback) return tavik::statusInvalidArgument;
        const auto alarms = library().alarms();
        if (!alarms) return tavik::statusNotInitialized;
        alarms->add(callback);
        return tavik::statusOk;
    });
}

std::uint32_t TAVIK_UnRegisterAlarmNotificationCallback(TAVIK_AlarmCallback callback) {
    return guarded("TAVIK_UnRegisterAlarmNotificationCallback", [&] {
        const auto alarms = library().alarms();
        return alarms ? alarms->remove(callback) : tavik::statusNotInitialized;
    });
}

std::uint32_t TAVIK_GetHbaDevicePortProperty(std::uint32_t handle, std::uint32_t, TAVIK_PortPropertyBlock* block) {
    return asked(
        "TAVIK_GetHbaDevicePortProperty",
        [&](Source& source) {
            return taken(source.portProperty(handle),
                         [&](const auto& property) { *block = tavik::makePortPropertyBlock(property); });
        },
        block);
}

std::uint32_t TAVIK_GetVpd(std::uint32_t handle, std::uint32_t, void* buffer, std::uint32_t* size) {
    return asked(
        "TAVIK_GetVpd",
        [&](Source& source) {
            return taken(source.vpd(handle), [&](const Bytes& bytes) { copyOut(bytes, buffer, *size); });
        },
        buffer, size);
}

std::uint32_t TAVIK_GetUUIDFromI2CVPD(TAVIK_DeviceRecord* device, char** text, std::uint32_t* size) {
    return asked(
        "TAVIK_GetUUIDFromI2CVPD",
        [&](Source& source) {
            return taken(source.uuid(device->handle), [&](const auto& value) { handOutText(value, *text, *size); });
        },
        device, text, size);
}

std::uint32_t TAVIK_RefreshDeviceStats(TAVIK_DeviceRecord* device) {
    return asked(
        "TAVIK_RefreshDeviceStats",
        [&](Source& source) {
            return taken(source.refreshStatistics(device->handle),
                         [&](const auto& statistics) { tavik::storeStatistics(statistics, *device); });
        },
        device);
}

std::uint32_t TAVIK_GetSFPData(TAVIK_DeviceRecord* device, void* buffer) {
    return asked(
        "TAVIK_GetSFPData",
        [&](Source& source) {
            return taken(source.storageTransceiver(device->handle), [&](const auto& transceiver) {
                copyPage(transceiver.pageA0, static_cast<std::uint8_t*>(buffer));
                copyPage(transceiver.pageA2, static_cast<std::uint8_t*>(buffer) + transceiverPageSize);
            });
        },
        device, buffer);
}

std::uint32_t TAVIK_GetOSName(char* buffer, std::uint32_t* size) {
    return guarded("TAVIK_GetOSName", [&] {
        if (!buffer || !size || *size == 0) return tavik::statusInvalidArgument;
        const auto name = tavik::osName();
        *size = static_cast<std::uint32_t>(std::min<std::size_t>(name.size(), *size - 1));
        std::memcpy(buffer, name.data(), *size);
        buffer[*size] = '\0';
        return tavik::statusOk;
    });
}

std::uint32_t TAVIK_GetLinkProperties(const char* deviceName, TAVIK_LinkProperties* link) {
    return asked(
        "TAVIK_GetLinkProperties",
        [&](Source& source) {
            return taken(source.link(deviceName),
                         [&](const auto& current) { *link = tavik::makeLinkProperties(current); });
        },
        deviceName, link);
}

std::uint32_t TAVIK_GetIPProperties(const char* deviceName, TAVIK_IPProperties** properties) {
    return asked(
        "TAVIK_GetIPProperties",
        [&](Source& source) {
            return taken(source.ipConfiguration(deviceName),
                         [&](const auto& configuration) { *properties = handOutIPBlock(configuration); });
        },
        deviceName, properties);
}

std::uint32_t TAVIK_GetFCoELinkage(const char* deviceName, TAVIK_FCoELinkage** linkage, std::uint32_t* count) {
    return asked(
        "TAVIK_GetFCoELinkage",
        [&](Source& source) {
            return taken(source.fcoeLinkage(deviceName), [&](const auto& entries) {
                *linkage = handOutLinkage(entries);
                *count = static_cast<std::uint32_t>(entries.size());
            });
        },
        deviceName, linkage, count);
}

std::uint32_t TAVIK_GetTransceiverDMIData(const char* deviceName, std::uint32_t* size, void* buffer) {
    return asked(
        "TAVIK_GetTransceiverDMIData",
        [&](Source& source) {
            return taken(source.nicTransceiver(deviceName),
                         [&](const auto& transceiver) { copyOut(transceiver.pageA0, buffer, *size); });
        },
        deviceName, size, buffer);
}

std::uint32_t TAVIK_GetMBIVersionString(TAVIK_DeviceRecord* device, char** text, std::uint32_t* length) {
    return asked(
        "TAVIK_GetMBIVersionString",
        [&](Source& source) {
            return taken(source.multiBootVersion(device->handle),
                         [&](const auto& value) { handOutText(value, *text, *length); });
        },
        device, text, length);
}

std::uint32_t tavik_facts_of_storage_port(std::uint32_t handle, std::uint32_t groups, void* buffer,
                                          std::uint32_t* size) {
    return asked(
        "tavik_facts_of_storage_port",
        [&](Source& source) { return copyFacts(source.storageFacts(handle, groups), groups, buffer, *size); }, buffer,
        size);
}

std::uint32_t tavik_facts_of_ethernet_port(const char* deviceName, std::uint32_t groups, void* buffer,
                                           std::uint32_t* size) {
    return asked(
        "tavik_facts_of_ethernet_port",
        [&](Source& source) { return copyFacts(source.nicFacts(deviceName, groups), groups, buffer, *size); },
        deviceName, buffer, size);
}

std::uint32_t TAVIK_UpdateFlash(std::uint32_t adapterId, const void* image, std::uintptr_t) {
    return asked(
        "TAVIK_UpdateFlash",
        [&](Source& source) {
            return source.updateFlash(adapterId, library().serialNumberOfAdapter(adapterId), image);
        },
        image);
}

std::uint32_t TAVIK_doOptionROMUpdate(TAVIK_DeviceRecord* device, const char* fileName, std::uintptr_t) {
    return asked(
        "TAVIK_doOptionROMUpdate",
        [&](Source& source) {
            const Status status =
                source.updateOptionRom(device->handle, library().serialNumberOfStorage(device->handle), fileName);
            if (status == tavik::statusOk) library().showVersions(device->handle);
            return status;
        },
        device, fileName);
}

std::uint32_t TAVIK_FreeMem(void* memory) {
    return guarded("TAVIK_FreeMem", [&] {
        if (!memory) return tavik::statusOk;
        const Status status = library().handOuts().giveBack(memory);
        static std::once_flag reported;
        if (status != tavik::statusOk)
            std::call_once(reported, [] { tavik::report("TAVIK_FreeMem: memory that is not the library's, ignored"); });
        return status;
    });
}
