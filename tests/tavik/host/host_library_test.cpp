// The host as the provider meets it: through the calls that libtavik.so.1 exports.
#include <stdlib.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "../loaded_library.h"
#include "tavik/host/host_source.h"

namespace tavik::host {
namespace {

class HostLibrary : public testing::Test {
protected:
    HostLibrary() {
        ::setenv("TAVIK_SOURCE", "host", 1);
        EXPECT_EQ(library.Initialize(0, 0), statusOk);
    }
    ~HostLibrary() override { library.Uninitialize(); }

    std::vector<TAVIK_NicFunction*> nics() const {
        std::vector<TAVIK_NicFunction*> found;
        for (auto* card = library.GetAdapterList()->first; card != nullptr; card = card->next)
            for (auto* port = card->phyPorts->first; port != nullptr; port = port->next)
                for (auto* function = port->protocols->first; function != nullptr; function = function->next)
                    if (function->type == TAVIK_ProtocolNic) found.push_back(&function->nic);
        return found;
    }

    const test::LoadedLibrary library;
};

TEST_F(HostLibrary, TreeHoldsTheInterfacesOfThisMachine) {
    const auto loaded = tavik::makeHostSource()->load();
    std::vector<std::string> expected, shown;
    for (const auto& card : *std::get<Fleet>(loaded).cards)
        for (const auto& port : *card.ports)
            for (const auto& function : *port.functions)
                if (const auto* nic = std::get_if<NicFunction>(&function)) expected.push_back(nic->deviceName);
    for (const auto* nic : nics())
        shown.emplace_back(nic->port.deviceName);
    EXPECT_EQ(shown, expected);
}

TEST_F(HostLibrary, LinkAndAddressesComeByDeviceName) {
    const auto all = nics();
    if (all.empty()) GTEST_SKIP() << "this machine has no Ethernet interface of its own";
    for (const auto* nic : all) {
        TAVIK_LinkProperties link{};
        EXPECT_EQ(library.GetLinkProperties(nic->port.deviceName, &link), 0U);
        EXPECT_EQ(+link.speed, +nic->port.link.speed);
        TAVIK_IPProperties* ip = nullptr;
        ASSERT_EQ(library.GetIPProperties(nic->port.deviceName, &ip), 0U);
        EXPECT_LE(+ip->ipv4.family, 1);
        EXPECT_EQ(library.FreeMem(ip), 0U);
    }
}

TEST_F(HostLibrary, FlashOfTheMachineIsNeverWritten) {
    const auto all = nics();
    if (all.empty()) GTEST_SKIP() << "this machine has no Ethernet interface of its own";
    EXPECT_EQ(library.UpdateFlash(all.front()->adapterId, "flash.bin", 0), statusReadOnly);
}

TEST(RecordedHostLibrary, ServesTheAdaptersOfTheRecording) {
    ::setenv("TAVIK_SOURCE", ("recording:" + std::string(TAVIK_HOST_TREES) + "/two-port-card").c_str(), 1);
    const test::LoadedLibrary library;
    ASSERT_EQ(library.Initialize(0, 0), statusOk);
    const auto* card = library.GetAdapterList()->first;
    ASSERT_NE(card, nullptr);
    EXPECT_STREQ(card->serialNumber, "A0369F112233");
    TAVIK_IPProperties* ip = nullptr;
    ASSERT_EQ(library.GetIPProperties("ens1f0", &ip), 0U);
    EXPECT_EQ(std::vector<int>(ip->ipv4.address, ip->ipv4.address + 4), (std::vector<int>{192, 0, 2, 10}));
    EXPECT_EQ(library.FreeMem(ip), 0U);
    testing::internal::CaptureStderr();
    EXPECT_EQ(library.UpdateFlash(1, "flash.bin", 0), statusReadOnly);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "tavik: flash update refused: the adapters of a recording are only read\n");
    EXPECT_EQ(library.Uninitialize(), statusOk);
}

} // namespace
} // namespace tavik::host
