// The memory of a transceiver module: any bytes of any length. The first byte chooses the family, and whether the
// checksums are made right, so that what stands behind them is reached.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "optics/cmis.h"
#include "optics/level.h"
#include "optics/sff8472.h"
#include "optics/sff8636.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

void require(bool holds) {
    if (!holds) std::abort();
}

void requireWithin(const optics::Monitor& monitor, double lowest, double highest) {
    if (monitor.reading) require(*monitor.reading >= lowest && *monitor.reading <= highest);
    if (!monitor.thresholds) return;
    const auto& limits = *monitor.thresholds;
    require(limits.lowAlarm >= lowest && limits.highAlarm <= highest);
    require(limits.lowAlarm <= limits.lowWarning && limits.lowWarning < limits.highWarning);
    require(limits.highWarning <= limits.highAlarm);
}

void requireNumbers(const optics::Module& module) {
    require(module.laneCount <= optics::mostLanes);
    requireWithin(module.temperatureCelsius, -128, 128);
    requireWithin(module.supplyVolts, 0, 6.5536);
    for (const auto& lane : module.lanes) {
        requireWithin(lane.biasMilliamperes, 0, 4 * 131.072);
        requireWithin(lane.transmitPowerMilliwatts, 0, 6.5536);
        requireWithin(lane.receivePowerMilliwatts, 0, 6.5536);
    }
    const auto worst = optics::worstLane(module);
    requireWithin(worst.receivePowerMilliwatts, 0, 6.5536);
    for (const char character : module.identity.serialNumber.view())
        require(character >= ' ' && character <= '~');
}

void mendChecksum(Bytes& memory, std::size_t first, std::size_t checksum) {
    if (memory.size() <= checksum) return;
    unsigned sum = 0;
    for (std::size_t at = first; at < checksum; ++at)
        sum += memory[at];
    memory[checksum] = static_cast<std::uint8_t>(sum);
}

struct Family {
    std::size_t checksums[4][2];
    optics::Module (*decode)(optics::Memory memory);
};

optics::Module decodePages(optics::Memory memory) {
    return optics::decodeSff8472(optics::partOf(memory, 0, 256), optics::partOf(memory, 256, 256));
}

constexpr Family families[] = {
    {{{0, 63}, {64, 95}, {256, 351}, {0, 63}}, decodePages},
    {{{128, 191}, {192, 223}, {128, 191}, {192, 223}}, optics::decodeSff8636},
    {{{128, 222}, {258, 383}, {384, 511}, {128, 222}}, optics::decodeCmis},
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const auto& family = families[data[0] % 3];
    Bytes memory(data + 1, data + size);
    if ((data[0] & 0x80) != 0)
        for (const auto& [first, checksum] : family.checksums)
            mendChecksum(memory, first, checksum);
    requireNumbers(family.decode(memory));
    return 0;
}
