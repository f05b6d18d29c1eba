#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/text/TextPosition.h"

namespace tavlen {

/// A key of a document that no record has, or that stands a second time in its object. Decoders
/// ignore it, so what is written after decoding lacks it. A plain value.
struct TAVLEN_API IgnoredKey {
  /// "unknown-key" or "repeated-key". A constant.
  std::string_view code;
  /// The way to the key's value: "hooks[2].nmae".
  std::string path;
  /// Where the key begins.
  TextPosition position;
  /// The fault, to be shown after its place. Names the nearest known key.
  std::string text;
};

/// The keys of a document that were ignored, in its order.
struct TAVLEN_API IgnoredKeys {
  /// The greatest number of keys that are described. A document of a program may have an unknown
  /// key in each of many objects.
  static constexpr std::size_t kMost = 1000;

  /// The first of them.
  std::vector<IgnoredKey> keys;
  /// The number of others.
  std::size_t others = 0;
};

}  // namespace tavlen
