#include "classes/storage/option_rom.h"

#include "inventory/chip.h"

#include <cstring>

namespace merolt::storage {

OptionRomStore g_optionRomBiosVersion;
OptionRomStore g_optionRomFCodeVersion;
OptionRomStore g_optionRomEfiVersion;
OptionRomStore g_optionRomFirmwareVersion;

namespace {

using VersionText = FixedText<64>;

constexpr std::uint8_t firmwareValid = 0x01;
constexpr std::uint8_t efiValid = 0x02;
constexpr std::uint8_t fcodeValid = 0x04;

// Character classes of the C locale, so that a host's locale changes no answer.
bool isPrintable(char character) { return character >= 0x20 && character <= 0x7E; }
bool isSpace(char character) { return character == ' ' || (character >= '\t' && character <= '\r'); }

/// The BIOS text without the characters that are none, and without one leading white space.
VersionText biosVersion(const TAVIK_DeviceRecord* device) {
    char kept[sizeof(device->optionRomBiosVersion)];
    std::size_t length = 0;
    const std::size_t width = strnlen(device->optionRomBiosVersion, sizeof(device->optionRomBiosVersion));
    for (std::size_t index = 0; index < width; ++index) {
        const char character = device->optionRomBiosVersion[index];
        if (isPrintable(character) || isSpace(character)) kept[length++] = character;
    }
    const std::size_t skipped = length > 0 && isSpace(kept[0]) ? 1 : 0;
    VersionText text;
    text.assign({kept + skipped, length - skipped});
    return text;
}

VersionText threeNumbers(const std::uint8_t* version) {
    VersionText text;
    text.format("%d.%02d.%02d", version[0], version[1], version[2]);
    return text;
}

VersionText twoNumbers(const std::uint8_t* version) {
    VersionText text;
    text.format("%d.%02d", version[0], version[1]);
    return text;
}

VersionText notAvailable() {
    VersionText text;
    text.assign("N/A");
    return text;
}

VersionText fcodeVersion(const TAVIK_DeviceRecord* device) {
    if (!(device->optionRomFlags & fcodeValid)) return notAvailable();
    return getChipIndex(device) < 8 ? threeNumbers(device->fcodeVersion) : twoNumbers(device->fcodeVersion);
}

VersionText efiVersion(const TAVIK_DeviceRecord* device) {
    return device->optionRomFlags & efiValid ? twoNumbers(device->efiVersion) : notAvailable();
}

VersionText firmwareVersion(const TAVIK_DeviceRecord* device) {
    return device->optionRomFlags & firmwareValid ? threeNumbers(device->firmwareVersion) : notAvailable();
}

} // namespace

void clearOptionRomVersions() {
    for (OptionRomStore* store :
         {&g_optionRomBiosVersion, &g_optionRomFCodeVersion, &g_optionRomEfiVersion, &g_optionRomFirmwareVersion})
        store->clear();
}

void getOptionRomVersions(TAVIK_DeviceRecord* device) {
    if (getChipIndex(device) < 6) return;
    g_optionRomBiosVersion.format("OptionROM BIOS Version:%s", biosVersion(device).text());
    g_optionRomFCodeVersion.format("OptionROM FCode Version:%s", fcodeVersion(device).text());
    g_optionRomEfiVersion.format("OptionROM EFI Version:%s", efiVersion(device).text());
    g_optionRomFirmwareVersion.format("OptionROM Firmware Version:%s", firmwareVersion(device).text());
}

} // namespace merolt::storage
