#include "classes/storage/serial_text.h"

#include "classes/storage/vital_product_data.h"
#include "inventory/chip.h"
#include "text/text.h"

namespace merolt::storage {

namespace {

/// The three bytes hold the number with the highest byte first and the other two exchanged.
SerialText serialFromBytes(const TAVIK_DeviceRecord* device) {
    const auto byte = [&](int index) {
        return static_cast<int>(static_cast<unsigned char>(device->serialNumber[index]));
    };
    const int value = byte(0) << 16 | byte(2) << 8 | byte(1);
    const char letter = static_cast<char>('A' + value / 100000);
    SerialText text;
    text.join({{&letter, 1}, formatNumber(value % 100000, 5).view()});
    return text;
}

} // namespace

SerialText serialText(const TAVIK_DeviceRecord* device, int vpdStatus) {
    if (!chipHasVpdSerial(device)) return serialFromBytes(device);
    SerialText text;
    if (vpdStatus == 0) {
        text.assign(vpdValue(g_serialNumber));
    } else if (serialNumberInRecord(device)) {
        text.assignField(device->serialNumber, sizeof(device->serialNumber));
    }
    return text;
}

} // namespace merolt::storage
