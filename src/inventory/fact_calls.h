// What the management library may tell of a port beside the TAVIK_* calls: real speeds, addresses on the bus, counters
// of 64 bits. These calls are optional. Nobody links to them: the provider looks for them by name in the library that
// it found under TAVIK's name, so a library without them serves as ever.
#pragma once

#include <cstdint>

extern "C" {

/** What a fact's value is. */
enum TavikFactType : std::uint16_t {
    TavikFactText = 1,   ///< printable ASCII, without a terminator
    TavikFactNumber = 2, ///< unsigned, 8 bytes in the order of this machine
    TavikFactTruth = 3,  ///< 1 byte: 0 or 1
};

/** The start of each fact in an answer. Behind it stand the name and then the value, and behind these the next fact, so
 *  nothing here lies at an even address. A fact that comes more than once is a list. */
struct __attribute__((packed)) TavikFactHeader {
    std::uint32_t size; ///< bytes from the start of this header to the start of the next
    std::uint16_t type; ///< TavikFactType; readers pass over what they do not know, names and types alike
    std::uint16_t nameLength;
};
static_assert(sizeof(TavikFactHeader) == 8);

/** What the caller wants to know; the library may tell more. */
enum TavikFactGroup : std::uint32_t {
    TavikFactsOfAdapter = 1U << 0,   ///< what stays while the machine runs: place on the bus, maker, driver
    TavikFactsOfLink = 1U << 1,      ///< speeds, and what both ends agreed on
    TavikFactsOfCounters = 1U << 2,  ///< since the driver was loaded
    TavikFactsOfRelations = 1U << 3, ///< what the port is used by, and what it reaches
};

/** Facts of a storage function. The answer lies in the caller's memory alone and lives as long as the caller likes. The
 *  calls follow the rule of the TAVIK_* calls: two never meet, but for those of the polling thread.
 *
 *  @param handle as in TAVIK_GetVpd. @param groups bits of TavikFactGroup.
 *  @param buffer takes the facts one behind the other.
 *  @param size in: bytes of the buffer; out: bytes of all facts together. Where the buffer is too small for them
 * nothing is written to it, and the call fails.
 *  @return 0, also where there are none; any other value for a failure. */
typedef std::uint32_t (*TavikFactsOfStoragePort)(std::uint32_t handle, std::uint32_t groups, void* buffer,
                                                 std::uint32_t* size);
std::uint32_t tavik_facts_of_storage_port(std::uint32_t handle, std::uint32_t groups, void* buffer,
                                          std::uint32_t* size);

/** The same of an Ethernet function. @param deviceName as in TAVIK_GetLinkProperties. */
typedef std::uint32_t (*TavikFactsOfEthernetPort)(const char* deviceName, std::uint32_t groups, void* buffer,
                                                  std::uint32_t* size);
std::uint32_t tavik_facts_of_ethernet_port(const char* deviceName, std::uint32_t groups, void* buffer,
                                           std::uint32_t* size);

} // extern "C"
