#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/HashIndex.h"
#include "tavlen/foundation/text/SharedText.h"

namespace tavlen {

/// Makes equal texts one. Short texts lie next to one another in large blocks, so that a text takes
/// little more than its bytes once the pool is gone; a block lives as long as any of its texts.
///
/// Threads: one object one thread at a time; the texts are independent of the pool.
class TAVLEN_API SharedTextPool {
 public:
  /// `text`, shared with all who have asked this pool for an equal one. Throws std::bad_alloc.
  SharedText shared(std::string_view text);

 private:
  using Block = std::array<char, std::size_t{16} << 10>;

  /// Copies `text`, which is not empty.
  SharedText stored(std::string_view text);

  std::shared_ptr<Block> block_;  ///< the one that is being filled; null before the first
  std::size_t used_ = 0;          ///< bytes of block_
  std::vector<SharedText> texts_;
  HashIndex index_;  ///< of texts_
};

}  // namespace tavlen
