// How long it takes to build all lists, at start and in a refresh, by the number of ports: in milliseconds and per
// port, with those of single lists.
#include "classes/physical/physical_connector.h"
#include "classes/physical/physical_package.h"
#include "classes/storage/fc_port.h"
#include "classes/storage/logical_port_group.h"
#include "classes/storage/port_controller.h"
#include "inventory/cna_list.h"
#include "inventory/tavik.h"
#include "log/log.h"
#include "provider/list_builders.h"
#include "software/software_identity.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

/// Two-port converged cards with a storage and an Ethernet function, a module and a target with two units on each port.
std::string fleetOf(std::int64_t ports) {
    const std::string port = R"({"transceiver": {"serialNumber": "MSR{n}P"}, "ethernet": {},
        "storage": {"pciDeviceId": "0xA127", "vpd": {"readOnly": {"SN": "MC1020S{n}"}}}})";
    return R"({"cards": [{"count": )" + std::to_string(ports / 2) +
           R"(, "serialNumber": "MC1020S{n}", "modelName": "MC1020", "ports": [)" + port + ", " + port + "]}]}";
}

/// The library with a fleet of that many ports, for one benchmark.
class Fleet {
public:
    explicit Fleet(std::int64_t ports) : file(std::filesystem::temp_directory_path() / "merolt-list-build.json") {
        std::ofstream(file) << fleetOf(ports);
        setenv("TAVIK_SOURCE", ("fleet:" + file.string()).c_str(), 1);
        isThere = TAVIK_Initialize(0, 0) == 0 && TAVIK_GetAdapterList();
        merolt::gDebugLog = false;
        merolt::gErrorLog = false;
    }
    ~Fleet() {
        merolt::clearLists();
        TAVIK_Uninitialize();
        std::filesystem::remove(file);
    }
    bool isThere;

private:
    std::filesystem::path file;
};

template <void (*Build)(), void (*Clear)()>
void buildAndClear(benchmark::State& state) {
    const Fleet fleet(state.range(0));
    if (!fleet.isThere) state.SkipWithError("the fleet could not be loaded");
    for (auto _ : state) {
        Build();
        state.PauseTiming();
        Clear();
        state.ResumeTiming();
    }
    state.counters["us/port"] =
        benchmark::Counter(static_cast<double>(state.range(0)) * 1e-6,
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

#define LIST_BENCHMARK(name, build, clear)                                                                             \
    BENCHMARK(buildAndClear<build, clear>)->Name(name)->Arg(8)->Arg(128)->Arg(1024)->Unit(benchmark::kMillisecond)

LIST_BENCHMARK("first build of all lists", merolt::buildListsAtStart, merolt::clearLists);
LIST_BENCHMARK("refresh of all lists", merolt::buildListsInRefresh, merolt::clearLists);
LIST_BENCHMARK("CNA list", merolt::Initialize_CNA_List, merolt::Clear_CNA_List);
LIST_BENCHMARK("FCPort", merolt::storage::buildFCPortList, merolt::storage::clearFCPortList);
LIST_BENCHMARK("PortController", merolt::storage::buildPortControllerList, merolt::storage::clearPortControllerList);
LIST_BENCHMARK("LogicalPortGroup", merolt::storage::buildLogicalPortGroupList,
               merolt::storage::clearLogicalPortGroupList);
LIST_BENCHMARK("PhysicalPackage", merolt::physical::buildPhysicalPackageList,
               merolt::physical::clearPhysicalPackageList);
LIST_BENCHMARK("PhysicalConnector", merolt::physical::buildPhysicalConnectorList,
               merolt::physical::clearPhysicalConnectorList);
LIST_BENCHMARK("SoftwareIdentity", merolt::software::buildSoftwareIdentityList,
               merolt::software::clearSoftwareIdentityList);

} // namespace

BENCHMARK_MAIN();
