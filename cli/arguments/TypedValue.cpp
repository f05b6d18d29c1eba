#include "cli/arguments/TypedValue.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/arguments/UsageError.h"
#include "cli/terminal/ShownText.h"
#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/coding/DateText.h"
#include "tavlen/foundation/files/FileReplacement.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/foundation/text/NearestDouble.h"
#include "tavlen/foundation/text/NumberText.h"
#include "tavlen/foundation/text/Suggestion.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/parameters/ColorText.h"

namespace tavlen::cli {

namespace {

constexpr std::string_view kNil = "nil";
constexpr std::string_view kJSON = "json";

template <class Integer>
std::optional<Parameter> integerFrom(const std::string& text) {
  Integer value = 0;
  const char* end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || last != end) return std::nullopt;
  return ValueParameter<Integer>{value};
}

std::optional<Parameter> realFrom(const std::string& text) {
  const auto number = nearestDouble(text);
  if (!number || !number->isInRange || !std::isfinite(number->value)) return std::nullopt;
  return ValueParameter<double>{number->value};
}

std::optional<Parameter> boolFrom(const std::string& text) {
  if (text != "true" && text != "false") return std::nullopt;
  return ValueParameter<bool>{text == "true"};
}

std::optional<Parameter> dateFrom(const std::string& text) {
  const std::optional<Date> date = dateFromText(text);
  return date ? std::optional<Parameter>(DateParameter{*date}) : std::nullopt;
}

std::optional<Parameter> colorFrom(const std::string& text) { return colorFromText(text); }

/// Reads a kind whose value is any text.
template <class Kind>
std::optional<Parameter> textFrom(const std::string& text) {
  return Kind{text};
}

template <class Kind>
std::optional<Parameter> nameFrom(const std::string& text) {
  return text.empty() ? std::nullopt : textFrom<Kind>(text);
}

template <class Kind>
std::optional<Parameter> fileFrom(const std::string& text) {
  const std::filesystem::path name = std::filesystem::path(text).filename();
  if (!isPlainComponent(name.native()) || isTemporaryName(name)) return std::nullopt;
  // Archives cannot contain such names, so the tweak could not be exported.
  if (name.native().find('\\') != std::string::npos) return std::nullopt;
  return Kind{name.native()};
}

/// The syntax of a kind on the command line.
struct Form {
  std::string_view name;  ///< the text before the colon
  const char* expected;   ///< describes the text after it
  std::optional<Parameter> (*parse)(const std::string& text);
  bool isFile = false;
};

constexpr std::array<Form, 14> kForms = {{
    {"bool", "true or false", boolFrom},
    {"int", "a whole number from -2^63 to 2^63-1", integerFrom<std::int64_t>},
    {"uint", "a whole number from 0 to 2^64-1", integerFrom<std::uint64_t>},
    {"double", "a finite number such as 0.5", realFrom},
    {"string", "a text", textFrom<ValueParameter<std::string>>},
    {"url", "a URL", nameFrom<URLParameter>},
    {"date", "a date such as 2026-01-31T12:00:00Z", dateFrom},
    {"color", "a color such as #ff0000 or #ff000080", colorFrom},
    {"data", "the path of a file", fileFrom<DataParameter>, true},
    {"image", "the path of a file", fileFrom<ImageParameter>, true},
    {"class", "a class's name", nameFrom<ClassParameter>},
    {"selector", "a selector", nameFrom<SelectorParameter>},
    {"protocol", "a protocol's name", nameFrom<ProtocolParameter>},
    {"code", "source text", textFrom<CodeParameter>},
}};

std::string knownForms() {
  std::string names;
  for (const Form& form : kForms) names.append(form.name).append(":, ");
  return names + "json: or nil";
}

[[noreturn]] void refuse(const char* argument, std::string_view text, const std::string& problem) {
  throw UsageError(argument, std::string(text) + ": " + problem);
}

Parameter parameterFromJSON(const std::string& json, const std::string& text,
                            const char* argument) {
  try {
    return decodeJSON<ParameterContainer>(json).value;
  } catch (const DecodingError& error) {
    refuse(argument, text, "expected a parameter in the form of manifests: " + errorText(error));
  }
}

std::string jsonText(const Parameter& parameter) {
  return "json:" + shownJSON(ParameterContainer{parameter});
}

/// Writes a parameter of each kind in its short form, which need not read back. Returns nothing for
/// a kind or a value without one.
struct Writer {
  using Text = std::optional<std::string>;

  Text operator()(const NilParameter&) const { return std::string(kNil); }
  Text operator()(const CodeParameter& kind) const { return "code:" + kind.code; }
  Text operator()(const ValueParameter<std::int64_t>& kind) const {
    return "int:" + std::to_string(kind.value);
  }
  Text operator()(const ValueParameter<std::uint64_t>& kind) const {
    return "uint:" + std::to_string(kind.value);
  }
  Text operator()(const ValueParameter<double>& kind) const {
    std::string text = "double:";
    appendDescription(text, kind.value);
    return text;
  }
  Text operator()(const ValueParameter<std::string>& kind) const { return "string:" + kind.value; }
  Text operator()(const ValueParameter<bool>& kind) const {
    return std::string(kind.value ? "bool:true" : "bool:false");
  }
  Text operator()(const URLParameter& kind) const { return "url:" + kind.string; }
  Text operator()(const DateParameter& kind) const {
    // The sign of a zero has no place in a date.
    const double seconds = kind.date.secondsSinceReferenceDate;
    if (seconds == 0 && std::signbit(seconds)) return std::nullopt;
    const Text text = textFromDate(kind.date);
    return text ? Text("date:" + *text) : std::nullopt;
  }
  Text operator()(const ColorParameter& kind) const {
    const Text text = textFromColor(kind);
    return text ? Text("color:" + *text) : std::nullopt;
  }
  Text operator()(const DataParameter& kind) const { return "data:" + kind.filename; }
  Text operator()(const ImageParameter& kind) const { return "image:" + kind.filename; }
  Text operator()(const ClassParameter& kind) const { return "class:" + kind.name; }
  Text operator()(const SelectorParameter& kind) const { return "selector:" + kind.name; }
  Text operator()(const ProtocolParameter& kind) const { return "protocol:" + kind.name; }
  Text operator()(const ArrayParameter&) const { return std::nullopt; }
  Text operator()(const DictionaryParameter&) const { return std::nullopt; }
};

const Form* formNamed(std::string_view name) {
  const auto form = std::find_if(kForms.begin(), kForms.end(),
                                 [&](const Form& known) { return known.name == name; });
  return form == kForms.end() ? nullptr : &*form;
}

/// Whether a short form is shown unchanged and is read as the same value.
bool readsBack(const std::string& text, const Parameter& parameter) {
  if (text == kNil) return true;
  const std::size_t colon = text.find(':');
  return escapedForTerminal(text) == text &&
         formNamed(text.substr(0, colon))->parse(text.substr(colon + 1)) == parameter;
}

[[noreturn]] void refuseKind(const char* argument, std::string_view text, std::string_view name) {
  std::vector<std::string_view> names = {kJSON, kNil};
  for (const Form& form : kForms) names.push_back(form.name);
  const auto meant = closestName(name, names);
  refuse(argument, text,
         "expected a value that begins with " + knownForms() +
             (meant ? "; did you mean \"" + std::string(*meant) + (*meant == kNil ? "\"?" : ":\"?")
                    : ""));
}

}  // namespace

TypedValue parseTypedValue(const std::string& text, const char* argument) {
  if (text == kNil) return {NilParameter(), ""};
  if (!isValidUTF8(text)) refuse(argument, text, "expected UTF-8");
  const std::size_t colon = text.find(':');
  const std::string name = text.substr(0, colon);
  const std::string rest = colon == std::string::npos ? "" : text.substr(colon + 1);
  if (name == kJSON && colon != std::string::npos)
    return {parameterFromJSON(rest, text, argument), ""};
  const Form* form = formNamed(name);
  if (form == nullptr || colon == std::string::npos) refuseKind(argument, text, name);
  if (form->isFile && rest == "-") {
    refuse(argument, text,
           "the standard input has no name for a resource; expected the path of a file");
  }
  std::optional<Parameter> parameter = form->parse(rest);
  if (!parameter)
    refuse(argument, text, std::string("expected ") + form->expected + " after the colon");
  return {*std::move(parameter), form->isFile ? rest : ""};
}

std::string typedText(const Parameter& parameter) {
  const std::optional<std::string> text = std::visit(Writer(), parameter);
  return text && readsBack(*text, parameter) ? *text : jsonText(parameter);
}

}  // namespace tavlen::cli
