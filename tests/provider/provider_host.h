// A CIM server around the provider for tests: the embedded server's broker with its strict types, the classes of mof/,
// a working directory of its own, and calls through the C tables. With MEROLT_TEST_SERVER=foreign in the environment
// the provider works with another server (tests/foreign_server), and the requests and answers of the tests are copied
// on their way.
#pragma once

#include "fake_services.h"
#include "fake_tavik.h"

#include "cimhost/broker/broker.h"
#include "cimhost/broker/result_collector.h"
#include "cimhost/model/class_repository.h"
#include "foreign_server/server.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

extern "C" {
CMPIInstanceMI* Merolt_CNA_Provider_Create_InstanceMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
CMPIAssociationMI* Merolt_CNA_Provider_Create_AssociationMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
CMPIMethodMI* Merolt_CNA_Provider_Create_MethodMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
CMPIIndicationMI* Merolt_CNA_Provider_Create_IndicationMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
}

/// An instance or a path in a form that a test can compare: values read `uint16 2`, `string "text"`,
/// `uint16[] {2, 6}`, `boolean true`, `string null`.
struct TestObject {
    std::string className;
    std::string nameSpace;
    std::map<std::string, std::string> values;
    /// Keys of a path in the order of their setting. Properties in the class's order, or, in a namespace that lacks the
    /// class, in the order of their setting.
    std::vector<std::string> names;

    /// The value of a property or key; "absent" if it was not set.
    std::string operator[](const std::string& name) const;
    /// One line for each name in that order: `Name: value`.
    std::string table() const;
};

/// What a request gave.
struct Answer {
    CMPIrc rc = CMPI_RC_OK;
    std::string message;
    std::vector<TestObject> objects;
    std::size_t doneCount = 0;

    bool isOk() const { return rc == CMPI_RC_OK; }
    /// The named value of every object, in order.
    std::vector<std::string> all(const std::string& name) const;
};

using KeyValues = std::vector<std::pair<std::string, std::string>>;

/// The broker that the provider is handed: that one's, or the foreign server's.
const CMPIBroker* brokerOfProvider(const cimhost::Broker& broker);

class ProviderTest : public testing::Test {
protected:
    static constexpr const char* implementationNamespace = "root/merolt_cmpi";

    ProviderTest();
    ~ProviderTest() override;

    /// Files of the working directory; the provider's log and settings lie there.
    void writeFile(const std::string& name, const std::string& text);
    std::string readFile(const std::string& name) const;
    /// Messages of the log, without their times.
    std::vector<std::string> logLines(const std::string& file = "Merolt_CNA_Provider.log") const;
    bool logHas(const std::string& line) const;
    /// The messages since the last call.
    std::vector<std::string> takeLogLines();
    void switchLogsOn() { writeFile("meroltcna.properties", "DebugLog=1\nErrorLog=1\n"); }

    /// Calls the instance factory and waits until the first build is over and the polling thread sleeps.
    void start();
    /// The factories alone. @return null if it failed; the status is in factoryStatus.
    CMPIInstanceMI* createInstanceMI();
    CMPIAssociationMI* createAssociationMI();
    CMPIMethodMI* createMethodMI();
    CMPIIndicationMI* createIndicationMI();
    /// The instance factory on a server that has no place for the status.
    CMPIInstanceMI* createInstanceMIWithoutStatus();
    /// Cleans up every interface that was made, as a server that goes down does.
    void stop();

    Answer enumerateInstanceNames(const std::string& className, const std::string& nameSpace = implementationNamespace);
    Answer enumerateInstances(const std::string& className,
                              const std::optional<std::vector<std::string>>& properties = std::nullopt,
                              const std::string& nameSpace = implementationNamespace);
    /// Keys are strings.
    Answer getInstance(const std::string& className, const KeyValues& keys,
                       const std::optional<std::vector<std::string>>& properties = std::nullopt,
                       const std::string& nameSpace = implementationNamespace);
    Answer getInstanceByNumber(const std::string& className, const std::string& key, CMPIUint32 number);
    Answer createInstance(const std::string& className);
    Answer modifyInstance(const std::string& className);
    Answer deleteInstance(const std::string& className);
    Answer invokeMethod(const std::string& className, const std::string& method);

    // What the server that the provider works with can do, and what it knows of the provider.

    bool canJoinThreads() const { return brokerOfProvider(*broker)->xft->joinThread != nullptr; }
    /// Whether a context that no thread was attached to can be given back.
    bool canReleaseContexts() const { return foreignServer != nullptr; }
    std::size_t preparedContexts() const;
    std::size_t runningThreads() const;
    /// Lets the threads end that a server without joinThread does not wait for.
    void waitForEndedThreads();

    /// What the provider delivered so far, with the namespace that it named. Read while the polling thread sleeps.
    struct Indication {
        std::string deliveredTo;
        TestObject alert;
    };
    std::vector<Indication> indications;
    /// The server's answer to a delivery.
    CMPIrc deliveryAnswer = CMPI_RC_OK;
    /// Activates or deactivates a filter, as a server does for a subscription. The interface is made at the first call.
    void activateFilter();
    void deactivateFilter();

    /// The one instance of a class that has one; fails the test otherwise.
    TestObject onlyInstance(const std::string& className);
    /// Fails the test unless the instance has the same values as one of a namespace that lacks the class, which has
    /// only what the provider set, and besides only defaults of its class.
    void expectSameValues(const TestObject& instance, const TestObject& asSet);

    FakeTavik& tavikLibrary = FakeTavik::instance();
    FakeServices services;
    cimhost::ClassRepository classes;
    std::unique_ptr<cimhost::Broker> broker;
    CMPIStatus factoryStatus{CMPI_RC_OK, nullptr};
    CMPIInstanceMI* instanceMI = nullptr;
    CMPIAssociationMI* associationMI = nullptr;
    CMPIMethodMI* methodMI = nullptr;
    CMPIIndicationMI* indicationMI = nullptr;

private:
    template <class Factory>
    auto create(Factory factory, CMPIStatus* status);
    void startForeignServer();
    template <class Operation>
    void callFilterOperation(Operation operation);
    template <class Call>
    Answer request(cimhost::ResultKind kind, const std::string& className, const std::string& nameSpace, Call&& call);

    /// The provider's settings and switches last as long as the process; each test begins as a fresh process does.
    void forgetEarlierTests();
    void readOwnSettings();

    std::unique_ptr<foreign_server::Server> foreignServer;
    std::size_t classCount = 0; ///< of the namespaces as they were read
    std::size_t logLinesTaken = 0;
    static bool settingsWereRead;
    std::filesystem::path directory;
    std::filesystem::path previousDirectory;
    bool hasOwnSettings = false;
};
