// Stands between the provider and the broker: writes down which classes a request is tested against, and lets a test
// make single calls fail or take functions away, as less able servers do.
#pragma once

#include "cimhost/broker/broker.h"

#include "cmpift.h"

#include <cstddef>
#include <cstring>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

/// The slots of a table up to that size, the others null: servers need not have what came with a later level.
template <class Table>
Table firstSlots(const Table* table, std::size_t size) {
    Table copy{};
    std::memcpy(&copy, table, size);
    return copy;
}

inline CMPIBrokerEncFT copyOf(const CMPIBrokerEncFT* table) {
    return firstSlots(table, offsetof(CMPIBrokerEncFT, newCMPIError));
}

inline CMPIResultFT copyOf(const CMPIResultFT* table) { return firstSlots(table, offsetof(CMPIResultFT, returnError)); }

class BrokerHooks {
public:
    /// In place until destroyed; one at a time, and the broker outlives it.
    explicit BrokerHooks(cimhost::Broker& broker);
    ~BrokerHooks();
    BrokerHooks(const BrokerHooks&) = delete;
    BrokerHooks& operator=(const BrokerHooks&) = delete;

    /// The class names asked of classPathIsA since the last call, in order.
    std::vector<std::string> takeTestedClasses();

    // Called ahead of the broker's own function if set. They may throw; a code other than 0 is the call's answer.
    std::function<CMPIrc()> beforeNewInstance;
    std::function<CMPIrc()> beforeNewObjectPath;
    std::function<CMPIrc()> beforeNewDateTime;
    std::function<CMPIrc()> beforeClassPathIsA;
    /// May throw.
    std::function<void()> beforeNewThread;

    /// The thread functions that the provider is shown; a test may take some away before the provider starts.
    CMPIBrokerExtFT threads;

    /// Joins the thread that the provider made last, where the provider was not shown how.
    void joinLastThread();

private:
    friend struct HookedCalls;

    CMPIBroker& table;
    CMPIBrokerEncFT* const ownObjects;
    CMPIBrokerExtFT* const ownThreads;
    CMPIBrokerEncFT objects;
    std::mutex mutex;
    std::vector<std::string> testedClasses;
    void* lastThread = nullptr;
};
