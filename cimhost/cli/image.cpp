#include "cimhost/cli/commands.h"
#include "cimhost/cli/image_facts.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

namespace cimhost::cli {

namespace {

/// Whole numbers parted by that character.
template <typename Number, std::size_t count>
std::array<Number, count> numbersOf(const std::string& option, const std::string& text, char separator,
                                    unsigned largest) {
    std::array<Number, count> numbers{};
    const char* at = text.c_str();
    for (std::size_t index = 0; index < count; ++index) {
        char* end = nullptr;
        const bool isDigit = *at >= '0' && *at <= '9';
        const unsigned long number = isDigit ? std::strtoul(at, &end, 10) : largest + 1UL;
        const char expected = index + 1 < count ? separator : '\0';
        if (number > largest || *end != expected) {
            throw std::runtime_error(option + ": \"" + text + "\" is not " + std::to_string(count) + " numbers up to " +
                                     std::to_string(largest) + " with '" + separator + "' between them");
        }
        numbers[index] = static_cast<Number>(number);
        at = end + 1;
    }
    return numbers;
}

template <std::size_t count>
std::optional<std::array<std::uint8_t, count>> versionOf(const std::string& option, const std::string& text) {
    if (text.empty()) return std::nullopt;
    return numbersOf<std::uint8_t, count>(option, text, '.', 255);
}

template <std::size_t count>
std::string dotted(const std::array<std::uint8_t, count>& numbers) {
    std::string text;
    for (const unsigned number : numbers)
        text += (text.empty() ? "" : ".") + std::to_string(number);
    return text;
}

template <std::size_t count>
std::string dotted(const std::optional<std::array<std::uint8_t, count>>& numbers) {
    return numbers ? dotted(*numbers) : std::string();
}

tavik::Bytes readPayload(const std::string& fileName) {
    std::ifstream file(fileName, std::ios::binary);
    std::error_code error;
    const auto size = std::filesystem::file_size(fileName, error);
    if (!file || error) throw std::runtime_error(fileName + ": cannot be read");
    if (size > tavik::flashImageLimit) throw std::runtime_error(fileName + ": larger than 16 MiB");
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

tavik::FlashImage imageOf(const ImageOptions& options) {
    tavik::FlashImage image;
    image.cardModel = options.model;
    image.version = numbersOf<std::uint8_t, 3>("--image-version", options.version, '.', 99);
    const auto date = numbersOf<std::uint16_t, 3>("--date", options.date, '-', 9999);
    if (date[1] > 12 || date[2] > 31) throw std::runtime_error("--date: \"" + options.date + "\" is no date");
    image.releaseDate = {date[0], static_cast<std::uint8_t>(date[1]), static_cast<std::uint8_t>(date[2])};
    image.optionRom.biosVersion = options.bios;
    image.optionRom.firmware = versionOf<3>("--firmware", options.firmware);
    image.optionRom.efi = versionOf<2>("--efi", options.efi);
    image.optionRom.fcode = versionOf<3>("--fcode", options.fcode);
    if (!options.payload.empty()) image.payload = readPayload(options.payload);
    return image;
}

/// A file that would be lost. Devices and empty files have nothing to lose.
bool holdsSomething(const std::string& name) {
    std::error_code error;
    return std::filesystem::is_regular_file(name, error) && std::filesystem::file_size(name, error) > 0;
}

} // namespace

nlohmann::ordered_json imageFacts(const tavik::FlashImage& image) {
    const auto& date = image.releaseDate;
    char dateText[16];
    std::snprintf(dateText, sizeof dateText, "%04u-%02u-%02u", unsigned{date.year}, unsigned{date.month},
                  unsigned{date.day});
    return {{"model", image.cardModel},
            {"version", dotted(image.version)},
            {"date", dateText},
            {"bios", image.optionRom.biosVersion},
            {"firmware", dotted(image.optionRom.firmware)},
            {"efi", dotted(image.optionRom.efi)},
            {"fcode", dotted(image.optionRom.fcode)},
            {"payloadBytes", image.payload.size()}};
}

void makeImage(const ImageOptions& options) {
    if (!options.overwrites && holdsSomething(options.file)) {
        throw std::runtime_error(options.file + ": exists; --force writes over it");
    }
    const auto bytes = tavik::encodeFlashImage(imageOf(options));
    if (const auto* fault = std::get_if<tavik::FlashFault>(&bytes)) throw std::runtime_error(fault->reason);
    const auto& written = std::get<tavik::Bytes>(bytes);
    std::ofstream file(options.file, std::ios::binary);
    file.write(reinterpret_cast<const char*>(written.data()), static_cast<std::streamsize>(written.size()));
    file.close();
    if (!file) throw std::runtime_error(options.file + ": cannot be written");
}

void showImage(const ImageOptions& options) {
    const auto read = tavik::readFlashImageFile(options.file);
    if (const auto* fault = std::get_if<tavik::FlashFault>(&read)) throw std::runtime_error(fault->reason);
    const auto described = imageFacts(std::get<tavik::FlashImage>(read));
    if (options.form == Form::json) {
        std::cout << described.dump(2) << '\n';
        return;
    }
    for (const auto& [name, value] : described.items())
        std::cout << name << ": " << (value.is_string() ? value.get<std::string>() : value.dump()) << '\n';
}

} // namespace cimhost::cli
