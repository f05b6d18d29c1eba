#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Date.h"

/// The calendar's part of a date's text, "yyyy-MM-ddTHH:mm:ss" in universal time. Threads: any.
namespace tavlen {

/// Removes "yyyy-MM-ddTHH:mm:ss" from the beginning of `text` and returns its date. Returns
/// nothing, with `text` unchanged, if there is no such text, or if the calendar has no such day or
/// time.
TAVLEN_API std::optional<Date> takeDateTime(std::string_view& text);

/// `date` in that form, rounded down to a second. Returns nothing outside of the years 0 to 9999.
TAVLEN_API std::optional<std::string> dateTimeText(Date date);

}  // namespace tavlen
