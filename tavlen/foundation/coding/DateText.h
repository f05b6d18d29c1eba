#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Date.h"

/// Dates in ISO 8601 format: "2026-01-31T12:00:00.25Z", or with an offset such as "+01:00".
namespace tavlen {

/// Reads a date. Every field except the fraction is required, and the date must exist in the
/// calendar. Returns nothing for any other text.
TAVLEN_API std::optional<Date> dateFromText(std::string_view text);

/// `date` in universal time, with the shortest fraction that reads back to it. Returns nothing
/// outside the years 0 to 9999, and for some dates less than a second before 2001 that have no such
/// text.
TAVLEN_API std::optional<std::string> textFromDate(Date date);

}  // namespace tavlen
