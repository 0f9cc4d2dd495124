#include "inventory/chain.h"

#include "log/log.h"

namespace merolt {

namespace {

struct ChainName {
    const char* entries;
    const char* counts; ///< where the library tells how many there are; null where it does not
};

constexpr ChainName names[chainKinds] = {
    {"adapters", nullptr},           {"physical ports", nullptr},
    {"protocol functions", nullptr}, {"targets", "storage functions"},
    {"logical units", "targets"},
};

const ChainName& nameOf(ChainKind kind) { return names[static_cast<std::size_t>(kind)]; }

bool cutIsTold[chainKinds];
bool countIsTold[chainKinds];

/// Whether it was told before; from now on it is.
bool wasTold(bool (&told)[chainKinds], ChainKind kind) {
    bool& is = told[static_cast<std::size_t>(kind)];
    const bool was = is;
    is = true;
    return was;
}

} // namespace

void reportCutChain(ChainKind kind) {
    if (wasTold(cutIsTold, kind)) return;
    ERROR_LOG("Error: a chain of %s in the TAVIK adapter list comes back to itself or is longer than %u entries; it is "
              "read to there",
              nameOf(kind).entries, mostEntries(kind));
}

void reportWildCount(ChainKind kind) {
    if (wasTold(countIsTold, kind)) return;
    ERROR_LOG("Error: the %s in the TAVIK adapter list count more %s than any machine has; those in the chains are "
              "counted instead",
              nameOf(kind).counts, nameOf(kind).entries);
}

void forgetCutChains() {
    for (std::size_t kind = 0; kind < chainKinds; ++kind)
        cutIsTold[kind] = countIsTold[kind] = false;
}

} // namespace merolt
