#include "tavlen/foundation/json/JSONDecoder.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/json/detail/IgnoredKeyLog.h"
#include "tavlen/foundation/json/detail/JSONNumber.h"
#include "tavlen/foundation/json/detail/JSONScanner.h"
#include "tavlen/foundation/json/detail/JSONText.h"
#include "tavlen/foundation/text/Characters.h"

namespace tavlen {

namespace {

class JSONDecoder final : public Decoder {
 public:
  /// `log` may be null.
  JSONDecoder(std::string_view text, IgnoredKeyLog* log) : scanner_(text), log_(log) {}

  /// Reads the whole document.
  void readAll(FunctionRef<void(Decoder&)> read) {
    scanner_.peek();
    const char* const begin = scanner_.position();
    try {
      read(*this);
    } catch (DecodingError& error) {
      if (!error.position())
        error.setPosition(scanner_.textPositionOf(faulty_ != nullptr ? faulty_ : begin));
      throw;
    }
    if (!scanner_.atEnd()) scanner_.fail("unexpected text after the document");
  }

  bool null() override {
    if (scanner_.peek() != 'n') return false;
    scanner_.literal("null");
    return true;
  }

  bool boolean() override {
    const char first = scanner_.peek();
    if (first != 't' && first != 'f') {
      // The platform reports a null as the wrong type for a Boolean, and as a missing value for
      // every other type.
      if (first == 'n') throw DecodingError::typeMismatch("a Boolean", "null");
      mismatch("a Boolean");
    }
    scanner_.literal(first == 't' ? "true" : "false");
    return first == 't';
  }

  std::int64_t integer() override { return int64FromJSONNumber(number("an integer")); }
  std::uint64_t unsignedInteger() override {
    return uint64FromJSONNumber(number("an unsigned integer"));
  }
  double real() override { return doubleFromJSONNumber(number("a number")); }
  Date date() override { return {doubleFromJSONNumber(number("a date as a number"))}; }

  std::string string() override {
    expect('"', "a string");
    std::string text;
    scanner_.string(text);
    return text;
  }

  void record(std::span<const FieldDecoder> fields, void* record) override {
    scanner_.peek();
    Known known{fields, {}};
    if (scanner_.position() == peekedAt_) known.peeked = wanted_;
    std::uint64_t seen = 0;
    std::size_t next = 0;
    const auto keyAt = [&](std::size_t index) {
      return index < fields.size() ? fields[index].key : std::string_view();
    };
    std::string_view expected = known.peeked.value_or(keyAt(0));
    object(
        expected,
        [&](std::string_view key) {
          const std::size_t index = indexOf(fields, key, next);
          const bool isRead = index < fields.size() && (seen >> index & 1) == 0;
          if (isRead) next = index + 1;
          expected = keyAt(next);
          if (!isRead) return;
          seen |= std::uint64_t{1} << index;
          underKey(fields[index].key, [&] { fields[index].decode(*this, record); });
        },
        [&](std::string_view key) { logIgnored(key, known); });
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (fields[i].required && (seen >> i & 1) == 0)
        throw DecodingError::keyNotFound(fields[i].key);
    }
  }

  void members(FunctionRef<void(std::string_view)> member) override {
    // A member is left unread only if the key stands a second time.
    object(
        {}, [&](std::string_view key) { underKey(key, [&] { member(key); }); },
        [&](std::string_view key) { log_->addRepeated(key, scanner_.lastKey()); });
  }

  void elements(FunctionRef<void()> element) override {
    expect('[', "an array");
    if (!scanner_.open(']')) return;
    std::size_t index = 0;
    do {
      if (log_ != nullptr) log_->enterIndex(index);
      underIndex(index++, [&] { readOrSkip(element); });
      if (log_ != nullptr) log_->leave();
    } while (scanner_.next(']'));
  }

  std::string_view peekString(std::string_view wanted) override {
    expect('{', "a dictionary");
    const char* const position = scanner_.position();
    const std::size_t depth = scanner_.depth();
    peekedAt_ = position;
    wanted_ = wanted;
    for (bool more = scanner_.open('}'); more; more = scanner_.next('}')) {
      if (!scanner_.passKey(wanted) && scanner_.key(peekedKey_) != wanted) {
        scanner_.skipValueAhead();
        continue;
      }
      const std::string_view text = underKey(wanted, [&] {
        expect('"', "a string");
        return scanner_.stringView(peekedText_);
      });
      scanner_.setPosition(position);
      scanner_.setDepth(depth);
      return text;
    }
    throw DecodingError::keyNotFound(wanted);
  }

  bool attempt(FunctionRef<void()> read) override {
    const char* const position = scanner_.position();
    const std::size_t depth = scanner_.depth();
    const std::size_t values = values_;
    const auto mark = log_ != nullptr ? std::optional(log_->mark()) : std::nullopt;
    try {
      read();
      return true;
    } catch (const DecodingError&) {
      values_ = values;
      faulty_ = nullptr;
      if (mark) log_->returnTo(*mark);
      scanner_.setPosition(position);
      scanner_.setDepth(depth);
      return false;
    }
  }

 private:
  /// The keys that are read in an object.
  struct Known {
    std::span<const FieldDecoder> fields;
    std::optional<std::string_view> peeked;  ///< a further key, whose text was peeked at
    bool sawPeeked = false;                  ///< whether that key was passed
  };

  /// Tables are short and documents are usually in their order, so start the search after the row
  /// found last.
  static std::size_t indexOf(std::span<const FieldDecoder> fields, std::string_view key,
                             std::size_t next) {
    if (next < fields.size()) {
      // The expected key is that of the table, so its place says enough.
      const std::string_view likely = fields[next].key;
      if (likely.data() == key.data() || likely == key) return next;
    }
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (fields[i].key == key) return i;
    }
    return fields.size();
  }

  void logIgnored(std::string_view key, Known& known) {
    if (key == known.peeked && !std::exchange(known.sawPeeked, true)) return;
    std::vector<std::string_view> keys;
    if (known.peeked) keys.push_back(*known.peeked);
    for (const FieldDecoder& field : known.fields) keys.push_back(field.key);
    if (std::find(keys.begin(), keys.end(), key) != keys.end()) {
      log_->addRepeated(key, scanner_.lastKey());
    } else {
      log_->addUnknown(key, scanner_.lastKey(), keys);
    }
  }

  /// Calls `ignored` for members that `member` does not read, if they are to be logged. `expected`
  /// is the likely key, which `member` may change to that of the next.
  template <class Member, class Ignored>
  void object(const std::string_view& expected, Member&& member, Ignored&& ignored) {
    expect('{', "a dictionary");
    if (!scanner_.open('}')) return;
    // Local storage for a key with escapes: reading the member may read other keys.
    std::string storage;
    do {
      const std::string_view likely = expected;
      const std::string_view key = scanner_.passKey(likely) ? likely : scanner_.key(storage);
      if (log_ == nullptr) {
        readOrSkip([&] { member(key); });
        continue;
      }
      log_->enterKey(key);
      const bool isRead = readOrSkip([&] { member(key); });
      log_->leave();
      if (!isRead) ignored(key);
    } while (scanner_.next('}'));
  }

  /// Returns whether the value was read.
  template <class Read>
  bool readOrSkip(Read&& read) {
    scanner_.peek();
    if (++values_ > limits::kJSONValues) failValues();
    const char* const position = scanner_.position();
    try {
      read();
    } catch (const DecodingError&) {
      if (faulty_ == nullptr) faulty_ = position;
      throw;
    }
    if (scanner_.position() != position) return true;
    scanner_.skipValue();
    return false;
  }

  [[noreturn]] void failValues() const {
    scanner_.fail("more than " + std::to_string(limits::kJSONValues) + " values");
  }

  std::string_view number(std::string_view expected) {
    const char first = scanner_.peek();
    if (first != '-' && !isDigit(first)) mismatch(expected);
    return scanner_.number();
  }

  void expect(char first, std::string_view expected) {
    if (scanner_.peek() != first) mismatch(expected);
  }

  [[noreturn]] void mismatch(std::string_view expected) {
    switch (scanner_.peek()) {
      case 'n':
        scanner_.literal("null");
        throw DecodingError::valueNotFound(expected);
      case 't':
        scanner_.literal("true");
        throw DecodingError::typeMismatch(expected, "a Boolean");
      case 'f':
        scanner_.literal("false");
        throw DecodingError::typeMismatch(expected, "a Boolean");
      case '"':
        throw DecodingError::typeMismatch(expected, "a string");
      case '{':
        throw DecodingError::typeMismatch(expected, "a dictionary");
      case '[':
        throw DecodingError::typeMismatch(expected, "an array");
      default:
        break;
    }
    const char* const position = scanner_.position();
    scanner_.skipValue();  // fails where no value begins
    scanner_.setPosition(position);
    throw DecodingError::typeMismatch(expected, "a number");
  }

  JSONScanner scanner_;
  std::size_t values_ = 1;  ///< the document's own, and those passed in it
  std::string peekedKey_;
  std::string peekedText_;
  const char* peekedAt_ = nullptr;  ///< the object of the last peekString()
  std::string_view wanted_;         ///< its key
  IgnoredKeyLog* log_;
  const char* faulty_ = nullptr;  ///< the innermost value whose reading threw
};

}  // namespace

void readJSON(std::string_view bytes, FunctionRef<void(Decoder&)> read) {
  const JSONText text(bytes);
  JSONDecoder decoder(text.view(), nullptr);
  decoder.readAll(read);
}

void readJSON(std::string_view bytes, FunctionRef<void(Decoder&)> read, IgnoredKeys& ignored) {
  const JSONText text(bytes);
  IgnoredKeyLog log(text.view(), ignored);
  JSONDecoder decoder(text.view(), &log);
  decoder.readAll(read);
}

}  // namespace tavlen
