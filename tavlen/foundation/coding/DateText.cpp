#include "tavlen/foundation/coding/DateText.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "tavlen/foundation/coding/DateTime.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/foundation/text/NearestDouble.h"
#include "tavlen/foundation/text/NumberText.h"

namespace tavlen {

namespace {

bool take(std::string_view& text, char expected) {
  const bool matches = text.starts_with(expected);
  if (matches) text.remove_prefix(1);
  return matches;
}

/// Takes a number of exactly two digits, which must not exceed `most`.
std::optional<int> takeTwoDigits(std::string_view& text, int most) {
  if (text.size() < 2 || !isDigit(text[0]) || !isDigit(text[1])) return std::nullopt;
  const int value = (text[0] - '0') * 10 + (text[1] - '0');
  text.remove_prefix(2);
  return value <= most ? std::optional(value) : std::nullopt;
}

/// Takes a fraction of 1 with its decimal point; 0 if there is no point.
std::optional<double> takeFraction(std::string_view& text) {
  if (!text.starts_with('.')) return 0;
  const std::size_t end = std::min(text.find_first_not_of("0123456789", 1), text.size());
  const auto fraction = nearestDouble(text.substr(0, end));
  text.remove_prefix(end);
  return fraction ? std::optional(fraction->value) : std::nullopt;
}

/// Takes an offset: the seconds by which local time is ahead of universal time.
std::optional<int> takeOffset(std::string_view& text) {
  if (take(text, 'Z')) return 0;
  const bool isEarlier = take(text, '-');
  if (!isEarlier && !take(text, '+')) return std::nullopt;
  const std::optional<int> hours = takeTwoDigits(text, 23);
  take(text, ':');
  const std::optional<int> minutes = takeTwoDigits(text, 59);
  if (!hours || !minutes) return std::nullopt;
  const int seconds = (*hours * 60 + *minutes) * 60;
  return isEarlier ? -seconds : seconds;
}

}  // namespace

std::optional<Date> dateFromText(std::string_view text) {
  const std::optional<Date> date = takeDateTime(text);
  const std::optional<double> fraction = takeFraction(text);
  const std::optional<int> offset = takeOffset(text);
  if (!date || !fraction || !offset || !text.empty()) return std::nullopt;
  return Date{date->secondsSinceReferenceDate - *offset + *fraction};
}

std::optional<std::string> textFromDate(Date date) {
  std::optional<std::string> text = dateTimeText(date);
  if (!text) return std::nullopt;
  const double whole = std::floor(date.secondsSinceReferenceDate);
  const double fraction = date.secondsSinceReferenceDate - whole;
  // A fraction of a second before the reference date may have more digits than the sum.
  if (whole + fraction != date.secondsSinceReferenceDate) return std::nullopt;
  if (fraction != 0) appendFraction(*text, fraction);
  return *text + "Z";
}

}  // namespace tavlen
