// What each request costs through the C tables, by the number of ports, as three tables:
//
// - of the rebuild of the port list that stands before requests on ports and their associations: all of it, the
//   library's calls in it alone, and what the provider adds for each port;
// - of each class: enumInstances, and as its limit straight calls of the tables that make the same instances of ready
//   values;
// - of each association: enumInstances, and associators from the first object of its left class. Associations have no
//   index by design, so their enumerations grow with the product of both lists; `per pair` shows that it is no worse.
//
// Each figure is the median of this thread's own time. The machine may be busy with other things.
#include "fake_services.h"

#include "bench/fleet_of_ports.h"
#include "cimhost/broker/broker.h"
#include "cimhost/broker/result_collector.h"
#include "cimhost/model/class_repository.h"
#include "classes/storage/fc_port.h"
#include "cmpift.h"
#include "inventory/tavik.h"
#include "inventory/tree_walk.h"
#include "log/log.h"
#include "provider/association_tables.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

extern "C" {
CMPIInstanceMI* Merolt_CNA_Provider_Create_InstanceMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
CMPIAssociationMI* Merolt_CNA_Provider_Create_AssociationMI(const CMPIBroker*, const CMPIContext*, CMPIStatus*);
}

namespace {

using namespace cimhost;

constexpr const char* nameSpace = "root/merolt_cmpi";
constexpr int portCounts[] = {2, 16, 128};
constexpr int rebuildPortCounts[] = {2, 16, 128, 1024};

double threadTime() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) * 1e-3;
}

/// Median in microseconds of at least five and at most 200 calls, for about a fifth of a second.
template <class Call>
double microseconds(Call&& call) {
    constexpr double enough = 2e5;
    std::vector<double> times;
    double spent = 0;
    while (times.size() < 5 || (spent < enough && times.size() < 200)) {
        const double start = threadTime();
        call();
        times.push_back(threadTime() - start);
        spent += times.back();
    }
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

/// The server around the provider, on a fleet of its own. Its polling thread sleeps.
class Host {
public:
    explicit Host(int ports) : file(std::filesystem::temp_directory_path() / "merolt-requests.json") {
        std::ofstream(file) << fleetOf(ports);
        setenv("TAVIK_SOURCE", ("fleet:" + file.string()).c_str(), 1);
        merolt::platform::replaceServices(&services);
        classes.loadFile(nameSpace, std::filesystem::path(MEROLT_MOF_DIRECTORY) / "merolt.mof");
        RequestScope scope(broker);
        const CMPIContext* context = ContextObject::make(scope.arena());
        instanceMI = Merolt_CNA_Provider_Create_InstanceMI(broker.table(), context, nullptr);
        associationMI = Merolt_CNA_Provider_Create_AssociationMI(broker.table(), context, nullptr);
        services.waitUntilIdle();
        merolt::gDebugLog = false;
        merolt::gErrorLog = false;
        if (countOf("Merolt_FCHBA_FCPort") != static_cast<std::size_t>(ports)) {
            std::fprintf(stderr, "requests: the fleet of %d ports was not loaded\n", ports);
            std::exit(1);
        }
    }
    ~Host() {
        {
            RequestScope scope(broker);
            const CMPIContext* context = ContextObject::make(scope.arena());
            associationMI->ft->cleanup(associationMI, context, 1);
            instanceMI->ft->cleanup(instanceMI, context, 1);
        }
        merolt::platform::replaceServices(nullptr);
        std::filesystem::remove(file);
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// Calls `read` with the instances while they live.
    template <class Read>
    void enumerate(const std::string& className, Read&& read) {
        RequestScope scope(broker);
        ResultCollector result(scope, ResultKind::instances);
        const ObjectPathObject* path = scope.make().path(nameSpace, className);
        instanceMI->ft->enumerateInstances(instanceMI, ContextObject::make(scope.arena()), &result, path, nullptr);
        read(result.instances);
    }
    std::size_t countOf(const std::string& className) {
        std::size_t count = 0;
        enumerate(className, [&](const auto& instances) { count = instances.size(); });
        return count;
    }

    /// From the first object of a class. @return how many objects came.
    std::size_t associators(const std::string& sourceClass, const std::string& association) {
        RequestScope scope(broker);
        const CMPIContext* context = ContextObject::make(scope.arena());
        ResultCollector sources(scope, ResultKind::paths);
        const ObjectPathObject* path = scope.make().path(nameSpace, sourceClass);
        instanceMI->ft->enumerateInstanceNames(instanceMI, context, &sources, path);
        if (sources.paths.empty()) return 0;
        ResultCollector result(scope, ResultKind::instances);
        const double start = threadTime();
        associationMI->ft->associators(associationMI, context, &result, sources.paths.front(), association.c_str(),
                                       nullptr, nullptr, nullptr, nullptr);
        lastCall = threadTime() - start;
        return result.instances.size();
    }

    const CMPIBroker* table() const { return broker.table(); }
    Broker& server() { return broker; }
    const ClassRepository& repository() const { return classes; }
    double lastCall = 0;

private:
    std::filesystem::path file;
    FakeServices services;
    ClassRepository classes;
    Broker broker{classes};
    CMPIInstanceMI* instanceMI = nullptr;
    CMPIAssociationMI* associationMI = nullptr;
};

// The limit.

/// A value as the tables take it. Arrays and dates are objects of the server and are made for each instance.
struct ReadyProperty {
    std::string name;
    CMPIType type = CMPI_null;
    CMPIValue value{};
    std::string text;
    std::vector<CMPIValue> elements;
};

std::string textOf(const CMPIString* string) {
    const char* text = string ? string->ft->getCharPtr(string, nullptr) : nullptr;
    return text ? text : "";
}

std::vector<ReadyProperty> readyProperties(const CMPIInstance* instance) {
    std::vector<ReadyProperty> properties;
    const CMPICount count = instance->ft->getPropertyCount(instance, nullptr);
    for (CMPICount index = 0; index < count; ++index) {
        CMPIString* name = nullptr;
        const CMPIData data = instance->ft->getPropertyAt(instance, index, &name, nullptr);
        if (data.state & CMPI_nullValue) continue;
        ReadyProperty property{textOf(name), data.type, data.value, {}, {}};
        if (data.type == CMPI_string) {
            property.type = CMPI_chars;
            property.text = textOf(data.value.string);
        } else if (data.type & CMPI_ARRAY) {
            const CMPICount size = data.value.array->ft->getSize(data.value.array, nullptr);
            for (CMPICount element = 0; element < size && !(data.type == CMPI_stringA); ++element)
                property.elements.push_back(
                    data.value.array->ft->getElementAt(data.value.array, element, nullptr).value);
            if (data.type == CMPI_stringA) property.elements.resize(size);
        }
        properties.push_back(std::move(property));
    }
    return properties;
}

void setReadyProperty(const CMPIBroker* broker, CMPIInstance* instance, const ReadyProperty& property) {
    CMPIValue value = property.value;
    if (property.type == CMPI_chars) {
        value.chars = const_cast<char*>(property.text.c_str());
    } else if (property.type == CMPI_dateTime) {
        value.dateTime = broker->eft->newDateTime(broker, nullptr);
    } else if (property.type & CMPI_ARRAY) {
        const auto elementType = static_cast<CMPIType>(property.type & ~CMPI_ARRAY);
        value.array =
            broker->eft->newArray(broker, static_cast<CMPICount>(property.elements.size()), elementType, nullptr);
        CMPICount index = 0;
        for (CMPIValue element : property.elements) {
            if (elementType == CMPI_string) element.string = broker->eft->newString(broker, "", nullptr);
            value.array->ft->setElementAt(value.array, index++, &element, elementType);
        }
    }
    instance->ft->setProperty(instance, property.name.c_str(), &value, property.type);
}

using ReadyInstances = std::vector<std::vector<ReadyProperty>>;

void makeReadyInstances(Host& host, const std::string& className, const ReadyInstances& ready) {
    RequestScope scope(host.server());
    ResultCollector collector(scope, ResultKind::instances);
    const CMPIResult* result = &collector;
    const CMPIBroker* broker = host.table();
    for (const std::vector<ReadyProperty>& properties : ready) {
        CMPIObjectPath* path = broker->eft->newObjectPath(broker, nameSpace, className.c_str(), nullptr);
        CMPIInstance* instance = broker->eft->newInstance(broker, path, nullptr);
        for (const ReadyProperty& property : properties)
            setReadyProperty(broker, instance, property);
        result->ft->returnInstance(result, instance);
    }
    result->ft->returnDone(result);
}

ReadyInstances readyInstances(Host& host, const std::string& className) {
    ReadyInstances ready;
    host.enumerate(className, [&](const auto& instances) {
        for (const InstanceObject* instance : instances)
            ready.push_back(readyProperties(instance));
    });
    return ready;
}

// The rebuild.

struct Rebuild {
    double all = 0;
    double calls = 0; ///< of the library: those that it makes, and nothing else
};

/// What createFCPort asks of the library.
void askLibrary(TAVIK_DeviceRecord* device) {
    static std::uint8_t block[1024];
    char* text = nullptr;
    std::uint32_t size = 0;
    if (TAVIK_GetUUIDFromI2CVPD(device, &text, &size) == 0) TAVIK_FreeMem(text);
    size = sizeof(block);
    TAVIK_GetVpd(device->handle, 0, block, &size);
    TAVIK_GetHbaDevicePortProperty(device->handle, 0, &device->portProperty);
}

/// The host's polling thread sleeps, so nobody else is at the lists.
Rebuild measureRebuild(int ports) {
    const Host host(ports);
    const int rounds = 1 + 512 / ports;
    const auto repeated = [&](auto&& call) {
        return microseconds([&] {
                   for (int round = 0; round < rounds; ++round)
                       call();
               }) /
               rounds;
    };
    return {repeated([] {
                merolt::storage::clearFCPortList();
                merolt::storage::buildFCPortList();
            }),
            repeated([] { merolt::forEachStorageFunction(TAVIK_GetAdapterList(), askLibrary); })};
}

void printRebuilds() {
    std::printf("rebuild of the port list\n%8s %12s %12s %16s\n", "ports", "all us", "library us", "ours ns a port");
    for (const int ports : rebuildPortCounts) {
        const Rebuild rebuild = measureRebuild(ports);
        std::printf("%8d %12.2f %12.2f %16.0f\n", ports, rebuild.all, rebuild.calls,
                    (rebuild.all - rebuild.calls) * 1000 / ports);
    }
}

// The tables.

struct Figures {
    std::size_t rows = 0;
    double request = 0;
    double other = 0; ///< the limit, or associators
    double pairs = 0;
};

using Table = std::map<std::string, std::map<int, Figures>>;

Figures measureClass(Host& host, const std::string& className) {
    const ReadyInstances ready = readyInstances(host, className);
    return {ready.size(), microseconds([&] { host.countOf(className); }),
            microseconds([&] { makeReadyInstances(host, className, ready); }), 0};
}

Figures measureAssociation(Host& host, const ClassDeclaration& association) {
    std::vector<std::string> ends;
    for (const auto& property : association.properties())
        if (!property.referenceClass.empty()) ends.push_back(property.referenceClass);
    Figures figures;
    figures.rows = host.countOf(association.name());
    figures.request = microseconds([&] { host.countOf(association.name()); });
    std::vector<double> times;
    for (int round = 0; round < 21; ++round) {
        host.associators(ends.front(), association.name());
        times.push_back(host.lastCall);
    }
    std::nth_element(times.begin(), times.begin() + 10, times.end());
    figures.other = times[10];
    figures.pairs = static_cast<double>(host.countOf(ends.front()) * host.countOf(ends.back()));
    return figures;
}

void print(const Table& table, const char* title, const char* other, bool hasPairs) {
    std::printf("%s\n%-84s", title, "");
    for (const int ports : portCounts)
        std::printf("%5d ports: rows  request us  %s", ports, other);
    std::printf("\n");
    for (const auto& [name, sizes] : table) {
        std::printf("%-84s", name.c_str());
        for (const auto& [ports, figures] : sizes) {
            if (hasPairs) {
                std::printf("%17zu %11.1f %14.1f %9.3f", figures.rows, figures.request, figures.other,
                            figures.request / std::max(figures.pairs, 1.0));
            } else {
                std::printf("%17zu %11.1f %8.1f %6.2f", figures.rows, figures.request, figures.other,
                            figures.request / figures.other);
            }
        }
        std::printf("\n");
    }
}

} // namespace

int main() {
    printRebuilds();
    Table classTable;
    Table associationTable;
    for (const int ports : portCounts) {
        Host host(ports);
        for (const ClassDeclaration* declaration : host.repository().classes(nameSpace)) {
            const std::string name(declaration->name());
            if (name.rfind("Merolt_", 0) != 0) continue;
            if (declaration->isAssociation()) {
                associationTable[name][ports] = measureAssociation(host, *declaration);
            } else if (name.find("Indication") == std::string::npos) {
                classTable[name][ports] = measureClass(host, name);
            }
        }
    }
    print(classTable, "enumInstances of each class against straight calls of the tables", "limit us  ratio", false);
    print(associationTable, "enumInstances of each association, and associators from one source",
          "associators us  per pair", true);
}
