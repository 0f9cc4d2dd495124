// External calibration of SFP modules: raw words become physical units by constants of the module.
#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "optics/bytes.h"

namespace optics {

/// SFF-8472 section 9.3: slope times the raw word, plus offset. In the unit of the raw steps.
struct Line {
    double slope;  ///< unsigned fixed point, 1/256 a step
    double offset; ///< signed, in raw steps
};

/// Absent where the slope is zero, which makes every reading the same.
std::optional<Line> lineAt(Memory page, std::size_t offset);

/// SFF-8472 section 9.3, receive power: coefficients from the zeroth to the fourth power of the raw word; the result is
/// in tenths of a microwatt.
using Polynomial = std::array<double, 5>;

/// Five big endian IEEE 754 floats, the one of the fourth power first. Absent where one is no finite number, and where
/// all that depend on the raw word are zero.
std::optional<Polynomial> polynomialAt(Memory page, std::size_t offset);

double valueAt(const Line& line, double raw);
double valueAt(const Polynomial& polynomial, double raw);

} // namespace optics
