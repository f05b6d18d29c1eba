#include "tavlen/foundation/text/TextBuffer.h"

#include <algorithm>

namespace tavlen {

void TextBuffer::grow(std::size_t count) {
  // resize() zero-fills. By blocks that stay in the nearest cache, this costs little, whatever the
  // string's capacity.
  constexpr std::size_t kBlock = 4096;
  const std::size_t used = size();
  const std::size_t block = std::min(used + kBlock, out_.capacity());
  out_.resize(std::max(used + count, block));
  rebind(used);
}

void TextBuffer::reserve(std::size_t count) {
  const std::size_t used = size();
  out_.reserve(used + count);
  rebind(used);
}

}  // namespace tavlen
