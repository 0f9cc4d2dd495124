// What the broker costs a provider: an instance of 21 properties, two of them arrays, and the setting of one property.
// Everything goes through the C tables, in a request of its own as a server has it.
#include <benchmark/benchmark.h>

#include <array>
#include <filesystem>
#include <string>

#include "cimhost/broker/broker.h"
#include "cimhost/broker/result_collector.h"
#include "cimhost/model/class_repository.h"

using namespace cimhost;

namespace {

constexpr const char* nameSpace = "root/merolt_cmpi";
constexpr const char* className = "Merolt_FCHBA_FCPort";

const CMPIValue* at(const void* variable) { return static_cast<const CMPIValue*>(variable); }

const CMPIUint16 number16 = 2;
const CMPIUint64 number64 = 16000000000ULL;
const CMPISint32 number32 = 1;

struct Property {
    const char* name;
    CMPIType type;
    const void* value;
};

constexpr std::array<Property, 19> scalars = {{
    {"SystemCreationClassName", CMPI_chars, "Merolt_Adapter_ComputerSystem"},
    {"SystemName", CMPI_chars, "host.example.com"},
    {"CreationClassName", CMPI_chars, className},
    {"DeviceID", CMPI_chars, "SERIAL0123456789-20:00:00:11:22:33:44:55"},
    {"PortType", CMPI_uint16, &number16},
    {"Speed", CMPI_uint64, &number64},
    {"MaxSpeed", CMPI_uint64, &number64},
    {"PermanentAddress", CMPI_chars, "2000001122334455"},
    {"LinkTechnology", CMPI_uint16, &number16},
    {"ElementName", CMPI_chars, "Fibre Channel Port 0"},
    {"UsageRestriction", CMPI_uint16, &number16},
    {"SupportedMaximumTransmissionUnit", CMPI_uint64, &number64},
    {"VPDData", CMPI_chars, "PN:12345 EC:A SN:SERIAL0123456789 MN:Example V0:1.0 V1:2.0"},
    {"OptionROMVersions", CMPI_chars, "1.2.3.4"},
    {"SpeedDescription", CMPI_chars, "16 Gbps"},
    {"DeviceNumber", CMPI_uint16, &number16},
    {"DeviceStatus", CMPI_sint32, &number32},
    {"Model", CMPI_chars, "Example 1020"},
    {"ENodeMACAddress", CMPI_chars, "00:11:22:33:44:55"},
}};
constexpr std::array<const char*, 2> arrays = {"OperationalStatus", "ActiveFC4Types"};

class Server {
public:
    Server()
        : broker((classes.loadFile(nameSpace, std::filesystem::path(MEROLT_MOF_DIRECTORY) / "merolt.mof"), classes)) {}

    CMPIInstance* newInstance() const {
        const CMPIBroker* cmpi = broker.table();
        return cmpi->eft->newInstance(cmpi, cmpi->eft->newObjectPath(cmpi, nameSpace, className, nullptr), nullptr);
    }

    // False if the broker refused anything.
    bool fill(CMPIInstance* made) const {
        bool isGood = true;
        for (const Property& property : scalars) {
            isGood &= made->ft->setProperty(made, property.name, at(property.value), property.type).rc == CMPI_RC_OK;
        }
        for (const char* name : arrays) {
            const CMPIBroker* cmpi = broker.table();
            CMPIArray* array = cmpi->eft->newArray(cmpi, 2, CMPI_uint16, nullptr);
            array->ft->setElementAt(array, 0, at(&number16), CMPI_uint16);
            array->ft->setElementAt(array, 1, at(&number16), CMPI_uint16);
            isGood &= made->ft->setProperty(made, name, at(&array), CMPI_uint16A).rc == CMPI_RC_OK;
        }
        return isGood;
    }

    ClassRepository classes;
    Broker broker;
};

Server& server() {
    static Server only;
    return only;
}

// One answer of as many instances: made, filled and returned.
void answerOfInstances(benchmark::State& state) {
    const Server& host = server();
    const auto count = static_cast<std::size_t>(state.range(0));
    for (auto round : state) {
        static_cast<void>(round);
        RequestScope scope(server().broker);
        ResultCollector result(scope, ResultKind::instances);
        for (std::size_t number = 0; number < count; ++number) {
            CMPIInstance* made = host.newInstance();
            if (!host.fill(made)) return state.SkipWithError("a property was refused");
            result.ft->returnInstance(&result, made);
        }
        benchmark::DoNotOptimize(result.instances.size());
    }
    const auto instances = state.iterations() * state.range(0);
    state.SetItemsProcessed(instances);
    const double properties = static_cast<double>(instances) * static_cast<double>(scalars.size() + arrays.size());
    state.counters["per_property"] =
        benchmark::Counter(properties, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    state.counters["per_instance"] =
        benchmark::Counter(static_cast<double>(instances), benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(answerOfInstances)->Arg(1)->Arg(32)->Arg(1024)->Unit(benchmark::kMicrosecond);

// One property of one instance; a request ends after a thousand, as its memory does.
void setProperty(benchmark::State& state, const Property& property) {
    constexpr std::size_t batch = 1000;
    for (auto round : state) {
        static_cast<void>(round);
        RequestScope scope(server().broker);
        CMPIInstance* made = server().newInstance();
        for (std::size_t count = 0; count < batch; ++count) {
            benchmark::DoNotOptimize(made->ft->setProperty(made, property.name, at(property.value), property.type));
        }
    }
    state.counters["per_property"] = benchmark::Counter(static_cast<double>(state.iterations()) * batch,
                                                        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK_CAPTURE(setProperty, uint16, Property{"PortType", CMPI_uint16, &number16});
BENCHMARK_CAPTURE(setProperty, uint64, Property{"SupportedMaximumTransmissionUnit", CMPI_uint64, &number64});
BENCHMARK_CAPTURE(setProperty, chars, Property{"DeviceID", CMPI_chars, "SERIAL0123456789-20:00:00:11:22:33:44:55"});
BENCHMARK_CAPTURE(setProperty, wrongType, Property{"PortType", CMPI_uint32, &number32});

void getProperty(benchmark::State& state, const char* name) {
    RequestScope outer(server().broker);
    CMPIInstance* made = server().newInstance();
    server().fill(made);
    constexpr std::size_t batch = 1000;
    for (auto round : state) {
        static_cast<void>(round);
        RequestScope scope(server().broker);
        for (std::size_t count = 0; count < batch; ++count) {
            CMPIStatus status{};
            benchmark::DoNotOptimize(made->ft->getProperty(made, name, &status));
        }
    }
    state.counters["per_property"] = benchmark::Counter(static_cast<double>(state.iterations()) * batch,
                                                        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK_CAPTURE(getProperty, uint16, "PortType");
BENCHMARK_CAPTURE(getProperty, string, "DeviceID");

} // namespace
