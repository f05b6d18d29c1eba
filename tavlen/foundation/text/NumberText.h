#pragma once

#include <cstddef>
#include <string>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// The most bytes of a number's text.
constexpr std::size_t kMostNumberBytes = 32;

/// Writes the shortest decimal text that reads back to `value`, always with a fraction or an
/// exponent: "1.0", "0.1", "1e+16", "-inf", "nan". The layout is that of Swift's `description`:
/// decimal from 1e-4 up to 2^53, exponential outside. Returns the end of what was written to `to`,
/// which must have room for kMostNumberBytes.
TAVLEN_API char* writeDescription(char* to, double value);
/// The same, appended to a string.
TAVLEN_API void appendDescription(std::string& out, double value);

/// Writes the same text without a trailing ".0", as JSON and property lists write numbers. `value`
/// must be finite.
TAVLEN_API char* writeNumber(char* to, double value);
/// The same, appended to a string.
TAVLEN_API void appendNumber(std::string& out, double value);

/// Appends the decimal point of `value` and its shortest digits, never with an exponent: ".25".
/// `value` must be greater than 0 and less than 1.
TAVLEN_API void appendFraction(std::string& out, double value);

}  // namespace tavlen
