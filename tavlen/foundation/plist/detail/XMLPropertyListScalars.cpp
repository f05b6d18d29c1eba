#include "tavlen/foundation/plist/detail/XMLPropertyListScalars.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "tavlen/foundation/coding/DateTime.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/foundation/text/NearestDouble.h"
#include "tavlen/foundation/text/NumberText.h"

namespace tavlen {

namespace {

std::string_view withoutLeadingBlanks(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t\r\n");
  return text.substr(start == std::string_view::npos ? text.size() : start);
}

/// Parses all of `text` as a number, without a sign or blanks.
std::optional<std::uint64_t> wholeNumber(std::string_view text, int base) {
  std::uint64_t value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, base);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

}  // namespace

std::optional<XMLInteger> integerFromXML(std::string_view text) {
  text = withoutLeadingBlanks(text);
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+')) text = withoutLeadingBlanks(text.substr(1));
  const bool isHex = text.starts_with("0x") || text.starts_with("0X");
  const auto magnitude = wholeNumber(text.substr(isHex ? 2 : 0), isHex ? 16 : 10);
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
    // Only after such a beginning: it would also take "nan(1)" and a second sign.
    if (const auto number = nearestDouble(text)) magnitude = number->value;
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
