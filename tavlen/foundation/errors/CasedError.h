#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tavlen/foundation/errors/LocalizedError.h"

namespace tavlen {

/// An error that is one case of an enumeration; what tells two of a case apart is the payload.
///
/// A component's error derives from this and has a static function for each of its cases, which
/// names the case's text.
template <class ErrorCase>
class CasedError : public LocalizedError {
 public:
  using Case = ErrorCase;

  /// What is wrong.
  Case which() const { return case_; }
  /// Whether case and payload are equal; texts follow from the case.
  bool operator==(const CasedError& other) const {
    return case_ == other.case_ && payload() == other.payload();
  }

 protected:
  CasedError(Case which, LocalizedText text, std::vector<std::string> payload = {})
      : LocalizedError(text, std::move(payload)), case_(which) {}

 private:
  Case case_;
};

}  // namespace tavlen
