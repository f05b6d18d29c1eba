#include "cli/arguments/ParameterAddress.h"

#include <charconv>
#include <string>

#include "cli/arguments/UsageError.h"
#include "tavlen/editing/ArrayParameterManager.h"
#include "tavlen/editing/RootParameterManager.h"

namespace tavlen::cli {

namespace {

using Accessor = DictionaryParameterManager::Accessor;

constexpr const char* kArgument = "ADDRESS";
/// The nesting limit of stored documents.
constexpr std::size_t kMostSteps = 512;

[[noreturn]] void refuse(const char* argument, std::string_view text, const std::string& expected) {
  throw UsageError(argument, std::string(text) + ": expected " + expected);
}

std::optional<std::int64_t> wholeNumber(std::string_view text) {
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

/// Removes the first part and its full stop from `rest` and returns the part; nothing after the
/// last one.
std::optional<std::string_view> takePart(std::optional<std::string_view>& rest) {
  if (!rest) return std::nullopt;
  const std::size_t dot = rest->find('.');
  const std::string_view part = rest->substr(0, dot);
  rest = dot == std::string_view::npos ? std::nullopt
                                       : std::optional<std::string_view>(rest->substr(dot + 1));
  return part;
}

std::optional<Accessor> accessorNamed(std::string_view text) {
  if (text == "key") return Accessor::key;
  if (text == "value") return Accessor::value;
  return std::nullopt;
}

}  // namespace

ParameterAddress parseParameterAddress(std::string_view text) {
  const auto fail = [&] { refuse(kArgument, text, "an address such as -1, 0.3 or 2.0.value.3"); };
  std::optional<std::string_view> rest = text;
  ParameterAddress address;
  bool isFirst = true;
  while (const auto part = takePart(rest)) {
    if (const auto number = wholeNumber(*part)) {
      if (isFirst) {
        address.argument = *number;
      } else {
        address.steps.push_back({*number, std::nullopt});
      }
    } else {
      const auto accessor = accessorNamed(*part);
      if (!accessor || address.steps.empty() || address.steps.back().accessor) fail();
      address.steps.back().accessor = accessor;
    }
    if (address.steps.size() > kMostSteps) fail();
    isFirst = false;
  }
  return address;
}

ItemAddress parseItemAddress(std::string_view text) {
  const std::size_t dot = text.rfind('.');
  const std::string_view last = dot == std::string_view::npos ? "" : text.substr(dot + 1);
  const std::optional<std::int64_t> index = wholeNumber(last);
  if (!index && last != "end")
    refuse(kArgument, text, "the address of an item or a pair, such as -1.0 or 2.0.value.end");
  return {parseParameterAddress(text.substr(0, dot)), index};
}

std::int64_t parseIndex(std::string_view text, const char* argument) {
  const std::optional<std::int64_t> index = wholeNumber(text);
  if (!index) refuse(argument, text, "an index");
  return *index;
}

std::shared_ptr<const ParameterManager> managerAt(const HookManager& hook,
                                                  const ParameterAddress& address) {
  std::shared_ptr<const ParameterManager> link =
      RootParameterManager(hook, address.argument).shared();
  for (const ParameterAddress::Step& step : address.steps) {
    if (step.accessor) {
      link = DictionaryParameterManager(TypedParameterManager<DictionaryParameter>(link),
                                        step.index, *step.accessor)
                 .shared();
    } else {
      link =
          ArrayParameterManager(TypedParameterManager<ArrayParameter>(link), step.index).shared();
    }
  }
  return link;
}

}  // namespace tavlen::cli
