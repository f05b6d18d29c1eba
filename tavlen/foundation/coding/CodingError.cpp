#include "tavlen/foundation/coding/CodingError.h"

namespace tavlen {

std::string CodingError::description() const {
  return path_.empty() ? text_ : path_.text() + ": " + text_;
}

DecodingError DecodingError::keyNotFound(std::string_view key) {
  return {Case::keyNotFound, "missing key \"" + std::string(key) + "\""};
}

DecodingError DecodingError::typeMismatch(std::string_view expected, std::string_view found) {
  return {Case::typeMismatch,
          "expected " + std::string(expected) + ", found " + std::string(found)};
}

DecodingError DecodingError::valueNotFound(std::string_view expected) {
  return {Case::valueNotFound, "expected " + std::string(expected) + ", found null"};
}

DecodingError DecodingError::dataCorrupted(std::string text) {
  return {Case::dataCorrupted, std::move(text)};
}

DecodingError DecodingError::malformedText(std::string text, TextPosition position) {
  DecodingError error = dataCorrupted(std::move(text));
  error.position_ = position;
  error.isMalformedText_ = true;
  return error;
}

std::string DecodingError::description() const {
  std::string text = CodingError::description();
  if (isMalformedText_ && position_) {
    text += " at line " + std::to_string(position_->line);
    text += ", column " + std::to_string(position_->column);
  }
  return text;
}

}  // namespace tavlen
