// Flash images for fleets: a header that says which card they are for and which versions they bring, and a payload.
// docs/flash-images.md shows the header byte by byte.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <variant>

#include "tavik/model.h"
#include "tavik/status.h"

namespace tavik {

inline constexpr std::size_t flashHeaderSize = 128;
/** Header and payload together: what the Ethernet side's service takes at most. */
inline constexpr std::size_t flashImageLimit = std::size_t{16} << 20;
/** No path and no text begins with the first of these bytes, and a transfer that changes line ends breaks the last. */
inline constexpr std::array<std::uint8_t, 8> flashMagic{0x89, 'M', 'L', 'T', 'F', '\r', '\n', 0x1A};

struct ReleaseDate {
    std::uint16_t year = 2000; ///< 1970 to 9999
    std::uint8_t month = 1;
    std::uint8_t day = 1;

    bool operator==(const ReleaseDate&) const = default;
};

struct FlashImage {
    std::string cardModel;                 ///< of the cards that it fits; at most 31 characters
    std::array<std::uint8_t, 3> version{}; ///< of the image as a whole, each 0 to 99
    ReleaseDate releaseDate;
    OptionRom optionRom;
    Bytes payload;

    bool operator==(const FlashImage&) const = default;
};

/** Why bytes are not taken: a status of the library and the reason in words. */
struct FlashFault {
    Status status = statusDamagedImage;
    std::string reason;

    bool operator==(const FlashFault&) const = default;
};

/** @return the image as bytes, or what is wrong with its fields. */
std::variant<Bytes, FlashFault> encodeFlashImage(const FlashImage& image);

/** Judges a header alone. @param header what there is of it, at most flashHeaderSize bytes.
 *  @return the size of the whole image, or why these bytes are none. */
std::variant<std::size_t, FlashFault> flashImageSize(std::span<const std::uint8_t> header);

/** @param bytes the whole image and nothing behind it. */
std::variant<FlashImage, FlashFault> decodeFlashImage(std::span<const std::uint8_t> bytes);

/** Takes an image out of memory whose end nobody knows, or out of the file that the memory names by an absolute path.
 *  What cannot be read ends the image; no more is read than the header asks for. */
std::variant<FlashImage, FlashFault> readFlashImage(const void* memory);

std::variant<FlashImage, FlashFault> readFlashImageFile(const std::string& fileName);

} // namespace tavik
