#include "tavlen/foundation/coding/CodingPath.h"

#include "tavlen/foundation/text/Characters.h"

namespace tavlen {

void CodingPath::prependKey(std::string_view key) { reversed_.emplace_back(std::string(key)); }

void CodingPath::prependIndex(std::size_t index) { reversed_.emplace_back(index); }

std::string CodingPath::text() const {
  // A path as deep as a document may be would fill screens. Its two ends identify the place.
  constexpr std::size_t kShownAtEachEnd = 16;
  const std::size_t count = reversed_.size();
  std::string out;
  for (std::size_t i = 0; i < count; ++i) {
    if (i == kShownAtEachEnd && count > 2 * kShownAtEachEnd) {
      out += "…";
      i = count - kShownAtEachEnd;
    }
    const Element& element = reversed_[count - 1 - i];
    if (const auto* index = std::get_if<std::size_t>(&element)) {
      out += "[" + std::to_string(*index) + "]";
      continue;
    }
    if (!out.empty()) out += '.';
    out += abbreviated(std::get<std::string>(element));
  }
  return out;
}

std::string abbreviated(std::string_view text) {
  constexpr std::size_t kLongest = 200;
  if (text.size() <= kLongest) return std::string(text);
  std::size_t end = kLongest;
  // Do not cut within a character.
  while (end > 0 && isUTF8Continuation(text[end])) --end;
  return std::string(text.substr(0, end)) + "…";
}

}  // namespace tavlen
