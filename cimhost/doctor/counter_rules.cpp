#include "cimhost/doctor/counter_rules.h"

#include "cimhost/doctor/names.h"

#include <algorithm>
#include <iterator>

namespace cimhost::doctor {

using namespace monitoring;

namespace {

struct Cause {
    std::string_view counter;
    std::string_view text;
};

// clang-format off
constexpr Cause causes[] = {
    {"CRCErrors", "CRC errors come from dirty or damaged fibre and plugs, from too little light, or from a switch that passes on frames that were damaged before."},
    {"InvalidTransmissionWords", "Invalid words come from weak light, a worn module, a bad plug, or a speed that the path does not carry."},
    {"LossOfSyncCounter", "Synchronisation is lost when light is weak or broken for a moment: plugs, bent fibre, a module that fails."},
    {"LossOfSignalCounter", "The signal is lost when the other end is switched off or restarts, or a plug is loose."},
    {"LinkFailures", "A link fails when the other end restarts or is disabled, or cable or module break."},
    {"PrimitiveSeqProtocolErrCount", "Protocol errors of the link come from an end that restarts or from a bad path."},
};
// clang-format on

std::string_view causeOf(std::string_view counter) {
    const auto* cause =
        std::find_if(std::begin(causes), std::end(causes), [&](const Cause& one) { return one.counter == counter; });
    return cause == std::end(causes) ? std::string_view() : cause->text;
}

const FibreChannelPort* portOf(const Snapshot& snapshot, const std::string& portName) {
    const auto& ports = snapshot.fibreChannelPorts;
    const auto port =
        std::find_if(ports.begin(), ports.end(), [&](const FibreChannelPort& one) { return one.portName == portName; });
    return port == ports.end() ? nullptr : &*port;
}

/// A port that nobody uses: no link, and nothing plugged. What it once counted troubles nobody.
bool isUnused(const Snapshot& snapshot, const FibreChannelPort& port) {
    return port.state == LinkState::down && !moduleAt(snapshot, port.jack);
}

std::string subjectOf(const Snapshot& snapshot, const std::string& portName) {
    const FibreChannelPort* port = portOf(snapshot, portName);
    return port ? portText(snapshot, *port) : "port " + portName;
}

const PortCounters* earlierOf(const Look& look, const std::string& portName) {
    if (!look.before) return nullptr;
    const auto earlier = std::find_if(look.before->begin(), look.before->end(),
                                      [&](const PortCounters& one) { return one.portName == portName; });
    return earlier == look.before->end() ? nullptr : &*earlier;
}

/// A counter that has reached a number which is no accident any more.
void examineTotal(const Look& look, std::string_view name, std::uint64_t suspicious, std::vector<Sign>& signs) {
    for (const PortCounters& counters : look.now.counters) {
        const FibreChannelPort* port = portOf(look.now, counters.portName);
        if (port && isUnused(look.now, *port)) continue;
        for (const auto& counter : counters.errors) {
            if (counter.name != name || counter.value < suspicious) continue;
            signs.push_back(
                {subjectOf(look.now, counters.portName),
                 std::string(name) + " is " + std::to_string(counter.value) + " since the driver was loaded",
                 causeOf(name)});
        }
    }
}

} // namespace

std::uint64_t growthOf(std::uint64_t before, std::uint64_t now) {
    constexpr std::uint64_t range = std::uint64_t{1} << 32;
    if (now >= before) return now - before;
    // Near its end it has wrapped; from anywhere else it has begun anew.
    const bool hasWrapped = before < range && before >= range / 2 && now < range / 2;
    return hasWrapped ? now + range - before : now;
}

void examineGrowth(const Look& look, std::vector<Sign>& signs) {
    for (const PortCounters& counters : look.now.counters) {
        const PortCounters* earlier = earlierOf(look, counters.portName);
        for (std::size_t i = 0; earlier && i < std::min(counters.errors.size(), earlier->errors.size()); ++i) {
            const auto& counter = counters.errors[i];
            const auto growth = growthOf(earlier->errors[i].value, counter.value);
            if (growth == 0) continue;
            signs.push_back({subjectOf(look.now, counters.portName),
                             std::string(counter.name) + " grew by " + std::to_string(growth) + " within " +
                                 std::to_string(look.seconds) + " s, to " + std::to_string(counter.value),
                             causeOf(counter.name)});
        }
    }
}

// A few of these come with every start of a host or a switch; a damaged frame does not.
void examineLinkFailures(const Look& look, std::vector<Sign>& signs) { examineTotal(look, "LinkFailures", 10, signs); }

void examineLossOfSignal(const Look& look, std::vector<Sign>& signs) {
    examineTotal(look, "LossOfSignalCounter", 10, signs);
}

void examineCrcErrors(const Look& look, std::vector<Sign>& signs) { examineTotal(look, "CRCErrors", 1, signs); }

} // namespace cimhost::doctor
