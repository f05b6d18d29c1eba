#include "tavlen/bundles/Override.h"

#include <gtest/gtest.h>

#include "tavlen/bundles/OverrideContainer.h"
#include "tavlen/foundation/errors/MainBundle.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Thrown.h"

namespace tavlen {
namespace {

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

struct KindCase {
  const char* titleKey;
  const char* title;
  Override seeded;  ///< made of appInfo()
  const char* json;
};

// The identifiers stand in users' documents, so they are repeated here in full.
std::vector<KindCase> kindCases() {
  return {
      {"override_title.display_name", "Display Name", DisplayNameOverride{"Display"},
       R"({"type":"DisplayName","value":"Display"})"},
      {"override_title.bundle_name", "Bundle Name", BundleNameOverride{"Bundle"},
       R"({"type":"BundleName","value":"Bundle"})"},
      {"override_title.bundle_id", "Bundle ID", BundleIDOverride{"com.example.app"},
       R"({"type":"BundleID","value":"com.example.app"})"},
      {"override_title.version", "Version", VersionOverride{"1.2"},
       R"({"type":"Version","value":"1.2"})"},
      {"override_title.build", "Build", BuildOverride{"42"}, R"({"type":"Build","value":"42"})"},
      {"override_title.min_os_version", "Min OS Version",
       MinimumOSVersionOverride{decodeJSON<SemanticVersion>("\"14.1\"")},
       R"({"type":"MinimumOSVersion","value":"14.1"})"},
      {"override_title.ipad_support", "iPad Support", IPadSupportOverride{true},
       R"({"type":"IPadSupport","value":true})"},
      {"override_title.orientations", "Orientations", OrientationsOverride{{Orientation::portrait}},
       R"({"type":"Orientations","value":["UIInterfaceOrientationPortrait"]})"},
      {"override_title.orientations_ipad", "Orientations (iPad)",
       OrientationsIPadOverride{{Orientation::landscapeLeft}},
       R"({"type":"OrientationsIPad","value":["UIInterfaceOrientationLandscapeLeft"]})"}};
}

TEST(Override, EveryKindIsStoredTitledAndSeeded) {
  const auto index = OverrideContainer::allByIndex();
  const auto cases = kindCases();
  ASSERT_EQ(index.size(), cases.size());
  ASSERT_EQ(OverrideContainer::supportedTypes().size(), cases.size());
  const TemporaryFolder bundle;
  std::string table;
  for (const KindCase& c : cases) {
    table += "\"" + std::string(c.titleKey) + "\" = \"<" + c.title + ">\";\n";
  }
  bundle.write("Localizable.strings", table);
  auto kind = index.begin();
  for (std::size_t i = 0; i < cases.size(); ++i, ++kind) {
    const KindCase& c = cases[i];
    SCOPED_TRACE(c.title);
    const OverrideContainer box{c.seeded};
    EXPECT_EQ(encodeJSON(box), c.json);
    EXPECT_EQ(decodeJSON<OverrideContainer>(c.json), box);
    EXPECT_EQ(kind->second.withInfo(appInfo()), c.seeded);
    EXPECT_EQ(kind->second.title.key, c.titleKey);
    EXPECT_EQ(kind->second.identifier, OverrideContainer::supportedTypes()[i]);
    MainBundle::setURL({});
    EXPECT_EQ(localizedName(c.seeded), c.title);
    MainBundle::setURL(bundle.path());
    EXPECT_EQ(localizedName(c.seeded), "<" + std::string(c.title) + ">");
  }
  MainBundle::setURL({});
}

TEST(Override, SectionsAreInTheOrderOfPresentation) {
  std::vector<std::vector<std::string_view>> sections;
  for (const auto& section : OverrideContainer::all()) {
    auto& row = sections.emplace_back();
    for (const OverrideKindInfo& kind : section) row.push_back(kind.identifier);
  }
  EXPECT_EQ(sections,
            (std::vector<std::vector<std::string_view>>{{"DisplayName", "BundleName", "BundleID"},
                                                        {"Version", "Build"},
                                                        {"MinimumOSVersion", "IPadSupport"},
                                                        {"Orientations", "OrientationsIPad"}}));
  const auto index = OverrideContainer::allByIndex();
  EXPECT_EQ(index.at({2, 1}).identifier, "IPadSupport");
  EXPECT_EQ(index.at({3, 0}).identifier, "Orientations");
  EXPECT_EQ(&OverrideContainer::all(), &OverrideContainer::all());
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
      {R"({"type":"MinimumOSVersion","value":""})", R"(value: Invalid version: "")"},
      {R"({"type":"MinimumOSVersion","value":14})", "value: expected a string, found a number"},
      {R"({"type":"IPadSupport","value":1})", "value: expected a Boolean, found a number"},
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

TEST(Override, LeavesTheInstallationAlone) {
  TweakInfo before("a.b", "c");
  before.customIconURL = URL{"file:///icon.png"};
  for (const KindCase& c : kindCases()) {
    TweakInfo info = before;
    applyTo(info, c.seeded);
    EXPECT_EQ(info, before) << c.title;
  }
}

}  // namespace
}  // namespace tavlen
