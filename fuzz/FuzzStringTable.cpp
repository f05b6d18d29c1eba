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
  tavlen::fuzz::requireWithin({}, size, [&] { table = tavlen::StringTable::parse(text); });
  if (table && tavlen::isValidUTF8(text)) {
    const std::string* value = table->find("k");
    if (value != nullptr && !tavlen::isValidUTF8(*value)) std::abort();
  }

  // The quoted form of any text reads back as that text.
  const auto written = tavlen::StringTable::parse(quoted(text) + "=" + quoted(text) + ";");
  const std::string* value = written ? written->find(text) : nullptr;
  if (value == nullptr || *value != text) std::abort();

  // Filling shortens a format by at most one character for each "%%": no placeholder is shorter
  // than these arguments.
  const std::string plain = tavlen::fillPlaceholders(text, {});
  if (plain.size() > size || plain.size() < size / 2) std::abort();
  const std::vector<std::string> arguments(2, "%@");
  if (tavlen::fillPlaceholders(text, arguments).size() > size) std::abort();
  return 0;
}
