// Any property list that can be read can be written, reads back as the same list, and is decoded in
// finite time.
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavlen/foundation/plist/PropertyListDecoder.h"
#include "tests/foundation/plist/PropertyListGraph.h"

using namespace tavlen;

namespace {

struct Record {
  std::optional<std::string> name;
  std::optional<std::vector<Record>> items;
  std::optional<std::vector<std::uint64_t>> sizes;
  std::optional<std::vector<std::optional<double>>> reals;
  std::optional<Date> date;
  static constexpr auto codedFields() {
    return std::tuple{optionalField("a", &Record::name), optionalField("b", &Record::items),
                      optionalField("c", &Record::sizes), optionalField("d", &Record::reals),
                      optionalField("e", &Record::date)};
  }
};

void require(bool condition) {
  if (!condition) std::abort();
}

void requireSameAfterWriting(const PropertyList& list) {
  const std::string binary = writePropertyList(list, PropertyListFormat::binary);
  const PropertyList again = readPropertyList(binary);
  require(sameGraph(list, again));
  require(writePropertyList(again, PropertyListFormat::binary) == binary);
  std::string xml;
  try {
    xml = writePropertyList(list, PropertyListFormat::xml);
  } catch (const EncodingError&) {
    return;  // XML holds less: no cycles, no control characters
  }
  // Compare the texts: XML does not keep the 16-byte form of small integers or fractions of dates.
  require(writePropertyList(readPropertyList(xml), PropertyListFormat::xml) == xml);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    const PropertyList list =
        readPropertyList(std::string_view(reinterpret_cast<const char*>(data), size));
    requireSameAfterWriting(list);
    PropertyListDecoder decoder(list);
    Record record;
    decode(decoder, record);
  } catch (const DecodingError&) {
    // Refusing the input is fine.
  }
  return 0;
}
