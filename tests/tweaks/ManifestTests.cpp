#include "tavlen/tweaks/Manifest.h"

#include <gtest/gtest.h>

#include <chrono>

#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tests/support/TestPaths.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using Manifest = TweakFile::Manifest;

const std::string kHookA =
    R"({"className":"A","selector":"a","signature":"@16@0:8","isClassMethod":false,"args":{}})";
const std::string kHookB =
    R"({"className":"B","selector":"b","signature":"@16@0:8","isClassMethod":true,"args":{}})";

std::string document(const std::string& hooks, const std::string& glyph = "",
                     const std::string& overrides = "") {
  return R"({"configuration":{"name":"N","color":"darkRed","bundleID":"a.b")" + glyph +
         R"(},"overrides":[)" + overrides + R"(],"hooks":[)" + hooks + "]}";
}

TEST(Manifest, AbsentHooksKeepTheirPlaceUntilHooksAreSet) {
  const std::string stored = document(kHookA + ",null," + kHookB);
  Manifest manifest = decodeJSON<Manifest>(stored);
  ASSERT_EQ(manifest.hooks().size(), 2U);
  EXPECT_EQ(manifest.hooks()[1].className, "B");
  EXPECT_EQ(encodeJSON(manifest), stored);
  manifest.setHooks(manifest.hooks());
  EXPECT_EQ(encodeJSON(manifest), document(kHookA + "," + kHookB));
  EXPECT_TRUE(decodeJSON<Manifest>(document("null,null")).hooks().empty());
}

TEST(Manifest, AGlyphIsWrittenOnlyWhenOneIsStored) {
  const std::string tools = R"(,"glyph":{"icon":"tools","style":"solid"})";
  const std::string unknown = R"(,"glyph":{"icon":"from-tomorrow","style":"duotone"})";
  for (const std::string& glyph : {std::string(), tools, unknown}) {
    const Manifest manifest = decodeJSON<Manifest>(document("", glyph));
    EXPECT_EQ(manifest.configuration.glyph().icon, glyph == unknown ? "from-tomorrow" : "tools");
    EXPECT_EQ(encodeJSON(manifest), document("", glyph));
  }
  Manifest manifest = decodeJSON<Manifest>(document("", R"(,"glyph":null)"));
  EXPECT_EQ(encodeJSON(manifest), document(""));
  manifest.configuration.setGlyph(TweakGlyph::default_());
  EXPECT_EQ(encodeJSON(manifest), document("", tools));
}

TEST(Manifest, OverridesComeOutOfTheirBoxesAndGoBack) {
  const std::string json =
      R"({"type":"IPadSupport","value":true},{"type":"MinimumOSVersion"},{"type":"Build","value":"7"})";
  Manifest manifest = decodeJSON<Manifest>(document("", "", json));
  const std::vector<Override> overrides = manifest.overrides();
  EXPECT_EQ(overrides, (std::vector<Override>{IPadSupportOverride{true}, MinimumOSVersionOverride{},
                                              BuildOverride{"7"}}));
  manifest.setOverrides(overrides);
  EXPECT_EQ(encodeJSON(manifest), document("", "", json));
}

TEST(Manifest, ExamplesAreReadAndWrittenByteForByte) {
  for (const char* name : {"Greeting", "Everything"}) {
    const std::string bytes =
        readFile(std::filesystem::path(paths().examples) / "tweaks" / name / "Manifest.json");
    EXPECT_EQ(encodeJSON(decodeJSON<Manifest>(bytes)), bytes) << name;
  }
}

TEST(Manifest, SaysWhatIsWrongAndWhere) {
  const auto hookWith = [](const std::string& args) {
    return document(
        R"({"className":"A","selector":"a","signature":"v","isClassMethod":false,"args":)" + args +
        "}");
  };
  const auto colored = [](const std::string& color) {
    return R"({"configuration":{"name":"N","color":)" + color +
           R"(,"bundleID":""},"overrides":[],"hooks":[]})";
  };
  const std::pair<std::string, std::string> cases[] = {
      {document(kHookA + R"(,null,null,{"selector":"b"})"), R"(hooks[3]: missing key "className")"},
      {hookWith(R"({"-1":{"type":"Foo"}})"), R"(hooks[0].args.-1.type: unknown kind "Foo")"},
      {hookWith(R"({"0":{"type":"Array","items":[{"type":"Image"}]}})"),
       R"(hooks[0].args.0.items[0]: missing key "filename")"},
      {hookWith(R"({"1.5":{"type":"Nil"}})"),
       "hooks[0].args.1.5: expected a whole number as the key, found \"1.5\""},
      {hookWith(R"({"0":{"type":"_ValueParameter<Int64>","value":9223372036854775808}})"),
       "hooks[0].args.0.value: number 9223372036854775808 does not fit a signed 64-bit integer"},
      {hookWith(R"({"1":null})"), "hooks[0].args.1: expected a dictionary, found null"},
      {hookWith("7"), "hooks[0].args: expected a dictionary, found a number"},
      {document("", R"(,"glyph":"tools")"),
       "configuration.glyph: expected a dictionary, found a string"},
      {document("", "", "null"), "overrides[0]: expected a dictionary, found null"},
      {document("", "", R"({"type":"Icon","value":""})"),
       R"(overrides[0].type: unknown kind "Icon")"},
      {colored(R"("darkBlue")"), R"(configuration.color: unknown color "darkBlue")"},
      {colored("3"), "configuration.color: expected a string, found a number"},
      {R"({"configuration":{"name":"N","color":"darkRed"}})",
       R"(configuration: missing key "bundleID")"},
      {R"({"overrides":[],"hooks":[]})", R"(missing key "configuration")"},
      {"[]", "expected a dictionary, found an array"}};
  for (const auto& [json, description] : cases) {
    EXPECT_EQ(messageOf<DecodingError>([&json = json] { decodeJSON<Manifest>(json); }), description)
        << json;
  }
}

TEST(Manifest, ADocumentMayBeHugeButNotItsErrors) {
  constexpr std::size_t kHuge = 20'000'000;
  const auto start = std::chrono::steady_clock::now();
  std::string large = document(kHookA);
  large.insert(large.find("N\""), std::string(kHuge, 'n'));
  EXPECT_EQ(decodeJSON<Manifest>(large).configuration.name.size(), kHuge + 1);
  const std::string quoting = messageOf<DecodingError>([&] {
    decodeJSON<Manifest>(document("", "", R"({"type":")" + std::string(kHuge, 't') + "\"}"));
  });
  EXPECT_TRUE(!quoting.empty() && quoting.size() < 1000U) << "an error quotes a part only";
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

}  // namespace
}  // namespace tavlen
