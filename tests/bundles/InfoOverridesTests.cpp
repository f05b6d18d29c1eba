#include "tavlen/bundles/InfoOverrides.h"

#include <gtest/gtest.h>

#include "tavlen/bundles/OverrideContainer.h"
#include "tavlen/foundation/json/JSONDecoder.h"
#include "tavlen/foundation/json/JSONEncoder.h"

namespace tavlen {
namespace {

constexpr const char* kBefore =
    R"({"CFBundleExecutable":"N","CFBundleIdentifier":"a.b","CFBundleVersion":"1",)"
    R"("UISupportedInterfaceOrientations":["X"],"UIDeviceFamily":1,"MinimumOSVersion":"14.0"})";

TEST(InfoOverridesTest, EachKindEditsItsKey) {
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
