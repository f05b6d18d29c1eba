#pragma once

#include <cstddef>
#include <string_view>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// What a decoder of a list may look at, and the memory that it may take.
///
/// A small list can stand for a huge tree, by shared references. Allowed are limits::kSharedVisits
/// looks at values beyond a few for each that the list holds, and as much memory as leaves the list
/// and what is made of it within limits::kDecodedBytes and limits::kDecodedBytesPerByte. What goes
/// beyond is DecodingError::dataCorrupted.
class SharedReferenceBudget {
 public:
  explicit SharedReferenceBudget(const PropertyList& list);

  void chargeVisits(std::size_t count) {
    if (count > visitsLeft_) failVisits();
    visitsLeft_ -= count;
  }
  /// `text`, which the caller is about to read or copy.
  std::string_view chargedText(std::string_view text) {
    chargeBytes(text.size());
    return text;
  }
  /// `text`, of which the caller is about to make a std::string. A short one needs no memory beyond
  /// the string itself, and the memory of a long one is rounded up.
  std::string_view chargedString(std::string_view text) {
    constexpr std::size_t kLongestShort = 15;
    constexpr std::size_t kRounding = 32;
    if (text.size() > kLongestShort) chargeBytes(kRounding);
    return chargedText(text);
  }
  /// For memory that the caller is about to take.
  void chargeBytes(std::size_t count) {
    if (count > bytesLeft_) failBytes();
    bytesLeft_ -= count;
  }

 private:
  [[noreturn]] void failVisits();
  [[noreturn]] void failBytes() const;

  std::size_t visits_;
  std::size_t bytes_;
  std::size_t visitsLeft_ = 0;
  std::size_t bytesLeft_ = 0;
};

}  // namespace tavlen
