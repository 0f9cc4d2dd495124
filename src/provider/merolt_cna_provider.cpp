#include "provider/merolt_cna_provider.h"

#include "classes/system_name.h"
#include "configuration/answers.h"
#include "configuration/configuration.h"
#include "indications/alarm_intake.h"
#include "indications/port_status_indication.h"
#include "indications/subscriptions.h"
#include "inventory/fact_reader.h"
#include "log/log.h"
#include "platform/platform.h"
#include "provider/list_builders.h"
#include "provider/locks.h"
#include "provider/polling_loop.h"
#include "provider/server_facilities.h"

#include "cmpift.h"

#include <chrono>
#include <cstdlib>
#include <cxxabi.h>
#include <mutex>

using namespace merolt;

namespace {

using Guard = std::lock_guard<platform::Mutex>;

void release(std::unique_ptr<CmpiContext>& context) {
    CMPIContext* object = context ? context->getEnc() : nullptr;
    context.reset();
    releaseContext(object);
}

/// A context for a thread of our own, or an empty one from a server with which no alerts can be made.
std::unique_ptr<CmpiContext> makeThreadContext(CmpiBroker& broker, const CmpiContext& context) {
    if (!facilitiesOf(broker.getEnc(), context.getEnc()).canAlert) return std::make_unique<CmpiContext>(nullptr);
    auto made = std::make_unique<CmpiContext>(nullptr);
    *made = broker.prepareAttachThread(context);
    return made;
}

/// Far longer than a thread needs for its last steps.
constexpr std::chrono::milliseconds endOfThreadLimit{2000};
/// In milliseconds; far longer than a thread needs for its first steps on a host with much else to do.
constexpr unsigned beginOfThreadLimit = 60000;

} // namespace

Merolt_CNA_Provider::Merolt_CNA_Provider(const CmpiBroker& providerBroker, const CmpiContext& context)
    : CmpiBaseMI(providerBroker, context), CmpiInstanceMI(providerBroker, context),
      CmpiAssociationMI(providerBroker, context), CmpiIndicationMI(providerBroker, context),
      CmpiMethodMI(providerBroker, context) {
    initializeLogging();
    DEBUG_LOG("Merolt_CNA_Provider constructor was called");
    makeLocks();
    readConfiguration();
    readAnswers();
    readWantedSystemName();
    findFactCalls();
}

Merolt_CNA_Provider::~Merolt_CNA_Provider() {
    DEBUG_LOG("***** Merolt_CNA_Provider destructor was called *****");
    // A clean-up during the first build leaves the thread running; it must not outlive what it uses. Without a thread
    // there is nothing but what single requests read.
    if (pollingEnabled && pollThread.thread) {
        stopAndClear();
    } else if (pollingEnabled) {
        endLists();
    }
    release(pollThread.context);
    closeLocks();
    DEBUG_LOG("Merolt_CNA_Provider destructor complete");
}

CmpiStatus Merolt_CNA_Provider::initialize(const CmpiContext& context) {
    DEBUG_LOG("***** Merolt_CNA_Provider initialize was called *****");
    if (initialized) {
        DEBUG_LOG("***** Merolt_CNA_Provider already initialized *****\n\n");
        if (!platform::services().waitsForEvents()) platform::sleepSeconds(2);
        return CmpiStatus(CMPI_RC_OK);
    }
    pollThread.context = makeThreadContext(*broker, context);
    startPollingLoop(context);
    waitForBuildToBegin();
    DEBUG_LOG("***** Merolt_CNA_Provider initialize done *****\n\n");
    return CmpiStatus(CMPI_RC_OK);
}

CmpiStatus Merolt_CNA_Provider::cleanup(CmpiContext&) {
    DEBUG_LOG("***** Merolt_CNA_Provider cleanup was called *****");
    if (initialized) stopAndClear();
    DEBUG_LOG("***** Merolt_CNA_Provider cleanup done *****");
    return CmpiStatus(CMPI_RC_OK);
}

void Merolt_CNA_Provider::stopAndClear() {
    stopPollingLoop();
    const Guard provider(*provider_lock);
    endInventory();
    initialized = 0;
}

int Merolt_CNA_Provider::isUnloadable() const {
    DEBUG_LOG("***** Merolt_CNA_Provider isUnloadable was called *****");
    return 1;
}

void Merolt_CNA_Provider::startPollingLoop(const CmpiContext& context) {
    DEBUG_LOG("Start Polling Loop");
    if (pollingEnabled) {
        DEBUG_LOG("  Polling already enabled");
        return;
    }
    pollThread.broker = broker;
    release(pollThread.context);
    pollThread.context = makeThreadContext(*broker, context);
    if (!pollThread.canAttach() && facilitiesOf(broker->getEnc(), context.getEnc()).canAlert)
        reportNoAlerts(broker->getEnc(), "made no context for a thread");
    pollThread.provider = this;
    pollThread.killThread = 0;
    pollThread.threadDead = 0;
    int error = 0;
    pollThread.mutex = platform::makeMutex(error);
    if (!pollThread.mutex) {
        ERROR_LOG("Error %d Initializing provider_lock mutex", error);
        std::exit(1);
    }
    startThread(context);
    pollingEnabled = 1;
    DEBUG_LOG("Polling Loop Started");
}

void Merolt_CNA_Provider::startThread(const CmpiContext& context) {
    const CMPIBroker* server = broker->getEnc();
    if (facilitiesOf(server, context.getEnc()).canRunThread) {
        libraryPin.emplace();
        pollThread.thread = server->xft->newThread(AdapterPollingLoop, &pollThread, 0);
        if (pollThread.thread) return;
        libraryPin.reset();
        reportNoThread(server, "made no thread");
    }
    // What the thread finds out first. Its key names the one object that is published whatever the adapters.
    const Guard guard(*provider_lock);
    getSystemName(gSystemName, &gSystemNameFormat);
    buildListsWithoutAdapters();
}

/// In this time the polling thread normally takes provider_lock, so that the first request waits for the build.
void Merolt_CNA_Provider::waitForBuildToBegin() {
    if (!platform::services().waitsForEvents()) return platform::sleepSeconds(2);
    if (pollThread.thread) platform::services().sleepUntilNotified(pollThread.begun, beginOfThreadLimit);
}

/// Lets the polling thread see that it is to end, and end.
void Merolt_CNA_Provider::waitForPollingThread() {
    if (!platform::services().waitsForEvents()) return platform::services().sleepMilliseconds(1000);
    alarmArrival().notify(); // it may sleep between two passes
    platform::services().sleepUntilNotified(pollThread.ended, 1000);
}

void Merolt_CNA_Provider::stopPollingLoop() {
    DEBUG_LOG("Stop Polling Loop");
    if (!pollingEnabled) {
        DEBUG_LOG("  Polling already disabled");
        return;
    }
    std::unique_lock<platform::Mutex> guard(*pollThread.mutex);
    pollThread.killThread = 1;
    while (!pollThread.threadDead) {
        guard.unlock();
        waitForPollingThread();
        guard.lock();
    }
    guard.unlock();
    joinThread();
    pollThread.mutex.reset();
    pollThread.thread = nullptr;
    libraryPin.reset();
    pollingEnabled = 0;
}

void Merolt_CNA_Provider::joinThread() try {
    const CMPIBrokerExtFT* threads = broker->getEnc()->xft;
    if (threads && threads->joinThread) {
        DEBUG_LOG("stopPollingLoop() calling joinThread");
        threads->joinThread(pollThread.thread, nullptr);
        DEBUG_LOG("stopPollingLoop() completed joinThread");
    } else {
        // The thread still has to leave its function before the server may close the library.
        platform::waitForThreadEnd(pollThread.threadNumber, endOfThreadLimit);
    }
} catch (const abi::__forced_unwind&) {
    throw;
} catch (...) {
    ERROR_LOG("Merolt_CNA_Provider: the CIM server failed to join the polling thread");
    platform::waitForThreadEnd(pollThread.threadNumber, endOfThreadLimit);
}

void Merolt_CNA_Provider::enableIndications() {
    DEBUG_LOG("Entering Merolt_CNA_Provider enableIndications\n");
    const Guard guard(*enable_indications_mutex);
    gIndicationsEnabled = true;
    DEBUG_LOG("enableIndications: Indication enabled\n");
}

void Merolt_CNA_Provider::disableIndications() {
    DEBUG_LOG("Entering Merolt_CNA_Provider disableIndications\n");
    gIndicationsEnabled = false;
    DEBUG_LOG("disableIndications:Indications disabled\n");
}

void Merolt_CNA_Provider::m_generateIndication(std::uint32_t deviceNumber, std::uint32_t alarmType,
                                               std::uint32_t rsltParam, const char* stringParameter) {
    if (!initialized || !gIndicationsEnabled || alarmType != 0) return;
    const char* text = stringParameter ? stringParameter : "";
    generatePortStatusIndication(pollThread, {deviceNumber, alarmType, rsltParam, text});
}

CmpiStatus Merolt_CNA_Provider::authorizeFilter(const CmpiContext&, const CmpiSelectExp&, const char*,
                                                const CmpiObjectPath&, const char*) {
    DEBUG_LOG("Entering Merolt_CNA_Provider authorizeFilter\n");
    return CmpiStatus(CMPI_RC_OK);
}

CmpiStatus Merolt_CNA_Provider::mustPoll(const CmpiContext&, const CmpiSelectExp&, const char*, const CmpiObjectPath&) {
    DEBUG_LOG("Entering Merolt_CNA_Provider mustPoll\n");
    return CmpiStatus(CMPI_RC_OK);
}

CmpiStatus Merolt_CNA_Provider::activateFilter(const CmpiContext&, const CmpiSelectExp&, const char*,
                                               const CmpiObjectPath&, CmpiBoolean) {
    DEBUG_LOG("Entering Merolt_CNA_Provider activateFilter\n");
    countActivatedFilter();
    return CmpiStatus(CMPI_RC_OK);
}

CmpiStatus Merolt_CNA_Provider::deActivateFilter(const CmpiContext&, const CmpiSelectExp&, const char*,
                                                 const CmpiObjectPath&, CmpiBoolean) {
    DEBUG_LOG("Entering Merolt_CNA_Provider deActivateFilter\n");
    countDeactivatedFilter();
    return CmpiStatus(CMPI_RC_OK);
}
