#include "tavlen/foundation/coding/SemanticVersion.h"

#include <algorithm>
#include <charconv>

#include "tavlen/foundation/coding/Encoder.h"
#include "tavlen/foundation/text/Characters.h"

namespace tavlen {

namespace {

constexpr bool isWordCharacter(char character) {
  return isDigit(character) || isLetter(character) || character == '-';
}

/// Removes the part before the next dot from the front of `text` and returns it.
std::string_view takePart(std::string_view& text) {
  const std::size_t dot = std::min(text.find('.'), text.size());
  const std::string_view part = text.substr(0, dot);
  text.remove_prefix(std::min(dot + 1, text.size()));
  return part;
}

bool isDottedWords(std::string_view text) {
  if (text.empty() || text.ends_with('.')) return false;
  while (!text.empty()) {
    const std::string_view word = takePart(text);
    if (word.empty() || !std::all_of(word.begin(), word.end(), isWordCharacter)) return false;
  }
  return true;
}

bool isNumber(std::string_view word) { return std::all_of(word.begin(), word.end(), isDigit); }

bool readNumbers(std::string_view text, std::array<std::int64_t, 3>& numbers) {
  if (text.ends_with('.')) return false;
  for (std::int64_t& number : numbers) {
    const std::string_view part = takePart(text);
    if (part.empty() || !isNumber(part)) return false;
    const auto result = std::from_chars(part.data(), part.data() + part.size(), number);
    if (result.ec != std::errc()) return false;
    if (text.empty()) return true;
  }
  return false;
}

/// A word in the form in which it is compared: numbers lose their leading zeros, so that they may
/// have any length.
std::string_view significant(std::string_view word) {
  if (isNumber(word)) word.remove_prefix(std::min(word.find_first_not_of('0'), word.size() - 1));
  return word;
}

std::weak_ordering compareWords(std::string_view left, std::string_view right) {
  const bool leftIsNumber = isNumber(left);
  if (leftIsNumber != isNumber(right)) {
    return leftIsNumber ? std::weak_ordering::less : std::weak_ordering::greater;
  }
  left = significant(left);
  right = significant(right);
  if (leftIsNumber && left.size() != right.size()) return left.size() <=> right.size();
  return left <=> right;
}

std::weak_ordering comparePreReleases(std::string_view left, std::string_view right) {
  // A version without a pre-release comes after all its pre-releases.
  if (left.empty() || right.empty()) return left.empty() <=> right.empty();
  while (!left.empty() && !right.empty()) {
    const auto order = compareWords(takePart(left), takePart(right));
    if (std::is_neq(order)) return order;
  }
  return right.empty() <=> left.empty();
}

}  // namespace

std::optional<SemanticVersion> SemanticVersion::parse(std::string_view text) {
  const std::size_t plus = std::min(text.find('+'), text.size());
  const std::size_t hyphen = std::min(text.substr(0, plus).find('-'), plus);
  if (plus != text.size() && !isDottedWords(text.substr(plus + 1))) return std::nullopt;
  SemanticVersion version;
  version.preReleaseEnd_ = plus;
  version.preReleaseStart_ = std::min(hyphen + 1, plus);
  if (hyphen != plus && !isDottedWords(text.substr(hyphen + 1, plus - hyphen - 1))) {
    return std::nullopt;
  }
  if (!readNumbers(text.substr(0, hyphen), version.numbers_)) return std::nullopt;
  version.text_ = text;
  return version;
}

std::string_view SemanticVersion::preRelease() const {
  // Clamped for a moved-from version, whose text is empty.
  return std::string_view(text_).substr(std::min(preReleaseStart_, text_.size()),
                                        preReleaseEnd_ - preReleaseStart_);
}

std::weak_ordering SemanticVersion::operator<=>(const SemanticVersion& other) const {
  // Xcode 15's library does not compare arrays in this way.
  for (std::size_t i = 0; i < numbers_.size(); ++i) {
    const auto order = numbers_[i] <=> other.numbers_[i];
    if (std::is_neq(order)) return order;
  }
  return comparePreReleases(preRelease(), other.preRelease());
}

std::size_t SemanticVersion::hash() const {
  std::size_t result = 0;
  const auto add = [&result](std::size_t value) {
    constexpr std::size_t kGoldenRatio = 0x9E3779B9;
    result ^= value + kGoldenRatio + (result << 6) + (result >> 2);
  };
  for (const std::int64_t number : numbers_) add(std::hash<std::int64_t>()(number));
  std::string_view rest = preRelease();
  while (!rest.empty()) add(std::hash<std::string_view>()(significant(takePart(rest))));
  return result;
}

void Coding<SemanticVersion>::encode(Encoder& encoder, const SemanticVersion& value) {
  encoder.string(value.description());
}

void Coding<SemanticVersion>::decode(Decoder& decoder, SemanticVersion& value) {
  const std::string text = decoder.string();
  std::optional<SemanticVersion> version = SemanticVersion::parse(text);
  if (!version) {
    throw DecodingError::dataCorrupted("Invalid version: \"" + text + "\"");
  }
  value = *std::move(version);
}

}  // namespace tavlen
