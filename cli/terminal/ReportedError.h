#pragma once

#include <stdexcept>

namespace tavlen::cli {

/// A failure whose messages have been printed already: reportError() prints nothing. Its text is
/// the main one of them.
class ReportedError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace tavlen::cli
