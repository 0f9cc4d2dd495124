// The provider over a management library that breaks its tree as the input says: every list is built, every class and
// association asked for. An input is a row of tricks, each with its choices (tests/attack/hostile_library).

#include "everything.h"
#include "fake_services.h"
#include "hostile_tree.h"

#include "indications/alarm_intake.h"
#include "indications/port_status_indication.h"
#include "inventory/cna_list.h"
#include "inventory/poll_thread_context.h"
#include "log/log.h"
#include "provider/list_builders.h"

#include "cimhost/broker/request_scope.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

extern "C" {
CMPIInstanceMI* Merolt_CNA_Provider_Create_InstanceMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
CMPIAssociationMI* Merolt_CNA_Provider_Create_AssociationMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
CMPIMethodMI* Merolt_CNA_Provider_Create_MethodMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
}

namespace {

/// A server with the provider in it, whose polling thread sleeps for ever.
class World {
public:
    World() {
        enterOwnDirectory();
        // Where the provider tells each alarm.
        if (!std::freopen("/dev/null", "w", stdout)) throw std::runtime_error("no /dev/null");
        classes.loadFile("root/merolt_cmpi", std::filesystem::path(MEROLT_MOF_DIRECTORY) / "merolt.mof");
        classes.addNamespace("root/PG_InterOp");
        broker = std::make_unique<cimhost::Broker>(classes, cimhost::BrokerOptions{});
        merolt::platform::replaceServices(&services);
        serve(hostileTree(std::string()));
        interfaces.instance = make(Merolt_CNA_Provider_Create_InstanceMI);
        interfaces.association = make(Merolt_CNA_Provider_Create_AssociationMI);
        interfaces.method = make(Merolt_CNA_Provider_Create_MethodMI);
        services.waitUntilIdle();
        thread.provider = g_Merolt_CNA_Provider;
    }

    void show(std::unique_ptr<HostileTree> tree, bool isRefresh) {
        merolt::clearLists();
        // Every class and association is asked for: with thousands of ports an input would take most of a minute.
        tree->answers.mostChanges = 100;
        serve(std::move(tree));
        isRefresh ? merolt::buildListsInRefresh() : merolt::buildListsAtStart();
        merolt::Update_CNA_List(&thread, nullptr);
        const Tally tally = askForEverything(*broker, classes, interfaces, "image.bin", 2);
        require(tally.unfinished == 0, "a request did not end");
        require(outstandingBlocks() == 0, "a block was not given back");
        require(strangeReturns() == 0, "a block was given back twice");
        tellAlarms();
    }

private:
    static void require(bool holds, const char* otherwise) {
        if (holds) return;
        std::fprintf(stderr, "%s\n", otherwise);
        std::abort();
    }

    static void enterOwnDirectory() {
        std::string pattern = (std::filesystem::temp_directory_path() / "merolt-fuzz-XXXXXX").string();
        if (!mkdtemp(pattern.data())) throw std::runtime_error("no working directory");
        static const std::filesystem::path directory = pattern;
        std::atexit([] {
            std::error_code ignored;
            std::filesystem::remove_all(directory, ignored);
        });
        std::filesystem::current_path(directory);
        std::ofstream("meroltcna.properties") << "ErrorLog=1\n";
        std::ofstream("image.bin") << "image";
    }

    template <class Interface>
    Interface* make(Interface* (*factory)(const CMPIBroker*, const CMPIContext*, CMPIStatus*)) {
        cimhost::RequestScope scope(*broker);
        CMPIStatus status{CMPI_RC_OK, nullptr};
        Interface* const made = factory(broker->table(), cimhost::ContextObject::make(scope.arena()), &status);
        require(made != nullptr, "no interface");
        return made;
    }

    void tellAlarms() {
        cimhost::RequestScope scope(*broker);
        CmpiBroker server(const_cast<CMPIBroker*>(broker->table()));
        thread.broker = &server;
        thread.context = std::make_unique<CmpiContext>(cimhost::ContextObject::make(scope.arena()));
        for (const merolt::Alarm& alarm : merolt::takeAlarms())
            merolt::generatePortStatusIndication(thread, alarm);
        thread.context.reset();
        thread.broker = nullptr;
    }

    FakeServices services;
    cimhost::ClassRepository classes;
    std::unique_ptr<cimhost::Broker> broker;
    Interfaces interfaces;
    PollThreadContext thread;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    static World& world = *new World;
    if (size == 0) return 0;
    const bool isRefresh = data[0] % 2 == 1;
    world.show(hostileTree(Choices({data + 1, data + size})), isRefresh);
    return 0;
}
