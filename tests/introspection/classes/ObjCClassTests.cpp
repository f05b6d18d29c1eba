#include <stdexcept>

#include "tavlen/foundation/archive/KeyedArchive.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/introspection/classes/ObjCClass.h"
#include "tests/support/TableFile.h"

namespace tavlen {
namespace {

const std::string kInstance = "-\xC2\xA0";
const StyledText::Color kType{1, 0, 0, 1};
const StyledText::Color kForeground{0, 0, 0, 0.5};
const StyledText::Font kFont{"Menlo", 11.5};

TEST(ObjCMethod, ReadsAsADeclarationOnOneLine) {
  for (const auto& row : tableFrom("methods.txt", 3)) {
    ObjCMethod method(row[0], row[1], false);
    EXPECT_EQ(method.description(), kInstance + row[2]);
    EXPECT_EQ(method.description(kType, kForeground, kFont).plain(), kInstance + row[2]);
    method.isClassMethod = true;
    EXPECT_EQ(method.description(), "+\xC2\xA0" + row[2]);
  }
}

TEST(ObjCMethod, ColoursItsTypes) {
  const ObjCMethod method("a:b:", "v@:i@", false);
  using Runs = std::vector<StyledText::Run>;
  EXPECT_EQ(method.description(kType, kForeground, kFont).runs(),
            (Runs{{kInstance + " (", kForeground, kFont},
                  {"void", kType, kFont},
                  {")a:(", kForeground, kFont},
                  {"int", kType, kFont},
                  {") b:(", kForeground, kFont},
                  {"id", kType, kFont},
                  {")", kForeground, kFont}}));
  EXPECT_EQ(ObjCMethod("a", "", true).description(kType, kForeground, kFont).runs(),
            (Runs{{"+\xC2\xA0"
                   "a",
                   kForeground, kFont}}));
}

const StyledText::Color kVendored{0, 1, 0, 1};
const StyledText::Color kCustom{0, 0, 1, 1};

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
      R"("superclassPath":"\/System\/Library\/Frameworks\/UIKit.framework\/UIKit",)"
      R"("protocols":["NSCopying","PXTinted"]})";
  EXPECT_EQ(encodeJSON(cls), json);
  EXPECT_EQ(decodeJSON<ObjCClass>(json), cls);
  EXPECT_THROW(decodeJSON<ObjCMethod>(R"({"selector":"a:","encoding":"v"})"), DecodingError);
}

}  // namespace
}  // namespace tavlen
