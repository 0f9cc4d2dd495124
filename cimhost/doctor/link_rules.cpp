#include "cimhost/doctor/link_rules.h"

#include "cimhost/doctor/names.h"
#include "optics/level.h"

#include <algorithm>
#include <cmath>

namespace cimhost::doctor {

using namespace monitoring;

namespace {

/// What is known of the light that arrives.
enum class Light { unknown, dark, arrives };

Light lightOf(const Module& module) {
    if (module.told.laneCount == 0) return Light::unknown;
    const optics::Lane lane = optics::worstLane(module.told);
    if (lane.receiveLoss.value_or(false)) return Light::dark;
    const optics::Monitor& power = lane.receivePowerMilliwatts;
    if (!power.reading) return lane.receiveLoss ? Light::arrives : Light::unknown;
    if (*power.reading <= 0) return Light::dark;
    const auto level = optics::levelOf(power);
    if (level == optics::Level::Unknown) return lane.receiveLoss ? Light::arrives : Light::unknown;
    return level == optics::Level::LowAlarm ? Light::dark : Light::arrives;
}

std::string lightText(const Module& module) {
    const optics::Lane lane = optics::worstLane(module.told);
    const auto& reading = lane.receivePowerMilliwatts.reading;
    if (reading) return "the module receives " + powerText(*reading);
    return lane.receiveLoss.value_or(false) ? "the module tells a lost signal" : "the module receives a signal";
}

constexpr std::string_view farEnd = "This end sends light, so look at the other end and at the fibre that leads here.";
constexpr std::string_view thisEnd =
    "This end's own transmitter is off or faulty: begin with this module and this port.";

bool sends(const optics::Lane& lane) {
    if (lane.transmitFault.value_or(false) || lane.transmitDisabled.value_or(false)) return false;
    const auto level = optics::levelOf(lane.transmitPowerMilliwatts);
    return level != optics::Level::LowAlarm && lane.transmitPowerMilliwatts.reading.value_or(1) > 0;
}

void examineLinks(const Look& look, Light light, std::vector<Sign>& signs) {
    for (const Module& module : look.now.modules) {
        if (!isLinkDown(look.now, module.jack) || lightOf(module) != light) continue;
        const bool tells = light != Light::unknown;
        const optics::Lane lane = optics::worstLane(module.told);
        const std::string_view hint = light == Light::dark ? (sends(lane) ? farEnd : thisEnd) : std::string_view();
        signs.push_back({portText(look.now, module.jack),
                         "no link; " + (tells ? lightText(module) : "the module tells nothing of its light"), hint});
    }
}

/// Gigabits of Fibre Channel: 17000000000 bits per second are 16.
std::uint64_t gigabitsOf(std::uint64_t bitsPerSecond) {
    constexpr double bitsOfOneGigabit = 1.0625e9;
    return static_cast<std::uint64_t>(std::lround(static_cast<double>(bitsPerSecond) / bitsOfOneGigabit));
}

void examineFibreChannelSpeed(const Look& look, const Module& module, std::vector<Sign>& signs) {
    const FibreChannelPort* port = fibreChannelAt(look.now, module.jack);
    const auto& fastest = module.told.identity.fibreChannelGigabits;
    if (!port || port->state != LinkState::up || !port->speedBitsPerSecond || !fastest) return;
    if (!port->largestSpeedBitsPerSecond) return;
    const auto speed = gigabitsOf(*port->speedBitsPerSecond);
    const auto possible = std::min<std::uint64_t>(gigabitsOf(*port->largestSpeedBitsPerSecond), *fastest);
    if (speed >= possible) return;
    signs.push_back({portText(look.now, module.jack), "the link runs at " + std::to_string(speed) +
                                                          " Gbit/s; card and module both have " +
                                                          std::to_string(possible) + " Gbit/s"});
}

/// The Ethernet speed of a module of one lane by its signalling rate. 0: not known.
std::uint64_t ethernetMegabits(const optics::Identity& identity) {
    if (identity.formFactor != "SFP" || !identity.bitRateMegabaud) return 0;
    const auto rate = *identity.bitRateMegabaud;
    if (rate >= 25000) return 25000;
    if (rate >= 10000) return 10000;
    return rate >= 1000 && rate < 2000 ? 1000 : 0;
}

/// Every Ethernet port is published with ten gigabits as its largest speed.
void examineEthernetSpeed(const Look& look, const Module& module, std::vector<Sign>& signs) {
    constexpr std::uint64_t largestMegabits = 10000;
    const EthernetPort* port = ethernetAt(look.now, module.jack);
    if (!port || port->state != LinkState::up || !port->speedMegabits) return;
    const auto possible = std::min(largestMegabits, ethernetMegabits(module.told.identity));
    if (*port->speedMegabits >= possible) return;
    signs.push_back({portText(look.now, module.jack), "the link runs at " + std::to_string(*port->speedMegabits) +
                                                          " Mbit/s; card and module both have " +
                                                          std::to_string(possible) + " Mbit/s"});
}

} // namespace

bool isLinkDown(const Snapshot& snapshot, const std::string& jack) {
    const FibreChannelPort* storage = fibreChannelAt(snapshot, jack);
    const EthernetPort* ethernet = ethernetAt(snapshot, jack);
    return (storage && storage->state == LinkState::down) || (ethernet && ethernet->state == LinkState::down);
}

void examineLinkDownWithLight(const Look& look, std::vector<Sign>& signs) { examineLinks(look, Light::arrives, signs); }

void examineLinkDownInTheDark(const Look& look, std::vector<Sign>& signs) { examineLinks(look, Light::dark, signs); }

void examineLinkDown(const Look& look, std::vector<Sign>& signs) { examineLinks(look, Light::unknown, signs); }

void examineSpeed(const Look& look, std::vector<Sign>& signs) {
    for (const Module& module : look.now.modules) {
        examineFibreChannelSpeed(look, module, signs);
        examineEthernetSpeed(look, module, signs);
    }
}

void examineTargets(const Look& look, std::vector<Sign>& signs) {
    const auto& ports = look.now.fibreChannelPorts;
    for (const FibreChannelPort& port : ports) {
        if (port.state != LinkState::up || port.targets != 0) continue;
        const auto sister = std::find_if(ports.begin(), ports.end(), [&](const FibreChannelPort& other) {
            return other.cardSerialNumber == port.cardSerialNumber && other.targets != 0;
        });
        if (sister == ports.end()) continue;
        signs.push_back({portText(look.now, port), "the link is up and no target is seen; " +
                                                       portText(look.now, *sister) + " sees " +
                                                       std::to_string(sister->targets)});
    }
}

void examineMtu(const Look& look, std::vector<Sign>& signs) {
    // FC-BB-5: a frame of 2112 bytes of data with its headers is an Ethernet payload of 2158 bytes.
    constexpr std::uint64_t smallestMtu = 2158;
    for (const EthernetPort& port : look.now.ethernetPorts) {
        const FibreChannelPort* storage = fibreChannelAt(look.now, port.jack);
        if (!storage || !storage->isOverEthernet || port.mtuBytes == 0 || port.mtuBytes >= smallestMtu) continue;
        signs.push_back({portText(look.now, port), "the MTU is " + std::to_string(port.mtuBytes) +
                                                       " bytes; full Fibre Channel frames need 2158"});
    }
}

} // namespace cimhost::doctor
