#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "tavlen/foundation/coding/Date.h"

/// The texts of numbers and dates in the XML form of property lists.
namespace tavlen {

/// Unsigned only above 2^63-1.
using XMLInteger = std::variant<std::int64_t, std::uint64_t>;

/// Parses an integer from -2^63 to 2^64-1: leading blanks, a sign, blanks, then decimal digits or
/// "0x" and hexadecimal digits. Returns nothing for any other text.
std::optional<XMLInteger> integerFromXML(std::string_view text);

/// Parses a real: leading blanks, then a decimal number, or "nan", "inf" or "infinity" in any case
/// with an optional sign. A number beyond the range of a double is infinity or zero, as in the
/// platform's own conversion; the field that asks for it decides. Returns nothing for any other
/// text.
std::optional<double> realFromXML(std::string_view text);
/// The shortest text that reads back to `value`, without ".0".
std::string xmlFromReal(double value);

/// Parses "yyyy-MM-ddTHH:mm:ssZ". All fields are required and must exist in the calendar. Returns
/// nothing for any other text.
std::optional<Date> dateFromXML(std::string_view text);
/// Writes a date without fractions of a second. Returns nothing outside of the years 0 to 9999.
std::optional<std::string> xmlFromDate(Date date);

}  // namespace tavlen
