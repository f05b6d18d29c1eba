#include "cli/arguments/ListPlace.h"

#include <charconv>
#include <stdexcept>

#include "cli/arguments/UsageError.h"

namespace tavlen::cli {

ListPlace parseListPlace(const std::string& text, const char* argument) {
  if (text == "end") return {};
  std::int64_t index = 0;
  const char* const last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, index);
  if (error != std::errc() || end != last)
    throw UsageError(argument, text + ": expected an index, or end");
  return {index};
}

std::size_t indexOf(const ListPlace& place, std::size_t count) {
  if (!place.index) return count - 1;
  if (*place.index >= 0 && static_cast<std::uint64_t>(*place.index) < count)
    return static_cast<std::size_t>(*place.index);
  throw std::runtime_error("no place " + std::to_string(*place.index) +
                           " in the list; the last is " + std::to_string(count - 1));
}

}  // namespace tavlen::cli
