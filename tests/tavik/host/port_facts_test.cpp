// What a port tells beside the library's records, from files that are written here.
#include <limits>
#include <map>

#include <gtest/gtest.h>

#include "scratch_tree.h"
#include "tavik/host/host_source.h"
#include "tavik/host/port_facts.h"

namespace tavik::host::test {
namespace {

using Lines = std::vector<std::string>;

constexpr auto everything = std::numeric_limits<std::uint32_t>::max();

std::string show(const FactValue& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return *text;
    if (const auto* truth = std::get_if<bool>(&value)) return *truth ? "yes" : "no";
    return std::to_string(std::get<std::uint64_t>(value));
}

/** Facts by name; an absent one with its reason behind a hyphen. */
class Shown {
public:
    explicit Shown(const std::vector<HostFact>& facts) {
        for (const auto& fact : facts) {
            auto& lines = lines_[std::string(fact.row->name)];
            if (!fact.values) lines.push_back("- " + fact.values.absence().reason);
            if (fact.values)
                for (const auto& value : *fact.values)
                    lines.push_back(show(value));
        }
    }

    std::string operator[](const std::string& name) const {
        const auto found = lines_.find(name);
        return found == lines_.end() ? "not asked" : found->second.front();
    }
    Lines all(const std::string& name) const { return lines_.at(name); }

private:
    std::map<std::string, Lines> lines_;
};

class PortFacts : public testing::Test {
protected:
    Shown interface(const std::string& name, std::uint32_t groups = everything) {
        const auto tree = scratch.tree();
        const auto queries = scratch.queries();
        return Shown(PortFactReader(tree, *queries).ofInterface(name, groups));
    }
    Shown host(std::uint32_t number, std::uint32_t groups = everything) {
        const auto tree = scratch.tree();
        const auto queries = scratch.queries();
        return Shown(PortFactReader(tree, *queries).ofFibreChannelHost(number, groups));
    }

    ScratchTree scratch;
};

const std::string pci = "sys/devices/pci0000:00/0000:00:01.0/0000:03:00.0/";
const std::string net = pci + "net/ens1f0/";
const std::string fabricPci = "sys/devices/pci0000:40/0000:40:01.0/0000:41:00.0/";
const std::string fabricHost = fabricPci + "host7/fc_host/host7/";

TEST_F(PortFacts, TellThePlaceOfAPort) {
    scratch.copy("two-port-card");
    scratch.file(pci + "numa_node", "1\n");
    scratch.file("sys/bus/pci/slots/2/address", "0000:82:00\n");
    scratch.file("sys/bus/pci/slots/PCIe Slot 4/address", "0000:03:00\n");
    const auto facts = interface("ens1f0");
    EXPECT_EQ(facts["interfaceName"], "ens1f0");
    EXPECT_EQ(facts["pciAddress"], "0000:03:00.0");
    EXPECT_EQ(facts["pciSlot"], "PCIe Slot 4");
    EXPECT_EQ(facts["numaNode"], "1");
    EXPECT_EQ(facts["driverName"], "i40e");
}

TEST_F(PortFacts, TellTheLinkToTheMachine) {
    scratch.copy("two-port-card");
    scratch.file(pci + "current_link_width", "4\n");
    scratch.file(pci + "max_link_width", "8\n");
    scratch.file(pci + "current_link_speed", "2.5 GT/s PCIe\n");
    scratch.file(pci + "max_link_speed", "16.0 GT/s PCIe\n");
    const auto facts = interface("ens1f0");
    EXPECT_EQ(facts["pcieLanes"], "4");
    EXPECT_EQ(facts["maxPcieLanes"], "8");
    EXPECT_EQ(facts["pcieLaneSpeed"], "2500000000");
    EXPECT_EQ(facts["maxPcieLaneSpeed"], "16000000000");
}

TEST_F(PortFacts, TellSpeedsAndNegotiatedSettings) {
    scratch.copy("two-port-card");
    scratch.file(net + "speed", "100000\n");
    // 25000baseCR (31), 100000baseCR4 (38), autonegotiation (6).
    scratch.file("kernel/net/ens1f0/link_settings", "1 1 80000040 00000040\n");
    scratch.file("kernel/net/ens1f0/pause", "1 0 1\n");
    scratch.file("kernel/net/ens1f0/fec", "8 24\n");
    const auto facts = interface("ens1f0");
    EXPECT_EQ(facts["linkSpeed"], "100000000000");
    EXPECT_EQ(facts["maxLinkSpeed"], "100000000000");
    EXPECT_EQ(facts.all("supportedLinkSpeeds"), (Lines{"25000000000", "100000000000"}));
    EXPECT_EQ(facts["autoNegotiation"], "yes");
    EXPECT_EQ(facts["duplexMode"], "full");
    EXPECT_EQ(facts.all("activeFecModes"), Lines{"RS"});
    EXPECT_EQ(facts.all("configuredFecModes"), (Lines{"RS", "BaseR"}));
    EXPECT_EQ(facts["pauseAutoNegotiation"], "yes");
    EXPECT_EQ(facts["receivePause"], "no");
    EXPECT_EQ(facts["transmitPause"], "yes");
}

TEST_F(PortFacts, CountIn64Bits) {
    scratch.copy("two-port-card");
    scratch.file(net + "statistics/rx_bytes", "18446744073709551614\n");
    scratch.file(net + "statistics/tx_dropped", "7\n");
    const auto facts = interface("ens1f0");
    EXPECT_EQ(facts["totalReceivedBytes"], "18446744073709551614");
    EXPECT_EQ(facts["totalTransmitDrops"], "7");
    EXPECT_EQ(facts["totalTransmittedBytes"], "- No such file or directory");
}

TEST_F(PortFacts, AreAbsentWhereTheHostSaysNothing) {
    scratch.interface("veth0", "3", "02:00:00:00:00:01");
    scratch.file("sys/class/net/veth0/speed", "-1\n");
    const auto facts = interface("veth0");
    EXPECT_EQ(facts["interfaceName"], "veth0");
    EXPECT_EQ(facts["pciAddress"], "- virtual: no device link");
    EXPECT_EQ(facts["virtualFunctions"], "- virtual: no device link");
    EXPECT_EQ(facts["linkSpeed"], "- unknown to the driver");
    EXPECT_EQ(facts["usedBy"], "- nothing uses it");
    EXPECT_EQ(facts["lldpNeighbors"], "- No such file or directory");
}

TEST_F(PortFacts, ThatAreNoNumbersAreAbsent) {
    scratch.copy("two-port-card");
    scratch.file(pci + "numa_node", "-1\n");
    scratch.file(pci + "current_link_width", "x4\n");
    for (const auto* speed :
         {"Unknown speed", "8.0", "GT/s", ".5.5 GT/s", "99999999999 GT/s PCIe", "8.0 Mbit", "8.0.0 GT/s"}) {
        scratch.file(pci + "current_link_speed", std::string(speed) + "\n");
        EXPECT_EQ(interface("ens1f0")["pcieLaneSpeed"].substr(0, 2), "- ") << speed;
    }
    EXPECT_EQ(interface("ens1f0")["numaNode"], "- the machine is one node");
    EXPECT_EQ(interface("ens1f0")["pcieLanes"].substr(0, 2), "- ");
}

TEST_F(PortFacts, AreReadInTheGroupsAskedFor) {
    scratch.copy("two-port-card");
    const auto facts = interface("ens1f0", TavikFactsOfCounters);
    EXPECT_EQ(facts["interfaceName"], "not asked");
    EXPECT_EQ(facts["linkSpeed"], "not asked");
    EXPECT_EQ(facts["usedBy"], "not asked");
    EXPECT_NE(facts["totalReceivedBytes"], "not asked");
    EXPECT_EQ(host(7, TavikFactsOfAdapter)["linkSpeed"], "not asked");
}

TEST_F(PortFacts, TellWhatUsesAPort) {
    scratch.copy("two-port-card");
    scratch.interface("bond0", "20", "02:00:00:00:00:01");
    scratch.file("sys/class/net/bond0/uevent", "DEVTYPE=bond\nINTERFACE=bond0\n");
    scratch.interface("bond0.100", "21", "02:00:00:00:00:01");
    scratch.file("sys/class/net/bond0.100/uevent", "INTERFACE=bond0.100\nDEVTYPE=vlan\n");
    scratch.interface("br0", "22", "02:00:00:00:00:01");
    scratch.file("sys/class/net/br0/uevent", "DEVTYPE=bridge\n");
    scratch.link(net + "upper_bond0", "../../../../../virtual/net/bond0");
    scratch.link("sys/class/net/bond0/upper_bond0.100", "../bond0.100");
    scratch.link("sys/class/net/bond0.100/upper_br0", "../br0");
    scratch.link("sys/class/net/br0/upper_bond0", "../bond0");
    scratch.file(net + "bonding_slave/state", "backup\n");
    scratch.file(net + "bonding_slave/mii_status", "down\n");
    EXPECT_EQ(interface("ens1f0").all("usedBy"),
              (Lines{"bond0 (bond, backup, down)", "bond0.100 (vlan of bond0)", "br0 (bridge of bond0.100)"}));
}

TEST_F(PortFacts, TellWhoIsAtTheOtherEnd) {
    scratch.copy("two-port-card");
    scratch.file("kernel/net/ens1f0/neighbours", "00:1c:73:00:00:01\tEthernet1/7\tswitch17\tto web3\n"
                                                 "-\tge-0/0/1\tswitch18\tge-0/0/1\n"
                                                 "-\t-\t-\tport 9\n"
                                                 "00:1c:73:00:00:02\t-\t-\t-\n"
                                                 "-\t-\t-\t-\n");
    EXPECT_EQ(interface("ens1f0").all("lldpNeighbors"),
              (Lines{"switch17, port Ethernet1/7 (to web3), chassis 00:1c:73:00:00:01", "switch18, port ge-0/0/1",
                     "port port 9", "chassis 00:1c:73:00:00:02"}));
    for (const auto* broken : {"", "-\t-\t-\t-\n", "switch17\tEthernet1/7\n", "a\tb\tc\td\te\n"}) {
        scratch.file("kernel/net/ens1f0/neighbours", broken);
        EXPECT_EQ(interface("ens1f0")["lldpNeighbors"].substr(0, 2), "- ") << broken;
    }
}

TEST_F(PortFacts, TellTheMasterOfAPortWhereNoMoreIsRecorded) {
    scratch.copy("two-port-card");
    scratch.link(net + "master", "../../../../../virtual/net/team0");
    EXPECT_EQ(interface("ens1f0").all("usedBy"), Lines{"team0"});
}

TEST_F(PortFacts, TellTheFunctionsThatWereCarvedOutOfAPort) {
    scratch.copy("two-port-card");
    const std::string virtualFunction = "sys/devices/pci0000:00/0000:00:01.0/0000:03:10.0/";
    for (const auto* number : {"0", "2", "10"})
        scratch.link(pci + "virtfn" + number, "../0000:03:10." + std::string(1, *number));
    scratch.file(virtualFunction + "net/ens1f0v0/address", "02:00:00:00:00:09\n");
    scratch.link(virtualFunction + "net/ens1f0v0/device", "../../../0000:03:10.0");
    scratch.link(virtualFunction + "physfn", "../0000:03:00.0");
    scratch.link(virtualFunction + "subsystem", "../../../../bus/pci");
    scratch.link("sys/class/net/ens1f0v0", "../../devices/pci0000:00/0000:00:01.0/0000:03:10.0/net/ens1f0v0");
    EXPECT_EQ(interface("ens1f0").all("virtualFunctions"),
              (Lines{"0000:03:10.0 ens1f0v0", "0000:03:10.2", "0000:03:10.1"}));
    EXPECT_EQ(interface("ens1f0")["virtualFunctionOf"], "- no virtual function");
    EXPECT_EQ(interface("ens1f0v0")["virtualFunctionOf"], "0000:03:00.0 ens1f0");
    EXPECT_EQ(interface("ens1f0v0")["pciAddress"], "0000:03:10.0");
}

TEST_F(PortFacts, TellAPortAndItsFabric) {
    scratch.copy("fibre-channel");
    scratch.file(fabricHost + "speed", "16 Gbit\n");
    scratch.file(fabricHost + "supported_speeds", "4 Gbit, 8 Gbit, 16 Gbit\n");
    scratch.file(fabricHost + "port_id", "0x010a02\n");
    scratch.file(fabricHost + "fabric_name", "0x10000002000a0b0c\n");
    scratch.file(fabricHost + "symbolic_name", "Example HBA FW:v8.07.00 DVR:v10.02\n");
    scratch.file(fabricHost + "statistics/rx_frames", "0x123456789a\n");
    scratch.file(fabricHost + "statistics/nos_count", "0xffffffffffffffff\n");
    const auto facts = host(7);
    EXPECT_EQ(facts["interfaceName"], "host7");
    EXPECT_EQ(facts["pciAddress"], "0000:41:00.0");
    EXPECT_EQ(facts["driverName"], "fchba");
    EXPECT_EQ(facts["linkSpeed"], "16000000000");
    EXPECT_EQ(facts["maxLinkSpeed"], "16000000000");
    EXPECT_EQ(facts.all("supportedLinkSpeeds"), (Lines{"4000000000", "8000000000", "16000000000"}));
    EXPECT_EQ(facts["fabricPortId"], "010A02");
    EXPECT_EQ(facts["fabricName"], "10000002000A0B0C");
    EXPECT_EQ(facts["symbolicName"], "Example HBA FW:v8.07.00 DVR:v10.02");
    EXPECT_EQ(facts["totalReceivedFrames"], "78187493530");
    EXPECT_EQ(facts["totalNos"], "- not counted by the driver");
}

// Light, and nobody to talk to.
TEST_F(PortFacts, WithoutALoginHaveNoFabric) {
    scratch.copy("fibre-channel");
    scratch.file(fabricHost + "port_id", "0x000000\n");
    for (const auto* name : {"0x0", "0x0000000000000000", "0xffffffffffffffff"}) {
        scratch.file(fabricHost + "fabric_name", std::string(name) + "\n");
        EXPECT_EQ(host(7)["fabricName"].substr(0, 2), "- ") << name;
    }
    scratch.file(fabricHost + "speed", "unknown\n");
    EXPECT_EQ(host(7)["fabricPortId"], "- no login at a fabric");
    EXPECT_EQ(host(7)["linkSpeed"], "- no speed: unknown");
}

TEST_F(PortFacts, TellRemotePortsAndInitiatorsToo) {
    scratch.copy("fibre-channel");
    const std::string remote = fabricPci + "host7/rport-7:0-1/fc_remote_ports/rport-7:0-1/";
    scratch.file(remote + "port_name", "0x21000002000000aa\n");
    scratch.file(remote + "roles", "FCP Initiator\n");
    scratch.file(remote + "port_state", "Online\n");
    scratch.file(remote + "port_id", "0x010b00\n");
    EXPECT_EQ(host(7).all("remotePorts").at(1), "21000002000000AA: FCP Initiator, Online, 010B00");
    EXPECT_EQ(host(8)["remotePorts"], "- no remote ports");
}

TEST_F(PortFacts, TellLogicalUnitsWithTheirPaths) {
    scratch.copy("fibre-channel");
    const std::string unit = fabricPci + "host7/rport-7:0-0/target7:0:0/7:0:0:10/";
    const std::string mapper = "sys/devices/virtual/block/dm-0/";
    scratch.file(unit + "state", "running\n");
    scratch.file(unit + "block/sdb/size", "209715200\n");
    scratch.link(unit + "block/sdb/device", "../../../7:0:0:10");
    scratch.link(unit + "block/sdb/holders/dm-0", "../../../../../../../../../../virtual/block/dm-0");
    scratch.file(mapper + "dm/name", "mpatha\n");
    scratch.file(mapper + "dm/uuid", "mpath-3600102030405060708\n");
    scratch.link(mapper + "slaves/sdb",
                 "../../../../pci0000:40/0000:40:01.0/0000:41:00.0/host7/rport-7:0-0/target7:0:0/"
                 "7:0:0:10/block/sdb");
    scratch.link(mapper + "slaves/sdz", "../../../../nowhere/block/sdz");
    const auto units = host(7).all("logicalUnits");
    const auto isTen = [](const std::string& line) { return line.rfind("LUN 10 of ", 0) == 0; };
    const auto found = std::find_if(units.begin(), units.end(), isTen);
    ASSERT_NE(found, units.end());
    EXPECT_EQ(found->substr(found->find(": ")), ": sdb, 107374182400 bytes, running, mpatha with 2 paths, 1 running");
    EXPECT_EQ(units.size(), 5U);
}

TEST_F(PortFacts, OfAHostWithThousandsOfUnitsAreCut) {
    scratch.copy("fibre-channel");
    const std::string target = fabricPci + "host7/rport-7:0-0/target7:0:0/";
    for (int unit = 100; unit < 360; ++unit) {
        const std::string address = "7:0:0:" + std::to_string(unit);
        scratch.file(target + address + "/state", "running\n");
        scratch.link("sys/class/scsi_device/" + address + "/device", "../../../" + target.substr(4) + address);
    }
    const auto units = host(7).all("logicalUnits");
    EXPECT_EQ(units.size(), 257U);
    EXPECT_EQ(units.back(), "and more");
}

TEST_F(PortFacts, OfALibraryComeWithTheMaker) {
    scratch.copy("two-port-card");
    scratch.file(net + "speed", "25000\n");
    const auto source = makeHostSource(scratch.tree(), scratch.queries());
    EXPECT_EQ(source->nicFacts("ens1f0", everything).status, statusNoSuchDevice);
    source->load();
    const auto facts = source->nicFacts("ens1f0", everything);
    ASSERT_TRUE(facts.ok());
    std::map<std::string, std::string> shown;
    for (const auto& fact : facts.value)
        shown[std::string(fact.row->name)] = show(fact.value);
    EXPECT_EQ(shown["linkSpeed"], "25000000000");
    EXPECT_EQ(shown["adapterMaker"], "Intel Corporation");
    EXPECT_EQ(shown.count("pciSlot"), 0U);
    EXPECT_EQ(source->storageFacts(1, everything).status, statusNoSuchDevice);
}

} // namespace
} // namespace tavik::host::test
