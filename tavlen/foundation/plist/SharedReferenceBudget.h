#pragma once

#include <cstddef>
#include <string_view>

#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// Limits the work of a decoder.
///
/// By shared references, a small list can describe a huge tree. The budget allows a few times the
/// contents of the list itself, plus `kVisits` values and `kBytes` of text and records. Exceeding
/// it is DecodingError::dataCorrupted.
class SharedReferenceBudget {
 public:
  /// The values allowed beyond the list's own.
  static constexpr std::size_t kVisits = 1'000'000;
  /// The bytes allowed beyond the list's own.
  static constexpr std::size_t kBytes = std::size_t{64} << 20;

  /// A budget for decoding `list`, which is not kept.
  explicit SharedReferenceBudget(const PropertyList& list);

  /// Charges for looking at `count` values. Throws DecodingError when the budget is exceeded.
  void chargeVisits(std::size_t count) {
    if (count > visitsLeft_) failVisits();
    visitsLeft_ -= count;
  }
  /// Charges for `text`, which the caller is about to read or copy, and returns it. Throws like
  /// chargeBytes().
  std::string_view chargedText(std::string_view text) {
    chargeBytes(text.size());
    return text;
  }
  /// Charges for objects that the caller is about to make of small references. Throws DecodingError
  /// when the budget is exceeded.
  void chargeBytes(std::size_t count) {
    if (count > bytesLeft_) failBytes();
    bytesLeft_ -= count;
  }

 private:
  [[noreturn]] void failVisits();
  [[noreturn]] static void failBytes();

  std::size_t visitsLeft_ = kVisits;
  std::size_t bytesLeft_ = kBytes;
};

}  // namespace tavlen
