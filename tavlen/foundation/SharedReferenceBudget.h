#pragma once

#include <cstddef>
#include <string_view>

#include "tavlen/foundation/PropertyList.h"

namespace tavlen {

/// What a decoder may look at and copy.
///
/// A small list can stand for a huge tree, by shared references. Allowed is what the list itself
/// holds a few times over, `kVisits` values and `kTextBytes` of text; what goes beyond is
/// DecodingError::dataCorrupted.
class SharedReferenceBudget {
 public:
  static constexpr std::size_t kVisits = 1'000'000;
  static constexpr std::size_t kTextBytes = std::size_t{64} << 20;

  explicit SharedReferenceBudget(const PropertyList& list);

  void chargeVisits(std::size_t count) {
    if (count > visitsLeft_) failVisits();
    visitsLeft_ -= count;
  }
  /// `text`, which somebody is about to read or copy.
  std::string_view chargedText(std::string_view text) {
    if (text.size() > textBytesLeft_) failText();
    textBytesLeft_ -= text.size();
    return text;
  }

 private:
  [[noreturn]] void failVisits();
  [[noreturn]] static void failText();

  std::size_t visitsLeft_ = kVisits;
  std::size_t textBytesLeft_ = kTextBytes;
};

}  // namespace tavlen
