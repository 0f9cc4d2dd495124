// The provider in a plain server that a test can make poorer still.
#pragma once

#include "adapters.h"
#include "provider_host.h"

#include "plain_broker/plain_broker.h"

/// What a thread of the plain server makes between begin and end.
struct PlainScope {
    PlainScope() { plainScopeBegin(); }
    ~PlainScope() { plainScopeEnd(); }
    PlainScope(const PlainScope&) = delete;
    PlainScope& operator=(const PlainScope&) = delete;
};

/// What a request to the plain server gave.
struct PlainAnswer {
    CMPIrc rc = CMPI_RC_OK;
    unsigned objects = 0;
    unsigned doneCount = 0;

    bool operator==(const PlainAnswer&) const = default;
};

void PrintTo(const PlainAnswer& answer, std::ostream* out);

/// A fleet of one card with a storage and an Ethernet function.
class PoorServerTest : public ProviderTest {
protected:
    static constexpr const char* fcPort = "Merolt_FCHBA_FCPort";
    static constexpr const char* ethernetPort = "Merolt_NIC_EthernetPort2";
    static constexpr const char* computerSystem = "Merolt_Adapter_ComputerSystem";
    static constexpr PlainAnswer oneObject{CMPI_RC_OK, 1, 1};
    static constexpr PlainAnswer noObject{CMPI_RC_OK, 0, 1};

    PoorServerTest();
    ~PoorServerTest() override;

    /// All four factories; the first build is not waited for. @return whether the first one gave an interface.
    bool load();
    /// load, and the wait for the first build.
    void loadAndBuild();
    /// Cleans up each interface that was made.
    void cleanUpAll();
    /// The same in a server that is well again.
    void unload();

    template <class Interface>
    Interface* make(Interface* (*factory)(const CMPIBroker*, const CMPIContext*, CMPIStatus*),
                    const CMPIBroker* server = &plainBroker.broker) {
        const PlainScope scope;
        loadStatus = {CMPI_RC_OK, nullptr};
        return factory(server, hasContext ? plainContext() : nullptr, &loadStatus);
    }

    template <class Interface>
    CMPIrc cleanUp(Interface* interface, CMPIBoolean terminating = 1) {
        const PlainScope scope;
        return interface->ft->cleanup(interface, plainContext(), terminating).rc;
    }

    /// Makes a request. @param makePath gives its path. @param call gets context, result and path, and gives the
    /// status.
    template <class MakePath, class Call>
    PlainAnswer ask(MakePath&& makePath, Call&& call) {
        const PlainScope scope;
        CMPIContext* context = plainContext();
        CMPIResult* result = plainResult();
        CMPIObjectPath* path = makePath();
        if (beforeRequest) beforeRequest();
        const CMPIrc rc = call(context, result, path).rc;
        if (afterRequest) afterRequest();
        return {rc, plainReturned(result), plainDoneCount(result)};
    }

    // Called around the table's function alone, if set.
    std::function<void()> beforeRequest;
    std::function<void()> afterRequest;

    PlainAnswer enumerate(const char* className, const char** properties = nullptr,
                          const char* nameSpace = implementationNamespace);
    /// The only port's instance.
    PlainAnswer getPort();
    /// What is associated with the only port.
    PlainAnswer associatorsOfPort(const char* assocClass = nullptr, const char* resultClass = nullptr,
                                  const char* role = nullptr, const char* resultRole = nullptr);
    PlainAnswer invoke(const char* className, const char* methodName, const CMPIArgs* in, CMPIArgs* out);
    /// The storage service's InstallFromURI for a file that is not there.
    PlainAnswer install();

    /// Activates a filter.
    void subscribe();

    /// Lines of the log that tell what the server lacks.
    std::vector<std::string> linesAboutTheServer() const;

    CMPIInstanceMI* instances = nullptr;
    CMPIAssociationMI* associations = nullptr;
    CMPIMethodMI* methods = nullptr;
    CMPIIndicationMI* filters = nullptr;
    CMPIStatus loadStatus{CMPI_RC_OK, nullptr};
    bool hasContext = true;

private:
    /// The only port's path, in the current scope.
    CMPIObjectPath* portPath();
};
