// A server program around the shared library: what load_cycles and the tests of a foreign host do alike.
#pragma once

#include "plain_broker/plain_broker.h"
#include "process_facts.h"
#include "provider_library.h"

#include <cstdlib>
#include <filesystem>
#include <string>

/// A thread of the server while it serves one request or call.
struct ServerScope {
    ServerScope() { plainScopeBegin(); }
    ~ServerScope() { plainScopeEnd(); }
    ServerScope(const ServerScope&) = delete;
    ServerScope& operator=(const ServerScope&) = delete;
};

/// The server in a working directory of its own, with the fleet as its adapters.
class ServerProgram {
public:
    explicit ServerProgram(const char* fleet) : directory(makeWorkingDirectory()) {
        setenv("TAVIK_SOURCE", (std::string("fleet:") + fleet).c_str(), 1);
        plainBrokerReset();
    }
    ~ServerProgram() {
        std::filesystem::current_path("/");
        std::error_code ignored;
        std::filesystem::remove_all(directory, ignored);
    }
    ServerProgram(const ServerProgram&) = delete;
    ServerProgram& operator=(const ServerProgram&) = delete;

private:
    std::filesystem::path directory;
};

/// @return null if the factory failed.
template <class Interface>
Interface* makeInterface(const ProviderLibrary& library, const char* kind) {
    const ServerScope scope;
    CMPIStatus status{CMPI_RC_OK, nullptr};
    return library.factory<Interface>(kind)(&plainBroker.broker, plainContext(), &status);
}

template <class Interface>
CMPIrc cleanUp(Interface* interface, CMPIBoolean terminating) {
    const ServerScope scope;
    return interface->ft->cleanup(interface, plainContext(), terminating).rc;
}

/// @return how many objects of the class are shown, -1 if the request failed.
inline int countInstances(CMPIInstanceMI* interface, const char* className) {
    const ServerScope scope;
    CMPIResult* result = plainResult();
    const CMPIObjectPath* path = plainPath("root/merolt_cmpi", className);
    const CMPIStatus status = interface->ft->enumerateInstances(interface, plainContext(), result, path, nullptr);
    return status.rc == CMPI_RC_OK ? static_cast<int>(plainReturned(result)) : -1;
}

/// Waits until the class has objects. Where seconds are short a request can come before the polling thread holds the
/// lock, and so before the first build.
inline bool waitForInstances(CMPIInstanceMI* interface, const char* className) {
    for (int tries = 0; tries < 100000; ++tries) {
        if (countInstances(interface, className) > 0) return true;
        sleep(1);
    }
    return false;
}
