// Makes blocks of vital product data in the resource-tag form of PCI.
#pragma once

#include <string>
#include <vector>

#include "tavik/model.h"

namespace tavik {

/** Lays out a block: product identifier, the read-only section with its checksum, the writable section if it has
 *  items, end tag. Values are cut at 255 bytes; of a keyword the first two characters count. */
Bytes encodeVpd(const std::string& productIdentifier, const std::vector<VpdItem>& readOnly,
                const std::vector<VpdItem>& writable = {});

} // namespace tavik
