#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace tavlen {

/// A piece of an immutable text that several nodes share.
struct JXTypeText {
  std::shared_ptr<const char> bytes;  ///< the first one; keeps the whole text alive
  /// In bytes.
  std::size_t length = 0;

  /// The beginning of a text that the piece takes over, by default all of it. The rest of the text
  /// stays alive as well.
  static JXTypeText ownedBy(std::string text, std::size_t length = std::string::npos) {
    const auto owner = std::make_shared<const std::string>(std::move(text));
    return {std::shared_ptr<const char>(owner, owner->data()), std::min(length, owner->size())};
  }
  /// A piece of a text that is never destroyed, without reference counting.
  static JXTypeText lasting(std::string_view text) {
    return {std::shared_ptr<const char>(std::shared_ptr<void>(), text.data()), text.size()};
  }
};

}  // namespace tavlen
