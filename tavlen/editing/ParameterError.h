#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/foundation/errors/CasedError.h"
#include "tavlen/parameters/ParameterContainer.h"

namespace tavlen {

class TweakFile;

enum class ParameterErrorCase { typeMismatch, notFound };

/// What is wrong with a parameter that is looked for in a stored tweak.
class ParameterError : public CasedError<ParameterErrorCase> {
 public:
  /// `expected` is a kind's typeName, a constant.
  static ParameterError typeMismatch(std::string_view expected, const Parameter& found);
  static ParameterError notFound(std::int64_t idx, std::shared_ptr<TweakFile> tweak);

  /// Of typeMismatch: the kinds' type names. Empty for the other case.
  std::string_view expected() const { return expected_; }
  std::string_view found() const { return found_; }
  /// Of notFound: the argument's position, and the document. None for the other case.
  std::optional<std::int64_t> idx() const { return idx_; }
  const std::shared_ptr<TweakFile>& tweak() const { return tweak_; }

 private:
  using CasedError::CasedError;

  std::string_view expected_;
  std::string_view found_;
  std::optional<std::int64_t> idx_;
  std::shared_ptr<TweakFile> tweak_;
};

}  // namespace tavlen
