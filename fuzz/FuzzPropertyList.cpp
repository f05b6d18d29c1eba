// Any property list that can be read can be written, reads back as the same list, and is decoded
// with memory and time in proportion to its bytes, also in a long array of references to it.
#include <libxml/xmlmemory.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/Budget.h"
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

void* reallocate(void* block, std::size_t size) {
  void* const moved = ::operator new(size);
  if (block != nullptr) {
    std::memcpy(moved, block, std::min(size, ::malloc_usable_size(block)));
    ::operator delete(block);
  }
  return moved;
}

char* duplicate(const char* text) {
  const std::size_t size = std::strlen(text) + 1;
  return static_cast<char*>(std::memcpy(::operator new(size), text, size));
}

/// The XML library's memory is counted with that of the reader.
const bool kIsXMLCounted = ::xmlMemSetup([](void* block) { ::operator delete(block); },
                                         [](std::size_t size) { return ::operator new(size); },
                                         reallocate, duplicate) == 0;

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

template <class T>
void decodeAs(const PropertyList& list) {
  try {
    PropertyListDecoder decoder(list);
    T value{};
    decode(decoder, value);
  } catch (const DecodingError&) {
    // Refused, which is an answer.
  }
}

/// Reads and decodes `bytes` within the budget of accepted lists, and of refused ones, too.
void readWithinBudget(std::string_view bytes) {
  fuzz::requireWithin({}, bytes.size(), [&] {
    const PropertyList list = readPropertyList(bytes);
    decodeAs<Record>(list);
    decodeAs<std::vector<Record>>(list);
    decodeAs<std::vector<std::string>>(list);
    decodeAs<std::vector<std::vector<std::string>>>(list);
  });
}

/// Binary, with many references of a byte each to the root of `list`, where it is small.
std::string referredToOften(PropertyList list) {
  constexpr std::size_t kReferences = std::size_t{1} << 18;
  const std::vector<PropertyList::Index> root(kReferences, list.root());
  list.setRoot(list.add(PropertyList::Array{root}));
  return writePropertyList(list, PropertyListFormat::binary);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  require(kIsXMLCounted);
  try {
    const PropertyList list =
        readPropertyList(std::string_view(reinterpret_cast<const char*>(data), size));
    requireSameAfterWriting(list);
    readWithinBudget(std::string_view(reinterpret_cast<const char*>(data), size));
    readWithinBudget(referredToOften(list));
  } catch (const DecodingError&) {
    // Refusing the input is fine.
  }
  return 0;
}
