// What a listener answers to an indication, or a server to cimhost as its client: decoded, and its values written
// again, which another parser must take.

#include "cimhost/cimxml/answer.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <expat.h>
#include <string_view>
#include <variant>
#include <vector>

namespace {

void requireXml(std::string_view document) {
    XML_Parser parser = XML_ParserCreate(nullptr);
    if (XML_Parse(parser, document.data(), static_cast<int>(document.size()), 1) != XML_STATUS_OK) std::abort();
    XML_ParserFree(parser);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    using namespace cimhost;
    const auto decoded = cimxml::decodeAnswer({reinterpret_cast<const char*>(bytes), count});
    const auto* answer = std::get_if<cimxml::Answer>(&decoded);
    const auto* values = answer ? std::get_if<std::vector<cimxml::XmlElement>>(answer) : nullptr;
    if (!values) return 0;
    for (const cimxml::XmlElement& value : *values) {
        ByteBuffer text;
        cimxml::appendElement(text, value);
        requireXml(text.view());
    }
    return 0;
}
