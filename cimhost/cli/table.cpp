#include "cimhost/cli/table.h"

#include <algorithm>
#include <numeric>

namespace cimhost::cli {

namespace {

constexpr std::size_t gap = 2;
constexpr std::size_t narrowest = 6;
constexpr std::string_view ellipsis = "…";

bool startsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }

std::string cut(std::string_view text, std::size_t width) {
    if (length(text) <= width) return std::string(text);
    std::size_t end = 0;
    for (std::size_t characters = 0; end < text.size(); ++end) {
        if (startsCharacter(text[end]) && characters++ == width - 1) break;
    }
    return std::string(text.substr(0, end)).append(ellipsis);
}

std::size_t totalOf(const std::vector<std::size_t>& widths) {
    return std::accumulate(widths.begin(), widths.end(), std::size_t{0}) + gap * (widths.size() - 1);
}

std::vector<std::size_t> fit(std::vector<std::size_t> widths, std::size_t available) {
    while (!widths.empty() && totalOf(widths) > available) {
        const auto widest = std::max_element(widths.begin(), widths.end());
        if (*widest > narrowest) {
            --*widest;
        } else {
            widths.pop_back();
        }
    }
    return widths;
}

void appendLine(std::string& out, const Row& row, const std::vector<std::size_t>& widths) {
    for (std::size_t column = 0; column < widths.size(); ++column) {
        const std::string cell = cut(row[column], widths[column]);
        out += cell;
        if (column + 1 < widths.size()) out.append(widths[column] - length(cell) + gap, ' ');
    }
    out.erase(out.find_last_not_of(' ') + 1);
    out += '\n';
}

} // namespace

std::size_t length(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), startsCharacter));
}

std::string renderTable(const Row& headers, const std::vector<Row>& rows, const Layout& layout) {
    std::vector<std::size_t> widths;
    for (std::size_t column = 0; column < headers.size(); ++column) {
        widths.push_back(length(headers[column]));
        for (const Row& row : rows)
            widths.back() = std::max(widths.back(), length(row[column]));
    }
    if (layout.width > 0) widths = fit(std::move(widths), layout.width);
    std::string header;
    appendLine(header, headers, widths);
    header.pop_back();
    std::string text = coloured(layout, Colour::bold, header) + '\n';
    for (const Row& row : rows)
        appendLine(text, row, widths);
    return text;
}

} // namespace cimhost::cli
