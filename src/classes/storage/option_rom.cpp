#include "classes/storage/option_rom.h"

#include "inventory/chip.h"
#include "text/text.h"

#include <cstring>

namespace merolt::storage {

OptionRomStore g_optionRomBiosVersion;
OptionRomStore g_optionRomFCodeVersion;
OptionRomStore g_optionRomEfiVersion;
OptionRomStore g_optionRomFirmwareVersion;

namespace {

using VersionText = MeasuredText<64>;

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

VersionText twoNumbers(const std::uint8_t* version) {
    VersionText text;
    text.join({formatNumber(version[0]).view(), ".", formatNumber(version[1], 2).view()});
    return text;
}

VersionText threeNumbers(const std::uint8_t* version) {
    VersionText text;
    text.join({twoNumbers(version).view(), ".", formatNumber(version[2], 2).view()});
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
    g_optionRomBiosVersion.join({"OptionROM BIOS Version:", biosVersion(device).view()});
    g_optionRomFCodeVersion.join({"OptionROM FCode Version:", fcodeVersion(device).view()});
    g_optionRomEfiVersion.join({"OptionROM EFI Version:", efiVersion(device).view()});
    g_optionRomFirmwareVersion.join({"OptionROM Firmware Version:", firmwareVersion(device).view()});
}

} // namespace merolt::storage
