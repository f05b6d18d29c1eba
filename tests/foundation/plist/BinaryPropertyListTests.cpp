#include <limits>

#include "tavlen/foundation/plist/BinaryPropertyListWriter.h"
#include "tavlen/foundation/plist/detail/BinaryPropertyListReader.h"
#include "tests/foundation/plist/PropertyLists.h"
#include "tests/support/TableFile.h"

namespace tavlen {
namespace {

using namespace std::literals;
using Index = PropertyList::Index;

std::string bigEndian(std::uint64_t value, std::size_t size) {
  std::string bytes;
  for (std::size_t i = size; i-- > 0;) bytes += static_cast<char>(value >> (8 * i) & 0xFF);
  return bytes;
}

std::string assemble(const std::vector<std::string>& objects, std::size_t referenceSize = 1) {
  std::string bytes = "bplist00";
  std::string table;
  for (const std::string& object : objects) {
    table += bigEndian(bytes.size(), 8);
    bytes += object;
  }
  const std::size_t tableOffset = bytes.size();
  bytes += table + std::string(6, '\0') + bigEndian(8, 1) + bigEndian(referenceSize, 1);
  return bytes + bigEndian(objects.size(), 8) + bigEndian(0, 8) + bigEndian(tableOffset, 8);
}

bool isRefused(const std::string& bytes) { return !refusal(bytes, readBinaryPropertyList).empty(); }

PropertyList inArray(const PropertyList::Node& node) {
  PropertyList list;
  list.add(PropertyList::Array{Indices{1}});
  list.add(node);
  return list;
}

TEST(BinaryPropertyList, scalarsHaveTheirBytes) {
  const std::string kLong(256, 'x');
  constexpr auto kLeast = std::numeric_limits<std::int64_t>::min();
  const std::pair<PropertyList::Node, std::string> rows[] = {
      {true, "\x09"},
      {false, "\x08"},
      {std::int64_t{0}, "\x10\0"s},
      {std::int64_t{255}, "\x10\xFF"},
      {std::int64_t{256}, "\x11\x01\0"s},
      {std::int64_t{65536}, "\x12\0\x01\0\0"s},
      {std::int64_t{1} << 32, "\x13\0\0\0\x01\0\0\0\0"s},
      {std::int64_t{-1}, "\x13" + std::string(8, '\xFF')},
      {kLeast, "\x13\x80" + std::string(7, '\0')},
      {std::uint64_t{5}, "\x14" + std::string(15, '\0') + "\x05"},
      {std::numeric_limits<std::uint64_t>::max(),
       "\x14" + std::string(8, '\0') + std::string(8, '\xFF')},
      {1.0, "\x23\x3F\xF0" + std::string(6, '\0')},
      {-0.0, "\x23\x80" + std::string(7, '\0')},
      {Date{-1.5}, "\x33\xBF\xF8" + std::string(6, '\0')},
      {PropertyList::Data{"\0\xFF"sv}, "\x42\0\xFF"s},
      {PropertyList::Data{"xxxxxxxxxxxxxxx"}, "\x4F\x10\x0F" + std::string(15, 'x')},
      {"", "\x50"},
      {"a\0b"sv, "\x53"s + "a\0b"s},
      {kLong, "\x5F\x11\x01\0"s + std::string(256, 'x')},
      {"é", "\x61\0\xE9"s},
      {"😀", "\x62\xD8\x3D\xDE\0"s},
      {PropertyList::UID{255}, "\x80\xFF"},
      {PropertyList::UID{256}, "\x81\x01\0"s},
      {PropertyList::UID{65536}, "\x83\0\x01\0\0"s},
      {PropertyList::Array{}, "\xA0"},
      {PropertyList::Dictionary{}, "\xD0"}};
  for (const auto& [value, bytes] : rows) {
    SCOPED_TRACE(testing::PrintToString(bytes));
    const std::string written = writeBinaryPropertyList(inArray(value));
    EXPECT_EQ(written.substr(10, bytes.size()), bytes);
    EXPECT_TRUE(sameGraph(readBinaryPropertyList(written), inArray(value)));
  }
  const auto readOne = [](const std::string& object) {
    return readBinaryPropertyList(assemble({object}));
  };
  EXPECT_EQ(readOne("\x22\x3F\x80\0\0"s).get<double>(0), 1.0);
  EXPECT_EQ(readOne("\x13" + std::string(7, '\0') + "\x07").get<std::int64_t>(0), 7);
  EXPECT_EQ(readOne("\x14" + std::string(16, '\xFF')).get<std::int64_t>(0), -1);
  EXPECT_EQ(readOne("\x82\0\0\x01"s).get<PropertyList::UID>(0)->value, 1U);
  EXPECT_EQ(readOne("\x5F\x10\x01z").string(0), "z");
}

TEST(BinaryPropertyList, writesEqualScalarsOnceInPreOrder) {
  PropertyList list;
  const Index text = list.add("t"s);
  const Index sameText = list.add("t"s);
  const Index one = list.add(std::int64_t{1});
  const Index sameOne = list.add(std::int64_t{1});
  const Index realOne = list.add(1.0);
  const Index unsignedOne = list.add(std::uint64_t{1});
  const Index data = list.add(PropertyList::Data{"t"});
  const Index inner = list.add(PropertyList::Dictionary{Members{{text, one}, {sameText, realOne}}});
  list.add("nobody reaches this"s);
  list.setRoot(list.add(PropertyList::Array{Indices{sameOne, inner, data, unsignedOne, inner}}));
  EXPECT_EQ(writeBinaryPropertyList(list).substr(8, 6 + 2 + 5),
            "\xA5\x01\x02\x05\x06\x02"s + "\x10\x01" + "\xD2\x03\x03\x01\x04");
  EXPECT_TRUE(sameGraph(readBinaryPropertyList(writeBinaryPropertyList(list)), list));
  EXPECT_EQ(list.find(inner, "t"), realOne);  // the last of equal keys
  EXPECT_EQ(list.find(inner, "u"), std::nullopt);
  EXPECT_EQ(list.find(one, "t"), std::nullopt);

  // 255 objects still have references of one byte.
  for (const std::size_t count : {255U, 256U, 65536U}) {
    Indices numbers;
    PropertyList wide;
    while (wide.size() < count - 1) {
      numbers.push_back(wide.add(static_cast<std::int64_t>(wide.size())));
    }
    wide.setRoot(wide.add(PropertyList::Array{numbers}));
    const std::string bytes = writeBinaryPropertyList(wide);
    EXPECT_EQ(bytes[bytes.size() - 25], count == 255 ? 1 : count == 256 ? 2 : 4) << count;
    EXPECT_TRUE(sameGraph(readBinaryPropertyList(bytes), wide)) << count;
  }

  EXPECT_THROW(writeBinaryPropertyList(inArray("\xFF"s)), EncodingError);
}

TEST(BinaryPropertyList, graphsKeepTheirShape) {
  PropertyList cycle;
  cycle.add("self"s);
  cycle.add(PropertyList::Dictionary{Members{{0, 2}}});
  cycle.setRoot(cycle.add(PropertyList::Array{Indices{1, 2}}));
  EXPECT_TRUE(sameGraph(readBinaryPropertyList(writeBinaryPropertyList(cycle)), cycle));

  std::vector<std::string> bomb;  // each array holds the next one twice
  for (char i = 1; i < 25; ++i) bomb.push_back("\xA2"s + i + i);
  bomb.emplace_back("\x51z");
  EXPECT_EQ(readBinaryPropertyList(assemble(bomb)).size(), 25U);

  PropertyList deep;
  for (Index i = 1; i < 1'000'000; ++i) deep.add(PropertyList::Array{Indices{i}});
  deep.add(PropertyList::Array{});
  EXPECT_TRUE(sameGraph(readBinaryPropertyList(writeBinaryPropertyList(deep)), deep));
}

TEST(BinaryPropertyList, refusesHostileObjects) {
  EXPECT_FALSE(isRefused(assemble({"\x50"})));
  for (const auto& row : tableFrom("plist/hostile-objects.txt", 1)) {
    std::vector<std::string> objects;
    for (const std::string& object : row) objects.push_back(fromHex(object));
    EXPECT_TRUE(isRefused(assemble(objects))) << row[0];
  }
  // With references of 8 bytes the length of 2^61 of them is nothing.
  EXPECT_TRUE(isRefused(assemble({"\xAF\x13\x20" + std::string(7, '\0')}, 8)));
}

TEST(BinaryPropertyList, refusesHostileTrailers) {
  const std::string good = assemble({"\xA1\x01", "\x51z"});
  ASSERT_FALSE(isRefused(good));
  const std::size_t trailer = good.size() - 32;
  const std::pair<std::size_t, std::string> rows[] = {
      {0, "bplist1"},
      {trailer + 6, "\0"s},  // widths
      {trailer + 6, "\x09"},
      {trailer + 7, "\0"s},
      {trailer + 7, "\x09"},
      {trailer + 8, bigEndian(0, 8)},  // numbers of objects
      {trailer + 8, bigEndian(3, 8)},
      {trailer + 8, bigEndian(1ULL << 61, 8)},  // times eight is nothing
      {trailer + 8, bigEndian(~0ULL, 8)},
      {trailer + 16, bigEndian(2, 8)},  // roots
      {trailer + 24, bigEndian(7, 8)},  // offsets of the table
      {trailer + 24, bigEndian(good.size() - 31, 8)},
      {trailer + 24, bigEndian(~0ULL, 8)},
      {trailer - 8, bigEndian(7, 8)},  // offsets of objects
      {trailer - 8, bigEndian(trailer - 16, 8)},
      {trailer - 8, bigEndian(~0ULL, 8)}};
  for (const auto& [offset, bytes] : rows) {
    std::string bad = good;
    bad.replace(offset, bytes.size(), bytes);
    EXPECT_TRUE(isRefused(bad)) << offset << " " << testing::PrintToString(bytes);
  }
  // A hundred thousand entries for one long text would be ten gigabytes.
  std::string shared = "bplist00\x4F\x12" + bigEndian(100'000, 4) + std::string(100'000, 'x');
  const std::size_t tableOffset = shared.size();
  shared += std::string(100'000, '\x08') + std::string(6, '\0') + "\x01\x01";
  shared += bigEndian(100'000, 8) + bigEndian(0, 8) + bigEndian(tableOffset, 8);
  EXPECT_TRUE(isRefused(shared));
}

}  // namespace
}  // namespace tavlen
