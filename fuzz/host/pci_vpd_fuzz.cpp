// Vital product data and configuration space come from a card's own memory: any bytes.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "tavik/host/device_parent.h"
#include "tavik/host/pci_vpd.h"

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

void requirePrintable(const std::string& text) {
    require(std::all_of(text.begin(), text.end(), [](char character) { return character >= ' ' && character <= '~'; }));
}

void requireItems(const std::vector<tavik::VpdItem>& items) {
    require(items.size() <= tavik::host::mostVpdItems);
    for (const auto& item : items) {
        require(item.keyword.size() == 2 && item.value.size() <= 255);
        requirePrintable(item.keyword);
        requirePrintable(item.value);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const tavik::Bytes bytes(data, data + size);
    if (const auto vpd = tavik::host::parsePciVpd(bytes)) {
        requirePrintable(vpd->productIdentifier);
        requireItems(vpd->readOnly);
        requireItems(vpd->writable);
        requirePrintable(vpd->find("SN"));
    }
    if (const auto serialNumber = tavik::host::parseDeviceSerialNumber(bytes)) require(serialNumber->size() == 16);
    return 0;
}
