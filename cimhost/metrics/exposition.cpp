#include "cimhost/metrics/exposition.h"

#include "cimhost/model/names.h"
#include "cimhost/model/text_lines.h"
#include "cimhost/model/utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <utility>

namespace cimhost::metrics {

namespace {

constexpr std::string_view openMetricsType = "application/openmetrics-text";
constexpr std::string_view textType = "text/plain";

/// What stands in front of the separator; the text goes on behind it.
std::string_view takePart(std::string_view& text, char separator) {
    const std::size_t end = text.find(separator);
    const std::string_view part = trim(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return part;
}

/// A quality in thousandths (RFC 9110, 12.4.2): "0.75" is 750; 0 for what is none.
unsigned thousandths(std::string_view text) {
    if (text.empty() || (text[0] != '0' && text[0] != '1')) return 0;
    unsigned value = static_cast<unsigned>(text[0] - '0') * 1000;
    unsigned weight = 100;
    for (std::size_t position = 2; position < text.size() && text[1] == '.'; ++position, weight /= 10) {
        if (text[position] < '0' || text[position] > '9') return 0;
        value += static_cast<unsigned>(text[position] - '0') * weight;
    }
    return std::min(value, 1000U);
}

struct Range {
    std::string_view type;
    std::string_view version;
    unsigned quality = 1000;
};

Range readRange(std::string_view text) {
    Range range;
    range.type = takePart(text, ';');
    while (!text.empty()) {
        std::string_view value = takePart(text, ';');
        const std::string_view parameter = takePart(value, '=');
        if (equalNames(parameter, "q")) range.quality = thousandths(trim(value));
        if (equalNames(parameter, "version")) range.version = trim(value);
    }
    return range;
}

bool isOpenMetrics(const Range& range) {
    return equalNames(range.type, openMetricsType) && (range.version.empty() || range.version == "1.0.0");
}

bool isText(const Range& range) { return equalNames(range.type, textType); }

/// No more digits than a reading has: those behind them come from the arithmetic.
std::string numberText(double value) {
    constexpr int digitsShown = 12;
    std::array<char, 32> digits{};
    const auto [end, error] =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::general, digitsShown);
    return {digits.data(), end};
}

void appendEscaped(std::string& out, std::string_view value) {
    while (!value.empty()) {
        const std::size_t length = utf8Length(value);
        const char first = value.front();
        if (length == 0) {
            out += '?';
        } else if (first == '\n') {
            out += "\\n";
        } else {
            if (first == '"' || first == '\\') out += '\\';
            out.append(value.substr(0, length));
        }
        value.remove_prefix(std::max<std::size_t>(length, 1));
    }
}

std::string_view typeName(Type type, Format format) {
    switch (type) {
    case Type::gauge:
        return "gauge";
    case Type::counter:
        return "counter";
    case Type::histogram:
        return "histogram";
    case Type::info:
        return format == Format::openMetrics ? "info" : "gauge";
    }
    return "untyped";
}

} // namespace

std::string_view contentType(Format format) {
    return format == Format::openMetrics ? "application/openmetrics-text; version=1.0.0; charset=utf-8"
                                         : "text/plain; version=0.0.4; charset=utf-8";
}

Format preferredFormat(std::string_view accept) {
    unsigned openMetrics = 0;
    unsigned text = 0;
    while (!accept.empty()) {
        const Range range = readRange(takePart(accept, ','));
        if (isOpenMetrics(range)) openMetrics = std::max(openMetrics, range.quality);
        if (isText(range)) text = std::max(text, range.quality);
    }
    return openMetrics > 0 && openMetrics >= text ? Format::openMetrics : Format::prometheus;
}

Labels& Labels::add(std::string_view name, std::string_view value) {
    if (!rendered.empty()) rendered += ',';
    rendered.append(name).append("=\"");
    appendEscaped(rendered, value);
    rendered += '"';
    return *this;
}

Exposition& Exposition::family(std::string_view familyName, Type familyType, std::string_view familyHelp) {
    name = familyName;
    type = familyType;
    help = familyHelp;
    isAnnounced = false;
    return *this;
}

std::string_view Exposition::suffix() const {
    if (type == Type::counter) return "_total";
    return type == Type::info ? "_info" : "";
}

// In OpenMetrics a family has the name without the suffix of its samples, in the older format that with it.
void Exposition::announce() {
    if (std::exchange(isAnnounced, true)) return;
    const std::string_view end = format == Format::openMetrics ? std::string_view() : suffix();
    for (const std::string_view part :
         {std::string_view("# HELP "), name, end, std::string_view(" "), help, std::string_view("\n# TYPE "), name, end,
          std::string_view(" "), typeName(type, format), std::string_view("\n")}) {
        buffer.append(part);
    }
}

void Exposition::write(std::string_view nameEnd, std::string_view labels, std::string_view value) {
    announce();
    buffer.append(name);
    buffer.append(nameEnd);
    if (!labels.empty()) {
        buffer.append("{");
        buffer.append(labels);
        buffer.append("}");
    }
    buffer.append(" ");
    buffer.append(value);
    buffer.append("\n");
}

void Exposition::sample(const Labels& labels, double value) {
    if (std::isfinite(value)) write(suffix(), labels.text(), numberText(value));
}

void Exposition::sample(const Labels& labels, std::uint64_t value) {
    write(suffix(), labels.text(), std::to_string(value));
}

void Exposition::bucket(const Labels& labels, std::string_view limit, std::uint64_t soFar) {
    Labels all = labels;
    write("_bucket", all.add("le", limit).text(), std::to_string(soFar));
}

void Exposition::countAndSum(const Labels& labels, std::uint64_t count, double sum) {
    write("_sum", labels.text(), numberText(sum));
    write("_count", labels.text(), std::to_string(count));
}

void Exposition::end() {
    if (format == Format::openMetrics) buffer.append("# EOF\n");
}

} // namespace cimhost::metrics
