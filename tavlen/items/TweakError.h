#pragma once

#include <string>

#include "tavlen/foundation/errors/LocalizedError.h"

namespace tavlen {

/// What is wrong with a stored tweak or collection, whatever its kind.
class TweakError : public LocalizedError {
 public:
  enum class Case { missing, bundleIDMismatch, notFound };

  /// `item` is the name of what is missing.
  static TweakError missing(std::string item);
  static TweakError bundleIDMismatch(std::string expected, std::string found);
  static TweakError notFound();

  Case which() const { return case_; }
  bool operator==(const TweakError& other) const {
    return case_ == other.case_ && payload() == other.payload();
  }

 private:
  TweakError(Case which, LocalizedText text, std::vector<std::string> payload = {})
      : LocalizedError(text, std::move(payload)), case_(which) {}

  Case case_;
};

}  // namespace tavlen
