#include "optics/calibration.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

namespace optics {

namespace {

double floatAt(Memory page, std::size_t offset) {
    const auto bits = static_cast<std::uint32_t>(wordAt(page, offset)) << 16 | wordAt(page, offset + 2);
    return static_cast<double>(std::bit_cast<float>(bits));
}

} // namespace

std::optional<Line> lineAt(Memory page, std::size_t offset) {
    const Line line{wordAt(page, offset) / 256.0, static_cast<double>(signedWordAt(page, offset + 2))};
    if (line.slope == 0) return std::nullopt;
    return line;
}

std::optional<Polynomial> polynomialAt(Memory page, std::size_t offset) {
    Polynomial polynomial;
    for (std::size_t power = 0; power < polynomial.size(); ++power)
        polynomial[power] = floatAt(page, offset + 4 * (polynomial.size() - 1 - power));
    const auto isFinite = [](double coefficient) { return std::isfinite(coefficient); };
    const auto isZero = [](double coefficient) { return coefficient == 0; };
    if (!std::all_of(polynomial.begin(), polynomial.end(), isFinite)) return std::nullopt;
    if (std::all_of(polynomial.begin() + 1, polynomial.end(), isZero)) return std::nullopt;
    return polynomial;
}

double valueAt(const Line& line, double raw) { return line.slope * raw + line.offset; }

double valueAt(const Polynomial& polynomial, double raw) {
    double value = 0;
    for (auto power = polynomial.size(); power-- > 0;)
        value = value * raw + polynomial[power];
    return value;
}

} // namespace optics
