#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/coding/Coding.h"

namespace tavlen {

/// A version such as "14.0" or "1.2.3-beta.1+5" (semver.org 2.0.0), which keeps its text. A plain
/// value.
///
/// Laxer than the standard: the second and third number may be missing and count as zero, and
/// numbers may have leading zeros. Equality, order and hash use the value: "14" and "14.0.0" are
/// equal, a pre-release precedes its release, build metadata is ignored.
class TAVLEN_API SemanticVersion {
 public:
  /// Version "0".
  SemanticVersion() = default;

  /// Parses one to three numbers up to 2^63-1, then an optional "-" and pre-release, then an
  /// optional "+" and build metadata. These two are dot-separated non-empty words of ASCII letters,
  /// digits and hyphens. Returns nothing for any other text.
  static std::optional<SemanticVersion> parse(std::string_view text);

  /// The text that was parsed.
  const std::string& description() const { return text_; }

  /// Equality by value.
  bool operator==(const SemanticVersion& other) const { return std::is_eq(*this <=> other); }
  /// Order by value; the text does not count.
  std::weak_ordering operator<=>(const SemanticVersion& other) const;
  /// A hash that is equal for equal versions.
  std::size_t hash() const;

 private:
  std::string_view preRelease() const;

  std::string text_ = "0";
  std::array<std::int64_t, 3> numbers_{};
  /// Offsets of the pre-release in the text; without one both are its end.
  std::size_t preReleaseStart_ = 1;
  std::size_t preReleaseEnd_ = 1;
};

/// Coded as one string. One that does not parse is DecodingError::dataCorrupted.
template <>
struct Coding<SemanticVersion> {
  static void encode(Encoder& encoder, const SemanticVersion& value);
  static void decode(Decoder& decoder, SemanticVersion& value);
};

}  // namespace tavlen

/// Hash for unordered containers.
template <>
struct std::hash<tavlen::SemanticVersion> {
  /// The version's own hash.
  std::size_t operator()(const tavlen::SemanticVersion& version) const { return version.hash(); }
};
