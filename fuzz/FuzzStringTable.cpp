// Tables of translations, and the formats in them, are untrusted input.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/Budget.h"
#include "tavlen/foundation/errors/Placeholders.h"
#include "tavlen/foundation/errors/detail/StringTable.h"
#include "tavlen/foundation/text/Unicode.h"

namespace {

/// `text` as a quoted string of a table.
std::string quoted(std::string_view text) {
  std::string out = "\"";
  for (const char character : text) {
    if (character == '"' || character == '\\') out += '\\';
    out += character;
  }
  return out + "\"";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  std::optional<tavlen::StringTable> table;
  tavlen::fuzz::requireWithin({}, size, [&] { table = tavlen::StringTable::read(text); });
  const std::string* translated = table ? table->find("k") : nullptr;
  if (translated != nullptr && !tavlen::isValidUTF8(*translated)) std::abort();

  // The quoted form of any text reads back as that text.
  const auto written = tavlen::StringTable::parse(quoted(text) + "=" + quoted(text) + ";");
  const std::string* value = written ? written->find(text) : nullptr;
  if (value == nullptr || *value != text) std::abort();

  // Filling shortens a format by at most one character for each "%%": no placeholder is shorter
  // than these arguments.
  const std::vector<std::string> arguments(2, "%@");
  const std::string filled = tavlen::fillPlaceholders(text, arguments);
  if (filled.size() > size || filled.size() < size / 2) std::abort();
  return 0;
}
