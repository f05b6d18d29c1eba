#include "tavlen/foundation/text/Suggestion.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace tavlen {

namespace {

constexpr std::size_t kMostCorrections = 3;

/// The Damerau-Levenshtein distance (optimal string alignment), by the rows of its table.
class Distance {
 public:
  std::size_t between(std::string_view left, std::string_view right) {
    for (auto* row : {&beforeLast_, &last_, &row_}) row->assign(right.size() + 1, 0);
    for (std::size_t j = 0; j <= right.size(); ++j) last_[j] = j;
    for (std::size_t i = 1; i <= left.size(); ++i) {
      row_[0] = i;
      for (std::size_t j = 1; j <= right.size(); ++j) {
        const std::size_t replaced = last_[j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
        row_[j] = std::min({replaced, last_[j] + 1, row_[j - 1] + 1});
        if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
          row_[j] = std::min(row_[j], beforeLast_[j - 2] + 1);
        }
      }
      std::swap(beforeLast_, last_);
      std::swap(last_, row_);
    }
    return last_[right.size()];
  }

 private:
  std::vector<std::size_t> beforeLast_;
  std::vector<std::size_t> last_;
  std::vector<std::size_t> row_;
};

}  // namespace

std::optional<std::string_view> closestName(std::string_view name,
                                            std::span<const std::string_view> known) {
  Distance distance;
  std::optional<std::string_view> closest;
  std::size_t fewest = kMostCorrections + 1;
  for (const std::string_view candidate : known) {
    const auto [shorter, longer] = std::minmax({name.size(), candidate.size()});
    if (longer - shorter > kMostCorrections) continue;
    const std::size_t count = distance.between(name, candidate);
    if (count >= fewest || count * 3 > candidate.size()) continue;
    fewest = count;
    closest = candidate;
  }
  return closest;
}

std::string suggestionText(std::string_view name, std::span<const std::string_view> known) {
  if (const auto closest = closestName(name, known))
    return "; did you mean \"" + std::string(*closest) + "\"?";
  constexpr std::size_t kMostListed = 20;
  std::string text;
  if (known.size() > kMostListed) return text;
  for (const std::string_view each : known)
    text.append(text.empty() ? "; known are " : ", ").append(each);
  return text;
}

}  // namespace tavlen
