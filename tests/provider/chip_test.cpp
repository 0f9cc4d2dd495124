// What a device's PCI ID tells about its chip.
#include "provider_host.h"

#include "inventory/chip.h"
#include "log/log.h"

#include <cstring>

namespace {

struct Chip {
    std::uint16_t pciDeviceId;
    int index;
    bool hasVpdSerial;
    int speedClass;
    bool isConverged;
};

void PrintTo(const Chip& chip, std::ostream* out) { *out << "PCI device ID " << chip.pciDeviceId; }

class ChipTest : public testing::TestWithParam<Chip> {};

TEST_P(ChipTest, IsKnownByItsPciDeviceId) {
    TAVIK_DeviceRecord device{};
    device.pciDeviceId = GetParam().pciDeviceId;
    EXPECT_EQ(merolt::getChipIndex(&device), GetParam().index);
    EXPECT_EQ(merolt::chipHasVpdSerial(&device), GetParam().hasVpdSerial);
    EXPECT_EQ(merolt::getChipSpeedClass(&device), GetParam().speedClass);
    EXPECT_EQ(merolt::isConvergedFunction(&device), GetParam().isConverged);
}

// clang-format off
constexpr Chip chips[] = {
    {0xA100, 0, false, 0, false},  {0xA101, 1, false, 0, false},  {0xA102, 2, false, 0, false},
    {0xA103, 3, false, 0, false},  {0xA104, 4, false, 0, false},  {0xA105, 5, false, 0, false},
    {0xA106, 6, false, 0, false},  {0xA107, 7, false, 0, false},  {0xA110, 8, true, 2, false},
    {0xA111, 9, true, 2, false},   {0xA112, 10, true, 1, false},  {0xA113, 11, true, 1, false},
    {0xA114, 12, true, 0, false},  {0xA115, 13, true, 0, false},  {0xA120, 14, true, 0, false},
    {0xA121, 15, true, 0, true},   {0xA122, 16, true, 0, false},  {0xA123, 17, true, 0, true},
    {0xA124, 18, true, 0, false},  {0xA125, 19, true, 0, false},  {0xA126, 20, true, 0, false},
    {0xA127, 21, true, 0, true},   {0xA128, 22, true, 0, false},  {0xA129, 23, true, 0, false},
    {0xA130, 24, true, 0, false},  {0xA131, 25, true, 0, false},  {0xA132, 26, true, 0, true},
    {0xA133, 26, true, 0, true},
    // Not in the table: taken for modern ones.
    {0xA0FF, 100, true, 0, false}, {0xA108, 100, true, 0, false}, {0xA116, 100, true, 0, false},
    {0xA12A, 100, true, 0, false}, {0xA134, 100, true, 0, false}, {0, 100, true, 0, false},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Chips, ChipTest, testing::ValuesIn(chips));

TEST(NoDeviceTest, CountsAsTheOldestChip) {
    EXPECT_EQ(merolt::getChipIndex(nullptr), 0);
    EXPECT_FALSE(merolt::chipHasVpdSerial(nullptr));
    EXPECT_EQ(merolt::getChipSpeedClass(nullptr), 0);
    EXPECT_FALSE(merolt::isConvergedFunction(nullptr));
}

class ENodeAddressTest : public ProviderTest {
protected:
    void SetUp() override { merolt::initializeLogging(); }

    unsigned char mac[6] = {9, 9, 9, 9, 9, 9};
};

TEST_F(ENodeAddressTest, IsCopiedAndLogged) {
    TAVIK_DeviceRecord device{};
    const std::uint8_t address[6] = {0x00, 0xC0, 0xDD, 0x0A, 0x0B, 0xFF};
    std::memcpy(device.eNodeMac, address, sizeof(address));
    EXPECT_EQ(merolt::GetDeviceMacAddress(&device, mac), 0);
    EXPECT_EQ(std::memcmp(mac, address, sizeof(address)), 0);
    EXPECT_EQ(logLines(), std::vector<std::string>{"GetDeviceMacAddress: MAC Address=00:C0:DD:0A:0B:FF"});
}

TEST_F(ENodeAddressTest, OfNoDeviceIsRefusedAndNothingIsWritten) {
    EXPECT_EQ(merolt::GetDeviceMacAddress(nullptr, mac), 1);
    EXPECT_EQ(mac[0], 9);
    EXPECT_EQ(logLines(), std::vector<std::string>());
}

} // namespace
