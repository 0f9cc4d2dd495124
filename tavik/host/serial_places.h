// Where the memories of cards and modules hold serial numbers, and the checksums over them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tavik/model.h"

namespace tavik::host {

struct Place {
    std::size_t at = 0;
    std::size_t size = 0;

    bool operator==(const Place&) const = default;
};

/** The serial number SN and what the owner wrote (Y and a character) in vital product data, the vendor's serial number
 *  in the memory of a module. Without blanks and zeros at the end; none is empty.
 *  @param fileName "vpd", "module_memory" or "sfp"; nothing stands in others. Takes any content. */
std::vector<Place> findSerialPlaces(std::string_view fileName, const Bytes& content);

/** Gives a changed memory checksums that are as right or as wrong as those of the memory that it was made from.
 *  @param fileName as above. @param before of the same size; else nothing is done. */
void keepChecksums(std::string_view fileName, const Bytes& before, Bytes& after);

} // namespace tavik::host
