// Which port is at which jack, from one look at the adapters to the next. To tell it, the provider compares every port
// with every jack, which on a host with many takes longer than all else, and holds its lock.
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
    /// One look: enumerates as it is asked to, but associations of ports and jacks only where these are others than
    /// when they were kept. What it returns lives as long as what the enumeration returns, and the next look.
    class Look {
    public:
        Look(KeptLinks& links, const monitoring::Enumerate& enumerate) : kept(links), ask(enumerate) {}
        std::vector<const InstanceObject*> operator()(const char* className);

    private:
        [[nodiscard]] std::vector<const InstanceObject*> linksOf(const char* className, const char* portClass);

        KeptLinks& kept;
        const monitoring::Enumerate& ask;
        std::string jacks;
        std::map<std::string_view, std::vector<const InstanceObject*>> ahead; // asked for before their turn
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
