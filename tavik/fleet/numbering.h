// Settles the numbers and names by which calls find cards and functions: each stands once in a fleet.
#pragma once

#include <vector>

#include "tavik/fleet/card.h"

namespace tavik::fleet {

/** Checks what the file gives, and gives all others the lowest number or name that is free, in the order of the file.
 *  Throws Fault for what stands twice. */
void settleNumbers(std::vector<ParsedCard>& cards);

} // namespace tavik::fleet
