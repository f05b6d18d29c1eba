#pragma once

#include <cstddef>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/plist/PropertyList.h"

namespace tavlen {

/// Limits the work and memory of a decoder, and the size of what it decodes, written as a tree.
///
/// By shared references, a small list can describe a huge tree. The budget allows
/// limits::kSharedVisits visits beyond a few for each value of the list, and as much memory as
/// keeps the list and what is made of it within limits::kDecodedBytes plus
/// limits::kDecodedBytesPerByte for each byte. A tree that is written out may take
/// limits::kExpandedBytes plus limits::kExpandedBytesPerByte for each byte. Exceeding any is
/// DecodingError::dataCorrupted.
class TAVLEN_API SharedReferenceBudget {
 public:
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
  /// As chargedText(), for a text of which the caller is about to make a std::string. A short one
  /// needs no memory beyond the string itself; the memory of a long one is rounded up.
  std::string_view chargedString(std::string_view text) {
    constexpr std::size_t kLongestShort = 15;
    constexpr std::size_t kRounding = 32;
    if (text.size() > kLongestShort) chargeBytes(kRounding);
    return chargedText(text);
  }
  /// Charges for memory that the caller is about to take. Throws DecodingError when the budget is
  /// exceeded.
  void chargeBytes(std::size_t count) {
    if (count > bytesLeft_) failBytes();
    bytesLeft_ -= count;
  }
  /// Charges for a value, written out with `bytes` of text. Throws DecodingError when the budget is
  /// exceeded.
  void chargeValue(std::size_t bytes) { chargeExpansion(bytes + limits::kExpandedBytesPerValue); }
  /// Charges for values that are met once more, by what they took when they were read: the
  /// difference of expansion() after them and before.
  void chargeExpansion(std::size_t bytes) {
    if (bytes > expansionLeft_) failExpansion();
    expansionLeft_ -= bytes;
  }
  /// What all values so far take, written out.
  std::size_t expansion() const { return expansion_ - expansionLeft_; }

 private:
  [[noreturn]] void failVisits();
  [[noreturn]] void failBytes() const;
  [[noreturn]] void failExpansion() const;

  std::size_t visits_;
  std::size_t bytes_;
  std::size_t expansion_;
  std::size_t visitsLeft_ = 0;
  std::size_t bytesLeft_ = 0;
  std::size_t expansionLeft_ = 0;
};

}  // namespace tavlen
