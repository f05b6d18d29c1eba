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
      add(Subject::override_, code, std::move(text)).index = index;
    for (std::size_t i = 0; i < manifest_._hooks.size(); ++i) {
      if (manifest_._hooks[i]) checkHook(*manifest_._hooks[i], i);
    }
    for (const RefusedEntry& entry : surroundings_.refusedEntries)
      addFile(entry.path.string(), "not-packaged", entry.reason);
    checkUnused();
    return std::move(problems_);
  }

 private:
  /// Returns the new problem, whose place the caller adds.
  TweakProblem& add(Subject subject, std::string_view code, std::string text) {
    TweakProblem& problem = problems_.emplace_back();
    problem.subject = subject;
    problem.code = code;
    problem.text = std::move(text);
    return problem;
  }

  void checkApp() {
    const std::string& id = manifest_.configuration.bundleID;
    const std::vector<std::string_view> apps(surroundings_.apps.begin(), surroundings_.apps.end());
    if (apps.empty() || std::find(apps.begin(), apps.end(), id) != apps.end()) return;
    add(Subject::app, "unknown-app",
        "the app \"" + id + "\" is not installed here" + suggestionText(id, apps));
  }

  void checkGlyph() {
    const auto& glyph = manifest_.configuration._glyph;
    if (!glyph || isKnownGlyph(*glyph)) return;
    std::string text = "unknown glyph " + described(*glyph);
    if (const auto suggestion = suggestedGlyph(*glyph))
      text += "; did you mean " + described(*suggestion) + "?";
    add(Subject::glyph, "unknown-glyph", std::move(text));
  }

  static std::string described(const TweakGlyph& glyph) {
    return "\"" + glyph.icon + "\" in the style \"" + glyph.style + "\"";
  }

  void checkHook(const Hook& hook, std::size_t index) {
    const auto addAt = [&](const HookPlace& place, std::string_view code, std::string text) {
      TweakProblem& problem = add(Subject::hook, code, std::move(text));
      problem.index = index;
      problem.place = place;
    };
    const auto [first, isNew] = hooks_.try_emplace(hook.identity(), index);
    if (!isNew) addAt({}, "repeated-hook", "hooks the same method as " + hookName(first->second));
    for (HookProblem& problem : problemsOf(hook))
      addAt(problem.place, problem.code, std::move(problem.text));
    for (const auto& [argument, box] : hook._args) {
      forEachParameter(box.value,
                       [&, key = argument](const Parameter& each, const ParameterPath& path) {
                         const std::string* name = resourceNameIn(each);
                         if (name == nullptr) return;
                         const ResourceState state = surroundings_.stateOf(*name);
                         if (state == ResourceState::present) return;
                         const bool isMissing = state == ResourceState::missing;
                         addAt({HookPlace::Part::value, key, path},
                               isMissing ? "missing-resource" : "outside-resource",
                               "the resource \"" + *name +
                                   (isMissing ? "\" is missing" : "\" lies outside of Resources"));
                       });
    }
  }

  std::string hookName(std::size_t index) const {
    return surroundings_.nameOfHook ? surroundings_.nameOfHook(index) : elementName("hooks", index);
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

  void addFile(std::string file, std::string_view code, std::string text) {
    add(Subject::file, code, std::move(text)).file = std::move(file);
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
