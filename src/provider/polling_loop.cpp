#include "provider/polling_loop.h"

#include "classes/system_name.h"
#include "configuration/configuration.h"
#include "configuration/nic_properties.h"
#include "indications/alarm_intake.h"
#include "indications/link_indication.h"
#include "indications/subscriptions.h"
#include "inventory/cna_list.h"
#include "inventory/poll_thread_context.h"
#include "inventory/tavik.h"
#include "log/log.h"
#include "platform/platform.h"
#include "platform/threads.h"
#include "provider/list_builders.h"
#include "provider/locks.h"
#include "provider/merolt_cna_provider.h"
#include "provider/server_facilities.h"
#include "provider_version.h"

#include "cmpift.h"

#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <memory>
#include <mutex>
#include <utility>

Merolt_CNA_Provider* g_Merolt_CNA_Provider = nullptr;

namespace merolt {

namespace {

using Guard = std::lock_guard<platform::Mutex>;

constexpr std::uint32_t everyLibraryLog = 31;

/// The library's answer during one pass.
std::int32_t gNeedRefresh = 0;
/// A refresh was begun and has not come to its end.
bool refreshIsDue = false;

void requireContext(const PollThreadContext* record) {
    if (record && record->broker && record->context && record->provider) return;
    ERROR_LOG("**** Error: Thread context not established for poll thread");
    std::exit(1);
}

/// Runs one step of the thread. No exception may leave the thread, which is the server's: memory or whatever else was
/// short may be there again for the next try. @param name of the step in the log. @return whether the step was done.
template <class Step>
bool tryStep(const char* name, Step&& step) {
    try {
        step();
        return true;
    } catch (const abi::__forced_unwind&) {
        throw; // the server ends its thread
    } catch (const std::exception& failure) {
        ERROR_LOG("AdapterPollingLoop() %s failed: %s", name, failure.what());
    } catch (...) {
        ERROR_LOG("AdapterPollingLoop() %s failed with an unknown exception", name);
    }
    return false;
}

void attach(PollThreadContext& record) {
    if (!record.canAttach()) return;
    const CMPIBroker* broker = record.broker->getEnc();
    const bool attached = tryStep("attachThread", [&] { broker->bft->attachThread(broker, record.context->getEnc()); });
    if (attached) return;
    releaseContext(record.context->getEnc());
    *record.context = CmpiContext(nullptr);
}

void detach(PollThreadContext& record) {
    // Detaching ends the server's object behind it, whether or not the call comes back.
    const std::unique_ptr<CmpiContext> attached = std::move(record.context);
    if (!attached || attached->isNull()) return;
    const CMPIBroker* broker = record.broker->getEnc();
    CMPIContext* context = attached->getEnc();
    DEBUG_LOG("AdapterPollingLoop() calling detachThread(%p)", static_cast<const void*>(context));
    tryStep("detachThread", [&] { broker->bft->detachThread(broker, context); });
    DEBUG_LOG("AdapterPollingLoop() returned from detachThread(%p)", static_cast<const void*>(context));
}

/// A server keeps what a thread makes until the thread detaches. What a batch of alerts makes is given back at its end,
/// so that months of alerts leave memory as it was.
class BatchScope {
public:
    explicit BatchScope(PollThreadContext& record) : broker(record.broker->getEnc()) {
        if (!gIndicationsEnabled || !record.canAttach()) return;
        CMPIContext* prepared = nullptr;
        const bool attached = tryStep("attachThread", [&] {
            prepared = broker->bft->prepareAttachThread(broker, record.context->getEnc());
            if (prepared) broker->bft->attachThread(broker, prepared);
        });
        if (attached) {
            context = prepared;
        } else {
            releaseContext(prepared);
        }
    }
    /// Lets through the end of the thread, should the server end it here.
    ~BatchScope() noexcept(false) {
        if (context) tryStep("detachThread", [&] { broker->bft->detachThread(broker, context); });
    }
    BatchScope(const BatchScope&) = delete;
    BatchScope& operator=(const BatchScope&) = delete;

private:
    const CMPIBroker* broker;
    CMPIContext* context = nullptr;
};

void alertOfLinkChange(Merolt_CNA_Provider* provider, int alarmType, CNACard* card, CNAPort* port) {
    if (!provider->pollThreadContext().canAttach()) return;
    generatePortAlertIndication(provider->pollThreadContext(), alarmType, card, port);
}

void buildInventory(PollThreadContext& record) {
    const Guard provider(*provider_lock);
    record.begun.notify();
    const Guard indications(*enable_indications_mutex);
    DEBUG_LOG("Merolt CNA CMPI provider, version: %s", providerVersion);
    const std::time_t start = platform::services().now();
    refreshIsDue = false;
    getSystemName(gSystemName, &gSystemNameFormat);
    TAVIK_Initialize(gTAVIKLog ? everyLibraryLog : 0, 0);
    TAVIK_RegisterAlarmNotificationCallback(OSSGenerateHostNotificationAlarm);
    try {
        buildListsAtStart();
    } catch (...) {
        // The next try begins as this one did.
        endInventory();
        throw;
    }
    DEBUG_LOG("Merolt_CNA_Provider::time taken to initialize devices: %.0f seconds.",
              std::difftime(platform::services().now(), start));
    record.provider->initialized = 1;
}

bool isToStop(PollThreadContext& record) {
    const Guard guard(*record.mutex);
    return record.killThread != 0;
}

/// The one place where the server may cancel its thread.
void sleepUntilNextPass() {
    const platform::CancellationPermit permit;
    platform::services().sleepUntilNotified(alarmArrival(), 1000);
}

void firstBuild(PollThreadContext& record) {
    while (!tryStep("first build", [&] { buildInventory(record); })) {
        if (isToStop(record)) return;
        sleepUntilNextPass();
    }
    DEBUG_LOG("FCPort & PortController classes initialized...");
}

// The library fills its second tree without provider_lock, so requests go on against the main one meanwhile.
void updateBackupTree() {
    const Guard update(*adapter_update_lock);
    DEBUG_LOG("About to call TAVIK_UpdateBackupAdapterList()");
    TAVIK_UpdateBackupAdapterList();
    DEBUG_LOG("After the call to TAVIK_UpdateBackupAdapterList()");
}

void swapAndRebuild() {
    const Guard provider(*provider_lock);
    DEBUG_LOG("About to call TAVIK_SwapBackupToMainAdapterList()");
    TAVIK_SwapBackupToMainAdapterList();
    DEBUG_LOG("After the call to TAVIK_SwapBackupToMainAdapterList()");
    clearLists();
    try {
        buildListsInRefresh();
    } catch (...) {
        clearLists(); // better none than some that do not belong together
        throw;
    }
    DEBUG_LOG("After the call to buildFCPortList()");
}

void refresh() {
    DEBUG_LOG("gNeedRefresh flag is ON");
    refreshIsDue = true;
    updateBackupTree();
    swapAndRebuild();
    refreshIsDue = false;
    gNeedRefresh = 0;
}

void checkAdapters(PollThreadContext& record) {
    gNeedRefresh = static_cast<std::int32_t>(TAVIK_DidConfigChange());
    TAVIK_ResetConfigChange();
    if (gNeedRefresh != 0 || refreshIsDue) refresh();
    const BatchScope batch(record);
    const Guard provider(*provider_lock);
    Update_CNA_List(&record, alertOfLinkChange);
}

void handleAlarm(PollThreadContext& record, const Alarm& alarm) try {
    if (!record.canAttach()) return;
    const Guard provider(*provider_lock);
    record.provider->m_generateIndication(alarm.deviceNumber, alarm.type, alarm.parameter, alarm.text.c_str());
} catch (const abi::__forced_unwind&) {
    throw;
} catch (...) {
    DEBUG_LOG("Exception generated when calling m_generateIndication");
}

/// Each alarm by itself, so that requests get their turn between two.
void handleAlarms(PollThreadContext& record) {
    const std::vector<Alarm> alarms = takeAlarms();
    if (alarms.empty()) return;
    const BatchScope batch(record);
    for (const Alarm& alarm : alarms)
        handleAlarm(record, alarm);
}

void makePass(PollThreadContext& record, std::time_t& lastCheck) {
    const std::time_t now = platform::services().now();
    const std::int32_t interval = Merolt_NIC_Properties::instance().linkStatusPollIntervalSeconds;
    if (now - lastCheck > interval) {
        checkAdapters(record);
        lastCheck = now;
    }
    handleAlarms(record);
}

void pollUntilStopped(PollThreadContext& record) {
    std::time_t lastCheck = platform::services().now();
    for (;;) {
        tryStep("pass", [&] { makePass(record, lastCheck); });
        if (isToStop(record)) return;
        sleepUntilNextPass();
    }
}

void noteThreadEnd(PollThreadContext& record) {
    const Guard guard(*record.mutex);
    record.threadDead = 1;
    record.begun.notify();
    record.ended.notify();
}

} // namespace

void endInventory() {
    endLists();
    TAVIK_UnRegisterAlarmNotificationCallback(OSSGenerateHostNotificationAlarm);
    TAVIK_Uninitialize();
    takeAlarms(); // what still waits tells of ports that nobody publishes any more
}

CMPI_THREAD_RETURN CMPI_THREAD_CDECL AdapterPollingLoop(void* argument) try {
    const platform::CancellationDelay delay;
    DEBUG_LOG("AdapterPollingLoop() starting");
    auto* record = static_cast<PollThreadContext*>(argument);
    requireContext(record);
    record->threadNumber = platform::threadNumber();
    g_Merolt_CNA_Provider = record->provider;
    attach(*record);
    firstBuild(*record);
    if (record->provider->initialized) pollUntilStopped(*record);
    DEBUG_LOG("AdapterPollingLoop() thread has been killed");
    detach(*record);
    noteThreadEnd(*record);
    DEBUG_LOG("AdapterPollingLoop() ending...\n");
    return nullptr;
} catch (const abi::__forced_unwind&) {
    // The server ends its thread; the clean-up does not wait for it in vain.
    noteThreadEnd(*static_cast<PollThreadContext*>(argument));
    throw;
}

} // namespace merolt
