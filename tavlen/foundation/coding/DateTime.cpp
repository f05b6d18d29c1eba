#include "tavlen/foundation/coding/DateTime.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>

#include "tavlen/foundation/text/Characters.h"

namespace tavlen {

namespace {

using std::chrono::days;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::sys_seconds;
using std::chrono::year_month_day;

constexpr sys_seconds newYear(int year) {
  return sys_days(
      year_month_day(std::chrono::year(year), std::chrono::month(1), std::chrono::day(1)));
}

constexpr sys_seconds kReferenceDate = newYear(2001);

void appendDigits(std::string& out, unsigned value, std::size_t width) {
  const std::string digits = std::to_string(value);
  out.append(width - digits.size(), '0').append(digits);
}

}  // namespace

std::optional<Date> takeDateTime(std::string_view& text) {
  constexpr std::string_view kPattern = "0000-00-00T00:00:00";
  if (text.size() < kPattern.size()) return std::nullopt;
  std::array<unsigned, 6> fields{};
  std::size_t field = 0;
  for (std::size_t i = 0; i < kPattern.size(); ++i) {
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
  const sys_seconds moment =
      sys_days(date) + std::chrono::hours(hour) + std::chrono::minutes(minute) + seconds(second);
  text.remove_prefix(kPattern.size());
  return Date{static_cast<double>((moment - kReferenceDate).count())};
}

std::optional<std::string> dateTimeText(Date date) {
  constexpr auto kFirst = static_cast<double>((newYear(0) - kReferenceDate).count());
  constexpr auto kPastLast = static_cast<double>((newYear(10'000) - kReferenceDate).count());
  const double whole = std::floor(date.secondsSinceReferenceDate);
  if (!(whole >= kFirst && whole < kPastLast)) return std::nullopt;
  const sys_seconds moment = kReferenceDate + seconds(static_cast<std::int64_t>(whole));
  const sys_days midnight = std::chrono::floor<days>(moment);
  const year_month_day day(midnight);
  const std::chrono::hh_mm_ss time(moment - midnight);
  std::string text;
  const auto append = [&](auto value, std::size_t width, std::string_view end) {
    appendDigits(text, static_cast<unsigned>(value), width);
    text += end;
  };
  append(static_cast<int>(day.year()), 4, "-");
  append(static_cast<unsigned>(day.month()), 2, "-");
  append(static_cast<unsigned>(day.day()), 2, "T");
  append(time.hours().count(), 2, ":");
  append(time.minutes().count(), 2, ":");
  append(time.seconds().count(), 2, "");
  return text;
}

}  // namespace tavlen
