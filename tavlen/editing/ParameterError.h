#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/foundation/errors/LocalizedError.h"
#include "tavlen/parameters/ParameterContainer.h"

namespace tavlen {

class TweakFile;

/// What is wrong with a parameter that is looked for in a stored tweak.
class ParameterError : public LocalizedError {
 public:
  enum class Case { typeMismatch, notFound };

  /// `expected` is a kind's typeName, a constant.
  static ParameterError typeMismatch(std::string_view expected, const Parameter& found);
  static ParameterError notFound(std::int64_t idx, std::shared_ptr<TweakFile> tweak);

  Case which() const { return case_; }
  /// Of typeMismatch: the kinds' type names. Empty for the other case.
  std::string_view expected() const { return expected_; }
  std::string_view found() const { return found_; }
  /// Of notFound: the argument's position, and the document. None for the other case.
  std::optional<std::int64_t> idx() const { return idx_; }
  const std::shared_ptr<TweakFile>& tweak() const { return tweak_; }

  bool operator==(const ParameterError& other) const {
    return case_ == other.case_ && payload() == other.payload();
  }

 private:
  ParameterError(Case which, LocalizedText text, std::vector<std::string> payload)
      : LocalizedError(text, std::move(payload)), case_(which) {}

  Case case_;
  std::string_view expected_;
  std::string_view found_;
  std::optional<std::int64_t> idx_;
  std::shared_ptr<TweakFile> tweak_;
};

}  // namespace tavlen
