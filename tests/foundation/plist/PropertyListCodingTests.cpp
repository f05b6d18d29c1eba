#include <functional>
#include <limits>

#include "tavlen/foundation/plist/PropertyListDecoder.h"
#include "tavlen/foundation/plist/PropertyListEncoder.h"
#include "tests/foundation/plist/PropertyLists.h"
#include "tests/support/TableFile.h"

namespace tavlen {
namespace {

using namespace std::string_literals;
using Case = DecodingError::Case;
using Index = PropertyList::Index;

struct Scalars {
  bool flag = false;
  std::int64_t count = 0;
  std::uint64_t size = 0;
  double ratio = 0;
  std::string text;
  Date date;
  bool operator==(const Scalars&) const = default;
  static constexpr auto codedFields() {
    return std::tuple{
        requiredField("flag", &Scalars::flag), requiredField("count", &Scalars::count),
        requiredField("size", &Scalars::size), requiredField("ratio", &Scalars::ratio),
        requiredField("text", &Scalars::text), requiredField("date", &Scalars::date)};
  }
};

struct Tree {
  std::optional<std::string> name;
  std::vector<Tree> children;
  std::optional<std::vector<std::optional<std::int64_t>>> numbers;
  bool operator==(const Tree& other) const {
    return name == other.name && children == other.children && numbers == other.numbers;
  }
  static constexpr auto codedFields() {
    return std::tuple{optionalField("name", &Tree::name),
                      requiredField("children", &Tree::children),
                      optionalField("numbers", &Tree::numbers)};
  }
};

/// The error of `body` as "case path: text", or nothing.
template <class Body>
std::string errorOf(const Body& body) {
  try {
    body();
    return "";
  } catch (const DecodingError& error) {
    static const char* const kCases[] = {"key ", "type ", "null ", "data "};
    return kCases[static_cast<int>(error.which())] + error.description();
  } catch (const EncodingError& error) {
    return "encoding " + error.description();
  }
}

PropertyList nestedArrays(std::size_t depth) {
  PropertyList list;
  for (Index i = 1; i < depth; ++i) list.add(PropertyList::Array{Indices{i}});
  list.add(PropertyList::Array{});
  return list;
}

void readNested(Decoder& decoder) {
  decoder.elements([&] { readNested(decoder); });
}

TEST(PropertyListCoding, roundTrip) {
  const Scalars scalars{true,
                        std::numeric_limits<std::int64_t>::min(),
                        std::numeric_limits<std::uint64_t>::max(),
                        0.1,
                        "a\r\n<é😀>",
                        Date{86400}};
  const Tree tree{"root", {{{}, {}, {{1, {}, -3}}}, {"", {}, {}}}, {}};
  for (const auto format : {PropertyListFormat::binary, PropertyListFormat::xml}) {
    EXPECT_EQ(decodePropertyList<Scalars>(encodePropertyList(scalars, format)), scalars);
    EXPECT_EQ(decodePropertyList<Tree>(encodePropertyList(tree, format)), tree);
  }
  // A null is a string; an absent field is left out; a record keeps its order.
  Tree withNull;
  withNull.numbers.emplace(1);
  EXPECT_EQ(encodePropertyList(std::vector<Tree>{withNull}).substr(0, 44),
            "bplist00\xA1\x01\xD2\x02\x03\x04\x05\x58"s + "children" + "\x57numbers" +
                "\xA0\xA1\x06\x55$null" + "\x08\x0A\x0F");
}

TEST(PropertyListCoding, typedRules) {
  const auto ask = [](const PropertyList& list) {
    std::string answers;
    const auto add = [&](auto read) {
      PropertyListDecoder decoder(list);
      const std::string error = errorOf([&] { answers += read(decoder) + " "; });
      if (!error.empty()) answers += error.substr(0, 1) + " ";
    };
    add([](Decoder& d) { return d.boolean() ? "true"s : "false"s; });
    add([](Decoder& d) { return std::to_string(d.integer()); });
    add([](Decoder& d) { return std::to_string(d.unsignedInteger()); });
    add([](Decoder& d) { return std::to_string(d.real()); });
    add([](Decoder& d) { return d.string(); });
    add([](Decoder& d) { return std::to_string(d.date().secondsSinceReferenceDate); });
    return answers;
  };
  for (const auto& row : tableFrom("plist/typed.txt", 2)) {
    EXPECT_EQ(ask(readPropertyList(plist(row[0]))), row[1] + " ") << row[0];
  }
}

TEST(PropertyListCoding, errorsSayWhere) {
  for (const auto& row : tableFrom("plist/errors.txt", 2)) {
    EXPECT_EQ(errorOf([&] { decodePropertyList<Tree>(plist(row[0])); }), row[1]) << row[0];
  }
  EXPECT_EQ(errorOf([] { decodePropertyList<Tree>("hello"); }),
            "data The given data was not a valid property list. It is neither binary nor XML.");
}

TEST(PropertyListCoding, peeksAttemptsAndVisits) {
  const PropertyList list = readPropertyList(
      plist("<dict><key>a</key><integer>1</integer><key>type</key><string>T</string>"
            "<key>b</key><array><integer>2</integer><true/></array>"
            "<key>a</key><integer>3</integer></dict>"));
  PropertyListDecoder decoder(list);
  EXPECT_EQ(decoder.peekString("type"), "T");
  EXPECT_EQ(errorOf([&] { decoder.peekString("c"); }), "key missing key \"c\"");
  EXPECT_EQ(errorOf([&] { decoder.peekString("b"); }), "type b: expected a string, found an array");
  std::string seen;
  decoder.members([&](std::string_view key) {
    seen += key;
    if (key == "b") {
      // The error comes from inside of the array; what follows stands before it again.
      EXPECT_FALSE(decoder.attempt([&] { decoder.elements([&] { decoder.integer(); }); }));
      decoder.elements([&] { seen += decoder.attempt([&] { decoder.integer(); }) ? '+' : '-'; });
    } else if (key == "a") {
      seen += std::to_string(decoder.integer());
    }
  });
  EXPECT_EQ(seen, "typeb+-a3");
  EXPECT_EQ(decoder.peekString("type"), "T");
}

TEST(PropertyListCoding, decodingIsBounded) {
  constexpr Index kPlaces = 10'000;
  const Indices places(kPlaces, 1);
  const auto listOf = [](const std::vector<PropertyList::Node>& nodes) {
    PropertyList list;
    for (const auto& node : nodes) list.add(node);
    return list;
  };
  PropertyList bomb;
  for (Index i = 1; i < 30; ++i) bomb.add(PropertyList::Array{Indices{i, i}});
  bomb.add(PropertyList::Array{});
  const auto readAll = [](Decoder& decoder) { readNested(decoder); };
  const auto readTrees = [](Decoder& decoder) {
    std::vector<Tree> trees;
    decode(decoder, trees);
  };
  const auto readTexts = [](Decoder& decoder) {
    std::vector<std::string> texts;
    decode(decoder, texts);
  };
  const struct {
    PropertyList list;
    std::function<void(Decoder&)> read;
    const char* error;
  } rows[] = {
      {nestedArrays(512), readAll, ""},
      {nestedArrays(513), readAll, "nested deeper than 512 containers"},
      {listOf({PropertyList::Array{Indices{1}}, PropertyList::Dictionary{Members{{2, 0}}},
               "children"}),
       readTrees, "deeper than 512 containers"},
      {bomb, readAll, " values by shared references"},
      // A long text, and a wide dictionary, in many places.
      {listOf({PropertyList::Array{places}, std::string(1'000'000, 'x')}), readTexts,
       " bytes by shared references"},
      {listOf({PropertyList::Array{places}, PropertyList::Dictionary{Members(kPlaces, {2, 3})},
               "children", PropertyList::Array{}}),
       readTrees, " values by shared references"}};
  for (const auto& row : rows) {
    const std::string error = errorOf([&] {
      PropertyListDecoder decoder(row.list);
      row.read(decoder);
    });
    EXPECT_TRUE(error.ends_with(row.error) && error.empty() == (*row.error == '\0')) << error;
  }

  // One long key, or two with the same text, under each of which stand many members.
  for (const bool isLong : {true, false}) {
    Members members;
    for (Index i = 0; i < kPlaces; ++i) members.push_back({1 + i % 2, 1});
    const std::string key(isLong ? 1'000'000 : 1, 'k');
    const PropertyList keys = listOf({PropertyList::Dictionary{members}, key, key});
    std::size_t count = 0;
    const std::string error = errorOf([&] {
      PropertyListDecoder keyDecoder(keys);
      keyDecoder.members([&](std::string_view) { ++count; });
    });
    EXPECT_TRUE(isLong ? error.ends_with(" bytes by shared references") : error.empty()) << error;
    EXPECT_EQ(errorOf([&] { writePropertyList(keys, PropertyListFormat::xml); }).empty(), !isLong);
    EXPECT_EQ(count, isLong ? 0U : 1U);
  }

  // At the limits, and one past them.
  const PropertyList one = listOf({true});
  const std::size_t visits = limits::kSharedVisits + 8;
  const std::size_t bytes = limits::kDecodedBytes + 2 * limits::kDecodedBytesPerByte - one.memory();
  const std::size_t expansion = limits::kExpandedBytes + 2 * limits::kExpandedBytesPerByte;
  SharedReferenceBudget budget(one);
  budget.chargeVisits(visits);
  budget.chargeBytes(bytes);
  budget.chargeValue(expansion - limits::kExpandedBytesPerValue);
  EXPECT_EQ(errorOf([&] { budget.chargeVisits(1); }),
            "data more than " + std::to_string(visits) + " values by shared references");
  EXPECT_EQ(errorOf([&] { budget.chargeBytes(1); }),
            "data more than " + std::to_string(bytes) + " bytes by shared references");
  EXPECT_EQ(errorOf([&] { budget.chargeExpansion(1); }),
            "data more than " + std::to_string(expansion) +
                " bytes when shared references are written out");

  // What is large without being shared is no bomb.
  std::vector<std::string> many(2'000'000, "x");
  many.emplace_back(100'000'000, 'x');
  EXPECT_EQ(decodePropertyList<std::vector<std::string>>(encodePropertyList(many)), many);
}

TEST(PropertyListCoding, encodingIsChecked) {
  const auto depth = [](std::size_t count) {
    return errorOf([&] {
      PropertyListEncoder encoder;
      for (std::size_t i = 0; i < count; ++i) encoder.beginArray(1);
      for (std::size_t i = 0; i < count; ++i) encoder.endArray();
      writePropertyList(encoder.finish(), PropertyListFormat::binary);
    });
  };
  EXPECT_EQ(depth(511), "");
  EXPECT_EQ(depth(512), "encoding nested deeper than 511 containers");
  EXPECT_NE(errorOf([] { encodePropertyList("text"s); }), "");
  EXPECT_NE(errorOf([] { encodePropertyList(std::optional<Tree>()); }), "");
  EXPECT_NE(errorOf([] { encodePropertyList(std::int64_t{1}); }), "");
  EXPECT_EQ(errorOf([] {
              encodePropertyList(std::vector<Tree>{{"\xFF", {}, {}}});
            }),
            "encoding [0].name: the string is not valid UTF-8");
  const std::vector<std::string> nul{"\0"s};
  EXPECT_NE(errorOf([&] { encodePropertyList(nul, PropertyListFormat::xml); }), "");
  EXPECT_EQ(decodePropertyList<std::vector<std::string>>(encodePropertyList(nul)), nul);
}

}  // namespace
}  // namespace tavlen
