#include "tavik/host/host_source.h"

#include <future>
#include <string_view>

#include <gtest/gtest.h>

#include "scratch_tree.h"
#include "tavik/host/module_translation.h"
#include "tavik/host/pci_vpd.h"
#include "tavik/host/text_forms.h"
#include "tests/optics/memories.h"

namespace tavik::host::test {
namespace {

std::unique_ptr<Source> sourceOf(const SysTree& tree) {
    return makeHostSource(tree, makeRecordedQueries(tree), std::chrono::milliseconds(5));
}

Fleet load(Source& source) {
    auto loaded = source.load();
    if (auto* error = std::get_if<FleetError>(&loaded)) throw std::runtime_error(error->message);
    return std::get<Fleet>(loaded);
}

Fleet recordedFleet(const std::string& name) { return load(*sourceOf(SysTree(ScratchTree::recorded(name)))); }

const Card& cardOf(const Fleet& fleet, const std::string& serialNumber) {
    for (const auto& card : *fleet.cards)
        if (card.serialNumber == serialNumber) return card;
    throw std::runtime_error("no card " + serialNumber);
}

template <typename Function>
const Function& functionOf(const Card& card, std::size_t port) {
    for (const auto& function : *card.ports->at(port).functions)
        if (const auto* found = std::get_if<Function>(&function)) return *found;
    throw std::runtime_error("no such function");
}

TEST(HostFleet, TwoPortCardIsOneCardWithItsVitalProductData) {
    const auto fleet = recordedFleet("two-port-card");
    ASSERT_EQ(fleet.cards->size(), 2U);
    const auto& card = cardOf(fleet, "A0369F112233");
    EXPECT_EQ(card.modelName, "Dual Port 10GbE Adapter");
    EXPECT_EQ(card.version, "8.30 0x8000a49d 1.2926.0");
    EXPECT_EQ(card.kind, 0U);
    ASSERT_EQ(card.ports->size(), 2U);
    const auto& nic = functionOf<NicFunction>(card, 0);
    EXPECT_EQ(nic.deviceName, "ens1f0");
    EXPECT_EQ(formatMac(nic.macAddress), "a0:36:9f:11:22:30");
    EXPECT_EQ(nic.card.manufacturer, "Intel Corporation");
    EXPECT_EQ(nic.card.driverVersion, "6.1.0");
    EXPECT_EQ(nic.card.flashVersion, "8.30 0x8000a49d 1.2926.0");
    EXPECT_EQ(nic.card.wwn, nic.macAddress);
    EXPECT_EQ(nic.card.serialNumber, std::nullopt);
    EXPECT_EQ(nic.mtu, 9000U);
    EXPECT_EQ(nic.link, (Link{10000, LinkUp}));
    EXPECT_EQ(nic.vpdItems.front(), (VpdItem{"PN", "G71345-006"}));
    EXPECT_EQ(nic.vpdItems.back(), (VpdItem{"Y1", "Rack 7, unit 12"}));
    EXPECT_EQ(serialIdText(nic.transceiver->pageA0, 40), "EX-SFP-10G-SR");
    EXPECT_EQ(formatIPAddress(nic.ip->ipv4), "192.0.2.10");
}

TEST(HostFleet, PortsOfACardDifferInNumberAndShareTheAdapter) {
    const auto fleet = recordedFleet("two-port-card");
    const auto& card = cardOf(fleet, "A0369F112233");
    const auto& first = functionOf<NicFunction>(card, 0);
    const auto& second = functionOf<NicFunction>(card, 1);
    EXPECT_EQ(first.adapterId, second.adapterId);
    EXPECT_EQ(first.portId, 0U);
    EXPECT_EQ(second.portId, 1U);
    EXPECT_EQ(second.link, (Link{0, LinkDown}));
    EXPECT_EQ(second.transceiver, std::nullopt);
    EXPECT_EQ(second.ip, IPConfiguration{});
    EXPECT_EQ(second.card.wwn, first.macAddress);
    EXPECT_NE(functionOf<NicFunction>(cardOf(fleet, "b8599f03000a1b2c"), 0).adapterId, first.adapterId);
}

TEST(HostFleet, CardOfAVirtualMachineShowsLinkAndAddress) {
    const auto fleet = recordedFleet("virtual-machine");
    ASSERT_EQ(fleet.cards->size(), 1U);
    const auto& card = fleet.cards->front();
    EXPECT_EQ(card.modelName, "vendor 0x1af4 device 0x1041");
    const auto& nic = functionOf<NicFunction>(card, 0);
    EXPECT_EQ(nic.card.manufacturer, "vendor 0x1af4");
    EXPECT_EQ(nic.link.state, LinkUp);
    EXPECT_EQ(formatIPAddress(nic.ip->ipv4), "192.0.2.2");
    EXPECT_EQ(formatIPAddress(nic.ip->ipv4Mask), "255.255.255.0");
    EXPECT_EQ(formatIPAddress(nic.ip->firstList.at(0)), "fd00::2");
}

TEST(HostFleet, ModelNamesTellWhatIsVirtual) {
    const auto software = recordedFleet("software-interfaces");
    EXPECT_EQ(cardOf(software, "021122334409").modelName, "virtual Ethernet (veth)");
    EXPECT_EQ(functionOf<NicFunction>(cardOf(software, "021122334409"), 0).card.manufacturer, "Linux");
    EXPECT_EQ(cardOf(software, "000001000000").modelName, "USB 10/100/1000 LAN");
    const auto carved = recordedFleet("virtual-functions");
    EXPECT_EQ(cardOf(carved, "0c42a1000020").modelName, "vendor 0x1df8 device 0x1018 (virtual function)");
    EXPECT_EQ(cardOf(carved, "6045bd000001").modelName, "paranic adapter");
}

TEST(HostFleet, PortOfABondShowsItsPermanentAddress) {
    const auto fleet = recordedFleet("software-interfaces");
    EXPECT_EQ(formatMac(functionOf<NicFunction>(cardOf(fleet, "021122334402"), 0).macAddress), "02:11:22:33:44:02");
}

TEST(HostFleet, KeysNeverClash) {
    for (const auto* name : {"broken-attributes", "fibre-channel", "software-interfaces", "two-port-card",
                             "virtual-functions", "virtual-machine"}) {
        std::set<std::string> serialNumbers, deviceNames;
        std::set<std::uint32_t> handles;
        const auto fleet = recordedFleet(name);
        for (const auto& card : *fleet.cards) {
            EXPECT_FALSE(card.serialNumber.empty());
            EXPECT_TRUE(serialNumbers.insert(card.serialNumber).second) << card.serialNumber;
            std::set<std::uint8_t> numbers;
            for (const auto& port : *card.ports) {
                EXPECT_TRUE(numbers.insert(port.number).second);
                for (const auto& function : *port.functions) {
                    if (const auto* nic = std::get_if<NicFunction>(&function)) {
                        EXPECT_TRUE(deviceNames.insert(nic->deviceName).second) << nic->deviceName;
                    }
                    if (const auto* storage = std::get_if<StorageFunction>(&function)) {
                        EXPECT_TRUE(handles.insert(storage->handle).second) << storage->handle;
                    }
                }
            }
        }
    }
}

TEST(HostFleet, FibreChannelFunctionShowsTheFactsOfItsDriver) {
    const auto fleet = recordedFleet("fibre-channel");
    const auto& card = cardOf(fleet, "RFD1234X5678");
    EXPECT_EQ(card.kind, 1U);
    EXPECT_EQ(card.version, "8.07.00 (d0d5)");
    const auto& storage = functionOf<StorageFunction>(card, 0);
    EXPECT_EQ(storage.protocolType, 0U);
    EXPECT_EQ(storage.deviceNumber, 7U);
    EXPECT_EQ(storage.pciDeviceId, 0x2031);
    EXPECT_EQ(storage.pciSubsystemVendorId, 0x1DF7);
    EXPECT_EQ(formatWorldWideName(storage.nodeName), "2000000e1e0a0b10");
    EXPECT_EQ(formatWorldWideName(storage.property.portName), "2100000e1e0a0b10");
    EXPECT_EQ(storage.property.portType, 1U);
    EXPECT_EQ(storage.property.state, PortOperational);
    EXPECT_EQ(storage.property.speedCode, 16U);
    EXPECT_EQ(storage.property.transceiverKind, transceiverKindSfp);
    EXPECT_EQ(storage.modelName, "FC-1602");
    EXPECT_EQ(storage.driverVersion, "10.02.07");
    EXPECT_EQ(storage.optionRom.biosVersion, "3.43");
    EXPECT_EQ(storage.optionRom.firmware, (std::array<std::uint8_t, 3>{8, 7, 0}));
    EXPECT_EQ(storage.optionRom.efi, (std::array<std::uint8_t, 2>{6, 12}));
    EXPECT_EQ(storage.optionRom.fcode, (std::array<std::uint8_t, 3>{4, 11, 0}));
    EXPECT_EQ(storage.transceiver->pageA2.size(), 256U);
}

TEST(HostFleet, FibreChannelPortWithoutLinkIsInLoopDown) {
    const auto fleet = recordedFleet("fibre-channel");
    const auto& storage = functionOf<StorageFunction>(cardOf(fleet, "RFD1234X5678"), 1);
    EXPECT_EQ(storage.property.state, PortLoopDown);
    EXPECT_EQ(storage.property.portType, 0U);
    EXPECT_EQ(storage.property.speedCode, 0U);
    EXPECT_EQ(storage.property.transceiverKind, 0U);
    EXPECT_EQ(storage.transceiver, std::nullopt);
    EXPECT_TRUE(storage.targets.empty());
}

TEST(HostFleet, StorageBehindAPortIsListedByTargetAndUnit) {
    const auto fleet = recordedFleet("fibre-channel");
    const auto& targets = functionOf<StorageFunction>(cardOf(fleet, "RFD1234X5678"), 0).targets;
    ASSERT_EQ(targets.size(), 2U) << "the initiator is no target";
    EXPECT_EQ(formatWorldWideName(targets[0].portName), "50060e8010203040");
    ASSERT_EQ(targets[0].luns.size(), 3U);
    const auto& first = targets[0].luns[0];
    EXPECT_EQ(first.vendorId, "ACME");
    EXPECT_EQ(first.productId, "Array 9000");
    EXPECT_EQ(first.osName, "/dev/sda");
    EXPECT_EQ(first.identifierLength, 16);
    EXPECT_EQ(first.identifier[15], 0xC0);
    EXPECT_EQ(targets[0].luns[1].number, 2U);
    EXPECT_EQ(targets[0].luns[1].identifier, (std::array<std::uint8_t, 16>{}));
    EXPECT_EQ(targets[0].luns[2].number, 10U);
    EXPECT_EQ(targets[0].luns[2].blockSize, 4096U);
    EXPECT_EQ(targets[0].luns[2].identifierLength, 8);
    ASSERT_EQ(targets[1].luns.size(), 1U) << "a unit whose number has no room is left out";
    EXPECT_EQ(targets[1].luns[0].osName, "");
}

TEST(HostFleet, FibreChannelOverEthernetSharesThePortOfItsInterface) {
    const auto fleet = recordedFleet("fibre-channel");
    const auto& card = cardOf(fleet, "CNA-0001");
    EXPECT_EQ(card.kind, 0U);
    ASSERT_EQ(card.ports->size(), 1U);
    const auto& storage = functionOf<StorageFunction>(card, 0);
    EXPECT_EQ(storage.protocolType, 1U);
    EXPECT_EQ(formatMac(*storage.eNodeMac), "00:1b:21:00:00:20");
    EXPECT_EQ(storage.optionRom.firmware, std::nullopt);
    const auto& nic = functionOf<NicFunction>(card, 0);
    ASSERT_EQ(nic.fcoeLinkage.size(), 1U);
    EXPECT_EQ(formatWorldWideName(nic.fcoeLinkage[0].wwn), "20000001b2100020");
    EXPECT_EQ(nic.fcoeLinkage[0].fcPortId, (std::array<std::uint8_t, 3>{0x01, 0x0A, 0x01}));
    EXPECT_EQ(nic.fcoeLinkage[0].eNodeMac, *storage.eNodeMac);
    EXPECT_EQ(nic.card.modelName, "Converged 10GbE Adapter");
}

TEST(HostFleet, VitalProductDataOfAStorageFunctionAlwaysHasASerialNumber) {
    for (const auto* name : {"fibre-channel", "broken-attributes"}) {
        const auto fleet = recordedFleet(name);
        for (const auto& card : *fleet.cards)
            for (const auto& port : *card.ports)
                for (const auto& function : *port.functions)
                    if (const auto* storage = std::get_if<StorageFunction>(&function)) {
                        EXPECT_EQ(parsePciVpd(*storage->vpd)->find("SN"), card.serialNumber);
                    }
    }
    const auto whole = recordedFleet("fibre-channel");
    const auto vpd = functionOf<StorageFunction>(cardOf(whole, "RFD1234X5678"), 0).vpd;
    EXPECT_EQ(parsePciVpd(*vpd)->productIdentifier, "16Gb Dual Port FC Adapter");
    EXPECT_EQ(parsePciVpd(*vpd)->find("V0"), "rev B");
}

TEST(HostSource, WithoutSysfsLoadingFailsAndNamesTheFolder) {
    const auto loaded = sourceOf(SysTree("/no/such/folder"))->load();
    ASSERT_TRUE(std::holds_alternative<FleetError>(loaded));
    EXPECT_EQ(std::get<FleetError>(loaded).message,
              "cannot read the network interfaces below /sys/class/net: No such file or directory");
}

TEST(HostSource, QueriesAnswerAsTheFleetDid) {
    const auto source = sourceOf(SysTree(ScratchTree::recorded("fibre-channel")));
    const auto fleet = load(*source);
    const auto& storage = functionOf<StorageFunction>(cardOf(fleet, "RFD1234X5678"), 0);
    EXPECT_EQ(source->portProperty(storage.handle).value, storage.property);
    EXPECT_EQ(source->vpd(storage.handle).value, *storage.vpd);
    EXPECT_EQ(source->refreshStatistics(storage.handle).value, storage.statistics);
    EXPECT_EQ(source->storageTransceiver(storage.handle).value, *storage.transceiver);
    EXPECT_EQ(source->uuid(storage.handle).status, statusNoData);
    EXPECT_EQ(source->multiBootVersion(storage.handle).status, statusNoData);
    const auto& nic = functionOf<NicFunction>(cardOf(fleet, "CNA-0001"), 0);
    EXPECT_EQ(source->link("eth2").value, nic.link);
    EXPECT_EQ(source->ipConfiguration("eth2").value, *nic.ip);
    EXPECT_EQ(source->fcoeLinkage("eth2").value, nic.fcoeLinkage);
    EXPECT_EQ(source->nicTransceiver("eth2").status, statusNoData);
}

TEST(HostSource, FibreChannelOverEthernetHasTheModuleOfItsInterface) {
    ScratchTree tree;
    tree.copy("fibre-channel");
    const auto memory = optics::tests::qsfp28Memory();
    tree.file("kernel/net/eth2/module_kind", "3");
    tree.file("kernel/net/eth2/module_memory", {memory.begin(), memory.end()});
    const auto source = sourceOf(SysTree(tree.root()));
    const auto fleet = load(*source);
    const auto& storage = functionOf<StorageFunction>(cardOf(fleet, "CNA-0001"), 0);
    ASSERT_TRUE(storage.transceiver);
    EXPECT_EQ(serialIdText(storage.transceiver->pageA0, 68), "EXQ0000007");
    EXPECT_EQ(storage.transceiver->pageA2.size(), 256U);
    EXPECT_EQ(source->storageTransceiver(storage.handle).value, *storage.transceiver);
    EXPECT_EQ(source->portProperty(storage.handle).value, storage.property);
    EXPECT_EQ(storage.property.transceiverKind, 6U);
}

TEST(HostSource, CountersAreTheKernelsAndWrapAt32Bits) {
    const auto source = sourceOf(SysTree(ScratchTree::recorded("fibre-channel")));
    load(*source);
    const auto statistics = source->refreshStatistics(8).value;
    EXPECT_EQ(statistics.ioCount, 3005U);
    EXPECT_EQ(statistics.megabyteCount, 3U);
    EXPECT_EQ(statistics.lipCount, 0U) << "not counted by the driver";
    EXPECT_EQ(statistics.linkFailures, 1U);
    EXPECT_EQ(statistics.lossOfSync, 2U);
    EXPECT_EQ(statistics.lossOfSignal, 3U);
    EXPECT_EQ(statistics.primitiveSequenceErrors, 4U);
    EXPECT_EQ(statistics.invalidTransmissionWords, 5U);
    EXPECT_EQ(statistics.crcErrors, 6U);
}

TEST(HostSource, UnknownAndVanishedDevicesAreNone) {
    ScratchTree scratch;
    scratch.copy("fibre-channel");
    const auto source = sourceOf(scratch.tree());
    EXPECT_EQ(source->link("eth2").status, statusNoSuchDevice) << "not loaded yet";
    load(*source);
    EXPECT_EQ(source->link("eth2").status, statusOk);
    for (const auto* name : {"lo", "eth2.100", "", "..", "../net/eth2", "eth2/."})
        EXPECT_EQ(source->link(name).status, statusNoSuchDevice) << name;
    for (const std::uint32_t handle : {0U, 1U, 10U, 0xFFFFFFFFU})
        EXPECT_EQ(source->portProperty(handle).status, statusNoSuchDevice) << handle;
    scratch.remove("sys/class/net/eth2");
    scratch.remove("sys/class/fc_host/host7");
    EXPECT_EQ(source->link("eth2").status, statusNoSuchDevice);
    EXPECT_EQ(source->vpd(8).status, statusNoSuchDevice);
    EXPECT_EQ(source->vpd(9).status, statusOk);
}

TEST(HostSource, FlashCallsAreRefusedAsReadOnly) {
    const auto source = sourceOf(SysTree(ScratchTree::recorded("fibre-channel")));
    load(*source);
    EXPECT_EQ(source->updateFlash(1, "any", "flash.bin"), statusReadOnly);
    EXPECT_EQ(source->updateOptionRom(8, "any", "flash.bin"), statusReadOnly);
}

TEST(HostSource, LinkIsReadAnewAtEveryQuestion) {
    ScratchTree scratch;
    scratch.interface("veth0", "5", "02:00:00:00:00:05");
    const auto source = sourceOf(scratch.tree());
    load(*source);
    EXPECT_EQ(source->link("veth0").value.state, LinkUp);
    scratch.file("sys/class/net/veth0/operstate", "down\n");
    EXPECT_EQ(source->link("veth0").value.state, LinkDown);
    EXPECT_FALSE(source->changed()) << "a link that goes down changes no adapter";
}

TEST(HostSource, NewInterfaceIsAChange) {
    ScratchTree scratch;
    scratch.interface("veth0", "5", "02:00:00:00:00:05");
    const auto source = sourceOf(scratch.tree());
    EXPECT_FALSE(source->changed());
    scratch.interface("veth1", "6", "02:00:00:00:00:06");
    EXPECT_TRUE(source->changed());
    EXPECT_TRUE(source->changed()) << "told until it is reset";
    source->resetChanged();
    EXPECT_FALSE(source->changed());
    scratch.remove("sys/class/net/veth1");
    EXPECT_TRUE(source->changed());
}

TEST(HostSource, ARecordingThatIsMadeAnewIsShownWithoutAnewStart) {
    ScratchTree scratch;
    scratch.copy("two-port-card");
    auto made = makeRecordingSource(scratch.root());
    auto& source = *std::get<std::unique_ptr<Source>>(made);
    EXPECT_EQ(cardOf(load(source), "A0369F112233").ports->size(), 2U);
    EXPECT_FALSE(source.changed());

    std::filesystem::remove_all(scratch.root());
    EXPECT_TRUE(source.changed());
    source.resetChanged();
    EXPECT_THROW(load(source), std::runtime_error);

    std::filesystem::create_directory(scratch.root());
    scratch.copy("fibre-channel");
    EXPECT_TRUE(source.changed());
    source.resetChanged();
    EXPECT_EQ(cardOf(load(source), "RFD1234X5678").modelName, "16Gb Dual Port FC Adapter");
    EXPECT_FALSE(source.changed());
}

TEST(HostSource, ARecordingThatIsExchangedIsShown) {
    ScratchTree scratch;
    ScratchTree other;
    scratch.copy("two-port-card");
    other.copy("fibre-channel");
    auto made = makeRecordingSource(scratch.root());
    auto& source = *std::get<std::unique_ptr<Source>>(made);
    load(source);
    const auto aside = other.root() / "aside";
    std::filesystem::rename(scratch.root(), aside);
    std::filesystem::copy(other.root(), scratch.root(),
                          std::filesystem::copy_options::recursive | std::filesystem::copy_options::copy_symlinks);
    EXPECT_TRUE(source.changed());
    EXPECT_EQ(cardOf(load(source), "RFD1234X5678").modelName, "16Gb Dual Port FC Adapter");
}

TEST(HostSource, ChangeWaitsForThePollThatTellsALinkState) {
    ScratchTree scratch;
    scratch.interface("veth0", "5", "02:00:00:00:00:05");
    const auto source = sourceOf(scratch.tree());
    load(*source);
    scratch.file("sys/class/net/veth0/operstate", "down\n");
    scratch.interface("veth1", "6", "02:00:00:00:00:06");
    EXPECT_FALSE(source->changed()) << "a refresh now would swallow the link's change";
    source->resetChanged();
    EXPECT_EQ(source->link("veth0").value.state, LinkDown);
    EXPECT_TRUE(source->changed());
}

TEST(HostSource, ChangeWaitsForOneQuestionOnlyIfNobodyPollsTheLink) {
    ScratchTree scratch;
    scratch.interface("veth0", "5", "02:00:00:00:00:05");
    const auto source = sourceOf(scratch.tree());
    load(*source);
    scratch.file("sys/class/net/veth0/operstate", "down\n");
    scratch.interface("veth1", "6", "02:00:00:00:00:06");
    EXPECT_FALSE(source->changed());
    source->resetChanged();
    EXPECT_TRUE(source->changed());
}

TEST(HostSource, ChangeBetweenQuestionAndResetIsNotLost) {
    ScratchTree scratch;
    const auto source = sourceOf(scratch.tree());
    EXPECT_FALSE(source->changed());
    scratch.interface("veth0", "5", "02:00:00:00:00:05");
    source->resetChanged();
    EXPECT_TRUE(source->changed());
}

TEST(HostSource, ResetWithoutAQuestionForgetsWhatChanged) {
    ScratchTree scratch;
    const auto source = sourceOf(scratch.tree());
    scratch.interface("veth0", "5", "02:00:00:00:00:05");
    source->resetChanged();
    EXPECT_FALSE(source->changed());
}

TEST(HostSource, NewAddressIsAChangeAndATemporaryOneIsNot) {
    ScratchTree scratch;
    scratch.interface("veth0", "5", "02:00:00:00:00:05");
    scratch.file("kernel/addresses", "5 192.0.2.5/24 0 128\n");
    const auto source = sourceOf(scratch.tree());
    scratch.file("kernel/addresses", "5 192.0.2.5/24 0 128\n5 2001:db8::abcd/64 0 1\n7 192.0.2.7/24 0 128\n");
    EXPECT_FALSE(source->changed());
    scratch.file("kernel/addresses", "5 192.0.2.6/24 0 128\n");
    EXPECT_TRUE(source->changed());
}

TEST(HostSource, InterfaceThatIsLeftOutChangesNothing) {
    ScratchTree scratch;
    const auto source = sourceOf(scratch.tree());
    scratch.interface("br0", "6", "02:00:00:00:00:06");
    scratch.file("sys/class/net/br0/uevent", "DEVTYPE=bridge\nINTERFACE=br0\n");
    EXPECT_FALSE(source->changed());
}

TEST(HostSource, LostUnitIsAChange) {
    ScratchTree scratch;
    scratch.copy("fibre-channel");
    const auto source = sourceOf(scratch.tree());
    scratch.remove("sys/class/scsi_device/7:0:0:10");
    EXPECT_TRUE(source->changed());
}

TEST(HostSource, AlarmTellsThatAPortChangedItsState) {
    ScratchTree scratch;
    scratch.copy("fibre-channel");
    const auto source = sourceOf(scratch.tree());
    std::promise<Alarm> promised;
    source->watch([&promised](Alarm alarm) { promised.set_value(std::move(alarm)); });
    const auto folder = scratch.tree().resolve("sys/class/fc_host/host7");
    // Written in one step: a reader must not see a half.
    scratch.file(*folder + "/new_state", "Linkdown\n");
    std::filesystem::rename(scratch.root() / *folder / "new_state", scratch.root() / *folder / "port_state");
    auto told = promised.get_future();
    ASSERT_EQ(told.wait_for(std::chrono::seconds(30)), std::future_status::ready);
    EXPECT_EQ(told.get(), (Alarm{7, "host7: port state Online becomes Linkdown"}));
}

TEST(HostSource, WithoutAChangeNoAlarmIsTold) {
    std::atomic<int> alarms = 0;
    {
        const auto source = sourceOf(SysTree(ScratchTree::recorded("fibre-channel")));
        source->watch([&alarms](const Alarm&) { ++alarms; });
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    EXPECT_EQ(alarms, 0);
}

TEST(HostSource, QuestionsFromSeveralThreadsAgree) {
    const auto source = sourceOf(SysTree(ScratchTree::recorded("fibre-channel")));
    const auto fleet = load(*source);
    std::vector<std::future<bool>> answers;
    for (int i = 0; i < 4; ++i)
        answers.push_back(std::async(std::launch::async, [&] {
            bool agree = true;
            for (int round = 0; round < 5; ++round)
                agree = agree && load(*source) == fleet && !source->changed() && source->link("eth2").ok() &&
                        source->vpd(8).ok();
            return agree;
        }));
    for (auto& answer : answers)
        EXPECT_TRUE(answer.get());
}

} // namespace
} // namespace tavik::host::test
