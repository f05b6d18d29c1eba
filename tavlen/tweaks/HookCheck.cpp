#include "tavlen/tweaks/HookCheck.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>

#include "tavlen/foundation/text/Characters.h"
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

/// A problem without its place.
struct Fault {
  std::string_view code;
  std::string text;
};

Fault outOfRange(std::string text) { return {"out-of-range", std::move(text)}; }

std::optional<Fault> rangeFault(auto value, const ArgumentType& type) {
  const auto range = rangeOf(type);
  if (isIn(range, value)) return std::nullopt;
  return outOfRange(textOf(value) + " is out of range; the type holds " + textOf(range.first) +
                    " to " + textOf(range.second));
}

/// Why a number does not suit a type of numbers.
std::optional<Fault> numberFault(const Parameter& parameter, const ArgumentType& type) {
  if (const auto* integer = std::get_if<Int>(&parameter))
    return type.kind == Kind::real ? std::nullopt : rangeFault(integer->value, type);
  if (const auto* integer = std::get_if<UInt>(&parameter))
    return type.kind == Kind::real ? std::nullopt : rangeFault(integer->value, type);
  const double value = std::get<Real>(parameter).value;
  if (type.kind != Kind::real) {
    if (std::trunc(value) != value || std::isinf(value))
      return Fault{"not-whole", textOf(value) + " is not a whole number"};
    return rangeFault(value, type);
  }
  if (type.bits == 32 && std::isfinite(value) && std::isinf(static_cast<float>(value)))
    return outOfRange(textOf(value) + " is out of range of a float");
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
std::optional<Fault> exactnessFault(const Parameter& parameter) {
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
  return Fault{"inexact-integer",
               text + " is beyond 2^53, and generated code may round it; use code instead"};
}

/// Whether `name` has no control character and none of `refused`.
bool isPlain(std::string_view name, std::string_view refused) {
  return std::none_of(name.begin(), name.end(), [&](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F || refused.find(c) != std::string_view::npos;
  });
}

/// Names of generic Swift classes contain blanks and brackets of other forms.
std::optional<Fault> classFault(const std::string& name, const char* kind = "class") {
  const bool isPossible = !name.empty() && !isDigit(name.front()) && !name.starts_with(' ') &&
                          !name.ends_with(' ') && isPlain(name, "[]{}\"';:\\+-*/=");
  if (isPossible) return std::nullopt;
  return Fault{"malformed-class",
               "no " + std::string(kind) + " can have the name \"" + name + "\""};
}

/// Compilers write a full stop in front of the names of some methods.
std::optional<Fault> selectorFault(const std::string& selector) {
  const bool isPossible = !selector.empty() && !isDigit(selector.front()) &&
                          isPlain(selector, " ()<>[]{}\"';,\\+-*/=&|!?@#%^~`");
  if (isPossible) return std::nullopt;
  return Fault{"malformed-selector", "no method can have the selector \"" + selector + "\""};
}

std::optional<Fault> nameFault(const Parameter& parameter) {
  if (const auto* class_ = std::get_if<ClassParameter>(&parameter)) return classFault(class_->name);
  if (const auto* protocol = std::get_if<ProtocolParameter>(&parameter))
    return classFault(protocol->name, "protocol");
  if (const auto* selector = std::get_if<SelectorParameter>(&parameter))
    return selectorFault(selector->name);
  return std::nullopt;
}

std::optional<Fault> valueFault(const Parameter& parameter, const ArgumentType& type) {
  if (isOneOf<CodeParameter>(parameter)) return std::nullopt;
  if (!agrees(parameter, type)) {
    if (type.kind == Kind::structure)
      return Fault{"structure-value", "a constant for a structure, which only code can make"};
    return Fault{"wrong-kind", std::string(phraseOf(parameter)) + " for " + phraseOf(type)};
  }
  const bool isNumeric =
      type.kind == Kind::boolean || type.kind == Kind::integer || type.kind == Kind::real;
  if (isNumeric && isOneOf<Int, UInt, Real>(parameter)) {
    if (auto fault = numberFault(parameter, type)) return fault;
  }
  if (auto fault = nameFault(parameter)) return fault;
  return exactnessFault(parameter);
}

/// Why a hook has no use for a value of that index. `known` is the number of arguments.
std::optional<Fault> indexFault(std::int64_t index, std::int64_t known, bool returns) {
  if (index < Hook::kReturnValue || index >= known)
    return Fault{"no-such-argument", "the method has no such argument"};
  if (index == Hook::kReturnValue && !returns)
    return Fault{"no-result", "the method returns nothing"};
  return std::nullopt;
}

std::int64_t colonsOf(const Hook& hook) {
  return std::count(hook.selector.begin(), hook.selector.end(), ':');
}

std::optional<Fault> signatureFault(const Hook& hook) {
  const std::string signature = "\"" + hook.signature + "\"";
  const auto types = HookTypes::from(hook.signature);
  if (!types) return Fault{"malformed-types", signature + " is not a method's type encoding"};
  const std::int64_t count = types->count();
  const std::int64_t colons = colonsOf(hook);
  if (count == colons) return std::nullopt;
  return Fault{"argument-count", signature + " has " + std::to_string(count) +
                                     (count == 1 ? " argument" : " arguments") +
                                     ", the selector \"" + hook.selector + "\" takes " +
                                     std::to_string(colons)};
}

/// Collects the problems of one hook.
class Checker {
 public:
  explicit Checker(const Hook& hook) : hook_(hook) {}

  std::vector<HookProblem> run() {
    add({HookPlace::Part::className}, classFault(hook_.className));
    add({HookPlace::Part::selector}, selectorFault(hook_.selector));
    add({HookPlace::Part::signature}, signatureFault(hook_));
    const auto types = HookTypes::from(hook_.signature);
    for (const auto& [index, box] : hook_._args) {
      if (types) addIndex(index, *types);
      addValues(index, box.value, types ? types->at(index) : ArgumentType());
    }
    return std::move(problems_);
  }

 private:
  void add(HookPlace place, std::optional<Fault> fault) {
    if (fault) problems_.push_back({std::move(place), fault->code, std::move(fault->text)});
  }

  void addIndex(std::int64_t index, const HookTypes& types) {
    const bool returns = types.at(Hook::kReturnValue).kind != Kind::nothing;
    add({HookPlace::Part::value, index},
        indexFault(index, std::max(types.count(), colonsOf(hook_)), returns));
  }

  void addValues(std::int64_t index, const Parameter& value, const ArgumentType& type) {
    forEachParameter(value, [&](const Parameter& each, const ParameterPath& path) {
      auto fault = valueFault(each, path.empty() ? type : ArgumentType{Kind::object});
      if (fault) add({HookPlace::Part::value, index, path}, std::move(fault));
    });
  }

  const Hook& hook_;
  std::vector<HookProblem> problems_;
};

}  // namespace

std::string documentPath(const Hook& hook, const HookPlace& place) {
  switch (place.part) {
    case HookPlace::Part::method:
      break;
    case HookPlace::Part::className:
      return "className";
    case HookPlace::Part::selector:
      return "selector";
    case HookPlace::Part::signature:
      return "signature";
    case HookPlace::Part::value:
      return "args." + std::to_string(place.argument) +
             documentPath(hook._args.at(place.argument).value, place.path);
  }
  return {};
}

std::optional<std::string> signatureProblem(const Hook& hook) {
  auto fault = signatureFault(hook);
  return fault ? std::optional(std::move(fault->text)) : std::nullopt;
}

std::vector<HookProblem> problemsOf(const Hook& hook) { return Checker(hook).run(); }

}  // namespace tavlen
