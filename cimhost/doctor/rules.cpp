#include "cimhost/doctor/rules.h"

#include "cimhost/doctor/counter_rules.h"
#include "cimhost/doctor/inventory_rules.h"
#include "cimhost/doctor/link_rules.h"
#include "cimhost/doctor/module_rules.h"

#include <algorithm>
#include <iterator>

namespace cimhost::doctor {

namespace {

constexpr Rule table[] = {
    {"no-adapters", Urgency::fault, "No adapter is published",
     "Nothing of this host's storage and network ports can be watched or changed.",
     "See what the machine has with tavik_host_dump, which names what it leaves out; look at TAVIK_SOURCE and "
     "/etc/tavik/source; root sees more than others.",
     examineNoAdapters},
    {"refused-question", Urgency::fault, "The server does not answer a question",
     "What this class would have told is missing here, so other troubles may go unseen.",
     "Ask for the class alone: cimhost enumerate CLASS --verbose; the provider's log tells more with ErrorLog=1.",
     examineRefusals},
    {"silent-card", Urgency::fault, "A card answers nothing",
     "A card whose ports do not show carries no traffic that anybody sees.",
     "Look at the kernel's log for its driver and firmware; reload the driver or reseat the card.", examineSilentCards},
    {"silent-port", Urgency::fault, "A port answers nothing", "Its link, its targets and its counters are not known.",
     "Look at the kernel's log for the port's driver and firmware.", examineSilentPorts},
    {"link-down-light", Urgency::fault, "A link is down although light arrives",
     "Cable and the other end's transmitter work, so something else keeps the link down.",
     "Compare speed, protocol and FEC settings of both ends; look whether the other end's port is enabled and whether "
     "it sees this end's light.",
     examineLinkDownWithLight},
    {"link-down-dark", Urgency::fault, "A link is down and no light arrives",
     "Nothing that the other end sends reaches this port.",
     "Look whether the other end is switched on and enabled, then at plugs and fibre; swap the two fibres if the link "
     "is new.",
     examineLinkDownInTheDark},
    {"module-unreadable", Urgency::fault, "The card cannot read its module",
     "A module that the card does not take may be switched off, and nothing is known of its light.",
     "Reseat the module; look whether the card takes modules of this vendor and kind.", examineUnreadable},
    {"optics-alarm", Urgency::fault, "A reading of a module is beyond an alarm",
     "Beyond its alarms a module works by luck, and may fail or damage itself.",
     "Temperature: look at airflow. Voltage: the slot or the card. Bias current up with transmit power down: the laser "
     "is worn, "
     "replace the module. Receive power: clean plugs, then look at the other end and the fibre.",
     examineAlarms},
    {"growing-errors", Urgency::fault, "An error counter grows",
     "Errors that happen now cost retries, time-outs and lost paths.",
     "Clean and reseat both plugs, then exchange cable and modules one at a time, and look again after each.",
     examineGrowth},
    {"duplicate-port-name", Urgency::fault, "A port name stands twice",
     "A fabric lets only one of two ports with one name log in, and masks for it hit the wrong one.",
     "Give each port its own name; look for a copied configuration or a virtual port.", examinePortNames},
    {"duplicate-mac-address", Urgency::fault, "A MAC address stands twice",
     "Switches send frames to whichever of the two spoke last.",
     "Give each port its own address; look for a copied configuration.", examineMacAddresses},
    {"link-down", Urgency::warning, "A link is down at a plugged module",
     "Somebody plugged it to use it, and the module does not tell whether light arrives.",
     "Look whether the other end is switched on and enabled, then at the cable.", examineLinkDown},
    {"optics-warning", Urgency::warning, "A reading of a module is beyond a warning",
     "It still works; what drifts there reaches the alarm next.",
     "Watch how it changes; look at airflow, plugs and fibre before it becomes an alarm.", examineWarnings},
    {"module-unbelievable", Urgency::warning, "A module contradicts itself",
     "Its readings or limits cannot be believed, so an alarm may be missed.",
     "Reseat the module; if it stays so, replace it. Some vendors write wrong checksums into good modules.",
     examineUnbelievable},
    {"low-receive-power", Urgency::warning, "Receive power is near the least that the module needs",
     "A little more loss, by dirt, a bend or age, brings errors.",
     "Clean plugs, look for bent or too long fibre, compare with what the other end sends.", examineReceivePower},
    {"low-speed", Urgency::warning, "A port is slower than card and module are",
     "The path carries less than was paid for.",
     "Look at the speed that both ends are set to, and at the other end's module.", examineSpeed},
    {"crc-errors", Urgency::warning, "Damaged frames were counted", "Each damaged frame is sent again or lost.",
     "Look with --interval whether they still grow.", examineCrcErrors},
    {"link-failures", Urgency::warning, "A link has failed many times",
     "Each failure interrupts input and output and can drop paths.", "Look with --interval whether they still grow.",
     examineLinkFailures},
    {"loss-of-signal", Urgency::warning, "The signal was lost many times", "Each loss interrupts the link.",
     "Look with --interval whether they still grow.", examineLossOfSignal},
    {"no-targets", Urgency::warning, "A port sees no target while its sister does",
     "A path to storage that should be there is missing; the next failure may cut the storage off.",
     "Look at zoning and masking for this port's name, and at the switch port's fabric.", examineTargets},
    {"fcoe-mtu", Urgency::warning, "The Ethernet MTU is too small for Fibre Channel frames",
     "Full Fibre Channel frames over Ethernet do not pass where the MTU holds for them.",
     "Set an MTU of 2500 or more on the interface and on every switch port of the path.", examineMtu},
    {"firmware-differs", Urgency::warning, "Cards of one model have different firmware",
     "What works on one card may fail on its neighbour.", "Bring all cards of the model to one version.",
     examineFirmwareOfModel},
    {"firmware-not-active", Urgency::warning, "Driver and flash have different firmware",
     "An update was not activated, or the driver brings a firmware of its own.",
     "Restart the host or reload the driver after an update; else bring driver and flash to versions that belong "
     "together.",
     examineFirmwareInUse},
    {"duplicate-serial-number", Urgency::warning, "A serial number stands twice",
     "Keys are made of serial numbers: tools can take one thing for the other.",
     "Compare with the labels; vital product data that was copied is a matter for the vendor.", examineSerialNumbers},
    {"loopback-name", Urgency::warning, "The host has a name that leads back to itself",
     "The name stands in every key. Tools that watch several hosts take the objects of one for those of another.",
     "Write SystemName=NAME to /etc/merolt/cim-provider.conf, or give the host's name an address of its own in "
     "/etc/hosts; then restart the CIM server.",
     examineSystemNames},
};

constexpr bool isOrdered() {
    for (std::size_t i = 1; i < std::size(table); ++i)
        if (table[i].urgency > table[i - 1].urgency) return false;
    return true;
}
static_assert(isOrdered());

} // namespace

std::span<const Rule> rules() { return table; }

std::vector<Diagnosis> diagnose(const Look& look, std::span<const std::string> ignored) {
    std::vector<Diagnosis> found;
    for (const Rule& rule : table) {
        if (std::find(ignored.begin(), ignored.end(), rule.name) != ignored.end()) continue;
        std::vector<Sign> signs;
        rule.examine(look, signs);
        for (Sign& sign : signs)
            found.push_back({&rule, std::move(sign)});
    }
    return found;
}

const Rule* findRule(std::string_view name) {
    const auto* rule =
        std::find_if(std::begin(table), std::end(table), [&](const Rule& one) { return one.name == name; });
    return rule == std::end(table) ? nullptr : rule;
}

std::string_view nameOf(Urgency urgency) { return urgency == Urgency::fault ? "fault" : "warning"; }

} // namespace cimhost::doctor
