#include "tavlen/foundation/toml/TOMLReader.h"

namespace tavlen {

namespace {

/// Called where a condition does not hold that the library takes for granted. Those on the next
/// character it checks again, and then says what it expects.
void failAssertion(std::string_view condition) {
  if (condition.find("*cp") == std::string_view::npos)
    throw TOMLError({}, "malformed: " + std::string(condition));
}

}  // namespace

}  // namespace tavlen

// Release builds of the library turn its assertions into promises to the compiler, but malformed
// texts can break them.
#undef NDEBUG
#define TOML_ASSERT(condition) ((condition) ? void() : tavlen::failAssertion(#condition))
// The library's own limit counts brackets only; detail/TOMLPrescan.h counts all containers.
#define TOML_MAX_NESTED_VALUES 1024
#define TOML_HEADER_ONLY 1
#define TOML_ENABLE_FORMATTERS 0
#include <toml++/toml.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

#include "tavlen/foundation/base/Limits.h"
#include "tavlen/foundation/text/Unicode.h"
#include "tavlen/foundation/toml/detail/TOMLPrescan.h"

namespace tavlen {

namespace {

static_assert(limits::kJSONDepth <= TOML_MAX_NESTED_VALUES);

bool precedes(TextPosition left, TextPosition right) {
  return std::pair(left.line, left.column) < std::pair(right.line, right.column);
}

TextPosition positionOf(const toml::source_region& region) {
  return {region.begin.line, region.begin.column};
}

/// The digits of a decimal integer that the library finds too large; empty for other errors.
std::string_view tooLargeInteger(std::string_view error) {
  constexpr std::string_view kBefore = "decimal integer: '";
  constexpr std::string_view kAfter = "' is not representable";
  const std::size_t begin = error.find(kBefore);
  const std::size_t end = error.find(kAfter);
  if (begin == std::string_view::npos || end == std::string_view::npos) return {};
  return error.substr(begin + kBefore.size(), end - begin - kBefore.size());
}

Date dateFrom(const toml::date_time& value, TextPosition position) {
  using namespace std::chrono;
  if (!value.offset)
    throw TOMLError(position, "expected an offset after the date and time, such as Z or +01:00");
  const sys_days day = year_month_day(year(value.date.year), month(value.date.month),
                                      std::chrono::day(value.date.day));
  const auto time = hours(value.time.hour) + minutes(value.time.minute) +
                    seconds(value.time.second) - minutes(value.offset->minutes);
  constexpr double kNanoseconds = 1e9;
  const auto whole = duration_cast<seconds>(day.time_since_epoch() + time).count();
  return {static_cast<double>(whole) - Date::kSecondsFrom1970To2001 +
          value.time.nanosecond / kNanoseconds};
}

/// Makes nodes of those of the library; one overload for each kind.
struct Converter {
  TextPosition position;

  TOMLNode::Value operator()(toml::table& table) const;
  TOMLNode::Value operator()(toml::array& array) const;
  TOMLNode::Value operator()(toml::value<std::string>& text) const { return std::move(*text); }
  TOMLNode::Value operator()(toml::value<toml::date_time>& date) const {
    return dateFrom(*date, position);
  }
  TOMLNode::Value operator()(toml::value<toml::date>& /*date*/) const { return failTime(); }
  TOMLNode::Value operator()(toml::value<toml::time>& /*time*/) const { return failTime(); }
  template <class Plain>
  TOMLNode::Value operator()(toml::value<Plain>& plain) const {
    return *plain;
  }

 private:
  [[noreturn]] TOMLNode::Value failTime() const {
    throw TOMLError(position,
                    "expected a point in time with an offset, such as 2026-01-31T12:00:00Z");
  }
};

TOMLNode nodeFrom(toml::node& node) {
  const TextPosition position = positionOf(node.source());
  return {node.visit(Converter{position}), position};
}

TOMLNode::Table tableFrom(toml::table& table) {
  TOMLNode::Table members;
  members.reserve(table.size());
  for (auto&& [key, value] : table)
    members.push_back({std::string(key.str()), nodeFrom(value), positionOf(key.source())});
  // The library sorts by keys.
  std::sort(members.begin(), members.end(), [](const auto& left, const auto& right) {
    return precedes(left.position, right.position);
  });
  return members;
}

TOMLNode::Value Converter::operator()(toml::table& table) const { return tableFrom(table); }

TOMLNode::Value Converter::operator()(toml::array& array) const {
  TOMLNode::Array items;
  items.reserve(array.size());
  for (toml::node& item : array) items.push_back(nodeFrom(item));
  return items;
}

}  // namespace

TOMLNode::Table readTOML(std::string_view text) {
  if (text.size() > limits::kDocumentBytes) {
    throw TOMLError({}, "more than " + std::to_string(limits::kDocumentBytes) + " bytes");
  }
  const std::size_t valid = validUTF8Length(text);
  if (valid < text.size()) throw TOMLError(TextPosition::at(text, valid), "is not UTF-8");
  const std::optional<UnclosedString> unclosed = prescanTOML(text);
  try {
    toml::table root = toml::parse(text);
    return tableFrom(root);
  } catch (const toml::parse_error& error) {
    const TextPosition position = positionOf(error.source());
    if (unclosed && precedes(unclosed->begin, position)) throw TOMLError(unclosed->error);
    std::string message(error.description());
    if (std::string integer(tooLargeInteger(message)); !integer.empty())
      throw TOMLIntegerError(position, std::move(message), std::move(integer));
    throw TOMLError(position, std::move(message));
  }
}

}  // namespace tavlen
