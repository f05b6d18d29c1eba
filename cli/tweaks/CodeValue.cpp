#include "cli/tweaks/CodeValue.h"

#include <string>
#include <variant>

#include "tavlen/foundation/text/TextLines.h"
#include "tavlen/tweaks/HookSource.h"

namespace tavlen::cli {

namespace {

/// Where `part` begins in `text`, if it is there exactly once.
std::optional<std::size_t> onlyPlaceOf(std::string_view part, std::string_view text) {
  const std::size_t place = text.find(part);
  if (place == std::string_view::npos || place != text.rfind(part)) return std::nullopt;
  return place;
}

}  // namespace

std::optional<TextPosition> CodeValue::positionOf(std::size_t offset) const {
  if (!begin || offset < *begin || offset > *begin + code.size()) return std::nullopt;
  return linePositionAt(code, offset - *begin);
}

std::vector<CodeValue> codeValuesOf(const Hook& hook) {
  std::vector<CodeValue> values;
  const std::string text = keyedOBJSFunc(hook);
  for (const HookValueText& value : hookValueTexts(hook)) {
    const auto expression = std::string_view(text).substr(value.begin, value.end - value.begin);
    forEachParameter(
        hook._args.at(value.argument).value, [&](const Parameter& each, const ParameterPath& path) {
          const auto* code = std::get_if<CodeParameter>(&each);
          if (code == nullptr) return;
          auto begin = onlyPlaceOf(code->code, expression);
          if (begin) *begin += value.begin;
          values.push_back({{HookPlace::Part::value, value.argument, path}, code->code, begin});
        });
  }
  return values;
}

}  // namespace tavlen::cli
