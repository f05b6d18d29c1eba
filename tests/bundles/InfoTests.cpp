#include "tavlen/bundles/Info.h"

#include <gtest/gtest.h>

#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"
#include "tavlen/foundation/plist/PropertyListDecoder.h"
#include "tavlen/foundation/plist/PropertyListEncoder.h"
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

/// What stands in the file after encoding.
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
  const std::string noName = "<key>CFBundleName</key><integer>1</integer>";
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
              {"<plist><dict>" + noName + "</dict></plist>",
               "CFBundleName: expected a string, found an integer"},
              {plist(text("MinimumOSVersion", "x"), "<true/>"),
               "UIDeviceFamily: expected an array, found a boolean"},
              {plist(text("MinimumOSVersion", "x")), "MinimumOSVersion: Invalid version: \"x\""},
              {plist("<key>CFBundleIcons</key><dict><key>CFBundlePrimaryIcon</key><dict/></dict>"),
               "CFBundleIcons.CFBundlePrimaryIcon: missing key \"CFBundleIconFiles\""},
              {plist("<key>UISupportedInterfaceOrientations~ipad</key><array><true/></array>"),
               "UISupportedInterfaceOrientations~ipad[0]: expected a string, found a boolean"}};
  for (const auto& row : rows) EXPECT_EQ(errorOf(row.bytes), row.error);
}

}  // namespace
}  // namespace tavlen
