// The memory of a transceiver module: the first byte is the kind that the driver tells, the rest what it reads.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "tavik/host/module_translation.h"

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const auto module = tavik::host::translateModule({data[0], tavik::Bytes(data + 1, data + size)});
    if (!module) return 0;
    // Callers read the serial ID without looking at the size of the page.
    require(module->pageA0.size() >= 96 && module->pageA0.size() <= 256);
    require(module->pageA2.size() <= 256);
    for (const std::size_t offset : {20U, 40U, 68U})
        require(tavik::host::serialIdText(module->pageA0, offset).size() <= 16);
    return 0;
}
