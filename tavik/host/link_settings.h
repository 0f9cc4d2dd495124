// What an Ethernet port can, and what it agreed on with its partner: link modes, pause and forward error correction, as
// the kernel's ethtool calls number them (linux/ethtool.h).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tavik/host/attribute.h"

namespace tavik::host {

struct LinkSettings {
    bool autonegotiation = false;
    std::uint8_t duplex = 0xFF;           ///< DUPLEX_HALF, DUPLEX_FULL, or 0xFF: unknown
    std::vector<std::uint32_t> supported; ///< bits of link modes, the first 32 in the first word

    bool operator==(const LinkSettings&) const = default;
};

struct PauseSettings {
    bool autonegotiation = false;
    bool receive = false;
    bool transmit = false;

    bool operator==(const PauseSettings&) const = default;
};

/** Bits of ETHTOOL_FEC_. */
struct FecSettings {
    std::uint32_t active = 0;
    std::uint32_t configured = 0;

    bool operator==(const FecSettings&) const = default;
};

inline constexpr std::size_t mostLinkModeWords = 64;

/** Bits per second of all modes that are known, rising, each once. Modes of later kernels are passed over. */
std::vector<std::uint64_t> speedsOf(const std::vector<std::uint32_t>& linkModes);

/** "half" or "full". */
Attribute<std::string> duplexName(std::uint8_t duplex);

/** "RS", "BaseR", ... as the program ethtool calls them; what has no name is passed over. */
std::vector<std::string> fecNames(std::uint32_t bits);

// As a recording has them, each in one line.

/** "1 1 00000fff 00000001": autonegotiation, duplex, words of link modes in hexadecimal digits. */
std::string formatLinkSettings(const LinkSettings& settings);
Attribute<LinkSettings> parseLinkSettings(const std::string& line);

/** "1 1 0": autonegotiation, receive, transmit. */
std::string formatPauseSettings(const PauseSettings& settings);
Attribute<PauseSettings> parsePauseSettings(const std::string& line);

/** "8 2": active, configured. */
std::string formatFecSettings(const FecSettings& settings);
Attribute<FecSettings> parseFecSettings(const std::string& line);

} // namespace tavik::host
