#include "tavlen/foundation/text/SharedTextPool.h"

#include <algorithm>
#include <functional>

namespace tavlen {

namespace {

/// A longer text would leave too much of a block unused.
constexpr std::size_t kLongestInBlock = 1'024;

}  // namespace

SharedText SharedTextPool::shared(std::string_view text) {
  if (text.empty()) return {};
  const std::size_t hash = std::hash<std::string_view>()(text);
  const auto found = index_.find(hash, [&](HashIndex::Index i) { return texts_[i] == text; });
  if (found != HashIndex::kNone) return texts_[found];
  texts_.push_back(stored(text));
  index_.add(hash, static_cast<HashIndex::Index>(texts_.size() - 1));
  return texts_.back();
}

SharedText SharedTextPool::stored(std::string_view text) {
  if (text.size() > kLongestInBlock) return text;
  if (block_ == nullptr || block_->size() - used_ < text.size()) {
    block_ = std::make_shared_for_overwrite<Block>();
    used_ = 0;
  }
  char* const bytes = block_->data() + used_;
  std::copy(text.begin(), text.end(), bytes);
  used_ += text.size();
  return {block_, std::string_view(bytes, text.size())};
}

}  // namespace tavlen
