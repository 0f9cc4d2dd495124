// Modules with the Common Management Interface Specification: QSFP-DD, OSFP and later ones, up to eight lanes
// (OIF-CMIS 5.2).
#pragma once

#include "optics/bytes.h"
#include "optics/module.h"

namespace optics {

/// Where the parts of a memory stand: the lower half of 128 bytes, then the upper halves of pages 00h, 01h, 02h and, of
/// bank 0, 11h.
constexpr std::size_t cmisPage1 = 256;
constexpr std::size_t cmisPage2 = 384;
constexpr std::size_t cmisPage11 = 512;
constexpr std::size_t cmisSize = 640;

/// Decodes a memory of that layout. It may end anywhere: what it does not reach is absent. Allocates nothing.
///
/// | what                        | where                                             |
/// |-----------------------------|---------------------------------------------------|
/// | identifier, connector       | 00h: 128, 203                                     |
/// | vendor, OUI, part, revision | 00h: 129 to 144, 145 to 147, 148 to 163, 164 and 165 |
/// | serial number, date         | 00h: 166 to 181, 182 to 189                       |
/// | lanes that are not there    | 00h: 210, a bit for each lane                     |
/// | media technology            | 00h: 212; 0Ah to 0Fh are copper                   |
/// | wavelength                  | 01h: 138 and 139 in twentieths of a nanometre     |
/// | kind of receive power       | 01h: 151 bit 4 (1: average)                       |
/// | what is measured            | 01h: 159 bits 0 and 1 (temperature, supply), 160 bits 0 to 2 (bias, transmit,
/// receive) | | scale of the bias           | 01h: 160 bits 3 and 4: 2 microamperes times 1, 2 or 4 | | checksums |
/// 00h: 222 over 128 to 221; 01h: 255 over 130 to 254; 02h: 255 over 128 to 254 | | thresholds                  | 02h:
/// 128 temperature, 136 supply, 176 transmit power, 184 bias, 192 receive power | | temperature, supply         | lower
/// half: 14, 16; flags in 9                    | | lanes                       | 11h: transmit power 154 to 169, bias
/// 170 to 185, receive power 186 to 201 | | status and flags of lanes   | 11h: 135 fault, 147 loss, 139 to 146 and 149
/// to 152, a byte a flag and a bit a lane |
///
/// Readings are taken only where page 01h says that they are measured; a module with flat memory (lower half, byte 2
/// bit 7) has none.
Module decodeCmis(Memory memory);

} // namespace optics
