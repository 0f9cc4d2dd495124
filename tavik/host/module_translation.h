// Brings the memory of any transceiver module into the serial ID layout of SFF-8472 that callers read.
#pragma once

#include "tavik/host/attribute.h"
#include "tavik/host/kernel_queries.h"
#include "tavik/model.h"

namespace tavik::host {

/** SFF-8079 and SFF-8472 modules pass on as they are, page A0 and page A2. Of SFF-8436 and SFF-8636 (QSFP) and of CMIS
 *  modules (QSFP-DD and later) these move to where SFP modules have them:
 *
 *  | fact            | QSFP         | CMIS, page 00h | page A0 |
 *  |-----------------|--------------|----------------|---------|
 *  | identifier      | 128          | 128            | 0       |
 *  | ext. identifier | 129          |                | 1       |
 *  | connector       | 130          | 203            | 2       |
 *  | 10GBASE-SR, LR and LRM | 131 bits 4 to 6 |      | 3       |
 *  | distance and speeds of Fibre Channel | 135, 138 | | 7, 10 |
 *  | copper cable, passive or active | 147 bits 4 to 7 | 212 | 8 bits 2 and 3 |
 *  | nominal rate    | 140, 222     |                | 12, 66  |
 *  | vendor name     | 148 to 163   | 129 to 144     | 20 to 35|
 *  | extended compliance | 192, where 131 bit 7 says so | | 36 |
 *  | vendor OUI      | 165 to 167   | 145 to 147     | 37 to 39|
 *  | part number     | 168 to 183   | 148 to 163     | 40 to 55|
 *  | revision        | 184 to 185   | 164 to 165     | 56 to 59, padded with blanks |
 *  | wavelength, not of copper | 186 to 187 | page 01h: 138 to 139 | 60 to 61, in whole nanometres |
 *  | serial number   | 196 to 211   | 166 to 181     | 68 to 83|
 *  | date code       | 212 to 219   | 182 to 189     | 84 to 91|
 *
 *  Page A2 has the module's diagnostics where it tells any, of its several lanes the worst: encodeDiagnosticsPage. Both
 *  checksums of page A0 are made anew; where the module's own is wrong, so is the new one.
 *  Absent for a module of another kind, one whose memory is too short, or one that answers with ones only. */
Attribute<Transceiver> translateModule(const ModuleMemory& memory);

/** Vendor name, part number or serial number from page A0 without the blanks at its end: at most 16 characters. */
std::string serialIdText(const Bytes& pageA0, std::size_t offset);

} // namespace tavik::host
