// What an answer with all Fibre Channel ports costs: the whole request through the C tables, the rebuild of the list
// that it begins with, and, as the limit, straight calls of the tables that make the same instances of ready values.
//
// The three are measured in turns, so that a busy machine slows all of them down alike; each figure is a median. The
// figure to watch is `beyond_rebuild_over_limit`: (request - rebuild) / limit, without unit. `same_per_port` is that
// without what a request costs where there is no port: mostly the tests of its class, one for each row of the
// dispatcher's table. It should stay below 1.3, and `request_ns_per_port` should not grow with the number of ports.
#include "adapters.h"
#include "fake_services.h"
#include "ready_library.h"

#include "cimhost/broker/broker.h"
#include "cimhost/broker/result_collector.h"
#include "cimhost/model/class_repository.h"
#include "classes/storage/fc_port.h"
#include "classes/system_name.h"
#include "cmpift.h"
#include "log/log.h"
#include "tavik/vpd.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <vector>

extern "C" CMPIInstanceMI* Merolt_CNA_Provider_Create_InstanceMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*);

namespace {

using namespace cimhost;
using merolt::storage::FCPortEntry;
using merolt::storage::g_fcPortCount;
using merolt::storage::g_fcPortList;

constexpr const char* nameSpace = "root/merolt_cmpi";
constexpr const char* className = "Merolt_FCHBA_FCPort";

void require(bool condition, const char* what) {
    if (condition) return;
    std::cerr << "fc_port_enumeration: " << what << '\n';
    std::exit(1);
}

/// A modern card's vital product data.
tavik::Bytes vitalProductData() {
    return tavik::encodeVpd("Dual Port Adapter", {{"PN", "49Y7950"},
                                                  {"SN", "AB1234"},
                                                  {"MN", "1077"},
                                                  {"V1", "4.05"},
                                                  {"V3", "5.06.00"},
                                                  {"V4", "2.15"},
                                                  {"V5", "3.09"},
                                                  {"FN", "49Y7952"}});
}

tavik::Fleet fleetOf(std::uint32_t ports) {
    tavik::Card card = adapters::card("AB1234", {});
    for (std::uint32_t number = 0; number < ports; ++number) {
        tavik::StorageFunction function = adapters::storageFunction(number, 0xA121);
        function.property.portName = {
            0x21, 0, 0, 0x1B, 0x32, 0, static_cast<std::uint8_t>(number >> 8), static_cast<std::uint8_t>(number)};
        function.property.speedCode = 10;
        function.modelName = "MLT-8100";
        function.optionRom = {"2.15", {{5, 6, 0}}, {{4, 5}}, {{3, 9, 0}}};
        function.eNodeMac = tavik::MacAddress{0x0E, 0xFC, 0, 1, 2, 3};
        tavik::Port port;
        port.functions->push_back(function);
        card.ports->push_back(port);
    }
    return adapters::fleet({card});
}

/// The server around the provider. Its polling thread sleeps.
class Host {
public:
    Host() {
        merolt::gDebugLog = false;
        merolt::platform::replaceServices(&services);
        classes.loadFile(nameSpace, std::filesystem::path(MEROLT_MOF_DIRECTORY) / "merolt.mof");
        setReadyFleet({}, {});
        RequestScope scope(broker);
        instanceMI = Merolt_CNA_Provider_Create_InstanceMI(broker.table(), ContextObject::make(scope.arena()), nullptr);
        require(instanceMI != nullptr, "the provider was not made");
        services.waitUntilIdle();
    }

    ~Host() {
        {
            RequestScope scope(broker);
            instanceMI->ft->cleanup(instanceMI, ContextObject::make(scope.arena()), 1);
        }
        merolt::platform::replaceServices(nullptr);
    }

    /// Calls with the tables' context, result and class path. @return how many instances came.
    template <class Call>
    std::size_t answer(Call&& call) {
        RequestScope scope(broker);
        ResultCollector result(scope, ResultKind::instances);
        const ObjectPathObject* path = scope.make().path(nameSpace, className);
        call(ContextObject::make(scope.arena()), &result, path);
        return result.instances.size();
    }

    const CMPIBroker* table() const { return broker.table(); }

    std::size_t enumerate() {
        return answer([&](const CMPIContext* context, const CMPIResult* result, const CMPIObjectPath* path) {
            instanceMI->ft->enumerateInstances(instanceMI, context, result, path, nullptr);
        });
    }

private:
    FakeServices services;
    ClassRepository classes;
    Broker broker{classes};
    CMPIInstanceMI* instanceMI = nullptr;
};

// The limit.

struct ReadyProperty {
    const char* name;
    CMPIValue value;
    CMPIType type;
};

CMPIValue chars(const char* text) {
    CMPIValue value{};
    value.chars = const_cast<char*>(text);
    return value;
}

template <class Number>
CMPIValue number(Number CMPIValue::*member, std::uint64_t of) {
    CMPIValue value{};
    value.*member = static_cast<Number>(of);
    return value;
}

/// The values of a port as the tables take them. Texts stay in the record. The two arrays have to be made for each
/// instance, since they are objects of the server; their elements lie ready.
std::vector<ReadyProperty> readyProperties(const FCPortEntry& port) {
    const auto text = [](const char* name, const char* value) { return ReadyProperty{name, chars(value), CMPI_chars}; };
    const auto uint16 = [](const char* name, std::uint64_t value) {
        return ReadyProperty{name, number(&CMPIValue::uint16, value), CMPI_uint16};
    };
    const auto uint64 = [](const char* name, std::uint64_t value) {
        return ReadyProperty{name, number(&CMPIValue::uint64, value), CMPI_uint64};
    };
    const auto array = [](const char* name, std::uint64_t element) {
        return ReadyProperty{name, number(&CMPIValue::uint16, element), CMPI_uint16A};
    };
    return {
        text("SystemCreationClassName", "Merolt_Adapter_ComputerSystem"),
        text("SystemName", merolt::gSystemName),
        text("CreationClassName", className),
        text("DeviceID", port.deviceID.text()),
        array("OperationalStatus", port.operationalStatus),
        array("ActiveFC4Types", 0),
        uint16("PortType", port.portType),
        uint64("Speed", port.speed),
        uint64("MaxSpeed", port.maxSpeed),
        text("PermanentAddress", port.permanentAddress.text()),
        uint16("LinkTechnology", 4),
        text("ElementName", port.deviceID.text()),
        uint16("UsageRestriction", 0),
        uint64("SupportedMaximumTransmissionUnit", 0),
        text("VPDData", port.vpdData.text()),
        text("OptionROMVersions", port.optionROMVersions.text()),
        text("SpeedDescription", port.speedDescription.text()),
        uint16("DeviceNumber", port.deviceNumber),
        ReadyProperty{"DeviceStatus", number(&CMPIValue::sint32, port.deviceStatus), CMPI_sint32},
        text("Model", port.model.text()),
        text("ENodeMACAddress", "0EFC00010203"),
    };
}

using ReadyPorts = std::vector<std::vector<ReadyProperty>>;

void setReadyProperty(const CMPIBroker* broker, CMPIInstance* instance, const ReadyProperty& property) {
    if (property.type != CMPI_uint16A) {
        instance->ft->setProperty(instance, property.name, &property.value, property.type);
        return;
    }
    CMPIValue value{};
    value.array = broker->eft->newArray(broker, 1, CMPI_uint16, nullptr);
    value.array->ft->setElementAt(value.array, 0, &property.value, CMPI_uint16);
    instance->ft->setProperty(instance, property.name, &value, property.type);
}

std::size_t makeReadyInstances(Host& host, const ReadyPorts& ports) {
    const CMPIBroker* broker = host.table();
    return host.answer([&](const CMPIContext*, const CMPIResult* result, const CMPIObjectPath*) {
        for (const std::vector<ReadyProperty>& properties : ports) {
            CMPIObjectPath* path = broker->eft->newObjectPath(broker, nameSpace, className, nullptr);
            CMPIInstance* instance = broker->eft->newInstance(broker, path, nullptr);
            for (const ReadyProperty& property : properties)
                setReadyProperty(broker, instance, property);
            result->ft->returnInstance(result, instance);
        }
        result->ft->returnDone(result);
    });
}

// The measuring.

double threadTime() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

/// Of this thread's own time: what others do on the machine does not count.
template <class Call>
double nanoseconds(Call&& call) {
    const double start = threadTime();
    call();
    return threadTime() - start;
}

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void rebuild() {
    merolt::storage::clearFCPortList();
    merolt::storage::buildFCPortList();
}

/// Medians in nanoseconds of this thread's time.
struct Costs {
    double request;
    double rebuild;
    double limit;
};

/// Measures as often as `more` says; it is told what each request took.
template <class More>
Costs measure(Host& host, std::uint32_t ports, More&& more) {
    setReadyFleet(fleetOf(ports), vitalProductData());
    rebuild();
    // Records of their own, since requests replace those of the provider.
    const std::vector<FCPortEntry> records(g_fcPortList, g_fcPortList + g_fcPortCount);
    ReadyPorts ready;
    for (const FCPortEntry& record : records)
        ready.push_back(readyProperties(record));
    require(host.enumerate() == ports && makeReadyInstances(host, ready) == ports, "not every port was answered");

    std::vector<double> requests;
    std::vector<double> rebuilds;
    std::vector<double> limits;
    do {
        // Request and rebuild both find the processor's caches as the limit leaves them.
        makeReadyInstances(host, ready);
        requests.push_back(nanoseconds([&] { host.enumerate(); }));
        limits.push_back(nanoseconds([&] { makeReadyInstances(host, ready); }));
        rebuilds.push_back(nanoseconds(rebuild));
    } while (more(requests.back()));
    return {median(requests), median(rebuilds), median(limits)};
}

void enumerateFCPorts(benchmark::State& state) {
    static Host host;
    constexpr int emptyRounds = 2000;
    const Costs empty = measure(host, 0, [round = 0](double) mutable { return ++round < emptyRounds; });
    const auto ports = static_cast<std::uint32_t>(state.range(0));
    bool isRunning = state.KeepRunning();
    const Costs costs = measure(host, ports, [&](double request) {
        state.SetIterationTime(request * 1e-9);
        isRunning = state.KeepRunning();
        return isRunning;
    });
    state.counters["request_ns_per_port"] = costs.request / ports;
    state.counters["rebuild_ns_per_port"] = costs.rebuild / ports;
    state.counters["limit_ns_per_port"] = costs.limit / ports;
    state.counters["request_without_ports_ns"] = empty.request;
    state.counters["beyond_rebuild_over_limit"] = (costs.request - costs.rebuild) / costs.limit;
    state.counters["same_per_port"] =
        (costs.request - empty.request - (costs.rebuild - empty.rebuild)) / (costs.limit - empty.limit);
}

} // namespace

BENCHMARK(enumerateFCPorts)->Arg(2)->Arg(64)->Arg(1024)->UseManualTime()->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
