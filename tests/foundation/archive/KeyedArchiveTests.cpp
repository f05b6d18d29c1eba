#include "tavlen/foundation/archive/KeyedArchive.h"

#include <gtest/gtest.h>

#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/foundation/text/Base64.h"
#include "tavlen/introspection/classes/ObjCClass.h"
#include "tests/foundation/plist/PropertyListGraph.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using namespace std::literals;
using Index = PropertyList::Index;

struct Card {
  static constexpr std::string_view archivedClassName = "Demo.Card";
  std::string name;
  std::optional<std::string> note;
  std::optional<URL> home;
  bool operator==(const Card&) const = default;
  static constexpr auto codedFields() {
    return std::tuple{requiredField("name", &Card::name), optionalField("note", &Card::note),
                      optionalField("home", &Card::home)};
  }
};

struct Item {
  static constexpr std::string_view archivedClassName = "Demo.Item";
  std::string name;
  bool flag = false;
  std::shared_ptr<Item> next;
  std::vector<std::string> tags;
  static constexpr auto codedFields() {
    return std::tuple{requiredField("name", &Item::name), requiredField("flag", &Item::flag),
                      requiredField("next", &Item::next), requiredField("tags", &Item::tags)};
  }
};

struct Ring {
  static constexpr std::string_view archivedClassName = "Ring";
  std::vector<Ring> rings;
  std::vector<std::string> texts;
  static constexpr auto codedFields() {
    return std::tuple{requiredField("rings", &Ring::rings), requiredField("texts", &Ring::texts)};
  }
};

/// 371 bytes: a card "Ada", "first", file:///tmp/a%20b.
const char* const kCard =
    "YnBsaXN0MDDUAQIDBAUGBwpYJHZlcnNpb25ZJGFyY2hpdmVyVCR0b3BYJG9iamVjdHMSAAGGoF8QD05TS2V5ZWRBcmNo"
    "aXZlctEICVRyb290gAGoCwwVFhcdHiRVJG51bGzUDQ4PEBESExRUbmFtZVRub3RlVGhvbWVWJGNsYXNzgAKAA4AEgAdT"
    "QWRhVWZpcnN00xgZEBobHFdOUy5iYXNlW05TLnJlbGF0aXZlgACABYAGXxARZmlsZTovLy90bXAvYSUyMGLSHyAhIlok"
    "Y2xhc3NuYW1lWCRjbGFzc2VzVU5TVVJMoiEjWE5TT2JqZWN00h8gJSZZRGVtby5DYXJkoiUjAAgAEQAaACQAKQAyADcA"
    "SQBMAFEAUwBcAGIAawBwAHUAegCBAIMAhQCHAIkAjQCTAJoAogCuALAAsgC0AMgAzQDYAOEA5wDqAPMA+AECAAAAAAAA"
    "AgEAAAAAAAAAJwAAAAAAAAAAAAAAAAAAAQU=";

/// An XML archive of `objects`, the first of which is the root and has the number 1.
std::string archive(std::string_view objects) {
  return "<plist version='1.0'><dict><key>$version</key><integer>100000</integer>"
         "<key>$archiver</key><string>NSKeyedArchiver</string><key>$top</key><dict><key>root</key>"
         "<dict><key>CF$UID</key><integer>1</integer></dict></dict><key>$objects</key><array>"
         "<string>$null</string>" +
         std::string(objects) + "</array></dict></plist>";
}

std::string ref(int uid) {
  return "<dict><key>CF$UID</key><integer>" + std::to_string(uid) + "</integer></dict>";
}
std::string member(const char* key, const std::string& value) {
  return "<key>" + std::string(key) + "</key>" + value;
}
std::string object(const std::string& members, int classUID) {
  return "<dict>" + members + member("$class", ref(classUID)) + "</dict>";
}
std::string className(const std::string& name, const std::string& chain = "") {
  return "<dict>" + member("$classname", "<string>" + name + "</string>") +
         member("$classes", "<array><string>" + name + "</string>" + chain + "</array>") +
         "</dict>";
}

template <class T>
std::string errorOf(std::string_view bytes) {
  return messageOf<DecodingError>([&] { decodeKeyedArchive<T>(bytes); });
}

TEST(KeyedArchive, hasItsBytes) {
  const std::string bytes = bytesFromBase64(kCard).value();
  const Card card{"Ada", "first", URL{"file:///tmp/a%20b"}};
  EXPECT_EQ(encodeKeyedArchive(card), bytes);
  EXPECT_EQ(writePropertyList(readPropertyList(bytes), PropertyListFormat::binary), bytes);
  EXPECT_EQ(decodeKeyedArchive<Card>(bytes), card);
  EXPECT_EQ(decodeKeyedArchive<std::optional<Card>>(bytes), card);
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    const std::string error = errorOf<Card>(std::string_view(bytes).substr(0, size));
    EXPECT_TRUE(error.starts_with("The given data was not a valid property list.")) << size;
  }
  // Any one damaged byte gives a card or an error.
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    std::string damaged = bytes;
    damaged[i] = static_cast<char>(damaged[i] ^ 0x41);
    errorOf<Card>(damaged);
  }
}

/// Two items that share a text and a class; the second points back to the first.
TEST(KeyedArchive, numbersObjectsWhenTheyAreMetAndClassesAfterThem) {
  const auto first = std::make_shared<Item>(Item{"one", true, nullptr, {"one", "two"}});
  const auto second = std::make_shared<Item>(Item{"two", false, first, {}});
  const std::vector<std::shared_ptr<Item>> items{first, second};
  const auto text = [](const char* characters) {
    return "<string>" + std::string(characters) + "</string>";
  };
  const std::string root = "<string>NSObject</string>";
  const std::string expected = archive(
      object(member("NS.objects", "<array>" + ref(2) + ref(8) + "</array>"), 6) +
      object(member("name", ref(3)) + member("flag", "<true/>") + member("next", ref(0)) +
                 member("tags", ref(4)),
             7) +
      text("one") + object(member("NS.objects", "<array>" + ref(3) + ref(5) + "</array>"), 6) +
      text("two") + className("NSArray", root) + className("Demo.Item", root) +
      object(member("name", ref(5)) + member("flag", "<false/>") + member("next", ref(2)) +
                 member("tags", ref(9)),
             7) +
      object(member("NS.objects", "<array/>"), 6));
  EXPECT_TRUE(sameGraph(readPropertyList(encodeKeyedArchive(items)), readPropertyList(expected)));

  for (const std::string& bytes : {encodeKeyedArchive(items), expected}) {
    const auto read = decodeKeyedArchive<std::vector<std::shared_ptr<Item>>>(bytes);
    ASSERT_EQ(read.size(), 2U);
    EXPECT_EQ(read[1]->next, read[0]);
    EXPECT_EQ(read[0]->next, nullptr);
    EXPECT_EQ(read[0]->tags, first->tags);
    EXPECT_TRUE(read[0]->flag);
  }
}

TEST(KeyedArchive, classRecordsSurvive) {
  const auto method = [](const char* selector, bool isClassMethod) {
    return std::make_shared<ObjCMethod>(selector, "v24@0:8@16", isClassMethod);
  };
  const ObjCClass full("PXView", {method("größe:", false), method("größe:", true)}, "_TtC1A1B",
                       "UIView", "/System/UIKit", {"NSCopying", "$null", ""});
  const ObjCClass root("NSObject", {}, {}, {}, {}, {});
  const std::vector<ObjCClass> classes{full, root};
  EXPECT_EQ(decodeKeyedArchive<std::vector<ObjCClass>>(encodeKeyedArchive(classes)), classes);
  EXPECT_EQ(decodeJSON<std::vector<ObjCClass>>(encodeJSON(classes)), classes);
  EXPECT_EQ(encodeJSON(root), R"({"name":"NSObject","methods":[],"protocols":[]})");
  // Nil is written under its key.
  const PropertyList list = readPropertyList(encodeKeyedArchive(root));
  const Index objects = list.find(list.root(), "$objects").value();
  const Index first = list.get<PropertyList::Array>(objects)->elements[1];
  EXPECT_EQ(list.get<PropertyList::UID>(list.find(first, "supercls").value())->value, 0U);

  const auto malformed = [&] {
    encodeKeyedArchive(std::vector<ObjCClass>{{"A", {method("\xFF", false)}, {}, {}, {}, {}}});
  };
  EXPECT_EQ(messageOf(malformed), "[0].methods[0].selector: the string is not valid UTF-8");
}

TEST(KeyedArchive, readsWhatOthersWrite) {
  // The last of equal keys, unknown keys, an object that nobody refers to, a boolean as an integer,
  // and texts, arrays and classes in the forms of mutable and of derived classes.
  const std::string bytes =
      archive(object(member("flag", "<integer>1</integer>") + member("name", ref(0)) +
                         member("name", ref(3)) + member("tags", ref(4)) + member("other", ref(99)),
                     2) +
              className("Derived", "<string>Demo.Item</string>") +
              object(member("NS.string", "<string>$null</string>"), 5) +
              object(member("NS.objects", "<array>" + ref(3) + "</array>"), 6) +
              className("NSMutableString", "<string>NSString</string>") +
              className("NSMutableArray", "<string>NSArray</string><string>NSObject</string>") +
              "<string>unused</string>");
  for (const std::string& form :
       {bytes, writePropertyList(readPropertyList(bytes), PropertyListFormat::binary)}) {
    const Item item = decodeKeyedArchive<Item>(form);
    EXPECT_TRUE(item.flag);
    EXPECT_EQ(item.name, "$null");
    EXPECT_EQ(item.tags, std::vector<std::string>{"$null"});
  }
  // Absent and nil members of every kind.
  const std::string empty = archive(object("", 2) + className("ObjCClass"));
  EXPECT_EQ(decodeKeyedArchive<ObjCClass>(empty), ObjCClass());
  const std::string nils = archive(
      object(member("name", ref(0)) + member("methods", ref(0)) + member("supercls", ref(3)), 2) +
      className("ObjCClass") + "<string>$null</string>");
  EXPECT_EQ(decodeKeyedArchive<ObjCClass>(nils), ObjCClass());

  const auto card = [](const std::string& base, const std::string& relative) {
    return decodeKeyedArchive<Card>(
        archive(object(member("home", ref(3)), 2) + className("Demo.Card") +
                object(member("NS.base", base) + member("NS.relative", relative), 5) +
                object(member("NS.relative", ref(6)), 5) + className("NSURL") +
                "<string>file:///a/b/c</string>" + "<string>../d%20e</string>"));
  };
  EXPECT_EQ(card(ref(4), ref(7)).home, URL{"file:///a/d%20e"});
  EXPECT_EQ(card(ref(0), ref(7)).home, URL{"../d%20e"});
  EXPECT_THROW(card(ref(0), ref(0)), DecodingError);
  EXPECT_THROW(card(ref(3), ref(7)), DecodingError);  // its own base
}

TEST(KeyedArchive, errorsSayWhere) {
  const std::string item = className("Demo.Item");
  const auto withItem = [&](const std::string& members, const std::string& more = "") {
    return archive(object(members, 2) + item + more);
  };
  const struct {
    std::string bytes;
    const char* error;
  } rows[] = {
      {withItem(member("name", ref(99))), "name: the archive has no object 99"},
      {withItem(member("name", "<string>a</string>")),
       "name: expected a reference to an object, found a string"},
      {withItem(member("name", ref(3)), "<integer>1</integer>"),
       "name: expected a string, found an integer"},
      {withItem(member("name", ref(2))), "name: missing key \"$class\""},
      {withItem(member("name", ref(1))),
       "name: expected an object of the class \"NSString\", found an object of the class "
       "\"Demo.Item\""},
      {withItem(member("flag", "<real>1</real>")), "flag: expected a boolean, found a real number"},
      {withItem(member("flag", ref(0))), "flag: expected a boolean, found a UID"},
      {withItem(member("tags", ref(3)), "<array/>"),
       "tags: expected an object of the class \"NSArray\", found an array"},
      {withItem(
           member("tags", ref(3)),
           object(member("NS.objects", "<array>" + ref(0) + "</array>"), 4) + className("NSArray")),
       "tags[0]: expected an object, found null"},
      {withItem(member("tags", ref(3)),
                object(member("NS.objects", "<array><true/></array>"), 4) + className("NSArray")),
       "tags[0]: expected a reference to an object, found a boolean"},
      {withItem(member("tags", ref(3)),
                object(member("NS.objects", "<true/>"), 4) + className("NSArray")),
       "tags: expected an array, found a boolean"},
      {withItem(member("next", ref(1))),  // itself
       "nested deeper than 512 objects"},
      {archive(object("", 2) + className("Other", "<string>NSObject</string>")),
       "expected an object of the class \"Demo.Item\", found an object of the class \"Other\""},
      {archive(object("", 0)),
       "expected an object of the class \"Demo.Item\", found an object of the class \"\""},
      {archive(object("", 9)), "$class: the archive has no object 9"},
      {archive("<string>$null</string>"), "expected an object, found null"},
      {archive(""), "the archive has no object 1"}};
  for (const auto& row : rows) {
    const std::string error = errorOf<Item>(row.bytes);
    EXPECT_TRUE(error.ends_with(row.error) && !error.empty()) << error << "\n" << row.error;
  }
  const std::string good = withItem("");
  EXPECT_EQ(errorOf<Item>(good), "");
  for (const char* spoiled :
       {"$version", "100000", "$archiver", "NSKeyedArchiver", "$top", "root", "$objects"}) {
    std::string bytes = good;
    bytes.replace(bytes.find(spoiled), std::string_view(spoiled).size(), "2");
    EXPECT_TRUE(errorOf<Item>(bytes).starts_with("The data is not a keyed archive.")) << spoiled;
  }
  EXPECT_TRUE(errorOf<Item>("<plist><array/></plist>").starts_with("The data is not"));
  EXPECT_TRUE(errorOf<Item>("junk").starts_with("The given data was not a valid property list."));
}

TEST(KeyedArchive, workIsBounded) {
  // Each ring holds the next one twice; the last holds a long text many times.
  const auto bomb = [](int depth, int texts, std::size_t length) {
    std::string objects;
    for (int i = 0; i < depth; ++i) {
      const int uid = 1 + 2 * i;
      objects += object(member("rings", ref(uid + 1)), 2 * depth + 1);
      objects += object(
          member("NS.objects", i + 1 < depth ? "<array>" + ref(uid + 2) + ref(uid + 2) + "</array>"
                                             : "<array/>") +
              member("$unused", "<true/>"),
          2 * depth + 2);
    }
    std::string many;
    for (int i = 0; i < texts; ++i) many += ref(2 * depth + 4);
    objects += className("Ring") + className("NSArray");
    objects += object(member("NS.objects", "<array>" + many + "</array>"), 2 * depth + 2);
    objects += "<string>" + std::string(length, 'x') + "</string>";
    if (texts > 0) objects.replace(objects.find("rings"), 5, "texts");
    if (texts > 0) {
      const std::string first = ref(2);
      objects.replace(objects.find(first), first.size(), ref(2 * depth + 3));
    }
    return archive(objects);
  };
  EXPECT_EQ(errorOf<Ring>(bomb(10, 0, 1)), "");
  EXPECT_TRUE(errorOf<Ring>(bomb(40, 0, 1)).ends_with("too many values by shared references"));
  EXPECT_EQ(errorOf<Ring>(bomb(1, 100, 1)), "");
  EXPECT_TRUE(
      errorOf<Ring>(bomb(1, 1000, 1'000'000)).ends_with("too much data by shared references"));

  // A chain of items: as deep as it may be, and one deeper, both ways.
  const auto chain = [](std::size_t length) {
    auto first = std::make_shared<Item>();
    for (std::size_t i = 1; i < length; ++i) {
      first = std::make_shared<Item>(Item{"", false, first, {}});
    }
    return first;
  };
  // The last item holds an array.
  EXPECT_EQ(errorOf<std::shared_ptr<Item>>(encodeKeyedArchive(chain(511))), "");
  EXPECT_THROW(encodeKeyedArchive(chain(512)), EncodingError);
  std::string deep;
  for (int i = 0; i < 600; ++i) deep += object(member("next", ref(i + 2)), 602);
  EXPECT_TRUE(errorOf<Item>(archive(deep + "<string>$null</string>" + className("Demo.Item")))
                  .ends_with("nested deeper than 512 objects"));

  // Eighteen classes, of which the last is a long dictionary that is searched at each of 3,000
  // texts.
  std::string strings;
  std::string kinds;
  std::string references;
  std::string members;
  for (int i = 0; i < 2'000; ++i) members += member("$unused", "<true/>");
  for (int i = 0; i < 18; ++i) {
    references += ref(3 + i);
    strings += object(member("NS.string", "<string/>"), 21 + i);
    std::string kind = className("NSString");
    if (i == 17) kind.insert(6, members);
    kinds += kind;
  }
  for (int i = 0; i < 3'000; ++i) references += ref(20);
  EXPECT_TRUE(
      errorOf<Ring>(archive(object(member("texts", ref(2)), 40) +
                            object(member("NS.objects", "<array>" + references + "</array>"), 39) +
                            strings + kinds + className("NSArray") + className("Ring")))
          .ends_with("too many values by shared references"));

  // A million references to one empty record, in an array that several records share.
  std::string bytes;
  for (int i = 0; i < 300'000; ++i) bytes += ref(4);
  std::string rings;
  for (int i = 0; i < 4; ++i) rings += ref(5 + i);
  std::string sharing;
  for (int i = 0; i < 4; ++i) sharing += object(member("rings", ref(3)), 10);
  EXPECT_TRUE(
      errorOf<std::vector<Ring>>(
          archive(object(member("NS.objects", "<array>" + rings + "</array>"), 9) + "<string/>" +
                  object(member("NS.objects", "<array>" + bytes + "</array>"), 9) + object("", 10) +
                  sharing + className("NSArray") + className("Ring")))
          .ends_with("too much data by shared references"));
  EXPECT_THROW(encodeKeyedArchive(std::vector<std::shared_ptr<Item>>(1)), EncodingError);

  // Shared records are made once, however often they are met.
  std::string many;
  for (int i = 0; i < 20'000; ++i) many += ref(2);
  const std::string wide = "<array>" + many + "</array>";
  const auto classes = decodeKeyedArchive<std::vector<std::shared_ptr<ObjCClass>>>(archive(
      object(member("NS.objects", wide), 5) + object(member("methods", ref(3)), 6) +
      object(member("NS.objects", "<array>" + ref(4) + ref(4) + "</array>"), 5) + object("", 7) +
      className("NSArray") + className("ObjCClass") + className("ObjCMethod")));
  ASSERT_EQ(classes.size(), 20'000U);
  EXPECT_EQ(classes.front(), classes.back());
  EXPECT_EQ(classes[0]->methods[0], classes[0]->methods[1]);
}

}  // namespace
}  // namespace tavlen
