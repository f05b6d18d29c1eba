#include "cli/arguments/DateText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <string>

namespace tavlen::cli {

namespace {

using std::chrono::days;
using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::sys_seconds;
using std::chrono::year_month_day;

constexpr sys_seconds kReferenceDate =
    sys_days(year_month_day(std::chrono::year(2001), std::chrono::month(1), std::chrono::day(1)));
constexpr sys_seconds kFirst =
    sys_days(year_month_day(std::chrono::year(0), std::chrono::month(1), std::chrono::day(1)));
constexpr sys_seconds kPastLast =
    sys_days(year_month_day(std::chrono::year(10'000), std::chrono::month(1), std::chrono::day(1)));

/// Reads a text from its beginning. After the first mismatch, all further reads fail as well.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : rest_(text) {}

  /// Reads a number of exactly `digits` digits, which must not exceed `most`.
  unsigned number(std::size_t digits, unsigned most) {
    unsigned value = 0;
    if (rest_.size() < digits) return fail();
    for (const char digit : rest_.substr(0, digits)) {
      if (!isDigit(digit)) return fail();
      value = value * 10 + static_cast<unsigned>(digit - '0');
    }
    rest_.remove_prefix(digits);
    return value <= most ? value : fail();
  }
  bool skip(char expected) {
    const bool matches = rest_.starts_with(expected);
    if (matches) rest_.remove_prefix(1);
    return matches;
  }
  void require(char expected) {
    if (!skip(expected)) fail();
  }
  /// Reads the digits after a decimal point, as a fraction of 1.
  double fraction() {
    std::size_t count = 0;
    while (count < rest_.size() && isDigit(rest_[count])) ++count;
    double value = 0;
    const std::string text = "0." + std::string(rest_.substr(0, count));
    const auto end = std::from_chars(text.data(), text.data() + text.size(), value).ec;
    // A fraction that underflows a double counts as 0.
    if (count == 0 || (end != std::errc() && end != std::errc::result_out_of_range)) fail();
    rest_.remove_prefix(count);
    return value;
  }
  bool isAtEnd() const { return !failed_ && rest_.empty(); }

 private:
  static bool isDigit(char character) { return character >= '0' && character <= '9'; }
  unsigned fail() {
    failed_ = true;
    rest_ = {};
    return 0;
  }

  std::string_view rest_;
  bool failed_ = false;
};

/// Reads an offset: how far local time is ahead of universal time.
seconds offset(Scanner& scanner) {
  if (scanner.skip('Z')) return seconds(0);
  const bool isBehind = scanner.skip('-');
  if (!isBehind) scanner.require('+');
  const hours hour(scanner.number(2, 23));
  scanner.skip(':');
  const seconds ahead = hour + minutes(scanner.number(2, 59));
  return isBehind ? -ahead : ahead;
}

std::string padded(std::int64_t number, std::size_t digits) {
  const std::string text = std::to_string(number);
  return std::string(digits - std::min(digits, text.size()), '0') + text;
}

}  // namespace

std::optional<Date> dateFromText(std::string_view text) {
  Scanner scanner(text);
  const std::chrono::year year(static_cast<int>(scanner.number(4, 9999)));
  scanner.require('-');
  const std::chrono::month month(scanner.number(2, 12));
  scanner.require('-');
  const year_month_day day(year, month, std::chrono::day(scanner.number(2, 31)));
  scanner.require('T');
  seconds time = hours(scanner.number(2, 23));
  scanner.require(':');
  time += minutes(scanner.number(2, 59));
  scanner.require(':');
  time += seconds(scanner.number(2, 59));
  const double fraction = scanner.skip('.') ? scanner.fraction() : 0;
  time -= offset(scanner);
  if (!scanner.isAtEnd() || !day.ok()) return std::nullopt;
  const seconds whole = sys_days(day) + time - kReferenceDate;
  return Date{static_cast<double>(whole.count()) + fraction};
}

std::optional<std::string> textFromDate(Date date) {
  const double whole = std::floor(date.secondsSinceReferenceDate);
  const auto first = static_cast<double>((kFirst - kReferenceDate).count());
  const auto pastLast = static_cast<double>((kPastLast - kReferenceDate).count());
  if (!(whole >= first && whole < pastLast)) return std::nullopt;
  const sys_seconds moment = kReferenceDate + seconds(static_cast<std::int64_t>(whole));
  const sys_days midnight = std::chrono::floor<days>(moment);
  const year_month_day day(midnight);
  const std::int64_t time = (moment - midnight).count();
  std::string text = padded(static_cast<int>(day.year()), 4) + "-" +
                     padded(static_cast<unsigned>(day.month()), 2) + "-" +
                     padded(static_cast<unsigned>(day.day()), 2) + "T" + padded(time / 3600, 2) +
                     ":" + padded(time / 60 % 60, 2) + ":" + padded(time % 60, 2);
  const double fraction = date.secondsSinceReferenceDate - whole;
  if (fraction != 0) {
    std::array<char, 1200> digits{};  // the smallest double has 1,074 digits after the point
    const auto end =
        std::to_chars(digits.begin(), digits.end(), fraction, std::chars_format::fixed).ptr;
    text.append(digits.begin() + 1, end);  // without the zero before the point
  }
  return text + "Z";
}

}  // namespace tavlen::cli
