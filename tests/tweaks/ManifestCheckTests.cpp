#include "tavlen/tweaks/ManifestCheck.h"

#include <gtest/gtest.h>

#include "tavlen/foundation/json/JSONDecoder.h"

namespace tavlen {
namespace {

using ResourceState = TweakSurroundings::ResourceState;

/// A tweak for "com.example.notes" with those elements of its lists.
TweakFile::Manifest manifestWith(const std::string& overrides, const std::string& hooks) {
  return decodeJSON<TweakFile::Manifest>(
      R"({"configuration":{"name":"N","color":"lightBlue","bundleID":"com.example.notes"},)"
      R"("overrides":[)" +
      overrides + R"(],"hooks":[)" + hooks + "]}");
}

/// The places, rules and texts of all problems, one a line.
std::string problemLines(const TweakFile::Manifest& manifest, TweakSurroundings surroundings = {}) {
  surroundings.stateOf = [](const std::string& name) {
    if (name.starts_with("..")) return ResourceState::outside;
    return name == "a.png" ? ResourceState::present : ResourceState::missing;
  };
  std::string text;
  for (const TweakProblem& problem : problemsOf(manifest, surroundings)) {
    text += problem.file + documentPath(manifest, problem) + ": " + std::string(problem.code) +
            ": " + problem.text + "\n";
  }
  return text;
}

std::string hook(const std::string& className, const std::string& selector,
                 const std::string& signature, const std::string& args) {
  return R"({"className":")" + className + R"(","selector":")" + selector + R"(","signature":")" +
         signature + R"(","isClassMethod":false,"args":{)" + args + "}}";
}

TEST(ManifestCheck, OverridesThatTheSystemWouldNotAccept) {
  const struct {
    const char* json;
    const char* problem;
  } cases[] = {
      {R"({"type":"DisplayName","value":""})", "empty-override: DisplayName is empty"},
      {R"({"type":"BundleID","value":"a.b-C1"})", ""},
      {R"({"type":"BundleID","value":"a_b"})", "malformed-override: \"a_b\" is no bundle"},
      {R"({"type":"Version","value":"1.20.3"})", ""},
      {R"({"type":"Version","value":"1..2"})", "malformed-override: \"1..2\" is no version"},
      {R"({"type":"Version","value":"v1"})", "malformed-override: \"v1\" is no version"},
      {R"({"type":"Build","value":"15A2b"})", ""},
      {R"({"type":"Build","value":"1 2"})", "malformed-override: \"1 2\" is no build number"},
      {R"({"type":"MinimumOSVersion"})", ""},
      {R"({"type":"Orientations","value":[]})", ""},
      {R"({"type":"OrientationsIPad","value":["UIInterfaceOrientationPortrait",)"
       R"("UIInterfaceOrientationLandscapeLeft","UIInterfaceOrientationPortrait"]})",
       "malformed-override: names the orientation Portrait twice"},
      {R"({"type":"Build","value":"1"},{"type":"Version","value":"1"},{"type":"Build","value":"2"})",
       "repeated-override: Build is overridden again"},
  };
  for (const auto& [json, problem] : cases) {
    const std::string found = problemLines(manifestWith(json, ""));
    const std::string place = "overrides[0]: ";
    EXPECT_EQ(found.substr(0, place.size() + std::string(problem).size()),
              *problem == '\0' ? found.substr(0, 0) : place + problem)
        << json;
  }
}

TEST(ManifestCheck, NamesThatNothingCanHave) {
  const struct {
    const char* className;
    const char* selector;
    const char* problem;
  } cases[] = {
      {"Notes.List", ".cxx_destruct", ""},
      {"_TtGC5Notes4ListSi_", "_a$1", ""},
      {"Notes.List<Swift.Int, Any>", "\u00E4", ""},
      {"", "a", "className: malformed-class: no class can have the name \"\""},
      {"[A", "a", "className: malformed-class"},
      {"A ", "a", "className: malformed-class"},
      {"A", "", "selector: malformed-selector: no method can have the selector \"\""},
      {"A", "a b", "selector: malformed-selector"},
      {"A", "1", "selector: malformed-selector"},
      {"A", "-a", "selector: malformed-selector"},
  };
  for (const auto& [className, selector, problem] : cases) {
    const std::string expected = *problem == '\0' ? "" : std::string("hooks[0].") + problem;
    const std::string found = problemLines(manifestWith("", hook(className, selector, "v@:", "")));
    EXPECT_EQ(expected.empty() ? found : found.substr(0, expected.size()), expected)
        << className << " " << selector;
  }
  EXPECT_EQ(problemLines(manifestWith(
                "", hook("A", "a:b:c:", "v@:#:@",
                         R"("0":{"type":"Class","name":"-"},"1":{"type":"Selector","name":"a b"},)"
                         R"("2":{"type":"Protocol","name":""})"))),
            "hooks[0].args.0: malformed-class: no class can have the name \"-\"\n"
            "hooks[0].args.1: malformed-selector: no method can have the selector \"a b\"\n"
            "hooks[0].args.2: malformed-class: no protocol can have the name \"\"\n");
}

TEST(ManifestCheck, WhatIsAroundTheManifest) {
  TweakFile::Manifest manifest =
      manifestWith("", hook("A", "a", "@@:",
                            R"("-1":{"type":"Array","items":[{"type":"Image","filename":"a.png"},)"
                            R"({"type":"Data","filename":"../a.png"},)"
                            R"({"type":"Image","filename":"b.png"}]})") +
                           "," + hook("A", "a", "v@:", ""));
  manifest.configuration._glyph = TweakGlyph{"moonn", "solid"};
  TweakSurroundings surroundings;
  surroundings.apps = {"com.apple.Preferences", "com.example.note"};
  surroundings.resources = {"a.png", "unused.txt"};
  surroundings.nameOfHook = [](std::size_t index) { return "hook " + std::to_string(index); };
  EXPECT_EQ(problemLines(manifest, surroundings),
            "configuration.bundleID: unknown-app: the app \"com.example.notes\" is not installed "
            "here; did you mean \"com.example.note\"?\n"
            "configuration.glyph: unknown-glyph: unknown glyph \"moonn\" in the style \"solid\"; "
            "did you mean \"moon\" in the style \"solid\"?\n"
            "hooks[0].args.-1.items[1]: outside-resource: the resource \"../a.png\" lies outside "
            "of Resources\n"
            "hooks[0].args.-1.items[2]: missing-resource: the resource \"b.png\" is missing\n"
            "hooks[1]: repeated-hook: hooks the same method as hook 0\n"
            "Resources/unused.txt: unused-resource: no value, code or script names this resource, "
            "which is installed anyway\n");
}

}  // namespace
}  // namespace tavlen
