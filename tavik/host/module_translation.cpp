#include "tavik/host/module_translation.h"

#include <algorithm>
#include <numeric>

namespace tavik::host {

namespace {

constexpr std::size_t pageSize = 256;
/** Without the vendor's own bytes, which some drivers leave out. */
constexpr std::size_t serialIdSize = 96;
constexpr std::size_t quadSerialIdSize = 224;

struct Move {
    std::size_t from; ///< in the memory of a QSFP module
    std::size_t to;   ///< in page A0
    std::size_t size;
};

constexpr Move moves[] = {
    {128, 0, 3},   // identifiers and connector
    {140, 12, 1},  // nominal rate
    {148, 20, 16}, // vendor name
    {165, 37, 3},  // vendor OUI
    {168, 40, 16}, // part number
    {184, 56, 2},  // revision
    {196, 68, 16}, // serial number
    {212, 84, 8},  // date code
};

Absence tooShort(std::size_t size, std::size_t needed) {
    return {"module memory of " + std::to_string(size) + " bytes, " + std::to_string(needed) + " needed"};
}

/** The sum of the bytes from first up to checksum goes into the place of the checksum. */
void setChecksum(Bytes& page, std::size_t first, std::size_t checksum) {
    const auto begin = page.begin() + static_cast<std::ptrdiff_t>(first);
    const auto end = page.begin() + static_cast<std::ptrdiff_t>(checksum);
    page[checksum] = static_cast<std::uint8_t>(std::accumulate(begin, end, 0U));
}

Attribute<Transceiver> takeSingle(const Bytes& memory) {
    if (memory.size() < serialIdSize) return tooShort(memory.size(), serialIdSize);
    const auto split = static_cast<std::ptrdiff_t>(std::min(memory.size(), pageSize));
    const auto end = static_cast<std::ptrdiff_t>(std::min(memory.size(), 2 * pageSize));
    return Transceiver{{memory.begin(), memory.begin() + split}, {memory.begin() + split, memory.begin() + end}};
}

Attribute<Transceiver> translateQuad(const Bytes& memory) {
    if (memory.size() < quadSerialIdSize) return tooShort(memory.size(), quadSerialIdSize);
    Bytes page(pageSize);
    std::fill_n(page.begin() + 56, 4, std::uint8_t{' '});
    for (const auto& move : moves)
        std::copy_n(memory.begin() + static_cast<std::ptrdiff_t>(move.from), move.size,
                    page.begin() + static_cast<std::ptrdiff_t>(move.to));
    const unsigned nanometres = (memory[186] * 256U + memory[187]) / 20U;
    page[60] = static_cast<std::uint8_t>(nanometres >> 8);
    page[61] = static_cast<std::uint8_t>(nanometres);
    setChecksum(page, 0, 63);
    setChecksum(page, 64, 95);
    return Transceiver{std::move(page), {}};
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
        return translateQuad(memory.content);
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
