#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tavlen/foundation/base/API.h"

namespace tavlen {

/// Appends to a string through a plain pointer, for writers of many small pieces: one check of the
/// room for each piece, and no call.
///
/// The string has the text only after commit() or the destructor, and must not be used before.
/// Appending throws std::bad_alloc. Threads: one object one thread at a time.
class TAVLEN_API TextBuffer {
 public:
  /// Appends to `out`, which must outlive the buffer.
  explicit TextBuffer(std::string& out) : out_(out) { rebind(out.size()); }
  TextBuffer(const TextBuffer&) = delete;
  TextBuffer& operator=(const TextBuffer&) = delete;
  ~TextBuffer() { commit(); }

  /// In bytes, with what the string held before.
  std::size_t size() const { return static_cast<std::size_t>(at_ - begin_); }
  /// What was appended, and what the string held before. Valid until the next call.
  std::string_view view() const { return {begin_, size()}; }
  /// Gives the string the text. More can be appended afterwards.
  void commit() {
    out_.resize(size());  // never longer than it is
    end_ = at_;
  }
  /// Removes all text, also what the string held before. The memory is kept.
  void clear() { at_ = begin_; }
  /// Takes the memory for `count` more bytes at once.
  void reserve(std::size_t count);

  /// A pointer to which at most `count` bytes may be written; advance() tells how many were.
  char* room(std::size_t count) {
    if (static_cast<std::size_t>(end_ - at_) < count) grow(count);
    return at_;
  }
  /// `end` is the end of what was written to the pointer that room() returned.
  void advance(char* end) { at_ = end; }

  TextBuffer& operator+=(char c) {
    *room(1) = c;
    ++at_;
    return *this;
  }
  TextBuffer& operator+=(std::string_view text) { return append(text); }
  TextBuffer& append(std::string_view text) {
    at_ += text.copy(room(text.size()), text.size());
    return *this;
  }

 private:
  void grow(std::size_t count);
  void rebind(std::size_t used) {
    begin_ = out_.data();
    at_ = begin_ + used;
    end_ = begin_ + out_.size();
  }

  std::string& out_;  ///< longer than the text by the room that is left
  char* begin_ = nullptr;
  char* at_ = nullptr;
  char* end_ = nullptr;
};

}  // namespace tavlen
