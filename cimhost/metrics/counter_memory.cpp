#include "cimhost/metrics/counter_memory.h"

#include <algorithm>

namespace cimhost::metrics {

namespace {

constexpr std::uint64_t range = std::uint64_t{1} << 32;

/// Far more ports than a host has. A broken adapter that makes up new names each time cannot fill the memory.
constexpr std::size_t mostPorts = 65'536;

bool hasWrapped(std::uint64_t from, std::uint64_t to) {
    return from < range && from >= range / 4 * 3 && to < range / 4;
}

bool isZero(std::uint64_t value) { return value == 0; }

} // namespace

void CounterMemory::addWraps(Counters& counters, const std::vector<std::uint64_t>& values) {
    std::size_t fallen = 0;
    for (std::size_t place = 0; place < values.size(); ++place) {
        if (values[place] < counters[place].last) ++fallen;
    }
    if (fallen == 0) return;
    for (std::size_t place = 0; place < values.size(); ++place) {
        Counter& counter = counters[place];
        if (fallen > 1) {
            counter.wrapped = 0;
        } else if (values[place] < counter.last) {
            counter.wrapped = hasWrapped(counter.last, values[place]) ? counter.wrapped + range : 0;
        }
    }
}

std::optional<std::vector<std::uint64_t>> CounterMemory::take(const std::string& port,
                                                              const std::vector<std::uint64_t>& values) {
    if (ports.size() >= mostPorts && ports.count(port) == 0) ports.clear();
    Counters& counters = ports[port];
    counters.resize(values.size());
    const bool wasZero =
        std::all_of(counters.begin(), counters.end(), [](const Counter& counter) { return counter.last == 0; });
    if (!wasZero && std::all_of(values.begin(), values.end(), isZero)) return std::nullopt;
    addWraps(counters, values);
    std::vector<std::uint64_t> told;
    for (std::size_t place = 0; place < values.size(); ++place) {
        counters[place].last = values[place];
        told.push_back(values[place] + counters[place].wrapped);
    }
    return told;
}

} // namespace cimhost::metrics
