#include "tavlen/tweaktext/TweakText.h"

#include <utility>

#include "tavlen/tweaktext/detail/ValueText.h"

namespace tavlen {

TextPosition ValuePlaces::at(const ParameterPath& path) const {
  const ValuePlaces* places = this;
  for (const std::size_t step : path) {
    if (step >= places->inside.size()) break;
    places = &places->inside[step];
  }
  return places->position;
}

TextPosition TweakText::placeOf(std::size_t hook, const HookProblem& problem) const {
  const HookPlaces& places = hooks.at(hook);
  if (problem.argument) return places.args.at(*problem.argument).at(problem.path);
  return places.types.value_or(places.method);
}

void TweakText::setTypes(std::size_t hook, std::string types) {
  Hook& changed = *manifest._hooks.at(hook);
  changed.signature = std::move(types);
  const auto known = HookTypes::from(changed.signature);
  for (auto& [index, box] : changed._args) {
    if (!hooks.at(hook).args.at(index).isPlainInteger) continue;
    // Without types, all plain integers are signed.
    if (const auto* value = std::get_if<ValueParameter<std::int64_t>>(&box.value))
      box.value = parameterFromInteger(value->value, known ? known->at(index) : ArgumentType());
  }
}

}  // namespace tavlen
