// A card that delivers any bytes: as its vital product data block and in the text fields of its record. The port is
// there all the same, and none of its texts runs out of its field.
//
// Input: one byte that chooses the chip, 96 bytes for three text fields of 32 bytes each, and the block.
#include "adapters.h"
#include "fake_tavik.h"

#include "classes/storage/fc_port.h"
#include "classes/storage/vital_product_data.h"
#include "log/log.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

using namespace merolt;
using namespace merolt::storage;

namespace {

constexpr std::uint16_t chips[] = {0xA100, 0xA107, 0xA110, 0xA114, 0xA121, 0xA1FF};
constexpr std::size_t fieldSize = 32;
constexpr std::size_t handle = 1;

void require(bool condition) {
    if (!condition) std::abort();
}

/// @param text a FixedText or a MeasuredText.
template <typename Text>
void requireTerminated(const Text& text) {
    const void* end = std::memchr(text.text(), 0, Text::capacity + 1);
    require(end == text.text() + text.view().size());
}

struct Label {
    const VpdStore& store;
    const char* label;
};

const Label labels[] = {
    {g_productIdentifier, "Product Identifier:"},
    {g_vpdRTag, "VPD-R Tag:"},
    {g_vpdEndTag, "End Tag:"},
    {g_partNumber, "Part Number:"},
    {g_serialNumber, "Serial Number:"},
    {g_miscInformation, "Miscellaneous Information:"},
    {g_manufacturingId, "Manufacturing Id:"},
    {g_efiDriverVersion, "EFI Driver Version:"},
    {g_firmwareVersion, "Firmware Version:"},
    {g_biosVersion, "BIOS Version:"},
    {g_fcodeVersion, "FCode Version:"},
    {g_flashImageVersion, "Flash Image Version:"},
    {g_fcCode, "FC Code:"},
    {g_fruNumberVersion, "Fru Number:"},
    {g_assetTag, "Asset Tag:"},
    {g_UUID, "UUID:"},
};

void requireLabelledStores() {
    for (const Label& row : labels) {
        requireTerminated(row.store);
        require(row.store.empty() || row.store.view().starts_with(row.label));
    }
}

/// The rest of an input; what it lacks reads as nothing.
struct Input {
    const std::uint8_t* data;
    std::size_t size;

    std::uint8_t takeByte() {
        std::uint8_t byte = 0;
        take(&byte, 1);
        return byte;
    }

    void take(void* target, std::size_t wanted) {
        const std::size_t taken = std::min(wanted, size);
        if (taken > 0) std::memcpy(target, data, taken);
        data += taken;
        size -= taken;
    }
};

/// Parses the block in memory of exactly its size, so that every byte read beyond it is seen.
void parseExactly(const Input& block) {
    const auto copy = std::make_unique<std::uint8_t[]>(block.size);
    Input(block).take(copy.get(), block.size);
    parseVpdBuffer(copy.get(), block.size);
    requireLabelledStores();
}

void buildPort(Input input, std::uint16_t pciDeviceId) {
    FakeTavik& library = FakeTavik::instance();
    library.reset();
    library.setFleet(adapters::fleet({adapters::card("S", {adapters::storageFunction(handle, pciDeviceId)})}));
    TAVIK_DeviceRecord& record = *library.tree().device(handle);
    input.take(record.serialNumber, fieldSize);
    input.take(record.optionRomBiosVersion, fieldSize);
    input.take(record.modelName, fieldSize);
    library.onGetVpd = [&](std::uint32_t, void* buffer, std::uint32_t* size) {
        Input(input).take(buffer, *size);
        return 0U;
    };
    buildFCPortList();
}

void requireWholePort() {
    require(g_fcPortCount == 1);
    const FCPortEntry& port = g_fcPortList[0];
    require(port.valid == 1);
    requireTerminated(port.deviceID);
    requireTerminated(port.serialNumber);
    requireTerminated(port.vpdData);
    requireTerminated(port.optionROMVersions);
    requireTerminated(port.model);
    const std::string_view vpdData = port.vpdData.view();
    require(vpdData.empty() || std::count(vpdData.begin(), vpdData.end(), ';') >= 2);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    gDebugLog = false;
    gErrorLog = false;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input{data, size};
    const std::uint16_t pciDeviceId = chips[input.takeByte() % std::size(chips)];
    buildPort(input, pciDeviceId);
    requireWholePort();
    requireLabelledStores();
    clearFCPortList();
    parseExactly(input);
    return 0;
}
