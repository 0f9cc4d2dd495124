// Reads vital product data in the resource-tag form of PCI, as a card's own memory holds it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tavik/host/attribute.h"
#include "tavik/model.h"

namespace tavik::host {

/** Texts are as the card holds them but for blanks and zeros at their ends; bytes that are not printable read as
 *  question marks. */
struct PciVpd {
    std::string productIdentifier;
    std::vector<VpdItem> readOnly; ///< without the checksum RV
    std::vector<VpdItem> writable; ///< without the remaining space RW

    /** The first item of this keyword that is not empty, the read-only ones first; empty if there is none. */
    std::string find(std::string_view keyword) const;

    bool operator==(const PciVpd&) const = default;
};

/** Where the data of an item stand in a block. */
struct VpdPlace {
    std::string keyword; ///< RV too
    std::size_t at = 0;
    std::size_t size = 0;

    bool operator==(const VpdPlace&) const = default;
};

/** The items of both sections up to the first fault. Takes any bytes. The byte of RV makes the sum of all bytes up to
 *  and with it zero. */
std::vector<VpdPlace> findVpdPlaces(const Bytes& block);

inline constexpr std::size_t largestVpd = 32768;
inline constexpr std::size_t mostVpdItems = 256;

/** Takes any bytes. What comes in front of a fault counts; absent if there is nothing, or if the checksum is there
 *  and wrong. */
Attribute<PciVpd> parsePciVpd(const Bytes& block);

} // namespace tavik::host
