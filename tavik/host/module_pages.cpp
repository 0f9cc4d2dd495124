#include "tavik/host/module_pages.h"

#include <initializer_list>
#include <string>
#include <utility>

#include "optics/cmis.h"
#include "optics/codes.h"
#include "optics/sff8636.h"

namespace tavik::host {

namespace {

/** A page of a QSFP stands at 128 bytes a page behind the lower half: page 03h at 512. */
constexpr std::size_t quadPage3 = optics::sff8636Size - halfPageSize;
constexpr std::size_t wholePage = std::size_t{2} * halfPageSize;
/** SFF-8472: the byte of page A0 that declares diagnostics. */
constexpr std::size_t diagnosticsType = 92;

Attribute<Bytes> readHalf(const HalfPageReader& read, const HalfPage& half) {
    const auto bytes = read(half);
    if (!bytes) return bytes;
    if (bytes->size() < halfPageSize)
        return Absence{"the module delivers " + std::to_string(bytes->size()) + " of 128 bytes"};
    return Bytes(bytes->begin(), bytes->begin() + halfPageSize);
}

/** The module's bytes are added to the memory. @return false where they cannot be had. */
bool append(Bytes& memory, const HalfPageReader& read, const HalfPage& half) {
    const auto bytes = readHalf(read, half);
    if (bytes) memory.insert(memory.end(), bytes->begin(), bytes->end());
    return bytes.present();
}

/** Adds upper halves of pages up to the first that cannot be had. */
void appendPages(Bytes& memory, const HalfPageReader& read, std::initializer_list<std::uint8_t> pages) {
    for (const auto page : pages)
        if (!append(memory, read, {firstAddress, page, halfPageSize})) return;
}

ModuleMemory readQuad(Bytes lower, const HalfPageReader& read) {
    const bool hasPages = (lower[2] & 0x04) == 0;
    ModuleMemory memory{ModuleMemory::Sff8636, std::move(lower)};
    if (!append(memory.content, read, {firstAddress, 0, halfPageSize}) || !hasPages) return memory;
    const auto page3 = readHalf(read, {firstAddress, 3, halfPageSize});
    if (!page3) return memory;
    memory.content.resize(quadPage3);
    memory.content.insert(memory.content.end(), page3->begin(), page3->end());
    return memory;
}

ModuleMemory readCmis(Bytes lower, const HalfPageReader& read) {
    const bool hasPages = (lower[2] & 0x80) == 0;
    ModuleMemory memory{ModuleMemory::Cmis, std::move(lower)};
    if (hasPages)
        appendPages(memory.content, read, {0x00, 0x01, 0x02, 0x11});
    else
        appendPages(memory.content, read, {0x00});
    return memory;
}

} // namespace

Attribute<ModuleMemory> readSeveralLanes(const HalfPageReader& read) {
    const auto lower = readHalf(read, {});
    if (!lower) return lower.absence();
    switch (optics::familyOf(lower->front())) {
    case optics::Family::Sff8636:
        return readQuad(*lower, read);
    case optics::Family::Cmis:
        return readCmis(*lower, read);
    default:
        return Absence{"no module of several lanes"};
    }
}

Attribute<ModuleMemory> readSfp(const HalfPageReader& read) {
    const auto lower = readHalf(read, {});
    if (!lower) return lower.absence();
    if (optics::familyOf(lower->front()) != optics::Family::Sff8472) return Absence{"no module of the SFP family"};
    const bool hasDiagnostics = (lower->at(diagnosticsType) & 0x40) != 0;
    ModuleMemory memory{hasDiagnostics ? ModuleMemory::Sff8472 : ModuleMemory::Sff8079, *lower};
    if (!append(memory.content, read, {firstAddress, 0, halfPageSize})) memory.content.resize(wholePage);
    if (hasDiagnostics && append(memory.content, read, {secondAddress, 0, 0}))
        append(memory.content, read, {secondAddress, 0, halfPageSize});
    return memory;
}

} // namespace tavik::host
