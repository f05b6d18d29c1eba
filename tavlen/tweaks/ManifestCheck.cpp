#include "tavlen/tweaks/ManifestCheck.h"

#include <filesystem>
#include <optional>
#include <unordered_map>
#include <utility>

#include "tavlen/foundation/text/Suggestion.h"
#include "tavlen/items/GlyphNames.h"
#include "tavlen/tweaks/OverrideCheck.h"
#include "tavlen/tweaks/ResourceUse.h"

namespace tavlen {

namespace {

using Subject = TweakProblem::Subject;
using ResourceState = TweakSurroundings::ResourceState;

std::string elementName(const char* list, std::size_t index) {
  return std::string(list) + "[" + std::to_string(index) + "]";
}

/// Collects the problems of one tweak.
class Checker {
 public:
  Checker(const TweakFile::Manifest& manifest, const TweakSurroundings& surroundings)
      : manifest_(manifest), surroundings_(surroundings) {}

  std::vector<TweakProblem> run() {
    checkApp();
    checkGlyph();
    for (auto& [index, code, text] : problemsOf(manifest_._overrides))
      problems_.push_back(
          {.subject = Subject::override_, .index = index, .code = code, .text = std::move(text)});
    for (std::size_t i = 0; i < manifest_._hooks.size(); ++i) {
      if (manifest_._hooks[i]) checkHook(*manifest_._hooks[i], i);
    }
    for (const std::string& entry : surroundings_.strayEntries)
      addFile(entry, "outside-resource", "leads out of the tweak's folder, or is no file");
    checkUnused();
    return std::move(problems_);
  }

 private:
  void checkApp() {
    const std::string& id = manifest_.configuration.bundleID;
    const auto& apps = surroundings_.apps;
    if (apps.empty() || std::find(apps.begin(), apps.end(), id) != apps.end()) return;
    problems_.push_back(
        {.subject = Subject::app,
         .code = "unknown-app",
         .text = "the app \"" + id + "\" is not installed here" + suggestionText(id, apps)});
  }

  void checkGlyph() {
    const auto& glyph = manifest_.configuration._glyph;
    if (!glyph || isKnownGlyph(*glyph)) return;
    std::string text = "unknown glyph " + described(*glyph);
    if (const auto suggestion = suggestedGlyph(*glyph))
      text += "; did you mean " + described(*suggestion) + "?";
    problems_.push_back(
        {.subject = Subject::glyph, .code = "unknown-glyph", .text = std::move(text)});
  }

  static std::string described(const TweakGlyph& glyph) {
    return "\"" + glyph.icon + "\" in the style \"" + glyph.style + "\"";
  }

  void checkHook(const Hook& hook, std::size_t index) {
    const auto add = [&](HookProblem problem) {
      problems_.push_back({.subject = Subject::hook,
                           .index = index,
                           .place = std::move(problem.place),
                           .code = problem.code,
                           .text = std::move(problem.text)});
    };
    const auto [first, isNew] = hooks_.try_emplace(hook.identity(), index);
    if (!isNew) add({{}, "repeated-hook", "hooks the same method as " + hookName(first->second)});
    for (HookProblem& problem : problemsOf(hook)) add(std::move(problem));
    for (const auto& [argument, box] : hook._args) {
      forEachParameter(box.value,
                       [&, argument = argument](const Parameter& each, const ParameterPath& path) {
                         const std::string* name = resourceNameIn(each);
                         if (name == nullptr) return;
                         const ResourceState state = surroundings_.stateOf(*name);
                         if (state == ResourceState::present) return;
                         HookProblem problem = resourceProblem(*name, state);
                         problem.place = {HookPlace::Part::value, argument, path};
                         add(std::move(problem));
                       });
    }
  }

  std::string hookName(std::size_t index) const {
    return surroundings_.nameOfHook ? surroundings_.nameOfHook(index) : elementName("hooks", index);
  }

  /// The problem with a resource of that name, which is not present.
  static HookProblem resourceProblem(const std::string& name, ResourceState state) {
    const bool isMissing = state == ResourceState::missing;
    HookProblem problem;
    problem.code = isMissing ? "missing-resource" : "outside-resource";
    problem.text =
        "the resource \"" + name + (isMissing ? "\" is missing" : "\" lies outside of Resources");
    return problem;
  }

  void checkUnused() {
    const auto& resources = surroundings_.resources;
    if (resources.empty()) return;
    const auto uses = usesOf(resources, manifest_, surroundings_.script);
    for (std::size_t i = 0; i < resources.size(); ++i) {
      if (uses[i].count != 0) continue;
      addFile((std::filesystem::path(TweakFile::resourcesFolder) / resources[i]).string(),
              "unused-resource",
              "no value, code or script names this resource, which is installed anyway");
    }
  }

  void addFile(std::string file, std::string_view code, const char* text) {
    problems_.push_back({.file = std::move(file), .code = code, .text = text});
  }

  const TweakFile::Manifest& manifest_;
  const TweakSurroundings& surroundings_;
  std::unordered_map<MethodIdentity, std::size_t> hooks_;
  std::vector<TweakProblem> problems_;
};

}  // namespace

std::vector<TweakProblem> problemsOf(const TweakFile::Manifest& manifest,
                                     const TweakSurroundings& surroundings) {
  return Checker(manifest, surroundings).run();
}

std::string documentPath(const TweakFile::Manifest& manifest, const TweakProblem& problem) {
  switch (problem.subject) {
    case Subject::app:
      return "configuration.bundleID";
    case Subject::glyph:
      return "configuration.glyph";
    case Subject::override_:
      return elementName("overrides", problem.index);
    case Subject::hook: {
      std::string place = elementName("hooks", problem.index);
      const std::string rest = documentPath(*manifest._hooks.at(problem.index), problem.place);
      return rest.empty() ? place : place + "." + rest;
    }
    case Subject::file:
      break;
  }
  return {};
}

}  // namespace tavlen
