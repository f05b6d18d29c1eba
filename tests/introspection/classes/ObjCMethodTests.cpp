#include "tavlen/introspection/classes/ObjCMethod.h"

#include <gtest/gtest.h>

#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"

namespace tavlen {
namespace {

const std::string kInstance = "-\xC2\xA0";
const StyledText::Color kType{1, 0, 0, 1};
const StyledText::Color kForeground{0, 0, 0, 0.5};
const StyledText::Font kFont{"Menlo", 11.5};

TEST(ObjCMethod, ReadsAsADeclarationOnOneLine) {
  const struct {
    const char *selector, *encoding, *text;
  } rows[] = {
      {"title", "@16@0:8", " (id)title"},
      {"setTitle:", "v24@0:8@\"NSString\"16", " (void)setTitle:(NSString *)"},
      {"setObject:forKey:", "v32@0:8@16r*24", " (void)setObject:(id) forKey:(const char *)"},
      {"do:with:", "Vv@:^i@?", " (oneway void)do:(int *) with:(void (^)(void))"},
      {"frame", "{CGPoint=dd}16@0:8", " (struct CGPoint { double field1; double field2; })frame"},
      {"::", "v@:i:", " (void):(int) :(SEL)"},
      {"a:b", "v@:i", " (void)a:(int) b"},
      // More colons than arguments, and fewer.
      {"a:b:", "v@:i", " (void)a:(int) b:"},
      {"a:b:", "v", " (void)a: b:"},
      {"a", "B@:i@", " (BOOL)a, (int), (id)"},
      {"a:", "v@:ic", " (void)a:(int), (char)"},
      {"", "v@:", " (void)"},
      // No signature.
      {"a:b:", "", "a:b:"},
      {"a:", "v@:{", "a:"},
      {"decimal", "{?=b8b4}@:", "decimal"},
      {"", "?", ""},
  };
  for (const auto& row : rows) {
    ObjCMethod method(row.selector, row.encoding, false);
    EXPECT_EQ(method.description(), kInstance + row.text);
    EXPECT_EQ(method.description(kType, kForeground, kFont).plain(), kInstance + row.text);
    method.isClassMethod = true;
    EXPECT_EQ(method.description(), "+\xC2\xA0" + std::string(row.text));
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

TEST(ObjCMethod, IsStoredUnderItsKeys) {
  const ObjCMethod method("a:", "v24@0:8@16", true);
  const std::string json = R"({"selector":"a:","encoding":"v24@0:8@16","isClassMethod":true})";
  EXPECT_EQ(encodeJSON(method), json);
  EXPECT_EQ(decodeJSON<ObjCMethod>(json), method);
  EXPECT_THROW(decodeJSON<ObjCMethod>(R"({"selector":"a:","encoding":"v"})"), DecodingError);
}

}  // namespace
}  // namespace tavlen
