#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/errors/LocalizedError.h"

namespace tavlen {

/// An error that is one case of an enumeration, told apart from others of the same case by its
/// payload.
///
/// Each component derives its error from this class and adds a static function for each case, which
/// supplies the text.
template <class ErrorCase>
class TAVLEN_API CasedError : public LocalizedError {
 public:
  /// The component's enumeration.
  using Case = ErrorCase;

  /// The case of this error.
  Case which() const { return case_; }
  /// Compares case and payload; the text follows from the case.
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
