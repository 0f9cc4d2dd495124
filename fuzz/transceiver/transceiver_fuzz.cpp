// The serial ID bytes that a transceiver module delivers: any number of any bytes.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include "classes/physical/physical_connector.h"
#include "inventory/transceiver.h"
#include "log/log.h"

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

/// A field is taken up to its terminator, and without the blanks at its end if it has none; one that the bytes do not
/// reach keeps its text.
void requireField(std::string_view shown, const std::uint8_t* data, std::size_t size, std::size_t offset) {
    constexpr std::size_t width = 16;
    if (size < offset + width) {
        require(shown == "before");
        return;
    }
    const std::string_view field(reinterpret_cast<const char*>(data) + offset, width);
    const std::size_t end = field.find('\0');
    const std::size_t last = field.find_last_not_of(' ');
    require(shown == field.substr(0, end != field.npos ? end : last == field.npos ? 0 : last + 1));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    merolt::gDebugLog = false;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    merolt::SFPField sfp;
    for (auto* text : {&sfp.Manufacturer, &sfp.PartNumber, &sfp.SerialNumber})
        text->assign("before");
    merolt::Parse_Transceiver_Data(data, static_cast<std::uint32_t>(size), sfp);
    requireField(sfp.Manufacturer.view(), data, size, 20);
    requireField(sfp.PartNumber.view(), data, size, 40);
    requireField(sfp.SerialNumber.view(), data, size, 68);

    const auto device = std::make_unique<TAVIK_DeviceRecord>();
    const auto module = std::make_unique<merolt::physical::PhysicalConnectorEntry>();
    merolt::physical::parseSFPData(device.get(), data, static_cast<std::uint32_t>(size), *module);
    require(size == merolt::physical::sfpDataSize ? std::memcmp(module->rawData, data, size) == 0
                                                  : module->rawData[0] == 0);
    return 0;
}
