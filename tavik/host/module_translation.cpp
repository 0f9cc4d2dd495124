#include "tavik/host/module_translation.h"

#include <algorithm>
#include <array>
#include <utility>

#include "optics/cmis.h"
#include "optics/codes.h"
#include "optics/sff8636.h"
#include "tavik/host/diagnostics_page.h"

namespace tavik::host {

namespace {

constexpr std::size_t pageSize = 256;
/** Without the vendor's own bytes, which some drivers leave out. */
constexpr std::size_t serialIdSize = 96;
constexpr std::size_t quadSerialIdSize = 224;
constexpr std::size_t cmisSerialIdSize = 256;
// SFF-8636 byte 147, bits 7 to 4, and CMIS byte 212: kinds of copper, the passive ones first.
constexpr int firstCopperTechnology = 10;
constexpr int firstActiveTechnology = 12;
constexpr int firstActiveMedia = 0x0C;

struct Move {
    std::size_t from; ///< in the memory of the module
    std::size_t to;   ///< in page A0
    std::size_t size;
};

constexpr std::array<Move, 10> quadMoves{{
    {128, 0, 3},   // identifiers and connector
    {135, 7, 1},   // distance of Fibre Channel
    {138, 10, 1},  // its speeds
    {140, 12, 1},  // nominal rate
    {148, 20, 16}, // vendor name
    {165, 37, 3},  // vendor OUI
    {168, 40, 16}, // part number
    {184, 56, 2},  // revision
    {196, 68, 16}, // serial number
    {212, 84, 8},  // date code
}};

constexpr std::array<Move, 8> cmisMoves{{
    {128, 0, 1},   // identifier
    {203, 2, 1},   // connector
    {129, 20, 16}, // vendor name
    {145, 37, 3},  // vendor OUI
    {148, 40, 16}, // part number
    {164, 56, 2},  // revision
    {166, 68, 16}, // serial number
    {182, 84, 8},  // date code
}};

constexpr std::uint8_t passiveCable = 0x04; ///< A0 byte 8
constexpr std::uint8_t activeCable = 0x08;

Absence tooShort(std::size_t size, std::size_t needed) {
    return {"module memory of " + std::to_string(size) + " bytes, " + std::to_string(needed) + " needed"};
}

Attribute<Transceiver> takeSingle(const Bytes& memory) {
    if (memory.size() < serialIdSize) return tooShort(memory.size(), serialIdSize);
    const auto split = static_cast<std::ptrdiff_t>(std::min(memory.size(), pageSize));
    const auto end = static_cast<std::ptrdiff_t>(std::min(memory.size(), 2 * pageSize));
    return Transceiver{{memory.begin(), memory.begin() + split}, {memory.begin() + split, memory.begin() + end}};
}

template <std::size_t count>
Bytes movedIdentity(const Bytes& memory, const std::array<Move, count>& moves) {
    Bytes page(pageSize);
    std::fill_n(page.begin() + 56, 4, std::uint8_t{' '});
    for (const auto& move : moves)
        std::copy_n(memory.begin() + static_cast<std::ptrdiff_t>(move.from), move.size,
                    page.begin() + static_cast<std::ptrdiff_t>(move.to));
    return page;
}

/** Wavelength, diagnostics and checksums: what depends on more than the place of a byte. */
Transceiver finish(Bytes page, const optics::Module& module) {
    const auto nanometres = static_cast<unsigned>(module.identity.wavelengthNanometres.value_or(0));
    page[60] = static_cast<std::uint8_t>(nanometres >> 8);
    page[61] = static_cast<std::uint8_t>(nanometres);
    page[92] = diagnosticsType(module);
    page[93] = enhancedOptions(module);
    setChecksum(page, 0, 63, !module.findings.has(optics::Finding::BaseChecksumWrong));
    setChecksum(page, 64, 95, !module.findings.has(optics::Finding::ExtendedChecksumWrong));
    const bool hasDiagnostics = module.calibration != optics::Calibration::Unknown;
    return {std::move(page), hasDiagnostics ? encodeDiagnosticsPage(module) : Bytes{}};
}

Attribute<Transceiver> translateQuad(const Bytes& memory) {
    if (memory.size() < quadSerialIdSize) return tooShort(memory.size(), quadSerialIdSize);
    auto page = movedIdentity(memory, quadMoves);
    page[3] = memory[131] & 0x70; // 10GBASE-SR, LR and LRM
    if ((memory[131] & 0x80) != 0) page[36] = memory[192];
    if (memory[140] == 0xFF) page[66] = memory[222];
    const auto technology = memory[147] >> 4;
    if (technology >= firstCopperTechnology) page[8] = technology < firstActiveTechnology ? passiveCable : activeCable;
    return finish(std::move(page), optics::decodeSff8636(memory));
}

Attribute<Transceiver> translateCmis(const Bytes& memory) {
    if (memory.size() < cmisSerialIdSize) return tooShort(memory.size(), cmisSerialIdSize);
    auto page = movedIdentity(memory, cmisMoves);
    const auto module = optics::decodeCmis(memory);
    if (module.identity.copper) page[8] = memory[212] < firstActiveMedia ? passiveCable : activeCable;
    return finish(std::move(page), module);
}

/** Some drivers call the memory of a CMIS module that of a QSFP. What they have behind page 02h is not page 11h. */
Attribute<Transceiver> translateSeveralLanes(const Bytes& memory) {
    if (memory.empty() || optics::familyOf(memory[0]) != optics::Family::Cmis) return translateQuad(memory);
    const auto size = std::min(memory.size(), optics::cmisPage11);
    return translateCmis({memory.begin(), memory.begin() + static_cast<std::ptrdiff_t>(size)});
}

} // namespace

Attribute<Transceiver> translateModule(const ModuleMemory& memory) {
    const auto isOnes = [](std::uint8_t byte) { return byte == 0xFF; };
    if (!memory.content.empty() && std::all_of(memory.content.begin(), memory.content.end(), isOnes))
        return Absence{"the module answers with ones only"};
    switch (memory.kind) {
    case ModuleMemory::Sff8079:
    case ModuleMemory::Sff8472:
        return takeSingle(memory.content);
    case ModuleMemory::Sff8436:
    case ModuleMemory::Sff8636:
        return translateSeveralLanes(memory.content);
    case ModuleMemory::Cmis:
        return translateCmis(memory.content);
    default:
        return Absence{"module memory of the unknown kind " + std::to_string(memory.kind)};
    }
}

std::string serialIdText(const Bytes& pageA0, std::size_t offset) {
    std::string text;
    for (std::size_t at = offset; at < std::min(offset + 16, pageA0.size()); ++at) {
        const auto byte = pageA0[at];
        text += byte >= ' ' && byte <= '~' ? static_cast<char>(byte) : '?';
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

} // namespace tavik::host
