// What an update by bytes costs: InstallFromByteStream of 16 MiB through the C tables, and, as the limit, a loop over
// the same table calls that only reads the array. The figures to watch are the times per byte; the method's includes
// the write of the fleet.
#include "cimhost/broker/broker.h"
#include "cimhost/broker/request_scope.h"
#include "cimhost/broker/result_collector.h"
#include "cimhost/model/class_repository.h"
#include "cmpift.h"
#include "log/log.h"
#include "tavik/flash_image.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

extern "C" CMPIMethodMI* Merolt_CNA_Provider_Create_MethodMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*);

namespace {

using namespace cimhost;

constexpr const char* nameSpace = "root/merolt_cmpi";
constexpr const char* service = "Merolt_NIC_SoftwareInstallationService";

tavik::Bytes largestImage() {
    tavik::FlashImage image;
    image.cardModel = "MC1020";
    image.payload.resize(tavik::flashImageLimit - tavik::flashHeaderSize, 0x5A);
    return std::get<tavik::Bytes>(tavik::encodeFlashImage(image));
}

/// Provider and library on a fleet of one card, for the whole program.
class Server {
public:
    Server() : folder(std::filesystem::temp_directory_path() / "merolt-byte-stream") {
        std::filesystem::create_directories(folder);
        std::filesystem::current_path(folder);
        std::ofstream("fleet.json") << R"({"cards": [{"serialNumber": "S1", "modelName": "MC1020",
            "ports": [{"storage": {}, "ethernet": {}}]}]})";
        setenv("TAVIK_SOURCE", "fleet:fleet.json", 1);
        merolt::gDebugLog = false;
        classes.loadFile(nameSpace, std::filesystem::path(MEROLT_MOF_DIRECTORY) / "merolt.mof");
        RequestScope scope(broker);
        method = Merolt_CNA_Provider_Create_MethodMI(broker.table(), ContextObject::make(scope.arena()), nullptr);
        if (!method) std::exit(1);
    }
    ~Server() {
        RequestScope scope(broker);
        method->ft->cleanup(method, ContextObject::make(scope.arena()), 1);
        std::filesystem::current_path("/");
        std::filesystem::remove_all(folder);
    }

    std::filesystem::path folder;
    ClassRepository classes;
    Broker broker{classes};
    CMPIMethodMI* method = nullptr;
};

Server& server() {
    static Server only;
    return only;
}

/// Arguments with the image as a bare array, in the request's scope.
ArgsObject& arguments(RequestScope& scope) {
    const tavik::Bytes image = largestImage();
    ArrayObject* array = ArrayObject::make(scope.arena(), static_cast<CMPICount>(image.size()), CMPI_uint8);
    for (CMPICount index = 0; index < image.size(); ++index) {
        CMPIData byte{CMPI_uint8, CMPI_goodValue, {}};
        byte.value.uint8 = image[index];
        array->store(index, byte);
    }
    ObjectPathObject* target = scope.make().path(nameSpace, "Merolt_NIC_PortController");
    CMPIValue key{};
    key.string = scope.make().string("S1");
    target->addKey("DeviceID", &key, CMPI_string);
    ArgsObject& made = *scope.make().arguments();
    CMPIData bare{CMPI_ARRAY, CMPI_goodValue, {}};
    bare.value.array = array;
    made.list.setNamed(scope.arena(), "Image", bare);
    made.list.setNamed(scope.arena(), "Target", ObjectMaker::value(*target));
    return made;
}

void perByte(benchmark::State& state) {
    state.counters["ns_per_byte"] =
        benchmark::Counter(1e-9 * static_cast<double>(tavik::flashImageLimit),
                           benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void installFromByteStream(benchmark::State& state) {
    Server& host = server();
    for (auto _ : state) {
        state.PauseTiming();
        {
            RequestScope scope(host.broker);
            const ArgsObject& in = arguments(scope);
            ResultCollector result(scope, ResultKind::data);
            const ObjectPathObject* path = scope.make().path(nameSpace, service);
            ArgsObject* out = scope.make().arguments();
            const CMPIContext* context = ContextObject::make(scope.arena());
            state.ResumeTiming();
            host.method->ft->invokeMethod(host.method, context, &result, path, "InstallFromByteStream", &in, out);
            state.PauseTiming();
            if (result.data.size() != 1 || result.data[0].value.uint32 != 0) state.SkipWithError("the update failed");
        }
        state.ResumeTiming();
    }
    perByte(state);
}

void plainLoop(benchmark::State& state) {
    RequestScope scope(server().broker);
    const ArgsObject& in = arguments(scope);
    std::vector<CMPIUint8> bytes(tavik::flashImageLimit);
    for (auto _ : state) {
        RequestScope inner(server().broker);
        CMPIStatus status{};
        const CMPIData data = in.ft->getArg(&in, "Image", &status);
        const CMPICount size = data.value.array->ft->getSize(data.value.array, &status);
        for (CMPICount index = 0; index < size; ++index)
            bytes[index] = data.value.array->ft->getElementAt(data.value.array, index, &status).value.uint8;
        benchmark::DoNotOptimize(bytes.data());
    }
    perByte(state);
}

BENCHMARK(plainLoop)->Unit(benchmark::kMillisecond);
BENCHMARK(installFromByteStream)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
