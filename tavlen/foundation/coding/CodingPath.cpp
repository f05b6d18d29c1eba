#include "tavlen/foundation/coding/CodingPath.h"

namespace tavlen {

void CodingPath::prependKey(std::string_view key) { reversed_.emplace_back(std::string(key)); }

void CodingPath::prependIndex(std::size_t index) { reversed_.emplace_back(index); }

std::string CodingPath::text() const {
  std::string out;
  for (auto element = reversed_.rbegin(); element != reversed_.rend(); ++element) {
    if (const auto* index = std::get_if<std::size_t>(&*element)) {
      out += "[" + std::to_string(*index) + "]";
      continue;
    }
    if (!out.empty()) out += '.';
    out += std::get<std::string>(*element);
  }
  return out;
}

}  // namespace tavlen
