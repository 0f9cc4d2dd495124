// What single requests cost in a provider library and in its library of adapters: loaded_provider [LIBRARY [PORTS...]]
// A negative number of ports is that of a fleet which tells facts beside the contract. Facts=off in the provider's
// settings (/etc/merolt/cim-provider.conf) is what to compare with.
//
// The library is loaded as servers load it, so that one of another build can be measured beside this one's. Each figure
// is the least time of this thread's own in many rounds: what else the machine does lengthens some rounds, but not all.
// A server adds reading, encoding and sending; bench/wrk/measure.py tells what clients see.
#include "bench/fleet_of_ports.h"
#include "cimhost/broker/broker.h"
#include "cimhost/broker/result_collector.h"
#include "cimhost/model/class_repository.h"
#include "cmpift.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using namespace cimhost;

constexpr const char* nameSpace = "root/merolt_cmpi";

double threadMicroseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) * 1e-3;
}

class Provider {
public:
    explicit Provider(const char* library) {
        classes.loadFile(nameSpace, std::filesystem::path(MEROLT_MOF_DIRECTORY) / "merolt.mof");
        void* const handle = dlopen(library, RTLD_NOW);
        if (!handle) fail(dlerror());
        instances = make<CMPIInstanceMI>(handle, "Merolt_CNA_Provider_Create_InstanceMI");
        associations = make<CMPIAssociationMI>(handle, "Merolt_CNA_Provider_Create_AssociationMI");
    }

    std::size_t get(const CMPIObjectPath* path) {
        return answerOf(ResultKind::instances, [&](ResultCollector& result) {
            instances->ft->getInstance(instances, context, &result, path, nullptr);
        });
    }
    std::size_t enumerate(const char* className) {
        return answerOf(ResultKind::instances, [&](ResultCollector& result) {
            instances->ft->enumerateInstances(instances, context, &result, classPath(className), nullptr);
        });
    }
    std::size_t enumerateNames(const char* className) {
        return answerOf(ResultKind::paths, [&](ResultCollector& result) {
            instances->ft->enumerateInstanceNames(instances, context, &result, classPath(className));
        });
    }
    /// @param association null: all of the object's.
    std::size_t associators(const CMPIObjectPath* path, const char* association) {
        return answerOf(ResultKind::instances, [&](ResultCollector& result) {
            associations->ft->associators(associations, context, &result, path, association, nullptr, nullptr, nullptr,
                                          nullptr);
        });
    }

    /// The path of the object in the middle. It lives as long as the provider.
    const CMPIObjectPath* middleOf(const char* className) {
        ResultCollector result(all, ResultKind::paths);
        instances->ft->enumerateInstanceNames(instances, context, &result, classPath(className));
        if (result.paths.empty()) fail(className);
        return result.paths[result.paths.size() / 2];
    }

private:
    [[noreturn]] static void fail(const char* what) {
        std::fprintf(stderr, "loaded_provider: %s\n", what);
        std::_Exit(1);
    }

    template <class Interface>
    Interface* make(void* handle, const char* factory) {
        using Factory = Interface* (*)(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
        const auto create = reinterpret_cast<Factory>(dlsym(handle, factory));
        if (!create) fail(factory);
        return create(broker.table(), context, nullptr);
    }

    CMPIObjectPath* classPath(const char* className) { return all.make().path(nameSpace, className); }

    template <class Call>
    std::size_t answerOf(ResultKind kind, Call&& call) {
        RequestScope scope(broker);
        ResultCollector result(scope, kind);
        call(result);
        return result.instances.size() + result.paths.size();
    }

    ClassRepository classes;
    Broker broker{classes};
    RequestScope all{broker};
    const CMPIContext* context = ContextObject::make(all.arena());
    CMPIInstanceMI* instances = nullptr;
    CMPIAssociationMI* associations = nullptr;
};

template <class Request>
void measure(const char* title, Request&& request) {
    constexpr double enough = 3e5;
    double least = std::numeric_limits<double>::max();
    double spent = 0;
    std::size_t objects = 0;
    for (int round = 0; round < 3 || (spent < enough && round < 1000); ++round) {
        const double start = threadMicroseconds();
        objects = request();
        const double took = threadMicroseconds() - start;
        least = std::min(least, took);
        spent += took;
    }
    std::printf("  %-58s %10.1f us %6zu objects\n", title, least, objects);
    std::fflush(stdout);
}

void measureAll(const char* library) {
    Provider provider(library);
    const CMPIObjectPath* const port = provider.middleOf("Merolt_FCHBA_FCPort");
    const CMPIObjectPath* const host = provider.middleOf("Merolt_Adapter_ComputerSystem");
    measure("EnumerateInstances FCPort", [&] { return provider.enumerate("Merolt_FCHBA_FCPort"); });
    measure("EnumerateInstances EthernetPort2", [&] { return provider.enumerate("Merolt_NIC_EthernetPort2"); });
    measure("EnumerateInstanceNames FCPort", [&] { return provider.enumerateNames("Merolt_FCHBA_FCPort"); });
    measure("GetInstance FCPort", [&] { return provider.get(port); });
    measure("Associators of a port", [&] { return provider.associators(port, nullptr); });
    measure("Associators of the host, one association class",
            [&] { return provider.associators(host, "Merolt_FCHBA_ComputerSystemFCPort"); });
    for (const char* association :
         {"Merolt_FCHBA_PhysicalConnectorFCPort", "Merolt_FCHBA_PhysicalPortFCPort",
          "Merolt_Adapter_PhysicalPackagePhysicalConnector", "Merolt_Adapter_PhysicalPackagePhysicalPort",
          "Merolt_FCHBA_FCPortFCPortStatistics", "Merolt_FCHBA_LogicalPortGroupFCPort",
          "Merolt_FCHBA_SoftwareIdentityPortController", "Merolt_NIC_PhysicalConnectorEthernetPort",
          "Merolt_NIC_PhysicalPortEthernetPort"})
        measure((std::string("EnumerateInstances ") + association).c_str(),
                [&] { return provider.enumerate(association); });
}

/// In a process of its own, as a provider reads its adapters once.
bool measureFleet(const char* library, int ports) {
    std::printf("%d ports%s\n", std::abs(ports), ports < 0 ? " with facts" : "");
    std::fflush(stdout);
    const pid_t child = fork();
    if (child != 0) {
        int status = 0;
        return child > 0 && waitpid(child, &status, 0) == child && status == 0;
    }
    const auto file =
        std::filesystem::temp_directory_path() / ("loaded-provider-" + std::to_string(getpid()) + ".json");
    std::ofstream(file) << (ports < 0 ? fleetWithFactsOf(-ports) : fleetOf(ports));
    setenv("TAVIK_SOURCE", ("fleet:" + file.string()).c_str(), 1);
    setenv("MEROLT_CNA_WAITS", "events", 1);
    measureAll(library);
    std::filesystem::remove(file);
    std::_Exit(0); // the provider's thread ends with it
}

} // namespace

int main(int count, char** arguments) {
    const char* const library = count > 1 ? arguments[1] : MEROLT_PROVIDER_LIBRARY;
    std::vector<int> fleets;
    for (int place = 2; place < count; ++place)
        fleets.push_back(std::atoi(arguments[place]));
    if (fleets.empty()) fleets = {8, 64, 128, 1024};
    const bool isGood = std::all_of(fleets.begin(), fleets.end(),
                                    [&](int ports) { return std::abs(ports) >= 2 && measureFleet(library, ports); });
    return isGood ? 0 : 1;
}
