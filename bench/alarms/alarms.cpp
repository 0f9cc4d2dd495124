// Alarms of the management library in bursts: how long until each has become an alert, whether any is lost, whether
// memory stays as it was, and what requests lose while alarms arrive.
#include "cimhost/broker/broker.h"
#include "cimhost/broker/result_collector.h"
#include "cimhost/model/class_repository.h"
#include "cmpift.h"
#include "indications/alarm_intake.h"
#include "log/log.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

extern "C" {
CMPIInstanceMI* Merolt_CNA_Provider_Create_InstanceMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
CMPIIndicationMI* Merolt_CNA_Provider_Create_IndicationMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
}

namespace {

using namespace cimhost;
using Clock = std::chrono::steady_clock;

constexpr const char* nameSpace = "root/merolt_cmpi";
constexpr std::uint32_t burstSize = 10000;
constexpr int bursts = 6;

double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

long residentKilobytes() {
    std::ifstream status("/proc/self/statm");
    long total = 0;
    long resident = 0;
    status >> total >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

/// Every alarm writes a line to standard output; the figures go to standard error.
void silenceStandardOutput() {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
}

/// A server around the provider on 16 ports, of which the one with number 1 is in a state that each alarm tells anew.
class Host {
public:
    Host() : file(std::filesystem::temp_directory_path() / "merolt-alarms.json") {
        std::ofstream(file) << R"({"cards": [
            {"serialNumber": "MC0", "ports": [{"storage": {"deviceNumber": 1, "state": "suspended"}}]},
            {"count": 15, "serialNumber": "MC{n}X", "ports": [{"storage": {}}]}]})";
        setenv("TAVIK_SOURCE", ("fleet:" + file.string()).c_str(), 1);
        classes.loadFile(nameSpace, std::filesystem::path(MEROLT_MOF_DIRECTORY) / "merolt.mof");
        RequestScope scope(broker);
        const CMPIContext* context = ContextObject::make(scope.arena());
        instanceMI = Merolt_CNA_Provider_Create_InstanceMI(broker.table(), context, nullptr);
        indicationMI = Merolt_CNA_Provider_Create_IndicationMI(broker.table(), context, nullptr);
        merolt::gDebugLog = false;
        merolt::gErrorLog = false;
        const CMPISelectExp* filter = SelectExpObject::make(scope.arena(), "SELECT * FROM CIM_AlertIndication", "WQL");
        const CMPIObjectPath* path = scope.make().path(nameSpace, "CIM_AlertIndication");
        indicationMI->ft->activateFilter(indicationMI, context, filter, "CIM_AlertIndication", path, 1);
    }
    ~Host() {
        RequestScope scope(broker);
        const CMPIContext* context = ContextObject::make(scope.arena());
        indicationMI->ft->cleanup(indicationMI, context, 1);
        instanceMI->ft->cleanup(instanceMI, context, 1);
        std::filesystem::remove(file);
    }

    std::size_t enumeratePorts() {
        RequestScope scope(broker);
        ResultCollector result(scope, ResultKind::instances);
        const ObjectPathObject* path = scope.make().path(nameSpace, "Merolt_FCHBA_FCPort");
        instanceMI->ft->enumerateInstances(instanceMI, ContextObject::make(scope.arena()), &result, path, nullptr);
        return result.instances.size();
    }

    std::atomic<std::uint32_t> alerts = 0;

private:
    BrokerOptions options() {
        BrokerOptions made;
        made.indicationSink = [this](std::string_view, const InstanceObject&) {
            ++alerts;
            return CMPI_RC_OK;
        };
        return made;
    }

    std::filesystem::path file;
    ClassRepository classes;
    Broker broker{classes, options()};
    CMPIInstanceMI* instanceMI = nullptr;
    CMPIIndicationMI* indicationMI = nullptr;
};

void raiseAlarm() { OSSGenerateHostNotificationAlarm(1, 0, 0, "port state"); }

void measureBurst(Host& host, int number) {
    host.alerts = 0;
    const auto start = Clock::now();
    for (std::uint32_t count = 0; count < burstSize; ++count)
        raiseAlarm();
    const double raised = secondsSince(start);
    while (host.alerts < burstSize && secondsSince(start) < 60)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    std::fprintf(stderr, "burst %d: %u alarms raised in %.3f s, %u alerts after %.3f s, %ld KiB resident\n", number,
                 burstSize, raised, host.alerts.load(), secondsSince(start), residentKilobytes());
}

double requestsPerSecond(Host& host) {
    const auto start = Clock::now();
    std::uint32_t requests = 0;
    for (; secondsSince(start) < 2; ++requests)
        host.enumeratePorts();
    return requests / secondsSince(start);
}

} // namespace

int main() {
    silenceStandardOutput();
    Host host;
    if (host.enumeratePorts() != 16) {
        std::fprintf(stderr, "alarms: the fleet was not loaded\n");
        return 1;
    }
    for (int number = 1; number <= bursts; ++number)
        measureBurst(host, number);
    const double alone = requestsPerSecond(host);
    std::atomic<bool> isOver = false;
    std::thread library([&] {
        while (!isOver) {
            raiseAlarm();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    const double amongAlarms = requestsPerSecond(host);
    isOver = true;
    library.join();
    std::fprintf(stderr, "enumerations of 16 ports a second: %.0f, and %.0f while a thousand alarms a second arrive\n",
                 alone, amongAlarms);
}
