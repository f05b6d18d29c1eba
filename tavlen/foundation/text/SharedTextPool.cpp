#include "tavlen/foundation/text/SharedTextPool.h"

#include <algorithm>
#include <functional>

namespace tavlen {

namespace {

constexpr std::size_t kBlockBytes = std::size_t{16} << 10;
/// What a longer text would leave unused of a block is too much.
constexpr std::size_t kLongestInBlock = kBlockBytes / 16;

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
  if (block_ == nullptr || kBlockBytes - used_ < text.size()) {
    block_ = std::make_shared_for_overwrite<char[]>(kBlockBytes);
    used_ = 0;
  }
  char* const bytes = block_.get() + used_;
  std::copy(text.begin(), text.end(), bytes);
  used_ += text.size();
  return {block_, std::string_view(bytes, text.size())};
}

}  // namespace tavlen
