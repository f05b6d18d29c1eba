#include "cli/work/TweakCheck.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>

#include "cli/work/AttachedFiles.h"
#include "cli/work/TweakResources.h"
#include "tavlen/bundles/AppList.h"
#include "tavlen/device/DeviceFiles.h"

namespace tavlen::cli {

namespace {

namespace fs = std::filesystem;

Diagnostic diagnosticOf(const OpenedTweak& tweak, const TweakProblem& problem) {
  Diagnostic diagnostic = {.severity = Diagnostic::kWarning,
                           .message = problem.text,
                           .file = tweak.pathOf("Manifest.json"),
                           .code = std::string(problem.code)};
  if (problem.subject == TweakProblem::Subject::file) {
    diagnostic.file = tweak.pathOf(problem.file);
  } else {
    diagnostic.place = documentPath(tweak.manifest, problem);
  }
  return diagnostic;
}

void addIgnoredKeys(std::vector<Diagnostic>& warnings, const OpenedTweak& tweak) {
  const std::string file = tweak.pathOf("Manifest.json");
  for (const IgnoredKey& key : tweak.ignoredKeys.keys) {
    warnings.push_back({.severity = Diagnostic::kWarning,
                        .message = key.text,
                        .file = file,
                        .line = key.position.line,
                        .column = key.position.column,
                        .place = key.path,
                        .code = std::string(key.code)});
  }
  if (tweak.ignoredKeys.others == 0) return;
  warnings.push_back(
      {.severity = Diagnostic::kWarning,
       .message = std::to_string(tweak.ignoredKeys.others) + " more keys are unknown or repeated",
       .file = file,
       .code = "unknown-key"});
}

}  // namespace

TweakSurroundings surroundingsOf(fs::path folder) {
  TweakSurroundings surroundings;
  surroundings.apps = AppList::shared().identifiers();
  const fs::path top = TweakFile::resourcesFolder;
  const auto files = attachedFiles(folder, top.string(), [&](const std::string& entry) {
    surroundings.strayEntries.push_back(entry);
  });
  std::sort(surroundings.strayEntries.begin(), surroundings.strayEntries.end());
  for (const std::string& file : files) {
    if (!isHiddenFile(file))
      surroundings.resources.push_back(fs::path(file).lexically_relative(top).string());
  }
  surroundings.stateOf = [resources = folder / top](const std::string& name) {
    const DeviceRoot root = DeviceRoot::shared();
    const auto file = pathInside(root, resources, name);
    if (!file) return TweakSurroundings::ResourceState::outside;
    return fs::is_regular_file(root.status(*file)) ? TweakSurroundings::ResourceState::present
                                                   : TweakSurroundings::ResourceState::missing;
  };
  return surroundings;
}

std::vector<Diagnostic> warningsFrom(const std::vector<TweakProblem>& problems,
                                     const OpenedTweak& tweak) {
  std::vector<Diagnostic> warnings;
  warnings.reserve(problems.size());
  for (const TweakProblem& problem : problems) warnings.push_back(diagnosticOf(tweak, problem));
  return warnings;
}

void printWarnings(const OpenedTweak& tweak) {
  printIgnoredKeys(tweak);
  TweakSurroundings surroundings = surroundingsOf(tweak.file->url());
  surroundings.script = tweak.script;
  for (const Diagnostic& warning : warningsFrom(problemsOf(tweak.manifest, surroundings), tweak))
    print(warning);
}

void printWarnings(const TweakFile::Opened& opened, const std::string& folder) {
  OpenedTweak tweak;
  tweak.argument = folder;
  tweak.folder = folder;
  tweak.file = opened.file;
  tweak.manifest = opened.manifest;
  tweak.ignoredKeys = opened.ignoredKeys;
  tweak.script = opened.file->script();
  printWarnings(tweak);
}

}  // namespace tavlen::cli
