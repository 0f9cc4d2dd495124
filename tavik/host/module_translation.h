// Brings the memory of any transceiver module into the serial ID layout of SFF-8472 that callers read.
#pragma once

#include "tavik/host/attribute.h"
#include "tavik/host/kernel_queries.h"
#include "tavik/model.h"

namespace tavik::host {

/** SFF-8079 and SFF-8472 modules pass on as they are, page A0 and page A2. Of SFF-8436 and SFF-8636 modules (QSFP)
 *  these move to where SFP modules have them, and page A2 stays empty:
 *
 *  | fact            | QSFP, page 0 | page A0 |
 *  |-----------------|--------------|---------|
 *  | identifier      | 128          | 0       |
 *  | ext. identifier | 129          | 1       |
 *  | connector       | 130          | 2       |
 *  | nominal rate    | 140          | 12      |
 *  | vendor name     | 148 to 163   | 20 to 35|
 *  | vendor OUI      | 165 to 167   | 37 to 39|
 *  | part number     | 168 to 183   | 40 to 55|
 *  | revision        | 184 to 185   | 56 to 59, padded with blanks |
 *  | wavelength      | 186 to 187, in twentieths of a nanometre | 60 to 61, in nanometres |
 *  | serial number   | 196 to 211   | 68 to 83|
 *  | date code       | 212 to 219   | 84 to 91|
 *
 *  The compliance codes are left at zero, because their meaning differs; both checksums of page A0 are made anew.
 *  Absent for a module of another kind, one whose memory is too short, or one that answers with ones only. */
Attribute<Transceiver> translateModule(const ModuleMemory& memory);

/** Vendor name, part number or serial number from page A0 without the blanks at its end: at most 16 characters. */
std::string serialIdText(const Bytes& pageA0, std::size_t offset);

} // namespace tavik::host
