// What is posted to `cimhost listen`: decoded and printed, for people without control characters and for tools as JSON.

#include "cimhost/cimxml/request.h"
#include "cimhost/cli/received_indication.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <variant>

namespace {

bool hasControls(const std::string& text) {
    return std::any_of(text.begin(), text.end(),
                       [](char character) { return character >= 0 && character < ' ' && character != '\n'; });
}

bool isOneLine(const std::string& text) { return !hasControls(text) && text.find('\n') == text.size() - 1; }

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    using namespace cimhost;
    static cli::SequenceWatch watch;
    const auto decoded = cimxml::decodeExport({reinterpret_cast<const char*>(bytes), count});
    const auto* request = std::get_if<cimxml::ExportRequest>(&decoded);
    if (!request) return 0;
    const std::string text = cli::textOf(request->indication) + watch.judge(request->indication);
    if (hasControls(text) || !isOneLine(cli::lineOf(request->indication))) std::abort();
    const std::string line = cli::jsonLineOf(request->indication);
    if (!isOneLine(line) || !nlohmann::json::accept(line)) std::abort();
    return 0;
}
