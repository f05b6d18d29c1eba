#include "tools/loader/calls/VariadicArguments.h"

#include <cmath>
#include <string>
#include <vector>

#include "tavlen/foundation/text/Unicode.h"
#include "tools/loader/base/Messages.h"
#include "tools/loader/engine/Engine.h"
#include "tools/loader/engine/HookStack.h"
#include "tools/loader/engine/Native.h"
#include "tools/loader/values/Boxing.h"

namespace tavlen::loader {

namespace {

using Type = std::shared_ptr<const ValueType>;

const Type& typeFor(char letter) {
  static const Type kObject = ValueType::from("@");
  static const Type kLong = ValueType::from("q");
  static const Type kUnsignedLong = ValueType::from("Q");
  static const Type kInt = ValueType::from("i");
  static const Type kUnsignedInt = ValueType::from("I");
  static const Type kDouble = ValueType::from("d");
  static const Type kLongDouble = ValueType::from("D");
  static const Type kText = ValueType::from("r*");
  static const Type kPointer = ValueType::from("^v");
  switch (letter) {
    case '@':
      return kObject;
    case 'q':
      return kLong;
    case 'Q':
      return kUnsignedLong;
    case 'i':
      return kInt;
    case 'I':
      return kUnsignedInt;
    case 'd':
      return kDouble;
    case 'D':
      return kLongDouble;
    case '*':
      return kText;
    default:
      return kPointer;
  }
}

/// Reads the conversions of a format, each after its "%".
class FormatReader {
 public:
  explicit FormatReader(std::string_view format) : rest_(format) {}

  /// The encodings of the arguments, in their order.
  std::string types() {
    std::string types;
    while (!rest_.empty()) {
      const std::size_t percent = rest_.find('%');
      if (percent == std::string_view::npos) break;
      rest_.remove_prefix(percent + 1);
      readConversion(types);
    }
    return types;
  }

 private:
  char take() {
    if (rest_.empty()) return '\0';
    const char next = rest_.front();
    rest_.remove_prefix(1);
    return next;
  }

  void readConversion(std::string& types) {
    constexpr std::string_view kFlags = "-+ #0123456789.'";
    unsigned longs = 0;
    bool isLongDouble = false;
    for (char next = take();; next = take()) {
      if (next == '$') throw ScriptError("a format with numbered arguments cannot be called");
      if (next == '*') {
        types += 'i';  // a width
      } else if (next == 'l') {
        ++longs;
      } else if (next == 'q' || next == 'j' || next == 'z' || next == 't') {
        longs = 2;
      } else if (next == 'L') {
        isLongDouble = true;
      } else if (next != 'h' && (next == '\0' || kFlags.find(next) == std::string_view::npos)) {
        append(types, next, longs > 0, isLongDouble);
        return;
      }
    }
  }

  static void append(std::string& types, char conversion, bool isLong, bool isLongDouble) {
    if (std::string_view("diDcC").find(conversion) != std::string_view::npos)
      types += isLong ? 'q' : 'i';
    else if (std::string_view("uUxXoO").find(conversion) != std::string_view::npos)
      types += isLong ? 'Q' : 'I';
    else if (std::string_view("fFeEgGaA").find(conversion) != std::string_view::npos)
      types += isLongDouble ? 'D' : 'd';
    else if (conversion == '@' || conversion == 'K')  // a key path of a predicate
      types += '@';
    else if (conversion == 's')
      types += '*';
    else if (conversion == 'p' || conversion == 'n' || conversion == 'S')
      types += '^';
    // "%%" takes no argument, and neither does what no format has.
  }

  std::string_view rest_;
};

/// The encodings for values of which nothing is known.
std::string typesByValue(Engine& engine, const JSValueRef* values, std::size_t count) {
  std::string types;
  for (std::size_t i = 0; i < count; ++i) {
    JSContextRef context = engine.context();
    if (JSValueIsNumber(context, values[i])) {
      const double number = JSValueToNumber(context, values[i], nullptr);
      types += std::trunc(number) == number ? 'q' : 'd';
    } else {
      types += JSValueIsBoolean(context, values[i]) ? 'i' : '@';
    }
  }
  return types;
}

std::shared_ptr<const CallSignature> extended(const CallSignature& fixed, std::string_view types) {
  CallSignature::Types all = fixed.arguments();
  const std::size_t fixedCount = all.size();
  for (const char letter : types) all.push_back(typeFor(letter));
  all.push_back(typeFor('^'));
  return std::make_shared<const CallSignature>(fixed.sharedResult(), std::move(all), fixedCount);
}

}  // namespace

std::optional<std::size_t> formatIn(std::string_view selector, const CallSignature& fixed) {
  if (selector.starts_with("set")) return std::nullopt;
  std::optional<std::size_t> format;
  constexpr std::size_t kFirst = 2;  // after receiver and selector
  std::size_t index = kFirst;
  for (std::size_t colon = selector.find(':'); colon != std::string_view::npos;
       colon = selector.find(':'), ++index) {
    const std::string_view part = selector.substr(0, colon);
    selector.remove_prefix(colon + 1);
    if (format && part.starts_with("argument")) return std::nullopt;
    if (part.ends_with("ormat") && !part.ends_with("DateFormat") &&
        !part.ends_with("alendarFormat") && index < fixed.arguments().size() &&
        fixed.arguments()[index]->kind() == ValueType::Kind::object)
      format = index;
  }
  return format;
}

std::shared_ptr<const CallSignature> variadicSignature(Engine& engine, const CallSignature& fixed,
                                                       std::string_view selector,
                                                       const JSValueRef* values,
                                                       std::size_t count) {
  const std::size_t fixedCount = fixed.arguments().size();
  values += fixedCount;
  count -= fixedCount;
  if (const auto format = formatIn(selector, fixed)) {
    const HookStack::OwnWork own;
    id text = boxed(engine, (values - fixedCount)[*format]);
    std::string types = FormatReader(utf8FromUTF16(textOf(text))).types();
    if (types.size() > count) {
      throw ScriptError("the format wants " + std::to_string(types.size()) + " arguments, not " +
                        std::to_string(count));
    }
    types.append(typesByValue(engine, values + types.size(), count - types.size()));
    return extended(fixed, types);
  }
  if (fixed.arguments().back()->kind() == ValueType::Kind::object)
    return extended(fixed, std::string(count, '@'));
  return extended(fixed, typesByValue(engine, values, count));
}

}  // namespace tavlen::loader
