// Lets single calls on a request's path fail as a CIM server's tables can: a name that cannot be read, a key that
// cannot be added.
#pragma once

#include "cimhost/broker/broker.h"

#include "cmpift.h"

#include <string>

class RequestHooks {
public:
    static constexpr CMPIrc refusal = CMPI_RC_ERR_ACCESS_DENIED;

    /// In place until destroyed; one at a time, and the broker outlives it.
    explicit RequestHooks(cimhost::Broker& broker);
    ~RequestHooks();
    RequestHooks(const RequestHooks&) = delete;
    RequestHooks& operator=(const RequestHooks&) = delete;

    // Which call fails, counted from 1; 0: none.
    unsigned failingNameSpaceRead = 0;
    unsigned failingClassNameRead = 0;
    /// How every key of the request's path reads: as it is, as a text that is null, or as a text without its text.
    enum class Keys { asTheyAre, null, withoutText };
    Keys keys = Keys::asTheyAre;
    /// Keys added to the association's paths: copies of the request's path, and new paths of associationClass.
    unsigned failingAddKey = 0;
    std::string associationClass;

    /// Whether a call was refused.
    bool hasRefused() const { return refused; }

    /// Takes part in one request: its path and its result.
    void watch(CMPIObjectPath* path, CMPIResult* result);

private:
    friend struct WatchedCalls;

    bool refuses(unsigned failing, unsigned& count);
    /// Takes the objects that the provider gets.
    void watchProviders(CMPIObjectPath* path, CMPIResult* result);

    CMPIBroker& table;
    CMPIBrokerEncFT* const ownObjects;
    CMPIBrokerEncFT objects;
    unsigned nameSpaceReads = 0;
    unsigned classNameReads = 0;
    unsigned addedKeys = 0;
    bool refused = false;
};
