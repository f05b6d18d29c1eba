#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "tavlen/foundation/coding/Date.h"

/// The texts of numbers and dates in the XML form of property lists.
namespace tavlen {

/// Unsigned above 2^63-1 only.
using XMLInteger = std::variant<std::int64_t, std::uint64_t>;

/// Leading blanks, a sign, blanks, then decimal digits or "0x" and hexadecimal ones; from -2^63 to
/// 2^64-1. Nothing for any other text.
std::optional<XMLInteger> integerFromXML(std::string_view text);

/// Leading blanks, then a decimal number, or "nan", "inf", "infinity", with a sign or none and in
/// either case. A number beyond the range of a double is infinity or zero, as the platform's own
/// conversion has it: what asks for the number decides whether that will do.
std::optional<double> realFromXML(std::string_view text);
/// The shortest text that reads back to `value`, without ".0".
std::string xmlFromReal(double value);

/// "yyyy-MM-ddTHH:mm:ssZ": every field is required and must exist in the calendar.
std::optional<Date> dateFromXML(std::string_view text);
/// Fractions of a second are dropped. Nothing outside of the years 0 to 9999.
std::optional<std::string> xmlFromDate(Date date);

}  // namespace tavlen
