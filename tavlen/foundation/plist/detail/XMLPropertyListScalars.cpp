#include "tavlen/foundation/plist/detail/XMLPropertyListScalars.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <limits>

#include "tavlen/foundation/text/Characters.h"
#include "tavlen/foundation/text/NumberText.h"

namespace tavlen {

namespace {

using std::chrono::days;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::year_month_day;

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

void appendDigits(std::string& out, unsigned value, std::size_t width) {
  const std::string digits = std::to_string(value);
  out.append(width - digits.size(), '0').append(digits);
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
  constexpr std::string_view kPattern = "0000-00-00T00:00:00Z";
  if (text.size() != kPattern.size()) return std::nullopt;
  std::array<unsigned, 6> fields{};
  std::size_t field = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (kPattern[i] != '0') {
      if (text[i] != kPattern[i]) return std::nullopt;
      ++field;
    } else if (isDigit(text[i])) {
      fields[field] = fields[field] * 10 + static_cast<unsigned>(text[i] - '0');
    } else {
      return std::nullopt;
    }
  }
  const auto [year, month, day, hour, minute, second] = fields;
  const year_month_day date{std::chrono::year(static_cast<int>(year)), std::chrono::month(month),
                            std::chrono::day(day)};
  if (!date.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
  const seconds time = sys_days(date).time_since_epoch() + std::chrono::hours(hour) +
                       std::chrono::minutes(minute) + seconds(second);
  return Date::since1970(static_cast<double>(time.count()));
}

std::optional<std::string> xmlFromDate(Date date) {
  const double since1970 = std::floor(date.secondsSince1970());
  constexpr double kYear0 = -62167219200;
  constexpr double kYear10000 = 253402300800;
  if (!(since1970 >= kYear0 && since1970 < kYear10000)) return std::nullopt;
  const seconds time(static_cast<std::int64_t>(since1970));
  const auto midnight = std::chrono::floor<days>(time);
  const year_month_day day{sys_days(midnight)};
  const std::chrono::hh_mm_ss clock(time - midnight);
  std::string text;
  const auto append = [&](auto value, std::size_t width, char end) {
    appendDigits(text, static_cast<unsigned>(value), width);
    text += end;
  };
  append(static_cast<int>(day.year()), 4, '-');
  append(static_cast<unsigned>(day.month()), 2, '-');
  append(static_cast<unsigned>(day.day()), 2, 'T');
  append(clock.hours().count(), 2, ':');
  append(clock.minutes().count(), 2, ':');
  append(clock.seconds().count(), 2, 'Z');
  return text;
}

}  // namespace tavlen
