#pragma once

#include <cstddef>
#include <string_view>

#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// What a decoder may look at and copy.
///
/// A small list can stand for a huge tree, by shared references. Allowed is what the list itself
/// holds a few times over, `kVisits` values and `kBytes` of text and records; what goes beyond is
/// DecodingError::dataCorrupted.
class SharedReferenceBudget {
 public:
  static constexpr std::size_t kVisits = 1'000'000;
  static constexpr std::size_t kBytes = std::size_t{64} << 20;

  explicit SharedReferenceBudget(const PropertyList& list);

  void chargeVisits(std::size_t count) {
    if (count > visitsLeft_) failVisits();
    visitsLeft_ -= count;
  }
  /// `text`, which somebody is about to read or copy.
  std::string_view chargedText(std::string_view text) {
    chargeBytes(text.size());
    return text;
  }
  /// For what somebody is about to make of small references.
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
