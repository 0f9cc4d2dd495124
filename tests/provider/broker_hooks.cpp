#include "broker_hooks.h"

#include "provider_host.h"

#include <utility>

namespace {

// The tables' functions carry nothing but the broker, so the hooks in place are found here.
BrokerHooks* hooks = nullptr;

} // namespace

/// What the tables point to; a struct of its own so that it may look inside.
struct HookedCalls {
    static bool isRefused(const std::function<CMPIrc()>& hook, CMPIStatus* status) {
        const CMPIrc code = hook ? hook() : CMPI_RC_OK;
        if (code != CMPI_RC_OK && status) *status = {code, nullptr};
        return code != CMPI_RC_OK;
    }

    static CMPIInstance* newInstance(const CMPIBroker* broker, const CMPIObjectPath* path, CMPIStatus* status) {
        if (isRefused(hooks->beforeNewInstance, status)) return nullptr;
        return hooks->ownObjects->newInstance(broker, path, status);
    }

    static CMPIObjectPath* newObjectPath(const CMPIBroker* broker, const char* nameSpace, const char* className,
                                         CMPIStatus* status) {
        if (isRefused(hooks->beforeNewObjectPath, status)) return nullptr;
        return hooks->ownObjects->newObjectPath(broker, nameSpace, className, status);
    }

    static CMPIDateTime* newDateTimeFromBinary(const CMPIBroker* broker, CMPIUint64 microseconds, CMPIBoolean interval,
                                               CMPIStatus* status) {
        if (isRefused(hooks->beforeNewDateTime, status)) return nullptr;
        return hooks->ownObjects->newDateTimeFromBinary(broker, microseconds, interval, status);
    }

    static CMPIBoolean classPathIsA(const CMPIBroker* broker, const CMPIObjectPath* path, const char* className,
                                    CMPIStatus* status) {
        if (isRefused(hooks->beforeClassPathIsA, status)) return 0;
        {
            const std::lock_guard guard(hooks->mutex);
            hooks->testedClasses.emplace_back(className);
        }
        return hooks->ownObjects->classPathIsA(broker, path, className, status);
    }

    static void* newThread(void* (*function)(void*), void* argument, int detached) {
        if (hooks->beforeNewThread) hooks->beforeNewThread();
        hooks->lastThread = hooks->ownThreads->newThread(function, argument, detached);
        return hooks->lastThread;
    }
};

BrokerHooks::BrokerHooks(cimhost::Broker& broker)
    : threads(*brokerOfProvider(broker)->xft), table(const_cast<CMPIBroker&>(*brokerOfProvider(broker))),
      ownObjects(table.eft), ownThreads(table.xft), objects(copyOf(table.eft)) {
    objects.newInstance = HookedCalls::newInstance;
    objects.newObjectPath = HookedCalls::newObjectPath;
    objects.newDateTimeFromBinary = HookedCalls::newDateTimeFromBinary;
    objects.classPathIsA = HookedCalls::classPathIsA;
    threads.newThread = HookedCalls::newThread;
    hooks = this;
    table.eft = &objects;
    table.xft = &threads;
}

BrokerHooks::~BrokerHooks() {
    table.eft = ownObjects;
    table.xft = ownThreads;
    hooks = nullptr;
}

std::vector<std::string> BrokerHooks::takeTestedClasses() {
    const std::lock_guard guard(mutex);
    return std::exchange(testedClasses, {});
}

void BrokerHooks::joinLastThread() {
    void* thread = std::exchange(lastThread, nullptr);
    if (foreign_server::Server* server = foreign_server::Server::ifAny()) {
        server->waitForThreads();
    } else {
        ownThreads->joinThread(thread, nullptr);
    }
}
