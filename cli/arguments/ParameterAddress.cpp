#include "cli/arguments/ParameterAddress.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <unordered_map>
#include <utility>

#include "cli/arguments/UsageError.h"
#include "cli/terminal/CountText.h"
#include "tavlen/foundation/coding/CodingError.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/foundation/text/Characters.h"
#include "tavlen/foundation/text/EscapedText.h"
#include "tavlen/foundation/text/Suggestion.h"

namespace tavlen::cli {

namespace {

using Side = ParameterAddress::Side;
using Step = ParameterAddress::Step;

constexpr std::string_view kEnd = "end";
/// The nesting limit of stored documents.
constexpr std::size_t kMostSteps = 512;

[[noreturn]] void refuse(std::string_view text, const std::string& expected) {
  throw UsageError("ADDRESS", std::string(text) + ": expected " + expected);
}

std::string quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

std::optional<std::int64_t> wholeNumber(std::string_view text) {
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<Side> sideNamed(std::string_view text) {
  if (text == "key") return Side::key;
  if (text == "value") return Side::value;
  return std::nullopt;
}

/// A key as a step of an address, on one line.
std::string inBrackets(std::string_view key) {
  return "[" + escapedJSON(encodeJSON(std::string(key))) + "]";
}

/// Reads an address from the left to the right.
class AddressReader {
 public:
  explicit AddressReader(std::string_view text) : text_(text) {}

  ParameterAddress read() {
    const std::string_view first = part();
    const auto argument = wholeNumber(first);
    if (!argument)
      fail("the number of an argument, or -1 for the result, instead of " + quoted(first));
    ParameterAddress address = {*argument, position_, {}, std::string(text_)};
    while (position_ < text_.size()) {
      if (text_[position_] == '[') {
        add(address.steps, {keyInBrackets(), std::nullopt, position_});
      } else {
        ++position_;
        addPart(address.steps);
      }
    }
    return address;
  }

 private:
  [[noreturn]] void fail(const std::string& expected) const { refuse(text_, expected); }
  std::string before() const { return quoted(text_.substr(0, position_)); }

  void add(std::vector<Step>& steps, Step step) const {
    if (steps.size() == kMostSteps)
      fail("at most " + std::to_string(kMostSteps) + " parts after the argument");
    steps.push_back(std::move(step));
  }

  void addPart(std::vector<Step>& steps) {
    const std::string start = before();
    const std::string_view name = part();
    if (name.empty()) fail("an index or a key after " + start);
    if (const auto side = sideNamed(name)) {
      const bool isOfPair = !steps.empty() && !steps.back().side &&
                            std::holds_alternative<std::int64_t>(steps.back().place);
      if (!isOfPair)
        fail("the index of a pair before " + quoted(name) + "; a key of that name is written " +
             inBrackets(name));
      steps.back().side = side;
      steps.back().end = position_;
    } else if (const auto index = wholeNumber(name)) {
      add(steps, {*index, std::nullopt, position_});
    } else if (name == kEnd) {
      fail("an index or a key after " + start + "; a key of that name is written " +
           inBrackets(name));
    } else {
      add(steps, {std::string(name), std::nullopt, position_});
    }
  }

  /// The text up to the next full stop or bracket.
  std::string_view part() {
    const std::size_t begin = position_;
    position_ = std::min(text_.find_first_of(".[", begin), text_.size());
    return text_.substr(begin, position_ - begin);
  }

  /// The key in brackets at the position.
  std::string keyInBrackets() {
    const std::string start = before();
    const std::size_t begin = ++position_;
    bool isEscaped = false;
    for (++position_; position_ < text_.size(); ++position_) {
      if (!isEscaped && text_[position_] == '"') break;
      isEscaped = !isEscaped && text_[position_] == '\\';
    }
    position_ = std::min(position_ + 1, text_.size());
    const std::string literal(text_.substr(begin, position_ - begin));
    const bool isClosed = position_ < text_.size() && text_[position_++] == ']';
    const bool isFollowed =
        position_ == text_.size() || text_[position_] == '.' || text_[position_] == '[';
    if (isClosed && isFollowed && literal.starts_with('"')) {
      try {
        return decodeJSON<std::string>(literal);
      } catch (const DecodingError&) {
      }
    }
    fail("a key in brackets, such as [\"a.b\"], after " + start);
  }

  std::string_view text_;
  std::size_t position_ = 0;
};

/// The address up to `end`, in quotes.
std::string shown(const ParameterAddress& address, std::size_t end) {
  return quoted(std::string_view(address.text).substr(0, end));
}

const std::string* keyTextOf(const DictionaryParameter::Pair& pair) {
  const auto* key = std::get_if<ValueParameter<std::string>>(&pair.key());
  return key != nullptr ? &key->value : nullptr;
}

/// As suggestionText(), but lists all keys in quotes: a key may be any text.
std::string keySuggestion(const std::string& key, const std::vector<std::string_view>& known) {
  if (closestName(key, known)) return suggestionText(key, known);
  std::vector<std::string> texts(known.size());
  std::transform(known.begin(), known.end(), texts.begin(), quoted);
  return suggestionText(key, std::vector<std::string_view>(texts.begin(), texts.end()));
}

/// The pair with that key. `place` names the dictionary in messages.
std::size_t pairWithKey(const DictionaryParameter& dictionary, const std::string& key,
                        const std::string& place) {
  std::vector<std::string_view> known;
  std::vector<std::size_t> found;
  for (std::size_t i = 0; i < dictionary._items.size(); ++i) {
    const std::string* text = keyTextOf(dictionary._items[i]);
    if (text == nullptr) continue;
    known.emplace_back(*text);
    if (*text == key) found.push_back(i);
  }
  if (found.empty())
    throw std::runtime_error(place + " has no key " + quoted(key) + keySuggestion(key, known));
  if (found.size() == 1) return found.front();
  std::string indices;
  for (const std::size_t index : found)
    indices.append(indices.empty() ? "" : ", ").append(std::to_string(index));
  throw std::runtime_error(place + " has several pairs with the key " + quoted(key) +
                           "; name one by its index: " + indices);
}

/// The place of a step in a collection of `count` items, which `collection` names in messages.
std::size_t checkedIndex(std::int64_t index, std::size_t count, std::size_t most,
                         const std::string& collection, bool isArray) {
  if (index >= 0 && static_cast<std::uint64_t>(index) < count + most)
    return static_cast<std::size_t>(index);
  throw std::runtime_error(
      collection + " has no index " + std::to_string(index) + "; it has " +
      countText(count, isArray ? "item" : "pair", isArray ? "items" : "pairs"));
}

/// The index of the item or the pair at `step`, in the collection at `place`.
std::size_t indexAt(const Parameter& collection, const Step& step, std::size_t most,
                    const std::string& place) {
  const auto* key = std::get_if<std::string>(&step.place);
  const auto* dictionary = std::get_if<DictionaryParameter>(&collection);
  const auto* array = std::get_if<ArrayParameter>(&collection);
  if (dictionary == nullptr && array == nullptr)
    throw std::runtime_error(place + " is neither an array nor a dictionary");
  if (dictionary != nullptr && key != nullptr) return pairWithKey(*dictionary, *key, place);
  if (key != nullptr)
    throw std::runtime_error(place + " is an array, which has no key " + quoted(*key));
  return checkedIndex(std::get<std::int64_t>(step.place),
                      array != nullptr ? array->_items.size() : dictionary->_items.size(), most,
                      place, array != nullptr);
}

/// The parameter at `step` inside one. `place` names that one in messages.
const Parameter& parameterIn(const Parameter& collection, const Step& step,
                             const std::string& place) {
  const std::size_t index = indexAt(collection, step, 0, place);
  if (const auto* array = std::get_if<ArrayParameter>(&collection)) {
    if (step.side) throw std::runtime_error(place + " is an array, which has no pairs");
    return array->_items[index].value;
  }
  const auto& pair = std::get<DictionaryParameter>(collection)._items[index];
  if (!step.side && std::holds_alternative<std::int64_t>(step.place))
    throw std::runtime_error(place + " is a dictionary; after the index of a pair, \".key\" or " +
                             "\".value\" is required");
  return step.side == Side::key ? pair.key() : pair.value();
}

/// Whether a key stands for itself in an address.
bool isPlainKey(std::string_view key) {
  const auto isPlain = [](char c) { return isLetter(c) || isDigit(c) || c == '_' || c == '-'; };
  return !key.empty() && (isLetter(key.front()) || key.front() == '_') &&
         std::all_of(key.begin(), key.end(), isPlain) && !sideNamed(key) && key != kEnd;
}

}  // namespace

ParameterAddress parseParameterAddress(std::string_view text) { return AddressReader(text).read(); }

ItemAddress parseItemAddress(std::string_view text) {
  constexpr std::string_view kAtEnd = ".end";
  if (text.ends_with(kAtEnd))
    return {parseParameterAddress(text.substr(0, text.size() - kAtEnd.size())), std::nullopt};
  ItemAddress address = {parseParameterAddress(text), std::nullopt};
  std::vector<Step>& steps = address.collection.steps;
  if (steps.empty() || steps.back().side)
    refuse(text, "the address of an item or a pair, such as -1.0 or 2.tags.3");
  address.item = std::move(steps.back());
  steps.pop_back();
  return address;
}

const Parameter& parameterAt(const Hook& hook, const ParameterAddress& address) {
  const auto entry = hook._args.find(address.argument);
  std::size_t end = address.end;
  if (entry == hook._args.end())
    throw std::runtime_error("the hook has no parameter " + shown(address, end));
  const Parameter* current = &entry->second.value;
  for (const Step& step : address.steps) {
    current = &parameterIn(*current, step, shown(address, end));
    end = step.end;
  }
  return *current;
}

Parameter& parameterAt(Hook& hook, const ParameterAddress& address) {
  return const_cast<Parameter&>(parameterAt(std::as_const(hook), address));
}

std::size_t indexOfItem(const Parameter& collection, const ItemAddress& address, std::size_t most) {
  const std::string place = quoted(address.collection.shown());
  if (address.item) return indexAt(collection, *address.item, most, place);
  const auto* array = std::get_if<ArrayParameter>(&collection);
  if (array != nullptr) return array->_items.size();
  const auto* dictionary = std::get_if<DictionaryParameter>(&collection);
  if (dictionary != nullptr) return dictionary->_items.size();
  throw std::runtime_error(place + " is neither an array nor a dictionary");
}

std::vector<std::string> addressesOfValues(const DictionaryParameter& dictionary,
                                           const std::string& place) {
  std::unordered_map<std::string_view, std::size_t> counts;
  for (const auto& pair : dictionary._items) {
    if (const std::string* key = keyTextOf(pair)) ++counts[*key];
  }
  std::vector<std::string> addresses;
  for (const auto& pair : dictionary._items) {
    const std::string* key = keyTextOf(pair);
    if (key == nullptr || counts[*key] > 1) {
      addresses.push_back(place + "." + std::to_string(addresses.size()) + ".value");
    } else {
      addresses.push_back(place + (isPlainKey(*key) ? "." + *key : inBrackets(*key)));
    }
  }
  return addresses;
}

}  // namespace tavlen::cli
