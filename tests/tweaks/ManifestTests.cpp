#include "tavlen/tweaks/Manifest.h"

#include <gtest/gtest.h>

#include <chrono>

#include "tavlen/foundation/errors/MainBundle.h"
#include "tavlen/foundation/files/FileSystem.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/items/TweakError.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestPaths.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using Manifest = TweakFile::Manifest;
using namespace std::string_literals;

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
  const struct {
    std::string json;
    TweakGlyph shown;
  } cases[] = {
      {"", {"tools", "solid"}},
      {R"(,"glyph":{"icon":"tools","style":"solid"})", {"tools", "solid"}},
      {R"(,"glyph":{"icon":"from-tomorrow","style":"duotone"})", {"from-tomorrow", "duotone"}}};
  for (const auto& c : cases) {
    const Manifest manifest = decodeJSON<Manifest>(document("", c.json));
    EXPECT_EQ(manifest.configuration.glyph(), c.shown);
    EXPECT_EQ(encodeJSON(manifest), document("", c.json));
  }
  Manifest manifest = decodeJSON<Manifest>(document("", R"(,"glyph":null)"));
  EXPECT_EQ(encodeJSON(manifest), document(""));
  manifest.configuration.setGlyph(TweakGlyph::default_());
  EXPECT_EQ(encodeJSON(manifest), document("", cases[1].json));
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
    return R"({"className":"A","selector":"a","signature":"v","isClassMethod":false,"args":)" +
           args + "}";
  };
  const std::string configuration = R"({"configuration":{"name":"N","color":"darkRed",)";
  const std::string rest = R"(},"overrides":[],"hooks":[]})";
  const std::pair<std::string, std::string> cases[] = {
      {document(kHookA + ",null,null," + hookWith(R"({"-1":{"type":"Foo"}})")),
       R"(hooks[3].args.-1.type: unknown kind "Foo")"},
      {document(hookWith(R"({"0":{"type":"Array","items":[{"type":"Image"}]}})")),
       R"(hooks[0].args.0.items[0]: missing key "filename")"},
      {document(hookWith(R"({"1.5":{"type":"Nil"}})")),
       "hooks[0].args.1.5: expected a whole number as the key, found \"1.5\""},
      {document(hookWith(R"({"99999999999999999999":{"type":"Nil"}})")),
       "hooks[0].args.99999999999999999999: expected a whole number as the key, found "
       "\"99999999999999999999\""},
      {document(hookWith(R"({"0":{"type":"_ValueParameter<Int64>","value":9223372036854775808}})")),
       "hooks[0].args.0.value: number 9223372036854775808 does not fit a signed 64-bit integer"},
      {document(hookWith("7")), "hooks[0].args: expected a dictionary, found a number"},
      {document("", R"(,"glyph":"tools")"),
       "configuration.glyph: expected a dictionary, found a string"},
      {document("", "", "null"), "overrides[0]: expected a dictionary, found null"},
      {document("", "", R"({"type":"Icon","value":""})"),
       R"(overrides[0].type: unknown kind "Icon")"},
      {configuration + R"("bundleID":null)" + rest,
       "configuration.bundleID: expected a string, found null"},
      {configuration + R"("bundleID":"a\ud800b")" + rest, ""},
      {configuration + "\"bundleID\":\"a\xFF\"" + rest, ""},
      {configuration + R"("other":1)" + rest, R"(configuration: missing key "bundleID")"},
      {R"({"configuration":{"name":"N","color":"darkBlue","bundleID":""})" + rest.substr(1),
       R"(configuration.color: unknown color "darkBlue")"},
      {R"({"configuration":{"name":"N","color":"lightgreen","bundleID":""})" + rest.substr(1),
       R"(configuration.color: unknown color "lightgreen")"},
      {R"({"configuration":{"name":"N","color":3,"bundleID":""})" + rest.substr(1),
       "configuration.color: expected a string, found a number"},
      {R"({"overrides":[],"hooks":[]})", R"(missing key "configuration")"},
      {"[]", "expected a dictionary, found an array"},
      {"", ""}};
  for (const auto& [json, description] : cases) {
    SCOPED_TRACE(json);
    const auto error = thrown<DecodingError>([&json = json] { decodeJSON<Manifest>(json); });
    ASSERT_TRUE(error);
    if (description.empty()) {
      EXPECT_EQ(error->which(), DecodingError::Case::dataCorrupted);
    } else {
      EXPECT_EQ(error->description(), description);
    }
  }
}

TEST(Manifest, HugeDocumentsEndQuickly) {
  constexpr std::size_t kHuge = 20'000'000;
  constexpr std::size_t kDeep = 100'000;
  const auto start = std::chrono::steady_clock::now();
  const std::string bad[] = {
      "\"" + std::string(kHuge, 'x') + "\"", std::string(kDeep, '['),
      document(std::string(kDeep, '[') + std::string(kDeep, ']')),
      R"({"ignored":)" + std::string(kDeep, '[') + std::string(kDeep, ']') + "}",
      document(R"({"args":{"0":)" + std::string(kHuge / 2, ' '))};
  for (const std::string& json : bad) {
    EXPECT_THROW(decodeJSON<Manifest>(json), DecodingError) << json.substr(0, 80);
  }
  std::string large = document(kHookA);
  large.insert(large.find("N\""), std::string(kHuge, 'n'));
  EXPECT_EQ(decodeJSON<Manifest>(large).configuration.name.size(), kHuge + 1);
  const std::string quoting = messageOf<DecodingError>([&] {
    decodeJSON<Manifest>(document("", "", R"({"type":")" + std::string(kHuge, 't') + "\"}"));
  });
  EXPECT_TRUE(!quoting.empty() && quoting.size() < 1000U) << "an error quotes a part only";
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(TweakColor, ListsTenColoursInTheirOrder) {
  const std::vector<std::string_view> expected = {
      "lightGreen", "darkGreen", "lightBlue",   "lightYellow", "darkYellow",
      "lightRed",   "darkRed",   "lightPurple", "darkPurple",  "lightPink"};
  std::vector<std::string_view> names;
  for (const TweakColor color : allCases<TweakColor>()) {
    EXPECT_EQ(index(color), names.size());
    EXPECT_EQ(fromRawValue<TweakColor>(rawValue(color)), color);
    names.push_back(rawValue(color));
  }
  EXPECT_EQ(names, expected);
  EXPECT_EQ(index(static_cast<TweakColor>(77)), 0U);
  for (const char* text : {"darkBlue", "lightgreen", "", " lightGreen"}) {
    EXPECT_FALSE(fromRawValue<TweakColor>(text)) << text;
  }
}

/// The same fields in a type of its own, as a collection's configuration has.
struct OtherConfiguration {
  std::string name;
  TweakColor color = TweakColor::lightGreen;
  std::string bundleID;

  const TweakGlyph& glyph() const { return TweakGlyph::default_(); }
  static constexpr auto codedFields() {
    return std::tuple{requiredField("name", &OtherConfiguration::name)};
  }
  bool operator==(const OtherConfiguration&) const = default;
};

TEST(TweakConfiguration, EqualsOnlyItsOwnType) {
  const Manifest::Configuration record{"N", TweakColor::lightPink, "a.b", std::nullopt};
  const TweakConfiguration tweak(record);
  auto other = record;
  other.setGlyph(TweakGlyph::default_());
  EXPECT_EQ(tweak.glyph(), TweakGlyph::default_());
  EXPECT_TRUE(tweak.isEqualTo(TweakConfiguration(record)));
  EXPECT_FALSE(tweak.isEqualTo(TweakConfiguration(other))) << "shown alike, stored differently";
  const TweakConfiguration collection(OtherConfiguration{"N", TweakColor::lightPink, "a.b"});
  EXPECT_TRUE(collection.isEqualTo(collection));
  EXPECT_FALSE(tweak.isEqualTo(collection));
  EXPECT_FALSE(collection.isEqualTo(tweak));
}

TEST(TweakError, SpeaksEnglishUnlessTheMainBundleKnowsBetter) {
  const TemporaryFolder bundle;
  const auto mismatch = TweakError::bundleIDMismatch("a.b", "%@ and %1$@");
  MainBundle::setURL({});
  EXPECT_EQ(TweakError::missing("%@ \xE2\x82\xAC").description(), "Missing %@ €");
  EXPECT_EQ(mismatch.description(), "Bundle ID mismatch (expected 'a.b' but found '%@ and %1$@')");
  EXPECT_EQ(TweakError::notFound().description(), "Not found");
  bundle.write("Localizable.strings",
               "\"tweak_error.bundle_id_mismatch\" = \"%2$@ statt %1$@\";\n"
               "\"tweak_error.missing\" = \"%@ fehlt\";\n");
  MainBundle::setURL(bundle.path());
  EXPECT_EQ(mismatch.description(), "%@ and %1$@ statt a.b");
  EXPECT_EQ(TweakError::missing("x").description(), "x fehlt");
  EXPECT_EQ(TweakError::notFound().description(), "Not found");
  MainBundle::setURL({});
  EXPECT_NE(mismatch, TweakError::bundleIDMismatch("%@ and %1$@", "a.b"));
}

}  // namespace
}  // namespace tavlen
