#include "tavlen/tweaktext/detail/ValueText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <set>
#include <utility>

#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/foundation/toml/TOMLWriter.h"
#include "tavlen/parameters/ColorText.h"
#include "tavlen/tweaktext/detail/TableReader.h"

namespace tavlen {

namespace {

using Array = TOMLNode::Array;
using Table = TOMLNode::Table;
using Int = ValueParameter<std::int64_t>;
using UInt = ValueParameter<std::uint64_t>;
using Real = ValueParameter<double>;
using Kind = ArgumentType::Kind;

/// The nesting of an argument's value in the tweak's document: the manifest, its hooks, the hook,
/// its arguments, the value. Items of an array lie deeper by the array and themselves, those of a
/// dictionary also by their pair.
constexpr std::size_t kArgumentDepth = 5;
constexpr std::size_t kItemDepth = 2;
constexpr std::size_t kPairDepth = 3;

constexpr std::int64_t kMostInt = std::numeric_limits<std::int64_t>::max();

/// The real number that equals `value`, if any.
std::optional<double> realEqualTo(std::int64_t value) {
  constexpr double kPastInt = 9223372036854775808.0;
  const auto real = static_cast<double>(value);
  if (real >= kPastInt || static_cast<std::int64_t>(real) != value) return std::nullopt;
  return real;
}

// Reading.

double realFrom(const TOMLNode& node) {
  if (const auto* integer = std::get_if<std::int64_t>(&node.value)) {
    if (const auto real = realEqualTo(*integer)) return *real;
    throw TOMLError(node.position, "no real number equals this integer");
  }
  const auto value = expectKind<double>(node, "a real number");
  if (!std::isfinite(value)) throw TOMLError(node.position, "expected a finite number");
  return value;
}

Parameter nilFrom(const TOMLNode& node) {
  const auto* value = std::get_if<bool>(&node.value);
  if (value == nullptr || !*value) throw TOMLError(node.position, "expected true");
  return NilParameter{};
}

Parameter intFrom(const TOMLNode& node) {
  return Int{expectKind<std::int64_t>(node, "an integer")};
}

Parameter uintFrom(const TOMLNode& node) {
  if (const auto* integer = std::get_if<std::int64_t>(&node.value); integer && *integer >= 0)
    return UInt{static_cast<std::uint64_t>(*integer)};
  if (const auto* text = std::get_if<std::string>(&node.value)) {
    if (const auto value = unsignedFrom(*text)) return UInt{*value};
  }
  throw TOMLError(node.position,
                  "expected a whole number from 0 to 2^64-1; beyond 2^63-1 as a string of digits");
}

Parameter doubleFrom(const TOMLNode& node) { return Real{realFrom(node)}; }

Parameter dateFrom(const TOMLNode& node) {
  if (const auto* date = std::get_if<Date>(&node.value)) return DateParameter{*date};
  return DateParameter{{realFrom(node)}};
}

Parameter colorFrom(const TOMLNode& node) {
  if (const auto* text = std::get_if<std::string>(&node.value)) {
    if (const auto color = colorFromText(*text)) return *color;
  } else if (const auto* parts = std::get_if<Array>(&node.value); parts && parts->size() == 4) {
    return ColorParameter{realFrom((*parts)[0]), realFrom((*parts)[1]), realFrom((*parts)[2]),
                          realFrom((*parts)[3])};
  }
  throw TOMLError(node.position,
                  "expected a color such as \"#ff0000\" or \"#ff000080\", or an array of red, "
                  "green, blue and alpha from 0 to 1");
}

/// Reads a kind whose only field is a text.
template <class Text>
Parameter textFrom(const TOMLNode& node) {
  return Text{expectText(node)};
}

/// A one-key table.
struct Form {
  std::string_view key;
  Parameter (*parse)(const TOMLNode& node);
};

constexpr std::string_view kPairs = "$pairs";

constexpr std::array<Form, 13> kForms = {{
    {"$nil", nilFrom},
    {"$int", intFrom},
    {"$uint", uintFrom},
    {"$double", doubleFrom},
    {"$date", dateFrom},
    {"$color", colorFrom},
    {"$url", textFrom<URLParameter>},
    {"$code", textFrom<CodeParameter>},
    {"$data", textFrom<DataParameter>},
    {"$image", textFrom<ImageParameter>},
    {"$class", textFrom<ClassParameter>},
    {"$selector", textFrom<SelectorParameter>},
    {"$protocol", textFrom<ProtocolParameter>},
}};

bool hasFormKey(const TOMLNode::Member& member) { return member.key.starts_with('$'); }

/// Reads a value and the places of all in it.
struct Reader {
  const TOMLNode& node;
  const ArgumentType& type;
  ValuePlaces& places;
  std::size_t depth;  ///< of the value in the document

  Parameter read() const {
    places.position = node.position;
    requireDepth(depth);
    return std::visit(*this, node.value);
  }

  Parameter operator()(const std::string& text) const { return ValueParameter<std::string>{text}; }
  Parameter operator()(std::int64_t value) const {
    places.isPlainInteger = true;
    return parameterFromInteger(value, type);
  }
  Parameter operator()(double /*value*/) const { return doubleFrom(node); }
  Parameter operator()(bool value) const { return ValueParameter<bool>{value}; }
  Parameter operator()(Date date) const { return DateParameter{date}; }

  Parameter operator()(const Array& items) const {
    requireDepth(depth + 1);
    ArrayParameter array;
    array._items.reserve(items.size());
    for (const TOMLNode& item : items) array._items.push_back({inside(item, kItemDepth)});
    return array;
  }

  Parameter operator()(const Table& table) const {
    const auto form = std::find_if(table.begin(), table.end(), hasFormKey);
    if (form == table.end()) return dictionaryFrom(table);
    if (table.size() > 1) {
      throw TOMLError(form->position,
                      "a key that begins with \"$\" must be the only one of its table; a "
                      "dictionary with such a key is written with \"$pairs\"");
    }
    return formed(*form);
  }

 private:
  void requireDepth(std::size_t most) const {
    if (most <= JSONEncoder::kMaximumDepth) return;
    throw TOMLError(node.position, "nested deeper than a tweak's document may be");
  }

  Parameter inside(const TOMLNode& item, std::size_t levels) const {
    return Reader{item, {}, places.inside.emplace_back(), depth + levels}.read();
  }

  Parameter dictionaryFrom(const Table& table) const {
    requireDepth(depth + 1);
    DictionaryParameter dictionary;
    dictionary._items.reserve(table.size());
    for (const TOMLNode::Member& member : table) {
      places.inside.push_back({member.position, false, {}});
      dictionary._items.push_back(DictionaryParameter::Pair::with(
          ValueParameter<std::string>{member.key}, inside(member.value, kPairDepth)));
    }
    return dictionary;
  }

  Parameter formed(const TOMLNode::Member& form) const {
    if (form.key == kPairs) return pairsFrom(form.value);
    const auto known = std::find_if(kForms.begin(), kForms.end(),
                                    [&](const Form& each) { return each.key == form.key; });
    if (known != kForms.end()) return known->parse(form.value);
    std::vector<std::string_view> keys = {kPairs};
    for (const Form& each : kForms) keys.push_back(each.key);
    throw unknownKey(form, keys);
  }

  Parameter pairsFrom(const TOMLNode& list) const {
    requireDepth(depth + 1);
    DictionaryParameter dictionary;
    for (const TOMLNode& item : expectKind<Array>(list, "an array of pairs")) {
      const auto* pair = std::get_if<Array>(&item.value);
      if (pair == nullptr || pair->size() != 2)
        throw TOMLError(item.position, "expected an array of a key and a value");
      Parameter key = inside((*pair)[0], kPairDepth);
      dictionary._items.push_back(
          DictionaryParameter::Pair::with(std::move(key), inside((*pair)[1], kPairDepth)));
    }
    return dictionary;
  }
};

// Writing.

TOMLNode plain(TOMLNode::Value value) { return {std::move(value), {}}; }

TOMLNode form(std::string_view key, TOMLNode::Value value) {
  return plain(Table{{std::string(key), plain(std::move(value)), {}}});
}

/// Whether a table reads back as the dictionary.
bool isTable(const DictionaryParameter& dictionary) {
  std::set<std::string_view> keys;
  return std::all_of(dictionary._items.begin(), dictionary._items.end(), [&](const auto& pair) {
    const auto* key = std::get_if<ValueParameter<std::string>>(&pair.key());
    return key != nullptr && !key->value.starts_with('$') && keys.insert(key->value).second;
  });
}

struct Writer {
  const ArgumentType& type;

  TOMLNode operator()(const NilParameter&) const { return form("$nil", true); }
  TOMLNode operator()(const CodeParameter& kind) const { return form("$code", kind.code); }
  TOMLNode operator()(const Int& kind) const {
    const bool isPlain = std::holds_alternative<Int>(parameterFromInteger(kind.value, type));
    return isPlain ? plain(kind.value) : form("$int", kind.value);
  }
  TOMLNode operator()(const UInt& kind) const {
    if (kind.value > static_cast<std::uint64_t>(kMostInt))
      return form("$uint", std::to_string(kind.value));
    const auto value = static_cast<std::int64_t>(kind.value);
    const bool isPlain = std::holds_alternative<UInt>(parameterFromInteger(value, type));
    return isPlain ? plain(value) : form("$uint", value);
  }
  template <class Value>
  TOMLNode operator()(const ValueParameter<Value>& kind) const {
    return plain(kind.value);
  }
  TOMLNode operator()(const URLParameter& kind) const { return form("$url", kind.string); }
  TOMLNode operator()(const DateParameter& kind) const {
    if (hasTOMLForm(kind.date)) return plain(kind.date);
    return form("$date", kind.date.secondsSinceReferenceDate);
  }
  TOMLNode operator()(const ColorParameter& kind) const {
    if (auto text = textFromColor(kind)) return form("$color", *std::move(text));
    return form("$color",
                Array{plain(kind.red), plain(kind.green), plain(kind.blue), plain(kind.alpha)});
  }
  TOMLNode operator()(const DataParameter& kind) const { return form("$data", kind.filename); }
  TOMLNode operator()(const ImageParameter& kind) const { return form("$image", kind.filename); }
  TOMLNode operator()(const ClassParameter& kind) const { return form("$class", kind.name); }
  TOMLNode operator()(const SelectorParameter& kind) const { return form("$selector", kind.name); }
  TOMLNode operator()(const ProtocolParameter& kind) const { return form("$protocol", kind.name); }
  TOMLNode operator()(const ArrayParameter& kind) const {
    Array items;
    for (const ParameterContainer& item : kind._items)
      items.push_back(nodeFromParameter(item.value, {}));
    return plain(std::move(items));
  }
  TOMLNode operator()(const DictionaryParameter& kind) const {
    if (isTable(kind)) {
      Table table;
      for (const auto& pair : kind._items) {
        table.push_back({std::get<ValueParameter<std::string>>(pair.key()).value,
                         nodeFromParameter(pair.value(), {}),
                         {}});
      }
      return plain(std::move(table));
    }
    Array pairs;
    for (const auto& pair : kind._items) {
      pairs.push_back(
          plain(Array{nodeFromParameter(pair.key(), {}), nodeFromParameter(pair.value(), {})}));
    }
    return form(kPairs, std::move(pairs));
  }
};

}  // namespace

std::optional<std::uint64_t> unsignedFrom(std::string_view digits) {
  std::uint64_t value = 0;
  const char* end = digits.data() + digits.size();
  const auto [last, error] = std::from_chars(digits.data(), end, value);
  return error == std::errc() && last == end ? std::optional(value) : std::nullopt;
}

Parameter parameterFromInteger(std::int64_t value, const ArgumentType& type) {
  if (type.kind == Kind::real) {
    if (const auto real = realEqualTo(value)) return Real{*real};
  }
  if (type.kind == Kind::integer && !type.isSigned && value >= 0)
    return UInt{static_cast<std::uint64_t>(value)};
  return Int{value};
}

Parameter parameterFromNode(const TOMLNode& node, const ArgumentType& type, ValuePlaces& places) {
  return Reader{node, type, places, kArgumentDepth}.read();
}

TOMLNode nodeFromParameter(const Parameter& parameter, const ArgumentType& type) {
  return std::visit(Writer{type}, parameter);
}

}  // namespace tavlen
