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

TextPosition TweakText::placeOf(std::size_t hook, const HookPlace& place) const {
  const HookPlaces& places = hooks.at(hook);
  if (place.part == HookPlace::Part::value) return places.args.at(place.argument).at(place.path);
  if (place.part == HookPlace::Part::signature) return places.types.value_or(places.method);
  return places.method;
}

std::optional<TextPosition> TweakText::placeOf(const TweakProblem& problem) const {
  switch (problem.subject) {
    case TweakProblem::Subject::app:
      return app;
    case TweakProblem::Subject::glyph:
      return glyph;
    case TweakProblem::Subject::override_:
      return overrides.at(problem.index);
    case TweakProblem::Subject::hook:
      return placeOf(problem.index, problem.place);
    case TweakProblem::Subject::file:
      break;
  }
  return std::nullopt;
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
