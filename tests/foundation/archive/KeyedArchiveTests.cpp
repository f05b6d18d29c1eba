#include <functional>

#include "tavlen/device/TweakInfo.h"
#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/text/Base64.h"
#include "tavlen/introspection/classes/ObjCClass.h"
#include "tests/foundation/plist/PropertyLists.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPaths.h"
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
  const auto withTags = [&](const std::string& objects) {
    return withItem(member("tags", ref(3)),
                    object(member("NS.objects", objects), 4) + className("NSArray"));
  };
  const std::pair<std::string, const char*> rows[] = {
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
      {withTags("<array>" + ref(0) + "</array>"), "tags[0]: expected an object, found null"},
      {withTags("<array><true/></array>"),
       "tags[0]: expected a reference to an object, found a boolean"},
      {withTags("<true/>"), "tags: expected an array, found a boolean"},
      {withItem(member("next", ref(1))),  // itself
       "nested deeper than 512 objects"},
      {archive(object("", 2) + className("Other", "<string>NSObject</string>")),
       "expected an object of the class \"Demo.Item\", found an object of the class \"Other\""},
      {archive(object("", 0)),
       "expected an object of the class \"Demo.Item\", found an object of the class \"\""},
      {archive(object("", 9)), "$class: the archive has no object 9"},
      {archive("<string>$null</string>"), "expected an object, found null"},
      {archive(""), "the archive has no object 1"}};
  for (const auto& [bytes, end] : rows) {
    const std::string error = errorOf<Item>(bytes);
    EXPECT_TRUE(error.ends_with(end)) << error << "\n" << end;
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
}

TEST(KeyedArchive, workIsBounded) {
  const auto array = [](const std::string& references, int classUID) {
    return object(member("NS.objects", "<array>" + references + "</array>"), classUID);
  };
  const auto many = [](int count, const std::string& text) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
  };
  const std::string classes = className("NSArray") + className("Ring");
  const auto bomb = [&](int depth) {
    std::string objects;
    for (int uid = 1; uid < 2 * depth; uid += 2) {
      objects += object(member("rings", ref(uid + 1)), 2 * depth + 2) +
                 array(uid + 2 < 2 * depth ? many(2, ref(uid + 2)) : "", 2 * depth + 1);
    }
    return archive(objects + classes);
  };
  const auto texts = [&](int count, std::size_t length) {
    return archive(object(member("texts", ref(2)), 5) + array(many(count, ref(3)), 4) + "<string>" +
                   std::string(length, 'x') + "</string>" + classes);
  };
  // Eighteen classes, the last of which is a long dictionary that is searched at each of 3,000
  // texts.
  std::string references;
  std::string strings;
  for (int i = 0; i < 18; ++i) {
    references += ref(3 + i);
    strings += object(member("NS.string", "<string/>"), 21 + i);
  }
  std::string wideClass = className("NSString");
  wideClass.insert(6, many(2'000, member("$unused", "<true/>")));
  const std::string searched =
      archive(object(member("texts", ref(2)), 40) + array(references + many(3'000, ref(20)), 39) +
              strings + many(17, className("NSString")) + wideClass + classes);
  // A million references to one empty record, in an array that several records share.
  const std::string shared =
      archive(object(member("rings", ref(2)), 10) + array(ref(4) + ref(5) + ref(6) + ref(7), 9) +
              array(many(300'000, ref(8)), 9) + many(4, object(member("rings", ref(3)), 10)) +
              object("", 10) + classes);
  const std::pair<std::string, std::string> rows[] = {
      {bomb(10), ""},
      {bomb(40), " bytes by shared references"},
      {texts(100, 1), ""},
      {texts(1000, 1'000'000), " bytes by shared references"},
      {searched, " values by shared references"},
      {shared, " bytes by shared references"}};
  for (const auto& [bytes, end] : rows) {
    const std::string error = errorOf<Ring>(bytes);
    EXPECT_TRUE(error.ends_with(end) && error.empty() == end.empty()) << error << "\n" << end;
  }

  // A chain of items: as deep as it may be, and one deeper, both ways. The last item holds an
  // array.
  const auto chain = [](std::size_t length) {
    auto first = std::make_shared<Item>();
    while (--length > 0) first = std::make_shared<Item>(Item{"", false, first, {}});
    return first;
  };
  EXPECT_EQ(errorOf<std::shared_ptr<Item>>(encodeKeyedArchive(chain(511))), "");
  EXPECT_THROW(encodeKeyedArchive(chain(512)), EncodingError);
  std::string deep;
  for (int i = 0; i < 600; ++i) deep += object(member("next", ref(i + 2)), 602);
  EXPECT_TRUE(errorOf<Item>(archive(deep + "<string>$null</string>" + className("Demo.Item")))
                  .ends_with("nested deeper than 512 objects"));
  EXPECT_THROW(encodeKeyedArchive(std::vector<std::shared_ptr<Item>>(1)), EncodingError);

  // Shared records are made once, however often they are met.
  const auto items = decodeKeyedArchive<std::vector<std::shared_ptr<Item>>>(
      archive(array(many(20'000, ref(2)), 3) + object("", 4) + className("NSArray") +
              className("Demo.Item")));
  ASSERT_EQ(items.size(), 20'000U);
  EXPECT_EQ(items.front(), items.back());
}

/// What is written out at every reference to it may take so much, and not one reference more.
TEST(KeyedArchive, sharedReferencesAreCounted) {
  constexpr std::size_t kText = 1'000'000;
  constexpr std::size_t kItem = 4 + 4 + 4 + 4 + 5 * 4;  // four keys and values, and the text's
  constexpr std::size_t kMethod = 8 + 8 + 13 + 5 * 4;   // three, and two texts
  const std::string text = "<string>" + std::string(kText, 'x') + "</string>";
  const auto array = [](std::size_t count, int uid) {
    std::string references;
    while (count-- > 0) references += ref(uid);
    return object(member("NS.objects", "<array>" + references + "</array>"), 9);
  };
  const auto items = [&](std::size_t count, const std::string& members) {
    return archive(array(count, 2) + object(members, 8) + object(member("name", ref(4)), 8) + text +
                   "<true/><true/><true/>" + className("Demo.Item") + className("NSArray"));
  };
  const auto methods = [&](std::size_t count, const char* key) {
    return archive(object(member(key, ref(2)), 7) + array(count, 3 + (key == "protocols"s)) +
                   object(member("encoding", ref(4)) + member("selector", ref(4)), 8) + text +
                   "<true/><true/>" + className("ObjCClass") + className("ObjCMethod") +
                   className("NSArray"));
  };
  using Items = std::vector<std::shared_ptr<Item>>;
  const std::pair<std::function<std::string(std::size_t)>, std::size_t> rows[] = {
      {[&](auto n) { return errorOf<Items>(items(n, member("name", ref(4)))); }, kItem + kText},
      {[&](auto n) { return errorOf<Items>(items(n, member("next", ref(3)))); },
       2 * kItem - 4 + kText},
      {[&](auto n) { return errorOf<ObjCClass>(methods(n, "protocols")); }, 4 + kText},
      {[&](auto n) { return errorOf<ObjCClass>(methods(n, "methods")); }, kMethod + 2 * kText}};
  for (const auto& [errorFor, size] : rows) {
    const std::string error = errorFor(200);
    const std::size_t number = error.find("more than ") + 10;
    ASSERT_TRUE(error.ends_with(" bytes when shared references are written out")) << error;
    const std::size_t most = std::stoul(error.substr(number)) / size;
    EXPECT_EQ(errorFor(most), "");
    EXPECT_NE(errorFor(most + 1), "");
  }
}

/// Another Foundation reads what is written here, and writes what it has read.
class KeyedArchiveInterop : public testing::Test {
 protected:
  template <class T>
  T reread(const char* task, const T& value) {
    const auto input = folder_.write("in", encodeKeyedArchive(value));
    const auto output = folder_.path() / "out";
    const std::string command = "ASAN_OPTIONS=detect_leaks=0 '" + paths().archivePeer + "' " +
                                task + " '" + input.string() + "' '" + output.string() + "'";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;  // NOLINT(cert-env33-c)
    return decodeKeyedArchive<T>(readFile(output));
  }

 private:
  TemporaryFolder folder_;
};

TEST_F(KeyedArchiveInterop, classesSurvive) {
  const auto method = [](const char* selector, const char* encoding, bool isClassMethod) {
    return std::make_shared<ObjCMethod>(selector, encoding, isClassMethod);
  };
  std::vector<ObjCClass> classes{
      {"PXView",
       {method("setSize:", "v32@0:8{CGSize=dd}16", false), method("größe", "@16@0:8", false),
        method("größe", "@16@0:8", true)},
       "_TtC1A1B",
       "UIView",
       "/System/Library/Frameworks/UIKit.framework/UIKit",
       {"NSCopying", "NSCoding", ""}},
      {"NSObject", {}, {}, {}, {}, {}},
      {"", {method("", "", true)}, "", "PXView", "/a 😀", {"NSCopying"}}};
  // As many objects as need numbers of two bytes.
  for (int i = 0; i < 80; ++i) {
    classes.push_back({"C" + std::to_string(i), {}, {}, {}, {}, {"P" + std::to_string(i)}});
  }
  EXPECT_EQ(reread("reread", classes), classes);
  EXPECT_EQ(reread("mutable", classes), classes);
  classes[1].protocols = {"$null"};  // which the other Foundation takes for nil
  EXPECT_EQ(decodeKeyedArchive<std::vector<ObjCClass>>(encodeKeyedArchive(classes)), classes);
  EXPECT_EQ(messageOf([&] {
              encodeKeyedArchive(
                  std::vector<ObjCClass>{{"A", {method("\xFF", "", false)}, {}, {}, {}, {}}});
            }),
            "[0].methods[0].selector: the string is not valid UTF-8");
}

TEST_F(KeyedArchiveInterop, theInstalledTweakSurvives) {
  TweakInfo info("com.example.app", "8C0B");
  EXPECT_EQ(reread("reread", info), info);
  info.customIconURL = URL::fileURL("/var/mobile/a b/Icon.png");
  EXPECT_EQ(reread("reread", info), info);
  EXPECT_EQ(reread("reread", TweakInfo()), TweakInfo());
}

}  // namespace
}  // namespace tavlen
