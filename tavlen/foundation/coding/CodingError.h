#pragma once

#include <optional>
#include <string>
#include <utility>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/DescribedError.h"
#include "tavlen/foundation/coding/CodingPath.h"
#include "tavlen/foundation/text/TextPosition.h"

namespace tavlen {

/// The common base of decoding and encoding errors: a place in the document and a text.
///
/// The description is `path: text`, or only the text at the document's root. It is not translated.
class TAVLEN_API CodingError : public DescribedError {
 public:
  /// The place of the fault, from the document's root.
  const CodingPath& codingPath() const { return path_; }
  /// The fault, without the place.
  const std::string& text() const { return text_; }
  std::string description() const override;

  /// Prepends a path element. Containers call these while the error propagates through them.
  void prependKey(std::string_view key) { path_.prependKey(key); }
  /// The same for an array index.
  void prependIndex(std::size_t index) { path_.prependIndex(index); }

 protected:
  explicit CodingError(std::string text) : text_(std::move(text)) {}

 private:
  CodingPath path_;
  std::string text_;
};

/// A document that does not match the requested type. The cases and their paths are the platform's,
/// except that malformed text and numbers have a path here as well.
class TAVLEN_API DecodingError : public CodingError {
  /// The kinds of faults.
 public:
  enum class Case {
    keyNotFound,    ///< a required key is absent; the path leads to the object that lacks it
    typeMismatch,   ///< a value of another kind
    valueNotFound,  ///< a null where a value is required
    dataCorrupted,  ///< the text, or the value at the path, is malformed or out of range
  };

  /// A required key is absent.
  static DecodingError keyNotFound(std::string_view key);
  /// A value of another kind. `expected` and `found` are noun phrases: "a string", "null".
  static DecodingError typeMismatch(std::string_view expected, std::string_view found);
  /// A null where `expected` is required.
  static DecodingError valueNotFound(std::string_view expected);
  /// A malformed value; `text` says why.
  static DecodingError dataCorrupted(std::string text);
  /// Text that is malformed at `position`, which the description ends with.
  static DecodingError malformedText(std::string text, TextPosition position);

  /// The case of this error.
  Case which() const { return case_; }
  /// Where the fault is in a document that is text, as far as the reader knows: the place of
  /// malformed text, else the beginning of the value at the path.
  const std::optional<TextPosition>& position() const { return position_; }
  /// Sets the position of an error without one.
  void setPosition(TextPosition position) { position_ = position; }
  std::string description() const override;

 private:
  DecodingError(Case which, std::string text) : CodingError(std::move(text)), case_(which) {}

  Case case_;
  std::optional<TextPosition> position_;
  bool isMalformedText_ = false;
};

/// A value that the format cannot hold: the platform's only case.
class TAVLEN_API EncodingError : public CodingError {
 public:
  /// An error with the description `text`.
  static EncodingError invalidValue(std::string text) { return EncodingError(std::move(text)); }

 private:
  using CodingError::CodingError;
};

/// Runs `body` and returns its result; prepends `key` to the path of its coding errors.
template <class Body>
decltype(auto) underKey(std::string_view key, Body&& body) {
  try {
    return std::forward<Body>(body)();
  } catch (CodingError& error) {
    error.prependKey(key);
    throw;
  }
}

/// Runs `body` and returns its result; prepends `index` to the path of its coding errors.
template <class Body>
decltype(auto) underIndex(std::size_t index, Body&& body) {
  try {
    return std::forward<Body>(body)();
  } catch (CodingError& error) {
    error.prependIndex(index);
    throw;
  }
}

}  // namespace tavlen
