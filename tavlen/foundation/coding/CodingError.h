#pragma once

#include <string>
#include <utility>

#include "tavlen/foundation/coding/CodingPath.h"
#include "tavlen/foundation/errors/LocalizedError.h"

namespace tavlen {

/// What decoding and encoding errors share: a place in the document and a text.
///
/// The description is `path: text`, or the text alone at the document's root. It is not translated.
class CodingError : public LocalizedError {
 public:
  const CodingPath& codingPath() const { return path_; }
  /// What is wrong, without the place.
  const std::string& text() const { return text_; }
  std::string description() const override;

  /// Called by containers while the error passes through them.
  void prependKey(std::string_view key) { path_.prependKey(key); }
  void prependIndex(std::size_t index) { path_.prependIndex(index); }

 protected:
  explicit CodingError(std::string text) : LocalizedError({}), text_(std::move(text)) {}

 private:
  CodingPath path_;
  std::string text_;
};

/// A document that does not hold what was asked of it. The cases and their paths are the
/// platform's, except that malformed text and numbers have a path here, too.
class DecodingError : public CodingError {
 public:
  enum class Case {
    keyNotFound,    ///< a required key is absent; the path leads to the object that lacks it
    typeMismatch,   ///< another kind of value stands there
    valueNotFound,  ///< a null stands where a value is required
    dataCorrupted,  ///< the text, or the value at the path, is malformed or out of range
  };

  static DecodingError keyNotFound(std::string_view key);
  /// `expected` and `found` are noun phrases: "a string", "null".
  static DecodingError typeMismatch(std::string_view expected, std::string_view found);
  static DecodingError valueNotFound(std::string_view expected);
  static DecodingError dataCorrupted(std::string text);

  Case which() const { return case_; }

 private:
  DecodingError(Case which, std::string text) : CodingError(std::move(text)), case_(which) {}

  Case case_;
};

/// A value that the format cannot hold: the platform's invalid-value case, the only one there is.
class EncodingError : public CodingError {
 public:
  static EncodingError invalidValue(std::string text) { return EncodingError(std::move(text)); }

 private:
  using CodingError::CodingError;
};

/// Runs `body`, whose coding errors then lead through `key`.
template <class Body>
decltype(auto) underKey(std::string_view key, Body&& body) {
  try {
    return std::forward<Body>(body)();
  } catch (CodingError& error) {
    error.prependKey(key);
    throw;
  }
}

/// Runs `body`, whose coding errors then lead through `index`.
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
