#pragma once

#include <string>

namespace tavlen {

/// Appends the shortest decimal text that reads back to `value`, always with a fraction or an
/// exponent: "1.0", "0.1", "1e+16", "-inf", "nan". The layout is that of Swift's `description`:
/// decimal from 1e-4 up to 2^53, exponential outside.
void appendDescription(std::string& out, double value);

/// Appends the same text without a trailing ".0", as JSON and property lists write numbers. `value`
/// must be finite.
void appendNumber(std::string& out, double value);

/// Appends the decimal point of `value` and its shortest digits, never with an exponent: ".25".
/// `value` must be greater than 0 and less than 1.
void appendFraction(std::string& out, double value);

}  // namespace tavlen
