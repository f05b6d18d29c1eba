#include "tavlen/foundation/json/detail/IgnoredKeyLog.h"

#include <utility>

#include "tavlen/foundation/coding/CodingPath.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/foundation/text/Suggestion.h"

namespace tavlen {

void IgnoredKeyLog::addUnknown(std::string_view key, const char* position,
                               std::span<const std::string_view> known) {
  if (isFull()) return;
  add("unknown-key", key, position,
      "unknown key \"" + std::string(key) + "\", which the next edit drops" +
          suggestionText(key, known));
}

void IgnoredKeyLog::addRepeated(std::string_view key, const char* position) {
  if (isFull()) return;
  add("repeated-key", key, position,
      "repeated key \"" + std::string(key) +
          "\"; the first one counts, and the next edit drops this one");
}

bool IgnoredKeyLog::isFull() {
  if (ignored_.keys.size() < IgnoredKeys::kMost) return false;
  ++ignored_.others;
  return true;
}

void IgnoredKeyLog::add(std::string_view code, std::string_view key, const char* position,
                        std::string text) {
  for (; position_ != position; ++position_) {
    if (*position_ == '\n') {
      ++place_.line;
      place_.column = 1;
    } else if (!isUTF8Continuation(*position_)) {
      ++place_.column;
    }
  }
  ignored_.keys.push_back({code, pathTo(key), place_, std::move(text)});
}

std::string IgnoredKeyLog::pathTo(std::string_view key) const {
  // Numbers may have any number of zeros in front, and would be copied for every key inside.
  constexpr std::size_t kMostShown = 64;
  CodingPath path;
  path.prependKey(key);
  for (auto step = path_.rbegin(); step != path_.rend(); ++step) {
    if (step->isKey) {
      path.prependKey(step->key.substr(0, kMostShown));
    } else {
      path.prependIndex(step->index);
    }
  }
  return path.text();
}

void IgnoredKeyLog::returnTo(const Mark& mark) {
  path_.resize(mark.depth);
  ignored_.keys.resize(mark.count);
  ignored_.others = mark.others;
  position_ = mark.position;
  place_ = mark.place;
}

}  // namespace tavlen
