// The storage side's management profiles: two fixed tables that are built and cleared with the lists. No class serves
// them yet; the profiles that a client sees are those of the Ethernet side.
#pragma once

#include "text/fixed_text.h"

#include <cstdint>

namespace merolt::server {

struct FCProfileEntry {
    std::uint8_t valid;        ///< 1 when the table is complete
    FixedText<128> instanceID; ///< holds the host's name
    FixedText<128> description;
    FixedText<128> otherOrganization; ///< always empty
    FixedText<128> registeredName;
    FixedText<128> registeredVersion;
    std::uint16_t registeredOrganization; ///< 11 SNIA, 2 DMTF
};

extern std::int32_t g_fcProfileCount;
extern FCProfileEntry* g_fcProfileList;
extern std::int32_t g_fcSubProfileCount;
extern FCProfileEntry* g_fcSubProfileList;

void buildRegisteredProfileList();
void clearRegisteredProfileList();
void buildRegisteredSubProfileList();
void clearRegisteredSubProfileList();

} // namespace merolt::server
