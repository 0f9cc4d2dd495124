// The management library as a test sees it: answers from a fleet in memory, records its calls, and lets a test take
// over single calls. It stands in the test program under the library's own names.
#pragma once

#include "inventory/tavik.h"
#include "tavik/model.h"
#include "tavik/tree.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

class FakeTavik {
public:
    static FakeTavik& instance();

    /// Forgets everything: no adapters, no calls, no hooks.
    void reset();

    /// The fleet that the main tree shows; what the queries answer follows it too.
    void setFleet(tavik::Fleet fleet);
    /// The fleet that the next swap brings, told through TAVIK_DidConfigChange.
    void setNextFleet(tavik::Fleet fleet);
    /// Changes what the queries answer and leaves the tree alone, as hardware does between two refreshes.
    tavik::StorageFunction& storage(std::uint32_t handle);
    tavik::NicFunction& nic(const std::string& deviceName);

    /// The main tree's records, for tests that bend them.
    tavik::Tree& tree() { return *mainTree; }

    /// Names of the calls so far, in order; "TAVIK_Initialize(31)" carries its mask.
    std::vector<std::string> calls();
    std::size_t callCount(const std::string& name);
    void clearCalls();
    /// Blocks handed out and not released.
    std::size_t outstandingBlocks();

    /// Called in place of the answer if set; the lock of this object is not held.
    std::function<std::uint32_t(const char* deviceName, TAVIK_LinkProperties*)> onGetLinkProperties;
    std::function<std::uint32_t(char* buffer, std::uint32_t* size)> onGetOSName;
    /// Called behind the answer, which it may bend.
    std::function<void(TAVIK_IPProperties&)> afterGetIPProperties;
    std::function<void(TAVIK_FCoELinkage*& linkage, std::uint32_t& count)> afterGetFCoELinkage;
    /// In place of the answers of both calls that hand out a text.
    std::function<std::uint32_t(char** text, std::uint32_t* length)> onGetText;
    std::function<std::uint32_t(const char* deviceName, std::uint32_t* size, void* buffer)> onGetTransceiver;
    std::function<std::uint32_t(std::uint32_t handle, void* buffer, std::uint32_t* size)> onGetVpd;
    /// Flash calls fail with 1 unless set.
    std::function<std::uint32_t(std::uint32_t adapterId, const void* image)> onUpdateFlash;
    std::function<std::uint32_t(TAVIK_DeviceRecord* device, const char* fileName)> onOptionRomUpdate;
    std::function<void()> onUpdateBackup;
    std::function<void()> onInitialize;

    TAVIK_AlarmCallback alarmCallback = nullptr;
    /// Calls the callback, if one is registered, on the calling thread.
    void raiseAlarm(std::uint32_t deviceNumber, std::uint32_t type, std::uint32_t parameter, const char* text);

private:
    friend struct FakeTavikCalls;

    void record(std::string call);
    const tavik::StorageFunction* findStorage(std::uint32_t handle) const;
    const tavik::NicFunction* findNic(const char* deviceName) const;
    void* handOut(std::size_t size);

    std::mutex mutex;
    tavik::Fleet fleet;
    std::unique_ptr<tavik::Tree> mainTree;
    std::optional<tavik::Fleet> nextFleet;
    tavik::Fleet backupFleet;
    std::unique_ptr<tavik::Tree> backupTree;
    bool changed = false;
    std::vector<std::string> callLog;
    std::map<void*, std::vector<std::unique_ptr<char[]>>> blocks;
};
