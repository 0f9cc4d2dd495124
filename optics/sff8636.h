// Modules of the QSFP family up to QSFP28: four lanes (SFF-8636 rev. 2.11, and SFF-8436 before it).
#pragma once

#include "optics/bytes.h"
#include "optics/module.h"

namespace optics {

/// Bytes of a whole memory: the lower half of 128 bytes, then the upper halves of pages 00h to 03h.
constexpr std::size_t sff8636Size = 640;

/// Decodes a memory of that layout. It may end anywhere: what it does not reach is absent. Allocates nothing.
///
/// | what                        | where (bytes of the lower half and of upper page 00h) |
/// |-----------------------------|-------------------------------------------------|
/// | identifier, connector       | 128, 130                                        |
/// | standards                   | 131 (Ethernet, table 6-17), 192 (SFF-8024 table 4-4), 138 (Fibre Channel speeds) |
/// | nominal signalling rate     | 140 in 100 MBd; FFh: 222 in 250 MBd             |
/// | device technology           | 147, bits 7 to 4: 10 and more are copper        |
/// | vendor, OUI, part, revision | 148 to 163, 165 to 167, 168 to 183, 184 and 185 |
/// | wavelength                  | 186 and 187 in twentieths of a nanometre; of copper they are an attenuation |
/// | serial number, date         | 196 to 211, 212 to 219                          |
/// | checksums                   | 191 over 128 to 190, 223 over 192 to 222        |
/// | what is measured            | 220: 5 temperature, 4 supply (where byte 1 is 8 or more), 3 average receive power, 2
/// transmit power | | temperature, supply         | 22, 26                                          | | lanes 1 to 4 |
/// receive power 34 to 41, bias 42 to 49, transmit power 50 to 57 | | thresholds                  | page 03h: 128
/// temperature, 144 supply, 176 receive power, 184 bias, 192 transmit power | | status                      | 3 losses,
/// 4 faults, 86 disabled, 2: bit 0 not ready, bit 2 no further pages | | flags                       | 6, 7; two lanes
/// a byte: 9 and 10 receive power, 11 and 12 bias, 13 and 14 transmit power |
///
/// There is no checksum over page 03h. Byte 131 can name several standards; the fastest is told. A quantity whose
/// reading and limits are all zero is not measured.
Module decodeSff8636(Memory memory);

} // namespace optics
