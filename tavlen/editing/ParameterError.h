#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/API.h"
#include "tavlen/foundation/errors/CasedError.h"
#include "tavlen/parameters/ParameterContainer.h"

namespace tavlen {

class TweakFile;

/// The cases of ParameterError.
enum class ParameterErrorCase { typeMismatch, notFound };

/// A parameter of a stored tweak is missing or has another kind than expected.
class TAVLEN_API ParameterError : public CasedError<ParameterErrorCase> {
 public:
  /// `expected` is the typeName of a kind; it must outlive the error.
  static ParameterError typeMismatch(std::string_view expected, const Parameter& found);
  /// The hook in `tweak` has no entry for the argument `idx`.
  static ParameterError notFound(std::int64_t idx, std::shared_ptr<TweakFile> tweak);

  /// The expected kind's type name. Only for typeMismatch; empty otherwise.
  std::string_view expected() const { return expected_; }
  /// The found kind's type name. Only for typeMismatch; empty otherwise.
  std::string_view found() const { return found_; }
  /// The argument's index. Only for notFound.
  std::optional<std::int64_t> idx() const { return idx_; }
  /// The tweak. Only for notFound; null otherwise.
  const std::shared_ptr<TweakFile>& tweak() const { return tweak_; }

 private:
  using CasedError::CasedError;

  std::string_view expected_;
  std::string_view found_;
  std::optional<std::int64_t> idx_;
  std::shared_ptr<TweakFile> tweak_;
};

}  // namespace tavlen
