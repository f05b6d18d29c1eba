#include "tavlen/editing/ParameterError.h"

#include <filesystem>
#include <variant>

#include "tavlen/foundation/files/URL.h"
#include "tavlen/tweaks/TweakFile.h"

namespace tavlen {

ParameterError ParameterError::typeMismatch(std::string_view expected, const Parameter& found) {
  const std::string_view name = std::visit([](const auto& kind) { return kind.typeName; }, found);
  ParameterError error(
      Case::typeMismatch,
      {"parameter_view.error.type_mismatch", "Parameter type mismatch: expected %@ but found %@"},
      {std::string(expected), std::string(name)});
  error.expected_ = expected;
  error.found_ = name;
  return error;
}

ParameterError ParameterError::notFound(std::int64_t idx, std::shared_ptr<TweakFile> tweak) {
  const URL location = URL::fileURL(std::filesystem::absolute(tweak->url()));
  ParameterError error(
      Case::notFound,
      {"parameter_view.error.not_found", "Parameter not found at index %@ in tweak %@"},
      {std::to_string(idx), location.absoluteString});
  error.idx_ = idx;
  error.tweak_ = std::move(tweak);
  return error;
}

}  // namespace tavlen
