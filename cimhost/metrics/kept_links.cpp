#include "cimhost/metrics/kept_links.h"

#include "cimhost/monitoring/published_classes.h"

#include <utility>

namespace cimhost::metrics {

namespace {

using Instances = std::vector<const InstanceObject*>;

struct LinkClass {
    const char* association;
    const char* port;
};

constexpr LinkClass linkClasses[] = {
    {monitoring::published::physicalPortFCPort, monitoring::published::fcPort},
    {monitoring::published::physicalPortEthernetPort, monitoring::published::ethernetPort},
};

/// The values of a key, one a line.
std::string keysOf(const Instances& instances, std::string_view key) {
    std::string keys;
    for (const InstanceObject* instance : instances) {
        const CMPIData* value = instance->value(key);
        if (value && (value->state & CMPI_nullValue) == 0) appendValueText(keys, *value);
        keys += '\n';
    }
    return keys;
}

} // namespace

Instances KeptLinks::Look::linksOf(const char* className, const char* portClass) {
    Instances& ports = ahead[portClass] = ask(portClass);
    const std::string ends = keysOf(ports, "DeviceID") + jacks;
    Links& links = kept.byClass[className];
    if (links.memory && links.ends == ends) return links.instances;
    Links made{ends, std::make_unique<Arena>(), {}};
    for (const InstanceObject* instance : ask(className))
        made.instances.push_back(instance->copyTo(*made.memory));
    links = std::move(made);
    return links.instances;
}

Instances KeptLinks::Look::operator()(const char* className) {
    for (const LinkClass& row : linkClasses) {
        if (row.association == std::string_view(className)) return linksOf(row.association, row.port);
    }
    if (const auto known = ahead.find(className); known != ahead.end()) return known->second;
    Instances instances = ask(className);
    if (className == std::string_view(monitoring::published::physicalPort)) jacks = keysOf(instances, "Tag");
    return instances;
}

} // namespace cimhost::metrics
