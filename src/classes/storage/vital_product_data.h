// An adapter's vital product data: fetched for each record that is built, parsed into the stores of this module.
//
// The stores are process-wide and are overwritten adapter after adapter; a caller clears what it must not inherit.
// Read and written under provider_lock.
#pragma once

#include "inventory/tavik.h"
#include "text/fixed_text.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>

namespace merolt::storage {

/// A label, a colon and the value as parsed, for example "Serial Number:AB1234". Empty if the card has no such item.
/// It has a text of its own, or shows one that a reading keeps: cards are read for each record of each list, and a
/// block that is as it was need not be written again.
class VpdStore {
public:
    static constexpr std::size_t capacity = MeasuredText<2048>::capacity;

    VpdStore() = default;
    VpdStore(const VpdStore&) = delete;
    VpdStore& operator=(const VpdStore&) = delete;

    const char* text() const { return shown.data(); } ///< terminated
    std::string_view view() const { return shown; }
    bool empty() const { return shown.empty(); }
    bool equals(std::string_view other) const { return shown == other; }

    void clear() { shown = ""; }
    void assign(std::string_view value) { join({value}); }
    /// Takes the texts one behind the other, up to the capacity. None of them may be this one.
    void join(std::initializer_list<std::string_view> parts) {
        own.join(parts);
        shown = own.view();
    }
    /// Shows a text that lives elsewhere, terminated and no longer than the capacity, until the next change.
    void show(std::string_view text) { shown = text; }
    /// Takes what is shown as its own text, if it is shown from there.
    void keepOwn() {
        if (shown.data() != own.text()) assign(shown);
    }

private:
    std::string_view shown = "";
    MeasuredText<2048> own;
};

extern VpdStore g_productIdentifier; ///< tag 0x82
extern VpdStore g_vpdRTag;           ///< tag 0x90
extern VpdStore g_vpdEndTag;         ///< tag 0x78
extern VpdStore g_partNumber;        ///< PN
extern VpdStore g_serialNumber;      ///< SN
extern VpdStore g_miscInformation;   ///< V0
extern VpdStore g_manufacturingId;   ///< MN
extern VpdStore g_efiDriverVersion;  ///< V1
extern VpdStore g_firmwareVersion;   ///< V3
extern VpdStore g_biosVersion;       ///< V4
extern VpdStore g_fcodeVersion;      ///< V5
extern VpdStore g_flashImageVersion; ///< RM, or V9 in packed form
extern VpdStore g_fcCode;            ///< FC
extern VpdStore g_fruNumberVersion;  ///< FN
extern VpdStore g_assetTag;          ///< YA
extern VpdStore g_UUID;              ///< YU; never cleared, so a card without one shows its predecessor's
extern VpdStore g_i2cUUID;           ///< text of TAVIK_GetUUIDFromI2CVPD, without a label; always of the last device

/// Clears every store but g_UUID and g_i2cUUID.
void clearVpdStores();

/// Reads and parses the card's VPD block. @return 0; -1 for a null device, for a chip without VPD block or for want
/// of memory; otherwise the library's status. A failed fetch leaves the stores as the caller cleared them.
int fetchAdapterVpd(TAVIK_DeviceRecord* device);

/// A number that stands for what the last fetch read into the stores: the same again, from the same card, as long as
/// its block is the same, and no other block's; 0 if it read none.
std::uint64_t lastVpdReading();

/// Forgets what is known of cards, which may be others from here on. The stores keep their texts.
void forgetVpdReadings();

/// Walks a block of resource tags and keywords until its end tag or the end of the block.
void parseVpdBuffer(const std::uint8_t* buffer, std::size_t size);

/// Handles one entry. @param tag its first byte, followed by one that may be the second keyword character.
void parseVpdTag(const std::uint8_t* tag, const std::uint8_t* value, std::size_t length);

/// What stands behind the first colon of a store; empty if there is no colon.
const char* vpdValue(const VpdStore& store);

} // namespace merolt::storage
