#include "tavlen/tweaks/HookCheck.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>

#include "tavlen/foundation/text/NumberText.h"
#include "tavlen/tweaks/ArgumentType.h"

namespace tavlen {

namespace {

using Kind = ArgumentType::Kind;
using Int = ValueParameter<std::int64_t>;
using UInt = ValueParameter<std::uint64_t>;
using Real = ValueParameter<double>;

/// Up to which every integer has a form of its own in JavaScript.
constexpr std::uint64_t kMostExact = std::uint64_t{1} << 53;

/// A parameter's kind in messages, in the order of the kinds.
std::string_view phraseOf(const Parameter& parameter) {
  constexpr std::array<std::string_view, std::variant_size_v<Parameter>> kPhrases = {
      "nil",       "code",       "an integer", "an integer", "a real number", "a text",
      "a Boolean", "a URL",      "a date",     "a color",    "data",          "an image",
      "a class",   "a selector", "a protocol", "an array",   "a dictionary"};
  return kPhrases[parameter.index()];
}

std::string phraseOf(const ArgumentType& type) {
  constexpr std::array<std::string_view, 12> kPhrases = {
      "an unknown type", "nothing", "a Boolean",  "an integer", "a real number", "an object",
      "a block",         "a class", "a selector", "a C string", "a pointer",     "a structure"};
  return std::string(kPhrases[static_cast<std::size_t>(type.kind)]);
}

/// The least and the greatest integer of the type, as far as 64 bits hold them.
std::pair<std::int64_t, std::uint64_t> rangeOf(const ArgumentType& type) {
  if (type.kind == Kind::boolean) return {0, 1};
  const unsigned bits = std::min(type.bits, 64U);
  const std::uint64_t most = std::numeric_limits<std::uint64_t>::max() >> (64 - bits);
  if (type.bits > bits)  // wider than any parameter
    return {type.isSigned ? std::numeric_limits<std::int64_t>::min() : 0, most};
  if (!type.isSigned) return {0, most};
  return {-static_cast<std::int64_t>(most / 2) - 1, most / 2};
}

bool isIn(const std::pair<std::int64_t, std::uint64_t>& range, std::int64_t value) {
  return value < 0 ? value >= range.first : static_cast<std::uint64_t>(value) <= range.second;
}
bool isIn(const std::pair<std::int64_t, std::uint64_t>& range, std::uint64_t value) {
  return value <= range.second;
}
bool isIn(const std::pair<std::int64_t, std::uint64_t>& range, double value) {
  return value >= static_cast<double>(range.first) && value <= static_cast<double>(range.second);
}

std::string textOf(std::int64_t value) { return std::to_string(value); }
std::string textOf(std::uint64_t value) { return std::to_string(value); }
std::string textOf(double value) {
  std::string text;
  appendDescription(text, value);
  return text;
}

std::optional<std::string> rangeProblem(auto value, const ArgumentType& type) {
  const auto range = rangeOf(type);
  if (isIn(range, value)) return std::nullopt;
  return textOf(value) + " is out of range; the type holds " + textOf(range.first) + " to " +
         textOf(range.second);
}

/// Why a number does not suit a type of numbers.
std::optional<std::string> numberProblem(const Parameter& parameter, const ArgumentType& type) {
  if (const auto* integer = std::get_if<Int>(&parameter))
    return type.kind == Kind::real ? std::nullopt : rangeProblem(integer->value, type);
  if (const auto* integer = std::get_if<UInt>(&parameter))
    return type.kind == Kind::real ? std::nullopt : rangeProblem(integer->value, type);
  const double value = std::get<Real>(parameter).value;
  if (type.kind != Kind::real) {
    if (std::trunc(value) != value || std::isinf(value))
      return textOf(value) + " is not a whole number";
    return rangeProblem(value, type);
  }
  if (type.bits == 32 && std::isfinite(value) && std::isinf(static_cast<float>(value)))
    return textOf(value) + " is out of range of a float";
  return std::nullopt;
}

template <class... Kinds>
bool isOneOf(const Parameter& parameter) {
  return (std::holds_alternative<Kinds>(parameter) || ...);
}

/// Whether constants of the parameter's kind are passed as values of the type.
bool agrees(const Parameter& parameter, const ArgumentType& type) {
  switch (type.kind) {
    case Kind::boolean:
      return isOneOf<ValueParameter<bool>, Int, UInt>(parameter);
    case Kind::integer:  // of 8 bits it may be a BOOL
      return isOneOf<Int, UInt, Real>(parameter) ||
             (type.bits == 8 && isOneOf<ValueParameter<bool>>(parameter));
    case Kind::real:
      return isOneOf<Int, UInt, Real>(parameter);
    case Kind::object:
      return !isOneOf<SelectorParameter>(parameter);
    case Kind::class_:
      return isOneOf<NilParameter, ClassParameter>(parameter);
    case Kind::selector:
      return isOneOf<NilParameter, SelectorParameter>(parameter);
    case Kind::text:
      return isOneOf<NilParameter, ValueParameter<std::string>>(parameter);
    case Kind::block:
    case Kind::pointer:
      return isOneOf<NilParameter>(parameter);
    case Kind::structure:
      return false;
    case Kind::unknown:
    case Kind::nothing:
      break;
  }
  return true;
}

/// Why JavaScript does not hold an integer, whatever its type.
std::optional<std::string> exactnessProblem(const Parameter& parameter) {
  std::uint64_t magnitude = 0;
  std::string text;
  if (const auto* integer = std::get_if<Int>(&parameter)) {
    const auto bits = static_cast<std::uint64_t>(integer->value);
    magnitude = integer->value < 0 ? 0 - bits : bits;
    text = textOf(integer->value);
  } else if (const auto* other = std::get_if<UInt>(&parameter)) {
    magnitude = other->value;
    text = textOf(other->value);
  }
  if (magnitude <= kMostExact) return std::nullopt;
  return text + " is beyond 2^53, and generated code may round it; use code instead";
}

std::optional<std::string> valueProblem(const Parameter& parameter, const ArgumentType& type) {
  if (isOneOf<CodeParameter>(parameter)) return std::nullopt;
  if (!agrees(parameter, type)) {
    if (type.kind == Kind::structure) return "a constant for a structure, which only code can make";
    return std::string(phraseOf(parameter)) + " for " + phraseOf(type);
  }
  const bool isNumeric =
      type.kind == Kind::boolean || type.kind == Kind::integer || type.kind == Kind::real;
  if (isNumeric && isOneOf<Int, UInt, Real>(parameter)) {
    if (auto problem = numberProblem(parameter, type)) return problem;
  }
  return exactnessProblem(parameter);
}

/// Why a hook has no use for a value of that index. `known` is the number of arguments.
std::optional<std::string> indexProblem(std::int64_t index, std::int64_t known, bool returns) {
  if (index < Hook::kReturnValue || index >= known) return "the method has no such argument";
  if (index == Hook::kReturnValue && !returns) return "the method returns nothing";
  return std::nullopt;
}

std::int64_t colonsOf(const Hook& hook) {
  return std::count(hook.selector.begin(), hook.selector.end(), ':');
}

}  // namespace

std::string documentPath(const Hook& hook, const HookProblem& problem) {
  if (!problem.argument) return "signature";
  return "args." + std::to_string(*problem.argument) +
         documentPath(hook._args.at(*problem.argument).value, problem.path);
}

std::optional<std::string> signatureProblem(const Hook& hook) {
  const std::string signature = "\"" + hook.signature + "\"";
  const auto types = HookTypes::from(hook.signature);
  if (!types) return signature + " is not a method's type encoding";
  const std::int64_t count = types->count();
  const std::int64_t colons = colonsOf(hook);
  if (count == colons) return std::nullopt;
  return signature + " has " + std::to_string(count) + (count == 1 ? " argument" : " arguments") +
         ", the selector \"" + hook.selector + "\" takes " + std::to_string(colons);
}

std::vector<HookProblem> problemsOf(const Hook& hook) {
  std::vector<HookProblem> problems;
  if (auto problem = signatureProblem(hook)) problems.push_back({{}, {}, *std::move(problem)});
  const auto types = HookTypes::from(hook.signature);
  const std::int64_t known = types ? std::max(types->count(), colonsOf(hook)) : 0;
  const bool returns = types && types->at(Hook::kReturnValue).kind != Kind::nothing;
  for (const auto& [index, box] : hook._args) {
    if (types) {
      if (auto problem = indexProblem(index, known, returns))
        problems.push_back({index, {}, *std::move(problem)});
    }
    const ArgumentType type = types ? types->at(index) : ArgumentType();
    forEachParameter(
        box.value, [&, index = index](const Parameter& each, const ParameterPath& path) {
          auto problem = valueProblem(each, path.empty() ? type : ArgumentType{Kind::object});
          if (problem) problems.push_back({index, path, *std::move(problem)});
        });
  }
  return problems;
}

}  // namespace tavlen
