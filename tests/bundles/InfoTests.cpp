#include "tavlen/bundles/Info.h"

#include "tavlen/bundles/InfoOverrides.h"
#include "tavlen/bundles/OverrideContainer.h"
#include "tavlen/foundation/errors/MainBundle.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/foundation/plist/PropertyListDecoder.h"
#include "tavlen/foundation/plist/PropertyListEncoder.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

using Orientation = InterfaceOrientation;
using Orientations = std::optional<std::vector<Orientation>>;

/// The members of a dictionary: what is required, with `family` as the device family, and `more`.
std::string plist(const std::string& more, const std::string& family = "<integer>1</integer>") {
  return "<plist version='1.0'><dict><key>CFBundleExecutable</key><string>exe</string>"
         "<key>CFBundleIdentifier</key><string>com.example.app</string>"
         "<key>CFBundleVersion</key><string>42</string><key>UIDeviceFamily</key>" +
         family + more + "</dict></plist>";
}

std::string text(const std::string& key, const std::string& value) {
  return "<key>" + key + "</key><string>" + value + "</string>";
}

Info decoded(const std::string& more, const std::string& family = "<integer>1</integer>") {
  return decodePropertyList<Info>(plist(more, family));
}

PropertyList encoded(const Info& info) { return readPropertyList(encodePropertyList(info)); }

std::string errorOf(const std::string& bytes) {
  return messageOf<DecodingError>([&] { decodePropertyList<Info>(bytes); });
}

TEST(Info, namesAndVersionFallBack) {
  const struct {
    std::string more;
    const char* name;
    const char* bundleName;
  } rows[] = {{text("CFBundleName", "A"), "A", "A"},
              {text("CFBundleDisplayName", "B"), "B", "B"},
              {text("CFBundleName", "A") + text("CFBundleDisplayName", "B"), "B", "A"},
              {"", "exe", "exe"},
              {text("CFBundleName", ""), "", ""}};  // empty is present
  for (const auto& row : rows) {
    Info info = decoded(row.more);
    EXPECT_EQ(info.name(), row.name);
    EXPECT_EQ(info.bundleName(), row.bundleName);
    const Info before = info;
    info.setName(row.name);
    EXPECT_EQ(info, before) << "what it falls back to is not stored";
    info.setName("C");
    EXPECT_EQ(info._name, "C");
    EXPECT_EQ(info._bundleName, before._bundleName);
    info.setBundleName("D");
    EXPECT_EQ(info._bundleName, "D");
  }
  Info info = decoded("");
  EXPECT_EQ(info.version(), "42");
  info.setVersion("42");
  EXPECT_EQ(info._shortVersion, "42");
  EXPECT_EQ(decoded(text("CFBundleShortVersionString", "1.2")).version(), "1.2");
}

TEST(Info, deviceFamilyIsNarrowedToOneInteger) {
  const struct {
    const char* family;
    bool supportsIPad;
  } rows[] = {{"<integer>1</integer>", false},
              {"<integer>2</integer>", true},
              {"<real>2</real>", true},
              {"<integer>3</integer>", false},
              {"<array/>", false},
              {"<array><integer>1</integer></array>", false},
              {"<array><integer>1</integer><integer>2</integer></array>", true}};
  for (const auto& row : rows) {
    const Info info = decoded("", row.family);
    EXPECT_EQ(info.supportsIPad(), row.supportsIPad) << row.family;
    const PropertyList list = encoded(info);
    EXPECT_EQ(list.integer(list.find(list.root(), "UIDeviceFamily").value()),
              row.supportsIPad ? 2 : 1);
  }
  EXPECT_EQ(errorOf(plist("", "<string>2</string>")),
            "UIDeviceFamily: expected an array, found a string");
  EXPECT_EQ(errorOf(plist("", "<array><integer>1</integer><string>2</string></array>")),
            "UIDeviceFamily[1]: expected an integer, found a string");
}

TEST(Info, orientations) {
  const std::string portrait = "<string>UIInterfaceOrientationPortrait</string>";
  const struct {
    std::string list;
    Orientations expected;
  } rows[] = {{"", std::nullopt},
              {"<array/>", std::vector<Orientation>{}},
              {"<array>" + portrait + "<string>Foo</string>" + portrait + "</array>",
               std::vector{Orientation::portrait, Orientation::portrait}},
              {"<array><string>uiinterfaceorientationportrait</string></array>",
               std::vector<Orientation>{}},
              {"<array><string>UIInterfaceOrientationLandscapeRight</string>"
               "<string>UIInterfaceOrientationLandscapeLeft</string>"
               "<string>UIInterfaceOrientationPortraitUpsideDown</string></array>",
               std::vector{Orientation::landscapeRight, Orientation::landscapeLeft,
                           Orientation::portraitUpsideDown}}};
  for (const auto& row : rows) {
    const std::string key = "<key>UISupportedInterfaceOrientations";
    const Info info = decoded(row.list.empty() ? "" : key + "</key>" + row.list);
    EXPECT_EQ(info.orientations(), row.expected) << row.list;
    EXPECT_EQ(info.ipadOrientations(), std::nullopt);
    const Info pad = decoded(row.list.empty() ? "" : key + "~ipad</key>" + row.list);
    EXPECT_EQ(pad.ipadOrientations(), row.expected) << row.list;
    EXPECT_EQ(pad.orientations(), std::nullopt);
  }
}

TEST(Info, settingIPadOrientationsStoresIntoTheOtherList) {
  Info info = decoded(
      "<key>UISupportedInterfaceOrientations~ipad</key><array><string>Foo</string></array>");
  info.setIpadOrientations(std::vector{Orientation::landscapeLeft});
  const Info again = decodePropertyList<Info>(encodePropertyList(info));
  EXPECT_EQ(again._orientations, std::vector<std::string>{"UIInterfaceOrientationLandscapeLeft"});
  EXPECT_EQ(again._ipadOrientations, std::vector<std::string>{"Foo"});
  info.setIpadOrientations(std::nullopt);
  EXPECT_EQ(info._orientations, std::nullopt);
  info.setOrientations(std::vector{Orientation::portrait, Orientation::portrait});
  EXPECT_EQ(info._orientations->size(), 2U);
}

TEST(Info, isCodedInTheOrderOfItsKeys) {
  const std::string all =
      R"({"CFBundleName":"n","CFBundleExecutable":"exe","CFBundleIdentifier":"a.b",)"
      R"("CFBundleVersion":"42","CFBundleShortVersionString":"1","CFBundleDisplayName":"d",)"
      R"("CFBundleIcons":{"CFBundlePrimaryIcon":{"CFBundleIconFiles":["icon"]}},)"
      R"("CFBundleIcons~ipad":{},"CFBundleIconFiles":[],"CFBundleIconFiles~ipad":["p"],)"
      R"("CFBundleIconFile":"f","CFBundleIconFile~ipad":"g",)"
      R"("UISupportedInterfaceOrientations":[],"UISupportedInterfaceOrientations~ipad":["x"],)"
      R"("UIDeviceFamily":1,"MinimumOSVersion":"14.0")";
  const Info info = decodeJSON<Info>(all + R"(,"Unmodelled":1})");
  EXPECT_EQ(encodeJSON(info), all + "}");
  for (const auto format : {PropertyListFormat::binary, PropertyListFormat::xml}) {
    EXPECT_EQ(decodePropertyList<Info>(encodePropertyList(info, format)), info);
  }
  const PropertyList least = encoded(decoded(""));
  EXPECT_EQ(least.get<PropertyList::Dictionary>(least.root())->members.size(), 4U);
}

TEST(Info, theFirstFailingKeyEndsTheDecoding) {
  const auto without = [](const std::string& key) {
    std::string bytes = plist("");
    return bytes.replace(bytes.find(key), key.size(), "Other");
  };
  const struct {
    std::string bytes;
    const char* error;
  } rows[] = {{without("CFBundleExecutable"), "missing key \"CFBundleExecutable\""},
              {without("CFBundleIdentifier"), "missing key \"CFBundleIdentifier\""},
              {without("CFBundleVersion"), "missing key \"CFBundleVersion\""},
              {without("UIDeviceFamily"), "missing key \"UIDeviceFamily\""},
              {plist(text("MinimumOSVersion", "x")), "MinimumOSVersion: Invalid version: \"x\""},
              {plist("<key>CFBundleIcons</key><dict><key>CFBundlePrimaryIcon</key><dict/></dict>"),
               "CFBundleIcons.CFBundlePrimaryIcon: missing key \"CFBundleIconFiles\""},
              {plist("<key>UISupportedInterfaceOrientations~ipad</key><array><true/></array>"),
               "UISupportedInterfaceOrientations~ipad[0]: expected a string, found a boolean"}};
  for (const auto& row : rows) EXPECT_EQ(errorOf(row.bytes), row.error);
}

using Orientation = InterfaceOrientation;

/// An app of which every value differs from every other.
Info appInfo() {
  Info info;
  info.executable = "exe";
  info.bundleID = "com.example.app";
  info.build = "42";
  info._shortVersion = "1.2";
  info._bundleName = "Bundle";
  info._name = "Display";
  info._orientations = {"UIInterfaceOrientationPortrait", "Sideways"};
  info._ipadOrientations = {"UIInterfaceOrientationLandscapeLeft"};
  info._deviceFamily.supportsIPad = true;
  info.minimumOSVersion = decodeJSON<SemanticVersion>("\"14.1\"");
  return info;
}

TEST(Override, EveryKindIsStoredTitledAndSeeded) {
  using Version = SemanticVersion;
  // The identifiers stand in users' documents, so they are repeated here in full.
  const struct {
    std::string titleKey;
    std::string title;
    Override seeded;  ///< made of appInfo()
    std::string json;
  } cases[] = {
      {"display_name", "Display Name", DisplayNameOverride{"Display"},
       R"("DisplayName","value":"Display")"},
      {"bundle_name", "Bundle Name", BundleNameOverride{"Bundle"},
       R"("BundleName","value":"Bundle")"},
      {"bundle_id", "Bundle ID", BundleIDOverride{"com.example.app"},
       R"("BundleID","value":"com.example.app")"},
      {"version", "Version", VersionOverride{"1.2"}, R"("Version","value":"1.2")"},
      {"build", "Build", BuildOverride{"42"}, R"("Build","value":"42")"},
      {"min_os_version", "Min OS Version",
       MinimumOSVersionOverride{decodeJSON<Version>("\"14.1\"")},
       R"("MinimumOSVersion","value":"14.1")"},
      {"ipad_support", "iPad Support", IPadSupportOverride{true}, R"("IPadSupport","value":true)"},
      {"orientations", "Orientations", OrientationsOverride{{Orientation::portrait}},
       R"("Orientations","value":["UIInterfaceOrientationPortrait"])"},
      {"orientations_ipad", "Orientations (iPad)",
       OrientationsIPadOverride{{Orientation::landscapeLeft}},
       R"("OrientationsIPad","value":["UIInterfaceOrientationLandscapeLeft"])"}};
  const auto index = OverrideContainer::allByIndex();
  ASSERT_EQ(index.size(), std::size(cases));
  ASSERT_EQ(OverrideContainer::supportedTypes().size(), std::size(cases));
  const TemporaryFolder bundle;
  auto kind = index.begin();
  for (const auto& [titleKey, title, seeded, rest] : cases) {
    SCOPED_TRACE(title);
    const std::string key = "override_title." + titleKey;
    const std::string json = R"({"type":)" + rest + "}";
    EXPECT_EQ(encodeJSON(OverrideContainer{seeded}), json);
    EXPECT_EQ(decodeJSON<OverrideContainer>(json), OverrideContainer{seeded});
    EXPECT_EQ(kind->second.withInfo(appInfo()), seeded);
    EXPECT_EQ(kind->second.title.key, key);
    const auto place = static_cast<std::size_t>(std::distance(index.begin(), kind));
    EXPECT_EQ(kind->second.identifier, OverrideContainer::supportedTypes()[place]);
    MainBundle::setURL({});
    EXPECT_EQ(localizedName(seeded), title);
    bundle.write("Localizable.strings", "\"" + key + "\" = \"<" + title + ">\";");
    MainBundle::setURL(bundle.path());
    EXPECT_EQ(localizedName(seeded), "<" + title + ">");
    TweakInfo record("a.b", "c");
    applyTo(record, seeded);
    EXPECT_EQ(record, TweakInfo("a.b", "c")) << "an override is the app's, not the record's";
    ++kind;
  }
  MainBundle::setURL({});
}

TEST(Override, SectionsAreInTheOrderOfPresentation) {
  std::string sections;
  for (const auto& section : OverrideContainer::all()) {
    for (const OverrideKindInfo& kind : section) sections += std::string(kind.identifier) + " ";
    sections += "| ";
  }
  EXPECT_EQ(sections,
            "DisplayName BundleName BundleID | Version Build | MinimumOSVersion IPadSupport | "
            "Orientations OrientationsIPad | ");
  EXPECT_EQ(OverrideContainer::allByIndex().at({2, 1}).identifier, "IPadSupport");
}

TEST(Override, MissingValuesOfTheAppFallBack) {
  Info info = appInfo();
  info._ipadOrientations.reset();
  EXPECT_EQ(OrientationsIPadOverride::withInfo(info).value, (std::vector{Orientation::portrait}));
  info._ipadOrientations.emplace();
  EXPECT_TRUE(OrientationsIPadOverride::withInfo(info).value.empty()) << "its own, if empty";
  info._ipadOrientations.reset();
  info._orientations.reset();
  EXPECT_TRUE(OrientationsIPadOverride::withInfo(info).value.empty());
  EXPECT_TRUE(OrientationsOverride::withInfo(info).value.empty());
  info._name.reset();
  EXPECT_EQ(DisplayNameOverride::withInfo(info).value, "Bundle");
  info._bundleName.reset();
  EXPECT_EQ(DisplayNameOverride::withInfo(info).value, "exe");
  EXPECT_EQ(BundleNameOverride::withInfo(info).value, "exe");
  info._shortVersion.reset();
  EXPECT_EQ(VersionOverride::withInfo(info).value, "42");
  info.minimumOSVersion.reset();
  EXPECT_EQ(MinimumOSVersionOverride::withInfo(info), MinimumOSVersionOverride{});
}

TEST(Override, OnlyTheMinimumVersionMayLackItsValue) {
  const OverrideContainer none{MinimumOSVersionOverride{}};
  EXPECT_EQ(encodeJSON(none), R"({"type":"MinimumOSVersion"})");
  EXPECT_EQ(decodeJSON<OverrideContainer>(R"({"type":"MinimumOSVersion"})"), none);
  EXPECT_EQ(decodeJSON<OverrideContainer>(R"({"type":"MinimumOSVersion","value":null})"), none);
  for (const std::string_view type : OverrideContainer::supportedTypes()) {
    if (type == "MinimumOSVersion") continue;
    const std::string json = R"({"type":")" + std::string(type) + "\"";
    EXPECT_THROW(decodeJSON<OverrideContainer>(json + "}"), DecodingError) << type;
    EXPECT_THROW(decodeJSON<OverrideContainer>(json + R"(,"value":null})"), DecodingError) << type;
  }
}

TEST(Override, AWrongValueFails) {
  const std::pair<const char*, const char*> cases[] = {
      {R"({"type":"Orientations","value":["UIInterfaceOrientationPortrait","Sideways"]})",
       R"(value[1]: unknown interface orientation "Sideways")"},
      {R"({"type":"OrientationsIPad","value":"UIInterfaceOrientationPortrait"})",
       "value: expected an array, found a string"},
      {R"({"type":"MinimumOSVersion","value":"abc"})", R"(value: Invalid version: "abc")"},
      {R"({"type":"Build","value":42})", "value: expected a string, found a number"},
      {R"({"type":"DisplayNameOverride","value":""})",
       R"(type: unknown kind "DisplayNameOverride")"},
      {R"({"value":""})", R"(missing key "type")"}};
  for (const auto& [json, description] : cases) {
    EXPECT_EQ(messageOf<DecodingError>([&json = json] { decodeJSON<OverrideContainer>(json); }),
              description)
        << json;
  }
}

constexpr const char* kBefore =
    R"({"CFBundleExecutable":"N","CFBundleIdentifier":"a.b","CFBundleVersion":"1",)"
    R"("UISupportedInterfaceOrientations":["X"],"UIDeviceFamily":1,"MinimumOSVersion":"14.0"})";

TEST(InfoOverrides, EachKindEditsItsKey) {
  const struct {
    const char* override_;
    const char* before;  ///< what of the list is replaced, and by what
    const char* after;
  } rows[] = {
      {R"({"type":"DisplayName","value":"D"})", R"("UIS)", R"("CFBundleDisplayName":"D","UIS)"},
      {R"({"type":"DisplayName","value":"N"})", "", ""},
      {R"({"type":"BundleName","value":"N"})", R"({"CFB)", R"({"CFBundleName":"N","CFB)"},
      {R"({"type":"BundleID","value":"c"})", R"("a.b")", R"("c")"},
      {R"({"type":"Version","value":"2"})", R"("UIS)", R"("CFBundleShortVersionString":"2","UIS)"},
      {R"({"type":"Build","value":"7"})", R"("1")", R"("7")"},
      {R"({"type":"MinimumOSVersion","value":"9"})", R"("14.0")", R"("9")"},
      {R"({"type":"MinimumOSVersion"})", R"(,"MinimumOSVersion":"14.0")", ""},
      {R"({"type":"IPadSupport","value":true})", R"(Family":1)", R"(Family":2)"},
      {R"({"type":"Orientations","value":[]})", R"(["X"])", "[]"},
      {R"({"type":"OrientationsIPad","value":["UIInterfaceOrientationPortrait"]})", R"(["X"])",
       R"(["X"],"UISupportedInterfaceOrientations~ipad":["UIInterfaceOrientationPortrait"])"}};
  for (const auto& row : rows) {
    Info info = decodeJSON<Info>(kBefore);
    applyTo(info, decodeJSON<OverrideContainer>(row.override_).value);
    std::string expected = kBefore;
    expected.replace(expected.find(row.before), std::string_view(row.before).size(), row.after);
    EXPECT_EQ(encodeJSON(info), expected) << row.override_;
  }
}

}  // namespace
}  // namespace tavlen
