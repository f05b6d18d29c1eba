#include "tavlen/foundation/text/NameSearch.h"

#include <algorithm>

namespace tavlen {

NameSearch::NameSearch(const std::vector<std::string>& names) {
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (names[i].empty()) continue;
    names_.push_back({names[i], i});
    begins_[static_cast<unsigned char>(names[i].front())] = true;
  }
  std::sort(names_.begin(), names_.end(),
            [](const Name& left, const Name& right) { return left.text < right.text; });
  // In this order, the names with which one begins precede it, and each begins the next of them.
  for (std::size_t i = 1; i < names_.size(); ++i) {
    std::size_t prefix = i - 1;
    while (prefix != kNone && !names_[i].text.starts_with(names_[prefix].text))
      prefix = names_[prefix].prefix;
    names_[i].prefix = prefix;
  }
}

void NameSearch::search(std::string_view text, FunctionRef<void(std::size_t index)> found) {
  ++texts_;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (begins_[static_cast<unsigned char>(text[i])]) searchAt(text.substr(i), found);
  }
}

void NameSearch::searchAt(std::string_view rest, FunctionRef<void(std::size_t)> found) {
  const auto next =
      std::upper_bound(names_.begin(), names_.end(), rest,
                       [](std::string_view text, const Name& name) { return text < name.text; });
  if (next == names_.begin()) return;
  // Every name that `rest` begins with is a prefix of the last one that does not follow it.
  auto place = static_cast<std::size_t>(next - names_.begin()) - 1;
  while (place != kNone && !rest.starts_with(names_[place].text)) place = names_[place].prefix;
  for (; place != kNone && names_[place].lastFoundIn != texts_; place = names_[place].prefix) {
    names_[place].lastFoundIn = texts_;
    found(names_[place].index);
  }
}

}  // namespace tavlen
