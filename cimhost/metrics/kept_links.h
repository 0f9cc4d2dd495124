// Keeps which port is at which jack from one reading of the adapters to the next. To answer this, the provider compares
// every port with every jack while it holds its lock. On a host with many ports that takes longer than all the rest.
#pragma once

#include "cimhost/broker/arena.h"
#include "cimhost/monitoring/snapshot.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost::metrics {

class KeptLinks {
public:
    /// The enumeration for one reading. It asks for the associations of ports and jacks only if ports or jacks have
    /// changed since the kept ones were read. What it returns lives until the next reading, and no longer than what
    /// `enumerate` returns.
    class Look {
    public:
        Look(KeptLinks& links, const monitoring::Enumerate& enumerate) : kept(links), ask(enumerate) {}
        std::vector<const InstanceObject*> operator()(const char* className);

    private:
        [[nodiscard]] std::vector<const InstanceObject*> linksOf(const char* className, const char* portClass);

        KeptLinks& kept;
        const monitoring::Enumerate& ask;
        std::string jacks;
        std::map<std::string_view, std::vector<const InstanceObject*>> ahead; // read before they were asked for
    };

private:
    struct Links {
        std::string ends;
        std::unique_ptr<Arena> memory;
        std::vector<const InstanceObject*> instances;
    };

    std::map<std::string_view, Links> byClass;
};

} // namespace cimhost::metrics
