#pragma once

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// A point in time. A plain value.
struct TAVLEN_API Date {
  /// Seconds from 1970-01-01 to 2001-01-01, both UTC.
  static constexpr double kSecondsFrom1970To2001 = 978307200;

  /// Seconds since 2001-01-01T00:00:00Z, the number that stored documents hold.
  double secondsSinceReferenceDate = 0;

  /// The date that is `seconds` after 1970-01-01T00:00:00Z.
  static constexpr Date since1970(double seconds) { return {seconds - kSecondsFrom1970To2001}; }
  /// Seconds since 1970-01-01T00:00:00Z.
  constexpr double secondsSince1970() const {
    return secondsSinceReferenceDate + kSecondsFrom1970To2001;
  }

  bool operator==(const Date&) const = default;
};

}  // namespace tavlen
