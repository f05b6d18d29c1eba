#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace tavlen {

/// A piece of a text that is shared by all who hold a piece of it. Immutable.
struct JXTypeText {
  std::shared_ptr<const char> bytes;  ///< the first one; keeps the whole text alive
  std::size_t length = 0;

  /// A text that no one else holds yet, or its beginning: the rest lives as long, too.
  static JXTypeText ownedBy(std::string text, std::size_t length = std::string::npos) {
    const auto owner = std::make_shared<const std::string>(std::move(text));
    return {std::shared_ptr<const char>(owner, owner->data()), std::min(length, owner->size())};
  }
  /// A piece of a text that outlives the program's use of types, so that there is nothing to count.
  static JXTypeText lasting(std::string_view text) {
    return {std::shared_ptr<const char>(std::shared_ptr<void>(), text.data()), text.size()};
  }
};

}  // namespace tavlen
