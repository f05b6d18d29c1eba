#pragma once

#include <string>
#include <utility>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/base/DescribedError.h"
#include "tavlen/foundation/text/TextPosition.h"

namespace tavlen {

/// A TOML text that is malformed, or does not contain what a reader expects. The description is
/// "12:9: expected a string". It is not translated.
class TAVLEN_API TOMLError : public DescribedError {
 public:
  /// An error at `position`.
  TOMLError(TextPosition position, std::string text)
      : position_(position), text_(std::move(text)) {}

  /// The place of the fault.
  TextPosition position() const { return position_; }
  /// The fault, without the place. It may quote the text as it is.
  const std::string& text() const { return text_; }
  std::string description() const override { return tavlen::description(position_) + ": " + text_; }

 private:
  TextPosition position_;
  std::string text_;
};

/// An integer beyond those of TOML, which have 64 bits and a sign.
class TAVLEN_API TOMLIntegerError : public TOMLError {
 public:
  TOMLIntegerError(TextPosition position, std::string text, std::string integer)
      : TOMLError(position, std::move(text)), integer_(std::move(integer)) {}

  /// Its decimal digits, without a sign.
  const std::string& integer() const { return integer_; }

 private:
  std::string integer_;
};

}  // namespace tavlen
