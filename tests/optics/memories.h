// Module memories written by hand, byte by byte as the standards' tables place them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <numeric>
#include <string_view>
#include <vector>

namespace optics::tests {

using Bytes = std::vector<std::uint8_t>;

inline void put(Bytes& memory, std::size_t offset, std::initializer_list<int> bytes) {
    for (const int byte : bytes)
        memory.at(offset++) = static_cast<std::uint8_t>(byte);
}

/// A text field, filled with blanks.
inline void putText(Bytes& memory, std::size_t offset, std::size_t width, std::string_view text) {
    for (std::size_t i = 0; i < width; ++i)
        memory.at(offset + i) = static_cast<std::uint8_t>(i < text.size() ? text[i] : ' ');
}

inline void putChecksum(Bytes& memory, std::size_t first, std::size_t checksum) {
    memory.at(checksum) =
        static_cast<std::uint8_t>(std::accumulate(memory.begin() + static_cast<std::ptrdiff_t>(first),
                                                  memory.begin() + static_cast<std::ptrdiff_t>(checksum), 0U));
}

/// A short-range 10 gigabit SFP+ module with diagnostics that are calibrated inside.
inline Bytes sfpIdentity() {
    Bytes page(256, 0);
    put(page, 0, {0x03, 0x04, 0x07, 0x10}); // SFP, two-wire ID, LC, 10GBASE-SR
    put(page, 11, {0x06, 0x67});            // 64B/66B, 10300 MBd
    putText(page, 20, 16, "EXAMPLE OPTICS");
    put(page, 37, {0x00, 0x11, 0x22});
    putText(page, 40, 16, "EX-SFP10-SR");
    putText(page, 56, 4, "B1");
    put(page, 60, {0x03, 0x52}); // 850 nm
    put(page, 65, {0x1A});
    putText(page, 68, 16, "EX00000001");
    putText(page, 84, 8, "240115");
    put(page, 92, {0x68, 0xF0, 0x05}); // diagnostics, internal, average; flags and soft status; rev. 11.0
    putChecksum(page, 0, 63);
    putChecksum(page, 64, 95);
    return page;
}

/// Its diagnostics: everything as it should be.
inline Bytes sfpDiagnostics() {
    Bytes page(256, 0);
    put(page, 0, {0x4B, 0x00, 0xFB, 0x00, 0x46, 0x00, 0x00, 0x00});  // 75, -5, 70, 0 degrees
    put(page, 8, {0x8D, 0xCC, 0x74, 0x04, 0x87, 0x5A, 0x7A, 0x76});  // 3.63, 2.97, 3.465, 3.135 V
    put(page, 16, {0x17, 0x0C, 0x07, 0xD0, 0x15, 0x18, 0x09, 0xC4}); // 11.8, 4, 10.8, 5 mA
    put(page, 24, {0x20, 0x7E, 0x09, 0xD0, 0x19, 0xCF, 0x0C, 0x5A}); // 0.8318, 0.2512, 0.6607, 0.3162 mW
    put(page, 32, {0x27, 0x10, 0x00, 0x64, 0x1F, 0x07, 0x00, 0x9E}); // 1, 0.01, 0.7943, 0.0158 mW
    put(page, 68, {0x3F, 0x80, 0x00, 0x00});                         // receive power: 1.0 times the raw word
    for (const std::size_t slope : {76U, 80U, 84U, 88U})
        put(page, slope, {0x01, 0x00});
    putChecksum(page, 0, 95);
    put(page, 96, {0x23, 0x80, 0x80, 0xE8, 0x0B, 0xB8, 0x17, 0x70, 0x13, 0x88}); // 35.5, 3.3, 6, 0.6, 0.5
    return page;
}

/// A QSFP28 module for 100GBASE-SR4 with all that SFF-8636 has: lower half, then the upper halves of pages 00h to 03h.
inline Bytes qsfp28Memory() {
    Bytes memory(640, 0);
    put(memory, 0, {0x11, 0x08, 0x00});                                // QSFP28, rev. 2.8, pages, ready
    put(memory, 22, {0x28, 0x40});                                     // 40.25 degrees
    put(memory, 26, {0x80, 0x20});                                     // 3.28 V
    put(memory, 34, {0x1F, 0x40, 0x1E, 0x78, 0x1D, 0xB0, 0x1C, 0xE8}); // received: 0.8, 0.78, 0.76, 0.74 mW
    put(memory, 42, {0x0D, 0xAC, 0x0D, 0xDE, 0x0E, 0x10, 0x0E, 0x42}); // bias: 7, 7.1, 7.2, 7.3 mA
    put(memory, 50, {0x27, 0x10, 0x27, 0x74, 0x27, 0xD8, 0x28, 0x3C}); // sent: 1, 1.01, 1.02, 1.03 mW
    put(memory, 128, {0x11, 0xFC, 0x0C, 0x80});                        // QSFP28, MPO 1x12, see byte 192
    put(memory, 140, {0xFF});                                          // the rate is in byte 222
    putText(memory, 148, 16, "EXAMPLE OPTICS");
    put(memory, 165, {0x00, 0x11, 0x22});
    putText(memory, 168, 16, "EX-Q28-SR4");
    putText(memory, 184, 2, "A1");
    put(memory, 186, {0x42, 0x68}); // 850 nm in twentieths
    put(memory, 192, {0x02});       // 100GBASE-SR4
    putText(memory, 196, 16, "EXQ0000007");
    putText(memory, 212, 8, "230401");
    put(memory, 220, {0x3C, 0x00, 0x67}); // all is measured, average power; 25750 MBd
    putChecksum(memory, 128, 191);
    putChecksum(memory, 192, 223);
    put(memory, 512, {0x4B, 0x00, 0xFB, 0x00, 0x46, 0x00, 0x00, 0x00}); // 75, -5, 70, 0 degrees
    put(memory, 528, {0x8D, 0xCC, 0x74, 0x04, 0x87, 0x5A, 0x7A, 0x76}); // 3.63, 2.97, 3.465, 3.135 V
    put(memory, 560, {0x54, 0x60, 0x02, 0x58, 0x43, 0x30, 0x04, 0xB0}); // received: 2.16, 0.06, 1.72, 0.12 mW
    put(memory, 568, {0x13, 0x88, 0x07, 0xD0, 0x11, 0x94, 0x09, 0xC4}); // bias: 10, 4, 9, 5 mA
    put(memory, 576, {0x54, 0x60, 0x03, 0xE8, 0x43, 0x30, 0x07, 0xD0}); // sent: 2.16, 0.1, 1.72, 0.2 mW
    return memory;
}

/// A QSFP-DD module for 400GBASE-SR8: lower half, then the upper halves of pages 00h, 01h, 02h and 11h.
inline Bytes qsfpDdMemory() {
    Bytes memory(640, 0);
    put(memory, 0, {0x18, 0x52, 0x00, 0x06});  // QSFP-DD, CMIS 5.2, pages, ready
    put(memory, 14, {0x32, 0x80, 0x80, 0xE8}); // 50.5 degrees, 3.3 V
    put(memory, 128, {0x18});
    putText(memory, 129, 16, "EXAMPLE OPTICS");
    put(memory, 145, {0x00, 0x11, 0x22});
    putText(memory, 148, 16, "EX-QDD-SR8");
    putText(memory, 164, 2, "1A");
    putText(memory, 166, 16, "EXD0000031");
    putText(memory, 182, 8, "240630");
    put(memory, 203, {0x0D});             // MPO 2x16
    put(memory, 210, {0x00, 0x00, 0x00}); // all lanes are there; 850 nm VCSEL
    putChecksum(memory, 128, 222);
    constexpr std::size_t page1 = 256 - 128, page2 = 384 - 128, page11 = 512 - 128;
    put(memory, page1 + 138, {0x42, 0x68}); // 850 nm in twentieths
    put(memory, page1 + 151, {0x10});       // average receive power
    put(memory, page1 + 159, {0x03, 0x0F}); // everything is measured, the bias in steps of 4 microamperes
    putChecksum(memory, page1 + 130, page1 + 255);
    put(memory, page2 + 128, {0x4B, 0x00, 0xFB, 0x00, 0x46, 0x00, 0x00, 0x00}); // 75, -5, 70, 0 degrees
    put(memory, page2 + 136, {0x8D, 0xCC, 0x74, 0x04, 0x87, 0x5A, 0x7A, 0x76}); // 3.63, 2.97, 3.465, 3.135 V
    put(memory, page2 + 176, {0x54, 0x60, 0x03, 0xE8, 0x43, 0x30, 0x07, 0xD0}); // sent: 2.16, 0.1, 1.72, 0.2 mW
    put(memory, page2 + 184, {0x0D, 0xAC, 0x03, 0xE8, 0x0B, 0xB8, 0x04, 0xE2}); // bias: 14, 4, 12, 5 mA
    put(memory, page2 + 192, {0x54, 0x60, 0x02, 0x58, 0x43, 0x30, 0x04, 0xB0}); // received: 2.16, 0.06, 1.72, 0.12 mW
    putChecksum(memory, page2 + 128, page2 + 255);
    for (std::size_t lane = 0; lane < 8; ++lane) {
        put(memory, page11 + 154 + 2 * lane, {0x27, 0x10}); // sent: 1 mW
        put(memory, page11 + 170 + 2 * lane, {0x07, 0xD0}); // bias: 8 mA
        put(memory, page11 + 186 + 2 * lane, {0x1F, 0x40}); // received: 0.8 mW
    }
    return memory;
}

} // namespace optics::tests
