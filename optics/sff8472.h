// Modules of the SFP family: the serial ID at two-wire address A0h and the diagnostics at A2h (SFF-8472 rev. 12.4).
#pragma once

#include "optics/bytes.h"
#include "optics/module.h"

namespace optics {

/// Decodes the two pages of an SFP module. Reads nothing beyond them, however short they are, and allocates nothing.
///
/// | what                        | where                                          |
/// |-----------------------------|------------------------------------------------|
/// | identifier, connector       | A0h 0, 2                                       |
/// | standards                   | A0h 3 to 10 (table 5-3), 36                    |
/// | nominal signalling rate     | A0h 12 in 100 MBd; FFh: 66 in 250 MBd          |
/// | vendor, OUI, part, revision | A0h 20 to 35, 37 to 39, 40 to 55, 56 to 59     |
/// | wavelength                  | A0h 60 and 61 in nm; of a cable they are codes (byte 8 bits 2 and 3) |
/// | serial number, date         | A0h 68 to 83, 84 to 91                         |
/// | checksums                   | A0h 63 over 0 to 62, 95 over 64 to 94; A2h 95 over 0 to 94 |
/// | diagnostics, calibration    | A0h 92 (table 8-5): 6 there, 5 internal, 4 external, 3 average power, 2 address
/// change | | what is implemented         | A0h 93 (table 8-6): 7 flags, 5 transmit fault, 4 receive loss, 6 transmit
/// disable | | thresholds                  | A2h 0 to 39 (table 9-5), as raw as the readings | | calibration constants
/// | A2h 56 to 91 (table 9-6)                       | | readings                    | A2h 96 to 105 (table 9-11) | |
/// status                      | A2h 110: 7 disabled, 2 fault, 1 loss, 0 not ready | | flags                       |
/// A2h 112, 113 (alarms), 116, 117 (warnings) (table 9-12) |
///
/// What is not told is absent, and `findings` has the reason. A quantity whose reading and limits are all zero is not
/// measured. Receive power below zero, as some calibration polynomials
/// have it in the dark, is zero.
///
/// @param identityPage page A0h: 96 bytes or more are needed; @param diagnosticsPage page A2h, or nothing.
Module decodeSff8472(Memory identityPage, Memory diagnosticsPage);

} // namespace optics
