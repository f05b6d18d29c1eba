#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/coding/Date.h"

/// Dates as ISO 8601 writes them: "2026-01-31T12:00:00.25Z", or with an offset, "+01:00".
namespace tavlen::cli {

/// Every field but the fraction is required, and must exist in the calendar. Nothing for any other
/// text.
std::optional<Date> dateFromText(std::string_view text);

/// In universal time, with as much of a fraction as reads back to `date`. Nothing outside of the
/// years 0 to 9999.
std::optional<std::string> textFromDate(Date date);

}  // namespace tavlen::cli
