// What can be wrong with adapters, ports and modules, and how it shows in what a server publishes: one table of rules.
#pragma once

#include "cimhost/monitoring/snapshot.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace cimhost::doctor {

enum class Urgency {
    warning, ///< works, and somebody should look
    fault,   ///< does not work, or will not for long
};

/// What the rules look at.
struct Look {
    const monitoring::Snapshot& now;
    /// Counters of an earlier look; null where there was only one.
    const std::vector<monitoring::PortCounters>* before = nullptr;
    unsigned seconds = 0; ///< between the two
    /// By which clients know the host; none where the adapters are not those of the host that was asked.
    std::vector<std::string> systemNames = {};
};

/// One place where a rule holds.
struct Sign {
    std::string subject;        ///< "port 1 of card MC1020R4K00317"
    std::string evidence;       ///< what was seen, with numbers
    std::string_view hint = {}; ///< what this evidence says beyond the rule's own advice; may be empty
};

struct Rule {
    std::string_view name; ///< by which it is silenced
    Urgency urgency;
    std::string_view title;
    std::string_view why;    ///< why it matters
    std::string_view advice; ///< what to do
    void (*examine)(const Look& look, std::vector<Sign>& signs);
};

/// In the order of their urgency, the most urgent first.
std::span<const Rule> rules();

struct Diagnosis {
    const Rule* rule;
    Sign sign;
};

/// What holds, most urgent first, then in the order of the table and of the ports. @param ignored names of rules that
/// are left out.
std::vector<Diagnosis> diagnose(const Look& look, std::span<const std::string> ignored);

/// Null if there is none of that name.
const Rule* findRule(std::string_view name);

/// "fault", "warning".
std::string_view nameOf(Urgency urgency);

/// How much a counter of 32 bits has grown: it wraps, and begins anew when its driver is loaded again.
std::uint64_t growthOf(std::uint64_t before, std::uint64_t now);

} // namespace cimhost::doctor
