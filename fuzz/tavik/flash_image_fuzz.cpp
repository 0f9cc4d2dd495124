// Any bytes are either a flash image, which encodes to the same bytes, or refused; in memory as in a file. The
// checksums are put right in half of the runs, so that what stands behind them is reached.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "tavik/flash_image.h"
#include "tavik/fleet/flash_writer.h"

namespace {

constexpr std::string_view fleet =
    R"({"cards": [{"ports": [{"storage": {"multiBootVersion": "V:1.00.00,D:01012000,A:Y,T:M",
    "vpd": {"readOnly": {"RM": "1", "V9": "010000"}}}, "ethernet": {}}]}]})";

std::uint32_t checkOf(const std::uint8_t* bytes, std::size_t size) {
    std::uint32_t check = ~0U;
    for (std::size_t index = 0; index < size; ++index) {
        check ^= bytes[index];
        for (int bit = 0; bit < 8; ++bit)
            check = (check & 1) != 0 ? check >> 1 ^ 0xEDB88320U : check >> 1;
    }
    return ~check;
}

void store(std::vector<std::uint8_t>& bytes, std::size_t at, std::uint32_t number) {
    for (std::size_t index = 0; index < 4; ++index)
        bytes[at + index] = static_cast<std::uint8_t>(number >> 8 * index);
}

void makeWhole(std::vector<std::uint8_t>& bytes) {
    if (bytes.size() < tavik::flashHeaderSize) return;
    const std::size_t payload = bytes.size() - tavik::flashHeaderSize;
    std::copy(tavik::flashMagic.begin(), tavik::flashMagic.end(), bytes.begin());
    store(bytes, 12, static_cast<std::uint32_t>(payload));
    store(bytes, 16, checkOf(bytes.data() + tavik::flashHeaderSize, payload));
    store(bytes, 20, 0);
    store(bytes, 20, checkOf(bytes.data(), tavik::flashHeaderSize));
}

/** A good image goes into a fleet that stays good, or is refused for its model. */
void writeToFleet(const tavik::FlashImage& image) {
    const auto written = tavik::fleet::flashedFleet(
        fleet, [](const tavik::Card&) { return true; }, image);
    const auto* fault = std::get_if<tavik::FlashFault>(&written);
    if (fault && fault->status != tavik::statusForeignImage && fault->status != tavik::statusSourceFailed) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    std::vector<std::uint8_t> bytes(data + 1, data + size);
    if (data[0] % 2 == 1) makeWhole(bytes);
    const auto decoded = tavik::decodeFlashImage(bytes);
    const auto* image = std::get_if<tavik::FlashImage>(&decoded);
    if (!image) return 0;
    const auto encoded = tavik::encodeFlashImage(*image);
    const auto* again = std::get_if<tavik::Bytes>(&encoded);
    if (!again || std::get<tavik::FlashImage>(tavik::decodeFlashImage(*again)) != *image) std::abort();
    if (std::get<tavik::FlashImage>(tavik::readFlashImage(bytes.data())) != *image) std::abort();
    writeToFleet(*image);
    return 0;
}
