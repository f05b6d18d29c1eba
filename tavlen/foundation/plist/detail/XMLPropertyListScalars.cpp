#include "tavlen/foundation/plist/detail/XMLPropertyListScalars.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "tavlen/foundation/coding/DateTime.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/foundation/text/NumberText.h"

namespace tavlen {

namespace {

std::string_view withoutLeadingBlanks(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t\r\n");
  return text.substr(start == std::string_view::npos ? text.size() : start);
}

/// Parses all of `text` as a number, without a sign or blanks.
template <class Number, class... Base>
std::optional<Number> wholeNumber(std::string_view text, Base... base) {
  Number value{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, base...);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

/// The number that `text` is rounded to, a decimal number beyond the range of a double.
double roundedBeyondRange(std::string_view text) {
  const std::size_t mantissa = std::min(text.find_first_of("eE"), text.size());
  const std::size_t point = std::min(text.find('.'), mantissa);
  const std::size_t first = text.find_first_of("123456789");
  std::string_view digits = text.substr(std::min(mantissa + 1, text.size()));
  const bool isNegative = digits.starts_with('-');
  if (isNegative || digits.starts_with('+')) digits.remove_prefix(1);
  // An exponent of more digits is beyond any number of digits before it.
  constexpr std::int64_t kMost = std::int64_t{1} << 60;
  const std::int64_t exponent =
      digits.empty() ? 0 : std::min(wholeNumber<std::int64_t>(digits).value_or(kMost), kMost);
  const std::int64_t place = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);
  const bool isLarge = place + (isNegative ? -exponent : exponent) > 0;
  return isLarge ? std::numeric_limits<double>::infinity() : 0.0;
}

std::optional<double> decimalNumber(std::string_view text) {
  double value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (stop != end) return std::nullopt;
  if (error == std::errc::result_out_of_range) return roundedBeyondRange(text);
  return error == std::errc() ? std::optional(value) : std::nullopt;
}

}  // namespace

std::optional<XMLInteger> integerFromXML(std::string_view text) {
  text = withoutLeadingBlanks(text);
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+')) text = withoutLeadingBlanks(text.substr(1));
  const bool isHex = text.starts_with("0x") || text.starts_with("0X");
  const auto magnitude = wholeNumber<std::uint64_t>(text.substr(isHex ? 2 : 0), isHex ? 16 : 10);
  constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();
  if (!magnitude || (isNegative && *magnitude > kLargest + 1)) return std::nullopt;
  if (isNegative) return static_cast<std::int64_t>(0 - *magnitude);
  if (*magnitude > kLargest) return *magnitude;
  return static_cast<std::int64_t>(*magnitude);
}

std::optional<double> realFromXML(std::string_view text) {
  text = withoutLeadingBlanks(text);
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+')) text.remove_prefix(1);
  std::optional<double> magnitude;
  if (const std::string name = lowercased(text); name == "inf" || name == "infinity") {
    magnitude = std::numeric_limits<double>::infinity();
  } else if (name == "nan") {
    magnitude = std::numeric_limits<double>::quiet_NaN();
  } else if (name.starts_with('.') || (!name.empty() && isDigit(name[0]))) {
    magnitude = decimalNumber(text);  // which alone would take "nan(1)" and a second sign
  }
  if (magnitude && isNegative) magnitude = -*magnitude;
  return magnitude;
}

std::string xmlFromReal(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value > 0 ? "+infinity" : "-infinity";
  std::string text;
  appendNumber(text, value);
  return text;
}

std::optional<Date> dateFromXML(std::string_view text) {
  const std::optional<Date> date = takeDateTime(text);
  return text == "Z" ? date : std::nullopt;
}

std::optional<std::string> xmlFromDate(Date date) {
  std::optional<std::string> text = dateTimeText(date);
  if (text) *text += 'Z';
  return text;
}

}  // namespace tavlen
