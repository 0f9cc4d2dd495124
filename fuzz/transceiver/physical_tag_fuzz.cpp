// Tags of connectors and ports come from clients: any text, of any length.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "classes/physical/physical_connector.h"
#include "classes/physical/physical_port.h"

namespace {

constexpr std::uint32_t untouched = 0xBADBAD;

void require(bool holds) {
    if (!holds) std::abort();
}

/// A part of a tag, in a buffer of the size that callers have.
class Part {
public:
    Part() { bytes.fill('#'); }
    char* data() { return bytes.data(); }
    std::string_view text() const { return {bytes.data(), strnlen(bytes.data(), bytes.size())}; }
    bool isUntouched() const { return text() == std::string(bytes.size(), '#'); }

private:
    std::array<char, 256> bytes{};
};

/// The parts stand in front of the tag, each behind an underscore but the first.
void requireBeginning(const std::string& tag, const std::string& parts) {
    require(tag.compare(0, parts.size(), parts) == 0);
    require(parts.size() < 256);
}

bool checkPort(const std::string& tag) {
    Part adapterSerial;
    std::uint32_t number = untouched;
    if (!merolt::physical::parsePhysicalPortTag(tag.c_str(), adapterSerial.data(), &number)) {
        require(adapterSerial.isUntouched() && number == untouched);
        return false;
    }
    require(adapterSerial.text().find('_') == std::string_view::npos);
    requireBeginning(tag, std::string(adapterSerial.text()) + '_');
    return true;
}

bool checkConnector(const std::string& tag) {
    Part serialNumber;
    Part adapterSerial;
    std::uint32_t number = untouched;
    if (!merolt::physical::parsePhysicalConnectorTag(tag.c_str(), serialNumber.data(), adapterSerial.data(), &number)) {
        require(serialNumber.isUntouched() && adapterSerial.isUntouched() && number == untouched);
        return false;
    }
    require(serialNumber.text().find('_') == std::string_view::npos);
    require(adapterSerial.text().find('_') == std::string_view::npos);
    requireBeginning(tag, std::string(serialNumber.text()) + '_' + std::string(adapterSerial.text()) + '_');
    return true;
}

/// What is written into a buffer of that size ends within it.
template <std::size_t size>
void requireFormatted(void (*format)(char*, const std::string&, int), const std::string& text) {
    std::array<char, size> tag;
    tag.fill('#');
    format(tag.data(), text, -1);
    require(strnlen(tag.data(), size) < size);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string tag(std::string(reinterpret_cast<const char*>(data), size).c_str());
    const bool isPort = checkPort(tag);
    require(!checkConnector(tag) || isPort);
    requireFormatted<128>([](char* out, const std::string& text,
                             int number) { merolt::physical::formatPhysicalPortTag(out, text.c_str(), number); },
                          tag);
    requireFormatted<129>(
        [](char* out, const std::string& text, int number) {
            merolt::physical::formatPhysicalConnectorTag(out, text.c_str(), text.c_str(), number);
        },
        tag);
    return 0;
}
