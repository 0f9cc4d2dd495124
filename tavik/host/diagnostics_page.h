// Lays out the readings of a module of several lanes as an SFP module has its own: page A2h of SFF-8472.
#pragma once

#include "optics/module.h"
#include "tavik/model.h"

namespace tavik::host {

/** Page A2h, 256 bytes, calibrated inside. It has room for one lane: bias, transmit and receive power are each those of
 *  the worst lane (optics::worstLane), flags and losses those of any lane. What the module does not tell is zero,
 * limits and reading alike, which readers take for absent. Its checksum is right unless that of the module's own limits
 * is wrong. */
Bytes encodeDiagnosticsPage(const optics::Module& module);

/** Byte 92 of page A0h, the kind of diagnostics; zero for a module that tells no reading. */
std::uint8_t diagnosticsType(const optics::Module& module);

/** Byte 93 of page A0h, what of flags and status is told. */
std::uint8_t enhancedOptions(const optics::Module& module);

/** The sum of the bytes from first up to checksum goes into the place of the checksum; a wrong one is one more. */
void setChecksum(Bytes& page, std::size_t first, std::size_t checksum, bool isRight);

} // namespace tavik::host
