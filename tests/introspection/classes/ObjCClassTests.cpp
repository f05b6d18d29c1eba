#include "tavlen/introspection/classes/ObjCClass.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"

namespace tavlen {
namespace {

const StyledText::Color kForeground{0, 0, 0, 1};
const StyledText::Color kVendored{0, 1, 0, 1};
const StyledText::Color kCustom{0, 0, 1, 1};
const StyledText::Font kFont{"Menlo", 11};

StyledText styled(const ObjCClass& cls) {
  return cls.description(kForeground, kVendored, kCustom, kFont);
}

ObjCClass sample() {
  return {"PXView",
          {std::make_shared<ObjCMethod>("tint:", "v24@0:8@16", false),
           std::make_shared<ObjCMethod>("tint:", "v24@0:8@16", true)},
          "_TtC1A1B",
          "UIView",
          "/System/Library/Frameworks/UIKit.framework/UIKit",
          {"NSCopying", "PXTinted"}};
}

TEST(ObjCClass, ReadsAsTheHeadOfItsDeclaration) {
  ObjCClass cls = sample();
  EXPECT_EQ(cls.description(), "PXView : UIView <NSCopying, PXTinted>");
  EXPECT_EQ(styled(cls).plain(), cls.description());
  EXPECT_EQ(cls.debugDescription(),
            "PXView : UIView <NSCopying, PXTinted>\n"
            "-\xC2\xA0 (void)tint:(id)\n"
            "+\xC2\xA0 (void)tint:(id)");
  cls.protocols.pop_back();
  EXPECT_EQ(cls.description(), "PXView : UIView <NSCopying>");
  cls.supercls.reset();
  EXPECT_EQ(cls.description(), "PXView <NSCopying>");
  EXPECT_EQ(ObjCClass("NSObject", {}, {}, {}, {}, {}).debugDescription(), "NSObject");
}

TEST(ObjCClass, ColoursTellWhoseATypeIs) {
  using Runs = std::vector<StyledText::Run>;
  EXPECT_EQ(styled(sample()).runs(), (Runs{{"PXView", kCustom, kFont},
                                           {" : ", kForeground, kFont},
                                           {"UIView", kVendored, kFont},
                                           {" <", kForeground, kFont},
                                           {"NSCopying", kVendored, kFont},
                                           {", ", kForeground, kFont},
                                           {"PXTinted", kVendored, kFont},
                                           {">", kForeground, kFont}}));
  const std::pair<std::optional<std::string>, StyledText::Color> rows[] = {
      {"/System/Library/A", kVendored},   {"/usr/lib/libobjc.A.dylib", kVendored},
      {"/usr/lib/system/x", kVendored},   {std::nullopt, kVendored},
      {"/usr/libexec/a", kCustom},        {"/Systems/a", kCustom},
      {"/usr/local/lib/a", kCustom},      {"System/a", kCustom},
      {"/var/containers/A.app", kCustom}, {"", kCustom},
  };
  for (const auto& [path, color] : rows) {
    ObjCClass cls = sample();
    cls.superclassPath = path;
    EXPECT_EQ(styled(cls).runs()[2].color, color) << path.value_or("none");
  }
}

TEST(ObjCClass, TellsItsMethodsApart) {
  const ObjCClass cls = sample();
  const auto identities = cls.methodIdentities();
  ASSERT_EQ(identities.size(), 2U);
  EXPECT_EQ(identities[0].first, cls.methods[0]);
  EXPECT_EQ(identities[0].second, (MethodIdentity{"PXView", "tint:", false}));
  EXPECT_EQ(identities[1].first, cls.methods[1]);
  EXPECT_EQ(identities[1].second, (MethodIdentity{"PXView", "tint:", true}));
  EXPECT_TRUE(ObjCClass().methodIdentities().empty());
}

TEST(ObjCClass, IsStoredUnderItsKeys) {
  ObjCClass cls = sample();
  cls.methods.pop_back();
  cls.mangledSuperclass.reset();
  const std::string json =
      R"({"name":"PXView","methods":[{"selector":"tint:","encoding":"v24@0:8@16",)"
      R"("isClassMethod":false}],"supercls":"UIView",)"
      R"("superclassPath":"/System/Library/Frameworks/UIKit.framework/UIKit",)"
      R"("protocols":["NSCopying","PXTinted"]})";
  std::string plain = encodeJSON(cls);
  for (std::size_t at = 0; (at = plain.find("\\/")) != std::string::npos;) plain.erase(at, 1);
  EXPECT_EQ(plain, json);
  EXPECT_EQ(decodeJSON<ObjCClass>(json), cls);

  // In an archive: all keys in their order, and the truth value is no object.
  const PropertyList list = readPropertyList(encodeKeyedArchive(cls));
  const auto objects =
      list.get<PropertyList::Array>(list.find(list.root(), "$objects").value())->elements;
  const auto keys = [&](PropertyList::Index object) {
    std::vector<std::string> names;
    const auto dictionary = list.get<PropertyList::Dictionary>(object).value();
    for (const auto& member : dictionary.members) {
      const auto key = list.get<std::string_view>(member.key);
      if (!key->starts_with("$")) names.emplace_back(*key);
    }
    return names;
  };
  EXPECT_EQ(keys(objects[1]),
            (std::vector<std::string>{"name", "methods", "mangledSuperclass", "supercls",
                                      "superclassPath", "protocols"}));
  const auto method = std::find_if(objects.begin(), objects.end(), [&](PropertyList::Index object) {
    return list.find(object, "selector").has_value();
  });
  ASSERT_NE(method, objects.end());
  EXPECT_EQ(keys(*method), (std::vector<std::string>{"selector", "encoding", "isClassMethod"}));
  EXPECT_EQ(list.get<bool>(list.find(*method, "isClassMethod").value()), false);
}

}  // namespace
}  // namespace tavlen
