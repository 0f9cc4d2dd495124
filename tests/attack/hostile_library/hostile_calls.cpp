// The library's calls under their own names, answered from a hostile tree.
#include "hostile_tree.h"

#include "inventory/fact_calls.h"
#include "tavik/vpd.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <set>
#include <string_view>
#include <thread>

namespace {

constexpr std::uint32_t failed = 5;

std::unique_ptr<HostileTree> served;
TAVIK_AlarmCallback alarmCallback = nullptr;
unsigned listCalls = 0;

// Requests and the polling thread's questions about changes may come at once.
std::mutex blocksMutex;
std::set<void*> blocks;
long strangers = 0;

/// Exactly that many bytes, so that a read past them is seen by whoever watches memory.
void* handOut(std::size_t size) {
    void* block = std::malloc(size);
    const std::lock_guard guard(blocksMutex);
    blocks.insert(block);
    return block;
}

HostileTree& tree() {
    if (!served) {
        const char* scenario = std::getenv("TAVIK_HOSTILE");
        try {
            served = hostileTree(std::string(scenario ? scenario : ""));
        } catch (const std::exception& error) {
            std::fprintf(stderr, "TAVIK_HOSTILE: %s\n", error.what());
            std::abort();
        }
    }
    return *served;
}

/// What every call does first. @return whether it is to fail.
bool begin(const char* call) {
    const Answers& answers = tree().answers;
    if (answers.delayMilliseconds > 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(answers.delayMilliseconds));
    if (answers.growsAndShrinks) tree().breathe();
    return answers.failing.count(call) > 0 || answers.failing.count("all") > 0;
}

std::uint32_t handOutText(const char* call, const char* text, char** out, std::uint32_t* length) {
    if (begin(call)) return failed;
    const Answers& answers = tree().answers;
    if (answers.isNullOnSuccess) return 0;
    const std::size_t size = std::strlen(text);
    *out = static_cast<char*>(handOut(size + (answers.hasTextsWithoutEnd ? 0 : 1)));
    std::memcpy(*out, text, size);
    if (!answers.hasTextsWithoutEnd) (*out)[size] = '\0';
    *length = static_cast<std::uint32_t>(size);
    return 0;
}

/// A buffer of the caller's: all of it where texts have no end. @return the bytes told.
std::uint32_t fillBuffer(void* buffer, std::uint32_t size, std::string_view content) {
    const Answers& answers = tree().answers;
    if (answers.hasTextsWithoutEnd) {
        std::memset(buffer, 'X', size);
        return size;
    }
    std::memset(buffer, 0, size);
    std::memcpy(buffer, content.data(), std::min<std::size_t>(size, content.size()));
    return answers.hasWildCounts ? 0xFFFFFFFF : static_cast<std::uint32_t>(content.size());
}

std::string transceiverPages() {
    std::string pages(512, ' ');
    std::memcpy(pages.data() + 20, "VENDOR", 6);
    std::memcpy(pages.data() + 68, "SERIAL", 6);
    return pages;
}

/// Two facts, the second of which lies about its size in one of several ways.
std::string factsAnswer(std::uint32_t groups) {
    static std::uint32_t asked = 0;
    constexpr std::uint32_t lies[] = {0, 7, 0x7FFFFFFF, 0xFFFFFFFF};
    const std::string name = "interfaceName";
    std::string bytes;
    for (const bool isLie : {false, tree().answers.hasNoLists}) {
        TavikFactHeader header{static_cast<std::uint32_t>(sizeof header + name.size() + 5), TavikFactText,
                               static_cast<std::uint16_t>(name.size())};
        if (isLie) header.size = lies[(asked++ + groups) % 4];
        bytes.append(reinterpret_cast<const char*>(&header), sizeof header).append(name).append("host7");
    }
    return bytes;
}

std::uint32_t answerFacts(const char* call, std::uint32_t groups, void* buffer, std::uint32_t* size) {
    if (begin(call)) return failed;
    if (tree().answers.isNullOnSuccess) return 0;
    *size = fillBuffer(buffer, *size, factsAnswer(groups));
    return 0;
}

void raiseAlarms() {
    static const char endless[] = {'n', 'o', '\n', '\x1b', '[', '2', 'J', '\0'};
    for (std::uint32_t number = 0; number < 8; ++number) {
        alarmCallback(number, number % 2, 0xFFFFFFFF, endless);
        alarmCallback(0xFFFFFFFF - number, 0x80000000, 0, nullptr);
    }
}

} // namespace

void serve(std::unique_ptr<HostileTree> next) { served = std::move(next); }

long outstandingBlocks() {
    const std::lock_guard guard(blocksMutex);
    return static_cast<long>(blocks.size());
}

long strangeReturns() {
    const std::lock_guard guard(blocksMutex);
    return strangers;
}

// For a program that loaded the library by its name.
extern "C" __attribute__((visibility("default"))) long hostileOutstandingBlocks() { return outstandingBlocks(); }
extern "C" __attribute__((visibility("default"))) long hostileStrangeReturns() { return strangeReturns(); }

std::uint32_t TAVIK_Initialize(std::uint32_t, std::uint32_t) { return begin("TAVIK_Initialize") ? failed : 0; }

std::uint32_t TAVIK_Uninitialize() { return begin("TAVIK_Uninitialize") ? failed : 0; }

TAVIK_AdapterList* TAVIK_GetAdapterList() {
    tree().beginReading();
    if (begin("TAVIK_GetAdapterList")) return nullptr;
    if (tree().answers.hasNoList && ++listCalls % 2 == 0) return nullptr;
    return tree().list();
}

std::uint32_t TAVIK_DidConfigChange() { return 0; }
std::uint32_t TAVIK_ResetConfigChange() { return 0; }
std::uint32_t TAVIK_UpdateBackupAdapterList() { return begin("TAVIK_UpdateBackupAdapterList") ? failed : 0; }
std::uint32_t TAVIK_SwapBackupToMainAdapterList() { return begin("TAVIK_SwapBackupToMainAdapterList") ? failed : 0; }

std::uint32_t TAVIK_RegisterAlarmNotificationCallback(TAVIK_AlarmCallback callback) {
    alarmCallback = callback;
    if (tree().answers.raisesAlarms) raiseAlarms();
    return begin("TAVIK_RegisterAlarmNotificationCallback") ? failed : 0;
}

std::uint32_t TAVIK_UnRegisterAlarmNotificationCallback(TAVIK_AlarmCallback) {
    alarmCallback = nullptr;
    return begin("TAVIK_UnRegisterAlarmNotificationCallback") ? failed : 0;
}

std::uint32_t TAVIK_GetHbaDevicePortProperty(std::uint32_t handle, std::uint32_t, TAVIK_PortPropertyBlock* block) {
    if (begin("TAVIK_GetHbaDevicePortProperty")) return failed;
    if (tree().answers.raisesAlarms && alarmCallback) alarmCallback(handle, 0, 0, "state");
    std::memset(static_cast<void*>(block), tree().answers.hasTextsWithoutEnd ? 0xFF : static_cast<int>(handle & 0xFF),
                sizeof(*block));
    return 0;
}

std::uint32_t TAVIK_GetVpd(std::uint32_t, std::uint32_t, void* buffer, std::uint32_t* size) {
    if (begin("TAVIK_GetVpd")) return failed;
    const tavik::Bytes block = tavik::encodeVpd("Adapter", {{"SN", "S1"}, {"V9", "010203"}, {"FN", "FRU"}});
    *size = fillBuffer(buffer, *size, {reinterpret_cast<const char*>(block.data()), block.size()});
    return 0;
}

std::uint32_t TAVIK_GetUUIDFromI2CVPD(TAVIK_DeviceRecord*, char** text, std::uint32_t* size) {
    return handOutText("TAVIK_GetUUIDFromI2CVPD", "00112233-4455", text, size);
}

std::uint32_t TAVIK_GetMBIVersionString(TAVIK_DeviceRecord*, char** text, std::uint32_t* length) {
    return handOutText("TAVIK_GetMBIVersionString", "V:2.01.37,D:09142012,A:Y,T:M", text, length);
}

std::uint32_t TAVIK_RefreshDeviceStats(TAVIK_DeviceRecord* device) {
    if (begin("TAVIK_RefreshDeviceStats")) return failed;
    device->crcErrors = 0xFFFFFFFF;
    return 0;
}

std::uint32_t TAVIK_GetSFPData(TAVIK_DeviceRecord*, void* buffer) {
    if (begin("TAVIK_GetSFPData")) return failed;
    fillBuffer(buffer, 512, transceiverPages());
    return 0;
}

std::uint32_t TAVIK_GetOSName(char* buffer, std::uint32_t* size) {
    if (begin("TAVIK_GetOSName")) return failed;
    *size = fillBuffer(buffer, *size, "Hostile OS");
    return 0;
}

std::uint32_t TAVIK_GetLinkProperties(const char* deviceName, TAVIK_LinkProperties* link) {
    if (begin("TAVIK_GetLinkProperties")) return failed;
    std::memset(static_cast<void*>(link), static_cast<int>(std::strlen(deviceName)), sizeof(*link));
    return 0;
}

std::uint32_t TAVIK_GetIPProperties(const char*, TAVIK_IPProperties** properties) {
    if (begin("TAVIK_GetIPProperties")) return failed;
    const Answers& answers = tree().answers;
    if (answers.isNullOnSuccess) return 0;
    // One block, lists included: they are given back together.
    auto* block = static_cast<TAVIK_IPProperties*>(handOut(sizeof(TAVIK_IPProperties) + 3 * sizeof(TAVIK_IPAddress)));
    std::memset(static_cast<void*>(block), 1, sizeof(TAVIK_IPProperties) + 3 * sizeof(TAVIK_IPAddress));
    auto* addresses = reinterpret_cast<TAVIK_IPAddress*>(block + 1);
    const bool isWild = answers.hasWildCounts || answers.hasNoLists;
    block->firstCount = block->secondCount = block->thirdCount = isWild ? 0xFFFFFFFF : 1;
    block->firstList = answers.hasNoLists ? nullptr : addresses;
    block->secondList = answers.hasNoLists ? nullptr : addresses + 1;
    block->thirdList = answers.hasNoLists ? nullptr : addresses + 2;
    *properties = block;
    return 0;
}

std::uint32_t TAVIK_GetFCoELinkage(const char*, TAVIK_FCoELinkage** linkage, std::uint32_t* count) {
    if (begin("TAVIK_GetFCoELinkage")) return failed;
    const Answers& answers = tree().answers;
    *count = answers.hasWildCounts || answers.hasNoLists ? 0xFFFFFFFF : 1;
    if (answers.isNullOnSuccess || answers.hasNoLists) return 0;
    *linkage = static_cast<TAVIK_FCoELinkage*>(handOut(sizeof(TAVIK_FCoELinkage)));
    std::memset(static_cast<void*>(*linkage), 0xAB, sizeof(TAVIK_FCoELinkage));
    return 0;
}

std::uint32_t TAVIK_GetTransceiverDMIData(const char*, std::uint32_t* size, void* buffer) {
    if (begin("TAVIK_GetTransceiverDMIData")) return failed;
    *size = fillBuffer(buffer, *size, transceiverPages());
    return 0;
}

std::uint32_t tavik_facts_of_storage_port(std::uint32_t, std::uint32_t groups, void* buffer, std::uint32_t* size) {
    return answerFacts("tavik_facts_of_storage_port", groups, buffer, size);
}

std::uint32_t tavik_facts_of_ethernet_port(const char*, std::uint32_t groups, void* buffer, std::uint32_t* size) {
    return answerFacts("tavik_facts_of_ethernet_port", groups, buffer, size);
}

std::uint32_t TAVIK_UpdateFlash(std::uint32_t, const void*, std::uintptr_t) {
    return begin("TAVIK_UpdateFlash") ? failed : 0;
}

std::uint32_t TAVIK_doOptionROMUpdate(TAVIK_DeviceRecord*, const char*, std::uintptr_t) {
    return begin("TAVIK_doOptionROMUpdate") ? failed : 0;
}

std::uint32_t TAVIK_FreeMem(void* memory) {
    const std::lock_guard guard(blocksMutex);
    if (blocks.erase(memory) == 0) {
        ++strangers;
        return failed;
    }
    std::free(memory);
    return 0;
}
