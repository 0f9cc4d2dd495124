#include "tavik/flash_image.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tavik/memory_reader.h"

namespace tavik {

namespace {

constexpr std::uint16_t formatVersion = 1;

/** The header as it stands in front of the payload; numbers are little-endian. */
struct __attribute__((packed)) Header {
    std::array<std::uint8_t, 8> magic;
    std::uint16_t formatVersion;
    std::uint16_t headerSize;
    std::uint32_t payloadSize;
    std::uint32_t payloadCheck;
    std::uint32_t headerCheck; ///< over the header with zero in this place
    char cardModel[32];        ///< ends in NUL
    std::uint8_t version[3];
    std::uint8_t releaseDay;
    std::uint8_t releaseMonth;
    std::uint16_t releaseYear;
    std::uint8_t romFlags;
    std::uint8_t firmware[3];
    std::uint8_t efi[2];
    std::uint8_t fcode[3];
    char biosVersion[32]; ///< ends in NUL
    std::uint8_t reserved[24];
};
static_assert(sizeof(Header) == flashHeaderSize);

enum RomFlag : std::uint8_t { hasFirmware = 1, hasEfi = 2, hasFcode = 4 };

constexpr std::array<std::uint32_t, 256> makeCheckTable() {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t byte = 0; byte < table.size(); ++byte) {
        std::uint32_t rest = byte;
        for (int bit = 0; bit < 8; ++bit)
            rest = (rest & 1) != 0 ? rest >> 1 ^ 0xEDB88320U : rest >> 1;
        table[byte] = rest;
    }
    return table;
}

/** CRC-32 as in ISO 3309. */
std::uint32_t checkOf(std::span<const std::uint8_t> bytes) {
    static constexpr auto table = makeCheckTable();
    std::uint32_t check = 0xFFFFFFFFU;
    for (const std::uint8_t byte : bytes)
        check = table[(check ^ byte) & 0xFF] ^ check >> 8;
    return ~check;
}

std::uint32_t checkOf(Header header) {
    header.headerCheck = 0;
    std::array<std::uint8_t, sizeof(Header)> bytes;
    std::memcpy(bytes.data(), &header, sizeof header);
    return checkOf(bytes);
}

template <std::size_t width>
bool fits(const std::string& text, const char (&)[width]) {
    // What goes into a fleet file and to clients has to be a text there.
    const auto isPrintable = [](char character) { return character >= 0x20 && character < 0x7F; };
    return text.size() < width && std::all_of(text.begin(), text.end(), isPrintable);
}

template <std::size_t width>
bool isTerminated(const char (&field)[width]) {
    return std::memchr(field, 0, width) != nullptr;
}

bool isDate(const ReleaseDate& date) {
    const std::chrono::year_month_day day(std::chrono::year(date.year), std::chrono::month(date.month),
                                          std::chrono::day(date.day));
    return date.year >= 1970 && date.year <= 9999 && day.ok();
}

bool isVersion(const std::array<std::uint8_t, 3>& version) {
    return std::all_of(version.begin(), version.end(), [](std::uint8_t number) { return number <= 99; });
}

FlashFault damaged(std::string reason) { return {statusDamagedImage, std::move(reason)}; }

/** What is wrong with the fields, if anything: empty for a good image. */
std::string faultOf(const FlashImage& image) {
    const Header fields{};
    if (!fits(image.cardModel, fields.cardModel))
        return "the card model is not a text of at most 31 printable characters";
    if (!isVersion(image.version)) return "a number of the version is above 99";
    if (!isDate(image.releaseDate)) return "the release date is none";
    if (!fits(image.optionRom.biosVersion, fields.biosVersion))
        return "the BIOS version is not a text of at most 31 printable characters";
    if (image.payload.size() > flashImageLimit - flashHeaderSize) return "the image is larger than 16 MiB";
    return {};
}

template <std::size_t count>
void store(const std::optional<std::array<std::uint8_t, count>>& version, std::uint8_t (&place)[count], RomFlag flag,
           Header& header) {
    if (!version) return;
    std::copy(version->begin(), version->end(), place);
    header.romFlags = static_cast<std::uint8_t>(header.romFlags | flag);
}

template <std::size_t count>
std::optional<std::array<std::uint8_t, count>> load(const std::uint8_t (&place)[count], RomFlag flag,
                                                    const Header& header) {
    std::array<std::uint8_t, count> version;
    std::copy(std::begin(place), std::end(place), version.begin());
    return (header.romFlags & flag) != 0 ? std::optional(version) : std::nullopt;
}

Header headerOf(const FlashImage& image) {
    Header header{};
    header.magic = flashMagic;
    header.formatVersion = formatVersion;
    header.headerSize = sizeof header;
    header.payloadSize = static_cast<std::uint32_t>(image.payload.size());
    header.payloadCheck = checkOf(image.payload);
    std::copy(image.cardModel.begin(), image.cardModel.end(), header.cardModel);
    std::copy(image.version.begin(), image.version.end(), header.version);
    header.releaseDay = image.releaseDate.day;
    header.releaseMonth = image.releaseDate.month;
    header.releaseYear = image.releaseDate.year;
    store(image.optionRom.firmware, header.firmware, hasFirmware, header);
    store(image.optionRom.efi, header.efi, hasEfi, header);
    store(image.optionRom.fcode, header.fcode, hasFcode, header);
    std::copy(image.optionRom.biosVersion.begin(), image.optionRom.biosVersion.end(), header.biosVersion);
    header.headerCheck = checkOf(header);
    return header;
}

FlashImage imageOf(const Header& header) {
    FlashImage image;
    image.cardModel = header.cardModel;
    std::copy(std::begin(header.version), std::end(header.version), image.version.begin());
    image.releaseDate = {header.releaseYear, header.releaseMonth, header.releaseDay};
    image.optionRom.biosVersion = header.biosVersion;
    image.optionRom.firmware = load(header.firmware, hasFirmware, header);
    image.optionRom.efi = load(header.efi, hasEfi, header);
    image.optionRom.fcode = load(header.fcode, hasFcode, header);
    return image;
}

std::variant<Header, FlashFault> checkedHeader(std::span<const std::uint8_t> bytes) {
    const std::size_t magicThere = std::min(bytes.size(), flashMagic.size());
    if (magicThere == 0 || !std::equal(flashMagic.begin(), flashMagic.begin() + magicThere, bytes.begin()))
        return FlashFault{statusNotAnImage, "this is no flash image"};
    if (bytes.size() < sizeof(Header)) return damaged("the image ends within its header");
    Header header;
    std::memcpy(&header, bytes.data(), sizeof header);
    if (header.headerCheck != checkOf(header)) return damaged("the header's checksum is wrong");
    if (header.formatVersion != formatVersion || header.headerSize != sizeof header)
        return FlashFault{statusNotAnImage, "format " + std::to_string(header.formatVersion) + " is not known here"};
    if (!isTerminated(header.cardModel) || !isTerminated(header.biosVersion)) return damaged("a text does not end");
    if (header.payloadSize > flashImageLimit - sizeof header) return damaged("the image is larger than 16 MiB");
    if (const std::string fault = faultOf(imageOf(header)); !fault.empty()) return damaged(fault);
    return header;
}

/** Copies the image out of memory as far as its header says. */
std::variant<Bytes, FlashFault> copyImage(const void* memory) {
    Bytes bytes(flashMagic.size());
    bytes.resize(readMemory(memory, bytes));
    if (!std::equal(bytes.begin(), bytes.end(), flashMagic.begin()))
        return FlashFault{statusNotAnImage, "this is neither a flash image nor the absolute path of a file"};
    bytes.resize(flashHeaderSize);
    bytes.resize(readMemory(memory, bytes));
    const auto size = flashImageSize(bytes);
    if (const auto* fault = std::get_if<FlashFault>(&size)) return *fault;
    bytes.resize(std::get<std::size_t>(size));
    bytes.resize(readMemory(memory, bytes));
    return bytes;
}

/** A path of memory; nothing if it does not end where paths have to. */
std::optional<std::string> copyPath(const void* memory) {
    Bytes bytes(PATH_MAX);
    bytes.resize(readMemory(memory, bytes));
    const auto end = std::find(bytes.begin(), bytes.end(), std::uint8_t{0});
    if (end == bytes.end()) return std::nullopt;
    return std::string(bytes.begin(), end);
}

FlashFault unreadable(const std::string& fileName, const std::string& reason) {
    return {statusUnreadableFile, fileName + ": " + reason};
}

FlashFault notAFile(const std::string& fileName) { return unreadable(fileName, "not a regular file"); }

std::variant<Bytes, FlashFault> readAll(int file, const std::string& fileName) {
    struct stat status {};
    if (fstat(file, &status) != 0) return unreadable(fileName, std::strerror(errno));
    if (!S_ISREG(status.st_mode)) return notAFile(fileName);
    if (status.st_size > static_cast<off_t>(flashImageLimit)) return damaged(fileName + ": larger than 16 MiB");
    // A file that grows meanwhile does not count for more.
    Bytes bytes(static_cast<std::size_t>(status.st_size));
    std::size_t filled = 0;
    while (filled < bytes.size()) {
        const ssize_t length = read(file, bytes.data() + filled, bytes.size() - filled);
        if (length < 0 && errno == EINTR) continue;
        if (length < 0) return unreadable(fileName, std::strerror(errno));
        if (length == 0) break;
        filled += static_cast<std::size_t>(length);
    }
    bytes.resize(filled);
    return bytes;
}

} // namespace

std::variant<Bytes, FlashFault> encodeFlashImage(const FlashImage& image) {
    if (std::string fault = faultOf(image); !fault.empty()) return damaged(std::move(fault));
    const Header header = headerOf(image);
    Bytes bytes(sizeof header + image.payload.size());
    std::memcpy(bytes.data(), &header, sizeof header);
    std::copy(image.payload.begin(), image.payload.end(), bytes.begin() + sizeof header);
    return bytes;
}

std::variant<std::size_t, FlashFault> flashImageSize(std::span<const std::uint8_t> header) {
    const auto checked = checkedHeader(header);
    if (const auto* fault = std::get_if<FlashFault>(&checked)) return *fault;
    return sizeof(Header) + std::get<Header>(checked).payloadSize;
}

namespace {

/** The header of an image that is whole. */
std::variant<Header, FlashFault> checkedImage(std::span<const std::uint8_t> bytes) {
    auto checked = checkedHeader(bytes);
    if (std::holds_alternative<FlashFault>(checked)) return checked;
    const auto& header = std::get<Header>(checked);
    const auto payload = bytes.subspan(sizeof(Header));
    if (payload.size() < header.payloadSize) return damaged("the image is shorter than its header says");
    if (payload.size() > header.payloadSize) return damaged("the image is longer than its header says");
    if (checkOf(payload) != header.payloadCheck) return damaged("the payload's checksum is wrong");
    return checked;
}

/** Makes the bytes the payload of what it returns: an image can be large, and is held once. */
std::variant<FlashImage, FlashFault> takeFlashImage(Bytes bytes) {
    const auto checked = checkedImage(bytes);
    if (const auto* fault = std::get_if<FlashFault>(&checked)) return *fault;
    FlashImage image = imageOf(std::get<Header>(checked));
    bytes.erase(bytes.begin(), bytes.begin() + sizeof(Header));
    image.payload = std::move(bytes);
    return image;
}

} // namespace

std::variant<FlashImage, FlashFault> decodeFlashImage(std::span<const std::uint8_t> bytes) {
    const auto checked = checkedImage(bytes);
    if (const auto* fault = std::get_if<FlashFault>(&checked)) return *fault;
    FlashImage image = imageOf(std::get<Header>(checked));
    const auto payload = bytes.subspan(sizeof(Header));
    image.payload.assign(payload.begin(), payload.end());
    return image;
}

std::variant<FlashImage, FlashFault> readFlashImage(const void* memory) {
    std::array<std::uint8_t, 1> first{};
    if (readMemory(memory, first) == 0) return FlashFault{statusNotAnImage, "the image cannot be read"};
    if (first[0] == '/') {
        const auto path = copyPath(memory);
        return path ? readFlashImageFile(*path) : FlashFault{statusNotAnImage, "the path of the image does not end"};
    }
    auto bytes = copyImage(memory);
    if (const auto* fault = std::get_if<FlashFault>(&bytes)) return *fault;
    return takeFlashImage(std::move(std::get<Bytes>(bytes)));
}

std::variant<FlashImage, FlashFault> readFlashImageFile(const std::string& fileName) {
    // Opening a device can do things, so it is not even tried.
    struct stat status {};
    if (stat(fileName.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) return notAFile(fileName);
    const int file = open(fileName.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) return unreadable(fileName, std::strerror(errno));
    auto bytes = readAll(file, fileName);
    close(file);
    if (const auto* fault = std::get_if<FlashFault>(&bytes)) return *fault;
    auto image = takeFlashImage(std::move(std::get<Bytes>(bytes)));
    if (auto* fault = std::get_if<FlashFault>(&image)) fault->reason = fileName + ": " + fault->reason;
    return image;
}

} // namespace tavik
