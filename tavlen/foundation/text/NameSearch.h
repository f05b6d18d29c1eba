#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/FunctionRef.h"

namespace tavlen {

/// Searches texts for many names at once. Time for a text is its length times the logarithm of the
/// number of names, times the length of names that begin alike. Threads: one object one thread at a
/// time.
class TAVLEN_API NameSearch {
 public:
  /// A search for `names`, which may repeat. Empty ones occur nowhere.
  explicit NameSearch(const std::vector<std::string>& names);

  /// Calls `found` once for the index of each name that occurs in `text`, in no certain order.
  void search(std::string_view text, FunctionRef<void(std::size_t index)> found);

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  struct Name {
    std::string text;
    std::size_t index = 0;
    std::size_t prefix = kNone;   ///< place of the longest other name that this one begins with
    std::size_t lastFoundIn = 0;  ///< the number of the text
  };

  void searchAt(std::string_view rest, FunctionRef<void(std::size_t)> found);

  std::vector<Name> names_;         ///< in order
  std::array<bool, 256> begins_{};  ///< whether a name begins with that byte
  std::size_t texts_ = 0;
};

}  // namespace tavlen
