#include "tavlen/foundation/CodingPath.h"

#include <algorithm>

namespace tavlen {

CodingPath::CodingPath(std::vector<Element> elements) : reversed_(std::move(elements)) {
  std::reverse(reversed_.begin(), reversed_.end());
}

void CodingPath::prependKey(std::string_view key) { reversed_.emplace_back(std::string(key)); }

void CodingPath::prependIndex(std::size_t index) { reversed_.emplace_back(index); }

std::vector<CodingPath::Element> CodingPath::elements() const {
  return {reversed_.rbegin(), reversed_.rend()};
}

std::string CodingPath::text() const {
  std::string out;
  for (auto element = reversed_.rbegin(); element != reversed_.rend(); ++element) {
    if (const auto* index = std::get_if<std::size_t>(&*element)) {
      out += "[" + std::to_string(*index) + "]";
      continue;
    }
    if (!out.empty()) out += '.';
    out += abbreviated(std::get<std::string>(*element));
  }
  return out;
}

std::string abbreviated(std::string_view text) {
  constexpr std::size_t kLongest = 200;
  if (text.size() <= kLongest) return std::string(text);
  std::size_t end = kLongest;
  // Never in the middle of a character.
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return std::string(text.substr(0, end)) + "…";
}

}  // namespace tavlen
