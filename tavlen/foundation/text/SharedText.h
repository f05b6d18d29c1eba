#pragma once

#include <compare>
#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// An immutable text, or a piece of one, that several values share: a copy counts a reference and
/// allocates nothing. Converts to and from the other forms of text, so that a record's member can
/// be used like a std::string. Not terminated by a NUL.
///
/// Threads: as for a plain value; copies in several threads may share their text.
class TAVLEN_API SharedText {
 public:
  /// The heap that a text of its own takes at most, beyond its bytes.
  static constexpr std::size_t kOwnBytes = 64;

  /// An empty text.
  SharedText() = default;
  /// A copy of `text`, in one heap block.
  SharedText(std::string_view text);                                    // NOLINT(*-explicit-*)
  SharedText(const std::string& text) : SharedText(view(text)) {}       // NOLINT(*-explicit-*)
  SharedText(const char* text) : SharedText(std::string_view(text)) {}  // NOLINT(*-explicit-*)
  /// A piece of a text that `owner` keeps alive. Copies nothing.
  SharedText(const std::shared_ptr<const void>& owner, std::string_view piece)
      : bytes_(owner, piece.data()), size_(piece.size()) {}
  /// A piece of a text that is never destroyed, without reference counting.
  static SharedText lasting(std::string_view text) { return {std::shared_ptr<void>(), text}; }

  /// The first byte; may be null for an empty text. Valid as long as any copy.
  const char* data() const { return bytes_.get(); }
  /// In bytes.
  std::size_t size() const { return size_; }
  /// Whether the text has no bytes.
  bool empty() const { return size_ == 0; }
  /// The text, valid as long as any copy.
  operator std::string_view() const { return {data(), size_}; }  // NOLINT(*-explicit-*)
  /// A copy.
  std::string str() const { return std::string(view(*this)); }

  /// At most `count` bytes from `begin` on, which is not past the end. Keeps the whole text alive.
  SharedText piece(std::size_t begin, std::size_t count = std::string_view::npos) const {
    return {bytes_, view(*this).substr(begin, count)};
  }
  /// Gives up the first byte, which keeps the whole text alive, to one who keeps the size in
  /// another form. The text is unspecified afterwards.
  std::shared_ptr<const char> release() && { return std::move(bytes_); }

  /// Equality by bytes, with any form of text.
  template <std::convertible_to<std::string_view> Text>
  friend bool operator==(const SharedText& left, const Text& right) {
    return view(left) == view(right);
  }
  /// Order by bytes, with any form of text.
  template <std::convertible_to<std::string_view> Text>
  friend std::strong_ordering operator<=>(const SharedText& left, const Text& right) {
    return view(left) <=> view(right);
  }

 private:
  static std::string_view view(std::string_view text) { return text; }

  std::shared_ptr<const char> bytes_;
  std::size_t size_ = 0;
};

}  // namespace tavlen

/// Hash for unordered containers, equal to that of the same std::string_view.
template <>
struct std::hash<tavlen::SharedText> {
  /// The hash of the bytes.
  std::size_t operator()(const tavlen::SharedText& text) const {
    return std::hash<std::string_view>()(text);
  }
};
