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

}  // namespace tavlen
